#include "cli/job.h"

#include <filesystem>
#include <ostream>

#include "cli/console_platform.h"
#include "divergence/driver.h"
#include "divergence/parallel.h"
#include "divergence/regions.h"
#include "input/format_detection.h"
#include "input/sequence_file.h"
#include "reports/matrix.h"
#include "reports/pair_table.h"
#include "reports/plot_files.h"
#include "reports/results_report.h"
#include "reports/saving.h"
#include "state/options.h"

namespace varnoth::cli {

namespace {

struct Session {
  AnalysisRecord rec;
  ConsolePlatform platform;
  Session(std::ostream& err, const std::string& subject) : platform(err) {
    platform.subject = subject;
    start_up(rec);
    title_page_click(rec);
  }
};

// "varnoth: " and the subject of the messages, for the command line's own.
std::ostream& say(std::ostream& err, const Session& s) {
  err << "varnoth: ";
  if (!s.platform.subject.empty()) err << s.platform.subject << ": ";
  return err;
}

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
// Returns false (after a message) where an entry is refused. Region and
// windows need the alignment; `with_file` false leaves them out.
bool apply_options(Session& s, const RunOptions& o, std::ostream& err, bool with_file = true) {
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
        say(err, s) << "a coding analysis takes one method, jc or k2p\n";
        return false;
      }
      click_method(rec, method_item(o.methods[0]));
    }
  }
  if (!with_file) return true;
  if (o.region) {
    const auto dash = o.region->find('-');
    open_region_dialog(rec);
    rec.region_dialog.Text1.text = o.region->substr(0, dash);
    rec.region_dialog.Text2.text = dash == std::string::npos ? "" : o.region->substr(dash + 1);
    if (!accept_region(rec, s.platform)) {
      say(err, s) << "region " << *o.region << " refused: positions run from 1 to "
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

// The matrix item of --matrix for the run the options set up: 0, or the exit
// code after a message.
int matrix_item_of(const Session& s, const RunOptions& o, std::optional<MatrixItem>& item,
                   std::ostream& err) {
  if (o.matrix_item.empty()) return 0;
  item = matrix_item_by_name(o.matrix_item, s.rec.menu.JukesandCantor.checked);
  if (!item || item->coding != s.rec.menu.Coding.checked) {
    say(err, s) << "--matrix " << o.matrix_item << " is not a matrix of this analysis\n";
    return 2;
  }
  return 0;
}

// The per-pair table of one run, kept in memory in pieces of about a MiB.
class TableWriter {
 public:
  TableWriter(const std::string& path, const AnalysisRecord& rec)
      : file_(path), rec_(rec),
        run_(reports::layout_of(rec, divergence::method_number(rec.menu))) {
    reports::append_pair_table_header(text_, run_.coding);
  }
  void add(const divergence::PairValues& v) {
    const auto& names = rec_.seq.SeqNames;
    reports::append_pair_table_row(text_, run_, rec_.seq.InputFileName,
                                   names[static_cast<std::size_t>(v.a - 1)],
                                   names[static_cast<std::size_t>(v.b - 1)], v);
    if (text_.size() > (1u << 20)) flush();
  }
  bool commit() {
    flush();
    return file_.commit();
  }

 private:
  void flush() {
    file_.append(text_);
    text_.clear();
  }
  AtomicFile file_;
  const AnalysisRecord& rec_;
  reports::RunLayout run_;
  std::string text_;
};

// Pairs of an alignment as the progress line counts them.
struct PairCounts {
  double read = 0, done = 0;
};

int run_alignment(const RunOptions& o, const Job& job, int threads, std::ostream& out,
                  std::ostream& err, Progress* progress, PairCounts& pairs) {
  // The pair threads start while the file is read.
  const divergence::ParallelContext parallel(threads);
  parallel.start();
  Session s(err, job.subject);
  AnalysisRecord& rec = s.rec;
  const input::InputFormat format = input::format_by_name(o.format);
  const bool loaded =
      input::load_sequence_file(rec, s.platform, dialog_path(job.input), format).ok();
  if (loaded) pairs.read = rec.seq.PairCount;
  if (progress) progress->alignment_read(pairs.read);
  if (!loaded) return 1;
  if (!apply_options(s, o, err)) return 1;
  std::optional<MatrixItem> item;
  if (const int code = matrix_item_of(s, o, item, err); code != 0) return code;
  const JobOutputs& paths = job.outputs;
  if (!paths.window_table.empty() && rec.region.WindowMode != 1) {
    say(err, s) << "--win needs a window run (--window SIZE:STEP)\n";
    return 2;
  }
  if (!paths.plot.empty() && rec.region.WindowMode != 1 && !item) {
    say(err, s) << "--plot needs a window run (--window SIZE:STEP) or --matrix ITEM\n";
    return 2;
  }
  // The report, the window table and the per-pair table go to their files as
  // the run writes them; a file is put in place only when the run and its
  // writing succeed.
  std::optional<AtomicFile> report_file, window_file;
  std::optional<TableWriter> pair_table;
  divergence::RunSettings settings;
  settings.parallel = &parallel;
  // Only the matrix and the heat map read the stores.
  settings.keep_stores = item.has_value();
  if (paths.report.empty()) {
    settings.report_sink = [&out](std::string_view text) { out << text; };
  } else {
    report_file.emplace(paths.report);
    report_file->append(common_head(s.platform.clock()));
    settings.report_sink = [&report_file](std::string_view text) { report_file->append(text); };
  }
  // The window chart is drawn from the table as printed; a copy is kept as it
  // streams to its file.
  std::string plotted_table;
  const bool plot_windows = !paths.plot.empty() && !item;
  if (!paths.window_table.empty()) window_file.emplace(paths.window_table);
  if (window_file || plot_windows) {
    settings.window_table_sink = [&window_file, &plotted_table,
                                  plot_windows](std::string_view text) {
      if (window_file) window_file->append(text);
      if (plot_windows) plotted_table.append(text);
    };
  }
  if (!paths.table.empty()) pair_table.emplace(paths.table, rec);
  const bool counting = progress != nullptr && progress->shown();
  if (pair_table || counting) {
    settings.pair_sink = [&](const divergence::PairValues& v) {
      if (pair_table) pair_table->add(v);
      if (counting && v.window <= 1) {
        progress->pair_done();
        ++pairs.done;
      }
    };
  }
  if (!divergence::run_divergence(rec, s.platform, settings)) return 1;
  int code = 0;
  const auto commit = [&](auto& file, const std::string& path) {
    if (file && !file->commit()) {
      say(err, s) << "cannot write " << path << "\n";
      code = 1;
    }
  };
  commit(report_file, paths.report);
  commit(window_file, paths.window_table);
  commit(pair_table, paths.table);
  if (item) {
    if (!rec.form.MatrixBoton.visible) {
      say(err, s) << "a matrix needs at least 3 sequences and no window run\n";
      return 1;
    }
    rec.form.Fichero1.text = paths.matrix;
    const std::string text = matrix_text(rec, *item, s.platform.clock(), paths.matrix);
    if (!write_text_file(paths.matrix, text)) {
      say(err, s) << "cannot write " << paths.matrix << "\n";
      code = 1;
    }
  }
  if (!paths.plot.empty()) {
    std::string error;
    if (reports::write_plots(rec, plotted_table, item ? &*item : nullptr, paths.plot, error) != 0) {
      say(err, s) << error << "\n";
      code = 1;
    }
  }
  return code;
}

}  // namespace

std::string dialog_path(const std::string& path) {
  std::error_code ec;
  auto absolute = std::filesystem::absolute(path, ec);
  return ec ? path : absolute.lexically_normal().string();
}

int check_options(const RunOptions& o, std::ostream& err) {
  Session s(err, "");
  if (!apply_options(s, o, err, false)) return 1;
  std::optional<MatrixItem> item;
  return matrix_item_of(s, o, item, err);
}

int run_job(const RunOptions& o, const Job& job, int threads, std::ostream& out,
            std::ostream& err, Progress* progress) {
  PairCounts pairs;
  const int code = run_alignment(o, job, threads, out, err, progress, pairs);
  if (progress) progress->alignment_done(pairs.read - pairs.done);
  return code;
}

}  // namespace varnoth::cli
