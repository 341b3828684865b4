#include "input/line_list.h"

#include <algorithm>
#include <cmath>

namespace varnoth::input {

LineList::LineList(std::string_view bytes) {
  const char* p = bytes.data();
  const char* end = p + bytes.size();
  while (p < end) {
    const char* stop = p;
    while (stop < end && *stop != '\r' && *stop != '\n') ++stop;
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
    while (p < end && *p != '\r' && *p != '\n') ++p;
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
