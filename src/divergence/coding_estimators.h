// Coding divergence estimators: Ks and Ka by Jukes and Cantor-1p and by
// Kimura-2p, the Kimura terms As, Bs, Aa, Ba, and the effective site numbers
// S.E.S. and N.E.S., from the per-class sums of one pair.
//
// Pure functions, so that pairs (and simulation replicates) can be estimated in
// any order or in parallel. S.E.S. and N.E.S. are the only values that depend on
// the pair before: a nonsynonymous Kimura failure skips their step and the pair
// shows the values the previous pair left. estimate_coding() therefore does not
// take them; it says whether it wrote them (CodingResult::effective_sites_written),
// and apply_carry() resolves the result against the values handed on by the pair
// before, in pair order:
//
//   CodingCarry carry;                                  // 0, 0 at the start of a run
//   for (each pair in order) {
//     CodingEstimates e = apply_carry(carry, results[pair]);
//     carry = carry_of(e);
//   }
#pragma once

#include <array>
#include <string_view>

namespace varnoth::divergence {

// The text of a note that marks an estimate as not applicable.
inline constexpr std::string_view kNoApplicable = "NO APPLICABLE";

// The Single sums of one pair. Every array is in class order 0-fold, 2S-fold,
// 2V-fold, 4-fold.
struct CodingClassSums {
  static constexpr int k0Fold = 0, k2SFold = 1, k2VFold = 2, k4Fold = 3;
  std::array<float, 4> sites{};   // L0, L2S, L2V, L4
  std::array<float, 4> obs_ts{};  // observed transitions per class
  std::array<float, 4> obs_tv{};  // observed transversions per class
};

// All values of one pair. A note is empty or kNoApplicable. A Jukes and Cantor
// estimate with a note holds 0; after a Kimura failure As..Ba hold what their
// steps reached (e.g. Bs is set when a later synonymous step fails), and the
// Kimura Ks and Ka are still As + Bs and Aa + Ba.
struct CodingEstimates {
  double ks_jc = 0, ka_jc = 0;
  double ks_kimura = 0, ka_kimura = 0;
  double as = 0, bs = 0, aa = 0, ba = 0;
  double ses = 0;
  float nes = 0;  // a Single field
  std::string_view ks_jc_note, ka_jc_note, ks_kimura_note, ka_kimura_note;
};

// What estimate_coding() returns: values.ses and values.nes are meaningful only
// when effective_sites_written is true (otherwise they hold 0 and the pair
// keeps the ones of the pair before; see apply_carry()).
struct CodingResult {
  CodingEstimates values;
  bool effective_sites_written = true;
};

// S.E.S. and N.E.S. as one pair leaves them for the next.
struct CodingCarry {
  double ses = 0;
  float nes = 0;
};

// The estimators for one pair. Every division by an empty class is caught: the
// estimate that needs it is not applicable and the others go on.
CodingResult estimate_coding(const CodingClassSums& sums);

// The pair's values, with S.E.S. and N.E.S. taken from `previous` where the pair
// did not write them.
CodingEstimates apply_carry(const CodingCarry& previous, const CodingResult& result);

// What a pair hands on to the next one.
CodingCarry carry_of(const CodingEstimates& estimates);

// The values handed to the simulations and to the pair store.
struct CodingHandedOn {
  double ks = 0, ka = 0;
  int ks_method = 1, ka_method = 1;  // 1 Jukes and Cantor, 2 Kimura
  double as = 0, bs = 0, aa = 0, ba = 0;
};

// Kimura run: the Kimura values, each class falling back to Jukes and Cantor
// when its Kimura estimate is not applicable.
CodingHandedOn handed_on_kimura(const CodingEstimates& estimates);

// Jukes and Cantor run.
CodingHandedOn handed_on_jukes_cantor(const CodingEstimates& estimates);

}  // namespace varnoth::divergence
