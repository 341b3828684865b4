// Fuzz target: the number readers and the number format engine.
//
// Input: byte 1 picks a pattern (one of the program's own, or the text of the
// second line), then a text that is read as a number; the bytes behind it are
// also taken as the raw bits of a double.
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>

#include "fuzz_support.h"
#include "text/number_format.h"
#include "text/number_reading.h"

namespace varnoth::fuzz::text_engine {

constexpr const char* kPatterns[] = {"###0.00000 ", " ####0.00 ", "####0.00", "0.0000",
                                     " #0.00000 ",  "#0.0000",    "##0.0 ",   "##0.0000 ",
                                     " ####0.0000 ", " ####0.0 ", " ####0 ",  "0",
                                     "#",           ".",          "0.0#",     "#,##0.00"};
constexpr unsigned kPatternCount = sizeof kPatterns / sizeof kPatterns[0];

bool is_placeholder(char c) { return c == '0' || c == '#'; }

// Places of the fraction in a pattern: placeholders behind the first ".".
int fraction_places(std::string_view pattern) {
  const std::size_t point = pattern.find('.');
  if (point == std::string_view::npos) return 0;
  int places = 0;
  for (std::size_t i = point + 1; i < pattern.size(); ++i) places += is_placeholder(pattern[i]);
  return places;
}

// The number a formatted text shows, with the pattern's other characters
// taken out; only for patterns whose literals are blanks.
double shown_value(std::string_view shown) {
  std::string digits;
  for (char c : shown)
    if (c != ' ') digits += c;
  return text::read_number(digits);
}

bool blank_literals(std::string_view pattern) {
  bool point = false;
  for (char c : pattern) {
    if (c == '.' && !point) {
      point = true;
      continue;
    }
    if (!is_placeholder(c) && c != ' ') return false;
  }
  return true;
}

void check_formats(double value, std::string_view pattern) {
  const std::string shown = text::format(value, pattern);
  if (!std::isfinite(value)) return;  // the callers never hand these over
  bool letters = false;
  for (char c : pattern) letters = letters || is_letter(c);
  if (!letters) check_finite_text(shown, "a finite value formats as not finite");
  // Width: the pattern's characters, more only for integer digits and the sign.
  const double magnitude = std::fabs(value);
  const std::size_t integer_digits =
      magnitude < 1 ? 1 : static_cast<std::size_t>(std::floor(std::log10(magnitude))) + 2;
  check(shown.size() <= pattern.size() + integer_digits + 2, "a formatted text too long", shown);
  const std::string padded = text::cell(value, pattern, 12);
  check(padded.size() >= 12 || padded == shown, "cell shorter than its width");
  check(padded.size() >= shown.size() &&
            padded.compare(padded.size() - shown.size(), shown.size(), shown) == 0,
        "cell does not end in the formatted text");
  if (blank_literals(pattern) && magnitude < 1e12) {
    const int places = fraction_places(pattern);
    const double back = shown_value(shown);
    const double step = std::pow(10.0, -places);
    check(std::fabs(back - value) <= step / 2 + 1e-9 * (1 + magnitude),
          "a formatted number reads back as another value", shown);
  }
}

void check_plain(double value) {
  const std::string shown = text::plain(value);
  if (!std::isfinite(value)) return;
  check_finite_text(shown, "a finite value writes as not finite");
  check(shown != "-0", "plain writes -0");
  // Near the largest double, 15 digits round beyond it and read as no number.
  if (std::fabs(value) > 1e307) return;
  const double back = text::read_number(shown);
  check(std::isfinite(back), "plain form reads back as not finite", shown);
  check(std::fabs(back - value) <= 1e-14 * std::fabs(value) + 1e-300,
        "plain form reads back as another value", shown);
  const float single = static_cast<float>(value);
  if (std::isfinite(single) && std::fabs(value) < 3e38) {
    const std::string short_form = text::plain(single);
    const double single_back = text::read_number(short_form);
    check(std::fabs(single_back - single) <= 1e-6 * std::fabs(single) + 1e-38,
          "plain form of a single reads back as another value", short_form);
  }
}

int one_input(const std::uint8_t* data, std::size_t size) {
  Bytes in(data, size);
  const unsigned choice = in.pick(kPatternCount + 1);
  std::string_view pattern = choice < kPatternCount ? std::string_view(kPatterns[choice]) : in.line();
  if (pattern.size() > 64) pattern = pattern.substr(0, 64);
  const std::string_view typed = in.line();

  const double plain = text::read_number(typed);
  const double comma = text::read_comma_number(typed);
  const double field = text::read_field(typed);
  check(std::isfinite(plain) && std::isfinite(comma) && std::isfinite(field),
        "a text reads as a number that is not finite", typed);
  check(field == (typed.find(',') != std::string_view::npos ? comma : plain),
        "read_field takes the wrong reader");

  check_formats(plain, pattern);
  check_plain(plain);
  // Whole numbers print exactly.
  const long long whole = static_cast<long long>(std::fmod(plain, 9.0e15));
  check(text::read_number(text::plain(whole)) == static_cast<double>(whole),
        "a whole number does not print exactly");

  const std::string_view raw = in.rest();
  if (raw.size() >= sizeof(double)) {
    double bits;
    std::memcpy(&bits, raw.data(), sizeof bits);
    check_formats(bits, pattern);
    check_plain(bits);
  }
  return 0;
}

}  // namespace varnoth::fuzz::text_engine

#ifndef VARNOTH_FUZZ_NO_MAIN
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return varnoth::fuzz::text_engine::one_input(data, size);
}
#endif
