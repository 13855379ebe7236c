// What the analysis counted, as one line of text that a test can compare.
#pragma once

#include <string>

#include "analysis/words/TokenCountMap.h"
#include "analysis/words/WordList.h"

namespace postmarker::test {

// The keys in their order, with blanks between them, and ":count" after a key whose count is not 1.
inline std::string Listed(const TokenCountMap& counts) {
  std::string listed;
  for (const TokenCountMap::Item& item : counts) {
    listed.append(listed.empty() ? "" : " ").append(item.key);
    if (item.count != 1) {
      listed.append(":").append(std::to_string(item.count));
    }
  }
  return listed;
}

// The words in their order, with a bar between them.
inline std::string Listed(const WordList& words) {
  std::string listed;
  for (const std::string_view word : words) {
    listed.append(listed.empty() ? "" : "|").append(word);
  }
  return listed;
}

}  // namespace postmarker::test
