// Every input the fuzz targets ever failed on (fuzz/regressions/<target>/)
// and every seed (fuzz/corpus/<target>/), run through the same targets and
// their invariants: a broken invariant or a sanitizer finding fails the test.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#define VARNOTH_FUZZ_NO_MAIN
#include "../../fuzz/fuzz_handlers.cpp"
#include "../../fuzz/fuzz_readers.cpp"
#include "../../fuzz/fuzz_run.cpp"
#include "../../fuzz/fuzz_text.cpp"
#include "support/paths.h"

namespace varnoth::testing {
namespace {

namespace fs = std::filesystem;

using OneInput = int (*)(const std::uint8_t*, std::size_t);

struct Target {
  const char* name;
  OneInput one_input;
};

constexpr Target kTargets[] = {
    {"fuzz_readers", fuzz::readers::one_input},
    {"fuzz_text", fuzz::text_engine::one_input},
    {"fuzz_handlers", fuzz::handlers::one_input},
    {"fuzz_run", fuzz::whole_run::one_input},
};

std::vector<fs::path> inputs_in(const std::string& folder) {
  std::vector<fs::path> files;
  if (!fs::is_directory(folder)) return files;
  for (const auto& e : fs::directory_iterator(folder))
    if (e.is_regular_file() && e.path().filename().string()[0] != '.') files.push_back(e.path());
  std::sort(files.begin(), files.end());
  return files;
}

// Runs every input of `kind` ("regressions" or "corpus"); returns how many.
std::size_t run_all(const std::string& kind) {
  fuzz::fail_handler = [](const char* what, std::string_view detail) {
    throw std::runtime_error(std::string(what) + "\n" + std::string(detail.substr(0, 500)));
  };
  std::size_t count = 0;
  for (const Target& t : kTargets) {
    for (const fs::path& file : inputs_in(source_path("fuzz/" + kind + "/" + t.name))) {
      SCOPED_TRACE(file.string());
      const std::string bytes = read_file(file.string());
      try {
        t.one_input(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
      } catch (const std::exception& e) {
        ADD_FAILURE() << t.name << " on " << file.filename() << ": " << e.what();
      }
      ++count;
    }
  }
  fuzz::fail_handler = nullptr;
  return count;
}

TEST(FuzzRegressions, EveryFoundInputPasses) {
  EXPECT_GT(run_all("regressions"), 0u);
}

TEST(FuzzSeeds, EverySeedPasses) {
  EXPECT_GT(run_all("corpus"), 100u);
}

}  // namespace
}  // namespace varnoth::testing
