#include "cli/commands.h"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <map>
#include <mutex>
#include <sstream>
#include <thread>

#include <unistd.h>

#include <CLI/CLI.hpp>

#include "cli/console_platform.h"
#include "cli/job.h"
#include "cli/progress.h"
#include "divergence/parallel.h"
#include "input/format_detection.h"
#include "input/sequence_file.h"
#include "reports/saving.h"
#include "state/options.h"

namespace varnoth::cli {

namespace fs = std::filesystem;

namespace {

// The alignment files the arguments stand for: a file as it is, a folder by
// the files in it (not those whose names start with "."), sorted by name.
// `several` tells whether outputs are named per alignment: more than one
// argument, or a folder.
bool expand_inputs(const std::vector<std::string>& args, std::vector<std::string>& files,
                   bool& several, std::ostream& err) {
  several = args.size() > 1;
  for (const std::string& arg : args) {
    std::error_code ec;
    if (!fs::is_directory(arg, ec)) {
      files.push_back(arg);
      continue;
    }
    several = true;
    std::vector<std::string> found;
    for (fs::directory_iterator it(arg, ec), end; !ec && it != end; it.increment(ec)) {
      if (it->path().filename().string().starts_with('.')) continue;
      std::error_code kind;
      if (it->is_regular_file(kind)) found.push_back(it->path().string());
    }
    if (ec) {
      err << "varnoth: cannot read the folder " << arg << "\n";
      return false;
    }
    if (found.empty()) err << "varnoth: no alignment files in " << arg << "\n";
    std::sort(found.begin(), found.end());
    files.insert(files.end(), found.begin(), found.end());
  }
  return true;
}

// Output folders of a run over several alignments: each one named is made
// where it is missing. False (after a message) where one cannot be.
bool make_folders(const RunOptions& o, std::ostream& err) {
  for (const std::string* folder :
       {&o.report_path, &o.window_table_path, &o.matrix_path, &o.table_path, &o.plot_path}) {
    if (folder->empty()) continue;
    std::error_code ec;
    fs::create_directories(*folder, ec);
    if (!fs::is_directory(*folder, ec)) {
      err << "varnoth: " << *folder
          << " is not a folder: with several alignments -o, --win, -m and --tsv name folders\n";
      return false;
    }
  }
  return true;
}

// The output of `input` in `folder` (none without a folder): the file name up
// to its first "." and the extension, as the save dialogs name it.
std::string output_in(const std::string& folder, const std::string& input, std::string_view ext) {
  if (folder.empty()) return {};
  return (fs::path(folder) / default_output_name(input::file_name_of(input), ext)).string();
}

// Two alignments whose outputs would have the same name: the first pair found.
bool outputs_collide(const RunOptions& o, const std::vector<std::string>& files,
                     std::ostream& err) {
  if (o.report_path.empty() && o.window_table_path.empty() && o.matrix_path.empty() &&
      o.table_path.empty() && o.plot_path.empty())
    return false;
  std::map<std::string, const std::string*> seen;
  for (const std::string& file : files) {
    const std::string name = default_output_name(input::file_name_of(file), "");
    auto [at, fresh] = seen.emplace(name, &file);
    if (!fresh) {
      err << "varnoth: " << *at->second << " and " << file
          << " would write outputs of the same name (" << name << ".*)\n";
      return true;
    }
  }
  return false;
}

// Each alignment's messages and stdout report, written in input order as the
// alignments before it are done.
class OrderedOutput {
 public:
  OrderedOutput(std::size_t count, std::ostream& out, Progress& progress)
      : done_(count), out_(out), progress_(progress) {}
  void finished(std::size_t i, std::string out_text, std::string err_text, int code) {
    std::lock_guard lock(mutex_);
    done_[i] = {std::move(out_text), std::move(err_text), code, true};
    while (next_ < done_.size() && done_[next_].done) {
      Done& d = done_[next_++];
      out_ << d.out << std::flush;
      progress_.write(d.err);
      code_ = std::max(code_, d.code);
      d.out.clear();
      d.out.shrink_to_fit();
      d.err.clear();
    }
  }
  int code() const { return code_; }

