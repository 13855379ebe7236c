// Pairs and triples of neighbouring words, counted while the words come.
#pragma once

#include <string>
#include <string_view>

#include "analysis/KeyWindow.h"
#include "analysis/WordList.h"

namespace postmarker {

// What TokenCountMap::AddWordSequences counts, for a window of the map. `prefix` stands in front of
// each key.
class SequenceSink : public WordSink {
 public:
  SequenceSink(KeyWindow* window, std::string_view prefix);
  void Take(std::string_view word) override;

 private:
  void Count(std::string_view first, std::string_view second, std::string_view third,
             int32_t weight);

  KeyWindow* m_window;
  std::string m_prefix;
  std::string m_first;   // the word before the last one
  std::string m_second;  // the last one
  std::string m_key;
};

}  // namespace postmarker
