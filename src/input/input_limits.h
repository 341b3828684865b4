// The most a sequence file may hold. The counts are those the report
// "Input Sequence Information" can show in its 5 columns; the size, line and
// nucleotide bounds keep what a load holds in memory to a few times the size
// of the largest file, whatever the file's layout.
#pragma once

#include <cstddef>

namespace varnoth::input {

inline constexpr double kMaxSequences = 99999;
inline constexpr double kMaxPositions = 99999;
// Cells of three letters that 99,999 positions need, rounded up.
inline constexpr long kMaxCells = 33334;
// Sequences x positions, counted over the evened-out cells.
inline constexpr double kMaxNucleotides = 268435456;  // 2^28
inline constexpr std::size_t kMaxFileBytes = 268435456;  // 256 MiB
inline constexpr long kMaxLines = 16777216;  // 2^24

// Whether a byte belongs in a text file: printable, or one of tab, line feed,
// vertical tab, form feed, carriage return and the old end-of-file mark (26).
inline bool is_text_byte(unsigned char c) {
  return c >= 0x20 || (c >= 0x09 && c <= 0x0D) || c == 0x1A;
}

}  // namespace varnoth::input
