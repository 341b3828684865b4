// Everything the logic needs from the machine it runs on. The desktop program,
// the command line and the tests each give their own implementation; the logic
// never calls a toolkit or the operating system's dialogs directly.
#pragma once

#include <string>
#include <string_view>

namespace varnoth {

enum class MessageIcon { None, Information, Exclamation, Critical, Question };

struct FileDialogRequest {
  std::string filter;        // "Sequence Files |*.gde;...|All files (*.*)|*.*"
  int filter_index = 1;      // 1-based, as the dialogs count filters
  std::string default_name;  // proposed file name, may be empty
};

struct ClockReading {
  std::string date;  // as the report heads print it
  std::string time;
  double seconds_since_midnight = 0;
};

class Platform {
 public:
  virtual ~Platform() = default;
  // A message box. Returns true for "yes" where `yes_no` is asked, else true.
  virtual bool message(std::string_view text, std::string_view title, MessageIcon icon,
                       bool yes_no = false) = 0;
  // File dialogs: an empty result means the user cancelled.
  virtual std::string open_file(const FileDialogRequest& request) = 0;
  virtual std::string save_file(const FileDialogRequest& request) = 0;
  // Sends a whole text to the printer and ends the document.
  virtual void print(std::string_view text) = 0;
  virtual void beep() = 0;
  virtual void busy(bool on) = 0;
  // Lets the interface repaint and take clicks (between simulation replicates).
  virtual void yield() = 0;
  virtual ClockReading clock() = 0;
  virtual std::string current_directory() = 0;
};

}  // namespace varnoth
