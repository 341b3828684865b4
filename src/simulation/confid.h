// Confid: confidence intervals of a noncoding (or single-class) divergence
// estimate by Monte Carlo simulation. Pairs of random sequences evolve with a
// Poisson-distributed number of substitutions, each replicate is re-estimated
// with the engine's noncoding estimators, and the report shows the mean, the
// failed replicates and the percentile intervals of the chosen method.
//
// The dialog is plain data (controls named as the window names them); the
// desktop program mirrors it into widgets and calls the handlers below.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "divergence/noncoding_estimators.h"
#include "simulation/kska_dialog.h"  // ratio_from_rates, kSimulationParametersTitle
#include "simulation/random.h"
#include "state/menu.h"
#include "state/platform.h"
#include "state/record.h"

namespace varnoth::simulation {

inline constexpr std::string_view kConfidReportFilter =
    "C.I.Output files (*.ci)|*.ci|All files (*.*)|*.*";
inline constexpr std::string_view kConfidNullFilter =
    "C.I.Output files (*.ci*)|*.ci;*.cid|All files (*.*)|*.*";

// One cell of the null table: an estimate, or "N.A.".
struct ConfidNullCell {
  double value = 0;
  bool not_applicable = false;
};

struct ConfidDialog {
  bool loaded = false;
  bool visible = false;

  // Parameters.
  Control Text1{"0.0000"};          // divergence
  Control Text2{""};                // sites
  Control Text3{"70"};              // G+C in percent
  Control Text4{"1000"};            // replicates
  Control Text5{"1", true, false};  // TRS part of the ratio
  Control Text6{"1", true, false};  // TRV part of the ratio
  Control Text7{""};                // the report
  Control Text8{""};                // progress
  Control Text9{""};                // value for the exact probabilities
  Control Text10{""};               // their answer
  Control Label1{"M.-Hits Correcting Method: "};
  Control Label2{"Number of Sites"};
  Control Label3{"Value:"};
  Control Label4{"Number of Sites"};
  Control ToggleButton1{"Ks", false};
  Control ToggleButton2{"Ka", false};
  Control ToggleButton3{"", false};
  Control ToggleButton4{"", false};
  Control OptionButton2{"Random Nuclotide Substitution", true, true, true};
  Control OptionButton3{"TRS:TRV Substitution Ratioi"};
  Control Check4{"Scan for the optimal divergence", true, true, true};

  Control Command1{"Accept"};
  Control Command2{"Reset"};
  Control Command3{"Cancel"};
  Control Command4{"Print", false};
  Control Command5{"Save Results", false};
  Control Command6{"Close", false};
  Control Command7{"Stop Simulation", false};
  Control Command8{"Save Null Distribution", false};
  Control Command9{"Close", false};
  Control Command10{"Exact Prob.", false};

  // Set by the Stop button (the desktop program sets it while the run yields).
  bool stop_requested = false;
  // A seed of the user's: the run repeats bit for bit. Unset: seeded from the clock.
  std::optional<std::uint64_t> seed;

  // What the last run used and left.
  double SimDivergence = 0;
  double SimGC = 0;
  long SimReplicates = 0;
  int SimMethod = 1;     // 1 JC, 2 Kimura-2p, 3 Tajima & Nei, 4 T-1p, 5 T-2p, 6 T-4p
  long PoissonMean = 0;  // M of the main run, after any scan
  // [method - 1][replicate - 1]
  std::array<std::vector<ConfidNullCell>, 6> SimNullTable;
};

// The main window's menu entry: hides the main window and opens the dialog
// with its defaults from the last run (coding: Ks/Ka toggles; noncoding: K).
ConfidDialog open_confid(AnalysisRecord& rec);
// ToggleButton1 (Ks, ka = false) or ToggleButton2 (Ka, ka = true).
void confid_toggle(const AnalysisRecord& rec, ConfidDialog& dlg, bool ka);
// OptionButton2 (random) and OptionButton3 (ratio).
void confid_choose_random(ConfidDialog& dlg);
void confid_choose_ratio(ConfidDialog& dlg);
// Command2.
void confid_reset(ConfidDialog& dlg);
// Command3 (Cancel), Command6 and Command9 (Close): the dialog goes, the main
// window comes back.
void confid_close(AnalysisRecord& rec, ConfidDialog& dlg);

enum class ConfidOutcome { Refused, Stopped, Finished };

// Command1 "Accept": checks the parameters, runs the simulation (with the
// scan first when Check4 is on) and writes the report in Text7. Yields once
// per replicate and ends when `stop_requested` is found set; a stopped run
// closes the dialog.
ConfidOutcome confid_accept(AnalysisRecord& rec, ConfidDialog& dlg, Platform& platform);

// Command10: exact probabilities for the value in Text9.
void confid_exact_probability(ConfidDialog& dlg);

// Command5: the report to ".ci". Command8: the null distribution to ".cid".
// Cancel or a file error ends silently; true when the file was written.
bool confid_save_report(const AnalysisRecord& rec, const ConfidDialog& dlg, Platform& platform);
bool confid_save_null_distribution(const ConfidDialog& dlg, Platform& platform);
// Command4: head and report to the printer.
void confid_print(const ConfidDialog& dlg, Platform& platform);

// The texts of the saved files.
std::string confid_report_file_text(const ClockReading& clock, std::string_view report);
std::string confid_null_file_text(const ClockReading& clock, const ConfidDialog& dlg);

// ---- The pieces of the run, for the run itself and for tests. ----

// Cumulative Poisson table over k = 0 .. 5M for the mean `m`.
void confid_poisson_table(long m, std::vector<double>& table);
// The k with table(k-1) <= v < table(k); the last k when v is beyond them all.
long confid_poisson_draw(std::span<const double> table, double v);

// One substitution on one cell with the second draw `w`: the four letter tests
// run one after the other on the same cell (codes of NucleotidePairTable).
std::uint8_t confid_substitute(std::uint8_t base, double w, double a, double gc);

struct ConfidReplicateSettings {
  long sites = 0;
  double gc = 0;
  bool random_substitution = true;
  double trs = 1, trv = 1;
};

// Reused between replicates: the two sequences as base codes.
struct ConfidBuffers {
  std::vector<std::uint8_t> seq1, seq2;
};

struct ConfidReplicate {
  divergence::NucleotidePairTable table;
  long substitutions = 0;
  double a = 0, b = 0, c = 0;
};

// Draws in this order: one per site for the ancestor, one for the number of
// substitutions, three for the class probabilities, then a site draw and a
// band draw per substitution (the second sequence's share first).
// Built for UniformRandom (the run) and ConfidScriptedDraws (checks).
template <class Draws>
ConfidReplicate confid_replicate(const ConfidReplicateSettings& settings,
                                 std::span<const double> poisson, Draws& draws,
                                 ConfidBuffers& buffers);

// A generator that returns scripted numbers in order (tests and checks).
class ConfidScriptedDraws {
 public:
  explicit ConfidScriptedDraws(std::vector<double> values) : values_(std::move(values)) {}
  double uniform() { return next_ < values_.size() ? values_[next_++] : 0.0; }
  std::size_t used() const { return next_; }

 private:
  std::vector<double> values_;
  std::size_t next_ = 0;
};

// The percentile lists, cell 0 unused: the low list ascending (start 9999),
// the high list descending (start -1). Walk from cell 1 to the first cell the
// estimate does not pass, shift the rest down dropping the last, store.
void confid_insert_low(std::span<float> cells, double estimate);
void confid_insert_high(std::span<float> cells, double estimate);

}  // namespace varnoth::simulation
