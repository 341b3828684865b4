// The text of a divergence run's report, written in the order of the run: the
// head once, the positions block after the first filtering, then each
// comparison (and window). Every literal of the report lives in this file.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "divergence/coding_estimators.h"
#include "divergence/noncoding_estimators.h"
#include "divergence/site_classes.h"
#include "state/record.h"

namespace varnoth::reports {

// What the report needs to know of the run, fixed at its start.
struct RunLayout {
  bool coding = false;
  bool window = false;
  bool region = false;
  double pair_count = 0;
  bool jukes_cantor_run = false;  // coding: method number 1
  std::array<bool, 6> methods{};  // noncoding: JC, K2p, T&N, T1p, T2p, T4p checked
  bool max_one_change = false, only_aa_change = false, no_3_diff = false;
  GeneticCode code = GeneticCode::Universal;
  float pathway_weight = 0.5f;
};

RunLayout layout_of(const AnalysisRecord& rec, int method_number);

// Head of the run.
void append_run_head(std::string& out, const RunLayout& run);

// The positions block, after the first filtering. `first`/`last` are the
// nucleotide range of a region run; `analyzed` is the number of analyzed
// positions printed where the run prints it.
void append_positions_block(std::string& out, const RunLayout& run, double seq_length,
                            double first, double last, const std::string& region_text,
                            long analyzed);

// One window of a window run (nucleotide range and its codon range).
struct WindowPlace {
  long index = 0;  // from 1
  double first = 0, last = 0;
  long first_codon = 0, last_codon = 0;  // as the filter takes them
};

struct ComparisonPlace {
  long number = 0;  // comparison number, from 1
  std::string_view name_a, name_b;
  const WindowPlace* window = nullptr;  // null outside window runs
};

// Noncoding: the comparison's lines. `sites` is the number of analyzed positions.
void append_noncoding_comparison(std::string& out, const RunLayout& run,
                                 const ComparisonPlace& place, long sites,
                                 const divergence::NoncodingEstimates& e,
                                 const divergence::NoncodingNotApplicable& na);
// Noncoding: a pair with no site.
void append_noncoding_empty(std::string& out, const RunLayout& run, const ComparisonPlace& place,
                            long sites);

// Coding: the comparison's lines. `codons` is the number of codons compared.
void append_coding_comparison(std::string& out, const RunLayout& run,
                              const ComparisonPlace& place, long codons,
                              const divergence::ClassTotals& classes,
                              const divergence::CodingEstimates& e);
// Coding: a pair with no codon.
void append_coding_empty(std::string& out, const RunLayout& run, const ComparisonPlace& place,
                         long codons);

// The window table: its column line, the names before a comparison's first
// window, and one row per window.
void append_window_columns(std::string& out, const RunLayout& run);
void append_window_names(std::string& out, std::string_view name_a, std::string_view name_b);
void append_noncoding_window_row(std::string& out, const RunLayout& run, const WindowPlace& w,
                                 const divergence::NoncodingEstimates& e,
                                 const divergence::NoncodingNotApplicable& na);
void append_coding_window_row(std::string& out, const RunLayout& run, const WindowPlace& w,
                              const divergence::CodingEstimates& e);

}  // namespace varnoth::reports
