// The one place that starts threads: work over an index range spread over a
// fixed number of workers. The rest of the program never creates a thread.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>

namespace varnoth::divergence {

class ParallelContext {
 public:
  // `threads` workers; 0 or less means one per core. The workers beyond the
  // calling thread are started at the first for_each that needs them and kept
  // until the context ends, so that short calls cost no thread start.
  explicit ParallelContext(int threads = 0);
  ~ParallelContext();
  ParallelContext(const ParallelContext&) = delete;
  ParallelContext& operator=(const ParallelContext&) = delete;
  int threads() const { return threads_; }
  // Starts the workers now rather than at the first call that needs them: a
  // caller with other work first (reading a file) then finds the threads, and
  // their cores, awake when the calls come. Waking an idle core can take
  // milliseconds in a virtual machine.
  void start() const;
  // Lets the workers end, without waiting for them, where no more calls are
  // to come: they would otherwise wait for one, and a worker woken only to end
  // can take long to wake. Later calls run on the calling thread alone.
  void retire() const;
  // Calls fn(i, worker) for every i in [0, n), worker in [0, threads());
  // returns when all calls are done. Calls of one worker run in order. Not to
  // be called from two threads at once.
  void for_each(std::size_t n, const std::function<void(std::size_t, int)>& fn) const;
  // The same, with first() run on the calling thread before it takes its share
  // of the calls (the other workers start on theirs at once).
  void for_each(std::size_t n, const std::function<void(std::size_t, int)>& fn,
                const std::function<void()>& first) const;
  // The same over [start, n), and while the calling thread waits for the
  // others to finish their last calls it calls while_waiting() (as worker 0)
  // for as long as that returns true: a caller with other work at hand does
  // it then rather than wait.
  void for_each(std::size_t start, std::size_t n, const std::function<void(std::size_t, int)>& fn,
                const std::function<void()>& first,
                const std::function<bool()>& while_waiting) const;

 private:
  struct Pool;
  int threads_;
  mutable bool retired_ = false;
  mutable std::unique_ptr<Pool> pool_;
};

// Asks the system to back a large buffer with huge pages where it can: the
// first writes to fresh memory then cost far less. A hint only; small buffers
// and systems without the feature are left as they are.
void advise_huge_pages(const void* data, std::size_t bytes);

// v.assign(count, value), with the buffer advised as above before it is filled.
template <typename Vector, typename Value>
void assign_large(Vector& v, std::size_t count, const Value& value) {
  v.clear();
  v.reserve(count);
  advise_huge_pages(v.data(), count * sizeof(typename Vector::value_type));
  v.assign(count, value);
}

}  // namespace varnoth::divergence
