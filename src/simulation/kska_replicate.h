// One replicate of the coding simulation: its estimate of Ks and Ka over the
// engine's own routines (pathway accounting, site classes, estimators), with
// the differences of the replicate procedures given as options, and the rule
// that keeps or refuses the replicate while the run steers the mean of Ks.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "divergence/coding_estimators.h"
#include "divergence/genetic_code.h"
#include "divergence/site_classes.h"

namespace varnoth::simulation {

using divergence::Codon;

// The value that marks an estimate that could not be formed; anything at or
// above it is not applicable.
inline constexpr double kNotApplicableEstimate = 9;

// What the site-class step writes on its own hidden surface when a codon of the
// pair is a stop codon. Nobody reads it; the replicate goes on.
inline constexpr std::string_view kHiddenStopWarning =
    " Warning !, There are Stop codons in the Coding Region !";

// The site-count table of the replicates: the Universal table, with no number
// for the 0-fold share of the letter A, and with the 2S-fold share of the
// letter C of "AGC" standing in the row of "AGT" (deliberate: "AGC" has it 0).
// The class totals are those of the Universal table.
const divergence::SiteCountTable& replicate_site_counts();

// The estimators of a replicate class: 1 Jukes and Cantor, 2 Kimura.
struct ReplicateMethods {
  int ks = 2;
  int ka = 2;
};

// Buffers of the replicate estimate, sized once for the longest pair and reused.
struct ReplicateWorkspace {
  // Two rows of 3 x codons: the synonymous shares, then the nonsynonymous ones.
  std::vector<float> SimChanges;
  // The site-class step's own surface: holds the stop warning of the last
  // replicate that had a stop codon. Never shown.
  std::string hidden_surface;

  void reserve(std::size_t codons);
  std::span<float> synonymous_row(std::size_t codons);
  std::span<float> nonsynonymous_row(std::size_t codons);
};

struct ReplicateEstimate {
  double ks = kNotApplicableEstimate;  // this replicate's Ks, 9 when not applicable
  double ka = kNotApplicableEstimate;
  double share_total = 0;   // both rows of SimChanges summed before the first pass
  bool stop_codon = false;  // the hidden warning was written
  divergence::SiteClassResult classes;
  divergence::CodingEstimates estimates;
};

// The estimate of a replicate pair. Only the Universal code applies, whatever
// code the main window has; stop codons in a pathway are screened by the
// Universal stop list, which is exactly "TAA", "TAG", "TGA"; a stop codon in a
// sequence ends nothing (the walk of the pathways keeps what it reached, the
// site classes write the hidden warning and go on). No allocation once the
// workspace has reserved the pair's length.
ReplicateEstimate estimate_replicate(std::span<const Codon> codons1, std::span<const Codon> codons2,
                                     float pathway_weight, ReplicateMethods methods,
                                     ReplicateWorkspace& workspace);

// What the run asks of the next replicate and what the replicate reports back,
// with the running sum of the Ks estimates below 9.
struct BalanceState {
  double RunKsSum = 0;
  double RunKsCount = 0;
  bool WantLowKs = false;
  bool WantHighKs = false;
  bool GotLowKs = false;
  bool GotHighKs = false;
};

// The decision on a replicate whose estimate is `ks`: false when the replicate
// is refused (nothing written), true when it is kept, in which case the running
// sum has taken it (if below 9) and the caller writes its line.
bool decide_replicate(double ks, double target_ks, BalanceState& balance);

// A line of the replicate data: Ks then Ka, each as its fixed-width field reads
// back (four decimals, 8 characters).
struct ReplicateLine {
  double ks = 0;
  double ka = 0;
};

inline constexpr std::size_t kDataFieldWidth = 8;

// The field of a value: four decimals, blanks in front up to 8 characters.
void append_data_field(std::string& out, double value);
// The value as it is read back from its field.
double data_field_value(double value);
// A replicate line from the two estimates.
ReplicateLine data_line(double ks, double ka);

}  // namespace varnoth::simulation
