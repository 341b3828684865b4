#include "reports/saving.h"

#include <cstdio>
#include <filesystem>
#include <system_error>
#include <utility>

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
  if (path.empty()) return false;
  const fs::path target(path);
  fs::path temporary;
  std::FILE* f = open_temporary(target, temporary);
  if (!f) return false;
  bool ok = std::fwrite(first.data(), 1, first.size(), f) == first.size() &&
            std::fwrite(second.data(), 1, second.size(), f) == second.size();
  ok = std::fflush(f) == 0 && ok;
  ok = std::fclose(f) == 0 && ok;
  std::error_code ec;
  if (ok) {
    fs::rename(temporary, target, ec);
    ok = !ec;
  }
  if (!ok) fs::remove(temporary, ec);
  return ok;
}

}  // namespace

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
