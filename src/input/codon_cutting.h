// Cutting a sequence into 3-letter cells as its lines are read, common to all
// readers.
#pragma once

#include <string_view>
#include <vector>

#include "state/record.h"

namespace varnoth::input {

// Highest cell number the readers allow a sequence: 1 + SeqLength/3, rounded
// half to even as array bounds are.
double cell_room(double seq_length);

// One sequence's cutter. The letters of each line (blanks dropped) join the
// carry; whole threes become the next cells and the rest is carried to the next
// line. A cell numbered above `room` fails the add.
class CodonCutter {
 public:
  CodonCutter(std::vector<CodonCell>& cells, double room) : cells_(cells), room_(room) {}

  bool add(std::string_view data);
  // Stores a non-empty carry as a last cell, padded with blanks on the right.
  bool finish();
  // The record end of the PIR reader, where the last letter read is the "*".
  bool finish_without_star();

  long carry_length() const { return carried_; }
  // Letters of the last line added, counting the carry it started with.
  long last_line_letters() const { return last_letters_; }

 private:
  bool store(const char* letters, int count);
  // The first cell makes room for a sequence of the length the file gives, up
  // to a bound: the cells are then not moved as they grow.
  void reserve_first();

  std::vector<CodonCell>& cells_;
  double room_;
  char carry_[3] = {' ', ' ', ' '};
  int carried_ = 0;
  long last_letters_ = 0;
};

}  // namespace varnoth::input
