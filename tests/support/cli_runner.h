// Runs the command line in the test process and keeps what it printed.
#pragma once

#include <string>
#include <vector>

namespace varnoth::testing {

struct CliResult {
  int code;
  std::string out, err;
};

// `args` without the program name.
CliResult run_cli(std::vector<std::string> args);

}  // namespace varnoth::testing
