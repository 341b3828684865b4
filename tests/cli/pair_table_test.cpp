// The per-pair table (--tsv) read back and checked against the numbers the
// report printed for the same run.
#include <cstdlib>
#include <limits>
#include <map>
#include <regex>
#include <sstream>

#include <gtest/gtest.h>

#include "cli/commands.h"
#include "reports/pair_table.h"
#include "support/cli_runner.h"
#include "support/paths.h"
#include "text/number_format.h"

namespace {

using varnoth::testing::read_file;
using varnoth::testing::scratch_dir;
using varnoth::testing::source_path;
using varnoth::testing::write_file;

using Row = std::map<std::string, std::string>;

// A table as R's read.delim reads it: tab-separated, "..." quoting with
// doubled quotes inside, one header row.
std::vector<Row> read_table(const std::string& text,
                            std::vector<std::string>* header_out = nullptr) {
  std::vector<std::vector<std::string>> records(1, std::vector<std::string>(1));
  bool quoted = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (quoted) {
      if (c == '"' && i + 1 < text.size() && text[i + 1] == '"') {
        records.back().back() += '"';
        ++i;
      } else if (c == '"') {
        quoted = false;
      } else {
        records.back().back() += c;
      }
    } else if (c == '"') {
      quoted = true;
    } else if (c == '\t') {
      records.back().emplace_back();
    } else if (c == '\n') {
      records.emplace_back(1);
    } else {
      records.back().back() += c;
    }
  }
  EXPECT_EQ(records.back(), std::vector<std::string>(1)) << "the table ends in a line feed";
  records.pop_back();
  const std::vector<std::string> header = records.front();
  if (header_out) *header_out = header;
  std::vector<Row> rows;
  for (std::size_t r = 1; r < records.size(); ++r) {
    EXPECT_EQ(records[r].size(), header.size()) << "row " << r;
    Row row;
    for (std::size_t k = 0; k < header.size() && k < records[r].size(); ++k)
      row[header[k]] = records[r][k];
    rows.push_back(row);
  }
  return rows;
}

std::string run_table(std::vector<std::string> args, std::string& report) {
  const std::string dir = scratch_dir();
  args.insert(args.begin(), "run");
  args.insert(args.end(), {"--tsv", dir + "/t.tsv"});
  const auto r = varnoth::testing::run_cli(std::move(args));
  EXPECT_EQ(r.code, 0) << r.err;
  report = r.out;
  return read_file(dir + "/t.tsv");
}

// The report's comparisons (or windows), each as its text.
std::vector<std::string> blocks(const std::string& report, const std::string& mark) {
  std::vector<std::string> out;
  std::size_t at = report.find(mark);
  while (at != std::string::npos) {
    const std::size_t next = report.find(mark, at + mark.size());
    out.push_back(report.substr(at, next == std::string::npos ? std::string::npos : next - at));
    at = next;
  }
  return out;
}

std::string group(const std::string& text, const std::string& pattern, int k = 1) {
  std::smatch m;
  if (!std::regex_search(text, m, std::regex(pattern))) return "(missing: " + pattern + ")";
  return m[k].str();
}

// A number as the report prints it, blanks around left out.
std::string printed_number(double x, std::string_view pattern, bool single = false) {
  std::string s = single ? varnoth::text::format(static_cast<float>(x), pattern)
                         : varnoth::text::format(x, pattern);
  while (!s.empty() && s.front() == ' ') s.erase(s.begin());
  while (!s.empty() && s.back() == ' ') s.pop_back();
  return s;
}

// A table value as the report prints it.
std::string as_printed(const std::string& value, std::string_view pattern, bool single = false) {
  if (value == "NA") return "NA";
  return printed_number(std::strtod(value.c_str(), nullptr), pattern, single);
}

constexpr std::string_view kValue = "###0.00000";
constexpr std::string_view kSites = "####0.00";

