// The numbers behind the pictures, read from what a run printed: the window
// table (WindowDataText, as saved to ".win") and the cells of the distance
// matrix, so that a picture shows exactly the values of the text outputs.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "reports/matrix.h"
#include "state/record.h"

namespace varnoth::reports {

// A printed value: the number and its text as printed, blanks cut ("0.19086",
// "N.A.").
struct PrintedValue {
  bool applicable = false;
  double value = 0;
  std::string text;
};

struct WindowRow {
  double begin = 0, end = 0, middle = 0;
  std::string middle_text;           // as printed: "90.5", "752"
  std::vector<PrintedValue> values;  // one per value column
};

struct WindowComparison {
  std::string name_a, name_b;  // empty where the table prints no names
  std::vector<WindowRow> rows;
};

struct WindowTable {
  // The value columns behind "Middle(bp)": "JC", "K-2p", ... or "Ks K-2p", "Ka K-2p".
  std::vector<std::string> columns;
  std::vector<WindowComparison> comparisons;
  bool coding() const { return !columns.empty() && columns.front().starts_with("Ks "); }
};

// Reads a window table: its column line, then per comparison the two name
// lines (where there are names) and one row per window. Line ends may be CRLF
// or LF. A line is a row when it has a field per column and its three
// positions read as numbers; any other line is a name. A value cell that is no
// number counts as not applicable. Returns nothing where the first line is not
// the column line.
std::optional<WindowTable> parse_window_table(std::string_view text);

// The table of the record's run, with the names of the two sequences filled in
// where the table prints none (a run of one comparison), blanks around names cut.
std::optional<WindowTable> window_table_of(const AnalysisRecord& rec, std::string_view text);

// The lower-left matrix of `item`: row r (from 0) is sequence r + 2 and has
// r + 1 cells, for sequences 1 .. r + 1. Values are as the ".dis" file prints
// them ("0.0000"); a not applicable cell's text is "N.A.".
struct HeatMapData {
  MatrixItem item;
  std::vector<std::string> names;  // every sequence, trailing blanks cut
  std::vector<std::vector<PrintedValue>> rows;
};

HeatMapData heat_map_data(const AnalysisRecord& rec, const MatrixItem& item);

}  // namespace varnoth::reports
