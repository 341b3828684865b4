// Noncoding divergence estimators: observed transition and transversion
// frequencies and six multiple-hits corrections (Jukes & Cantor, Kimura 2-p,
// Tajima & Nei, Tajima 1-p, Tajima 2-p, Tajima 4-p) for one pair of nucleotide
// sequences.
//
// Pure functions, so that pairs (and simulation replicates) can be estimated in
// any order or in parallel. Four values may stand as the pair before left them:
// Kimura's A and B (identical pair, p above 0.7499, or Kimura's own guard) and
// Tajima 1-p and 4-p (p/b of Tajima & Nei at least 1). estimate_noncoding()
// says whether it wrote them, and apply_carry() resolves the result against the
// values the pair before handed on, in pair order:
//
//   NoncodingCarry carry;                               // all 0 at the start
//   for (each pair in order) {
//     NoncodingEstimates e = apply_carry(carry, results[pair]);
//     NoncodingNotApplicable na = not_applicable(e);
//     carry = carry_of(e);
//   }
//
// A value left standing is still truncated and range-checked by the pair that
// keeps it, as every value of a pair is; apply_carry() does that too.
#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace varnoth::divergence {

// Sites of a pair by the bases of the two sequences: cells[4 * b1 + b2], with
// the bases numbered A = 0, G = 1, C = 2, T = 3.
struct NucleotidePairTable {
  static constexpr int kA = 0, kG = 1, kC = 2, kT = 3;
  std::array<std::int64_t, 16> cells{};
  std::int64_t sites() const;
};

// The number of a base letter in the table, upper or lower case; 4 for any
// other character.
constexpr int base_number(unsigned char c) {
  switch (c) {
    case 'A': case 'a': return NucleotidePairTable::kA;
    case 'G': case 'g': return NucleotidePairTable::kG;
    case 'C': case 'c': return NucleotidePairTable::kC;
    case 'T': case 't': return NucleotidePairTable::kT;
    default: return 4;
  }
}

// Counts the sites of two aligned sequences. Both hold only A, G, C, T (lower
// case is read alike); any other character is left out of the table. Only the
// first min(size) positions are read.
NucleotidePairTable count_nucleotide_pairs(std::span<const char> seq1,
                                           std::span<const char> seq2);

// All values of one pair, after truncation to seven decimals and the range rule.
struct NoncodingEstimates {
  std::array<std::int64_t, 4> counts1{};  // bases of sequence A: A, G, C, T
  std::array<std::int64_t, 4> counts2{};  // bases of sequence B
  double mean_freq_a = 0, mean_freq_g = 0, mean_freq_c = 0, mean_freq_t = 0;
  double obs_p = 0;  // transition frequency
  double obs_q = 0;  // transversion frequency
  double k_jukes_cantor = 0, k_kimura = 0, kimura_a = 0, kimura_b = 0;
  double k_tajima_nei = 0, k_tajima_1p = 0;
  float k_tajima_2p = 0;  // a Single, rounded at each step of its sum
  double k_tajima_4p = 0;
};

// What estimate_noncoding() returns. Where a flag is false, the pair left the
// fields as they stood: they hold 0 here and take the previous pair's values
// through apply_carry().
struct NoncodingResult {
  NoncodingEstimates values;
  bool kimura_ab_written = true;   // kimura_a, kimura_b
  bool tajima_1p_4p_written = true;  // k_tajima_1p, k_tajima_4p
};

// The values a pair hands on to the next.
struct NoncodingCarry {
  double kimura_a = 0, kimura_b = 0, tajima_1p = 0, tajima_4p = 0;
};

// The estimators for one pair. A table with no sites gives the result of an
// identical pair with all frequencies 0.
NoncodingResult estimate_noncoding(const NucleotidePairTable& table);
NoncodingResult estimate_noncoding(std::span<const char> seq1, std::span<const char> seq2);

// The pair's values, with the fields it did not write taken from `previous`
// (truncated again, and for the two Tajima values range-checked, as the pair
// does with every value it holds).
NoncodingEstimates apply_carry(const NoncodingCarry& previous, const NoncodingResult& result);

// What a pair hands on to the next one.
NoncodingCarry carry_of(const NoncodingEstimates& estimates);

// Which of the six estimates are not applicable: the observed p (truncated P
// plus truncated Q) is above 0 and the estimate is exactly 0. Kimura's A and B
// follow Kimura's K.
struct NoncodingNotApplicable {
  bool jukes_cantor = false, kimura = false, tajima_nei = false;
  bool tajima_1p = false, tajima_2p = false, tajima_4p = false;
};
NoncodingNotApplicable not_applicable(const NoncodingEstimates& estimates);

// x cut to seven decimals: Int(10000000 x) / 10000000, Int rounding down.
double truncate_seven_decimals(double x);

}  // namespace varnoth::divergence
