// The seven format readers. Each fills SeqCount, SeqLength, SeqNames and
// SeqCodons of the sequence data and the count of codon cells per sequence
// (from the last sequence read, or from sequence 1 in the interleaved layouts).
// `seq` comes in with the counts left from the previous file, which only the
// PHYLIP reader under a fixed header uses. Rows of SeqCodons may differ in
// length; the common clean-up evens them out.
#pragma once

#include "input/format_detection.h"
#include "input/input_status.h"
#include "input/line_list.h"
#include "state/record.h"

namespace varnoth::input {

InputStatus read_gde(const LineList& lines, SequenceData& seq, long& cell_count);
InputStatus read_lwl(const LineList& lines, SequenceData& seq, long& cell_count);
InputStatus read_pir(const LineList& lines, SequenceData& seq, long& cell_count);
InputStatus read_mega(const LineList& lines, SequenceData& seq, long& cell_count);
InputStatus read_clustal(const LineList& lines, SequenceData& seq, long& cell_count);
InputStatus read_msf(const LineList& lines, SequenceData& seq, long& cell_count);
// `free_header`: counts from line 1; else those already in `seq`.
InputStatus read_phylip(const LineList& lines, bool free_header, SequenceData& seq,
                        long& cell_count);

// Aligned FASTA; sequences of unequal length give UnequalLengths.
InputStatus read_fasta(const LineList& lines, SequenceData& seq, long& cell_count);

// Runs the reader of `format`, then sets PairCount.
InputStatus read_alignment(InputFormat format, const LineList& lines, SequenceData& seq,
                           long& cell_count);

// Shared by the readers: empties SeqNames and SeqCodons before a reading pass.
void start_sequences(SequenceData& seq);
// Lines from line 1 up to end of file or the first empty or all-blank line.
long count_lines_to_blank(const LineList& lines);

}  // namespace varnoth::input
