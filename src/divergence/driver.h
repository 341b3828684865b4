// The divergence run: every pair of sequences of the loaded alignment, over the
// whole sequence, a region or sliding windows, into the report, the window
// table and the stores.
#pragma once

#include "state/platform.h"
#include "state/record.h"

namespace varnoth::divergence {

// The `Divergence` command. Reads the options from the menu and the record and
// leaves the report, the window table and the stores in the record.
// Returns false where the run ended with a failure message.
bool run_divergence(AnalysisRecord& rec, Platform& platform);

// The method number of the checked methods: the last checked of JC (1),
// Kimura (2), Tajima-Nei (3), Tajima-1p (4), Tajima-2p (5), Tajima-4p (6).
int method_number(const Menu& menu);

// Comparison number of pair (a, b), a < b, both from 1, of n sequences.
long comparison_index(long a, long b, long n);

}  // namespace varnoth::divergence
