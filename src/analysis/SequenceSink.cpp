#include "analysis/SequenceSink.h"

#include <utility>

#include "analysis/SortPrefix.h"
#include "analysis/TokenCountMap.h"

namespace postmarker {
namespace {

// The SortPrefix of a text of `length` bytes that begins with `first`, and what begins with
// `second` behind it.
uint64_t StartOfBoth(uint64_t first, size_t length, uint64_t second) {
  return length >= sizeof(first) ? first : first | second >> (8 * length);
}

}  // namespace

SequenceSink::SequenceSink(KeyWindow* window, std::string_view prefix)
    : m_window(window),
      m_prefix(prefix),
      m_prefixHash(prefix),
      m_range(window->RestsBehind(prefix)),
      m_bounds(window->Bounds()) {}

void SequenceSink::Take(std::string_view word) {
  if (m_bounds != m_window->Bounds()) {
    m_range = m_window->RestsBehind(m_prefix);
    m_bounds = m_window->Bounds();
  }
  if (m_range.low > m_range.high) {
    return;  // a stretch that holds none of these keys may end earlier, and begins anew elsewhere
  }
  std::swap(m_first, m_second);
  std::swap(m_second, m_third);
  m_third.text.assign(word);
  m_third.start = SortPrefix(word);
  m_third.hash.reset();
  if (!m_second.text.empty()) {
    CountPair(&m_second, &m_third);
  }
  if (!m_first.text.empty()) {
    CountPair(&m_first, &m_third);
    CountTriple();
  }
}

void SequenceSink::CountPair(Word* first, Word* second) {
  if (MayCount(StartOfBoth(first->start, first->text.size(), second->start))) {
    BeginKey(first);
    ContinueKey(second);
    m_window->AddWeight(m_key, m_keyHash, kPairWeight);
  }
}

void SequenceSink::CountTriple() {
  const uint64_t tail = StartOfBoth(m_second.start, m_second.text.size(), m_third.start);
  if (MayCount(StartOfBoth(m_first.start, m_first.text.size(), tail))) {
    BeginKey(&m_first);
    ContinueKey(&m_second);
    ContinueKey(&m_third);
    m_window->AddWeight(m_key, m_keyHash, kTripleWeight);
  }
}

void SequenceSink::BeginKey(Word* word) {
  m_key.assign(m_prefix);
  m_keyHash = m_prefixHash;
  ContinueKey(word);
}

void SequenceSink::ContinueKey(Word* word) {
  if (!word->hash) {
    word->hash = TextHash(word->text);
  }
  m_key.append(word->text);
  m_keyHash = m_keyHash.Joined(*word->hash, word->text.size());
}

}  // namespace postmarker
