#include "divergence/codon_changes.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace varnoth;
using namespace varnoth::divergence;

constexpr GeneticCode kCodes[] = {GeneticCode::Universal, GeneticCode::Vermito,
                                  GeneticCode::Dromito};

std::vector<Codon> seq(std::initializer_list<const char*> texts) {
  std::vector<Codon> out;
  for (const char* t : texts) out.push_back(static_cast<Codon>(encode_codon(std::string_view(t))));
  return out;
}

struct Walked {
  ChangeAccountingResult result;
  std::vector<float> syn, nonsyn;
};

Walked run(const std::vector<Codon>& a, const std::vector<Codon>& b, float weight,
        GeneticCode code = GeneticCode::Universal) {
  Walked r;
  // Filled with garbage: the routine zeroes what it uses.
  r.syn.assign(3 * a.size(), 7.0f);
  r.nonsyn.assign(3 * a.size(), 7.0f);
  r.result = account_codon_changes(a, b, code, weight, r.syn, r.nonsyn);
  return r;
}

// The weighting of a position as worked by hand: s and n pathways of k open.
double weighted_syn(double s, double n, int k, float weight) {
  const double sw = 2.0 * weight, nw = 2.0 * (1.0 - weight);
  if (s * n == 0) return s / k;
  return (s + n) * (s * sw) / (s * sw + n * nw) / k;
}

TEST(CodonChanges, WorkedExamples) {
  struct Case {
    const char* a;
    const char* b;
    float weight;
    std::array<float, 3> syn, nonsyn;
  };
  const Case cases[] = {
      // Code 111; position 3: TAT->TAA is screened, k = 5, s = 1, n = 4.
      {"TTT", "GAA", 0.5f, {0, 0, 0.2f}, {1, 1, 0.8f}},
      {"TTT", "GAA", 0.9f, {0, 0, float(weighted_syn(1, 4, 5, 0.9f))},
       {1, 1, float(1 - weighted_syn(1, 4, 5, 0.9f))}},
      // Code 101: position 3 from TTT->TTA (PHE, LEU) and GTA->GTT (VAL, VAL).
      {"TTT", "GTA", 0.5f, {0, 0, 0.5f}, {1, 0, 0.5f}},
      {"TTT", "GTA", 0.9f, {0, 0, 0.9f}, {1, 0, 0.1f}},
      // Code 110: position 1 from CTA->TTA (LEU, LEU) and TCA->CCA (SER, PRO);
      // position 2 is nonsynonymous by definition.
      {"CTA", "TCA", 0.5f, {0.5f, 0, 0}, {0.5f, 1, 0}},
      // Code 11: position 3 from TCC->TCT (SER, SER) and TTT->TTC (PHE, PHE).
      {"TTT", "TCC", 0.9f, {0, 0, 1}, {0, 1, 0}},
      // Single changes ignore the weight.
      {"GGA", "GGC", 0.9f, {0, 0, 1}, {0, 0, 0}},
      {"GGA", "GGC", 0.0f, {0, 0, 1}, {0, 0, 0}},
      {"TTT", "TTA", 0.5f, {0, 0, 0}, {0, 0, 1}},
      {"AGA", "CGA", 0.1f, {1, 0, 0}, {0, 0, 0}},
  };
  for (const Case& c : cases) {
    const Walked r = run(seq({c.a}), seq({c.b}), c.weight);
    ASSERT_EQ(r.result.status, ChangeStatus::Complete) << c.a << c.b;
    for (int p = 0; p < 3; ++p) {
      EXPECT_NEAR(r.syn[p], c.syn[p], 1e-6) << c.a << "/" << c.b << " w " << c.weight << " p" << p + 1;
      EXPECT_NEAR(r.nonsyn[p], c.nonsyn[p], 1e-6) << c.a << "/" << c.b << " w " << c.weight << " p" << p + 1;
    }
  }
  // The figures of the worked example, to four digits.
  const Walked r = run(seq({"TTT"}), seq({"GAA"}), 0.9f);
  EXPECT_NEAR(r.syn[2], 0.6923, 5e-5);
  EXPECT_NEAR(r.nonsyn[2], 0.3077, 5e-5);
}

TEST(CodonChanges, VermitoTranslatesTgaAsTryptophan) {
  const Walked v = run(seq({"TGA"}), seq({"TGG"}), 0.5f, GeneticCode::Vermito);
  EXPECT_EQ(v.result.status, ChangeStatus::Complete);
  EXPECT_EQ(v.syn[2], 1.0f);
  const Walked u = run(seq({"TGA"}), seq({"TGG"}), 0.5f, GeneticCode::Universal);
  EXPECT_EQ(u.result.status, ChangeStatus::StopCodon);
  EXPECT_TRUE(u.result.StopCodonFlag);
}

TEST(CodonChanges, StopCodonsEndTheWalkWithItsPlace) {
  const Walked r = run(seq({"GGA", "TTT", "TAC", "GGG"}), seq({"GGA", "TTC", "TAA", "GGA"}), 0.5f);
  EXPECT_EQ(r.result.status, ChangeStatus::StopCodon);
  EXPECT_TRUE(r.result.StopCodonFlag);
  EXPECT_EQ(r.result.codon_number, 3);
  EXPECT_EQ(r.result.codon1, encode_codon(std::string_view("TAC")));
  EXPECT_EQ(r.result.codon2, encode_codon(std::string_view("TAA")));
  // Two equal stop codons are neither compared nor translated here.
  EXPECT_EQ(run(seq({"TAA", "GGA"}), seq({"TAA", "GGC"}), 0.5f).result.status,
            ChangeStatus::Complete);
}

