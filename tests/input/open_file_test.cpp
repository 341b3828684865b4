// The open command over the record and the platform: the dialog, the reset,
// the report "Input Sequence Information", and every way a file is refused.
#include <filesystem>

#include <gtest/gtest.h>

#include "input/input_report.h"
#include "input/sequence_file.h"
#include "input_fixtures.h"
#include "support/fake_platform.h"
#include "support/paths.h"

namespace varnoth::testing {
namespace {

using input::InputProblem;

const char* const kDefaultSummary =
    " CODING DIVERGENCE ANALYSIS\r\n"
    " M.-Hits Correcting Method:  Kimura-2p\r\n"
    " Genetic Code:               Universal\r\n"
    " Multiple pathways method:   Unweighted\r\n"
    " Comparison Restrictions:    None\r\n";

std::string example(const std::string& relative) { return source_path("examples/" + relative); }

std::string scratch_file(const std::string& name, const std::string& bytes) {
  std::string path = scratch_dir() + "/" + name;
  write_file(path, bytes);
  return path;
}

TEST(OpenSequenceFile, AsksWithTheSequenceFilterAndCancelChangesNothing) {
  AnalysisRecord rec;
  rec.form.Text1.text = "before";
  rec.form.Text2.text = "summary";
  rec.region.RegionFirst = "4";
  FakePlatform platform;
  auto status = input::open_sequence_file(rec, platform);
  EXPECT_EQ(status.problem, InputProblem::Cancelled);
  ASSERT_EQ(platform.open_requests.size(), 1u);
  EXPECT_EQ(platform.open_requests[0].filter,
            "Sequence Files |*.gde;*.lwl;*.meg;*.pir;*.aln;*.msf;*.phy;*.fa;*.fasta;*.fas;*.fna;"
            "*.ffn;*.mfa;*.afa|All files (*.*)|*.*");
  EXPECT_EQ(platform.open_requests[0].filter_index, 1);
  EXPECT_EQ(platform.open_requests[0].default_name, "");
  EXPECT_EQ(rec.form.Text1.text, "before");
  EXPECT_EQ(rec.form.Text2.text, "summary");
  EXPECT_EQ(rec.region.RegionFirst, "4");
  EXPECT_TRUE(platform.busy_calls.empty());
  EXPECT_TRUE(platform.messages.empty());
}

TEST(OpenSequenceFile, ReportAndWindowAfterAGoodLoad) {
  AnalysisRecord rec;
  rec.region.RegionFirst = "10";
  rec.region.RegionLast = "300";
  rec.region.RegionMode = 1;
  rec.region.CodingWindowText = "\r\n Region to analyze:10 -300 nuc.";
  rec.menu.CIcodingRegion.enabled = true;
  rec.menu.CIcodingRegionKaKs.enabled = true;
  rec.form.SSTab3.visible = true;
  rec.form.Boto1.visible = true;
  rec.form.MatrixBoton.visible = true;
  rec.form.Picture1.visible = true;
  FakePlatform platform;
  const std::string path = example("coding/primates.gde");
  platform.open_answers.push_back(path);
  ASSERT_TRUE(input::open_sequence_file(rec, platform).ok());

  EXPECT_EQ(rec.form.Text1.text,
            " Input File Name:   primates.gde\r\n"
            " Input File Format: GDE\r\n"
            "\r\n"
            " Number of Sequences:                6\r\n"
            " Number of Nucleotide positions:   900\r\n"
            "\r\n"
            " Sequence#1: Homo sapiens\r\n"
            " Sequence#2: Pan troglodytes\r\n"
            " Sequence#3: Gorilla gorilla\r\n"
            " Sequence#4: Pongo abelii\r\n"
            " Sequence#5: Macaca mulatta\r\n"
            " Sequence#6: Callithrix jacchus\r\n");
  EXPECT_EQ(rec.form.Text2.text, std::string(kDefaultSummary) + "\r\n Region to analyze: All");
  EXPECT_EQ(rec.seq.InputFileName, "primates.gde");
  EXPECT_EQ(rec.form.Fichero1.text, path);
  EXPECT_EQ(rec.seq.SequenceLoaded, 1);

  const Menu& m = rec.menu;
  for (const MenuItem* item : {&m.AnalysisOptions, &m.Diver, &m.Region_analysis, &m.Sliding_Window})
    EXPECT_TRUE(item->enabled) << item->caption;
  EXPECT_FALSE(m.CIcodingRegion.enabled);
  EXPECT_FALSE(m.CIcodingRegionKaKs.enabled);
  const Form& f = rec.form;
  for (const Control* hidden : {&f.SSTab3, &f.Boto1, &f.Boto2, &f.Boto3, &f.MatrixBoton,
                                &f.Picture1, &f.SSTab2, &f.Label1, &f.Label2, &f.Label3})
    EXPECT_FALSE(hidden->visible) << hidden->text;
  EXPECT_TRUE(f.SSTab1.visible);
  EXPECT_TRUE(f.Text1.visible);
  EXPECT_TRUE(f.Text2.visible);
  EXPECT_EQ(f.SSTab1Page, 0);
  EXPECT_EQ(f.Label3.text, "  Reformatting...");
  EXPECT_EQ(rec.region.RegionFirst, "");
  EXPECT_EQ(rec.region.RegionLast, "");
  EXPECT_EQ(rec.region.RegionMode, 0);
  EXPECT_EQ(rec.region.CodingWindowText, "");
  EXPECT_EQ(platform.busy_calls, (std::vector<bool>{true, false}));
  EXPECT_TRUE(platform.messages.empty());
}

TEST(InputReport, CountsNamesAndFractions) {
  FakePlatform platform;
  AnalysisRecord rec;
  ASSERT_TRUE(input::load_sequence_file(rec, platform, example("coding/primates.pir")).ok());
  // The PIR name of 50 characters is shown to 45.
  EXPECT_NE(rec.form.Text1.text.find(
                "\r\n Sequence#1: HSA Homo sapiens primate gene, coding region,\r\n"),
            std::string::npos);
  EXPECT_NE(rec.form.Text1.text.find(" Input File Format: NBRF/PIR\r\n"), std::string::npos);

  ASSERT_TRUE(input::load_sequence_file(rec, platform, example("malformed/fraction.lwl")).ok());
  EXPECT_EQ(rec.form.Text1.text,
            " Input File Name:   fraction.lwl\r\n"
            " Input File Format: LWL (91) / Text\r\n"
            "\r\n"
            " Number of Sequences:              2.5\r\n"
            " Number of Nucleotide positions:    42\r\n"
            "\r\n"
            " Sequence#1: Homo sapiens\r\n"
            " Sequence#2: Pan troglodytes\r\n");

  SequenceData wide;
  wide.SeqCount = 99999;
  wide.SeqLength = 99999;
  EXPECT_TRUE(input::input_report_fits(wide));
  EXPECT_NE(input::build_input_report(wide).find("positions: 99999\r\n"), std::string::npos);
  wide.SeqLength = 100000;
  EXPECT_FALSE(input::input_report_fits(wide));
  wide.SeqLength = 12;
  wide.SeqCount = 7.0 / 3;
  EXPECT_FALSE(input::input_report_fits(wide));
}

struct RefusedCase {
  std::string path;
  std::string message;
  std::string message_after_a_load = message;  // where the counts left matter
};

std::vector<RefusedCase> refused_cases() {
  std::string big = " 2 100002\n";
  for (const char* name : {"Human     ", "Chimp     "})
    big += name + std::string(100002, 'A') + "\n";
  const std::string missing = scratch_dir() + "/no_such_file.gde";
  return {
      {example("malformed/empty.gde"),
       " File ends before the data is complete: empty.gde, line 1"},
      {example("malformed/one_sequence.gde"),
       " File ends before the data is complete: one_sequence.gde, line 4"},
      {example("malformed/truncated.phy"),
       " File ends before the data is complete: truncated.phy, line 5"},
      {example("malformed/fasta_like.aln"), "  File Format Error"},
      {example("malformed/no_format.txt"), "  File Format Error"},
      {example("malformed/binary.dat"),
       " Not a text file (it holds binary data): binary.dat, line 1"},
      // No counts left: format error; those of a 6 x 900 file: 6 lines wanted.
      {example("malformed/fixed_header.txt"), "  File Format Error",
       " File ends before the data is complete: fixed_header.txt, line 5"},
      {example("malformed/longer_record.gde"),
       " Sequence data longer than expected: longer_record.gde, line 6"},
      {example("malformed/long_fraction.lwl"),
       " Too many sequences or positions to report (5 digits at most): long_fraction.lwl"},
      {scratch_file("wide.phy", big),
       " More than 99,999 nucleotide positions, the most this program reads: wide.phy"},
      {scratch_file("short.aln", lines_text({"CLUSTAL", "", "Hs   ACGTACGT", "Pt   ACGTACGA"})),
       " No sequence data where expected: short.aln, line 3"},
      {missing, " Cannot open the file: " + missing},
      {scratch_dir(), " Cannot open the file: " + scratch_dir()},
  };
}

void expect_refused(const AnalysisRecord& rec, const FakePlatform& platform,
                    const std::string& message) {
  ASSERT_EQ(platform.messages.size(), 1u);
  EXPECT_EQ(platform.messages[0].text, message);
  EXPECT_EQ(platform.messages[0].title, "OPEN SEQUENCE FILE");
  EXPECT_EQ(platform.messages[0].icon, MessageIcon::Exclamation);
  EXPECT_EQ(platform.busy_calls, (std::vector<bool>{true, false}));
  EXPECT_EQ(rec.seq.SequenceLoaded, 0);
  EXPECT_EQ(rec.form.Text1.text, " No Sequence Information... ");
  EXPECT_EQ(rec.form.Text2.text, kDefaultSummary);
  EXPECT_EQ(rec.form.SSTab1Page, 1);
  EXPECT_FALSE(rec.form.Label3.visible);
}

TEST(OpenSequenceFile, RefusedFilesOnAFreshRecord) {
  for (const auto& c : refused_cases()) {
    SCOPED_TRACE(c.path);
    AnalysisRecord rec;
    FakePlatform platform;
    auto status = input::load_sequence_file(rec, platform, c.path);
    EXPECT_FALSE(status.ok());
    EXPECT_EQ(status.message, c.message);
    expect_refused(rec, platform, c.message);
    EXPECT_FALSE(rec.menu.Diver.enabled);
    EXPECT_FALSE(rec.menu.Region_analysis.enabled);
    EXPECT_EQ(rec.seq.SeqCount, 0);
  }
}

TEST(OpenSequenceFile, ARefusedFileKeepsThePreviousAlignmentAndMenus) {
  for (const auto& c : refused_cases()) {
    SCOPED_TRACE(c.path);
    AnalysisRecord rec;
    FakePlatform good;
    ASSERT_TRUE(input::load_sequence_file(rec, good, example("coding/primates.aln")).ok());
    FakePlatform platform;
    input::load_sequence_file(rec, platform, c.path);
    expect_refused(rec, platform, c.message_after_a_load);
    EXPECT_TRUE(rec.menu.Diver.enabled);
    EXPECT_TRUE(rec.menu.Sliding_Window.enabled);
    EXPECT_EQ(rec.seq.InputFileName, std::filesystem::path(c.path).filename().string());
    EXPECT_EQ(rec.seq.SeqCount, 6);
    EXPECT_EQ(rec.seq.SeqLength, 900);
    EXPECT_EQ(rec.seq.CodonCount, 295);
    EXPECT_EQ(rec.seq.CleanCodons.size(), 6u);
  }
}

// The fixed header reads with the counts of the file loaded before it.
TEST(OpenSequenceFile, FixedHeaderAfterAFileOfTheSameShape) {
  std::string rows = read_file(example("malformed/fixed_header.txt"));
  rows = rows.substr(rows.find('\n') + 1);
  AnalysisRecord rec;
  FakePlatform platform;
  const std::string three = scratch_file("three.phy", " 3 120\n" + rows);
  ASSERT_TRUE(input::load_sequence_file(rec, platform, three).ok());
  auto status = input::load_sequence_file(rec, platform, example("malformed/fixed_header.txt"));
  ASSERT_TRUE(status.ok()) << status.message;
  EXPECT_EQ(rec.seq.InputFileName, "fixed_header.txt");
  EXPECT_EQ(rec.seq.InputFormatName, "PHYLIP");
  EXPECT_EQ(rec.seq.SeqCount, 3);
  EXPECT_EQ(rec.seq.SeqLength, 120);
}

TEST(OpenSequenceFile, ALargeFileLoads) {
  // 1000 sequences of 9999 letters in GDE records of 60-letter lines (10 MB).
  std::string bytes;
  unsigned state = 12345;
  std::string row(9999, 'A');
  for (int i = 0; i < 1000; ++i) {
    bytes += "#sequence " + std::to_string(i + 1) + "\n";
    for (char& c : row) {
      state = state * 1103515245u + 12345u;
      c = "ACGT"[(state >> 16) & 3u];
    }
    for (size_t p = 0; p < row.size(); p += 60) bytes += row.substr(p, 60) + "\n";
  }
  AnalysisRecord rec;
  FakePlatform platform;
  ASSERT_TRUE(input::load_sequence_file(rec, platform, scratch_file("large.gde", bytes)).ok());
  EXPECT_EQ(rec.seq.SeqCount, 1000);
  EXPECT_EQ(rec.seq.SeqLength, 9999);
  EXPECT_EQ(rec.seq.CodonCount, 3333);
  EXPECT_EQ(rec.seq.NucleotideCount, 9999);
  EXPECT_EQ(rec.seq.CleanSites[999], row);
  EXPECT_NE(rec.form.Text1.text.find(" Sequence#1000: sequence 1000\r\n"), std::string::npos);
}

}  // namespace
}  // namespace varnoth::testing
