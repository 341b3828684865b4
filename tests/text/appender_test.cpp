#include "text/appender.h"

#include <cmath>
#include <limits>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "text/number_format.h"

namespace {

using varnoth::text::Appender;
using varnoth::text::Pattern;

constexpr Pattern kValue{"###0.00000 "};
constexpr Pattern kCount{" ####0.00 "};
constexpr Pattern kWide{"0.00000000000000000000"};  // not compact: always the slow path

// Random pieces of every kind, through the Appender and through the plain
// appends it stands for: the two texts must be equal, whatever the sizes of
// the pieces against the Appender's buffer, the widths of the cells and the
// numbers (non-finite, huge, negative, float) that leave the fast cell.
TEST(Appender, WritesWhatThePlainAppendsWrite) {
  std::mt19937_64 rng(11);
  const double specials[] = {0.0,
                             -0.0,
                             0.5,
                             -0.000005,
                             0.999995,
                             1e-300,
                             1e300,
                             -1e20,
                             std::numeric_limits<double>::infinity(),
                             -std::numeric_limits<double>::infinity(),
                             std::numeric_limits<double>::quiet_NaN()};
  for (int round = 0; round < 300; ++round) {
    std::string fast = "head", slow = "head";
    {
      Appender out(fast);
      const int pieces = static_cast<int>(rng() % 400);
      for (int k = 0; k < pieces; ++k) {
        const double x = rng() % 4 == 0 ? specials[rng() % std::size(specials)]
                                        : std::ldexp(static_cast<double>(rng() % 2000000) - 1e6,
                                                     static_cast<int>(rng() % 40) - 30);
        const std::size_t width = rng() % 3 == 0 ? 0 : rng() % 40;
        switch (rng() % 8) {
          case 0: {
            const std::string s(rng() % 2 ? rng() % 30 : rng() % 3000, static_cast<char>('a' + k % 26));
            out += s;
            slow += s;
            break;
          }
          case 1:
            out += '\t';
            slow += '\t';
            out += std::string_view();  // no pointer behind it
            break;
          case 2: {
            const std::size_t n = rng() % 2 ? rng() % 10 : rng() % 2000;
            out.fill(n, ' ');
            slow.append(n, ' ');
            break;
          }
          case 3:
            out.cell(x, kValue, width);
            varnoth::text::append_cell(slow, x, kValue, width);
            break;
          case 4:
            out.cell(static_cast<float>(x), kCount, width);
            varnoth::text::append_cell(slow, static_cast<float>(x), kCount, width);
            break;
          case 5:
            out.cell(x, kWide, width);
            varnoth::text::append_cell(slow, x, kWide, width);
            break;
          case 6: {
            const auto n = static_cast<long>(rng() % 2000000000) - 1000000000;
            out.plain(n);
            varnoth::text::append_plain(slow, n);
            break;
          }
          default:
            out.plain(x);
            varnoth::text::append_plain(slow, x);
            break;
        }
      }
    }
    ASSERT_EQ(fast, slow) << "round " << round;
  }
}

}  // namespace
