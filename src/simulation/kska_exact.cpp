#include "simulation/kska_exact.h"

#include <cmath>
#include <vector>

#include "reports/saving.h"
#include "text/number_format.h"
#include "text/number_reading.h"

namespace varnoth::simulation {

namespace {

constexpr double kFieldNotApplicable = 8;  // a field read back at or above it
constexpr double kRatioMark = 999998;      // a ratio that is not compared

void append_row(std::string& out, std::string_view head, std::string_view value,
                std::string_view tail, long count, double n) {
  out += head;
  out += value;
  out += tail;
  text::append_format(out, n > 0 ? static_cast<double>(count) / n : 0.0, "0.0000");
  out += "\r\n";
}

// Command10 and Command11: `box` holds the value, `other` is the other value box.
void exact_probability(KsKaDialog& d, Control& box, Control& other, bool ka) {
  const std::string_view name = ka ? "Ka" : "Ks";
  other.text.clear();
  d.Text16.text.clear();
  const double v = text::read_field(box.text);
  if (!(v >= 0 && v < 5)) {
    d.Text16.text = std::string(" ") + std::string(name) + " value Not Valid";
    return;
  }
  if (box.text.size() > 6) box.text = text::format(v, "0.0000");
  const ExactCounts c = count_estimates(d.null_distribution, ka, v);
  const double n = static_cast<double>(d.null_distribution.size());
  std::string& t = d.Text16.text;
  t = " *EXACT PROBABILITY:\r\n";
  const std::string head = std::string(" Prob. [") + std::string(name);
  if (v != 0) append_row(t, head + " < ", box.text, "] = ", c.less, n);
  append_row(t, head + " > ", box.text, "] = ", c.greater, n);
  append_row(t, head + " = ", box.text, "] = ", c.equal, n);
  append_row(t, " Prob. [Not Appl.]  = ", "", "", c.not_applicable, n);
}

void append_field(std::string& out, double value) {
  if (value > kFieldNotApplicable)
    out += kNotApplicableField;
  else
    append_data_field(out, value);
}

}  // namespace

ExactCounts count_estimates(std::span<const ReplicateLine> lines, bool ka, double v) {
  ExactCounts c;
  for (const ReplicateLine& line : lines) {
    const double x = ka ? line.ka : line.ks;
    if (x >= kFieldNotApplicable)
      ++c.not_applicable;
    else if (x > v)
      ++c.greater;
    else if (x < v)
      ++c.less;
    else
      ++c.equal;
  }
  return c;
}

ExactCounts count_ratios(std::span<const ReplicateLine> lines, double v) {
  ExactCounts c;
  for (const ReplicateLine& line : lines) {
    if (line.ks == 0) ++c.infinite;
    double ratio = kRatioMark;
    if (line.ks > 0 && line.ks < kFieldNotApplicable && line.ka < kFieldNotApplicable)
      ratio = line.ka / line.ks;
    else
      ++c.not_applicable;  // a Ks of 0 stands in both counts
    if (ratio >= kRatioMark) continue;
    if (ratio > v)
      ++c.greater;
    else if (ratio < v)
      ++c.less;
    else
      ++c.equal;
  }
  return c;
}

void exact_probability_ks(KsKaDialog& d) { exact_probability(d, d.Text14, d.Text15, false); }

void exact_probability_ka(KsKaDialog& d) { exact_probability(d, d.Text15, d.Text14, true); }

void exact_probability_ratio(KsKaDialog& d) {
  d.Text16.text.clear();
  const double v = text::read_field(d.Text18.text);
  if (!(v >= 0 && v < 99)) {
    d.Text16.text = " Ka/Ks value Not Valid";
    return;
  }
  const ExactCounts c = count_ratios(d.null_distribution, v);
  const double n = static_cast<double>(d.null_distribution.size());
  const std::string& value = d.Text18.text;
  std::string& t = d.Text16.text;
  t = " *EXACT PROBABILITY:\r\n";
  append_row(t, " Prob. [Ka/Ks < ", value, "] = ", c.less, n);
  append_row(t, " Prob. [Ka/Ks > ", value, "] = ", c.greater, n);
  append_row(t, " Prob. [Ka/Ks = ", value, "] = ", c.equal, n);
  append_row(t, " Prob.[Ka/Ks=Inf.(Ks=0)]= ", "", "", c.infinite, n);
  append_row(t, " Prob.[Ka or Ks NotApp.]= ", "", "", c.not_applicable - c.infinite, n);
}

std::string kska_default_name(std::string_view input_file_name, std::string_view extension) {
  if (input_file_name.empty()) return "*" + std::string(extension);
  return default_output_name(input_file_name, extension);
}

std::string kska_results_text(const ClockReading& clock, std::string_view report) {
  std::string t = common_head(clock);
  t += " CONFIDENCE INTERVALS ANALYSIS\r\n";
  t += report;
  return t;
}

std::string null_distribution_text(std::span<const ReplicateLine> lines, UniformRandom& random) {
  const long n = static_cast<long>(lines.size());
  std::vector<bool> taken(static_cast<std::size_t>(n) + 1, false);
  std::string out;
  out.reserve(static_cast<std::size_t>(n) * (2 * kDataFieldWidth + 2));
  for (long written = 0; written < n; ++written) {
    long k;
    do {
      k = 1 + static_cast<long>(std::floor(random.uniform() * static_cast<double>(n)));
      if (k > n) k = n;
    } while (taken[static_cast<std::size_t>(k)]);
    taken[static_cast<std::size_t>(k)] = true;
    const ReplicateLine& line = lines[static_cast<std::size_t>(k - 1)];
    append_field(out, line.ks);
    append_field(out, line.ka);
    out += "\r\n";
  }
  return out;
}

bool save_kska_results(const AnalysisRecord& rec, Platform& platform) {
  FileDialogRequest request;
  request.filter = std::string(kCiFilter);
  request.default_name = kska_default_name(rec.seq.InputFileName, ".ci");
  const std::string path = platform.save_file(request);
  if (path.empty()) return false;
  return write_text_file(path, kska_results_text(platform.clock(), rec.ReportBuffer));
}

void print_kska_results(const KsKaDialog& d, Platform& platform) {
  platform.print(kska_results_text(platform.clock(), d.Text13.text));
}

bool save_null_distribution(KsKaDialog& d, const AnalysisRecord& rec, Platform& platform) {
  FileDialogRequest request;
  request.filter = std::string(kCidFilter);
  request.default_name = kska_default_name(rec.seq.InputFileName, ".cid");
  const std::string path = platform.save_file(request);
  if (path.empty()) return false;
  return write_text_file(path, null_distribution_text(d.null_distribution, d.random));
}

}  // namespace varnoth::simulation
