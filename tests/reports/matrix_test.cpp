#include "reports/matrix.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "support/fake_platform.h"
#include "support/paths.h"

namespace varnoth {
namespace {

using testing::FakePlatform;

StoreCell value(double v) { return {v, false}; }
StoreCell na() { return {0, true}; }

// 3 sequences, noncoding, whole sequence; column 2 (Kimura K) holds the matrix,
// column 1 other values that must not show.
AnalysisRecord noncoding_run() {
  AnalysisRecord rec;
  rec.menu.Coding.checked = false;
  rec.menu.Noncoding.checked = true;
  rec.seq.InputFileName = "three.seqs.lwl";
  rec.seq.SeqCount = 3;
  rec.seq.PairCount = 3;
  rec.seq.SeqLength = 120;
  rec.seq.NucleotideCount = 117;
  rec.seq.SeqNames = {"Alpha one  ", "   ", "Gamma"};
  rec.region.RegionText = "\r\n Region to analyze: All";
  rec.results.ComparisonStore.resize(4);
  auto& s = rec.results.ComparisonStore;
  s[1][2] = value(0.1234);  // (1,2)
  s[2][2] = na();           // (1,3)
  s[3][2] = value(12.5);    // (2,3), widens its cell
  for (int r = 1; r <= 3; ++r) s[r][1] = value(0.777);
  return rec;
}

// clang-format off
const char* const kNoncodingFile =
    "#MEGA\r\n"
    "TITLE: Varnoth v6.0  * Divergence Matrix Output *\r\n"
    "11-23-2026  10:00:00\r\n"
    "\r\n"
    "Input File Name:                /data/out.dis\r\n"
    "Number of Sequences:            " "    3\r\n"
    "Number of Nucleotide positions: " "  120\r\n"
    " Region to analyze: All\r\n"
    "\r\n"
    "Noncoding Divergence Analysis\r\n"
    "Number of Analyzed Nucleotides: 117\r\n"
    "M.-Hits Correcting Method: Kimura\xB4s 2-p : K\r\n"
    "\r\n"
    "OTU Labels\r\n"
    "#Alpha_one_#1\r\n"
    "#_#2\r\n"
    "#Gamma_#3\r\n"
    "   " "#1       " "#2       " "\r\n"
    "\r\n"
    "  0.1234 " "         " "    #2\r\n"
    "   N.A.  " "  12.5000 " "    #3\r\n"
    "\r\n";
// clang-format on

TEST(MatrixText, NoncodingThreeSequences) {
  const AnalysisRecord rec = noncoding_run();
  const MatrixItem item = noncoding_matrix_item(2);
  EXPECT_EQ(matrix_text(rec, item, {"11-23-2026", "10:00:00", 0}, "/data/out.dis"), kNoncodingFile);
}

// 4 sequences, coding, a region, vertebrate mitochondrial code, one change per
// codon; the matrix is column 7 (TRSa), column 8 holds decoys.
AnalysisRecord coding_run() {
  AnalysisRecord rec;
  rec.seq.InputFileName = "prim.seq.meg";
  rec.seq.SeqCount = 4;
  rec.seq.PairCount = 6;
  rec.seq.SeqLength = 300;
  rec.seq.CodonCount = 29;
  rec.seq.SeqNames = {"Homo sapiens", "Pan", "Gorilla  gorilla ", "Pongo"};
  rec.menu.universal.checked = false;
  rec.menu.Vermito.checked = true;
  rec.options.MaxOneChangeFlag = 1;
  rec.region.RegionText = "\r\n Region to analyze:10 -100 nuc.\r\n                   4 -34 codon";
  rec.results.ComparisonStore.resize(7);
  auto& s = rec.results.ComparisonStore;
  s[1][7] = value(0.01);      // (1,2)
  s[2][7] = value(0.02);      // (1,3)
  s[3][7] = value(0.03);      // (1,4)
  s[4][7] = na();             // (2,3)
  s[5][7] = value(0.123456);  // (2,4)
  s[6][7] = value(1.5);       // (3,4)
  for (int r = 1; r <= 6; ++r) s[r][8] = value(0.9);
  return rec;
}

// clang-format off
std::string coding_file(const std::string& path) {
  return "#MEGA\r\n"
         "TITLE: Varnoth v6.0  * Divergence Matrix Output *\r\n"
         "11-23-2026  10:00:00\r\n"
         "\r\n"
         "Input File Name:                " + path + "\r\n"
         "Number of Sequences:            " "    4\r\n"
         "Number of Nucleotide positions: " "  300\r\n"
         " Region to analyze:10 -100 nuc.\r\n"
         "                   4 -34 codon\r\n"
         "\r\n"
         "Coding Divergence Analysis\r\n"
         "Genetic Code:               Vertebrate Mitochondrial\r\n"
         "Comparison Restrictions:    Maximum One Substitution per Codon\r\n"
         "Number of Analyzed codons: 29\r\n"
         "M.-Hits Correcting Method:  Kimura-2p : TRSa\r\n"
         "\r\n"
         "OTU Labels\r\n"
         "#Homo_sapiens_#1\r\n"
         "#Pan_#2\r\n"
         "#Gorilla__gorilla_#3\r\n"
         "#Pongo_#4\r\n"
         "   " "#1       " "#2       " "#3       " "\r\n"
         "\r\n"
         "  0.0100 " "         " "         " "    #2\r\n"
         "  0.0200 " "   N.A.  " "         " "    #3\r\n"
         "  0.0300 " "  0.1235 " "  1.5000 " "    #4\r\n"
         "\r\n";
}
// clang-format on

TEST(MatrixText, CodingFourSequencesSavedFromThePage) {
  const std::string dir = testing::scratch_dir() + "/matrix";
  std::filesystem::create_directories(dir);
  const std::string path = dir + "/prim.dis";
  AnalysisRecord rec = coding_run();
  rec.form.SSTab3.visible = true;
  prepare_matrix_page(rec);
  rec.form.Option1.value = false;
  rec.form.Option4.value = true;  // "TRSa"
  FakePlatform p;
  p.save_answers.push_back(path);
  ASSERT_TRUE(save_matrix(rec, p));
  ASSERT_EQ(p.save_requests.size(), 1u);
  EXPECT_EQ(p.save_requests[0].filter, "Output files (*.dis)|*.dis|All files (*.*)|*.*");
  EXPECT_EQ(p.save_requests[0].filter_index, 1);
  EXPECT_EQ(p.save_requests[0].default_name, "prim.dis");
  EXPECT_EQ(rec.form.Fichero1.text, path);
  // The "Input File Name:" line names the output file itself: deliberate.
  EXPECT_EQ(testing::read_file(path), coding_file(path));
  EXPECT_FALSE(rec.form.MatrixTab.visible);
  EXPECT_TRUE(rec.form.SSTab3.visible);
}

TEST(MatrixText, CancelledSaveKeepsThePage) {
  AnalysisRecord rec = coding_run();
  prepare_matrix_page(rec);
  FakePlatform p;
  EXPECT_FALSE(save_matrix(rec, p));
  EXPECT_TRUE(rec.form.MatrixTab.visible);
  EXPECT_FALSE(rec.form.SSTab3.visible);
  EXPECT_EQ(rec.form.Fichero1.text, "");
}

TEST(MatrixText, HeaderVariantsAndWideColumnNumbers) {
  AnalysisRecord rec = coding_run();
  rec.options.MaxOneChangeFlag = 0;
  rec.menu.Vermito.checked = false;
  rec.menu.Dromito.checked = true;
  const std::string none = matrix_text(rec, coding_matrix_item(1, false), {}, "");
  EXPECT_NE(none.find("Genetic Code:               Drosophila Mitochondrial\r\n"),
            std::string::npos);
  EXPECT_NE(none.find("Comparison Restrictions:    None\r\n"), std::string::npos);
  rec.options.OnlyAaChangeFlag = 1;
  const std::string aa = matrix_text(rec, coding_matrix_item(1, false), {}, "");
  EXPECT_NE(aa.find("Comparison Restrictions:    Only AAs Substitutions\r\n"), std::string::npos);

  // Eleven sequences: "#10" takes six blanks, one-digit numbers seven; a
  // five-digit length gets no pad.
  AnalysisRecord big = noncoding_run();
  big.seq.SeqCount = 11;
  big.seq.PairCount = 55;
  big.seq.SeqLength = 12345;
  big.seq.SeqNames.resize(11, "x");
  big.results.ComparisonStore.resize(56);
  const std::string t = matrix_text(big, noncoding_matrix_item(0), {}, "");
  // clang-format off
  const std::string columns = "\r\n   " "#1       " "#2       " "#3       " "#4       " "#5       "
                              "#6       " "#7       " "#8       " "#9       " "#10      " "\r\n";
  // clang-format on
  EXPECT_NE(t.find(columns), std::string::npos);
  EXPECT_NE(t.find("Number of Nucleotide positions: 12345\r\n"), std::string::npos);
  EXPECT_NE(t.find("M.-Hits Correcting Method: None (Obs.Frequency Fd)\r\n"), std::string::npos);
  EXPECT_NE(t.find("    #11\r\n\r\n"), std::string::npos);
}

TEST(MatrixPage, NoncodingListDoublesOnSecondPress) {
  AnalysisRecord rec = noncoding_run();
  rec.form.SSTab3.visible = true;
  prepare_matrix_page(rec);
  ASSERT_EQ(rec.form.Combo1.items.size(), 9u);
  EXPECT_EQ(rec.form.Combo1.items[0], " Obs. Frequency");
  EXPECT_EQ(rec.form.Combo1.items[8], " Tajima-4p");
  EXPECT_EQ(rec.form.Combo1.text, " Obs. Frequency");
  EXPECT_TRUE(rec.form.Combo1.visible);
  EXPECT_FALSE(rec.form.Option1.visible);
  EXPECT_FALSE(rec.form.Option6.visible);
  EXPECT_FALSE(rec.form.SSTab3.visible);
  EXPECT_TRUE(rec.form.MatrixTab.visible);
  prepare_matrix_page(rec);
  ASSERT_EQ(rec.form.Combo1.items.size(), 18u);
  EXPECT_EQ(rec.form.Combo1.items[9], " Obs. Frequency");
  EXPECT_EQ(rec.form.Combo1.items[17], " Tajima-4p");

  rec.form.Combo1.text = " Tajima-1p";
  const MatrixItem item = matrix_item_from_page(rec);
  EXPECT_EQ(item.column, 6);
  EXPECT_EQ(item.method, "Tajima's 1-p :");
}

TEST(MatrixPage, CodingOptions) {
  AnalysisRecord rec = coding_run();
  rec.form.Combo1.visible = true;
  rec.form.Option3.value = true;
  prepare_matrix_page(rec);
  EXPECT_FALSE(rec.form.Combo1.visible);
  EXPECT_TRUE(rec.form.Option1.value);
  EXPECT_FALSE(rec.form.Option3.value);
  for (const Control* o : {&rec.form.Option1, &rec.form.Option2, &rec.form.Option3,
                           &rec.form.Option4, &rec.form.Option5, &rec.form.Option6})
    EXPECT_TRUE(o->visible);
  for (const Control* o : {&rec.form.Option7, &rec.form.Option8, &rec.form.Option9})
    EXPECT_FALSE(o->visible);

  rec.menu.JukesandCantor.checked = true;
  prepare_matrix_page(rec);
  EXPECT_TRUE(rec.form.Option2.visible);
  for (const Control* o :
       {&rec.form.Option3, &rec.form.Option4, &rec.form.Option5, &rec.form.Option6})
    EXPECT_FALSE(o->visible);
  const MatrixItem ks = matrix_item_from_page(rec);
  EXPECT_EQ(ks.column, 1);
  EXPECT_EQ(ks.method, " Jukes and Cantor :");
}

TEST(MatrixItems, ByName) {
  struct Case {
    const char* name;
    bool coding;
    int column;
    const char* method;
    const char* label;
  };
  for (const Case& c :
       {Case{"ks", true, 3, " Kimura-2p :", " Ks"}, Case{"ka", true, 4, " Kimura-2p :", " Ka"},
        Case{"trss", true, 5, " Kimura-2p :", " TRSs"},
        Case{"trsa", true, 7, " Kimura-2p :", " TRSa"},
        Case{"trvs", true, 6, " Kimura-2p :", " TRVs"},
        Case{"trva", true, 8, " Kimura-2p :", " TRVa"},
        Case{"fd", false, 9, "None (Obs.Frequency", " Fd)"},
        Case{"jc", false, 1, "Jukes and Cantor :", " K"},
        Case{"k2p", false, 2, "Kimura\xB4s 2-p :", " K"},
        Case{"k2p-trs", false, 3, "Kimura\xB4s 2-p :", " TRS"},
        Case{"k2p-trv", false, 4, "Kimura\xB4s 2-p :", " TRV"},
        Case{"tn", false, 5, "Tajima and Nei :", " K"},
        Case{"t1p", false, 6, "Tajima's 1-p :", " K"},
        Case{"t2p", false, 7, "Tajima's 2-p :", " K"},
        Case{"t4p", false, 8, "Tajima's 4-p :", " K"}}) {
    const auto item = matrix_item_by_name(c.name);
    ASSERT_TRUE(item) << c.name;
    EXPECT_EQ(item->coding, c.coding) << c.name;
    EXPECT_EQ(item->column, c.column) << c.name;
    EXPECT_EQ(item->method, c.method) << c.name;
    EXPECT_EQ(item->label, c.label) << c.name;
  }
  EXPECT_EQ(matrix_item_by_name("ka", true)->column, 2);
  EXPECT_FALSE(matrix_item_by_name("trss", true));
  EXPECT_FALSE(matrix_item_by_name("K"));
}

}  // namespace
}  // namespace varnoth
