// Opening a sequence file: the dialog, the reset of the last analysis, the
// format detection, the reader, the common clean-up and the report.
#pragma once

#include <string>
#include <string_view>

#include "input/format_detection.h"
#include "input/input_status.h"
#include "state/platform.h"
#include "state/record.h"

namespace varnoth::input {

inline constexpr const char* kSequenceFileFilter =
    "Sequence Files |*.gde;*.lwl;*.meg;*.pir;*.aln;*.msf;*.phy;*.fa;*.fasta;*.fas;*.fna;*.ffn;"
    "*.mfa;*.afa|All files (*.*)|*.*";
inline constexpr const char* kNoSequenceInformation = " No Sequence Information... ";

// Reads the alignment in `bytes`, the content of the file at `path`: format
// from line 1 and the path's extension, the reader, the common clean-up. `seq`
// comes in holding the counts left from the previous file (a fixed PHYLIP
// header reads none) and leaves with the alignment, its InputFileName and
// InputFormatName. The status carries no message. A `forced` format other than
// None is read whatever line 1 and the extension say.
InputStatus read_sequence_text(std::string_view bytes, std::string_view path, SequenceData& seq,
                               InputFormat forced = InputFormat::None);

// "Open Sequence File": asks the platform for a file and loads it. A cancelled
// dialog changes nothing and gives Cancelled.
InputStatus open_sequence_file(AnalysisRecord& rec, Platform& platform);

// Loads the file at `path` as the open command does once a file is chosen:
// resets the panes and the last analysis, reads, and on success keeps the new
// alignment, enables the analysis menus and shows the report in Text1. A file
// refused for any reason is told in a message box (exclamation icon, title
// "OPEN SEQUENCE FILE"); SequenceLoaded is then 0, the alignment of the
// previous load stays in the record and the menus stay as they were.
InputStatus load_sequence_file(AnalysisRecord& rec, Platform& platform, const std::string& path,
                               InputFormat forced = InputFormat::None);

}  // namespace varnoth::input
