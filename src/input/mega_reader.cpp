// MEGA: "#name" lines, either one per sequence followed by its data
// (sequential) or one per sequence and block (interleaved).
#include <string>

#include "input/codon_cutting.h"
#include "input/readers.h"

namespace varnoth::input {

namespace {

constexpr long kInterleavedCells = 20000;  // cells allowed per sequence, interleaved

bool is_name_line(std::string_view line) { return !line.empty() && line[0] == '#'; }

struct MegaLayout {
  bool interleaved = false;
  double seq_count = 1;
};

// A run of name lines behind each other marks names first; a name line that
// follows another line after that marks a new block, hence interleaved data.
MegaLayout mega_layout(const LineList& lines) {
  MegaLayout layout;
  bool names_first = false;
  char previous = '#';
  for (long i = 1; i < lines.size(); ++i) {
    std::string_view line = lines[i];
    char first = line.empty() ? '\0' : line[0];
    if (first == '#' && previous == '#') {
      names_first = true;
      layout.seq_count += 1;
    } else if (first == '#' && names_first) {
      layout.interleaved = true;
      layout.seq_count = 1;
    }
    previous = first;
  }
  return layout;
}

// Sequential name: column 2 up to and including the first blank behind a
// letter of the name (the blank is kept, deliberately); the rest is data.
void split_sequential_name(std::string_view line, std::string_view& name,
                           std::string_view& data) {
  for (size_t j = 2; j < line.size(); ++j) {
    if (is_blank(line[j]) && !is_blank(line[j - 1])) {
      name = line.substr(1, j);
      data = line.substr(j + 1);
      return;
    }
  }
  name = columns(line, 2);
  data = {};
}

InputStatus read_sequential(const LineList& lines, SequenceData& seq, long& cell_count) {
  LinePass first(lines);
  std::string_view line, name, data;
  first.skip(1);
  do {
    if (!first.next(line)) return first.failure();
  } while (!is_name_line(line));
  split_sequential_name(line, name, data);
  double letters = static_cast<double>(count_letters(data));
  for (;;) {
    if (!first.next(line)) return first.failure();
    if (is_name_line(line)) break;
    letters += static_cast<double>(count_letters(line));
  }
  seq.SeqLength = letters;

  long count = 0;
  for (long i = 1; i < lines.size(); ++i)
    if (is_name_line(lines[i])) ++count;
  seq.SeqCount = static_cast<double>(count);

  start_sequences(seq);
  const double room = cell_room(seq.SeqLength);
  LinePass pass(lines);
  pass.skip(1);
  for (long long i = 1; i <= whole_count(seq.SeqCount); ++i) {
    do {
      if (!pass.next(line)) return pass.failure();
    } while (!is_name_line(line));
    split_sequential_name(line, name, data);
    seq.SeqNames.emplace_back(name);
    CodonCutter cutter(seq.SeqCodons.emplace_back(), room);
    if (!cutter.add(data)) return input_failure(InputProblem::BeyondRoom, pass.line_number());
    double read = static_cast<double>(count_letters(data));
    // Lines are taken until the letters reach the first sequence's length,
    // whatever they hold.
    while (read < seq.SeqLength) {
      if (!pass.next(line)) return pass.failure();
      if (!cutter.add(line)) return input_failure(InputProblem::BeyondRoom, pass.line_number());
      read += static_cast<double>(count_letters(line));
    }
    if (!cutter.finish()) return input_failure(InputProblem::BeyondRoom, pass.line_number());
    cell_count = static_cast<long>(seq.SeqCodons.back().size());
  }
  return {};
}

InputStatus read_interleaved(const LineList& lines, double seq_count, SequenceData& seq,
                             long& cell_count) {
  seq.SeqCount = seq_count;
  const auto count = static_cast<size_t>(whole_count(seq_count));
  start_sequences(seq);
  seq.SeqNames.resize(count);
  std::vector<std::string> buffers(count);
  size_t k = 0;
  for (long i = 1; i < lines.size(); ++i) {
    std::string_view line = lines[i];
    if (!is_name_line(line)) continue;
    size_t blank = line.find(' ');
    std::string_view name = blank == line.npos ? line.substr(1) : line.substr(1, blank - 1);
    std::string_view data = blank == line.npos ? std::string_view{} : line.substr(blank + 1);
    seq.SeqNames[k] = name;
    for (char c : data)
      if (!is_blank(c)) buffers[k] += c;
    k = (k + 1) % count;
  }

  // Cut every buffer up to the whole threes of buffer 1; what is left over
  // forms one last cell.
  const size_t whole = buffers[0].size() / 3;
  const long last_line = lines.size();
  if (whole > static_cast<size_t>(kInterleavedCells))
    return input_failure(InputProblem::BeyondRoom, last_line);
  for (size_t i = 0; i < count; ++i) {
    const std::string& buffer = buffers[i];
    auto& cells = seq.SeqCodons.emplace_back();
    cells.reserve(whole + 1);
    for (size_t c = 0; c < whole; ++c) {
      CodonCell cell{' ', ' ', ' '};
      for (size_t p = 0; p < 3 && 3 * c + p < buffer.size(); ++p) cell[p] = buffer[3 * c + p];
      cells.push_back(cell);
    }
    if (buffer.size() > 3 * whole) {
      if (whole + 1 > static_cast<size_t>(kInterleavedCells))
        return input_failure(InputProblem::BeyondRoom, last_line);
      CodonCell cell{' ', ' ', ' '};
      for (size_t p = 0; p < 3 && 3 * whole + p < buffer.size(); ++p)
        cell[p] = buffer[3 * whole + p];
      cells.push_back(cell);
    }
  }
  const size_t leftover = buffers[0].size() - 3 * whole;
  cell_count = static_cast<long>(whole + (leftover > 0 ? 1 : 0));
  seq.SeqLength = static_cast<double>(3 * whole + leftover);
  return {};
}

}  // namespace

InputStatus read_mega(const LineList& lines, SequenceData& seq, long& cell_count) {
  // Dots are resolved once, in the common clean-up; a second pass here would
  // change nothing.
  MegaLayout layout = mega_layout(lines);
  if (layout.interleaved) return read_interleaved(lines, layout.seq_count, seq, cell_count);
  return read_sequential(lines, seq, cell_count);
}

}  // namespace varnoth::input
