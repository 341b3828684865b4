// LWL (91) / Text: the length in columns 1-6 of line 1; records of a header and
// 60 letters a line.
#include <cmath>

#include "input/codon_cutting.h"
#include "input/readers.h"
#include "text/number_reading.h"

namespace varnoth::input {

namespace {

// From column 2, the first letter behind a blank, then from the next column the
// second such place; the name runs from there to the end of the line.
std::string_view lwl_name(std::string_view header) {
  size_t found = 0;
  for (size_t j = 1; j < header.size(); ++j) {
    if (!is_blank(header[j]) && is_blank(header[j - 1]) && ++found == 2) return header.substr(j);
  }
  return {};
}

}  // namespace

InputStatus read_lwl(const LineList& lines, SequenceData& seq, long& cell_count) {
  seq.SeqLength = text::read_number(columns(lines[0], 1, 6));
  const double per_record = 2 + std::floor((seq.SeqLength - 1) / 60);

  // Unrounded on purpose: a count that doesn't divide leaves a fractional
  // SeqCount, shown as such; the loops run to its whole part.
  seq.SeqCount = static_cast<double>(count_lines_to_blank(lines)) / per_record;

  start_sequences(seq);
  const double room = cell_room(seq.SeqLength);
  const long long data_lines = whole_count(per_record - 1);
  LinePass pass(lines);
  std::string_view line;
  double letters = 0;
  for (long long i = 1; i <= whole_count(seq.SeqCount); ++i) {
    if (!pass.next(line)) return pass.failure();
    seq.SeqNames.emplace_back(lwl_name(line));
    CodonCutter cutter(seq.SeqCodons.emplace_back(), room);
    letters = 0;
    for (long long k = 1; k <= data_lines; ++k) {
      if (!pass.next(line)) return pass.failure();
      if (!cutter.add(line)) return input_failure(InputProblem::BeyondRoom, pass.line_number());
      // Carried letters count again on the next line; the overcount is deliberate.
      letters += static_cast<double>(cutter.last_line_letters());
    }
    if (!cutter.finish()) return input_failure(InputProblem::BeyondRoom, pass.line_number());
    cell_count = static_cast<long>(seq.SeqCodons.back().size());
  }
  seq.SeqLength = letters;
  return {};
}

}  // namespace varnoth::input
