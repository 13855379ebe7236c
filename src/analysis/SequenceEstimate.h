// How many different sequences a list of words makes.
#pragma once

#include <cstddef>

#include "analysis/WordList.h"

namespace postmarker {

// About how many different keys TokenCountMap::AddWordSequences makes of a list that holds its
// words: mostly within a hundredth, in a fraction of the time and the memory (32 KiB) that counting
// takes.
[[nodiscard]] size_t EstimateSequences(const WordList& words);

}  // namespace postmarker
