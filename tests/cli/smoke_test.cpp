#include <sstream>

#include <gtest/gtest.h>

#include "cli/commands.h"

namespace {

int run_cli(std::vector<std::string> args, std::string& out, std::string& err) {
  std::vector<char*> argv;
  for (auto& a : args) argv.push_back(a.data());
  std::ostringstream o, e;
  int rc = varnoth::cli::run(static_cast<int>(argv.size()), argv.data(), o, e);
  out = o.str();
  err = e.str();
  return rc;
}

TEST(CommandLine, VersionAndUsageErrors) {
  std::string out, err;
  EXPECT_EQ(run_cli({"varnoth", "--version"}, out, err), 0);
  EXPECT_NE(out.find("varnoth 6.0"), std::string::npos);
  EXPECT_EQ(run_cli({"varnoth", "--no-such-flag"}, out, err), 2);
  EXPECT_EQ(run_cli({"varnoth"}, out, err), 2);
}

}  // namespace
