// Every command-line analysis on alignments chosen to break the arithmetic
// (identical sequences, saturated pairs, one codon, all-gap columns, one class
// of sites, missing bases, codon pairs with no open pathway) prints and writes
// no number that is not finite: no "nan" or "inf" in any case, in any output.
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "../../fuzz/fuzz_support.h"
#include "cli/commands.h"
#include "support/cli_runner.h"
#include "support/paths.h"

namespace varnoth::testing {
namespace {

namespace fs = std::filesystem;

struct Alignment {
  std::string name;
  std::vector<std::string> sequences;
};

std::string repeat(const std::string& text, int times) {
  std::string out;
  for (int i = 0; i < times; ++i) out += text;
  return out;
}

std::vector<Alignment> adversarial() {
  const std::string cds = "ATGAAACCCGGGTTTCTGAGCACT";
  return {
      {"identical", {cds, cds, cds}},
      // Each codon differs at all three places.
      {"saturated_codons", {repeat("GGGCCCAAATTT", 2), repeat("CCCAAATTTGGG", 2),
                            repeat("AAATTTGGGCCC", 2)}},
      // p = 0.75 exactly between the first two, just below it with the third.
      {"saturated_sites", {repeat("AAAACCCCGGGGTTTT", 3), repeat("ACGT", 12),
                           "AAGT" + repeat("ACGT", 11)}},
      {"one_codon", {"ATG", "ATA", "ATC"}},
      {"one_codon_two", {"ATG", "ATG"}},
      {"gap_columns", {"ATG---AAA---CCC", "ATG---AAG---CCA", "ATGNNNAAA-A-CCC"}},
      // Met and Trp only: no synonymous site at all.
      {"one_class", {"ATGTGGATGTGG", "TGGATGTGGATG", "ATGATGATGATG"}},
      // Half the sites differ by transitions only; then by transversions only.
      {"half_transitions", {"AAAAAAAACCCC", "GGGGAAAATTTT", "AAAAGGGGCCCC"}},
      {"transversions", {"ACGTACGTACGT", "CCTTCCTTCCTT", "ACGTACGTACGA"}},
      // Two bases only, then one.
      {"two_bases", {"AAAAGGGGAAAA", "AAAGGGGGAAAA", "AAAAGGGAAAAA"}},
      {"one_base", {"AAAAAAAAAAAA", "AAAAAAAAAAAA", "AAAAAAAAAAAG"}},
      // Codon pairs whose every pathway passes a stop in some code.
      {"no_pathway", {"ATGTAAGGGAAA", "ATGTGGGGGTGA", "ATGTGGGGGAAA"}},
      {"no_pathway_mito", {"ATGAAACCCAGA", "ATGTGACCCAGG", "ATGAAACCCTGA"}},
      {"lower_case_and_dots", {"atgaaacccggg", "...g..a..t..", "ATGAAGCCAGGA"}},
  };
}

std::string mega_text(const Alignment& a) {
  std::string text = "#MEGA\r\n!Title adversarial;\r\n";
  for (std::size_t i = 0; i < a.sequences.size(); ++i)
    text += "#S" + std::to_string(i + 1) + "\r\n" + a.sequences[i] + "\r\n";
  return text;
}

using Cli = CliResult;
Cli cli(std::vector<std::string> args) { return run_cli(std::move(args)); }

class Outputs {
 public:
  explicit Outputs(const std::string& dir) : dir_(dir) {}

  // Runs the command with every output it names, then scans all of them.
  void run(std::vector<std::string> args, bool window, const std::string& matrix) {
    const std::string report = dir_ + "/r.out", table = dir_ + "/r.win", dis = dir_ + "/r.dis";
    for (const std::string& p : {report, table, dis}) fs::remove(p);
    args.insert(args.end(), {"-o", report});
    if (window) args.insert(args.end(), {"--win", table});
    if (!matrix.empty()) args.insert(args.end(), {"--matrix", matrix, "-m", dis});
    const Cli r = cli(args);
    ++runs_;
    std::string all = r.out + r.err;
    for (const std::string& p : {report, table, dis})
      if (fs::exists(p)) {
        all += read_file(p);
        ++files_;
      }
    std::string what;
    for (const auto& a : args) what += a + " ";
    EXPECT_TRUE(r.code == 0 || r.code == 1) << what << r.err;
    EXPECT_FALSE(fuzz::shows_non_finite(all)) << what << "\n" << all;
  }
  int runs() const { return runs_; }
  int files() const { return files_; }

