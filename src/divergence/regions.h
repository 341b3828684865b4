// The two ways of choosing what stretch the next run covers: the sliding-window
// page SSTab4 of the main window and the region dialog `region`. The handlers
// read the text boxes at the moment a button is pressed and leave RegionMode,
// WindowMode, the range and the summary lines in the record.
#pragma once

#include <string>
#include <string_view>

#include "state/platform.h"
#include "state/record.h"

namespace varnoth {

// Sliding_Window: hides SSTab3, shows SSTab4 and puts the defaults for
// SeqLength in TextWinSize and TextMovement.
void open_sliding_windows(AnalysisRecord& rec);
// AcceptSliWindows. Returns true when the window was accepted; a refused entry
// shows its message and puts the defaults back in both boxes.
bool accept_sliding_windows(AnalysisRecord& rec, Platform& platform);
// WholeSliWindows: back to a whole-sequence run.
void whole_sliding_windows(AnalysisRecord& rec);
// CancelSliwindows: hides the page, nothing else.
void cancel_sliding_windows(AnalysisRecord& rec);

// Region_analysis: hides SSTab3 and SSTab4, loads and shows the dialog with the
// stored range (or 1 and SeqLength) in its boxes.
void open_region_dialog(AnalysisRecord& rec);
// Command1 "Accept". Returns true when the range was taken; a refused range
// beeps, empties the offending box(es) and leaves the dialog open.
bool accept_region(AnalysisRecord& rec, Platform& platform);
// Command3 "Whole Sequence".
void whole_region(AnalysisRecord& rec);
// Command2 "Cancel": the stored range back in the boxes, dialog closed.
void cancel_region(AnalysisRecord& rec);

// The default window size and movement for a sequence length, as box texts.
struct WindowDefaults {
  std::string_view size;
  std::string_view movement;
};
WindowDefaults window_defaults(double seq_length);

// The summary lines of a sliding-window analysis (each begins with CRLF).
std::string coding_window_text(double size, double movement);
std::string noncoding_window_text(double size, double movement);

// The summary lines of a region chosen in the dialog (each begins with CRLF).
// The codon line ends at Int(last/3), unlike RegionText's 1 + Int((last-1)/3).
std::string coding_region_text(double first, double last);
std::string noncoding_region_text(double first, double last);

// A range of 1-based positions.
struct PositionRange {
  double first = 0;
  double last = 0;
  bool operator==(const PositionRange&) const = default;
};
// Nucleotide positions to the codons that hold them, and codons back to the
// nucleotides they span.
PositionRange nucleotides_to_codons(PositionRange nucleotides);
PositionRange codons_to_nucleotides(PositionRange codons);

}  // namespace varnoth
