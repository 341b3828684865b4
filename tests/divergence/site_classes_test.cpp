#include "divergence/site_classes.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "divergence/codon_changes.h"

namespace {

using namespace varnoth;
using namespace varnoth::divergence;

using V = ClassValues;

std::vector<Codon> seq(std::initializer_list<const char*> texts) {
  std::vector<Codon> out;
  for (const char* t : texts) out.push_back(static_cast<Codon>(encode_codon(std::string_view(t))));
  return out;
}

// The changes of the pair, then the classes.
SiteClassResult classify(const std::vector<Codon>& a, const std::vector<Codon>& b,
                         GeneticCode code = GeneticCode::Universal, float weight = 0.5f,
                         const SiteClassOptions& options = {}) {
  std::vector<float> syn(3 * a.size()), nonsyn(3 * a.size());
  const auto changes = account_codon_changes(a, b, code, weight, syn, nonsyn);
  EXPECT_EQ(changes.status, ChangeStatus::Complete);
  return account_site_classes(a, b, syn, nonsyn, code, options);
}

void expect_values(const V& got, const V& want, const char* what, double tolerance = 1e-6) {
  for (int k = 0; k < 4; ++k) EXPECT_NEAR(got[k], want[k], tolerance) << what << " class " << k;
}

TEST(SiteClasses, IdenticalSequencesGiveSitesAndNoChanges) {
  const auto s = seq({"TTT", "CGG", "ATT"});
  const SiteClassResult r = classify(s, s);
  EXPECT_FALSE(r.StopCodonFlag);
  // TTT 2/1/0/0 + CGG 1.6666/0/0.3333/1 + ATT 2.3333/0.3333/0.3333/0.
  expect_values(r.Sites, {5.9999f, 1.3333f, 0.6666f, 1}, "Sites");
  expect_values(r.SitesA, {1, 0, 0, 0}, "SitesA");
  expect_values(r.SitesG, {1, 0, 0, 1}, "SitesG");
  expect_values(r.SitesC, {0.6666f, 0, 0.3333f, 0}, "SitesC");
  expect_values(r.SitesT, {3.3333f, 1.3333f, 0.3333f, 0}, "SitesT");
  expect_values(r.ObsTS, {0, 0, 0, 0}, "ObsTS");
  expect_values(r.ObsTV, {0, 0, 0, 0}, "ObsTV");
}

TEST(SiteClasses, WorkedPlacings) {
  struct Case {
    const char* a;
    const char* b;
    V sites, ts, tv;
  };
  const Case cases[] = {
      // Transition at a 4-fold site.
      {"GGA", "GGG", {2, 0, 0, 1}, {0, 0, 0, 1}, {0, 0, 0, 0}},
      // Synonymous transversion: pass 1 by the seventh transversion row on
      // 0.3333 fractions, pass 2 by the first row on ATA's 2V-fold site.
      {"ATT", "ATA", {2.16665f, 0.16665f, 0.66665f, 0}, {0, 0, 0, 0}, {0, 0, 1, 0}},
      // TAT counts its third site as 4-fold but places the change as 2S-fold.
      {"TAT", "TAC", {2, 0, 0, 1}, {0, 1, 0, 0}, {0, 0, 0, 0}},
      // Nonsynonymous transition at CGG's mixed first site: pass 1 places
      // 0.6666 + 0.3333 of it, short by 0.0001, which the chain leaves.
      {"CGG", "TGG", {2.3333f, 0, 0.16665f, 0.5f}, {0.8333f, 0, 0.16665f, 0}, {0, 0, 0, 0}},
      // TTT/GAA: third site 2S-fold with S 0.2, N 0.8 as a transversion; the
      // table places N, the chain's fifth row puts S in TV4.
      {"TTT", "GAA", {2, 1, 0, 0}, {0, 0, 0, 0}, {2, 0.8f, 0, 0.2f}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.a) + "/" + c.b);
    const SiteClassResult r = classify(seq({c.a}), seq({c.b}));
    expect_values(r.Sites, c.sites, "Sites");
    expect_values(r.ObsTS, c.ts, "ObsTS");
    expect_values(r.ObsTV, c.tv, "ObsTV");
  }
  const SiteClassResult cgg = classify(seq({"CGG"}), seq({"TGG"}));
  EXPECT_NEAR(cgg.passes[0].credited - cgg.passes[0].placed, 0.0001, 1e-7);
  EXPECT_EQ(cgg.passes[1].credited, cgg.passes[1].placed);
}

