#include "simulation/confid.h"

#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "support/fake_platform.h"
#include "support/paths.h"

namespace varnoth::simulation {
namespace {

using divergence::NucleotidePairTable;
using testing::FakePlatform;
using T = NucleotidePairTable;

std::vector<std::string> lines_of(const std::string& text) {
  std::vector<std::string> out;
  std::size_t start = 0;
  for (std::size_t end; (end = text.find("\r\n", start)) != std::string::npos; start = end + 2)
    out.push_back(text.substr(start, end - start));
  if (start < text.size()) out.push_back(text.substr(start));
  return out;
}

// A record with the main window's method set to `method` (1..6), noncoding.
AnalysisRecord noncoding_record(int method) {
  AnalysisRecord rec;
  rec.menu.Coding.checked = false;
  rec.menu.Noncoding.checked = true;
  MenuItem Menu::*items[6] = {&Menu::JukesandCantor, &Menu::Kimura2p, &Menu::TajimaandNei,
                              &Menu::Tajima1p,       &Menu::Tajima2p, &Menu::Tajima4p};
  for (int i = 0; i < 6; ++i) (rec.menu.*items[i]).checked = i + 1 == method;
  return rec;
}

ConfidDialog dialog(AnalysisRecord& rec, std::string div, std::string sites, std::string gc,
                    std::string reps, bool scan, std::uint64_t seed = 12345) {
  ConfidDialog d = open_confid(rec);
  d.Text1.text = std::move(div);
  d.Text2.text = std::move(sites);
  d.Text3.text = std::move(gc);
  d.Text4.text = std::move(reps);
  d.Check4.value = scan;
  d.seed = seed;
  return d;
}

// ---- Parameter checks ----

TEST(ConfidParameters, ChecksInOrderWithTitleAndIcon) {
  struct Case {
    const char *div, *sites, *gc, *reps, *message;
  };
  const Case cases[] = {
      {"0", "0", "200", "0", "Invalid Divergence Value !"},
      {"2.0001", "100", "50", "10", "Invalid Divergence Value !"},
      {"-0.5", "100", "50", "10", "Invalid Divergence Value !"},
      {"2,5", "100", "50", "10", "Invalid Divergence Value !"},  // comma: 2.5, not 2
      {"abc", "100", "50", "10", "Invalid Divergence Value !"},
      {"2", "0", "-1", "0", "Invalid Number of Sites !"},
      {"0,1", "-3", "50", "10", "Invalid Number of Sites !"},
      {"0.1", "100", "100.5", "0", "Invalid G+C Percentage !"},
      {"0.1", "100", "-0,5", "10", "Invalid G+C Percentage !"},
      {"0.1", "100", "100", "0", "Invalid Number of Replicates !"},
      {"0.1", "100", "0", "-4", "Invalid Number of Replicates !"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.div) + " " + c.sites + " " + c.gc + " " + c.reps);
    AnalysisRecord rec = noncoding_record(1);
    rec.seq.NucleotideCount = 77;
    ConfidDialog d = dialog(rec, c.div, c.sites, c.gc, c.reps, false);
    FakePlatform platform;
    EXPECT_EQ(confid_accept(rec, d, platform), ConfidOutcome::Refused);
    ASSERT_EQ(platform.messages.size(), 1u);
    EXPECT_EQ(platform.messages[0].text, c.message);
    EXPECT_EQ(platform.messages[0].title, "  SIMULATION PARAMETERS  ");
    EXPECT_EQ(platform.messages[0].icon, MessageIcon::Exclamation);
    EXPECT_EQ(platform.yields, 0);
    EXPECT_EQ(rec.seq.NucleotideCount, 77);  // a refused entry leaves the state
    EXPECT_TRUE(d.Text7.text.empty());
  }
}

// ---- Poisson table against an independent computation ----

double poisson_term(long k, long m) {
  return std::exp(-static_cast<double>(m) + k * std::log(static_cast<double>(m)) -
                  std::lgamma(static_cast<double>(k) + 1));
}

TEST(ConfidPoisson, MatchesCumulativeDistributionWithCutoffs) {
  for (long m : {5L, 40L, 75L, 120L, 400L}) {
    SCOPED_TRACE(m);
    std::vector<double> table;
    confid_poisson_table(m, table);
    ASSERT_EQ(table.size(), static_cast<std::size_t>(5 * m + 1));
    double sum = 0;
    long end = -1;
    for (long k = 0; k <= 5 * m; ++k) {
      const double term = poisson_term(k, m);
      if (term > 1e-30) sum += term;
      if (sum > 0.6 && term < 1e-06) {
        end = k;
        break;
      }
      // Terms of 1e-30 or less are left out: the table is exactly 0 before the first one.
      if (sum == 0) {
        EXPECT_EQ(table[k], 0.0) << k;
      } else {
        EXPECT_NEAR(table[k], sum, 1e-7 * std::max(1.0, m / 100.0)) << k;
        EXPECT_LT(table[k], 1.0);
      }
    }
    ASSERT_GT(end, 0);
    // The table ends at the first term under 1e-06 once the sum is past 0.6.
    for (long k = end; k <= 5 * m; ++k) EXPECT_EQ(table[k], 1.0) << k;
  }
}

TEST(ConfidPoisson, LargeMeanStartsAtZeroAndSmallMeanEndsShortOfOne) {
  std::vector<double> table;
  confid_poisson_table(400, table);  // e^-400 M^k/k! stays under 1e-30 for a long way
  EXPECT_EQ(table[0], 0.0);
  long first = 0;
  while (table[first] == 0.0) ++first;
  EXPECT_GT(poisson_term(first, 400), 1e-30);
  EXPECT_LE(poisson_term(first - 1, 400), 1e-30);

  // M = 1: the table stops at k = 5 before any cut-off; a draw beyond it takes the last k.
  confid_poisson_table(1, table);
  ASSERT_EQ(table.size(), 6u);
  double sum = 0;
  for (long k = 0; k <= 5; ++k) sum += poisson_term(k, 1);
  EXPECT_NEAR(table[5], sum, 1e-9);
  EXPECT_LT(table[5], 1.0);
  EXPECT_EQ(confid_poisson_draw(table, 0.0), 0);
  EXPECT_EQ(confid_poisson_draw(table, table[0]), 1);  // table(k-1) <= v < table(k)
  EXPECT_EQ(confid_poisson_draw(table, 0.99999), 5);

  confid_poisson_table(0, table);
  ASSERT_EQ(table.size(), 1u);
  EXPECT_EQ(table[0], 1.0);
}

// ---- One substitution: the four tests on the same cell ----

TEST(ConfidSubstitution, TestsRunOneAfterAnotherOnTheSameCell) {
  struct Case {
    char from;
    double w, a, gc;
    char to;
  };
  // a = 0.25, GC = 0.5: first band 0.25 for every letter, second band 0.625.
  // A naive table would give A->G, A->C, A->T; the cascade re-tests the new letter.
  const Case cases[] = {
      {'A', 0.10, 0.25, 0.5, 'A'},  // A->G, then G->A
      {'A', 0.25, 0.25, 0.5, 'A'},  // band edges are inclusive
      {'A', 0.50, 0.25, 0.5, 'G'},  // A->C, then C->G
      {'A', 0.90, 0.25, 0.5, 'A'},  // A->T, then T->A
      {'G', 0.10, 0.25, 0.5, 'A'},  // G->A; the A test came before
      {'G', 0.50, 0.25, 0.5, 'G'},  // G->C, then C->G
      {'G', 0.90, 0.25, 0.5, 'A'},  // G->T, then T->A
      {'C', 0.10, 0.25, 0.5, 'C'},  // C->T, then T->C
      {'C', 0.50, 0.25, 0.5, 'G'},
      {'C', 0.90, 0.25, 0.5, 'A'},
      {'T', 0.10, 0.25, 0.5, 'C'},  // T is tested last: one change only
      {'T', 0.50, 0.25, 0.5, 'G'},
      {'T', 0.90, 0.25, 0.5, 'A'},
      // a = 0.2, GC = 0.7: A and T bands 0.28 / 0.784, G and C bands 0.12 / 0.736.
      {'A', 0.20, 0.2, 0.7, 'G'},  // A->G (0.2 <= 0.28), G test: 0.2 in (0.12, 0.736] -> C, C->G
      {'A', 0.75, 0.2, 0.7, 'A'},  // A->C, then C->A (0.75 > 0.736): back where it began
      {'G', 0.80, 0.2, 0.7, 'A'},  // G->T, T test: 0.8 > 0.784 -> A
      {'C', 0.10, 0.2, 0.7, 'C'},  // C->T, T test: 0.1 <= 0.28 -> C
      {'T', 0.30, 0.2, 0.7, 'G'},
  };
  const auto code = [](char c) -> std::uint8_t {
    return c == 'A' ? T::kA : c == 'G' ? T::kG : c == 'C' ? T::kC : T::kT;
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(1, c.from) + " w=" + std::to_string(c.w));
    EXPECT_EQ(confid_substitute(code(c.from), c.w, c.a, c.gc), code(c.to));
  }
}

