// The pictures: the SVG is read back as XML and its points and cells compared
// with the window table and the matrix of the same run.
#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "divergence/driver.h"
#include "divergence/regions.h"
#include "input/sequence_file.h"
#include "reports/matrix.h"
#include "reports/plot_charts.h"
#include "reports/plot_data.h"
#include "reports/plot_files.h"
#include "reports/plot_svg.h"
#include "state/options.h"
#include "support/alignment_builder.h"
#include "support/fake_platform.h"
#include "support/paths.h"

namespace varnoth::reports {
namespace {

using testing::read_file;
using testing::scratch_dir;
using testing::source_path;

// ---------------------------------------------------------------------------
// A small XML reader: every element with its attributes, its text, and the
// data-comparison of the panel it lies in. Fails the test on unbalanced tags.

struct Element {
  std::string name;
  std::map<std::string, std::string> attrs;
  std::string text;
  std::string panel;  // data-comparison of the enclosing panel group, or ""
  std::string attr(const std::string& key) const {
    auto it = attrs.find(key);
    return it == attrs.end() ? std::string() : it->second;
  }
};

std::string unescape(std::string_view s) {
  std::string out;
  for (std::size_t i = 0; i < s.size(); ++i) {
    if (s[i] != '&') {
      out += s[i];
      continue;
    }
    const std::size_t end = s.find(';', i);
    const std::string_view entity = s.substr(i + 1, end - i - 1);
    if (entity == "amp") out += '&';
    else if (entity == "lt") out += '<';
    else if (entity == "gt") out += '>';
    else if (entity == "quot") out += '"';
    else if (entity == "#9") out += '\t';
    else ADD_FAILURE() << "entity " << entity;
    i = end;
  }
  return out;
}

std::vector<Element> parse_svg(const std::string& svg) {
  std::vector<Element> out;
  struct Open {
    std::string name;
    std::size_t index;
    std::string panel;
  };
  std::vector<Open> stack;
  std::size_t i = svg.find("?>");
  EXPECT_TRUE(svg.starts_with("<?xml")) << "no XML declaration";
  i = i == std::string::npos ? 0 : i + 2;
  while ((i = svg.find('<', i)) != std::string::npos) {
    if (svg.compare(i, 2, "</") == 0) {
      const std::size_t end = svg.find('>', i);
      const std::string name = svg.substr(i + 2, end - i - 2);
      if (stack.empty() || stack.back().name != name) {
        ADD_FAILURE() << "unbalanced </" << name << ">";
        return out;
      }
      stack.pop_back();
      i = end + 1;
      continue;
    }
    Element e;
    std::size_t at = i + 1;
    while (at < svg.size() && svg[at] != ' ' && svg[at] != '>' && svg[at] != '/') e.name += svg[at++];
    bool closed = false;
    for (;;) {
      while (svg[at] == ' ' || svg[at] == '\n') ++at;
      if (svg[at] == '/') {
        closed = true;
        at += 2;
        break;
      }
      if (svg[at] == '>') {
        ++at;
        break;
      }
      const std::size_t eq = svg.find('=', at);
      const std::string key = svg.substr(at, eq - at);
      EXPECT_EQ(svg[eq + 1], '"');
      const std::size_t close = svg.find('"', eq + 2);
      EXPECT_EQ(e.attrs.count(key), 0u) << "attribute twice: " << key;
      e.attrs[key] = unescape(std::string_view(svg).substr(eq + 2, close - eq - 2));
      at = close + 1;
    }
    e.panel = stack.empty() ? "" : stack.back().panel;
    if (e.name == "g" && e.attr("class") == "panel") e.panel = e.attr("data-comparison");
    if (!closed) {
      const std::size_t next = svg.find('<', at);
      e.text = unescape(std::string_view(svg).substr(at, next - at));
      stack.push_back({e.name, out.size(), e.panel});
    }
    out.push_back(std::move(e));
    i = at;
  }
  EXPECT_TRUE(stack.empty()) << "unclosed <" << stack.back().name << ">";
  return out;
}

std::vector<Element> with_class(const std::vector<Element>& all, const std::string& css_class) {
  std::vector<Element> out;
  for (const Element& e : all)
    if (e.attr("class") == css_class) out.push_back(e);
  return out;
}

// ---------------------------------------------------------------------------
// The window table read apart from the code under test: a row per line with
// tabs, names on the other lines.

struct TableRow {
  std::string comparison;  // "1", "2", ...
  std::vector<std::string> cells;
};

std::vector<TableRow> split_table(const std::string& text, std::vector<std::string>& columns) {
  std::vector<TableRow> rows;
  std::istringstream in(text);
  std::string line;
  int comparison = 0;
  bool names_before = true;
  bool header = true;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    std::vector<std::string> cells;
    std::stringstream fields(line);
    std::string cell;
    while (std::getline(fields, cell, '\t')) cells.push_back(cell);
    if (header) {
      columns.assign(cells.begin() + 3, cells.end());
      header = false;
      continue;
    }
    if (cells.size() < 4) {
      names_before = true;
      continue;
    }
    if (names_before) ++comparison;
    names_before = false;
    for (std::string& c : cells) {
      while (!c.empty() && c.front() == ' ') c.erase(0, 1);
      while (!c.empty() && c.back() == ' ') c.pop_back();
    }
    rows.push_back({std::to_string(comparison), cells});
  }
  return rows;
}

// Every point of `series` drawn in the SVG matches the table: one per window
// whose cell is a value, at its middle, with its value; none for "N.A.".
void expect_points_match_table(const std::vector<Element>& svg, const std::string& table,
                               int expected_comparisons) {
  std::vector<std::string> columns;
  const std::vector<TableRow> rows = split_table(table, columns);
  ASSERT_FALSE(rows.empty());
  EXPECT_EQ(rows.back().comparison, std::to_string(expected_comparisons));
  EXPECT_EQ(with_class(svg, "panel").size(), static_cast<std::size_t>(expected_comparisons));
  const std::vector<Element> points = with_class(svg, "point");
  for (std::size_t k = 0; k < columns.size(); ++k) {
    std::vector<std::string> expected, drawn;
    for (const TableRow& r : rows)
      if (r.cells[3 + k] != "N.A.")
        expected.push_back(r.comparison + " " + r.cells[2] + " " + r.cells[3 + k]);
    for (const Element& p : points)
      if (p.attr("data-series") == columns[k])
        drawn.push_back(p.panel + " " + p.attr("data-x") + " " + p.attr("data-y"));
    EXPECT_EQ(drawn, expected) << columns[k];
  }
}

// ---------------------------------------------------------------------------
// Runs.

struct Session {
  AnalysisRecord rec;
  testing::FakePlatform platform;
  Session() {
    start_up(rec);
    title_page_click(rec);
  }
  void windows(const char* size, const char* step) {
    open_sliding_windows(rec);
    rec.form.TextWinSize.text = size;
    rec.form.TextMovement.text = step;
    ASSERT_TRUE(accept_sliding_windows(rec, platform));
  }
  void run() { ASSERT_TRUE(divergence::run_divergence(rec, platform)); }
  void load(const std::string& relative) {
    ASSERT_TRUE(input::load_sequence_file(rec, platform, source_path(relative)).ok());
  }
};

// 3 sequences of 60 sites, windows of 20 moving 10: five windows. Second
// differs from First by a transversion at every site of 21-40, so in window
// 21-40 P = 0, Q = 1 and neither JC (p = 1) nor Kimura (1 - 2Q < 0) applies.
void load_saturated(Session& s) {
  std::string first;
  for (int i = 0; i < 15; ++i) first += "ACGT";
  std::string second = first;
  for (int i = 20; i < 40; ++i) second[static_cast<std::size_t>(i)] = "CATG"[i % 4];
  std::string third = first;
  third[4] = 'G';
  third[44] = 'T';
  testing::load_alignment(s.rec, {{"First", first}, {"Second", second}, {"Third", third}},
                          "saturated.meg");
}

TEST(WindowChart, NoncodingPointsAreTheTableValuesAndNotApplicableWindowsAreGaps) {
  Session s;
  click_noncoding(s.rec);
  click_method(s.rec, &Menu::JukesandCantor);
  load_saturated(s);
  s.windows("20", "10");
  s.run();
  const std::string& table = s.rec.results.WindowDataText;
  // The run prints what the gap is drawn for: JC and Kimura N.A. in 21-40.
  ASSERT_NE(table.find("\r\n21\t40\t30.5\tN.A.\tN.A.\r\n"), std::string::npos) << table;

  const auto parsed = window_table_of(s.rec, table);
  ASSERT_TRUE(parsed);
  const std::string svg = svg_text(window_chart(*parsed, window_chart_titles(s.rec, *parsed)));
  const std::vector<Element> elements = parse_svg(svg);
  expect_points_match_table(elements, table, 3);

  // A noncoding window is cut to whole codons: window 11-30 reads sites 10-30,
  // 21-40 sites 19-39, 31-50 sites 31-48. In comparison 1 (First-Second) JC
  // applies in windows 1, 2, 4, 5, so its line breaks into two of two points;
  // Kimura (1 - 2Q < 0 in window 4 too) has one line of two and a lone point.
  const std::pair<const char*, std::vector<std::size_t>> lines[] = {{"JC", {2, 2}},
                                                                    {"K-2p", {2}}};
  for (const auto& [series, expected] : lines) {
    std::vector<std::size_t> lengths;
    for (const Element& e : elements)
      if (e.name == "polyline" && e.panel == "1" && e.attr("data-series") == series) {
        const std::string points = e.attr("points");
        lengths.push_back(static_cast<std::size_t>(std::count(points.begin(), points.end(), ',')));
      }
    EXPECT_EQ(lengths, expected) << series;
  }
  // Window 11-30: 10 transversions in 21 sites, JC = -3/4 ln(1 - 4/3 * 10/21).
  const double jc = -0.75 * std::log(1 - 4.0 / 3 * 10 / 21);
  bool found = false;
  for (const Element& p : with_class(elements, "point"))
    if (p.panel == "1" && p.attr("data-series") == "JC" && p.attr("data-x") == "20.5") {
      found = true;
      EXPECT_NEAR(std::stod(p.attr("data-y")), jc, 5e-6);
      EXPECT_EQ(p.attr("data-begin"), "11");
      EXPECT_EQ(p.attr("data-end"), "30");
    }
  EXPECT_TRUE(found);

  // Panels carry the names; the title the methods, the window and the movement.
  const std::vector<Element> panels = with_class(elements, "panel");
  EXPECT_EQ(panels[2].attr("data-name-a"), "Second");
  EXPECT_EQ(panels[2].attr("data-name-b"), "Third");
  const std::string title = with_class(elements, "title").at(0).text;
  const std::string subtitle = with_class(elements, "subtitle").at(0).text;
  EXPECT_NE(title.find("Noncoding"), std::string::npos) << title;
  EXPECT_NE(title.find("Jukes & Cantor and Kimura 2-p"), std::string::npos) << title;
  EXPECT_NE(subtitle.find("saturated.meg"), std::string::npos) << subtitle;
  EXPECT_NE(subtitle.find("windows of 20 bp, moving 10 bp"), std::string::npos) << subtitle;
  EXPECT_EQ(with_class(elements, "axis-title").size(), 2 * 3u);
}

// The coding golden run: the points are the values of the table an
// independent implementation printed, and Ka/Ks their ratio.
TEST(WindowChart, CodingPointsMatchTheGoldenTableAndKaKsIsTheirRatio) {
  Session s;
  s.load("tests/golden/window/input_coding.meg");
  s.windows("450", "150");
  s.run();
  const std::string golden = read_file(source_path("tests/golden/window/table_coding.win"));
  ASSERT_EQ(s.rec.results.WindowDataText, golden);

  const auto parsed = window_table_of(s.rec, s.rec.results.WindowDataText);
  ASSERT_TRUE(parsed);
  const std::vector<Element> elements =
      parse_svg(svg_text(window_chart(*parsed, window_chart_titles(s.rec, *parsed))));
  std::vector<std::string> columns;
  const std::vector<TableRow> rows = split_table(golden, columns);
  ASSERT_EQ(columns, (std::vector<std::string>{"Ks K-2p", "Ka K-2p"}));
  const int comparisons = std::stoi(rows.back().comparison);
  expect_points_match_table(elements, golden, comparisons);

  std::vector<std::pair<std::string, double>> expected, drawn;
  for (const TableRow& r : rows)
    if (r.cells[3] != "N.A." && r.cells[4] != "N.A." && std::stod(r.cells[3]) > 0)
      expected.emplace_back(r.comparison + " " + r.cells[2],
                            std::stod(r.cells[4]) / std::stod(r.cells[3]));
  for (const Element& p : with_class(elements, "point"))
    if (p.attr("data-series") == "Ka/Ks")
      drawn.emplace_back(p.panel + " " + p.attr("data-x"), std::stod(p.attr("data-y")));
  ASSERT_EQ(drawn.size(), expected.size());
  for (std::size_t i = 0; i < drawn.size(); ++i) {
    EXPECT_EQ(drawn[i].first, expected[i].first);
    EXPECT_DOUBLE_EQ(drawn[i].second, expected[i].second);
  }
  const std::string title = with_class(elements, "title").at(0).text;
  const std::string subtitle = with_class(elements, "subtitle").at(0).text;
  EXPECT_NE(title.find("Ks, Ka and Ka/Ks, Kimura 2-p"), std::string::npos) << title;
  EXPECT_NE(subtitle.find("universal code"), std::string::npos) << subtitle;
  EXPECT_NE(subtitle.find("windows of 450 bp (150 codons), moving 150 bp (50 codons)"),
            std::string::npos)
      << subtitle;
}

// ---------------------------------------------------------------------------
// The table reader on hand-written tables.

TEST(WindowTableReader, ReadsRowsNamesAndNotApplicableCells) {
  struct Case {
    const char* what;
    std::string text;
    std::size_t comparisons;
    std::string name_b_of_last;
    std::size_t rows_of_last;
  };
  const Case cases[] = {
      {"one comparison, no names, LF ends",
       "Begin(bp)\tEnd(bp)\tMiddle(bp)\tKs JC\tKa JC\n1\t30\t15.5\t 0.10000 \tN.A.\n", 1, "", 1},
      {"names before each comparison, CRLF ends, a blank name",
       "Begin(bp)\tEnd(bp)\tMiddle(bp)\tJC\r\nA\r\nB\r\n1\t9\t5\t0.1 \r\n\r\nC\r\n1\t9\t5\tN.A.\r\n"
       "4\t9\t6.5\tx\r\n",
       2, "C", 2},
      {"column line alone", "Begin(bp)\tEnd(bp)\tMiddle(bp)\tJC\r\n", 0, "", 0},
  };
  for (const Case& c : cases) {
    const auto t = parse_window_table(c.text);
    ASSERT_TRUE(t) << c.what;
    ASSERT_EQ(t->comparisons.size(), c.comparisons) << c.what;
    if (c.comparisons == 0) continue;
    EXPECT_EQ(t->comparisons.back().name_b, c.name_b_of_last) << c.what;
    EXPECT_EQ(t->comparisons.back().rows.size(), c.rows_of_last) << c.what;
  }
  const auto coding = parse_window_table(cases[0].text);
  EXPECT_TRUE(coding->coding());
  const WindowRow& row = coding->comparisons[0].rows[0];
  EXPECT_EQ(row.middle, 15.5);
  EXPECT_EQ(row.middle_text, "15.5");
  EXPECT_TRUE(row.values[0].applicable);
  EXPECT_EQ(row.values[0].text, "0.10000");
  EXPECT_FALSE(row.values[1].applicable);
  const auto noncoding = parse_window_table(cases[1].text);
  EXPECT_FALSE(noncoding->coding());
  EXPECT_EQ(noncoding->comparisons[1].name_a, "");  // the blank name line
  EXPECT_FALSE(noncoding->comparisons[1].rows[1].values[0].applicable);  // "x"

  EXPECT_FALSE(parse_window_table(""));
  EXPECT_FALSE(parse_window_table("Begin(bp)\tEnd(bp)\r\n1\t2\r\n"));
}

// Ka/Ks is drawn only where Ks and Ka are both values and Ks is above 0.
TEST(WindowChart, KaKsOnlyWhereBothApplyAndKsIsAboveZero) {
  const auto t = parse_window_table(
      "Begin(bp)\tEnd(bp)\tMiddle(bp)\tKs K-2p\tKa K-2p\r\n"
      "1\t30\t15.5\t 0.20000 \t 0.05000 \r\n"
      "11\t40\t25.5\tN.A.\t 0.05000 \r\n"
      "21\t50\t35.5\t 0.00000 \t 0.01000 \r\n"
      "31\t60\t45.5\t 0.40000 \tN.A.\r\n"
      "41\t70\t55.5\t 0.10000 \t 0.20000 \r\n");
  ASSERT_TRUE(t);
  const std::vector<Element> elements = parse_svg(svg_text(window_chart(*t, {"T", "S"})));
  std::vector<std::string> ratios;
  for (const Element& p : with_class(elements, "point"))
    if (p.attr("data-series") == "Ka/Ks") ratios.push_back(p.attr("data-x") + "=" + p.attr("data-y"));
  EXPECT_EQ(ratios, (std::vector<std::string>{"15.5=0.25", "55.5=2"}));
  // Ks and Ka: four points each, Ks at 0 drawn.
  EXPECT_EQ(with_class(elements, "point").size(), 4 + 4 + 2u);
}

// ---------------------------------------------------------------------------
// Heat map.

TEST(HeatMap, CellsAreTheGoldenMatrixCells) {
  Session s;
  click_noncoding(s.rec);
  if (s.rec.menu.All.caption == "Reset..") click_all_methods(s.rec);
  click_all_methods(s.rec);
  s.load("tests/golden/noncoding_all_5seq/input.meg");
  s.run();
  const MatrixItem item = *matrix_item_by_name("k2p");
  const std::vector<Element> elements =
      parse_svg(svg_text(heat_map(heat_map_data(s.rec, item), heat_map_titles(s.rec, item))));

  // The golden rows: "  0.1415   0.0000    ...   #3"; cell c of row "#r".
  std::map<std::string, std::string> expected;
  std::istringstream in(read_file(source_path("tests/golden/noncoding_all_5seq/matrix_k2p.txt")));
  std::string line;
  while (std::getline(in, line)) {
    const std::size_t hash = line.rfind('#');
    if (hash == std::string::npos || line.starts_with("   #1")) continue;
    const std::string row = line.substr(hash + 1, line.find('\r') - hash - 1);
    std::istringstream cells(line.substr(0, hash));
    std::string cell;
    for (int c = 1; cells >> cell; ++c) expected[row + "," + std::to_string(c)] = cell;
  }
  ASSERT_EQ(expected.size(), 10u);
  std::map<std::string, std::string> drawn;
  for (const Element& e : with_class(elements, "cell"))
    drawn[e.attr("data-row") + "," + e.attr("data-column")] = e.attr("data-value");
  EXPECT_EQ(drawn, expected);
  EXPECT_EQ(with_class(elements, "row-label").size(), 4u);
  EXPECT_EQ(with_class(elements, "column-label").size(), 4u);
  const std::string title = with_class(elements, "title").at(0).text;
  EXPECT_NE(title.find("K, Kimura 2-p"), std::string::npos) << title;
}

// Not applicable cells, a value of 10 or more and a Latin-1 name, against the
// cells of the ".dis" text of the same record.
TEST(HeatMap, NotApplicableCellsAndWideValuesAsTheMatrixFilePrintsThem) {
  AnalysisRecord rec;
  rec.menu.Coding.checked = false;
  rec.menu.Noncoding.checked = true;
  rec.seq.SeqCount = 4;
  rec.seq.PairCount = 6;
  rec.seq.SeqNames = {"Alpha  ", "B\xE9ta", "Gamma", "Delta"};
  rec.results.ComparisonStore.resize(7);
  auto& store = rec.results.ComparisonStore;
  const double values[7] = {0, 0.12344, -1, 12.5, 0.00005, 0.5, 0.25};
  for (int k = 1; k <= 6; ++k) store[static_cast<std::size_t>(k)][5] = {values[k], values[k] < 0};
  const MatrixItem item = noncoding_matrix_item(5);
  const std::string dis = matrix_text(rec, item, {}, "x.dis");
  const std::vector<Element> elements =
      parse_svg(svg_text(heat_map(heat_map_data(rec, item), heat_map_titles(rec, item))));

  // Rows of the file: pairs (1,2), (1,3), (1,4), (2,3), (2,4), (3,4) down the columns.
  std::map<std::string, std::string> drawn;
  for (const Element& e : with_class(elements, "cell"))
    drawn[e.attr("data-row") + "," + e.attr("data-column")] = e.attr("data-value");
  const std::map<std::string, std::string> expected = {
      {"2,1", "0.1234"}, {"3,1", "N.A."},   {"4,1", "12.5000"},
      {"3,2", "0.0001"}, {"4,2", "0.5000"}, {"4,3", "0.2500"}};
  EXPECT_EQ(drawn, expected);
  for (const auto& [where, value] : expected)
    EXPECT_NE(dis.find(value == "N.A." ? " N.A. " : value), std::string::npos) << value;
  // The not applicable cell is grey and crossed.
  for (const Element& e : with_class(elements, "cell"))
    if (e.attr("data-value") == "N.A.") {
      EXPECT_EQ(e.attr("fill"), "#d9d9d9");
    }
  // Names: trailing blanks cut, the Latin-1 byte as UTF-8.
  std::vector<std::string> rows;
  for (const Element& e : with_class(elements, "row-label")) rows.push_back(e.text);
  EXPECT_EQ(rows, (std::vector<std::string>{"B\xC3\xA9ta", "Gamma", "Delta"}));
  EXPECT_EQ(with_class(elements, "column-label").at(0).text, "Alpha");
}

// ---------------------------------------------------------------------------
// SVG text and files.

TEST(SvgText, EscapesAndConvertsText) {
  const std::pair<std::string, std::string> cases[] = {
      {"a<b & \"c\">", "a&lt;b &amp; &quot;c&quot;&gt;"},
      {"Kimura\xB4s", "Kimura\xC2\xB4s"},             // Latin-1 byte
      {"Kimura\xC2\xB4s", "Kimura\xC2\xB4s"},         // already UTF-8
      {std::string("a\x01\tb\nc", 6), "a?&#9;b?c"},  // control characters
      {"\xEF\xBF\xBF", "?"},                          // U+FFFF is no XML character
  };
  for (const auto& [in, out] : cases) EXPECT_EQ(xml_escaped(in), out) << in;
  EXPECT_EQ(shortest_number(0.1), "0.1");
  EXPECT_EQ(shortest_number(-0.0), "0");
  EXPECT_EQ(shortest_number(752), "752");
}

TEST(PlotFiles, OneFileWithAPanelPerComparisonOrAFolderWithAFileEach) {
  Session s;
  click_noncoding(s.rec);
  load_saturated(s);
  s.windows("20", "10");
  s.run();
  const std::string dir = scratch_dir();
  std::string error;
  const std::string table = s.rec.results.WindowDataText;

  ASSERT_EQ(write_plots(s.rec, table, nullptr, dir + "/all.svg", error), 0) << error;
  EXPECT_EQ(with_class(parse_svg(read_file(dir + "/all.svg")), "panel").size(), 3u);

  std::vector<std::string> written;
  ASSERT_TRUE(write_window_pictures(s.rec, table, dir + "/each/", error, &written)) << error;
  ASSERT_EQ(written.size(), 3u);
  EXPECT_EQ(std::filesystem::path(written[2]).filename(), "003_Second_Third.svg");
  const std::vector<Element> third = parse_svg(read_file(written[2]));
  ASSERT_EQ(with_class(third, "panel").size(), 1u);
  EXPECT_EQ(with_class(third, "panel")[0].attr("data-comparison"), "3");

  EXPECT_EQ(window_picture_name(9, 1200, "a b/c", ".hidden"), "0010_a_b_c_s.hidden.svg");

  // A run without windows and no matrix has nothing to draw; a folder that
  // cannot be written ends with an error and no file.
  s.rec.region.WindowMode = 0;
  EXPECT_EQ(write_plots(s.rec, table, nullptr, dir + "/none.svg", error), 1);
  EXPECT_FALSE(std::filesystem::exists(dir + "/none.svg"));
  s.rec.region.WindowMode = 1;
  EXPECT_EQ(write_plots(s.rec, table, nullptr, dir + "/missing/deeper/x.svg", error), 1);
  EXPECT_NE(error.find("cannot write"), std::string::npos) << error;
}

TEST(PlotFiles, HeatMapFileAndPictureDialog) {
  Session s;
  s.load("tests/golden/coding_kimura_6seq/input.meg");
  s.run();
  const std::string dir = scratch_dir();
  std::string error;
  const MatrixItem item = *matrix_item_by_name("ks");
  ASSERT_EQ(write_plots(s.rec, "", &item, dir + "/", error), 0) << error;
  EXPECT_EQ(with_class(parse_svg(read_file(dir + "/matrix.svg")), "cell").size(), 15u);

  s.platform.save_answers = {"/tmp/x.svg"};
  EXPECT_EQ(ask_picture_path(s.rec, s.platform, kSvgFilter, kMatrixPictureSuffix, ".svg"),
            "/tmp/x.svg");
  ASSERT_EQ(s.platform.save_requests.size(), 1u);
  EXPECT_EQ(s.platform.save_requests[0].default_name, "input_matrix.svg");
  EXPECT_EQ(s.platform.save_requests[0].filter, kSvgFilter);
}

}  // namespace
}  // namespace varnoth::reports
