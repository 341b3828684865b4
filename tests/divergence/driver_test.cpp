// The divergence run over pairs: whole reports of small alignments, pair order,
// the filter, and the failures.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "divergence/driver.h"
#include "state/options.h"
#include "support/alignment_builder.h"
#include "support/fake_platform.h"

namespace varnoth {
namespace {

const std::string kStars = " " + std::string(61, '*') + "\r\n";

struct Fixture {
  AnalysisRecord rec;
  testing::FakePlatform platform;
  Fixture() {
    start_up(rec);
    title_page_click(rec);
  }
  bool run() { return divergence::run_divergence(rec, platform); }
};

TEST(NoncodingRun, TwoSequencesJukesCantorAndKimura) {
  Fixture f;
  click_noncoding(f.rec);
  click_method(f.rec, &Menu::JukesandCantor);
  testing::load_alignment(f.rec, {{"first", "ACGTACGTACGTAAGG"}, {"second", "ACGTACGAACGTGAGG"}});
  ASSERT_TRUE(f.run());
  // P = Q = 1/16; JC = -3/4 ln(1 - 4p/3) = 0.1367412; Kimura A = 0.0704368,
  // B = 0.0667657, K = 0.1372025 (computed independently).
  const std::string expected =
      " NONCODING DIVERGENCE ANALYSIS\r\n"
      "\r\n"
      " Multiple-hits Correcting Method:\r\n"
      "   Jukes and Cantor-1p \r\n"
      "   Kimura-2p \r\n"
      "\r\n"
      " Number of Nucleotide positions: 16\r\n"
      " Number of Analyzed positions:   16\r\n"
      "\r\n" +
      kStars +
      " Seq. A: first\r\n"
      " Seq. B: second\r\n"
      "\r\n"
      "                 A         G         C         T\r\n"
      " Seq. A :      5.00      5.00      3.00      3.00 \r\n"
      " Seq. B :      5.00      6.00      3.00      2.00 \r\n"
      "  MEAN  :      5.00      5.50      3.00      2.50 \r\n"
      "\r\n"
      " Obs.Subst.Frq.   Fd=  0.12500 \r\n"
      " Jukes & Cantor    K=  0.13674 \r\n"
      " Kimura 2-p        K=  0.13720   (A= 0.07044  B= 0.06677 )\r\n"
      "\r\n";
  EXPECT_EQ(f.rec.results.ReportText, expected);
  EXPECT_EQ(f.rec.form.Text3.text, expected);
  EXPECT_FALSE(f.rec.form.MatrixBoton.visible);
  EXPECT_EQ(f.rec.results.NoncodingResultsReady, 1);
  EXPECT_DOUBLE_EQ(f.rec.last_noncoding.CountG2, 6);
}

// The progress box as each comparison is settled: a coding run leaves it empty
// at comparisons 999 and 1000, a noncoding run does not.
class ProgressPlatform : public testing::FakePlatform {
 public:
  explicit ProgressPlatform(const AnalysisRecord& rec) : rec_(rec) {}
  void yield() override { shown.push_back(rec_.form.Text33.text); }
  std::vector<std::string> shown;

