#include "input/input_status.h"

namespace varnoth::input {

namespace {

std::string at_line(const std::string& file_name, long line) {
  return file_name + ", line " + std::to_string(line);
}

}  // namespace

std::string problem_message(const InputStatus& status, const std::string& file_name) {
  switch (status.problem) {
    case InputProblem::FormatError: return kFormatErrorText;
    case InputProblem::EndOfFile:
      return " File ends before the data is complete: " + at_line(file_name, status.line);
    case InputProblem::BeyondRoom:
      return " Sequence data longer than expected: " + at_line(file_name, status.line);
    case InputProblem::NoSequenceLines:
      return " No sequence data where expected: " + at_line(file_name, status.line);
    case InputProblem::CountsTooLong:
      return " Too many sequences or positions to report (5 digits at most): " + file_name;
    case InputProblem::CannotOpen: return " Cannot open the file: " + file_name;
    case InputProblem::NotText:
      return " Not a text file (it holds binary data): " + at_line(file_name, status.line);
    case InputProblem::FileTooLarge:
      return " File larger than 256 MiB (268,435,456 bytes), the most this program reads: " +
             file_name;
    case InputProblem::TooManyLines:
      return " More than 16,777,216 lines, the most this program reads: " + file_name;
    case InputProblem::TooManySequences:
      return " More than 99,999 sequences, the most this program reads: " + file_name;
    case InputProblem::TooManyPositions:
      return " More than 99,999 nucleotide positions, the most this program reads: " + file_name;
    case InputProblem::TooManyNucleotides:
      return " More than 268,435,456 nucleotides in all (sequences x positions), the most this "
             "program reads: " +
             file_name;
    case InputProblem::UnequalLengths:
      return " Sequences of unequal length: " + status.detail + ": " +
             at_line(file_name, status.line);
    case InputProblem::None:
    case InputProblem::Cancelled: break;
  }
  return {};
}

}  // namespace varnoth::input
