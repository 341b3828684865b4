// The divergence run: every pair of sequences of the loaded alignment, over the
// whole sequence, a region or sliding windows, into the report, the window
// table and the stores.
#pragma once

#include <functional>
#include <string_view>

#include "state/platform.h"
#include "state/record.h"

namespace varnoth::divergence {

struct RunSettings {
  // Threads that compute pairs; 0 means one per core. The outputs are the same
  // for every count: pairs are computed apart and written in pair order.
  int threads = 0;
  // Where set, the report and the window table are handed over here as the run
  // goes, in order and whole, and the record keeps of ReportText only what
  // Text3 shows; WindowDataText stays empty.
  std::function<void(std::string_view)> report_sink;
  std::function<void(std::string_view)> window_table_sink;
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
