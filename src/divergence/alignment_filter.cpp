#include "divergence/alignment_filter.h"

#include <algorithm>
#include <cstring>

#include "divergence/genetic_code.h"

namespace varnoth::divergence {

namespace {

bool valid_letter(char c) {
  switch (c) {
    case 'A': case 'G': case 'C': case 'T':
    case 'a': case 'g': case 'c': case 't':
      return true;
    default:
      return false;
  }
}

char upper(char c) { return (c >= 'a' && c <= 'z') ? static_cast<char>(c - 32) : c; }

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

void filter_alignment(const SequenceData& seq, long sequences, const FilterRange& range,
                      bool coding, GeneticCode code, FilteredAlignment& out) {
  const auto n = static_cast<std::size_t>(std::max(0L, sequences));
  out.codons.resize(n);
  out.sites.resize(n);
  for (auto& c : out.codons) c.clear();
  for (auto& s : out.sites) s.clear();
  out.codon_cells.clear();
  out.site_cells.clear();
  if (n == 0) return;
  const long cells = static_cast<long>(seq.SeqCodons[0].size());
  const long last_cell = static_cast<long>(seq.CodonCellCount);
  const long first = std::max(1L, range.first_codon);
  const long last = std::min(range.last_codon, cells);

  for (long c = first; c <= last; ++c) {
    const auto ci = static_cast<std::size_t>(c - 1);
    bool position_ok[3] = {true, true, true};
    for (std::size_t s = 0; s < n; ++s) {
      const auto& row = seq.SeqCodons[s];
      if (ci >= row.size()) {
        position_ok[0] = position_ok[1] = position_ok[2] = false;
        break;
      }
      for (int p = 0; p < 3; ++p)
        if (!valid_letter(row[ci][p])) position_ok[p] = false;
    }
    const bool codon_ok = position_ok[0] && position_ok[1] && position_ok[2];
    bool dropped = false;
    if (codon_ok && coding && c == last_cell) {
      for (std::size_t s = 0; s < n && !dropped; ++s)
        dropped = terminal_stop(seq.SeqCodons[s][ci], code);
    }
    if (codon_ok && !dropped) {
      for (std::size_t s = 0; s < n; ++s) {
        const auto& cell = seq.SeqCodons[s][ci];
        const CodonCell up = {upper(cell[0]), upper(cell[1]), upper(cell[2])};
        out.codons[s].push_back(static_cast<std::uint8_t>(encode_codon(up)));
      }
      out.codon_cells.push_back(c);
    }
    if (!range.rebuild_sites) {
      for (int p = 0; p < 3; ++p) {
        if (!position_ok[p]) continue;
        for (std::size_t s = 0; s < n; ++s) out.sites[s].push_back(upper(seq.SeqCodons[s][ci][p]));
        out.site_cells.push_back(c);
      }
    }
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

}  // namespace varnoth::divergence
