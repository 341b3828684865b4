#include "support/fake_platform.h"

namespace varnoth::testing {

bool FakePlatform::message(std::string_view text, std::string_view title, MessageIcon icon,
                           bool yes_no) {
  messages.push_back({std::string(text), std::string(title), icon, yes_no});
  if (!yes_no || yes_no_answers.empty()) return true;
  bool answer = yes_no_answers.front();
  yes_no_answers.pop_front();
  return answer;
}

std::string FakePlatform::open_file(const FileDialogRequest& request) {
  open_requests.push_back(request);
  if (open_answers.empty()) return {};
  std::string answer = open_answers.front();
  open_answers.pop_front();
  return answer;
}

std::string FakePlatform::save_file(const FileDialogRequest& request) {
  save_requests.push_back(request);
  if (save_answers.empty()) return {};
  std::string answer = save_answers.front();
  save_answers.pop_front();
  return answer;
}

}  // namespace varnoth::testing
