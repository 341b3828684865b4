#include "divergence/driver.h"

#include <cmath>
#include <map>
#include <string>
#include <vector>

#include "divergence/alignment_filter.h"
#include "divergence/codon_changes.h"
#include "divergence/coding_estimators.h"
#include "divergence/genetic_code.h"
#include "divergence/noncoding_estimators.h"
#include "divergence/site_classes.h"
#include "reports/results_report.h"
#include "state/options.h"
#include "text/number_format.h"
#include "text/number_reading.h"

namespace varnoth::divergence {

namespace {

constexpr const char* kSequenceFileTitle = "    SEQUENCE FILE    ";

// Scratch of one coding comparison, sized once per run.
struct CodingScratch {
  std::vector<Codon> codons1, codons2;
  std::vector<float> syn, nonsyn;
};

enum class PairOutcome { Done, Empty, Failed };

class Run {
 public:
  Run(AnalysisRecord& rec, Platform& platform) : rec_(rec), platform_(platform) {}
  bool execute();

 private:
  void fail_one_sequence();
  void fail_stop_codons(const std::string& message);
  void progress(long n, long window);
  const FilteredAlignment& filtered(long window_index, double first, double last);
  void select_codons(long a, long b);
  PairOutcome noncoding_pair(long n, long a, long b, const reports::WindowPlace* w);
  PairOutcome coding_pair(long n, long a, long b, const reports::WindowPlace* w);
  void finish();

