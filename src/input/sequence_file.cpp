#include "input/sequence_file.h"

#include <filesystem>
#include <fstream>
#include <system_error>

#include "input/alignment_cleanup.h"
#include "input/format_detection.h"
#include "input/input_limits.h"
#include "input/input_report.h"
#include "input/line_list.h"
#include "input/readers.h"
#include "state/options.h"
#include "state/summary.h"

namespace varnoth::input {

namespace {

InputStatus not_text_at(std::string_view bytes, std::size_t position) {
  return input_failure(InputProblem::NotText, count_lines(bytes.substr(0, position + 1)));
}

// The whole file as bytes, read once. A file beyond the size limit is refused
// before it is read, and one that is not text as soon as a chunk shows it.
InputStatus read_whole_file(const std::string& path, std::string& bytes) {
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) return input_failure(InputProblem::CannotOpen);
  std::ifstream in(path, std::ios::binary);
  if (!in) return input_failure(InputProblem::CannotOpen);
  const auto size = std::filesystem::file_size(path, error);
  if (!error && size > kMaxFileBytes) return input_failure(InputProblem::FileTooLarge);
  // Read straight into the buffer, a large chunk at a time; a file of known
  // size takes one chunk, and only a file that grew since asks for more.
  std::size_t chunk = !error && size > 0 ? static_cast<std::size_t>(size) : std::size_t{1} << 16;
  while (true) {
    const std::size_t from = bytes.size();
    bytes.resize(from + chunk);
    in.read(bytes.data() + from, static_cast<std::streamsize>(chunk));
    const auto got = static_cast<std::size_t>(in.gcount());
    bytes.resize(from + got);
    if (got == 0) break;
    // Checked again here for files whose size is not known beforehand.
    if (bytes.size() > kMaxFileBytes) return input_failure(InputProblem::FileTooLarge);
    if (std::size_t at = find_non_text(bytes, from); at != std::string_view::npos)
      return not_text_at(bytes, at);
    if (!in || in.peek() == std::ifstream::traits_type::eof()) break;
    chunk = std::size_t{1} << 16;
  }
  if (in.bad()) return input_failure(InputProblem::CannotOpen);
  return {};
}

// The stages of a read, with what the open command shows between them.
struct ReadStages {
  virtual ~ReadStages() = default;
  virtual void reading() {}
  virtual void reformatting() {}
};

// The limits on what the reader found, before the clean-up evens the rows out
// to `cell_count` cells each.
InputStatus check_limits(const SequenceData& seq, long cell_count) {
  if (seq.SeqCount > kMaxSequences) return input_failure(InputProblem::TooManySequences);
  if (seq.SeqLength > kMaxPositions || cell_count > kMaxCells)
    return input_failure(InputProblem::TooManyPositions);
  const double rows = static_cast<double>(whole_count(seq.SeqCount));
  if (rows * static_cast<double>(cell_count) * 3 > kMaxNucleotides)
    return input_failure(InputProblem::TooManyNucleotides);
  return {};
}

// `owner`, where given, holds the bytes as read_whole_file read them (already
// found to be text) and is emptied once they are read: the clean-up then
// reuses their memory.
InputStatus read_stages(std::string_view bytes, std::string_view path, SequenceData& seq,
                        ReadStages& stages, InputFormat forced, std::string* owner = nullptr) {
  seq.InputFileName = std::string(file_name_of(path));
  if (bytes.size() > kMaxFileBytes) return input_failure(InputProblem::FileTooLarge);
  // A byte order mark, as editors on Windows write in front of UTF-8 text, is
  // no part of line 1.
  if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
  if (owner == nullptr)
    if (std::size_t at = find_non_text(bytes, 0); at != std::string_view::npos)
      return not_text_at(bytes, at);
  if (bytes.empty()) return input_failure(InputProblem::EndOfFile, 1);
  // Line 1 decides the format before the file is split into lines.
  const InputFormat format = forced != InputFormat::None
                                 ? forced
                                 : detect_format(first_line(bytes), path_extension(path));
  if (format == InputFormat::None) return input_failure(InputProblem::FormatError);
  seq.InputFormatName = std::string(format_label(format));
  if (count_lines(bytes) > kMaxLines) return input_failure(InputProblem::TooManyLines);
  long cell_count = 0;
  {
    LineList lines(bytes);
    stages.reading();
    InputStatus status = read_alignment(format, lines, seq, cell_count);
    if (!status.ok()) return status;
  }
  if (owner != nullptr) std::string().swap(*owner);
  if (InputStatus status = check_limits(seq, cell_count); !status.ok()) return status;
  stages.reformatting();
  InputStatus status = clean_alignment(seq, cell_count);
  if (status.ok() && !input_report_fits(seq)) return input_failure(InputProblem::CountsTooLong);
  return status;
}

// The state of the last analysis: region, windows, last estimates, results page.
void reset_last_analysis(AnalysisRecord& rec) {
  RegionFields& r = rec.region;
  r.RegionFirst.clear();
  r.RegionLast.clear();
  r.RegionText.clear();
  r.CodingWindowText.clear();
  r.NoncodingWindowText.clear();
  r.RegionMode = 0;
  r.WindowMode = 0;
  r.WindowSize = 0;
  r.WindowStep = 0;
  r.WindowIndex = 0;
  rec.last_noncoding = {};
  rec.results.handed_on = {};
  Form& f = rec.form;
  f.SSTab3.visible = false;
  f.Boto1.visible = false;
  f.Boto2.visible = false;
  f.Boto3.visible = false;
  f.MatrixBoton.visible = false;
  rec.menu.CIcodingRegion.enabled = false;
  rec.menu.CIcodingRegionKaKs.enabled = false;
}

struct FormStages : ReadStages {
  explicit FormStages(Form& form) : f(form) {}
  void reading() override {
    f.SSTab1.visible = true;
    f.Text1.visible = true;
    f.Text2.visible = true;
    f.Label3.visible = true;
    f.Label3.text = "  Reading...";
  }
  void reformatting() override { f.Label3.text = "  Reformatting..."; }
  Form& f;
};

}  // namespace

