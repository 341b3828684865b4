// The one random generator of the simulations: uniform numbers in [0, 1).
// xoshiro256** seeded through splitmix64; a run seeded with the same number
// repeats bit for bit.
#pragma once

#include <cstdint>

namespace varnoth::simulation {

class UniformRandom {
 public:
  UniformRandom() { reseed(0); }
  explicit UniformRandom(std::uint64_t seed) { reseed(seed); }

  void reseed(std::uint64_t seed) {
    for (auto& word : s_) {
      seed += 0x9e3779b97f4a7c15ULL;
      std::uint64_t z = seed;
      z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9ULL;
      z = (z ^ (z >> 27)) * 0x94d049bb133111ebULL;
      word = z ^ (z >> 31);
    }
  }

  // A seed from the clock, as the program seeds itself where the user gives
  // none: seconds since midnight with their fraction.
  static std::uint64_t seed_from_clock(double seconds_since_midnight) {
    return static_cast<std::uint64_t>(seconds_since_midnight * 1000003.0) ^ 0x5eedULL;
  }

  // A number in [0, 1) with 53 random bits.
  double uniform() { return static_cast<double>(next() >> 11) * 0x1.0p-53; }

  std::uint64_t next() {
    const std::uint64_t result = rotl(s_[1] * 5, 7) * 9;
    const std::uint64_t t = s_[1] << 17;
    s_[2] ^= s_[0];
    s_[3] ^= s_[1];
    s_[1] ^= s_[2];
    s_[0] ^= s_[3];
    s_[2] ^= t;
    s_[3] = rotl(s_[3], 45);
    return result;
  }

 private:
  static std::uint64_t rotl(std::uint64_t x, int k) { return (x << k) | (x >> (64 - k)); }
  std::uint64_t s_[4]{};
};

}  // namespace varnoth::simulation
