#include "divergence/genetic_code.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace varnoth;
using namespace varnoth::divergence;

int C(const char* t) { return encode_codon(std::string_view(t)); }
std::string text(int c) {
  const CodonCell cell = decode_codon(c);
  return std::string(cell.data(), 3);
}

TEST(Codons, EncodingRoundTripAndRefusals) {
  for (int c = 0; c < kCodons; ++c) EXPECT_EQ(C(text(c).c_str()), c);
  EXPECT_EQ(C("AAA"), 0);
  EXPECT_EQ(C("TTT"), 63);
  EXPECT_EQ(C("CGT"), 16 * kC + 4 * kG + kT);
  for (const char* bad : {"aaa", "ANA", "AC", "ACGT", "A-G", "U.."}) EXPECT_EQ(C(bad), -1) << bad;
  EXPECT_EQ(encode_codon(CodonCell{'G', 'C', 'n'}), -1);
}

TEST(Translation, MitochondrialCodesDifferInFourCodons) {
  struct Row { const char* codon; const char* u; const char* v; const char* d; };
  const Row rows[] = {{"AGA", "ARG", "STOP", "SER"},
                      {"AGG", "ARG", "STOP", "SER"},
                      {"ATA", "ILE", "MET", "MET"},
                      {"TGA", "STOP", "TRP", "TRP"}};
  for (const Row& r : rows) {
    EXPECT_EQ(amino_acid_text(GeneticCode::Universal, C(r.codon)), r.u) << r.codon;
    EXPECT_EQ(amino_acid_text(GeneticCode::Vermito, C(r.codon)), r.v) << r.codon;
    EXPECT_EQ(amino_acid_text(GeneticCode::Dromito, C(r.codon)), r.d) << r.codon;
  }
  int same = 0;
  for (int c = 0; c < kCodons; ++c) {
    const auto u = amino_acid_text(GeneticCode::Universal, c);
    if (u == amino_acid_text(GeneticCode::Vermito, c) &&
        u == amino_acid_text(GeneticCode::Dromito, c))
      ++same;
  }
  EXPECT_EQ(same, 60);
  EXPECT_EQ(amino_acid_text(GeneticCode::Universal, C("TTT")), "PHE");
  EXPECT_EQ(amino_acid_text(GeneticCode::Universal, C("TAG")), "STOP");
  EXPECT_EQ(amino_acid_text(GeneticCode::Universal, C("GGG")), "GLY");
}

TEST(StopList, RowsAsHeldAndMembershipMatchesTranslation) {
  using L = std::array<std::string_view, 4>;
  EXPECT_EQ(stop_list_texts(GeneticCode::Universal), (L{"TAA", "TAG", "TGA", "TGA"}));
  EXPECT_EQ(stop_list_texts(GeneticCode::Vermito), (L{"TAA", "TAG", "AGA", "AGG"}));
  EXPECT_EQ(stop_list_texts(GeneticCode::Dromito), (L{"TAA", "TAG", "TAA", "TAA"}));
  for (GeneticCode code : {GeneticCode::Universal, GeneticCode::Vermito, GeneticCode::Dromito}) {
    const CodeTables& t = code_tables(code);
    for (int c = 0; c < kCodons; ++c) {
      EXPECT_EQ(t.in_stop_list[c], amino_acid_text(code, c) == "STOP") << text(c);
      EXPECT_EQ(t.translates_to_stop[c], amino_acid_text(code, c) == "STOP") << text(c);
    }
  }
  EXPECT_FALSE(code_tables(GeneticCode::Dromito).in_stop_list[C("TGA")]);
}

using Fr = std::array<float, 4>;

// Class of a position derived from the amino acids alone: the transition and
// the two transversions at the position, each synonymous or not.
// Returns -1 where one transversion is synonymous and the other is not.
int derived_class(int codon, int p) {
  const auto aa = amino_acid_text(GeneticCode::Universal, codon);
  const int shift = 2 * (2 - p);
  const int letter = nucleotide_at(codon, p);
  bool ts_syn = false;
  int tv_syn = 0;
  for (int other = 0; other < 4; ++other) {
    if (other == letter) continue;
    const int changed = (codon & ~(3 << shift)) | (other << shift);
    const bool syn = amino_acid_text(GeneticCode::Universal, changed) == aa;
    if ((other ^ letter) == 2) ts_syn = syn;
    else tv_syn += syn;
  }
  if (tv_syn == 1) return -1;
  if (ts_syn) return tv_syn == 2 ? kClass4Fold : kClass2SFold;
  return tv_syn == 2 ? kClass2VFold : kClass0Fold;
}

using Dec = std::array<double, 4>;  // a class mixture in decimal

