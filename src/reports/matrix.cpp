#include "reports/matrix.h"

#include <cmath>
#include <utility>

#include "reports/saving.h"
#include "text/crlf_text.h"
#include "text/number_format.h"

namespace varnoth {

namespace {

// "Kimura´s": the accent is the Latin-1 byte 0xB4, as the file is Latin-1 text.
constexpr std::string_view kKimuraNoncoding =
    "Kimura\xB4"
    "s 2-p :";

struct NoncodingEntry {
  int column;
  std::string_view method;
  std::string_view label;
};
constexpr NoncodingEntry kNoncoding[9] = {
    {9, "None (Obs.Frequency", " Fd)"}, {1, "Jukes and Cantor :", " K"},
    {2, kKimuraNoncoding, " K"},        {3, kKimuraNoncoding, " TRS"},
    {4, kKimuraNoncoding, " TRV"},      {5, "Tajima and Nei :", " K"},
    {6, "Tajima's 1-p :", " K"},        {7, "Tajima's 2-p :", " K"},
    {8, "Tajima's 4-p :", " K"}};

// Option1..Option6 of the coding page: label and store column (Kimura for Ks
// and Ka; the Jukes and Cantor columns are 1 and 2).
struct CodingEntry {
  int column;
  std::string_view label;
};
constexpr CodingEntry kCoding[6] = {{3, " Ks"},   {4, " Ka"},   {5, " TRSs"},
                                    {7, " TRSa"}, {6, " TRVs"}, {8, " TRVa"}};

void append_blanks(std::string& out, long long count) {
  if (count > 0) out.append(static_cast<std::size_t>(count), ' ');
}

// A count right-aligned by Space(5 - digits): a wider count runs on.
void append_count(std::string& out, double value) {
  const std::string figure = text::plain(value);
  append_blanks(out, 5 - static_cast<long long>(figure.size()));
  out += figure;
}

// The OTU label: trailing blanks cut, every other blank turned into "_".
std::string otu_label(std::string_view name) {
  const std::size_t end = name.find_last_not_of(' ');
  std::string label(name.substr(0, end == std::string_view::npos ? 0 : end + 1));
  for (char& ch : label)
    if (ch == ' ') ch = '_';
  return label;
}

std::array<Control*, 9> options(Form& f) {
  return {&f.Option1, &f.Option2, &f.Option3, &f.Option4, &f.Option5,
          &f.Option6, &f.Option7, &f.Option8, &f.Option9};
}

}  // namespace

MatrixItem noncoding_matrix_item(int number) {
  const NoncodingEntry& e = kNoncoding[number >= 0 && number < 9 ? number : 0];
  return {false, e.column, e.method, e.label};
}

MatrixItem coding_matrix_item(int option, bool jukes_cantor) {
  const CodingEntry& e = kCoding[option >= 1 && option <= 6 ? option - 1 : 0];
  int column = e.column;
  if (jukes_cantor && column <= 4) column -= 2;
  return {true, column, jukes_cantor ? " Jukes and Cantor :" : " Kimura-2p :", e.label};
}

MatrixItem matrix_item_from_page(const AnalysisRecord& rec) {
  const Form& f = rec.form;
  if (!rec.coding()) {
    int number = 0;
    for (int i = 0; i < 9; ++i)
      if (f.Combo1.text == kMatrixComboItems[static_cast<std::size_t>(i)]) {
        number = i;
        break;
      }
    return noncoding_matrix_item(number);
  }
  const Control* shown[6] = {&f.Option1, &f.Option2, &f.Option3,
                             &f.Option4, &f.Option5, &f.Option6};
  int option = 1;
  for (int i = 0; i < 6; ++i)
    if (shown[i]->value) {
      option = i + 1;
      break;
    }
  return coding_matrix_item(option, rec.menu.JukesandCantor.checked);
}

std::optional<MatrixItem> matrix_item_by_name(std::string_view name, bool jukes_cantor) {
  static constexpr std::string_view kCodingNames[6] = {"ks", "ka", "trss", "trsa", "trvs", "trva"};
  static constexpr std::string_view kNoncodingNames[9] = {"fd", "jc",  "k2p", "k2p-trs", "k2p-trv",
                                                          "tn", "t1p", "t2p", "t4p"};
  for (int i = 0; i < 6; ++i) {
    if (name != kCodingNames[i]) continue;
    if (jukes_cantor && i >= 2) return std::nullopt;
    return coding_matrix_item(i + 1, jukes_cantor);
  }
  for (int i = 0; i < 9; ++i)
    if (name == kNoncodingNames[i]) return noncoding_matrix_item(i);
  return std::nullopt;
}

std::string matrix_text(const AnalysisRecord& rec, const MatrixItem& item,
                        const ClockReading& clock, std::string_view file_name) {
  const SequenceData& s = rec.seq;
  text::CrlfText t;
  t.line("#MEGA");
  t.line("TITLE: Varnoth v6.0  * Divergence Matrix Output *");
  t.line(clock.date, "  ", clock.time);
  t.line();
  t.line("Input File Name:                ", file_name);
  t.text("Number of Sequences:            ");
  append_count(t.buffer(), s.SeqCount);
  t.crlf();
  t.text("Number of Nucleotide positions: ");
  append_count(t.buffer(), s.SeqLength);
  t.line(rec.region.RegionText);

  t.line();
  if (item.coding) {
    const GeneticCode code = rec.active_code();
    const OptionFields& o = rec.options;
    t.line("Coding Divergence Analysis");
    t.line("Genetic Code:              ", code == GeneticCode::Vermito ? " Vertebrate Mitochondrial"
                                          : code == GeneticCode::Dromito
                                              ? " Drosophila Mitochondrial"
                                              : " Universal");
    t.text("Comparison Restrictions:   ");
    if (o.MaxOneChangeFlag == 1) t.text(" Maximum One Substitution per Codon");
    if (o.OnlyAaChangeFlag == 1) t.text(" Only AAs Substitutions");
    if (o.MaxOneChangeFlag == 0 && o.OnlyAaChangeFlag == 0 && o.No3DiffFlag == 0) t.text(" None");
    t.crlf();
    t.text("Number of Analyzed codons: ");
    text::append_plain(t.buffer(), s.CodonCount);
    t.crlf();
  } else {
    t.line("Noncoding Divergence Analysis");
    t.text("Number of Analyzed Nucleotides: ");
    text::append_plain(t.buffer(), s.NucleotideCount);
    t.crlf();
  }
  t.line("M.-Hits Correcting Method: ", item.method, item.label);

  // Sequence counts are whole in every real file; a fractional one is cut.
  const long n = s.SeqCount >= 1 ? static_cast<long>(std::floor(s.SeqCount)) : 0;
  t.line();
  t.line("OTU Labels");
  for (long i = 1; i <= n; ++i) {
    const auto k = static_cast<std::size_t>(i - 1);
    t.text("#", otu_label(k < s.SeqNames.size() ? std::string_view(s.SeqNames[k]) : ""), "_#");
    text::append_plain(t.buffer(), i);
    t.crlf();
  }
  t.text("   ");
  for (long i = 1; i <= n - 1; ++i) {
    t.text("#");
    text::append_plain(t.buffer(), i);
    append_blanks(t.buffer(), i < 10 ? 7 : 6);
  }
  t.crlf();
  t.line();

  // Lower-left rows: row r is sequence r + 1, column c sequence c; the store
  // walks (1,2), (1,3), ... (1,n), (2,3), ... down each column in turn.
  const auto& store = rec.results.ComparisonStore;
  const long pair_count = static_cast<long>(s.PairCount);
  const auto column = static_cast<std::size_t>(item.column);
  std::vector<std::string> rows(static_cast<std::size_t>(n > 1 ? n - 1 : 0));
  long counter = 0;
  for (long c = 1; c <= n - 1; ++c) {
    for (long r = 1; r <= n - 1; ++r) {
      std::string& row = rows[static_cast<std::size_t>(r - 1)];
      row += "  ";
      if (r < c) {
        row += "      ";
      } else {
        ++counter;
        const auto at = static_cast<std::size_t>(counter);
        if (at >= store.size() || store[at][column].not_applicable)
          row += " N.A. ";
        else
          text::append_format(row, store[at][column].value, "0.0000");
      }
      row += ' ';
    }
    if (counter >= pair_count) break;
  }
  for (std::size_t r = 0; r < rows.size(); ++r) {
    t.text(rows[r], "    #");
    text::append_plain(t.buffer(), static_cast<long long>(r + 2));
    t.crlf();
  }
  t.crlf();
  return t.take();
}

void prepare_matrix_page(AnalysisRecord& rec) {
  Form& f = rec.form;
  auto opts = options(f);
  if (!rec.coding()) {
    f.Combo1.visible = true;
    // The list is not emptied first: a second press lists the items twice.
    for (std::string_view item : kMatrixComboItems) f.Combo1.items.emplace_back(item);
    f.Combo1.text = f.Combo1.items.front();
    for (Control* o : opts) o->visible = false;
  } else {
    f.Combo1.visible = false;
    for (std::size_t i = 0; i < opts.size(); ++i) {
      opts[i]->value = i == 0;
      opts[i]->visible = i < 6;
    }
    if (rec.menu.JukesandCantor.checked)
      for (std::size_t i = 2; i < 6; ++i) opts[i]->visible = false;
  }
  f.SSTab3.visible = false;
  f.MatrixTab.visible = true;
}

bool save_matrix(AnalysisRecord& rec, Platform& platform) {
  const MatrixItem item = matrix_item_from_page(rec);
  const std::string path = ask_save_path(rec, platform, kMatrixFilter, ".dis");
  if (path.empty()) return false;
  // The "Input File Name:" line shows Fichero1, which now holds the output
  // path: deliberate.
  const std::string text = matrix_text(rec, item, platform.clock(), rec.form.Fichero1.text);
  if (!write_text_file(path, text)) return false;
  rec.form.MatrixTab.visible = false;
  rec.form.SSTab3.visible = true;
  return true;
}

void cancel_matrix_page(AnalysisRecord& rec) {
  rec.form.MatrixTab.visible = false;
  rec.form.SSTab3.visible = true;
}

}  // namespace varnoth
