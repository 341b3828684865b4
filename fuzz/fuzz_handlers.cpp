// Fuzz target: the option and dialog handlers. A fuzzed alignment is loaded,
// then a random sequence of clicks and typed texts runs over the option menu,
// the weight page, the region dialog, the sliding-window page, the divergence
// command and the matrix page. A handler runs only where the window would let
// the user reach it (its menu item enabled and visible, its page shown).
//
// Input: the alignment (fuzz_alignment.h), then one byte per action, each
// followed by the texts it types, one a line.
#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <filesystem>
#include <string>

#include "divergence/driver.h"
#include "divergence/regions.h"
#include "fuzz_alignment.h"
#include "reports/matrix.h"
#include "reports/saving.h"
#include "state/options.h"
#include "state/summary.h"
#include "text/number_reading.h"

namespace varnoth::fuzz::handlers {

// Whether a menu item can be clicked: it and every menu above it enabled and
// visible.
bool reachable(const Menu& menu, std::string_view name) {
  while (!name.empty()) {
    const MenuEntry* entry = nullptr;
    for (const MenuEntry& e : kMenuTree)
      if (e.name == name) entry = &e;
    if (entry == nullptr) return false;
    const MenuItem& item = menu.*(entry->item);
    if (!item.enabled || !item.visible) return false;
    name = entry->parent;
  }
  return true;
}

// The window boxes as the program fills them (their defaults, or the whole
// sequence); what the user types there is the user's own text.
void check_window_boxes(const AnalysisRecord& rec) {
  check_finite_text(rec.form.TextWinSize.text + rec.form.TextMovement.text,
                    "the window boxes show a number that is not finite");
}

void check_state(const AnalysisRecord& rec) {
  const Menu& m = rec.menu;
  check(m.Coding.checked != m.Noncoding.checked, "coding and noncoding both or neither checked");
  check(m.universal.checked + m.Vermito.checked + m.Dromito.checked == 1,
        "not exactly one genetic code checked");
  const float w = rec.options.PathwayWeight;
  check(std::isfinite(w) && w >= 0 && w <= 1, "the pathway weight left its range");
  check(m.Unweighted.checked != m.Weighted.checked || !m.Unweighted.checked,
        "weighted and unweighted both checked");
  const OptionFields& o = rec.options;
  check(o.MaxOneChangeFlag + o.No3DiffFlag + o.OnlyAaChangeFlag <= 1, "two restrictions at once");
  check_finite_text(rec.form.Text2.text, "the summary shows a number that is not finite");
  check_finite_text(rec.region.RegionText, "RegionText shows a number that is not finite");
  check_finite_text(rec.region.CodingWindowText, "a window line shows a number that is not finite");
  check_finite_text(rec.region.NoncodingWindowText,
                    "a window line shows a number that is not finite");
  const RegionFields& r = rec.region;
  if (r.RegionMode == 1) {
    const double first = text::read_number(r.RegionFirst), last = text::read_number(r.RegionLast);
    check(first > 0 && first < last && last <= rec.seq.SeqLength, "a region outside the sequence",
          r.RegionFirst + " - " + r.RegionLast);
  }
  // The run reads the window boxes again, which may have been edited since
  // their Accept: only finiteness holds of the size it keeps.
  check(std::isfinite(r.WindowSize) && std::isfinite(r.WindowStep), "a window that is not finite");
}

std::string scratch_path() {
  static const std::filesystem::path folder = [] {
    auto p = std::filesystem::temp_directory_path() /
             ("varnoth-fuzz-handlers-" + std::to_string(getpid()));
    std::filesystem::create_directories(p);
    return p;
  }();
  return (folder / "matrix.dis").string();
}

int one_input(const std::uint8_t* data, std::size_t size) {
  Bytes in(data, size);
  AnalysisRecord rec;
  QuietPlatform platform;
  start_up(rec);
  if (in.flag()) title_page_click(rec);
  load_fuzzed_alignment(in, rec);
  show_empty_panes(rec, SummaryTail::None);
  rec.form.Text2.text += "\r\n Region to analyze: All";

  constexpr MenuItem Menu::*kCodes[] = {&Menu::universal, &Menu::Vermito, &Menu::Dromito};
  constexpr const char* kCodeNames[] = {"universal", "Vermito", "Dromito"};
  constexpr const char* kRestrictionNames[] = {"Max_One_Change", "No_3_diff", "Always_aa_change"};
  constexpr const char* kMethodNames[] = {"JukesandCantor", "Kimura2p", "TajimaandNei",
                                          "Tajima1p",       "Tajima2p", "Tajima4p"};

  for (int steps = 0; steps < 64 && !in.empty(); ++steps) {
    const Menu& m = rec.menu;
    Form& f = rec.form;
    switch (in.pick(22)) {
      case 0:
        if (reachable(m, "Coding")) click_coding(rec);
        break;
      case 1:
        if (reachable(m, "Noncoding")) click_noncoding(rec);
        break;
      case 2: {
        const unsigned k = in.pick(6);
        if (reachable(m, kMethodNames[k])) click_method(rec, kMethods[k]);
        break;
      }
      case 3:
        if (reachable(m, "All")) click_all_methods(rec);
        break;
      case 4: {
        const unsigned k = in.pick(3);
        if (reachable(m, kCodeNames[k])) click_code(rec, kCodes[k]);
        break;
      }
      case 5: {
        const unsigned k = in.pick(3);
        if (reachable(m, kRestrictionNames[k])) click_restriction(rec, static_cast<Restriction>(k));
        break;
      }
      case 6:
        if (reachable(m, "NoCompRest")) click_no_restrictions(rec);
        break;
      case 7:
        if (reachable(m, "Unweighted")) click_unweighted(rec);
        break;
      case 8:
        if (reachable(m, "Weighted")) click_weighted(rec);
        break;
      case 9:  // boxes take typing only while their page is shown
        if (!f.SSTab5.visible) break;
        f.Text4.text = std::string(in.line());
        if (in.flag()) accept_weight(rec, platform);
        break;
      case 10:
        if (f.SSTab5.visible) cancel_weight(rec);
        break;
      case 11:
        if (reachable(m, "Sliding_Window")) {
          open_sliding_windows(rec);
          check_window_boxes(rec);
        }
        break;
      case 12:
        if (!f.SSTab4.visible) break;
        f.TextWinSize.text = std::string(in.line());
        f.TextMovement.text = std::string(in.line());
        if (in.flag()) accept_sliding_windows(rec, platform);
        break;
      case 13:
        if (f.SSTab4.visible) {
          whole_sliding_windows(rec);
          check_window_boxes(rec);
        }
        break;
      case 14:
        if (f.SSTab4.visible) cancel_sliding_windows(rec);
        break;
      case 15:
        if (reachable(m, "Region_analysis")) open_region_dialog(rec);
        break;
      case 16:
        if (!rec.region_dialog.region.visible) break;
        rec.region_dialog.Text1.text = std::string(in.line());
        rec.region_dialog.Text2.text = std::string(in.line());
        if (in.flag()) accept_region(rec, platform);
        break;
      case 17: {
        if (!rec.region_dialog.region.visible) break;
        if (in.flag())
          whole_region(rec);
        else
          cancel_region(rec);
        break;
      }
      case 18:
        if (reachable(m, "Divergence")) {
          divergence::RunSettings settings;
          settings.threads = 1;
          divergence::run_divergence(rec, platform, settings);
          check_run_results(rec, platform);
        }
        break;
      case 19:
        if (f.SSTab3.visible && f.MatrixBoton.visible) prepare_matrix_page(rec);
        break;
      case 20: {
        if (!f.MatrixTab.visible) break;
        const unsigned k = in.pick(10);
        if (k < 9) {
          f.Combo1.text = std::string(kMatrixComboItems[k]);
        } else {
          f.Combo1.text = std::string(in.line());
        }
        Control* options[] = {&f.Option1, &f.Option2, &f.Option3,
                              &f.Option4, &f.Option5, &f.Option6};
        const unsigned chosen = in.pick(6);
        if (options[chosen]->visible)
          for (unsigned i = 0; i < 6; ++i) options[i]->value = i == chosen;
        platform.save_answer = in.flag() ? scratch_path() : std::string();
        if (in.flag()) {
          if (save_matrix(rec, platform)) {
            const std::string text = [] {
              std::string t;
              std::FILE* file = std::fopen(scratch_path().c_str(), "rb");
              if (file == nullptr) return t;
              char chunk[4096];
              std::size_t n;
              while ((n = std::fread(chunk, 1, sizeof chunk, file)) > 0) t.append(chunk, n);
              std::fclose(file);
              return t;
            }();
            check(!text.empty(), "a saved matrix file is empty");
            check_finite_text(text, "a saved matrix shows a number that is not finite");
          }
        } else {
          cancel_matrix_page(rec);
        }
        break;
      }
      case 21:
        rebuild_summary(rec);
        break;
    }
    check_state(rec);
  }
  return 0;
}

}  // namespace varnoth::fuzz::handlers

#ifndef VARNOTH_FUZZ_NO_MAIN
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return varnoth::fuzz::handlers::one_input(data, size);
}
#endif
