// A Platform that records what the logic asked of it and answers from a script.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "state/platform.h"

namespace varnoth::testing {

struct RecordedMessage {
  std::string text;
  std::string title;
  MessageIcon icon;
  bool yes_no;
};

class FakePlatform : public Platform {
 public:
  // Scripted answers, taken in order; an empty queue answers "" / yes.
  std::deque<std::string> open_answers;
  std::deque<std::string> save_answers;
  std::deque<bool> yes_no_answers;
  ClockReading now{"11-23-2026", "10:00:00", 36000};
  std::string directory = ".";

  std::vector<RecordedMessage> messages;
  std::vector<FileDialogRequest> open_requests;
  std::vector<FileDialogRequest> save_requests;
  std::vector<std::string> printed;
  int beeps = 0;
  int yields = 0;
  std::vector<bool> busy_calls;

  bool message(std::string_view text, std::string_view title, MessageIcon icon,
               bool yes_no) override;
  std::string open_file(const FileDialogRequest& request) override;
  std::string save_file(const FileDialogRequest& request) override;
  void print(std::string_view text) override { printed.emplace_back(text); }
  void beep() override { ++beeps; }
  void busy(bool on) override { busy_calls.push_back(on); }
  void yield() override { ++yields; }
  ClockReading clock() override { return now; }
  std::string current_directory() override { return directory; }
};

}  // namespace varnoth::testing
