// Pairs and triples of neighbouring words, counted while the words come.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "analysis/KeyWindow.h"
#include "analysis/TextHash.h"
#include "analysis/WordList.h"

namespace postmarker {

// What TokenCountMap::AddWordSequences counts, for a window of the map. `prefix` stands in front of
// each key. Most sequences belong to other windows, which their first bytes tell: they are not put
// together. Begins with a window that has begun.
class SequenceSink : public WordSink {
 public:
  SequenceSink(KeyWindow* window, std::string_view prefix);
  void Take(std::string_view word) override;

 private:
  // A word, its SortPrefix, and its hash once a sequence needs it.
  struct Word {
    std::string text;
    uint64_t start = 0;
    std::optional<TextHash> hash;
  };

  [[nodiscard]] bool MayCount(uint64_t start) const {
    return start >= m_range.low && start <= m_range.high;
  }
  void CountPair(Word* first, Word* second);
  void CountTriple();
  void BeginKey(Word* word);
  void ContinueKey(Word* word);

  KeyWindow* m_window;
  std::string m_prefix;
  TextHash m_prefixHash;
  KeyWindow::RestRange m_range;
  uint32_t m_bounds;  // of the window that m_range is of
  Word m_first;       // the last three words
  Word m_second;
  Word m_third;
  std::string m_key;
  TextHash m_keyHash;
};

}  // namespace postmarker
