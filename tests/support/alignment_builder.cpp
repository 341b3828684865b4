#include "support/alignment_builder.h"

#include <algorithm>

namespace varnoth::testing {

void load_alignment(AnalysisRecord& rec,
                    const std::vector<std::pair<std::string, std::string>>& named_sequences,
                    const std::string& file_name) {
  SequenceData& s = rec.seq;
  s = SequenceData{};
  s.InputFileName = file_name;
  s.InputFormatName = "MEGA";
  s.SequenceLoaded = 1;
  s.SeqCount = s.SeqCountCopy = static_cast<double>(named_sequences.size());
  s.PairCount = s.SeqCount * (s.SeqCount - 1) / 2;
  std::size_t length = 0;
  for (const auto& [name, letters] : named_sequences) {
    s.SeqNames.push_back(name);
    std::vector<CodonCell> cells;
    for (std::size_t i = 0; i < letters.size(); i += 3) {
      CodonCell c{' ', ' ', ' '};
      for (std::size_t j = 0; j < 3 && i + j < letters.size(); ++j) c[j] = letters[i + j];
      cells.push_back(c);
    }
    s.SeqCodons.push_back(std::move(cells));
    length = letters.size();
  }
  s.SeqLength = static_cast<double>(length);
  s.CodonCellCount = static_cast<float>(s.SeqCodons.empty() ? 0 : s.SeqCodons[0].size());
  rec.menu.Diver.enabled = true;
  rec.menu.Region_analysis.enabled = true;
  rec.menu.Sliding_Window.enabled = true;
}

}  // namespace varnoth::testing
