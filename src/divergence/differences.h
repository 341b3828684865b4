// A fast walk over the columns where two sequences differ: most columns of
// real alignments agree, so many of them are compared at a time.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace varnoth::divergence {

// Calls fn(i) for every index i below `count` where a[i] != b[i], in
// increasing order. Sixty-four columns are compared at a time into a mask
// whose set bits are then read off: one branch the processor cannot foresee
// per 64 columns, not one per differing column.
template <typename Fn>
inline void for_each_difference(const std::uint8_t* a, const std::uint8_t* b, std::size_t count,
                                Fn&& fn) {
  std::size_t i = 0;
#if defined(__SSE2__)
  for (; i + 64 <= count; i += 64) {
    std::uint64_t equal = 0;
    for (int k = 0; k < 4; ++k) {
      const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(a + i + 16 * k));
      const __m128i y = _mm_loadu_si128(reinterpret_cast<const __m128i*>(b + i + 16 * k));
      const auto same = static_cast<std::uint16_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(x, y)));
      equal |= static_cast<std::uint64_t>(same) << (16 * k);
    }
    for (std::uint64_t d = ~equal; d != 0; d &= d - 1)
      fn(i + static_cast<std::size_t>(std::countr_zero(d)));
  }
#endif
  for (; i < count; ++i)
    if (a[i] != b[i]) fn(i);
}

}  // namespace varnoth::divergence