// ---- One replicate from scripted draws ----

TEST(ConfidReplicate, DrawsInOrderAndCascadeOnTheCells) {
  ConfidReplicateSettings s;
  s.sites = 4;
  s.gc = 0.5;  // bands A [0, .25), G [.25, .5), C [.5, .75), T
  const std::vector<double> poisson = {0.2, 0.4, 0.6, 0.8, 1.0};
  ConfidBuffers buffers;
  ConfidScriptedDraws draws({0.1, 0.3, 0.6, 0.9,  // ancestor A G C T
                             0.65,  // k = 3: one to the second sequence, two to the first
                             0.25, 0.5, 0.25,  // a = 0.25, b = 0.5, c = 0.25
                             0.1, 0.1,         // second: site 0 (A), w 0.1: A->G->A
                             0.3, 0.5,         // first: site 1 (G), w 0.5: G->C->G
                             0.6, 0.9});       // first: site 2 (C), w 0.9: C->A
  const ConfidReplicate r = confid_replicate(s, poisson, draws, buffers);
  EXPECT_EQ(draws.used(), 14u);
  EXPECT_EQ(r.substitutions, 3);
  EXPECT_DOUBLE_EQ(r.a, 0.25);
  EXPECT_DOUBLE_EQ(r.b, 0.5);
  EXPECT_EQ(buffers.seq1, (std::vector<std::uint8_t>{T::kA, T::kG, T::kA, T::kT}));
  EXPECT_EQ(buffers.seq2, (std::vector<std::uint8_t>{T::kA, T::kG, T::kC, T::kT}));
  NucleotidePairTable expected;
  expected.cells[4 * T::kA + T::kA] = 1;
  expected.cells[4 * T::kG + T::kG] = 1;
  expected.cells[4 * T::kA + T::kC] = 1;
  expected.cells[4 * T::kT + T::kT] = 1;
  EXPECT_EQ(r.table.cells, expected.cells);

  // The ratio replaces the drawn classes, but the three draws are still taken.
  s.random_substitution = false;
  s.trs = 2;
  s.trv = 1;
  ConfidScriptedDraws again({0.1, 0.3, 0.6, 0.9, 0.3, 0.7, 0.7, 0.7, 0.99, 0.05});
  const ConfidReplicate q = confid_replicate(s, poisson, again, buffers);
  EXPECT_EQ(q.substitutions, 1);  // 0.2 <= 0.3 < 0.4
  EXPECT_DOUBLE_EQ(q.a, 0.5);
  EXPECT_DOUBLE_EQ(q.b, 0.25);
  EXPECT_EQ(again.used(), 10u);
  // The one substitution goes to the first sequence: site 3 (T), w 0.05 <= 2aGC = 0.5: T->C.
  EXPECT_EQ(buffers.seq1[3], T::kC);
  EXPECT_EQ(buffers.seq2[3], T::kT);
}

