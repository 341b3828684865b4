// Many short pieces appended to a text: they are gathered in a buffer on the
// stack and handed to the text in one append, so that a piece of constant
// length is a few moves, not a call that checks the text's room and copies.
#pragma once

#include <charconv>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

#include "text/number_format.h"

namespace varnoth::text {

class Appender {
 public:
  explicit Appender(std::string& out) : out_(out) {}
  ~Appender() { flush(); }
  Appender(const Appender&) = delete;
  Appender& operator=(const Appender&) = delete;

  // Hands what was gathered to the text.
  void flush() {
    out_.append(buffer_, p_);
    p_ = buffer_;
  }

  Appender& operator+=(std::string_view s) {
    if (s.size() > room()) [[unlikely]] {
      put_long(s);
      return *this;
    }
    // An empty view may hold no pointer at all, which memcpy must not get.
    if (!s.empty()) std::memcpy(p_, s.data(), s.size());
    p_ += s.size();
    return *this;
  }
  Appender& operator+=(char c) {
    if (room() == 0) [[unlikely]] flush();
    *p_++ = c;
    return *this;
  }
  // `count` copies of `c`.
  void fill(std::size_t count, char c) {
    if (count > room()) [[unlikely]] {
      flush();
      out_.append(count, c);
      return;
    }
    std::memset(p_, c, count);
    p_ += count;
  }

  // append_cell and append_format (width 0) of number_format.h.
  template <typename Real>
  void cell(Real value, const Pattern& pattern, std::size_t width = 0) {
    if (room() < kCellRoom) flush();
    if (char* end = write_cell(p_, value, pattern, width)) [[likely]] {
      p_ = end;
      return;
    }
    flush();
    append_cell(out_, value, pattern, width);
  }
  // append_plain of number_format.h.
  void plain(long long value) {
    if (room() < 24) flush();
    p_ = std::to_chars(p_, end(), value).ptr;
  }
  void plain(long value) { plain(static_cast<long long>(value)); }
  template <typename Real>
  void plain(Real value) {
    flush();
    append_plain(out_, value);
  }

 private:
  static constexpr std::size_t kSize = 1024;
  std::size_t room() const { return static_cast<std::size_t>(end() - p_); }
  const char* end() const { return buffer_ + kSize; }
  char* end() { return buffer_ + kSize; }
  void put_long(std::string_view s) {
    flush();
    if (s.size() > kSize / 2) {
      out_.append(s);
      return;
    }
    std::memcpy(p_, s.data(), s.size());
    p_ += s.size();
  }

  std::string& out_;
  char buffer_[kSize];
  char* p_ = buffer_;
};

}  // namespace varnoth::text
