#include "divergence/parallel.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>
#include <vector>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace varnoth::divergence {

// Workers 1..threads-1 wait for a call; the calling thread is worker 0.
struct ParallelContext::Pool {
  std::mutex mutex;
  std::condition_variable start, done;
  std::vector<std::thread> workers;
  std::uint64_t generation = 0;  // one more for every call
  int running = 0;               // workers still in the current call
  bool stop = false;

  // The current call.
  std::size_t n = 0, chunk = 1;
  std::atomic<std::size_t> next{0};
  const std::function<void(std::size_t, int)>* fn = nullptr;

  void work(int worker) {
    while (true) {
      const std::size_t begin = next.fetch_add(chunk);
      if (begin >= n) return;
      const std::size_t end = std::min(n, begin + chunk);
      for (std::size_t i = begin; i < end; ++i) (*fn)(i, worker);
    }
  }

  void serve(int worker) {
    std::uint64_t seen = 0;
    std::unique_lock lock(mutex);
    while (true) {
      start.wait(lock, [&] { return stop || generation != seen; });
      if (stop) return;
      seen = generation;
      lock.unlock();
      work(worker);
      lock.lock();
      if (--running == 0) done.notify_one();
    }
  }

  ~Pool() {
    {
      std::lock_guard lock(mutex);
      stop = true;
    }
    start.notify_all();
    for (auto& t : workers) t.join();
  }
};

ParallelContext::ParallelContext(int threads) {
  if (threads <= 0) threads = static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
  threads_ = threads;
}

ParallelContext::~ParallelContext() = default;

void ParallelContext::for_each(std::size_t n, const std::function<void(std::size_t, int)>& fn) const {
  for_each(n, fn, nullptr);
}

void ParallelContext::for_each(std::size_t n, const std::function<void(std::size_t, int)>& fn,
                               const std::function<void()>& first) const {
  if (threads_ <= 1 || n <= 1) {
    if (first) first();
    for (std::size_t i = 0; i < n; ++i) fn(i, 0);
    return;
  }
  if (!pool_) {
    pool_ = std::make_unique<Pool>();
    for (int w = 1; w < threads_; ++w) pool_->workers.emplace_back([p = pool_.get(), w] { p->serve(w); });
  }
  Pool& pool = *pool_;
  {
    std::lock_guard lock(pool.mutex);
    pool.n = n;
    // Small chunks taken in turn keep the workers busy when items differ in cost.
    pool.chunk = std::max<std::size_t>(1, n / (static_cast<std::size_t>(threads_) * 8));
    pool.next = 0;
    pool.fn = &fn;
    pool.running = threads_ - 1;
    ++pool.generation;
  }
  pool.start.notify_all();
  if (first) first();
  pool.work(0);
  std::unique_lock lock(pool.mutex);
  pool.done.wait(lock, [&] { return pool.running == 0; });
}

void advise_huge_pages(const void* data, std::size_t bytes) {
#if defined(__linux__) && defined(MADV_HUGEPAGE)
  constexpr std::uintptr_t kHuge = std::uintptr_t{2} << 20;
  if (bytes < 2 * kHuge) return;
  // Whole huge pages inside the buffer only.
  const auto begin = (reinterpret_cast<std::uintptr_t>(data) + kHuge - 1) & ~(kHuge - 1);
  const auto end = (reinterpret_cast<std::uintptr_t>(data) + bytes) & ~(kHuge - 1);
  if (end > begin) madvise(reinterpret_cast<void*>(begin), end - begin, MADV_HUGEPAGE);
#else
  (void)data;
  (void)bytes;
#endif
}

}  // namespace varnoth::divergence
