#include <gtest/gtest.h>

#include "support/cli_runner.h"

namespace {

using varnoth::testing::run_cli;

TEST(CommandLine, VersionAndUsageErrors) {
  const auto version = run_cli({"--version"});
  EXPECT_EQ(version.code, 0);
  EXPECT_NE(version.out.find("varnoth 6.0"), std::string::npos);
  EXPECT_EQ(run_cli({"--no-such-flag"}).code, 2);
  EXPECT_EQ(run_cli({}).code, 2);
}

}  // namespace
