// The dialog `KsKaCI1`: the parameters of a coding-region simulation (confidence
// intervals of Ks and Ka, and the test of Ka/Ks), its commands, and the state a
// run leaves in it. The controls are plain data named as the dialog names them;
// the desktop program mirrors them into widgets.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulation/kska_replicate.h"
#include "simulation/random.h"
#include "state/menu.h"
#include "state/record.h"

namespace varnoth::simulation {

inline constexpr std::string_view kSimulationParametersTitle = "  SIMULATION PARAMETERS  ";

// What the coding simulation keeps between openings of its dialog and between
// runs, for the life of the program.
struct KsKaSession {
  // The last scan: its keys (the substitutions as typed, codons, G+C and the
  // TRS/TRV of each class) and the tuned substitution counts.
  double ScanKeySyn = 0;
  double ScanKeyNonsyn = 0;
  double ScanResultSyn = 0;
  double ScanResultNonsyn = 0;
  double ScanKeyCodons = 0;
  double ScanKeyGC = 0;
  double ScanKeySynRatio = 0;
  double ScanKeyNonsynRatio = 0;
  // Number of analyzed codons of the last run (0: not set yet).
  double SimCodons = 0;
  // The pair chosen in the combo boxes, sequences counted from 1 (0: none yet,
  // the last pair of the run is meant).
  long Seq1Index = 0;
  long Seq2Index = 0;
};

// The dialog. A default-constructed one is the unloaded dialog in its design
// state; open_kska_dialog() loads it.
struct KsKaDialog {
  bool loaded = false;
  int KaEqualsKsMode = 0;  // 1: opened from "Test Ka/Ks >1"

  Control KsKaCI1{"Confidence Intervals for Coding Regions"};
  // Tab 0: parameters; tab 1: results (brought forward when a run ends).
  Control SSTab1{"Confidence Intervals of Divergence Estimates: Coding Region"};
  Control ResultsTab{"Simulation Results", false};
  int SSTab1Page = 0;

  Control Label1{"Synonymous Substitutions / Syn.Site"};
  Control Text1{};  // Ks
  Control Label2{"S.E.S."};
  Control Text2{};  // synonymous sites
  Control Label3{"Nonsynonymous Substitutions/Nonsyn.Site"};
  Control Text3{};  // Ka
  Control Label4{"N.E.S."};
  Control Text4{};  // nonsynonymous sites
  Control Label5{"Number Analyzed Codons"};
  Control Text5{};
  Control Label6{"G+C 3rd pos. (%)"};
  Control Text6{};
  Control Label7{"Number of Replicates"};
  Control Text7{"1000"};
  Control Label8{"Transition : Transversion Ratio"};
  Control Label9{"Syn. Substitutions"};
  Control Text8{"1"};  // synonymous TRS
  Control Text9{"1"};  // synonymous TRV
  Control Label10{"Transition : Transversion Ratio"};
  Control Label11{"Nonsyn. Substitutions"};
  Control Text10{"1"};  // nonsynonymous TRS
  Control Text11{"1"};  // nonsynonymous TRV
  // Shown when the estimate of the class fell back to Jukes and Cantor.
  Control LabelKsJC{"J&C", false};
  Control LabelKaJC{"J&C", false};

  Control Check1{"Random"};  // synonymous
  Control Check2{"Random"};  // nonsynonymous
  Control Check3{"Poisson-distributed number of substitutions", true, true, true};
  Control Check4{"Scan for the optimal input divergence", true, true, true};

  ComboBox Combo1{{}, {}, false, true};
  ComboBox Combo2{{}, {}, false, true};

  Control Command1{"Accept"};
  Control Command2{"Reset"};
  Control Command3{"Cancel"};
  Control Command4{"Stop Simulation", false};
  Control Command5{"Print", false};
  Control Command6{"Save Results", false};
  Control Command7{"Close"};
  Control Command8{"Save Null Distribution", false};
  Control Command9{"Close", false};  // results page
  Control Command10{"Exact Prob. Ks", false};
  Control Command11{"Exact Prob. Ka", false};
  Control Command12{"Exact Prob. Ka/Ks", false};

  Control Text12{"", false};  // progress
  Control Text13{"", false};  // the report of the run
  Control Label14{"Value:", false};
  Control Text14{"", false};  // value for Ks
  Control Label15{"Value:", false};
  Control Text15{"", false};  // value for Ka
  Control Label18{"Value:", false};
  Control Text18{"", false};  // value for Ka/Ks
  Control Text16{"", false};  // the answer

  // A ratio that could not be formed from the estimates (a rate of 0).
  bool SynRatioUndefined = false;
  bool NonsynRatioUndefined = false;

  // Set by Stop Simulation; the run acts on it at the top of its next replicate.
  bool stop_requested = false;
  // A seed of the user's: the run is then reproducible bit for bit, and the
  // clock is never read for seeding.
  std::optional<std::uint64_t> seed;

  // What a finished run leaves: the replicate data (its first line, the count,
  // is null_distribution.size()), the Ks target and the generator, which goes
  // on to order the saved null distribution.
  std::vector<ReplicateLine> null_distribution;
  bool results_ready = false;
  double SimKsTarget = 0;
  UniformRandom random;
};

// The ratio of a class from its transition rate P and transversion rate Q.
struct RatioFields {
  bool defined = false;  // false when P / 2 or Q / 4 is 0: the fields are left alone
  double trs = 1;
  double trv = 1;
};
RatioFields ratio_from_rates(double p, double q);

// The menu entries "C.I. for Ks and Ka" (mode 0) and "Test Ka/Ks >1" (mode 1):
// hide the main window, unload any earlier dialog, load and fill a new one.
void open_kska_dialog(KsKaDialog& dialog, AnalysisRecord& rec, KsKaSession& session, int mode);

// Combo1 / Combo2: the pair (a, b), sequences from 1, is chosen. Its stored row
// of the pair table is copied into the values handed on by the last comparison,
// and the fields are filled from it as at opening. An equal pair is ignored.
void choose_pair(KsKaDialog& dialog, AnalysisRecord& rec, KsKaSession& session, long a, long b);

// Check1 / Check2 clicked to `on`.
void set_synonymous_random(KsKaDialog& dialog, const AnalysisRecord& rec, bool on);
void set_nonsynonymous_random(KsKaDialog& dialog, const AnalysisRecord& rec, bool on);

// Command2 "Reset".
void reset_kska_dialog(KsKaDialog& dialog);
// Command3 "Cancel": main menus back, dialog unloaded, main window shown.
void cancel_kska_dialog(KsKaDialog& dialog, AnalysisRecord& rec);
// Command4 "Stop Simulation": the run stops at its next replicate, and its data
// are dropped.
void stop_simulation(KsKaDialog& dialog);
// Command7 "Close": dialog unloaded, main window shown; the menus stay.
void close_kska_dialog(KsKaDialog& dialog, AnalysisRecord& rec);
// Command9 "Close" of the results page: as Command7, with AnalysisOptions
// enabled again and the run's data dropped.
void close_kska_results(KsKaDialog& dialog, AnalysisRecord& rec);

}  // namespace varnoth::simulation
