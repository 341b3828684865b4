// The `varnoth` command line: parses the arguments into plain options and runs
// the same handlers the desktop program's menus run.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace varnoth::cli {

struct RunOptions {
  // FILE...: alignment files and folders (a folder stands for its files, in
  // sorted order). More than one file, or a folder, makes -o, --win, -m and
  // --tsv name folders, in which each alignment's outputs are named after it.
  std::vector<std::string> inputs;
  std::string format;  // --format: read every file as this format (gde ... fasta)
  bool noncoding = false;
  std::vector<std::string> methods;  // jc, k2p, tn, t1p, t2p, t4p, or "all"
  std::string code;                  // universal, vertmito, dromito
  std::string restriction;           // max1, no3, aa
  std::optional<std::string> weight;
  std::optional<std::string> region;  // FIRST-LAST
  std::optional<std::string> window;  // SIZE:STEP
  std::string report_path;            // -o
  std::string window_table_path;      // --win
  std::string matrix_item;            // --matrix
  std::string matrix_path;            // -m
  std::string table_path;             // --tsv
  std::string plot_path;              // --plot: .svg, or a folder with a file per comparison
  int threads = 0;                    // --threads; 0 = one per core
  bool show_progress = false;         // a progress line on the error stream
};

// Runs the command line; returns the exit code (0 done, 1 refused input or a
// failed analysis, 2 usage error). The version with streams draws no progress
// line unless `err` is standard error on a terminal.
int run(int argc, char** argv);
int run(int argc, char** argv, std::ostream& out, std::ostream& err);

// `varnoth info FILE` and `varnoth run ...` once parsed. `format` is "" or a
// name of --format.
int info_command(const std::string& path, const std::string& format, std::ostream& out,
                 std::ostream& err);
int run_command(const RunOptions& options, std::ostream& out, std::ostream& err);

}  // namespace varnoth::cli
