#include "divergence/driver.h"

#include <atomic>
#include <bit>
#include <cmath>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "divergence/alignment_filter.h"
#include "divergence/codon_changes.h"
#include "divergence/coding_estimators.h"
#include "divergence/genetic_code.h"
#include "divergence/noncoding_estimators.h"
#include "divergence/parallel.h"
#include "divergence/site_classes.h"
#include "reports/results_report.h"
#include "state/options.h"
#include "text/number_format.h"
#include "text/number_reading.h"

namespace varnoth::divergence {

namespace {

constexpr const char* kSequenceFileTitle = "    SEQUENCE FILE    ";
constexpr std::size_t kBlock = 2048;  // comparisons (or windows) computed at a time

enum class Selection { All, MaxOneChange, OnlyAaChange, No3Diff };

// Where the comparisons of an item are made: the window and its columns.
struct Place {
  reports::WindowPlace window;  // index 0 outside window runs
  ColumnRange columns;
};

// One comparison of a whole or region run, or one window of a comparison.
// Small: the ordered pass writes one for every item and the thread that
// computes it reads it, from another core.
struct Item {
  long n = 0;
  std::int32_t a = 0, b = 0;
  long window = 0;  // index from 1; 0 outside window runs
};

// Beyond this many windows a run works out a window's place each time it
// needs it rather than hold them all.
constexpr std::size_t kMaxKeptPlaces = std::size_t{1} << 16;

// What the computation of an item leaves. It stays with the thread that
// computed it: the ordered pass reads the item's summary and goes to the full
// result only where it needs more (an item that takes from the carry, a
// failure, the stores, the pair sink, the last item of a block), so that
// little memory crosses from one core to the other.
struct ItemResult {
  enum class Kind : std::uint8_t { Done, Empty, StopCodon, NoPathway } kind = Kind::Done;
  long count = 0;  // sites (noncoding) or codons compared (coding)
  NoncodingResult noncoding;
  ChangeAccountingResult changes;
  ClassTotals classes;
  CodingResult coding;
};

// What the ordered pass reads of every computed item.
struct ItemSummary {
  ItemResult::Kind kind = ItemResult::Kind::Done;
  // The item's lines were written ahead, on the thread that computed it, as
  // they cannot depend on the pairs before it (nothing taken from the carry).
  bool prewritten = false;
  std::uint16_t worker = 0;  // the thread that computed it
  std::uint32_t slot = 0;    // its result among that thread's results of the block
  // Its lines written ahead, in that thread's texts of the block.
  std::uint32_t report_at = 0, report_length = 0;
  std::uint32_t table_at = 0, table_length = 0;
};

// What the ordered pass leaves for the writing of an item's text.
struct ItemSettled {
  bool written = false;    // the item's own lines are to be written
  bool own_lines = false;  // the lines written ahead stand
  long number = 0;         // comparison number as the report gives it
  CodingEstimates coding_values;
  NoncodingEstimates noncoding_values;
  NoncodingNotApplicable noncoding_na;
  // The item's text of the report and of the window table: what the ordered
  // pass writes before the item (the positions block, the window names), then
  // the item's lines where they were not written ahead.
  std::string report, table;
};

// What one thread computed of a block: the full results and the lines written
// ahead, item after item. Aligned so that two threads never write to the same
// cache line.
struct alignas(64) WorkerPart {
  std::vector<ItemResult> results;
  std::size_t used = 0;
  std::string report, table;
};

struct Scratch {
  std::vector<Codon> codons1, codons2;
  std::vector<float> syn, nonsyn;
};

struct PairSettings {
  GeneticCode code = GeneticCode::Universal;
  float weight = 0.5f;
  Selection selection = Selection::All;
};

// What one sequence brings to every pair over one range of columns.
struct CodingSummary {
  SequenceSites sites;
  long third_gc = 0;  // codons whose third letter is G or C
};
using BaseCounts = std::array<std::int64_t, 4>;  // A, G, C, T as NucleotidePairTable numbers them

// Per-sequence values, computed once per run for each range of columns a run
// uses (the whole or region run has one; a window run one per window), and the
// shares of every codon pair.
struct SequenceTables {
  std::vector<std::vector<CodingSummary>> coding;  // [range][sequence]
  std::vector<std::vector<BaseCounts>> bases;      // [range][sequence]
  // [sequence]: the sites two bits each, 32 to a word, numbered as the bases
  // of NucleotidePairTable.
  std::vector<std::vector<std::uint64_t>> packed_sites;
  std::shared_ptr<const PairPlacingTable> pairs;

