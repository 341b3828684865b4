#include "text/number_format.h"

#include <cmath>
#include <iomanip>
#include <limits>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "text/crlf_text.h"

namespace {

using varnoth::text::append_cell;
using varnoth::text::append_format;
using varnoth::text::append_plain;
using varnoth::text::cell;
using varnoth::text::format;
using varnoth::text::plain;
using varnoth::text::right_aligned;

struct FormatCase {
  double value;
  const char* pattern;
  const char* expected;
};

// Expected texts worked out by hand from the placeholder rule; the rounding
// comments give the value written with 15 significant digits.
TEST(Format, PatternsOfTheReports) {
  const FormatCase cases[] = {
      // "###0.00000 ": result lines, store cells, window table
      {0, "###0.00000 ", "0.00000 "},
      {0.123456, "###0.00000 ", "0.12346 "},
      {1234.5, "###0.00000 ", "1234.50000 "},
      {12345.6, "###0.00000 ", "12345.60000 "},  // wider than the pattern
      {-0.5, "###0.00000 ", "-0.50000 "},
      {0.999995, "###0.00000 ", "1.00000 "},  // 9.99995000000000e-1 carries
      {0.000005, "###0.00000 ", "0.00001 "},
      {0.3, "###0.00000", "0.30000"},
      // " ####0.00 ": counts and site classes
      {12.5, " ####0.00 ", " 12.50 "},
      {12345.678, " ####0.00 ", " 12345.68 "},
      {123456.7, " ####0.00 ", " 123456.70 "},
      {-3.14159, " ####0.00 ", " -3.14 "},
      {0.005, " ####0.00 ", " 0.01 "},
      // "####0.00": S.E.S. and N.E.S.
      {1.5, "####0.00", "1.50"},
      {0.125, "####0.00", "0.13"},
      {99.995, "####0.00", "100.00"},  // binary 99.99499.. is 99.9950000000000
      // "0.0000": matrix, dialogs, probabilities
      {9.99995, "0.0000", "10.0000"},
      {0.12345, "0.0000", "0.1235"},
      {0.00004, "0.0000", "0.0000"},
      {0.00005, "0.0000", "0.0001"},
      {1.00005, "0.0000", "1.0001"},
      {0.25, "0.0000 ", "0.2500 "},
      // " #0.00000 ": coding window table
      {0.1, " #0.00000 ", " 0.10000 "},
      {123.456789, " #0.00000 ", " 123.45679 "},
      {-0.02, " #0.00000 ", " -0.02000 "},
      // "#0.0000", "#0.0000 ", "##0.0 ", "##0.0000 ": interval reports
      {0.5, "#0.0000", "0.5000"},
      {12345, "#0.0000", "12345.0000"},
      {1.23456, "#0.0000 ", "1.2346 "},
      {70, "##0.0 ", "70.0 "},
      {0.04, "##0.0 ", "0.0 "},
      {45.55, "##0.0 ", "45.6 "},  // 45.549999.. is 45.5500000000000
      {0.1, "##0.0000 ", "0.1000 "},
      {0.0005, "0.000", "0.001"},
      // " ####0.0000 ", " ####0.0 ", " ####0 ": coding interval report
      {0.05, " ####0.0000 ", " 0.0500 "},
      {55.55, " ####0.0 ", " 55.6 "},
      {1000, " ####0 ", " 1000 "},
      {999.5, " ####0 ", " 1000 "},
      {0.4, " ####0 ", " 0 "},
      {2.5, " ####0 ", " 3 "},  // half away from zero, not to even
      {-2.5, " ####0 ", " -3 "},
  };
  for (const auto& c : cases)
    EXPECT_EQ(format(c.value, c.pattern), c.expected) << c.value << " in \"" << c.pattern << '"';
}

TEST(Format, PlaceholderRules) {
  const FormatCase cases[] = {
      // "#" prints no leading zero of the integer part and no trailing zero
      // of the fraction; the point is always printed.
      {0.5, "##.##", ".5"},
      {0, "##.##", "."},
      {12, "##.##", "12."},
      {-0.25, "##.##", "-.25"},
      {123.456, "##.##", "123.46"},
      {0.5, "#0.0000", "0.5000"},
      // "0" forces its digit and every digit right of it
      {7, "000", "007"},
      {5, "#0#", "05"},
      {1234, "000", "1234"},
      // no integer placeholder: the integer digits stand before the point
      {12.5, ".00", "12.50"},
      {0.5, ".00", ".50"},
      {-0.5, ".00", "-.50"},
      // no point: whole numbers
      {0.5, "0", "1"},
      {0.49, "0", "0"},
      {0.4, "#", ""},
      // literals keep their places, the sign goes to the first digit
      {1.25, "x0.0y", "x1.3y"},
      {-1.25, "x0.0y", "x-1.3y"},
      {-5, "# #0", " -5"},
      // large and tiny magnitudes
      {1e20, "0.0", "100000000000000000000.0"},
      {123456789012345678.0, "0", "123456789012346000"},
      {1e-300, "0.00", "0.00"},
      {-1e-300, "0.00", "-0.00"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(format(c.value, c.pattern), c.expected) << c.value << " in \"" << c.pattern << '"';
}

TEST(Format, RoundsHalfAwayFromZeroOnFifteenDigits) {
  // The binary values lie just below the half; their 15-digit texts end in 5.
  EXPECT_EQ(format(2.675, "0.00"), "2.68");
  EXPECT_EQ(format(1.005, "0.00"), "1.01");
  EXPECT_EQ(format(-2.675, "0.00"), "-2.68");
  EXPECT_EQ(format(0.125, "0.00"), "0.13");
  EXPECT_EQ(format(1.00499999999999, "0.00"), "1.00");
}

TEST(Format, NegativeValueRoundingToZeroKeepsItsSign) {
  EXPECT_EQ(format(-0.00001, "0.0000"), "-0.0000");
  EXPECT_EQ(format(-0.00001, " ####0.00 "), " -0.00 ");
  EXPECT_EQ(format(-0.0, "0.0000"), "0.0000");
}

TEST(Format, FloatUsesSevenDigits) {
  // 2.675f is 2.67499995..: 2.675000 with 7 digits, 2.67499995231628 with 15.
  EXPECT_EQ(format(2.675f, "0.00"), "2.68");
  EXPECT_EQ(format(static_cast<double>(2.675f), "0.00"), "2.67");
  EXPECT_EQ(format(0.1f, "0.000000000"), "0.100000000");
  EXPECT_EQ(format(static_cast<double>(0.1f), "0.000000000"), "0.100000001");
  EXPECT_EQ(format(12345.678f, " ####0.00 "), " 12345.68 ");
}

TEST(Format, IntegersAndAppending) {
  EXPECT_EQ(format(42, "0.00"), "42.00");
  std::string out = "K=";
  append_format(out, 0.5, "###0.00000 ");
  append_format(out, 0.25f, "0.0");
  EXPECT_EQ(out, "K=0.50000 0.3");
}

// The short path for patterns of digits around one point writes what the
// general path writes, on values of every size and on the halves where the
// 15-digit (7-digit) text decides.
TEST(Format, ShortPathAgreesWithTheGeneralOne) {
  std::mt19937_64 rng(11);
  std::uniform_real_distribution<double> unit(0, 1);
  for (const char* text : {"###0.00000 ", " ####0.00 ", "####0.00", " #0.00000 ", "0.0000",
                           "0.000000000", "(#0.0)", "#0.00000000"}) {
    const varnoth::text::Pattern fast(text);
    ASSERT_TRUE(fast.compact) << text;
    varnoth::text::Pattern general = fast;
    general.compact = false;
    const auto compare = [&](auto value) {
      std::string a, b;
      append_cell(a, value, fast, 12);
      append_cell(b, value, general, 12);
      ASSERT_EQ(a, b) << text << " " << std::setprecision(17) << value;
    };
    for (int i = 0; i < 20000; ++i) {
      const double magnitude = std::pow(10.0, -7 + 14 * unit(rng));
      const double value = (rng() % 2 ? -1 : 1) * magnitude;
      compare(value);
      compare(static_cast<float>(value));
      // Halves of the last printed place, and their neighbours.
      const double scale = std::pow(10.0, fast.frac_places);
      const double half = (std::floor(magnitude * scale) + 0.5) / scale;
      for (double v : {half, std::nextafter(half, 0.0), std::nextafter(half, 1e300)}) {
        compare(v);
        compare(-v);
        compare(static_cast<float>(v));
      }
    }
    for (double v : {0.0, -0.0, 1e-300, 99999.999995, 9999.999995, 0.000005, 1e15, 123456789.0})
      compare(v);
  }
}

TEST(Cell, PadsInFrontAndNeverCuts) {
  EXPECT_EQ(cell(1.5, "0.00", 6), "  1.50");
  EXPECT_EQ(cell(12345.678, " ####0.00 ", 10), " 12345.68 ");   // fills exactly
  EXPECT_EQ(cell(123456.7, " ####0.00 ", 10), " 123456.70 ");  // one wider
  EXPECT_EQ(cell(0.0, "###0.00000 ", 9), " 0.00000 ");
  EXPECT_EQ(cell(-1.0, " ####0.00 ", 10), "    -1.00 ");
  EXPECT_EQ(cell(2.0, "0", 0), "2");
  EXPECT_EQ(cell(2.675f, "0.00", 5), " 2.68");
  std::string out = "A=";
  append_cell(out, 0.1, "###0.00000 ", 9);
  append_cell(out, 0.1, "###0.00000 ", 9);
  EXPECT_EQ(out, "A= 0.10000  0.10000 ");
}

TEST(Plain, DoubleForms) {
  const struct {
    double value;
    const char* expected;
  } cases[] = {
      {0.5, "0.5"},
      {12, "12"},
      {-3, "-3"},
      {-0.25, "-0.25"},
      {0, "0"},
      {-0.0, "0"},
      {0.0001, "0.0001"},
      {0.00012345, "0.00012345"},
      {0.00001, "1E-05"},
      {0.000012345, "1.2345E-05"},
      {123456789012345, "123456789012345"},
      {1e15, "1E+15"},
      {999999999999999.5, "1E+15"},  // rounds to 16 digits' worth
      {1.5e20, "1.5E+20"},
      {1e100, "1E+100"},
      {1.23e-100, "1.23E-100"},
      {1.0 / 3, "0.333333333333333"},
      {2.0 / 3, "0.666666666666667"},
      {1234567.5, "1234567.5"},
      {static_cast<double>(0.1f), "0.100000001490116"},
  };
  for (const auto& c : cases) EXPECT_EQ(plain(c.value), c.expected) << c.expected;
}

TEST(Plain, FloatForms) {
  EXPECT_EQ(plain(0.1f), "0.1");
  EXPECT_EQ(plain(0.333f), "0.333");
  EXPECT_EQ(plain(1234567.0f), "1234567");
  EXPECT_EQ(plain(1e7f), "1E+07");
  EXPECT_EQ(plain(12345678.0f), "1.234568E+07");
  EXPECT_EQ(plain(0.00001f), "1E-05");
  EXPECT_EQ(plain(-0.75f), "-0.75");
}

TEST(Plain, WholeNumbersAndAlignment) {
  EXPECT_EQ(plain(42), "42");
  EXPECT_EQ(plain(-7L), "-7");
  EXPECT_EQ(plain(1234567890123456789LL), "1234567890123456789");
  std::string out = "n=";
  append_plain(out, 3);
  append_plain(out, 0.5);
  EXPECT_EQ(out, "n=30.5");
  EXPECT_EQ(right_aligned(7, 5), "    7");
  EXPECT_EQ(right_aligned(12345, 5), "12345");
  EXPECT_EQ(right_aligned(123456, 5), "123456");
  EXPECT_EQ(right_aligned(-12, 5), "  -12");
}

TEST(Plain, NonFiniteValues) {
  const double inf = std::numeric_limits<double>::infinity();
  EXPECT_EQ(plain(inf), "1.#INF");
  EXPECT_EQ(plain(-inf), "-1.#INF");
  EXPECT_EQ(format(inf, "0.00"), "1.#INF");
  EXPECT_EQ(cell(-inf, "0.00", 9), "  -1.#INF");
}

TEST(CrlfText, BuildsLinesWithCarriageReturn) {
  varnoth::text::CrlfText t;
  t.line(" Seq. A: ", "name").text("K=");
  append_format(t.buffer(), 0.5, "0.0");
  t.crlf().line();
  EXPECT_EQ(t.str(), " Seq. A: name\r\nK=0.5\r\n\r\n");
  EXPECT_EQ(t.size(), 24u);
  std::string taken = t.take();
  EXPECT_EQ(taken.size(), 24u);
  EXPECT_EQ(t.size(), 0u);
  t.text("x");
  EXPECT_EQ(t.str(), "x");
}

}  // namespace
