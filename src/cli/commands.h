// The `varnoth` command line: parses the arguments into plain options and runs
// the same handlers the desktop program's menus run.
#pragma once

#include <iosfwd>

namespace varnoth::cli {

// Runs the command line; returns the exit code (0 done, 1 refused input or a
// failed analysis, 2 usage error).
int run(int argc, char** argv);
int run(int argc, char** argv, std::ostream& out, std::ostream& err);

}  // namespace varnoth::cli
