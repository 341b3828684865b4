#include "divergence/site_classes.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <mutex>

#include "divergence/differences.h"

namespace varnoth::divergence {
namespace {

// Working sums: transitions by class, then transversions by class; slot 8 takes
// the blank steps of a placing program and is never read.
constexpr int TS0 = 0, TS2S = 1, TS2V = 2, TS4 = 3, TV0 = 4, TV2S = 5, TV2V = 6, TV4 = 7;
constexpr int kUnread = 8;
using Sums = double[9];

inline double total(const Sums& w) {
  return w[TS0] + w[TS2S] + w[TS2V] + w[TS4] + w[TV0] + w[TV2S] + w[TV2V] + w[TV4];
}

// The placing rules: every row is tested in order and each row that holds is
// applied. Where a class leaves no home for S or N the amount stays unplaced.
// A row adds coefficient x S or N to a sum; a bare "TS0 + N" has coefficient 1
// (1 x N is N exactly).
enum Amount : std::uint8_t { kS, kN };

template <typename Add>
void transition_rules(const PositionFractions& f, Add&& add) {
  const double f1 = f[0], f2 = f[1], f3 = f[2], f4 = f[3];
  const bool z1 = f1 == 0, z2 = f2 == 0, z3 = f3 == 0, z4 = f4 == 0;
  if (z1 && z3) { add(TS2S, f2, kS); add(TS4, f4, kS); }
  if (z2 && z4) { add(TS0, f1, kN); add(TS2V, f3, kN); }
  if (!z1 && !z2 && z3 && z4) { add(TS0, 1, kN); add(TS2S, 1, kS); }
  if (!z1 && z2 && z3 && !z4) { add(TS0, 1, kN); add(TS4, 1, kS); }
  if (z1 && !z2 && !z3 && z4) { add(TS2S, 1, kS); add(TS2V, 1, kN); }
  if (z1 && z2 && !z3 && !z4) { add(TS2V, 1, kN); add(TS4, 1, kS); }
  if (!z1 && !z2 && !z3 && z4) { add(TS0, 0.5, kN); add(TS2S, 1, kS); add(TS2V, 0.5, kN); }
  if (!z1 && !z2 && z3 && !z4) { add(TS0, 1, kN); add(TS2S, f2, kS); add(TS4, f4, kS); }
  if (!z1 && z2 && !z3 && !z4) { add(TS0, f1, kN); add(TS4, 1, kS); add(TS2V, f3, kN); }
  if (z1 && !z2 && !z3 && !z4) { add(TS2V, 1, kN); add(TS2S, f2, kS); add(TS4, f4, kS); }
}

template <typename Add>
void transversion_rules(const PositionFractions& f, Add&& add) {
  const double f1 = f[0], f2 = f[1], f3 = f[2], f4 = f[3];
  const bool z1 = f1 == 0, z2 = f2 == 0, z3 = f3 == 0, z4 = f4 == 0;
  if (z1 && z2) { add(TV2V, f3, kS); add(TV4, f4, kS); }
  if (z3 && z4) { add(TV0, f1, kN); add(TV2S, f2, kN); }
  if (!z1 && z2 && !z3 && z4) { add(TV0, 1, kN); add(TV2V, 1, kS); }
  if (!z1 && z2 && z3 && !z4) { add(TV0, 1, kN); add(TV4, 1, kS); }
  if (z1 && !z2 && !z3 && z4) { add(TV2S, 1, kN); add(TV2V, 1, kS); }
  if (z1 && !z2 && z3 && !z4) { add(TV2S, 1, kN); add(TV4, 1, kS); }
  if (!z1 && !z2 && !z3 && z4) { add(TV0, 0.5, kN); add(TV2S, 0.5, kN); add(TV2V, 1, kS); }
  if (!z1 && !z2 && z3 && !z4) { add(TV0, f1, kN); add(TV2S, f2, kN); add(TV4, 1, kS); }
  if (!z1 && z2 && !z3 && !z4) { add(TV0, 1, kN); add(TV2V, f3, kS); add(TV4, f4, kS); }
  if (z1 && !z2 && !z3 && !z4) { add(TV2S, 1, kN); add(TV2V, f3, kS); add(TV4, f4, kS); }
}

// The rules of one position, kind of change and codon written down once as a
// fixed list of steps (blank steps go to the unread slot), so that the walk
// applies them without testing the fractions again.
// At most two rules of two steps (a codon whose fractions are all 0) or one of three.
constexpr int kMaxSteps = 4;
struct PlacingProgram {
  std::array<std::uint8_t, kMaxSteps> target{kUnread, kUnread, kUnread, kUnread};
  std::array<Amount, kMaxSteps> amount{kN, kN, kN, kN};
  std::array<double, kMaxSteps> coefficient{};
};

PlacingProgram program_of(const PositionFractions& f, bool transition) {
  PlacingProgram program;
  int steps = 0;
  auto add = [&](int target, double coefficient, Amount amount) {
    if (steps == kMaxSteps) std::abort();
    program.target[steps] = static_cast<std::uint8_t>(target);
    program.amount[steps] = amount;
    program.coefficient[steps] = coefficient;
    ++steps;
  };
  if (transition) transition_rules(f, add);
  else transversion_rules(f, add);
  return program;
}

// Programs by [codon][position][transition] of the codon that gives the classes.
using CodeProgram = std::array<std::array<std::array<PlacingProgram, 2>, 3>, kCodons>;

const CodeProgram& code_program(GeneticCode code) {
  static const std::array<CodeProgram, 3> programs = [] {
    std::array<CodeProgram, 3> all{};
    const GeneticCode codes[3] = {GeneticCode::Universal, GeneticCode::Vermito,
                                  GeneticCode::Dromito};
    for (int c = 0; c < 3; ++c) {
      const CodeTables& t = code_tables(codes[c]);
      for (int codon = 0; codon < kCodons; ++codon)
        for (int p = 0; p < 3; ++p)
          for (int transition = 0; transition < 2; ++transition)
            all[static_cast<std::size_t>(c)][codon][p][transition] =
                program_of(t.fractions[codon][p], transition == 1);
    }
    return all;
  }();
  return programs[code == GeneticCode::Vermito ? 1 : code == GeneticCode::Dromito ? 2 : 0];
}

inline void run_program(Sums& w, const PlacingProgram& program, double s, double n) {
  for (int k = 0; k < kMaxSteps; ++k)
    w[program.target[k]] += program.coefficient[k] * (program.amount[k] == kS ? s : n);
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
inline void place_position(PassState& st, const PlacingProgram& program,
                           const PositionFractions& f, bool transition, float s, float n,
                           int pass) {
  if (s == 0 && n == 0) return;
  run_program(st.w, program, s, n);
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
                std::span<const float> nonsyn, GeneticCode code, int pass, PlacingPass& out) {
  const CodeTables& t = code_tables(code);
  PassState st;
  const CodeProgram& programs = code_program(code);
  const std::size_t count = classes_from.size();
  for (std::size_t i = 0; i < count; ++i) {
    const CodonFractions& fractions = t.fractions[classes_from[i]];
    for (int p = 0; p < 3; ++p) {
      const bool transition = is_transition(codons1[i], codons2[i], p);
      place_position(st, programs[classes_from[i]][p][transition], fractions[p], transition,
                     syn[3 * i + p], nonsyn[3 * i + p], pass);
    }
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
  place_pass(codons1, codons1, codons2, syn_changes, nonsyn_changes, code, 0, result.passes[0]);
  place_pass(codons2, codons1, codons2, syn_changes, nonsyn_changes, code, 1, result.passes[1]);
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

namespace {

// The working sums, Credited and Placed of the two passes side by side.
struct Lanes {
  SumPair w[8] = {};
  SumPair credited = {0, 0}, placed = {0, 0};
};

// The corrective chain of a position in one pass (rarely taken), on a copy.
[[gnu::noinline]] Lanes correct(Lanes lanes, const PositionPlacing& pos, int pass,
                                const PositionFractions& f) {
  Sums sums;
  for (int k = 0; k < 8; ++k) sums[k] = lanes.w[k][pass];
  double placed = lanes.placed[pass];
  run_chain(sums, lanes.credited[pass], placed, f, pos.transition,
            static_cast<float>(pos.syn[0]), static_cast<float>(pos.nonsyn[0]), pass);
  for (int k = 0; k < 8; ++k) lanes.w[k][pass] = sums[k];
  lanes.placed[pass] = placed;
  return lanes;
}

}  // namespace

PairPlacingTable::PairPlacingTable(GeneticCode code, float pathway_weight) : code_(code) {
  // On the heap: 112 KB of new stack would cost a page fault every 4 KB.
  const auto shares_held = std::make_unique<const CodonPairTable>(code, pathway_weight);
  const CodonPairTable& shares = *shares_held;
  const CodeProgram& programs = code_program(code);
  // A position of a complete pair is placed where it has a share.
  const auto has_share = [](const CodonPairShares& sh, int p) {
    return sh.syn[static_cast<std::size_t>(p)] != 0 || sh.nonsyn[static_cast<std::size_t>(p)] != 0;
  };
  std::size_t count = 0;
  for (int a = 0; a < kCodons; ++a)
    for (int b = 0; b < kCodons; ++b) {
      const CodonPairShares& sh = shares(static_cast<Codon>(a), static_cast<Codon>(b));
      if (a == b || sh.status != ChangeStatus::Complete) continue;
      for (int p = 0; p < 3; ++p) count += has_share(sh, p) ? 1 : 0;
    }
  positions_.reserve(count);
  for (int a = 0; a < kCodons; ++a) {
    for (int b = 0; b < kCodons; ++b) {
      if (a == b) continue;
      const CodonPairShares& sh = shares(static_cast<Codon>(a), static_cast<Codon>(b));
      PairPlacing& out = pairs_[static_cast<std::size_t>(64 * a + b)];
      out.status = sh.status;
      out.first = static_cast<std::uint16_t>(positions_.size());
      if (sh.status != ChangeStatus::Complete) continue;
      for (int p = 0; p < 3; ++p) {
        if (!has_share(sh, p)) continue;
        const float s = sh.syn[static_cast<std::size_t>(p)];
        const float n = sh.nonsyn[static_cast<std::size_t>(p)];
        PositionPlacing& pos = positions_.emplace_back();
        ++out.count;
        pos.syn = SumPair{s, s};
        pos.nonsyn = SumPair{n, n};
        pos.position = static_cast<std::uint8_t>(p);
        pos.transition = is_transition(a, b, p);
        const int from[2] = {a, b};
        for (int pass = 0; pass < 2; ++pass) {
          const PlacingProgram& program = programs[from[pass]][p][pos.transition];
          bool taken[9] = {};
          for (int k = 0; k < kMaxSteps; ++k) {
            const int target = program.target[k];
            if (target == kUnread) continue;
            if (taken[target]) std::abort();  // no rule adds twice to one sum
            taken[target] = true;
            // The amount run_program adds: the same product of the same numbers.
            pos.add[target][pass] =
                program.coefficient[k] * (program.amount[k] == kS ? double{s} : double{n});
          }
        }
      }
    }
  }
  // Indices of positions are 16 bits.
  if (positions_.size() > 0xFFFF) std::abort();
}

std::shared_ptr<const PairPlacingTable> shared_placing_table(GeneticCode code,
                                                             float pathway_weight) {
  struct Entry {
    GeneticCode code;
    std::uint32_t weight;  // the bits of the weight: -0 and 0 are told apart, as is NaN
    std::shared_ptr<const PairPlacingTable> table;
  };
  constexpr std::size_t kKept = 8;
  static std::mutex mutex;
  static std::vector<Entry> kept;  // oldest first
  const auto weight = std::bit_cast<std::uint32_t>(pathway_weight);
  const std::lock_guard lock(mutex);
  for (const Entry& e : kept)
    if (e.code == code && e.weight == weight) return e.table;
  if (kept.size() == kKept) kept.erase(kept.begin());
  kept.push_back({code, weight, std::make_shared<const PairPlacingTable>(code, pathway_weight)});
  return kept.back().table;
}

SiteClassResult place_differing_codons(const SequenceSites& sites1, const SequenceSites& sites2,
                                       std::span<const Codon> codons1,
                                       std::span<const Codon> codons2,
                                       const PairPlacingTable& table,
                                       ChangeAccountingResult& changes) {
  SiteClassResult result;
  changes = {};
  const CodeTables& t = code_tables(table.code());
  // The working sums, Credited and Placed of the two passes side by side, as
  // place_position forms them: lane by lane the same additions in the same
  // order. A position adds its amounts to all eight sums, 0 to those its rules
  // leave alone: a sum starts at +0 and is never -0 (round to nearest gives -0
  // only for -0 + -0), so adding 0 leaves it as it is.
  // Kept in eight named pairs so that they stay in registers.
  SumPair w0 = {0, 0}, w1 = {0, 0}, w2 = {0, 0}, w3 = {0, 0};
  SumPair w4 = {0, 0}, w5 = {0, 0}, w6 = {0, 0}, w7 = {0, 0};
  SumPair credited = {0, 0}, placed = {0, 0};
  // The codons are taken a stretch at a time in three walks without a branch
  // on the data: where they differ, then the positions with a share of those
  // pairs, then the placing of each position. A branch per differing codon
  // and per position, which the processor cannot foresee, cost more than all
  // the arithmetic.
  constexpr std::size_t kStretch = 256;
  // Each position placed: its index in the table, then the codon's within the
  // stretch, 16 bits each.
  std::uint32_t steps[3 * kStretch];
  const std::size_t count = std::min(codons1.size(), codons2.size());
  for (std::size_t first = 0; first < count; first += kStretch) {
    const std::size_t length = std::min(kStretch, count - first);
    const Codon* a = codons1.data() + first;
    const Codon* b = codons2.data() + first;
    std::size_t positions = 0;
    bool open = true;
    for_each_difference(a, b, length, [&](std::size_t i) {
      const PairPlacing placing = table(a[i], b[i]);
      open &= placing.status == ChangeStatus::Complete;
      // Three written, as many kept as the pair has (none for a closed pair).
      const auto step =
          static_cast<std::uint32_t>(placing.first) << 16 | static_cast<std::uint32_t>(i);
      steps[positions] = step;
      steps[positions + 1] = step + (1u << 16);
      steps[positions + 2] = step + (2u << 16);
      positions += placing.count;
    });
    if (!open) {
      // The first pair that is not complete ends the walk; what was placed is
      // of no use then.
      for (std::size_t i = 0; i < length; ++i) {
        if (a[i] == b[i]) continue;
        const PairPlacing placing = table(a[i], b[i]);
        if (placing.status == ChangeStatus::Complete) continue;
        changes.status = placing.status;
        changes.StopCodonFlag = placing.status == ChangeStatus::StopCodon;
        changes.codon_number = static_cast<long>(first + i) + 1;
        changes.codon1 = a[i];
        changes.codon2 = b[i];
        return result;
      }
    }
    for (std::size_t k = 0; k < positions; ++k) {
      const PositionPlacing& pos = table.position(steps[k] >> 16);
      w0 += pos.add[0];
      w1 += pos.add[1];
      w2 += pos.add[2];
      w3 += pos.add[3];
      w4 += pos.add[4];
      w5 += pos.add[5];
      w6 += pos.add[6];
      w7 += pos.add[7];
      credited += pos.nonsyn;
      credited += pos.syn;
      placed = w0 + w1 + w2 + w3 + w4 + w5 + w6 + w7;
      const SumPair gap = credited - placed;
      if (std::fabs(gap[0]) < 0.01 && std::fabs(gap[1]) < 0.01) [[likely]] continue;
      const std::uint32_t i = steps[k] & 0xFFFF;
      const Codon from[2] = {a[i], b[i]};
      for (int pass = 0; pass < 2; ++pass) {
        if (std::fabs(gap[pass]) < 0.01) continue;
        Lanes l{{w0, w1, w2, w3, w4, w5, w6, w7}, credited, placed};
        l = correct(l, pos, pass, t.fractions[from[pass]][pos.position]);
        w0 = l.w[0], w1 = l.w[1], w2 = l.w[2], w3 = l.w[3];
        w4 = l.w[4], w5 = l.w[5], w6 = l.w[6], w7 = l.w[7];
        placed = l.placed;
      }
    }
  }
  result.site_sums[0] = sites1.sums;
  result.site_sums[1] = sites2.sums;
  take_means(result);
  for (int pass = 0; pass < 2; ++pass) {
    PassState st;
    const SumPair w[8] = {w0, w1, w2, w3, w4, w5, w6, w7};
    for (int k = 0; k < 8; ++k) st.w[k] = w[k][pass];
    st.credited = credited[pass];
    st.placed = placed[pass];
    finish_pass(st, result.passes[pass]);
  }
  take_pass_means(result);
  return result;
}

}  // namespace varnoth::divergence
