#include "state/summary.h"

#include <cmath>

#include "state/options.h"
#include "text/number_format.h"
#include "text/number_reading.h"

namespace varnoth {

namespace {

constexpr const char* kCrlf = "\r\n";

void coding_lines(const AnalysisRecord& rec, std::string& out) {
  const Menu& m = rec.menu;
  out += " CODING DIVERGENCE ANALYSIS";
  out += kCrlf;
  out += " M.-Hits Correcting Method: ";
  if (m.JukesandCantor.checked) out += " Jukes and Cantor";
  if (m.Kimura2p.checked) out += " Kimura-2p";
  out += kCrlf;
  out += " Genetic Code:              ";
  out += m.Vermito.checked   ? " Vertebrate Mitochondrial"
         : m.Dromito.checked ? " Drosophila Mitochondrial"
                             : " Universal";
  out += kCrlf;
  out += " Multiple pathways method:   ";
  if (m.Unweighted.checked) {
    out += "Unweighted";
  } else {
    out += "Weighted [Prob.Syn =";
    text::append_plain(out, rec.options.PathwayWeight);
    out += "]";
  }
  out += kCrlf;
  const OptionFields& o = rec.options;
  out += " Comparison Restrictions:   ";
  if (o.MaxOneChangeFlag == 1) out += " Max. One Substitution /Codon";
  if (o.OnlyAaChangeFlag == 1) out += " Only AAs Substitutions";
  if (o.MaxOneChangeFlag == 0 && o.OnlyAaChangeFlag == 0 && o.No3DiffFlag == 0) out += " None";
  if (o.No3DiffFlag == 1) out += " No Codons with 3 diff. ";
  out += kCrlf;
}

void noncoding_lines(const AnalysisRecord& rec, std::string& out) {
  static constexpr const char* kNames[6] = {"Jukes & Cantor   ", "Kimura-2p        ",
                                            "Tajima & Nei     ", "Tajima-1p        ",
                                            "Tajima-2p        ", "Tajima-4p        "};
  const Menu& m = rec.menu;
  out += " NONCODING DIVERGENCE ANALYSIS";
  out += kCrlf;
  int checked = 0;
  for (auto method : kMethods) checked += (m.*method).checked ? 1 : 0;
  if (checked < 5) out += kCrlf;
  out += " M.-Hits Correcting Method: ";
  int on_line = 0;
  for (int i = 0; i < 6; ++i) {
    if ((m.*kMethods[i]).checked) {
      out += kNames[i];
      ++on_line;
    }
    // The break is tested behind the second to the fifth name only.
    if (i >= 1 && i <= 4 && on_line == 2) {
      out += kCrlf;
      out += "                            ";
      on_line = 0;
    }
  }
  out += kCrlf;
}

}  // namespace

std::string option_summary(const AnalysisRecord& rec, SummaryTail tail) {
  std::string out;
  const bool coding = rec.menu.Coding.checked;
  if (coding)
    coding_lines(rec, out);
  else
    noncoding_lines(rec, out);
  switch (tail) {
    case SummaryTail::WindowText:
      out += coding ? rec.region.CodingWindowText : rec.region.NoncodingWindowText;
      break;
    case SummaryTail::RegionText: {
      const double first = text::read_number(rec.region.RegionFirst);
      const double last = text::read_number(rec.region.RegionLast);
      if (rec.seq.SeqCount > 0 && last - first > 0) out += rec.region.RegionText;
      break;
    }
    case SummaryTail::None:
      break;
  }
  return out;
}

void rebuild_summary(AnalysisRecord& rec, SummaryTail tail) {
  rec.ReportBuffer = option_summary(rec, tail);
  rec.form.Text2.text = rec.ReportBuffer;
  rec.ReportBuffer.clear();
}

void update_region_text(AnalysisRecord& rec) {
  RegionFields& r = rec.region;
  if (r.RegionFirst.empty()) r.RegionFirst = "1";
  if (r.RegionLast.empty()) r.RegionLast = text::plain(rec.seq.SeqLength);
  const double first = text::read_number(r.RegionFirst);
  const double last = text::read_number(r.RegionLast);
  if (!(rec.seq.SeqCount > 0 && last - first > 0)) return;
  std::string t = kCrlf;
  if (last - first + 1 == rec.seq.SeqLength) {
    t += " Region to analyze: All";
  } else {
    t += " Region to analyze:";
    t += r.RegionFirst;
    t += " -";
    t += r.RegionLast;
    t += " nuc.";
    if (rec.menu.Coding.checked) {
      t += kCrlf;
      t += "                   ";
      text::append_plain(t, 1 + std::floor((first - 1) / 3));
      t += " -";
      text::append_plain(t, 1 + std::floor((last - 1) / 3));
      t += " codon";
    }
  }
  r.RegionText = std::move(t);
}

}  // namespace varnoth