// ---- Percentile lists ----

TEST(ConfidPercentiles, WalkShiftAndDropTheLast) {
  std::vector<float> low(4, 9999.0f), high(4, -1.0f);
  low[0] = 42.0f;
  high[0] = 42.0f;
  for (double e : {0.5, 0.3, 0.7, 0.3, 0.1}) {
    confid_insert_low(low, e);
    confid_insert_high(high, e);
  }
  EXPECT_EQ(low, (std::vector<float>{42.0f, 0.1f, 0.3f, 0.3f}));
  // Equal values do not pass a cell of the high list: the second 0.3 finds no place.
  EXPECT_EQ(high, (std::vector<float>{42.0f, 0.7f, 0.5f, 0.3f}));
}

// ---- Opening, toggles and Reset ----

TEST(ConfidOpening, NoncodingDefaultsFromTheLastRun) {
  AnalysisRecord rec = noncoding_record(2);
  rec.seq.NucleotideCount = 100;
  LastNoncodingEstimate& l = rec.last_noncoding;
  l.CountA1 = 30, l.CountG1 = 20, l.CountC1 = 25, l.CountT1 = 25;
  l.CountA2 = 28, l.CountG2 = 22, l.CountC2 = 24, l.CountT2 = 26;
  l.KKimura = 0.123456;
  l.KimuraA = 0.08;  // a = 0.04, b = 0.01: "4" : "1"
  l.KimuraB = 0.04;
  const ConfidDialog d = open_confid(rec);
  EXPECT_FALSE(rec.form.Form1.visible);
  EXPECT_EQ(d.SimMethod, 2);
  EXPECT_EQ(d.Label1.text, "M.-Hits Correcting Method: Kimura\u00b4s 2-p");
  EXPECT_EQ(d.Text1.text, "0.1235 ");
  EXPECT_EQ(d.Text2.text, "100");
  EXPECT_EQ(d.Text3.text, "45.5");  // 91 of 200 bases
  EXPECT_EQ(d.Label2.text, "Number of Sites");
  EXPECT_EQ(d.Text5.text, "4");
  EXPECT_EQ(d.Text6.text, "1");
  EXPECT_TRUE(d.Text5.enabled);
  EXPECT_TRUE(d.OptionButton3.value);
  EXPECT_FALSE(d.OptionButton2.value);
  EXPECT_FALSE(d.ToggleButton1.visible);
  EXPECT_EQ(d.Command1.text, "Accept");
  EXPECT_EQ(d.OptionButton2.text, "Random Nuclotide Substitution");
  EXPECT_EQ(d.OptionButton3.text, "TRS:TRV Substitution Ratioi");

  l.KimuraB = 0;  // undefined ratio: "1" : "1", random, fields disabled
  const ConfidDialog e = open_confid(rec);
  EXPECT_EQ(e.Text5.text, "1");
  EXPECT_EQ(e.Text6.text, "1");
  EXPECT_FALSE(e.Text5.enabled);
  EXPECT_FALSE(e.Text6.enabled);
  EXPECT_TRUE(e.OptionButton2.value);

  // No K for the method: the fields keep the design values.
  AnalysisRecord other = noncoding_record(3);
  other.last_noncoding = l;
  const ConfidDialog f = open_confid(other);
  EXPECT_EQ(f.Text1.text, "0.0000");
  EXPECT_EQ(f.Label1.text, "M.-Hits Correcting Method: Tajima and Nei");
}

