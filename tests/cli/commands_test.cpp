// The command line end to end: info, run with its output files, exit codes.
#include <cstdlib>
#include <filesystem>
#include <random>
#include <sstream>

#include <gtest/gtest.h>

#include "cli/commands.h"
#include "support/cli_runner.h"
#include "support/paths.h"

namespace {

using varnoth::testing::read_file;
using varnoth::testing::scratch_dir;
using varnoth::testing::source_path;

using Result = varnoth::testing::CliResult;
Result cli(std::vector<std::string> args) { return varnoth::testing::run_cli(std::move(args)); }

TEST(Info, EveryExampleFormat) {
  const std::pair<const char*, const char*> formats[] = {
      {"gde", "GDE"},     {"lwl", "LWL (91) / Text"}, {"meg", "MEGA"}, {"pir", "NBRF/PIR"},
      {"aln", "CLUSTAL"}, {"msf", "MSF"},             {"phy", "PHYLIP"}};
  for (const auto& [ext, label] : formats) {
    const auto r = cli({"info", source_path(std::string("examples/coding/primates.") + ext)});
    ASSERT_EQ(r.code, 0) << ext << r.err;
    EXPECT_NE(r.out.find(std::string(" Input File Format: ") + label + "\r\n"), std::string::npos)
        << ext;
    EXPECT_NE(r.out.find(" Number of Sequences:                6\r\n"), std::string::npos) << ext;
    EXPECT_NE(r.out.find(" Number of Nucleotide positions:   900\r\n"), std::string::npos) << ext;
    EXPECT_EQ(r.out.rfind(" Input File Name:   primates.", 0), 0u) << ext;
  }
}

TEST(Info, RefusedFilesExitOneWithTheMessage) {
  for (const char* name : {"fasta_like.aln", "empty.gde", "binary.dat", "no_format.txt"}) {
    const auto r = cli({"info", source_path(std::string("examples/malformed/") + name)});
    EXPECT_EQ(r.code, 1) << name;
    EXPECT_TRUE(r.out.empty()) << name;
    EXPECT_NE(r.err.find("OPEN SEQUENCE FILE"), std::string::npos) << name << r.err;
  }
  EXPECT_EQ(cli({"info", "/no/such/file.meg"}).code, 1);
}

TEST(Usage, ErrorsExitTwo) {
  EXPECT_EQ(cli({"run"}).code, 2);
  EXPECT_EQ(cli({"run", "x.meg", "--code", "klingon"}).code, 2);
  EXPECT_EQ(cli({"run", "x.meg", "--method", "jc,xyz"}).code, 2);
  EXPECT_EQ(cli({"run", "x.meg", "--matrix", "ks"}).code, 2);  // no -m
  EXPECT_EQ(cli({"run", "x.meg", "--noncoding", "--coding"}).code, 2);
  EXPECT_EQ(cli({"--help"}).code, 0);
}

TEST(Run, WritesReportWindowTableAndMatrix) {
  const varnoth::testing::FixedDate date;
  const std::string dir = scratch_dir();
  const std::string in = source_path("examples/noncoding/introns.meg");
  auto r = cli({"run", in, "--noncoding", "--method", "all", "-o", dir + "/a.out", "--matrix",
                "k2p", "-m", dir + "/a.dis"});
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_TRUE(r.out.empty());
  const std::string report = read_file(dir + "/a.out");
  const std::string head =
      "\r\n Varnoth v6.0\r\n 01/02/1970  00:00:00\r\n " + std::string(64, '*') + "\r\n";
  EXPECT_EQ(report.rfind(head + " NONCODING DIVERGENCE ANALYSIS\r\n", 0), 0u);
  const std::string matrix = read_file(dir + "/a.dis");
  EXPECT_EQ(matrix.rfind("#MEGA\r\nTITLE: Varnoth v6.0  * Divergence Matrix Output *\r\n", 0), 0u);
  EXPECT_NE(matrix.find("Input File Name:                " + dir + "/a.dis\r\n"),
            std::string::npos);

  r = cli({"run", in, "--noncoding", "--window", "180:60", "--win", dir + "/a.win"});
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(read_file(dir + "/a.win").rfind("Begin(bp)\tEnd(bp)\tMiddle(bp)\tK-2p\r\n", 0), 0u);
  EXPECT_NE(r.out.find(" WINDOW #1\r\n"), std::string::npos);

  // A matrix of a window run does not exist: the run is done, the matrix refused.
  r = cli({"run", in, "--noncoding", "--window", "180:60", "--matrix", "jc", "-m", dir + "/b.dis"});
  EXPECT_EQ(r.code, 1);
  EXPECT_FALSE(std::filesystem::exists(dir + "/b.dis"));
}

TEST(Run, RefusedOptionsExitOne) {
  const std::string in = source_path("examples/coding/primates.meg");
  auto r = cli({"run", in, "--weight", "1.5"});
  EXPECT_EQ(r.code, 1);
  EXPECT_NE(r.err.find("Invalid weight (0<=Prob<=1)!"), std::string::npos);
  r = cli({"run", in, "--window", "10:5"});
  EXPECT_EQ(r.code, 1);
  EXPECT_NE(r.err.find("Window Size Too small !"), std::string::npos);
  r = cli({"run", in, "--region", "50-50"});
  EXPECT_EQ(r.code, 1);
  EXPECT_NE(r.err.find("region 50-50 refused"), std::string::npos);
  r = cli({"run", in, "--matrix", "jc", "-m", "/tmp/x.dis"});
  EXPECT_EQ(r.code, 2);  // a noncoding item for a coding run
}

TEST(Run, CodingRestrictionsAndCodesReachTheReport) {
  const std::string in = source_path("examples/coding/primates.aln");
  auto r = cli({"run", in, "--restrict", "max1", "--code", "dromito", "--weight", "0.9"});
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_EQ(r.out.rfind(" CODING DIVERGENCE ANALYSIS  * MAXIMUM ONE SUBSTITUTION PER CODON *\r\n"
                        " Genetic Code: Drosophila Mitochondrial\r\n"
                        " Multiple-pathways weight: Synonymous/Total =0.9\r\n"
                        " Multiple-hits Correcting Method: Kimura-2p \r\n",
                        0),
            0u);
}

}  // namespace

