// After a coding simulation: the exact probabilities of a value of Ks, Ka or
// Ka/Ks under the null distribution of the replicates, and the printing and
// saving of the report and of the distribution.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "simulation/kska_dialog.h"
#include "state/platform.h"
#include "state/record.h"

namespace varnoth::simulation {

inline constexpr std::string_view kCiFilter = "C.I.Output files (*.ci)|*.ci|All files (*.*)|*.*";
inline constexpr std::string_view kCidFilter =
    "C.I.Output files (*.ci*)|*.ci;*.cid|All files (*.*)|*.*";
// A field of the saved distribution whose estimate was not applicable.
inline constexpr std::string_view kNotApplicableField = "    N.A.";

// The replicates against a value: estimates of 8 or more are not applicable.
struct ExactCounts {
  long less = 0, greater = 0, equal = 0, not_applicable = 0;
  long infinite = 0;  // Ka/Ks only: replicates with Ks = 0 (also not applicable)
};
ExactCounts count_estimates(std::span<const ReplicateLine> lines, bool ka, double value);
ExactCounts count_ratios(std::span<const ReplicateLine> lines, double value);

// Command10 "Exact Prob. Ks", Command11 "Exact Prob. Ka", Command12 "Exact
// Prob. Ka/Ks": the answer goes to Text16.
void exact_probability_ks(KsKaDialog& dialog);
void exact_probability_ka(KsKaDialog& dialog);
void exact_probability_ratio(KsKaDialog& dialog);

// The proposed name of a saved file: the input file name up to its first "."
// with `extension` added, or "*" + `extension` without an input file.
std::string kska_default_name(std::string_view input_file_name, std::string_view extension);

// The ".ci" file and the printout: the common head, the analysis title, `report`.
std::string kska_results_text(const ClockReading& clock, std::string_view report);

// The ".cid" text: every replicate line once, in an order drawn from `random`,
// with a not-applicable estimate (above 8) as kNotApplicableField.
std::string null_distribution_text(std::span<const ReplicateLine> lines, UniformRandom& random);

// Command6 "Save Results": the report of ReportBuffer to ".ci". Cancel or a file
// error ends silently; true when written.
bool save_kska_results(const AnalysisRecord& rec, Platform& platform);
// Command5 "Print": the head and the text of Text13.
void print_kska_results(const KsKaDialog& dialog, Platform& platform);
// Command8 "Save Null Distribution": the replicates to ".cid".
bool save_null_distribution(KsKaDialog& dialog, const AnalysisRecord& rec, Platform& platform);

}  // namespace varnoth::simulation
