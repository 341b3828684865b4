// RRtest: the relative-rate dialog. Two paired sequences and an outgroup side
// by side, with Ks and Ka of their three pairs read from the comparison run
// before. Nothing is simulated here.
//
// The arrays are filled from the one summary line the driver keeps of its last
// coding pair, so only that pair's cell holds a value and every other cell is 0;
// the labels show exactly that.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "state/menu.h"
#include "state/record.h"

namespace varnoth::simulation {

struct RRtestDialog {
  bool loaded = false;
  bool visible = false;
  Control RRtest{"Relative-Rate Test for Coding Regions"};
  Control Frame1{"Paired Sequences"};
  Control Frame2{"Outgroup Sequence"};
  ComboBox Combo1{};  // first paired sequence
  ComboBox Combo2{};  // second paired sequence
  ComboBox Combo3{};  // outgroup
  // Ks and Ka of (first, second), (first, outgroup), (second, outgroup).
  Control Label7{}, Label8{}, Label9{}, Label10{}, Label11{}, Label12{};
  // After Accept: Text1 the Ks difference, Text2 the Ka difference
  // (first-outgroup minus second-outgroup), in "0.00000".
  Control Text1{}, Text2{};
  Control Command1{"Accept"};
  Control Command2{"Cancel"};
  Control Command3{"Stop Simulations"};  // no action

  // [0..SeqCount][0..SeqCount]; row and column 0 unused.
  std::vector<std::vector<float>> PairKs, PairKa;
  int SeqCount = 0;
  int Seq1Index = 0, Seq2Index = 0, OutgroupIndex = 0;
  double KsDifference = 0, KaDifference = 0;
};

// " Sequence#" + number + ": " + the first 40 characters of the name.
std::string rrtest_item(int number, std::string_view name);

// The menu entry RelatRate: a new dialog with the arrays, the preselection of
// roles among sequences 1, 2 and 3, the combo boxes and the six labels.
RRtestDialog open_rrtest(const AnalysisRecord& rec);

// A change in any of the three combo boxes: the numbers are found from the
// boxes' texts, the labels refilled ("??" for a pair of one sequence twice).
void rrtest_selection_changed(RRtestDialog& dlg);

// Command1: the labels read back as numbers; the differences go to Text1, Text2.
void rrtest_accept(RRtestDialog& dlg);

// Command2: closes the dialog and shows the main window.
void rrtest_cancel(AnalysisRecord& rec, RRtestDialog& dlg);

}  // namespace varnoth::simulation
