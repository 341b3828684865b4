// Accounting of the changes between two aligned coding sequences: every
// nucleotide position that differs is credited with a synonymous and a
// nonsynonymous share of one change, found over the pathways of change
// between the two codons.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "divergence/genetic_code.h"

namespace varnoth::divergence {

enum class ChangeStatus : std::uint8_t {
  Complete,
  StopCodon,      // a codon translated in the walk is a stop codon
  NoOpenPathway,  // every pathway of a position runs through a stop codon
};

struct ChangeAccountingResult {
  ChangeStatus status = ChangeStatus::Complete;
  bool StopCodonFlag = false;  // status == StopCodon
  float PairGCContent = 0;     // set only when the walk completes
  // Where the walk ended when it did not complete: codon number (from 1) and
  // the two codons.
  long codon_number = 0;
  Codon codon1 = 0;
  Codon codon2 = 0;
};

// Walks the codon pairs in order and writes the shares of each position:
// element 3 * i + p of syn_changes / nonsyn_changes (i from 0, p = 0..2).
// Both spans must hold at least 3 * codons1.size() elements; those are zeroed
// first. codons1 and codons2 are of the same length and hold indices 0..63.
// When the walk stops early the arrays are partly filled and not to be used.
ChangeAccountingResult account_codon_changes(std::span<const Codon> codons1,
                                             std::span<const Codon> codons2,
                                             GeneticCode code, float pathway_weight,
                                             std::span<float> syn_changes,
                                             std::span<float> nonsyn_changes);

// The shares one codon pair receives, position by position, exactly as
// account_codon_changes writes them for that pair; `status` is what the walk
// does at the pair.
struct CodonPairShares {
  ChangeStatus status = ChangeStatus::Complete;
  std::array<float, 3> syn{};
  std::array<float, 3> nonsyn{};
};

// The shares of every ordered pair of different codons under one code and
// pathway weight. The walk treats each codon pair on its own, so a run can look
// its pairs up here instead of walking their pathways again.
class CodonPairTable {
 public:
  CodonPairTable(GeneticCode code, float pathway_weight);
  const CodonPairShares& operator()(Codon a, Codon b) const { return shares_[64 * a + b]; }

 private:
  std::array<CodonPairShares, kCodons * kCodons> shares_{};
};

}  // namespace varnoth::divergence
