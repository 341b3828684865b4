#include "input/codon_cutting.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "input/line_list.h"

namespace varnoth::input {

namespace {
constexpr double kFirstRoom = 4096;  // cells reserved at most before a sequence grows
}  // namespace

double cell_room(double seq_length) { return std::nearbyint(1 + seq_length / 3); }

void CodonCutter::reserve_first() {
  cells_.reserve(room_ >= 1 && room_ < kFirstRoom ? static_cast<std::size_t>(room_)
                                                   : static_cast<std::size_t>(kFirstRoom));
}

bool CodonCutter::store(const char* letters, int count) {
  if (static_cast<double>(cells_.size()) + 1 > room_) return false;
  if (cells_.capacity() == 0) reserve_first();
  CodonCell cell{' ', ' ', ' '};
  for (int k = 0; k < count; ++k) cell[static_cast<size_t>(k)] = letters[k];
  cells_.push_back(cell);
  return true;
}

bool CodonCutter::add(std::string_view data) {
  last_letters_ = carried_;
  const char* p = data.data();
  const char* const end = p + data.size();
  while (p != end) {
    // Whole cells straight from the line while three letters follow in a row.
    if (carried_ == 0) {
      // A stretch without blanks whose whole cells all fit: copied at once.
      const char* blank = static_cast<const char*>(
          std::memchr(p, ' ', static_cast<std::size_t>(end - p)));
      const auto whole = static_cast<std::size_t>((blank ? blank : end) - p) / 3;
      if (whole > 1 && static_cast<double>(cells_.size() + whole) <= room_) {
        if (cells_.capacity() == 0) reserve_first();
        const std::size_t at = cells_.size();
        cells_.resize(at + whole);
        static_assert(sizeof(CodonCell) == 3);
        std::memcpy(cells_.data() + at, p, 3 * whole);
        last_letters_ += static_cast<long>(3 * whole);
        p += 3 * whole;
      }
      while (end - p >= 3 && !is_blank(p[0]) && !is_blank(p[1]) && !is_blank(p[2])) {
        last_letters_ += 3;
        if (!store(p, 3)) {
          // As the letter-by-letter way leaves it: the three letters carried.
          std::copy(p, p + 3, carry_);
          carried_ = 3;
          return false;
        }
        p += 3;
      }
      if (p == end) break;
    }
    const char c = *p++;
    if (is_blank(c)) continue;
    ++last_letters_;
    carry_[carried_++] = c;
    if (carried_ == 3) {
      if (!store(carry_, 3)) return false;
      carried_ = 0;
    }
  }
  return true;
}

bool CodonCutter::finish() {
  if (carried_ == 0) return true;
  int count = carried_;
  carried_ = 0;
  return store(carry_, count);
}

bool CodonCutter::finish_without_star() {
  if (carried_ > 1) {  // the carry less its last letter
    int count = carried_ - 1;
    carried_ = 0;
    return store(carry_, count);
  }
  if (carried_ == 0) {  // the "*" closed the last cell: keep its first two letters
    if (!cells_.empty()) cells_.back()[2] = ' ';
    return true;
  }
  carried_ = 0;  // a carry of one letter is the "*" alone
  return true;
}

}  // namespace varnoth::input
