#include "reports/saving.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/fake_platform.h"
#include "support/paths.h"

namespace varnoth {
namespace {

namespace fs = std::filesystem;
using testing::FakePlatform;
using testing::read_file;
using testing::scratch_dir;

const std::string kStars =
    "********"
    "********"
    "********"
    "********"
    "********"
    "********"
    "********"
    "********";

// A folder of its own for each test, so the listing shows what a save left.
std::string fresh_folder(const std::string& name) {
  const fs::path dir = fs::path(scratch_dir()) / name;
  fs::remove_all(dir);
  fs::create_directories(dir);
  return dir.string();
}

std::vector<std::string> listing(const std::string& dir) {
  std::vector<std::string> names;
  for (const auto& e : fs::directory_iterator(dir)) names.push_back(e.path().filename().string());
  return names;
}

AnalysisRecord finished_run() {
  AnalysisRecord rec;
  rec.seq.InputFileName = "primates.cds.meg";
  rec.results.ReportText = "\r\n Report body\r\n last line without end";
  rec.results.WindowDataText = "Begin(bp)\tEnd(bp)\tMiddle(bp)\tJC\r\n1\t60\t30.5\t0.12000 \r\n";
  rec.form.Text3.text = "shown part";
  return rec;
}

TEST(CommonHead, ByteForByte) {
  EXPECT_EQ(common_head({"11-23-2026", "10:00:00", 36000}),
            "\r\n Varnoth v6.0\r\n 11-23-2026  10:00:00\r\n " + kStars + "\r\n");
}

TEST(DefaultOutputName, CutAtTheFirstPoint) {
  EXPECT_EQ(default_output_name("primates.cds.meg", ".out"), "primates.out");
  EXPECT_EQ(default_output_name("a.b", ".win"), "a.win");
  EXPECT_EQ(default_output_name("noext", ".dis"), "noext.dis");
  EXPECT_EQ(default_output_name(".hidden", ".out"), ".out");
  EXPECT_EQ(default_output_name("", ".out"), ".out");
}

TEST(SaveResults, WritesHeadAndWholeReport) {
  const std::string dir = fresh_folder("results");
  const std::string path = dir + "/primates.out";
  testing::write_file(path, "an older, longer file that must be replaced entirely");
  AnalysisRecord rec = finished_run();
  FakePlatform p;
  p.save_answers.push_back(path);
  ASSERT_TRUE(save_results(rec, p));
  ASSERT_EQ(p.save_requests.size(), 1u);
  EXPECT_EQ(p.save_requests[0].filter, "Output files (*.out)|*.out|All files (*.*)|*.*");
  EXPECT_EQ(p.save_requests[0].filter_index, 1);
  EXPECT_EQ(p.save_requests[0].default_name, "primates.out");
  EXPECT_EQ(rec.form.Fichero1.text, path);
  EXPECT_EQ(read_file(path), "\r\n Varnoth v6.0\r\n 11-23-2026  10:00:00\r\n " + kStars +
                                 "\r\n\r\n Report body\r\n last line without end");
  EXPECT_EQ(listing(dir), std::vector<std::string>{"primates.out"});
}

TEST(SaveWindowData, WritesTheTableAlone) {
  const std::string dir = fresh_folder("windows");
  const std::string path = dir + "/w.win";
  AnalysisRecord rec = finished_run();
  FakePlatform p;
  p.save_answers.push_back(path);
  ASSERT_TRUE(save_window_data(rec, p));
  EXPECT_EQ(p.save_requests[0].filter, "Output files (*.win)|*.win|All files (*.*)|*.*");
  EXPECT_EQ(p.save_requests[0].default_name, "primates.win");
  EXPECT_EQ(read_file(path), rec.results.WindowDataText);
}

TEST(Saving, CancelOrFailureLeavesNoFileAndNoChange) {
  const std::string dir = fresh_folder("failures");
  AnalysisRecord rec = finished_run();
  rec.form.Fichero1.text = "earlier.out";

  FakePlatform cancel;  // no answer: the dialog was cancelled
  EXPECT_FALSE(save_results(rec, cancel));
  EXPECT_FALSE(save_window_data(rec, cancel));
  EXPECT_EQ(rec.form.Fichero1.text, "earlier.out");

  // A folder that does not exist, and a target that is a folder.
  const std::string missing = dir + "/no/such/folder/r.out";
  const std::string folder = dir + "/taken.out";
  fs::create_directory(folder);
  for (const std::string& path : {missing, folder}) {
    AnalysisRecord copy = rec;
    FakePlatform p;
    p.save_answers.push_back(path);
    EXPECT_FALSE(save_results(copy, p)) << path;
    // The path is kept before the file is written, as the dialog chose it.
    EXPECT_EQ(copy.form.Fichero1.text, path);
    EXPECT_EQ(copy.results.ReportText, rec.results.ReportText);
  }
  EXPECT_FALSE(fs::exists(missing));
  EXPECT_TRUE(fs::is_directory(folder));
  EXPECT_EQ(listing(dir), std::vector<std::string>{"taken.out"});  // no temporary left
  EXPECT_FALSE(write_text_file("", "x"));
}

TEST(PrintResults, HeadAndShownTextWithCaptionInProgressBox) {
  struct CapturingPlatform : FakePlatform {
    const AnalysisRecord* rec = nullptr;
    std::string progress_while_printing;
    void print(std::string_view text) override {
      progress_while_printing = rec->form.Text33.text;
      FakePlatform::print(text);
    }
  };
  AnalysisRecord rec = finished_run();
  rec.form.Text33.text = " Comp# 3  of 3";
  CapturingPlatform p;
  p.rec = &rec;
  print_results(rec, p);
  ASSERT_EQ(p.printed.size(), 1u);
  EXPECT_EQ(p.printed[0],
            "\r\n Varnoth v6.0\r\n 11-23-2026  10:00:00\r\n " + kStars + "\r\nshown part");
  EXPECT_EQ(p.progress_while_printing, "Varnoth");
  EXPECT_EQ(rec.form.Text33.text, " Comp# 3  of 3");
}

}  // namespace
}  // namespace varnoth
