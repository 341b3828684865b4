#include "divergence/noncoding_estimators.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <memory>

namespace varnoth::divergence {
namespace {

using T = NucleotidePairTable;

// Base letter to table code; 4 for anything else.
constexpr std::array<std::uint8_t, 256> kBaseCode = [] {
  std::array<std::uint8_t, 256> code{};
  for (int c = 0; c < 256; ++c) code[static_cast<std::size_t>(c)] = static_cast<std::uint8_t>(base_number(static_cast<unsigned char>(c)));
  return code;
}();

// Sites with bases x, y in either order.
std::int64_t pair_count(const T& t, int x, int y) {
  return t.cells[4 * x + y] + t.cells[4 * y + x];
}

double keep_in_range(double k) { return k > 5 || k < 0 ? 0 : k; }

// Tajima's series sum over i = 1 .. d (d unrounded) of (d/(b n))^i / (i/b).
double tajima_series(double d, double b, double n) {
  const double x = d / (b * n);
  double sum = 0;
  for (double i = 1; i <= d; i += 1) {
    const double next = sum + std::pow(x, i) / (i / b);
    // With x below 1 the terms shrink: once one leaves the sum as it is, so do all after.
    if (next == sum && x < 1) break;
    sum = next;
  }
  return sum;
}

// i! by plain products, as the binomial terms of Tajima 2-p are written:
// kFactorial[i] = ((1 x 2) x 3) ... x i, for i up to 127.
constexpr std::array<double, 128> kFactorial = [] {
  std::array<double, 128> f{};
  f[0] = 1;
  f[1] = 1;
  for (int k = 2; k < 128; ++k) f[static_cast<std::size_t>(k)] = f[static_cast<std::size_t>(k - 1)] * k;
  return f;
}();

// Tajima 2-p from the transition and transversion frequencies P and Q over n sites.
float tajima_2p(double P, double Q, double n) {
  const double n1 = P * n, n2 = Q * n, d = n1 + n2;
  // The binomial index j runs over whole numbers; its bounds take the nearest
  // whole numbers of n1 and n2, which are counts up to rounding of P n and Q n.
  const std::int64_t whole1 = std::llround(n1), whole2 = std::llround(n2);
  const double ln_n = std::log(n);
  // The powers of the terms, each taken once by the same call as in the sum:
  // 2^(j-1) at two_to[j], n1^j at n1_to[j], n2^m at n2_to[m], for exponents up to i.
  double two_to[128], n1_to[128], n2_to[128];
  two_to[0] = std::pow(2.0, -1);
  n1_to[0] = std::pow(n1, 0);
  n2_to[0] = std::pow(n2, 0);
  float k = 0;
  for (double i = 1; i <= d; i += 1) {
    const double L = i * ln_n + std::log(i);
    // L grows with i, so every later i would be skipped as well. L <= 88 keeps
    // i at most 127 for n >= 2 (and n = 1 never gets here): i! stays finite.
    if (L > 88) break;
    const double w = 1 / std::exp(L);
    const int whole_i = static_cast<int>(i);
    two_to[whole_i] = std::pow(2.0, whole_i - 1);
    n1_to[whole_i] = std::pow(n1, whole_i);
    n2_to[whole_i] = std::pow(n2, whole_i);
    const std::int64_t j0 = std::max<std::int64_t>(0, whole_i - whole2);
    const std::int64_t j1 = std::min<std::int64_t>(whole_i, whole1);
    double s = 0;
    for (std::int64_t jj = j0; jj <= j1; ++jj) {
      const int j = static_cast<int>(jj);
      const double c = kFactorial[static_cast<std::size_t>(whole_i)] /
                       (kFactorial[static_cast<std::size_t>(j)] *
                        kFactorial[static_cast<std::size_t>(whole_i - j)]);
      s += c * two_to[j] * n1_to[j] * n2_to[whole_i - j];
    }
    k = static_cast<float>(static_cast<double>(k) + w * s);
  }

  // t = sum over i = 1 .. n2 of 2^(i-2) (n2/n)^i / i. The power of two is applied
  // by ldexp: the same value, but no inf * 0 when 2^(i-2) alone would overflow.
  const double q = n2 / n;
  double t = 0;
  for (double i = 1; i <= n2; i += 1) {
    const double next = t + std::ldexp(std::pow(q, i), static_cast<int>(i) - 2) / i;
    // With 2q at most 1 the terms shrink: once one leaves t as it is, so do all after.
    if (next == t && 2 * q <= 1) break;
    t = next;
    // All terms are positive: past 6 the estimate is out of range whatever follows.
    if (t > 6) break;
  }
  return static_cast<float>(static_cast<double>(k) + t);
}

// Values of a pure function of three doubles already worked out on this thread,
// one per slot: pairs of an alignment often share the numbers Tajima 1-p and
// 2-p depend on, and the same function of the same numbers (bit for bit) gives
// the same value.
template <typename Value>
class Memo {
 public:
  template <typename Fn>
  Value get(double x, double y, double z, Fn&& compute) {
    const std::uint64_t key[3] = {std::bit_cast<std::uint64_t>(x), std::bit_cast<std::uint64_t>(y),
                                  std::bit_cast<std::uint64_t>(z)};
    std::uint64_t h = key[0] * 0x9E3779B97F4A7C15ULL;
    h = (h ^ key[1]) * 0xC2B2AE3D27D4EB4FULL;
    h = (h ^ key[2]) * 0x165667B19E3779F9ULL;
    Slot& slot = slots_[(h >> 40) & (kSlots - 1)];
    if (!slot.used || slot.key[0] != key[0] || slot.key[1] != key[1] || slot.key[2] != key[2]) {
      slot.value = compute();
      slot.key[0] = key[0];
      slot.key[1] = key[1];
      slot.key[2] = key[2];
      slot.used = true;
    }
    return slot.value;
  }