TEST(ConfidOpening, CodingTogglesFillKsOrKa) {
  AnalysisRecord rec;  // Coding and Kimura are checked at start
  rec.seq.PairCount = 1;
  rec.results.PairStore.assign(2, PairStoreRow{});
  rec.results.PairStore[1][5] = 150;  // synonymous sites
  rec.results.PairStore[1][6] = 40;   // G and C of the degenerate classes
  rec.results.PairStore[1][7] = 35;
  CodingHandedOnFields& h = rec.results.handed_on;
  h.Ks = 0.2;
  h.Ka = 0;
  h.SES = 123.6;
  h.NES = 300.4f;
  h.As = 0.1, h.Bs = 0.8;  // a = 0.05, b = 0.2: "1" : "4"
  h.Aa = 0.3, h.Ba = 0.4;  // a = 0.15, b = 0.1: "1.5" : "1"
  ConfidDialog d = open_confid(rec);
  EXPECT_TRUE(d.ToggleButton1.visible);
  EXPECT_FALSE(d.ToggleButton2.visible);
  EXPECT_FALSE(d.ToggleButton3.visible);
  EXPECT_FALSE(d.ToggleButton4.visible);
  EXPECT_TRUE(d.ToggleButton1.value);
  EXPECT_EQ(d.Text1.text, "0.2000 ");
  EXPECT_EQ(d.Text2.text, "124");
  EXPECT_EQ(d.Label4.text, "Syn. Equivalent Sites");
  EXPECT_EQ(d.Text3.text, "50");
  EXPECT_EQ(d.Text5.text, "1");
  EXPECT_EQ(d.Text6.text, "4");

  h.Ka = 0.05;
  d = open_confid(rec);
  EXPECT_TRUE(d.ToggleButton2.visible);
  confid_toggle(rec, d, true);
  EXPECT_TRUE(d.ToggleButton2.value);
  EXPECT_FALSE(d.ToggleButton1.value);
  EXPECT_EQ(d.Text1.text, "0.0500 ");
  EXPECT_EQ(d.Text2.text, "300");
  EXPECT_EQ(d.Label4.text, "Nonsyn. Equivalent Sites");
  EXPECT_EQ(d.Text5.text, "1.5");
  EXPECT_EQ(d.Text6.text, "1");

  confid_reset(d);
  EXPECT_EQ(d.Text1.text, "0.0000");
  EXPECT_EQ(d.Text2.text, "300");  // Reset leaves the sites
  EXPECT_EQ(d.Text3.text, "70");
  EXPECT_EQ(d.Text4.text, "1000");
  EXPECT_EQ(d.Text5.text, "1");
  EXPECT_EQ(d.Text6.text, "1");
  EXPECT_FALSE(d.Text5.enabled);
  EXPECT_FALSE(d.Text6.enabled);

  confid_close(rec, d);
  EXPECT_TRUE(rec.form.Form1.visible);
  EXPECT_FALSE(d.visible);
}

