#include "divergence/parallel.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>
#include <vector>

#if defined(__linux__)
#include <sched.h>
#include <sys/mman.h>
#endif

namespace varnoth::divergence {

constexpr int kPollRounds = 4096;  // some 0.2 ms

// Waits a little for `ready` by polling before the caller blocks: in a
// virtual machine waking a sleeping thread takes far longer than a block of
// pairs does, and the calls of a run follow each other closely.
template <typename Ready>
bool poll_for(Ready&& ready, int rounds = kPollRounds) {
  for (int i = 0; i < rounds; ++i) {
    if (ready()) return true;
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#endif
    // More threads than cores: let the others run.
    if (i % 64 == 63) std::this_thread::yield();
  }
  return ready();
}

namespace {

// Where the threads of a context take every core the process may use, a core
// for each worker, none of them the calling thread's; otherwise none, and the
// system places the threads (as it should where several runs share the
// cores). Left to itself, the system may start a worker on the caller's core,
// and with both threads busy it moves one only after many milliseconds: a
// short run then gains nothing from its second thread.
std::vector<int> cores_for_workers(int workers) {
  std::vector<int> cores;
#if defined(__linux__)
  cpu_set_t set;
  const int here = sched_getcpu();
  if (here < 0 || sched_getaffinity(0, sizeof set, &set) != 0 || !CPU_ISSET(here, &set) ||
      CPU_COUNT(&set) != workers + 1)
    return {};
  for (int c = 0; c < CPU_SETSIZE; ++c)
    if (CPU_ISSET(c, &set) && c != here) cores.push_back(c);
#else
  (void)workers;
#endif
  return cores;
}

// Keeps the calling thread to one core; none for a negative number.
void keep_to(int cpu) {
#if defined(__linux__)
  if (cpu < 0) return;
  cpu_set_t set;
  CPU_ZERO(&set);
  CPU_SET(cpu, &set);
  sched_setaffinity(0, sizeof set, &set);
#else
  (void)cpu;
#endif
}

}  // namespace

// Workers 1..threads-1 wait for a call; the calling thread is worker 0.
struct ParallelContext::Pool {
  std::mutex mutex;
  std::condition_variable start, done;
  std::vector<std::thread> workers;
  std::atomic<std::uint64_t> generation{0};  // one more for every call
  std::atomic<int> running{0};               // workers still in the current call
  std::atomic<bool> stop{false};

  // The current call, set before `generation` moves on.
  std::size_t n = 0, chunk = 1, tail_share = 2;
  std::atomic<std::size_t> next{0};
  const std::function<void(std::size_t, int)>* fn = nullptr;

  // Chunks shrink as the calls run out, down to one call: the workers then
  // finish within a call of each other, not a whole chunk.
  void work(int worker) {
    std::size_t begin = next.load(std::memory_order_relaxed);
    while (true) {
      if (begin >= n) return;
      const std::size_t size = std::clamp<std::size_t>((n - begin) / tail_share, 1, chunk);
      if (!next.compare_exchange_weak(begin, begin + size, std::memory_order_relaxed)) continue;
      // No bound needed: a chunk is at most the calls left.
      for (std::size_t i = begin; i < begin + size; ++i) (*fn)(i, worker);
      begin = next.load(std::memory_order_relaxed);
    }
  }

  void serve(int worker, int cpu) {
    keep_to(cpu);
    std::uint64_t seen = 0;
    const auto called = [&] {
      return stop.load(std::memory_order_acquire) ||
             generation.load(std::memory_order_acquire) != seen;
    };
    // The first call is waited for longer (some milliseconds): the workers
    // are started ahead of the calls, and a core left idle is slow to wake.
    int rounds = 1 << 17;
    while (true) {
      const bool polled = poll_for(called, rounds);
      rounds = kPollRounds;
      if (!polled) {
        std::unique_lock lock(mutex);
        start.wait(lock, called);
      }
      if (stop.load(std::memory_order_acquire)) return;
      seen = generation.load(std::memory_order_acquire);
      work(worker);
      if (running.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        std::lock_guard lock(mutex);
        done.notify_one();
      }
    }
  }

  void end_workers() {
    {
      std::lock_guard lock(mutex);
      stop.store(true, std::memory_order_release);
    }
    start.notify_all();
  }

  ~Pool() {
    end_workers();
    for (auto& t : workers) t.join();
  }
};

ParallelContext::ParallelContext(int threads) {
  if (threads <= 0) threads = static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
  threads_ = threads;
}

ParallelContext::~ParallelContext() = default;

void ParallelContext::start() const {
  if (threads_ <= 1 || pool_ || retired_) return;
  pool_ = std::make_unique<Pool>();
  const std::vector<int> cpus = cores_for_workers(threads_ - 1);
  for (int w = 1; w < threads_; ++w) {
    const int cpu = cpus.empty() ? -1 : cpus[static_cast<std::size_t>(w - 1)];
    pool_->workers.emplace_back([p = pool_.get(), w, cpu] { p->serve(w, cpu); });
  }
}

void ParallelContext::retire() const {
  retired_ = true;
  if (pool_) pool_->end_workers();
}

void ParallelContext::for_each(std::size_t n, const std::function<void(std::size_t, int)>& fn) const {
  for_each(n, fn, nullptr);
}

void ParallelContext::for_each(std::size_t n, const std::function<void(std::size_t, int)>& fn,
                               const std::function<void()>& first) const {
  for_each(0, n, fn, first, nullptr);
}

void ParallelContext::for_each(std::size_t start, std::size_t n,
                               const std::function<void(std::size_t, int)>& fn,
                               const std::function<void()>& first,
                               const std::function<bool()>& while_waiting) const {
  if (threads_ <= 1 || retired_ || n <= start + 1) {
    if (first) first();
    for (std::size_t i = start; i < n; ++i) fn(i, 0);
    return;
  }
  this->start();
  Pool& pool = *pool_;
  // No worker is in a call here: the last call returned only when all were done.
  pool.n = n;
  // Small chunks taken in turn keep the workers busy when items differ in cost.
  pool.chunk = std::max<std::size_t>(1, (n - start) / (static_cast<std::size_t>(threads_) * 8));
  pool.tail_share = 2 * static_cast<std::size_t>(threads_);
  pool.next.store(start, std::memory_order_relaxed);
  pool.fn = &fn;
  pool.running.store(threads_ - 1, std::memory_order_relaxed);
  {
    std::lock_guard lock(pool.mutex);
    pool.generation.fetch_add(1, std::memory_order_release);
  }
  pool.start.notify_all();
  if (first) first();
  pool.work(0);
  const auto finished = [&] { return pool.running.load(std::memory_order_acquire) == 0; };
  if (while_waiting)
    while (!finished() && while_waiting()) {
    }
  if (!poll_for(finished)) {
    std::unique_lock lock(pool.mutex);
    pool.done.wait(lock, finished);
  }
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
