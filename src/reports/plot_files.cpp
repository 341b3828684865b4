#include "reports/plot_files.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "reports/plot_charts.h"
#include "reports/plot_data.h"
#include "reports/plot_svg.h"
#include "reports/saving.h"

namespace varnoth::reports {

namespace {

namespace fs = std::filesystem;

bool write_svg(const std::string& path, const Scene& scene, std::string& error,
               std::vector<std::string>* written) {
  if (!write_text_file(path, svg_text(scene))) {
    error = "cannot write " + path;
    return false;
  }
  if (written) written->push_back(path);
  return true;
}

bool make_folder(const std::string& path, std::string& error) {
  std::error_code ec;
  fs::create_directories(fs::path(path), ec);
  if (ec || !fs::is_directory(fs::path(path), ec)) {
    error = "cannot make the folder " + path;
    return false;
  }
  return true;
}

std::string file_part(std::string_view name) {
  std::string out;
  for (char ch : name) {
    if (out.size() >= 40) break;
    const bool plain = (ch >= 'a' && ch <= 'z') || (ch >= 'A' && ch <= 'Z') ||
                       (ch >= '0' && ch <= '9') || ch == '.' || ch == '-' || ch == '_';
    out += plain ? ch : '_';
  }
  // No leading "." (a hidden file) and never empty.
  if (out.empty() || out.front() == '.') out.insert(out.begin(), 's');
  return out;
}

}  // namespace

bool is_folder_path(const std::string& path) {
  if (path.empty()) return false;
  const char last = path.back();
  if (last == '/' || last == static_cast<char>(fs::path::preferred_separator)) return true;
  std::error_code ec;
  return fs::is_directory(fs::path(path), ec);
}

std::string window_picture_name(std::size_t index, std::size_t count, std::string_view name_a,
                                 std::string_view name_b) {
  std::string number = std::to_string(index + 1);
  const std::size_t width = std::max<std::size_t>(3, std::to_string(count).size());
  if (number.size() < width) number.insert(0, width - number.size(), '0');
  return number + "_" + file_part(name_a) + "_" + file_part(name_b) + ".svg";
}

bool write_window_pictures(const AnalysisRecord& rec, std::string_view table_text,
                           const std::string& path, std::string& error,
                           std::vector<std::string>* written) {
  const std::optional<WindowTable> table = window_table_of(rec, table_text);
  if (!table) {
    error = "the run left no window table to draw";
    return false;
  }
  const ChartTitles titles = window_chart_titles(rec, *table);
  if (!is_folder_path(path)) return write_svg(path, window_chart(*table, titles), error, written);

  if (!make_folder(path, error)) return false;
  const std::size_t count = table->comparisons.size();
  for (std::size_t c = 0; c < count; ++c) {
    WindowChartOptions options;
    options.comparison = c;
    const WindowComparison& one = table->comparisons[c];
    const std::string file =
        (fs::path(path) / window_picture_name(c, count, one.name_a, one.name_b)).string();
    if (!write_svg(file, window_chart(*table, titles, options), error, written)) return false;
  }
  return true;
}

bool write_heat_map_picture(const AnalysisRecord& rec, const MatrixItem& item,
                            const std::string& path, std::string& error,
                            std::vector<std::string>* written) {
  std::string file = path;
  if (is_folder_path(path)) {
    if (!make_folder(path, error)) return false;
    file = (fs::path(path) / "matrix.svg").string();
  }
  const Scene scene = heat_map(heat_map_data(rec, item), heat_map_titles(rec, item));
  return write_svg(file, scene, error, written);
}

int write_plots(const AnalysisRecord& rec, std::string_view table_text, const MatrixItem* item,
                const std::string& path, std::string& error) {
  bool ok = false;
  if (item != nullptr)
    ok = write_heat_map_picture(rec, *item, path, error);
  else if (rec.region.WindowMode == 1)
    ok = write_window_pictures(rec, table_text, path, error);
  else
    error = "a picture needs a window run (--window SIZE:STEP) or a matrix (--matrix ITEM)";
  return ok ? 0 : 1;
}

std::string ask_picture_path(const AnalysisRecord& rec, Platform& platform,
                             std::string_view filter, std::string_view suffix,
                             std::string_view extension) {
  FileDialogRequest request;
  request.filter = std::string(filter);
  request.filter_index = 1;
  request.default_name =
      default_output_name(rec.seq.InputFileName, std::string(suffix) + std::string(extension));
  return platform.save_file(request);
}

}  // namespace varnoth::reports
