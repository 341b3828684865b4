#include "input/readers.h"

namespace varnoth::input {

void start_sequences(SequenceData& seq) {
  seq.SeqNames.clear();
  seq.SeqCodons.clear();
}

long count_lines_to_blank(const LineList& lines) {
  long count = 0;
  while (count < lines.size() && !is_blank_line(lines[count])) ++count;
  return count;
}

InputStatus read_alignment(InputFormat format, const LineList& lines, SequenceData& seq,
                           long& cell_count) {
  cell_count = 0;
  InputStatus status;
  switch (format) {
    case InputFormat::Gde: status = read_gde(lines, seq, cell_count); break;
    case InputFormat::Lwl: status = read_lwl(lines, seq, cell_count); break;
    case InputFormat::Pir: status = read_pir(lines, seq, cell_count); break;
    case InputFormat::Mega: status = read_mega(lines, seq, cell_count); break;
    case InputFormat::Clustal: status = read_clustal(lines, seq, cell_count); break;
    case InputFormat::Msf: status = read_msf(lines, seq, cell_count); break;
    case InputFormat::PhylipFree: status = read_phylip(lines, true, seq, cell_count); break;
    case InputFormat::PhylipFixed: status = read_phylip(lines, false, seq, cell_count); break;
    case InputFormat::Fasta: status = read_fasta(lines, seq, cell_count); break;
    case InputFormat::None: return input_failure(InputProblem::FormatError);
  }
  seq.PairCount = seq.SeqCount * (seq.SeqCount - 1) / 2;
  return status;
}

}  // namespace varnoth::input
