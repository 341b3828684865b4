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

// While it lives, the command line dates its outputs 01/02/1970 00:00:00, so
// that runs a second apart write the same bytes.
class FixedDate {
 public:
  FixedDate();
  ~FixedDate();
  FixedDate(const FixedDate&) = delete;
  FixedDate& operator=(const FixedDate&) = delete;
};

}  // namespace varnoth::testing
