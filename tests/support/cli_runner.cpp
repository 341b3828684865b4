#include "support/cli_runner.h"

#include <cstdlib>
#include <sstream>

#include "cli/commands.h"

namespace varnoth::testing {

CliResult run_cli(std::vector<std::string> args) {
  args.insert(args.begin(), "varnoth");
  std::vector<char*> argv;
  for (auto& a : args) argv.push_back(a.data());
  std::ostringstream o, e;
  const int rc = varnoth::cli::run(static_cast<int>(argv.size()), argv.data(), o, e);
  return {rc, o.str(), e.str()};
}

FixedDate::FixedDate() { ::setenv("SOURCE_DATE_EPOCH", "86400", 1); }
FixedDate::~FixedDate() { ::unsetenv("SOURCE_DATE_EPOCH"); }

}  // namespace varnoth::testing
