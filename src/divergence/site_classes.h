// Sites of each degeneracy class in a pair of coding sequences, and the
// placing of the credited changes in those classes, apart for transitions and
// transversions. Both are means of two readings: classes taken from the codons
// of the first sequence, then from those of the second.
#pragma once

#include <array>
#include <span>

#include "divergence/codon_changes.h"
#include "divergence/genetic_code.h"

namespace varnoth::divergence {

using ClassValues = std::array<float, kClassCount>;  // 0-fold, 2S, 2V, 4-fold

// The working sums of one pass.
struct PlacingPass {
  std::array<double, kClassCount> ts{};  // TS0, TS2S, TS2V, TS4
  std::array<double, kClassCount> tv{};  // TV0, TV2S, TV2V, TV4
  double credited = 0;  // shares read from the change arrays
  double placed = 0;    // total of the eight sums at the end of the pass
};

struct SiteClassOptions {
  // A stop codon ends the procedure before any placing. When false the stop is
  // only reported in the result and the walk goes on (replicate estimation).
  bool stop_ends_run = true;
  // Site-count table used in place of the code's own one (a replicate variant
  // of the Universal table); null for the code's own.
  const SiteCountTable* site_counts = nullptr;
};

struct SiteClassResult {
  bool StopCodonFlag = false;
  long stop_codon_number = 0;  // codon number (from 1) of the first stop found

  // Site means over the two sequences, by class.
  ClassValues Sites{};
  ClassValues SitesA{};
  ClassValues SitesG{};
  ClassValues SitesC{};
  ClassValues SitesT{};

  // Changes placed, means of the two passes, by class.
  ClassValues ObsTS{};
  ClassValues ObsTV{};

  // Site sums of each sequence, [sequence][group][class] (groups as in
  // SiteCountRow), and the sums of each pass.
  std::array<std::array<std::array<double, kClassCount>, kGroupCount>, 2> site_sums{};
  std::array<PlacingPass, 2> passes{};
};

// Counts the sites of both sequences and places the shares of syn_changes and
// nonsyn_changes (element 3 * i + p, as written by account_codon_changes).
// When a stop codon ends the procedure only the site sums reached so far are set.
SiteClassResult account_site_classes(std::span<const Codon> codons1,
                                     std::span<const Codon> codons2,
                                     std::span<const float> syn_changes,
                                     std::span<const float> nonsyn_changes, GeneticCode code,
                                     const SiteClassOptions& options = {});

// The site sums of one sequence over its codons, added in codon order as
// account_site_classes adds them. They stand for the sequence in any pair only
// when every codon has a row of its own: a codon without one repeats the row
// looked up before it, which may be the other sequence's.
struct SequenceSites {
  std::array<std::array<double, kClassCount>, kGroupCount> sums{};  // [group][class]
  bool every_codon_has_row = true;
};
SequenceSites sequence_sites(std::span<const Codon> codons, GeneticCode code);

// A codon pair of a comparison that differs, with its shares.
struct ChangedCodon {
  Codon codon1 = 0, codon2 = 0;
  const CodonPairShares* shares = nullptr;
};

// account_site_classes for a pair whose two sequences both have a row for every
// codon (sites1, sites2 from sequence_sites over the pair's codons), given only
// the codon pairs that differ, in codon order. The result is the same, bit for
// bit: equal codons carry no shares, and the placing skips such positions.
SiteClassResult place_changed_codons(const SequenceSites& sites1, const SequenceSites& sites2,
                                     std::span<const ChangedCodon> changed, GeneticCode code);

}  // namespace varnoth::divergence
