// Builds a loaded alignment in the record from plain strings, as the readers
// and the common step leave it, for tests that start after the load.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "state/record.h"

namespace varnoth::testing {

void load_alignment(AnalysisRecord& rec,
                    const std::vector<std::pair<std::string, std::string>>& named_sequences,
                    const std::string& file_name = "test.meg");

}  // namespace varnoth::testing
