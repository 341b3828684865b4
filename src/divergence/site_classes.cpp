#include "divergence/site_classes.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace varnoth::divergence {
namespace {

// Working sums: transitions by class, then transversions by class.
constexpr int TS0 = 0, TS2S = 1, TS2V = 2, TS4 = 3, TV0 = 4, TV2S = 5, TV2V = 6, TV4 = 7;
using Sums = double[8];

inline double total(const Sums& w) {
  return w[TS0] + w[TS2S] + w[TS2V] + w[TS4] + w[TV0] + w[TV2S] + w[TV2V] + w[TV4];
}

// The placing rules: every row is tested in order and each row that holds is
// applied. Where a class leaves no home for S or N the amount stays unplaced.
void place_transition(Sums& w, const PositionFractions& f, double s, double n) {
  const double f1 = f[0], f2 = f[1], f3 = f[2], f4 = f[3];
  const bool z1 = f1 == 0, z2 = f2 == 0, z3 = f3 == 0, z4 = f4 == 0;
  if (z1 && z3) { w[TS2S] += f2 * s; w[TS4] += f4 * s; }
  if (z2 && z4) { w[TS0] += f1 * n; w[TS2V] += f3 * n; }
  if (!z1 && !z2 && z3 && z4) { w[TS0] += n; w[TS2S] += s; }
  if (!z1 && z2 && z3 && !z4) { w[TS0] += n; w[TS4] += s; }
  if (z1 && !z2 && !z3 && z4) { w[TS2S] += s; w[TS2V] += n; }
  if (z1 && z2 && !z3 && !z4) { w[TS2V] += n; w[TS4] += s; }
  if (!z1 && !z2 && !z3 && z4) { w[TS0] += 0.5 * n; w[TS2S] += s; w[TS2V] += 0.5 * n; }
  if (!z1 && !z2 && z3 && !z4) { w[TS0] += n; w[TS2S] += f2 * s; w[TS4] += f4 * s; }
  if (!z1 && z2 && !z3 && !z4) { w[TS0] += f1 * n; w[TS4] += s; w[TS2V] += f3 * n; }
  if (z1 && !z2 && !z3 && !z4) { w[TS2V] += n; w[TS2S] += f2 * s; w[TS4] += f4 * s; }
}

void place_transversion(Sums& w, const PositionFractions& f, double s, double n) {
  const double f1 = f[0], f2 = f[1], f3 = f[2], f4 = f[3];
  const bool z1 = f1 == 0, z2 = f2 == 0, z3 = f3 == 0, z4 = f4 == 0;
  if (z1 && z2) { w[TV2V] += f3 * s; w[TV4] += f4 * s; }
  if (z3 && z4) { w[TV0] += f1 * n; w[TV2S] += f2 * n; }
  if (!z1 && z2 && !z3 && z4) { w[TV0] += n; w[TV2V] += s; }
  if (!z1 && z2 && z3 && !z4) { w[TV0] += n; w[TV4] += s; }
  if (z1 && !z2 && !z3 && z4) { w[TV2S] += n; w[TV2V] += s; }
  if (z1 && !z2 && z3 && !z4) { w[TV2S] += n; w[TV4] += s; }
  if (!z1 && !z2 && !z3 && z4) { w[TV0] += 0.5 * n; w[TV2S] += 0.5 * n; w[TV2V] += s; }
  if (!z1 && !z2 && z3 && !z4) { w[TV0] += f1 * n; w[TV2S] += f2 * n; w[TV4] += s; }
  if (!z1 && z2 && !z3 && !z4) { w[TV0] += n; w[TV2V] += f3 * s; w[TV4] += f4 * s; }
  if (z1 && !z2 && !z3 && !z4) { w[TV2S] += n; w[TV2V] += f3 * s; w[TV4] += f4 * s; }
}

// The corrective chain: a fixed list of rows, each acting only while Credited
// and Placed differ, with the 0.01 test after each group.
enum Cond : std::uint8_t {
  Any,
  NonZero,
  IsOne,
  NotOne,
  Zero,
  NonZeroInSecondPass,  // deliberate: "at or above 0" (always true) in the first pass
};

struct ChainRow {
  bool transition;
  Cond s, n;
  Cond f1, f2, f3, f4;
  int target;
  bool adds_s;  // adds S, else N
};

constexpr bool TS = true, TV = false;
constexpr Cond Nz = NonZero, Ge0 = NonZeroInSecondPass, One = IsOne, NOne = NotOne;

constexpr ChainRow kChain[28] = {
    // group 1
    {TV, Nz, Nz, Any, Any, Any, One, TV0, false},
    {TS, Nz, Nz, Any, Any, Any, One, TS0, false},
    {TV, Nz, Nz, One, Any, Any, Any, TV4, true},
    {TS, Nz, Nz, One, Any, Any, Any, TS4, true},
    // group 2
    {TV, Nz, Ge0, Any, One, Any, Any, TV4, true},
    {TS, Ge0, Nz, Any, One, Any, Any, TS0, false},
    // group 3
    {TV, Ge0, Nz, Any, Any, One, Any, TV0, false},
    {TS, Nz, Ge0, Any, Any, One, Any, TS4, true},
    // group 4
    {TV, NOne, Any, Any, Any, Any, One, TV0, false},
    {TS, NOne, Any, Any, Any, Any, One, TS0, false},
    {TV, Any, NOne, One, Any, Any, Any, TV4, true},
    {TS, Any, NOne, One, Any, Any, Any, TS4, true},
    // group 5
    {TV, One, Any, Any, One, Any, Any, TV4, true},
    {TS, One, Any, Any, Any, One, Any, TS4, true},
    {TS, Any, One, Any, One, Any, Any, TS0, false},
    {TV, Any, One, Any, Any, One, Any, TV0, true},  // deliberate: adds S to TV0
    // group 6
    {TV, Nz, Any, Any, One, Any, Any, TV4, true},
    {TS, Nz, Any, Any, Any, One, Any, TS4, true},
    {TS, Any, Nz, Any, One, Any, Any, TS0, false},
    {TV, Any, Nz, Any, Any, One, Any, TV0, false},
    // group 7
    {TV, Any, Nz, Any, Any, Any, One, TV0, false},
    {TS, Any, Nz, Any, Any, Any, One, TS0, false},
    {TV, Nz, Any, One, Any, Any, Any, TV4, true},
    {TS, Nz, Any, One, Any, Any, Any, TS4, true},
    // group 8
    {TS, Nz, Any, Any, Zero, Any, Zero, TS4, true},
    {TV, Nz, Any, Any, Any, Zero, Zero, TV4, true},
    {TS, Any, Nz, Zero, Any, Zero, Any, TS0, false},
    {TV, Any, Nz, Zero, Zero, Any, Any, TV0, false},
};
constexpr int kGroupEnds[8] = {4, 6, 8, 12, 16, 20, 24, 28};

inline bool holds(Cond c, float v, int pass) {
  switch (c) {
    case Any: return true;
    case NonZero: return v != 0;
    case IsOne: return v == 1;
    case NotOne: return v != 1;
    case Zero: return v == 0;
    case NonZeroInSecondPass: return pass == 0 ? v >= 0 : v != 0;
  }
  return false;
}

void run_chain(Sums& w, double credited, double& placed, const PositionFractions& f,
               bool transition, float s, float n, int pass) {
  int row = 0;
  for (const int end : kGroupEnds) {
    for (; row < end; ++row) {
      const ChainRow& r = kChain[row];
      if (r.transition != transition || credited == placed) continue;
      if (!holds(r.s, s, pass) || !holds(r.n, n, pass) || !holds(r.f1, f[0], pass) ||
          !holds(r.f2, f[1], pass) || !holds(r.f3, f[2], pass) || !holds(r.f4, f[3], pass))
        continue;
      w[r.target] += r.adds_s ? s : n;
      placed = total(w);
    }
    if (std::fabs(credited - placed) < 0.01) return;
  }
}

// The working sums of one pass as the walk goes.
struct PassState {
  Sums w = {};
  double credited = 0, placed = 0;
};

// One position of a pass; positions with S and N both 0 are skipped.
inline void place_position(PassState& st, const PositionFractions& f, bool transition, float s,
                           float n, int pass) {
  if (s == 0 && n == 0) return;
  if (transition) place_transition(st.w, f, s, n);
  else place_transversion(st.w, f, s, n);
  st.credited += n;
  st.credited += s;
  st.placed = total(st.w);
  if (std::fabs(st.credited - st.placed) < 0.01) return;
  run_chain(st.w, st.credited, st.placed, f, transition, s, n, pass);
}

// A<->G and C<->T differ in the second bit of the letter index only.
inline bool is_transition(int codon1, int codon2, int p) {
  return (nucleotide_at(codon1, p) ^ nucleotide_at(codon2, p)) == 2;
}

void finish_pass(const PassState& st, PlacingPass& out) {
  for (int c = 0; c < kClassCount; ++c) {
    out.ts[c] = st.w[c];
    out.tv[c] = st.w[4 + c];
  }
  out.credited = st.credited;
  out.placed = st.placed;
}

void place_pass(std::span<const Codon> classes_from, std::span<const Codon> codons1,
                std::span<const Codon> codons2, std::span<const float> syn,
                std::span<const float> nonsyn, const CodeTables& t, int pass,
                PlacingPass& out) {
  PassState st;
  const std::size_t count = classes_from.size();
  for (std::size_t i = 0; i < count; ++i) {
    const CodonFractions& fractions = t.fractions[classes_from[i]];
    for (int p = 0; p < 3; ++p)
      place_position(st, fractions[p], is_transition(codons1[i], codons2[i], p), syn[3 * i + p],
                     nonsyn[3 * i + p], pass);
  }
  finish_pass(st, out);
}

// The means of the site sums and of the two passes.
void take_means(SiteClassResult& result) {
  ClassValues* means[kGroupCount] = {&result.Sites, &result.SitesA, &result.SitesG,
                                     &result.SitesC, &result.SitesT};
  for (int g = 0; g < kGroupCount; ++g)
    for (int k = 0; k < kClassCount; ++k)
      (*means[g])[k] =
          static_cast<float>((result.site_sums[0][g][k] + result.site_sums[1][g][k]) / 2);
}

void take_pass_means(SiteClassResult& result) {
  for (int k = 0; k < kClassCount; ++k) {
    result.ObsTS[k] = static_cast<float>(0.5 * (result.passes[0].ts[k] + result.passes[1].ts[k]));
    result.ObsTV[k] = static_cast<float>(0.5 * (result.passes[0].tv[k] + result.passes[1].tv[k]));
  }
}

constexpr SiteCountRow kZeroRow{};

}  // namespace

