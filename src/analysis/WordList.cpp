#include "analysis/WordList.h"

#include <algorithm>
#include <utility>

namespace postmarker {
namespace {

constexpr size_t kFirstCapacity = 256;

class Counter : public WordSink {
 public:
  void Take(std::string_view /*word*/) override { ++count; }
  size_t count = 0;
};

}  // namespace

WordSink::~WordSink() = default;

// The words of a list from one on, as many as the memory holds.
struct WordList::Iterator::Stretch : public WordSink {
  Stretch(const Retell* theRetell, size_t memory) : retell(theRetell) {
    text.reserve(std::max(memory / 2, kLongestWord));
    lengths.reserve(std::max<size_t>(memory / 2, 1));
  }

  void Take(std::string_view word) override {
    if (told++ < first) {
      return;
    }
    full =
        full || lengths.size() == lengths.capacity() || text.size() + word.size() > text.capacity();
    if (!full) {
      text.append(word);
      lengths.push_back(static_cast<uint8_t>(word.size()));
    }
  }

  void Next() {
    first += lengths.size();
    told = 0;
    full = false;
    text.clear();
    lengths.clear();
    (*retell)(this);
  }

  const Retell* retell;
  size_t first = 0;  // words in front of the stretch
  size_t told = 0;
  bool full = false;
  std::string text;
  std::vector<uint8_t> lengths;
};

WordList::Iterator::Iterator(std::shared_ptr<Stretch> stretch) : m_stretch(std::move(stretch)) {
  NextStretch();
}

void WordList::Iterator::NextStretch() {
  const bool wasLast = m_stretch->told > 0 && !m_stretch->full;
  if (!wasLast) {
    m_stretch->Next();
    m_text = m_stretch->text.data();
    m_length = m_stretch->lengths.data();
    m_end = m_length + m_stretch->lengths.size();
  }
}

WordList::~WordList() {
  Release();
}

void WordList::Append(const WordList& other) {
  for (const std::string_view word : other) {
    Append(word);
  }
}

void WordList::Clear() {
  m_diverted = false;
  m_sink = nullptr;
  m_retell = nullptr;
  m_text.clear();
  m_lengths.clear();
  m_longest = 0;
  if (m_text.capacity() + m_lengths.capacity() > kMostKept) {
    Release();
  }
}

void WordList::ReadThrough(Retell retell, size_t memory) {
  Clear();
  Release();
  m_diverted = true;
  m_retell = std::move(retell);
  m_memory = memory;
}

size_t WordList::Size() const {
  if (!m_diverted) {
    return m_lengths.size();
  }
  Counter counter;
  m_retell(&counter);
  return counter.count;
}

WordList::Iterator WordList::begin() const {
  if (m_diverted) {
    return Iterator(std::make_shared<Iterator::Stretch>(&m_retell, m_memory));
  }
  return {m_text.data(), m_lengths.data(), m_lengths.data() + m_lengths.size()};
}

void WordList::Divert(std::string_view word) {
  if (m_sink != nullptr) {
    m_sink->Take(word);
  }
}

// Charges the new memory while the old one is still there.
void WordList::Grow(size_t more) {
  const size_t text = std::max(m_text.capacity(), kFirstCapacity) * 3 / 2 + more;
  const size_t lengths = std::max(m_lengths.capacity(), kFirstCapacity) * 3 / 2;
  const bool growText = m_text.size() + more > m_text.capacity();
  const size_t added = growText ? text : lengths;
  if (m_budget != nullptr) {
    m_budget->Charge(added);
    m_charged += added;
  }
  if (growText) {
    m_text.reserve(text);
  } else {
    m_lengths.reserve(lengths);
  }
  const size_t held = m_text.capacity() + m_lengths.capacity();
  if (m_budget != nullptr && m_charged > held) {
    m_budget->Refund(std::exchange(m_charged, held) - held);
  }
}

void WordList::Release() {
  m_text = std::vector<char>();
  m_lengths = std::vector<uint8_t>();
  if (m_budget != nullptr) {
    m_budget->Refund(std::exchange(m_charged, 0));
  }
}

}  // namespace postmarker
