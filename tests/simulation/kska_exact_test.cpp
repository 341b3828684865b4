#include "simulation/kska_exact.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "support/fake_platform.h"
#include "support/paths.h"

namespace {

using namespace varnoth;
using namespace varnoth::simulation;
using varnoth::testing::FakePlatform;

// The fractions of an answer, read back from the end of its rows.
double sum_of_rows(const std::string& answer) {
  double sum = 0;
  std::istringstream in(answer);
  std::string line;
  std::getline(in, line);  // the title
  while (std::getline(in, line)) sum += std::stod(line.substr(line.size() - 7, 6));
  return sum;
}

KsKaDialog finished_dialog() {
  KsKaDialog d;
  // Ks: 0.1, 0.2, 0.2, 0.3, 9 (not applicable), 8 (not applicable), 7.99.
  d.null_distribution = {{0.1, 0.05}, {0.2, 0.3}, {0.2, 0.1}, {0.3, 9},
                         {9, 0.1},    {8, 0.2},   {7.99, 0.1}};
  d.results_ready = true;
  return d;
}

TEST(ExactProbability, KsRowsAndTheirSum) {
  KsKaDialog d = finished_dialog();
  d.Text15.text = "0.3";
  d.Text14.text = "0.2";
  exact_probability_ks(d);
  EXPECT_EQ(d.Text15.text, "");  // the other value box is cleared
  EXPECT_EQ(d.Text16.text,
            " *EXACT PROBABILITY:\r\n"
            " Prob. [Ks < 0.2] = 0.1429\r\n"      // 1 of 7
            " Prob. [Ks > 0.2] = 0.2857\r\n"      // 0.3 and 7.99
            " Prob. [Ks = 0.2] = 0.2857\r\n"      // two on the value
            " Prob. [Not Appl.]  = 0.2857\r\n");  // 9 and 8
  EXPECT_NEAR(sum_of_rows(d.Text16.text), 1, 1e-9);
}

TEST(ExactProbability, KaAndTheValueBox) {
  KsKaDialog d = finished_dialog();
  d.Text14.text = "0.1";
  d.Text15.text = "0.1000004";  // more than 6 characters: rewritten
  exact_probability_ka(d);
  EXPECT_EQ(d.Text14.text, "");
  EXPECT_EQ(d.Text15.text, "0.1000");
  // The rows show the box; the counts are against the value as typed, so the
  // three replicates of 0.1 are below it.
  EXPECT_EQ(d.Text16.text,
            " *EXACT PROBABILITY:\r\n"
            " Prob. [Ka < 0.1000] = 0.5714\r\n"
            " Prob. [Ka > 0.1000] = 0.2857\r\n"
            " Prob. [Ka = 0.1000] = 0.0000\r\n"
            " Prob. [Not Appl.]  = 0.1429\r\n");
  d.Text15.text = "0.1";
  exact_probability_ka(d);
  EXPECT_NE(d.Text16.text.find(" Prob. [Ka = 0.1] = 0.4286\r\n"), std::string::npos);
  // A value of 0 has no "<" row; a comma is read by the locale rule.
  d.Text15.text = "0";
  exact_probability_ka(d);
  EXPECT_EQ(d.Text16.text.find("[Ka <"), std::string::npos);
  EXPECT_NEAR(sum_of_rows(d.Text16.text), 1, 1e-9);
  d.Text15.text = "0,2";
  exact_probability_ka(d);
  EXPECT_NE(d.Text16.text.find(" Prob. [Ka = 0,2] = 0.1429\r\n"), std::string::npos);
}

TEST(ExactProbability, ValuesOutOfRange) {
  struct Case {
    const char* value;
    bool valid;
  };
  for (const Case c : {Case{"5", false}, Case{"-0.1", false}, Case{"4.9999", true}, Case{"0", true},
                       Case{"text", true}}) {
    KsKaDialog d = finished_dialog();
    d.Text14.text = c.value;
    exact_probability_ks(d);
    EXPECT_EQ(d.Text16.text == " Ks value Not Valid", !c.valid) << c.value;
    d.Text15.text = c.value;
    exact_probability_ka(d);
    EXPECT_EQ(d.Text16.text == " Ka value Not Valid", !c.valid) << c.value;
  }
  KsKaDialog d = finished_dialog();
  d.Text18.text = "99";
  exact_probability_ratio(d);
  EXPECT_EQ(d.Text16.text, " Ka/Ks value Not Valid");
  d.Text18.text = "98.9";
  exact_probability_ratio(d);
  EXPECT_NE(d.Text16.text, " Ka/Ks value Not Valid");
}

TEST(ExactProbability, KaKsWithInfiniteAndNotApplicableRatios) {
  KsKaDialog d;
  d.null_distribution = {{0.1, 0.05}, {0.2, 0.3}, {0, 0.1}, {9, 0.1}, {0.1, 9}, {0.2, 0.1}};
  d.Text18.text = "0.5";
  exact_probability_ratio(d);
  // Ratios 0.5, 1.5, 0.5; Ks = 0 is infinite and also not applicable; two more
  // lines are not applicable.
  EXPECT_EQ(d.Text16.text,
            " *EXACT PROBABILITY:\r\n"
            " Prob. [Ka/Ks < 0.5] = 0.0000\r\n"
            " Prob. [Ka/Ks > 0.5] = 0.1667\r\n"
            " Prob. [Ka/Ks = 0.5] = 0.3333\r\n"
            " Prob.[Ka/Ks=Inf.(Ks=0)]= 0.1667\r\n"
            " Prob.[Ka or Ks NotApp.]= 0.3333\r\n");
  EXPECT_NEAR(sum_of_rows(d.Text16.text), 1, 1e-9);
  const ExactCounts c = count_ratios(d.null_distribution, 0.5);
  EXPECT_EQ(c.infinite, 1);
  EXPECT_EQ(c.not_applicable, 3);
}

TEST(NullDistribution, EveryLineOnceWithTheMark) {
  std::vector<ReplicateLine> lines;
  for (int i = 0; i < 60; ++i) lines.push_back({0.001 * i, 0.5 + 0.001 * i});
  lines[10] = {9, 0.2};
  lines[11] = {0.3, 9};
  lines[12] = {8, 8.0001};  // 8 is kept, above 8 is not applicable
  UniformRandom random(4);
  const std::string text = null_distribution_text(lines, random);

  std::vector<std::string> got;
  std::istringstream in(text);
  std::string line;
  while (std::getline(in, line)) {
    ASSERT_FALSE(line.empty());
    ASSERT_EQ(line.back(), '\r');
    line.pop_back();
    ASSERT_EQ(line.size(), 16u) << line;
    got.push_back(line);
  }
  ASSERT_EQ(got.size(), lines.size());
  // No head: the first line is a replicate.
  EXPECT_NE(text.rfind(got[0], 0), std::string::npos);
  std::vector<std::string> want;
  for (const ReplicateLine& l : lines) {
    std::string w;
    if (l.ks > 8)
      w += kNotApplicableField;
    else
      append_data_field(w, l.ks);
    if (l.ka > 8)
      w += kNotApplicableField;
    else
      append_data_field(w, l.ka);
    want.push_back(w);
  }
  EXPECT_EQ(want[10], "    N.A.  0.2000");
  EXPECT_EQ(want[11], "  0.3000    N.A.");
  EXPECT_EQ(want[12], "  8.0000    N.A.");
  EXPECT_NE(got, want);  // drawn order
  std::sort(got.begin(), got.end());
  std::sort(want.begin(), want.end());
  EXPECT_EQ(got, want);

  UniformRandom again(4);
  EXPECT_EQ(null_distribution_text(lines, again), text);
}

TEST(Saving, ResultsAndNullDistributionFiles) {
  const std::string folder = varnoth::testing::scratch_dir();
  AnalysisRecord rec;
  rec.seq.InputFileName = "primates.aln.meg";
  rec.ReportBuffer = "*SIMULATION PARAMETERS*\r\n\r\n";
  FakePlatform platform;
  platform.save_answers = {folder + "/out.ci", "", folder + "/out.cid"};

  ASSERT_TRUE(save_kska_results(rec, platform));
  ASSERT_EQ(platform.save_requests.size(), 1u);
  EXPECT_EQ(platform.save_requests[0].filter, "C.I.Output files (*.ci)|*.ci|All files (*.*)|*.*");
  EXPECT_EQ(platform.save_requests[0].default_name, "primates.ci");
  EXPECT_EQ(varnoth::testing::read_file(folder + "/out.ci"),
            "\r\n Varnoth v6.0\r\n 11-23-2026  10:00:00\r\n " + std::string(64, '*') +
                "\r\n CONFIDENCE INTERVALS ANALYSIS\r\n*SIMULATION PARAMETERS*\r\n\r\n");
  EXPECT_FALSE(save_kska_results(rec, platform));  // cancelled

  KsKaDialog d;
  d.null_distribution = {{0.1, 0.2}, {9, 0.3}};
  d.random.reseed(1);
  ASSERT_TRUE(save_null_distribution(d, rec, platform));
  EXPECT_EQ(platform.save_requests[2].filter,
            "C.I.Output files (*.ci*)|*.ci;*.cid|All files (*.*)|*.*");
  EXPECT_EQ(platform.save_requests[2].default_name, "primates.cid");
  const std::string saved = varnoth::testing::read_file(folder + "/out.cid");
  EXPECT_TRUE(saved == "  0.1000  0.2000\r\n    N.A.  0.3000\r\n" ||
              saved == "    N.A.  0.3000\r\n  0.1000  0.2000\r\n")
      << saved;

  AnalysisRecord unnamed;
  EXPECT_EQ(kska_default_name(unnamed.seq.InputFileName, ".cid"), "*.cid");
  EXPECT_EQ(kska_default_name("", ".ci"), "*.ci");
}

TEST(Saving, PrintSendsTheHeadAndTheShownReport) {
  KsKaDialog d;
  d.Text13.text = "report text\r\n";
  FakePlatform platform;
  print_kska_results(d, platform);
  ASSERT_EQ(platform.printed.size(), 1u);
  EXPECT_EQ(platform.printed[0], "\r\n Varnoth v6.0\r\n 11-23-2026  10:00:00\r\n " +
                                     std::string(64, '*') +
                                     "\r\n CONFIDENCE INTERVALS ANALYSIS\r\nreport text\r\n");
}

}  // namespace
