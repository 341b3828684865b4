#include "text/number_format.h"

#include <charconv>
#include <cmath>
#include <cstring>

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

bool is_placeholder(char c) { return c == '0' || c == '#'; }

// What a pattern asks for, read once per call.
struct Layout {
  std::size_t point;       // index of the decimal point, or the size when none
  int int_places = 0;      // placeholders before the point
  int int_forced = 0;      // integer digits that are always printed ("0" and all right of it)
  int frac_places = 0;     // placeholders after the point
  int frac_forced = 0;     // fraction digits always printed (up to the last "0")
  std::size_t literals = 0;
};

Layout scan(std::string_view pattern) {
  Layout l;
  l.point = pattern.find('.');
  if (l.point == std::string_view::npos) l.point = pattern.size();
  int first_zero = 0;  // 1-based ordinal of the leftmost integer "0", 0 when none
  for (std::size_t i = 0; i < l.point; ++i) {
    if (!is_placeholder(pattern[i])) continue;
    ++l.int_places;
    if (pattern[i] == '0' && first_zero == 0) first_zero = l.int_places;
  }
  // A "0" forces its own digit and every digit right of it.
  if (first_zero > 0) l.int_forced = l.int_places - first_zero + 1;
  for (std::size_t i = l.point + 1; i < pattern.size(); ++i) {
    if (!is_placeholder(pattern[i])) continue;
    ++l.frac_places;
    if (pattern[i] == '0') l.frac_forced = l.frac_places;
  }
  l.literals = pattern.size() - static_cast<std::size_t>(l.int_places + l.frac_places);
  return l;
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
void append_formatted(std::string& out, Real value, std::string_view pattern, int significant,
                      std::size_t width) {
  if (!std::isfinite(value)) {
    std::string_view t = non_finite(value);
    if (t.size() < width) out.append(width - t.size(), ' ');
    out.append(t);
    return;
  }
  Layout l = scan(pattern);
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
  append_formatted(out, value, pattern, kDoubleDigits, 0);
}

void append_format(std::string& out, float value, std::string_view pattern) {
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
  append_formatted(out, value, pattern, kDoubleDigits, width);
}

void append_cell(std::string& out, float value, std::string_view pattern, std::size_t width) {
  append_formatted(out, value, pattern, kFloatDigits, width);
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