Fr to_float(const Dec& d) {
  return {static_cast<float>(d[0]), static_cast<float>(d[1]), static_cast<float>(d[2]),
          static_cast<float>(d[3])};
}

TEST(UniversalTables, AgreeWithClassesDerivedFromTranslationSaveTheListedRows) {
  // Positions (1..3) that the held tables set apart from the derivation.
  const std::map<std::pair<std::string, int>, Dec> fraction_exceptions = {
      {{"CGA", 1}, {0.5, 0, 0.5, 0}},
      {{"CGG", 1}, {0.6666, 0, 0.3333, 0}},
      {{"AGA", 1}, {0, 0, 1, 0}},
      {{"AGG", 1}, {0.6666, 0, 0.3333, 0}},
      {{"ATT", 3}, {0.3333, 0.3333, 0.3333, 0}},
      {{"ATC", 3}, {0.3333, 0.3333, 0.3333, 0}},
  };
  // Site counts take position 3 of TAT and TAC as 4-fold (fractions: 2S-fold).
  const std::map<std::pair<std::string, int>, Dec> count_exceptions = {
      {{"TAT", 3}, {0, 0, 0, 1}}, {{"TAC", 3}, {0, 0, 0, 1}}};

  const CodeTables& t = code_tables(GeneticCode::Universal);
  int fraction_exceptions_seen = 0;
  for (int c = 0; c < kCodons; ++c) {
    const std::string name = text(c);
    if (amino_acid_text(GeneticCode::Universal, c) == "STOP") {
      EXPECT_FALSE(t.counts.has_row[c]) << name;
      EXPECT_EQ(t.fractions[c][0], (Fr{0, 0, 0, 0})) << name;
      EXPECT_EQ(t.fractions[c][1], (Fr{1, 0, 0, 0})) << name;
      EXPECT_EQ(t.fractions[c][2], (Fr{0, 0, 0, 0})) << name;
      continue;
    }
    ASSERT_TRUE(t.counts.has_row[c]) << name;
    double expected_counts[kGroupCount][kClassCount] = {};
    for (int p = 0; p < 3; ++p) {
      const int cls = derived_class(c, p);
      Dec expected{0, 0, 0, 0};
      if (cls >= 0) expected[cls] = 1;
      if (auto it = fraction_exceptions.find({name, p + 1}); it != fraction_exceptions.end()) {
        EXPECT_NE(expected, it->second) << name << " " << p + 1 << " needs no exception";
        expected = it->second;
        ++fraction_exceptions_seen;
      } else {
        EXPECT_GE(cls, 0) << name << " position " << p + 1 << " is mixed but not listed";
      }
      EXPECT_EQ(t.fractions[c][p], to_float(expected)) << name << " position " << p + 1;
      if (auto it = count_exceptions.find({name, p + 1}); it != count_exceptions.end())
        expected = it->second;
      const int letter_group = 1 + static_cast<int>(std::string("AGCT").find(name[p]));
      for (int k = 0; k < kClassCount; ++k) {
        expected_counts[kGroupTotal][k] += expected[k];
        expected_counts[letter_group][k] += expected[k];
      }
    }
    // The held numbers are the decimal sums (2.3333, 1.6666) as floats.
    for (int g = 0; g < kGroupCount; ++g)
      for (int k = 0; k < kClassCount; ++k)
        EXPECT_EQ(t.counts.rows[c][g][k], static_cast<float>(expected_counts[g][k]))
            << name << " group " << g << " class " << k;
  }
  EXPECT_EQ(fraction_exceptions_seen, 6);
}

TEST(UniversalTables, HeldTotalsOfTheMixedRows) {
  const CodeTables& t = code_tables(GeneticCode::Universal);
  const std::pair<const char*, Fr> rows[] = {
      {"CGA", {1.5f, 0, 0.5f, 1}},        {"CGG", {1.6666f, 0, 0.3333f, 1}},
      {"ATT", {2.3333f, 0.3333f, 0.3333f, 0}}, {"AGA", {1, 1, 1, 0}},
      {"AGG", {1.6666f, 1, 0.3333f, 0}},  {"TAT", {2, 0, 0, 1}},
      {"TTA", {1, 2, 0, 0}},              {"CTG", {1, 1, 0, 1}},
      {"TGG", {3, 0, 0, 0}},
  };
  for (const auto& [codon, totals] : rows)
    EXPECT_EQ(t.counts.rows[C(codon)][kGroupTotal], totals) << codon;
  // The split by letter: TGT gives T 0-fold (1) and 2S-fold (3), G 0-fold (2).
  const auto& tgt = t.counts.rows[C("TGT")];
  EXPECT_EQ(tgt[kGroupT], (Fr{1, 1, 0, 0}));
  EXPECT_EQ(tgt[kGroupG], (Fr{1, 0, 0, 0}));
  EXPECT_EQ(tgt[kGroupA], (Fr{0, 0, 0, 0}));
  EXPECT_EQ(t.counts.rows[C("TAT")][kGroupT], (Fr{1, 0, 0, 1}));
  EXPECT_EQ(t.counts.rows[C("TAC")][kGroupC], (Fr{0, 0, 0, 1}));
  EXPECT_EQ(t.fractions[C("TAT")][2], (Fr{0, 1, 0, 0}));
  // 0.3333 and 0.6666 are held as written: a site sums to 0.9999.
  EXPECT_NEAR(double(t.fractions[C("CGG")][0][0]) + t.fractions[C("CGG")][0][2], 0.9999, 1e-6);
}

