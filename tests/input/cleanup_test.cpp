// The common step after every reader: identity dots, complete deletion by
// codon and by site, upper case, the count checks.
#include <gtest/gtest.h>

#include "input/alignment_cleanup.h"
#include "input_fixtures.h"

namespace varnoth::testing {
namespace {

using input::InputProblem;

// A sequential PHYLIP file of the given rows, names "s1", "s2", ...
ReadOutcome read_rows(const std::vector<std::string>& rows) {
  std::vector<std::string> lines{std::to_string(rows.size()) + " " +
                                 std::to_string(rows[0].size())};
  for (size_t i = 0; i < rows.size(); ++i) {
    std::string name = "s" + std::to_string(i + 1);
    lines.push_back(name + std::string(10 - name.size(), ' ') + rows[i]);
  }
  return read_text(lines_text(lines), "rows.phy");
}

std::vector<std::string> codon_rows(const SequenceData& s) {
  std::vector<std::string> out;
  for (const auto& r : s.CleanCodons) out.push_back(row_text(r));
  return out;
}

TEST(CommonStep, OneGapRemovesItsCodonFromAllAndOnlyItsSite) {
  auto out = read_rows({"ACGTACGTA", "ACG-ACGTA", "ACGTACGTT"});
  ASSERT_TRUE(out.status.ok());
  EXPECT_EQ(out.seq.CodonCount, 2);
  EXPECT_EQ(codon_rows(out.seq), (std::vector<std::string>{"ACGGTA", "ACGGTA", "ACGGTT"}));
  EXPECT_EQ(out.seq.NucleotideCount, 8);
  EXPECT_EQ(out.seq.CleanSites,
            (std::vector<std::string>{"ACGACGTA", "ACGACGTA", "ACGACGTT"}));
}

TEST(CommonStep, DotsTakeTheFirstSequencesLetterExceptInTheFirst) {
  auto out = read_rows({"ACGTA.GTA", ".CGTACGT.", "TCG.ACGTA"});
  ASSERT_TRUE(out.status.ok());
  EXPECT_EQ(row_text(out.seq.SeqCodons[0]), "ACGTA.GTA");  // stays
  EXPECT_EQ(row_text(out.seq.SeqCodons[1]), "ACGTACGTA");
  EXPECT_EQ(row_text(out.seq.SeqCodons[2]), "TCGTACGTA");
  // Sequence 1's dot removes codon 2 and site 6.
  EXPECT_EQ(codon_rows(out.seq), (std::vector<std::string>{"ACGGTA", "ACGGTA", "TCGGTA"}));
  EXPECT_EQ(out.seq.CleanSites,
            (std::vector<std::string>{"ACGTAGTA", "ACGTAGTA", "TCGTAGTA"}));
}

TEST(CommonStep, AShortLastCellGivesSitesButNoCodon) {
  auto out = read_rows({"acgtacgtac", "ACGTACGTAG"});
  ASSERT_TRUE(out.status.ok());
  EXPECT_EQ(out.seq.CodonCellCount, 4);
  EXPECT_EQ(row_text(out.seq.SeqCodons[0]), "acgtacgtac  ");  // case kept as read
  EXPECT_EQ(out.seq.CodonCount, 3);
  EXPECT_EQ(out.seq.CleanCodonTotal, 3);
  EXPECT_EQ(codon_rows(out.seq)[0], "ACGTACGTA");
  EXPECT_EQ(out.seq.NucleotideCount, 10);
  EXPECT_EQ(out.seq.CleanSites[0], "ACGTACGTAC");
  EXPECT_EQ(out.seq.CleanSites[1], "ACGTACGTAG");
}

TEST(CommonStep, AnythingButACGTInEitherCaseIsRemoved) {
  // Columns 2 (N), 4 (R), 6 (U), 8 (?) and 10 (~) go, and with them codons 1-4.
  auto out = read_rows({"ANGRAUG?ATTGCAT", "ACGTACGTA~Tgcag"});
  ASSERT_TRUE(out.status.ok());
  EXPECT_EQ(out.seq.CodonCount, 1);
  EXPECT_EQ(codon_rows(out.seq), (std::vector<std::string>{"CAT", "CAG"}));
  EXPECT_EQ(out.seq.CleanSites, (std::vector<std::string>{"AGAGATGCAT", "AGAGATGCAG"}));
}

TEST(CommonStep, NoSequencesOrNoLettersIsAFormatError) {
  // SeqLength 0 (a record without letters), no cells, no sequences.
  EXPECT_EQ(read_text(lines_text({"#a", "", "#b", ""}), "e.gde").status.problem,
            InputProblem::FormatError);
  EXPECT_EQ(read_text(lines_text({"2 0", "s1        ", "s2        "}), "e.phy").status.problem,
            InputProblem::FormatError);
  EXPECT_EQ(read_text(lines_text({"0 6", "s1        ACGTAC"}), "e.phy").status.problem,
            InputProblem::FormatError);
}

TEST(CommonStep, CleanArraysComeFromTheCellsDirectly) {
  SequenceData seq;
  seq.SeqCount = 2;
  seq.SeqLength = 7;
  seq.SeqNames = {"a", "b"};
  seq.SeqCodons = {{{'A', 'C', 'G'}, {'T', 'A', 'C'}, {'G', ' ', ' '}},
                   {{'.', 'C', 'G'}, {'T', 'A', 'C'}}};  // row 2 short: blank cell
  ASSERT_TRUE(input::clean_alignment(seq, 3).ok());
  EXPECT_EQ(seq.SequenceLoaded, 1);
  EXPECT_EQ(row_text(seq.SeqCodons[1]), "ACGTAC   ");
  EXPECT_EQ(seq.CodonCount, 2);
  EXPECT_EQ(seq.NucleotideCount, 6);
  EXPECT_EQ(seq.PairCount, 1);
  EXPECT_EQ(seq.SeqCountCopy, 2);
}

}  // namespace
}  // namespace varnoth::testing
