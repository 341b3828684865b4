#include "simulation/kska_run.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "divergence/genetic_code.h"
#include "simulation/kska_fixtures.h"
#include "support/fake_platform.h"

namespace {

using namespace varnoth;
using namespace varnoth::simulation;
namespace dv = varnoth::divergence;
using varnoth::testing::coding_record;
using varnoth::testing::FakePlatform;

constexpr double kConstE = 2.718281828;

// The Poisson term as the table forms it, with the factorial from the
// log-gamma function: directly up to k = 50, above that as the constant e
// raised to a sum of natural logarithms.
double direct_term(long m, long k) {
  return std::pow(kConstE, -static_cast<double>(m)) * std::pow(static_cast<double>(m), k) /
         std::exp(std::lgamma(k + 1.0));
}
double log_term(long m, long k) {
  return std::pow(kConstE, -m * std::log(kConstE) + k * std::log(static_cast<double>(m)) -
                               std::lgamma(k + 1.0));
}
double term(long m, long k) { return k <= 50 ? direct_term(m, k) : log_term(m, k); }

TEST(PoissonTable, SmallMeansStopAtTheCutOff) {
  for (const long m : {3L, 5L}) {
    std::vector<double> t;
    fill_poisson_table(m, t);
    const long last = 10 * m;
    ASSERT_EQ(t.size(), static_cast<std::size_t>(last) + 1);
    // The first k where the sum passes 1, or passes 0.98 with a term below 1e-10.
    long cut = -1;
    double sum = 0;
    for (long k = 0; k < last; ++k) {
      sum += term(m, k);
      EXPECT_NEAR(t[static_cast<std::size_t>(k)], sum, 1e-12) << m << " " << k;
      if (sum > 1 || (sum > 0.98 && term(m, k) < 1e-10)) {
        cut = k;
        break;
      }
    }
    ASSERT_GT(cut, 10);
    for (long k = cut + 1; k < last; ++k) EXPECT_EQ(t[static_cast<std::size_t>(k)], 0) << k;
    EXPECT_EQ(t[static_cast<std::size_t>(last)], 1);
  }
  // e is the constant 2.718281828, not the exact base; with it the sum for a
  // mean of 3 passes 1, which ends the table.
  std::vector<double> t;
  fill_poisson_table(3, t);
  EXPECT_DOUBLE_EQ(t[0], std::pow(kConstE, -3.0));
  EXPECT_NE(t[0], std::exp(-3.0));
  EXPECT_GT(*std::max_element(t.begin(), t.end() - 1), 1.0);
}

TEST(PoissonTable, LargeMeanUsesLogarithmsAboveFifty) {
  std::vector<double> t;
  fill_poisson_table(40, t);
  ASSERT_EQ(t.size(), 401u);
  for (long k : {30L, 49L, 50L, 51L, 52L, 60L, 71L}) {
    const double p = t[static_cast<std::size_t>(k)] - t[static_cast<std::size_t>(k - 1)];
    EXPECT_NEAR(p / term(40, k), 1, 1e-10) << k;
  }
  // The two forms differ through the constant e: the table takes the log form.
  const double p51 = t[51] - t[50];
  EXPECT_GT(std::fabs(p51 / direct_term(40, 51) - 1), 4e-10);
  EXPECT_EQ(t[400], 1);
  EXPECT_EQ(t[399], 0);
}

TEST(PoissonTable, MeanZero) {
  std::vector<double> t;
  fill_poisson_table(0, t);
  ASSERT_EQ(t.size(), 1u);
  EXPECT_EQ(t[0], 1);
}

TEST(ScanTuning, SynonymousTable) {
  struct Case {
    const char* what;
    double previous;
    bool fine;
    double mean;
    double count_after, previous_after;
    bool fine_after, converged;
  };
  const double target = 0.2;
  const Case cases[] = {
      {"on the target", 0.15, false, 0.2, 20, 0.15, false, true},
      {"first pass below", 0, false, 0.1, 25, 0.1, false, false},
      {"first pass above", 0, false, 0.3, 19, 0.3, false, false},
      {"fine, crossed up, nearer now", 0.15, true, 0.21, 20, 0.15, true, true},
      {"fine, crossed up, nearer before", 0.19, true, 0.25, 19, 0.19, true, true},
      {"coarse, crossed up", 0.15, false, 0.25, 16, 0.15, true, false},
      {"fine, still below", 0.1, true, 0.15, 21, 0.15, true, false},
      {"coarse, still below", 0.1, false, 0.15, 25, 0.15, false, false},
      {"crossed down, nearer now", 0.3, false, 0.19, 20, 0.3, false, true},
      {"crossed down, nearer before", 0.21, false, 0.1, 21, 0.21, false, true},
      {"still above", 0.3, false, 0.25, 19, 0.25, false, false},
  };
  for (const Case& c : cases) {
    ScanClass s{20, c.previous, c.fine, false};
    tune_scan_class(s, c.mean, target, 20, true);
    EXPECT_EQ(s.count, c.count_after) << c.what;
    EXPECT_EQ(s.previous, c.previous_after) << c.what;
    EXPECT_EQ(s.fine, c.fine_after) << c.what;
    EXPECT_EQ(s.converged, c.converged) << c.what;
  }
}

TEST(ScanTuning, NonsynonymousStepsAndTheFloor) {
  const double target = 0.05;
  ScanClass s{10, 0, false, false};
  tune_scan_class(s, 0.01, target, 10, false);
  EXPECT_EQ(s.count, 11);  // +1, not +5
  tune_scan_class(s, 0.02, target, 10, false);
  EXPECT_EQ(s.count, 12);
  EXPECT_FALSE(s.fine);
  tune_scan_class(s, 0.09, target, 10, false);  // crossed: converged at once
  EXPECT_EQ(s.count, 11);                       // 0.09 - 0.05 >= 0.05 - 0.02
  EXPECT_TRUE(s.converged);

  for (const double typed : {0.4, 0.6}) {
    ScanClass low{2, 0, false, false};
    tune_scan_class(low, 0.3, target, typed, false);  // 2 - 1 = 1: the floor
    EXPECT_EQ(low.count, typed > 0.5 ? 1 : 0);
    EXPECT_TRUE(low.converged);
  }
}

TEST(Balancing, Stretches) {
  struct Case {
    double counter, total;
    bool in;
  };
  const Case cases[] = {
      {770, 1000, true},  {760, 1000, false}, {780, 1000, false}, {800, 1000, false},
      {860, 1000, true},  {880, 1000, false}, {910, 1000, true},  {945, 1000, true},
      {950, 1000, false}, {980, 1000, false}, {981, 1000, true},  {1000, 1000, true},
      {305, 400, true},   {340, 400, false},  {350, 400, true},   {368, 400, false},
      {393, 400, true},   {392, 400, false},
  };
  for (const Case& c : cases)
    EXPECT_EQ(in_balancing_stretch(c.counter, c.total), c.in) << c.counter << " of " << c.total;
}

TEST(Tails, InsertionKeepsTheBestFirst) {
  Tail high(3, 0, true), low(3, kInfiniteRatio, false);
  for (const double v : {0.2, 0.5, 0.1, 0.5, 0.3}) {
    high.insert(v);
    low.insert(v);
  }
  EXPECT_EQ(high.cell(1), 0.5);
  EXPECT_EQ(high.cell(2), 0.5);
  EXPECT_EQ(high.cell(3), 0.3);
  EXPECT_EQ(low.cell(1), 0.1);
  EXPECT_EQ(low.cell(2), 0.2);
  EXPECT_EQ(low.cell(3), 0.3);
  EXPECT_EQ(high.cell(4), 0);
  EXPECT_EQ(low.cell(0), kInfiniteRatio);
}

TEST(Statistics, MeansWithOneLessAndTheRatioTails) {
  const std::vector<ReplicateLine> lines = {{0.1, 0.05}, {0.2, 0.1}, {0, 0.02}, {9, 0.1},
                                            {0.3, 9},    {0.4, 0.2}, {5, 0.3},  {0.2, 0.4}};
  const KsKaStatistics s = replicate_statistics(lines, true);
  EXPECT_EQ(s.replicates, 8);
  EXPECT_EQ(s.na_ks, 2);  // 9 and 5
  EXPECT_EQ(s.na_ka, 1);
  // Deliberate divisor N - 1 - NA.
  EXPECT_DOUBLE_EQ(s.ks_mean, (0.1 + 0.2 + 0 + 0.3 + 0.4 + 0.2) / (8 - 1 - 2));
  EXPECT_DOUBLE_EQ(s.ka_mean, (0.05 + 0.1 + 0.02 + 0.1 + 0.2 + 0.3 + 0.4) / (8 - 1 - 1));
  // Ratios of Ks > 0 and both below 5: 0.5, 0.5, 0.5, 2. The rest are N.A.
  EXPECT_EQ(s.na_ratio, 4);
  EXPECT_DOUBLE_EQ(s.ratio_mean, 3.5 / (8 - 1 - 4));
  // Tails of CLng(0.025 x 8) = 0 cells here; sized for 200 lines below.
  std::vector<ReplicateLine> many(200, ReplicateLine{0.1, 0.1});
  many[7] = {0, 0.3};
  const KsKaStatistics t = replicate_statistics(many, true);
  EXPECT_EQ(t.ks_high.size(), 5u);
  EXPECT_EQ(t.ratio_high.cell(1), kInfiniteRatio);  // Ks = 0 enters as 99999
  EXPECT_EQ(t.ratio_low.cell(1), 1);
}

KsKaReportInputs report_inputs(int mode, long replicates) {
  KsKaReportInputs in;
  in.mode = mode;
  in.sequence_lines = {" Seq.#1     alpha", " Seq.#2     beta"};
  in.ks = 0.1;
  in.ses = 200;
  in.ka = mode == 1 ? 0.1 : 0.05;
  in.nes = 700;
  in.ka_jc = true;
  in.gc = 52.3;
  in.codons = 300;
  in.replicates = replicates;
  in.syn_trs = 2.8;
  in.nonsyn_random = true;
  in.pathway_weight = 0.9f;
  in.stop_clean = 3;
  in.stop_total = 4;
  return in;
}

std::vector<std::string> lines_of(const std::string& text) {
  std::vector<std::string> out;
  std::size_t at = 0;
  while (at < text.size()) {
    const std::size_t end = text.find("\r\n", at);
    EXPECT_NE(end, std::string::npos) << "every line ends in CRLF";
    if (end == std::string::npos) break;
    out.push_back(text.substr(at, end - at));
    at = end + 2;
  }
  return out;
}

TEST(Report, LinesOfATestOfKaKs) {
  // 6 lines with Ks = 0, one not applicable, 193 of 0.1 and 0.1.
  std::vector<ReplicateLine> data(200, ReplicateLine{0.1, 0.1});
  for (int i = 0; i < 6; ++i) data[static_cast<std::size_t>(i)] = {0, 0.05};
  data[6] = {9, 0.1};
  const KsKaStatistics s = replicate_statistics(data, true);
  const std::vector<std::string> got = lines_of(kska_report(report_inputs(1, 200), s));
  const std::vector<std::string> want = {
      "*SIMULATION PARAMETERS*",
      "",
      " Simulations assuming that the average for Ka is equal to the value estimated for Ks",
      "",
      " Seq.#1     alpha",
      " Seq.#2     beta",
      "",
      " Ks :  0.1000 ",
      " Ka :  0.1000   J&C",
      "",
      " % G+C 3rd pos.         :  52.3 ",
      " Number Analyzed codons :  300 ",
      " Number of replicates   :  200 ",
      " Syn.   TRS:TRV ratio   : 2.8 :1",
      " NonSyn.TRS:TRV ratio   : 1 :1 (Random)",
      " Number of substitutions Poisson-distributed",
      " Multiple-pathways weight: Synonymous/Total =0.9",
      "",
      "*SIMULATION RESULTS*",
      "",
      " Ks avg.:   0.0975    1 N.A.",  // 19.3 / (200 - 1 - 1)
      " Ka avg.:   0.0990    J&C",     // 19.7 / (200 - 1)
      "",
      " Conficence Intervals* (see note below)",
      " Ks C.I.      Min.        Max.",
      "    5% :    0.0000  -  0.1000 ",  // cell 5 of each tail
      " Ka C.I.     ",
      "    5% :    0.0500  -  0.1000 ",
      " Ka/Ks C.I.     ",
      "    5% :    1.0000  -   INF. ",  // Ks = 0 fills the top five
      "",
      " Probability of NO STOP CODONS in the sequence: 0.75",
      "",
      " *NOTE: Confidence Intervals are those among the replicates",
      "        were the method was applicable. To take into account",
      "        non-applicable replicates, usually because of a large",
      "        Divergence, please inspect the Exact Probabilities",
      "        Option for detailed probabilities",
      "",
  };
  EXPECT_NEAR(s.ks_mean, 19.3 / 198, 1e-12);
  EXPECT_NEAR(s.ka_mean, 19.7 / 199, 1e-12);
  ASSERT_EQ(got.size(), want.size());
  for (std::size_t i = 0; i < want.size(); ++i) EXPECT_EQ(got[i], want[i]) << "line " << i;
}

TEST(Report, IntervalRowsByTheNumberOfReplicates) {
  struct Case {
    long n;
    bool ci, one, tenth;
  };
  for (const Case c : {Case{100, false, false, false}, Case{101, true, false, false},
                       Case{500, true, true, false}, Case{5000, true, true, true}}) {
    const std::vector<ReplicateLine> data(static_cast<std::size_t>(c.n), ReplicateLine{0.1, 0.2});
    const std::string r = kska_report(report_inputs(0, c.n), replicate_statistics(data, false));
    EXPECT_EQ(r.find(" Ks C.I.") != std::string::npos, c.ci) << c.n;
    EXPECT_EQ(r.find("    5% :   ") != std::string::npos, c.ci) << c.n;
    EXPECT_EQ(r.find("    1% :   ") != std::string::npos, c.one) << c.n;
    EXPECT_EQ(r.find("  0.1% :   ") != std::string::npos, c.tenth) << c.n;
    EXPECT_EQ(r.find("Ka/Ks"), std::string::npos);
    EXPECT_NE(r.find(" Conficence Intervals\r\n"), std::string::npos);
    EXPECT_EQ(r.find("NOTE"), std::string::npos);
    EXPECT_NE(r.find(" Ks :  0.1000       SES:  200.0 \r\n"), std::string::npos);
    EXPECT_NE(r.find(" Ka :  0.0500       NES:  700.0   J&C\r\n"), std::string::npos);
  }
  KsKaReportInputs fixed = report_inputs(0, 200);
  fixed.poisson = false;
  fixed.pathway_weight = 0.5f;
  fixed.region_text = " Region to analyze:4 -90 nuc.";
  const std::string r = kska_report(fixed, replicate_statistics({}, false));
  EXPECT_NE(r.find(" Seq.#2     beta\r\n\r\n Region to analyze:4 -90 nuc.\r\n\r\n Ks : "),
            std::string::npos);
  EXPECT_NE(r.find(" Number of substitutions fixed (no Poisson-distributed)\r\n"),
            std::string::npos);
  EXPECT_NE(r.find(" Multiple-pathways: Unweighted\r\n\r\n"), std::string::npos);
}

TEST(Progress, Texts) {
  // The number and blanks fill 13 columns (10 while scanning).
  EXPECT_EQ(progress_text(false, 20, 125),
            "  Current simulation..  # 20" + std::string(11, ' ') + " Finish in.. 2min. 5sec.");
  EXPECT_EQ(progress_text(false, 1000, 7300),
            "  Current simulation..  # 1000" + std::string(9, ' ') + " Finish in.. 2h. 1min. ");
  EXPECT_EQ(progress_text(true, 3, 0), "  Scanning Optimal Diver..  # 3" + std::string(9, ' '));
  EXPECT_EQ(progress_text(false, 20, 0), "  Current simulation..  # 20" + std::string(11, ' '));
}

TEST(FixedSequence, ColumnsOfTheAnalysedRange) {
  AnalysisRecord rec;
  varnoth::testing::load_alignment(
      rec, {{"a", "GGANCAtttAAATAA"}, {"b", "GGAACATTTAAGTAG"}, {"c", "GGTACCTTCAAATGG"}});
  rec.results.handed_on.Ks = 0.1;
  auto texts = [](const std::vector<dv::Codon>& codons) {
    std::string s;
    for (const dv::Codon c : codons) {
      const CodonCell cell = dv::decode_codon(c);
      s.append(cell.data(), 3);
      s += ' ';
    }
    return s;
  };
  // Whole sequence: column 2 has an N; the last column ends in a stop.
  EXPECT_EQ(texts(fixed_starting_sequence(rec)), "GGT TTC AAA ");
  // Without the stop the last column stays.
  rec.seq.SeqCodons[0][4] = {'T', 'G', 'G'};
  rec.seq.SeqCodons[1][4] = {'T', 'G', 'G'};
  EXPECT_EQ(texts(fixed_starting_sequence(rec)), "GGT TTC AAA TGG ");
  // A region: codons Int(first / 3) + 1 to Int(last / 3).
  rec.region.RegionMode = 1;
  rec.region.RegionFirst = "3";  // codon 2 on, where a run would start at codon 1
  rec.region.RegionLast = "13";
  EXPECT_EQ(texts(fixed_starting_sequence(rec)), "TTC AAA ");
  // No estimate, or not coding: nothing fixed.
  rec.results.handed_on.Ks = 0;
  EXPECT_TRUE(fixed_starting_sequence(rec).empty());
}

// --- The generator of replicate pairs ------------------------------------

std::vector<dv::Codon> random_codons(std::size_t n, UniformRandom& r) {
  std::vector<dv::Codon> out;
  while (out.size() < n) {
    const int c = static_cast<int>(r.uniform() * 64);
    if (c != 48 && c != 50 && c != 56) out.push_back(static_cast<dv::Codon>(c));
  }
  return out;
}

struct Differences {
  int positions[3] = {0, 0, 0};
  int synonymous_codons = 0, nonsynonymous_codons = 0, stops = 0;
};

Differences differences(const ReplicateGenerator& g) {
  const auto& amino = dv::code_tables(GeneticCode::Universal).amino_acid;
  Differences d;
  for (std::size_t i = 0; i < g.codons(); ++i) {
    const int a = g.first()[i], b = g.second()[i];
    if (amino[b] == dv::kStop) ++d.stops;
    if (a == b) continue;
    for (int p = 0; p < 3; ++p)
      d.positions[p] += dv::nucleotide_at(a, p) != dv::nucleotide_at(b, p);
    (amino[a] == amino[b] ? d.synonymous_codons : d.nonsynonymous_codons) += 1;
  }
  return d;
}

TEST(Generator, QuotasAreFilledWithoutStopCodons) {
  UniformRandom r(5);
  const auto fixed = random_codons(300, r);
  ReplicateGenerator g;
  g.configure({12, 7, false});
  g.set_codons(fixed, 0);
  long rejected = 0;
  for (int rep = 0; rep < 50; ++rep) {
    g.draw_starting_sequence(r);
    EXPECT_TRUE(std::equal(fixed.begin(), fixed.end(), g.first().begin()));
    g.draw_quotas(r);
    EXPECT_EQ(g.syn_quota(), 12);
    EXPECT_EQ(g.nonsyn_quota(), 7);
    g.mutate(r);
    EXPECT_EQ(g.syn_count(), 12);
    EXPECT_EQ(g.nonsyn_count(), 7);
    EXPECT_EQ(differences(g).stops, 0);
    rejected += g.rejected_stops();
  }
  EXPECT_GT(rejected, 0);
}

TEST(Generator, PositionRules) {
  UniformRandom r(9);
  ReplicateGenerator g;
  // No nonsynonymous quota: every change goes to a third position.
  g.configure({30, 0, false});
  g.set_codons({}, 400);
  for (int rep = 0; rep < 20; ++rep) {
    g.draw_starting_sequence(r);
    g.draw_quotas(r);
    g.mutate(r);
    const Differences d = differences(g);
    EXPECT_EQ(d.positions[0] + d.positions[1], 0);
    EXPECT_EQ(d.nonsynonymous_codons, 0);
    EXPECT_EQ(g.syn_count(), 30);
  }
  // No synonymous quota: never a third position.
  g.configure({0, 30, false});
  for (int rep = 0; rep < 20; ++rep) {
    g.draw_starting_sequence(r);
    g.draw_quotas(r);
    g.mutate(r);
    EXPECT_EQ(differences(g).positions[2], 0);
    EXPECT_EQ(g.nonsyn_count(), 30);
  }
}

TEST(Generator, DrawnStartingSequenceFollowsTheGC) {
  UniformRandom r(3);
  ReplicateGenerator g;
  GeneratorSettings s{1, 1, false};
  s.third_position = {40, 80, 90, 100};  // G+C 80%
  g.configure(s);
  g.set_codons({}, 5000);
  g.draw_starting_sequence(r);
  int gc3 = 0, gc1 = 0;
  for (const dv::Codon c : g.first()) {
    const int l3 = dv::nucleotide_at(c, 2), l1 = dv::nucleotide_at(c, 0);
    gc3 += l3 == dv::kG || l3 == dv::kC;
    gc1 += l1 == dv::kG || l1 == dv::kC;
  }
  EXPECT_NEAR(gc3 / 5000.0, 0.8, 0.03);
  EXPECT_NEAR(gc1 / 5000.0, 0.5, 0.03);
  EXPECT_TRUE(std::equal(g.first().begin(), g.first().end(), g.second().begin()));
}

TEST(Generator, PoissonDrawsAndTheAlternatingSynonymousDraw) {
  UniformRandom r(21);
  ReplicateGenerator g;
  g.configure({8, 8, true});
  g.set_codons({}, 10);
  const int n = 20000;
  double syn_sum = 0, nonsyn_sum = 0, even_sum = 0, odd_sum = 0;
  for (int i = 0; i < n; ++i) {
    g.draw_quotas(r);
    syn_sum += g.syn_quota();
    nonsyn_sum += g.nonsyn_quota();
    (i % 2 == 0 ? even_sum : odd_sum) += g.syn_quota();
  }
  // Nonsynonymous: a Poisson draw of mean 8. Synonymous: the hit at k gives
  // k - 1 and k in turn, so the draws average 8 - 1 + P(0) and 8 + P(0).
  EXPECT_NEAR(nonsyn_sum / n, 8, 0.08);
  EXPECT_NEAR(even_sum / (n / 2), 7, 0.1);
  EXPECT_NEAR(odd_sum / (n / 2), 8, 0.1);
  EXPECT_NEAR(syn_sum / n, 7.5, 0.08);
}

// --- Whole runs --------------------------------------------------------------

// A platform whose yield can press Stop Simulation.
class StoppingPlatform : public FakePlatform {
 public:
  std::function<void()> on_yield;
  int stop_at = -1;
  void yield() override {
    FakePlatform::yield();
    if (yields == stop_at && on_yield) on_yield();
  }
};

class KsKaRun : public ::testing::Test {
 protected:
  void SetUp() override {
    rec = coding_record(3, 300, 17);
    open_kska_dialog(d, rec, session, 0);
    d.Text1.text = "0.1";
    d.Text2.text = "200";
    d.Text3.text = "0.05";
    d.Text4.text = "700";
    d.Text6.text = "50";
    d.Text7.text = "1000";
    d.seed = 2024;
  }
  AnalysisRecord rec;
  KsKaSession session;
  KsKaDialog d;
  StoppingPlatform platform;
};

TEST_F(KsKaRun, SeededRunReportAndStatisticalSanity) {
  ASSERT_TRUE(run_kska_simulation(d, rec, session, platform));
  EXPECT_TRUE(platform.messages.empty());
  ASSERT_EQ(d.null_distribution.size(), 1000u);
  EXPECT_EQ(rec.ReportBuffer, d.Text13.text);
  const std::vector<std::string> lines = lines_of(d.Text13.text);
  ASSERT_EQ(lines.size(), 30u);
  const std::vector<std::string> head = {
      "*SIMULATION PARAMETERS*",
      "",
      " Seq.#2     beta",
      " Seq.#3     gamma",
      "",
      " Ks :  0.1000       SES:  200.0 ",
      " Ka :  0.0500       NES:  700.0 ",
      "",
      " % G+C 3rd pos.         :  50.0 ",
      " Number Analyzed codons :  300 ",
      " Number of replicates   :  1000 ",
      " Syn.   TRS:TRV ratio   : 2.8 :1",
      " NonSyn.TRS:TRV ratio   : 1 :3.2",
      " Number of substitutions Poisson-distributed",
      " Multiple-pathways: Unweighted",
      "",
      "*SIMULATION RESULTS*",
      "",
  };
  for (std::size_t i = 0; i < head.size(); ++i) EXPECT_EQ(lines[i], head[i]) << "line " << i;
  EXPECT_EQ(lines[18].substr(0, 11), " Ks avg.:  ");
  EXPECT_EQ(lines[19].substr(0, 11), " Ka avg.:  ");
  EXPECT_EQ(lines[21], " Conficence Intervals");
  EXPECT_EQ(lines[22], " Ks C.I.      Min.        Max.");
  EXPECT_EQ(lines[23].substr(0, 11), "    5% :   ");
  EXPECT_EQ(lines[24].substr(0, 11), "    1% :   ");
  EXPECT_EQ(lines[25], " Ka C.I.     ");
  EXPECT_EQ(lines[28], "");
  EXPECT_EQ(lines[29].substr(0, 48), " Probability of NO STOP CODONS in the sequence: ");

  // The scan and the steering put the mean of Ks on the target.
  const KsKaStatistics s = replicate_statistics(d.null_distribution, false);
  EXPECT_NEAR(s.ks_mean, 0.1, 0.01);
  EXPECT_NEAR(s.ka_mean, 0.05, 0.01);
  const double low = s.ks_low.cell(25), high = s.ks_high.cell(25);
  EXPECT_LT(low, 0.1);
  EXPECT_GT(high, 0.1);
  EXPECT_LT(s.ks_low.cell(5), low);  // the 1% interval is wider
  // The finished dialog.
  EXPECT_EQ(d.SSTab1Page, 1);
  EXPECT_TRUE(d.Command5.visible && d.Command6.visible && d.Command8.visible);
  EXPECT_TRUE(d.Text13.visible);
  EXPECT_FALSE(d.Command4.visible || d.Text12.visible || d.Check1.visible || d.Check4.visible);
  EXPECT_FALSE(d.Command12.visible);
  EXPECT_EQ(rec.seq.SeqCount, 1000);  // borrowed by the run
  EXPECT_EQ(session.SimCodons, 300);
}

TEST_F(KsKaRun, SameSeedSameRunBitForBit) {
  ASSERT_TRUE(run_kska_simulation(d, rec, session, platform));
  const std::string report = d.Text13.text;
  const std::vector<ReplicateLine> data = d.null_distribution;

  AnalysisRecord rec2 = coding_record(3, 300, 17);
  KsKaSession session2;
  KsKaDialog d2;
  open_kska_dialog(d2, rec2, session2, 0);
  d2.Text1.text = d.Text1.text;
  d2.Text2.text = d.Text2.text;
  d2.Text3.text = d.Text3.text;
  d2.Text4.text = d.Text4.text;
  d2.Text6.text = d.Text6.text;
  d2.Text7.text = d.Text7.text;
  d2.seed = 2024;
  FakePlatform other;
  other.now.seconds_since_midnight = 5000;  // another time of day: no effect
  ASSERT_TRUE(run_kska_simulation(d2, rec2, session2, other));
  EXPECT_EQ(d2.Text13.text, report);
  ASSERT_EQ(d2.null_distribution.size(), data.size());
  for (std::size_t i = 0; i < data.size(); ++i) {
    EXPECT_EQ(d2.null_distribution[i].ks, data[i].ks) << i;
    EXPECT_EQ(d2.null_distribution[i].ka, data[i].ka) << i;
  }

  // Another seed, another run.
  AnalysisRecord rec3 = coding_record(3, 300, 17);
  KsKaSession session3;
  KsKaDialog d3;
  open_kska_dialog(d3, rec3, session3, 0);
  d3.Text1.text = d.Text1.text;
  d3.Text2.text = d.Text2.text;
  d3.Text3.text = d.Text3.text;
  d3.Text4.text = d.Text4.text;
  d3.Text6.text = d.Text6.text;
  d3.Text7.text = d.Text7.text;
  d3.seed = 2025;
  ASSERT_TRUE(run_kska_simulation(d3, rec3, session3, other));
  int same = 0;
  for (std::size_t i = 0; i < data.size(); ++i)
    same += d3.null_distribution[i].ks == data[i].ks && d3.null_distribution[i].ka == data[i].ka;
  EXPECT_LT(same, 200);
}

TEST_F(KsKaRun, SecondRunWithTheSameParametersSkipsTheScan) {
  ASSERT_TRUE(run_kska_simulation(d, rec, session, platform));
  const int first_yields = platform.yields;
  EXPECT_GE(first_yields, 1000 + 250);  // at least one scan pass of 250
  EXPECT_EQ(session.ScanKeySyn, 0.1 * 200);
  EXPECT_EQ(session.ScanKeyNonsyn, 0.05 * 700);
  EXPECT_EQ(session.ScanKeyCodons, 300);  // as typed... see Text5 below
  EXPECT_EQ(session.ScanKeyGC, 50);
  EXPECT_EQ(session.ScanKeySynRatio, 2.8);

  open_kska_dialog(d, rec, session, 0);
  d.Text1.text = "0.1";
  d.Text2.text = "200";
  d.Text3.text = "0.05";
  d.Text4.text = "700";
  d.Text6.text = "50";
  d.Text7.text = "1000";
  d.seed = 99;
  FakePlatform second;
  ASSERT_TRUE(run_kska_simulation(d, rec, session, second));
  EXPECT_LT(second.yields, 1000 + 250);
  EXPECT_GE(second.yields, 1000);
}

TEST_F(KsKaRun, StopBetweenReplicatesLeavesNothing) {
  platform.stop_at = 40;
  platform.on_yield = [this] { stop_simulation(d); };
  rec.menu.AnalysisOptions.enabled = false;
  rec.menu.Diver.enabled = false;
  EXPECT_FALSE(run_kska_simulation(d, rec, session, platform));
  EXPECT_EQ(platform.yields, 40);
  EXPECT_FALSE(d.loaded);
  EXPECT_TRUE(d.null_distribution.empty());
  EXPECT_FALSE(d.results_ready);
  EXPECT_TRUE(rec.form.Form1.visible);
  EXPECT_TRUE(rec.menu.AnalysisOptions.enabled);
  EXPECT_TRUE(rec.menu.Diver.enabled);
}

TEST_F(KsKaRun, HundredReplicatesGiveMeansOnly) {
  d.Text7.text = "100";
  d.Check4.value = false;
  platform.yes_no_answers = {true};
  ASSERT_TRUE(run_kska_simulation(d, rec, session, platform));
  ASSERT_EQ(platform.messages.size(), 1u);  // the "Only100" question
  EXPECT_GE(platform.yields, 100);          // no scan; steered replicates are made again
  EXPECT_EQ(d.Text13.text.find("C.I."), std::string::npos);
  EXPECT_NE(d.Text13.text.find(" Ks avg.:  "), std::string::npos);
}

TEST_F(KsKaRun, KsZeroWithKaValid) {
  d.Text1.text = "0";
  d.Check4.value = false;
  d.Text7.text = "500";
  ASSERT_TRUE(run_kska_simulation(d, rec, session, platform));
  EXPECT_TRUE(platform.messages.empty());  // 500: no question
  EXPECT_NE(d.Text13.text.find("    1% :   "), std::string::npos);
  EXPECT_NE(d.Text12.text.find("  Current simulation..  # 500"), std::string::npos);
  const KsKaStatistics s = replicate_statistics(d.null_distribution, false);
  EXPECT_LT(s.ks_mean, 0.01);
  EXPECT_NEAR(s.ka_mean, 0.05, 0.015);
}

TEST_F(KsKaRun, KaKsTestReportsTheRatio) {
  open_kska_dialog(d, rec, session, 1);
  d.Text1.text = "0.1";
  d.Text2.text = "200";
  d.Text4.text = "700";
  d.Text7.text = "500";
  d.Check4.value = false;
  d.seed = 8;
  ASSERT_TRUE(run_kska_simulation(d, rec, session, platform));
  const std::string& r = d.Text13.text;
  EXPECT_NE(r.find(" Simulations assuming that the average for Ka is equal to the value "
                   "estimated for Ks\r\n\r\n"),
            std::string::npos);
  EXPECT_NE(r.find(" Ks :  0.1000 \r\n Ka :  0.1000 \r\n"), std::string::npos);
  EXPECT_NE(r.find(" Ka/Ks C.I.     \r\n    5% :   "), std::string::npos);
  EXPECT_TRUE(d.Command12.visible && d.Text18.visible);
  const KsKaStatistics s = replicate_statistics(d.null_distribution, true);
  EXPECT_NEAR(s.ka_mean, 0.1, 0.02);  // Ka from Ks x N.E.S.
}

}  // namespace
