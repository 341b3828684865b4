// The byte scans every load makes (text check, line ends) look at sixteen
// bytes at a time; they must find exactly what a byte-by-byte scan finds,
// wherever in a block of sixteen the byte stands and at the end of the text.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "input/input_limits.h"
#include "input/line_list.h"

namespace varnoth::input {
namespace {

std::size_t slow_find_non_text(std::string_view bytes, std::size_t from) {
  for (std::size_t i = from; i < bytes.size(); ++i)
    if (!is_text_byte(static_cast<unsigned char>(bytes[i]))) return i;
  return std::string_view::npos;
}

std::vector<std::string_view> slow_lines(std::string_view bytes) {
  std::vector<std::string_view> lines;
  std::size_t p = 0;
  while (p < bytes.size()) {
    std::size_t stop = p;
    while (stop < bytes.size() && bytes[stop] != '\r' && bytes[stop] != '\n') ++stop;
    lines.push_back(bytes.substr(p, stop - p));
    if (stop == bytes.size()) break;
    p = stop + 1;
    if (bytes[stop] == '\r' && p < bytes.size() && bytes[p] == '\n') ++p;
  }
  return lines;
}

TEST(LineScan, SixteenAtATimeFindsWhatOneByOneFinds) {
  std::mt19937 rng(7);
  // Letters mostly; line ends, tabs, bytes above 0x7F and, now and then, a
  // byte no text holds.
  const std::string common = "ACGTacgt-? \r\n\r\n\t\xC3\x1A";
  for (int trial = 0; trial < 3000; ++trial) {
    const std::size_t length = rng() % 80;
    std::string bytes;
    for (std::size_t i = 0; i < length; ++i) {
      const unsigned r = rng() % 200;
      bytes += r == 0 ? static_cast<char>(rng() % 9) : common[rng() % common.size()];
    }
    const std::size_t from = length == 0 ? 0 : rng() % (length + 1);
    ASSERT_EQ(find_non_text(bytes, from), slow_find_non_text(bytes, from)) << trial;
    const std::vector<std::string_view> expected = slow_lines(bytes);
    ASSERT_EQ(count_lines(bytes), static_cast<long>(expected.size())) << trial;
    const LineList lines(bytes);
    ASSERT_EQ(lines.size(), static_cast<long>(expected.size())) << trial;
    for (long k = 0; k < lines.size(); ++k)
      ASSERT_EQ(lines[k], expected[static_cast<std::size_t>(k)]) << trial << " line " << k;
  }
}

TEST(LineScan, NonTextByteAtEveryPlaceOfABlock) {
  for (std::size_t at = 0; at < 40; ++at) {
    std::string bytes(40, 'A');
    bytes[at] = '\x01';
    EXPECT_EQ(find_non_text(bytes, 0), at);
    EXPECT_EQ(find_non_text(bytes, at + 1), std::string_view::npos);
    bytes[at] = '\x0C';  // form feed: text
    EXPECT_EQ(find_non_text(bytes, 0), std::string_view::npos);
  }
}

}  // namespace
}  // namespace varnoth::input
