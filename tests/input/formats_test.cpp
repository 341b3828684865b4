// The bundled alignments, each written in the seven formats, read back to the
// same alignment; names follow each format's own rules.
#include <gtest/gtest.h>

#include "input/sequence_file.h"
#include "input_fixtures.h"
#include "support/paths.h"

namespace varnoth::testing {
namespace {

// The aligned rows of a GDE file, read here by a rule of its own: a "#" line
// starts a sequence, other lines add their letters.
std::vector<std::string> gde_rows(const std::string& bytes) {
  std::vector<std::string> rows;
  size_t start = 0;
  while (start < bytes.size()) {
    size_t end = bytes.find('\n', start);
    if (end == std::string::npos) end = bytes.size();
    std::string line = bytes.substr(start, end - start);
    if (!line.empty() && line[0] == '#')
      rows.emplace_back();
    else
      rows.back() += line;
    start = end + 1;
  }
  return rows;
}

bool valid(char c) { return std::string_view("ACGTacgt").find(c) != std::string_view::npos; }

// Complete deletion worked out column by column over the rows.
struct Expected {
  std::vector<std::string> codons, sites;
};
Expected expected_clean(const std::vector<std::string>& rows) {
  Expected e{std::vector<std::string>(rows.size()), std::vector<std::string>(rows.size())};
  const size_t length = rows[0].size();
  for (size_t j = 0; j < length; ++j) {
    bool all = true;
    for (const auto& r : rows) all = all && valid(r[j]);
    if (all)
      for (size_t i = 0; i < rows.size(); ++i) e.sites[i] += static_cast<char>(toupper(rows[i][j]));
  }
  for (size_t c = 0; c + 3 <= length; c += 3) {
    bool all = true;
    for (const auto& r : rows) all = all && valid(r[c]) && valid(r[c + 1]) && valid(r[c + 2]);
    if (all)
      for (size_t i = 0; i < rows.size(); ++i)
        for (size_t k = 0; k < 3; ++k) e.codons[i] += static_cast<char>(toupper(rows[i][c + k]));
  }
  return e;
}

struct FormatCase {
  const char* file;
  const char* label;
  const char* first_name;
};

struct AlignmentSet {
  const char* gde;
  double seq_count, seq_length;
  long codons, sites;
  float cells;
  std::vector<FormatCase> formats;
};

const AlignmentSet kSets[] = {
    {"examples/coding/primates.gde", 6, 900, 295, 889, 300,
     {{"examples/coding/primates.gde", "GDE", "Homo sapiens"},
      {"examples/coding/primates.lwl", "LWL (91) / Text", "Homo sapiens"},
      {"examples/coding/primates.meg", "MEGA", "Homo_sapiens"},
      {"examples/coding/primates.pir", "NBRF/PIR",
       "HSA Homo sapiens primate gene, coding region, alig"},
      {"examples/coding/primates.aln", "CLUSTAL", "Homo_sapiens            "},
      {"examples/coding/primates.msf", "MSF", "Homo_sapiens         "},
      {"examples/coding/primates.phy", "PHYLIP", "H_sapiens "}}},
    {"examples/noncoding/introns.gde", 5, 604, 190, 584, 202,
     {{"examples/noncoding/introns.gde", "GDE", "Drosophila melanogaster"},
      {"examples/noncoding/introns.lwl", "LWL (91) / Text", "Drosophila melanogaster"},
      {"examples/noncoding/introns.meg", "MEGA", "D_melanogaster"},
      {"examples/noncoding/introns.pir", "NBRF/PIR",
       "DMEL Drosophila melanogaster Adh-like intron 1"},
      {"examples/noncoding/introns.aln", "CLUSTAL", "D_melanogaster      "},
      {"examples/noncoding/introns.msf", "MSF", "D_melanogaster  "},
      {"examples/noncoding/introns.phy", "PHYLIP", "D.melanoga"}}},
};

TEST(BundledAlignments, EveryFormatGivesTheSameCleanAlignment) {
  for (const auto& set : kSets) {
    const auto rows = gde_rows(read_file(source_path(set.gde)));
    const Expected expected = expected_clean(rows);
    for (const auto& f : set.formats) {
      SCOPED_TRACE(f.file);
      auto out = read_text(read_file(source_path(f.file)), source_path(f.file));
      ASSERT_TRUE(out.status.ok()) << static_cast<int>(out.status.problem) << " line "
                                   << out.status.line;
      const SequenceData& s = out.seq;
      EXPECT_EQ(s.InputFormatName, f.label);
      EXPECT_EQ(s.SeqCount, set.seq_count);
      EXPECT_EQ(s.SeqLength, set.seq_length);
      EXPECT_EQ(s.PairCount, set.seq_count * (set.seq_count - 1) / 2);
      EXPECT_EQ(s.CodonCellCount, set.cells);
      EXPECT_EQ(s.CodonCount, set.codons);
      EXPECT_EQ(s.CleanCodonTotal, set.codons);
      EXPECT_EQ(s.NucleotideCount, set.sites);
      EXPECT_EQ(s.SeqCountCopy, set.seq_count);
      EXPECT_EQ(s.SequenceLoaded, 1);
      ASSERT_EQ(s.SeqNames.size(), rows.size());
      EXPECT_EQ(s.SeqNames[0], f.first_name);
      for (size_t i = 0; i < rows.size(); ++i) {
        // The cells hold the aligned row, a short last cell padded with blanks.
        std::string padded = rows[i];
        padded.resize(3 * static_cast<size_t>(set.cells), ' ');
        EXPECT_EQ(row_text(s.SeqCodons[i]), padded) << "sequence " << i + 1;
        EXPECT_EQ(row_text(s.CleanCodons[i]), expected.codons[i]) << "sequence " << i + 1;
        EXPECT_EQ(s.CleanSites[i], expected.sites[i]) << "sequence " << i + 1;
      }
    }
  }
}

// The complete deletion of the coding example, counted by hand from its design:
// codons 41-42 and 120 are gaps in one sequence each and codons 77 and 250 hold
// an N, so 5 of 300 codons go; 9 gap and 2 N sites go of 900.
TEST(BundledAlignments, CodingExampleLosesItsGapAndNColumns) {
  auto out = read_text(read_file(source_path("examples/coding/primates.gde")), "primates.gde");
  ASSERT_TRUE(out.status.ok());
  const auto& s = out.seq;
  EXPECT_EQ(row_text(s.SeqCodons[5]).substr(120, 6), "------");
  EXPECT_EQ(row_text(s.SeqCodons[1])[749], 'N');
  EXPECT_EQ(s.CodonCount, 300 - 5);
  EXPECT_EQ(s.NucleotideCount, 900 - 9 - 2);
  EXPECT_EQ(std::string(s.CleanCodons[0][0].data(), 3), "ATG");
  EXPECT_EQ(std::string(s.CleanCodons[0].back().data(), 3), "TAA");
}

TEST(BundledAlignments, LineEndsDoNotMatter) {
  const std::string lf = read_file(source_path("examples/coding/primates.aln"));
  std::string crlf, cr;
  for (char c : lf) {
    crlf += c == '\n' ? std::string("\r\n") : std::string(1, c);
    cr += c == '\n' ? '\r' : c;
  }
  std::string no_last_end = lf.substr(0, lf.size() - 1);
  auto base = read_text(lf, "primates.aln");
  ASSERT_TRUE(base.status.ok());
  for (const std::string* bytes : {&crlf, &cr, &no_last_end}) {
    auto other = read_text(*bytes, "primates.aln");
    ASSERT_TRUE(other.status.ok());
    EXPECT_EQ(other.seq.CleanSites, base.seq.CleanSites);
    EXPECT_EQ(other.seq.SeqNames, base.seq.SeqNames);
    EXPECT_EQ(other.seq.SeqLength, 900);
  }
}

}  // namespace
}  // namespace varnoth::testing
