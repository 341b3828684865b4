// Writing numbers as text: format strings of digit placeholders, the padded
// report cell, and the plain form of a number written with no format.
#pragma once

#include <concepts>
#include <cstddef>
#include <string>
#include <string_view>

namespace varnoth::text {

// Formats `value` by a pattern of digit placeholders:
//  - "0" always prints a digit, "#" prints one only where the number has one
//    (a leading zero of the integer part or a trailing zero of the fraction is
//    not printed by "#");
//  - the first "." is the decimal point and is always printed;
//  - every other character, blanks included, is copied at its place;
//  - integer digits beyond the pattern's integer placeholders are all printed,
//    at the place of the leftmost one (a wide value widens the text);
//  - a negative value gets "-" directly in front of its first integer digit
//    (in front of the point when no integer digit is printed), also when it
//    rounds to zero: -0.00001 in "0.0000" is "-0.0000".
// The value is first written with 15 significant digits (7 for a float) and
// then rounded half away from zero on those decimal digits, so 2.675 in "0.00"
// is "2.68".
// A pattern read once: formatting many numbers with one pattern skips reading
// it each time. It refers to the pattern's text, which must outlive it.
struct Pattern {
  constexpr Pattern() = default;
  constexpr explicit Pattern(std::string_view pattern);
  static constexpr bool is_placeholder(char c) { return c == '0' || c == '#'; }

  std::string_view text;
  std::size_t point = 0;    // index of the decimal point, or the size when none
  int int_places = 0;       // placeholders before the point
  int int_forced = 0;       // integer digits always printed ("0" and all right of it)
  int frac_places = 0;      // placeholders after the point
  int frac_forced = 0;      // fraction digits always printed (up to the last "0")
  std::size_t literals = 0;
  // A compact pattern: up to 8 literals, integer placeholders up to the point,
  // the point, one to nine "0", up to 8 literals. Its text is the literals
  // around the digits.
  bool compact = false;
  std::size_t first_placeholder = 0;  // = the length of the leading literals
  std::size_t suffix_begin = 0;
  char prefix[8] = {};  // the leading literals
  char suffix[8] = {};  // the trailing literals
  std::size_t suffix_size = 0;
};

constexpr Pattern::Pattern(std::string_view pattern) : text(pattern) {
  point = pattern.find('.');
  if (point == std::string_view::npos) point = pattern.size();
  int first_zero = 0;  // 1-based ordinal of the leftmost integer "0", 0 when none
  for (std::size_t i = 0; i < point; ++i) {
    if (!is_placeholder(pattern[i])) continue;
    ++int_places;
    if (pattern[i] == '0' && first_zero == 0) first_zero = int_places;
  }
  // A "0" forces its own digit and every digit right of it.
  if (first_zero > 0) int_forced = int_places - first_zero + 1;
  for (std::size_t i = point + 1; i < pattern.size(); ++i) {
    if (!is_placeholder(pattern[i])) continue;
    ++frac_places;
    if (pattern[i] == '0') frac_forced = frac_places;
  }
  literals = pattern.size() - static_cast<std::size_t>(int_places + frac_places);

  std::size_t first = 0;
  while (first < point && !is_placeholder(pattern[first])) ++first;
  std::size_t after = point + 1;
  while (after < pattern.size() && pattern[after] == '0') ++after;
  bool is_compact = point < pattern.size() && first < point && after > point + 1 &&
                    after - point - 1 <= 9 && first <= 8 && pattern.size() - after <= 8;
  for (std::size_t i = first; is_compact && i < point; ++i) is_compact = is_placeholder(pattern[i]);
  for (std::size_t i = after; is_compact && i < pattern.size(); ++i)
    is_compact = !is_placeholder(pattern[i]);
  compact = is_compact;
  first_placeholder = first;
  suffix_begin = after;
  if (compact) {
    for (std::size_t i = 0; i < first; ++i) prefix[i] = pattern[i];
    suffix_size = pattern.size() - after;
    for (std::size_t i = 0; i < suffix_size; ++i) suffix[i] = pattern[after + i];
  }
}

std::string format(double value, std::string_view pattern);
std::string format(float value, std::string_view pattern);
void append_format(std::string& out, double value, std::string_view pattern);
void append_format(std::string& out, float value, std::string_view pattern);

void append_format(std::string& out, double value, const Pattern& pattern);
void append_format(std::string& out, float value, const Pattern& pattern);

// The report cell: the formatted text with blanks in front up to `width`
// characters. A longer text is never cut.
std::string cell(double value, std::string_view pattern, std::size_t width);
std::string cell(float value, std::string_view pattern, std::size_t width);
void append_cell(std::string& out, double value, std::string_view pattern, std::size_t width);
void append_cell(std::string& out, float value, std::string_view pattern, std::size_t width);
void append_cell(std::string& out, double value, const Pattern& pattern, std::size_t width);
void append_cell(std::string& out, float value, const Pattern& pattern, std::size_t width);

// append_cell written straight into a buffer where the pattern is compact and
// the value finite: `at` needs kCellRoom bytes of room, of which the cell's
// own length is kept. Returns the cell's end, or null where append_cell must
// write it (other patterns, non-finite values, very long cells).
inline constexpr std::size_t kCellRoom = 128;
char* write_cell(char* at, double value, const Pattern& pattern, std::size_t width);
char* write_cell(char* at, float value, const Pattern& pattern, std::size_t width);

// The plain form of a number: at most 15 significant digits for a double, 7 for
// a float, trailing zeros dropped, no point for whole numbers ("12"), a zero in
// front of the point ("0.5", "-0.25"). Exponent form ("1E-05", "1.5E+20", an
// exponent of at least two digits with its sign) when the decimal exponent is
// below -4 or at least the digit count (15, or 7 for a float). Never "-0".
std::string plain(double value);
std::string plain(float value);
void append_plain(std::string& out, double value);
void append_plain(std::string& out, float value);

// Whole numbers are written exactly, all digits.
std::string plain(long long value);
void append_plain(std::string& out, long long value);

// A plain whole number with blanks in front up to `width` characters, never
// cut: right-aligns counts in a fixed column.
std::string right_aligned(long long value, std::size_t width);
void append_right_aligned(std::string& out, long long value, std::size_t width);

// Integer arguments: without these an int would match the double and the float
// forms equally well. Formats go through double (exact up to 2^53).
template <std::integral T>
std::string format(T value, std::string_view pattern) {
  return format(static_cast<double>(value), pattern);
}
template <std::integral T>
void append_format(std::string& out, T value, std::string_view pattern) {
  append_format(out, static_cast<double>(value), pattern);
}
template <std::integral T>
std::string cell(T value, std::string_view pattern, std::size_t width) {
  return cell(static_cast<double>(value), pattern, width);
}
template <std::integral T>
void append_cell(std::string& out, T value, std::string_view pattern, std::size_t width) {
  append_cell(out, static_cast<double>(value), pattern, width);
}
template <std::integral T>
std::string plain(T value) {
  return plain(static_cast<long long>(value));
}
template <std::integral T>
void append_plain(std::string& out, T value) {
  append_plain(out, static_cast<long long>(value));
}

}  // namespace varnoth::text
