// A sequence file held in memory as lines, and the passes that readers make
// over it from the first line on.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "input/input_status.h"

namespace varnoth::input {

// The lines of a file, split at CR, LF or CRLF. A last line without a line end
// counts; the empty text behind a final line end does not. The bytes must
// outlive the list.
class LineList {
 public:
  explicit LineList(std::string_view bytes);
  long size() const { return static_cast<long>(lines_.size()); }
  std::string_view operator[](long index) const { return lines_[static_cast<size_t>(index)]; }

 private:
  std::vector<std::string_view> lines_;
};

// The number of lines LineList would make of `bytes`, and its first line,
// without building the list.
long count_lines(std::string_view bytes);
// The position of the first byte of `bytes` from `from` on that no text file
// holds (see is_text_byte), or npos.
std::size_t find_non_text(std::string_view bytes, std::size_t from);
std::string_view first_line(std::string_view bytes);

// One reading pass from line 1, line by line. A read behind the last line fails
// with EndOfFile at the number of the line that was wanted.
class LinePass {
 public:
  explicit LinePass(const LineList& lines) : lines_(lines) {}
  bool at_end() const { return next_ >= lines_.size(); }
  bool next(std::string_view& line);
  bool skip(long count);
  long line_number() const { return next_; }  // 1-based number of the last line read
  InputStatus failure() const { return input_failure(InputProblem::EndOfFile, next_ + 1); }

 private:
  const LineList& lines_;
  long next_ = 0;  // 0-based index of the next line
};

// Column rules of the readers: columns are counted from 1 and a blank is " ".

// Text from column `first` on, `count` characters at most; empty behind the end.
std::string_view columns(std::string_view line, long first, long count = -1);
inline bool is_blank(char c) { return c == ' '; }
bool is_blank_line(std::string_view line);  // empty or blanks only
long count_letters(std::string_view text);  // characters other than blanks
bool has_letter(std::string_view text);

// The whole part of a count, kept in a range where loops and casts are safe;
// every loop bounded by such a count also reads a line per turn.
long long whole_count(double value);

}  // namespace varnoth::input