// A share under 0.01 that the table leaves unplaced does not start the chain.
TEST(SiteClasses, SmallShortfallIsLeft) {
  // TTT/GTA at weight 0.001: third site S = 0.001, N = 0.999 (transversion).
  const auto a = seq({"TTT"});
  const auto b = seq({"GTA"});
  std::vector<float> syn(3), nonsyn(3);
  account_codon_changes(a, b, GeneticCode::Universal, 0.001f, syn, nonsyn);
  const double s = syn[2], n = nonsyn[2];
  ASSERT_NEAR(s, 0.001, 1e-6);
  const SiteClassResult r = account_site_classes(a, b, syn, nonsyn, GeneticCode::Universal);
  // Pass 1, TTT 2S-fold: TV2S + N, S left. Pass 2, GTA 4-fold: TV4 + S, then
  // chain row 1 puts N in TV0. Position 1 is 0-fold in both: TV0 + 1.
  expect_values(r.ObsTV, {float((2 + n) / 2), float(n / 2), 0, float(s / 2)}, "ObsTV");
  EXPECT_NEAR(r.passes[0].credited - r.passes[0].placed, s, 1e-9);

  // CTA/TCA at weight 0.001: first site S = 0.001, N = 0.999 (transition).
  // Pass 1, CTA 2S-fold: TS2S + S, chain row 6 puts N in TS0. Pass 2, TCA
  // 0-fold: TS0 + N and S stays out (row 4 would put it in TS4). Position 2:
  // TS0 + 1 in both passes.
  const auto c = seq({"CTA"});
  const auto d = seq({"TCA"});
  account_codon_changes(c, d, GeneticCode::Universal, 0.001f, syn, nonsyn);
  const double s1 = syn[0], n1 = nonsyn[0];
  ASSERT_NEAR(s1, 0.001, 1e-6);
  const SiteClassResult q = account_site_classes(c, d, syn, nonsyn, GeneticCode::Universal);
  expect_values(q.ObsTS, {float(1 + n1), float(s1 / 2), 0, 0}, "ObsTS");
  EXPECT_NEAR(q.passes[1].credited - q.passes[1].placed, s1, 1e-9);
}

// Under the mitochondrial codes a site with two fractions of 1 is placed by
// the table as it stands; an excess cannot be taken back, so the chain runs
// at every later position, and its rows 5 to 8 differ between the passes.
TEST(SiteClasses, DoubledFractionsAndThePassDifferenceOfTheChain) {
  // AGC/AGT: SER/SER transition on 2S 1 + 4-fold 1: S placed twice.
  // ATA/ATT: MET/ILE transversion, N = 1; ATA's third site is 2S 1 + 2V 1.
  const auto one = seq({"AGC", "ATA"});
  const auto two = seq({"AGT", "ATT"});
  const SiteClassResult r = classify(one, two, GeneticCode::Dromito);
  // Pass 1 (AGC, ATA): TS2S 1, TS4 1, TV2S 1, then row 7 (S = 0 allowed in
  // this pass) and row 20 both add N to TV0.
  // Pass 2 (AGT, ATT): TS2S 1, TS4 1, TV0 0.5, TV2S 0.5; no chain row holds.
  expect_values(r.ObsTS, {0, 1, 0, 1}, "ObsTS");
  expect_values(r.ObsTV, {1.25f, 0.75f, 0, 0}, "ObsTV");
  EXPECT_DOUBLE_EQ(r.passes[0].placed - r.passes[0].credited, 3);
  EXPECT_DOUBLE_EQ(r.passes[1].placed - r.passes[1].credited, 1);
  // Sequences swapped: ATA is read in the second pass, where row 7 needs S
  // non-zero; row 16 adds S (0) to TV0 and row 20 adds N once.
  const SiteClassResult s = classify(two, one, GeneticCode::Dromito);
  expect_values(s.ObsTS, {0, 1, 0, 1}, "ObsTS swapped");
  expect_values(s.ObsTV, {0.75f, 0.75f, 0, 0}, "ObsTV swapped");
}

