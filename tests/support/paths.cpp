#include "support/paths.h"

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <unistd.h>

namespace varnoth::testing {

std::string source_path(const std::string& relative) {
  return std::string(VARNOTH_SOURCE_DIR) + "/" + relative;
}

std::string scratch_dir() {
  static const std::string dir = [] {
    auto path = std::filesystem::path(VARNOTH_BINARY_DIR) / "scratch" /
                ("p" + std::to_string(::getpid()));
    std::filesystem::remove_all(path);
    std::filesystem::create_directories(path);
    return path.string();
  }();
  return dir;
}

std::string read_file(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) throw std::runtime_error("cannot read " + path);
  std::ostringstream out;
  out << in.rdbuf();
  return out.str();
}

void write_file(const std::string& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  if (!out) throw std::runtime_error("cannot write " + path);
  out << bytes;
}

}  // namespace varnoth::testing