  AnalysisRecord& rec_;
  Platform& platform_;
  reports::RunLayout run_;
  GeneticCode code_ = GeneticCode::Universal;
  bool coding_ = true;
  bool window_ = false;
  long sequences_ = 0;
  FilteredAlignment whole_;
  std::map<long, FilteredAlignment> windows_;
  const FilteredAlignment* current_ = nullptr;
  CodingScratch scratch_;
  NoncodingCarry noncoding_carry_;
  CodingCarry coding_carry_;
  NoncodingEstimates last_noncoding_{};
  bool have_noncoding_ = false;
};

void Run::fail_one_sequence() {
  platform_.busy(false);
  platform_.message(" There is ONLY ONE Sequence !!", kSequenceFileTitle, MessageIcon::Exclamation);
  rec_.form.SSTab3.visible = false;
  rec_.menu.AnalysisOptions.enabled = true;
  rec_.menu.Diver.enabled = true;
  rec_.results.StopCodonFlag = 0;
}

void Run::fail_stop_codons(const std::string& message) {
  rec_.results.StopCodonFlag = 0;
  platform_.beep();
  platform_.busy(false);
  rec_.form.SSTab3.visible = false;
  platform_.message(message, kSequenceFileTitle, MessageIcon::Exclamation);
  rec_.menu.AnalysisOptions.enabled = true;
  rec_.menu.Diver.enabled = true;
}

void Run::progress(long n, long window) {
  std::string& t = rec_.form.Text33.text;
  t.clear();
  const long pairs = static_cast<long>(rec_.seq.PairCount);
  if (window_) {
    t += " Comp#";
    text::append_plain(t, n);
    t += " of";
    text::append_plain(t, rec_.seq.PairCount);
    t += " w#";
    text::append_plain(t, window);
  } else {
    // The coding branch tests below 999 and above 1000, so 999 and 1000 leave
    // the box empty; kept as the program has always shown it.
    const char* prefix = coding_ ? (n < 999 ? "  Comp# " : n > 1000 ? " Comp# " : nullptr)
                                 : (n < 1000 ? "  Comp# " : " Comp# ");
    if (prefix != nullptr) {
      t += prefix;
      text::append_plain(t, n);
      t += "  of ";
      text::append_plain(t, rec_.seq.PairCount);
    }
  }
  (void)pairs;
  platform_.yield();
}

const FilteredAlignment& Run::filtered(long window_index, double first, double last) {
  auto it = windows_.find(window_index);
  if (it != windows_.end()) return it->second;
  FilterRange range;
  range.first_codon = static_cast<long>(std::floor((first - 1) / 3)) + 1;
  range.last_codon = static_cast<long>(std::floor(last / 3));
  FilteredAlignment& f = windows_[window_index];
  filter_alignment(rec_.seq, sequences_, range, coding_, code_, f);
  return f;
}

void Run::select_codons(long a, long b) {
  const auto& c1 = current_->codons[static_cast<std::size_t>(a - 1)];
  const auto& c2 = current_->codons[static_cast<std::size_t>(b - 1)];
  auto& s1 = scratch_.codons1;
  auto& s2 = scratch_.codons2;
  s1.clear();
  s2.clear();
  const Menu& m = rec_.menu;
  const CodeTables& tables = code_tables(code_);
  for (std::size_t i = 0; i < c1.size(); ++i) {
    const int x = c1[i], y = c2[i];
    int differ = 0;
    for (int p = 0; p < 3; ++p) differ += nucleotide_at(x, p) != nucleotide_at(y, p);
    bool take = true;
    if (m.Max_One_Change.checked) {
      take = differ <= 1;
    } else if (m.Always_aa_change.checked) {
      take = differ < 3 && tables.amino_acid[x] != tables.amino_acid[y];
    } else if (m.No_3_diff.checked) {
      take = differ < 3;
    }
    if (take) {
      s1.push_back(static_cast<Codon>(x));
      s2.push_back(static_cast<Codon>(y));
    }
  }
}

PairOutcome Run::noncoding_pair(long n, long a, long b, const reports::WindowPlace* w) {
  const std::string& s1 = current_->sites[static_cast<std::size_t>(a - 1)];
  const std::string& s2 = current_->sites[static_cast<std::size_t>(b - 1)];
  const long sites = static_cast<long>(s1.size());
  rec_.seq.NucleotideCount = sites;
  reports::ComparisonPlace place{n, rec_.seq.SeqNames[static_cast<std::size_t>(a - 1)],
                                 rec_.seq.SeqNames[static_cast<std::size_t>(b - 1)], w};
  std::string& report = rec_.results.ReportText;
  if (sites == 0) {
    reports::append_noncoding_empty(report, run_, place, sites);
    return PairOutcome::Empty;
  }
  const NoncodingResult result = estimate_noncoding(s1, s2);
  const NoncodingEstimates e = apply_carry(noncoding_carry_, result);
  noncoding_carry_ = carry_of(e);
  last_noncoding_ = e;
  have_noncoding_ = true;
  const NoncodingNotApplicable na = not_applicable(e);
  reports::append_noncoding_comparison(report, run_, place, sites, e, na);

  auto cell = [](double v, bool not_applicable) { return StoreCell{v, not_applicable}; };
  ComparisonRow& row = rec_.results.ComparisonStore[static_cast<std::size_t>(n)];
  row[1] = cell(e.k_jukes_cantor, na.jukes_cantor);
  row[2] = cell(e.k_kimura, na.kimura);
  row[3] = cell(e.kimura_a, na.kimura);
  row[4] = cell(e.kimura_b, na.kimura);
  row[5] = cell(e.k_tajima_nei, na.tajima_nei);
  row[6] = cell(e.k_tajima_1p, na.tajima_1p);
  row[7] = cell(e.k_tajima_2p, na.tajima_2p);
  row[8] = cell(e.k_tajima_4p, na.tajima_4p);
  row[9] = cell(e.obs_p + e.obs_q, false);
  if (w != nullptr)
    reports::append_noncoding_window_row(rec_.results.WindowDataText, run_, *w, e, na);
  return PairOutcome::Done;
}

PairOutcome Run::coding_pair(long n, long a, long b, const reports::WindowPlace* w) {
  reports::ComparisonPlace place{n, rec_.seq.SeqNames[static_cast<std::size_t>(a - 1)],
                                 rec_.seq.SeqNames[static_cast<std::size_t>(b - 1)], w};
  std::string& report = rec_.results.ReportText;
  // Pair selection translates the codons it weighs: a stop there ends the run.
  if (rec_.menu.Always_aa_change.checked) {
    const CodeTables& tables = code_tables(code_);
    const auto& c1 = current_->codons[static_cast<std::size_t>(a - 1)];
    const auto& c2 = current_->codons[static_cast<std::size_t>(b - 1)];
    for (std::size_t i = 0; i < c1.size(); ++i) {
      int differ = 0;
      for (int p = 0; p < 3; ++p) differ += nucleotide_at(c1[i], p) != nucleotide_at(c2[i], p);
      if (differ < 3 && (tables.translates_to_stop[c1[i]] || tables.translates_to_stop[c2[i]])) {
        fail_stop_codons(" There are STOP Codons !!");
        return PairOutcome::Failed;
      }
    }
  }
  select_codons(a, b);
  const long codons = static_cast<long>(scratch_.codons1.size());
  rec_.seq.CodonCount = codons;
  if (codons == 0) {
    reports::append_coding_empty(report, run_, place, codons);
    return PairOutcome::Empty;
  }
  const auto positions = static_cast<std::size_t>(3 * codons);
  if (scratch_.syn.size() < positions) {
    scratch_.syn.resize(positions);
    scratch_.nonsyn.resize(positions);
  }
  const std::span<float> syn(scratch_.syn.data(), positions);
  const std::span<float> nonsyn(scratch_.nonsyn.data(), positions);
  const ChangeAccountingResult changes = account_codon_changes(
      scratch_.codons1, scratch_.codons2, code_, rec_.options.PathwayWeight, syn, nonsyn);
  if (changes.status == ChangeStatus::StopCodon) {
    fail_stop_codons(" There are STOP Codons !!");
    return PairOutcome::Failed;
  }
  if (changes.status == ChangeStatus::NoOpenPathway) {
    const CodonCell c1 = decode_codon(changes.codon1), c2 = decode_codon(changes.codon2);
    std::string message = " No pathway between codons ";
    message.append(c1.data(), 3);
    message += " and ";
    message.append(c2.data(), 3);
    message += " avoids a STOP codon (codon #";
    text::append_plain(message, changes.codon_number);
    message += ", ";
    message += place.name_a;
    message += " / ";
    message += place.name_b;
    message += ") !!";
    fail_stop_codons(message);
    return PairOutcome::Failed;
  }
  const SiteClassResult classes =
      account_site_classes(scratch_.codons1, scratch_.codons2, syn, nonsyn, code_);
  if (classes.StopCodonFlag) {
    fail_stop_codons(" There are STOP Codons !!");
    return PairOutcome::Failed;
  }
  CodingClassSums sums;
  sums.sites = classes.Sites;
  sums.obs_ts = classes.ObsTS;
  sums.obs_tv = classes.ObsTV;
  const CodingEstimates e = apply_carry(coding_carry_, estimate_coding(sums));
  coding_carry_ = carry_of(e);
  reports::append_coding_comparison(report, run_, place, codons, classes, e);

  const bool jc = run_.jukes_cantor_run;
  const CodingHandedOn h = jc ? handed_on_jukes_cantor(e) : handed_on_kimura(e);
  CodingHandedOnFields& out = rec_.results.handed_on;
  out = {h.ks, h.ka, h.ks_method, h.ka_method, h.as, h.bs, h.aa, h.ba, e.ses, e.nes,
         changes.PairGCContent};
  if (!jc) {
    ComparisonRow& row = rec_.results.ComparisonStore[static_cast<std::size_t>(n)];
    const bool ks_jc = !e.ks_jc_note.empty(), ka_jc = !e.ka_jc_note.empty();
    const bool ks_k = !e.ks_kimura_note.empty(), ka_k = !e.ka_kimura_note.empty();
    row[1] = {e.ks_jc, ks_jc};
    row[2] = {e.ka_jc, ka_jc};
    row[3] = {e.ks_kimura, ks_k};
    row[4] = {e.ka_kimura, ka_k};
    row[5] = {e.as, ks_k};
    row[6] = {e.bs, ks_k};
    row[7] = {e.aa, ka_k};
    row[8] = {e.ba, ka_k};
    // The one-line summary of the last pair of a Kimura run: sequence numbers
    // in columns 1-4 and 6-9, Ks in 10-18, Ka in 20-27.
    std::string& last = rec_.results.LastPairLine;
    last.clear();
    text::append_right_aligned(last, a, 4);
    last += ' ';
    text::append_right_aligned(last, b, 4);
    text::append_cell(last, h.ks, "##0.00000", 9);
    last += ' ';
    text::append_cell(last, h.ka, "#0.00000", 8);
  }
  PairStoreRow& ps = rec_.results.PairStore[static_cast<std::size_t>(n)];
  const float syn_sites = classes.Sites[1] + classes.Sites[2] + classes.Sites[3];
  const float g = classes.SitesG[1] + classes.SitesG[2] + classes.SitesG[3];
  const float c = classes.SitesC[1] + classes.SitesC[2] + classes.SitesC[3];
  ps = {0,    static_cast<double>(h.ks_method), static_cast<double>(h.ka_method), h.ks, h.ka,
        syn_sites, g, c, h.as, h.bs, h.aa, h.ba, e.ses, e.nes, changes.PairGCContent};
  if (w != nullptr) reports::append_coding_window_row(rec_.results.WindowDataText, run_, *w, e);
  return PairOutcome::Done;
}

bool Run::execute() {
  Menu& m = rec_.menu;
  Form& f = rec_.form;
  RunResults& res = rec_.results;
  SequenceData& seq = rec_.seq;
  RegionFields& region = rec_.region;

  // Steps 1 to 3: menus, stores, the results page.
  m.Confidence_Intervals_menu.enabled = true;
  if (seq.PairCount < 3) f.MatrixBoton.visible = false;
  res.ComparisonStore.assign(static_cast<std::size_t>(std::max(0.0, seq.PairCount)) + 1, {});
  res.StopCodonFlag = 0;
  coding_ = m.Coding.checked;
  window_ = region.WindowMode == 1;
  res.PairStore.assign(coding_ ? static_cast<std::size_t>(std::max(0.0, seq.PairCount)) + 1 : 2,
                       PairStoreRow{});
  seq.SeqCount = seq.SeqCountCopy;
  f.Boto1.visible = true;
  f.Boto2.visible = true;
  f.Boto2.text = "Save Results";
  f.SSTab3.visible = true;
  f.Text3.visible = true;
  f.BotoData.visible = window_;
  res.LastPairLine.clear();

  // Step 4.
  sequences_ = static_cast<long>(seq.SeqNames.size());
  if (seq.SeqCount == 1) {
    fail_one_sequence();
    return false;
  }
  code_ = rec_.active_code();
  // Step 5.
  if (window_) {
    region.WindowSize = text::read_number(f.TextWinSize.text);
    region.WindowStep = text::read_number(f.TextMovement.text);
    res.WindowDataText.clear();
    region.WindowIndex = 0;
  }
  // Step 6.
  res.ReportText.clear();
  f.Text3.text.clear();
  res.MethodNumber = method_number(m);
  run_ = reports::layout_of(rec_, res.MethodNumber);
  reports::append_run_head(res.ReportText, run_);
  if (window_) reports::append_window_columns(res.WindowDataText, run_);

  noncoding_carry_ = {rec_.last_noncoding.KimuraA, rec_.last_noncoding.KimuraB,
                      rec_.last_noncoding.KTajima1p, rec_.last_noncoding.KTajima4p};
  coding_carry_ = {res.handed_on.SES, res.handed_on.NES};

  const double seq_length = seq.SeqLength;
  const long pair_count_whole = static_cast<long>(std::floor(seq.PairCount));
  double region_first = 1, region_last = seq_length;
  if (!window_ && region.RegionMode == 1) {
    region_first = text::read_number(region.RegionFirst);
    region_last = text::read_number(region.RegionLast);
  }
  // Whole and region runs filter once.
  if (!window_) {
    FilterRange range;
    if (region.RegionMode == 1) {
      range.first_codon = static_cast<long>(std::floor((region_first - 1) / 3)) + 1;
      range.last_codon = static_cast<long>(std::floor(region_last / 3));
      range.rebuild_sites = true;
      range.first_site = static_cast<long>(region_first);
      range.last_site = static_cast<long>(region_last);
    } else {
      range.last_codon = static_cast<long>(seq.CodonCellCount);
    }
    filter_alignment(seq, sequences_, range, coding_, code_, whole_);
    current_ = &whole_;
  }

  long n = 1, a = 1, b = 2;
  bool positions_written = false;
  res.CodingMode = coding_ ? 1 : 0;
  platform_.busy(true);
  f.Text33.visible = true;
  f.CloseBotton.visible = false;
  while (true) {
    if (b > sequences_ || a > sequences_) {
      // A fractional count of sequences (an LWL file whose lines do not divide
      // into records) walks past the sequences read.
      fail_stop_codons(" The file holds fewer sequences than its count !!");
      return false;
    }
    long window_index = 0;
    bool more_windows = false;
    do {
      reports::WindowPlace place;
      if (window_) {
        ++window_index;
        region_first = 1 + (window_index - 1) * region.WindowStep;
        region_last = region.WindowSize + (window_index - 1) * region.WindowStep;
        if (region_last > seq_length) region_last = seq_length;
        region.WindowIndex = static_cast<double>(window_index);
        current_ = &filtered(window_index, region_first, region_last);
        place = {window_index, region_first, region_last,
                 static_cast<long>(std::floor((region_first - 1) / 3)) + 1,
                 static_cast<long>(std::floor(region_last / 3))};
      }
      seq.CleanCodonTotal = current_->codon_count();
      seq.NucleotideCount = current_->site_count();
      if (!positions_written) {
        const long analyzed = coding_ ? 3 * seq.CleanCodonTotal : seq.NucleotideCount;
        reports::append_positions_block(res.ReportText, run_, seq_length, region_first,
                                        region_last, region.RegionText, analyzed);
        positions_written = true;
      }
      if (window_ && window_index == 1 && seq.PairCount > 1)
        reports::append_window_names(res.WindowDataText, seq.SeqNames[a - 1], seq.SeqNames[b - 1]);
      progress(n, window_index);
      const reports::WindowPlace* w = window_ ? &place : nullptr;
      const PairOutcome outcome = coding_ ? coding_pair(n, a, b, w) : noncoding_pair(n, a, b, w);
      if (outcome == PairOutcome::Failed) return false;
      if (f.Text3.text.size() < 60000) f.Text3.text = res.ReportText;
      // An empty pair ends the run: the comparison number jumps to the last
      // (the windows of the comparison still run to the end of the sequence).
      if (outcome == PairOutcome::Empty) n = pair_count_whole;
      more_windows = window_ && region_last < seq_length;
    } while (more_windows);
    if (n >= seq.PairCount) break;
    ++n;
    ++b;
    if (b > seq.SeqCount) {
      ++a;
      b = a + 1;
    }
  }
  if (window_) {
    region.RegionFirst = text::plain(region_first);
    region.RegionLast = text::plain(region_last);
  }
  finish();
  return true;
}

void Run::finish() {
  Menu& m = rec_.menu;
  Form& f = rec_.form;
  RunResults& res = rec_.results;
  f.Text33.visible = false;
  f.CloseBotton.visible = true;
  platform_.busy(false);
  if (coding_)
    res.CodingResultsReady = 1;
  else
    res.NoncodingResultsReady = 1;
  if (res.ReportText.size() > 63000) f.Boto2.text = "Save ALL Results";
  if (rec_.seq.SeqCount >= 3 && !window_) f.MatrixBoton.visible = true;
  m.RelatRate.enabled = true;  // enabled, though the item stays out of sight
  if (!coding_) {
    if (have_noncoding_) {
      LastNoncodingEstimate& l = rec_.last_noncoding;
      const NoncodingEstimates& e = last_noncoding_;
      l.CountA1 = static_cast<double>(e.counts1[0]);
      l.CountG1 = static_cast<double>(e.counts1[1]);
      l.CountC1 = static_cast<double>(e.counts1[2]);
      l.CountT1 = static_cast<double>(e.counts1[3]);
      l.CountA2 = static_cast<double>(e.counts2[0]);
      l.CountG2 = static_cast<double>(e.counts2[1]);
      l.CountC2 = static_cast<double>(e.counts2[2]);
      l.CountT2 = static_cast<double>(e.counts2[3]);
      l.KJukesCantor = e.k_jukes_cantor;
      l.KKimura = e.k_kimura;
      l.KimuraA = e.kimura_a;
      l.KimuraB = e.kimura_b;
      l.KTajimaNei = e.k_tajima_nei;
      l.KTajima1p = e.k_tajima_1p;
      l.KTajima2p = e.k_tajima_2p;
      l.KTajima4p = e.k_tajima_4p;
    }
  } else {
    m.AnalysisOptions.enabled = true;
    m.Diver.enabled = true;
    m.CIcodingRegion.enabled = false;
    m.CIcodingRegionKaKs.enabled = false;
    const bool restricted =
        m.Max_One_Change.checked || m.Always_aa_change.checked || m.No_3_diff.checked;
    if (!restricted && (res.handed_on.Ks > 0 || res.handed_on.Ka > 0)) {
      m.CIcodingRegion.enabled = true;
      m.CIcodingRegionKaKs.enabled = true;
    }
  }
}

}  // namespace

int method_number(const Menu& menu) {
  int number = 0;
  for (int i = 0; i < 6; ++i)
    if ((menu.*kMethods[i]).checked) number = i + 1;
  return number;
}

long comparison_index(long a, long b, long n) { return (a - 1) * (2 * n - a) / 2 + (b - a); }

bool run_divergence(AnalysisRecord& rec, Platform& platform) {
  Run run(rec, platform);
  return run.execute();
}

}  // namespace varnoth::divergence
