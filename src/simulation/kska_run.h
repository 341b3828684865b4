// The coding simulation run, the `Accept` command of the dialog KsKaCI1: pairs
// of codon sequences that differ by a drawn number of synonymous and
// nonsynonymous substitutions, each estimated as a replicate, then the means,
// the intervals and the report.
//
// The replicate data stay in memory (KsKaDialog::null_distribution): each line
// holds the two estimates as their fixed-width fields read back, so the
// exact probabilities and the saved distribution see what a file would hold.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "divergence/genetic_code.h"
#include "simulation/kska_dialog.h"
#include "simulation/random.h"
#include "state/platform.h"
#include "state/record.h"

namespace varnoth::simulation {

// The fields of the dialog as a run reads them.
struct KsKaParameters {
  double ks = 0;                          // Text1, the Ks target
  double ses = 0;                         // Text2
  double ka = 0;                          // Text3
  double nes = 0;                         // Text4
  double codons = 0;                      // Text5, plain reading
  double gc = 0;                          // Text6, percent
  double replicates_value = 0;            // Text7, plain reading
  long replicates = 0;                    // Text7 truncated
  double syn_trs = 1, syn_trv = 1;        // Text8, Text9
  double nonsyn_trs = 1, nonsyn_trv = 1;  // Text10, Text11
  bool syn_random = false;                // Check1
  bool nonsyn_random = false;             // Check2
  bool poisson = true;                    // Check3
  bool scan = true;                       // Check4
};
KsKaParameters read_kska_parameters(const KsKaDialog& dialog);

struct KsKaDerived {
  double ka_target = 0;          // Ka, or Ks when Ka is taken from Ks
  double syn_subs = 0;           // Ks x S.E.S.
  double nonsyn_subs = 0;        // Ka x N.E.S.
  double syn_transition = 0;     // TRS / (TRS + 2 TRV), synonymous
  double nonsyn_transition = 0;  // the same, nonsynonymous
  // Third-position letters: cumulative percent thresholds of G, C, A, T.
  std::array<double, 4> third_position{};
};
KsKaDerived derive_kska_values(const KsKaParameters& p, int ka_equals_ks_mode);

// The cumulative Poisson table of an integer mean m, cells 0 to 10m. The
// constant e is 2.718281828 (deliberately not the exact base); above k = 50
// the terms are formed in logarithms. The table stops where the sum passes 1,
// or passes 0.98 with a term below 1e-10: its last cell is then 1 and the
// cells between stay 0.
void fill_poisson_table(long mean, std::vector<double>& table);

// One class of the scan for the optimal input divergence.
struct ScanClass {
  double count = 0;     // the substitutions put in per replicate
  double previous = 0;  // mean of the pass before; 0: no pass yet
  bool fine = false;    // fine steps (synonymous only)
  bool converged = false;
};
// One step of the tuning table on the mean of a pass. `typed_subs` is the
// count as typed (Ks x S.E.S., Ka x N.E.S.), for the floor at 1.
void tune_scan_class(ScanClass& c, double mean, double target, double typed_subs, bool synonymous);

// The stretches of a run of `total` replicates in which the mean of Ks is steered.
bool in_balancing_stretch(double counter, double total);

// A sorted tail of the replicates: cells 1..size, the best end first.
class Tail {
 public:
  Tail() = default;
  Tail(std::size_t size, double start, bool highest);
  void insert(double value);
  // Cell i (from 1); the start value where i is out of range.
  double cell(std::size_t i) const;
  std::size_t size() const { return cells_.size(); }

