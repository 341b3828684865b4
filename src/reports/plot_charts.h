// The two pictures of the results: the window chart (each estimate against the
// window's middle position, one panel per comparison) and the heat map of the
// lower-left distance matrix. Pure layout: numbers in, a scene out.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "reports/plot_data.h"
#include "reports/plot_svg.h"
#include "state/record.h"

namespace varnoth::reports {

struct ChartTitles {
  std::string title;     // the analysis and the methods
  std::string subtitle;  // the file, and the windows or the region
};

// Titles from the user's choices in the record: coding or noncoding, the
// genetic code, the methods of the table's columns, window size and movement.
ChartTitles window_chart_titles(const AnalysisRecord& rec, const WindowTable& table);
// Titles of the heat map: the analysis, the matrix item, the file and the stretch.
ChartTitles heat_map_titles(const AnalysisRecord& rec, const MatrixItem& item);

struct WindowChartOptions {
  double width = 960;
  double panel_height = 320;  // each comparison's panel, its name line included
  // Where set, the whole picture is this high and its panels share the height.
  std::optional<double> height;
  // Where set, only this comparison (index into the table) is drawn.
  std::optional<std::size_t> comparison;
};

// Coding tables: Ks and Ka against the left axis, Ka/Ks (where Ks is above 0)
// against the right one. Noncoding: K of each column. Every series shares one
// scale across all comparisons of the table, so panels compare at a glance. A
// window whose value is not applicable is a gap in its line.
//
// Each panel is <g class="panel" data-comparison="k" data-name-a data-name-b>;
// each point is <circle class="point" data-series data-x data-y data-begin
// data-end>, data-x and data-y as the table prints them (Ka/Ks: the ratio of
// the printed values).
Scene window_chart(const WindowTable& table, const ChartTitles& titles,
                   const WindowChartOptions& options = {});

struct HeatMapOptions {
  // Zero: the picture takes its natural size; else the grid fits this size.
  double width = 0, height = 0;
};

// The lower-left matrix as a grid of coloured cells with sequence names along
// both sides and a colour scale. Each cell is <rect class="cell" data-row
// data-column data-value>, sequences numbered from 1, data-value as the
// ".dis" file prints it or "N.A."; not applicable cells are grey and crossed.
Scene heat_map(const HeatMapData& data, const ChartTitles& titles,
               const HeatMapOptions& options = {});

// The series label of a table column: "Ks", "Ka" (coding), "Jukes & Cantor",
// "Kimura 2-p", ... (noncoding).
std::string series_label(std::string_view column);

}  // namespace varnoth::reports