 private:
  struct Done {
    std::string out, err;
    int code = 0;
    bool done = false;
  };
  std::mutex mutex_;
  std::vector<Done> done_;
  std::size_t next_ = 0;
  std::ostream& out_;
  Progress& progress_;
  int code_ = 0;
};

int run_several(const RunOptions& o, const std::vector<std::string>& files, std::ostream& out,
                Progress& progress) {
  const int cores = o.threads > 0
                        ? o.threads
                        : static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
  // Alignments run side by side; a few large ones share the threads left over.
  const int workers =
      static_cast<int>(std::min<std::size_t>(static_cast<std::size_t>(cores), files.size()));
  const int threads_each = std::max(1, cores / std::max(1, workers));
  OrderedOutput ordered(files.size(), out, progress);
  divergence::ParallelContext parallel(workers);
  parallel.for_each(files.size(), [&](std::size_t i, int) {
    const std::string& file = files[i];
    Job job{file, file,
            {output_in(o.report_path, file, ".out"), output_in(o.window_table_path, file, ".win"),
             output_in(o.matrix_path, file, ".dis"), output_in(o.table_path, file, ".tsv"),
             output_in(o.plot_path, file, ".svg")}};
    std::ostringstream job_out, job_err;
    const int code = run_job(o, job, threads_each, job_out, job_err, &progress);
    ordered.finished(i, std::move(job_out).str(), std::move(job_err).str(), code);
  });
  return ordered.code();
}

}  // namespace

int info_command(const std::string& path, const std::string& format, std::ostream& out,
                 std::ostream& err) {
  AnalysisRecord rec;
  ConsolePlatform platform(err);
  start_up(rec);
  title_page_click(rec);
  if (!input::load_sequence_file(rec, platform, dialog_path(path), input::format_by_name(format))
           .ok())
    return 1;
  out << rec.form.Text1.text;
  return 0;
}

int run_command(const RunOptions& o, std::ostream& out, std::ostream& err) {
  std::vector<std::string> files;
  bool several = false;
  if (!expand_inputs(o.inputs, files, several, err)) return 1;
  if (files.empty()) return 1;
  if (!several) {
    Progress progress(err, o.show_progress, 1);
    Job job{files[0], "",
            {o.report_path, o.window_table_path, o.matrix_path, o.table_path, o.plot_path}};
    std::ostringstream job_err;
    const int code = run_job(o, job, o.threads, out, job_err, &progress);
    progress.write(job_err.str());
    return code;
  }
  if (const int code = check_options(o, err); code != 0) return code;
  if (outputs_collide(o, files, err)) return 2;
  if (!make_folders(o, err)) return 2;
  Progress progress(err, o.show_progress, files.size());
  return run_several(o, files, out, progress);
}

int run(int argc, char** argv) { return run(argc, argv, std::cout, std::cerr); }

int run(int argc, char** argv, std::ostream& out, std::ostream& err) {
  CLI::App app{"Varnoth: divergence of aligned nucleotide sequences", "varnoth"};
  app.set_version_flag("--version", std::string("varnoth ") + VARNOTH_VERSION);
  app.require_subcommand(1);
  const auto formats = CLI::IsMember({"gde", "lwl", "mega", "pir", "clustal", "msf", "phylip",
                                      "fasta"});
  const char* format_help = "Read the file as this format whatever its extension";

  std::string info_path, info_format;
  CLI::App* info = app.add_subcommand("info", "Show the Input Sequence Information of a file");
  info->add_option("FILE", info_path, "Alignment file")->required();
  info->add_option("--format", info_format, format_help)->check(formats);

  RunOptions o;
  bool coding_flag = false, quiet = false;
  std::string methods;
  CLI::App* run_app = app.add_subcommand("run", "Run a divergence analysis of every pair");
  run_app->add_option("FILE", o.inputs,
                      "Alignment files or folders; with several, -o, --win, -m and --tsv "
                      "name folders")
      ->required();
  run_app->add_option("--format", o.format, format_help)->check(formats);
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
  run_app->add_option("--tsv", o.table_path,
                      "Per-pair table (.tsv): one row per pair, or per window");
  run_app->add_option("--plot", o.plot_path,
                      "Picture (.svg) of a --window run, or the heat map of --matrix; a folder "
                      "(ending in /) gets one file per comparison");
  run_app->add_flag("-q,--quiet", quiet, "No progress line on a terminal");

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
  if (*info) return info_command(info_path, info_format, out, err);
  if (!methods.empty()) {
    std::stringstream ss(methods);
    std::string item;
    while (std::getline(ss, item, ',')) o.methods.push_back(item);
  }
  // The line is drawn on a terminal only, and not over a report that goes to
  // the same screen.
  const bool report_on_screen =
      o.report_path.empty() && &out == &std::cout && ::isatty(STDOUT_FILENO) != 0;
  o.show_progress = !quiet && &err == &std::cerr && ::isatty(STDERR_FILENO) != 0 &&
                    !report_on_screen;
  return run_command(o, out, err);
}

}  // namespace varnoth::cli