TEST(PairTable, CodingKimuraEqualsTheReport) {
  std::string report;
  std::vector<std::string> header;
  const auto rows =
      read_table(run_table({source_path("examples/coding/primates.fasta")}, report), &header);
  const std::vector<std::string> columns = {
      "file",  "seq_a", "seq_b", "begin", "end",         "analyzed", "ks_method", "ka_method",
      "ks",    "ka",    "ka_ks", "as",    "bs",          "aa",       "ba",        "ses",
      "nes",   "sites_0fold", "sites_2s", "sites_2v", "sites_4fold", "gc3"};
  EXPECT_EQ(header, columns);
  const auto comparisons = blocks(report, " Comparison # ");
  ASSERT_EQ(rows.size(), 15u);
  ASSERT_EQ(comparisons.size(), 15u);
  const std::string n = R"(\s*([-0-9.]+))";
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const Row& r = rows[i];
    const std::string& b = comparisons[i];
    SCOPED_TRACE("comparison " + std::to_string(i + 1));
    EXPECT_EQ(r.at("file"), "primates.fasta");
    EXPECT_EQ(" Seq. A: " + r.at("seq_a") + "\r\n Seq. B: " + r.at("seq_b"),
              group(b, R"(( Seq\. A: .*\r\n Seq\. B: [^\r]*))"));
    EXPECT_EQ(r.at("begin"), "1");
    EXPECT_EQ(r.at("end"), "900");
    EXPECT_EQ(r.at("ks_method"), "K2P");
    const std::string ks = R"( Ks=)" + n + R"(\s+\(As=)" + n + R"(\s+Bs=)" + n + R"(\)\s+\()" + n;
    EXPECT_EQ(as_printed(r.at("ks"), kValue), group(b, ks, 1));
    EXPECT_EQ(as_printed(r.at("as"), kValue), group(b, ks, 2));
    EXPECT_EQ(as_printed(r.at("bs"), kValue), group(b, ks, 3));
    EXPECT_EQ(as_printed(r.at("ses"), kSites), group(b, ks, 4));
    const std::string ka = R"( Ka=)" + n + R"(\s+\(Aa=)" + n + R"(\s+Ba=)" + n + R"(\)\s+\()" + n;
    EXPECT_EQ(as_printed(r.at("ka"), kValue), group(b, ka, 1));
    EXPECT_EQ(as_printed(r.at("aa"), kValue), group(b, ka, 2));
    EXPECT_EQ(as_printed(r.at("ba"), kValue), group(b, ka, 3));
    EXPECT_EQ(as_printed(r.at("nes"), kSites, true), group(b, ka, 4));
    EXPECT_DOUBLE_EQ(std::stod(r.at("ka_ks")), std::stod(r.at("ka")) / std::stod(r.at("ks")));
    const char* classes[4][2] = {{"sites_0fold", "  0-fold :"},
                                 {"sites_2s", " 2S-fold :"},
                                 {"sites_2v", " 2V-fold :"},
                                 {"sites_4fold", "  4-fold :"}};
    for (const auto& [column, label] : classes)
      EXPECT_EQ(as_printed(r.at(column), kSites, true), group(b, std::string(label) + n)) << column;
    // Analyzed positions: 3 x the codons compared, as the report's head says.
    EXPECT_EQ(" Number of Analyzed positions:   " + r.at("analyzed"),
              group(report, R"(( Number of Analyzed positions:   \d+))"));
    const double gc = std::stod(r.at("gc3"));
    EXPECT_GT(gc, 0.3);
    EXPECT_LT(gc, 0.8);
  }
}