  static std::size_t range_of(const Item& item) {
    return item.window > 0 ? static_cast<std::size_t>(item.window - 1) : 0;
  }
};

// Beyond this many range-and-sequence entries a window run computes every
// pair on its own rather than hold the tables.
constexpr std::size_t kMaxTableEntries = std::size_t{1} << 19;

int differences(int x, int y) {
  int d = 0;
  for (int p = 0; p < 3; ++p) d += nucleotide_at(x, p) != nucleotide_at(y, p);
  return d;
}

// The arithmetic of one item: a pure function of the filtered alignment and
// the settings, so items can be computed on any thread in any order.
void compute_noncoding(const FilteredAlignment& f, const SequenceTables& tables,
                       const Item& item, const Place& place, ItemResult& out) {
  const auto& s1 = f.sites[static_cast<std::size_t>(item.a - 1)];
  const auto& s2 = f.sites[static_cast<std::size_t>(item.b - 1)];
  const std::size_t begin = place.columns.site_begin, end = place.columns.site_end;
  out.count = static_cast<long>(end - begin);
  if (out.count == 0) {
    out.kind = ItemResult::Kind::Empty;
    return;
  }
  out.kind = ItemResult::Kind::Done;
  if (tables.bases.empty()) {
    out.noncoding = estimate_noncoding(std::span<const char>(s1.data() + begin, end - begin),
                                       std::span<const char>(s2.data() + begin, end - begin));
    return;
  }
  // The same table as count_nucleotide_pairs: the differing sites are counted,
  // and each base's sites that agree are its count in sequence A less those.
  const auto& ranges = tables.bases[SequenceTables::range_of(item)];
  const BaseCounts& counts1 = ranges[static_cast<std::size_t>(item.a - 1)];
  const std::uint64_t* p1 = tables.packed_sites[static_cast<std::size_t>(item.a - 1)].data();
  const std::uint64_t* p2 = tables.packed_sites[static_cast<std::size_t>(item.b - 1)].data();
  NucleotidePairTable table;
  constexpr std::uint64_t kLow = 0x5555555555555555ULL;  // the low bit of every site
  for (std::size_t word = begin / 32; word <= (end - 1) / 32; ++word) {
    const std::uint64_t x = p1[word] ^ p2[word];
    std::uint64_t differ = (x | x >> 1) & kLow;
    if (word == begin / 32) differ &= kLow << (2 * (begin % 32));
    if (word == (end - 1) / 32 && end % 32 != 0) differ &= kLow >> (64 - 2 * (end % 32));
    while (differ != 0) {
      const int bit = std::countr_zero(differ);
      differ &= differ - 1;
      ++table.cells[4 * ((p1[word] >> bit) & 3) + ((p2[word] >> bit) & 3)];
    }
  }
  for (int x = 0; x < 4; ++x) {
    std::int64_t agree = counts1[static_cast<std::size_t>(x)];
    for (int y = 0; y < 4; ++y) agree -= table.cells[static_cast<std::size_t>(4 * x + y)];
    table.cells[static_cast<std::size_t>(5 * x)] = agree;
  }
  out.noncoding = estimate_noncoding(table);
}

// A coding item's estimates from its totals, which it keeps for its report.
void estimate_item(const ClassTotals& classes, ItemResult& out) {
  out.classes = classes;
  out.coding = estimate_coding(coding_sums(classes));
  out.kind = ItemResult::Kind::Done;
}

// The run's whole range of codons, with nothing left out: each sequence's site
// sums and third-position G+C stand for it in every pair, and only the codons
// that differ are walked. The plain walk gives such codons nothing and places
// nothing for them, so the sums are the same, added in the same order.
bool compute_coding_from_tables(const FilteredAlignment& f, const SequenceTables& tables,
                                const Item& item, const Place& place, ItemResult& out) {
  const auto& ranges = tables.coding[SequenceTables::range_of(item)];
  const CodingSummary& seq1 = ranges[static_cast<std::size_t>(item.a - 1)];
  const CodingSummary& seq2 = ranges[static_cast<std::size_t>(item.b - 1)];
  if (!seq1.sites.every_codon_has_row || !seq2.sites.every_codon_has_row) return false;
  const std::size_t begin = place.columns.codon_begin, end = place.columns.codon_end;
  const Codon* c1 = f.codons[static_cast<std::size_t>(item.a - 1)].data() + begin;
  const Codon* c2 = f.codons[static_cast<std::size_t>(item.b - 1)].data() + begin;
  out.count = static_cast<long>(end - begin);
  if (out.count == 0) {
    out.kind = ItemResult::Kind::Empty;
    return true;
  }
  ChangeAccountingResult& changes = out.changes;
  const SiteClassResult classes = place_differing_codons(
      seq1.sites, seq2.sites, {c1, end - begin}, {c2, end - begin}, *tables.pairs, changes);
  if (changes.status != ChangeStatus::Complete) {
    out.kind = changes.status == ChangeStatus::StopCodon ? ItemResult::Kind::StopCodon
                                                         : ItemResult::Kind::NoPathway;
    return true;
  }
  const long gc = seq1.third_gc + seq2.third_gc;
  changes.PairGCContent = static_cast<float>(static_cast<double>(gc) / (2.0 * out.count));
  estimate_item(classes, out);
  return true;
}

void compute_coding(const FilteredAlignment& f, const SequenceTables& tables, const Item& item,
                    const Place& place, const PairSettings& settings, Scratch& scratch,
                    ItemResult& out) {
  if (settings.selection == Selection::All && !tables.coding.empty() &&
      compute_coding_from_tables(f, tables, item, place, out))
    return;
  const auto& all1 = f.codons[static_cast<std::size_t>(item.a - 1)];
  const auto& all2 = f.codons[static_cast<std::size_t>(item.b - 1)];
  const std::size_t begin = place.columns.codon_begin, end = place.columns.codon_end;
  std::span<const Codon> c1(all1.data() + begin, end - begin);
  std::span<const Codon> c2(all2.data() + begin, end - begin);
  if (settings.selection != Selection::All) {
    const CodeTables& code = code_tables(settings.code);
    scratch.codons1.clear();
    scratch.codons2.clear();
    for (std::size_t i = 0; i < c1.size(); ++i) {
      const int x = c1[i], y = c2[i];
      const int d = differences(x, y);
      bool take = false;
      switch (settings.selection) {
        case Selection::MaxOneChange: take = d <= 1; break;
        case Selection::No3Diff: take = d < 3; break;
        case Selection::OnlyAaChange:
          // Both codons of a pair it weighs are translated: a stop ends the run.
          if (d < 3 && (code.translates_to_stop[x] || code.translates_to_stop[y])) {
            out.kind = ItemResult::Kind::StopCodon;
            return;
          }
          take = d < 3 && code.amino_acid[x] != code.amino_acid[y];
          break;
        case Selection::All: break;
      }
      if (take) {
        scratch.codons1.push_back(c1[i]);
        scratch.codons2.push_back(c2[i]);
      }
    }
    c1 = scratch.codons1;
    c2 = scratch.codons2;
  }
  out.count = static_cast<long>(c1.size());
  if (out.count == 0) {
    out.kind = ItemResult::Kind::Empty;
    return;
  }
  const std::size_t positions = 3 * c1.size();
  if (scratch.syn.size() < positions) {
    scratch.syn.resize(positions);
    scratch.nonsyn.resize(positions);
  }
  const std::span<float> syn(scratch.syn.data(), positions);
  const std::span<float> nonsyn(scratch.nonsyn.data(), positions);
  out.changes = account_codon_changes(c1, c2, settings.code, settings.weight, syn, nonsyn);
  if (out.changes.status == ChangeStatus::StopCodon) {
    out.kind = ItemResult::Kind::StopCodon;
    return;
  }
  if (out.changes.status == ChangeStatus::NoOpenPathway) {
    out.kind = ItemResult::Kind::NoPathway;
    return;
  }
  const SiteClassResult classes = account_site_classes(c1, c2, syn, nonsyn, settings.code);
  if (classes.StopCodonFlag) {
    out.kind = ItemResult::Kind::StopCodon;
    return;
  }
  estimate_item(classes, out);
}

class Run {
 public:
  Run(AnalysisRecord& rec, Platform& platform, const RunSettings& settings)
      : rec_(rec),
        platform_(platform),
        settings_(settings),
        own_parallel_(settings.parallel != nullptr ? 1 : settings.threads),
        parallel_(settings.parallel != nullptr ? *settings.parallel : own_parallel_) {}
  bool execute();
  struct Block;

