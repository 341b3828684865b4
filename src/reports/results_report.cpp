#include "reports/results_report.h"

#include <cmath>

#include "text/appender.h"
#include "text/number_format.h"

namespace varnoth::reports {

namespace {

using divergence::kNoApplicable;
using text::Appender;

constexpr std::string_view kCrlf = "\r\n";
constexpr std::string_view kStars = " *************************************************************";
constexpr std::string_view kWindowStars = " **************************";
constexpr text::Pattern kValue{"###0.00000 "};
constexpr text::Pattern kValueBare{"###0.00000"};
constexpr text::Pattern kWindowValue{" #0.00000 "};
constexpr text::Pattern kCount{" ####0.00 "};
constexpr text::Pattern kSites{"####0.00"};

void line(Appender& out, std::string_view s) {
  out += s;
  out += kCrlf;
}

double codon_of_first(double first) { return 1 + std::floor((first - 1) / 3); }

// Blanks in front of a text up to `width`; none when it is already wider.
void pad(Appender& out, std::size_t len, std::size_t width) {
  if (len < width) out.fill(width - len, ' ');
}

// label & number CRLF
template <typename Number>
void numbered_line(Appender& out, std::string_view label, Number value) {
  out += label;
  out.plain(value);
  out += kCrlf;
}

// label & first & " -" & last CRLF
void range_line(Appender& out, std::string_view label, double first, double last) {
  out += label;
  out.plain(first);
  out += " -";
  out.plain(last);
  out += kCrlf;
}

void comparison_line(Appender& out, long number) { numbered_line(out, " Comparison # ", number); }

void names(Appender& out, const ComparisonPlace& place) {
  out += " Seq. A: ";
  line(out, place.name_a);
  out += " Seq. B: ";
  line(out, place.name_b);
}

bool first_window(const ComparisonPlace& place) {
  return place.window == nullptr || place.window->index == 1;
}

// Lines 11 to 13 of a noncoding comparison.
void noncoding_head(Appender& out, const RunLayout& run, const ComparisonPlace& place,
                    long sites) {
  if (run.pair_count > 1) {
    if (first_window(place)) {
      if (place.number == 1) out += kCrlf;
      comparison_line(out, place.number);
    }
  } else if (!run.window) {
    out += kCrlf;
  }
  if (first_window(place)) {
    line(out, kStars);
    names(out, place);
  }
  if (const WindowPlace* w = place.window) {
    line(out, kWindowStars);
    numbered_line(out, " WINDOW #", w->index);
    range_line(out, " Nuc:", w->first, w->last);
    numbered_line(out, " Number of Nucleotide positions in Region: ", w->last - w->first + 1);
    numbered_line(out, " Number of Analyzed positions:   ", sites);
  }
}

// Lines 18 to 21 of a coding comparison.
void coding_head(Appender& out, const RunLayout& run, const ComparisonPlace& place,
                 long codons) {
  if (run.pair_count > 1) {
    if (place.number == 1 && first_window(place)) out += kCrlf;
    const bool stars = run.window ? first_window(place) : place.number == 1;
    if (stars) line(out, kStars);
    if (first_window(place)) comparison_line(out, place.number);
  } else {
    out += kCrlf;
  }
  if (first_window(place)) names(out, place);
  if (run.max_one_change || run.only_aa_change)
    numbered_line(out, " Number of Analyzed positions:   ", 3 * codons);
  if (const WindowPlace* w = place.window) {
    const double first_codon = codon_of_first(w->first);
    const double last_codon = codon_of_first(w->last);
    line(out, kWindowStars);
    numbered_line(out, " WINDOW #", w->index);
    range_line(out, "     nuc:", w->first, w->last);
    range_line(out, "   codon:", first_codon, last_codon);
    numbered_line(out, " Number of Nucleotide positions in Region: ", 3 * (1 + last_codon - first_codon));
    numbered_line(out, " Number of Analyzed positions:   ", 3 * codons);
  }
}

// "(" and the sites, right-aligned together in `width` + 1 columns.
template <typename Sites>
void parenthesised_sites(Appender& out, Sites sites, std::size_t width) {
  char digits[text::kCellRoom];
  std::string slow;
  std::string_view s;
  if (const char* end = text::write_cell(digits, sites, kSites, 0)) {
    s = std::string_view(digits, static_cast<std::size_t>(end - digits));
  } else {
    text::append_format(slow, sites, kSites);
    s = slow;
  }
  pad(out, s.size(), width);
  out += '(';
  out += s;
}

void star_line_after(Appender& out, const RunLayout& run) {
  if (run.pair_count > 1 && !run.window) line(out, kStars);
}

// "  Ks= " 0.12345 then the S.E.S. in a column of ten: the blanks stand before
// the parenthesis, not inside it.
template <typename Sites>
void jukes_cantor_line(Appender& out, std::string_view label, double k, Sites sites,
                       std::string_view sites_label, std::string_view note) {
  out += label;
  out.cell(k, kValue);
  parenthesised_sites(out, sites, 10);
  out += sites_label;
  out += ")";
  out += note;
  out += kCrlf;
}

template <typename Sites>
void kimura_line(Appender& out, std::string_view label, double k, std::string_view a_label,
                 double a, std::string_view b_label, double b, Sites sites,
                 std::string_view sites_label, std::string_view note) {
  out += label;
  if (!note.empty()) {
    line(out, note);
    return;
  }
  out.cell(k, kValue);
  out += a_label;
  out.cell(a, kValue);
  out += b_label;
  out.cell(b, kValueBare);
  out += ")  ";
  parenthesised_sites(out, sites, 8);
  out += sites_label;
  out += ")";
  out += note;
  out += kCrlf;
}

void jukes_cantor_fallback(Appender& out, std::string_view label, double k,
                           std::string_view note) {
  out += kCrlf;
  line(out, " M.-hits Correcting Method: Jukes and Cantor -1p");
  out += label;
  out.cell(k, kValue);
  out += note;
  out += kCrlf;
}

}  // namespace

RunLayout layout_of(const AnalysisRecord& rec, int method_number) {
  RunLayout run;
  const Menu& m = rec.menu;
  run.coding = m.Coding.checked;
  run.window = rec.region.WindowMode == 1;
  run.region = !run.window && rec.region.RegionMode == 1;
  run.pair_count = rec.seq.PairCount;
  run.jukes_cantor_run = method_number == 1;
  run.methods = {m.JukesandCantor.checked, m.Kimura2p.checked, m.TajimaandNei.checked,
                 m.Tajima1p.checked,       m.Tajima2p.checked, m.Tajima4p.checked};
  run.max_one_change = m.Max_One_Change.checked;
  run.only_aa_change = m.Always_aa_change.checked;
  run.no_3_diff = m.No_3_diff.checked;
  run.code = rec.active_code();
  run.pathway_weight = rec.options.PathwayWeight;
  return run;
}

void append_run_head(std::string& text, const RunLayout& run) {
  Appender out(text);
  if (run.coding) {
    out += " CODING DIVERGENCE ANALYSIS";
    if (run.max_one_change) out += "  * MAXIMUM ONE SUBSTITUTION PER CODON *";
    if (run.only_aa_change) out += "  * ONLY AAs SUBSTITUTIONS *";
    if (run.no_3_diff) out += "  * NO 3 DIFF. PER CODON *";
    out += kCrlf;
    line(out, run.code == GeneticCode::Vermito   ? " Genetic Code: Vertebrate Mitochondrial"
              : run.code == GeneticCode::Dromito ? " Genetic Code: Drosophila Mitochondrial"
                                                 : " Genetic Code: Universal");
  } else {
    line(out, " NONCODING DIVERGENCE ANALYSIS");
  }
  if (run.pair_count == 1) out += kCrlf;
  if (run.coding) {
    if (run.pathway_weight == 0.5f) {
      line(out, " Multiple-pathways: Unweighted");
    } else {
      out += " Multiple-pathways weight: Synonymous/Total =";
      out.plain(run.pathway_weight);
      out += kCrlf;
    }
    line(out, run.jukes_cantor_run ? " Multiple-hits Correcting Method: Jukes and Cantor-1p "
                                   : " Multiple-hits Correcting Method: Kimura-2p ");
  } else {
    static constexpr std::string_view kNames[6] = {
        "   Jukes and Cantor-1p ", "   Kimura-2p ", "   Tajima and Nei ",
        "   Tajima-1p ",           "   Tajima-2p ", "   Tajima-4p "};
    line(out, " Multiple-hits Correcting Method:");
    for (int i = 0; i < 6; ++i)
      if (run.methods[i]) line(out, kNames[i]);
    out += kCrlf;
  }
}

void append_positions_block(std::string& text, const RunLayout& run, double seq_length,
                            double first, double last, const std::string& region_text,
                            long analyzed) {
  Appender out(text);
  if (run.window) {
    numbered_line(out, " Number of Total Nucleotide positions: ", seq_length);
  } else if (run.region) {
    numbered_line(out, " Number of Total Nucleotide positions: ", seq_length);
    out += kCrlf;
    out += " Region analyzed :";
    out.plain(first);
    out += " -";
    out.plain(last);
    line(out, " nuc.");
    if (run.coding) {
      const double first_codon = codon_of_first(first);
      const double last_codon = std::floor(last / 3);
      out += "                  ";
      out.plain(first_codon);
      out += " -";
      out.plain(last_codon);
      out += " codon";
      out += kCrlf;
      out += " Number of Codons in Region:     ";
      out.plain(last_codon - first_codon + 1);
    } else {
      out += " Number of Nucleotide positions in Region: ";
      out.plain(last - first + 1);
    }
  } else {
    out += " Number of Nucleotide positions: ";
    out.plain(seq_length);
  }
  if (!run.window) {
    out += region_text;
    out += kCrlf;
    if (!run.max_one_change && !run.only_aa_change)
      numbered_line(out, " Number of Analyzed positions:   ", analyzed);
  } else {
    out += kCrlf;
  }
}

void append_noncoding_comparison(std::string& text, const RunLayout& run,
                                 const ComparisonPlace& place, long sites,
                                 const divergence::NoncodingEstimates& e,
                                 const divergence::NoncodingNotApplicable& na) {
  Appender out(text);
  noncoding_head(out, run, place, sites);
  out += kCrlf;
  if (run.pair_count <= 40) {
    line(out, "                 A         G         C         T");
    const char* labels[3] = {" Seq. A : ", " Seq. B : ", "  MEAN  : "};
    for (int row = 0; row < 3; ++row) {
      out += labels[row];
      for (int b = 0; b < 4; ++b) {
        const double c1 = static_cast<double>(e.counts1[b]);
        const double c2 = static_cast<double>(e.counts2[b]);
        out.cell(row == 0 ? c1 : row == 1 ? c2 : (c1 + c2) / 2, kCount, 10);
      }
      out += kCrlf;
    }
    out += kCrlf;
    out += " Obs.Subst.Frq.   Fd=";
    out.cell(e.obs_p + e.obs_q, kValue, 10);
    out += kCrlf;
  }
  struct Row {
    std::string_view label;
    bool not_applicable;
  };
  const Row rows[6] = {{" Jukes & Cantor    ", na.jukes_cantor}, {" Kimura 2-p        ", na.kimura},
                       {" Tajima & Nei      ", na.tajima_nei},   {" Tajima 1-p        ", na.tajima_1p},
                       {" Tajima 2-p        ", na.tajima_2p},    {" Tajima 4-p        ", na.tajima_4p}};
  const double values[6] = {e.k_jukes_cantor, e.k_kimura, e.k_tajima_nei, e.k_tajima_1p, 0,
                            e.k_tajima_4p};
  for (int i = 0; i < 6; ++i) {
    if (!run.methods[i]) continue;
    out += rows[i].label;
    if (rows[i].not_applicable) {
      line(out, kNoApplicable);
      continue;
    }
    out += "K=";
    if (i == 4)
      out.cell(e.k_tajima_2p, kValue, 10);
    else
      out.cell(values[i], kValue, 10);
    if (i == 1) {
      out += "  (A=";
      out.cell(e.kimura_a, kValue, 9);
      out += " B=";
      out.cell(e.kimura_b, kValue, 9);
      out += ")";
    }
    out += kCrlf;
  }
  if (!run.window) out += kCrlf;
}

void append_noncoding_empty(std::string& text, const RunLayout& run, const ComparisonPlace& place,
                            long sites) {
  Appender out(text);
  noncoding_head(out, run, place, sites);
  out += kCrlf;
  line(out, " NO APPLICABLE");
}

void append_coding_comparison(std::string& text, const RunLayout& run,
                              const ComparisonPlace& place, long codons,
                              const divergence::ClassTotals& c,
                              const divergence::CodingEstimates& e) {
  Appender out(text);
  coding_head(out, run, place, codons);
  if (run.pair_count <= 40) {
    out += kCrlf;
    line(out, "* MEAN        total        A         G         C         T");
    const char* labels[4] = {"  0-fold : ", " 2S-fold : ", " 2V-fold : ", "  4-fold : "};
    float total[5] = {0, 0, 0, 0, 0};
    for (int k = 0; k < 4; ++k) {
      const float row[5] = {c.Sites[k], c.SitesA[k], c.SitesG[k], c.SitesC[k], c.SitesT[k]};
      out += labels[k];
      for (int j = 0; j < 5; ++j) {
        out.cell(row[j], kCount, 10);
        total[j] += row[j];
      }
      out += kCrlf;
    }
    out += "  Total  : ";
    for (float t : total) out.cell(t, kCount, 10);
    out += kCrlf;
    out += kCrlf;
    line(out, "              total      0-fold   2S-fold   2V-fold    4-fold");
    for (int kind = 0; kind < 2; ++kind) {
      const auto& v = kind == 0 ? c.ObsTS : c.ObsTV;
      out += kind == 0 ? " Obs.TRS : " : " Obs.TRV : ";
      out.cell(v[0] + v[1] + v[2] + v[3], kCount, 10);
      for (float x : v) out.cell(x, kCount, 10);
      out += kCrlf;
    }
  }
  out += kCrlf;
  if (run.jukes_cantor_run) {
    jukes_cantor_line(out, "  Ks= ", e.ks_jc, e.ses, " S.E.S.", e.ks_jc_note);
    if (!run.only_aa_change)
      jukes_cantor_line(out, "  Ka= ", e.ka_jc, e.nes, " N.E.S.", e.ka_jc_note);
  } else {
    kimura_line(out, " Ks= ", e.ks_kimura, " (As= ", e.as, " Bs= ", e.bs, e.ses, " S.E.S.",
                e.ks_kimura_note);
    if (!run.only_aa_change)
      kimura_line(out, " Ka= ", e.ka_kimura, " (Aa= ", e.aa, " Ba= ", e.ba, e.nes, " N.E.S.",
                  e.ka_kimura_note);
    if (!e.ks_kimura_note.empty()) jukes_cantor_fallback(out, " Ks= ", e.ks_jc, e.ks_jc_note);
    if (!e.ka_kimura_note.empty() && !run.only_aa_change)
      jukes_cantor_fallback(out, " Ka= ", e.ka_jc, e.ka_jc_note);
  }
  star_line_after(out, run);
}

void append_coding_empty(std::string& text, const RunLayout& run, const ComparisonPlace& place,
                         long codons) {
  Appender out(text);
  coding_head(out, run, place, codons);
  out += kCrlf;
  line(out, " NO APPLICABLE");
  star_line_after(out, run);
}

void append_window_columns(std::string& text, const RunLayout& run) {
  Appender out(text);
  out += "Begin(bp)\tEnd(bp)\tMiddle(bp)";
  if (run.coding) {
    out += run.jukes_cantor_run ? "\tKs JC\tKa JC" : "\tKs K-2p\tKa K-2p";
  } else {
    static constexpr std::string_view kNames[6] = {"JC", "K-2p", "T-N", "Taj-1p", "Taj-2p",
                                                   "Taj-4p"};
    for (int i = 0; i < 6; ++i) {
      if (!run.methods[i]) continue;
      out += '\t';
      out += kNames[i];
    }
  }
  out += kCrlf;
}

void append_window_names(std::string& text, std::string_view name_a, std::string_view name_b) {
  Appender out(text);
  line(out, name_a);
  line(out, name_b);
}

namespace {

void window_bounds(Appender& out, const WindowPlace& w) {
  out.plain(w.first);
  out += '\t';
  out.plain(w.last);
  out += '\t';
  out.plain(w.first + (w.last - w.first) / 2);
}

}  // namespace

void append_noncoding_window_row(std::string& text, const RunLayout& run, const WindowPlace& w,
                                 const divergence::NoncodingEstimates& e,
                                 const divergence::NoncodingNotApplicable& na) {
  Appender out(text);
  window_bounds(out, w);
  const bool not_applicable[6] = {na.jukes_cantor, na.kimura,    na.tajima_nei,
                                  na.tajima_1p,    na.tajima_2p, na.tajima_4p};
  const double values[6] = {e.k_jukes_cantor, e.k_kimura, e.k_tajima_nei, e.k_tajima_1p, 0,
                            e.k_tajima_4p};
  for (int i = 0; i < 6; ++i) {
    if (!run.methods[i]) continue;
    out += '\t';
    if (not_applicable[i])
      out += "N.A.";
    else if (i == 4)
      out.cell(e.k_tajima_2p, kValue);
    else
      out.cell(values[i], kValue);
  }
  out += kCrlf;
}

void append_coding_window_row(std::string& text, const RunLayout& run, const WindowPlace& w,
                              const divergence::CodingEstimates& e) {
  Appender out(text);
  window_bounds(out, w);
  auto value = [&](double k, std::string_view note) {
    out += '\t';
    if (!note.empty())
      out += "N.A.";
    else
      out.cell(k, kWindowValue);
  };
  if (run.jukes_cantor_run) {
    value(e.ks_jc, e.ks_jc_note);
    value(e.ka_jc, e.ka_jc_note);
  } else {
    value(e.ks_kimura, e.ks_kimura_note);
    value(e.ka_kimura, e.ka_kimura_note);
  }
  out += kCrlf;
}

}  // namespace varnoth::reports
