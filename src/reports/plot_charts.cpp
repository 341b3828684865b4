#include "reports/plot_charts.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <limits>

#include "text/number_format.h"

namespace varnoth::reports {

namespace {

constexpr Rgb kInk{33, 33, 33};
constexpr Rgb kMuted{90, 90, 90};
constexpr Rgb kFrame{150, 150, 150};
constexpr Rgb kGrid{228, 228, 228};
constexpr Rgb kWhite{255, 255, 255};
constexpr Rgb kNotApplicableFill{217, 217, 217};
constexpr Rgb kNotApplicableMark{140, 140, 140};

// Line colours, told apart also by readers with the common colour-vision deficiencies.
constexpr std::array<Rgb, 6> kPalette{{{31, 119, 180},
                                       {255, 127, 14},
                                       {44, 160, 44},
                                       {214, 39, 40},
                                       {148, 103, 189},
                                       {140, 86, 75}}};
constexpr Rgb kKsColor{31, 119, 180};
constexpr Rgb kKaColor{214, 39, 40};
constexpr Rgb kRatioColor{44, 140, 44};

constexpr double kTitleSize = 17, kSubtitleSize = 13, kLabelSize = 12, kTickSize = 11.5;

// ---------------------------------------------------------------------------
// Text and numbers.

// Characters of a text as a reader sees them (UTF-8 continuation bytes skipped).
std::size_t glyphs(std::string_view s) {
  std::size_t n = 0;
  for (char ch : s)
    if ((static_cast<unsigned char>(ch) & 0xC0u) != 0x80u) ++n;
  return n;
}

// Width of a text in the plot font, roughly: enough to leave room for it.
double text_width(std::string_view s, double size) {
  return 0.58 * size * static_cast<double>(glyphs(s));
}

// A text broken at blanks into lines no wider than `width`; a word wider than
// the width stands alone on its line.
std::vector<std::string> wrapped(std::string_view s, double size, double width) {
  std::vector<std::string> lines;
  std::string current;
  std::size_t at = 0;
  while (at <= s.size()) {
    std::size_t end = s.find(' ', at);
    if (end == std::string_view::npos) end = s.size();
    const std::string_view word = s.substr(at, end - at);
    const std::string candidate = current.empty() ? std::string(word) : current + " " + std::string(word);
    if (!current.empty() && text_width(candidate, size) > width) {
      lines.push_back(current);
      current = std::string(word);
    } else {
      current = candidate;
    }
    at = end + 1;
  }
  if (!current.empty() || lines.empty()) lines.push_back(current);
  return lines;
}

// A name cut to `limit` characters with "..." behind, never inside a UTF-8 character.
std::string shortened(std::string_view s, std::size_t limit) {
  if (glyphs(s) <= limit) return std::string(s);
  std::size_t kept = 0, at = 0;
  for (; at < s.size(); ++at) {
    if ((static_cast<unsigned char>(s[at]) & 0xC0u) != 0x80u) {
      if (kept == limit - 3) break;
      ++kept;
    }
  }
  return std::string(s.substr(0, at)) + "...";
}

std::string fixed(double v, int decimals) {
  char buf[48];
  std::snprintf(buf, sizeof buf, "%.*f", decimals, v);
  std::string s = buf;
  // No "-0.00" for a tick that is zero up to rounding.
  if (s.starts_with('-') && s.find_first_not_of("-0.") == std::string::npos) s.erase(0, 1);
  return s;
}

struct Ticks {
  double low = 0, high = 1, step = 0.2;
  int decimals = 1;
  std::vector<double> values;
};

// "Nice" tick marks (1, 2, 2.5 or 5 times a power of ten) over [low, high],
// the range widened to whole steps.
Ticks nice_ticks(double low, double high, int target) {
  if (!(high > low)) high = low + (low == 0 ? 1 : std::fabs(low) * 0.1);
  const double rough = (high - low) / std::max(target, 1);
  const double power = std::pow(10.0, std::floor(std::log10(rough)));
  double step = power;
  for (double m : {1.0, 2.0, 2.5, 5.0, 10.0}) {
    step = m * power;
    if (step >= rough) break;
  }
  Ticks t;
  t.step = step;
  t.low = std::floor(low / step + 1e-9) * step;
  t.high = std::ceil(high / step - 1e-9) * step;
  const double digits = -std::floor(std::log10(step) + 1e-9);
  t.decimals = std::clamp(static_cast<int>(digits) + (std::fmod(step / power, 1.0) > 0.01 ? 1 : 0),
                          0, 8);
  for (double v = t.low; v <= t.high + step * 1e-6; v += step)
    t.values.push_back(std::fabs(v) < step * 1e-9 ? 0 : v);
  return t;
}

// Ticks inside [low, high] without widening it.
Ticks inner_ticks(double low, double high, int target) {
  Ticks t = nice_ticks(low, high, target);
  t.low = low;
  t.high = high;
  std::erase_if(t.values, [&](double v) {
    return v < low - t.step * 1e-6 || v > high + t.step * 1e-6;
  });
  return t;
}

struct Scale {
  double low, high, from, to;  // data range onto pixel range
  double operator()(double v) const {
    return high == low ? from : from + (v - low) / (high - low) * (to - from);
  }
};

// ---------------------------------------------------------------------------
// Shapes.

void text(Scene& s, double x, double y, std::string t, double size, TextAnchor anchor = TextAnchor::Start,
          bool bold = false, double rotate = 0, Rgb color = kInk, std::string css_class = {}) {
  s.shapes.emplace_back(
      TextShape{{x, y}, std::move(t), size, anchor, bold, rotate, color, std::move(css_class)});
}

void line(Scene& s, double x1, double y1, double x2, double y2, Rgb color, double width = 1,
          bool dashed = false) {
  s.shapes.emplace_back(LineShape{{x1, y1}, {x2, y2}, color, width, dashed});
}

RectShape frame(double x, double y, double w, double h, Rgb stroke) {
  RectShape r;
  r.x = x;
  r.y = y;
  r.width = w;
  r.height = h;
  r.filled = false;
  r.stroked = true;
  r.stroke = stroke;
  return r;
}

RectShape filled(double x, double y, double w, double h, Rgb fill) {
  RectShape r;
  r.x = x;
  r.y = y;
  r.width = w;
  r.height = h;
  r.fill = fill;
  return r;
}

// Title and subtitle from `y` on, wrapped to `width`; returns the baseline
// below the last line.
double titles_block(Scene& s, const ChartTitles& titles, double x, double width) {
  // A narrow picture (a page of the desktop program) takes a smaller title.
  const double size = width < 760 ? 15 : kTitleSize;
  double y = 26;
  for (const std::string& l : wrapped(titles.title, size, width)) {
    text(s, x, y, l, size, TextAnchor::Start, true, 0, kInk, "title");
    y += size + 5;
  }
  for (const std::string& l : wrapped(titles.subtitle, kSubtitleSize, width)) {
    text(s, x, y, l, kSubtitleSize, TextAnchor::Start, false, 0, kMuted, "subtitle");
    y += 18;
  }
  return y;
}

// ---------------------------------------------------------------------------
// Window chart.

struct SeriesPoint {
  bool applicable = false;
  double value = 0;
  std::string text;
};

struct Series {
  std::string name;   // data-series: the column as printed, or "Ka/Ks"
  std::string label;  // the legend's
  Rgb color;
  bool dashed = false;
  bool right_axis = false;
  std::vector<std::vector<SeriesPoint>> points;  // [comparison][window]
};

std::vector<Series> chart_series(const WindowTable& table) {
  std::vector<Series> out;
  const bool coding = table.coding();
  for (std::size_t k = 0; k < table.columns.size(); ++k) {
    Series s;
    s.name = table.columns[k];
    s.label = series_label(s.name);
    s.color = coding ? (k == 0 ? kKsColor : kKaColor) : kPalette[k % kPalette.size()];
    for (const WindowComparison& c : table.comparisons) {
      auto& points = s.points.emplace_back();
      for (const WindowRow& row : c.rows) {
        const PrintedValue& v = row.values[k];
        points.push_back({v.applicable, v.value, v.text});
      }
    }
    out.push_back(std::move(s));
  }
  if (coding && table.columns.size() >= 2) {
    // Ka/Ks of the printed values, where both are applicable and Ks is above 0.
    Series s;
    s.name = "Ka/Ks";
    s.label = "Ka/Ks (right axis)";
    s.color = kRatioColor;
    s.dashed = true;
    s.right_axis = true;
    for (const WindowComparison& c : table.comparisons) {
      auto& points = s.points.emplace_back();
      for (const WindowRow& row : c.rows) {
        const PrintedValue& ks = row.values[0];
        const PrintedValue& ka = row.values[1];
        if (ks.applicable && ka.applicable && ks.value > 0) {
          const double ratio = ka.value / ks.value;
          points.push_back({true, ratio, shortest_number(ratio)});
        } else {
          points.push_back({false, 0, "N.A."});
        }
      }
    }
    out.push_back(std::move(s));
  }
  return out;
}

// The data range of the series on one axis, over every comparison.
std::pair<double, double> value_range(const std::vector<Series>& series, bool right_axis) {
  double low = 0, high = -std::numeric_limits<double>::infinity();
  for (const Series& s : series) {
    if (s.right_axis != right_axis) continue;
    for (const auto& comparison : s.points)
      for (const SeriesPoint& p : comparison) {
        if (!p.applicable) continue;
        low = std::min(low, p.value);
        high = std::max(high, p.value);
      }
  }
  if (!std::isfinite(high) || high <= low) high = low + 1;
  return {low, high};
}

// A legend entry at (x, y), on the next row where the line is full.
void legend_entry(Scene& s, double& x, double& y, double left, double right,
                  const Series& series) {
  const double width = 32 + text_width(series.label, kLabelSize);
  if (x > left && x + width > right) {
    x = left;
    y += 20;
  }
  line(s, x, y - 4, x + 26, y - 4, series.color, 2, series.dashed);
  s.shapes.emplace_back(CircleShape{{x + 13, y - 4}, 3.5, series.color, "legend-mark", {}});
  text(s, x + 32, y, series.label, kLabelSize);
  x += width + 22;
}

}  // namespace

std::string series_label(std::string_view column) {
  if (column.starts_with("Ks ")) return "Ks";
  if (column.starts_with("Ka ")) return "Ka";
  static constexpr std::pair<std::string_view, std::string_view> kNames[] = {
      {"JC", "Jukes & Cantor"}, {"K-2p", "Kimura 2-p"},  {"T-N", "Tajima & Nei"},
      {"Taj-1p", "Tajima 1-p"}, {"Taj-2p", "Tajima 2-p"}, {"Taj-4p", "Tajima 4-p"}};
  for (const auto& [name, label] : kNames)
    if (column == name) return std::string(label);
  return std::string(column);
}

Scene window_chart(const WindowTable& table, const ChartTitles& titles,
                   const WindowChartOptions& options) {
  Scene s;
  s.title = titles.title;
  const bool coding = table.coding();
  const std::vector<Series> series = chart_series(table);

  std::vector<std::size_t> shown;
  for (std::size_t c = 0; c < table.comparisons.size(); ++c)
    if (!options.comparison || *options.comparison == c) shown.push_back(c);

  const double left = 82, right = coding ? 82 : 30;
  const double width = std::max(options.width, 360.0);

  // Header: titles and the legend.
  double legend_y = titles_block(s, titles, left, width - left - 16) + 10;
  double legend_x = left;
  for (const Series& one : series) legend_entry(s, legend_x, legend_y, left, width - 16, one);
  const double header = legend_y + 16;

  const std::size_t panels = std::max<std::size_t>(shown.size(), 1);
  double panel_height = options.panel_height;
  if (options.height) panel_height = (*options.height - header - 6) / static_cast<double>(panels);
  panel_height = std::max(panel_height, 150.0);
  s.width = width;
  const double natural = header + 6 + panel_height * static_cast<double>(panels);
  s.height = options.height ? std::max(*options.height, natural) : natural;

  // Scales shared by every comparison of the table.
  double x_low = std::numeric_limits<double>::infinity(), x_high = -x_low;
  for (const WindowComparison& c : table.comparisons)
    for (const WindowRow& row : c.rows) {
      x_low = std::min(x_low, row.begin);
      x_high = std::max(x_high, row.end);
    }
  if (!std::isfinite(x_low)) x_low = 1, x_high = 2;
  x_low = std::max(0.0, x_low - 1);  // position 1 starts the axis at 0
  if (x_high <= x_low) x_high = x_low + 1;
  const auto [left_low, left_high] = value_range(series, false);
  const auto [right_low, right_high] = value_range(series, true);
  const Ticks x_ticks = inner_ticks(x_low, x_high, std::max(3, static_cast<int>(width / 110)));
  const int y_target = std::clamp(static_cast<int>(panel_height / 55), 3, 8);
  const Ticks left_ticks = nice_ticks(left_low, left_high, y_target);
  const Ticks right_ticks = nice_ticks(right_low, right_high, y_target);

  const double plot_left = left, plot_right = width - right;
  const std::string left_title =
      coding ? "Ks, Ka (substitutions per site)" : "K (substitutions per site)";

  if (shown.empty()) {
    text(s, width / 2, header + panel_height / 2, "No window in the table", kLabelSize,
         TextAnchor::Middle, false, 0, kMuted);
    return s;
  }

  for (std::size_t i = 0; i < shown.size(); ++i) {
    const std::size_t c = shown[i];
    const WindowComparison& comparison = table.comparisons[c];
    const double top = header + panel_height * static_cast<double>(i);
    const double plot_top = top + 30, plot_bottom = top + panel_height - 50;
    const Scale x{x_ticks.low, x_ticks.high, plot_left, plot_right};
    const Scale y_left{left_ticks.low, left_ticks.high, plot_bottom, plot_top};
    const Scale y_right{right_ticks.low, right_ticks.high, plot_bottom, plot_top};

    s.shapes.emplace_back(GroupStart{"panel",
                                     {{"comparison", std::to_string(c + 1)},
                                      {"name-a", comparison.name_a},
                                      {"name-b", comparison.name_b}}});
    std::string heading = comparison.name_a;
    if (!comparison.name_b.empty()) heading += "  vs  " + comparison.name_b;
    if (heading.empty()) heading = "Comparison " + std::to_string(c + 1);
    text(s, plot_left, top + 20, heading, 13.5, TextAnchor::Start, true, 0, kInk, "panel-title");

    // Grid, ticks and axis titles.
    for (double v : left_ticks.values) {
      line(s, plot_left, y_left(v), plot_right, y_left(v), kGrid);
      text(s, plot_left - 7, y_left(v) + 4, fixed(v, left_ticks.decimals), kTickSize,
           TextAnchor::End);
    }
    for (double v : x_ticks.values) {
      line(s, x(v), plot_top, x(v), plot_bottom, kGrid);
      line(s, x(v), plot_bottom, x(v), plot_bottom + 5, kFrame);
      text(s, x(v), plot_bottom + 19, fixed(v, x_ticks.decimals), kTickSize, TextAnchor::Middle);
    }
    if (coding) {
      for (double v : right_ticks.values) {
        line(s, plot_right, y_right(v), plot_right + 5, y_right(v), kRatioColor);
        text(s, plot_right + 8, y_right(v) + 4, fixed(v, right_ticks.decimals), kTickSize,
             TextAnchor::Start, false, 0, kRatioColor);
      }
      if (1 >= right_ticks.low && 1 <= right_ticks.high) {
        line(s, plot_left, y_right(1), plot_right, y_right(1), kRatioColor, 1, true);
        text(s, plot_right - 4, y_right(1) - 4, "Ka/Ks = 1", 10.5, TextAnchor::End, false, 0,
             kRatioColor);
      }
    }
    s.shapes.emplace_back(frame(plot_left, plot_top, plot_right - plot_left,
                                plot_bottom - plot_top, kFrame));
    const double middle_y = (plot_top + plot_bottom) / 2;
    text(s, 22, middle_y, left_title, kLabelSize, TextAnchor::Middle, false, -90, kInk,
         "axis-title");
    if (coding)
      text(s, width - 20, middle_y, "Ka/Ks (ratio)", kLabelSize, TextAnchor::Middle, false, 90,
           kRatioColor, "axis-title");
    text(s, (plot_left + plot_right) / 2, plot_bottom + 40,
         "Window middle position (bp)", kLabelSize, TextAnchor::Middle, false, 0, kInk,
         "axis-title");

    // Lines through consecutive applicable windows; a not applicable window
    // breaks the line. Then the points over them.
    bool any = false;
    for (const Series& one : series) {
      const Scale& y = one.right_axis ? y_right : y_left;
      const auto& points = one.points[c];
      PolylineShape run{{}, one.color, 1.8, one.dashed, {{"series", one.name}}};
      auto flush = [&] {
        if (run.points.size() >= 2) s.shapes.emplace_back(run);
        run.points.clear();
      };
      for (std::size_t w = 0; w < points.size(); ++w) {
        if (!points[w].applicable) {
          flush();
          continue;
        }
        run.points.push_back({x(comparison.rows[w].middle), y(points[w].value)});
      }
      flush();
    }
    const double plot_width = plot_right - plot_left;
    const double radius =
        std::clamp(plot_width / std::max<double>(static_cast<double>(comparison.rows.size()), 1) / 3,
                   1.6, 3.6);
    for (const Series& one : series) {
      const Scale& y = one.right_axis ? y_right : y_left;
      const auto& points = one.points[c];
      for (std::size_t w = 0; w < points.size(); ++w) {
        if (!points[w].applicable) continue;
        any = true;
        const WindowRow& row = comparison.rows[w];
        DataAttributes data{{"series", one.name},
                            {"x", row.middle_text},
                            {"y", points[w].text},
                            {"begin", shortest_number(row.begin)},
                            {"end", shortest_number(row.end)}};
        s.shapes.emplace_back(
            CircleShape{{x(row.middle), y(points[w].value)}, radius, one.color, "point", data});
      }
    }
    if (!any)
      text(s, (plot_left + plot_right) / 2, middle_y, "No window with an applicable value",
           kLabelSize, TextAnchor::Middle, false, 0, kMuted);
    s.shapes.emplace_back(GroupEnd{});
  }
  return s;
}

// ---------------------------------------------------------------------------
// Heat map.

namespace {

// Perceptually even colour scale (dark violet to yellow), low to high.
constexpr std::array<Rgb, 10> kScale{{{68, 1, 84},
                                      {72, 40, 120},
                                      {62, 73, 137},
                                      {49, 104, 142},
                                      {38, 130, 142},
                                      {31, 158, 137},
                                      {53, 183, 121},
                                      {110, 206, 88},
                                      {181, 222, 43},
                                      {253, 231, 37}}};

Rgb scale_color(double t) {
  t = std::clamp(std::isfinite(t) ? t : 0.0, 0.0, 1.0) * static_cast<double>(kScale.size() - 1);
  const auto i = std::min(static_cast<std::size_t>(t), kScale.size() - 2);
  const double f = t - static_cast<double>(i);
  auto mix = [f](std::uint8_t a, std::uint8_t b) {
    return static_cast<std::uint8_t>(std::lround(a + (b - a) * f));
  };
  const Rgb& a = kScale[i];
  const Rgb& b = kScale[i + 1];
  return {mix(a.r, b.r), mix(a.g, b.g), mix(a.b, b.b)};
}

bool dark(const Rgb& c) { return 0.299 * c.r + 0.587 * c.g + 0.114 * c.b < 140; }

void not_applicable_cell(Scene& s, RectShape cell, double size) {
  cell.fill = kNotApplicableFill;
  s.shapes.emplace_back(cell);
  const double inset = std::min(size * 0.18, 8.0);
  const double x0 = cell.x + inset, y0 = cell.y + inset;
  const double x1 = cell.x + cell.width - inset, y1 = cell.y + cell.height - inset;
  line(s, x0, y0, x1, y1, kNotApplicableMark, 1.2);
  line(s, x0, y1, x1, y0, kNotApplicableMark, 1.2);
}

std::string_view short_label(const MatrixItem& item) {
  std::string_view label = item.label;
  while (!label.empty() && label.front() == ' ') label.remove_prefix(1);
  if (label.ends_with(")")) label.remove_suffix(1);  // " Fd)"
  return label;
}

}  // namespace

Scene heat_map(const HeatMapData& data, const ChartTitles& titles, const HeatMapOptions& options) {
  Scene s;
  s.title = titles.title;
  const std::size_t n = data.names.size();
  const std::size_t m = n >= 2 ? n - 1 : 0;

  std::vector<std::string> labels;
  double label_width = 0;
  for (std::size_t i = 0; i < n; ++i) {
    labels.push_back(shortened(data.names[i].empty() ? "#" + std::to_string(i + 1) : data.names[i],
                               24));
    label_width = std::max(label_width, text_width(labels.back(), kLabelSize));
  }
  label_width = std::min(label_width, 180.0);

  double low = std::numeric_limits<double>::infinity(), high = -low;
  bool any_na = false;
  for (const auto& row : data.rows)
    for (const PrintedValue& v : row) {
      if (!v.applicable) {
        any_na = true;
        continue;
      }
      low = std::min(low, v.value);
      high = std::max(high, v.value);
    }
  const bool any_value = std::isfinite(low);
  if (!any_value) low = 0, high = 1;
  if (high <= low) high = low + (low == 0 ? 1 : std::fabs(low) * 0.1);

  const double left = 20 + label_width + 10;
  const double right = 130;
  const double bottom = label_width * 0.72 + 28;
  double cell = m <= 12 ? 54 : std::max(8.0, 660.0 / static_cast<double>(m));
  const double natural_width = std::max(left + cell * static_cast<double>(m) + right, 600.0);
  s.width = options.width > 0 ? options.width : natural_width;
  const double top = titles_block(s, titles, 20, s.width - 40) + 8;
  if (options.width > 0 && options.height > 0 && m > 0)
    cell = std::max(2.0, std::min((options.width - left - right) / static_cast<double>(m),
                                  (options.height - top - bottom) / static_cast<double>(m)));
  const double grid = cell * static_cast<double>(m);
  s.height = options.height > 0 ? options.height
                                : top + std::max(grid, any_na ? 290.0 : 250.0) + bottom;
  if (m == 0) {
    text(s, 20, top + 20, "No matrix: fewer than two sequences", kLabelSize);
    return s;
  }

  // Cells: row r is sequence r + 2, column c sequence c + 1.
  const double font = std::min(12.0, cell / 4.6);
  s.shapes.emplace_back(GroupStart{"matrix", {{"sequences", std::to_string(n)}}});
  for (std::size_t r = 0; r < data.rows.size(); ++r) {
    for (std::size_t c = 0; c < data.rows[r].size(); ++c) {
      const PrintedValue& v = data.rows[r][c];
      RectShape rect = filled(left + cell * static_cast<double>(c),
                              top + cell * static_cast<double>(r), cell, cell, {});
      rect.stroked = cell >= 8;
      rect.stroke = kWhite;
      rect.css_class = "cell";
      rect.data = {{"row", std::to_string(r + 2)},
                   {"column", std::to_string(c + 1)},
                   {"value", v.applicable ? v.text : "N.A."}};
      const double cx = rect.x + cell / 2, cy = rect.y + cell / 2 + font * 0.35;
      if (!v.applicable) {
        not_applicable_cell(s, rect, cell);
        if (cell >= 34) text(s, cx, cy, "N.A.", font, TextAnchor::Middle, false, 0, kInk);
        continue;
      }
      rect.fill = scale_color((v.value - low) / (high - low));
      s.shapes.emplace_back(rect);
      if (cell >= 40)
        text(s, cx, cy, v.text, font, TextAnchor::Middle, false, 0, dark(rect.fill) ? kWhite : kInk);
    }
  }
  s.shapes.emplace_back(GroupEnd{});

  // Names: rows on the left, columns below, slanted.
  const double label_size = std::clamp(cell * 0.55, 7.0, kLabelSize);
  for (std::size_t r = 0; r < m; ++r)
    text(s, left - 8, top + cell * (static_cast<double>(r) + 0.5) + label_size * 0.35,
         labels[r + 1], label_size, TextAnchor::End, false, 0, kInk, "row-label");
  for (std::size_t c = 0; c < m; ++c) {
    const double x = left + cell * (static_cast<double>(c) + 0.5) + label_size * 0.3;
    text(s, x, top + grid + 10, labels[c], label_size, TextAnchor::End, false, -45, kInk,
         "column-label");
  }

  // The colour scale.
  const double bar_x = left + grid + 30, bar_top = top + 18;
  const double bar_height = std::clamp(grid - 18, 150.0, 260.0);
  text(s, bar_x, top + 8, std::string(short_label(data.item)), kLabelSize, TextAnchor::Start,
       true);
  constexpr int kSteps = 64;
  for (int i = 0; i < kSteps; ++i) {
    const double t = (i + 0.5) / kSteps;
    const double step = bar_height / kSteps;
    // Each step reaches 1 px into the one below, so no seam shows between them.
    s.shapes.emplace_back(filled(bar_x, bar_top + bar_height - step * (i + 1), 18,
                                 i == 0 ? step : step + 1, scale_color(t)));
  }
  s.shapes.emplace_back(frame(bar_x, bar_top, 18, bar_height, kFrame));
  const Scale bar{low, high, bar_top + bar_height, bar_top};
  if (any_value) {
    const Ticks ticks = inner_ticks(low, high, 5);
    for (double v : ticks.values) {
      line(s, bar_x + 18, bar(v), bar_x + 23, bar(v), kFrame);
      text(s, bar_x + 27, bar(v) + 4, fixed(v, std::max(ticks.decimals, 2)), kTickSize);
    }
  }
  if (any_na) {
    const double y = bar_top + bar_height + 16;
    not_applicable_cell(s, filled(bar_x, y, 18, 18, {}), 18);
    text(s, bar_x + 26, y + 13, "N.A.", kTickSize);
  }
  return s;
}

// ---------------------------------------------------------------------------
// Titles.

namespace {

std::string code_name(const AnalysisRecord& rec) {
  switch (rec.active_code()) {
    case GeneticCode::Vermito: return "vertebrate mitochondrial code";
    case GeneticCode::Dromito: return "Drosophila mitochondrial code";
    case GeneticCode::Universal: break;
  }
  return "universal code";
}

// Restrictions and a pathway weight other than 0.5, where chosen.
std::string coding_choices(const AnalysisRecord& rec) {
  std::string out;
  const OptionFields& o = rec.options;
  if (o.MaxOneChangeFlag == 1) out += " | max. one substitution per codon";
  if (o.No3DiffFlag == 1) out += " | no codons with 3 differences";
  if (o.OnlyAaChangeFlag == 1) out += " | only aa substitutions";
  if (o.PathwayWeight != 0.5f) out += " | pathway weight " + text::plain(o.PathwayWeight);
  return out;
}

std::string length_text(double nucleotides, bool coding) {
  std::string out = text::plain(nucleotides) + " bp";
  if (coding) out += " (" + text::plain(std::floor(nucleotides / 3)) + " codons)";
  return out;
}

std::string file_name(const AnalysisRecord& rec) {
  return rec.seq.InputFileName.empty() ? std::string("alignment") : rec.seq.InputFileName;
}

}  // namespace

ChartTitles window_chart_titles(const AnalysisRecord& rec, const WindowTable& table) {
  ChartTitles t;
  const bool coding = table.coding();
  if (coding) {
    const bool jc = !table.columns.empty() && table.columns.front() == "Ks JC";
    t.title = std::string("Coding divergence in sliding windows: Ks, Ka and Ka/Ks, ") +
              (jc ? "Jukes and Cantor" : "Kimura 2-p");
  } else {
    t.title = "Noncoding divergence in sliding windows: K, ";
    for (std::size_t i = 0; i < table.columns.size(); ++i) {
      if (i > 0) t.title += i + 1 == table.columns.size() ? " and " : ", ";
      t.title += series_label(table.columns[i]);
    }
  }
  // The window of the run, or as the table's first rows show it.
  double size = rec.region.WindowSize, step = rec.region.WindowStep;
  if (!(size > 0) && !table.comparisons.empty() && !table.comparisons[0].rows.empty()) {
    const auto& rows = table.comparisons[0].rows;
    size = rows[0].end - rows[0].begin + 1;
    step = rows.size() > 1 ? rows[1].begin - rows[0].begin : 0;
  }
  t.subtitle = file_name(rec);
  if (coding) t.subtitle += " | " + code_name(rec) + coding_choices(rec);
  t.subtitle += " | windows of " + length_text(size, coding) + ", moving " +
                length_text(step, coding);
  t.subtitle += " | " + std::to_string(table.comparisons.size()) +
                (table.comparisons.size() == 1 ? " comparison" : " comparisons");
  return t;
}

ChartTitles heat_map_titles(const AnalysisRecord& rec, const MatrixItem& item) {
  ChartTitles t;
  const std::string label(short_label(item));
  if (item.coding) {
    const bool jc = item.method.find("Jukes") != std::string_view::npos;
    t.title = "Coding divergence matrix: " + label + ", " + (jc ? "Jukes and Cantor" : "Kimura 2-p");
  } else {
    static constexpr std::string_view kMethods[10] = {
        "",           "Jukes & Cantor", "Kimura 2-p", "Kimura 2-p", "Kimura 2-p",
        "Tajima & Nei", "Tajima 1-p",   "Tajima 2-p", "Tajima 4-p", "observed frequency"};
    const int column = std::clamp(item.column, 1, 9);
    t.title = "Noncoding divergence matrix: " + label + ", " +
              std::string(kMethods[static_cast<std::size_t>(column)]);
  }
  const double n = std::floor(rec.seq.SeqCount);
  t.subtitle = file_name(rec);
  if (item.coding) t.subtitle += " | " + code_name(rec) + coding_choices(rec);
  t.subtitle += " | " + text::plain(n) + " sequences | ";
  if (rec.region.RegionMode == 1)
    t.subtitle += "region " + rec.region.RegionFirst + "-" + rec.region.RegionLast + " bp";
  else
    t.subtitle += "whole sequence";
  return t;
}

}  // namespace varnoth::reports
