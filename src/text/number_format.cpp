#include "text/number_format.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

namespace varnoth::text {

namespace {

constexpr int kDoubleDigits = 15;
constexpr int kFloatDigits = 7;

// A finite magnitude as decimal digits: digit[0] stands at the place 10^exp,
// digit[i] at 10^(exp - i). No trailing zeros; count 0 means zero.
struct Decimal {
  char digit[kDoubleDigits + 2];
  int count = 0;
  int exp = 0;
  bool negative = false;

  int at(int place) const {  // the digit at the place 10^place
    int i = exp - place;
    return i >= 0 && i < count ? digit[i] - '0' : 0;
  }
  void drop_trailing_zeros() {
    while (count > 0 && digit[count - 1] == '0') --count;
  }
};

// Writes |value| with `significant` digits (correctly rounded from the binary
// value), the way the number is first turned into text before any format.
template <class Real>
void to_decimal(Real value, int significant, Decimal& d) {
  d.negative = value < 0;
  d.count = 0;
  d.exp = 0;
  if (value == 0) return;
  char buf[64];
  auto res = std::to_chars(buf, buf + sizeof buf, std::fabs(value), std::chars_format::scientific,
                           significant - 1);
  // buf holds "d.ddd...e+XX" (or "de+XX" with one digit).
  const char* p = buf;
  d.digit[d.count++] = *p++;
  if (*p == '.') {
    ++p;
    while (*p != 'e') d.digit[d.count++] = *p++;
  }
  ++p;  // 'e'
  std::from_chars(*p == '+' ? p + 1 : p, res.ptr, d.exp);
  d.drop_trailing_zeros();
}

// Rounds half away from zero to `decimals` digits after the point, on the
// decimal digits only: the first dropped digit decides.
void round_to(Decimal& d, int decimals) {
  int last = d.exp + decimals;  // index of the last digit kept
  if (d.count == 0 || last >= d.count - 1) return;
  if (last < -1) {
    d.count = 0;
    return;
  }
  if (last == -1) {
    if (d.digit[0] >= '5') {
      d.digit[0] = '1';
      d.count = 1;
      ++d.exp;
    } else {
      d.count = 0;
    }
    return;
  }
  bool up = d.digit[last + 1] >= '5';
  d.count = last + 1;
  if (up) {
    int i = last;
    while (i >= 0 && d.digit[i] == '9') d.digit[i--] = '0';
    if (i >= 0) {
      ++d.digit[i];
    } else {  // all nines: 99.99 -> 100.00
      d.digit[0] = '1';
      ++d.exp;
    }
  }
  d.drop_trailing_zeros();
}

using Layout = Pattern;

constexpr bool is_placeholder(char c) { return Pattern::is_placeholder(c); }

// The layouts of the last patterns used on this thread: a report uses a
// handful of patterns over and over.
const Layout& layout_of(std::string_view pattern) {
  struct Entry {
    char text[24];
    std::size_t size = 0;
    Layout layout;
  };
  constexpr int kEntries = 8;
  thread_local Entry entries[kEntries];
  thread_local int next = 0;
  thread_local Layout uncached;
  if (pattern.size() > sizeof Entry::text) {
    uncached = Pattern(pattern);
    return uncached;
  }
  for (Entry& e : entries)
    if (e.size == pattern.size() && e.size > 0 && std::memcmp(e.text, pattern.data(), e.size) == 0)
      return e.layout;
  Entry& e = entries[next];
  next = (next + 1) % kEntries;
  std::memcpy(e.text, pattern.data(), pattern.size());
  e.size = pattern.size();
  e.layout = Pattern(std::string_view(e.text, e.size));
  return e.layout;
}

__extension__ typedef unsigned __int128 u128;  // GCC and clang

constexpr std::uint64_t kPow10[20] = {1ULL,
                                      10ULL,
                                      100ULL,
                                      1000ULL,
                                      10000ULL,
                                      100000ULL,
                                      1000000ULL,
                                      10000000ULL,
                                      100000000ULL,
                                      1000000000ULL,
                                      10000000000ULL,
                                      100000000000ULL,
                                      1000000000000ULL,
                                      10000000000000ULL,
                                      100000000000000ULL,
                                      1000000000000000ULL,
                                      10000000000000000ULL,
                                      100000000000000000ULL,
                                      1000000000000000000ULL,
                                      10000000000000000000ULL};

// |value| x 10^decimals as the generic path rounds it (the value first written
// with `significant` digits, correctly rounded with ties to even as to_chars
// does, then rounded half up on those digits), worked out exactly in integers.
// Only for 1e-4 <= |value| below 10^(significant - 1); false elsewhere.
template <class Real>
bool scaled_digits(Real magnitude, int significant, int decimals, std::uint64_t& scaled) {
  // magnitude = m / 2^shift, m with the hidden bit; subnormals are left out.
  std::uint64_t m;
  int shift;
  if constexpr (sizeof(Real) == 8) {
    const auto bits = std::bit_cast<std::uint64_t>(magnitude);
    const int biased = static_cast<int>(bits >> 52);
    if (biased == 0) return false;
    m = (bits & ((std::uint64_t{1} << 52) - 1)) | (std::uint64_t{1} << 52);
    shift = 1075 - biased;
  } else {
    const auto bits = std::bit_cast<std::uint32_t>(magnitude);
    const int biased = static_cast<int>(bits >> 23);
    if (biased == 0) return false;
    m = (bits & ((std::uint32_t{1} << 23) - 1)) | (std::uint32_t{1} << 23);
    shift = 150 - biased;
  }
  if (shift < 0 || shift > 100) return false;
  const int exp2 = std::numeric_limits<Real>::digits - shift;  // magnitude in [2^(exp2-1), 2^exp2)
  // Decimal exponent: within one of log10(2) x (exp2 - 1), set right below
  // (78913 / 2^18 is log10(2) to six digits; >> rounds down).
  int e = ((exp2 - 1) * 78913) >> 18;
  std::uint64_t digits = 0;  // the `significant` digits, digits x 10^(e - significant + 1)
  for (int attempt = 0; attempt < 3; ++attempt) {
    const int s = significant - 1 - e;
    if (s < 0 || s > 18) return false;
    const u128 product = static_cast<u128>(m) * kPow10[s];
    u128 q = shift == 0 ? product : product >> shift;
    if (shift > 0) {
      const u128 rest = product - (q << shift);
      const u128 half = static_cast<u128>(1) << (shift - 1);
      if (rest > half || (rest == half && (q & 1) != 0)) ++q;
    }
    if (q >= kPow10[significant]) {
      // Too many digits: either the exponent is one too small, or the rounding
      // carried into 10^significant, which one place up reads alike.
      ++e;
    } else if (q < kPow10[significant - 1]) {
      --e;
    } else {
      digits = static_cast<std::uint64_t>(q);
      break;
    }
  }
  if (digits == 0 || e < -4 || e >= significant - 1) return false;
  // Digits after the point in `digits`, and how many of them go.
  const int dropped = significant - 1 - e - decimals;
  if (dropped <= 0) {
    if (-dropped > 18 - significant) return false;
    scaled = digits * kPow10[-dropped];
  } else {
    scaled = (digits + 5 * kPow10[dropped - 1]) / kPow10[dropped];
  }
  return true;
}

// The compact patterns: the integer part, all digits of it and at least the
// forced ones, the point and the fraction. False where the generic path must
// write it.
constexpr char kDigitPairs[] =
    "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
    "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
    "8081828384858687888990919293949596979899";

// Writes at `text`, which has kCellRoom bytes of room; returns the end, or
// null where the generic path must write the number.
template <class Real>
char* write_compact(char* text, Real value, const Layout& l, int significant, std::size_t width) {
  std::uint64_t scaled = 0;
  const Real magnitude = value < 0 ? -value : value;
  bool done = false;
  if (sizeof(Real) == 8 && magnitude < Real(1e4) && l.frac_places <= 5) {
    // Away from a half of the last place, the 15-digit form and the value
    // itself round to the same digits: below 1e4 the 15-digit form moves the
    // value by at most 5e-7 of the last place, the product by 1.2e-7 more.
    const double x = static_cast<double>(magnitude) * static_cast<double>(kPow10[l.frac_places]);
    const double whole = std::floor(x);
    const double rest = x - whole;
    if (rest < 0.49999 || rest > 0.50001) {
      scaled = static_cast<std::uint64_t>(whole) + (rest > 0.5 ? 1 : 0);
      done = true;
    }
  }
  if (!done && magnitude != 0 && !scaled_digits(magnitude, significant, l.frac_places, scaled))
    return nullptr;
  const std::uint64_t unit = kPow10[l.frac_places];
  std::uint64_t whole = scaled / unit, fraction = scaled % unit;
  // The integer digits, right to left.
  char int_digits[44];  // digits end at 24: a copy of 20 from their start stays inside
  char* const int_end = int_digits + 24;
  char* int_begin = int_end;
  for (; whole != 0; whole /= 10) *--int_begin = static_cast<char>('0' + whole % 10);
  const auto own = static_cast<std::size_t>(int_end - int_begin);
  const auto forced = static_cast<std::size_t>(l.int_forced);
  const std::size_t shown = own > forced ? own : forced;
  const bool negative = value < 0;
  const auto decimals = static_cast<std::size_t>(l.frac_places);
  const std::size_t length =
      l.first_placeholder + (negative ? 1 : 0) + shown + 1 + decimals + l.suffix_size;
  const std::size_t pad = length < width ? width - length : 0;
  if (pad > 32 || shown > 20) return nullptr;
  // Fixed-size copies: each part then advances by its length.
  std::memset(text, ' ', 32);
  char* p = text + pad;
  std::memcpy(p, l.prefix, 8);
  p += l.first_placeholder;
  *p = '-';
  p += negative ? 1 : 0;
  std::memset(p, '0', 20);
  p += shown - own;
  std::memcpy(p, int_begin, 20);
  p += own;
  *p++ = '.';
  char* digit = p + decimals;
  for (; fraction >= 10; fraction /= 100) {
    digit -= 2;
    std::memcpy(digit, kDigitPairs + 2 * (fraction % 100), 2);
  }
  while (digit > p) {  // one digit left, or leading zeros
    *--digit = static_cast<char>('0' + fraction % 10);
    fraction /= 10;
  }
  p += decimals;
  std::memcpy(p, l.suffix, 8);
  return p + l.suffix_size;
}

// The text of a non-finite value, as the classic runtime writes it.
std::string_view non_finite(double value) {
  if (std::isnan(value)) return "-1.#IND";
  return value < 0 ? "-1.#INF" : "1.#INF";
}

// The digits that a rounded number prints under a layout.
struct Shape {
  int int_digits;   // integer digits printed
  int frac_digits;  // fraction digits printed
  std::size_t length;
};

Shape shape_of(const Decimal& d, const Layout& l) {
  Shape s;
  int own_int = d.count > 0 && d.exp >= 0 ? d.exp + 1 : 0;
  s.int_digits = own_int > l.int_forced ? own_int : l.int_forced;
  int last_nonzero = d.count > 0 ? d.count - 1 - d.exp : 0;  // places after the point
  if (last_nonzero < 0) last_nonzero = 0;
  s.frac_digits = last_nonzero > l.frac_forced ? last_nonzero : l.frac_forced;
  s.length = l.literals + static_cast<std::size_t>(s.int_digits + s.frac_digits) + (d.negative ? 1 : 0);
  return s;
}

// Writes exactly s.length characters at `out`.
void write(char* out, const Decimal& d, const Layout& l, const Shape& s, std::string_view pattern) {
  bool sign = d.negative;
  auto put_sign = [&] {
    if (sign) *out++ = '-', sign = false;
  };
  auto put_int = [&](int place) {
    put_sign();
    *out++ = static_cast<char>('0' + d.at(place));
  };
  int ordinal = 0;
  for (std::size_t i = 0; i < l.point; ++i) {
    char c = pattern[i];
    if (!is_placeholder(c)) {
      *out++ = c;
      continue;
    }
    int place = l.int_places - 1 - ordinal;
    if (ordinal == 0)
      for (int extra = s.int_digits - 1; extra >= l.int_places; --extra) put_int(extra);
    if (place < s.int_digits) put_int(place);
    if (++ordinal == l.int_places) put_sign();
  }
  if (l.int_places == 0)
    for (int place = s.int_digits - 1; place >= 0; --place) put_int(place);
  put_sign();
  if (l.point == pattern.size()) return;
  *out++ = '.';
  int q = 0;
  for (std::size_t i = l.point + 1; i < pattern.size(); ++i) {
    char c = pattern[i];
    if (!is_placeholder(c)) {
      *out++ = c;
    } else if (++q <= s.frac_digits) {
      *out++ = static_cast<char>('0' + d.at(-q));
    }
  }
}

template <class Real>
void append_formatted(std::string& out, Real value, const Pattern& l, int significant,
                      std::size_t width) {
  if (!std::isfinite(value)) {
    std::string_view t = non_finite(value);
    if (t.size() < width) out.append(width - t.size(), ' ');
    out.append(t);
    return;
  }
  const std::string_view pattern = l.text;
  char text[kCellRoom];
  if (char* end = write_cell(text, value, l, width)) {
    out.append(text, end);
    return;
  }
  Decimal d;
  to_decimal(value, significant, d);
  round_to(d, l.frac_places);
  Shape s = shape_of(d, l);
  std::size_t pad = s.length < width ? width - s.length : 0;
  std::size_t at = out.size();
  out.resize(at + pad + s.length);
  char* p = out.data() + at;
  std::memset(p, ' ', pad);
  write(p + pad, d, l, s, pattern);
}

// The plain form: %G with `significant` digits, exponent of two digits or more.
template <class Real>
void append_plain_form(std::string& out, Real value, int significant) {
  if (!std::isfinite(value)) {
    out.append(non_finite(value));
    return;
  }
  // A whole number below 10^significant has all its digits written as they are.
  const Real limit = significant == kDoubleDigits ? Real(1e15) : Real(1e7);
  if (value > -limit && value < limit && value == std::trunc(value)) {
    char digits[24];
    out.append(digits, std::to_chars(digits, digits + sizeof digits,
                                     static_cast<long long>(value)).ptr);
    return;
  }
  Decimal d;
  to_decimal(value, significant, d);
  if (d.count == 0) {
    out.push_back('0');
    return;
  }
  char buf[48];
  char* p = buf;
  if (d.negative) *p++ = '-';
  if (d.exp < -4 || d.exp >= significant) {
    *p++ = d.digit[0];
    if (d.count > 1) {
      *p++ = '.';
      for (int i = 1; i < d.count; ++i) *p++ = d.digit[i];
    }
    *p++ = 'E';
    *p++ = d.exp < 0 ? '-' : '+';
    int e = d.exp < 0 ? -d.exp : d.exp;
    if (e < 10) *p++ = '0';
    p = std::to_chars(p, buf + sizeof buf, e).ptr;
  } else if (d.exp < 0) {
    *p++ = '0';
    *p++ = '.';
    for (int i = -1; i > d.exp; --i) *p++ = '0';
    for (int i = 0; i < d.count; ++i) *p++ = d.digit[i];
  } else {
    for (int place = d.exp; place >= 0; --place) *p++ = static_cast<char>('0' + d.at(place));
    if (d.count > d.exp + 1) {
      *p++ = '.';
      for (int i = d.exp + 1; i < d.count; ++i) *p++ = d.digit[i];
    }
  }
  out.append(buf, p);
}

}  // namespace

void append_format(std::string& out, double value, std::string_view pattern) {
  append_formatted(out, value, layout_of(pattern), kDoubleDigits, 0);
}

void append_format(std::string& out, float value, std::string_view pattern) {
  append_formatted(out, value, layout_of(pattern), kFloatDigits, 0);
}

void append_format(std::string& out, double value, const Pattern& pattern) {
  append_formatted(out, value, pattern, kDoubleDigits, 0);
}

void append_format(std::string& out, float value, const Pattern& pattern) {
  append_formatted(out, value, pattern, kFloatDigits, 0);
}

std::string format(double value, std::string_view pattern) {
  std::string s;
  append_format(s, value, pattern);
  return s;
}

std::string format(float value, std::string_view pattern) {
  std::string s;
  append_format(s, value, pattern);
  return s;
}

void append_cell(std::string& out, double value, std::string_view pattern, std::size_t width) {
  append_formatted(out, value, layout_of(pattern), kDoubleDigits, width);
}

void append_cell(std::string& out, float value, std::string_view pattern, std::size_t width) {
  append_formatted(out, value, layout_of(pattern), kFloatDigits, width);
}

void append_cell(std::string& out, double value, const Pattern& pattern, std::size_t width) {
  append_formatted(out, value, pattern, kDoubleDigits, width);
}

void append_cell(std::string& out, float value, const Pattern& pattern, std::size_t width) {
  append_formatted(out, value, pattern, kFloatDigits, width);
}

char* write_cell(char* at, double value, const Pattern& pattern, std::size_t width) {
  if (!pattern.compact || !std::isfinite(value)) return nullptr;
  return write_compact(at, value, pattern, kDoubleDigits, width);
}

char* write_cell(char* at, float value, const Pattern& pattern, std::size_t width) {
  if (!pattern.compact || !std::isfinite(value)) return nullptr;
  return write_compact(at, value, pattern, kFloatDigits, width);
}

std::string cell(double value, std::string_view pattern, std::size_t width) {
  std::string s;
  append_cell(s, value, pattern, width);
  return s;
}

std::string cell(float value, std::string_view pattern, std::size_t width) {
  std::string s;
  append_cell(s, value, pattern, width);
  return s;
}

void append_plain(std::string& out, double value) { append_plain_form(out, value, kDoubleDigits); }

void append_plain(std::string& out, float value) { append_plain_form(out, value, kFloatDigits); }

std::string plain(double value) {
  std::string s;
  append_plain(s, value);
  return s;
}

std::string plain(float value) {
  std::string s;
  append_plain(s, value);
  return s;
}

void append_plain(std::string& out, long long value) {
  char buf[24];
  out.append(buf, std::to_chars(buf, buf + sizeof buf, value).ptr);
}

std::string plain(long long value) {
  std::string s;
  append_plain(s, value);
  return s;
}

void append_right_aligned(std::string& out, long long value, std::size_t width) {
  char buf[24];
  char* end = std::to_chars(buf, buf + sizeof buf, value).ptr;
  auto len = static_cast<std::size_t>(end - buf);
  if (len < width) out.append(width - len, ' ');
  out.append(buf, end);
}

std::string right_aligned(long long value, std::size_t width) {
  std::string s;
  append_right_aligned(s, value, width);
  return s;
}

}  // namespace varnoth::text
