// Writing the pictures of a run as SVG files: the window charts (one file with
// a panel per comparison, or a folder with a file per comparison) and the heat
// map of a matrix. Files are written whole or not at all.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "reports/matrix.h"
#include "state/platform.h"
#include "state/record.h"

namespace varnoth::reports {

inline constexpr std::string_view kSvgFilter = "SVG pictures (*.svg)|*.svg|All files (*.*)|*.*";
inline constexpr std::string_view kPngFilter = "PNG pictures (*.png)|*.png|All files (*.*)|*.*";
// Name suffixes of the pictures, behind the input file's name up to its first ".".
inline constexpr std::string_view kWindowPictureSuffix = "_windows";
inline constexpr std::string_view kMatrixPictureSuffix = "_matrix";

// True where `path` names a folder: it ends in a separator, or a folder of
// that name exists.
bool is_folder_path(const std::string& path);

// The file of comparison `index` (from 0) of `count` in a folder of window
// charts: "003_Seq1_Seq4.svg", numbered from 1, the names cut to letters,
// digits, ".", "-" and "_".
std::string window_picture_name(std::size_t index, std::size_t count, std::string_view name_a,
                                 std::string_view name_b);

// The window charts of `table_text` (the run's window table). A folder path
// (see is_folder_path) is created where missing and gets a file per
// comparison; any other path one file with a panel per comparison. The files
// written are added to `written`. On failure returns false with `error` set.
bool write_window_pictures(const AnalysisRecord& rec, std::string_view table_text,
                           const std::string& path, std::string& error,
                           std::vector<std::string>* written = nullptr);

// The heat map of `item` from the record's ComparisonStore; a folder path gets
// "matrix.svg" in it.
bool write_heat_map_picture(const AnalysisRecord& rec, const MatrixItem& item,
                            const std::string& path, std::string& error,
                            std::vector<std::string>* written = nullptr);

// `varnoth run ... --plot PATH`: the heat map where `item` is given, else the
// window charts of `table_text`. Returns 0 when written, 1 with `error` set
// otherwise (no window table and no matrix item, a text that is no window
// table, a file that cannot be written).
int write_plots(const AnalysisRecord& rec, std::string_view table_text, const MatrixItem* item,
                const std::string& path, std::string& error);

// The save dialog of a picture: `filter` with its first entry chosen and the
// input file's name up to its first "." plus `suffix` and `extension` as the
// default. Empty where the user cancelled. Fichero1 is left alone.
std::string ask_picture_path(const AnalysisRecord& rec, Platform& platform,
                             std::string_view filter, std::string_view suffix,
                             std::string_view extension);

}  // namespace varnoth::reports
