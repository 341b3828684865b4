// The divergence run over pairs: whole reports of small alignments, pair order,
// the filter, and the failures.
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

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

// Sequences of `codons` codons without a stop: most close to one ancestor,
// sequences 5 to 8 unrelated, whose pairs make estimates fail and take values
// from the pair before. `stop_in` (from 1; 0 for none) gets a TAA at its middle codon.
std::vector<std::pair<std::string, std::string>> mixed_alignment(int sequences, int codons,
                                                                 int stop_in) {
  std::mt19937 rng(11);
  const char* letters = "ACGT";
  const auto is_stop = [](const std::string& c) { return c == "TAA" || c == "TAG" || c == "TGA"; };
  const auto random_codon = [&] {
    std::string c;
    do c = {letters[rng() % 4], letters[rng() % 4], letters[rng() % 4]};
    while (is_stop(c));
    return c;
  };
  std::vector<std::string> ancestor(static_cast<std::size_t>(codons));
  for (auto& c : ancestor) c = random_codon();
  std::vector<std::pair<std::string, std::string>> out;
  for (int s = 1; s <= sequences; ++s) {
    std::string seq;
    for (int i = 0; i < codons; ++i) {
      const bool unrelated = s >= 5 && s <= 8;
      seq += unrelated || rng() % 10 == 0 ? random_codon() : ancestor[static_cast<std::size_t>(i)];
    }
    if (s == stop_in) seq.replace(static_cast<std::size_t>(3 * (codons / 2)), 3, "TAA");
    out.emplace_back("s" + std::to_string(s), seq);
  }
  return out;
}

// What a run leaves in the record for what comes after it (the values of its
// last pair, the last-pair line, the report and its page) does not depend on
// whether the run keeps its stores, hands its report on as it goes or computes
// on several threads; nor where it stops at a STOP codon.
TEST(Run, WhatTheRunLeavesDoesNotDependOnHowItIsMade) {
  struct Way {
    const char* name;
    int threads;
    bool streamed;
  };
  const Way ways[] = {{"kept, one thread", 1, false},
                      {"streamed, one thread", 1, true},
                      {"streamed, two threads", 2, true},
                      {"kept, seven threads", 7, false},
                      {"streamed, seven threads", 7, true}};
  for (const bool coding : {true, false}) {
    for (const int stop_in : {0, 23}) {
      if (!coding && stop_in != 0) continue;
      SCOPED_TRACE(std::string(coding ? "coding" : "noncoding") + " stop " +
                   std::to_string(stop_in));
      const auto sequences = mixed_alignment(40, 90, stop_in);  // 780 comparisons
      Fixture first;
      std::string first_report;
      for (const Way& way : ways) {
        SCOPED_TRACE(way.name);
        Fixture f;
        if (!coding) {
          click_noncoding(f.rec);
          click_all_methods(f.rec);
        }
        testing::load_alignment(f.rec, sequences);
        divergence::RunSettings settings;
        settings.threads = way.threads;
        std::string report;
        if (way.streamed) {
          settings.keep_stores = false;
          settings.report_sink = [&report](std::string_view text) { report += text; };
        }
        EXPECT_EQ(divergence::run_divergence(f.rec, f.platform, settings), stop_in == 0);
        if (!way.streamed) report = f.rec.results.ReportText;
        if (&way == &ways[0]) {
          first.rec = f.rec;
          first_report = report;
          // A stop in sequence 23 ends the run at its first pair, (1, 23).
          EXPECT_NE(report.find(stop_in == 0 ? " Comparison # 780\r\n" : " Comparison # 21\r\n"),
                    std::string::npos);
          EXPECT_EQ(report.find(" Comparison # 22\r\n") == std::string::npos, stop_in != 0);
          if (coding) {
            EXPECT_FALSE(f.rec.results.LastPairLine.empty());
          }
          continue;
        }
        EXPECT_TRUE(report == first_report);
        EXPECT_EQ(f.rec.form.Text3.text, first.rec.form.Text3.text);
        EXPECT_EQ(f.rec.results.LastPairLine, first.rec.results.LastPairLine);
        const CodingHandedOnFields& h = f.rec.results.handed_on;
        const CodingHandedOnFields& g = first.rec.results.handed_on;
        EXPECT_EQ(std::tie(h.Ks, h.Ka, h.KsMethod, h.KaMethod, h.As, h.Bs, h.Aa, h.Ba, h.SES, h.NES,
                           h.PairGCContent),
                  std::tie(g.Ks, g.Ka, g.KsMethod, g.KaMethod, g.As, g.Bs, g.Aa, g.Ba, g.SES, g.NES,
                           g.PairGCContent));
        const LastNoncodingEstimate& l = f.rec.last_noncoding;
        const LastNoncodingEstimate& m = first.rec.last_noncoding;
        EXPECT_EQ(std::tie(l.CountA1, l.CountT2, l.KJukesCantor, l.KKimura, l.KimuraA, l.KimuraB,
                           l.KTajimaNei, l.KTajima1p, l.KTajima2p, l.KTajima4p),
                  std::tie(m.CountA1, m.CountT2, m.KJukesCantor, m.KKimura, m.KimuraA, m.KimuraB,
                           m.KTajimaNei, m.KTajima1p, m.KTajima2p, m.KTajima4p));
        EXPECT_EQ(f.rec.seq.CodonCount, first.rec.seq.CodonCount);
        EXPECT_EQ(f.rec.menu.CIcodingRegion.enabled, first.rec.menu.CIcodingRegion.enabled);
      }
    }
  }
}

}  // namespace
}  // namespace varnoth
