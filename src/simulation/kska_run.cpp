#include "simulation/kska_run.h"

#include <algorithm>
#include <cmath>

#include "divergence/genetic_code.h"
#include "text/number_format.h"
#include "text/number_reading.h"

namespace varnoth::simulation {

namespace dv = divergence;

namespace {

constexpr const char* kCrlf = "\r\n";
constexpr double kE = 2.718281828;  // deliberate: the constant, not the exact base

// Codon indices of the Universal stop codons.
constexpr int kTAA = 48, kTAG = 50, kTGA = 56;
inline bool universal_stop(int c) { return c == kTAA || c == kTAG || c == kTGA; }

// Letter indices A 0, C 1, G 2, T 3: the partners of a substitution.
constexpr int kTransition[4] = {2, 3, 0, 1};          // A-G, C-T
constexpr int kFirstTransversion[4] = {1, 0, 1, 0};   // A>C, C>A, G>C, T>A
constexpr int kSecondTransversion[4] = {3, 2, 3, 2};  // A>T, C>G, G>T, T>G
// Draw order of the letters: G, C, A, T.
constexpr int kDrawOrder[4] = {dv::kG, dv::kC, dv::kA, dv::kT};

inline int with_letter(int codon, int p, int letter) {
  const int shift = 2 * (2 - p);
  return (codon & ~(3 << shift)) | (letter << shift);
}

// CLng: to the nearest whole number, halves to the even one.
long round_even(double v) { return static_cast<long>(std::nearbyint(v)); }

void append_blanks_to(std::string& out, std::size_t start, std::size_t width) {
  const std::size_t used = out.size() - start;
  if (used < width) out.append(width - used, ' ');
}

}  // namespace

KsKaParameters read_kska_parameters(const KsKaDialog& d) {
  KsKaParameters p;
  p.ks = text::read_field(d.Text1.text);
  p.ses = text::read_field(d.Text2.text);
  p.ka = text::read_field(d.Text3.text);
  p.nes = text::read_field(d.Text4.text);
  p.codons = text::read_number(d.Text5.text);
  p.gc = text::read_field(d.Text6.text);
  p.replicates_value = text::read_number(d.Text7.text);
  p.replicates = static_cast<long>(std::trunc(p.replicates_value));
  p.syn_trs = text::read_field(d.Text8.text);
  p.syn_trv = text::read_field(d.Text9.text);
  p.nonsyn_trs = text::read_field(d.Text10.text);
  p.nonsyn_trv = text::read_field(d.Text11.text);
  p.syn_random = d.Check1.value;
  p.nonsyn_random = d.Check2.value;
  p.poisson = d.Check3.value;
  p.scan = d.Check4.value;
  return p;
}

KsKaDerived derive_kska_values(const KsKaParameters& p, int mode) {
  KsKaDerived v;
  v.ka_target = mode == 1 ? p.ks : p.ka;
  v.syn_subs = p.ks * p.ses;
  if (mode == 1)
    v.nonsyn_subs = p.nes == 0 ? p.ks * (std::trunc(p.codons) * 3 - p.ses) : p.ks * p.nes;
  else
    v.nonsyn_subs = p.ka * p.nes;
  v.syn_transition = p.syn_trs / (p.syn_trs + 2 * p.syn_trv);
  v.nonsyn_transition = p.nonsyn_trs / (p.nonsyn_trs + 2 * p.nonsyn_trv);
  double g = 25, c = 25, a = 25;
  if (p.gc != 0) {
    g = c = p.gc / 2;
    a = (100 - p.gc) / 2;
  }
  v.third_position = {g, g + c, g + c + a, 100};
  return v;
}

void fill_poisson_table(long m, std::vector<double>& table) {
  table.clear();
  if (m < 0) return;
  const long last = 10 * m;
  table.assign(static_cast<std::size_t>(last) + 1, 0.0);
  const double md = static_cast<double>(m);
  double c = 0;
  for (long k = 0; k <= last; ++k) {
    double p;
    if (k <= 50) {
      double factorial = 1;
      for (long j = 2; j <= k; ++j) factorial *= static_cast<double>(j);
      p = std::pow(kE, -md) * std::pow(md, static_cast<double>(k)) / factorial;
    } else {
      // The factorial in blocks of ten factors, each block's logarithm taken off.
      double l = -md * std::log(kE) + static_cast<double>(k) * std::log(md);
      double block = 1;
      for (long j = 1; j <= k; ++j) {
        block *= static_cast<double>(j);
        if (j % 10 == 0) {
          l -= std::log(block);
          block = 1;
        }
      }
      if (k % 10 != 0) l -= std::log(block);
      p = std::pow(kE, l);
    }
    c += p;
    table[static_cast<std::size_t>(k)] = c;
    if (c > 1 || (c > 0.98 && p < 1e-10)) {
      table[static_cast<std::size_t>(last)] = 1;
      break;
    }
  }
}

void tune_scan_class(ScanClass& s, double m, double target, double typed_subs, bool synonymous) {
  const double p = s.previous;
  const double big = synonymous ? 5 : 1;  // the coarse step up
  if (m == target) {
    s.converged = true;
  } else if (p == 0 && m < target) {
    s.previous = m;
    s.count += big;
  } else if (p == 0 && m > target) {
    s.previous = m;
    s.count -= 1;
  } else if (m > target && p < target) {
    if (!synonymous || s.fine) {
      if (!(m - target < target - p)) s.count -= 1;
      s.converged = true;
    } else {
      s.count -= 4;
      s.fine = true;
    }
  } else if (m < target && p < target) {
    s.previous = m;
    s.count += (synonymous && !s.fine) ? 5 : 1;
  } else if (m < target && p > target) {
    if (!(target - m < p - target)) s.count += 1;
    s.converged = true;
  } else if (m > target && p > target) {
    s.previous = m;
    s.count -= 1;
  }
  if (s.count <= 1) {
    s.count = typed_subs > 0.5 ? 1 : 0;
    s.converged = true;
  }
}

bool in_balancing_stretch(double counter, double n) {
  auto inside = [&](double lo, double hi) { return counter > lo * n && counter < hi * n; };
  if (counter > 0.98 * n) return true;
  if (n >= 500)
    return inside(0.76, 0.78) || inside(0.85, 0.87) || inside(0.90, 0.92) || inside(0.94, 0.95);
  return inside(0.76, 0.78) || inside(0.87, 0.89);
}

Tail::Tail(std::size_t size, double start, bool highest)
    : cells_(size, start), start_(start), highest_(highest) {}

void Tail::insert(double v) {
  for (std::size_t i = 0; i < cells_.size(); ++i) {
    if (highest_ ? v >= cells_[i] : v <= cells_[i]) {
      for (std::size_t j = cells_.size() - 1; j > i; --j) cells_[j] = cells_[j - 1];
      cells_[i] = v;
      return;
    }
  }
}

double Tail::cell(std::size_t i) const {
  return i >= 1 && i <= cells_.size() ? cells_[i - 1] : start_;
}

KsKaStatistics replicate_statistics(std::span<const ReplicateLine> lines, bool with_ratio) {
  KsKaStatistics s;
  const long n = static_cast<long>(lines.size());
  s.replicates = n;
  const auto size = static_cast<std::size_t>(std::max(0L, round_even(0.025 * n)));
  s.ks_high = Tail(size, 0, true);
  s.ka_high = Tail(size, 0, true);
  s.ks_low = Tail(size, kInfiniteRatio, false);
  s.ka_low = Tail(size, kInfiniteRatio, false);
  if (with_ratio) {
    s.ratio_high = Tail(size, 0, true);
    s.ratio_low = Tail(size, kInfiniteRatio, false);
  }
  double ks_sum = 0, ka_sum = 0, ratio_sum = 0;
  for (const ReplicateLine& line : lines) {
    const double ks = line.ks, ka = line.ka;
    if (ks >= 5) {
      ++s.na_ks;
    } else {
      ks_sum += ks;
      s.ks_high.insert(ks);
      s.ks_low.insert(ks);
    }
    if (ka >= 5) {
      ++s.na_ka;
    } else {
      ka_sum += ka;
      s.ka_high.insert(ka);
      s.ka_low.insert(ka);
    }
    if (ka < 5 && ks < 5 && ks > 0)
      ratio_sum += ka / ks;
    else
      ++s.na_ratio;
    if (with_ratio && ka < 5 && ks < 5) {
      const double r = ks == 0 ? kInfiniteRatio : ka / ks;
      s.ratio_high.insert(r);
      s.ratio_low.insert(r);
    }
  }
  // Deliberate: the divisor is one less than the applicable replicates.
  auto mean = [n](double sum, long na) {
    const double divisor = static_cast<double>(n - 1 - na);
    return divisor > 0 ? sum / divisor : 0.0;
  };
  s.ks_mean = mean(ks_sum, s.na_ks);
  s.ka_mean = mean(ka_sum, s.na_ka);
  s.ratio_mean = mean(ratio_sum, s.na_ratio);
  return s;
}

namespace {

void append_interval_rows(std::string& r, const Tail& low, const Tail& high, long n,
                          bool infinite_mark) {
  auto row = [&](const char* label, long cell) {
    const auto i = static_cast<std::size_t>(std::max(0L, cell));
    r += label;
    text::append_format(r, low.cell(i), " ####0.0000 ");
    r += " - ";
    const double upper = high.cell(i);
    if (infinite_mark && upper == kInfiniteRatio)
      r += "  INF. ";
    else
      text::append_format(r, upper, " ####0.0000 ");
    r += kCrlf;
  };
  row("    5% :   ", static_cast<long>(std::floor(0.025 * n)));
  if (n >= 500) row("    1% :   ", round_even(0.005 * n));
  if (n >= 5000) row("  0.1% :   ", round_even(0.0005 * n));
}

void append_mean_line(std::string& r, const char* head, double mean, long na, bool jc) {
  r += head;
  text::append_format(r, mean, " ####0.0000 ");
  if (na > 0) {
    r += "   ";
    text::append_plain(r, na);
    r += " N.A.";
  }
  if (jc) r += "   J&C";
  r += kCrlf;
}

void append_ratio_line(std::string& r, const char* head, double trs, double trv, bool random) {
  r += head;
  text::append_plain(r, trs);
  r += " :";
  text::append_plain(r, trv);
  if (random) r += " (Random)";
  r += kCrlf;
}

}  // namespace

std::string kska_report(const KsKaReportInputs& in, const KsKaStatistics& s) {
  std::string r = "*SIMULATION PARAMETERS*\r\n\r\n";
  if (in.mode == 1)
    r += " Simulations assuming that the average for Ka is equal to the value estimated for "
         "Ks\r\n\r\n";
  for (const std::string& line : in.sequence_lines) {
    r += line;
    r += kCrlf;
  }
  if (!in.sequence_lines.empty()) r += kCrlf;
  if (!in.region_text.empty()) {
    r += in.region_text;
    r += "\r\n\r\n";
  }
  r += " Ks : ";
  text::append_format(r, in.ks, " ####0.0000 ");
  if (in.mode == 0) {
    r += "      SES: ";
    text::append_format(r, in.ses, " ####0.0 ");
  }
  if (in.ks_jc) r += "  J&C";
  r += kCrlf;
  r += " Ka : ";
  text::append_format(r, in.ka, " ####0.0000 ");
  if (in.mode == 0) {
    r += "      NES: ";
    text::append_format(r, in.nes, " ####0.0 ");
  }
  if (in.ka_jc) r += "  J&C";
  r += "\r\n\r\n";
  r += " % G+C 3rd pos.         : ";
  text::append_format(r, in.gc, " ####0.0 ");
  r += kCrlf;
  r += " Number Analyzed codons : ";
  text::append_format(r, in.codons, " ####0 ");
  r += kCrlf;
  r += " Number of replicates   : ";
  text::append_format(r, in.replicates, " ####0 ");
  r += kCrlf;
  append_ratio_line(r, " Syn.   TRS:TRV ratio   : ", in.syn_trs, in.syn_trv, in.syn_random);
  append_ratio_line(r, " NonSyn.TRS:TRV ratio   : ", in.nonsyn_trs, in.nonsyn_trv,
                    in.nonsyn_random);
  r += in.poisson ? " Number of substitutions Poisson-distributed"
                  : " Number of substitutions fixed (no Poisson-distributed)";
  r += kCrlf;
  if (in.pathway_weight != 0.5f) {
    r += " Multiple-pathways weight: Synonymous/Total =";
    text::append_plain(r, in.pathway_weight);
  } else {
    r += " Multiple-pathways: Unweighted";
  }
  r += "\r\n\r\n";

  r += "*SIMULATION RESULTS*\r\n\r\n";
  append_mean_line(r, " Ks avg.:  ", s.ks_mean, s.na_ks, in.ks_jc);
  append_mean_line(r, " Ka avg.:  ", s.ka_mean, s.na_ka, in.ka_jc);
  r += kCrlf;
  const bool any_na = s.na_ks > 0 || s.na_ka > 0;
  // The misspelling is the program's own and is kept.
  r += any_na ? " Conficence Intervals* (see note below)" : " Conficence Intervals";
  r += kCrlf;
  const long n = in.replicates;
  if (n > 100) {
    r += " Ks C.I.      Min.        Max.\r\n";
    append_interval_rows(r, s.ks_low, s.ks_high, n, false);
    r += " Ka C.I.     \r\n";
    append_interval_rows(r, s.ka_low, s.ka_high, n, false);
    if (in.mode == 1) {
      r += " Ka/Ks C.I.     \r\n";
      append_interval_rows(r, s.ratio_low, s.ratio_high, n, true);
    }
  }
  r += kCrlf;
  r += " Probability of NO STOP CODONS in the sequence: ";
  text::append_plain(r, in.stop_total != 0 ? in.stop_clean / in.stop_total : 0.0);
  r += kCrlf;
  if (any_na) {
    r += kCrlf;
    r += " *NOTE: Confidence Intervals are those among the replicates\r\n";
    r += "        were the method was applicable. To take into account\r\n";
    r += "        non-applicable replicates, usually because of a large\r\n";
    r += "        Divergence, please inspect the Exact Probabilities\r\n";
    r += "        Option for detailed probabilities\r\n";
    r += kCrlf;
  }
  return r;
}

std::string progress_text(bool scanning, long number, double left) {
  std::string t = scanning ? "  Scanning Optimal Diver..  # " : "  Current simulation..  # ";
  const std::size_t start = t.size();
  text::append_plain(t, number);
  append_blanks_to(t, start, scanning ? 10 : 13);
  if (left > 0 && left < 3600) {
    const double minutes = std::floor(left / 60);
    t += " Finish in.. ";
    text::append_plain(t, minutes);
    t += "min. ";
    text::append_plain(t, std::floor(left - 60 * minutes));
    t += "sec.";
  } else if (left >= 3600) {
    const double hours = std::floor(left / 3600);
    t += " Finish in.. ";
    text::append_plain(t, hours);
    t += "h. ";
    text::append_plain(t, std::floor((left - 3600 * hours) / 60));
    t += "min. ";
  }
  return t;
}

std::vector<dv::Codon> fixed_starting_sequence(const AnalysisRecord& rec) {
  std::vector<dv::Codon> out;
  if (!rec.coding() || rec.results.handed_on.Ks == 0) return out;
  const SequenceData& seq = rec.seq;
  if (seq.SeqCodons.empty()) return out;
  const long cells = static_cast<long>(seq.SeqCodons.front().size());
  auto column_codons = [&](long col, bool& clean) {
    clean = true;
    for (const auto& row : seq.SeqCodons) {
      if (col > static_cast<long>(row.size())) {
        clean = false;
        return;
      }
      for (const char ch : row[static_cast<std::size_t>(col - 1)]) {
        const char up = (ch >= 'a' && ch <= 'z') ? static_cast<char>(ch - 'a' + 'A') : ch;
        if (dv::nucleotide_index(up) < 0) clean = false;
      }
    }
  };
  auto upper_codon = [](const CodonCell& c) {
    CodonCell u = c;
    for (char& ch : u)
      if (ch >= 'a' && ch <= 'z') ch = static_cast<char>(ch - 'a' + 'A');
    return dv::encode_codon(u);
  };
  long first = 1, last = cells;
  const RegionFields& region = rec.region;
  if (region.RegionMode == 0 && region.WindowMode == 0) {
    // The alignment's last codon goes when a sequence ends there in a stop.
    bool clean = false;
    if (cells > 0) column_codons(cells, clean);
    if (clean) {
      const dv::CodeTables& t = dv::code_tables(rec.active_code());
      for (const auto& row : seq.SeqCodons)
        if (t.translates_to_stop[upper_codon(row[static_cast<std::size_t>(cells - 1)])]) {
          --last;
          break;
        }
    }
  } else {
    // Int(first / 3) + 1 here, unlike the divergence run: kept deliberately.
    first = static_cast<long>(std::floor(text::read_number(region.RegionFirst) / 3)) + 1;
    last = static_cast<long>(std::floor(text::read_number(region.RegionLast) / 3));
  }
  first = std::max(first, 1L);
  last = std::min(last, cells);
  const auto& last_sequence = seq.SeqCodons.back();
  for (long col = first; col <= last; ++col) {
    bool clean = false;
    column_codons(col, clean);
    if (clean)
      out.push_back(
          static_cast<dv::Codon>(upper_codon(last_sequence[static_cast<std::size_t>(col - 1)])));
  }
  return out;
}

void ReplicateGenerator::configure(const GeneratorSettings& settings) {
  s_ = settings;
  if (s_.poisson) {
    fill_poisson_table(static_cast<long>(std::floor(0.5 + s_.syn_subs)), syn_table_);
    fill_poisson_table(static_cast<long>(std::floor(0.5 + s_.nonsyn_subs)), nonsyn_table_);
  }
}

void ReplicateGenerator::set_codons(std::span<const dv::Codon> fixed, long codons) {
  fixed_.assign(fixed.begin(), fixed.end());
  codons_ = fixed_.empty() ? std::max(codons, 0L) : static_cast<long>(fixed_.size());
  seq1_.resize(static_cast<std::size_t>(codons_));
  seq2_.resize(static_cast<std::size_t>(codons_));
}

void ReplicateGenerator::draw_starting_sequence(UniformRandom& random) {
  const std::size_t n = codons();
  if (!fixed_.empty()) {
    std::copy(fixed_.begin(), fixed_.end(), seq1_.begin());
  } else {
    auto first_letters = [&random] {
      const double x = random.uniform() * 100;
      return x < 25   ? kDrawOrder[0]
             : x < 50 ? kDrawOrder[1]
             : x < 75 ? kDrawOrder[2]
                      : kDrawOrder[3];
    };
    const auto& th = s_.third_position;
    for (std::size_t i = 0; i < n; ++i) {
      int codon;
      do {
        const int l1 = first_letters();
        const int l2 = first_letters();
        const double x = random.uniform() * 100;
        const int l3 = x < th[0]   ? kDrawOrder[0]
                       : x < th[1] ? kDrawOrder[1]
                       : x < th[2] ? kDrawOrder[2]
                                   : kDrawOrder[3];
        codon = 16 * l1 + 4 * l2 + l3;
      } while (universal_stop(codon));
      seq1_[i] = static_cast<dv::Codon>(codon);
    }
  }
  std::copy(seq1_.begin(), seq1_.end(), seq2_.begin());
}

void ReplicateGenerator::draw_quotas(UniformRandom& random) {
  syn_quota_ = s_.syn_subs;
  nonsyn_quota_ = s_.nonsyn_subs;
  if (!s_.poisson) return;
  // A walk past the end of its table, like a walk without a hit, leaves the
  // previous draw in place.
  if (syn_quota_ != 0) {
    const double u = random.uniform();
    double lower = 0;
    const double end = 10 * syn_quota_;
    for (long k = 1; k <= end && k < static_cast<long>(syn_table_.size()); ++k) {
      const double upper = syn_table_[static_cast<std::size_t>(k)];
      if (lower <= u && u < upper) {
        // Deliberate: the hits give k - 1 and k in turn.
        syn_draw_ = static_cast<double>(syn_draw_takes_k_ ? k : k - 1);
        syn_draw_takes_k_ = !syn_draw_takes_k_;
        break;
      }
      lower = upper;
    }
    syn_quota_ = syn_draw_;
  }
  if (nonsyn_quota_ > 0) {
    const double u = random.uniform();
    double lower = 0;
    const double end = 10 * nonsyn_quota_;
    for (long k = 0; k <= end && k < static_cast<long>(nonsyn_table_.size()); ++k) {
      const double upper = nonsyn_table_[static_cast<std::size_t>(k)];
      if (lower <= u && u < upper) {
        nonsyn_draw_ = static_cast<double>(k);
        break;
      }
      lower = upper;
    }
    nonsyn_quota_ = nonsyn_draw_;
  }
}

void ReplicateGenerator::mutate(UniformRandom& random) {
  static const auto& amino = dv::code_tables(GeneticCode::Universal).amino_acid;
  syn_count_ = nonsyn_count_ = 0;
  rejected_stops_ = 0;
  const double attempts = 50 * (s_.syn_subs + s_.nonsyn_subs);
  const double n = static_cast<double>(codons_);
  for (double attempt = 1; attempt <= attempts; attempt += 1) {
    long index = 0;
    int old_codon = 0, new_codon = 0;
    for (;;) {
      index = static_cast<long>(std::floor((random.uniform() - 1e-05) * n)) + 1;
      int position = static_cast<int>(std::floor(random.uniform() * 2.999999)) + 1;
      if (nonsyn_count_ >= nonsyn_quota_) position = 3;
      if (syn_count_ >= syn_quota_)
        position = static_cast<int>(std::floor(random.uniform() * 1.999999)) + 1;
      const double r = random.uniform();
      // An index of 0 lies outside the sequence: the attempt counts, nothing changes.
      if (index < 1) break;
      const auto i = static_cast<std::size_t>(index - 1);
      old_codon = seq2_[i];
      const int p = position - 1;
      const int letter = dv::nucleotide_at(old_codon, p);
      const double t = position == 3 ? s_.syn_transition : s_.nonsyn_transition;
      const int to = r < t                 ? kTransition[letter]
                     : r < t + (1 - t) / 2 ? kFirstTransversion[letter]
                                           : kSecondTransversion[letter];
      new_codon = with_letter(old_codon, p, to);
      if (universal_stop(new_codon)) {
        ++rejected_stops_;
        continue;
      }
      // A return to the ancestor is refused in the upper quarter of r.
      if (new_codon == seq1_[i] && r > 0.75) continue;
      break;
    }
    if (index >= 1) {
      const auto i = static_cast<std::size_t>(index - 1);
      if (amino[old_codon] == amino[new_codon]) {
        // Nonsynonymous changes are placed first.
        if (syn_count_ < syn_quota_ && nonsyn_count_ >= nonsyn_quota_) {
          seq2_[i] = static_cast<dv::Codon>(new_codon);
          syn_count_ += 1;
        }
      } else if (nonsyn_count_ < nonsyn_quota_) {
        seq2_[i] = static_cast<dv::Codon>(new_codon);
        nonsyn_count_ += 1;
      }
    }
    if (syn_count_ >= syn_quota_ && nonsyn_count_ >= nonsyn_quota_) break;
  }
}

namespace {

enum class LoopEnd { Finished, Restart, Stopped };

class Run {
 public:
  Run(KsKaDialog& d, AnalysisRecord& rec, KsKaSession& session, Platform& platform)
      : d_(d), rec_(rec), session_(session), platform_(platform) {}
  bool execute();

