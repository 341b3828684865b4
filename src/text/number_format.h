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
std::string format(double value, std::string_view pattern);
std::string format(float value, std::string_view pattern);
void append_format(std::string& out, double value, std::string_view pattern);
void append_format(std::string& out, float value, std::string_view pattern);

// The report cell: the formatted text with blanks in front up to `width`
// characters. A longer text is never cut.
std::string cell(double value, std::string_view pattern, std::size_t width);
std::string cell(float value, std::string_view pattern, std::size_t width);
void append_cell(std::string& out, double value, std::string_view pattern, std::size_t width);
void append_cell(std::string& out, float value, std::string_view pattern, std::size_t width);

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
