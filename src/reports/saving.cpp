#include "reports/saving.h"

#include <cstdio>
#include <filesystem>
#include <system_error>
#include <utility>

#if defined(__linux__)
#include <fcntl.h>
#endif

namespace varnoth {

namespace {

namespace fs = std::filesystem;

// Opens a new file beside `target` for writing, never one that exists already.
std::FILE* open_temporary(const fs::path& target, fs::path& temporary) {
  const fs::path folder = target.parent_path();
  const std::string stem = "." + target.filename().string() + ".part";
  for (int n = 0; n < 100; ++n) {
    temporary = folder / (stem + std::to_string(n));
    // "x": exclusive create, so a file of someone else's is never reused.
    if (std::FILE* f = std::fopen(temporary.string().c_str(), "wbx")) return f;
    std::error_code ec;
    if (!fs::exists(temporary, ec)) return nullptr;  // the folder refuses files
  }
  return nullptr;
}

bool write_parts(const std::string& path, std::string_view first, std::string_view second) {
  AtomicFile file(path);
  file.append(first);
  file.append(second);
  return file.commit();
}

}  // namespace

AtomicFile::AtomicFile(const std::string& path) : target_(path) {
  if (!path.empty()) {
    const fs::path target(path);
    std::error_code ec;
    replacing_ = fs::exists(target, ec);
    file_ = open_temporary(target, temporary_);
  }
  ok_ = file_ != nullptr;
  // Texts come in large pieces: each goes to the file in one write, not
  // through the stream's buffer in two.
  if (ok_) std::setvbuf(file_, nullptr, _IONBF, 0);
}

AtomicFile::~AtomicFile() {
  if (file_ == nullptr) return;
  std::fclose(file_);
  std::error_code ec;
  fs::remove(temporary_, ec);
}

void AtomicFile::append(std::string_view text) {
  if (!ok_ || text.empty()) return;
  ok_ = std::fwrite(text.data(), 1, text.size(), file_) == text.size();
  written_ += text.size();
#if defined(__linux__)
  // A large file that will replace another has its writing to the disk
  // started as it grows: renamed over an old file, the whole of it would be
  // written out then, while the caller waits (ext4 does so to keep the
  // replacement safe). A new file is left to the system, which writes it out
  // in the background, on a core the run may not be using.
  constexpr std::size_t kStep = std::size_t{1} << 20;
  if (replacing_ && written_ - flushed_ >= 2 * kStep) {
    const std::size_t upto = (written_ - kStep) & ~(kStep - 1);
    sync_file_range(fileno(file_), static_cast<off_t>(flushed_),
                    static_cast<off_t>(upto - flushed_), SYNC_FILE_RANGE_WRITE);
    flushed_ = upto;
  }
#endif
}

bool AtomicFile::commit() {
  if (file_ == nullptr) return false;
  ok_ = std::fflush(file_) == 0 && ok_;
  ok_ = std::fclose(file_) == 0 && ok_;
  file_ = nullptr;
  std::error_code ec;
  if (ok_) {
    fs::rename(temporary_, fs::path(target_), ec);
    ok_ = !ec;
  }
  if (!ok_) fs::remove(temporary_, ec);
  return ok_;
}

std::string common_head(const ClockReading& clock) {
  std::string head = "\r\n Varnoth v6.0\r\n ";
  head += clock.date;
  head += "  ";
  head += clock.time;
  head += "\r\n ";
  head.append(64, '*');
  head += "\r\n";
  return head;
}

std::string default_output_name(std::string_view input_file_name, std::string_view extension) {
  std::string name(input_file_name.substr(0, input_file_name.find('.')));
  name += extension;
  return name;
}

std::string ask_save_path(AnalysisRecord& rec, Platform& platform, std::string_view filter,
                          std::string_view extension) {
  FileDialogRequest request;
  request.filter = std::string(filter);
  request.filter_index = 1;
  request.default_name = default_output_name(rec.seq.InputFileName, extension);
  std::string path = platform.save_file(request);
  if (!path.empty()) rec.form.Fichero1.text = path;
  return path;
}

bool write_text_file(const std::string& path, std::string_view text) {
  return write_parts(path, text, {});
}

bool write_report_file(const std::string& path, std::string_view head, std::string_view report) {
  return write_parts(path, head, report);
}

bool save_results(AnalysisRecord& rec, Platform& platform) {
  const std::string path = ask_save_path(rec, platform, kReportFilter, ".out");
  if (path.empty()) return false;
  return write_report_file(path, common_head(platform.clock()), rec.results.ReportText);
}

bool save_window_data(AnalysisRecord& rec, Platform& platform) {
  const std::string path = ask_save_path(rec, platform, kWindowDataFilter, ".win");
  if (path.empty()) return false;
  return write_text_file(path, rec.results.WindowDataText);
}

void print_results(AnalysisRecord& rec, Platform& platform) {
  std::string text = common_head(platform.clock());
  text += rec.form.Text3.text;
  std::string before = std::exchange(rec.form.Text33.text, rec.form.Form1.text);
  platform.print(text);
  rec.form.Text33.text = std::move(before);
}

}  // namespace varnoth
