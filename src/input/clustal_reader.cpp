// CLUSTAL: blocks of "name   letters [number]" lines, each block followed by
// a conservation line and an empty line.
#include <string>

#include "input/codon_cutting.h"
#include "input/readers.h"

namespace varnoth::input {

namespace {

// Letters from column `column` up to the first blank: a number at the line's
// end is left out.
std::string_view letters_from(std::string_view line, long column) {
  std::string_view rest = columns(line, column);
  return rest.substr(0, rest.find(' '));
}

// The first non-blank behind the first blank; behind the end of the line when
// there is none.
long sequence_column(std::string_view line) {
  size_t blank = line.find(' ');
  if (blank == line.npos) return static_cast<long>(line.size()) + 1;
  size_t letter = line.find_first_not_of(' ', blank);
  if (letter == line.npos) return static_cast<long>(line.size()) + 1;
  return static_cast<long>(letter) + 1;
}

}  // namespace

InputStatus read_clustal(const LineList& lines, SequenceData& seq, long& cell_count) {
  // Line 1 and the blank lines behind it are skipped on every pass.
  long head = 1;
  while (head < lines.size() && is_blank_line(lines[head])) ++head;

  // Block 1: sequences, the sequence column S and the block width W.
  LinePass block(lines);
  block.skip(head);
  std::string_view line;
  long sequences = 0, column = 0, width = 0;
  while (block.next(line)) {
    if (line.size() <= 14 || is_blank_line(columns(line, 1, 10))) break;
    ++sequences;
    column = sequence_column(line);
    width = static_cast<long>(letters_from(line, column).size());
  }
  seq.SeqCount = static_cast<double>(sequences);

  // The whole file: lines with a name, and the width of the last one.
  long named = 0, last_width = 0;
  for (long i = head; i < lines.size(); ++i) {
    if (!has_letter(columns(lines[i], 1, 10))) continue;
    ++named;
    last_width = static_cast<long>(letters_from(lines[i], column).size());
  }
  if (sequences == 0) return input_failure(InputProblem::NoSequenceLines, head + 1);
  const double blocks = static_cast<double>(named) / static_cast<double>(sequences);
  seq.SeqLength = (blocks - 1) * static_cast<double>(width) + static_cast<double>(last_width);

  start_sequences(seq);
  seq.SeqNames.resize(static_cast<size_t>(sequences));
  const double room = cell_room(seq.SeqLength);
  std::vector<CodonCutter> cutters;
  cutters.reserve(static_cast<size_t>(sequences));
  seq.SeqCodons.resize(static_cast<size_t>(sequences));
  for (auto& cells : seq.SeqCodons) cutters.emplace_back(cells, room);

  LinePass pass(lines);
  pass.skip(head);
  for (long long b = 1; static_cast<double>(b) <= blocks; ++b) {
    // Between blocks: the conservation line and the empty line.
    if (b > 1 && !pass.skip(2)) return pass.failure();
    for (long i = 0; i < sequences; ++i) {
      if (!pass.next(line)) return pass.failure();
      seq.SeqNames[static_cast<size_t>(i)] = columns(line, 1, column - 1);
      if (!cutters[static_cast<size_t>(i)].add(letters_from(line, column)))
        return input_failure(InputProblem::BeyondRoom, pass.line_number());
    }
  }
  const long carry = cutters[0].carry_length();
  for (auto& cutter : cutters)
    if (!cutter.finish()) return input_failure(InputProblem::BeyondRoom, pass.line_number());

  // The length from sequence 1's cells and carry.
  cell_count = static_cast<long>(seq.SeqCodons[0].size());
  seq.SeqLength = carry == 0 ? 3.0 * cell_count : carry + 3.0 * (cell_count - 1);
  return {};
}

}  // namespace varnoth::input