TEST(SiteClasses, StopCodonsEndBeforePlacing) {
  struct Case {
    GeneticCode code;
    std::vector<Codon> a, b;
    long at;
  };
  const Case cases[] = {
      {GeneticCode::Universal, seq({"GGA", "TAA", "GGA"}), seq({"GGA", "TAA", "GGA"}), 2},
      {GeneticCode::Universal, seq({"GGA", "GGA"}), seq({"GGA", "TGA"}), 2},
      {GeneticCode::Vermito, seq({"AGA"}), seq({"AGA"}), 1},
      {GeneticCode::Dromito, seq({"TAG", "CCC"}), seq({"TAG", "CCC"}), 1},
  };
  for (const Case& c : cases) {
    std::vector<float> zero(3 * c.a.size(), 0.0f);
    const SiteClassResult r = account_site_classes(c.a, c.b, zero, zero, c.code);
    EXPECT_TRUE(r.StopCodonFlag);
    EXPECT_EQ(r.stop_codon_number, c.at);
  }
  std::vector<float> zero(3, 0.0f);
  EXPECT_FALSE(account_site_classes(seq({"TGA"}), seq({"TGA"}), zero, zero,
                                    GeneticCode::Vermito).StopCodonFlag);
}

// Deliberate: under the mitochondrial codes the row of TGA clears the mark of
// a stop met just before it, so (TAG, TGA) passes under Dromito and the stop
// codon's sites repeat the previous look-up; (TGA, TAG) is caught.
TEST(SiteClasses, TgaRowClearsTheStopMarkOfItsPair) {
  const auto a = seq({"GGA", "TAG"});
  const auto b = seq({"GGA", "TGA"});
  const SiteClassResult r = classify(a, b, GeneticCode::Dromito);
  EXPECT_FALSE(r.StopCodonFlag);
  // Sequence A: GGA + GGA (carried for TAG); B: GGA + TGA (2/1/0/0).
  expect_values(r.Sites, {4, 0.5f, 0, 1.5f}, "Sites");
  // Position 2: N 1, transition, 0-fold in both passes. Position 3: S 1,
  // transition; TAG has no fractions (chain row 25: TS4), TGA is 2S-fold.
  expect_values(r.ObsTS, {1, 0.5f, 0, 0.5f}, "ObsTS");
  expect_values(r.ObsTV, {0, 0, 0, 0}, "ObsTV");

  std::vector<float> zero(6, 0.0f);
  const SiteClassResult caught = account_site_classes(b, a, zero, zero, GeneticCode::Dromito);
  EXPECT_TRUE(caught.StopCodonFlag);
  EXPECT_EQ(caught.stop_codon_number, 2);
}

TEST(SiteClasses, OptionsForReplicates) {
  const auto a = seq({"GGA", "TAA", "TTT"});
  SiteClassOptions go_on;
  go_on.stop_ends_run = false;
  std::vector<float> zero(9, 0.0f);
  const SiteClassResult r = account_site_classes(a, a, zero, zero, GeneticCode::Universal, go_on);
  EXPECT_TRUE(r.StopCodonFlag);
  EXPECT_EQ(r.stop_codon_number, 2);
  // Both TAA repeat the row of GGA: 2 x GGA + TTT.
  expect_values(r.Sites, {6, 1, 0, 2}, "Sites");

  SiteCountTable variant = code_tables(GeneticCode::Universal).counts;
  variant.rows[encode_codon(std::string_view("TTT"))][kGroupTotal] = {9, 9, 9, 9};
  SiteClassOptions own_counts;
  own_counts.site_counts = &variant;
  const auto t = seq({"TTT"});
  const SiteClassResult v =
      account_site_classes(t, t, zero, zero, GeneticCode::Universal, own_counts);
  expect_values(v.Sites, {9, 9, 9, 9}, "Sites");
}

