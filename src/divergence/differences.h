// A fast walk over the columns where two sequences differ: most columns of
// real alignments agree, so many of them are compared at a time.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace varnoth::divergence {

#if defined(__SSE2__)
// The mask of the 64 columns from `a` and `b` where the letters are equal.
inline std::uint64_t equal_mask(const std::uint8_t* a, const std::uint8_t* b) {
  std::uint64_t equal = 0;
  for (int k = 0; k < 4; ++k) {
    const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(a + 16 * k));
    const __m128i y = _mm_loadu_si128(reinterpret_cast<const __m128i*>(b + 16 * k));
    const auto same = static_cast<std::uint16_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(x, y)));
    equal |= static_cast<std::uint64_t>(same) << (16 * k);
  }
  return equal;
}
#endif

// Calls fn(i) for every index i below `count` where a[i] != b[i], in
// increasing order. Sixty-four columns are compared at a time into a mask
// whose set bits are then read off: one branch the processor cannot foresee
// per 64 columns, not one per differing column.
template <typename Fn>
inline void for_each_difference(const std::uint8_t* a, const std::uint8_t* b, std::size_t count,
                                Fn&& fn) {
  std::size_t i = 0;
#if defined(__SSE2__)
  const auto each_bit = [&](std::uint64_t d, std::size_t base) {
    for (; d != 0; d &= d - 1) fn(base + static_cast<std::size_t>(std::countr_zero(d)));
  };
  for (; i + 64 <= count; i += 64) each_bit(~equal_mask(a + i, b + i), i);
  if (i < count) {
    // The last columns, copied into equal padding: a test per column would
    // cost a mispredicted branch at every difference.
    std::uint8_t x[64] = {}, y[64] = {};
    std::memcpy(x, a + i, count - i);
    std::memcpy(y, b + i, count - i);
    each_bit(~equal_mask(x, y), i);
  }
#else
  for (; i < count; ++i)
    if (a[i] != b[i]) fn(i);
#endif
}

}  // namespace varnoth::divergence
