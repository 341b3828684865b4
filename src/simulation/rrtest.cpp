#include "simulation/rrtest.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "text/number_format.h"
#include "text/number_reading.h"

namespace varnoth::simulation {

namespace {

// The columns of the summary line, 1-based first column and width.
std::string_view columns(std::string_view line, std::size_t first, std::size_t width) {
  if (line.size() < first) return {};
  return line.substr(first - 1, width);
}

float cell(const std::vector<std::vector<float>>& a, int i, int j) {
  return a[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)];
}

// A pair's Ks and Ka, the lower number first; "??" when one sequence stands twice.
void show_pair(const RRtestDialog& d, int x, int y, Control& ks, Control& ka) {
  if (x == y) {
    ks.text = "??";
    ka.text = "??";
    return;
  }
  const int low = std::min(x, y), high = std::max(x, y);
  ks.text = text::plain(cell(d.PairKs, low, high));
  ka.text = text::plain(cell(d.PairKa, low, high));
}

void show_labels(RRtestDialog& d) {
  const int first = d.Seq1Index, second = d.Seq2Index, out = d.OutgroupIndex;
  show_pair(d, first, second, d.Label7, d.Label8);
  show_pair(d, first, out, d.Label9, d.Label10);
  show_pair(d, second, out, d.Label11, d.Label12);
}

// The number of the box's chosen item, 0 when no item matches.
int chosen_number(const RRtestDialog& d, const ComboBox& box) {
  int number = 0;
  for (int i = 1; i <= d.SeqCount && static_cast<std::size_t>(i) <= box.items.size(); ++i)
    if (box.items[static_cast<std::size_t>(i - 1)] == box.text) number = i;
  return number;
}

std::string item_text(const RRtestDialog& d, int number) {
  if (number < 1 || static_cast<std::size_t>(number) > d.Combo1.items.size()) return {};
  return d.Combo1.items[static_cast<std::size_t>(number - 1)];
}

}  // namespace

std::string rrtest_item(int number, std::string_view name) {
  std::string item = " Sequence#";
  text::append_plain(item, number);
  item += ": ";
  item += name.substr(0, 40);
  return item;
}

RRtestDialog open_rrtest(const AnalysisRecord& rec) {
  RRtestDialog d;
  d.loaded = true;
  d.visible = true;
  d.SeqCount = std::max(0, static_cast<int>(rec.seq.SeqCount));
  const auto size = static_cast<std::size_t>(d.SeqCount) + 1;
  d.PairKs.assign(size, std::vector<float>(size, 0.0f));
  d.PairKa.assign(size, std::vector<float>(size, 0.0f));

  // The one line is parsed once: only its pair's cell is filled.
  const std::string_view line = rec.results.LastPairLine;
  const double a = text::read_number(columns(line, 1, 4));
  const double b = text::read_number(columns(line, 6, 4));
  const auto in_range = [&](double x) { return x >= 1 && x <= d.SeqCount && x == std::floor(x); };
  if (in_range(a) && in_range(b)) {
    const auto i = static_cast<std::size_t>(a), j = static_cast<std::size_t>(b);
    d.PairKs[i][j] = static_cast<float>(text::read_number(columns(line, 10, 9)));
    d.PairKa[i][j] = static_cast<float>(text::read_number(columns(line, 20, 8)));
  }

  // Preselection among sequences 1, 2, 3: the pair with the smallest Ks are the
  // paired sequences and the third is the outgroup; ties go to the earlier pair
  // in the order (1,2), (1,3), (2,3).
  if (d.SeqCount >= 3) {
    const float ks12 = cell(d.PairKs, 1, 2), ks13 = cell(d.PairKs, 1, 3),
                ks23 = cell(d.PairKs, 2, 3);
    if (ks12 <= ks13 && ks12 <= ks23) {
      d.Seq1Index = 1, d.Seq2Index = 2, d.OutgroupIndex = 3;
    } else if (ks13 <= ks23) {
      d.Seq1Index = 1, d.Seq2Index = 3, d.OutgroupIndex = 2;
    } else {
      d.Seq1Index = 2, d.Seq2Index = 3, d.OutgroupIndex = 1;
    }
  } else {
    d.Seq1Index = std::min(1, d.SeqCount);
    d.Seq2Index = d.SeqCount;
    d.OutgroupIndex = d.SeqCount;
  }

  for (int i = 1; i <= d.SeqCount; ++i) {
    const auto k = static_cast<std::size_t>(i - 1);
    const std::string_view name =
        k < rec.seq.SeqNames.size() ? std::string_view(rec.seq.SeqNames[k]) : std::string_view();
    d.Combo1.items.push_back(rrtest_item(i, name));
  }
  d.Combo2.items = d.Combo1.items;
  d.Combo3.items = d.Combo1.items;
  d.Combo1.text = item_text(d, d.Seq1Index);
  d.Combo2.text = item_text(d, d.Seq2Index);
  d.Combo3.text = item_text(d, d.OutgroupIndex);
  show_labels(d);
  return d;
}

void rrtest_selection_changed(RRtestDialog& d) {
  d.Seq1Index = chosen_number(d, d.Combo1);
  d.Seq2Index = chosen_number(d, d.Combo2);
  d.OutgroupIndex = chosen_number(d, d.Combo3);
  show_labels(d);
}

void rrtest_accept(RRtestDialog& d) {
  d.KsDifference = text::read_number(d.Label9.text) - text::read_number(d.Label11.text);
  d.KaDifference = text::read_number(d.Label10.text) - text::read_number(d.Label12.text);
  d.Text1.text = text::format(d.KsDifference, "0.00000");
  d.Text2.text = text::format(d.KaDifference, "0.00000");
}

void rrtest_cancel(AnalysisRecord& rec, RRtestDialog& d) {
  d.visible = false;
  d.loaded = false;
  rec.form.Form1.visible = true;
}

}  // namespace varnoth::simulation
