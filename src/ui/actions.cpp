#include "ui/actions.h"

#include <array>

#include "divergence/driver.h"
#include "divergence/regions.h"
#include "input/sequence_file.h"
#include "reports/matrix.h"
#include "reports/saving.h"
#include "state/options.h"
#include "ui/simulation_dialogs.h"

namespace varnoth::ui {

namespace {

struct Context {
  AnalysisRecord& rec;
  Platform& platform;
  WindowCommands& window;
};

struct Command {
  std::string_view control;
  void (*run)(Context&);  // null: not linked yet
};

void help(Context& c) {
  c.platform.message(kNoHelpText, c.rec.form.Form1.text, MessageIcon::Information);
}

template <MenuItem Menu::*M>
void method(Context& c) {
  click_method(c.rec, M);
}

template <MenuItem Menu::*C>
void code(Context& c) {
  click_code(c.rec, C);
}

template <Restriction R>
void restriction(Context& c) {
  click_restriction(c.rec, R);
}

const std::array kCommands{
    // File.
    Command{"OpenFile", [](Context& c) { input::open_sequence_file(c.rec, c.platform); }},
    Command{"Sortir",
            [](Context& c) {
              c.rec.results.LastPairLine.clear();
              c.window.quit();
            }},
    // Divergence and its options.
    Command{"Divergence", [](Context& c) { divergence::run_divergence(c.rec, c.platform); }},
    Command{"Coding", [](Context& c) { click_coding(c.rec); }},
    Command{"Noncoding", [](Context& c) { click_noncoding(c.rec); }},
    Command{"JukesandCantor", method<&Menu::JukesandCantor>},
    Command{"Kimura2p", method<&Menu::Kimura2p>},
    Command{"TajimaandNei", method<&Menu::TajimaandNei>},
    Command{"Tajima1p", method<&Menu::Tajima1p>},
    Command{"Tajima2p", method<&Menu::Tajima2p>},
    Command{"Tajima4p", method<&Menu::Tajima4p>},
    Command{"All", [](Context& c) { click_all_methods(c.rec); }},
    Command{"universal", code<&Menu::universal>},
    Command{"Vermito", code<&Menu::Vermito>},
    Command{"Dromito", code<&Menu::Dromito>},
    Command{"Max_One_Change", restriction<Restriction::MaxOneChange>},
    Command{"No_3_diff", restriction<Restriction::No3Diff>},
    Command{"Always_aa_change", restriction<Restriction::OnlyAaChange>},
    Command{"NoCompRest", [](Context& c) { click_no_restrictions(c.rec); }},
    Command{"Unweighted", [](Context& c) { click_unweighted(c.rec); }},
    Command{"Weighted", [](Context& c) { click_weighted(c.rec); }},
    // Weight page.
    Command{"Command1", [](Context& c) { accept_weight(c.rec, c.platform); }},
    Command{"Command3", [](Context& c) { cancel_weight(c.rec); }},
    // Region dialog and sliding-window page.
    Command{"Region_analysis", [](Context& c) { open_region_dialog(c.rec); }},
    Command{"region.Command1", [](Context& c) { accept_region(c.rec, c.platform); }},
    Command{"region.Command2", [](Context& c) { cancel_region(c.rec); }},
    Command{"region.Command3", [](Context& c) { whole_region(c.rec); }},
    Command{"Sliding_Window", [](Context& c) { open_sliding_windows(c.rec); }},
    Command{"AcceptSliWindows", [](Context& c) { accept_sliding_windows(c.rec, c.platform); }},
    Command{"WholeSliWindows", [](Context& c) { whole_sliding_windows(c.rec); }},
    Command{"CancelSliwindows", [](Context& c) { cancel_sliding_windows(c.rec); }},
    // Results page.
    Command{"Boto1", [](Context& c) { print_results(c.rec, c.platform); }},
    Command{"Boto2", [](Context& c) { save_results(c.rec, c.platform); }},
    Command{"BotoData", [](Context& c) { save_window_data(c.rec, c.platform); }},
    Command{"CloseBotton", [](Context& c) { c.rec.form.SSTab3.visible = false; }},
    // Matrix page.
    Command{"MatrixBoton", [](Context& c) { prepare_matrix_page(c.rec); }},
    Command{"SaveMatrix", [](Context& c) { save_matrix(c.rec, c.platform); }},
    Command{"Command2", [](Context& c) { cancel_matrix_page(c.rec); }},
    // Title page: its four clickable controls.
    Command{"SSTab2", [](Context& c) { title_page_click(c.rec); }},
    Command{"Picture1", [](Context& c) { title_page_click(c.rec); }},
    Command{"Label1", [](Context& c) { title_page_click(c.rec); }},
    Command{"Label2", [](Context& c) { title_page_click(c.rec); }},
    // Confidence intervals and the relative-rate test: dialogs of their own.
    Command{"CIcodingRegion", [](Context& c) { open_kska_window(c.window, 0); }},
    Command{"CIcodingRegionKaKs", [](Context& c) { open_kska_window(c.window, 1); }},
    Command{"Confidence_intervals", [](Context& c) { open_confid_window(c.window); }},
    // The item stays hidden; the command opens the dialog all the same.
    Command{"RelatRate", [](Context& c) { open_rrtest_window(c.window); }},
    // Help.
    Command{"mnuHelpContents", help},
    Command{"mnuHelpSearch", help},
    Command{"about", [](Context& c) { c.window.show_about(); }},
};

}  // namespace

bool perform(std::string_view control, AnalysisRecord& rec, Platform& platform,
             WindowCommands& window) {
  for (const Command& command : kCommands) {
    if (command.control != control) continue;
    if (command.run == nullptr) return false;
    Context context{rec, platform, window};
    command.run(context);
    return true;
  }
  return false;
}

std::vector<std::string_view> pending_commands() {
  std::vector<std::string_view> out;
  for (const Command& command : kCommands)
    if (command.run == nullptr) out.push_back(command.control);
  return out;
}

}  // namespace varnoth::ui
