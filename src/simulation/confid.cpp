#include "simulation/confid.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "reports/saving.h"
#include "state/options.h"
#include "text/crlf_text.h"
#include "text/number_format.h"
#include "text/number_reading.h"

namespace varnoth::simulation {

namespace {

using divergence::NucleotidePairTable;
using T = NucleotidePairTable;

constexpr std::string_view kMethodLabels[6] = {"Jukes and Cantor", "Kimura\u00b4s 2-p",
                                               "Tajima and Nei",   "Tajima's 1-p",
                                               "Tajima's 2-p",     "Tajima's 4-p"};
constexpr std::string_view kMethodReportNames[6] = {"Jukes & Cantor", "Kimura-2p", "Tajima & Nei",
                                                    "Tajima-1p",      "Tajima-2p", "Tajima-4p"};

// The method of the main window's menu: the last checked in the fixed order wins.
int method_from_menu(const Menu& menu) {
  int method = 1;
  for (int i = 0; i < 6; ++i)
    if ((menu.*kMethods[i]).checked) method = i + 1;
  return method;
}

double last_k(const LastNoncodingEstimate& l, int method) {
  switch (method) {
    case 1:
      return l.KJukesCantor;
    case 2:
      return l.KKimura;
    case 3:
      return l.KTajimaNei;
    case 4:
      return l.KTajima1p;
    case 5:
      return static_cast<double>(l.KTajima2p);
    default:
      return l.KTajima4p;
  }
}

// Ratio fields from a pair of rates; "1" and "1", disabled, random when undefined.
void fill_ratio(ConfidDialog& d, double p, double q) {
  const RatioFields ratio = ratio_from_rates(p, q);
  if (ratio.defined) {
    d.Text5.text = text::plain(ratio.trs);
    d.Text6.text = text::plain(ratio.trv);
    confid_choose_ratio(d);
  } else {
    d.Text5.text = "1";
    d.Text6.text = "1";
    confid_choose_random(d);
  }
}

// The last coding comparison's row of PairStore (row 0 when there is none).
const PairStoreRow& last_pair_row(const AnalysisRecord& rec) {
  static const PairStoreRow kEmpty{};
  const auto& store = rec.results.PairStore;
  if (store.size() < 2) return kEmpty;
  const auto n = static_cast<std::size_t>(std::max(0.0, rec.seq.PairCount));
  return n >= 1 && n < store.size() ? store[n] : store.back();
}

void fill_coding(const AnalysisRecord& rec, ConfidDialog& d, bool ka) {
  const CodingHandedOnFields& h = rec.results.handed_on;
  d.ToggleButton1.value = !ka;
  d.ToggleButton2.value = ka;
  d.Text1.text = text::format(ka ? h.Ka : h.Ks, "0.0000 ");
  if (ka) {
    d.Text2.text = text::plain(std::floor(static_cast<double>(h.NES) + 0.5));
    d.Label4.text = "Nonsyn. Equivalent Sites";
  } else {
    d.Text2.text = text::plain(std::floor(0.5 + h.SES));
    d.Label4.text = "Syn. Equivalent Sites";
  }
  // G+C of the degenerate classes over the synonymous sites. The record keeps
  // no nonsynonymous G/C counts, so Ka takes the same fraction.
  const PairStoreRow& row = last_pair_row(rec);
  if (row[5] > 0) d.Text3.text = text::plain(0.1 * std::floor(1000 * (row[6] + row[7]) / row[5]));
  if (ka)
    fill_ratio(d, h.Aa, h.Ba);
  else
    fill_ratio(d, h.As, h.Bs);
}

void append_line(std::string& out, std::string_view s) {
  out += s;
  out += "\r\n";
}

// The progress line's tail from the time left, in seconds.
void append_finish(std::string& out, double seconds_left) {
  if (seconds_left < 60) {
    out += " Finish in ..... ";
    return;
  }
  out += " Finish in.. ";
  if (seconds_left < 3600) {
    text::append_plain(out, static_cast<long long>(seconds_left / 60));
    out += "min. ";
    text::append_plain(out, static_cast<long long>(std::fmod(seconds_left, 60)));
    out += "sec.";
  } else {
    text::append_plain(out, static_cast<long long>(seconds_left / 3600));
    out += "h. ";
    text::append_plain(out, static_cast<long long>(std::fmod(seconds_left, 3600) / 60));
    out += "min. ";
  }
}

bool timing_point(long r) {
  return r == 1 || r == 2 || r == 3 || r == 5 || r == 10 || r == 20 || r == 50;
}

// One replicate's six estimates after the engine's estimators, with the values
// the replicate before left where this one writes none.
struct Estimated {
  std::array<double, 6> k{};
  double p = 0;
};

class Simulation {
 public:
  Simulation(const ConfidReplicateSettings& settings, std::uint64_t seed,
             const divergence::NoncodingCarry& carry)
      : settings_(settings), rng_(seed), carry_(carry) {}

