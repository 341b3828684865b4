// A small alignment made from the fuzzer's bytes and loaded into the record as
// the open command leaves it, and the checks of what a run leaves behind.
#pragma once

#include <cmath>
#include <string>
#include <vector>

#include "divergence/driver.h"
#include "fuzz_support.h"
#include "input/alignment_cleanup.h"
#include "input/input_report.h"
#include "reports/matrix.h"
#include "state/options.h"

namespace varnoth::fuzz {

// Letters a fuzzed sequence is made of: mostly bases, some gaps, ambiguity
// letters, lower case and identity dots.
inline constexpr char kLetters[] = "ACGTACGTACGTACGTACGTacgt-N.?";
inline constexpr unsigned kLetterCount = sizeof kLetters - 1;

// 2 to 7 sequences of 1 to 64 letters. The first is drawn letter by letter;
// each other either copies it with some changes or is drawn whole, so that
// close, distant and saturated pairs all occur. Codons that the genetic codes
// treat specially (stops, no-pathway pairs) come from a small list.
inline void load_fuzzed_alignment(Bytes& in, AnalysisRecord& rec) {
  static constexpr const char* kCodons[] = {"TAA", "TAG", "TGA", "TGG", "AAA", "AGA",
                                            "AGG", "ATA", "ATG", "TTA", "CTA", "TCA"};
  const unsigned count = 2 + in.pick(6);
  const unsigned length = 1 + in.pick(64);
  std::vector<std::string> rows(count);
  auto draw = [&](std::string& row) {
    while (row.size() < length) {
      const std::uint8_t b = in.byte();
      if (b >= 240) {
        row += kCodons[b % 12];
      } else {
        row += kLetters[b % kLetterCount];
      }
    }
    row.resize(length);
  };
  draw(rows[0]);
  for (unsigned i = 1; i < count; ++i) {
    const unsigned mode = in.pick(4);
    if (mode == 0) {
      draw(rows[i]);
      continue;
    }
    rows[i] = rows[mode == 1 ? 0 : i - 1];
    const unsigned changes = in.pick(mode == 3 ? 64 : 6);
    for (unsigned k = 0; k < changes; ++k)
      rows[i][in.pick(length)] = kLetters[in.pick(kLetterCount)];
  }

  SequenceData& s = rec.seq;
  s = SequenceData{};
  s.InputFileName = "fuzz.meg";
  s.InputFormatName = "MEGA";
  s.SeqCount = count;
  s.SeqLength = length;
  for (unsigned i = 0; i < count; ++i) {
    s.SeqNames.push_back("S" + std::to_string(i + 1));
    std::vector<CodonCell> cells;
    for (std::size_t p = 0; p < length; p += 3) {
      CodonCell c{' ', ' ', ' '};
      for (std::size_t j = 0; j < 3 && p + j < length; ++j) c[j] = rows[i][p + j];
      cells.push_back(c);
    }
    s.SeqCodons.push_back(std::move(cells));
  }
  const long cells = static_cast<long>((length + 2) / 3);
  check(input::clean_alignment(s, cells).ok(), "a fuzzed alignment is refused by the clean-up");
  Menu& m = rec.menu;
  m.AnalysisOptions.enabled = true;
  m.Diver.enabled = true;
  m.Region_analysis.enabled = true;
  m.Sliding_Window.enabled = true;
  rec.form.Text1.text = input::build_input_report(s);
}

inline bool finite_cell(const StoreCell& cell) {
  return cell.not_applicable || std::isfinite(cell.value);
}

// What a divergence run leaves: finite numbers everywhere, in the texts and
// in the stores, and a matrix text without a number that is not finite.
inline void check_run_results(const AnalysisRecord& rec, const QuietPlatform& platform) {
  const RunResults& r = rec.results;
  check_finite_text(r.ReportText, "the report shows a number that is not finite");
  check_finite_text(r.WindowDataText, "the window table shows a number that is not finite");
  check_finite_text(rec.form.Text3.text, "Text3 shows a number that is not finite");
  check_finite_text(r.LastPairLine, "the last pair line shows a number that is not finite");
  for (const ComparisonRow& row : r.ComparisonStore)
    for (const StoreCell& cell : row) check(finite_cell(cell), "ComparisonStore holds a non-finite value");
  for (const PairStoreRow& row : r.PairStore)
    for (double v : row) check(std::isfinite(v), "PairStore holds a non-finite value");
  const CodingHandedOnFields& h = r.handed_on;
  check(std::isfinite(h.Ks) && std::isfinite(h.Ka) && std::isfinite(h.SES) &&
            std::isfinite(h.NES) && std::isfinite(h.As) && std::isfinite(h.Bs) &&
            std::isfinite(h.Aa) && std::isfinite(h.Ba) && std::isfinite(h.PairGCContent),
        "the values handed to the simulations are not finite");
  const LastNoncodingEstimate& n = rec.last_noncoding;
  check(std::isfinite(n.KJukesCantor) && std::isfinite(n.KKimura) && std::isfinite(n.KimuraA) &&
            std::isfinite(n.KimuraB) && std::isfinite(n.KTajimaNei) &&
            std::isfinite(n.KTajima1p) && std::isfinite(n.KTajima2p) && std::isfinite(n.KTajima4p),
        "the last noncoding estimate is not finite");
  if (rec.form.MatrixBoton.visible) {
    static constexpr const char* kNames[] = {"ks", "ka",  "trss", "trsa",    "trvs",
                                             "trva", "fd", "jc",   "k2p",     "k2p-trs",
                                             "k2p-trv", "tn", "t1p", "t2p",     "t4p"};
    for (const char* name : kNames) {
      const auto item = matrix_item_by_name(name, rec.menu.JukesandCantor.checked);
      if (!item || item->coding != rec.coding()) continue;
      check_finite_text(matrix_text(rec, *item, ClockReading{"d", "t", 0}, "out.dis"),
                        "a matrix shows a number that is not finite");
    }
  }
  (void)platform;
}

}  // namespace varnoth::fuzz
