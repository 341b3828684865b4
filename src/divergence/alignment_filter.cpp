#include "divergence/alignment_filter.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "divergence/genetic_code.h"

namespace varnoth::divergence {

namespace {

constexpr bool valid_letter(char c) {
  switch (c) {
    case 'A': case 'G': case 'C': case 'T':
    case 'a': case 'g': case 'c': case 't':
      return true;
    default:
      return false;
  }
}

constexpr char upper(char c) { return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 32) : c; }

// Whether a letter is A, C, G or T in either case, and its index in a codon.
struct Letter {
  std::uint8_t valid = 0;
  std::uint8_t index = 0;
};
constexpr std::array<Letter, 256> kLetter = [] {
  std::array<Letter, 256> t{};
  for (int c = 0; c < 256; ++c) {
    const int i = nucleotide_index(upper(static_cast<char>(c)));
    if (valid_letter(static_cast<char>(c)) && i >= 0)
      t[static_cast<std::size_t>(c)] = {1, static_cast<std::uint8_t>(i)};
  }
  return t;
}();

// The stop codons the filter drops at the end of the alignment; the list is the
// filter's own and not the translation table's.
bool terminal_stop(const CodonCell& cell, GeneticCode code) {
  const char t[3] = {upper(cell[0]), upper(cell[1]), upper(cell[2])};
  auto is = [&](const char* s) { return std::memcmp(t, s, 3) == 0; };
  if (is("TAA") || is("TAG")) return true;
  switch (code) {
    case GeneticCode::Universal: return is("TGA");
    case GeneticCode::Vermito: return is("AGA") || is("AGG");
    case GeneticCode::Dromito: return false;
  }
  return false;
}

}  // namespace

ColumnRange columns_in_cells(const FilteredAlignment& filtered, long first_cell, long last_cell) {
  auto span_of = [&](const std::vector<long>& cells, std::size_t& begin, std::size_t& end) {
    begin = static_cast<std::size_t>(std::lower_bound(cells.begin(), cells.end(), first_cell) -
                                     cells.begin());
    end = static_cast<std::size_t>(std::upper_bound(cells.begin(), cells.end(), last_cell) -
                                   cells.begin());
    if (end < begin) end = begin;
  };
  ColumnRange r;
  span_of(filtered.codon_cells, r.codon_begin, r.codon_end);
  span_of(filtered.site_cells, r.site_begin, r.site_end);
  return r;
}

void plan_filter(const SequenceData& seq, long sequences, const FilterRange& range, bool coding,
                 GeneticCode code, FilteredAlignment& out, FilterPlan& plan) {
  const auto n = static_cast<std::size_t>(std::max(0L, sequences));
  out.codons.resize(n);
  out.sites.resize(n);
  out.codon_cells.clear();
  out.site_cells.clear();
  plan.codons.clear();
  plan.sites.clear();
  plan.sites_filled = range.rebuild_sites;
  if (n == 0) return;
  const long cells = static_cast<long>(seq.SeqCodons[0].size());
  const long last_cell = static_cast<long>(seq.CodonCellCount);
  const long first = std::max(1L, range.first_codon);
  const long last = std::min(range.last_codon, cells);
  const auto columns = static_cast<std::size_t>(std::max(0L, last - first + 1));

  // Bit p of a column: position p holds A, C, G or T in every sequence. A row
  // too short for the column leaves the whole column out.
  std::vector<std::uint8_t> good(columns, 7);
  for (std::size_t s = 0; s < n; ++s) {
    const auto& row = seq.SeqCodons[s];
    for (std::size_t k = 0; k < columns; ++k) {
      const auto ci = static_cast<std::size_t>(first - 1) + k;
      if (ci >= row.size()) {
        good[k] = 0;
        continue;
      }
      const CodonCell& cell = row[ci];
      good[k] &= static_cast<std::uint8_t>(kLetter[static_cast<unsigned char>(cell[0])].valid |
                                         kLetter[static_cast<unsigned char>(cell[1])].valid << 1 |
                                         kLetter[static_cast<unsigned char>(cell[2])].valid << 2);
    }
  }
  // The columns kept, in order: codons, and sites position by position.
  for (std::size_t k = 0; k < columns; ++k) {
    const long c = first + static_cast<long>(k);
    const auto ci = static_cast<std::size_t>(c - 1);
    bool dropped = false;
    if (good[k] == 7 && coding && c == last_cell) {
      for (std::size_t s = 0; s < n && !dropped; ++s)
        dropped = terminal_stop(seq.SeqCodons[s][ci], code);
    }
    if (good[k] == 7 && !dropped) {
      plan.codons.push_back(ci);
      out.codon_cells.push_back(c);
    }
    if (!range.rebuild_sites) {
      for (int p = 0; p < 3; ++p) {
        if ((good[k] >> p & 1) == 0) continue;
        plan.sites.emplace_back(ci, p);
        out.site_cells.push_back(c);
      }
    }
  }

  // Sized here, on the thread that plans (a thread that fills would take the
  // memory from a heap of its own, new and slow to touch); a region's sites
  // start empty and are added column by column below.
  for (std::size_t s = 0; s < n; ++s) {
    out.codons[s].resize(plan.codons.size());
    out.sites[s].resize(plan.sites.size());
  }

  if (range.rebuild_sites) {
    // Each sequence read back into one string (the blanks of a padded last
    // cell left out), then the columns of the range tested one by one.
    std::vector<std::string> letters(n);
    for (std::size_t s = 0; s < n; ++s) {
      auto& str = letters[s];
      str.reserve(seq.SeqCodons[s].size() * 3);
      for (const auto& cell : seq.SeqCodons[s])
        for (char ch : cell)
          if (ch != ' ') str.push_back(ch);
    }
    for (long pos = std::max(1L, range.first_site); pos <= range.last_site; ++pos) {
      const auto pi = static_cast<std::size_t>(pos - 1);
      bool ok = true;
      for (std::size_t s = 0; s < n && ok; ++s)
        ok = pi < letters[s].size() && valid_letter(letters[s][pi]);
      if (!ok) continue;
      for (std::size_t s = 0; s < n; ++s) out.sites[s].push_back(upper(letters[s][pi]));
      out.site_cells.push_back(pos);
    }
  }
}

void fill_filtered(const SequenceData& seq, const FilterPlan& plan, std::size_t sequence,
                   FilteredAlignment& out) {
  const auto& row = seq.SeqCodons[sequence];
  auto& codons = out.codons[sequence];
  for (std::size_t k = 0; k < plan.codons.size(); ++k) {
    const CodonCell& cell = row[plan.codons[k]];
    codons[k] = static_cast<std::uint8_t>(16 * kLetter[static_cast<unsigned char>(cell[0])].index +
                                          4 * kLetter[static_cast<unsigned char>(cell[1])].index +
                                          kLetter[static_cast<unsigned char>(cell[2])].index);
  }
  if (plan.sites_filled) return;
  auto& sites = out.sites[sequence];
  for (std::size_t k = 0; k < plan.sites.size(); ++k)
    sites[k] = upper(row[plan.sites[k].first][static_cast<std::size_t>(plan.sites[k].second)]);
}

}  // namespace varnoth::divergence
