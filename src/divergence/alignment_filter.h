// The alignment filter of a divergence run: the codon and site columns of a range
// in which every sequence holds A, C, G or T (complete deletion).
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "state/record.h"

namespace varnoth::divergence {

struct FilteredAlignment {
  // [sequence][codon], codon indices 0..63 (see genetic_code.h).
  std::vector<std::vector<std::uint8_t>> codons;
  // [sequence], upper-case letters A, C, G, T.
  std::vector<std::string> sites;
  // The codon cell (from 1) each kept codon and each kept site came from (for
  // a region's rebuilt sites: the nucleotide position).
  std::vector<long> codon_cells;
  std::vector<long> site_cells;
  long codon_count() const { return static_cast<long>(codon_cells.size()); }
  long site_count() const { return static_cast<long>(site_cells.size()); }
};

struct FilterRange {
  long first_codon = 1;  // 1-based cells of SeqCodons, inclusive
  long last_codon = 0;
  bool rebuild_sites = false;  // region run: sites exact in base pairs
  long first_site = 1;         // with rebuild_sites: nucleotide range, inclusive
  long last_site = 0;
};

// The kept codons and sites that came from cells first..last: since a column
// is kept or not by its own letters, the columns of a window are the columns of
// the whole alignment that lie in it.
struct ColumnRange {
  std::size_t codon_begin = 0, codon_end = 0;
  std::size_t site_begin = 0, site_end = 0;
};
ColumnRange columns_in_cells(const FilteredAlignment& filtered, long first_cell, long last_cell);

// Filters the sequences 1..`sequences` of `seq.SeqCodons` over `range`, in two
// steps so that the sequences can be filled apart, on any thread: plan_filter
// finds the columns kept (codon_cells and site_cells, and a region's sites
// whole) and sizes every sequence, then fill_filtered fills each one. With
// `coding`, a stop codon of `code` in any sequence of the alignment's last
// codon column drops that column silently.
struct FilterPlan {
  std::vector<std::size_t> codons;                // cells kept, from 0
  std::vector<std::pair<std::size_t, int>> sites;  // cell and position kept
  bool sites_filled = false;                       // a region's sites are filled by the plan
};
void plan_filter(const SequenceData& seq, long sequences, const FilterRange& range, bool coding,
                 GeneticCode code, FilteredAlignment& out, FilterPlan& plan);
void fill_filtered(const SequenceData& seq, const FilterPlan& plan, std::size_t sequence,
                   FilteredAlignment& out);

}  // namespace varnoth::divergence
