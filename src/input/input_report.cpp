#include "input/input_report.h"

#include "input/line_list.h"
#include "text/crlf_text.h"
#include "text/number_format.h"

namespace varnoth::input {

namespace {

constexpr size_t kCountColumns = 5;
constexpr size_t kNameCharacters = 45;

std::string right_aligned_count(double value) {
  std::string number = text::plain(value);
  if (number.size() >= kCountColumns) return number;
  return std::string(kCountColumns - number.size(), ' ') + number;
}

}  // namespace

bool input_report_fits(const SequenceData& seq) {
  return text::plain(seq.SeqCount).size() <= kCountColumns &&
         text::plain(seq.SeqLength).size() <= kCountColumns;
}

std::string build_input_report(const SequenceData& seq) {
  text::CrlfText out;
  out.line(" Input File Name:   ", seq.InputFileName);
  out.line(" Input File Format: ", seq.InputFormatName);
  out.line();
  out.line(" Number of Sequences:            ", right_aligned_count(seq.SeqCount));
  out.line(" Number of Nucleotide positions: ", right_aligned_count(seq.SeqLength));
  out.line();
  const long long count = whole_count(seq.SeqCount);
  for (long long i = 1; i <= count && i <= static_cast<long long>(seq.SeqNames.size()); ++i) {
    const std::string& name = seq.SeqNames[static_cast<size_t>(i - 1)];
    out.line(" Sequence#", text::plain(i), ": ", std::string_view(name).substr(0, kNameCharacters));
  }
  return out.take();
}

}  // namespace varnoth::input
