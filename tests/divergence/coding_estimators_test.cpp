// Coding divergence estimators: worked values, the failure paths, the carry of
// S.E.S./N.E.S., the values handed on, and empty classes.
#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "divergence/coding_estimators.h"

namespace varnoth::divergence {
namespace {

CodingClassSums sums(std::array<float, 4> sites, std::array<float, 4> ts,
                     std::array<float, 4> tv) {
  CodingClassSums s;
  s.sites = sites;
  s.obs_ts = ts;
  s.obs_tv = tv;
  return s;
}

bool na(std::string_view note) { return note == "NO APPLICABLE"; }

// L0 100, L2S 20, L2V 10, L4 30; TS 5 2 1 3; TV 4 1 1 2. Worked step by step:
// wS = 5/6, wV = 2/3, pS = 1/12 + 1/20; pN = 6/110 + 5/120; Q = 3/40 as a
// Single; P2 = 0.1, Q2 = 0.05, P4 = 0.1, Q4 = 1/15; R = F = 5/120; A2 uses R.
TEST(CodingEstimators, WorkedExample) {
  const CodingResult r = estimate_coding(sums({100, 20, 10, 30}, {5, 2, 1, 3}, {4, 1, 1, 2}));
  const CodingEstimates& e = r.values;
  EXPECT_TRUE(r.effective_sites_written);
  EXPECT_NEAR(e.ks_jc, 0.1468084328445715, 1e-13);
  EXPECT_NEAR(e.ka_jc, 0.1029676890339058, 1e-13);
  // Bs from Q rounded to Single (0.0750000030); the double 0.075 gives 0.0812594658.
  EXPECT_NEAR(e.bs, 0.08125946825504304, 1e-15);
  // As = (20 A2 + 30 A4)/50 with A2 = 0.1165632739 (R); with Q2 it would be 0.1175009.
  EXPECT_NEAR(e.as, 0.11820666149912704, 1e-13);
  EXPECT_NEAR(e.aa, 0.060529318728598014, 1e-13);
  EXPECT_NEAR(e.ba, 0.043505688494814905, 1e-13);
  EXPECT_NEAR(e.ks_kimura, 0.19946612975417008, 1e-13);
  EXPECT_NEAR(e.ka_kimura, 0.10403500722341291, 1e-13);
  EXPECT_NEAR(e.ses, 45.92615205623178, 1e-10);
  EXPECT_EQ(e.nes, 114.18183135986328f);  // rounded to Single
  EXPECT_TRUE(e.ks_jc_note.empty() && e.ka_jc_note.empty());
  EXPECT_TRUE(e.ks_kimura_note.empty() && e.ka_kimura_note.empty());
}

TEST(CodingEstimators, SynonymousLimits) {
  // pS = 2/4 + 1/4 = 0.75 exactly: not applicable.
  CodingEstimates e = estimate_coding(sums({10, 0, 0, 4}, {0, 0, 0, 2}, {0, 0, 0, 1})).values;
  EXPECT_TRUE(na(e.ks_jc_note));
  EXPECT_EQ(e.ks_jc, 0);

  // Q = 2/4 = 0.5 exactly: Kimura fails at once, Bs stays 0.
  e = estimate_coding(sums({10, 0, 0, 4}, {0, 0, 0, 0}, {0, 0, 0, 2})).values;
  EXPECT_TRUE(na(e.ks_kimura_note));
  EXPECT_EQ(e.bs, 0);
  EXPECT_EQ(e.as, 0);
}

TEST(CodingEstimators, SynonymousFailStillRunsNonsynonymous) {
  // Q4 + 2 P4 = 0.1 + 28/30 >= 1 fails after Bs is set (Q = 4/40).
  const CodingResult r =
      estimate_coding(sums({100, 20, 10, 30}, {5, 2, 1, 14}, {4, 1, 1, 3}));
  const CodingEstimates& e = r.values;
  EXPECT_TRUE(na(e.ks_kimura_note));
  EXPECT_TRUE(e.ka_kimura_note.empty());
  EXPECT_EQ(e.as, 0);
  EXPECT_NEAR(e.bs, -0.5 * std::log(1 - 2 * static_cast<double>(0.1f)), 1e-15);
  EXPECT_GT(e.aa, 0);
  EXPECT_GT(e.ba, 0);
  // Step 18 with As = 0: U/(As + Bs) = Bs (L4 + L2V)/Bs = 40.
  EXPECT_TRUE(r.effective_sites_written);
  EXPECT_NEAR(e.ses, 40, 1e-12);
  // Handed on: Ks falls back to Jukes and Cantor with the 0.663 kept as it is.
  const CodingHandedOn h = handed_on_kimura(e);
  EXPECT_EQ(h.ks, e.ks_jc);
  EXPECT_EQ(h.ks_method, 1);
  EXPECT_EQ(h.as, 0.333);
  EXPECT_EQ(h.bs, 0.663);
  EXPECT_EQ(h.ka, e.ka_kimura);
  EXPECT_EQ(h.ka_method, 2);
  EXPECT_EQ(h.aa, e.aa);
  EXPECT_EQ(h.ba, e.ba);
}

TEST(CodingEstimators, NonsynonymousFailKeepsEffectiveSitesOfPairBefore) {
  const CodingResult good = estimate_coding(sums({100, 20, 10, 30}, {5, 2, 1, 3}, {4, 1, 1, 2}));
  // Q0 = 50/100 = 0.5: the nonsynonymous Kimura steps fail.
  const CodingResult failed =
      estimate_coding(sums({100, 20, 10, 30}, {5, 2, 1, 3}, {50, 1, 1, 2}));
  EXPECT_FALSE(failed.effective_sites_written);
  EXPECT_TRUE(na(failed.values.ka_kimura_note));
  EXPECT_TRUE(failed.values.ks_kimura_note.empty());
  EXPECT_EQ(failed.values.ks_kimura, failed.values.as + failed.values.bs);

  // In pair order: the failed pair shows the values of the pair before it.
  CodingCarry carry;
  const CodingEstimates first = apply_carry(carry, good);
  carry = carry_of(first);
  const CodingEstimates second = apply_carry(carry, failed);
  EXPECT_EQ(second.ses, first.ses);
  EXPECT_EQ(second.nes, first.nes);
  carry = carry_of(second);
  const CodingEstimates third = apply_carry(carry, failed);
  EXPECT_EQ(third.ses, first.ses);
  EXPECT_EQ(third.nes, first.nes);

  const CodingHandedOn h = handed_on_kimura(second);
  EXPECT_EQ(h.ka, second.ka_jc);
  EXPECT_EQ(h.ka_method, 1);
  EXPECT_EQ(h.aa, 0.333);
  EXPECT_EQ(h.ba, 0.666);
  EXPECT_EQ(h.ks_method, 2);
  EXPECT_EQ(h.bs, second.bs);

  const CodingHandedOn jc = handed_on_jukes_cantor(first);
  EXPECT_EQ(jc.ks, first.ks_jc);
  EXPECT_EQ(jc.ka, first.ka_jc);
  EXPECT_EQ(jc.ks_method + jc.ka_method, 2);
  EXPECT_EQ(jc.as, 0.333);
  EXPECT_EQ(jc.bs, 0.666);
  EXPECT_EQ(jc.aa, 0.333);
  EXPECT_EQ(jc.ba, 0.666);
}

TEST(CodingEstimators, EffectiveSitesFromTheTotal) {
  // No nonsynonymous change: Aa and Ba are 0, so N.E.S. = total - S.E.S.
  CodingEstimates e = estimate_coding(sums({100, 20, 10, 30}, {0, 2, 0, 3}, {0, 0, 1, 2})).values;
  EXPECT_EQ(e.aa + e.ba, 0);
  EXPECT_GT(e.ses, 0);
  EXPECT_EQ(e.nes, static_cast<float>(160 - e.ses));
  // No synonymous change: As and Bs are 0, so S.E.S. = total - N.E.S.
  e = estimate_coding(sums({100, 20, 10, 30}, {5, 0, 1, 0}, {4, 0, 0, 0})).values;
  EXPECT_EQ(e.as + e.bs, 0);
  EXPECT_GT(e.nes, 0);
  EXPECT_EQ(e.ses, 160 - static_cast<double>(e.nes));
}

TEST(CodingEstimators, EmptyClassesAreNotApplicable) {
  struct Case {
    const char* what;
    CodingClassSums s;
    bool ks_jc, ka_jc, ks_kimura, ka_kimura;  // expected not applicable
  };
  const Case cases[] = {
      {"only 0-fold", sums({30, 0, 0, 0}, {3, 0, 0, 0}, {2, 0, 0, 0}), true, false, true, false},
      {"no 0-fold, no 2S", sums({0, 0, 10, 20}, {0, 0, 1, 2}, {0, 0, 1, 1}), false, true, true,
       true},
      {"no 0-fold, no 2V", sums({0, 10, 0, 20}, {0, 1, 0, 2}, {0, 1, 0, 1}), false, true, false,
       true},
      {"nothing", sums({0, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}), true, true, true, true},
  };
  for (const Case& c : cases) {
    const CodingResult r = estimate_coding(c.s);
    const CodingEstimates& e = r.values;
    EXPECT_EQ(na(e.ks_jc_note), c.ks_jc) << c.what;
    EXPECT_EQ(na(e.ka_jc_note), c.ka_jc) << c.what;
    EXPECT_EQ(na(e.ks_kimura_note), c.ks_kimura) << c.what;
    EXPECT_EQ(na(e.ka_kimura_note), c.ka_kimura) << c.what;
    EXPECT_EQ(r.effective_sites_written, !c.ka_kimura) << c.what;
    for (double v : {e.ks_jc, e.ka_jc, e.ks_kimura, e.ka_kimura, e.as, e.bs, e.aa, e.ba, e.ses,
                     static_cast<double>(e.nes)})
      EXPECT_TRUE(std::isfinite(v)) << c.what;
  }
}

TEST(CodingEstimators, NoNaNOrInfinityForAnyValidSums) {
  std::mt19937 rng(20240607);
  std::uniform_real_distribution<float> unit(0, 1);
  CodingCarry carry;
  for (int trial = 0; trial < 200000; ++trial) {
    CodingClassSums s;
    for (int c = 0; c < 4; ++c) {
      const float u = unit(rng);
      const float sites = u < 0.25f ? 0 : u < 0.3f ? 1e-6f : unit(rng) * 300;
      // Differences up to every site, with the limits themselves drawn often.
      const float share = unit(rng) < 0.1f ? 1 : unit(rng);
      const float ts = sites * share * (unit(rng) < 0.1f ? 1 : unit(rng));
      s.sites[c] = sites;
      s.obs_ts[c] = ts;
      s.obs_tv[c] = unit(rng) < 0.1f ? sites * share - ts : (sites * share - ts) * unit(rng);
      if (s.obs_tv[c] < 0) s.obs_tv[c] = 0;
    }
    const CodingEstimates e = apply_carry(carry, estimate_coding(s));
    carry = carry_of(e);
    for (double v : {e.ks_jc, e.ka_jc, e.ks_kimura, e.ka_kimura, e.as, e.bs, e.aa, e.ba, e.ses,
                     static_cast<double>(e.nes)})
      ASSERT_TRUE(std::isfinite(v)) << "trial " << trial;
    ASSERT_GE(e.ks_jc, 0);
    ASSERT_GE(e.ka_jc, 0);
    ASSERT_GE(e.ks_kimura, 0);
    ASSERT_GE(e.ka_kimura, 0);
  }
}

}  // namespace
}  // namespace varnoth::divergence
