// The Snakemake workflow of workflows/Snakefile, run locally on three bundled
// examples: one job per alignment, their tables merged into one.
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include <gtest/gtest.h>

#include "cli/commands.h"
#include "support/cli_runner.h"
#include "support/paths.h"

namespace {

namespace fs = std::filesystem;
using varnoth::testing::read_file;
using varnoth::testing::scratch_dir;
using varnoth::testing::source_path;

bool in_ci() {
  const char* ci = std::getenv("CI");
  return ci != nullptr && *ci != '\0' && std::string(ci) != "false";
}

// The table of one alignment as `varnoth run FILE --method jc --tsv` writes it.
std::string direct_table(const std::string& input, const std::string& path) {
  const auto r = varnoth::testing::run_cli({"run", input, "--method", "jc", "--tsv", path});
  EXPECT_EQ(r.code, 0) << r.err;
  return read_file(path);
}

TEST(Workflow, SnakemakeRunsEachAlignmentAndMergesTheTables) {
  if (std::system("command -v snakemake > /dev/null 2>&1") != 0) {
    if (in_ci()) FAIL() << "snakemake is missing: scripts/setup installs it";
    GTEST_SKIP() << "snakemake is not installed (apt-get install snakemake); CI runs this test";
  }
  const std::string program = std::string(VARNOTH_BINARY_DIR) + "/varnoth";
  if (!fs::exists(program)) {
    if (in_ci()) FAIL() << program << " is missing: build the varnoth target";
    GTEST_SKIP() << program << " is not built (cmake --build ... --target varnoth)";
  }
  const std::string dir = scratch_dir() + "/workflow";
  fs::remove_all(dir);
  fs::create_directories(dir + "/alignments");
  const std::vector<std::string> names = {"primates.aln", "primates.fasta", "primates.phy"};
  for (const auto& name : names)
    fs::copy_file(source_path("examples/coding/" + name), dir + "/alignments/" + name);

  const std::string command = "snakemake --snakefile '" + source_path("workflows/Snakefile") +
                              "' --directory '" + dir + "' --cores 2 --config 'alignments=" +
                              dir + "/alignments' 'out=" + dir + "/results' 'varnoth=" + program +
                              "' 'options=--method jc' > '" + dir + "/snakemake.log' 2>&1";
  ASSERT_EQ(std::system(command.c_str()), 0) << read_file(dir + "/snakemake.log");

  // The merged table: one header row, then each alignment's rows in file order,
  // each table as the command line writes it for that alignment alone.
  std::string expected;
  for (const auto& name : names) {
    const std::string table = read_file(dir + "/results/tables/" + name + ".tsv");
    EXPECT_EQ(table, direct_table(dir + "/alignments/" + name, dir + "/direct.tsv")) << name;
    EXPECT_TRUE(fs::exists(dir + "/results/reports/" + name + ".out")) << name;
    const auto header_end = table.find('\n') + 1;
    if (expected.empty()) expected = table.substr(0, header_end);
    EXPECT_EQ(table.substr(0, header_end), expected.substr(0, header_end)) << name;
    EXPECT_EQ(table.substr(header_end).rfind(name + "\t", 0), 0u) << name;
    expected += table.substr(header_end);
  }
  const std::string merged = read_file(dir + "/results/pairs.tsv");
  EXPECT_EQ(merged, expected);
  EXPECT_EQ(std::count(merged.begin(), merged.end(), '\n'), 1 + 3 * 15);
}

}  // namespace
