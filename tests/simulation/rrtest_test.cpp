#include "simulation/rrtest.h"

#include <gtest/gtest.h>

#include <string>

namespace varnoth::simulation {
namespace {

// The driver's summary line of pair (2, 3): numbers in columns 1-4 and 6-9,
// Ks in 10-18, Ka in 20-27, right-aligned.
const std::string kLine23 = std::string("   2") + " " + "   3" + "  0.12345" + " " + " 0.04321";

AnalysisRecord record(int sequences, const std::string& line) {
  AnalysisRecord rec;
  rec.seq.SeqCount = sequences;
  rec.seq.SeqCountCopy = sequences;
  const char* names[] = {"alpha", "beta", "gamma_is_a_name_of_more_than_forty_characters_in_all",
                         "delta", "epsilon"};
  for (int i = 0; i < sequences; ++i) rec.seq.SeqNames.emplace_back(names[i]);
  rec.results.LastPairLine = line;
  return rec;
}

void choose(RRtestDialog& d, int first, int second, int outgroup) {
  d.Combo1.text = d.Combo1.items[static_cast<std::size_t>(first - 1)];
  d.Combo2.text = d.Combo2.items[static_cast<std::size_t>(second - 1)];
  d.Combo3.text = d.Combo3.items[static_cast<std::size_t>(outgroup - 1)];
  rrtest_selection_changed(d);
}

TEST(RRtest, OnlyTheLastPairsCellIsFilled) {
  const RRtestDialog d = open_rrtest(record(4, kLine23));
  ASSERT_EQ(kLine23.size(), 27u);
  ASSERT_EQ(d.PairKs.size(), 5u);
  for (int i = 0; i <= 4; ++i) {
    for (int j = 0; j <= 4; ++j) {
      const bool filled = i == 2 && j == 3;  // not (3, 2): the array is not mirrored
      EXPECT_EQ(d.PairKs[i][j], filled ? 0.12345f : 0.0f) << i << "," << j;
      EXPECT_EQ(d.PairKa[i][j], filled ? 0.04321f : 0.0f) << i << "," << j;
    }
  }
}

TEST(RRtest, ItemsPreselectionAndLabels) {
  RRtestDialog d = open_rrtest(record(4, kLine23));
  EXPECT_EQ(d.RRtest.text, "Relative-Rate Test for Coding Regions");
  ASSERT_EQ(d.Combo1.items.size(), 4u);
  EXPECT_EQ(d.Combo1.items[0], " Sequence#1: alpha");
  EXPECT_EQ(d.Combo3.items[2], " Sequence#3: gamma_is_a_name_of_more_than_forty_chara");
  // Ks(1,2) = Ks(1,3) = 0 < Ks(2,3): sequences 1 and 2 are paired, 3 is the outgroup.
  EXPECT_EQ(d.Combo1.text, " Sequence#1: alpha");
  EXPECT_EQ(d.Combo2.text, " Sequence#2: beta");
  EXPECT_EQ(d.Combo3.text, d.Combo3.items[2]);
  EXPECT_EQ(d.Label7.text, "0");
  EXPECT_EQ(d.Label9.text, "0");
  EXPECT_EQ(d.Label11.text, "0.12345");  // (second, outgroup) = (2, 3)
  EXPECT_EQ(d.Label12.text, "0.04321");

  // A line of pair (1, 2): Ks(1,3) and Ks(2,3) tie at 0; the earlier pair (1, 3) is paired.
  const std::string line12 = std::string("   1    2") + "  0.30000" + " " + " 0.10000";
  const RRtestDialog e = open_rrtest(record(3, line12));
  EXPECT_EQ(e.Seq1Index, 1);
  EXPECT_EQ(e.Seq2Index, 3);
  EXPECT_EQ(e.OutgroupIndex, 2);
  EXPECT_EQ(e.Label9.text, "0.3");  // (first, outgroup) = (1, 2)
  EXPECT_EQ(e.Label10.text, "0.1");
}

TEST(RRtest, SelectionReadsLowerNumberFirstAndMarksTwiceChosen) {
  RRtestDialog d = open_rrtest(record(4, kLine23));
  choose(d, 3, 4, 2);
  EXPECT_EQ(d.Seq1Index, 3);
  EXPECT_EQ(d.Seq2Index, 4);
  EXPECT_EQ(d.Label7.text, "0");        // (3, 4)
  EXPECT_EQ(d.Label9.text, "0.12345");  // (3, 2) read as (2, 3)
  EXPECT_EQ(d.Label10.text, "0.04321");
  EXPECT_EQ(d.Label11.text, "0");  // (4, 2) read as (2, 4)
  rrtest_accept(d);
  EXPECT_EQ(d.Text1.text, "0.12345");
  EXPECT_EQ(d.Text2.text, "0.04321");

  choose(d, 2, 4, 2);  // the outgroup is also the first sequence
  EXPECT_EQ(d.Label9.text, "??");
  EXPECT_EQ(d.Label10.text, "??");
  EXPECT_EQ(d.Label7.text, "0");
  rrtest_accept(d);  // "??" reads as 0: 0 - Ks(4, 2)
  EXPECT_EQ(d.Text1.text, "0.00000");

  choose(d, 4, 2, 3);
  rrtest_accept(d);  // Ks(4,3) - Ks(2,3)
  EXPECT_EQ(d.Text1.text, "-0.12345");
  EXPECT_EQ(d.Text2.text, "-0.04321");

  choose(d, 1, 1, 1);
  for (const Control* c : {&d.Label7, &d.Label8, &d.Label9, &d.Label10, &d.Label11, &d.Label12})
    EXPECT_EQ(c->text, "??");
}

TEST(RRtest, LinesThatDoNotFitFillNothing) {
  // Empty: no comparison was kept. Five digits shift the columns out of place.
  const std::string five = std::string("10000") + " " + "10001" + "  0.12345" + " " + " 0.04321";
  for (const std::string& line : {std::string(), five, std::string("   9    3  0.5 0.2")}) {
    const RRtestDialog d = open_rrtest(record(5, line));
    for (const auto& row : d.PairKs)
      for (float v : row) EXPECT_EQ(v, 0.0f) << line;
  }
}

TEST(RRtest, CancelShowsTheMainWindow) {
  AnalysisRecord rec = record(3, kLine23);
  rec.form.Form1.visible = false;
  RRtestDialog d = open_rrtest(rec);
  EXPECT_TRUE(d.visible);
  rrtest_cancel(rec, d);
  EXPECT_FALSE(d.visible);
  EXPECT_TRUE(rec.form.Form1.visible);
}

}  // namespace
}  // namespace varnoth::simulation