TEST(CodonChanges, PairsWithNoOpenPathwayAreReportedNotDivided) {
  struct Case {
    GeneticCode code;
    const char* a;
    const char* b;
  };
  const Case cases[] = {
      {GeneticCode::Universal, "TAA", "TGG"}, {GeneticCode::Vermito, "AAA", "TGA"},
      {GeneticCode::Vermito, "TGA", "AAA"},   {GeneticCode::Vermito, "AAG", "TGA"},
      {GeneticCode::Vermito, "AAA", "TGG"},   {GeneticCode::Vermito, "AAG", "TGG"},
      {GeneticCode::Vermito, "TGG", "AAG"},
  };
  for (const Case& c : cases) {
    const Walked r = run(seq({"CCC", "GGG", c.a}), seq({"CCA", "GGG", c.b}), 0.5f, c.code);
    EXPECT_EQ(r.result.status, ChangeStatus::NoOpenPathway) << c.a << "/" << c.b;
    EXPECT_FALSE(r.result.StopCodonFlag);
    EXPECT_EQ(r.result.codon_number, 3);
    EXPECT_EQ(r.result.codon1, encode_codon(std::string_view(c.a)));
    EXPECT_EQ(r.result.codon2, encode_codon(std::string_view(c.b)));
    for (float v : r.syn) EXPECT_TRUE(std::isfinite(v));
    for (float v : r.nonsyn) EXPECT_TRUE(std::isfinite(v));
  }
  // The same sense codons under Dromito have an open pathway.
  EXPECT_EQ(run(seq({"AAA"}), seq({"TGA"}), 0.5f, GeneticCode::Dromito).result.status,
            ChangeStatus::Complete);
}

TEST(CodonChanges, GcContentOfThirdPositions) {
  // Thirds: A, C | C, T | G, G -> 4 of 6.
  const Walked r = run(seq({"GGA", "TTC", "AAG"}), seq({"GGC", "TTT", "AAG"}), 0.5f);
  EXPECT_FLOAT_EQ(r.result.PairGCContent, 4.0f / 6.0f);
  EXPECT_EQ(run(seq({"CCA"}), seq({"CCT"}), 0.5f).result.PairGCContent, 0.0f);
}

// Every pair of sense codons under every code and several weights: each
// differing position gets shares summing to 1, the others 0/0; the only
// failures are the pairs with no open pathway, all under Vermito.
TEST(CodonChangesProperty, AllSenseCodonPairs) {
  for (GeneticCode code : kCodes) {
    const CodeTables& t = code_tables(code);
    for (float weight : {0.0f, 0.25f, 0.5f, 0.9f, 1.0f}) {
      int no_pathway = 0;
      for (int a = 0; a < kCodons; ++a) {
        for (int b = 0; b < kCodons; ++b) {
          if (t.translates_to_stop[a] || t.translates_to_stop[b]) continue;
          const Walked r = run({Codon(a)}, {Codon(b)}, weight, code);
          ASSERT_NE(r.result.status, ChangeStatus::StopCodon);
          if (r.result.status == ChangeStatus::NoOpenPathway) {
            ++no_pathway;
            continue;
          }
          for (int p = 0; p < 3; ++p) {
            const bool differs = nucleotide_at(a, p) != nucleotide_at(b, p);
            ASSERT_TRUE(std::isfinite(r.syn[p]) && std::isfinite(r.nonsyn[p]));
            ASSERT_GE(r.syn[p], 0.0f);
            ASSERT_GE(r.nonsyn[p], 0.0f);
            ASSERT_NEAR(r.syn[p] + r.nonsyn[p], differs ? 1.0f : 0.0f, 2e-7)
                << a << " " << b << " p" << p;
          }
        }
      }
      EXPECT_EQ(no_pathway, code == GeneticCode::Vermito ? 8 : 0);
    }
  }
}

TEST(CodonChangesProperty, LongRandomSequences) {
  std::mt19937 rng(20240601);
  for (GeneticCode code : kCodes) {
    const CodeTables& t = code_tables(code);
    // Sense codons whose pair with the other is complete.
    auto usable = [&](int a, int b) {
      if (t.translates_to_stop[a] || t.translates_to_stop[b]) return false;
      std::vector<float> s(3), n(3);
      const Codon x = Codon(a), y = Codon(b);
      return account_codon_changes({&x, 1}, {&y, 1}, code, 0.5f, s, n).status ==
             ChangeStatus::Complete;
    };
    for (std::size_t length : {std::size_t{1}, std::size_t{17}, std::size_t{100000}}) {
      std::vector<Codon> a(length), b(length);
      long gc = 0;
      for (std::size_t i = 0; i < length; ++i) {
        do {
          a[i] = Codon(rng() % 64);
          b[i] = rng() % 4 == 0 ? a[i] : Codon(rng() % 64);
        } while (!usable(a[i], b[i]));
        gc += (a[i] % 4 == kC || a[i] % 4 == kG) + (b[i] % 4 == kC || b[i] % 4 == kG);
      }
      const float weight = std::uniform_real_distribution<float>(0, 1)(rng);
      const Walked r = run(a, b, weight, code);
      ASSERT_EQ(r.result.status, ChangeStatus::Complete);
      EXPECT_FLOAT_EQ(r.result.PairGCContent, float(double(gc) / (2.0 * length)));
      for (std::size_t i = 0; i < 3 * length; ++i) {
        const bool differs = nucleotide_at(a[i / 3], i % 3) != nucleotide_at(b[i / 3], i % 3);
        ASSERT_NEAR(r.syn[i] + r.nonsyn[i], differs ? 1.0f : 0.0f, 2e-7) << i;
      }
    }
  }
}

}  // namespace