// ---- A whole run ----

// The replicate's mean from the report's "Observed Average" line.
double observed_average(const std::string& report) {
  for (const std::string& line : lines_of(report))
    if (line.rfind("  Observed Average :     ", 0) == 0) return std::stod(line.substr(25));
  return -1;
}

TEST(ConfidRun, SeededReportLiteralLinesAndReproducibility) {
  AnalysisRecord rec = noncoding_record(1);
  ConfidDialog d = dialog(rec, "0.1", "500", "50", "1000", false);
  FakePlatform platform;
  ASSERT_EQ(confid_accept(rec, d, platform), ConfidOutcome::Finished);
  EXPECT_EQ(platform.yields, 1000);
  EXPECT_EQ(rec.seq.NucleotideCount, 500);
  EXPECT_EQ(d.PoissonMean, 50);
  const std::vector<std::string> lines = lines_of(d.Text7.text);
  ASSERT_EQ(lines.size(), 21u) << d.Text7.text;
  EXPECT_EQ(lines[0], " *SIMULATION PARAMETERS*");
  EXPECT_EQ(lines[1], "");
  EXPECT_EQ(lines[2], "  Divergence :         0.1000 ");
  EXPECT_EQ(lines[3], "  Sequence Length :   500");
  EXPECT_EQ(lines[4], "  G+C Percentage  :    50.0 ");
  EXPECT_EQ(lines[5], "  N. Replicates   :   1000");
  EXPECT_EQ(lines[6], "");
  EXPECT_EQ(lines[7], "  Number of substitutions Poisson-distributed");
  EXPECT_EQ(lines[8], "  Multiple-hits Correcting Method : Jukes & Cantor");
  EXPECT_EQ(lines[9], "  Random Nucleotide Substitution");
  EXPECT_EQ(lines[10], "");
  EXPECT_EQ(lines[11], " *SIMULATION RESULTS*");
  EXPECT_EQ(lines[12], "");
  EXPECT_EQ(lines[13].substr(0, 25), "  Observed Average :     ");
  EXPECT_EQ(lines[14], "  Failed Replicates :   0");
  EXPECT_EQ(lines[15], "");
  EXPECT_EQ(lines[16], "  Conficence Intervals");
  EXPECT_EQ(lines[17], "               Min.      Max.");
  EXPECT_EQ(lines[18].substr(0, 13), "  % 5.0  :   ");
  EXPECT_EQ(lines[19].substr(0, 13), "  % 1.0  :   ");
  EXPECT_EQ(lines[20], "");
  // Cells 25 and 5 of the tails: the 1% interval holds the 5% one.
  const double lo5 = std::stod(lines[18].substr(13, 6)), hi5 = std::stod(lines[18].substr(24));
  const double lo1 = std::stod(lines[19].substr(13, 6)), hi1 = std::stod(lines[19].substr(24));
  const double mean = observed_average(d.Text7.text);
  EXPECT_EQ(lines[18].substr(19, 5), "  -  ");
  EXPECT_LE(lo1, lo5);
  EXPECT_LT(lo5, mean);
  EXPECT_LT(mean, hi5);
  EXPECT_LE(hi5, hi1);
  // Every replicate's estimate is kept.
  EXPECT_EQ(d.SimNullTable[0].size(), 1000u);

  ConfidDialog again = dialog(rec, "0.1", "500", "50", "1000", false);
  ASSERT_EQ(confid_accept(rec, again, platform), ConfidOutcome::Finished);
  EXPECT_EQ(again.Text7.text, d.Text7.text);
  ConfidDialog other = dialog(rec, "0.1", "500", "50", "1000", false, 999);
  ASSERT_EQ(confid_accept(rec, other, platform), ConfidOutcome::Finished);
  EXPECT_NE(other.Text7.text, d.Text7.text);
}