 private:
  std::string dir_;
  int runs_ = 0, files_ = 0;
};

TEST(AdversarialOutputs, NoNumberThatIsNotFiniteInAnyOutput) {
  const std::string dir = scratch_dir() + "/adversarial";
  fs::create_directories(dir);
  Outputs outputs(dir);
  const char* codes[] = {"universal", "vertmito", "dromito"};
  const char* restrictions[] = {"", "max1", "no3", "aa"};
  const char* weights[] = {"", "0", "1"};
  const char* coding_items[] = {"ks", "ka", "trss", "trsa", "trvs", "trva"};
  const char* noncoding_items[] = {"fd", "jc", "k2p", "k2p-trs", "k2p-trv",
                                   "tn", "t1p", "t2p", "t4p"};
  for (const Alignment& a : adversarial()) {
    SCOPED_TRACE(a.name);
    const std::string file = dir + "/" + a.name + ".meg";
    write_file(file, mega_text(a));
    const bool matrix = a.sequences.size() >= 3;
    const auto length = static_cast<long>(a.sequences[0].size());

    const Cli info = cli({"info", file});
    EXPECT_EQ(info.code, 0) << info.err;
    EXPECT_FALSE(fuzz::shows_non_finite(info.out + info.err)) << info.out;

    int n = 0;
    for (const char* method : {"jc", "k2p"})
      for (const char* code : codes)
        for (const char* restriction : restrictions)
          for (const char* weight : weights) {
            std::vector<std::string> args = {"run", file, "--method", method, "--code", code};
            if (*restriction) args.insert(args.end(), {"--restrict", restriction});
            if (*weight) args.insert(args.end(), {"--weight", weight});
            const int items = std::string(method) == "jc" ? 2 : 6;
            outputs.run(args, false, matrix ? coding_items[n++ % items] : "");
          }
    for (const char* item : noncoding_items)
      outputs.run({"run", file, "--noncoding", "--method", "all"}, false, matrix ? item : "");
    for (const char* method : {"jc", "k2p", "tn", "t1p", "t2p", "t4p"})
      outputs.run({"run", file, "--noncoding", "--method", method}, false, "");
    if (length > 4) {
      const std::string region = "2-" + std::to_string(length - 1);
      outputs.run({"run", file, "--region", region}, false, matrix ? "ks" : "");
      outputs.run({"run", file, "--noncoding", "--method", "all", "--region", region}, false,
                  matrix ? "t4p" : "");
    }
    outputs.run({"run", file, "--window", "11:3"}, true, "");
    outputs.run({"run", file, "--noncoding", "--method", "all", "--window", "11:3"}, true, "");
  }
  EXPECT_GT(outputs.runs(), 1000);
  EXPECT_GT(outputs.files(), outputs.runs() / 2);
}

// The scan itself: numbers that are not finite, however written, and words
// that merely contain the letters.
TEST(AdversarialOutputs, TheScanFindsEveryForm) {
  for (const char* bad : {"nan", " -nan ", "K= NaN", "inf", "-INF", "1.#INF", "-1.#IND",
                          "x=Infinity;", "\tnan(0x1)"})
    EXPECT_TRUE(fuzz::shows_non_finite(bad)) << bad;
  for (const char* good : {"Information", "Banana", "infer", "Nancy", " N.A. ", "NO APPLICABLE",
                           "Conficence Intervals", "0.12345"})
    EXPECT_FALSE(fuzz::shows_non_finite(good)) << good;
}

}  // namespace
}  // namespace varnoth::testing
