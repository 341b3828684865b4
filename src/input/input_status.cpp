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
    case InputProblem::None:
    case InputProblem::Cancelled: break;
  }
  return {};
}

}  // namespace varnoth::input
