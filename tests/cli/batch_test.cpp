// Many alignments in one call, FASTA input on the command line, --format, and
// the progress line's text.
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include <gtest/gtest.h>

#include "cli/commands.h"
#include "cli/progress.h"
#include "support/cli_runner.h"
#include "support/paths.h"

namespace {

namespace fs = std::filesystem;
using varnoth::testing::read_file;
using varnoth::testing::scratch_dir;
using varnoth::testing::source_path;
using varnoth::testing::write_file;

using Result = varnoth::testing::CliResult;
Result cli(std::vector<std::string> args) { return varnoth::testing::run_cli(std::move(args)); }

// The lines of a text, without those that start with any of `skipped`.
std::string without_lines(const std::string& text, std::vector<std::string> skipped) {
  std::istringstream in(text);
  std::string line, out;
  while (std::getline(in, line)) {
    bool skip = false;
    for (const auto& s : skipped) skip = skip || line.rfind(s, 0) == 0;
    if (!skip) out += line + "\n";
  }
  return out;
}

TEST(Fasta, SameReportsAsPhylipApartFromNamesAndLabel) {
  struct Case {
    const char* stem;
    std::vector<std::string> flags;
  };
  const Case cases[] = {{"examples/coding/primates", {}},
                        {"examples/coding/primates", {"--method", "jc", "--window", "300:150"}},
                        {"examples/noncoding/introns", {"--noncoding", "--method", "all"}}};
  for (const Case& c : cases) {
    std::vector<std::string> fasta = {"run", source_path(std::string(c.stem) + ".fasta")};
    std::vector<std::string> phylip = {"run", source_path(std::string(c.stem) + ".phy")};
    fasta.insert(fasta.end(), c.flags.begin(), c.flags.end());
    phylip.insert(phylip.end(), c.flags.begin(), c.flags.end());
    const Result f = cli(fasta), p = cli(phylip);
    ASSERT_EQ(f.code, 0) << f.err;
    ASSERT_EQ(p.code, 0) << p.err;
    EXPECT_NE(f.out, p.out);  // the names differ
    EXPECT_EQ(without_lines(f.out, {" Seq. A: ", " Seq. B: "}),
              without_lines(p.out, {" Seq. A: ", " Seq. B: "}))
        << c.stem;
    EXPECT_GT(f.out.size(), 1000u);

    const Result fi = cli({"info", source_path(std::string(c.stem) + ".fasta")});
    const Result pi = cli({"info", source_path(std::string(c.stem) + ".phy")});
    EXPECT_NE(fi.out.find(" Input File Format: FASTA\r\n"), std::string::npos);
    const std::vector<std::string> varying = {" Input File Name:", " Input File Format:",
                                              " Sequence#"};
    EXPECT_EQ(without_lines(fi.out, varying), without_lines(pi.out, varying)) << c.stem;
  }
}

TEST(Fasta, FormatOptionOverridesTheExtension) {
  const std::string dir = scratch_dir();
  write_file(dir + "/pair.txt", ">one\nATGAAACCCGGG\n>two\nATGAAGCCCGGA\n");
  EXPECT_EQ(cli({"info", dir + "/pair.txt"}).code, 1);
  Result r = cli({"info", "--format", "fasta", dir + "/pair.txt"});
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_NE(r.out.find(" Input File Format: FASTA\r\n"), std::string::npos);
  r = cli({"run", dir + "/pair.txt", "--format", "fasta", "--noncoding"});
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_NE(r.out.find(" Seq. B: two\r\n"), std::string::npos);
  // A PHYLIP file under a FASTA name, read as PHYLIP.
  fs::copy_file(source_path("examples/coding/primates.phy"), dir + "/primates.fa",
                fs::copy_options::overwrite_existing);
  r = cli({"info", "--format", "phylip", dir + "/primates.fa"});
  ASSERT_EQ(r.code, 0) << r.err;
  EXPECT_NE(r.out.find(" Input File Format: PHYLIP\r\n"), std::string::npos);
  EXPECT_EQ(cli({"info", "--format", "fastq", dir + "/pair.txt"}).code, 2);
}

TEST(Fasta, UnequalLengthsNamedOnTheErrorStream) {
  const std::string dir = scratch_dir();
  write_file(dir + "/uneven.fasta", ">one\nATGAAACCCGGG\n>two\nATGAAGCCC\n>three\nATGAAGCCCGGA\n");
  const Result r = cli({"run", dir + "/uneven.fasta"});
  EXPECT_EQ(r.code, 1);
  EXPECT_NE(r.err.find("\"two\" has 9 positions, the longest sequence 12: uneven.fasta, line 3"),
            std::string::npos)
      << r.err;
}

// Three alignments, the second malformed, with every output per alignment.
class ManyAlignments : public ::testing::Test {
 protected:
  void SetUp() override {
    dir = scratch_dir() + "/" + ::testing::UnitTest::GetInstance()->current_test_info()->name();
    fs::remove_all(dir);
    fs::create_directories(dir + "/in");
    fs::copy_file(source_path("examples/coding/primates.fasta"), dir + "/in/a_primates.fasta");
    fs::copy_file(source_path("examples/malformed/fasta_like.aln"), dir + "/in/b_broken.aln");
    fs::copy_file(source_path("examples/coding/primates.meg"), dir + "/in/c_primates.meg");
  }
  varnoth::testing::FixedDate date;
  std::string dir;
};

TEST_F(ManyAlignments, MalformedSecondFileTheOthersFinishExitOne) {
  for (const char* threads : {"1", "3"}) {
    const std::string out = dir + "/out" + threads;
    const Result r = cli({"run", dir + "/in", "--threads", threads, "-o", out + "/reports",
                          "--tsv", out + "/tables", "--matrix", "ks", "-m", out + "/matrices"});
    EXPECT_EQ(r.code, 1);
    EXPECT_TRUE(r.out.empty());
    // Named with its reason, once.
    EXPECT_NE(r.err.find(dir + "/in/b_broken.aln: OPEN SEQUENCE FILE: File Format Error\n"),
              std::string::npos)
        << r.err;
    EXPECT_EQ(r.err.find("a_primates"), std::string::npos) << r.err;
    EXPECT_EQ(r.err.find("c_primates"), std::string::npos) << r.err;
    for (const char* stem : {"a_primates", "c_primates"}) {
      EXPECT_TRUE(fs::exists(out + "/reports/" + stem + ".out")) << stem;
      EXPECT_TRUE(fs::exists(out + "/tables/" + stem + ".tsv")) << stem;
      EXPECT_TRUE(fs::exists(out + "/matrices/" + stem + ".dis")) << stem;
    }
    EXPECT_FALSE(fs::exists(out + "/reports/b_broken.out"));
    EXPECT_FALSE(fs::exists(out + "/tables/b_broken.tsv"));
  }
}

TEST_F(ManyAlignments, OutputsAsOneAtATime) {
  const Result many = cli({"run", dir + "/in/a_primates.fasta", dir + "/in/c_primates.meg",
                           "--window", "300:150", "-o", dir + "/many", "--win", dir + "/many",
                           "--tsv", dir + "/many"});
  ASSERT_EQ(many.code, 0) << many.err;
  for (const char* stem : {"a_primates.fasta", "c_primates.meg"}) {
    const std::string one = dir + "/one_" + stem;
    const Result r = cli({"run", dir + "/in/" + stem, "--window", "300:150", "-o", one + ".out",
                          "--win", one + ".win", "--tsv", one + ".tsv"});
    ASSERT_EQ(r.code, 0) << r.err;
    const std::string name = std::string(stem).substr(0, std::string(stem).find('.'));
    for (const char* ext : {".out", ".win", ".tsv"})
      EXPECT_EQ(read_file(dir + "/many/" + name + ext), read_file(one + ext)) << stem << ext;
  }
  // Without -o the reports follow one another on the output, in input order.
  const Result out = cli({"run", dir + "/in/c_primates.meg", dir + "/in/a_primates.fasta"});
  const Result c = cli({"run", dir + "/in/c_primates.meg"});
  const Result a = cli({"run", dir + "/in/a_primates.fasta"});
  EXPECT_EQ(out.out, c.out + a.out);
}

TEST_F(ManyAlignments, FolderOrderAndNameClashes) {
  // Sorted by name, hidden files left out.
  write_file(dir + "/in/.hidden.fasta", "not an alignment");
  fs::copy_file(source_path("examples/noncoding/introns.fasta"), dir + "/in/b0_introns.fasta");
  Result r = cli({"run", dir + "/in", "--noncoding"});
  EXPECT_EQ(r.code, 1);
  const auto a = r.out.find(" Seq. A: Homo_sapiens\r\n");
  const auto b = r.out.find(" Seq. A: D_melanogaster\r\n");
  const auto c = r.out.rfind(" Seq. A: Homo_sapiens\r\n");
  ASSERT_NE(b, std::string::npos);
  EXPECT_LT(a, b);
  EXPECT_LT(b, c);
  EXPECT_EQ(r.err.find(".hidden"), std::string::npos);

  // Two inputs that would write the same output names: nothing runs.
  fs::copy_file(source_path("examples/coding/primates.aln"), dir + "/in/a_primates.aln");
  r = cli({"run", dir + "/in", "--tsv", dir + "/clash"});
  EXPECT_EQ(r.code, 2);
  EXPECT_NE(r.err.find("a_primates.aln and " + dir + "/in/a_primates.fasta"), std::string::npos)
      << r.err;
  EXPECT_FALSE(fs::exists(dir + "/clash"));
  // An option refused for every alignment alike is told once.
  r = cli({"run", dir + "/in/a_primates.fasta", dir + "/in/c_primates.meg", "--weight", "2"});
  EXPECT_EQ(r.code, 1);
  EXPECT_EQ(r.err.find("Invalid weight"), r.err.rfind("Invalid weight"));
}

TEST(Progress, LineText) {
  using varnoth::cli::ProgressState;
  using varnoth::cli::progress_text;
  struct Case {
    ProgressState state;
    const char* text;
  };
  const Case cases[] = {
      // 300 pairs in 3 of 120 alignments: about 12000 in all; 11850 left at 15/s.
      {{120, 3, 2, 300, 150, 10}, "2/120 alignments, 150/~12000 pairs, 15 pairs/s, 13m10s left"},
      {{1, 1, 0, 19900, 9950, 5}, "0/1 alignment, 9950/19900 pairs, 1990 pairs/s, 5s left"},
      {{4, 0, 0, 0, 0, 1.5}, "0/4 alignments, 0/? pairs, 0 pairs/s"},
      {{2, 2, 1, 1000000, 1000, 10}, "1/2 alignments, 1000/1000000 pairs, 100 pairs/s, 2h46m left"},
      {{2, 2, 2, 10, 10, 2}, "2/2 alignments, 10/10 pairs, 5 pairs/s, 0s left"},
  };
  for (const Case& c : cases) EXPECT_EQ(progress_text(c.state), c.text);

  // Not on a terminal: messages pass, no line is drawn.
  std::ostringstream err;
  {
    varnoth::cli::Progress progress(err, false, 2);
    progress.alignment_read(10);
    for (int i = 0; i < 200; ++i) progress.pair_done();
    progress.write("varnoth: message\n");
    progress.alignment_done(0);
  }
  EXPECT_EQ(err.str(), "varnoth: message\n");
}

}  // namespace
