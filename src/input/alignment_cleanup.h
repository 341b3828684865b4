// The common step after every reader: identity dots, the count checks, and the
// clean codon and site arrays by complete deletion.
#pragma once

#include "input/input_status.h"
#include "state/record.h"

namespace varnoth::input {

// Resolves dots, evens every row of SeqCodons out to `cell_count` cells (blank
// cells where a sequence is short), checks SeqCount, SeqLength and the cells
// (FormatError when any is 0 or less) and builds CleanCodons and CleanSites
// with CodonCount, NucleotideCount, CleanCodonTotal, CodonCellCount,
// SeqCountCopy and PairCount. Sets SequenceLoaded to 1 on success.
InputStatus clean_alignment(SequenceData& seq, long cell_count);

}  // namespace varnoth::input