TEST(ConfidRun, ScanBringsTheObservedMeanToTheTarget) {
  // Without the scan many substitutions undo themselves in the cascade, so the
  // observed divergence falls well short of the target; the scan raises M.
  AnalysisRecord rec = noncoding_record(1);
  ConfidDialog plain_run = dialog(rec, "0.1", "500", "50", "1000", false);
  FakePlatform platform;
  ASSERT_EQ(confid_accept(rec, plain_run, platform), ConfidOutcome::Finished);
  EXPECT_LT(observed_average(plain_run.Text7.text), 0.08);

  ConfidDialog scanned = dialog(rec, "0.1", "500", "50", "1000", true);
  ASSERT_EQ(confid_accept(rec, scanned, platform), ConfidOutcome::Finished);
  EXPECT_GT(scanned.PoissonMean, 50);
  EXPECT_NEAR(observed_average(scanned.Text7.text), 0.1, 0.006);
  EXPECT_EQ(lines_of(scanned.Text7.text)[2], "  Divergence :         0.1000 ");
}

TEST(ConfidRun, FailuresNoteRatioLineAndNotApplicableCells) {
  AnalysisRecord rec = noncoding_record(2);
  ConfidDialog d = dialog(rec, "1.9", "30", "50", "600", false);
  d.Text5.text = "2";
  d.Text6.text = "1";
  confid_choose_ratio(d);
  FakePlatform platform;
  ASSERT_EQ(confid_accept(rec, d, platform), ConfidOutcome::Finished);
  const std::vector<std::string> lines = lines_of(d.Text7.text);
  EXPECT_EQ(lines[8], "  Multiple-hits Correcting Method : Kimura-2p");
  EXPECT_EQ(lines[9], "  TRS:TRV Substitution Ratio: ");
  EXPECT_EQ(lines[10], "  TRS 2 : 1 TRV");
  EXPECT_EQ(lines[11], "");

  long na = 0;
  for (const ConfidNullCell& c : d.SimNullTable[1]) na += c.not_applicable ? 1 : 0;
  ASSERT_GT(na, 0);
  // Only Kimura-2p keeps its failures as "N.A."; the other methods keep a 0.
  for (int m : {0, 2, 3, 4, 5})
    for (const ConfidNullCell& c : d.SimNullTable[m]) EXPECT_FALSE(c.not_applicable);

  std::string blanks(static_cast<std::size_t>(std::max(0, 3 - static_cast<int>(std::log10(na)))),
                     ' ');
  EXPECT_EQ(lines[15], "  Failed Replicates :" + blanks + std::to_string(na));
  EXPECT_EQ(lines[17], "  Conficence Intervals* (see note below)");
  EXPECT_EQ(lines[19].substr(0, 13), "  % 5.0  :   ");
  EXPECT_EQ(lines[20].substr(0, 13), "  % 1.0  :   ");
  EXPECT_EQ(lines[21], "");
  const std::vector<std::string> note(lines.begin() + 22, lines.end());
  EXPECT_EQ(note, (std::vector<std::string>{
                      " *NOTE: Confidence Intervals are those among the replicates",
                      "        were the method was applicable. To take into account",
                      "        non-applicable (i.e., failed) replicates, usually",
                      "        because of a large Divergence, please inspect the",
                      "        Exact Probabilities Option", ""}));

  // The exact probabilities over the same table sum to 1.
  d.Text9.text = "0.5";
  confid_exact_probability(d);
  double total = 0;
  for (const std::string& line : lines_of(d.Text10.text))
    total += std::stod(line.substr(line.size() - 6));
  EXPECT_NEAR(total, 1.0, 2e-4);
  EXPECT_NE(d.Text10.text.find(" Prob. [Not Appl.]  = "), std::string::npos);
}

