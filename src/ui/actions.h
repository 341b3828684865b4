// The one place where the controls of the desktop program meet the logic: each
// menu item and button maps to one call on the analysis record.
#pragma once

#include <string_view>
#include <vector>

#include "state/platform.h"
#include "state/record.h"

namespace varnoth::ui {

// The few commands that are the window's own business rather than the record's.
class WindowCommands {
 public:
  virtual ~WindowCommands() = default;
  virtual void show_about() = 0;  // the modal about box
  virtual void quit() = 0;        // ends the program
};

// The message of the two help items: this program has no help file.
inline constexpr std::string_view kNoHelpText =
    "Unable to display Help Contents. There is no Help associated with this project.";

// Runs the command behind a control: a menu item by its name, a control of the main
// window by its objectName, a control of the region dialog as "region.<name>".
// Returns false where the control has no command (Boto3, `nothing`, unknown names)
// or its command is not linked into this build yet.
bool perform(std::string_view control, AnalysisRecord& rec, Platform& platform,
             WindowCommands& window);

// The controls that have a command in the design but none linked yet.
std::vector<std::string_view> pending_commands();

}  // namespace varnoth::ui