// Random pairs: finite results, sites split by letter add up to the sites,
// and under Universal, for pairs too short for the 0.9999 shortfalls to add
// up to 0.01, each pass places what it credits.
TEST(SiteClassesProperty, RandomPairs) {
  std::mt19937 rng(77);
  for (GeneticCode code : {GeneticCode::Universal, GeneticCode::Vermito, GeneticCode::Dromito}) {
    const CodeTables& t = code_tables(code);
    for (int trial = 0; trial < 3000; ++trial) {
      const std::size_t length = trial == 0 ? 100000 : 1 + rng() % 30;
      const float weight = std::array<float, 5>{0.0f, 0.25f, 0.5f, 0.9f, 1.0f}[rng() % 5];
      std::vector<Codon> a(length), b(length);
      std::vector<float> syn(3 * length), nonsyn(3 * length);
      for (std::size_t i = 0; i < length; ++i) {
        for (;;) {
          a[i] = Codon(rng() % 64);
          b[i] = rng() % 3 == 0 ? a[i] : Codon(rng() % 64);
          if (t.translates_to_stop[a[i]] || t.translates_to_stop[b[i]]) continue;
          if (account_codon_changes({&a[i], 1}, {&b[i], 1}, code, weight, syn, nonsyn).status ==
              ChangeStatus::Complete)
            break;
        }
      }
      ASSERT_EQ(account_codon_changes(a, b, code, weight, syn, nonsyn).status,
                ChangeStatus::Complete);
      const SiteClassResult r = account_site_classes(a, b, syn, nonsyn, code);
      ASSERT_FALSE(r.StopCodonFlag);
      for (int k = 0; k < 4; ++k) {
        for (float x : {r.Sites[k], r.SitesA[k], r.SitesG[k], r.SitesC[k], r.SitesT[k],
                        r.ObsTS[k], r.ObsTV[k]}) {
          ASSERT_TRUE(std::isfinite(x));
          ASSERT_GE(x, 0.0f);
        }
        ASSERT_NEAR(r.SitesA[k] + r.SitesG[k] + r.SitesC[k] + r.SitesT[k], r.Sites[k],
                    1e-6 * length + 1e-5);
      }
      if (code == GeneticCode::Universal && length <= 30) {
        for (const PlacingPass& pass : r.passes)
          ASSERT_LT(std::fabs(pass.credited - pass.placed), 0.01) << trial;
      }
    }
  }
}

