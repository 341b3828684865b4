// Each reader's own rules and quirks, on small files worked out by hand.
#include <gtest/gtest.h>

#include "input_fixtures.h"
#include "support/paths.h"

namespace varnoth::testing {
namespace {

using input::InputProblem;
using Names = std::vector<std::string>;

std::string rows(const SequenceData& s) {
  std::string out;
  for (const auto& r : s.SeqCodons) out += row_text(r) + "|";
  return out;
}

// ---------------------------------------------------------------- GDE

TEST(GdeReader, RecordsTakeTheFirstRecordsLineCount) {
  // Records of 3 lines; the trailing half record and all behind the empty
  // line are not counted: Int(8 / 3) = 2 sequences.
  auto out = read_text(lines_text({"#Human", "AC GTA", "CGGGT", "#Chimp", "ACGTA", "CGGGA",
                                   "#Gorilla", "ACG", "", "#Orang", "ACGTA", "CGGGT"}),
                       "a.gde");
  ASSERT_TRUE(out.status.ok());
  EXPECT_EQ(out.seq.SeqCount, 2);
  EXPECT_EQ(out.seq.SeqLength, 10);
  EXPECT_EQ(out.seq.SeqNames, (Names{"Human", "Chimp"}));
  EXPECT_EQ(rows(out.seq), "ACGTACGGGT  |ACGTACGGGA  |");
  EXPECT_EQ(out.seq.CodonCount, 3);
  EXPECT_EQ(out.seq.NucleotideCount, 10);
}

TEST(GdeReader, TheCellCountIsTheLastSequences) {
  // Sequence 1 has 9 letters, the last 6: two cells, sequence 1 cut to them,
  // while SeqLength stays that of record 1.
  auto out = read_text(lines_text({"#a", "ACGTACGGG", "#b", "ACGTAC"}), "a.gde");
  ASSERT_TRUE(out.status.ok());
  EXPECT_EQ(out.seq.CodonCellCount, 2);
  EXPECT_EQ(out.seq.SeqLength, 9);
  EXPECT_EQ(rows(out.seq), "ACGTAC|ACGTAC|");
}

TEST(GdeReader, OneSequenceRunsOffTheEnd) {
  auto out = read_text(read_file(source_path("examples/malformed/one_sequence.gde")), "x.gde");
  EXPECT_EQ(out.status.problem, InputProblem::EndOfFile);
  EXPECT_EQ(out.status.line, 4);
}

TEST(GdeReader, ALongerRecordOverrunsTheRoomOfTheFirst) {
  // Record 1 has 60 letters: room for round(1 + 20) = 21 cells; record 2's
  // 66 letters need 22, on its second line (line 6).
  auto out = read_text(read_file(source_path("examples/malformed/longer_record.gde")), "x.gde");
  EXPECT_EQ(out.status.problem, InputProblem::BeyondRoom);
  EXPECT_EQ(out.status.line, 6);
}

TEST(GdeReader, NulBytesMakeTheFileBinary) {
  const std::string bytes("#A\nAC\0GTA\n#B\nACGGTA\n", 20);
  auto out = read_text(bytes, "nul.gde");
  EXPECT_EQ(out.status.problem, input::InputProblem::NotText);
  EXPECT_EQ(out.status.line, 2);
}

// ---------------------------------------------------------------- LWL

TEST(LwlReader, AFractionalSequenceCountIsKept) {
  auto out = read_text(read_file(source_path("examples/malformed/fraction.lwl")), "f.lwl");
  ASSERT_TRUE(out.status.ok());
  EXPECT_EQ(out.seq.SeqCount, 2.5);  // 5 lines / 2 a record
  EXPECT_EQ(out.seq.SeqCountCopy, 2.5);
  EXPECT_EQ(out.seq.PairCount, 2.5 * 1.5 / 2);
  EXPECT_EQ(out.seq.SeqNames, (Names{"Homo sapiens", "Pan troglodytes"}));
  EXPECT_EQ(out.seq.SeqLength, 42);
}

TEST(LwlReader, NameIsTheThirdWordOnOrTheSecondBehindLeadingBlanks) {
  const std::string a(42, 'A');
  auto out = read_text(lines_text({"42    Homo sapiens", a, "   42 Pan troglodytes", a,
                                   "   42 Gorilla", a}),
                       "n.lwl");
  ASSERT_TRUE(out.status.ok());
  EXPECT_EQ(out.seq.SeqNames, (Names{"sapiens", "Pan troglodytes", "Gorilla"}));
}

TEST(LwlReader, CarriedLettersCountTwiceInTheLength) {
  // 62 letters in lines of 31: the letter carried into line 2 counts again.
  const std::string l1 = "ACGTACGTACGTACGTACGTACGTACGTACG", l2 = "TACGTACGTACGTACGTACGTACGTACGTAC";
  auto out = read_text(lines_text({"   62  X", l1, l2, "   62  Y", l1, l2}), "c.lwl");
  ASSERT_TRUE(out.status.ok());
  EXPECT_EQ(out.seq.SeqCount, 2);
  EXPECT_EQ(out.seq.SeqLength, 63);
  EXPECT_EQ(out.seq.CodonCellCount, 21);
  EXPECT_EQ(row_text(out.seq.SeqCodons[0]), l1 + l2 + " ");
}

// ---------------------------------------------------------------- NBRF/PIR

TEST(PirReader, TheStarIsDroppedWhereverItFalls) {
  struct Case {
    const char* last_line;
    double length;
    const char* row;
  };
  // Line 1 "ACGTACGTAC" leaves "C" carried.
  const Case cases[] = {
      {"GT*", 12, "ACGTACGTACGT"},          // carry "*" alone: dropped
      {"GTA*", 13, "ACGTACGTACGTA  "},      // carry "A*": stored as "A"
      {"GTAC*", 14, "ACGTACGTACGTAC "},     // "AC*" closed a cell: "AC"
  };
  for (const auto& c : cases) {
    auto out =
        read_text(lines_text({">DL;HSA", "Homo sapiens", "ACGTACGTAC", c.last_line}), "s.pir");
    ASSERT_TRUE(out.status.ok()) << c.last_line;
    EXPECT_EQ(out.seq.SeqLength, c.length) << c.last_line;
    EXPECT_EQ(row_text(out.seq.SeqCodons[0]), c.row) << c.last_line;
    EXPECT_EQ(out.seq.NucleotideCount, c.length) << c.last_line;
  }
  // A "*" on a line of its own.
  auto out = read_text(lines_text({">DL;HSA", "t", "ACGTAC", "*", ">DL;PTR", "t", "ACGTAA", "*"}),
                       "s.pir");
  ASSERT_TRUE(out.status.ok());
  EXPECT_EQ(out.seq.SeqCount, 2);
  EXPECT_EQ(rows(out.seq), "ACGTAC|ACGTAA|");
}

TEST(PirReader, NameIsCodeAndTitleCutTo50) {
  // Record 2 has an empty title: a header counts with the two lines behind it.
  auto out = read_text(
      lines_text({">DL;HSA", "Homo sapiens beta-globin gene, complete coding sequence",
                  "ACGTAC*", ">DL;PTR", "", "ACGTAA*"}),
      "n.pir");
  ASSERT_TRUE(out.status.ok());
  EXPECT_EQ(out.seq.SeqNames,
            (Names{"HSA Homo sapiens beta-globin gene, complete coding", "PTR "}));
  EXPECT_EQ(out.seq.SeqNames[0].size(), 50u);
}

TEST(PirReader, AnEmptyLineBetweenRecordsEndsTheCount) {
  auto out = read_text(
      lines_text({">DL;HSA", "Human", "ACGTAC*", "", ">DL;PTR", "Chimp", "ACGTAA*"}), "e.pir");
  ASSERT_TRUE(out.status.ok());
  EXPECT_EQ(out.seq.SeqCount, 1);
  EXPECT_EQ(out.seq.PairCount, 0);
}

// ---------------------------------------------------------------- MEGA

TEST(MegaReader, SequentialNameKeepsItsBlankAndDotsResolve) {
  auto out = read_text(lines_text({"#MEGA", "!Title test;", "#Human ACGTAC", "GGGTTT", "#Chimp",
                                   ".....G", "......"}),
                       "s.meg");
  ASSERT_TRUE(out.status.ok());
  EXPECT_EQ(out.seq.InputFormatName, "MEGA");
  EXPECT_EQ(out.seq.SeqNames, (Names{"Human ", "Chimp"}));
  EXPECT_EQ(out.seq.SeqLength, 12);
  EXPECT_EQ(rows(out.seq), "ACGTACGGGTTT|ACGTAGGGGTTT|");
}

TEST(MegaReader, InterleavedBlocksAppendToEachSequence) {
  auto out = read_text(lines_text({"#MEGA", "!Title test;", "", "#Human  ACGTAC GGG",
                                   "#Chimp  ACGTAA GGG", "", "#Human  TTTA", "#Chimp  TTTC"}),
                       "i.meg");
  ASSERT_TRUE(out.status.ok());
  EXPECT_EQ(out.seq.SeqCount, 2);
  EXPECT_EQ(out.seq.SeqNames, (Names{"Human", "Chimp"}));
  EXPECT_EQ(out.seq.SeqLength, 13);
  EXPECT_EQ(out.seq.CodonCellCount, 5);
  EXPECT_EQ(rows(out.seq), "ACGTACGGGTTTA  |ACGTAAGGGTTTC  |");
}

TEST(MegaReader, InterleavedSequencesHaveRoomFor20000Cells) {
  auto file = [](size_t letters) {
    std::vector<std::string> lines{"#MEGA", "!Title long;"};
    for (size_t done = 0; done < letters; done += 60) {
      std::string part(std::min<size_t>(60, letters - done), 'A');
      lines.push_back("");
      lines.push_back("#a " + part);
      lines.push_back("#b " + part);
    }
    return lines_text(lines);
  };
  auto fits = read_text(file(60000), "l.meg");
  ASSERT_TRUE(fits.status.ok());
  EXPECT_EQ(fits.seq.SeqLength, 60000);
  EXPECT_EQ(fits.seq.CodonCellCount, 20000);
  EXPECT_EQ(read_text(file(60001), "l.meg").status.problem, InputProblem::BeyondRoom);
}

TEST(MegaReader, SequentialReadsOnUntilTheLengthIsReached) {
  // Sequence b is short: its reading takes the "#c" line as data, and c's
  // own header is never found.
  auto out = read_text(
      lines_text({"#MEGA", "!Title t;", "#a", "ACGTACGTA", "#b", "ACG", "#c", "ACGT"}), "r.meg");
  EXPECT_EQ(out.status.problem, InputProblem::EndOfFile);
  EXPECT_EQ(out.status.line, 9);
}

// ---------------------------------------------------------------- CLUSTAL

TEST(ClustalReader, BlocksNamesAndTrailingNumbers) {
  auto out = read_text(lines_text({"CLUSTAL W (1.83) multiple sequence alignment", "",
                                   "Homo_sapiens_sapiens ACGTACGTAC 10",
                                   "Pan_troglodytes      ACGTACGTAA 10",
                                   "                     ********* ", "",
                                   "Homo_sapiens_sapiens GGT 13", "Pan_troglodytes      GGA 13",
                                   "                     ** "}),
                       "b.aln");
  ASSERT_TRUE(out.status.ok());
  EXPECT_EQ(out.seq.SeqNames, (Names{"Homo_sapiens_sapiens ", "Pan_troglodytes      "}));
  EXPECT_EQ(out.seq.SeqLength, 13);
  EXPECT_EQ(rows(out.seq), "ACGTACGTACGGT  |ACGTACGTAAGGA  |");
}

TEST(ClustalReader, NamesAreCutAtTheLastLinesSequenceColumn) {
  // The last line of block 1 puts the sequences at column 14: the longer name
  // is cut at 13 and the rest of it is taken as letters.
  auto out = read_text(lines_text({"CLUSTAL", "", "Homo_sapiens_sapiens ACGTAC",
                                   "Pan          ACGTAA"}),
                       "c.aln");
  ASSERT_TRUE(out.status.ok());
  EXPECT_EQ(out.seq.SeqNames, (Names{"Homo_sapiens_", "Pan          "}));
  EXPECT_EQ(row_text(out.seq.SeqCodons[0]), "sapiens  ");
  EXPECT_EQ(out.seq.SeqLength, 7);
}

TEST(ClustalReader, LinesOf14CharactersOrFewerEndTheFirstBlock) {
  auto out = read_text(lines_text({"CLUSTAL", "", "Hs   ACGTACGT", "Pt   ACGTACGA"}), "s.aln");
  EXPECT_EQ(out.status.problem, InputProblem::NoSequenceLines);
  EXPECT_EQ(out.status.line, 3);
}

// ---------------------------------------------------------------- MSF

TEST(MsfReader, NameWidthSkipsAndShortLines) {
  // Name width 9 (data from column 10). Line 16 is no longer than the name
  // field: all of it is data, and it also becomes the name.
  auto out = read_text(lines_text({"PileUp", "", " MSF: 13  Type: N  Check: 1  ..", "",
                                   " Name: Hsa  Len: 13", " Name: Ptr  Len: 13", "", "//", "",
                                   "         1", "Hsa      ACGTACGTAC", "Ptr      ACGTACG.AA", "",
                                   "         11", "Hsa      GGT", "ACA"}),
                       "m.msf");
  ASSERT_TRUE(out.status.ok());
  EXPECT_EQ(out.seq.SeqNames, (Names{"Hsa      ", "ACA"}));
  EXPECT_EQ(out.seq.SeqLength, 13);
  EXPECT_EQ(rows(out.seq), "ACGTACGTACGGT  |ACGTACGTAAACA  |");
}

TEST(MsfReader, WithoutNumberingLineTheDataFollowsTheEmptyLine) {
  auto out = read_text(lines_text({"   MSF: 6  Type: N", "//", "", "Hsa      ACGTAC",
                                   "Ptr      ACGTAA"}),
                       "m.msf");
  ASSERT_TRUE(out.status.ok());
  EXPECT_EQ(out.seq.SeqCount, 2);
  EXPECT_EQ(rows(out.seq), "ACGTAC|ACGTAA|");
}

TEST(MsfReader, NoEndOfHeaderRunsOffTheEnd) {
  auto out = read_text(lines_text({"PileUp", "", "Hsa      ACGTAC"}), "m.msf");
  EXPECT_EQ(out.status.problem, InputProblem::EndOfFile);
  EXPECT_EQ(out.status.line, 4);
}

// ---------------------------------------------------------------- PHYLIP

TEST(PhylipReader, InterleavedBlocksKeepATenColumnMargin) {
  auto out = read_text(lines_text({" 2 14", "Human     ACGTACGTAC", "Chimp     ACGTACGTAA", "",
                                   "          GGTA", "          GGTC"}),
                       "i.phy");
  ASSERT_TRUE(out.status.ok());
  EXPECT_EQ(rows(out.seq), "ACGTACGTACGGTA |ACGTACGTAAGGTC |");

  // Continuation lines without the margin lose their first ten columns.
  out = read_text(lines_text({" 2 14", "Human     ACGTACGTAC", "Chimp     ACGTACGTAA", "",
                              "GGTA", "GGTC"}),
                  "i.phy");
  ASSERT_TRUE(out.status.ok());
  EXPECT_EQ(rows(out.seq), "ACGTACGTAC  |ACGTACGTAA  |");
  EXPECT_EQ(out.seq.SeqLength, 14);  // the header's, not the letters read
}

TEST(PhylipReader, SequentialLinesAreTheLengthPlus10Or11) {
  auto out = read_text(lines_text({"2 6 I", "Human      ACGTAC", "Chimp      ACGTAA"}), "s.phy");
  ASSERT_TRUE(out.status.ok());
  EXPECT_EQ(out.seq.SeqCount, 2);
  EXPECT_EQ(out.seq.SeqNames, (Names{"Human     ", "Chimp     "}));
  EXPECT_EQ(rows(out.seq), "ACGTAC|ACGTAA|");
}

TEST(PhylipReader, FewerSequencesThanTheHeaderSays) {
  auto out = read_text(read_file(source_path("examples/malformed/truncated.phy")), "t.phy");
  EXPECT_EQ(out.status.problem, InputProblem::EndOfFile);
  EXPECT_EQ(out.status.line, 5);
}

}  // namespace
}  // namespace varnoth::testing