 private:
  std::vector<double> cells_;
  double start_ = 0;
  bool highest_ = true;
};

inline constexpr double kInfiniteRatio = 99999;

// The means and tails of the replicate data of a finished run.
struct KsKaStatistics {
  long replicates = 0;
  double ks_mean = 0, ka_mean = 0, ratio_mean = 0;
  long na_ks = 0, na_ka = 0, na_ratio = 0;
  Tail ks_high, ks_low, ka_high, ka_low, ratio_high, ratio_low;
};
KsKaStatistics replicate_statistics(std::span<const ReplicateLine> lines, bool with_ratio);

// Everything the report prints.
struct KsKaReportInputs {
  int mode = 0;
  std::vector<std::string> sequence_lines;  // " Seq.#" lines, already built
  std::string region_text;                  // the region or window summary, or empty
  double ks = 0, ses = 0, ka = 0, nes = 0;
  bool ks_jc = false, ka_jc = false;
  double gc = 0;
  double codons = 0;
  long replicates = 0;
  double syn_trs = 1, syn_trv = 1, nonsyn_trs = 1, nonsyn_trv = 1;
  bool syn_random = false, nonsyn_random = false;
  bool poisson = true;
  float pathway_weight = 0.5f;
  double stop_clean = 0, stop_total = 0;
};
std::string kska_report(const KsKaReportInputs& in, const KsKaStatistics& stats);

// The progress line of Text12: `number` is the replicate counter, or the scan
// pass number while scanning; `left` the seconds left.
std::string progress_text(bool scanning, long number, double left);

// The making of one replicate pair: a starting sequence, the drawn numbers of
// substitutions and the mutation of the second sequence. Buffers are sized by
// set_codons() and reused by every replicate.
struct GeneratorSettings {
  double syn_subs = 0;  // substitutions put in per replicate (typed or tuned)
  double nonsyn_subs = 0;
  bool poisson = true;
  double syn_transition = 1.0 / 3;
  double nonsyn_transition = 1.0 / 3;
  std::array<double, 4> third_position{25, 50, 75, 100};  // cumulative G, C, A, T
};

class ReplicateGenerator {
 public:
  // Settings and the Poisson tables of their means.
  void configure(const GeneratorSettings& settings);
  // A fixed starting sequence (empty: sequences are drawn) and the codon count.
  void set_codons(std::span<const divergence::Codon> fixed, long codons);

  // Both sequences from the fixed sequence, or drawn letter by letter.
  void draw_starting_sequence(UniformRandom& random);
  // The quotas: the substitutions, or Poisson draws of them.
  void draw_quotas(UniformRandom& random);
  // Changes in the second sequence until both quotas are filled or the
  // attempts run out.
  void mutate(UniformRandom& random);

  std::span<const divergence::Codon> first() const { return {seq1_.data(), codons()}; }
  std::span<const divergence::Codon> second() const { return {seq2_.data(), codons()}; }
  std::size_t codons() const { return static_cast<std::size_t>(codons_); }
  double syn_quota() const { return syn_quota_; }
  double nonsyn_quota() const { return nonsyn_quota_; }
  double syn_count() const { return syn_count_; }
  double nonsyn_count() const { return nonsyn_count_; }
  long rejected_stops() const { return rejected_stops_; }

 private:
  GeneratorSettings s_;
  std::vector<double> syn_table_, nonsyn_table_;
  std::vector<divergence::Codon> fixed_, seq1_, seq2_;
  long codons_ = 0;
  double syn_quota_ = 0, nonsyn_quota_ = 0;
  double syn_draw_ = 0, nonsyn_draw_ = 0;  // the last hits of the Poisson walks
  bool syn_draw_takes_k_ = false;          // the alternation of the synonymous draw
  double syn_count_ = 0, nonsyn_count_ = 0;
  long rejected_stops_ = 0;
};

// The fixed starting sequence: the codons of the last sequence of the file in
// the columns of the analysed range where every sequence has A, G, C or T.
// Empty when the main window is not in coding mode or has no estimate.
std::vector<divergence::Codon> fixed_starting_sequence(const AnalysisRecord& rec);

// Command1 "Accept". Returns true when the run finished and its report is in
// Text13 and ReportBuffer; false when a check refused it, the user declined,
// or Stop Simulation ended it.
bool run_kska_simulation(KsKaDialog& dialog, AnalysisRecord& rec, KsKaSession& session,
                         Platform& platform);

}  // namespace varnoth::simulation
