// Files beyond what the program reads: binary data, files too large, too many
// lines, sequences, positions or nucleotides, and the shapes that could make a
// reader hang (a 1 MB line, a file of only line ends). Each is refused with a
// message that names the limit, and the previous alignment stays loaded.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "input/input_limits.h"
#include "input/line_list.h"
#include "input/sequence_file.h"
#include "state/options.h"
#include "support/fake_platform.h"
#include "support/paths.h"

namespace varnoth::testing {
namespace {

using input::InputProblem;

constexpr const char* kGood = "#MEGA\n!Title t;\n#one\nATGAAACCC\n#two\nATGAAGCCC\n";

std::string scratch_file(const std::string& name, const std::string& bytes) {
  const std::string path = scratch_dir() + "/" + name;
  write_file(path, bytes);
  return path;
}

// Loads `path` into a record that holds a good alignment; the refusal must
// keep that alignment and tell `message` once.
void expect_refused(const std::string& path, const std::string& message) {
  SCOPED_TRACE(path);
  AnalysisRecord rec;
  FakePlatform platform;
  start_up(rec);
  ASSERT_TRUE(input::load_sequence_file(rec, platform, scratch_file("good.meg", kGood)).ok());
  const auto codons = rec.seq.CleanCodons;
  EXPECT_FALSE(input::load_sequence_file(rec, platform, path).ok());
  ASSERT_EQ(platform.messages.size(), 1u);
  EXPECT_EQ(platform.messages[0].text, message);
  EXPECT_EQ(platform.messages[0].title, "OPEN SEQUENCE FILE");
  EXPECT_EQ(rec.seq.SequenceLoaded, 0);
  EXPECT_EQ(rec.form.Text1.text, " No Sequence Information... ");
  EXPECT_EQ(rec.seq.CleanCodons, codons);
  EXPECT_EQ(rec.seq.SeqCount, 2);
  EXPECT_TRUE(rec.menu.Diver.enabled);
}

std::string phylip_line(const std::string& name, const std::string& letters) {
  std::string line = name;
  line.resize(10, ' ');
  return line + letters + "\n";
}

TEST(NotText, ControlBytesRefuseTheFileAndNameTheLine) {
  struct Case {
    std::string name;
    std::string bytes;
    long line;
  };
  const std::string nul(1, '\0');
  const Case cases[] = {
      {"nul.meg", "#MEGA\n#a\nAC" + nul + "GT\n", 3},
      {"utf16.meg", std::string("\xFF\xFE#\0M\0E\0G\0A\0", 12), 1},
      {"escape.aln", "CLUSTAL\n\x1B[31mred\n", 2},
      // Far behind the first chunk read: still found.
      {"late.gde", "#a\n" + std::string(300000, 'A') + "\n\x01\n", 3},
  };
  for (const Case& c : cases) {
    SequenceData seq;
    const auto status = input::read_sequence_text(c.bytes, c.name, seq);
    EXPECT_EQ(status.problem, InputProblem::NotText) << c.name;
    EXPECT_EQ(status.line, c.line) << c.name;
    expect_refused(scratch_file(c.name, c.bytes), " Not a text file (it holds binary data): " +
                                                      c.name + ", line " + std::to_string(c.line));
  }
  // Tabs, form feeds, the old end-of-file mark and bytes above 127 are text.
  const std::string text = "#MEGA\t\f\x1A\n#caf\xC3\xA9 ATGAAA\n#b ATGAAG\n";
  SequenceData seq;
  EXPECT_TRUE(input::read_sequence_text(text, "t.meg", seq).ok());
}

TEST(NotText, ByteOrderMarkAndWindowsLineEndsReadAsPlainText) {
  const std::string plain = "#MEGA\n!Title t;\n#one\nATGAAACCC\n#two\nATGAAGCCC\n";
  std::string windows = "\xEF\xBB\xBF";
  for (char c : plain) windows += c == '\n' ? std::string("\r\n") : std::string(1, c);
  SequenceData a, b;
  ASSERT_TRUE(input::read_sequence_text(plain, "a.meg", a).ok());
  ASSERT_TRUE(input::read_sequence_text(windows, "b.meg", b).ok());
  EXPECT_EQ(b.InputFormatName, "MEGA");
  EXPECT_EQ(a.SeqNames, b.SeqNames);
  EXPECT_EQ(a.CleanCodons, b.CleanCodons);
}

TEST(Limits, FileTooLargeIsRefusedBeforeItIsRead) {
  // A sparse file: its size is known at once, and reading it would take long.
  const std::string path = scratch_dir() + "/genome.aln";
  write_file(path, "CLUSTAL W\n");
  std::filesystem::resize_file(path, input::kMaxFileBytes + 1);
  expect_refused(path,
                 " File larger than 256 MiB (268,435,456 bytes), the most this program reads: "
                 "genome.aln");
  std::filesystem::remove(path);
}

TEST(Limits, TooManyLines) {
  std::string bytes = "#a\n";
  bytes.append(static_cast<std::size_t>(input::kMaxLines), '\n');
  EXPECT_EQ(input::count_lines(bytes), input::kMaxLines + 1);
  SequenceData seq;
  EXPECT_EQ(input::read_sequence_text(bytes, "x.gde", seq).problem, InputProblem::TooManyLines);
  expect_refused(scratch_file("lines.gde", bytes),
                 " More than 16,777,216 lines, the most this program reads: lines.gde");
}

TEST(Limits, SequencesPositionsAndNucleotides) {
  // 100,000 sequences of 3 letters in a sequential PHYLIP file.
  std::string many = "100000 3\n";
  for (int i = 0; i < 100000; ++i) many += phylip_line("s" + std::to_string(i), "ACG");
  expect_refused(scratch_file("many.phy", many),
                 " More than 99,999 sequences, the most this program reads: many.phy");

  // Two sequences of 100,000 letters in MEGA, one line each.
  const std::string letters(100000, 'A');
  expect_refused(scratch_file("long.meg", "#MEGA\n#a " + letters + "\n#b " + letters + "\n"),
                 " More than 99,999 nucleotide positions, the most this program reads: long.meg");

  // 99,999 sequences, the first and last of 2,700 letters and the rest of one:
  // evened out, 99,999 x 2,700 nucleotides, above 2^28.
  std::string wide = "99999 2700\n" + phylip_line("first", std::string(2700, 'C'));
  for (int i = 1; i < 99998; ++i) wide += phylip_line("s" + std::to_string(i), "A");
  wide += phylip_line("last", std::string(2700, 'G'));
  expect_refused(scratch_file("wide.phy", wide),
                 " More than 268,435,456 nucleotides in all (sequences x positions), the most "
                 "this program reads: wide.phy");
}

TEST(Limits, TheLargestCountsTheReportShowsAreRead) {
  const std::string letters(99999, 'T');
  SequenceData seq;
  ASSERT_TRUE(input::read_sequence_text("#MEGA\n#a " + letters + "\n#b " + letters + "\n",
                                        "edge.meg", seq)
                  .ok());
  EXPECT_EQ(seq.SeqLength, 99999);
  EXPECT_EQ(seq.NucleotideCount, 99999);
  EXPECT_EQ(seq.CodonCount, 33333);
}

// Shapes that loop-heavy readers meet: every extension and every header, with
// a 1 MB line behind it or only line ends. Each ends, refused or read.
TEST(NoHang, OneMegabyteLineAndOnlyLineEnds) {
  const std::string big(1 << 20, 'A');
  const char* heads[] = {"",       "#MEGA",   "#",        "CLUSTAL", "PILEUP",
                         ">DL;",   "  120  x", " 2 99999", "    3   120"};
  const char* names[] = {"x.aln", "x.phy", "x.gde", "x.txt"};
  const char* ends[] = {"\n", "\r\n", "\r"};
  for (const char* name : names) {
    for (const char* head : heads) {
      for (const char* end : ends) {
        SCOPED_TRACE(std::string(name) + " / " + head);
        SequenceData seq;
        const std::string line = std::string(head) + end + big;
        const auto one_line = input::read_sequence_text(line, name, seq);
        if (one_line.ok()) {
          EXPECT_LE(seq.SeqLength, 99999);
        }
        std::string only_ends = std::string(head);
        for (int i = 0; i < 200000; ++i) only_ends += end;
        seq = SequenceData{};
        EXPECT_FALSE(input::read_sequence_text(only_ends, name, seq).ok());
      }
    }
    SequenceData seq;
    EXPECT_FALSE(input::read_sequence_text(big, name, seq).ok());
  }
}

}  // namespace
}  // namespace varnoth::testing
