// Pairs per second of whole divergence runs (coding and noncoding) on random
// alignments, with the report going to a sink as the command line writes it;
// and of the placing of a coding pair's changes alone, with the time to build
// the table of placings every coding run starts with.
#include <random>
#include <string>

#include <benchmark/benchmark.h>

#include "cli/memory.h"
#include "divergence/driver.h"
#include "divergence/site_classes.h"
#include "state/options.h"

namespace {

using namespace varnoth;

// Memory as the command line sets it up before a run.
const bool kMemoryPrepared = (cli::prepare_memory(), true);

class QuietPlatform : public Platform {
 public:
  bool message(std::string_view, std::string_view, MessageIcon, bool) override { return true; }
  std::string open_file(const FileDialogRequest&) override { return {}; }
  std::string save_file(const FileDialogRequest&) override { return {}; }
  void print(std::string_view) override {}
  void beep() override {}
  void busy(bool) override {}
  void yield() override {}
  ClockReading clock() override { return {}; }
  std::string current_directory() override { return "."; }
};

// `sequences` random coding sequences of `codons` codons; in each, a codon of
// the ancestor has a letter changed with probability `percent` / 100.
void load_random(AnalysisRecord& rec, int sequences, int codons, int percent, unsigned seed) {
  std::mt19937 rng(seed);
  const char* letters = "ACGT";
  auto stop = [](const CodonCell& c) {
    return c[0] == 'T' && ((c[1] == 'A' && (c[2] == 'A' || c[2] == 'G')) || (c[1] == 'G' && c[2] == 'A'));
  };
  std::vector<CodonCell> ancestor;
  while (static_cast<int>(ancestor.size()) < codons) {
    CodonCell c{letters[rng() % 4], letters[rng() % 4], letters[rng() % 4]};
    if (!stop(c)) ancestor.push_back(c);
  }
  SequenceData& s = rec.seq;
  s = SequenceData{};
  s.InputFileName = "random.meg";
  s.SequenceLoaded = 1;
  s.SeqCount = s.SeqCountCopy = sequences;
  s.PairCount = s.SeqCount * (s.SeqCount - 1) / 2;
  s.SeqLength = 3.0 * codons;
  s.CodonCellCount = static_cast<float>(codons);
  for (int i = 0; i < sequences; ++i) {
    s.SeqNames.push_back("S" + std::to_string(i + 1));
    auto cells = ancestor;
    for (auto& c : cells) {
      CodonCell m = c;
      if (static_cast<int>(rng() % 100) < percent) m[rng() % 3] = letters[rng() % 4];
      if (!stop(m)) c = m;
    }
    s.SeqCodons.push_back(std::move(cells));
  }
}

void run(benchmark::State& state, bool coding) {
  AnalysisRecord rec;
  QuietPlatform platform;
  start_up(rec);
  title_page_click(rec);
  if (!coding) {
    click_noncoding(rec);
    click_all_methods(rec);
  }
  load_random(rec, static_cast<int>(state.range(0)), static_cast<int>(state.range(1)),
              static_cast<int>(state.range(3)), 1);
  divergence::RunSettings settings;
  settings.threads = static_cast<int>(state.range(2));
  settings.keep_stores = false;  // as the command line without a matrix
  std::size_t bytes = 0;
  settings.report_sink = [&bytes](std::string_view text) { bytes += text.size(); };
  for (auto _ : state) {
    if (!divergence::run_divergence(rec, platform, settings)) state.SkipWithError("run failed");
  }
  state.counters["pairs/s"] = benchmark::Counter(rec.seq.PairCount * static_cast<double>(state.iterations()),
                                                 benchmark::Counter::kIsRate);
  state.counters["report MB"] = static_cast<double>(bytes) / 1e6 / static_cast<double>(state.iterations());
}

// The placing of the changes of every pair alone, the core of a coding pair:
// sequences as codon numbers, changed as load_random changes them.
void Placing(benchmark::State& state) {
  using namespace divergence;
  const int sequences = static_cast<int>(state.range(0));
  const auto codons = static_cast<std::size_t>(state.range(1));
  const int percent = static_cast<int>(state.range(2));
  const CodeTables& t = code_tables(GeneticCode::Universal);
  std::mt19937 rng(1);
  std::vector<Codon> ancestor(codons);
  for (auto& c : ancestor) {
    do c = static_cast<Codon>(rng() % 64);
    while (t.translates_to_stop[c]);
  }
  std::vector<std::vector<Codon>> seqs;
  std::vector<SequenceSites> sites;
  for (int i = 0; i < sequences; ++i) {
    auto s = ancestor;
    for (auto& c : s) {
      if (static_cast<int>(rng() % 100) >= percent) continue;
      const int shift = 2 * static_cast<int>(rng() % 3);
      const auto m = static_cast<Codon>((c & ~(3 << shift)) | ((rng() % 4) << shift));
      if (!t.translates_to_stop[m]) c = m;
    }
    sites.push_back(sequence_sites(s, GeneticCode::Universal));
    seqs.push_back(std::move(s));
  }
  const PairPlacingTable table(GeneticCode::Universal, 0.5f);
  double sum = 0;
  for (auto _ : state) {
    for (int a = 0; a < sequences; ++a) {
      for (int b = a + 1; b < sequences; ++b) {
        ChangeAccountingResult changes;
        const auto x = static_cast<std::size_t>(a), y = static_cast<std::size_t>(b);
        const auto r =
            place_differing_codons(sites[x], sites[y], seqs[x], seqs[y], table, changes);
        sum += r.ObsTS[0];
      }
    }
  }
  benchmark::DoNotOptimize(sum);
  state.counters["pairs/s"] = benchmark::Counter(
      sequences * (sequences - 1) / 2 * static_cast<double>(state.iterations()),
      benchmark::Counter::kIsRate);
}

// The table of placings every coding run builds first.
void PlacingTable(benchmark::State& state) {
  for (auto _ : state) {
    const divergence::PairPlacingTable table(GeneticCode::Universal, 0.5f);
    benchmark::DoNotOptimize(&table);
  }
}

void Coding(benchmark::State& state) { run(state, true); }
void Noncoding(benchmark::State& state) { run(state, false); }

// sequences, codons, percent of codons changed.
BENCHMARK(Placing)->Args({100, 500, 8})->Args({100, 500, 60})->Unit(benchmark::kMillisecond);
BENCHMARK(PlacingTable)->Unit(benchmark::kMillisecond);
// sequences, codons, threads (0 = one per core), percent of codons changed.
// On one thread pairs/s is the arithmetic per core: 500-codon (1500-site)
// pairs about 5 % apart (low) and 45 % apart (high, many codons with two and
// three differences); noncoding runs all six estimators. The runs on every core
// show the parallel gain, on 400 sequences (79,800 pairs, 156 blocks) where the
// set-up of a run weighs little.
BENCHMARK(Coding)
    ->Args({100, 500, 1, 8})
    ->Args({100, 500, 1, 60})
    ->Args({100, 500, 0, 8})
    ->Args({100, 500, 0, 60})
    ->Args({400, 500, 1, 8})
    ->Args({400, 500, 0, 8})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(Noncoding)
    ->Args({100, 500, 1, 8})
    ->Args({100, 500, 1, 60})
    ->Args({100, 500, 0, 8})
    ->Unit(benchmark::kMillisecond);

}  // namespace
