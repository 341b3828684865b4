// The `varnoth` command line: parses the arguments into plain options and runs
// the same handlers the desktop program's menus run.
#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace varnoth::cli {

struct RunOptions {
  std::string input;
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
  int threads = 0;                    // --threads; 0 = one per core
};

// Runs the command line; returns the exit code (0 done, 1 refused input or a
// failed analysis, 2 usage error).
int run(int argc, char** argv);
int run(int argc, char** argv, std::ostream& out, std::ostream& err);

// `varnoth info FILE` and `varnoth run ...` once parsed.
int info_command(const std::string& path, std::ostream& out, std::ostream& err);
int run_command(const RunOptions& options, std::ostream& out, std::ostream& err);

}  // namespace varnoth::cli
