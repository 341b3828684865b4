#include "cli/progress.h"

#include <algorithm>
#include <cmath>
#include <ostream>

namespace varnoth::cli {

namespace {

constexpr auto kFirstDraw = std::chrono::seconds(1);  // short runs show nothing
constexpr auto kRedraw = std::chrono::milliseconds(250);
constexpr std::string_view kClearLine = "\r\x1b[K";

std::string whole(double value) { return std::to_string(std::llround(value)); }

// "42s", "3m05s", "2h07m".
std::string duration(double seconds) {
  const long long s = std::llround(seconds);
  auto two = [](long long v) { return (v < 10 ? "0" : "") + std::to_string(v); };
  if (s < 60) return std::to_string(s) + "s";
  if (s < 3600) return std::to_string(s / 60) + "m" + two(s % 60) + "s";
  return std::to_string(s / 3600) + "h" + two(s / 60 % 60) + "m";
}

}  // namespace

std::string progress_text(const ProgressState& p) {
  std::string t = std::to_string(p.alignments_done) + "/" + std::to_string(p.alignments);
  t += p.alignments == 1 ? " alignment, " : " alignments, ";
  const bool all_read = p.alignments_read >= p.alignments;
  double total = p.pairs_known;
  if (!all_read && p.alignments_read > 0)
    total = p.pairs_known * static_cast<double>(p.alignments) /
            static_cast<double>(p.alignments_read);
  t += whole(p.pairs_done) + "/";
  if (p.alignments_read == 0) {
    t += "?";
  } else {
    if (!all_read) t += "~";
    t += whole(total);
  }
  t += " pairs";
  const double rate = p.seconds > 0 ? p.pairs_done / p.seconds : 0;
  t += ", " + whole(rate) + " pairs/s";
  if (rate > 0 && p.alignments_read > 0) {
    t += ", " + duration(std::max(0.0, total - p.pairs_done) / rate) + " left";
  }
  return t;
}

Progress::Progress(std::ostream& err, bool shown, std::size_t alignments)
    : err_(err), shown_(shown), alignments_(alignments) {}

Progress::~Progress() { finish(); }

void Progress::alignment_read(double pairs) {
  pairs_known_.fetch_add(pairs);
  read_.fetch_add(1);
  maybe_draw();
}

void Progress::pair_done() {
  const long long done = pairs_done_.fetch_add(1) + 1;
  // The clock is read every so many pairs only.
  if (done % 64 == 0) maybe_draw();
}

void Progress::alignment_done(double pairs_left) {
  if (pairs_left > 0) pairs_done_.fetch_add(std::llround(pairs_left));
  done_.fetch_add(1);
  maybe_draw();
}

ProgressState Progress::state_locked() const {
  ProgressState p;
  p.alignments = alignments_;
  p.alignments_read = read_.load();
  p.alignments_done = done_.load();
  p.pairs_known = pairs_known_.load();
  p.pairs_done = static_cast<double>(pairs_done_.load());
  p.seconds = std::chrono::duration<double>(Clock::now() - start_).count();
  return p;
}

void Progress::maybe_draw() {
  if (!shown_) return;
  const auto now = Clock::now();
  if (now - start_ < kFirstDraw) return;
  std::unique_lock lock(mutex_, std::try_to_lock);
  if (!lock.owns_lock()) return;  // another thread is drawing
  if (drawn_ && now - last_draw_ < kRedraw) return;
  last_draw_ = now;
  drawn_ = true;
  err_ << kClearLine << "varnoth: " << progress_text(state_locked()) << std::flush;
}

void Progress::write(std::string_view text) {
  if (text.empty()) return;
  std::lock_guard lock(mutex_);
  if (drawn_) {
    err_ << kClearLine;
    drawn_ = false;
  }
  err_ << text << std::flush;
}

void Progress::finish() {
  std::lock_guard lock(mutex_);
  if (drawn_) err_ << kClearLine << std::flush;
  drawn_ = false;
}

}  // namespace varnoth::cli
