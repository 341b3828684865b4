// NBRF/PIR: records of a ">DL;code" header, a title line and sequence lines
// closed by "*". Records follow each other with no empty line between them.
#include <cmath>

#include "input/codon_cutting.h"
#include "input/readers.h"

namespace varnoth::input {

InputStatus read_pir(const LineList& lines, SequenceData& seq, long& cell_count) {
  // Pass 1: the first record's sequence lines and letters, up to the "*".
  LinePass first(lines);
  std::string_view line;
  if (!first.skip(2)) return first.failure();
  long record_lines = 0;
  double letters = 0;
  for (;;) {
    if (!first.next(line)) return first.failure();
    if (line.empty()) break;
    ++record_lines;
    size_t star = line.find('*');
    std::string_view counted = star == line.npos ? line : line.substr(0, star + 1);
    letters += static_cast<double>(count_letters(counted));
    if (star != line.npos) break;
  }
  seq.SeqLength = letters - 1;
  const long per_record = record_lines + 2;

  // Pass 2: a header counts with the two lines behind it, whatever they hold.
  LinePass counting(lines);
  long count = 0;
  while (!counting.at_end()) {
    counting.next(line);
    if (!line.empty() && line[0] == '>') {
      if (!counting.skip(2)) return counting.failure();
      count += 3;
    } else if (is_blank_line(line)) {
      break;
    } else {
      ++count;
    }
  }
  seq.SeqCount = std::floor(static_cast<double>(count) / static_cast<double>(per_record));

  // Pass 3: name = code + " " + title, cut to 50 characters.
  start_sequences(seq);
  const double room = cell_room(seq.SeqLength);
  LinePass pass(lines);
  std::string_view title;
  for (long long i = 1; i <= whole_count(seq.SeqCount); ++i) {
    if (!pass.next(line) || !pass.next(title)) return pass.failure();
    std::string name(columns(line, 5));
    name += ' ';
    name += title;
    if (name.size() > 50) name.resize(50);
    seq.SeqNames.push_back(std::move(name));
    CodonCutter cutter(seq.SeqCodons.emplace_back(), room);
    for (long k = 1; k <= per_record - 2; ++k) {
      if (!pass.next(line)) return pass.failure();
      if (!cutter.add(line)) return input_failure(InputProblem::BeyondRoom, pass.line_number());
    }
    if (!cutter.finish_without_star())
      return input_failure(InputProblem::BeyondRoom, pass.line_number());
    cell_count = static_cast<long>(seq.SeqCodons.back().size());
  }
  return {};
}

}  // namespace varnoth::input