TEST(PairTable, JukesCantorWindowsAndOnlyAaChanges) {
  std::string report;
  auto rows = read_table(
      run_table({source_path("examples/coding/primates.fasta"), "--method", "jc", "--window",
                 "300:150"},
                report));
  const auto windows = blocks(report, " WINDOW #");
  ASSERT_EQ(rows.size(), 15u * 5u);
  ASSERT_EQ(windows.size(), rows.size());
  const std::string n = R"(\s*([-0-9.]+))";
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const Row& r = rows[i];
    const std::string& w = windows[i];
    SCOPED_TRACE("window row " + std::to_string(i + 1));
    EXPECT_EQ(r.at("begin") + " -" + r.at("end"), group(w, R"(     nuc:(\d+ -\d+))"));
    EXPECT_EQ(r.at("analyzed"), group(w, R"( Number of Analyzed positions:   (\d+))"));
    EXPECT_EQ(r.at("ks_method"), "JC");
    EXPECT_EQ(r.at("ka_method"), "JC");
    EXPECT_EQ(as_printed(r.at("ks"), kValue), group(w, "  Ks=" + n));
    EXPECT_EQ(as_printed(r.at("ses"), kSites), group(w, R"(  Ks=\s*\S+\s+\()" + n));
    EXPECT_EQ(as_printed(r.at("ka"), kValue), group(w, "  Ka=" + n));
    EXPECT_EQ(as_printed(r.at("nes"), kSites, true), group(w, R"(  Ka=\s*\S+\s+\()" + n));
    for (const char* k : {"as", "bs", "aa", "ba"}) EXPECT_EQ(r.at(k), "NA") << k;
  }

  // Only amino-acid changes: no Ka line, so no Ka values.
  rows = read_table(
      run_table({source_path("examples/coding/primates.fasta"), "--restrict", "aa"}, report));
  ASSERT_EQ(rows.size(), 15u);
  for (const Row& r : rows) {
    for (const char* k : {"ka_method", "ka", "ka_ks", "aa", "ba", "nes"})
      EXPECT_EQ(r.at(k), "NA") << k;
    EXPECT_NE(r.at("ks"), "NA");
  }
}

// A noncoding alignment with pairs beyond the reach of some corrections.
std::string divergent_alignment() {
  std::string seqs[4];
  unsigned x = 12345;
  const char* letters = "ACGT";
  for (int i = 0; i < 240; ++i) {
    x = x * 1103515245u + 12345u;
    const char base = letters[(x >> 16) % 4];
    seqs[0] += base;
    seqs[1] += (i % 9 == 0) ? letters[(x >> 20) % 4] : base;  // close to the first
    x = x * 1103515245u + 12345u;
    seqs[2] += letters[(x >> 16) % 4];  // unrelated
    seqs[3] += letters[(std::string("ACGT").find(base) + 1 + i % 3) % 4];  // differs everywhere
  }
  std::string text;
  for (int s = 0; s < 4; ++s) text += ">s" + std::to_string(s + 1) + "\n" + seqs[s] + "\n";
  return text;
}

