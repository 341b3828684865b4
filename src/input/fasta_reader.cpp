// Aligned FASTA: a ">" line names each sequence and the lines behind it, of
// any length, hold its letters. Blank lines are ignored. Every sequence must
// have the same number of letters.
#include <string>
#include <vector>

#include "input/codon_cutting.h"
#include "input/readers.h"

namespace varnoth::input {

namespace {

struct FastaRecord {
  long header = 0;  // 0-based index of its ">" line
  long letters = 0;
};

bool is_header(std::string_view line) { return !line.empty() && line[0] == '>'; }

}  // namespace

InputStatus read_fasta(const LineList& lines, SequenceData& seq, long& cell_count) {
  // Pass 1: the records and their lengths.
  std::vector<FastaRecord> records;
  long longest = 0;
  for (long i = 0; i < lines.size(); ++i) {
    const std::string_view line = lines[i];
    if (is_header(line)) {
      records.push_back({i, 0});
    } else if (!is_blank_line(line)) {
      // Letters before the first header: only a file read as FASTA by choice.
      if (records.empty()) return input_failure(InputProblem::FormatError);
      records.back().letters += count_letters(line);
      if (records.back().letters > longest) longest = records.back().letters;
    }
  }
  for (const FastaRecord& r : records) {
    if (r.letters == longest) continue;
    InputStatus status = input_failure(InputProblem::UnequalLengths, r.header + 1);
    status.detail = "\"" + std::string(lines[r.header].substr(1)) + "\" has " +
                    std::to_string(r.letters) + " positions, the longest sequence " +
                    std::to_string(longest);
    return status;
  }
  seq.SeqCount = static_cast<double>(records.size());
  seq.SeqLength = static_cast<double>(longest);

  // Pass 2: names and sequences.
  start_sequences(seq);
  seq.SeqNames.reserve(records.size());
  seq.SeqCodons.reserve(records.size());
  const double room = cell_room(seq.SeqLength);
  for (std::size_t k = 0; k < records.size(); ++k) {
    const long begin = records[k].header;
    const long end = k + 1 < records.size() ? records[k + 1].header : lines.size();
    seq.SeqNames.emplace_back(lines[begin].substr(1));
    CodonCutter cutter(seq.SeqCodons.emplace_back(), room);
    for (long i = begin + 1; i < end; ++i)
      if (!cutter.add(lines[i])) return input_failure(InputProblem::BeyondRoom, i + 1);
    if (!cutter.finish()) return input_failure(InputProblem::BeyondRoom, end);
    cell_count = static_cast<long>(seq.SeqCodons.back().size());
  }
  return {};
}

}  // namespace varnoth::input