 private:
  void seed_from_clock();
  void stopped();
  void tune_scan();
  LoopEnd replicate_loop();
  void finish();

  KsKaDialog& d_;
  AnalysisRecord& rec_;
  KsKaSession& session_;
  Platform& platform_;

  KsKaParameters p_;
  KsKaDerived v_;
  double typed_syn_ = 0, typed_nonsyn_ = 0;
  double syn_subs_ = 0, nonsyn_subs_ = 0;
  ScanClass syn_scan_, nonsyn_scan_;
  bool scan_done_ = false;
  long scan_iteration_ = 1;
  BalanceState balance_;

  long sim_codons_ = 0;
  ReplicateGenerator generator_;
  ReplicateWorkspace workspace_;
  ReplicateMethods methods_;

  long counter_ = 1;
  double stop_total_ = 0, stop_clean_ = 0;
  double start_time_ = 0;
  double per_ten_ = 0;  // seconds per ten replicates
};

void Run::seed_from_clock() {
  if (d_.seed) return;  // a user's seed: the run repeats, the clock is not read
  // The clock reading is mixed into the generator's state, so that two reseeds
  // within one tick of the clock do not repeat the same numbers.
  const std::uint64_t clock =
      UniformRandom::seed_from_clock(platform_.clock().seconds_since_midnight);
  d_.random.reseed(clock ^ d_.random.next());
}

void Run::stopped() {
  rec_.menu.AnalysisOptions.enabled = true;
  if (rec_.seq.SequenceLoaded) rec_.menu.Diver.enabled = true;
  rec_.form.Form1.visible = true;
  d_.null_distribution.clear();
  d_.results_ready = false;
  d_.loaded = false;
}

void Run::tune_scan() {
  double ks_sum = 0, ka_sum = 0, ks_n = 0, ka_n = 0;
  for (const ReplicateLine& line : d_.null_distribution) {
    if (line.ks < kNotApplicableEstimate) {
      ks_sum += line.ks;
      ks_n += 1;
    }
    if (line.ka < kNotApplicableEstimate) {
      ka_sum += line.ka;
      ka_n += 1;
    }
  }
  // A pass without one applicable estimate tells nothing: the class stays.
  if (!syn_scan_.converged) {
    if (ks_n > 0)
      tune_scan_class(syn_scan_, ks_sum / ks_n, p_.ks, typed_syn_, true);
    else
      syn_scan_.converged = true;
  }
  if (!nonsyn_scan_.converged) {
    if (ka_n > 0)
      tune_scan_class(nonsyn_scan_, ka_sum / ka_n, v_.ka_target, typed_nonsyn_, false);
    else
      nonsyn_scan_.converged = true;
  }
  syn_subs_ = syn_scan_.count;
  nonsyn_subs_ = nonsyn_scan_.count;
  if (syn_scan_.converged && nonsyn_scan_.converged) {
    scan_done_ = true;
    session_.ScanKeySyn = typed_syn_;
    session_.ScanKeyNonsyn = typed_nonsyn_;
    session_.ScanResultSyn = syn_subs_;
    session_.ScanResultNonsyn = nonsyn_subs_;
    session_.ScanKeyCodons = p_.codons;
    session_.ScanKeyGC = p_.gc;
    session_.ScanKeySynRatio = p_.syn_trs / p_.syn_trv;
    session_.ScanKeyNonsynRatio = p_.nonsyn_trs / p_.nonsyn_trv;
    balance_.RunKsSum = 0;
    balance_.RunKsCount = 0;
  }
  ++scan_iteration_;
}

LoopEnd Run::replicate_loop() {
  const double total = static_cast<double>(p_.replicates);
  static constexpr long kTimingAt[12] = {10, 20, 30, 50, 100, 300, 500, 800, 900, 1000, 2000, 5000};
  static constexpr double kTimingBy[12] = {1, 2, 3, 5, 10, 30, 50, 80, 90, 100, 200, 500};
  for (;;) {
    platform_.yield();
    if (d_.stop_requested) {
      stopped();
      return LoopEnd::Stopped;
    }
    generator_.draw_starting_sequence(d_.random);
    generator_.draw_quotas(d_.random);
    seed_from_clock();
    generator_.mutate(d_.random);

    const bool counted = scan_done_ || !p_.scan;
    if (counted && counter_ == 1) stop_total_ = stop_clean_ = 0;
    if (static_cast<double>(counter_) <= total + 1) {
      stop_total_ += 1;
      if (generator_.rejected_stops() == 0) stop_clean_ += 1;
    }

    for (int i = 0; i < 12; ++i)
      if (counter_ == kTimingAt[i])
        per_ten_ = (platform_.clock().seconds_since_midnight - start_time_) / kTimingBy[i];

    const bool scanning = p_.scan && !scan_done_;
    const long pass = p_.ks >= 0.75 ? 300 : 250;
    if (scanning && counter_ == pass) {
      tune_scan();
      return LoopEnd::Restart;
    }

    if ((total <= 500 && counter_ % 5 == 0) || (total >= 500 && counter_ % 10 == 0)) {
      const double to = scanning ? static_cast<double>(pass) : total;
      const double left = per_ten_ * (to - static_cast<double>(counter_)) / 10;
      d_.Text12.text = progress_text(scanning, scanning ? scan_iteration_ : counter_, left);
    }

    BalanceState& b = balance_;
    b.WantLowKs = b.WantHighKs = b.GotLowKs = b.GotHighKs = false;
    if (counted && in_balancing_stretch(static_cast<double>(counter_), total) && b.RunKsCount > 0) {
      if (b.RunKsSum / b.RunKsCount >= p_.ks)
        b.WantLowKs = true;
      else
        b.WantHighKs = true;
    }

    const ReplicateEstimate e = estimate_replicate(
        generator_.first(), generator_.second(), rec_.options.PathwayWeight, methods_, workspace_);
    if (decide_replicate(e.ks, d_.SimKsTarget, b))
      d_.null_distribution.push_back(data_line(e.ks, e.ka));

    if ((b.WantLowKs && !b.GotLowKs) || (b.WantHighKs && !b.GotHighKs)) continue;
    if (static_cast<double>(counter_) == total) return LoopEnd::Finished;
    ++counter_;
  }
}

void Run::finish() {
  const bool ratio = d_.KaEqualsKsMode == 1;
  const KsKaStatistics stats = replicate_statistics(d_.null_distribution, ratio);
  KsKaReportInputs in;
  in.mode = d_.KaEqualsKsMode;
  const auto& names = rec_.seq.SeqNames;
  const long count = static_cast<long>(names.size());
  long a = session_.Seq1Index, b = session_.Seq2Index;
  if (count == 2) {
    a = 1;
    b = 2;
  } else if (!(a >= 1 && a <= count && b >= 1 && b <= count)) {
    a = count - 1;
    b = count;
  }
  if (count >= 2)
    for (const long s : {a, b}) {
      std::string line = " Seq.#";
      text::append_plain(line, s);
      line += "     ";
      line += names[static_cast<std::size_t>(s - 1)].substr(0, 60);
      in.sequence_lines.push_back(std::move(line));
    }
  const RegionFields& region = rec_.region;
  const std::string* summary = region.RegionMode == 1   ? &region.RegionText
                               : region.WindowMode == 1 ? &region.CodingWindowText
                                                        : nullptr;
  if (summary != nullptr) {
    std::string_view t = *summary;
    while (t.starts_with(kCrlf)) t.remove_prefix(2);
    in.region_text = std::string(t);
  }
  const CodingHandedOnFields& h = rec_.results.handed_on;
  in.ks = p_.ks;
  in.ses = p_.ses;
  in.ka = v_.ka_target;
  in.nes = p_.nes;
  in.ks_jc = h.KsMethod == 1;
  in.ka_jc = h.KaMethod == 1;
  in.gc = p_.gc;
  in.codons = static_cast<double>(sim_codons_);
  in.replicates = p_.replicates;
  in.syn_trs = p_.syn_trs;
  in.syn_trv = p_.syn_trv;
  in.nonsyn_trs = p_.nonsyn_trs;
  in.nonsyn_trv = p_.nonsyn_trv;
  in.syn_random = p_.syn_random;
  in.nonsyn_random = p_.nonsyn_random;
  in.poisson = p_.poisson;
  in.pathway_weight = rec_.options.PathwayWeight;
  in.stop_clean = stop_clean_;
  in.stop_total = stop_total_;
  rec_.ReportBuffer = kska_report(in, stats);
  d_.Text13.text = rec_.ReportBuffer;

  for (Control* c : {&d_.Check1, &d_.Check2, &d_.Check3, &d_.Check4, &d_.Command4, &d_.Text12})
    c->visible = false;
  for (Control* c : {&d_.Command5, &d_.Command6, &d_.Command8, &d_.Text13, &d_.Command9,
                     &d_.Command10, &d_.Command11, &d_.Label14, &d_.Text14, &d_.Label15, &d_.Text15,
                     &d_.Text16, &d_.ResultsTab})
    c->visible = true;
  if (ratio) d_.Command12.visible = d_.Label18.visible = d_.Text18.visible = true;
  d_.SSTab1Page = 1;
  d_.results_ready = true;
}

bool Run::execute() {
  // Step 1: the fields and the values derived from them.
  p_ = read_kska_parameters(d_);
  v_ = derive_kska_values(p_, d_.KaEqualsKsMode);
  d_.SimKsTarget = p_.ks;
  rec_.seq.SeqCount = static_cast<double>(p_.replicates);  // borrowed for the run
  typed_syn_ = syn_subs_ = v_.syn_subs;
  typed_nonsyn_ = nonsyn_subs_ = v_.nonsyn_subs;
  balance_ = {};
  scan_iteration_ = 1;
  scan_done_ = false;
  d_.stop_requested = false;
  d_.results_ready = false;
  const CodingHandedOnFields& h = rec_.results.handed_on;
  methods_ = {h.KsMethod, h.KaMethod};

  // Step 2: a repeated run with the parameters of the last scan does not scan.
  if (typed_syn_ == session_.ScanKeySyn && typed_nonsyn_ == session_.ScanKeyNonsyn &&
      p_.codons == session_.ScanKeyCodons && p_.gc == session_.ScanKeyGC &&
      p_.syn_trs / p_.syn_trv == session_.ScanKeySynRatio &&
      p_.nonsyn_trs / p_.nonsyn_trv == session_.ScanKeyNonsynRatio) {
    syn_subs_ = session_.ScanResultSyn;
    nonsyn_subs_ = session_.ScanResultNonsyn;
    scan_done_ = true;
  }
  syn_scan_ = {syn_subs_};
  nonsyn_scan_ = {nonsyn_subs_};

  if (d_.seed) d_.random.reseed(*d_.seed);
  bool asked = false;
  for (;;) {
    // Step 3: the restart point of a scan pass.
    sim_codons_ = static_cast<long>(std::trunc(p_.codons));
    session_.SimCodons = static_cast<double>(sim_codons_);

    // Step 4.
    if (p_.replicates < 500 && !asked) {
      asked = true;
      std::string question = "      Only";
      text::append_plain(question, p_.replicates);
      question += " replicates ...     \r\n      Are you sure?";
      if (!platform_.message(question, "", MessageIcon::Question, true)) {
        stop_simulation(d_);
        stopped();
        return false;
      }
    }

    // Step 5.
    seed_from_clock();
    d_.null_distribution.clear();
    d_.null_distribution.reserve(static_cast<std::size_t>(std::max(p_.replicates, 300L)));
    counter_ = 1;

    // Step 6.
    if (p_.replicates_value <= 10) {
      platform_.message("Invalid Number of Replicates !", kSimulationParametersTitle,
                        MessageIcon::Exclamation);
      d_.Text7.text.clear();
      return false;
    }
    auto out_of_range = [](double v) { return v > 5 || v == 0; };
    if (out_of_range(p_.ks) && out_of_range(v_.ka_target)) {
      platform_.message("Invalid Divergence Value !", kSimulationParametersTitle,
                        MessageIcon::Exclamation);
      return false;
    }

    // Step 7.
    for (Control* c : {&d_.Command1, &d_.Command2, &d_.Command3, &d_.Command7}) c->visible = false;
    d_.Command4.visible = true;
    d_.Text12.visible = true;
    start_time_ = platform_.clock().seconds_since_midnight;

    // Step 8.
    if (p_.poisson) d_.Text12.text = "       Poisson distribution....";
    GeneratorSettings settings;
    settings.syn_subs = syn_subs_;
    settings.nonsyn_subs = nonsyn_subs_;
    settings.poisson = p_.poisson;
    settings.syn_transition = v_.syn_transition;
    settings.nonsyn_transition = v_.nonsyn_transition;
    settings.third_position = v_.third_position;
    generator_.configure(settings);

    // Step 9.
    d_.Text12.text = "       Please, wait a moment ... ";
    const std::vector<dv::Codon> fixed = fixed_starting_sequence(rec_);
    if (!fixed.empty()) {
      sim_codons_ = static_cast<long>(fixed.size());
      session_.SimCodons = static_cast<double>(sim_codons_);
    }
    if (sim_codons_ <= 0) {
      platform_.message("Codons under analysis = 0 !", "", MessageIcon::Exclamation);
      for (Control* c : {&d_.Command1, &d_.Command2, &d_.Command3, &d_.Command7}) c->visible = true;
      d_.Command4.visible = false;
      d_.Text12.visible = false;
      return false;
    }
    generator_.set_codons(fixed, sim_codons_);
    workspace_.reserve(generator_.codons());

    switch (replicate_loop()) {
      case LoopEnd::Stopped:
        return false;
      case LoopEnd::Restart:
        continue;
      case LoopEnd::Finished:
        finish();
        return true;
    }
  }
}

}  // namespace

bool run_kska_simulation(KsKaDialog& dialog, AnalysisRecord& rec, KsKaSession& session,
                         Platform& platform) {
  Run run(dialog, rec, session, platform);
  return run.execute();
}

}  // namespace varnoth::simulation
