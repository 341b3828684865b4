#include "reports/plot_data.h"

#include <charconv>
#include <cmath>

#include "text/number_format.h"

namespace varnoth::reports {

namespace {

constexpr std::string_view kPositionColumns = "Begin(bp)\tEnd(bp)\tMiddle(bp)";

std::string_view trim_blanks(std::string_view s) {
  const std::size_t first = s.find_first_not_of(' ');
  if (first == std::string_view::npos) return {};
  return s.substr(first, s.find_last_not_of(' ') - first + 1);
}

// The whole text as one number, or nothing.
std::optional<double> whole_number(std::string_view s) {
  if (s.empty()) return std::nullopt;
  double v = 0;
  const auto result = std::from_chars(s.data(), s.data() + s.size(), v);
  if (result.ec != std::errc() || result.ptr != s.data() + s.size() || !std::isfinite(v))
    return std::nullopt;
  return v;
}

std::vector<std::string_view> split(std::string_view s, char separator) {
  std::vector<std::string_view> out;
  for (;;) {
    const std::size_t at = s.find(separator);
    out.push_back(s.substr(0, at));
    if (at == std::string_view::npos) return out;
    s.remove_prefix(at + 1);
  }
}

PrintedValue printed(std::string_view cell) {
  const std::string_view text = trim_blanks(cell);
  const std::optional<double> v = whole_number(text);
  return {v.has_value(), v.value_or(0), std::string(text)};
}

}  // namespace

std::optional<WindowTable> parse_window_table(std::string_view text) {
  std::vector<std::string_view> lines = split(text, '\n');
  if (!lines.empty() && lines.back().empty()) lines.pop_back();  // behind the last line end
  for (std::string_view& line : lines)
    if (line.ends_with('\r')) line.remove_suffix(1);
  if (lines.empty() || !lines.front().starts_with(kPositionColumns)) return std::nullopt;

  WindowTable table;
  const std::string_view rest = lines.front().substr(kPositionColumns.size());
  if (!rest.empty()) {
    if (rest.front() != '\t') return std::nullopt;
    for (std::string_view column : split(rest.substr(1), '\t')) table.columns.emplace_back(column);
  }
  const std::size_t fields = 3 + table.columns.size();

  std::vector<std::string_view> names;  // name lines since the last row
  for (std::size_t i = 1; i < lines.size(); ++i) {
    const std::vector<std::string_view> cells = split(lines[i], '\t');
    std::optional<double> begin, end, middle;
    if (cells.size() == fields) {
      begin = whole_number(cells[0]);
      end = whole_number(cells[1]);
      middle = whole_number(cells[2]);
    }
    if (!begin || !end || !middle) {
      names.push_back(lines[i]);
      continue;
    }
    if (table.comparisons.empty() || !names.empty()) {
      WindowComparison& c = table.comparisons.emplace_back();
      // The last two name lines before the row name its comparison.
      if (names.size() >= 2) {
        c.name_a = names[names.size() - 2];
        c.name_b = names.back();
      } else if (names.size() == 1) {
        c.name_a = names.back();
      }
      names.clear();
    }
    WindowRow row{*begin, *end, *middle, std::string(cells[2]), {}};
    row.values.reserve(table.columns.size());
    for (std::size_t k = 3; k < cells.size(); ++k) row.values.push_back(printed(cells[k]));
    table.comparisons.back().rows.push_back(std::move(row));
  }
  return table;
}

std::optional<WindowTable> window_table_of(const AnalysisRecord& rec, std::string_view text) {
  std::optional<WindowTable> table = parse_window_table(text);
  if (!table) return table;
  const std::vector<std::string>& names = rec.seq.SeqNames;
  if (table->comparisons.size() == 1 && names.size() >= 2) {
    WindowComparison& c = table->comparisons.front();
    if (c.name_a.empty() && c.name_b.empty()) {
      c.name_a = names[0];
      c.name_b = names[1];
    }
  }
  // Names padded by their file's columns are shown without the padding.
  for (WindowComparison& c : table->comparisons) {
    c.name_a = std::string(trim_blanks(c.name_a));
    c.name_b = std::string(trim_blanks(c.name_b));
  }
  return table;
}

HeatMapData heat_map_data(const AnalysisRecord& rec, const MatrixItem& item) {
  HeatMapData data;
  data.item = item;
  const SequenceData& s = rec.seq;
  const long n = s.SeqCount >= 1 ? static_cast<long>(std::floor(s.SeqCount)) : 0;
  for (long i = 0; i < n; ++i) {
    const auto k = static_cast<std::size_t>(i);
    std::string_view name = k < s.SeqNames.size() ? std::string_view(s.SeqNames[k]) : "";
    const std::size_t end = name.find_last_not_of(' ');
    data.names.emplace_back(name.substr(0, end == std::string_view::npos ? 0 : end + 1));
  }
  if (n < 2) return data;
  for (long r = 0; r < n - 1; ++r) data.rows.emplace_back(static_cast<std::size_t>(r + 1));

  // The store walks (1,2), (1,3), ... (1,n), (2,3), ...: down each column of
  // the lower-left matrix in turn, as the ".dis" file reads it.
  const auto& store = rec.results.ComparisonStore;
  const auto column = static_cast<std::size_t>(item.column);
  std::size_t counter = 0;
  for (long c = 1; c <= n - 1; ++c) {
    for (long r = c; r <= n - 1; ++r) {
      ++counter;
      PrintedValue& cell =
          data.rows[static_cast<std::size_t>(r - 1)][static_cast<std::size_t>(c - 1)];
      if (counter >= store.size() || column >= store[counter].size() ||
          store[counter][column].not_applicable) {
        cell = {false, 0, "N.A."};
        continue;
      }
      cell = printed(text::format(store[counter][column].value, "0.0000"));
    }
  }
  return data;
}

}  // namespace varnoth::reports
