#include "divergence/parallel.h"

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

namespace varnoth::divergence {

ParallelContext::ParallelContext(int threads) {
  if (threads <= 0) threads = static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
  // More workers than this only cost memory (a scratch area each) and threads.
  constexpr int kMostThreads = 256;
  threads_ = std::min(threads, kMostThreads);
}

void ParallelContext::for_each(std::size_t n, const std::function<void(std::size_t, int)>& fn) const {
  const int workers = static_cast<int>(std::min<std::size_t>(static_cast<std::size_t>(threads_), n));
  if (workers <= 1) {
    for (std::size_t i = 0; i < n; ++i) fn(i, 0);
    return;
  }
  // Small chunks taken in turn keep the workers busy when items differ in cost.
  const std::size_t chunk = std::max<std::size_t>(1, n / (static_cast<std::size_t>(workers) * 8));
  std::atomic<std::size_t> next{0};
  auto work = [&](int worker) {
    while (true) {
      const std::size_t begin = next.fetch_add(chunk);
      if (begin >= n) return;
      const std::size_t end = std::min(n, begin + chunk);
      for (std::size_t i = begin; i < end; ++i) fn(i, worker);
    }
  };
  std::vector<std::thread> pool;
  pool.reserve(static_cast<std::size_t>(workers - 1));
  for (int w = 1; w < workers; ++w) pool.emplace_back(work, w);
  work(0);
  for (auto& t : pool) t.join();
}

}  // namespace varnoth::divergence