// ---- Stop and progress ----

class YieldingPlatform : public FakePlatform {
 public:
  ConfidDialog* dlg = nullptr;
  int stop_after = 0;
  double seconds_per_call = 0;
  std::vector<std::string> progress;
  int clock_calls = 0;
  void yield() override {
    FakePlatform::yield();
    progress.push_back(dlg->Text8.text);
    if (yields == stop_after) dlg->stop_requested = true;
  }
  ClockReading clock() override {
    ClockReading r = now;
    r.seconds_since_midnight += seconds_per_call * clock_calls++;
    return r;
  }
};

TEST(ConfidRun, StopBetweenReplicatesClosesTheDialog) {
  AnalysisRecord rec = noncoding_record(1);
  ConfidDialog d = dialog(rec, "0.1", "200", "50", "1000", false);
  YieldingPlatform platform;
  platform.dlg = &d;
  platform.stop_after = 25;
  EXPECT_EQ(confid_accept(rec, d, platform), ConfidOutcome::Stopped);
  EXPECT_EQ(platform.yields, 25);
  EXPECT_FALSE(d.visible);
  EXPECT_TRUE(rec.form.Form1.visible);
  EXPECT_TRUE(d.Text7.text.empty());
  EXPECT_EQ(platform.progress[9], "  Current simulation..  #     10 Finish in ..... ");
  EXPECT_EQ(platform.progress[19], "  Current simulation..  #     20 Finish in ..... ");

  // The scan stops the same way.
  ConfidDialog s = dialog(rec, "0.1", "200", "50", "1000", true);
  platform.dlg = &s;
  platform.yields = 0;
  platform.progress.clear();
  EXPECT_EQ(confid_accept(rec, s, platform), ConfidOutcome::Stopped);
  EXPECT_EQ(platform.yields, 25);
  EXPECT_EQ(platform.progress[0], "  Scanning Optimal Diver.  #:20");
  EXPECT_EQ(platform.progress[9], "  Scanning Optimal Diver..  #     10");
}

TEST(ConfidRun, ProgressTellsTheTimeLeft) {
  // The clock moves one second at each reading: the start, then replicates 1, 2,
  // 3, 5 and 10, so at replicate 10 the time per replicate is 5 / 10 seconds.
  struct Case {
    const char* replicates;
    const char* tail;
  };
  const Case cases[] = {{"129", " Finish in ..... "},            // 59.5 s left
                        {"130", " Finish in.. 1min. 0sec."},     // 60 s
                        {"255", " Finish in.. 2min. 2sec."},     // 122.5 s
                        {"7210", " Finish in.. 1h. 0min. "},     // 3600 s
                        {"20000", " Finish in.. 2h. 46min. "}};  // 9995 s
  for (const Case& c : cases) {
    AnalysisRecord rec = noncoding_record(1);
    ConfidDialog d = dialog(rec, "0.1", "100", "50", c.replicates, false);
    YieldingPlatform platform;
    platform.dlg = &d;
    platform.stop_after = 10;
    platform.seconds_per_call = 1;
    EXPECT_EQ(confid_accept(rec, d, platform), ConfidOutcome::Stopped);
    EXPECT_EQ(platform.progress[9], std::string("  Current simulation..  #     10") + c.tail)
        << c.replicates;
  }
}

// ---- Exact probabilities ----

