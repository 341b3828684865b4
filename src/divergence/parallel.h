// The one place that starts threads: work over an index range spread over a
// fixed number of workers. The rest of the program never creates a thread.
#pragma once

#include <cstddef>
#include <functional>

namespace varnoth::divergence {

class ParallelContext {
 public:
  // `threads` workers, 256 at most; 0 or less means one per core.
  explicit ParallelContext(int threads = 0);
  int threads() const { return threads_; }
  // Calls fn(i, worker) for every i in [0, n), worker in [0, threads());
  // returns when all calls are done. Calls of one worker run in order.
  void for_each(std::size_t n, const std::function<void(std::size_t, int)>& fn) const;

 private:
  int threads_;
};

}  // namespace varnoth::divergence
