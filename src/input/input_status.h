// How reading a sequence file ended. Readers report through this value; nothing
// is thrown out of the input area.
#pragma once

#include <string>

namespace varnoth::input {

enum class InputProblem {
  None,
  Cancelled,        // the file dialog was cancelled
  CannotOpen,       // the file could not be opened or read
  FormatError,      // the program's own "  File Format Error"
  EndOfFile,        // a reader needed a line behind the last one
  BeyondRoom,       // a sequence needs more cells than the reader allowed for
  NoSequenceLines,  // a count that divides came out 0 (no sequences, no width)
  CountsTooLong,    // a count does not fit the 5 columns of the report
  // Beyond the limits of input_limits.h.
  NotText,             // a byte that no text file holds
  FileTooLarge,        // more bytes than kMaxFileBytes
  TooManyLines,        // more lines than kMaxLines
  TooManySequences,    // SeqCount above kMaxSequences
  TooManyPositions,    // SeqLength above kMaxPositions, or more cells than kMaxCells
  TooManyNucleotides,  // sequences x cells x 3 above kMaxNucleotides
  UnequalLengths,  // FASTA: a sequence shorter than the longest, named in detail
};

struct InputStatus {
  InputProblem problem = InputProblem::None;
  long line = 0;        // 1-based line of the file where it was found; 0 if none
  std::string message;  // text of the message box, filled by the loader
  std::string detail;   // what a reader found, where the message names it

  bool ok() const { return problem == InputProblem::None; }
};

inline InputStatus input_failure(InputProblem problem, long line = 0) {
  return InputStatus{problem, line, {}, {}};
}

// Title and text of the message box that tells a refused file.
inline constexpr const char* kOpenFileTitle = "OPEN SEQUENCE FILE";
inline constexpr const char* kFormatErrorText = "  File Format Error";

// The message for `status` about the file `file_name` (path for CannotOpen).
std::string problem_message(const InputStatus& status, const std::string& file_name);

}  // namespace varnoth::input
