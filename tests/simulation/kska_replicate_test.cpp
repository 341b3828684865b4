#include "simulation/kska_replicate.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "divergence/codon_changes.h"

namespace {

using namespace varnoth;
using namespace varnoth::simulation;
namespace dv = varnoth::divergence;

std::vector<dv::Codon> seq(std::initializer_list<const char*> texts) {
  std::vector<dv::Codon> out;
  for (const char* t : texts)
    out.push_back(static_cast<dv::Codon>(dv::encode_codon(std::string_view(t))));
  return out;
}

int codon(const char* text) { return dv::encode_codon(std::string_view(text)); }

TEST(ReplicateSiteCounts, DiffersFromUniversalInTheNamedCellsOnly) {
  const dv::SiteCountTable& u = dv::code_tables(GeneticCode::Universal).counts;
  const dv::SiteCountTable& r = replicate_site_counts();
  for (int c = 0; c < dv::kCodons; ++c) {
    EXPECT_EQ(r.has_row[c], u.has_row[c]) << c;
    EXPECT_EQ(r.clears_stop_mark[c], u.clears_stop_mark[c]) << c;
    for (int g = 0; g < dv::kGroupCount; ++g)
      for (int k = 0; k < dv::kClassCount; ++k) {
        float want = u.rows[c][g][k];
        if (g == dv::kGroupA && k == dv::kClass0Fold) want = 0;
        if (g == dv::kGroupC && k == dv::kClass2SFold && c == codon("AGC")) want = 0;
        if (g == dv::kGroupC && k == dv::kClass2SFold && c == codon("AGT"))
          want = u.rows[codon("AGC")][dv::kGroupC][dv::kClass2SFold];
        EXPECT_EQ(r.rows[c][g][k], want) << c << " group " << g << " class " << k;
      }
  }
  // The moved cell is a real one: "AGC" ends in a 2S-fold C.
  EXPECT_EQ(u.rows[codon("AGC")][dv::kGroupC][dv::kClass2SFold], 1.0f);
  EXPECT_EQ(r.rows[codon("AGT")][dv::kGroupC][dv::kClass2SFold], 1.0f);
  EXPECT_EQ(r.rows[codon("AGT")][dv::kGroupT][dv::kClass2SFold], 1.0f);
}

TEST(Replicate, IdenticalPairHasNoChangesAndKeepsItsSites) {
  const auto a = seq({"AGC", "AAA", "GGA", "CGG"});
  ReplicateWorkspace ws;
  const ReplicateEstimate r = estimate_replicate(a, a, 0.5f, {}, ws);
  EXPECT_EQ(r.share_total, 0);
  EXPECT_FALSE(r.stop_codon);
  for (int k = 0; k < 4; ++k) {
    EXPECT_EQ(r.classes.ObsTS[k], 0);
    EXPECT_EQ(r.classes.ObsTV[k], 0);
  }
  // AGC 2/1/0/0, AAA 2/1/0/0, GGA 2/0/0/1, CGG 1.6666/0/0.3333/1.
  EXPECT_NEAR(r.classes.Sites[0], 7.6666, 1e-4);
  EXPECT_NEAR(r.classes.Sites[1], 2, 1e-6);
  EXPECT_NEAR(r.classes.Sites[2], 0.3333, 1e-4);
  EXPECT_NEAR(r.classes.Sites[3], 2, 1e-6);
  // The replicate table's letter split: no 0-fold A, and the C of AGC moved away.
  EXPECT_EQ(r.classes.SitesA[0], 0);
  EXPECT_EQ(r.classes.SitesC[1], 0);
  EXPECT_EQ(r.ks, 0);
  EXPECT_EQ(r.ka, 0);
}

TEST(Replicate, UniversalCodeWhateverTheMainWindowHolds) {
  // ATA -> ATG is nonsynonymous in the Universal code (ILE, MET) and would be
  // synonymous under either mitochondrial code (MET, MET).
  const auto a = seq({"ATA", "GGG"}), b = seq({"ATG", "GGG"});
  ReplicateWorkspace ws;
  const ReplicateEstimate r = estimate_replicate(a, b, 0.5f, {}, ws);
  const auto syn = ws.synonymous_row(2), nonsyn = ws.nonsynonymous_row(2);
  EXPECT_EQ(syn[2], 0.0f);
  EXPECT_EQ(nonsyn[2], 1.0f);
  EXPECT_EQ(r.share_total, 1);
  EXPECT_GT(r.ka, 0);
  EXPECT_EQ(r.ks, 0);
}

TEST(Replicate, StopCodonWritesTheHiddenWarningAndGoesOn) {
  const auto a = seq({"GGA", "TGA", "TTT", "GCA"});
  const auto b = seq({"GGG", "TGA", "TTC", "GCA"});
  ReplicateWorkspace ws;
  const ReplicateEstimate r = estimate_replicate(a, b, 0.5f, {}, ws);
  EXPECT_TRUE(r.stop_codon);
  EXPECT_EQ(ws.hidden_surface, "\r\n" + std::string(kHiddenStopWarning));
  EXPECT_EQ(ws.hidden_surface, "\r\n Warning !, There are Stop codons in the Coding Region !");
  // The placing went on past the stop: both synonymous transitions are placed.
  EXPECT_NEAR(r.classes.ObsTS[1] + r.classes.ObsTS[3], 2, 1e-6);

  ReplicateWorkspace clean;
  const ReplicateEstimate no_stop = estimate_replicate(b, b, 0.5f, {}, clean);
  EXPECT_TRUE(no_stop.stop_codon);  // TGA in both is still a stop codon
  const auto c = seq({"GGA", "TTT"});
  ReplicateWorkspace none;
  EXPECT_FALSE(estimate_replicate(c, c, 0.5f, {}, none).stop_codon);
  EXPECT_TRUE(none.hidden_surface.empty());
}

TEST(Replicate, SharesSummedOverBothRows) {
  // Code 101 between TTT and GTA: position 1 nonsynonymous, position 3 half and half.
  const auto a = seq({"TTT", "GGA"}), b = seq({"GTA", "GGC"});
  ReplicateWorkspace ws;
  EXPECT_NEAR(estimate_replicate(a, b, 0.5f, {}, ws).share_total, 3, 1e-6);
}

TEST(Replicate, MethodOfEachClassAndTheNotApplicableValue) {
  // Every 4-fold site differs by a transversion: Ks cannot be formed either way.
  const auto a = seq({"GCA", "GGA", "CCA", "ACA"});
  const auto b = seq({"GCC", "GGT", "CCC", "ACT"});
  ReplicateWorkspace ws;
  const ReplicateEstimate by_jc = estimate_replicate(a, b, 0.5f, {1, 1}, ws);
  EXPECT_EQ(by_jc.ks, kNotApplicableEstimate);
  EXPECT_EQ(by_jc.ka, 0);
  // Kimura's Ka reads the 4-fold transversions too (QV = 1): not applicable.
  const ReplicateEstimate by_kimura = estimate_replicate(a, b, 0.5f, {2, 2}, ws);
  EXPECT_EQ(by_kimura.ks, kNotApplicableEstimate);
  EXPECT_EQ(by_kimura.ka, kNotApplicableEstimate);
  // A pair where the two methods differ: each class takes its own.
  const auto c = seq({"GCA", "GGA", "CCA", "ACA", "AAA", "GAT"});
  const auto d = seq({"GCG", "GGT", "CCA", "ACA", "AGA", "GAT"});
  const ReplicateEstimate jc = estimate_replicate(c, d, 0.5f, {1, 1}, ws);
  const ReplicateEstimate kimura = estimate_replicate(c, d, 0.5f, {2, 2}, ws);
  const ReplicateEstimate mixed = estimate_replicate(c, d, 0.5f, {1, 2}, ws);
  EXPECT_EQ(jc.ks, jc.estimates.ks_jc);
  EXPECT_EQ(jc.ka, jc.estimates.ka_jc);
  EXPECT_EQ(kimura.ks, kimura.estimates.ks_kimura);
  EXPECT_EQ(kimura.ka, kimura.estimates.ka_kimura);
  EXPECT_NE(jc.ks, kimura.ks);
  EXPECT_EQ(mixed.ks, jc.ks);
  EXPECT_EQ(mixed.ka, kimura.ka);
}

TEST(Replicate, DecisionWhileSteering) {
  struct Case {
    bool want_low, want_high;
    double ks;
    bool kept, got_low, got_high;
    double sum_added;
  };
  const double target = 0.2;
  const Case cases[] = {
      {false, false, 0.3, true, false, false, 0.3},
      {false, false, 9, true, false, false, 0},  // kept, not summed
      {false, true, 9, false, false, false, 0},  // never while steering
      {true, false, 9, false, false, false, 0},
      {false, true, 0.1, false, false, false, 0},
      {false, true, 0.3, true, false, true, 0.3},
      {false, true, 0.2, true, false, true, 0.2},  // on the target: both ways
      {true, false, 0.3, false, false, false, 0},
      {true, false, 0.1, true, true, false, 0.1},
      {true, false, 0.2, true, true, false, 0.2},
  };
  for (const Case& c : cases) {
    BalanceState b;
    b.RunKsSum = 1;
    b.RunKsCount = 4;
    b.WantLowKs = c.want_low;
    b.WantHighKs = c.want_high;
    b.GotLowKs = b.GotHighKs = true;  // cleared first
    EXPECT_EQ(decide_replicate(c.ks, target, b), c.kept) << c.ks;
    EXPECT_EQ(b.GotLowKs, c.got_low) << c.ks;
    EXPECT_EQ(b.GotHighKs, c.got_high) << c.ks;
    EXPECT_DOUBLE_EQ(b.RunKsSum, 1 + c.sum_added) << c.ks;
    EXPECT_EQ(b.RunKsCount, c.sum_added > 0 ? 5 : 4) << c.ks;
  }
}

TEST(ReplicateData, FixedWidthFields) {
  struct Case {
    double value;
    const char* field;
  };
  const Case cases[] = {{0.12345678, "  0.1235"}, {9, "  9.0000"},      {0, "  0.0000"},
                        {-0.0, "  0.0000"},       {123.45, "123.4500"}, {4.99996, "  5.0000"}};
  for (const Case& c : cases) {
    std::string out;
    append_data_field(out, c.value);
    EXPECT_EQ(out, c.field);
  }
  EXPECT_EQ(data_field_value(0.123456), 0.1235);
  const ReplicateLine line = data_line(0.04444, 9);
  EXPECT_EQ(line.ks, 0.0444);
  EXPECT_EQ(line.ka, 9);
}

}  // namespace
