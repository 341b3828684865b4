#include "cli/commands.h"

#include <filesystem>
#include <iostream>

#include <CLI/CLI.hpp>

#include "cli/console_platform.h"
#include "divergence/driver.h"
#include "divergence/regions.h"
#include "input/sequence_file.h"
#include "reports/matrix.h"
#include "reports/saving.h"
#include "state/options.h"

namespace varnoth::cli {

namespace {

struct Session {
  AnalysisRecord rec;
  ConsolePlatform platform;
  explicit Session(std::ostream& err) : platform(err) {
    start_up(rec);
    title_page_click(rec);
  }
};

MenuItem Menu::*method_item(const std::string& name) {
  if (name == "jc") return &Menu::JukesandCantor;
  if (name == "k2p") return &Menu::Kimura2p;
  if (name == "tn") return &Menu::TajimaandNei;
  if (name == "t1p") return &Menu::Tajima1p;
  if (name == "t2p") return &Menu::Tajima2p;
  if (name == "t4p") return &Menu::Tajima4p;
  return nullptr;
}

// Sets the options through the menu handlers, in the order a user would.
// Returns false (after a message) where an entry is refused.
bool apply_options(Session& s, const RunOptions& o, std::ostream& err) {
  AnalysisRecord& rec = s.rec;
  if (o.noncoding) click_noncoding(rec);
  if (!o.code.empty()) {
    click_code(rec, o.code == "vertmito" ? &Menu::Vermito
                    : o.code == "dromito" ? &Menu::Dromito
                                          : &Menu::universal);
  }
  if (!o.restriction.empty()) {
    click_restriction(rec, o.restriction == "max1" ? Restriction::MaxOneChange
                           : o.restriction == "no3" ? Restriction::No3Diff
                                                    : Restriction::OnlyAaChange);
  }
  if (o.weight) {
    click_weighted(rec);
    rec.form.Text4.text = *o.weight;
    const int before = s.platform.messages_shown;
    accept_weight(rec, s.platform);
    if (s.platform.messages_shown != before) return false;
  }
  if (!o.methods.empty()) {
    if (o.methods.size() == 1 && o.methods[0] == "all") {
      if (rec.menu.Noncoding.checked) {
        if (rec.menu.All.caption == "Reset..") click_all_methods(rec);
        click_all_methods(rec);
      }
    } else if (rec.menu.Noncoding.checked) {
      for (const auto& name : o.methods)
        if (!(rec.menu.*method_item(name)).checked) click_method(rec, method_item(name));
      bool kimura = false;
      for (const auto& name : o.methods) kimura = kimura || name == "k2p";
      if (!kimura && rec.menu.Kimura2p.checked) click_method(rec, &Menu::Kimura2p);
    } else {
      if (o.methods.size() != 1) {
        err << "varnoth: a coding analysis takes one method, jc or k2p\n";
        return false;
      }
      click_method(rec, method_item(o.methods[0]));
    }
  }
  if (o.region) {
    const auto dash = o.region->find('-');
    open_region_dialog(rec);
    rec.region_dialog.Text1.text = o.region->substr(0, dash);
    rec.region_dialog.Text2.text = dash == std::string::npos ? "" : o.region->substr(dash + 1);
    if (!accept_region(rec, s.platform)) {
      err << "varnoth: region " << *o.region << " refused: positions run from 1 to "
          << static_cast<long long>(rec.seq.SeqLength) << ", first below last\n";
      return false;
    }
  }
  if (o.window) {
    const auto colon = o.window->find(':');
    open_sliding_windows(rec);
    rec.form.TextWinSize.text = o.window->substr(0, colon);
    rec.form.TextMovement.text = colon == std::string::npos ? "" : o.window->substr(colon + 1);
    if (!accept_sliding_windows(rec, s.platform)) return false;
  }
  return true;
}

// The extension is read behind the first "." of the path: pass the path as a
// dialog would give it, absolute and without "./" or "../".
std::string dialog_path(const std::string& path) {
  std::error_code ec;
  auto absolute = std::filesystem::absolute(path, ec);
  return ec ? path : absolute.lexically_normal().string();
}

}  // namespace

int info_command(const std::string& path, std::ostream& out, std::ostream& err) {
  Session s(err);
  const input::InputStatus status = input::load_sequence_file(s.rec, s.platform, dialog_path(path));
  if (!status.ok()) return 1;
  out << s.rec.form.Text1.text;
  return 0;
}

int run_command(const RunOptions& o, std::ostream& out, std::ostream& err) {
  Session s(err);
  if (!input::load_sequence_file(s.rec, s.platform, dialog_path(o.input)).ok()) return 1;
  if (!apply_options(s, o, err)) return 1;
  std::optional<MatrixItem> item;
  if (!o.matrix_item.empty()) {
    item = matrix_item_by_name(o.matrix_item, s.rec.menu.JukesandCantor.checked);
    if (!item || item->coding != s.rec.menu.Coding.checked) {
      err << "varnoth: --matrix " << o.matrix_item << " is not a matrix of this analysis\n";
      return 2;
    }
  }
  AnalysisRecord& rec = s.rec;
  if (!o.window_table_path.empty() && rec.region.WindowMode != 1) {
    err << "varnoth: --win needs a window run (--window SIZE:STEP)\n";
    return 2;
  }
  // The report and the window table go to their files as the run writes them;
  // a file is put in place only when the run and its writing succeed.
  std::optional<AtomicFile> report_file, table_file;
  divergence::RunSettings settings;
  settings.threads = o.threads;
  if (o.report_path.empty()) {
    settings.report_sink = [&out](std::string_view text) { out << text; };
  } else {
    report_file.emplace(o.report_path);
    report_file->append(common_head(s.platform.clock()));
    settings.report_sink = [&report_file](std::string_view text) { report_file->append(text); };
  }
  if (!o.window_table_path.empty()) {
    table_file.emplace(o.window_table_path);
    settings.window_table_sink = [&table_file](std::string_view text) { table_file->append(text); };
  }
  if (!divergence::run_divergence(rec, s.platform, settings)) return 1;
  int code = 0;
  if (report_file && !report_file->commit()) {
    err << "varnoth: cannot write " << o.report_path << "\n";
    code = 1;
  }
  if (table_file && !table_file->commit()) {
    err << "varnoth: cannot write " << o.window_table_path << "\n";
    code = 1;
  }
  if (item) {
    if (!rec.form.MatrixBoton.visible) {
      err << "varnoth: a matrix needs at least 3 sequences and no window run\n";
      return 1;
    }
    rec.form.Fichero1.text = o.matrix_path;
    const std::string text = matrix_text(rec, *item, s.platform.clock(), o.matrix_path);
    if (!write_text_file(o.matrix_path, text)) {
      err << "varnoth: cannot write " << o.matrix_path << "\n";
      code = 1;
    }
  }
  return code;
}

int run(int argc, char** argv) { return run(argc, argv, std::cout, std::cerr); }

int run(int argc, char** argv, std::ostream& out, std::ostream& err) {
  CLI::App app{"Varnoth: divergence of aligned nucleotide sequences", "varnoth"};
  app.set_version_flag("--version", std::string("varnoth ") + VARNOTH_VERSION);
  app.require_subcommand(1);

  std::string info_path;
  CLI::App* info = app.add_subcommand("info", "Show the Input Sequence Information of a file");
  info->add_option("FILE", info_path, "Alignment file")->required();

  RunOptions o;
  bool coding_flag = false;
  std::string methods;
  CLI::App* run_app = app.add_subcommand("run", "Run a divergence analysis of every pair");
  run_app->add_option("FILE", o.input, "Alignment file")->required();
  auto* nc = run_app->add_flag("--noncoding", o.noncoding, "Noncoding analysis (six corrections)");
  run_app->add_flag("--coding", coding_flag, "Coding analysis, Ks and Ka (the default)")
      ->excludes(nc);
  run_app->add_option("--method", methods, "jc,k2p,tn,t1p,t2p,t4p or all")
      ->check([](const std::string& v) -> std::string {
        if (v == "all") return {};
        std::stringstream ss(v);
        std::string item;
        while (std::getline(ss, item, ','))
          if (item != "jc" && item != "k2p" && item != "tn" && item != "t1p" && item != "t2p" &&
              item != "t4p")
            return "unknown method " + item;
        return {};
      });
  run_app->add_option("--code", o.code, "Genetic code")
      ->check(CLI::IsMember({"universal", "vertmito", "dromito"}));
  run_app->add_option("--restrict", o.restriction, "Comparison restriction")
      ->check(CLI::IsMember({"max1", "no3", "aa"}));
  run_app->add_option("--weight", o.weight, "Probability of pathways with synonymous changes");
  run_app->add_option("--region", o.region, "Region FIRST-LAST in nucleotides");
  auto* win = run_app->add_option("--window", o.window, "Sliding windows SIZE:STEP in nucleotides");
  run_app->add_option("-o,--output", o.report_path, "Report file (.out), with its head");
  run_app->add_option("--threads", o.threads, "Threads computing pairs (default: one per core)")
      ->check(CLI::NonNegativeNumber);
  run_app->add_option("--win", o.window_table_path, "Window table file (.win)")->needs(win);
  auto* matrix = run_app->add_option("--matrix", o.matrix_item,
                                     "Matrix: ks ka trss trsa trvs trva | fd jc k2p k2p-trs "
                                     "k2p-trv tn t1p t2p t4p");
  auto* matrix_file = run_app->add_option("-m,--matrix-file", o.matrix_path, "Matrix file (.dis)");
  matrix->needs(matrix_file);
  matrix_file->needs(matrix);

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    if (e.get_exit_code() == 0) {
      out << (e.get_name() == "CallForVersion" ? std::string(e.what()) : app.help()) << "\n";
      return 0;
    }
    err << "varnoth: " << e.what() << "\nRun with --help for more information.\n";
    return 2;
  }
  if (*info) return info_command(info_path, out, err);
  if (!methods.empty()) {
    std::stringstream ss(methods);
    std::string item;
    while (std::getline(ss, item, ',')) o.methods.push_back(item);
  }
  return run_command(o, out, err);
}

}  // namespace varnoth::cli
