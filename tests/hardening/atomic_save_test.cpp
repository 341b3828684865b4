// Saving never leaves a partial file: a full disk, a folder that refuses new
// files or a crash in the middle of a write leaves the old file as it was and
// no temporary behind. The command line tells a failed write by its path and
// exit code 1; the desktop handlers stay silent.
#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "divergence/driver.h"
#include "input/sequence_file.h"
#include "reports/matrix.h"
#include "reports/saving.h"
#include "state/options.h"
#include "support/cli_runner.h"
#include "support/fake_platform.h"
#include "support/paths.h"

namespace varnoth::testing {
namespace {

namespace fs = std::filesystem;

std::string fresh_folder(const std::string& name) {
  const fs::path dir = fs::path(scratch_dir()) / name;
  fs::remove_all(dir);
  fs::create_directories(dir);
  return dir.string();
}

std::vector<std::string> listing(const std::string& dir) {
  std::vector<std::string> names;
  for (const auto& e : fs::directory_iterator(dir)) names.push_back(e.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

const std::string kOld = "the old file, which a failed save must leave whole\r\n";
const std::string kNew(1 << 20, 'x');  // 1 MiB: more than the limits below allow

// A file-size limit for this process, as a full disk would refuse the write.
// The signal it raises is ignored so that the write fails with an error.
struct FileSizeLimit {
  rlimit before{};
  void (*handler)(int) = nullptr;
  explicit FileSizeLimit(rlim_t bytes) {
    getrlimit(RLIMIT_FSIZE, &before);
    handler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit = before;
    limit.rlim_cur = bytes;
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, handler);
  }
};

TEST(AtomicSave, FullDiskKeepsTheOldFile) {
  const std::string dir = fresh_folder("full");
  const std::string path = dir + "/report.out";
  write_file(path, kOld);
  {
    FileSizeLimit limit(64 * 1024);
    EXPECT_FALSE(write_text_file(path, kNew));
    EXPECT_FALSE(write_report_file(path, "head\r\n", kNew));
    AtomicFile streamed(path);
    for (int i = 0; i < 16; ++i) streamed.append(kNew.substr(0, 16 * 1024));
    EXPECT_FALSE(streamed.commit());
  }
  EXPECT_EQ(read_file(path), kOld);
  EXPECT_EQ(listing(dir), std::vector<std::string>{"report.out"});
  EXPECT_TRUE(write_text_file(path, kNew));  // and once there is room again
  EXPECT_EQ(read_file(path), kNew);
}

TEST(AtomicSave, UncommittedOrFailedFileLeavesNothing) {
  const std::string dir = fresh_folder("uncommitted");
  const std::string path = dir + "/table.win";
  write_file(path, kOld);
  {
    AtomicFile file(path);
    ASSERT_TRUE(file.ok());
    file.append("half of a table");
  }  // never committed: a run that failed
  EXPECT_EQ(read_file(path), kOld);
  EXPECT_EQ(listing(dir), std::vector<std::string>{"table.win"});
}

TEST(AtomicSave, CrashInTheMiddleOfAWriteLeavesTheOldFile) {
  const std::string dir = fresh_folder("crash");
  const std::string path = dir + "/matrix.dis";
  write_file(path, kOld);
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    AtomicFile file(path);
    file.append(kNew);
    std::_Exit(3);  // dies before the commit, as a crash would
  }
  int status = 0;
  waitpid(child, &status, 0);
  ASSERT_TRUE(WIFEXITED(status));
  EXPECT_EQ(WEXITSTATUS(status), 3);
  EXPECT_EQ(read_file(path), kOld);
}

// A folder that takes no new files (immutable even for root), where chattr
// works on this file system; skipped where it does not.
TEST(AtomicSave, FolderThatRefusesNewFilesKeepsTheOldFile) {
  const std::string dir = fresh_folder("immutable");
  const std::string path = dir + "/report.out";
  write_file(path, kOld);
  if (std::system(("chattr +i '" + dir + "' 2>/dev/null").c_str()) != 0)
    GTEST_SKIP() << "chattr +i is not available here";
  struct Undo {
    std::string dir;
    ~Undo() { (void)std::system(("chattr -i '" + dir + "'").c_str()); }
  } undo{dir};
  if (std::ofstream(dir + "/probe")) GTEST_SKIP() << "the folder still takes files";
  EXPECT_FALSE(write_text_file(path, kNew));
  EXPECT_EQ(read_file(path), kOld);
}

using Cli = CliResult;
Cli cli(std::vector<std::string> args) { return run_cli(std::move(args)); }

TEST(CommandLine, AFailedWriteExitsOneAndNamesThePath) {
  const std::string dir = fresh_folder("cli");
  const std::string input = source_path("examples/coding/primates.meg");
  const std::string missing = dir + "/no/such/folder/out";
  const std::string folder = dir + "/taken";
  fs::create_directory(folder);
  const std::string old = dir + "/old.out";
  write_file(old, kOld);
  struct Case {
    std::vector<std::string> args;
    std::string path;
  };
  const Case cases[] = {
      {{"run", input, "-o", missing + ".out"}, missing + ".out"},
      {{"run", input, "-o", folder}, folder},
      {{"run", input, "--window", "60:30", "--win", missing + ".win"}, missing + ".win"},
      {{"run", input, "--matrix", "ks", "-m", folder}, folder},
      {{"run", input, "--matrix", "ka", "-m", missing + ".dis"}, missing + ".dis"},
  };
  for (const Case& c : cases) {
    const Cli r = cli(c.args);
    EXPECT_EQ(r.code, 1) << c.path;
    EXPECT_NE(r.err.find("cannot write " + c.path), std::string::npos) << r.err;
  }
  {
    FileSizeLimit limit(4 * 1024);  // the report is larger
    const Cli r = cli({"run", input, "-o", old});
    EXPECT_EQ(r.code, 1);
    EXPECT_NE(r.err.find("cannot write " + old), std::string::npos) << r.err;
  }
  EXPECT_EQ(read_file(old), kOld);
  EXPECT_EQ(listing(dir), (std::vector<std::string>{"old.out", "taken"}));
  EXPECT_TRUE(fs::is_empty(folder));
}

TEST(DesktopSaves, AFailedSaveIsSilentAndChangesNothing) {
  AnalysisRecord rec;
  FakePlatform platform;
  start_up(rec);
  title_page_click(rec);
  ASSERT_TRUE(input::load_sequence_file(rec, platform, source_path("examples/coding/primates.meg"))
                  .ok());
  ASSERT_TRUE(divergence::run_divergence(rec, platform));
  prepare_matrix_page(rec);
  const std::string dir = fresh_folder("desktop");
  const std::string bad = dir + "/no/such/folder/x";
  platform.save_answers = {bad + ".out", bad + ".win", bad + ".dis"};
  const std::string report = rec.results.ReportText;
  EXPECT_FALSE(save_results(rec, platform));
  EXPECT_FALSE(save_window_data(rec, platform));
  EXPECT_FALSE(save_matrix(rec, platform));
  EXPECT_TRUE(platform.messages.empty());
  EXPECT_TRUE(rec.form.MatrixTab.visible);  // the page stays open
  EXPECT_EQ(rec.results.ReportText, report);
  EXPECT_TRUE(fs::is_empty(dir));
}

// Every file the program writes goes through AtomicFile: no other code opens a
// file for writing.
TEST(Writers, OnlySavingOpensFilesForWriting) {
  const char* kWriters[] = {"ofstream", "fopen(",  "freopen(", "O_WRONLY", "O_CREAT",
                            "QFile ",   "QFile(",  "<QFile>",  "QSaveFile"};
  std::vector<std::string> found;
  for (const auto& e : fs::recursive_directory_iterator(source_path("src"))) {
    if (!e.is_regular_file() || e.path().filename() == "saving.cpp") continue;
    std::ifstream in(e.path());
    std::stringstream text;
    text << in.rdbuf();
    for (const char* w : kWriters)
      if (text.str().find(w) != std::string::npos)
        found.push_back(e.path().filename().string() + ": " + w);
  }
  EXPECT_TRUE(found.empty()) << ::testing::PrintToString(found);
}

}  // namespace
}  // namespace varnoth::testing
