// An append-only text whose lines end in carriage return and line feed.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace varnoth::text {

class CrlfText {
 public:
  // Appends the parts, then the line end. line() alone writes an empty line.
  template <class... Parts>
  CrlfText& line(const Parts&... parts) {
    (text_.append(std::string_view(parts)), ...);
    text_.append("\r\n");
    return *this;
  }
  // Appends the parts with no line end.
  template <class... Parts>
  CrlfText& text(const Parts&... parts) {
    (text_.append(std::string_view(parts)), ...);
    return *this;
  }
  CrlfText& crlf() {
    text_.append("\r\n");
    return *this;
  }

  // The text itself, for the number writers (append_format, append_cell, ...).
  std::string& buffer() { return text_; }
  const std::string& str() const { return text_; }
  std::size_t size() const { return text_.size(); }
  void reserve(std::size_t n) { text_.reserve(n); }
  // Moves the text out and leaves the builder empty.
  std::string take() {
    std::string out = std::move(text_);
    text_.clear();
    return out;
  }

 private:
  std::string text_;
};

}  // namespace varnoth::text
