// Whole outputs against golden files derived by an independent implementation
// (tests/reference) and checked line by line against the rules.
#include <sstream>

#include <gtest/gtest.h>

#include "cli/commands.h"
#include "support/cli_runner.h"
#include "support/paths.h"

namespace {

using varnoth::testing::read_file;
using varnoth::testing::scratch_dir;
using varnoth::testing::source_path;

struct Golden {
  const char* folder;
  const char* input;
  std::vector<std::string> flags;
  const char* report;
  const char* table = nullptr;   // window table
  const char* matrix = nullptr;  // matrix item
  const char* matrix_rows = nullptr;
};

const Golden kGoldens[] = {
    {"noncoding_all_2seq", "input.meg", {"--noncoding", "--method", "all"}, "report.txt"},
    {"noncoding_all_5seq", "input.meg", {"--noncoding", "--method", "all"}, "report.txt", nullptr,
     "k2p", "matrix_k2p.txt"},
    {"coding_kimura_6seq", "input.meg", {}, "report.txt", nullptr, "ks", "matrix_ks.txt"},
    {"coding_restrictions", "input.meg", {"--restrict", "max1"}, "report_max1.txt"},
    {"coding_restrictions", "input.meg", {"--restrict", "no3"}, "report_no3.txt"},
    {"coding_restrictions", "input.meg", {"--restrict", "aa"}, "report_aa.txt"},
    {"coding_restrictions", "input.meg", {"--weight", "0.9"}, "report_w09.txt"},
    {"coding_jc", "input.meg", {"--method", "jc"}, "report.txt"},
    {"region", "input.meg", {"--noncoding", "--method", "all", "--region", "31-250"}, "report.txt"},
    {"region", "input_coding.meg", {"--region", "31-600"}, "report_coding.txt"},
    {"window", "input.meg", {"--noncoding", "--method", "jc,k2p", "--window", "180:60"},
     "report.txt", "table.win"},
    {"window", "input_coding.meg", {"--window", "450:150"}, "report_coding.txt",
     "table_coding.win"},
    {"many", "input.meg", {"--noncoding", "--method", "k2p"}, "report.txt"},
    {"mito", "input.meg", {"--code", "vertmito"}, "report.txt"},
    {"coding_kept", "input.meg", {}, "report.txt"},
};

class GoldenRun : public ::testing::TestWithParam<Golden> {};

void check_golden(const Golden& g, const char* threads) {
  const std::string dir = std::string("tests/golden/") + g.folder + "/";
  const std::string scratch = scratch_dir();
  std::vector<std::string> args = {"run", source_path(dir + g.input), "--threads",
                                   threads};
  args.insert(args.end(), g.flags.begin(), g.flags.end());
  if (g.table) args.insert(args.end(), {"--win", scratch + "/golden.win"});
  if (g.matrix) args.insert(args.end(), {"--matrix", g.matrix, "-m", scratch + "/golden.dis"});
  const auto r = varnoth::testing::run_cli(std::move(args));
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out, read_file(source_path(dir + g.report)));
  if (g.table) {
    EXPECT_EQ(read_file(scratch + "/golden.win"), read_file(source_path(dir + g.table)));
  }
  if (g.matrix) {
    const std::string dis = read_file(scratch + "/golden.dis");
    const auto rows = dis.find("\r\n   #1");
    ASSERT_NE(rows, std::string::npos);
    EXPECT_EQ(dis.substr(rows + 2), read_file(source_path(dir + g.matrix_rows)));
  }
}

// One thread and several: pairs are computed apart and written in order, so
// the outputs are the same.
TEST_P(GoldenRun, MatchesByteForByte) {
  check_golden(GetParam(), "1");
  check_golden(GetParam(), "3");
}

INSTANTIATE_TEST_SUITE_P(Outputs, GoldenRun, ::testing::ValuesIn(kGoldens),
                         [](const ::testing::TestParamInfo<Golden>& param) {
                           std::string name = std::string(param.param.folder) + "_" + param.param.report;
                           for (char& c : name)
                             if (!isalnum(static_cast<unsigned char>(c))) c = '_';
                           return name;
                         });

}  // namespace
