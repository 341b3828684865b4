// Printing and saving what a run left: the report (Boto1 prints it, Boto2
// saves it to ".out") and the window table (BotoData saves it to ".win").
#pragma once

#include <cstdio>
#include <filesystem>
#include <string>
#include <string_view>

#include "state/platform.h"
#include "state/record.h"

namespace varnoth {

inline constexpr std::string_view kReportFilter = "Output files (*.out)|*.out|All files (*.*)|*.*";
inline constexpr std::string_view kWindowDataFilter =
    "Output files (*.win)|*.win|All files (*.*)|*.*";

// A file written whole or not at all: the text goes to a temporary file beside
// the target, which commit() renames over it. A file never committed (or one
// whose writing failed) is removed and the target stays as it was.
class AtomicFile {
 public:
  explicit AtomicFile(const std::string& path);
  ~AtomicFile();
  AtomicFile(const AtomicFile&) = delete;
  AtomicFile& operator=(const AtomicFile&) = delete;
  bool ok() const { return ok_; }
  void append(std::string_view text);
  bool commit();

 private:
  std::string target_;
  std::filesystem::path temporary_;
  std::FILE* file_ = nullptr;
  bool ok_ = false;
  std::size_t written_ = 0;  // bytes appended
  std::size_t flushed_ = 0;  // bytes whose writing to the disk was started
  bool replacing_ = false;   // the target existed when the file was opened
};

// The head of the printout and the ".out" file: program line, date and time,
// a line of 64 stars, each behind a line end.
std::string common_head(const ClockReading& clock);

// The input file name up to (not including) its first ".", then `extension`
// (".out", ".win", ".dis"). A name without "." is kept whole.
std::string default_output_name(std::string_view input_file_name, std::string_view extension);

// The save dialog of the result buttons: `filter` with its first entry chosen
// and the default name for `extension`. The chosen path is kept in Fichero1;
// an empty result means the user cancelled (Fichero1 is then left alone).
std::string ask_save_path(AnalysisRecord& rec, Platform& platform, std::string_view filter,
                          std::string_view extension);

// Writes `text` to `path`, replacing the file. The bytes go to a temporary file
// in the same folder that is then renamed over the target, so a failure leaves
// no partial file and the old file as it was. Returns true on success.
bool write_text_file(const std::string& path, std::string_view text);
// The ".out" file: head and report, with no line end added.
bool write_report_file(const std::string& path, std::string_view head, std::string_view report);

// Boto2: asks for the path (kept in Fichero1) and saves head + ReportText.
// Cancel or a file error ends silently; returns true when the file was written.
bool save_results(AnalysisRecord& rec, Platform& platform);
// BotoData: the same for WindowDataText alone, without head, to ".win".
bool save_window_data(AnalysisRecord& rec, Platform& platform);
// Boto1: prints head + Text3's text; the progress box Text33 shows the window
// caption while printing and gets its text back afterwards.
void print_results(AnalysisRecord& rec, Platform& platform);

}  // namespace varnoth
