// MSF/PILEUP: a header closed by "//", then blocks of "name  letters in groups"
// lines, each block preceded by an empty line and a numbering line.
#include <string>

#include "input/codon_cutting.h"
#include "input/readers.h"

namespace varnoth::input {

namespace {

// Goes to the line behind "//" and skips the `skip` lines that precede the data.
bool to_data(LinePass& pass, long skip) {
  std::string_view line;
  do {
    if (!pass.next(line)) return false;
  } while (line.substr(0, 2) != "//");
  return pass.skip(skip);
}

// Lines to skip between "//" and the data, judged by the sum of the character
// codes of their first 20 columns against 32 (a blank) a column.
bool lines_before_data(LinePass& pass, long& skip) {
  std::string_view line;
  skip = 0;
  for (;;) {
    if (!pass.next(line)) return false;
    size_t n = line.size() < 20 ? line.size() : 20;
    long sum = 0;
    for (size_t j = 0; j < n; ++j) sum += static_cast<unsigned char>(line[j]);
    long above = sum - 32 * static_cast<long>(n);
    if (above == 0) {  // empty or all blank
      ++skip;
    } else if (above == 17) {  // a single "1": the numbering line
      ++skip;
      return true;
    } else if (above > 56) {  // data
      return true;
    }
  }
}

// From column 25 down to 2, the lowest column holding a non-blank behind a
// blank, less 1.
long name_width(std::string_view line) {
  long width = 0;
  for (long j = 25; j >= 2; --j) {
    if (j > static_cast<long>(line.size())) continue;
    if (!is_blank(line[static_cast<size_t>(j - 1)]) && is_blank(line[static_cast<size_t>(j - 2)]))
      width = j - 1;
  }
  return width;
}

}  // namespace

InputStatus read_msf(const LineList& lines, SequenceData& seq, long& cell_count) {
  LinePass head(lines);
  long skip = 0;
  if (!to_data(head, 0) || !lines_before_data(head, skip)) return head.failure();

  // The name width from the first data line, then block 1.
  LinePass block(lines);
  std::string_view line;
  if (!to_data(block, skip) || !block.next(line)) return block.failure();
  const long first_data = block.line_number();
  const long width = name_width(line);
  long sequences = 0, letters = 0;
  do {
    if (line.empty() || !has_letter(columns(line, 1, width))) break;
    ++sequences;
    letters = count_letters(columns(line, width + 1));
  } while (block.next(line));
  seq.SeqCount = static_cast<double>(sequences);

  long named = 0;
  for (long i = first_data - 1; i < lines.size(); ++i)
    if (has_letter(columns(lines[i], 1, width))) ++named;
  if (sequences == 0) return input_failure(InputProblem::NoSequenceLines, first_data);
  const double blocks = static_cast<double>(named) / static_cast<double>(sequences);
  seq.SeqLength = blocks * static_cast<double>(letters);

  start_sequences(seq);
  seq.SeqNames.resize(static_cast<size_t>(sequences));
  const double room = cell_room(seq.SeqLength);
  seq.SeqCodons.resize(static_cast<size_t>(sequences));
  std::vector<CodonCutter> cutters;
  cutters.reserve(static_cast<size_t>(sequences));
  for (auto& cells : seq.SeqCodons) cutters.emplace_back(cells, room);

  LinePass pass(lines);
  if (!to_data(pass, skip)) return pass.failure();
  for (long long b = 1; static_cast<double>(b) <= blocks; ++b) {
    if (b > 1 && !pass.skip(2)) return pass.failure();  // empty line and numbering line
    for (long i = 0; i < sequences; ++i) {
      if (!pass.next(line)) return pass.failure();
      seq.SeqNames[static_cast<size_t>(i)] = columns(line, 1, width);
      // A line no longer than the name field is taken as data in full.
      std::string_view data =
          static_cast<long>(line.size()) <= width ? line : columns(line, width + 1);
      if (!cutters[static_cast<size_t>(i)].add(data))
        return input_failure(InputProblem::BeyondRoom, pass.line_number());
    }
  }
  const long carry = cutters[0].carry_length();
  for (auto& cutter : cutters)
    if (!cutter.finish()) return input_failure(InputProblem::BeyondRoom, pass.line_number());
  cell_count = static_cast<long>(seq.SeqCodons[0].size());
  seq.SeqLength = carry == 0 ? 3.0 * cell_count : carry + 3.0 * (cell_count - 1);
  return {};
}

}  // namespace varnoth::input