 private:
  bool prepare();
  bool next_item(Item& item);
  bool place_window(long index, Place& place) const;
  void place_items();
  const Place& place_of(const Item& item, Place& spare) const;
  void build_tables();
  void failure(const std::string& message);
  void progress(long n, long window);
  enum class Settled { Written, End, Failure };
  void gather(Block& block);
  Settled settle_block(Block& block);
  Settled settle(Block& block, std::size_t i);
  void settle_left();
  void settle_done(const Item& item, long n, const ItemResult& result, ItemSettled& settled);
  void settle_noncoding(long n, const ItemResult& result, ItemSettled& settled);
  void settle_coding(const Item& item, long n, const ItemResult& result, ItemSettled& settled);
  void write_item(const Item& item, const ItemResult& result, ItemSettled& settled) const;
  void write_lines(const Item& item, const ItemResult& r, const CodingEstimates& coding,
                   const NoncodingEstimates& noncoding, const NoncodingNotApplicable& na,
                   long number, std::string& report, std::string& table) const;
  void prewrite(const Item& item, const ItemResult& result, WorkerPart& part,
                ItemSummary& summary) const;
  void append_texts(const Block& block, std::size_t count);
  void hand_on_pair(const Item& item, long n, const ItemResult& result);
  void after_item();
  void write_last_pair_line();
  // The stores' row of comparison n, or a row that is written over where the
  // run keeps no stores.
  ComparisonRow& store_row(long n) {
    auto& store = rec_.results.ComparisonStore;
    return settings_.keep_stores ? store[static_cast<std::size_t>(n)] : spare_row_;
  }
  PairStoreRow& pair_row(long n) {
    auto& store = rec_.results.PairStore;
    return settings_.keep_stores ? store[static_cast<std::size_t>(n)] : spare_pair_row_;
  }
  void flush(bool last);
  void finish();