 private:
  const AnalysisRecord& rec_;
};

TEST(Run, ProgressTextsLeaveComparisons999And1000EmptyInCodingRuns) {
  std::vector<std::pair<std::string, std::string>> sequences;
  std::mt19937 rng(7);
  for (int i = 0; i < 46; ++i) {  // 1035 comparisons
    std::string s = "ATGAAACCCGGG";
    s[5 + 3 * (rng() % 3)] = "ACGT"[rng() % 4];  // third positions: never a stop
    sequences.push_back({"s" + std::to_string(i + 1), s});
  }
  for (const bool coding : {true, false}) {
    AnalysisRecord rec;
    start_up(rec);
    title_page_click(rec);
    if (!coding) click_noncoding(rec);
    testing::load_alignment(rec, sequences);
    ProgressPlatform platform(rec);
    ASSERT_TRUE(divergence::run_divergence(rec, platform));
    ASSERT_EQ(platform.shown.size(), 1035u);
    EXPECT_EQ(platform.shown[0], "  Comp# 1  of 1035");
    EXPECT_EQ(platform.shown[997], "  Comp# 998  of 1035");
    EXPECT_EQ(platform.shown[998], coding ? "" : "  Comp# 999  of 1035");
    EXPECT_EQ(platform.shown[999], coding ? "" : " Comp# 1000  of 1035");
    EXPECT_EQ(platform.shown[1000], " Comp# 1001  of 1035");
    EXPECT_EQ(platform.shown[1034], " Comp# 1035  of 1035");
  }
}

TEST(Run, OneSequenceFails) {
  Fixture f;
  testing::load_alignment(f.rec, {{"only", "ATGAAATTT"}});
  EXPECT_FALSE(f.run());
  ASSERT_EQ(f.platform.messages.size(), 1u);
  EXPECT_EQ(f.platform.messages[0].text, " There is ONLY ONE Sequence !!");
  EXPECT_EQ(f.platform.messages[0].title, "    SEQUENCE FILE    ");
  EXPECT_FALSE(f.rec.form.SSTab3.visible);
  EXPECT_EQ(f.platform.beeps, 0);
}

TEST(Run, StopCodonEndsTheRunKeepingThePairsBefore) {
  Fixture f;
  testing::load_alignment(f.rec, {{"a", "ATGAAATTTGGG"},
                                  {"b", "ATGAAGTTTGGA"},
                                  {"c", "ATGTAATTTGGG"}});  // TAA inside: pair (1,3) fails
  EXPECT_FALSE(f.run());
  ASSERT_EQ(f.platform.messages.size(), 1u);
  EXPECT_EQ(f.platform.messages[0].text, " There are STOP Codons !!");
  EXPECT_EQ(f.platform.beeps, 1);
  const std::string& report = f.rec.results.ReportText;
  EXPECT_NE(report.find(" Comparison # 1\r\n"), std::string::npos);
  EXPECT_EQ(report.find(" Comparison # 2\r\n"), std::string::npos);
  EXPECT_TRUE(f.rec.menu.Diver.enabled);
}

TEST(Run, TerminalStopColumnIsDroppedSilently) {
  Fixture f;
  testing::load_alignment(f.rec, {{"a", "ATGAAATTTTAA"}, {"b", "ATGAAGTTTTGA"}});
  EXPECT_TRUE(f.run());
  EXPECT_TRUE(f.platform.messages.empty());
  EXPECT_NE(f.rec.results.ReportText.find(" Number of Analyzed positions:   9\r\n"),
            std::string::npos);
}

TEST(Run, PairOrderAndGapsRemoveColumnsForAllPairs) {
  Fixture f;
  click_noncoding(f.rec);
  testing::load_alignment(f.rec, {{"s1", "ACGTACGTAC"},
                                  {"s2", "ACGTACGTAA"},
                                  {"s3", "ACGTNCGTAC"},
                                  {"s4", "ACG-ACGTAG"}});
  ASSERT_TRUE(f.run());
  const std::string& report = f.rec.results.ReportText;
  EXPECT_NE(report.find(" Number of Analyzed positions:   8\r\n"), std::string::npos);
  const char* order[6][2] = {{"s1", "s2"}, {"s1", "s3"}, {"s1", "s4"},
                             {"s2", "s3"}, {"s2", "s4"}, {"s3", "s4"}};
  std::size_t at = 0;
  for (int i = 0; i < 6; ++i) {
    const std::string head = " Comparison # " + std::to_string(i + 1) + "\r\n" + kStars +
                             " Seq. A: " + order[i][0] + "\r\n Seq. B: " + order[i][1] + "\r\n";
    at = report.find(head, at);
    ASSERT_NE(at, std::string::npos) << i;
  }
  EXPECT_TRUE(f.rec.form.MatrixBoton.visible);
  // (1,3) differ nowhere once the N column is gone: K = 0, printed, not N.A.
  EXPECT_FALSE(f.rec.results.ComparisonStore[2][2].not_applicable);
  EXPECT_EQ(f.rec.results.ComparisonStore[2][2].value, 0);
}

}  // namespace
}  // namespace varnoth