struct MitoRowExpect {
  const char* codon;
  Fr pos1, pos3, totals;
};

void check_mito(GeneticCode code, const std::vector<MitoRowExpect>& rows) {
  const CodeTables& u = code_tables(GeneticCode::Universal);
  const CodeTables& m = code_tables(code);
  std::map<int, bool> listed;
  for (const MitoRowExpect& r : rows) {
    const int c = C(r.codon);
    listed[c] = true;
    EXPECT_EQ(m.fractions[c][0], r.pos1) << r.codon;
    EXPECT_EQ(m.fractions[c][1], (Fr{1, 0, 0, 0})) << r.codon;
    EXPECT_EQ(m.fractions[c][2], r.pos3) << r.codon;
    ASSERT_TRUE(m.counts.has_row[c]) << r.codon;
    EXPECT_EQ(m.counts.rows[c][kGroupTotal], r.totals) << r.codon;
    // Positions 1 and 2 are 0-fold in the replaced rows; position 3 holds the
    // one degenerate site.
    Fr by_letter[5] = {};
    for (int p = 0; p < 3; ++p) {
      const int g = 1 + static_cast<int>(std::string("AGCT").find(r.codon[p]));
      if (p < 2) by_letter[g][0] += 1;
      else for (int k = 1; k < 4; ++k) by_letter[g][k] += r.totals[k];
    }
    for (int g = 1; g < 5; ++g) EXPECT_EQ(m.counts.rows[c][g], by_letter[g]) << r.codon << g;
  }
  for (int c = 0; c < kCodons; ++c) {
    if (listed.count(c) || text(c) == "AGA" || text(c) == "AGG") continue;
    EXPECT_EQ(m.fractions[c], u.fractions[c]) << text(c);
    EXPECT_EQ(m.counts.has_row[c], u.counts.has_row[c]) << text(c);
    EXPECT_EQ(m.counts.rows[c], u.counts.rows[c]) << text(c);
  }
}

TEST(MitochondrialTables, WrittenOverTheUniversalRowsWithoutClearing) {
  const Fr c0{1, 0, 0, 0}, c2S{0, 1, 0, 0}, c4{0, 0, 0, 1};
  const Fr S_V{0, 1, 1, 0}, O_S{1, 1, 0, 0}, S_4{0, 1, 0, 1};
  const Fr n2_1{2, 1, 0, 0}, n2_4{2, 0, 0, 1};
  std::vector<MitoRowExpect> rows = {
      {"TGA", c0, c2S, n2_1},
      {"ATA", c0, S_V, n2_1},
      {"TGG", c0, O_S, n2_1},
      {"ATG", c0, O_S, n2_1},
      {"CGA", {1, 0, 0.5f, 0}, c4, n2_4},
      {"CGG", {1, 0, 0.3333f, 0}, c4, n2_4},
      {"AGC", c0, S_4, n2_4},
      {"AGT", c0, S_4, n2_4},
  };
  check_mito(GeneticCode::Vermito, rows);
  rows.push_back({"AGA", {1, 0, 1, 0}, S_4, n2_4});
  rows.push_back({"AGG", {1, 0, 0.3333f, 0}, S_4, n2_4});
  check_mito(GeneticCode::Dromito, rows);

  const CodeTables& u = code_tables(GeneticCode::Universal);
  const CodeTables& v = code_tables(GeneticCode::Vermito);
  for (const char* stop : {"AGA", "AGG"}) {
    EXPECT_FALSE(v.counts.has_row[C(stop)]) << stop;
    EXPECT_EQ(v.fractions[C(stop)], u.fractions[C(stop)]) << stop;  // kept, never read
  }
  // Only the row of TGA clears a stop mark, and only under these codes.
  for (int c = 0; c < kCodons; ++c) {
    EXPECT_FALSE(u.counts.clears_stop_mark[c]);
    EXPECT_EQ(v.counts.clears_stop_mark[c], text(c) == "TGA");
    EXPECT_EQ(code_tables(GeneticCode::Dromito).counts.clears_stop_mark[c], text(c) == "TGA");
  }
}

}  // namespace
