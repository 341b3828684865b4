// Noncoding divergence estimators against independent long double reference
// values, and their exits, carried values, truncation and range rule.
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>

#include "divergence/noncoding_estimators.h"

namespace varnoth::divergence {
namespace {

using Real = long double;

// Counts of a pair, taken independently of the program's table.
struct PairCounts {
  long long n = 0, ag = 0, ac = 0, at = 0, gc = 0, gt = 0, ct = 0;
  long long base[4] = {0, 0, 0, 0};  // both sequences together: A, G, C, T
};

int base_index(char c) {
  switch (c) {
    case 'A': return 0;
    case 'G': return 1;
    case 'C': return 2;
    default: return 3;
  }
}

PairCounts count(const std::string& s1, const std::string& s2) {
  PairCounts c;
  c.n = static_cast<long long>(s1.size());
  for (std::size_t k = 0; k < s1.size(); ++k) {
    ++c.base[base_index(s1[k])];
    ++c.base[base_index(s2[k])];
    std::string pair{std::min(s1[k], s2[k]), std::max(s1[k], s2[k])};
    if (pair == "AG") ++c.ag;
    if (pair == "AC") ++c.ac;
    if (pair == "AT") ++c.at;
    if (pair == "CG") ++c.gc;
    if (pair == "GT") ++c.gt;
    if (pair == "CT") ++c.ct;
  }
  return c;
}

// Textbook values, summed directly in long double. The series run while i is at
// most the number of differences as the program forms it in double (P n + Q n);
// their terms use the exact counts.
struct Reference {
  Real P, Q, jc, kimura, a, b, tajima_nei, tajima_1p, tajima_4p, tajima_2p;
  bool tajima_nei_defined;
};

Reference reference(const PairCounts& c) {
  const Real n = c.n;
  const double nd = static_cast<double>(c.n);
  const double Pd = c.ag / nd + c.ct / nd;
  const double Qd = c.at / nd + c.gc / nd + c.gt / nd + c.ac / nd;
  const double d_bound = (Pd + Qd) * nd;
  Reference r{};
  r.P = (c.ag + c.ct) / n;
  r.Q = (c.at + c.gc + c.gt + c.ac) / n;
  const Real p = r.P + r.Q;
  r.jc = -0.75L * std::log(1 - 4 * p / 3);
  r.a = -0.5L * std::log(1 - 2 * r.P - r.Q) + 0.25L * std::log(1 - 2 * r.Q);
  r.b = -0.5L * std::log(1 - 2 * r.Q);
  r.kimura = r.a + r.b;

  Real g[4];
  for (int i = 0; i < 4; ++i) g[i] = c.base[i] / (2 * n);
  r.tajima_nei_defined = g[0] > 0 && g[1] > 0 && g[2] > 0 && g[3] > 0;
  if (r.tajima_nei_defined) {
    auto term = [&](long long x, int i, int j) { return (x / n) * (x / n) / (2 * g[i] * g[j]); };
    const Real h = term(c.ag, 0, 1) + term(c.ac, 0, 2) + term(c.at, 0, 3) + term(c.gc, 1, 2) +
                   term(c.gt, 1, 3) + term(c.ct, 2, 3);
    const Real b = (1 - (g[0] * g[0] + g[1] * g[1] + g[2] * g[2] + g[3] * g[3]) + p * p / h) / 2;
    r.tajima_nei = -b * std::log(1 - p / b);
    for (int i = 1; i <= d_bound; ++i) {
      r.tajima_4p += std::pow(p / b, static_cast<Real>(i)) * b / i;
      r.tajima_1p += std::pow(p / 0.75L, static_cast<Real>(i)) * 0.75L / i;
    }
  }

  const long long n1 = c.ag + c.ct, n2 = c.at + c.gc + c.gt + c.ac;
  for (int i = 1; i <= Pd * nd + Qd * nd; ++i) {
    if (i * std::log(n) + std::log(static_cast<Real>(i)) > 88) break;
    Real s = 0;
    for (long long j = std::max(0LL, i - n2); j <= std::min<long long>(i, n1); ++j) {
      Real binomial = 1;
      for (long long k = 1; k <= j; ++k) binomial = binomial * (i - j + k) / k;
      s += binomial * std::pow(2.0L, j - 1) * std::pow(static_cast<Real>(n1), j) *
           std::pow(static_cast<Real>(n2), i - j);
    }
    r.tajima_2p += s / (i * std::pow(n, static_cast<Real>(i)));
  }
  for (int i = 1; i <= Qd * nd; ++i)
    r.tajima_2p += std::pow(2.0L, i - 2) * std::pow(n2 / n, static_cast<Real>(i)) / i;
  return r;
}

// The program's value is the reference cut to seven decimals (within `tolerance`
// for its own rounding), or 0 when the reference is out of range.
void expect_truncated(double value, Real ref, double tolerance, const char* what) {
  if (ref > 5 || ref < 0) {
    EXPECT_EQ(value, 0) << what;
    return;
  }
  EXPECT_LE(value, ref + tolerance) << what;
  EXPECT_LT(ref - value, 1e-7 + tolerance) << what;
}

std::string random_pair_member(std::mt19937& rng, const std::string& ancestor, double rate,
                               double transition_share) {
  auto transition = [](char c) { return c == 'A' ? 'G' : c == 'G' ? 'A' : c == 'C' ? 'T' : 'C'; };
  auto transversions = [](char c) { return c == 'A' || c == 'G' ? "CT" : "AG"; };
  std::uniform_real_distribution<double> unit(0, 1);
  std::string s = ancestor;
  for (char& c : s) {
    if (unit(rng) >= rate) continue;
    c = unit(rng) < transition_share ? transition(c) : transversions(c)[unit(rng) < 0.5];
  }
  return s;
}

std::string random_sequence(std::mt19937& rng, std::size_t length, const double weights[4]) {
  std::discrete_distribution<int> pick(weights, weights + 4);
  std::string s(length, 'A');
  for (char& c : s) c = "AGCT"[pick(rng)];
  return s;
}

TEST(NoncodingEstimators, AgreesWithIndependentValuesOnRandomPairs) {
  std::mt19937 rng(1234567);
  std::uniform_real_distribution<double> unit(0, 1);
  for (int trial = 0; trial < 300; ++trial) {
    const double weights[4] = {0.1 + unit(rng), 0.1 + unit(rng), 0.1 + unit(rng), 0.1 + unit(rng)};
    const std::size_t length = 300 + static_cast<std::size_t>(unit(rng) * 2700);
    const std::string s1 = random_sequence(rng, length, weights);
    const std::string s2 = random_pair_member(rng, s1, 0.02 + 0.43 * unit(rng), 0.3 + 0.6 * unit(rng));
    const PairCounts c = count(s1, s2);
    const Reference r = reference(c);
    const NoncodingResult result = estimate_noncoding(s1, s2);
    const NoncodingEstimates& e = result.values;
    SCOPED_TRACE("trial " + std::to_string(trial));

    for (int i = 0; i < 4; ++i) EXPECT_EQ(e.counts1[i] + e.counts2[i], c.base[i]);
    EXPECT_EQ(e.mean_freq_a, c.base[0] / (2.0 * c.n));
    expect_truncated(e.obs_p, r.P, 1e-12, "P");
    expect_truncated(e.obs_q, r.Q, 1e-12, "Q");
    expect_truncated(e.k_jukes_cantor, r.jc, 1e-12, "Jukes & Cantor");
    ASSERT_TRUE(result.kimura_ab_written);
    expect_truncated(e.k_kimura, r.kimura, 1e-12, "Kimura");
    expect_truncated(e.kimura_a, r.a, 1e-12, "Kimura A");
    expect_truncated(e.kimura_b, r.b, 1e-12, "Kimura B");
    ASSERT_TRUE(r.tajima_nei_defined);
    ASSERT_TRUE(result.tajima_1p_4p_written);
    expect_truncated(e.k_tajima_nei, r.tajima_nei, 1e-12, "Tajima & Nei");
    expect_truncated(e.k_tajima_1p, r.tajima_1p, 1e-11, "Tajima 1-p");
    expect_truncated(e.k_tajima_4p, r.tajima_4p, 1e-11, "Tajima 4-p");
    // A Single, rounded at each of its steps.
    expect_truncated(e.k_tajima_2p, r.tajima_2p, 3e-6, "Tajima 2-p");
    const NoncodingNotApplicable na = not_applicable(e);
    EXPECT_FALSE(na.jukes_cantor || na.kimura || na.tajima_nei || na.tajima_1p ||
                 na.tajima_2p || na.tajima_4p);
  }
}

// ACGT against GCGT: one A-G transition in four sites.
TEST(NoncodingEstimators, HandWorkedPair) {
  const NoncodingEstimates e = apply_carry({}, estimate_noncoding(std::string("ACGT"),
                                                                  std::string("GCGT")));
  EXPECT_EQ(e.counts1, (std::array<std::int64_t, 4>{1, 1, 1, 1}));
  EXPECT_EQ(e.counts2, (std::array<std::int64_t, 4>{0, 2, 1, 1}));
  EXPECT_EQ(e.mean_freq_g, 0.375);
  EXPECT_EQ(e.obs_p, 0.25);
  EXPECT_EQ(e.obs_q, 0);
  EXPECT_NEAR(e.k_jukes_cantor, 0.3040988, 1e-12);  // -0.75 ln(2/3)
  EXPECT_NEAR(e.kimura_a, 0.3465735, 1e-12);        // -0.5 ln(1/2)
  EXPECT_EQ(e.kimura_b, 0);                         // Q = 0: B is 0
  EXPECT_FALSE(std::signbit(e.kimura_b));
  EXPECT_NEAR(e.k_kimura, 0.3465735, 1e-12);
  // b = (1 - 18/64 + 0.0625/(2/3))/2 = 0.40625.
  EXPECT_NEAR(e.k_tajima_nei, 0.3881765, 1e-12);
  // One difference: one term of each series, p itself.
  EXPECT_EQ(e.k_tajima_4p, 0.25);
  EXPECT_EQ(e.k_tajima_1p, 0.25);
  // i = 1: w = 1/4, j = 1 only: s = 1; no transversion, so t is empty.
  EXPECT_EQ(e.k_tajima_2p, 0.25f);
}

// The series stop while i is at most the double product p n: here that is
// 5.999999999999999 for six differences, so the sixth term is left out.
TEST(NoncodingEstimators, SeriesBoundIsTheUnroundedProduct) {
  const std::string s1 = "ACGCTACGGAAGGC", s2 = "ACGTCTCGAAAAGT";
  const PairCounts c = count(s1, s2);
  ASSERT_EQ(c.ag + c.ac + c.at + c.gc + c.gt + c.ct, 6);
  const NoncodingEstimates e = estimate_noncoding(s1, s2).values;
  EXPECT_NEAR(e.k_tajima_4p, 0.8653910, 1e-12);  // six terms would give 0.9061261
  EXPECT_NEAR(e.k_tajima_1p, 0.6267983, 1e-12);  // six terms would give 0.6311502
}

TEST(NoncodingEstimators, ObservedPAt07499IsStillEstimated) {
  // 2500 A-G and 4999 A-C in 10000 sites: P = 0.25, Q = 0.4999, p = 0.7499.
  const std::string rest = std::string(834, 'G') + std::string(834, 'C') + std::string(833, 'T');
  const std::string s1 = std::string(7499, 'A') + rest;
  const std::string s2 = std::string(2500, 'G') + std::string(4999, 'C') + rest;
  NoncodingCarry previous{0.5, 0.25, 0, 0};
  const NoncodingResult at = estimate_noncoding(s1, s2);
  const NoncodingEstimates e = apply_carry(previous, at);
  EXPECT_EQ(e.obs_p + e.obs_q, 0.7499);
  // Kimura runs: A and B are this pair's own, though K (6.73) is out of range.
  EXPECT_TRUE(at.kimura_ab_written);
  EXPECT_NEAR(e.kimura_a, -0.5 * std::log(1e-4) + 0.25 * std::log(2e-4), 2e-7);
  EXPECT_NEAR(e.kimura_b, -0.5 * std::log(2e-4), 2e-7);
  EXPECT_EQ(e.k_kimura, 0);
  EXPECT_EQ(e.k_jukes_cantor, 0);  // 6.69, out of range
  // Tajima 2-p: 1.4140342 + 1.8383222, summed independently.
  EXPECT_NEAR(e.k_tajima_2p, 3.2523564, 2e-6);
  EXPECT_FALSE(not_applicable(e).tajima_2p);

  // One more difference: p = 0.75 is above 0.7499, all K are 0 and not applicable.
  std::string s2b = s2;
  s2b[7499] = 'A';
  const NoncodingResult above = estimate_noncoding(s1, s2b);
  EXPECT_FALSE(above.kimura_ab_written);
  const NoncodingEstimates f = apply_carry(previous, above);
  EXPECT_EQ(f.kimura_a, 0.5);
  EXPECT_EQ(f.kimura_b, 0.25);
  for (double k : {f.k_jukes_cantor, f.k_kimura, f.k_tajima_nei, f.k_tajima_1p,
                   static_cast<double>(f.k_tajima_2p), f.k_tajima_4p})
    EXPECT_EQ(k, 0);
  const NoncodingNotApplicable na = not_applicable(f);
  EXPECT_TRUE(na.jukes_cantor && na.kimura && na.tajima_nei && na.tajima_1p && na.tajima_2p &&
              na.tajima_4p);
}

TEST(NoncodingEstimators, PairWithoutGuanine) {
  const std::string s1 = "ACTTACATCCATTACAACTA", s2 = "ATTTACCTCAATTCCAACTT";
  const NoncodingCarry previous{0.1, 0.2, 0.3, 0.4};
  const NoncodingEstimates e = apply_carry(previous, estimate_noncoding(s1, s2));
  const NoncodingNotApplicable na = not_applicable(e);
  EXPECT_TRUE(na.tajima_nei);
  EXPECT_TRUE(na.tajima_1p);  // set to 0 by this pair, not kept from the pair before
  EXPECT_TRUE(na.tajima_4p);
  EXPECT_FALSE(na.tajima_2p);
  EXPECT_FALSE(na.jukes_cantor);
  const Reference r = reference(count(s1, s2));
  expect_truncated(e.k_tajima_2p, r.tajima_2p, 1e-6, "Tajima 2-p");
}

TEST(NoncodingEstimators, IdenticalPairKeepsKimuraTermsOfPairBefore) {
  const std::string s = "ACGTTGCAACGT";
  const NoncodingCarry previous{0.5, 0.25, 0.75, 1.5};
  const NoncodingResult result = estimate_noncoding(s, s);
  EXPECT_FALSE(result.kimura_ab_written);
  const NoncodingEstimates e = apply_carry(previous, result);
  for (double k : {e.k_jukes_cantor, e.k_kimura, e.k_tajima_nei, e.k_tajima_1p,
                   static_cast<double>(e.k_tajima_2p), e.k_tajima_4p})
    EXPECT_EQ(k, 0);
  const NoncodingNotApplicable na = not_applicable(e);
  EXPECT_FALSE(na.jukes_cantor || na.kimura || na.tajima_nei || na.tajima_1p ||
               na.tajima_2p || na.tajima_4p);
  EXPECT_EQ(e.kimura_a, 0.5);
  EXPECT_EQ(e.kimura_b, 0.25);
  EXPECT_EQ(carry_of(e).kimura_a, 0.5);
  // A kept value is cut to seven decimals again by the pair that keeps it, and
  // 10000000 * 0.0000021 is just below 21 in double.
  EXPECT_EQ(apply_carry({0.0000021, 0, 0, 0}, result).kimura_a, 0.000002);
}

TEST(NoncodingEstimators, KimuraGuardKeepsTermsOfPairBefore) {
  // Two transitions in four sites: 1 - 2P - Q = 0.
  const NoncodingResult result = estimate_noncoding(std::string("ACGT"), std::string("GTGT"));
  EXPECT_FALSE(result.kimura_ab_written);
  const NoncodingEstimates e = apply_carry({0.125, 0.0625, 0, 0}, result);
  EXPECT_EQ(e.k_kimura, 0);
  EXPECT_TRUE(not_applicable(e).kimura);
  EXPECT_EQ(e.kimura_a, 0.125);
  EXPECT_EQ(e.kimura_b, 0.0625);
  EXPECT_GT(e.k_jukes_cantor, 0);
}

TEST(NoncodingEstimators, TajimaNeiLimitKeepsSeriesOfPairBefore) {
  // Skewed composition: p/b = 1.27, at least 1.
  const NoncodingResult result =
      estimate_noncoding(std::string("ATAGAATAAA"), std::string("AACAAAAACA"));
  EXPECT_FALSE(result.tajima_1p_4p_written);
  EXPECT_TRUE(result.kimura_ab_written);
  const NoncodingEstimates e = apply_carry({0, 0, 0.75, 1.5}, result);
  EXPECT_EQ(e.k_tajima_nei, 0);
  EXPECT_EQ(e.k_tajima_1p, 0.75);
  EXPECT_EQ(e.k_tajima_4p, 1.5);
  const NoncodingNotApplicable na = not_applicable(e);
  EXPECT_TRUE(na.tajima_nei);
  EXPECT_FALSE(na.tajima_1p);  // prints the kept value
  // A kept value above 5 meets the range rule again.
  EXPECT_EQ(apply_carry({0, 0, 0.75, 7}, result).k_tajima_4p, 0);
}

TEST(NoncodingEstimators, TruncationToSevenDecimals) {
  struct Case {
    double x, expected;
  };
  const Case cases[] = {{0.12345678, 0.1234567}, {0.99999999, 0.9999999}, {2.5, 2.5},
                        {-0.12345671, -0.1234568}, {0, 0}};
  for (const Case& c : cases) EXPECT_DOUBLE_EQ(truncate_seven_decimals(c.x), c.expected) << c.x;
  // One transversion in three sites: Q = 0.3333333, P = 0.
  const NoncodingEstimates e = estimate_noncoding(std::string("AAC"), std::string("ACC")).values;
  EXPECT_EQ(e.obs_q, 0.3333333);
  EXPECT_EQ(e.obs_p, 0);
}

TEST(NoncodingEstimators, CountsIgnoreOtherCharactersAndReadLowerCase) {
  const NucleotidePairTable t = count_nucleotide_pairs(std::string("AgN-T"), std::string("GGCAt"));
  EXPECT_EQ(t.sites(), 3);
  EXPECT_EQ(t.cells[4 * NucleotidePairTable::kA + NucleotidePairTable::kG], 1);
  EXPECT_EQ(t.cells[4 * NucleotidePairTable::kG + NucleotidePairTable::kG], 1);
  EXPECT_EQ(t.cells[4 * NucleotidePairTable::kT + NucleotidePairTable::kT], 1);
}

TEST(NoncodingEstimators, NoNaNOrInfinityForAnyPair) {
  std::mt19937 rng(7654321);
  std::uniform_real_distribution<double> unit(0, 1);
  NoncodingCarry carry;
  for (int trial = 0; trial < 400; ++trial) {
    double weights[4];
    for (double& w : weights) w = unit(rng) < 0.2 ? 0 : unit(rng);
    if (weights[0] + weights[1] + weights[2] + weights[3] == 0) weights[trial % 4] = 1;
    const auto length = static_cast<std::size_t>(std::exp(unit(rng) * std::log(100000.0)));
    const std::string s1 = random_sequence(rng, std::max<std::size_t>(length, 1), weights);
    const std::string s2 = unit(rng) < 0.3 ? random_sequence(rng, s1.size(), weights)
                                           : random_pair_member(rng, s1, unit(rng), unit(rng));
    const NoncodingEstimates e = apply_carry(carry, estimate_noncoding(s1, s2));
    carry = carry_of(e);
    SCOPED_TRACE("trial " + std::to_string(trial) + ", length " + std::to_string(s1.size()));
    for (double v : {e.mean_freq_a, e.mean_freq_g, e.mean_freq_c, e.mean_freq_t, e.obs_p,
                     e.obs_q, e.kimura_a, e.kimura_b})
      ASSERT_TRUE(std::isfinite(v));
    for (double k : {e.k_jukes_cantor, e.k_kimura, e.k_tajima_nei, e.k_tajima_1p,
                     static_cast<double>(e.k_tajima_2p), e.k_tajima_4p}) {
      ASSERT_TRUE(std::isfinite(k));
      ASSERT_GE(k, 0);
      ASSERT_LE(k, 5);
      ASSERT_FALSE(std::signbit(k));
    }
  }
}

}  // namespace
}  // namespace varnoth::divergence
