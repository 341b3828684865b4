#include "text/number_reading.h"

#include <charconv>
#include <string>

namespace varnoth::text {

namespace {

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// Length of the longest prefix of `s` that forms a number: sign, digits, one
// point, digits, and an exponent only where it has digits of its own.
size_t number_prefix(std::string_view s, char point) {
  size_t i = 0;
  if (i < s.size() && (s[i] == '+' || s[i] == '-')) ++i;
  size_t digits = 0;
  while (i < s.size() && is_digit(s[i])) ++i, ++digits;
  if (i < s.size() && s[i] == point) {
    ++i;
    while (i < s.size() && is_digit(s[i])) ++i, ++digits;
  }
  if (digits == 0) return 0;
  if (i < s.size() && (s[i] == 'E' || s[i] == 'e' || s[i] == 'D' || s[i] == 'd')) {
    size_t j = i + 1;
    if (j < s.size() && (s[j] == '+' || s[j] == '-')) ++j;
    size_t exp_digits = 0;
    while (j < s.size() && is_digit(s[j])) ++j, ++exp_digits;
    if (exp_digits > 0) i = j;
  }
  return i;
}

double parse(std::string_view s, char point) {
  size_t start = 0;
  while (start < s.size() && (s[start] == ' ' || s[start] == '\t')) ++start;
  s.remove_prefix(start);
  size_t len = number_prefix(s, point);
  if (len == 0) return 0;
  std::string normal(s.substr(0, len));
  for (char& c : normal) {
    if (c == point) c = '.';
    if (c == 'D' || c == 'd') c = 'E';
  }
  const char* first = normal.data();
  if (*first == '+') ++first;
  double value = 0;
  auto result = std::from_chars(first, normal.data() + normal.size(), value);
  if (result.ec != std::errc()) return 0;  // out of range: no number
  return value;
}

}  // namespace

double read_number(std::string_view text) { return parse(text, '.'); }

double read_comma_number(std::string_view text) {
  std::string without_groups;
  for (char c : text)
    if (c != '.') without_groups += c;
  return parse(without_groups, ',');
}

double read_field(std::string_view text) {
  return text.find(',') != std::string_view::npos ? read_comma_number(text) : read_number(text);
}

}  // namespace varnoth::text
