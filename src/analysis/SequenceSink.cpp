#include "analysis/SequenceSink.h"

#include <utility>

#include "analysis/TokenCountMap.h"

namespace postmarker {

SequenceSink::SequenceSink(KeyWindow* window, std::string_view prefix)
    : m_window(window), m_prefix(prefix) {}

void SequenceSink::Take(std::string_view word) {
  const bool counts = m_window->MayHold(m_prefix);
  if (counts && !m_second.empty()) {
    Count(m_second, word, {}, kPairWeight);
  }
  if (counts && !m_first.empty()) {
    Count(m_first, word, {}, kPairWeight);
    Count(m_first, m_second, word, kTripleWeight);
  }
  std::swap(m_first, m_second);
  m_second.assign(word);
}

void SequenceSink::Count(std::string_view first, std::string_view second, std::string_view third,
                         int32_t weight) {
  m_key.assign(m_prefix).append(first).append(second).append(third);
  m_window->AddWeight(m_key, weight);
}

}  // namespace postmarker
