#include "input/line_list.h"

#include <algorithm>
#include <bit>
#include <cmath>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "input/input_limits.h"

namespace varnoth::input {

namespace {

// The first CR or LF from p on, or `end`; sixteen bytes are looked at a time.
const char* line_end(const char* p, const char* end) {
#if defined(__SSE2__)
  const __m128i cr = _mm_set1_epi8('\r'), lf = _mm_set1_epi8('\n');
  for (; end - p >= 16; p += 16) {
    const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    const auto hits = static_cast<unsigned>(
        _mm_movemask_epi8(_mm_or_si128(_mm_cmpeq_epi8(x, cr), _mm_cmpeq_epi8(x, lf))));
    if (hits != 0) return p + std::countr_zero(hits);
  }
#endif
  while (p < end && *p != '\r' && *p != '\n') ++p;
  return p;
}

}  // namespace

std::size_t find_non_text(std::string_view bytes, std::size_t from) {
  std::size_t i = from;
#if defined(__SSE2__)
  // Bytes from 0x20 on are text; the few below it (line ends, tabs) are
  // looked at one by one.
  const __m128i space = _mm_set1_epi8(0x20);
  for (; i + 16 <= bytes.size(); i += 16) {
    const __m128i x = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes.data() + i));
    const __m128i printable = _mm_cmpeq_epi8(_mm_max_epu8(x, space), x);
    for (auto low = ~static_cast<unsigned>(_mm_movemask_epi8(printable)) & 0xFFFFu; low != 0;
         low &= low - 1) {
      const std::size_t at = i + static_cast<std::size_t>(std::countr_zero(low));
      if (!is_text_byte(static_cast<unsigned char>(bytes[at]))) return at;
    }
  }
#endif
  for (; i < bytes.size(); ++i)
    if (!is_text_byte(static_cast<unsigned char>(bytes[i]))) return i;
  return std::string_view::npos;
}

LineList::LineList(std::string_view bytes) {
  const char* p = bytes.data();
  const char* end = p + bytes.size();
  while (p < end) {
    const char* stop = line_end(p, end);
    lines_.emplace_back(p, static_cast<size_t>(stop - p));
    if (stop == end) break;
    p = stop + 1;
    if (*stop == '\r' && p < end && *p == '\n') ++p;
  }
}

long count_lines(std::string_view bytes) {
  long count = 0;
  const char* p = bytes.data();
  const char* end = p + bytes.size();
  while (p < end) {
    ++count;
    p = line_end(p, end);
    if (p == end) break;
    if (*p++ == '\r' && p < end && *p == '\n') ++p;
  }
  return count;
}

std::string_view first_line(std::string_view bytes) {
  return bytes.substr(0, std::min(bytes.find('\r'), bytes.find('\n')));
}

bool LinePass::next(std::string_view& line) {
  if (at_end()) return false;
  line = lines_[next_++];
  return true;
}

bool LinePass::skip(long count) {
  std::string_view ignored;
  for (long i = 0; i < count; ++i)
    if (!next(ignored)) return false;
  return true;
}

std::string_view columns(std::string_view line, long first, long count) {
  if (first < 1) first = 1;
  auto start = static_cast<size_t>(first - 1);
  if (start >= line.size()) return {};
  if (count < 0) return line.substr(start);
  return line.substr(start, static_cast<size_t>(count));
}

bool is_blank_line(std::string_view line) {
  for (char c : line)
    if (!is_blank(c)) return false;
  return true;
}

long count_letters(std::string_view text) {
  long n = 0;
  for (char c : text)
    if (!is_blank(c)) ++n;
  return n;
}

bool has_letter(std::string_view text) { return count_letters(text) > 0; }

long long whole_count(double value) {
  constexpr double kLimit = 4.0e18;
  if (!(value > -kLimit)) return static_cast<long long>(-kLimit);
  if (value > kLimit) return static_cast<long long>(kLimit);
  return static_cast<long long>(std::floor(value));
}

}  // namespace varnoth::input
