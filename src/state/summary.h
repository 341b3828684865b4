// The option summary shown in Text2, and the region lines behind it.
#pragma once

#include <string>

#include "state/record.h"

namespace varnoth {

enum class SummaryTail {
  WindowText,  // the sliding-window or region text of the analysis
  RegionText,  // the region lines (weight page)
  None,        // nothing behind the options (opening a file)
};

// The summary text for the record's options, with line ends CRLF.
std::string option_summary(const AnalysisRecord& rec, SummaryTail tail);

// Builds the summary in ReportBuffer, writes it to Text2 and empties the buffer.
void rebuild_summary(AnalysisRecord& rec, SummaryTail tail = SummaryTail::WindowText);

// Fills an empty RegionFirst / RegionLast with "1" / SeqLength, then rewrites
// RegionText for the current range and analysis.
void update_region_text(AnalysisRecord& rec);

}  // namespace varnoth