TEST(PairTable, NoncodingValuesAndNotApplicable) {
  const std::string dir = scratch_dir();
  write_file(dir + "/divergent.fasta", divergent_alignment());
  for (const std::string& input :
       {source_path("examples/noncoding/introns.fasta"), dir + "/divergent.fasta"}) {
    std::string report;
    std::vector<std::string> header;
    const auto rows = read_table(run_table({input, "--noncoding", "--method", "all"}, report),
                                 &header);
    EXPECT_EQ(header, (std::vector<std::string>{"file", "seq_a", "seq_b", "begin", "end",
                                                "analyzed", "p", "q", "k_jc", "k_k2p", "k_tn",
                                                "k_t1p", "k_t2p", "k_t4p"}));
    const auto comparisons = blocks(report, " Comparison # ");
    ASSERT_EQ(rows.size(), comparisons.size());
    int not_applicable = 0;
    for (std::size_t i = 0; i < rows.size(); ++i) {
      const Row& r = rows[i];
      const std::string& b = comparisons[i];
      SCOPED_TRACE(input + " comparison " + std::to_string(i + 1));
      const double fd = std::stod(r.at("p")) + std::stod(r.at("q"));
      EXPECT_EQ(printed_number(fd, kValue), group(b, R"(Fd=\s*([0-9.]+))"));
      const char* methods[6][2] = {
          {"k_jc", " Jukes & Cantor    "}, {"k_k2p", " Kimura 2-p        "},
          {"k_tn", " Tajima & Nei      "}, {"k_t1p", " Tajima 1-p        "},
          {"k_t2p", " Tajima 2-p        "}, {"k_t4p", " Tajima 4-p        "}};
      for (const auto& [column, label] : methods) {
        const std::string printed =
            group(b, std::string(label) + R"((?:K=\s*)?([-0-9.]+|NO APPLICABLE))");
        if (printed == "NO APPLICABLE") {
          EXPECT_EQ(r.at(column), "NA") << column;
          ++not_applicable;
        } else {
          EXPECT_EQ(as_printed(r.at(column), kValue, column == std::string("k_t2p")), printed)
              << column;
        }
      }
    }
    if (input.find("divergent") != std::string::npos) {
      EXPECT_GT(not_applicable, 0);
    }
  }
  // Only the methods run have values.
  std::string report;
  const auto rows = read_table(
      run_table({source_path("examples/noncoding/introns.fasta"), "--noncoding", "--method",
                 "jc"},
                report));
  for (const Row& r : rows) {
    EXPECT_NE(r.at("k_jc"), "NA");
    for (const char* k : {"k_k2p", "k_tn", "k_t1p", "k_t2p", "k_t4p"}) EXPECT_EQ(r.at(k), "NA");
  }
}

TEST(PairTable, EmptyPairIsOneRowOfNotApplicable) {
  // Every column holds a gap somewhere: no site is left, and the run ends at
  // the first pair.
  const std::string dir = scratch_dir();
  write_file(dir + "/gaps.fasta", ">s1\n---ACG\n>s2\nACG---\n>s3\nACGACG\n");
  std::string report;
  const auto rows = read_table(run_table({dir + "/gaps.fasta", "--noncoding"}, report));
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_NE(report.find(" NO APPLICABLE"), std::string::npos);
  EXPECT_EQ(rows[0].at("seq_a"), "s1");
  EXPECT_EQ(rows[0].at("seq_b"), "s2");
  EXPECT_EQ(rows[0].at("analyzed"), "0");
  for (const char* k : {"p", "q", "k_jc", "k_k2p", "k_tn", "k_t1p", "k_t2p", "k_t4p"})
    EXPECT_EQ(rows[0].at(k), "NA") << k;
}

TEST(PairTable, TextAndNumberCells) {
  struct Case {
    std::string in, out;
  };
  const Case texts[] = {
      {"Homo_sapiens", "Homo_sapiens"},
      {"a\tb", "\"a\tb\""},
      {"say \"hi\"", "\"say \"\"hi\"\"\""},
      {"caf\xC3\xA9", "caf\xC3\xA9"},      // UTF-8 stays
      {"caf\xE9", "caf\xC3\xA9"},          // Latin-1 becomes UTF-8
      {"\xED\xA0\x80", "\xC3\xAD\xC2\xA0\xC2\x80"},  // a surrogate is no UTF-8
  };
  for (const Case& c : texts) {
    std::string s;
    varnoth::reports::append_table_text(s, c.in);
    EXPECT_EQ(s, c.out) << c.in;
  }
  const std::pair<double, const char*> numbers[] = {
      {0.1, "0.1"}, {900, "900"}, {0.06301675680651234, "0.06301675680651234"},
      {1e-7, "1e-07"}, {std::numeric_limits<double>::infinity(), "NA"}};
  for (const auto& [x, text] : numbers) {
    std::string s;
    varnoth::reports::append_table_number(s, x);
    EXPECT_EQ(s, text);
    if (std::string(text) != "NA") {
      EXPECT_EQ(std::strtod(s.c_str(), nullptr), x);
    }
  }
  std::string f;
  varnoth::reports::append_table_number(f, 654.6977f);
  EXPECT_EQ(f, "654.6977");
}

}  // namespace
