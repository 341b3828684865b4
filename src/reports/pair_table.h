// The per-pair table: one header row, then one row per comparison (and per
// window in window runs), tab-separated, UTF-8, line feed at the end of each
// row, for R's read.delim and pandas' read_csv(sep="\t") as they stand.
//
// Each value is the one the report printed, in the shortest form that reads
// back to the same number; "NA" stands wherever the report printed
// "NO APPLICABLE" or left the value out under the run's options.
#pragma once

#include <string>
#include <string_view>

#include "divergence/driver.h"
#include "reports/results_report.h"

namespace varnoth::reports {

inline constexpr std::string_view kTableMissing = "NA";

// The header row of a coding or a noncoding run.
void append_pair_table_header(std::string& out, bool coding);

// One row: `file` is the alignment's file name, `name_a` and `name_b` the
// names of the two sequences (blanks around them are left out).
void append_pair_table_row(std::string& out, const RunLayout& run, std::string_view file,
                           std::string_view name_a, std::string_view name_b,
                           const divergence::PairValues& values);

// A text cell: valid UTF-8 (bytes that are not are read as Latin-1), quoted
// with doubled quotes when it holds a tab, a quote or a line break.
void append_table_text(std::string& out, std::string_view text);

// The shortest text that reads back as the same number; "NA" if not finite.
void append_table_number(std::string& out, double value);
void append_table_number(std::string& out, float value);

}  // namespace varnoth::reports
