// Sites of each degeneracy class in a pair of coding sequences, and the
// placing of the credited changes in those classes, apart for transitions and
// transversions. Both are means of two readings: classes taken from the codons
// of the first sequence, then from those of the second.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "divergence/codon_changes.h"
#include "divergence/coding_estimators.h"
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

// What a pair's report and estimates take from the accounting.
struct ClassTotals {
  // Site means over the two sequences, by class.
  ClassValues Sites{};
  ClassValues SitesA{};
  ClassValues SitesG{};
  ClassValues SitesC{};
  ClassValues SitesT{};

  // Changes placed, means of the two passes, by class.
  ClassValues ObsTS{};
  ClassValues ObsTV{};
};

// The sums the coding estimators take from the totals.
inline CodingClassSums coding_sums(const ClassTotals& c) {
  CodingClassSums sums;
  sums.sites = c.Sites;
  sums.obs_ts = c.ObsTS;
  sums.obs_tv = c.ObsTV;
  return sums;
}

struct SiteClassResult : ClassTotals {
  bool StopCodonFlag = false;
  long stop_codon_number = 0;  // codon number (from 1) of the first stop found

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

// One working sum of the two passes side by side: first pass, second pass
// (GCC and clang vectors).
using SumPair = double __attribute__((vector_size(16)));

// How the shares of one ordered pair of different codons are placed, worked
// out once per run for every such pair: the positions with a share, and what
// the placing rules add there to each of the eight working sums (TS0, TS2S,
// TS2V, TS4, TV0, TV2S, TV2V, TV4) in each pass, 0 where they add nothing.
struct PositionPlacing {
  SumPair add[8] = {};
  SumPair syn = {0, 0}, nonsyn = {0, 0};  // the shares (Single values), in both lanes
  std::uint8_t position = 0;              // 0..2
  bool transition = false;
};

// The placing of one ordered pair of codons: its status and where its
// positions with a share (in position order) lie among the table's positions.
struct PairPlacing {
  std::uint16_t first = 0;
  std::uint8_t count = 0;
  ChangeStatus status = ChangeStatus::Complete;
};

class PairPlacingTable {
 public:
  PairPlacingTable(GeneticCode code, float pathway_weight);
  const PairPlacing& operator()(Codon a, Codon b) const { return pairs_[64 * a + b]; }
  const PositionPlacing& position(std::size_t index) const { return positions_[index]; }
  GeneticCode code() const { return code_; }

 private:
  GeneticCode code_;
  // Small enough to stay in the fastest cache: 4 bytes a pair.
  std::array<PairPlacing, 64 * 64> pairs_{};
  std::vector<PositionPlacing> positions_;
};

// The table for a code and weight, built at the first call and shared after:
// a call over many alignments builds it once. Safe to call from any thread;
// the last few tables asked for are kept.
std::shared_ptr<const PairPlacingTable> shared_placing_table(GeneticCode code,
                                                             float pathway_weight);

// account_codon_changes then account_site_classes of a pair whose sequences
// both have a row for every codon (sites1, sites2 from sequence_sites over the
// pair's codons), walking only the codons that differ. The results are the same,
// bit for bit: equal codons carry no shares and the placing skips positions
// without one. `changes` gets the status and, where the walk stopped, the
// codon; its PairGCContent is left to the caller. After a stop the result is
// not to be used.
SiteClassResult place_differing_codons(const SequenceSites& sites1, const SequenceSites& sites2,
                                       std::span<const Codon> codons1,
                                       std::span<const Codon> codons2,
                                       const PairPlacingTable& table,
                                       ChangeAccountingResult& changes);

}  // namespace varnoth::divergence