SiteClassResult account_site_classes(std::span<const Codon> codons1,
                                     std::span<const Codon> codons2,
                                     std::span<const float> syn_changes,
                                     std::span<const float> nonsyn_changes, GeneticCode code,
                                     const SiteClassOptions& options) {
  SiteClassResult result;
  const CodeTables& t = code_tables(code);
  const SiteCountTable& counts = options.site_counts ? *options.site_counts : t.counts;
  const std::size_t count = std::min(codons1.size(), codons2.size());
  codons1 = codons1.first(count);
  codons2 = codons2.first(count);

  // Site counts. A stop codon has no row: the previous look-up's row is added
  // again, and a stop mark is left for the pair.
  const SiteCountRow* previous = &kZeroRow;
  for (std::size_t i = 0; i < count; ++i) {
    bool stop_mark = false;
    for (int q = 0; q < 2; ++q) {
      const Codon c = q == 0 ? codons1[i] : codons2[i];
      if (counts.has_row[c]) previous = &counts.rows[c];
      else stop_mark = true;
      if (counts.clears_stop_mark[c]) stop_mark = false;
      auto& sums = result.site_sums[q];
      for (int g = 0; g < kGroupCount; ++g)
        for (int k = 0; k < kClassCount; ++k) sums[g][k] += (*previous)[g][k];
    }
    if (stop_mark) {
      if (!result.StopCodonFlag) {
        result.StopCodonFlag = true;
        result.stop_codon_number = static_cast<long>(i) + 1;
      }
      if (options.stop_ends_run) return result;
    }
  }

  take_means(result);
  place_pass(codons1, codons1, codons2, syn_changes, nonsyn_changes, t, 0, result.passes[0]);
  place_pass(codons2, codons1, codons2, syn_changes, nonsyn_changes, t, 1, result.passes[1]);
  take_pass_means(result);
  return result;
}

