// The divergence run: every pair of sequences of the loaded alignment, over the
// whole sequence, a region or sliding windows, into the report, the window
// table and the stores.
#pragma once

#include <functional>
#include <string_view>

#include "divergence/coding_estimators.h"
#include "divergence/noncoding_estimators.h"
#include "divergence/parallel.h"
#include "divergence/site_classes.h"
#include "state/platform.h"
#include "state/record.h"

namespace varnoth::divergence {

// One comparison (or window) as the report has just written it, for tables of
// per-pair values. The estimates are the pair's own after the carry from the
// pair before, as the report prints them.
struct PairValues {
  long comparison = 0;         // comparison number, from 1
  long a = 0, b = 0;           // sequence numbers, from 1
  long window = 0;             // window number, from 1; 0 outside window runs
  double first = 0, last = 0;  // nucleotides: the window, the region or 1..SeqLength
  long analyzed = 0;           // analyzed positions: sites, or 3 x codons compared
  bool coding = false;
  bool empty = false;  // no site or codon: the report's lone "NO APPLICABLE"
  NoncodingEstimates noncoding;            // noncoding runs
  NoncodingNotApplicable noncoding_na;     // noncoding runs
  CodingEstimates estimates;               // coding runs
  ClassValues sites{};                     // coding: sites of 0-fold, 2S, 2V, 4-fold
  float third_gc = 0;                      // coding: G+C of third positions
};

struct RunSettings {
  // Threads that compute pairs; 0 means one per core. The outputs are the same
  // for every count: pairs are computed apart and written in pair order.
  int threads = 0;
  // Where set, the pairs are computed on these threads instead, and `threads`
  // is not read: a caller can start them before it reads the alignment. A run
  // that gets to the end of its pairs retires them (a context for one run).
  const ParallelContext* parallel = nullptr;
  // Where set, the report and the window table are handed over here as the run
  // goes, in order and whole, and the record keeps of ReportText only what
  // Text3 shows; WindowDataText stays empty.
  std::function<void(std::string_view)> report_sink;
  std::function<void(std::string_view)> window_table_sink;
  // Where set, called in pair (and window) order after each comparison or
  // window is written, on the thread that called run_divergence.
  std::function<void(const PairValues&)> pair_sink;
  // False where nothing will read ComparisonStore and PairStore after the run
  // (no matrix, no heat map, no simulation): they are left with row 0 only,
  // which saves most of a large run's memory.
  bool keep_stores = true;
};

// The `Divergence` command. Reads the options from the menu and the record and
// leaves the report, the window table and the stores in the record.
// Returns false where the run ended with a failure message.
bool run_divergence(AnalysisRecord& rec, Platform& platform, const RunSettings& settings = {});

// The method number of the checked methods: the last checked of JC (1),
// Kimura (2), Tajima-Nei (3), Tajima-1p (4), Tajima-2p (5), Tajima-4p (6).
int method_number(const Menu& menu);

// Comparison number of pair (a, b), a < b, both from 1, of n sequences.
long comparison_index(long a, long b, long n);

}  // namespace varnoth::divergence
