#include "reports/pair_table.h"

#include <charconv>
#include <cmath>

namespace varnoth::reports {

namespace {

constexpr std::string_view kPlaceColumns = "file\tseq_a\tseq_b\tbegin\tend\tanalyzed";
constexpr std::string_view kCodingColumns =
    "\tks_method\tka_method\tks\tka\tka_ks\tas\tbs\taa\tba\tses\tnes"
    "\tsites_0fold\tsites_2s\tsites_2v\tsites_4fold\tgc3";
constexpr std::string_view kNoncodingColumns = "\tp\tq\tk_jc\tk_k2p\tk_tn\tk_t1p\tk_t2p\tk_t4p";
constexpr int kCodingValues = 16;
constexpr int kNoncodingValues = 8;

template <typename Number>
void append_shortest(std::string& out, Number value) {
  if (!std::isfinite(value)) {
    out += kTableMissing;
    return;
  }
  char buffer[64];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  out.append(buffer, result.ptr);
}

void tab_missing(std::string& out, int count) {
  for (int i = 0; i < count; ++i) {
    out += '\t';
    out += kTableMissing;
  }
}

template <typename Number>
void tab_value(std::string& out, bool printed, Number value) {
  out += '\t';
  if (printed)
    append_table_number(out, value);
  else
    out += kTableMissing;
}

std::string_view trimmed(std::string_view s) {
  while (!s.empty() && (s.front() == ' ' || s.front() == '\t')) s.remove_prefix(1);
  while (!s.empty() && (s.back() == ' ' || s.back() == '\t')) s.remove_suffix(1);
  return s;
}

// Length of the valid UTF-8 sequence at the start of `s`, 0 if none.
std::size_t utf8_length(std::string_view s) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(s[i]); };
  const unsigned char c = byte(0);
  std::size_t n = 0;
  if (c < 0x80) return 1;
  if (c >= 0xC2 && c <= 0xDF) n = 2;
  else if (c >= 0xE0 && c <= 0xEF) n = 3;
  else if (c >= 0xF0 && c <= 0xF4) n = 4;
  else return 0;
  if (s.size() < n) return 0;
  for (std::size_t i = 1; i < n; ++i)
    if ((byte(i) & 0xC0) != 0x80) return 0;
  // Overlong forms, surrogates and code points beyond U+10FFFF.
  if (c == 0xE0 && byte(1) < 0xA0) return 0;
  if (c == 0xED && byte(1) > 0x9F) return 0;
  if (c == 0xF0 && byte(1) < 0x90) return 0;
  if (c == 0xF4 && byte(1) > 0x8F) return 0;
  return n;
}

// One coding row's values behind the place columns.
void append_coding_values(std::string& out, const RunLayout& run,
                          const divergence::PairValues& v) {
  const divergence::CodingEstimates& e = v.estimates;
  const bool ka_printed = !run.only_aa_change;
  // Kimura where its estimate holds, else the Jukes and Cantor fallback line.
  const bool ks_kimura = !run.jukes_cantor_run && e.ks_kimura_note.empty();
  const bool ka_kimura = !run.jukes_cantor_run && e.ka_kimura_note.empty() && ka_printed;
  const double ks = ks_kimura ? e.ks_kimura : e.ks_jc;
  const bool ks_known = ks_kimura || e.ks_jc_note.empty();
  const double ka = ka_kimura ? e.ka_kimura : e.ka_jc;
  const bool ka_known = ka_printed && (ka_kimura || e.ka_jc_note.empty());

  out += '\t';
  out += ks_kimura ? "K2P" : "JC";
  out += '\t';
  out += !ka_printed ? kTableMissing : ka_kimura ? "K2P" : "JC";
  tab_value(out, ks_known, ks);
  tab_value(out, ka_known, ka);
  tab_value(out, ks_known && ka_known && ks != 0, ks_known && ks != 0 ? ka / ks : 0.0);
  tab_value(out, ks_kimura, e.as);
  tab_value(out, ks_kimura, e.bs);
  tab_value(out, ka_kimura, e.aa);
  tab_value(out, ka_kimura, e.ba);
  // S.E.S. stands on the Jukes and Cantor line always, on the Kimura line only
  // where Kimura's Ks holds; N.E.S. likewise for Ka.
  tab_value(out, run.jukes_cantor_run || ks_kimura, e.ses);
  tab_value(out, (run.jukes_cantor_run && ka_printed) || ka_kimura, e.nes);
  for (float sites : v.sites) tab_value(out, true, sites);
  tab_value(out, true, v.third_gc);
}

void append_noncoding_values(std::string& out, const RunLayout& run,
                             const divergence::PairValues& v) {
  const divergence::NoncodingEstimates& e = v.noncoding;
  const divergence::NoncodingNotApplicable& na = v.noncoding_na;
  tab_value(out, true, e.obs_p);
  tab_value(out, true, e.obs_q);
  tab_value(out, run.methods[0] && !na.jukes_cantor, e.k_jukes_cantor);
  tab_value(out, run.methods[1] && !na.kimura, e.k_kimura);
  tab_value(out, run.methods[2] && !na.tajima_nei, e.k_tajima_nei);
  tab_value(out, run.methods[3] && !na.tajima_1p, e.k_tajima_1p);
  tab_value(out, run.methods[4] && !na.tajima_2p, e.k_tajima_2p);
  tab_value(out, run.methods[5] && !na.tajima_4p, e.k_tajima_4p);
}

}  // namespace

void append_table_number(std::string& out, double value) { append_shortest(out, value); }
void append_table_number(std::string& out, float value) { append_shortest(out, value); }

void append_table_text(std::string& out, std::string_view text) {
  const bool quoted = text.find_first_of("\t\"\r\n") != std::string_view::npos;
  if (quoted) out += '"';
  while (!text.empty()) {
    const std::size_t n = utf8_length(text);
    if (n == 0) {
      // Latin-1: the byte is its own code point, two bytes in UTF-8.
      const auto c = static_cast<unsigned char>(text[0]);
      out += static_cast<char>(0xC0 | (c >> 6));
      out += static_cast<char>(0x80 | (c & 0x3F));
      text.remove_prefix(1);
      continue;
    }
    if (n == 1 && text[0] == '"') out += '"';
    out.append(text.substr(0, n));
    text.remove_prefix(n);
  }
  if (quoted) out += '"';
}

void append_pair_table_header(std::string& out, bool coding) {
  out += kPlaceColumns;
  out += coding ? kCodingColumns : kNoncodingColumns;
  out += '\n';
}

void append_pair_table_row(std::string& out, const RunLayout& run, std::string_view file,
                           std::string_view name_a, std::string_view name_b,
                           const divergence::PairValues& v) {
  append_table_text(out, file);
  out += '\t';
  append_table_text(out, trimmed(name_a));
  out += '\t';
  append_table_text(out, trimmed(name_b));
  tab_value(out, true, v.first);
  tab_value(out, true, v.last);
  out += '\t';
  append_shortest(out, static_cast<double>(v.analyzed));
  if (v.empty)
    tab_missing(out, v.coding ? kCodingValues : kNoncodingValues);
  else if (v.coding)
    append_coding_values(out, run, v);
  else
    append_noncoding_values(out, run, v);
  out += '\n';
}

}  // namespace varnoth::reports
