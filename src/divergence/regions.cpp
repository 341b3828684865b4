#include "divergence/regions.h"

#include <cmath>

#include "state/summary.h"
#include "text/number_format.h"
#include "text/number_reading.h"

namespace varnoth {

namespace {

constexpr const char* kCrlf = "\r\n";
constexpr const char* kWholeText = "\r\n Region to analyze: All";

// `count` blanks; a negative count writes none (a figure wider than its column
// simply runs on).
void append_blanks(std::string& out, long long count) {
  if (count > 0) out.append(static_cast<std::size_t>(count), ' ');
}

void disable_coding_intervals(Menu& m) {
  m.CIcodingRegion.enabled = false;
  m.CIcodingRegionKaKs.enabled = false;
}

void put_window_defaults(AnalysisRecord& rec) {
  const WindowDefaults d = window_defaults(rec.seq.SeqLength);
  rec.form.TextWinSize.text = std::string(d.size);
  rec.form.TextMovement.text = std::string(d.movement);
}

// Both summary lines to the whole sequence, range 1 to SeqLength.
void set_whole_sequence(AnalysisRecord& rec) {
  RegionFields& r = rec.region;
  r.WindowMode = 0;
  r.RegionMode = 0;
  r.RegionFirst = "1";
  r.RegionLast = text::plain(rec.seq.SeqLength);
  r.CodingWindowText = kWholeText;
  r.NoncodingWindowText = kWholeText;
  update_region_text(rec);
}

// One line of the window summary: figure, " nuc." and, for coding, the codons.
void append_window_figure(std::string& out, double value, bool codons) {
  const std::string figure = text::plain(value);
  out += figure;
  out += " nuc.";
  if (!codons) return;
  append_blanks(out, 7 - static_cast<long long>(figure.size()));
  text::append_plain(out, std::floor(value / 3));
  out += " cod.";
}

std::string window_text(double size, double movement, bool codons) {
  std::string t = kCrlf;
  t += " Sliding Window Analysis:  Win. Size : ";
  append_window_figure(t, size, codons);
  t += kCrlf;
  t += "                           Win. Mov. : ";
  append_window_figure(t, movement, codons);
  return t;
}

}  // namespace

WindowDefaults window_defaults(double seq_length) {
  if (seq_length >= 500) return {"450", "150"};
  if (seq_length >= 200) return {"180", "60"};
  if (seq_length >= 80) return {"60", "20"};
  return {"0", "0"};
}

std::string coding_window_text(double size, double movement) {
  return window_text(size, movement, true);
}

std::string noncoding_window_text(double size, double movement) {
  return window_text(size, movement, false);
}

std::string noncoding_region_text(double first, double last) {
  std::string t = kCrlf;
  t += " Region to analyze:";
  text::append_plain(t, first);
  t += " -";
  text::append_plain(t, last);
  t += " nuc.";
  return t;
}

std::string coding_region_text(double first, double last) {
  std::string t = noncoding_region_text(first, last);
  t += kCrlf;
  t += "                   ";
  text::append_plain(t, 1 + std::floor((first - 1) / 3));
  t += " -";
  // Int(last/3) here, where RegionText writes 1 + Int((last-1)/3): deliberate.
  text::append_plain(t, std::floor(last / 3));
  t += " codon";
  return t;
}

PositionRange nucleotides_to_codons(PositionRange nucleotides) {
  return {1 + std::floor((nucleotides.first - 1) / 3), 1 + std::floor((nucleotides.last - 1) / 3)};
}

PositionRange codons_to_nucleotides(PositionRange codons) {
  return {1 + (codons.first - 1) * 3, codons.last * 3};
}

void open_sliding_windows(AnalysisRecord& rec) {
  rec.form.SSTab3.visible = false;
  rec.form.SSTab4.visible = true;
  put_window_defaults(rec);
}

bool accept_sliding_windows(AnalysisRecord& rec, Platform& platform) {
  disable_coding_intervals(rec.menu);
  Form& f = rec.form;
  const double size = text::read_number(f.TextWinSize.text);
  const double movement = text::read_number(f.TextMovement.text);
  if (!(size > 10 && movement >= 3)) {
    const char* why = size > 0 && size <= 10 ? "Window Size Too small !" : "Invalid Information !";
    platform.message(why, "", MessageIcon::Exclamation);
    f.TextWinSize.text.clear();
    f.TextMovement.text.clear();
    put_window_defaults(rec);
    return false;
  }
  RegionFields& r = rec.region;
  r.WindowSize = size;
  r.WindowMode = 1;
  r.RegionMode = 0;
  f.SSTab4.visible = false;
  f.MatrixBoton.visible = false;
  r.CodingWindowText = coding_window_text(size, movement);
  r.NoncodingWindowText = noncoding_window_text(size, movement);
  rebuild_summary(rec, SummaryTail::WindowText);
  return true;
}

void whole_sliding_windows(AnalysisRecord& rec) {
  set_whole_sequence(rec);
  rec.form.SSTab4.visible = false;
  rebuild_summary(rec, SummaryTail::WindowText);
}

void cancel_sliding_windows(AnalysisRecord& rec) { rec.form.SSTab4.visible = false; }

void open_region_dialog(AnalysisRecord& rec) {
  rec.form.SSTab3.visible = false;
  rec.form.SSTab4.visible = false;
  RegionDialog& d = rec.region_dialog;
  d.loaded = true;
  d.Text1.text = rec.region.RegionFirst.empty() ? "1" : rec.region.RegionFirst;
  d.Text2.text =
      rec.region.RegionLast.empty() ? text::plain(rec.seq.SeqLength) : rec.region.RegionLast;
  d.region.visible = true;
}

bool accept_region(AnalysisRecord& rec, Platform& platform) {
  disable_coding_intervals(rec.menu);
  RegionDialog& d = rec.region_dialog;
  const double first = text::read_number(d.Text1.text);
  const double last = text::read_number(d.Text2.text);
  const double length = rec.seq.SeqLength;

  // The checks in their order; the first that fails names the box(es) to empty.
  bool empty_first = false, empty_last = false;
  if (last == 0)
    empty_last = true;
  else if (first == 0)
    empty_first = true;
  else if (last > length)
    empty_last = true;
  else if (first > length)
    empty_first = true;
  else if (first < 0)
    empty_first = true;
  else if (first >= last)
    empty_first = empty_last = true;
  if (empty_first || empty_last) {
    platform.beep();
    if (empty_first) d.Text1.text.clear();
    if (empty_last) d.Text2.text.clear();
    return false;
  }

  RegionFields& r = rec.region;
  r.RegionMode = 1;
  r.WindowMode = 0;
  r.RegionFirst = text::plain(first);
  r.RegionLast = text::plain(last);
  if (last - first + 1 == length) {
    r.CodingWindowText = kWholeText;
    r.NoncodingWindowText = kWholeText;
    r.RegionMode = 0;
  } else {
    r.NoncodingWindowText = noncoding_region_text(first, last);
    r.CodingWindowText = coding_region_text(first, last);
  }
  update_region_text(rec);
  rebuild_summary(rec, SummaryTail::WindowText);
  d.region.visible = false;
  return true;
}

void whole_region(AnalysisRecord& rec) {
  set_whole_sequence(rec);
  RegionDialog& d = rec.region_dialog;
  d.Text1.text = rec.region.RegionFirst;
  d.Text2.text = rec.region.RegionLast;
  disable_coding_intervals(rec.menu);
  rebuild_summary(rec, SummaryTail::WindowText);
  d.region.visible = false;
}

void cancel_region(AnalysisRecord& rec) {
  RegionDialog& d = rec.region_dialog;
  d.Text1.text = rec.region.RegionFirst;
  d.Text2.text = rec.region.RegionLast;
  d.region.visible = false;
  d.loaded = false;
}

}  // namespace varnoth