  AnalysisRecord& rec_;
  Platform& platform_;
  const RunSettings& settings_;
  ParallelContext own_parallel_;
  const ParallelContext& parallel_;
  reports::RunLayout run_;
  PairSettings pair_;
  bool coding_ = true;
  bool window_ = false;
  long sequences_ = 0;
  double seq_length_ = 0;
  FilteredAlignment filtered_;
  FilterPlan filter_plan_;
  SequenceTables tables_;
  NoncodingCarry noncoding_carry_;
  CodingCarry coding_carry_;
  NoncodingEstimates last_noncoding_{};
  bool have_noncoding_ = false;
  bool positions_written_ = false;
  // Item walk.
  long n_ = 1, a_ = 1, b_ = 2, window_index_ = 0;
  std::vector<Place> places_;  // [0] the whole or region run; [i] window i
  long window_count_ = 0;
  bool walk_done_ = false;
  // An empty pair ends the run: the comparison number jumps to the last one
  // and only the remaining windows of that comparison follow.
  bool ended_ = false;
  long ended_a_ = 0, ended_b_ = 0;
  double region_first_ = 1, region_last_ = 0;
  // Report length handed to the sink so far, and what Text3 holds of it.
  std::size_t report_flushed_ = 0;
  // A comparison that took nothing from the carry is settled only when what
  // it leaves is needed: by the next comparison that is not, or at the end of
  // its block. Its result is then read once, not every comparison's.
  bool settle_later_ = false;  // no stores and no pair sink
  struct Left {
    const Item* item = nullptr;
    long n = 0;
    const ItemResult* result = nullptr;
    ItemSettled* settled = nullptr;
  } left_;
  std::string failure_message_;
  std::string pair_count_text_;  // " of" & PairCount, for the progress text
  ComparisonRow spare_row_{};
  PairStoreRow spare_pair_row_{};
  // The last pair of a Kimura run, for LastPairLine, written when the run ends.
  struct LastPair {
    bool set = false;
    long a = 0, b = 0;
    double ks = 0, ka = 0;
  } last_pair_;
};

// Items computed and written a block at a time.
struct Run::Block {
  std::vector<Item> items;
  std::vector<ItemSummary> summaries;
  std::vector<ItemSettled> settled_items;
  std::vector<WorkerPart> parts;  // one per thread
  std::size_t settled = 0;  // items the ordered pass went through
  std::size_t ahead = 0;    // first items computed while the block before was finishing
};

const ItemResult& result_of(const Run::Block& block, std::size_t i) {
  const ItemSummary& summary = block.summaries[i];
  return block.parts[summary.worker].results[summary.slot];
}

// The one-line summary of the last pair of a Kimura run: sequence numbers in
// columns 1-4 and 6-9, Ks in 10-18, Ka in 20-27.
void Run::write_last_pair_line() {
  if (!last_pair_.set) return;
  std::string& last = rec_.results.LastPairLine;
  last.clear();
  text::append_right_aligned(last, last_pair_.a, 4);
  last += ' ';
  text::append_right_aligned(last, last_pair_.b, 4);
  text::append_cell(last, last_pair_.ks, "##0.00000", 9);
  last += ' ';
  text::append_cell(last, last_pair_.ka, "#0.00000", 8);
}

void Run::failure(const std::string& message) {
  write_last_pair_line();
  rec_.results.StopCodonFlag = 0;
  platform_.beep();
  platform_.busy(false);
  rec_.form.SSTab3.visible = false;
  platform_.message(message, kSequenceFileTitle, MessageIcon::Exclamation);
  rec_.menu.AnalysisOptions.enabled = true;
  rec_.menu.Diver.enabled = true;
  flush(true);
}

void Run::progress(long n, long window) {
  if (pair_count_text_.empty()) {
    pair_count_text_ = " of";
    text::append_plain(pair_count_text_, rec_.seq.PairCount);
  }
  std::string& t = rec_.form.Text33.text;
  t.clear();
  if (window_) {
    t += " Comp#";
    text::append_plain(t, n);
    t += pair_count_text_;
    t += " w#";
    text::append_plain(t, window);
  } else {
    // The coding branch tests below 999 and above 1000, so 999 and 1000 leave
    // the box empty; kept as the program has always shown it.
    const char* prefix = coding_ ? (n < 999 ? "  Comp# " : n > 1000 ? " Comp# " : nullptr)
                                 : (n < 1000 ? "  Comp# " : " Comp# ");
    if (prefix != nullptr) {
      t += prefix;
      text::append_plain(t, n);
      t += "  of ";
      t.append(pair_count_text_, 3);
    }
  }
  platform_.yield();
}

// Window `index` (from 1) of every comparison; true when it is the last one.
bool Run::place_window(long index, Place& place) const {
  const RegionFields& region = rec_.region;
  const double first = 1 + static_cast<double>(index - 1) * region.WindowStep;
  double last = region.WindowSize + static_cast<double>(index - 1) * region.WindowStep;
  if (last > seq_length_) last = seq_length_;
  place.window = {index, first, last, static_cast<long>(std::floor((first - 1) / 3)) + 1,
                  static_cast<long>(std::floor(last / 3))};
  place.columns = columns_in_cells(filtered_, place.window.first_codon, place.window.last_codon);
  return !(last < seq_length_);
}

// The place of the whole (or region) run, or the number of windows and the
// places of the first of them: the windows are the same for every comparison.
void Run::place_items() {
  places_.assign(1, Place{{},
                          {0, static_cast<std::size_t>(filtered_.codon_count()), 0,
                           static_cast<std::size_t>(filtered_.site_count())}});
  window_count_ = 0;
  if (!window_) return;
  Place place;
  for (long index = 1;; ++index) {
    const bool last = place_window(index, place);
    if (places_.size() < kMaxKeptPlaces) places_.push_back(place);
    if (last) {
      window_count_ = index;
      return;
    }
  }
}

// The place of an item: one of those kept, or else `spare` filled in.
const Place& Run::place_of(const Item& item, Place& spare) const {
  if (static_cast<std::size_t>(item.window) < places_.size())
    return places_[static_cast<std::size_t>(item.window)];
  place_window(item.window, spare);
  return spare;
}

// Fills the filtered sequences and works out what each brings to every pair,
// per range of columns: the windows are the same for every comparison.
void Run::build_tables() {
  tables_ = {};
  const auto n = static_cast<std::size_t>(sequences_);
  const auto entries = static_cast<std::size_t>(std::max(1L, window_count_)) * n;
  const bool wanted =
      entries <= kMaxTableEntries && !(coding_ && pair_.selection != Selection::All);
  std::vector<ColumnRange> ranges;
  if (wanted) {
    if (window_) {
      Item item;
      Place spare;
      for (item.window = 1; item.window <= window_count_; ++item.window)
        ranges.push_back(place_of(item, spare).columns);
    } else {
      ranges.push_back(places_[0].columns);
    }
    if (coding_) tables_.coding.assign(ranges.size(), std::vector<CodingSummary>(n));
    else tables_.bases.assign(ranges.size(), std::vector<BaseCounts>(n));
  }
  std::atomic<bool> other_letter{false};
  if (wanted && !coding_) {
    // Sized on this thread, as the filtered sequences are.
    tables_.packed_sites.assign(n, {});
    for (auto& packed : tables_.packed_sites) packed.resize(filtered_.site_cells.size() / 32 + 1);
  }
  parallel_.for_each(n, [&](std::size_t q, int) {
    fill_filtered(rec_.seq, filter_plan_, q, filtered_);
    if (!wanted) return;
    for (std::size_t r = 0; r < ranges.size(); ++r) {
      const ColumnRange& c = ranges[r];
      if (coding_) {
        const auto& codons = filtered_.codons[q];
        std::span<const Codon> span(codons.data() + c.codon_begin, c.codon_end - c.codon_begin);
        CodingSummary& out = tables_.coding[r][q];
        out.sites = sequence_sites(span, pair_.code);
        for (const Codon codon : span) out.third_gc += (codon & 3) == kC || (codon & 3) == kG;
      } else {
        BaseCounts& out = tables_.bases[r][q];
        for (std::size_t k = c.site_begin; k < c.site_end; ++k) {
          const int base = base_number(static_cast<unsigned char>(filtered_.sites[q][k]));
          if (base < 4) ++out[static_cast<std::size_t>(base)];
          else other_letter = true;  // the filter keeps none: counted pair by pair then
        }
      }
    }
    if (!coding_) {
      const std::string& sites = filtered_.sites[q];
      auto& packed = tables_.packed_sites[q];
      for (std::size_t k = 0; k < sites.size(); ++k)
        packed[k / 32] |= static_cast<std::uint64_t>(
                              base_number(static_cast<unsigned char>(sites[k])) & 3)
                          << (2 * (k % 32));
    }
  }, [&] {
    // The pair table, on this thread while the others fill and sum the sequences.
    if (wanted && coding_) tables_.pairs = shared_placing_table(pair_.code, pair_.weight);
  });
  if (other_letter) {
    tables_.bases.clear();
    tables_.packed_sites.clear();
  }
}

// The next comparison (or window) in run order; false when the walk is over.
bool Run::next_item(Item& item) {
  if (walk_done_) return false;
  item.n = n_;
  item.a = static_cast<std::int32_t>(a_);
  item.b = static_cast<std::int32_t>(b_);
  item.window = 0;
  bool pair_done = true;
  if (window_) {
    item.window = ++window_index_;
    pair_done = window_index_ >= window_count_;
  }
  if (pair_done) {
    window_index_ = 0;
    if (n_ >= rec_.seq.PairCount) {
      walk_done_ = true;
    } else {
      ++n_;
      ++b_;
      if (b_ > rec_.seq.SeqCount) {
        ++a_;
        b_ = a_ + 1;
      }
    }
  }
  return true;
}

bool Run::prepare() {
  parallel_.start();  // awake by the time the tables are built
  Menu& m = rec_.menu;
  Form& f = rec_.form;
  RunResults& res = rec_.results;
  SequenceData& seq = rec_.seq;
  RegionFields& region = rec_.region;

  // Menus, stores and the results page.
  m.Confidence_Intervals_menu.enabled = true;
  if (seq.PairCount < 3) f.MatrixBoton.visible = false;
  const auto rows = static_cast<std::size_t>(std::max(0.0, std::floor(seq.PairCount))) + 1;
  // The stores take most of a large run's memory.
  assign_large(res.ComparisonStore, settings_.keep_stores ? rows : 1, ComparisonRow{});
  res.StopCodonFlag = 0;
  coding_ = m.Coding.checked;
  window_ = region.WindowMode == 1;
  assign_large(res.PairStore, coding_ && settings_.keep_stores ? rows : 2, PairStoreRow{});
  seq.SeqCount = seq.SeqCountCopy;
  f.Boto1.visible = true;
  f.Boto2.visible = true;
  f.Boto2.text = "Save Results";
  f.SSTab3.visible = true;
  f.Text3.visible = true;
  f.BotoData.visible = window_;
  res.LastPairLine.clear();

  sequences_ = static_cast<long>(seq.SeqNames.size());
  if (seq.SeqCount == 1) {
    platform_.busy(false);
    platform_.message(" There is ONLY ONE Sequence !!", kSequenceFileTitle,
                      MessageIcon::Exclamation);
    f.SSTab3.visible = false;
    m.AnalysisOptions.enabled = true;
    m.Diver.enabled = true;
    res.StopCodonFlag = 0;
    return false;
  }
  pair_.code = rec_.active_code();
  pair_.weight = rec_.options.PathwayWeight;
  pair_.selection = m.Max_One_Change.checked     ? Selection::MaxOneChange
                    : m.Always_aa_change.checked ? Selection::OnlyAaChange
                    : m.No_3_diff.checked        ? Selection::No3Diff
                                                 : Selection::All;
  if (window_) {
    region.WindowSize = text::read_number(f.TextWinSize.text);
    region.WindowStep = text::read_number(f.TextMovement.text);
    region.WindowIndex = 0;
    // Boxes edited after their Accept could hold no window at all; the walk
    // would never reach the end of the sequence.
    if (!(region.WindowSize >= 1 && region.WindowStep >= 1)) {
      platform_.message("Invalid Information !", "", MessageIcon::Exclamation);
      f.SSTab3.visible = false;
      return false;
    }
  }
  res.WindowDataText.clear();
  res.ReportText.clear();
  f.Text3.text.clear();
  res.MethodNumber = method_number(m);
  run_ = reports::layout_of(rec_, res.MethodNumber);
  reports::append_run_head(res.ReportText, run_);
  if (window_) reports::append_window_columns(res.WindowDataText, run_);

  noncoding_carry_ = {rec_.last_noncoding.KimuraA, rec_.last_noncoding.KimuraB,
                      rec_.last_noncoding.KTajima1p, rec_.last_noncoding.KTajima4p};
  coding_carry_ = {res.handed_on.SES, res.handed_on.NES};

  seq_length_ = seq.SeqLength;
  region_last_ = seq_length_;
  FilterRange range;
  range.last_codon = static_cast<long>(seq.CodonCellCount);
  if (!window_ && region.RegionMode == 1) {
    region_first_ = text::read_number(region.RegionFirst);
    region_last_ = text::read_number(region.RegionLast);
    range.first_codon = static_cast<long>(std::floor((region_first_ - 1) / 3)) + 1;
    range.last_codon = static_cast<long>(std::floor(region_last_ / 3));
    range.rebuild_sites = true;
    range.first_site = static_cast<long>(region_first_);
    range.last_site = static_cast<long>(region_last_);
  }
  // Whether a column is kept depends on its own letters alone, so one pass
  // over the alignment serves every window. The sequences are filled with the
  // tables.
  plan_filter(seq, sequences_, range, coding_, pair_.code, filtered_, filter_plan_);
  place_items();
  build_tables();
  res.CodingMode = coding_ ? 1 : 0;
  platform_.busy(true);
  f.Text33.visible = true;
  f.CloseBotton.visible = false;
  return true;
}

void Run::settle_noncoding(long n, const ItemResult& r, ItemSettled& settled) {
  const NoncodingEstimates e = apply_carry(noncoding_carry_, r.noncoding);
  noncoding_carry_ = carry_of(e);
  last_noncoding_ = e;
  have_noncoding_ = true;
  const NoncodingNotApplicable na = not_applicable(e);
  settled.noncoding_values = e;
  settled.noncoding_na = na;
  ComparisonRow& row = store_row(n);
  row[1] = {e.k_jukes_cantor, na.jukes_cantor};
  row[2] = {e.k_kimura, na.kimura};
  row[3] = {e.kimura_a, na.kimura};
  row[4] = {e.kimura_b, na.kimura};
  row[5] = {e.k_tajima_nei, na.tajima_nei};
  row[6] = {e.k_tajima_1p, na.tajima_1p};
  row[7] = {e.k_tajima_2p, na.tajima_2p};
  row[8] = {e.k_tajima_4p, na.tajima_4p};
  row[9] = {e.obs_p + e.obs_q, false};
}

void Run::settle_coding(const Item& item, long n, const ItemResult& r, ItemSettled& settled) {
  RunResults& res = rec_.results;
  const CodingEstimates e = apply_carry(coding_carry_, r.coding);
  coding_carry_ = carry_of(e);
  settled.coding_values = e;

  const bool jc = run_.jukes_cantor_run;
  const CodingHandedOn h = jc ? handed_on_jukes_cantor(e) : handed_on_kimura(e);
  res.handed_on = {h.ks, h.ka, h.ks_method, h.ka_method, h.as,  h.bs,
                   h.aa, h.ba, e.ses,       e.nes,       r.changes.PairGCContent};
  if (!jc) {
    ComparisonRow& row = store_row(n);
    const bool ks_jc = !e.ks_jc_note.empty(), ka_jc = !e.ka_jc_note.empty();
    const bool ks_k = !e.ks_kimura_note.empty(), ka_k = !e.ka_kimura_note.empty();
    row[1] = {e.ks_jc, ks_jc};
    row[2] = {e.ka_jc, ka_jc};
    row[3] = {e.ks_kimura, ks_k};
    row[4] = {e.ka_kimura, ka_k};
    row[5] = {e.as, ks_k};
    row[6] = {e.bs, ks_k};
    row[7] = {e.aa, ka_k};
    row[8] = {e.ba, ka_k};
    last_pair_ = {true, item.a, item.b, h.ks, h.ka};
  }
  const ClassTotals& c = r.classes;
  const float syn_sites = c.Sites[1] + c.Sites[2] + c.Sites[3];
  const float g = c.SitesG[1] + c.SitesG[2] + c.SitesG[3];
  const float cc = c.SitesC[1] + c.SitesC[2] + c.SitesC[3];
  pair_row(n) = {0,         static_cast<double>(h.ks_method),
                                                static_cast<double>(h.ka_method),
                                                h.ks,      h.ka,
                                                syn_sites, g,
                                                cc,        h.as,
                                                h.bs,      h.aa,
                                                h.ba,      e.ses,
                                                e.nes,     r.changes.PairGCContent};
}

// The item's own lines of the report and of the window table, from what the
// ordered pass left: items are written apart, on any thread.
void Run::write_item(const Item& item, const ItemResult& r, ItemSettled& s) const {
  if (!s.written || s.own_lines) return;
  write_lines(item, r, s.coding_values, s.noncoding_values, s.noncoding_na, s.number, s.report,
              s.table);
}

void Run::write_lines(const Item& item, const ItemResult& r, const CodingEstimates& coding,
                      const NoncodingEstimates& noncoding, const NoncodingNotApplicable& na,
                      long number, std::string& report, std::string& table) const {
  Place spare;
  const reports::WindowPlace* w = window_ ? &place_of(item, spare).window : nullptr;
  reports::ComparisonPlace place{number, rec_.seq.SeqNames[static_cast<std::size_t>(item.a - 1)],
                                 rec_.seq.SeqNames[static_cast<std::size_t>(item.b - 1)], w};
  if (r.kind == ItemResult::Kind::Empty) {
    if (coding_) reports::append_coding_empty(report, run_, place, r.count);
    else reports::append_noncoding_empty(report, run_, place, r.count);
    return;
  }
  if (coding_) {
    reports::append_coding_comparison(report, run_, place, r.count, r.classes, coding);
    if (w != nullptr) reports::append_coding_window_row(table, run_, *w, coding);
  } else {
    reports::append_noncoding_comparison(report, run_, place, r.count, noncoding, na);
    if (w != nullptr) reports::append_noncoding_window_row(table, run_, *w, noncoding, na);
  }
}

// Writes the lines of a computed item that takes nothing from the carry, as
// the ordered pass would settle it under its own comparison number, to the
// texts of the thread that computed it, and marks the item's new summary with
// where they are: most items are then written where they were computed, in
// the same pass.
void Run::prewrite(const Item& item, const ItemResult& r, WorkerPart& part,
                   ItemSummary& summary) const {
  if (r.kind != ItemResult::Kind::Done) return;
  if (coding_ ? !r.coding.effective_sites_written
              : !r.noncoding.kimura_ab_written || !r.noncoding.tajima_1p_4p_written)
    return;
  static const CodingEstimates no_coding;
  static const NoncodingEstimates no_noncoding;
  const std::size_t report_at = part.report.size(), table_at = part.table.size();
  if (coding_)
    write_lines(item, r, r.coding.values, no_noncoding, {}, item.n, part.report, part.table);
  else
    write_lines(item, r, no_coding, r.noncoding.values, not_applicable(r.noncoding.values), item.n,
                part.report, part.table);
  summary.prewritten = true;
  summary.report_at = static_cast<std::uint32_t>(report_at);
  summary.report_length = static_cast<std::uint32_t>(part.report.size() - report_at);
  summary.table_at = static_cast<std::uint32_t>(table_at);
  summary.table_length = static_cast<std::uint32_t>(part.table.size() - table_at);
}

// Hands the values of the item just written to the pair sink; S.E.S., N.E.S.
// and the noncoding estimates are those the write resolved against the carry.
void Run::hand_on_pair(const Item& item, long n, const ItemResult& r) {
  PairValues v;
  v.comparison = n;
  v.a = item.a;
  v.b = item.b;
  v.window = item.window;
  v.first = region_first_;
  v.last = region_last_;
  v.coding = coding_;
  v.empty = r.kind == ItemResult::Kind::Empty;
  v.analyzed = coding_ ? 3 * r.count : r.count;
  if (!v.empty && coding_) {
    v.estimates = r.coding.values;
    v.estimates.ses = coding_carry_.ses;
    v.estimates.nes = coding_carry_.nes;
    v.sites = r.classes.Sites;
    v.third_gc = r.changes.PairGCContent;
  } else if (!v.empty) {
    v.noncoding = last_noncoding_;
    v.noncoding_na = not_applicable(last_noncoding_);
  }
  settings_.pair_sink(v);
}

// Text3 shows the report as it stood after the last comparison that found it
// shorter than 60000 characters.
void Run::after_item() {
  std::string& text3 = rec_.form.Text3.text;
  if (text3.size() >= 60000) return;
  // Text3 holds the report up to some point; what came after it is added.
  const std::string& pending = rec_.results.ReportText;
  text3.append(pending, text3.size() - report_flushed_);
}

Run::Settled Run::settle(Block& block, std::size_t i) {
  SequenceData& seq = rec_.seq;
  const Item& item = block.items[i];
  ItemSettled& s = block.settled_items[i];
  s.written = false;
  s.own_lines = false;
  s.report.clear();
  s.table.clear();
  if (ended_ && (item.a != ended_a_ || item.b != ended_b_)) return Settled::End;
  const long n = ended_ ? static_cast<long>(std::floor(seq.PairCount)) : item.n;
  if (item.b > sequences_ || item.a > sequences_) {
    // A fractional count of sequences (an LWL file whose lines do not divide
    // into records) walks past the sequences read.
    failure_message_ = " The file holds fewer sequences than its count !!";
    return Settled::Failure;
  }
  Place spare;
  const Place& place = place_of(item, spare);
  seq.CleanCodonTotal = static_cast<long>(place.columns.codon_end - place.columns.codon_begin);
  seq.NucleotideCount = static_cast<long>(place.columns.site_end - place.columns.site_begin);
  if (!positions_written_) {
    const long analyzed = coding_ ? 3 * seq.CleanCodonTotal : seq.NucleotideCount;
    reports::append_positions_block(s.report, run_, seq_length_, region_first_, region_last_,
                                    rec_.region.RegionText, analyzed);
    positions_written_ = true;
  }
  if (window_) {
    region_first_ = place.window.first;
    region_last_ = place.window.last;
    rec_.region.WindowIndex = static_cast<double>(item.window);
    if (item.window == 1 && seq.PairCount > 1)
      reports::append_window_names(s.table, seq.SeqNames[static_cast<std::size_t>(item.a - 1)],
                                   seq.SeqNames[static_cast<std::size_t>(item.b - 1)]);
  }
  progress(n, item.window);
  const ItemSummary& summary = block.summaries[i];
  if (settle_later_ && summary.kind == ItemResult::Kind::Done && summary.prewritten &&
      n == item.n) {
    // What the comparison left for later would leave is all replaced by this one's.
    left_ = {&item, n, &result_of(block, i), &s};
    s.written = true;
    s.number = n;
    s.own_lines = true;
    return Settled::Written;
  }
  settle_left();
  const ItemResult& r = result_of(block, i);
  switch (r.kind) {
    case ItemResult::Kind::StopCodon:
      failure_message_ = " There are STOP Codons !!";
      return Settled::Failure;
    case ItemResult::Kind::NoPathway: {
      const CodonCell c1 = decode_codon(r.changes.codon1), c2 = decode_codon(r.changes.codon2);
      std::string& message = failure_message_;
      message = " No pathway between codons ";
      message.append(c1.data(), 3);
      message += " and ";
      message.append(c2.data(), 3);
      message += " avoids a STOP codon (codon #";
      text::append_plain(message, r.changes.codon_number);
      message += ", ";
      message += seq.SeqNames[static_cast<std::size_t>(item.a - 1)];
      message += " / ";
      message += seq.SeqNames[static_cast<std::size_t>(item.b - 1)];
      message += ") !!";
      return Settled::Failure;
    }
    case ItemResult::Kind::Empty:
      if (!ended_) {
        ended_ = true;
        ended_a_ = item.a;
        ended_b_ = item.b;
      }
      if (coding_) seq.CodonCount = r.count;
      break;
    case ItemResult::Kind::Done:
      settle_done(item, n, r, s);
      break;
  }
  s.written = true;
  s.number = n;
  // The lines written ahead stand only under the number they were written with.
  s.own_lines = summary.prewritten && r.kind == ItemResult::Kind::Done && n == item.n;
  if (settings_.pair_sink) hand_on_pair(item, n, r);
  return Settled::Written;
}

// Settles the comparison left for later, where there is one.
void Run::settle_left() {
  if (left_.item == nullptr) return;
  settle_done(*left_.item, left_.n, *left_.result, *left_.settled);
  left_ = {};
}

// The carry, stores and values handed on of a computed comparison.
void Run::settle_done(const Item& item, long n, const ItemResult& r, ItemSettled& s) {
  if (coding_) {
    rec_.seq.CodonCount = r.count;
    settle_coding(item, n, r, s);
  } else {
    settle_noncoding(n, r, s);
  }
}

// Hands what the run wrote so far to the sinks, where there are sinks.
void Run::flush(bool last) {
  RunResults& res = rec_.results;
  if (settings_.report_sink && !res.ReportText.empty()) {
    after_item();
    settings_.report_sink(res.ReportText);
    report_flushed_ += res.ReportText.size();
    res.ReportText.clear();
  }
  if (settings_.window_table_sink && (!res.WindowDataText.empty() || last)) {
    settings_.window_table_sink(res.WindowDataText);
    res.WindowDataText.clear();
  }
}

// Appends the texts of settled items to the report and the window table, in
// order; Text3 follows each item that was written.
void Run::append_texts(const Block& block, std::size_t count) {
  RunResults& res = rec_.results;
  for (std::size_t i = 0; i < count; ++i) {
    const ItemSettled& s = block.settled_items[i];
    res.ReportText += s.report;
    res.WindowDataText += s.table;
    if (s.own_lines) {
      const ItemSummary& summary = block.summaries[i];
      const WorkerPart& part = block.parts[summary.worker];
      res.ReportText.append(part.report, summary.report_at, summary.report_length);
      res.WindowDataText.append(part.table, summary.table_at, summary.table_length);
    }
    if (s.written) after_item();
  }
}

void Run::gather(Block& block) {
  block.items.clear();
  block.settled = 0;
  block.ahead = 0;
  for (WorkerPart& part : block.parts) {
    part.used = 0;
    part.report.clear();
    part.table.clear();
  }
  Item item;
  while (block.items.size() < kBlock && next_item(item)) block.items.push_back(item);
  // Sized by the items of the block: a small run does not clear a full block.
  if (block.summaries.size() < block.items.size()) {
    block.summaries.resize(block.items.size());
    block.settled_items.resize(block.items.size());
  }
}

// The ordered pass over a computed block: carries, stores and failures, item
// by item, up to the end of the walk or a failure.
Run::Settled Run::settle_block(Block& block) {
  Settled last = Settled::Written;
  while (block.settled < block.items.size() && last == Settled::Written) {
    last = settle(block, block.settled);
    if (last == Settled::Written) ++block.settled;
  }
  // The comparison left for later points into this block, whose results are
  // written over when it comes round again: it is settled now.
  settle_left();
  return last;
}

bool Run::execute() {
  if (!prepare()) return false;
  settle_later_ = !settings_.keep_stores && !settings_.pair_sink;
  const auto threads = static_cast<std::size_t>(parallel_.threads());
  std::vector<Scratch> scratch(threads);
  // Three blocks in turn: while the workers compute the next block, this
  // thread settles the current one, writes and hands on its texts and gathers
  // the one after next, so that little of the ordered work keeps the others
  // waiting. Most items' lines were written where they were computed; the rest
  // are written here, or apart on every thread when there are many.
  Block blocks[3];
  // What a thread fills is taken here, from this thread's heap, rather than
  // as it grows on the thread that fills it; no more than the run has items
  // for (the blocks take the first items in turn).
  std::size_t items = static_cast<std::size_t>(std::max(0.0, rec_.seq.PairCount)) *
                      static_cast<std::size_t>(window_ ? std::max(1L, window_count_) : 1);
  for (Block& b : blocks) {
    b.parts.resize(threads);
    const std::size_t reserved = std::min(kBlock, items);
    items -= reserved;
    if (threads > 1)
      for (WorkerPart& part : b.parts) {
        part.results.reserve(reserved);
        part.report.reserve(reserved * 512);
        if (window_) part.table.reserve(reserved * 128);
      }
  }
  Block* current = &blocks[0];
  Block* next = &blocks[1];
  Block* after = &blocks[2];
  auto compute = [&](Block& block) {
    return [this, &scratch, b = &block](std::size_t i, int worker) {
      const auto t = static_cast<std::size_t>(worker);
      const Item& item = b->items[i];
      // A pair beyond the sequences read ends the run when it is settled.
      if (item.a > sequences_ || item.b > sequences_) return;
      WorkerPart& part = b->parts[t];
      if (part.used == part.results.size()) part.results.emplace_back();
      ItemResult& r = part.results[part.used];
      Place spare;
      const Place& place = place_of(item, spare);
      if (coding_)
        compute_coding(filtered_, tables_, item, place, pair_, scratch[t], r);
      else
        compute_noncoding(filtered_, tables_, item, place, r);
      ItemSummary summary;
      summary.kind = r.kind;
      summary.worker = static_cast<std::uint16_t>(worker);
      summary.slot = static_cast<std::uint32_t>(part.used++);
      prewrite(item, r, part, summary);
      b->summaries[i] = summary;
    };
  };
  constexpr std::size_t kWrittenInTurn = 32;
  std::vector<std::size_t> pending;
  pending.reserve(kBlock);
  const auto write_pending = [&](std::size_t k, int) {
    Block& b = *current;
    const std::size_t i = pending[k];
    write_item(b.items[i], result_of(b, i), b.settled_items[i]);
  };
  gather(*current);
  parallel_.for_each(current->items.size(), compute(*current));
  gather(*next);
  while (!current->items.empty()) {
    Settled last = Settled::Written;
    bool texts_appended = false;
    bool after_gathered = false;
    std::size_t texts = 0;
    // This thread, done with its share while another thread still computes
    // its last items, starts on the block after next.
    const auto compute_ahead = [&] {
      Block& b = *after;
      if (!after_gathered || b.ahead >= b.items.size()) return false;
      compute(b)(b.ahead++, 0);
      return true;
    };
    parallel_.for_each(next->ahead, next->items.size(), compute(*next), [&] {
      Block& b = *current;
      last = settle_block(b);
      texts = b.settled + (last == Settled::Failure ? 1 : 0);
      pending.clear();
      for (std::size_t i = 0; i < b.settled; ++i)
        if (b.settled_items[i].written && !b.settled_items[i].own_lines) pending.push_back(i);
      if (pending.size() <= kWrittenInTurn) {
        for (std::size_t k = 0; k < pending.size(); ++k) write_pending(k, 0);
        append_texts(b, texts);
        texts_appended = true;
        if (last == Settled::Written) flush(false);
      }
      if (last == Settled::Written) {
        gather(*after);
        after_gathered = true;
      }
    }, compute_ahead);
    if (!texts_appended) {
      parallel_.for_each(pending.size(), write_pending);
      append_texts(*current, texts);
    }
    if (last == Settled::Failure) {
      failure(failure_message_);
      return false;
    }
    if (last == Settled::End) break;
    Block* done = current;
    current = next;
    next = after;
    after = done;
  }
  // The threads end while the report is finished.
  parallel_.retire();
  if (window_) {
    rec_.region.RegionFirst = text::plain(region_first_);
    rec_.region.RegionLast = text::plain(region_last_);
  }
  finish();
  return true;
}

void Run::finish() {
  Menu& m = rec_.menu;
  Form& f = rec_.form;
  RunResults& res = rec_.results;
  const std::size_t report_length = report_flushed_ + res.ReportText.size();
  write_last_pair_line();
  flush(true);
  f.Text33.visible = false;
  f.CloseBotton.visible = true;
  platform_.busy(false);
  if (coding_)
    res.CodingResultsReady = 1;
  else
    res.NoncodingResultsReady = 1;
  if (report_length > 63000) f.Boto2.text = "Save ALL Results";
  if (rec_.seq.SeqCount >= 3 && !window_) f.MatrixBoton.visible = true;
  m.RelatRate.enabled = true;  // enabled, though the item stays out of sight
  if (!coding_) {
    if (have_noncoding_) {
      LastNoncodingEstimate& l = rec_.last_noncoding;
      const NoncodingEstimates& e = last_noncoding_;
      const auto count = [](std::int64_t c) { return static_cast<double>(c); };
      l.CountA1 = count(e.counts1[0]);
      l.CountG1 = count(e.counts1[1]);
      l.CountC1 = count(e.counts1[2]);
      l.CountT1 = count(e.counts1[3]);
      l.CountA2 = count(e.counts2[0]);
      l.CountG2 = count(e.counts2[1]);
      l.CountC2 = count(e.counts2[2]);
      l.CountT2 = count(e.counts2[3]);
      l.KJukesCantor = e.k_jukes_cantor;
      l.KKimura = e.k_kimura;
      l.KimuraA = e.kimura_a;
      l.KimuraB = e.kimura_b;
      l.KTajimaNei = e.k_tajima_nei;
      l.KTajima1p = e.k_tajima_1p;
      l.KTajima2p = e.k_tajima_2p;
      l.KTajima4p = e.k_tajima_4p;
    }
  } else {
    m.AnalysisOptions.enabled = true;
    m.Diver.enabled = true;
    m.CIcodingRegion.enabled = false;
    m.CIcodingRegionKaKs.enabled = false;
    const bool restricted =
        m.Max_One_Change.checked || m.Always_aa_change.checked || m.No_3_diff.checked;
    if (!restricted && (res.handed_on.Ks > 0 || res.handed_on.Ka > 0)) {
      m.CIcodingRegion.enabled = true;
      m.CIcodingRegionKaKs.enabled = true;
    }
  }
}

}  // namespace

int method_number(const Menu& menu) {
  int number = 0;
  for (int i = 0; i < 6; ++i)
    if ((menu.*kMethods[i]).checked) number = i + 1;
  return number;
}

long comparison_index(long a, long b, long n) { return (a - 1) * (2 * n - a) / 2 + (b - a); }

bool run_divergence(AnalysisRecord& rec, Platform& platform, const RunSettings& settings) {
  Run run(rec, platform, settings);
  return run.execute();
}

}  // namespace varnoth::divergence