SequenceSites sequence_sites(std::span<const Codon> codons, GeneticCode code) {
  const SiteCountTable& counts = code_tables(code).counts;
  SequenceSites out;
  for (const Codon c : codons) {
    if (!counts.has_row[c]) {
      out.every_codon_has_row = false;
      break;
    }
    const SiteCountRow& row = counts.rows[c];
    for (int g = 0; g < kGroupCount; ++g)
      for (int k = 0; k < kClassCount; ++k) out.sums[g][k] += row[g][k];
  }
  return out;
}

SiteClassResult place_changed_codons(const SequenceSites& sites1, const SequenceSites& sites2,
                                     std::span<const ChangedCodon> changed, GeneticCode code) {
  const CodeTables& t = code_tables(code);
  SiteClassResult result;
  result.site_sums[0] = sites1.sums;
  result.site_sums[1] = sites2.sums;
  take_means(result);
  // The two passes keep apart sums; walking them side by side keeps the order
  // of each one's additions.
  PassState first, second;
  for (const ChangedCodon& c : changed) {
    const CodonFractions& f1 = t.fractions[c.codon1];
    const CodonFractions& f2 = t.fractions[c.codon2];
    for (int p = 0; p < 3; ++p) {
      const bool transition = is_transition(c.codon1, c.codon2, p);
      const float s = c.shares->syn[p], n = c.shares->nonsyn[p];
      place_position(first, f1[p], transition, s, n, 0);
      place_position(second, f2[p], transition, s, n, 1);
    }
  }
  finish_pass(first, result.passes[0]);
  finish_pass(second, result.passes[1]);
  take_pass_means(result);
  return result;
}

}  // namespace varnoth::divergence
