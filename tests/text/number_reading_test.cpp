#include "text/number_reading.h"

#include <gtest/gtest.h>

namespace {

using varnoth::text::read_comma_number;
using varnoth::text::read_field;
using varnoth::text::read_number;

TEST(ReadNumber, LeadingNumberOfAText) {
  const struct {
    const char* text;
    double expected;
  } cases[] = {
      {"12", 12},        {"  12", 12},      {"\t 7", 7},       {"12abc", 12},
      {"abc", 0},        {"", 0},           {"   ", 0},        {"1.5.3", 1.5},
      {"-0.7", -0.7},    {"+5", 5},         {".5", 0.5},       {"-.5", -0.5},
      {"1e3", 1000},     {"1E-2", 0.01},    {"1.5E+2", 150},   {"2D2", 200},
      {"1e", 1},         {"1e+", 1},        {"3 x", 3},        {".", 0},
      {"-", 0},          {"e5", 0},         {"0,7", 0},        {"1000 TRS", 1000},
  };
  for (const auto& c : cases) EXPECT_EQ(read_number(c.text), c.expected) << '"' << c.text << '"';
}

TEST(ReadNumber, CommaAsDecimalSeparator) {
  EXPECT_EQ(read_comma_number("0,7"), 0.7);
  EXPECT_EQ(read_comma_number("-0,25"), -0.25);
  EXPECT_EQ(read_comma_number("1.234,5"), 1234.5);  // "." groups thousands
  EXPECT_EQ(read_comma_number(" 2,5abc"), 2.5);
}

TEST(ReadNumber, FieldChoosesTheReaderByComma) {
  EXPECT_EQ(read_field("0,7"), 0.7);
  EXPECT_EQ(read_field("0.7"), 0.7);
  EXPECT_EQ(read_field("70"), 70);
  EXPECT_EQ(read_field("abc"), 0);
}

}  // namespace
