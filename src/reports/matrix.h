// The lower-left distance matrix of a whole-sequence or region run, written as
// a "#MEGA" text file (".dis"): the matrix page (MatrixTab) and its file.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "state/platform.h"
#include "state/record.h"

namespace varnoth {

inline constexpr std::string_view kMatrixFilter = "Output files (*.dis)|*.dis|All files (*.*)|*.*";

// The nine items of Combo1 (noncoding), in list order; an item's number is its
// index here.
inline constexpr std::array<std::string_view, 9> kMatrixComboItems = {
    " Obs. Frequency", " Jukes & Cantor", " Kimura-2p K", " Kimura-2p TRS", " Kimura-2p TRV",
    " Tajima & Nei",   " Tajima-1p",      " Tajima-2p",   " Tajima-4p"};

// What the matrix shows: a column of ComparisonStore and the words of the
// header's method line.
struct MatrixItem {
  bool coding = false;
  int column = 9;           // ComparisonStore column, 1..9
  std::string_view method;  // behind "M.-Hits Correcting Method: "
  std::string_view label;   // behind the method: " K", " Ks", " TRSs", " Fd)", ...
};

// Noncoding item by its Combo1 number 0..8.
MatrixItem noncoding_matrix_item(int number);
// Coding item by option button 1..6 (Ks, Ka, TRSs, TRSa, TRVs, TRVa); Ks and
// Ka take the Jukes and Cantor columns when that method is checked.
MatrixItem coding_matrix_item(int option, bool jukes_cantor);
// The item the matrix page shows now: Combo1's text (noncoding; a text that is
// none of the nine items counts as number 0) or the selected option (coding).
MatrixItem matrix_item_from_page(const AnalysisRecord& rec);
// Command-line names: "ks", "ka", "trss", "trsa", "trvs", "trva" (coding),
// "fd", "jc", "k2p", "k2p-trs", "k2p-trv", "tn", "t1p", "t2p", "t4p"
// (noncoding). The four transition/transversion items do not exist with
// Jukes and Cantor, as their options are hidden then.
std::optional<MatrixItem> matrix_item_by_name(std::string_view name, bool jukes_cantor = false);

// The whole ".dis" text for `item` from the record's ComparisonStore.
// `file_name` is written on the "Input File Name:" line (the matrix page
// passes Fichero1, which then holds the output path).
std::string matrix_text(const AnalysisRecord& rec, const MatrixItem& item,
                        const ClockReading& clock, std::string_view file_name);

// MatrixBoton: fills and shows the matrix page.
void prepare_matrix_page(AnalysisRecord& rec);
// SaveMatrix: asks for the path (kept in Fichero1), writes the file, then
// hides MatrixTab and shows SSTab3. Cancel or a file error ends silently with
// the page left open; returns true when the file was written.
bool save_matrix(AnalysisRecord& rec, Platform& platform);
// Command2 of the page: hides MatrixTab and shows SSTab3.
void cancel_matrix_page(AnalysisRecord& rec);

}  // namespace varnoth
