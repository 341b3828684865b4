// Comparisons per second of the report's text alone: the lines of a coding
// comparison (Kimura 2-p, many pairs: no class table) and of a noncoding one
// (all six methods), written a block of 512 at a time into a text that is
// then emptied, as a run hands its blocks on.
#include <random>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "reports/results_report.h"

namespace {

using namespace varnoth;

constexpr std::size_t kBlock = 512;

std::vector<std::string> names(std::size_t count) {
  std::vector<std::string> out;
  for (std::size_t i = 0; i < count; ++i) out.push_back("S" + std::to_string(10000 + i) + "    ");
  return out;
}

// Blocks of comparisons 1, 2, ... of 400 sequences written by
// write(out, place, i) for the i-th comparison of the block.
template <typename Write>
void write_blocks(benchmark::State& state, Write&& write) {
  const auto seq = names(400);
  std::string out;
  long number = 1;
  for (auto _ : state) {
    out.clear();
    for (std::size_t i = 0; i < kBlock; ++i, ++number) {
      const reports::ComparisonPlace place{number, seq[i % 400], seq[(i * 7) % 400], nullptr};
      write(out, place, i);
    }
    benchmark::DoNotOptimize(out.data());
  }
  state.counters["comparisons/s"] =
      benchmark::Counter(static_cast<double>(state.iterations() * kBlock), benchmark::Counter::kIsRate);
}

void CodingText(benchmark::State& state) {
  reports::RunLayout run;
  run.coding = true;
  run.pair_count = 79800;
  std::mt19937_64 rng(7);
  std::uniform_real_distribution<double> k(0.01, 0.2), sites(300, 1200);
  std::vector<divergence::CodingEstimates> values(kBlock);
  for (auto& e : values) {
    e.ks_kimura = k(rng), e.ka_kimura = k(rng);
    e.as = k(rng) / 2, e.bs = k(rng) / 2, e.aa = k(rng) / 2, e.ba = k(rng) / 2;
    e.ses = sites(rng) / 2;
    e.nes = static_cast<float>(sites(rng));
  }
  const divergence::ClassTotals classes;
  write_blocks(state, [&](std::string& out, const reports::ComparisonPlace& place, std::size_t i) {
    reports::append_coding_comparison(out, run, place, 500, classes, values[i]);
  });
}

void NoncodingText(benchmark::State& state) {
  reports::RunLayout run;
  run.pair_count = 79800;
  run.methods = {true, true, true, true, true, true};
  std::mt19937_64 rng(7);
  std::uniform_real_distribution<double> k(0.01, 0.2);
  std::vector<divergence::NoncodingEstimates> values(kBlock);
  for (auto& e : values) {
    e.k_jukes_cantor = k(rng), e.k_kimura = k(rng), e.kimura_a = k(rng), e.kimura_b = k(rng);
    e.k_tajima_nei = k(rng), e.k_tajima_1p = k(rng), e.k_tajima_2p = k(rng), e.k_tajima_4p = k(rng);
  }
  const divergence::NoncodingNotApplicable na;
  write_blocks(state, [&](std::string& out, const reports::ComparisonPlace& place, std::size_t i) {
    reports::append_noncoding_comparison(out, run, place, 1500, values[i], na);
  });
}

BENCHMARK(CodingText)->Unit(benchmark::kMicrosecond);
BENCHMARK(NoncodingText)->Unit(benchmark::kMicrosecond);

}  // namespace
