// The report "Input Sequence Information" shown in Text1 after a load.
#pragma once

#include <string>

#include "state/record.h"

namespace varnoth::input {

// The report, lines ended by CRLF: file name and format, the two counts
// right-aligned in 5 columns, and one line per sequence with the first 45
// characters of its name.
std::string build_input_report(const SequenceData& seq);

// Whether both counts fit their 5 columns (a plain form of at most 5
// characters). A load whose counts do not fit is refused; build_input_report
// then writes the count with no blanks in front.
bool input_report_fits(const SequenceData& seq);

}  // namespace varnoth::input
