// A fast walk over the columns where two sequences differ: most columns of
// real alignments agree, so eight of them are compared at a time.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace varnoth::divergence {

// Calls fn(i) for every index i below `count` where a[i] != b[i], in increasing
// order, until fn returns false. Returns false when fn stopped the walk.
template <typename Fn>
inline bool for_each_difference(const std::uint8_t* a, const std::uint8_t* b, std::size_t count,
                                Fn&& fn) {
  std::size_t i = 0;
  if constexpr (std::endian::native == std::endian::little) {
    for (; i + 8 <= count; i += 8) {
      std::uint64_t x, y;
      std::memcpy(&x, a + i, 8);
      std::memcpy(&y, b + i, 8);
      std::uint64_t d = x ^ y;
      while (d != 0) {
        const int bit = std::countr_zero(d);
        if (!fn(i + static_cast<std::size_t>(bit / 8))) return false;
        d &= ~(std::uint64_t{0xFF} << (bit & ~7));
      }
    }
  }
  for (; i < count; ++i)
    if (a[i] != b[i] && !fn(i)) return false;
  return true;
}

}  // namespace varnoth::divergence
