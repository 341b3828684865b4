// Shared by the fuzz targets: reading choices from the fuzzer's bytes, a quiet
// platform, and the invariant checks that turn a wrong result into a crash the
// fuzzer reports.
#pragma once

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "state/platform.h"

namespace varnoth::fuzz {

// Takes choices from the front of the fuzzer's data; past the end every
// choice is 0 and every text empty.
class Bytes {
 public:
  Bytes(const std::uint8_t* data, std::size_t size)
      : data_(reinterpret_cast<const char*>(data)), size_(size) {}
  bool empty() const { return at_ >= size_; }
  std::uint8_t byte() { return at_ < size_ ? static_cast<std::uint8_t>(data_[at_++]) : 0; }
  // A number in [0, n).
  unsigned pick(unsigned n) { return n == 0 ? 0 : byte() % n; }
  bool flag() { return (byte() & 1) != 0; }
  // A text up to the next '\n' (not included) or the end.
  std::string_view line() {
    std::size_t start = at_;
    while (at_ < size_ && data_[at_] != '\n') ++at_;
    std::string_view text(data_ + start, at_ - start);
    if (at_ < size_) ++at_;
    return text;
  }
  std::string_view rest() {
    std::string_view text(data_ + at_, size_ - at_);
    at_ = size_;
    return text;
  }

 private:
  const char* data_;
  std::size_t size_;
  std::size_t at_ = 0;
};

// Where a broken invariant goes: the fuzzer aborts (and keeps the input); the
// regression test sets a handler that throws, so one input fails one test.
using FailHandler = void (*)(const char* what, std::string_view detail);
inline FailHandler fail_handler = nullptr;

[[noreturn]] inline void fail(const char* what, std::string_view detail = {}) {
  if (fail_handler != nullptr) fail_handler(what, detail);
  std::fprintf(stderr, "INVARIANT BROKEN: %s\n", what);
  if (!detail.empty())
    std::fprintf(stderr, "%.*s\n", static_cast<int>(detail.size() > 2000 ? 2000 : detail.size()),
                 detail.data());
  std::abort();
}

inline void check(bool condition, const char* what, std::string_view detail = {}) {
  if (!condition) fail(what, detail);
}

inline bool is_letter(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); }
inline char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

// Whether `text` shows a number that is not finite: "nan" or "inf" in any case
// standing as a word of its own (so "Information" is no match), or the
// "#IND" / "#INF" forms of the number formats.
inline bool shows_non_finite(std::string_view text) {
  for (std::size_t i = 0; i + 3 <= text.size(); ++i) {
    const char a = lower(text[i]), b = lower(text[i + 1]), c = lower(text[i + 2]);
    const bool nan = a == 'n' && b == 'a' && c == 'n';
    const bool inf = a == 'i' && b == 'n' && c == 'f';
    const bool ind = a == 'i' && b == 'n' && c == 'd' && i > 0 && text[i - 1] == '#';
    if (!nan && !inf && !ind) continue;
    if (ind || (i > 0 && text[i - 1] == '#')) return true;
    const bool before = i > 0 && is_letter(text[i - 1]);
    std::size_t end = i + 3;
    if (inf && text.size() >= i + 8) {  // "infinity" as one word
      std::string_view tail = text.substr(i + 3, 5);
      if ((lower(tail[0]) == 'i' && lower(tail[1]) == 'n' && lower(tail[2]) == 'i' &&
           lower(tail[3]) == 't' && lower(tail[4]) == 'y'))
        end = i + 8;
    }
    const bool after = end < text.size() && is_letter(text[end]);
    if (!before && !after) return true;
  }
  return false;
}

inline void check_finite_text(std::string_view text, const char* what) {
  if (shows_non_finite(text)) fail(what, text);
}

// A platform that answers every dialog as cancelled and every question with
// yes, and counts what it was asked.
class QuietPlatform : public Platform {
 public:
  int messages = 0;
  std::string last_message, last_title;
  MessageIcon last_icon = MessageIcon::None;
  std::string save_answer;  // what the save dialog returns; "" = cancelled
  // Messages that quote a file's own text (names) are not scanned.
  bool scan_messages = true;

  bool message(std::string_view text, std::string_view title, MessageIcon icon,
               bool) override {
    ++messages;
    last_message = std::string(text);
    last_title = std::string(title);
    last_icon = icon;
    if (scan_messages) check_finite_text(text, "a message shows a number that is not finite");
    return true;
  }
  std::string open_file(const FileDialogRequest&) override { return {}; }
  std::string save_file(const FileDialogRequest&) override { return save_answer; }
  void print(std::string_view text) override {
    check_finite_text(text, "a printout shows a number that is not finite");
  }
  void beep() override {}
  void busy(bool) override {}
  void yield() override {}
  ClockReading clock() override { return {"11-23-2026", "10:00:00", 36000}; }
  std::string current_directory() override { return "/tmp"; }
};

}  // namespace varnoth::fuzz
