#include "cli/console_platform.h"

#include <chrono>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <ostream>

#include "text/number_reading.h"

namespace varnoth::cli {

namespace {

std::string trimmed(std::string_view s) {
  while (!s.empty() && s.front() == ' ') s.remove_prefix(1);
  while (!s.empty() && s.back() == ' ') s.remove_suffix(1);
  return std::string(s);
}

}  // namespace

bool ConsolePlatform::message(std::string_view text, std::string_view title, MessageIcon,
                              bool yes_no) {
  ++messages_shown;
  const std::string t = trimmed(title);
  err_ << "varnoth: ";
  if (!subject.empty()) err_ << subject << ": ";
  if (!t.empty()) err_ << t << ": ";
  err_ << trimmed(text) << "\n";
  return !yes_no;  // nobody answers a question on the command line: "no"
}

std::string ConsolePlatform::save_file(const FileDialogRequest&) {
  if (save_answers.empty()) return {};
  std::string path = save_answers.front();
  save_answers.pop_front();
  return path;
}

namespace {

ClockReading reading_of(const std::tm& tm) {
  char date[16], time[16];
  std::strftime(date, sizeof date, "%m/%d/%Y", &tm);
  std::strftime(time, sizeof time, "%H:%M:%S", &tm);
  return {date, time, static_cast<double>(tm.tm_hour * 3600 + tm.tm_min * 60 + tm.tm_sec)};
}

}  // namespace

ClockReading clock_at(long long epoch_seconds) {
  const std::time_t t = static_cast<std::time_t>(epoch_seconds);
  std::tm tm{};
  gmtime_r(&t, &tm);
  return reading_of(tm);
}

ClockReading ConsolePlatform::clock() {
  if (const char* epoch = std::getenv("SOURCE_DATE_EPOCH"); epoch != nullptr && *epoch != '\0')
    return clock_at(static_cast<long long>(text::read_number(epoch)));
  const auto now = std::chrono::system_clock::now();
  const std::time_t t = std::chrono::system_clock::to_time_t(now);
  std::tm tm{};
  localtime_r(&t, &tm);
  return reading_of(tm);
}

std::string ConsolePlatform::current_directory() {
  std::error_code ec;
  auto p = std::filesystem::current_path(ec);
  return ec ? std::string(".") : p.string();
}

}  // namespace varnoth::cli
