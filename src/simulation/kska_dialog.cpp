#include "simulation/kska_dialog.h"

#include <cmath>

#include "divergence/driver.h"
#include "text/number_format.h"

namespace varnoth::simulation {

namespace {

void set_random_fields(Control& check, Control& trs, Control& trv) {
  check.value = true;
  trs.text = "1";
  trv.text = "1";
  trs.enabled = false;
  trv.enabled = false;
}

// The ratio of a class into its two fields; false when it is undefined.
bool put_ratio(Control& trs, Control& trv, double p, double q) {
  const RatioFields r = ratio_from_rates(p, q);
  if (!r.defined) return false;
  trs.text = text::plain(r.trs);
  trv.text = text::plain(r.trv);
  return true;
}

bool has_coding_estimate(const AnalysisRecord& rec) {
  return rec.coding() && rec.results.CodingResultsReady == 1;
}

long sequence_total(const AnalysisRecord& rec) {
  return static_cast<long>(rec.seq.SeqNames.size());
}

std::string combo_item(long number, const std::string& name) {
  std::string item = " Sequence#";
  text::append_plain(item, number);
  item += ": ";
  item += name;
  return item;
}

void show_combo_choice(ComboBox& combo, long index) {
  if (index >= 1 && index <= static_cast<long>(combo.items.size()))
    combo.text = combo.items[static_cast<std::size_t>(index - 1)];
}

// The estimate fields, the fallback marks and the ratios from the values handed
// on by the pair, then the rules that force a class to Random.
void fill_from_estimate(KsKaDialog& d, const AnalysisRecord& rec) {
  const CodingHandedOnFields& h = rec.results.handed_on;
  d.Text1.text = text::format(h.Ks, "0.0000");
  d.Text2.text = text::plain(std::floor(0.5 + h.SES));
  d.Text3.text = text::format(h.Ka, "0.0000");
  d.Text4.text = text::plain(std::floor(static_cast<double>(h.NES) + 0.5));
  // A Single product, as the field is a Single: 0.41 gives 410 and not 409.
  const float per_mille = h.PairGCContent * 1000.0f;
  d.Text6.text = text::plain(std::floor(static_cast<double>(per_mille)) * 0.1);
  d.LabelKsJC.visible = h.KsMethod == 1;
  d.LabelKaJC.visible = h.KaMethod == 1 && d.KaEqualsKsMode == 0;

  d.Check1.value = false;
  d.Check2.value = false;
  d.Text8.enabled = d.Text9.enabled = true;
  d.Text10.enabled = d.Text11.enabled = true;
  d.SynRatioUndefined = !put_ratio(d.Text8, d.Text9, h.As, h.Bs);
  d.NonsynRatioUndefined = !put_ratio(d.Text10, d.Text11, h.Aa, h.Ba);

  const int method = divergence::method_number(rec.menu);
  bool syn_random = d.SynRatioUndefined, nonsyn_random = d.NonsynRatioUndefined;
  if (method == 1) syn_random = nonsyn_random = true;
  if (method == 2) {
    syn_random = syn_random || h.KsMethod == 1;
    nonsyn_random = nonsyn_random || h.KaMethod == 1;
  }
  if (syn_random) set_random_fields(d.Check1, d.Text8, d.Text9);
  if (nonsyn_random) set_random_fields(d.Check2, d.Text10, d.Text11);
}

void copy_pair_row(AnalysisRecord& rec, const PairStoreRow& row) {
  CodingHandedOnFields& h = rec.results.handed_on;
  h.KsMethod = static_cast<int>(row[1]);
  h.KaMethod = static_cast<int>(row[2]);
  h.Ks = row[3];
  h.Ka = row[4];
  h.As = row[8];
  h.Bs = row[9];
  h.Aa = row[10];
  h.Ba = row[11];
  h.SES = row[12];
  h.NES = static_cast<float>(row[13]);
  h.PairGCContent = static_cast<float>(row[14]);
}

}  // namespace

RatioFields ratio_from_rates(double p, double q) {
  RatioFields r;
  double a = p / 2;  // two kinds of transition
  double b = q / 4;  // four kinds of transversion
  if (a == 0 || b == 0) return r;
  if (a <= b) {
    b = 0.1 * std::floor(10 * b / a);
    a = 1;
  }
  if (a > b) {
    a = 0.1 * std::floor(10 * a / b);
    b = 1;
  }
  r.defined = true;
  r.trs = a;
  r.trv = b;
  return r;
}

void open_kska_dialog(KsKaDialog& d, AnalysisRecord& rec, KsKaSession& session, int mode) {
  rec.form.Form1.visible = false;
  d = KsKaDialog{};
  d.loaded = true;
  d.KaEqualsKsMode = mode;
  if (mode == 1) {
    d.Text3.visible = false;
    d.Label3.visible = false;
    d.LabelKaJC.visible = false;
  }

  const long n = sequence_total(rec);
  if (n > 2) {
    for (long i = 1; i <= n; ++i)
      for (ComboBox* c : {&d.Combo1, &d.Combo2})
        c->items.push_back(combo_item(i, rec.seq.SeqNames[static_cast<std::size_t>(i - 1)]));
    d.Combo1.visible = d.Combo2.visible = true;
    const bool valid = session.Seq1Index >= 1 && session.Seq1Index <= n && session.Seq2Index >= 1 &&
                       session.Seq2Index <= n && session.Seq1Index != session.Seq2Index;
    if (!valid) {
      session.Seq1Index = n - 1;
      session.Seq2Index = n;
    }
    show_combo_choice(d.Combo1, session.Seq1Index);
    show_combo_choice(d.Combo2, session.Seq2Index);
  }

  if (!has_coding_estimate(rec)) {
    reset_kska_dialog(d);
    d.Check4.value = true;
    return;
  }
  fill_from_estimate(d, rec);
  if (session.SimCodons == 0) session.SimCodons = static_cast<double>(rec.seq.CodonCount);
  d.Text5.text = text::plain(session.SimCodons);
  d.Text7.text = "1000";
  d.Check3.value = true;
  d.Check4.value = true;
}

void choose_pair(KsKaDialog& d, AnalysisRecord& rec, KsKaSession& session, long a, long b) {
  const long n = sequence_total(rec);
  if (a == b || a < 1 || b < 1 || a > n || b > n) return;
  session.Seq1Index = a;
  session.Seq2Index = b;
  show_combo_choice(d.Combo1, a);
  show_combo_choice(d.Combo2, b);
  const long first = a < b ? a : b, second = a < b ? b : a;
  const long row = divergence::comparison_index(first, second, n);
  if (row < 1 || row >= static_cast<long>(rec.results.PairStore.size())) return;
  copy_pair_row(rec, rec.results.PairStore[static_cast<std::size_t>(row)]);
  fill_from_estimate(d, rec);
}

void set_synonymous_random(KsKaDialog& d, const AnalysisRecord& rec, bool on) {
  if (on) {
    set_random_fields(d.Check1, d.Text8, d.Text9);
    return;
  }
  d.Check1.value = false;
  d.SynRatioUndefined =
      !put_ratio(d.Text8, d.Text9, rec.results.handed_on.As, rec.results.handed_on.Bs);
  d.Text8.enabled = d.Text9.enabled = true;
}

void set_nonsynonymous_random(KsKaDialog& d, const AnalysisRecord& rec, bool on) {
  if (on) {
    set_random_fields(d.Check2, d.Text10, d.Text11);
    return;
  }
  d.Check2.value = false;
  d.NonsynRatioUndefined =
      !put_ratio(d.Text10, d.Text11, rec.results.handed_on.Aa, rec.results.handed_on.Ba);
  d.Text10.enabled = d.Text11.enabled = true;
}

void reset_kska_dialog(KsKaDialog& d) {
  d.Text1.text = "0.000";
  d.Text2.text.clear();
  d.Text3.text = "0.000";
  d.Text4.text.clear();
  d.Text5.text.clear();
  d.Text6.text.clear();
  d.Text7.text = "1000";
  set_random_fields(d.Check1, d.Text8, d.Text9);
  set_random_fields(d.Check2, d.Text10, d.Text11);
  d.Check3.value = true;
}

void cancel_kska_dialog(KsKaDialog& d, AnalysisRecord& rec) {
  rec.menu.AnalysisOptions.enabled = true;
  if (rec.seq.SequenceLoaded) rec.menu.Diver.enabled = true;
  d.loaded = false;
  rec.form.Form1.visible = true;
}

void stop_simulation(KsKaDialog& d) {
  d.stop_requested = true;
  d.null_distribution.clear();
  d.results_ready = false;
}

void close_kska_dialog(KsKaDialog& d, AnalysisRecord& rec) {
  d.loaded = false;
  rec.form.Form1.visible = true;
}

void close_kska_results(KsKaDialog& d, AnalysisRecord& rec) {
  d.loaded = false;
  rec.form.Form1.visible = true;
  rec.menu.AnalysisOptions.enabled = true;
  d.null_distribution.clear();
  d.results_ready = false;
}

}  // namespace varnoth::simulation
