// The Platform of the command line: messages go to standard error, save
// dialogs answer with the paths given on the command line, and the clock
// follows SOURCE_DATE_EPOCH where it is set.
#pragma once

#include <deque>
#include <iosfwd>
#include <string>

#include "state/platform.h"

namespace varnoth::cli {

class ConsolePlatform : public Platform {
 public:
  explicit ConsolePlatform(std::ostream& err) : err_(err) {}

  std::deque<std::string> save_answers;  // taken in order by save dialogs
  std::string subject;  // where set, messages name it ("varnoth: SUBJECT: ...")
  int messages_shown = 0;

  bool message(std::string_view text, std::string_view title, MessageIcon icon,
               bool yes_no) override;
  std::string open_file(const FileDialogRequest&) override { return {}; }
  std::string save_file(const FileDialogRequest& request) override;
  void print(std::string_view) override {}
  void beep() override {}
  void busy(bool) override {}
  void yield() override {}
  ClockReading clock() override;
  std::string current_directory() override;

 private:
  std::ostream& err_;
};

// Date "MM/DD/YYYY" and time "HH:MM:SS" of a moment given in seconds since the
// epoch, in UTC.
ClockReading clock_at(long long epoch_seconds);

}  // namespace varnoth::cli