// The run's walk over differing codons only, with the placings worked out
// once per code and weight, gives the same bits as the two accountings one
// after the other, and stops where the walk stops.
TEST(SiteClassesProperty, DifferingCodonWalkAgreesBitForBit) {
  std::mt19937 rng(2026);
  for (GeneticCode code : {GeneticCode::Universal, GeneticCode::Vermito, GeneticCode::Dromito}) {
    const CodeTables& t = code_tables(code);
    for (float weight : {0.0f, 0.5f, 0.9f, 1.0f}) {
      const PairPlacingTable table(code, weight);
      for (int trial = 0; trial < 400; ++trial) {
        // Now and then longer than the stretches the walk takes at a time.
        const std::size_t length = 1 + rng() % (trial % 8 == 0 ? 700 : 60);
        std::vector<Codon> a(length), b(length);
        for (std::size_t i = 0; i < length; ++i) {
          do a[i] = Codon(rng() % 64);
          while (t.translates_to_stop[a[i]]);
          // Mostly equal codons, as in real alignments; any codon otherwise,
          // so that stops and pairs without an open pathway occur.
          b[i] = rng() % 4 != 0 ? a[i] : Codon(rng() % 64);
        }
        std::vector<float> syn(3 * length), nonsyn(3 * length);
        const auto walk = account_codon_changes(a, b, code, weight, syn, nonsyn);
        const SequenceSites sites1 = sequence_sites(a, code), sites2 = sequence_sites(b, code);
        if (!sites1.every_codon_has_row || !sites2.every_codon_has_row) continue;
        ChangeAccountingResult fast_changes;
        const SiteClassResult fast = place_differing_codons(sites1, sites2, a, b, table,
                                                            fast_changes);
        ASSERT_EQ(fast_changes.status, walk.status) << trial;
        if (walk.status != ChangeStatus::Complete) {
          EXPECT_EQ(fast_changes.codon_number, walk.codon_number);
          EXPECT_EQ(fast_changes.codon1, walk.codon1);
          EXPECT_EQ(fast_changes.codon2, walk.codon2);
          continue;
        }
        const SiteClassResult slow = account_site_classes(a, b, syn, nonsyn, code);
        ASSERT_EQ(fast.StopCodonFlag, slow.StopCodonFlag);
        for (int k = 0; k < 4; ++k) {
          for (auto [x, y] : {std::pair{fast.Sites[k], slow.Sites[k]},
                              {fast.SitesA[k], slow.SitesA[k]}, {fast.SitesG[k], slow.SitesG[k]},
                              {fast.SitesC[k], slow.SitesC[k]}, {fast.SitesT[k], slow.SitesT[k]},
                              {fast.ObsTS[k], slow.ObsTS[k]}, {fast.ObsTV[k], slow.ObsTV[k]}})
            ASSERT_EQ(std::bit_cast<std::uint32_t>(x), std::bit_cast<std::uint32_t>(y))
                << "trial " << trial << " class " << k;
          for (int pass = 0; pass < 2; ++pass) {
            ASSERT_EQ(fast.passes[pass].ts[k], slow.passes[pass].ts[k]);
            ASSERT_EQ(fast.passes[pass].tv[k], slow.passes[pass].tv[k]);
          }
        }
        for (int pass = 0; pass < 2; ++pass) {
          ASSERT_EQ(fast.passes[pass].credited, slow.passes[pass].credited) << trial;
          ASSERT_EQ(fast.passes[pass].placed, slow.passes[pass].placed) << trial;
        }
      }
    }
  }
}

// Runs over many alignments share one table per code and weight, also when
// they ask for it from several threads at once; another weight or code gets
// its own, and the shared table places as a fresh one does.
TEST(SiteClasses, PlacingTablesAreSharedPerCodeAndWeight) {
  std::vector<std::shared_ptr<const PairPlacingTable>> got(4);
  std::vector<std::thread> threads;
  for (std::size_t k = 0; k < got.size(); ++k)
    threads.emplace_back([&got, k] { got[k] = shared_placing_table(GeneticCode::Vermito, 0.3f); });
  for (auto& t : threads) t.join();
  for (const auto& table : got) EXPECT_EQ(table.get(), got[0].get());
  EXPECT_NE(shared_placing_table(GeneticCode::Vermito, 0.4f).get(), got[0].get());
  EXPECT_NE(shared_placing_table(GeneticCode::Dromito, 0.3f).get(), got[0].get());
  EXPECT_EQ(shared_placing_table(GeneticCode::Vermito, 0.3f).get(), got[0].get());

  const PairPlacingTable fresh(GeneticCode::Vermito, 0.3f);
  const std::vector<Codon> a = {1, 2, 3, 40, 41, 42}, b = {1, 6, 19, 40, 57, 26};
  const SequenceSites sa = sequence_sites(a, GeneticCode::Vermito);
  const SequenceSites sb = sequence_sites(b, GeneticCode::Vermito);
  ChangeAccountingResult c1, c2;
  const SiteClassResult x = place_differing_codons(sa, sb, a, b, *got[0], c1);
  const SiteClassResult y = place_differing_codons(sa, sb, a, b, fresh, c2);
  ASSERT_EQ(c1.status, ChangeStatus::Complete);
  ASSERT_EQ(c2.status, ChangeStatus::Complete);
  EXPECT_GT(x.ObsTS[0] + x.ObsTV[0] + x.ObsTS[3] + x.ObsTV[3], 0);
  for (int k = 0; k < 4; ++k) {
    EXPECT_EQ(x.ObsTS[k], y.ObsTS[k]);
    EXPECT_EQ(x.ObsTV[k], y.ObsTV[k]);
  }
}

}  // namespace
