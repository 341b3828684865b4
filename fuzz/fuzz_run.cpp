// Fuzz target: a whole divergence run on a small fuzzed alignment with random
// options (coding or noncoding, methods, genetic code, restriction, weight,
// region or sliding windows), on one thread.
//
// Input: the option bytes first, then the alignment (fuzz_alignment.h).
#include <cstdint>
#include <string>

#include "divergence/driver.h"
#include "divergence/regions.h"
#include "fuzz_alignment.h"
#include "state/options.h"

namespace varnoth::fuzz::whole_run {

constexpr const char* kWeights[] = {"0", "1", "0.5", "0.25", "1E-07", "0.9999999", "0,75", "0.001"};

int one_input(const std::uint8_t* data, std::size_t size) {
  Bytes in(data, size);
  AnalysisRecord rec;
  QuietPlatform platform;
  start_up(rec);
  title_page_click(rec);

  const bool noncoding = in.flag();
  const unsigned methods = in.byte();
  const unsigned code = in.pick(3);
  const unsigned restriction = in.pick(4);
  const unsigned weight = in.pick(10);
  const unsigned range = in.pick(3);
  const unsigned first = in.byte(), second = in.byte();
  load_fuzzed_alignment(in, rec);
  const double length = rec.seq.SeqLength;

  if (noncoding) {
    click_noncoding(rec);
    for (unsigned k = 0; k < 6; ++k)
      if (((methods >> k) & 1u) != (rec.menu.*kMethods[k]).checked) click_method(rec, kMethods[k]);
  } else if ((methods & 1u) != 0) {
    click_method(rec, &Menu::JukesandCantor);
  }
  constexpr MenuItem Menu::*kCodes[] = {&Menu::universal, &Menu::Vermito, &Menu::Dromito};
  click_code(rec, kCodes[code]);
  if (restriction < 3) click_restriction(rec, static_cast<Restriction>(restriction));
  if (weight < 8) {
    click_weighted(rec);
    rec.form.Text4.text = kWeights[weight];
    accept_weight(rec, platform);
  }
  if (range == 1) {
    open_region_dialog(rec);
    rec.region_dialog.Text1.text = std::to_string(1 + first % static_cast<unsigned>(length));
    rec.region_dialog.Text2.text = std::to_string(1 + second % static_cast<unsigned>(length));
    accept_region(rec, platform);
  } else if (range == 2) {
    open_sliding_windows(rec);
    rec.form.TextWinSize.text = std::to_string(11 + first % 60);
    rec.form.TextMovement.text = std::to_string(3 + second % 30);
    accept_sliding_windows(rec, platform);
  }

  divergence::RunSettings settings;
  settings.threads = 1;
  const int messages = platform.messages;
  const bool done = divergence::run_divergence(rec, platform, settings);
  if (!done) {
    check(platform.messages > messages, "a failed run without a message");
    check(!platform.last_message.empty(), "a failed run with an empty message");
  }
  check_run_results(rec, platform);
  return 0;
}

}  // namespace varnoth::fuzz::whole_run

#ifndef VARNOTH_FUZZ_NO_MAIN
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return varnoth::fuzz::whole_run::one_input(data, size);
}
#endif