TEST(ConfidExact, FractionsOfTheNullTable) {
  ConfidDialog d;
  d.SimMethod = 2;
  d.SimReplicates = 8;
  d.Text7.text = "report\r\n";
  for (double v : {0.1, 0.2, 0.2, 0.3, -1.0, -1.0, 0.5, 0.2})
    d.SimNullTable[1].push_back(v < 0 ? ConfidNullCell{0, true} : ConfidNullCell{v, false});
  d.Text9.text = "0,2";  // comma field
  confid_exact_probability(d);
  EXPECT_EQ(d.Text9.text, "0.2000");
  const std::string lines =
      " Prob. [K < 0.2] = 0.1250\r\n"
      " Prob. [K > 0.2] = 0.2500\r\n"
      " Prob. [K = 0.2] = 0.3750\r\n"
      " Prob. [Not Appl.]  = 0.2500\r\n";
  EXPECT_EQ(d.Text10.text, lines);
  EXPECT_EQ(d.Text7.text, "report\r\n *EXACT PROBABILITY:\r\n" + lines + "\r\n");

  // v = 0: no "<" row; no "=" row when nothing equals it.
  d.Text9.text = "0";
  confid_exact_probability(d);
  EXPECT_EQ(d.Text10.text, " Prob. [K > 0] = 0.7500\r\n Prob. [Not Appl.]  = 0.2500\r\n");

  for (const char* bad : {"5", "7.5", "-0.1"}) {
    d.Text9.text = bad;
    const std::string report = d.Text7.text;
    confid_exact_probability(d);
    EXPECT_EQ(d.Text10.text, " K value Not Valid");
    EXPECT_EQ(d.Text9.text, bad);
    EXPECT_EQ(d.Text7.text, report);
  }
}

// ---- Files ----

TEST(ConfidFiles, ReportAndNullDistribution) {
  namespace fs = std::filesystem;
  const std::string dir = testing::scratch_dir();
  AnalysisRecord rec = noncoding_record(2);
  rec.seq.InputFileName = "globin.fas";
  ConfidDialog d;
  d.SimMethod = 2;
  d.SimReplicates = 3;
  d.SimNullTable[1] = {{0.125, false}, {0, true}, {0.5, false}};
  d.Text7.text = " *SIMULATION PARAMETERS*\r\n";
  FakePlatform platform;

  const std::string ci = (fs::path(dir) / "out.ci").string();
  platform.save_answers = {ci};
  ASSERT_TRUE(confid_save_report(rec, d, platform));
  EXPECT_EQ(platform.save_requests[0].filter, "C.I.Output files (*.ci)|*.ci|All files (*.*)|*.*");
  EXPECT_EQ(platform.save_requests[0].default_name, "globin.ci");
  EXPECT_EQ(testing::read_file(ci),
            "\r\n Varnoth v6.0\r\n 11-23-2026  10:00:00\r\n " + std::string(64, '*') +
                "\r\n CONFIDENCE INTERVALS ANALYSIS\r\n *SIMULATION PARAMETERS*\r\n");

  const std::string cid = (fs::path(dir) / "out.cid").string();
  platform.save_answers = {cid};
  ASSERT_TRUE(confid_save_null_distribution(d, platform));
  EXPECT_EQ(platform.save_requests[1].filter,
            "C.I.Output files (*.ci*)|*.ci;*.cid|All files (*.*)|*.*");
  EXPECT_EQ(platform.save_requests[1].default_name, "*.cid");
  EXPECT_EQ(testing::read_file(cid),
            "\r\n Varnoth v4.1\r\n 11-23-2026  10:00:00\r\n0.125\r\nN.A.\r\n0.5\r\n");

  // Cancel writes nothing.
  const auto before = platform.save_requests.size();
  EXPECT_FALSE(confid_save_report(rec, d, platform));
  EXPECT_FALSE(confid_save_null_distribution(d, platform));
  EXPECT_EQ(platform.save_requests.size(), before + 2);

  rec.seq.InputFileName.clear();
  platform.save_answers.clear();
  confid_save_report(rec, d, platform);
  EXPECT_EQ(platform.save_requests.back().default_name, "*.ci");
}

}  // namespace
}  // namespace varnoth::simulation
