// The outputs of a run do not depend on the number of threads: one alignment,
// large enough for several blocks of pairs (and of windows), run through the
// command line with 1, 2 and 7 threads, every output compared byte for byte.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "divergence/parallel.h"
#include "support/cli_runner.h"
#include "support/paths.h"

namespace {

using varnoth::testing::read_file;
using varnoth::testing::scratch_dir;
using varnoth::testing::write_file;

constexpr int kSequences = 100;  // 4950 comparisons: three blocks
constexpr int kCodons = 150;

bool is_stop(const std::string& c) {
  return c == "TAA" || c == "TAG" || c == "TGA" || c == "AGA" || c == "AGG";
}

// A MEGA file of related coding sequences; `stop_in` (from 1) gets a TAA at
// codon 100, 0 for none.
std::string alignment(int stop_in) {
  std::mt19937 rng(7);
  const char* letters = "ACGT";
  std::string ancestor;
  while (static_cast<int>(ancestor.size()) < 3 * kCodons) {
    std::string c{letters[rng() % 4], letters[rng() % 4], letters[rng() % 4]};
    if (!is_stop(c)) ancestor += c;
  }
  std::string text = "#MEGA\r\nTITLE: threads\r\n\r\n";
  for (int s = 1; s <= kSequences; ++s) {
    std::string seq = ancestor;
    for (std::size_t i = 0; i < seq.size(); ++i) {
      if (rng() % 100 >= 6) continue;
      const char old = seq[i];
      seq[i] = letters[rng() % 4];
      if (is_stop(seq.substr(i - i % 3, 3))) seq[i] = old;
    }
    if (s == stop_in) seq.replace(3 * 99, 3, "TAA");
    text += "#S" + std::to_string(s) + "\r\n";
    for (std::size_t i = 0; i < seq.size(); i += 60) text += seq.substr(i, 60) + "\r\n";
  }
  return text;
}

struct Outputs {
  int code = 0;
  std::string report, errors, table, matrix;
};

Outputs run(const std::string& input, const std::vector<std::string>& flags, bool window,
            const char* matrix, const char* threads) {
  const std::string dir = scratch_dir();
  // A failed run leaves no file: none may be left from the run before.
  std::filesystem::remove(dir + "/threads.win");
  std::filesystem::remove(dir + "/threads.dis");
  std::vector<std::string> args = {"run", input, "--threads", threads};
  args.insert(args.end(), flags.begin(), flags.end());
  if (window) args.insert(args.end(), {"--win", dir + "/threads.win"});
  if (matrix) args.insert(args.end(), {"--matrix", matrix, "-m", dir + "/threads.dis"});
  const auto r = varnoth::testing::run_cli(std::move(args));
  Outputs o;
  o.code = r.code;
  o.report = r.out;
  o.errors = r.err;
  if (std::filesystem::exists(dir + "/threads.win")) o.table = read_file(dir + "/threads.win");
  if (std::filesystem::exists(dir + "/threads.dis")) {
    // Everything but the line of the date and time.
    o.matrix = read_file(dir + "/threads.dis");
    const auto date = o.matrix.find("\r\n", o.matrix.find("\r\n") + 2);
    o.matrix.erase(date, o.matrix.find("\r\n", date + 2) - date);
  }
  return o;
}

struct Case {
  const char* name;
  int stop_in;
  std::vector<std::string> flags;
  bool window = false;
  const char* matrix = nullptr;
  const char* expected;  // a text the report or the messages must hold
};

// The form of for_each that a run uses to compute ahead: every index from
// `start` once, none before it, first() once; and what the calling thread does
// while it waits is its own work, taken up to its end.
TEST(Threads, ForEachFromAStartWithWorkWhileWaiting) {
  for (const int threads : {1, 2, 7}) {
    SCOPED_TRACE(threads);
    const varnoth::divergence::ParallelContext parallel(threads);
    for (const std::size_t n : {0, 1, 2, 3, 40, 1000}) {
      for (const std::size_t start : {std::size_t{0}, std::size_t{1}, n / 2, n}) {
        std::vector<std::atomic<int>> calls(n);
        std::vector<int> aside(300, 0);
        std::size_t taken = 0;
        int firsts = 0;
        parallel.for_each(
            start, n, [&](std::size_t i, int) { ++calls[i]; }, [&] { ++firsts; },
            [&] {
              if (taken == aside.size()) return false;
              ++aside[taken++];
              return true;
            });
        EXPECT_EQ(firsts, 1);
        for (std::size_t i = 0; i < n; ++i) ASSERT_EQ(calls[i].load(), i < start ? 0 : 1) << i;
        for (std::size_t i = 0; i < taken; ++i) ASSERT_EQ(aside[i], 1);
      }
    }
  }
}

TEST(Threads, CallsAfterTheWorkersAreRetiredRunOnTheCallingThread) {
  for (const int threads : {1, 2, 7}) {
    SCOPED_TRACE(threads);
    const varnoth::divergence::ParallelContext parallel(threads);
    std::vector<int> workers(1000, -1);
    parallel.for_each(workers.size(), [&](std::size_t i, int w) { workers[i] = w; });
    EXPECT_TRUE(std::all_of(workers.begin(), workers.end(), [](int w) { return w >= 0; }));
    parallel.retire();
    parallel.retire();
    workers.assign(workers.size(), -1);
    parallel.for_each(workers.size(), [&](std::size_t i, int w) { workers[i] = w; });
    EXPECT_TRUE(std::all_of(workers.begin(), workers.end(), [](int w) { return w == 0; }));
  }
}

TEST(Threads, EveryOutputIsTheSameOnOneTwoAndSevenThreads) {
  const Case cases[] = {
      {"coding", 0, {}, false, "ks", "Comparison # 4950"},
      {"coding Jukes and Cantor", 0, {"--method", "jc"}, false, "ka", "Comparison # 4950"},
      {"coding at most one change", 0, {"--restrict", "max1"}, false, nullptr, "Comparison # 4950"},
      {"coding weighted", 0, {"--weight", "0.8"}, false, nullptr, "Comparison # 4950"},
      {"coding region", 0, {"--region", "31-420"}, false, "trsa", "Comparison # 4950"},
      {"coding windows", 0, {"--window", "60:21"}, true, nullptr, " WINDOW #20"},
      {"coding stop codon", 25, {}, false, nullptr, "STOP Codons"},
      // The pair (1, 97) fails in its 28th window of 44, in the third block of windows.
      {"coding stop codon in windows", 97, {"--window", "60:9"}, true, nullptr, "STOP Codons"},
      {"noncoding", 0, {"--noncoding", "--method", "all"}, false, "t2p", "Comparison # 4950"},
      {"noncoding region", 0, {"--noncoding", "--method", "all", "--region", "31-421"}, false,
       "k2p", "Comparison # 4950"},
      {"noncoding windows", 0, {"--noncoding", "--method", "all", "--window", "40:21"}, true,
       nullptr, " WINDOW #21"},
  };
  const std::string dir = scratch_dir();
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const std::string input = dir + "/threads_" + std::to_string(c.stop_in) + ".meg";
    write_file(input, alignment(c.stop_in));
    const Outputs one = run(input, c.flags, c.window, c.matrix, "1");
    EXPECT_NE((one.report + one.errors).find(c.expected), std::string::npos);
    EXPECT_EQ(one.code, c.stop_in == 0 ? 0 : 1);
    if (c.stop_in != 0) {
      // The pairs before the failing one are those of the alignment without
      // the stop: its report begins with all that the failed run wrote.
      const std::string clean = dir + "/threads_0.meg";
      write_file(clean, alignment(0));
      const Outputs whole = run(clean, c.flags, c.window, c.matrix, "1");
      EXPECT_EQ(whole.report.compare(0, one.report.size(), one.report), 0);
      EXPECT_GT(one.report.size(), 1000u);
    }
    for (const char* threads : {"2", "7"}) {
      SCOPED_TRACE(threads);
      const Outputs many = run(input, c.flags, c.window, c.matrix, threads);
      EXPECT_EQ(many.code, one.code);
      EXPECT_TRUE(many.report == one.report) << "report differs";
      EXPECT_EQ(many.errors, one.errors);
      EXPECT_TRUE(many.table == one.table) << "window table differs";
      EXPECT_TRUE(many.matrix == one.matrix) << "matrix differs";
    }
  }
}

}  // namespace
