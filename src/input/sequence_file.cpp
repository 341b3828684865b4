#include "input/sequence_file.h"

#include <filesystem>
#include <fstream>
#include <system_error>

#include "input/alignment_cleanup.h"
#include "input/format_detection.h"
#include "input/input_report.h"
#include "input/line_list.h"
#include "input/readers.h"
#include "state/options.h"
#include "state/summary.h"

namespace varnoth::input {

namespace {

// The whole file as bytes, read once.
bool read_whole_file(const std::string& path, std::string& bytes) {
  std::error_code error;
  if (std::filesystem::is_directory(path, error)) return false;
  std::ifstream in(path, std::ios::binary);
  if (!in) return false;
  auto size = std::filesystem::file_size(path, error);
  if (!error) bytes.reserve(static_cast<size_t>(size));
  char chunk[1 << 16];
  while (in.read(chunk, sizeof chunk) || in.gcount() > 0)
    bytes.append(chunk, static_cast<size_t>(in.gcount()));
  return !in.bad();
}

// The stages of a read, with what the open command shows between them.
struct ReadStages {
  virtual ~ReadStages() = default;
  virtual void reading() {}
  virtual void reformatting() {}
};

InputStatus read_stages(std::string_view bytes, std::string_view path, SequenceData& seq,
                        ReadStages& stages) {
  seq.InputFileName = std::string(file_name_of(path));
  long cell_count = 0;
  {
    LineList lines(bytes);
    if (lines.size() == 0) return input_failure(InputProblem::EndOfFile, 1);
    InputFormat format = detect_format(lines[0], path_extension(path));
    if (format == InputFormat::None) return input_failure(InputProblem::FormatError);
    seq.InputFormatName = std::string(format_label(format));
    stages.reading();
    InputStatus status = read_alignment(format, lines, seq, cell_count);
    if (!status.ok()) return status;
  }
  stages.reformatting();
  return clean_alignment(seq, cell_count);
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

InputStatus read_sequence_text(std::string_view bytes, std::string_view path, SequenceData& seq) {
  ReadStages silent;
  return read_stages(bytes, path, seq, silent);
}

InputStatus open_sequence_file(AnalysisRecord& rec, Platform& platform) {
  FileDialogRequest request;
  request.filter = kSequenceFileFilter;
  request.filter_index = 1;
  std::string path = platform.open_file(request);
  if (path.empty()) return input_failure(InputProblem::Cancelled);
  return load_sequence_file(rec, platform, path);
}

InputStatus load_sequence_file(AnalysisRecord& rec, Platform& platform, const std::string& path) {
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
  InputStatus status;
  std::string bytes;
  if (!read_whole_file(path, bytes)) {
    status = input_failure(InputProblem::CannotOpen);
  } else {
    FormStages stages(rec.form);
    status = read_stages(bytes, path, next, stages);
    if (status.ok() && !input_report_fits(next))
      status = input_failure(InputProblem::CountsTooLong);
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
