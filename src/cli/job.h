// One alignment of `varnoth run`: read it, set the options, run, and write its
// outputs.
#pragma once

#include <iosfwd>
#include <string>

#include "cli/commands.h"
#include "cli/progress.h"

namespace varnoth::cli {

// Where one alignment's outputs go; an empty path means none, except for the
// report, which then goes to the output stream.
struct JobOutputs {
  std::string report, window_table, matrix, table, plot;
};

struct Job {
  std::string input;    // path of the alignment file
  std::string subject;  // named in its messages; "" for the only input
  JobOutputs outputs;
};

// Runs one alignment with `threads` threads; its messages go to `err` and its
// report, without -o, to `out`. Returns the exit code of the alignment.
int run_job(const RunOptions& options, const Job& job, int threads, std::ostream& out,
            std::ostream& err, Progress* progress);

// The path as a file dialog gives it, absolute and without "./" or "../": the
// extension is read behind the first "." of the whole path.
std::string dialog_path(const std::string& path);

// The options that do not depend on a file (method count, weight, matrix
// item), checked once before alignments run. Returns 0 or an exit code.
int check_options(const RunOptions& options, std::ostream& err);

}  // namespace varnoth::cli
