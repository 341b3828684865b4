// Recognising the format from line 1 and the extension, in the fixed order of
// the tests, with the PHYLIP extension quirks.
#include <gtest/gtest.h>

#include "input/format_detection.h"
#include "input_fixtures.h"
#include "support/paths.h"

namespace varnoth::testing {
namespace {

using input::InputFormat;

struct DetectionCase {
  const char* line1;
  const char* extension;
  InputFormat expected;
};

TEST(FormatDetection, TestsRunInOrderAndTheFirstThatHoldsDecides) {
  const DetectionCase cases[] = {
      // 1: ">DL;" only; any other ">" line fails every test.
      {">DL;HSA", "pir", InputFormat::Pir},
      {">DL;HSA", "phy", InputFormat::Pir},
      {">P1;HSA", "pir", InputFormat::None},
      {">Homo_sapiens", "aln", InputFormat::None},
      {">dl;HSA", "pir", InputFormat::None},
      // 2 and 3: "#MEG" or "#meg", any other "#" is GDE.
      {"#MEGA", "meg", InputFormat::Mega},
      {"#mega", "", InputFormat::Mega},
      {"#Mega", "meg", InputFormat::Gde},
      {"#Homo sapiens", "gde", InputFormat::Gde},
      {"#", "phy", InputFormat::Gde},
      // 4: case matters.
      {"CLUSTAL W (1.83) multiple sequence alignment", "aln", InputFormat::Clustal},
      {"Clustal W (1.83) multiple sequence alignment", "aln", InputFormat::None},
      // 5: either header, in any case.
      {"PileUp", "msf", InputFormat::Msf},
      {"pileup", "", InputFormat::Msf},
      {"   MSF: 900  Type: N", "msf", InputFormat::Msf},
      {"   msf: 900  Type: N", "msf", InputFormat::Msf},
      // two blanks: no MSF header, but column 6 and columns 9-13 pass test 8
      {"  MSF:  900  Type: N", "msf", InputFormat::PhylipFixed},
      // 6: a number 1..9999 in columns 1-4 and a blank in column 6.
      {"  900  Homo sapiens", "lwl", InputFormat::Lwl},
      {"  900  Homo sapiens", "txt", InputFormat::Lwl},
      {"  900  Homo sapiens", "", InputFormat::Lwl},
      {"10000 Homo sapiens", "lwl", InputFormat::Lwl},
      {"  900Homo sapiens", "lwl", InputFormat::None},
      {"    0 Homo sapiens", "lwl", InputFormat::None},
      {"  900", "lwl", InputFormat::None},
      // 7: "phy" and "PHY" admit the free header; 6 gave way to them.
      {"  900  Homo sapiens", "phy", InputFormat::PhylipFree},
      {"  900  Homo sapiens", "PHY", InputFormat::PhylipFree},
      {"6 900", "phy", InputFormat::PhylipFree},
      {"Hello", "phy", InputFormat::PhylipFree},
      // "Phy" stops test 6 but is no free header: test 8 or nothing.
      {"  900  Homo sapiens", "Phy", InputFormat::None},
      {"    6   900", "Phy", InputFormat::PhylipFixed},
      // 8: column 6 a digit or not a number, columns 9-13 above 10, below 99999.
      {"    3   120", "txt", InputFormat::PhylipFixed},
      {"    3   120", "phy", InputFormat::PhylipFree},
      {"    3    11", "", InputFormat::PhylipFixed},
      {"    3    10", "", InputFormat::None},
      {"    3   99998", "", InputFormat::PhylipFixed},
      {"    3   99999", "", InputFormat::None},
      // 9: nothing.
      {"Alignment of primate sequences", "txt", InputFormat::None},
      {"", "gde", InputFormat::None},
  };
  for (const auto& c : cases)
    EXPECT_EQ(input::detect_format(c.line1, c.extension), c.expected)
        << "line 1 \"" << c.line1 << "\", extension \"" << c.extension << "\"";
}

TEST(FormatDetection, NameAndExtensionOfThePath) {
  EXPECT_EQ(input::file_name_of("C:\\data\\primates.gde"), "primates.gde");
  EXPECT_EQ(input::file_name_of("/home/ana/primates.gde"), "primates.gde");
  EXPECT_EQ(input::file_name_of("dir\\sub/primates.phy"), "primates.phy");
  EXPECT_EQ(input::file_name_of("primates.gde"), "primates.gde");
  // The extension is behind the FIRST point of the whole path.
  EXPECT_EQ(input::path_extension("/home/ana/primates.phy"), "phy");
  EXPECT_EQ(input::path_extension("/home/ana/my.data/primates.phy"), "data/primates.phy");
  EXPECT_EQ(input::path_extension("./primates.phy"), "/primates.phy");
  EXPECT_EQ(input::path_extension("primates.tar.phy"), "tar.phy");
  EXPECT_EQ(input::path_extension("primates"), "");
}

// The same PHYLIP file is read or refused according to its path alone.
TEST(FormatDetection, ThePathDecidesForAPhylipFile) {
  const std::string bytes = read_file(source_path("examples/coding/primates.phy"));
  EXPECT_TRUE(read_text(bytes, "/home/ana/primates.phy").status.ok());
  EXPECT_TRUE(read_text(bytes, "C:\\ana\\PRIMATES.PHY").status.ok());
  for (const char* path : {"/home/ana/primates.Phy", "/home/ana.b/primates.phy",
                           "./primates.phy", "/home/ana/primates.txt"})
    EXPECT_EQ(read_text(bytes, path).status.problem, input::InputProblem::FormatError) << path;
}

// A first line with a number and a blank in column 6 is PHYLIP under "phy"
// and LWL under any other extension: the same lines then read differently.
TEST(FormatDetection, NumberAndBlankInColumn6IsPhylipOnlyUnderPhy) {
  const std::string bytes = lines_text({"   2   12", "Human     ACGTACGTACGT",
                                        "Chimp     ACGTACGTACGA"});
  auto phylip = read_text(bytes, "pair.phy");
  ASSERT_TRUE(phylip.status.ok());
  EXPECT_EQ(phylip.seq.InputFormatName, "PHYLIP");
  EXPECT_EQ(phylip.seq.SeqCount, 2);
  EXPECT_EQ(phylip.seq.SeqLength, 12);
  EXPECT_EQ(phylip.seq.SeqNames[1], "Chimp     ");

  // As LWL: length 2 in columns 1-6, so records of 2 lines, 3 / 2 = 1.5
  // sequences, and room for round(1 + 2/3) = 2 cells, which line 2's 17
  // letters overrun.
  auto lwl = read_text(bytes, "pair.txt");
  EXPECT_EQ(lwl.seq.InputFormatName, "LWL (91) / Text");
  EXPECT_EQ(lwl.seq.SeqCount, 1.5);
  EXPECT_EQ(lwl.status.problem, input::InputProblem::BeyondRoom);
  EXPECT_EQ(lwl.status.line, 2);
}

TEST(FormatDetection, FixedHeaderReadsTheCountsLeftFromBefore) {
  const std::string bytes = read_file(source_path("examples/malformed/fixed_header.txt"));
  // Nothing left: format error.
  EXPECT_EQ(read_text(bytes, "fixed_header.txt").status.problem, input::InputProblem::FormatError);

  // Counts that match: three sequences of 120, one line each.
  SequenceData left;
  left.SeqCount = 3;
  left.SeqLength = 120;
  auto out = read_text(bytes, "fixed_header.txt", left);
  ASSERT_TRUE(out.status.ok());
  EXPECT_EQ(out.seq.InputFormatName, "PHYLIP");
  EXPECT_EQ(out.seq.SeqCount, 3);
  EXPECT_EQ(out.seq.SeqNames[2], "Gorilla   ");
  EXPECT_EQ(out.seq.NucleotideCount, 120);

  // Counts of another file: only two of the three sequences are read.
  left.SeqCount = 2;
  out = read_text(bytes, "fixed_header.txt", left);
  ASSERT_TRUE(out.status.ok());
  EXPECT_EQ(out.seq.SeqCount, 2);
  EXPECT_EQ(out.seq.SeqNames.size(), 2u);

  // A length that makes line 2 no sequential line: read as interleaved,
  // one line a sequence per block, until the file runs out.
  left.SeqCount = 6;
  left.SeqLength = 900;
  out = read_text(bytes, "fixed_header.txt", left);
  EXPECT_EQ(out.status.problem, input::InputProblem::EndOfFile);
  EXPECT_EQ(out.status.line, 5);
}

}  // namespace
}  // namespace varnoth::testing
