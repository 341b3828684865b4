// GDE: records of a "#name" header line and a fixed number of sequence lines.
#include <cmath>

#include "input/codon_cutting.h"
#include "input/readers.h"

namespace varnoth::input {

InputStatus read_gde(const LineList& lines, SequenceData& seq, long& cell_count) {
  // Pass 1: the first record's lines and letters, up to the next header. A file
  // of one sequence has no next header and runs off its end.
  LinePass first(lines);
  std::string_view line;
  first.skip(1);
  long record_lines = 0;
  double letters = 0;
  for (;;) {
    if (!first.next(line)) return first.failure();
    if (!line.empty() && line[0] == '#') break;
    ++record_lines;
    letters += static_cast<double>(count_letters(line));
  }
  seq.SeqLength = letters;
  const long per_record = record_lines + 1;

  // Pass 2: whole records up to the first empty or blank line.
  seq.SeqCount = std::floor(static_cast<double>(count_lines_to_blank(lines)) /
                            static_cast<double>(per_record));

  // Pass 3: names and sequences.
  start_sequences(seq);
  const double room = cell_room(seq.SeqLength);
  LinePass pass(lines);
  for (long long i = 1; i <= whole_count(seq.SeqCount); ++i) {
    if (!pass.next(line)) return pass.failure();
    seq.SeqNames.emplace_back(columns(line, 2));
    CodonCutter cutter(seq.SeqCodons.emplace_back(), room);
    for (long k = 1; k < per_record; ++k) {
      if (!pass.next(line)) return pass.failure();
      if (!cutter.add(line)) return input_failure(InputProblem::BeyondRoom, pass.line_number());
    }
    if (!cutter.finish()) return input_failure(InputProblem::BeyondRoom, pass.line_number());
    cell_count = static_cast<long>(seq.SeqCodons.back().size());
  }
  return {};
}

}  // namespace varnoth::input
