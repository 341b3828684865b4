// The progress line of a long run: alignments and pairs done, pairs per second
// and the time left, redrawn in place on standard error. Safe to call from the
// threads that run alignments.
#pragma once

#include <atomic>
#include <chrono>
#include <cstddef>
#include <iosfwd>
#include <mutex>
#include <string>
#include <string_view>

namespace varnoth::cli {

// What the line tells, at a moment of the run.
struct ProgressState {
  std::size_t alignments = 0;       // in the run
  std::size_t alignments_read = 0;  // read so far (their pairs are known)
  std::size_t alignments_done = 0;
  double pairs_known = 0;  // pairs of the alignments read so far
  double pairs_done = 0;
  double seconds = 0;  // since the start
};

// "3/120 alignments, 4521/9800 pairs, 1234 pairs/s, 4s left". The total of
// pairs is estimated from the alignments read so far ("~" in front) until all
// are read; the time left follows from the pairs still to do at the rate so
// far.
std::string progress_text(const ProgressState& state);

class Progress {
 public:
  using Clock = std::chrono::steady_clock;
  // `shown`: whether the line is drawn at all (standard error is a terminal and
  // the user did not ask for quiet).
  Progress(std::ostream& err, bool shown, std::size_t alignments);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  bool shown() const { return shown_; }
  // An alignment was read; it holds `pairs` comparisons (0 if refused).
  void alignment_read(double pairs);
  // A comparison of an alignment is done.
  void pair_done();
  // An alignment is done; `pairs_left` are those of its pairs never reported
  // done (a run that ended early).
  void alignment_done(double pairs_left);
  // Writes `text` to the stream, with the line cleared first; the line comes
  // back at the next update.
  void write(std::string_view text);
  // Clears the line for good.
  void finish();

 private:
  void maybe_draw();
  ProgressState state_locked() const;

  std::ostream& err_;
  const bool shown_;
  const std::size_t alignments_;
  const Clock::time_point start_ = Clock::now();
  std::atomic<std::size_t> read_{0}, done_{0};
  std::atomic<long long> pairs_done_{0};
  std::atomic<double> pairs_known_{0};
  std::mutex mutex_;  // the stream and the drawing state
  Clock::time_point last_draw_{};
  bool drawn_ = false;
};

}  // namespace varnoth::cli