  void set_mean(long m) { confid_poisson_table(m, poisson_); }

  Estimated next() {
    const ConfidReplicate draw = confid_replicate(settings_, poisson_, rng_, buffers_);
    const divergence::NoncodingEstimates e =
        divergence::apply_carry(carry_, divergence::estimate_noncoding(draw.table));
    carry_ = divergence::carry_of(e);
    Estimated out;
    out.k = {e.k_jukes_cantor,
             e.k_kimura,
             e.k_tajima_nei,
             e.k_tajima_1p,
             static_cast<double>(e.k_tajima_2p),
             e.k_tajima_4p};
    for (double& k : out.k)
      if (k > 5) k = 0;
    out.p = e.obs_p + e.obs_q;
    return out;
  }

 private:
  ConfidReplicateSettings settings_;
  UniformRandom rng_;
  divergence::NoncodingCarry carry_;
  std::vector<double> poisson_;
  ConfidBuffers buffers_;
};

bool applicable(double k, double p) { return k != 0 || p == 0; }

bool stop_after_yield(ConfidDialog& dlg, Platform& platform) {
  platform.yield();
  return dlg.stop_requested;
}

enum class ScanEnd { Done, Stopped };

// Moves M by one per set of replicates until the set's mean crosses the target,
// then keeps the nearer of the two last M.
ScanEnd scan_optimal_mean(Simulation& sim, ConfidDialog& dlg, Platform& platform, long& m,
                          long sites) {
  const int method = dlg.SimMethod - 1;
  const double target = dlg.SimDivergence;
  bool have_previous = false;
  long previous_m = m;
  double previous_diff = 0;
  for (;;) {
    sim.set_mean(m);
    dlg.Text8.text = "  Scanning Optimal Diver.  #:";
    text::append_plain(dlg.Text8.text, static_cast<long long>(m));
    const long set_size = m < 100 ? 500 : 250;
    double sum = 0;
    long count = 0;
    for (long r = 1; r <= set_size; ++r) {
      const Estimated e = sim.next();
      if (applicable(e.k[method], e.p)) {
        sum += e.k[method];
        ++count;
      }
      if (r % 10 == 0) {
        dlg.Text8.text = "  Scanning Optimal Diver..  # ";
        text::append_right_aligned(dlg.Text8.text, r, 6);
      }
      if (stop_after_yield(dlg, platform)) return ScanEnd::Stopped;
    }
    // No applicable replicate gives no mean: keep the last M that gave one.
    if (count == 0) {
      if (have_previous) m = previous_m;
      return ScanEnd::Done;
    }
    const double diff = sum / static_cast<double>(count) - target;
    if (diff == 0) return ScanEnd::Done;
    if (have_previous && (diff > 0) != (previous_diff > 0)) {
      if (std::fabs(previous_diff) < std::fabs(diff)) m = previous_m;
      return ScanEnd::Done;
    }
    have_previous = true;
    previous_m = m;
    previous_diff = diff;
    const long next = diff < 0 ? m + 1 : m - 1;
    // Beyond five substitutions a site, or below none, the mean cannot cross.
    if (next < 0 || next > 5 * sites) return ScanEnd::Done;
    m = next;
  }
}

void write_report(ConfidDialog& dlg, const ConfidReplicateSettings& settings, double mean,
                  long failures, std::span<const float> low, std::span<const float> high) {
  const long n = dlg.SimReplicates;
  text::CrlfText r;
  r.line(" *SIMULATION PARAMETERS*").line();
  r.text("  Divergence :         ");
  text::append_format(r.buffer(), dlg.SimDivergence, "##0.0000 ");
  r.crlf();
  r.text("  Sequence Length : ", "  ", text::plain(settings.sites)).crlf();
  r.text("  G+C Percentage  :    ");
  text::append_format(r.buffer(), 100 * dlg.SimGC, "##0.0 ");
  r.crlf();
  r.line("  N. Replicates   :", "   ", text::plain(n)).line();
  r.line("  Number of substitutions Poisson-distributed");
  r.line("  Multiple-hits Correcting Method : ", kMethodReportNames[dlg.SimMethod - 1]);
  if (settings.random_substitution) {
    r.line("  Random Nucleotide Substitution").line();
  } else {
    r.line("  TRS:TRV Substitution Ratio: ");
    r.line("  TRS ", text::plain(settings.trs), " : ", text::plain(settings.trv), " TRV").line();
  }
  r.line(" *SIMULATION RESULTS*").line();
  r.text("  Observed Average :     ");
  text::append_format(r.buffer(), mean, "#0.0000 ");
  r.crlf();
  if (failures > 0) {
    const int blanks = 3 - static_cast<int>(std::floor(std::log10(static_cast<double>(failures))));
    r.text("  Failed Replicates :", std::string(static_cast<std::size_t>(std::max(0, blanks)), ' '),
           text::plain(failures))
        .crlf();
  } else {
    r.line("  Failed Replicates :   0");
  }
  r.line();
  r.line(failures > 0 ? "  Conficence Intervals* (see note below)" : "  Conficence Intervals");
  r.line("               Min.      Max.");
  struct Row {
    std::string_view head;
    double tail;
    long from;
  };
  constexpr Row kRows[4] = {{"  % 5.0  :   ", 0.025, 0},
                            {"  % 1.0  :   ", 0.005, 500},
                            {"  % 0.1  :   ", 0.0005, 5000},
                            {"  % 0.01 :   ", 0.00005, 50000}};
  for (const Row& row : kRows) {
    if (n < row.from) continue;
    auto cell = static_cast<std::size_t>(std::floor(0.5 + row.tail * static_cast<double>(n)));
    cell = std::min(cell, low.size() - 1);
    r.text(row.head);
    text::append_format(r.buffer(), low[cell], "#0.0000");
    r.text("  -  ");
    text::append_format(r.buffer(), high[cell], "#0.0000");
    r.crlf();
  }
  r.line();
  if (failures > 0) {
    r.line(" *NOTE: Confidence Intervals are those among the replicates");
    r.line("        were the method was applicable. To take into account");
    r.line("        non-applicable (i.e., failed) replicates, usually");
    r.line("        because of a large Divergence, please inspect the");
    r.line("        Exact Probabilities Option");
    r.line();
  }
  dlg.Text7.text = r.take();
}

}  // namespace

// ---- Pieces of the run ----

void confid_poisson_table(long m, std::vector<double>& table) {
  const long top = 5 * std::max(0L, m);
  table.assign(static_cast<std::size_t>(top) + 1, 1.0);
  constexpr double e = 2.718281828;
  const double mean = static_cast<double>(m);
  const double e_minus_mean = std::pow(e, -mean);
  const double log_e = std::log(e);
  const double log_mean = std::log(mean);
  double factorial = 1;      // k! while k is at most 75
  double log_factorial = 0;  // log of the factorial up to the last step of ten factors
  double partial = 1;        // the factors since that step
  int factors_in_partial = 0;
  double sum = 0;
  for (long k = 0; k <= top; ++k) {
    double term;
    if (k <= 75) {
      if (k > 0) factorial *= static_cast<double>(k);
      term = e_minus_mean * std::pow(mean, static_cast<double>(k)) / factorial;
      // e^-M underflows before M^k overflows only for a huge M: the term is nil.
      if (!std::isfinite(term)) term = 0;
      if (k == 75) log_factorial = std::log(factorial);
    } else {
      partial *= static_cast<double>(k);
      if (++factors_in_partial == 10) {
        log_factorial += std::log(partial);
        partial = 1;
        factors_in_partial = 0;
      }
      term = std::exp(-mean * log_e + static_cast<double>(k) * log_mean -
                      (log_factorial + std::log(partial)));
    }
    if (term > 1e-30) sum += term;
    table[static_cast<std::size_t>(k)] = sum;
    if (sum > 1) {
      table[static_cast<std::size_t>(k)] = 1;
      break;
    }
    if (sum > 0.6 && term < 1e-06) {
      table[static_cast<std::size_t>(k)] = 1;
      break;
    }
  }
}

long confid_poisson_draw(std::span<const double> table, double v) {
  const auto it = std::upper_bound(table.begin(), table.end(), v);
  if (it == table.end()) return static_cast<long>(table.size()) - 1;
  return static_cast<long>(it - table.begin());
}

std::uint8_t confid_substitute(std::uint8_t base, double w, double a, double gc) {
  const double at = 1 - gc;
  // Deliberately four separate tests on the same cell: a letter changed by one
  // test is tested again by the ones after it, with the same draw.
  if (base == T::kA) {
    const double first = 2 * a * gc;
    base = w <= first ? T::kG : w <= first + (1 - first) * gc ? T::kC : T::kT;
  }
  if (base == T::kG) {
    const double first = 2 * a * at;
    base = w <= first ? T::kA : w <= first + (1 - first) * gc ? T::kC : T::kT;
  }
  if (base == T::kC) {
    const double first = 2 * a * at;
    base = w <= first ? T::kT : w <= first + (1 - first) * gc ? T::kG : T::kA;
  }
  if (base == T::kT) {
    const double first = 2 * a * gc;
    base = w <= first ? T::kC : w <= first + (1 - first) * gc ? T::kG : T::kA;
  }
  return base;
}

template <class Draws>
ConfidReplicate confid_replicate(const ConfidReplicateSettings& s, std::span<const double> poisson,
                                 Draws& draws, ConfidBuffers& buffers) {
  const auto n = static_cast<std::size_t>(std::max(0L, s.sites));
  buffers.seq1.resize(n);
  buffers.seq2.resize(n);
  std::uint8_t* seq1 = buffers.seq1.data();
  std::uint8_t* seq2 = buffers.seq2.data();

  // Ancestor: bands A, G, C, T by the G+C fraction.
  const double band_a = (1 - s.gc) / 2;
  const double band_g = band_a + s.gc / 2;
  const double band_c = band_a + s.gc;
  // The codes A 0, G 1, C 2, T 3 count the bands the draw has passed: no branches.
  static_assert(T::kA == 0 && T::kG == 1 && T::kC == 2 && T::kT == 3);
  for (std::size_t i = 0; i < n; ++i) {
    const double u = draws.uniform();
    seq1[i] =
        static_cast<std::uint8_t>(static_cast<int>(u >= band_a) + static_cast<int>(u >= band_g) +
                                  static_cast<int>(u >= band_c));
  }
  std::copy(seq1, seq1 + n, seq2);

  ConfidReplicate out;
  out.substitutions = confid_poisson_draw(poisson, draws.uniform());

  const double x = draws.uniform(), y = draws.uniform(), z = draws.uniform();
  const double total = x + y + z;
  out.a = x / total;
  out.b = y / total;
  out.c = z / total;
  if (!s.random_substitution) {
    const double denominator = s.trs + s.trv + s.trv;
    out.a = s.trs / denominator;
    out.b = s.trv / denominator;
    out.c = out.b;
  }

  const long to_second = out.substitutions / 2;
  const long to_first = out.substitutions - to_second;
  const double sites = static_cast<double>(n);
  for (long j = 0; j < to_second; ++j) {
    const auto site = static_cast<std::size_t>(draws.uniform() * sites);
    const double w = draws.uniform();
    seq2[site] = confid_substitute(seq2[site], w, out.a, s.gc);
  }
  for (long j = 0; j < to_first; ++j) {
    const auto site = static_cast<std::size_t>(draws.uniform() * sites);
    const double w = draws.uniform();
    seq1[site] = confid_substitute(seq1[site], w, out.a, s.gc);
  }

  for (std::size_t i = 0; i < n; ++i) ++out.table.cells[4 * seq1[i] + seq2[i]];
  return out;
}

template ConfidReplicate confid_replicate<UniformRandom>(const ConfidReplicateSettings&,
                                                         std::span<const double>, UniformRandom&,
                                                         ConfidBuffers&);
template ConfidReplicate confid_replicate<ConfidScriptedDraws>(const ConfidReplicateSettings&,
                                                               std::span<const double>,
                                                               ConfidScriptedDraws&,
                                                               ConfidBuffers&);

void confid_insert_low(std::span<float> cells, double estimate) {
  for (std::size_t i = 1; i < cells.size(); ++i) {
    if (estimate <= static_cast<double>(cells[i])) {
      for (std::size_t j = cells.size() - 1; j > i; --j) cells[j] = cells[j - 1];
      cells[i] = static_cast<float>(estimate);
      return;
    }
  }
}

void confid_insert_high(std::span<float> cells, double estimate) {
  for (std::size_t i = 1; i < cells.size(); ++i) {
    if (estimate > static_cast<double>(cells[i])) {
      for (std::size_t j = cells.size() - 1; j > i; --j) cells[j] = cells[j - 1];
      cells[i] = static_cast<float>(estimate);
      return;
    }
  }
}

// ---- The dialog ----

ConfidDialog open_confid(AnalysisRecord& rec) {
  ConfidDialog d;
  d.loaded = true;
  d.visible = true;
  rec.form.Form1.visible = false;
  d.SimMethod = method_from_menu(rec.menu);
  d.Label1.text = "M.-Hits Correcting Method: ";
  d.Label1.text += kMethodLabels[d.SimMethod - 1];

  const CodingHandedOnFields& h = rec.results.handed_on;
  if (rec.coding() && (h.Ks > 0 || h.Ka > 0)) {
    d.ToggleButton1.visible = h.Ks > 0;
    d.ToggleButton2.visible = h.Ka > 0;
    d.ToggleButton3.visible = false;
    d.ToggleButton4.visible = false;
    fill_coding(rec, d, !(h.Ks > 0));
  } else if (!rec.coding() && last_k(rec.last_noncoding, d.SimMethod) > 0) {
    const LastNoncodingEstimate& l = rec.last_noncoding;
    d.Text1.text = text::format(last_k(l, d.SimMethod), "0.0000 ");
    d.Text2.text = text::plain(static_cast<long long>(rec.seq.NucleotideCount));
    const double gc = l.CountG1 + l.CountC1 + l.CountG2 + l.CountC2;
    const double all = gc + l.CountA1 + l.CountT1 + l.CountA2 + l.CountT2;
    if (all > 0) d.Text3.text = text::plain(0.1 * std::floor(1000 * gc / all));
    d.Label2.text = "Number of Sites";
    fill_ratio(d, l.KimuraA, l.KimuraB);
  }
  return d;
}

void confid_toggle(const AnalysisRecord& rec, ConfidDialog& dlg, bool ka) {
  if (!(ka ? dlg.ToggleButton2 : dlg.ToggleButton1).visible) return;
  fill_coding(rec, dlg, ka);
}

void confid_choose_random(ConfidDialog& dlg) {
  dlg.OptionButton2.value = true;
  dlg.OptionButton3.value = false;
  dlg.Text5.enabled = false;
  dlg.Text6.enabled = false;
}

void confid_choose_ratio(ConfidDialog& dlg) {
  dlg.OptionButton2.value = false;
  dlg.OptionButton3.value = true;
  dlg.Text5.enabled = true;
  dlg.Text6.enabled = true;
}

void confid_reset(ConfidDialog& dlg) {
  dlg.Text1.text = "0.0000";
  dlg.Text3.text = "70";
  dlg.Text4.text = "1000";
  dlg.Text5.text = "1";
  dlg.Text6.text = "1";
  dlg.Text5.enabled = false;
  dlg.Text6.enabled = false;
}

void confid_close(AnalysisRecord& rec, ConfidDialog& dlg) {
  dlg.visible = false;
  dlg.loaded = false;
  rec.form.Form1.visible = true;
}

ConfidOutcome confid_accept(AnalysisRecord& rec, ConfidDialog& dlg, Platform& platform) {
  const double divergence = text::read_field(dlg.Text1.text);
  const auto sites = static_cast<long>(std::nearbyint(text::read_number(dlg.Text2.text)));
  const double gc = text::read_field(dlg.Text3.text) / 100;
  const auto replicates = static_cast<long>(std::nearbyint(text::read_number(dlg.Text4.text)));
  const auto refuse = [&](std::string_view message) {
    platform.message(message, kSimulationParametersTitle, MessageIcon::Exclamation);
    return ConfidOutcome::Refused;
  };
  if (divergence > 2 || divergence <= 0) return refuse("Invalid Divergence Value !");
  if (!(sites > 0)) return refuse("Invalid Number of Sites !");
  if (gc > 1 || gc < 0) return refuse("Invalid G+C Percentage !");
  if (!(replicates > 0)) return refuse("Invalid Number of Replicates !");

  ConfidReplicateSettings settings;
  settings.sites = sites;
  settings.gc = gc;
  settings.random_substitution = dlg.OptionButton2.value;
  settings.trs = text::read_field(dlg.Text5.text);
  settings.trv = text::read_field(dlg.Text6.text);

  rec.seq.NucleotideCount = sites;
  dlg.SimDivergence = divergence;
  dlg.SimGC = gc;
  dlg.SimReplicates = replicates;
  dlg.stop_requested = false;
  dlg.Command7.visible = true;
  dlg.Command10.visible = false;

  const std::uint64_t seed =
      dlg.seed ? *dlg.seed
               : UniformRandom::seed_from_clock(platform.clock().seconds_since_midnight);
  const LastNoncodingEstimate& l = rec.last_noncoding;
  Simulation sim(settings, seed, {l.KimuraA, l.KimuraB, l.KTajima1p, l.KTajima4p});

  const auto stopped = [&] {
    dlg.Command7.visible = false;
    confid_close(rec, dlg);
    return ConfidOutcome::Stopped;
  };

  long m = static_cast<long>(std::floor(0.5 + divergence * static_cast<double>(sites)));
  dlg.Text8.text = "        Generating the Poisson distribution....";
  if (dlg.Check4.value && scan_optimal_mean(sim, dlg, platform, m, sites) == ScanEnd::Stopped)
    return stopped();
  dlg.Text8.text = "        Generating the Poisson distribution....";
  sim.set_mean(m);
  dlg.PoissonMean = m;

  const int method = dlg.SimMethod - 1;
  for (auto& column : dlg.SimNullTable) column.assign(static_cast<std::size_t>(replicates), {});
  const auto tail_length =
      static_cast<std::size_t>(std::floor(0.05 * static_cast<double>(replicates)));
  std::vector<float> low(tail_length + 1, 9999.0f), high(tail_length + 1, -1.0f);
  std::array<double, 6> sums{};
  std::array<long, 6> counts{};

  const double start = platform.clock().seconds_since_midnight;
  double seconds_per_replicate = 0;
  for (long r = 1; r <= replicates; ++r) {
    const Estimated e = sim.next();
    const auto index = static_cast<std::size_t>(r - 1);
    for (int k = 0; k < 6; ++k) {
      const bool ok = applicable(e.k[k], e.p);
      if (ok) {
        sums[k] += e.k[k];
        ++counts[k];
      }
      // Only Kimura-2p's failures are kept as "N.A."; the others keep their 0.
      dlg.SimNullTable[k][index] = {e.k[k], k == 1 && !ok};
    }
    if (applicable(e.k[method], e.p)) {
      confid_insert_low(low, e.k[method]);
      confid_insert_high(high, e.k[method]);
    }
    if (timing_point(r)) {
      double elapsed = platform.clock().seconds_since_midnight - start;
      if (elapsed < 0) elapsed += 86400;  // past midnight
      seconds_per_replicate = elapsed / static_cast<double>(r);
    }
    if (r % 10 == 0) {
      std::string& p = dlg.Text8.text;
      p = "  Current simulation..  # ";
      text::append_right_aligned(p, r, 6);
      append_finish(p, seconds_per_replicate * static_cast<double>(replicates - r));
    }
    if (stop_after_yield(dlg, platform)) return stopped();
  }

  const double mean = counts[method] > 0 ? sums[method] / static_cast<double>(counts[method]) : 0;
  write_report(dlg, settings, mean, replicates - counts[method], low, high);
  dlg.Text8.text.clear();
  dlg.Command7.visible = false;
  dlg.Command3.visible = false;
  dlg.Command4.visible = true;
  dlg.Command5.visible = true;
  dlg.Command6.visible = true;
  dlg.Command8.visible = true;
  dlg.Command10.visible = true;
  return ConfidOutcome::Finished;
}

void confid_exact_probability(ConfidDialog& dlg) {
  const double v = text::read_field(dlg.Text9.text);
  if (!(v >= 0 && v < 5)) {
    dlg.Text10.text = " K value Not Valid";
    return;
  }
  dlg.Text9.text = text::format(v, "0.0000");
  const auto& column = dlg.SimNullTable[static_cast<std::size_t>(dlg.SimMethod - 1)];
  if (dlg.SimReplicates <= 0 || column.empty()) return;
  long not_applicable = 0, above = 0, below = 0, equal = 0;
  for (const ConfidNullCell& c : column) {
    if (c.not_applicable)
      ++not_applicable;
    else if (c.value > v)
      ++above;
    else if (c.value < v)
      ++below;
    else
      ++equal;
  }
  const double n = static_cast<double>(dlg.SimReplicates);
  const std::string value = text::plain(v);
  std::string lines;
  const auto row = [&](std::string_view head, long count) {
    lines += head;
    text::append_format(lines, static_cast<double>(count) / n, "0.0000");
    lines += "\r\n";
  };
  if (v > 0) row(" Prob. [K < " + value + "] = ", below);
  row(" Prob. [K > " + value + "] = ", above);
  if (equal > 0) row(" Prob. [K = " + value + "] = ", equal);
  if (not_applicable > 0) row(" Prob. [Not Appl.]  = ", not_applicable);
  dlg.Text10.text = lines;
  std::string& report = dlg.Text7.text;
  report += " *EXACT PROBABILITY:\r\n";
  report += lines;
  report += "\r\n";
}

std::string confid_report_file_text(const ClockReading& clock, std::string_view report) {
  std::string out = common_head(clock);
  append_line(out, " CONFIDENCE INTERVALS ANALYSIS");
  out += report;
  return out;
}

std::string confid_null_file_text(const ClockReading& clock, const ConfidDialog& dlg) {
  // The distribution file keeps the older program line: readers of it expect it.
  std::string out = "\r\n";
  append_line(out, " Varnoth v4.1");
  out += ' ';
  out += clock.date;
  out += "  ";
  out += clock.time;
  out += "\r\n";
  const auto& column = dlg.SimNullTable[static_cast<std::size_t>(dlg.SimMethod - 1)];
  out.reserve(out.size() + column.size() * 12);
  for (const ConfidNullCell& c : column) {
    if (c.not_applicable)
      out += "N.A.";
    else
      text::append_plain(out, c.value);
    out += "\r\n";
  }
  return out;
}

bool confid_save_report(const AnalysisRecord& rec, const ConfidDialog& dlg, Platform& platform) {
  FileDialogRequest request;
  request.filter = std::string(kConfidReportFilter);
  request.default_name = rec.seq.InputFileName.empty()
                             ? std::string("*.ci")
                             : default_output_name(rec.seq.InputFileName, ".ci");
  const std::string path = platform.save_file(request);
  if (path.empty()) return false;
  return write_text_file(path, confid_report_file_text(platform.clock(), dlg.Text7.text));
}

bool confid_save_null_distribution(const ConfidDialog& dlg, Platform& platform) {
  FileDialogRequest request;
  request.filter = std::string(kConfidNullFilter);
  request.default_name = "*.cid";
  const std::string path = platform.save_file(request);
  if (path.empty()) return false;
  return write_text_file(path, confid_null_file_text(platform.clock(), dlg));
}

void confid_print(const ConfidDialog& dlg, Platform& platform) {
  platform.print(confid_report_file_text(platform.clock(), dlg.Text7.text));
}

}  // namespace varnoth::simulation
