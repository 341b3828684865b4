// Where the tests find the sources (examples, golden files) and may write scratch files.
#pragma once

#include <string>

namespace varnoth::testing {

std::string source_path(const std::string& relative);  // below the project root
std::string scratch_dir();                              // a fresh folder per test program
std::string read_file(const std::string& path);         // whole file, bytes as they are
void write_file(const std::string& path, const std::string& bytes);

}  // namespace varnoth::testing
