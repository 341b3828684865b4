// Fuzz target: format detection, the seven readers and the common step on any
// bytes, both through input::read_sequence_text and through the open command,
// which must refuse a bad file with a message and keep the previous alignment.
//
// Input: byte 1 picks the file name (its extension steers detection), bytes 2
// and 3 the SeqCount and SeqLength left from a previous file, byte 4 a format
// named by the user (mostly none); the rest is the file.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>

#include "fuzz_support.h"
#include "input/format_detection.h"
#include "input/input_report.h"
#include "input/line_list.h"
#include "input/sequence_file.h"
#include "state/options.h"

namespace varnoth::fuzz::readers {

namespace fs = std::filesystem;

// File names under a folder of this process; the last has a "." in a folder
// name, which gives a wrong extension on purpose.
constexpr const char* kNames[] = {"in.aln", "in.phy", "in.PHY", "in.Phy", "in.gde",
                                  "in.meg", "in.msf", "in.pir", "in.lwl", "in.txt",
                                  "in",     "d.x/in.phy", "in.fa", "in.FASTA", "d.x/in"};
constexpr const char* kFormatNames[] = {"gde", "lwl", "mega", "pir", "clustal", "msf", "phylip", "fasta"};
constexpr unsigned kNameCount = sizeof kNames / sizeof kNames[0];
constexpr double kPreviousCounts[] = {0, 1, 2, 3, 5, 10, 120, 0.5, 2.5, 99999, 100000, 1e18};
constexpr unsigned kPreviousCount = sizeof kPreviousCounts / sizeof kPreviousCounts[0];

const char kGoodFile[] =
    "#MEGA\n!Title good;\n#one\nATGAAACCCGGGTTT\n#two\nATGAAACCTGGGTTA\n#three\nATGAAGCCCGGGTTT\n";

bool is_acgt(char c) { return c == 'A' || c == 'C' || c == 'G' || c == 'T'; }
bool is_valid(char c) {
  return is_acgt(c) || c == 'a' || c == 'c' || c == 'g' || c == 't';
}

// What every loaded alignment satisfies, checked against an independent
// count of the complete deletion.
void check_loaded(const SequenceData& seq) {
  check(seq.SequenceLoaded == 1, "loaded without SequenceLoaded");
  check(seq.SeqCount >= 1 && seq.SeqLength > 0 && seq.CodonCellCount > 0, "loaded with no data");
  check(seq.SeqCount <= 99999 && seq.SeqLength <= 99999, "loaded beyond the limits");
  const auto rows = static_cast<std::size_t>(input::whole_count(seq.SeqCount));
  const auto cells = static_cast<std::size_t>(seq.CodonCellCount);
  check(static_cast<float>(cells) == seq.CodonCellCount, "a fractional cell count");
  check(seq.SeqNames.size() == rows && seq.SeqCodons.size() == rows, "rows and SeqCount differ");
  check(seq.CleanCodons.size() == rows && seq.CleanSites.size() == rows,
        "clean rows and SeqCount differ");
  check(seq.PairCount == seq.SeqCount * (seq.SeqCount - 1) / 2, "PairCount");
  check(seq.SeqCountCopy == seq.SeqCount, "SeqCountCopy");
  check(seq.CleanCodonTotal == seq.CodonCount, "CleanCodonTotal");

  long codons = 0, sites = 0;
  for (std::size_t c = 0; c < cells; ++c) {
    bool whole = true;
    for (std::size_t k = 0; k < 3; ++k) {
      bool site = true;
      for (const auto& row : seq.SeqCodons) site = site && is_valid(row[c][k]);
      sites += site;
      whole = whole && site;
    }
    codons += whole;
  }
  check(seq.CodonCount == codons, "CodonCount differs from an independent count");
  check(seq.NucleotideCount == sites, "NucleotideCount differs from an independent count");
  for (std::size_t i = 0; i < rows; ++i) {
    check(seq.SeqCodons[i].size() == cells, "a row of SeqCodons is not CodonCellCount long");
    check(seq.CleanCodons[i].size() == static_cast<std::size_t>(codons), "a CleanCodons row");
    check(seq.CleanSites[i].size() == static_cast<std::size_t>(sites), "a CleanSites row");
    for (const CodonCell& cell : seq.CleanCodons[i])
      for (char c : cell) check(is_acgt(c), "a clean codon holds something else than A, C, G, T");
    for (char c : seq.CleanSites[i])
      check(is_acgt(c), "a clean site holds something else than A, C, G, T");
    if (i > 0)
      for (std::size_t c = 0; c < cells; ++c)
        for (std::size_t k = 0; k < 3; ++k)
          check(seq.SeqCodons[i][c][k] != '.' || seq.SeqCodons[0][c][k] == '.',
                "an identity dot was left unresolved");
  }
  // The counts of the report; the names behind them are the file's own text.
  const std::string report = input::build_input_report(seq);
  check_finite_text(report.substr(0, report.find(" Sequence#")),
                    "the input report shows a number that is not finite");
  check(input::input_report_fits(seq), "a loaded alignment whose counts overflow the report");
}

struct Scratch {
  fs::path folder;
  Scratch() {
    folder = fs::temp_directory_path() / ("varnoth-fuzz-" + std::to_string(getpid()));
    fs::create_directories(folder / "d.x");
  }
  ~Scratch() {
    std::error_code ec;
    fs::remove_all(folder, ec);
  }
};

// A record that holds a good alignment, as a user's session would before the
// next file is opened.
const AnalysisRecord& loaded_record() {
  static const AnalysisRecord rec = [] {
    static Scratch scratch;
    AnalysisRecord r;
    start_up(r);
    title_page_click(r);
    const fs::path good = scratch.folder / "good.meg";
    std::FILE* f = std::fopen(good.c_str(), "wb");
    std::fwrite(kGoodFile, 1, sizeof kGoodFile - 1, f);
    std::fclose(f);
    QuietPlatform platform;
    check(input::load_sequence_file(r, platform, good.string()).ok(), "the good file is refused");
    return r;
  }();
  return rec;
}

void check_open_command(std::string_view bytes, const std::string& name,
                        input::InputFormat forced) {
  const AnalysisRecord& before = loaded_record();
  const fs::path path = fs::temp_directory_path() /
                        ("varnoth-fuzz-" + std::to_string(getpid())) / name;
  std::FILE* f = std::fopen(path.c_str(), "wb");
  check(f != nullptr, "cannot write the fuzz input file");
  std::fwrite(bytes.data(), 1, bytes.size(), f);
  std::fclose(f);

  AnalysisRecord rec = before;
  QuietPlatform platform;
  platform.scan_messages = false;  // they quote names from the file
  const input::InputStatus status = input::load_sequence_file(rec, platform, path.string(), forced);
  check(!rec.form.Label3.visible, "the progress label stays after a load");
  if (status.ok()) {
    check(platform.messages == 0, "an accepted file showed a message", platform.last_message);
    check_loaded(rec.seq);
    check(rec.menu.Diver.enabled && rec.menu.AnalysisOptions.enabled, "menus after a load");
    check(rec.form.Text1.text == input::build_input_report(rec.seq), "Text1 after a load");

    return;
  }
  // A refused file: one message box, the panes reset, the previous alignment
  // and the menus as they were.
  check(status.problem != input::InputProblem::None &&
            status.problem != input::InputProblem::Cancelled,
        "a refused file without a problem");
  check(platform.messages == 1, "a refused file is not told exactly once");
  check(!platform.last_message.empty(), "a refusal with an empty message");
  check(platform.last_title == input::kOpenFileTitle, "a refusal under another title");
  check(platform.last_icon == MessageIcon::Exclamation, "a refusal without the exclamation icon");
  check(rec.seq.SequenceLoaded == 0, "SequenceLoaded after a refused file");
  check(rec.form.Text1.text == input::kNoSequenceInformation, "Text1 after a refused file");
  check(rec.seq.SeqCount == before.seq.SeqCount && rec.seq.SeqLength == before.seq.SeqLength &&
            rec.seq.SeqCodons == before.seq.SeqCodons &&
            rec.seq.CleanCodons == before.seq.CleanCodons &&
            rec.seq.CleanSites == before.seq.CleanSites && rec.seq.SeqNames == before.seq.SeqNames,
        "a refused file changed the alignment in the record");
  check(rec.menu.Diver.enabled == before.menu.Diver.enabled &&
            rec.menu.AnalysisOptions.enabled == before.menu.AnalysisOptions.enabled &&
            rec.menu.Region_analysis.enabled == before.menu.Region_analysis.enabled &&
            rec.menu.Sliding_Window.enabled == before.menu.Sliding_Window.enabled,
        "a refused file changed the menus");
}

int one_input(const std::uint8_t* data, std::size_t size) {
  Bytes in(data, size);
  const std::string name = kNames[in.pick(kNameCount)];
  const double previous_count = kPreviousCounts[in.pick(kPreviousCount)];
  const double previous_length = kPreviousCounts[in.pick(kPreviousCount)];
  const unsigned named = in.pick(32);
  const input::InputFormat forced =
      named < 8 ? input::format_by_name(kFormatNames[named]) : input::InputFormat::None;
  const std::string_view bytes = in.rest();

  SequenceData seq;
  seq.SeqCount = previous_count;
  seq.SeqLength = previous_length;
  const input::InputStatus status =
      input::read_sequence_text(bytes, "/data/" + name, seq, forced);
  if (status.ok()) {
    check_loaded(seq);
  } else {
    check(status.problem != input::InputProblem::None, "a failed read without a problem");
    check(!input::problem_message(status, "in").empty(), "a failure without a message");
  }
  check_open_command(bytes, name, forced);
  return 0;
}

}  // namespace varnoth::fuzz::readers

#ifndef VARNOTH_FUZZ_NO_MAIN
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return varnoth::fuzz::readers::one_input(data, size);
}
#endif