namespace {

// A random coding alignment of `n` sequences: one ancestor without internal
// stop codons, each sequence a few percent away from it, some gaps.
std::string random_alignment(int n, int codons, unsigned seed) {
  std::mt19937 rng(seed);
  const char* letters = "ACGT";
  auto stop = [](const std::string& c) { return c == "TAA" || c == "TAG" || c == "TGA"; };
  std::string ancestor;
  while (static_cast<int>(ancestor.size()) < 3 * codons) {
    std::string c{letters[rng() % 4], letters[rng() % 4], letters[rng() % 4]};
    if (!stop(c)) ancestor += c;
  }
  std::string text = "#MEGA\nTITLE: random\n\n";
  for (int s = 0; s < n; ++s) {
    std::string seq = ancestor;
    for (int i = 0; i < codons; ++i) {
      for (int tries = 0; tries < 3; ++tries) {
        std::string c = seq.substr(3 * i, 3);
        if (rng() % 100 < 6) c[rng() % 3] = letters[rng() % 4];
        if (!stop(c)) {
          seq.replace(3 * i, 3, c);
          break;
        }
      }
    }
    if (s % 7 == 3) seq.replace(3 * (rng() % codons), 3, "---");
    text += "#S" + std::to_string(s + 1) + "\n" + seq + "\n";
  }
  return text;
}

TEST(Run, SameOutputsOnAnyNumberOfThreads) {
  const varnoth::testing::FixedDate date;
  const std::string dir = scratch_dir();
  varnoth::testing::write_file(dir + "/many.meg", random_alignment(72, 60, 7));  // 2556 pairs
  std::string first_report, first_matrix;
  for (const char* threads : {"1", "2", "5"}) {
    const auto r = cli({"run", dir + "/many.meg", "--threads", threads, "--matrix", "ks", "-m",
                        dir + "/many.dis"});
    ASSERT_EQ(r.code, 0) << r.err;
    std::string matrix = read_file(dir + "/many.dis");
    if (first_report.empty()) {
      first_report = r.out;
      first_matrix = matrix;
      EXPECT_NE(r.out.find(" Comparison # 2556\r\n"), std::string::npos);
    } else {
      EXPECT_EQ(r.out, first_report) << threads;
      EXPECT_EQ(matrix, first_matrix) << threads;
    }
  }
}

TEST(Run, LargeAlignmentCompletes) {
  const std::string dir = scratch_dir();
  varnoth::testing::write_file(dir + "/large.meg", random_alignment(200, 1000, 11));
  auto r = cli({"run", dir + "/large.meg", "-o", dir + "/large.out"});
  ASSERT_EQ(r.code, 0) << r.err;
  const std::string report = read_file(dir + "/large.out");
  EXPECT_NE(report.find(" Comparison # 19900\r\n Seq. A: S199\r\n Seq. B: S200\r\n"),
            std::string::npos);
  r = cli({"run", dir + "/large.meg", "--noncoding", "--method", "all", "-o", dir + "/large.out"});
  ASSERT_EQ(r.code, 0) << r.err;
}

}  // namespace
