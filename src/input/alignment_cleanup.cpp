#include "input/alignment_cleanup.h"

#include <array>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "input/line_list.h"

namespace varnoth::input {

namespace {

// A letter is valid if it is A, G, C or T in either case; the table gives its
// upper case, or 0 for anything else.
constexpr std::array<char, 256> kValidUpper = [] {
  std::array<char, 256> table{};
  for (char c : {'A', 'G', 'C', 'T'}) {
    table[static_cast<unsigned char>(c)] = c;
    table[static_cast<unsigned char>(c - 'A' + 'a')] = c;
  }
  return table;
}();

char valid_upper(char c) { return kValidUpper[static_cast<unsigned char>(c)]; }

// Whether all `n` letters are A, G, C or T in upper case, as most aligned
// sequences are: such a row needs no marks and its letters are copied as
// they stand.
bool all_upper_bases(const char* p, std::size_t n) {
  std::size_t i = 0;
#if defined(__SSE2__)
  const __m128i a = _mm_set1_epi8('A'), c = _mm_set1_epi8('C');
  const __m128i g = _mm_set1_epi8('G'), t = _mm_set1_epi8('T');
  for (; i + 16 <= n; i += 16) {
    const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i));
    const __m128i base = _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(x, a), _mm_cmpeq_epi8(x, c)),
                                      _mm_or_si128(_mm_cmpeq_epi8(x, g), _mm_cmpeq_epi8(x, t)));
    if (_mm_movemask_epi8(base) != 0xFFFF) return false;
  }
#endif
  for (; i < n; ++i)
    if (p[i] != 'A' && p[i] != 'C' && p[i] != 'G' && p[i] != 'T') return false;
  return true;
}

// A "." in sequences 2 on stands for sequence 1's letter at that place; a dot
// in sequence 1 stays and later removes its column.
void resolve_identity_dots(std::vector<std::vector<CodonCell>>& rows) {
  if (rows.empty()) return;
  const auto& first = rows[0];
  for (size_t i = 1; i < rows.size(); ++i) {
    if (rows[i].empty() || std::memchr(rows[i].data(), '.', 3 * rows[i].size()) == nullptr)
      continue;
    for (size_t c = 0; c < rows[i].size(); ++c)
      for (size_t k = 0; k < 3; ++k)
        if (rows[i][c][k] == '.') rows[i][c][k] = first[c][k];
  }
}

}  // namespace

InputStatus clean_alignment(SequenceData& seq, long cell_count) {
  const long long count = whole_count(seq.SeqCount);
  const size_t rows = count > 0 ? static_cast<size_t>(count) : 0;
  const size_t cells = cell_count > 0 ? static_cast<size_t>(cell_count) : 0;
  seq.SeqCodons.resize(rows);
  seq.SeqNames.resize(rows);
  for (auto& row : seq.SeqCodons) row.resize(cells, CodonCell{' ', ' ', ' '});
  resolve_identity_dots(seq.SeqCodons);

  seq.CodonCellCount = static_cast<float>(cell_count);
  if (seq.SeqCount <= 0 || seq.SeqLength <= 0 || cell_count <= 0)
    return input_failure(InputProblem::FormatError);
  seq.SequenceLoaded = 1;

  // Complete deletion: a cell gives a clean codon only if every sequence has
  // a valid letter at all three places, and each place gives a clean site only
  // if every sequence has a valid letter there.
  // Bits 0-2 of a cell's mark: that place holds an invalid letter somewhere.
  static_assert(sizeof(CodonCell) == 3);
  std::vector<unsigned char> invalid(cells, 0);
  std::vector<bool> plain(rows);
  for (size_t i = 0; i < rows; ++i) {
    const CodonCell* cell = seq.SeqCodons[i].data();
    plain[i] = all_upper_bases(reinterpret_cast<const char*>(cell), 3 * cells);
    if (plain[i]) continue;
    for (size_t c = 0; c < cells; ++c)
      invalid[c] |= static_cast<unsigned char>((valid_upper(cell[c][0]) == 0) |
                                               (valid_upper(cell[c][1]) == 0) << 1 |
                                               (valid_upper(cell[c][2]) == 0) << 2);
  }
  long codons = 0, sites = 0;
  for (unsigned char mark : invalid) {
    if (mark == 0) ++codons;
    for (size_t k = 0; k < 3; ++k)
      if ((mark >> k & 1u) == 0) ++sites;
  }

  seq.CleanCodons.assign(rows, {});
  seq.CleanSites.assign(rows, {});
  for (size_t i = 0; i < rows; ++i) {
    const CodonCell* cell = seq.SeqCodons[i].data();
    auto& clean_codons = seq.CleanCodons[i];
    auto& clean_sites = seq.CleanSites[i];
    if (plain[i] && static_cast<size_t>(codons) == cells) {
      // Nothing left out and nothing to change: the letters as they stand.
      clean_codons.assign(cell, cell + cells);
      clean_sites.assign(reinterpret_cast<const char*>(cell), 3 * cells);
      continue;
    }
    clean_codons.resize(static_cast<size_t>(codons));
    clean_sites.resize(static_cast<size_t>(sites));
    CodonCell* codon = clean_codons.data();
    char* site = clean_sites.data();
    for (size_t c = 0; c < cells; ++c) {
      const CodonCell upper{valid_upper(cell[c][0]), valid_upper(cell[c][1]),
                            valid_upper(cell[c][2])};
      const unsigned mark = invalid[c];
      if (mark == 0) {
        *codon++ = upper;
        site[0] = upper[0];
        site[1] = upper[1];
        site[2] = upper[2];
        site += 3;
        continue;
      }
      for (size_t k = 0; k < 3; ++k)
        if ((mark >> k & 1u) == 0) *site++ = upper[k];
    }
  }
  seq.CodonCount = codons;
  seq.NucleotideCount = sites;
  seq.CleanCodonTotal = codons;
  seq.SeqCountCopy = seq.SeqCount;
  seq.PairCount = seq.SeqCount * (seq.SeqCount - 1) / 2;
  return {};
}

}  // namespace varnoth::input
