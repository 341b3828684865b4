// PHYLIP: a header line of counts, then 10-column names; one line a sequence
// (sequential) or blocks separated by one line (interleaved).
#include <cmath>

#include "input/codon_cutting.h"
#include "input/readers.h"
#include "text/number_reading.h"

namespace varnoth::input {

namespace {

constexpr long kNameColumns = 10;

void read_free_header(std::string_view line, SequenceData& seq) {
  size_t start = line.find_first_not_of(' ');
  if (start == line.npos) start = line.size();
  size_t end = line.find(' ', start);
  if (end == line.npos) end = line.size();
  seq.SeqCount = text::read_number(line.substr(start, end - start));
  seq.SeqLength = text::read_number(line.substr(end));
}

}  // namespace

InputStatus read_phylip(const LineList& lines, bool free_header, SequenceData& seq,
                        long& cell_count) {
  if (free_header) {
    read_free_header(lines[0], seq);
  } else if (seq.SeqCount <= 0 || seq.SeqLength <= 0) {
    // A fixed header reads no counts and none are left from a previous file.
    return input_failure(InputProblem::FormatError);
  }
  LinePass pass(lines);
  std::string_view line;
  if (!pass.skip(1) || !pass.next(line)) return pass.failure();
  const double length = static_cast<double>(line.size());
  const bool sequential = length == seq.SeqLength + 10 || length == seq.SeqLength + 11;

  start_sequences(seq);
  const double room = cell_room(seq.SeqLength);
  const long long count = whole_count(seq.SeqCount);
  LinePass data(lines);
  data.skip(1);

  if (sequential) {
    for (long long i = 1; i <= count; ++i) {
      if (!data.next(line)) return data.failure();
      seq.SeqNames.emplace_back(columns(line, 1, kNameColumns));
      CodonCutter cutter(seq.SeqCodons.emplace_back(), room);
      if (!cutter.add(columns(line, kNameColumns + 1)) || !cutter.finish())
        return input_failure(InputProblem::BeyondRoom, data.line_number());
      cell_count = static_cast<long>(seq.SeqCodons.back().size());
    }
    return {};
  }

  // Interleaved: block 1 names the sequences; every line of every block has
  // its data from column 11, so later blocks keep a 10-column margin.
  std::vector<CodonCutter> cutters;
  long width = 0;
  for (long long i = 1; i <= count; ++i) {
    if (!data.next(line)) return data.failure();
    seq.SeqNames.emplace_back(columns(line, 1, kNameColumns));
    seq.SeqCodons.emplace_back();
    width = count_letters(columns(line, kNameColumns + 1));
  }
  if (seq.SeqCodons.empty()) return {};  // no sequences: left to the count checks
  if (width == 0) return input_failure(InputProblem::NoSequenceLines, data.line_number());
  cutters.reserve(seq.SeqCodons.size());
  for (auto& cells : seq.SeqCodons) cutters.emplace_back(cells, room);
  LinePass blocks_pass(lines);
  blocks_pass.skip(1);
  const double blocks = 1 + std::floor((seq.SeqLength - 1) / static_cast<double>(width));
  for (long long b = 1; static_cast<double>(b) <= blocks; ++b) {
    if (b > 1 && !blocks_pass.skip(1)) return blocks_pass.failure();
    for (auto& cutter : cutters) {
      if (!blocks_pass.next(line)) return blocks_pass.failure();
      if (!cutter.add(columns(line, kNameColumns + 1)))
        return input_failure(InputProblem::BeyondRoom, blocks_pass.line_number());
    }
  }
  for (auto& cutter : cutters)
    if (!cutter.finish()) return input_failure(InputProblem::BeyondRoom, blocks_pass.line_number());
  cell_count = static_cast<long>(seq.SeqCodons[0].size());
  return {};
}

}  // namespace varnoth::input
