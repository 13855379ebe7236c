// Tokens that tell of the attributes of HTML tags.
#pragma once

#include <string_view>

#include "analysis/words/TokenCountMap.h"

namespace postmarker {

// Counts the attributes of one tag, given from its "<" up to before its ">": "html*font+size+7".
// Only some tags count, closing tags don't, and pictures count their attributes without values.
void CollectTagAttributes(std::string_view tag, TokenCountMap* tokens);

}  // namespace postmarker
