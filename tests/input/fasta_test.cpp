// Aligned FASTA: detection by extension and first line, the reader, refusals,
// and reading a file as a named format whatever it is called.
#include <gtest/gtest.h>

#include "input/format_detection.h"
#include "input/sequence_file.h"
#include "input_fixtures.h"
#include "support/paths.h"

namespace varnoth::testing {
namespace {

using input::InputFormat;
using input::InputProblem;

TEST(FastaDetection, ExtensionAndFirstLineTogether) {
  struct Case {
    const char* line1;
    const char* path;
    InputFormat expected;
  };
  const Case cases[] = {
      {">Homo_sapiens", "/data/gene.fasta", InputFormat::Fasta},
      {">Homo_sapiens", "/data/gene.FA", InputFormat::Fasta},
      {">x", "gene.Fas", InputFormat::Fasta},
      {">x", "gene.fna", InputFormat::Fasta},
      {">x", "gene.ffn", InputFormat::Fasta},
      {">x", "gene.mfa", InputFormat::Fasta},
      {">x", "gene.afa", InputFormat::Fasta},
      // The file name's own extension counts, also behind other points.
      {">x", "/runs/v1.2/OG0001.cds.fasta", InputFormat::Fasta},
      {">", "gene.fa", InputFormat::Fasta},
      // Other extensions keep the rules of the seven formats.
      {">Homo_sapiens", "/data/gene.aln", InputFormat::None},
      {">Homo_sapiens", "/data/gene.txt", InputFormat::None},
      {">x", "/data.fasta/gene", InputFormat::None},
      {">x", "gene.fasta.txt", InputFormat::None},
      {">x", "gene.fastq", InputFormat::None},
      {">x", "gene", InputFormat::None},
      // ">DL;" opens PIR first, also under a FASTA extension.
      {">DL;HSA", "gene.fasta", InputFormat::Pir},
      // Only a ">" line is FASTA.
      {"#MEGA", "gene.fasta", InputFormat::Mega},
      {"  900  Homo sapiens", "gene.fa", InputFormat::Lwl},
      {"Homo", "gene.fa", InputFormat::None},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(input::detect_format(c.line1, input::path_extension(c.path)), c.expected)
        << c.line1 << " " << c.path;
  }
  EXPECT_EQ(input::format_label(InputFormat::Fasta), "FASTA");
}

TEST(FastaDetection, FormatNames) {
  const std::pair<const char*, InputFormat> names[] = {
      {"gde", InputFormat::Gde},         {"lwl", InputFormat::Lwl},
      {"mega", InputFormat::Mega},       {"pir", InputFormat::Pir},
      {"clustal", InputFormat::Clustal}, {"msf", InputFormat::Msf},
      {"phylip", InputFormat::PhylipFree}, {"fasta", InputFormat::Fasta},
      {"FASTA", InputFormat::None},      {"phy", InputFormat::None},
      {"", InputFormat::None}};
  for (const auto& [name, format] : names) EXPECT_EQ(input::format_by_name(name), format) << name;
}

constexpr const char* kRowA = "ATGAAACCCGGGTTTACGTA";  // 20 letters
constexpr const char* kRowB = "ATGAAACCTGGGTTAACGTA";
constexpr const char* kRowC = "ATGAAGCCCGGGTTTACG-A";

TEST(FastaReader, WrappedUnwrappedCrlfAndBlankLinesReadAlike) {
  const std::string unwrapped = lines_text({">seq A", kRowA, ">seq B", kRowB, ">seq C", kRowC});
  const std::string wrapped = lines_text({">seq A", "ATGAAAC", "CCGGGTTTA", "CGTA",
                                          ">seq B", "ATGAAACCTGGGTTAACGT", "A",
                                          "", ">seq C", "ATG AAG CCC GGG", "   ", "TTTACG-A", ""});
  const std::string crlf =
      lines_text({">seq A", "ATGAAACCCGGG", "TTTACGTA", ">seq B", kRowB, ">seq C", kRowC}, "\r\n");
  const std::string no_last_end = ">seq A\nATGAAACCCGGGTTTACGTA\n>seq B\n" + std::string(kRowB) +
                                  "\n>seq C\n" + kRowC;
  for (const std::string& text : {unwrapped, wrapped, crlf, no_last_end}) {
    const ReadOutcome r = read_text(text, "/x/three.fasta");
    ASSERT_TRUE(r.status.ok()) << text;
    EXPECT_EQ(r.seq.InputFormatName, "FASTA");
    EXPECT_EQ(r.seq.SeqCount, 3);
    EXPECT_EQ(r.seq.SeqLength, 20);
    EXPECT_EQ(r.seq.PairCount, 3);
    ASSERT_EQ(r.seq.SeqNames.size(), 3u);
    EXPECT_EQ(r.seq.SeqNames[0], "seq A");
    EXPECT_EQ(r.seq.SeqNames[2], "seq C");
    // Seven cells, the last one short: it gives no codon, and the gap of C
    // removes position 19 from every sequence.
    EXPECT_EQ(row_text(r.seq.SeqCodons[0]), std::string(kRowA) + " ");
    EXPECT_EQ(row_text(r.seq.SeqCodons[2]), std::string(kRowC) + " ");
    EXPECT_EQ(r.seq.CodonCount, 6);
    EXPECT_EQ(r.seq.NucleotideCount, 19);
  }
}

TEST(FastaReader, LowerCaseAndDotsAsEveryReader) {
  const ReadOutcome r =
      read_text(lines_text({">a", "atgaaaccc", ">b", "..gaaa.cc"}), "two.fa");
  ASSERT_TRUE(r.status.ok());
  EXPECT_EQ(row_text(r.seq.SeqCodons[0]), "atgaaaccc");
  EXPECT_EQ(row_text(r.seq.SeqCodons[1]), "atgaaaccc");
  EXPECT_EQ(r.seq.CleanSites[1], "ATGAAACCC");
}

TEST(FastaReader, UnequalLengthsNameTheFirstShortSequence) {
  struct Case {
    std::vector<std::string> lines;
    long line;
    const char* detail;
  };
  const Case cases[] = {
      {{">a", "ACGTACGTA", ">b", "ACGTAC", ">c", "ACG"}, 3,
       "\"b\" has 6 positions, the longest sequence 9"},
      // Shorter than a later, longer sequence.
      {{">first one", "ACGTAC", ">b", "", "ACGTACGTA"}, 1,
       "\"first one\" has 6 positions, the longest sequence 9"},
      {{">a", "ACGTAC", ">b", ">c", "ACGTAC"}, 3, "\"b\" has 0 positions, the longest sequence 6"},
  };
  for (const Case& c : cases) {
    const ReadOutcome r = read_text(lines_text(c.lines), "uneven.fasta");
    EXPECT_EQ(r.status.problem, InputProblem::UnequalLengths) << c.detail;
    EXPECT_EQ(r.status.line, c.line) << c.detail;
    EXPECT_EQ(r.status.detail, c.detail);
  }
  const ReadOutcome r = read_text(lines_text(cases[0].lines), "uneven.fasta");
  EXPECT_EQ(input::problem_message(r.status, "uneven.fasta"),
            " Sequences of unequal length: \"b\" has 6 positions, the longest sequence 9: "
            "uneven.fasta, line 3");
}

TEST(FastaReader, OtherExtensionStillTheFormatError) {
  const std::string text = lines_text({">a", kRowA, ">b", kRowB});
  EXPECT_EQ(read_text(text, "/x/pair.aln").status.problem, InputProblem::FormatError);
  EXPECT_EQ(read_text(text, "/x/pair.txt").status.problem, InputProblem::FormatError);
  // The bundled FASTA-like file with a CLUSTAL extension.
  const std::string bundled = read_file(source_path("examples/malformed/fasta_like.aln"));
  EXPECT_EQ(read_text(bundled, "fasta_like.aln").status.problem, InputProblem::FormatError);
}

TEST(FastaReader, NamedFormatOverridesDetection) {
  const std::string text = lines_text({">a", kRowA, ">b", kRowB});
  SequenceData seq;
  auto status = input::read_sequence_text(text, "/x/pair.txt", seq, InputFormat::Fasta);
  ASSERT_TRUE(status.ok());
  EXPECT_EQ(seq.InputFormatName, "FASTA");
  EXPECT_EQ(seq.SeqCount, 2);

  // A FASTA-named file read as PHYLIP, and a PHYLIP file under a FASTA name.
  const std::string phylip = lines_text({" 2 20", std::string("a         ") + kRowA,
                                         std::string("b         ") + kRowB});
  SequenceData as_phylip;
  status = input::read_sequence_text(phylip, "/x/pair.fasta", as_phylip, InputFormat::PhylipFree);
  ASSERT_TRUE(status.ok());
  EXPECT_EQ(as_phylip.InputFormatName, "PHYLIP");
  EXPECT_EQ(as_phylip.CleanSites[1], kRowB);
  // Letters before the first header cannot be FASTA.
  SequenceData refused;
  EXPECT_EQ(input::read_sequence_text(phylip, "/x/pair.txt", refused, InputFormat::Fasta).problem,
            InputProblem::FormatError);
}

TEST(FastaReader, BundledExamplesMatchTheirMegaFiles) {
  for (const char* stem : {"examples/coding/primates", "examples/noncoding/introns"}) {
    const std::string fasta_path = source_path(std::string(stem) + ".fasta");
    const std::string mega_path = source_path(std::string(stem) + ".meg");
    const ReadOutcome fasta = read_text(read_file(fasta_path), fasta_path);
    const ReadOutcome mega = read_text(read_file(mega_path), mega_path);
    ASSERT_TRUE(fasta.status.ok()) << stem;
    ASSERT_TRUE(mega.status.ok()) << stem;
    EXPECT_EQ(fasta.seq.SeqLength, mega.seq.SeqLength);
    EXPECT_EQ(fasta.seq.CleanSites, mega.seq.CleanSites) << stem;
    EXPECT_EQ(fasta.seq.CleanCodons, mega.seq.CleanCodons) << stem;
  }
}

}  // namespace
}  // namespace varnoth::testing