InputStatus read_sequence_text(std::string_view bytes, std::string_view path, SequenceData& seq,
                               InputFormat forced) {
  ReadStages silent;
  return read_stages(bytes, path, seq, silent, forced);
}

InputStatus open_sequence_file(AnalysisRecord& rec, Platform& platform) {
  FileDialogRequest request;
  request.filter = kSequenceFileFilter;
  request.filter_index = 1;
  std::string path = platform.open_file(request);
  if (path.empty()) return input_failure(InputProblem::Cancelled);
  return load_sequence_file(rec, platform, path);
}

InputStatus load_sequence_file(AnalysisRecord& rec, Platform& platform, const std::string& path,
                               InputFormat forced) {
  rec.form.Fichero1.text = path;
  rec.seq.InputFileName = std::string(file_name_of(path));
  show_empty_panes(rec, SummaryTail::None);  // the summary without region lines
  reset_last_analysis(rec);
  platform.busy(true);

  // The new alignment is built apart and kept only if the whole load succeeds;
  // it starts from the counts left in the record.
  SequenceData next;
  next.SeqCount = rec.seq.SeqCount;
  next.SeqLength = rec.seq.SeqLength;
  std::string bytes;
  InputStatus status = read_whole_file(path, bytes);
  if (status.ok()) {
    FormStages stages(rec.form);
    status = read_stages(bytes, path, next, stages, forced, &bytes);
  }
  std::string().swap(bytes);

  if (!status.ok()) {
    status.message = problem_message(
        status, status.problem == InputProblem::CannotOpen ? path : rec.seq.InputFileName);
    rec.seq.SequenceLoaded = 0;
    if (!next.InputFormatName.empty()) rec.seq.InputFormatName = next.InputFormatName;
    rec.form.Label3.visible = false;
    platform.message(status.message, kOpenFileTitle, MessageIcon::Exclamation);
    platform.busy(false);
    return status;
  }

  rec.seq = std::move(next);
  Menu& m = rec.menu;
  m.AnalysisOptions.enabled = true;
  m.Diver.enabled = true;
  m.Region_analysis.enabled = true;
  m.Sliding_Window.enabled = true;
  Form& f = rec.form;
  f.Text1.text = build_input_report(rec.seq);
  f.Label3.visible = false;
  f.SSTab1Page = 0;
  f.Text1.visible = true;
  f.Text2.text += "\r\n Region to analyze: All";
  platform.busy(false);
  return status;
}

}  // namespace varnoth::input
