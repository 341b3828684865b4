// Helpers shared by the input tests.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "input/sequence_file.h"
#include "state/record.h"

namespace varnoth::testing {

// The letters of a row of cells as one text, blanks of short cells included.
inline std::string row_text(const std::vector<CodonCell>& cells) {
  std::string out;
  for (const auto& c : cells) out.append(c.data(), 3);
  return out;
}

// Reads `bytes` as the file `path`; `seq` may carry counts left from before.
struct ReadOutcome {
  input::InputStatus status;
  SequenceData seq;
};
inline ReadOutcome read_text(std::string_view bytes, std::string_view path,
                             SequenceData seq = {}) {
  ReadOutcome out;
  out.seq = std::move(seq);
  out.status = input::read_sequence_text(bytes, path, out.seq);
  return out;
}

// Joins lines with the given line end, with one behind the last line.
inline std::string lines_text(const std::vector<std::string>& lines,
                              std::string_view end = "\n") {
  std::string out;
  for (const auto& l : lines) {
    out += l;
    out += end;
  }
  return out;
}

}  // namespace varnoth::testing