 private:
  static constexpr std::size_t kSlots = 4096;
  struct Slot {
    std::uint64_t key[3] = {0, 0, 0};
    Value value{};
    bool used = false;
  };
  std::array<Slot, kSlots> slots_{};
};

struct Memos {
  Memo<double> tajima_1p;
  Memo<float> tajima_2p;
};

Memos& memos() {
  thread_local std::unique_ptr<Memos> memo = std::make_unique<Memos>();
  return *memo;
}

}  // namespace

std::int64_t NucleotidePairTable::sites() const {
  std::int64_t total = 0;
  for (std::int64_t c : cells) total += c;
  return total;
}

NucleotidePairTable count_nucleotide_pairs(std::span<const char> seq1,
                                           std::span<const char> seq2) {
  std::array<std::int64_t, 25> raw{};
  const std::size_t length = std::min(seq1.size(), seq2.size());
  for (std::size_t k = 0; k < length; ++k)
    ++raw[5 * kBaseCode[static_cast<unsigned char>(seq1[k])] +
          kBaseCode[static_cast<unsigned char>(seq2[k])]];
  NucleotidePairTable table;
  for (int x = 0; x < 4; ++x)
    for (int y = 0; y < 4; ++y) table.cells[4 * x + y] = raw[5 * x + y];
  return table;
}

double truncate_seven_decimals(double x) { return std::floor(10000000.0 * x) / 10000000.0; }

NoncodingResult estimate_noncoding(std::span<const char> seq1, std::span<const char> seq2) {
  return estimate_noncoding(count_nucleotide_pairs(seq1, seq2));
}

NoncodingResult estimate_noncoding(const NucleotidePairTable& table) {
  NoncodingResult result;
  NoncodingEstimates& e = result.values;
  for (int x = 0; x < 4; ++x)
    for (int y = 0; y < 4; ++y) {
      e.counts1[x] += table.cells[4 * x + y];
      e.counts2[y] += table.cells[4 * x + y];
    }
  const std::int64_t sites = table.sites();
  if (sites == 0) {  // nothing to compare: as an identical pair
    result.kimura_ab_written = false;
    return result;
  }
  const double n = static_cast<double>(sites);

  const double gA = static_cast<double>(e.counts1[T::kA] + e.counts2[T::kA]) / (2 * n);
  const double gG = static_cast<double>(e.counts1[T::kG] + e.counts2[T::kG]) / (2 * n);
  const double gC = static_cast<double>(e.counts1[T::kC] + e.counts2[T::kC]) / (2 * n);
  const double gT = static_cast<double>(e.counts1[T::kT] + e.counts2[T::kT]) / (2 * n);
  e.mean_freq_a = gA;
  e.mean_freq_g = gG;
  e.mean_freq_c = gC;
  e.mean_freq_t = gT;

  const double xAG = static_cast<double>(pair_count(table, T::kA, T::kG)) / n;
  const double xAC = static_cast<double>(pair_count(table, T::kA, T::kC)) / n;
  const double xAT = static_cast<double>(pair_count(table, T::kA, T::kT)) / n;
  const double xGC = static_cast<double>(pair_count(table, T::kG, T::kC)) / n;
  const double xGT = static_cast<double>(pair_count(table, T::kG, T::kT)) / n;
  const double xCT = static_cast<double>(pair_count(table, T::kC, T::kT)) / n;

  const double P = xAG + xCT;
  const double Q = xAT + xGC + xGT + xAC;
  const double p = P + Q;

  if (p > 0.7499 || p == 0) {
    // All six K stay 0; Kimura's A and B stand as the pair before left them.
    result.kimura_ab_written = false;
  } else {
    e.k_jukes_cantor = -0.75 * std::log(1 - 4 * p / 3);

    if (1 - 2 * P - Q <= 0 || 1 - 2 * Q <= 0) {
      result.kimura_ab_written = false;
    } else {
      const double a = -0.5 * std::log(1 - 2 * P - Q) + 0.25 * std::log(1 - 2 * Q);
      const double b = -0.5 * std::log(1 - 2 * Q);
      e.kimura_a = a <= 0 ? 0 : a;  // a negative one becomes 0, and -0 (Q = 0) too
      e.kimura_b = b <= 0 ? 0 : b;
      e.k_kimura = e.kimura_a + e.kimura_b;
    }

    if (gA != 0 && gG != 0 && gC != 0 && gT != 0) {
      const double h = xAG * xAG / (2 * gA * gG) + xAC * xAC / (2 * gA * gC) +
                       xAT * xAT / (2 * gA * gT) + xGC * xGC / (2 * gG * gC) +
                       xGT * xGT / (2 * gG * gT) + xCT * xCT / (2 * gC * gT);
      const double b = (1 - (gA * gA + gG * gG + gC * gC + gT * gT) + p * p / h) / 2;
      if (p / b >= 1) {
        // Tajima 1-p and 4-p stand as the pair before left them.
        result.tajima_1p_4p_written = false;
      } else {
        e.k_tajima_nei = -b * std::log(1 - p / b);
        const double d = p * n;
        e.k_tajima_4p = tajima_series(d, b, n);
        e.k_tajima_1p =
            memos().tajima_1p.get(d, 0.75, n, [&] { return tajima_series(d, 0.75, n); });
      }
    }

    e.k_tajima_2p = memos().tajima_2p.get(P, Q, n, [&] { return tajima_2p(P, Q, n); });
  }

  e.obs_p = truncate_seven_decimals(P);
  e.obs_q = truncate_seven_decimals(Q);
  e.k_jukes_cantor = keep_in_range(truncate_seven_decimals(e.k_jukes_cantor));
  e.k_kimura = keep_in_range(truncate_seven_decimals(e.k_kimura));
  e.kimura_a = truncate_seven_decimals(e.kimura_a);
  e.kimura_b = truncate_seven_decimals(e.kimura_b);
  e.k_tajima_nei = keep_in_range(truncate_seven_decimals(e.k_tajima_nei));
  e.k_tajima_1p = keep_in_range(truncate_seven_decimals(e.k_tajima_1p));
  e.k_tajima_4p = keep_in_range(truncate_seven_decimals(e.k_tajima_4p));
  const float k2p = static_cast<float>(truncate_seven_decimals(e.k_tajima_2p));
  e.k_tajima_2p = k2p > 5 || k2p < 0 ? 0.0f : k2p;
  return result;
}

NoncodingEstimates apply_carry(const NoncodingCarry& previous, const NoncodingResult& result) {
  NoncodingEstimates e = result.values;
  if (!result.kimura_ab_written) {
    e.kimura_a = truncate_seven_decimals(previous.kimura_a);
    e.kimura_b = truncate_seven_decimals(previous.kimura_b);
  }
  if (!result.tajima_1p_4p_written) {
    e.k_tajima_1p = keep_in_range(truncate_seven_decimals(previous.tajima_1p));
    e.k_tajima_4p = keep_in_range(truncate_seven_decimals(previous.tajima_4p));
  }
  return e;
}

NoncodingCarry carry_of(const NoncodingEstimates& e) {
  return {e.kimura_a, e.kimura_b, e.k_tajima_1p, e.k_tajima_4p};
}

NoncodingNotApplicable not_applicable(const NoncodingEstimates& e) {
  const bool differs = e.obs_p + e.obs_q > 0;
  return {differs && e.k_jukes_cantor == 0, differs && e.k_kimura == 0,
          differs && e.k_tajima_nei == 0,   differs && e.k_tajima_1p == 0,
          differs && e.k_tajima_2p == 0,    differs && e.k_tajima_4p == 0};
}

}  // namespace varnoth::divergence
