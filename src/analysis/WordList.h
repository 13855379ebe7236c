// A list of words in the order of a text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "analysis/MemoryBudget.h"

namespace postmarker {

// Takes the words of a list one after the other.
class WordSink {
 public:
  WordSink() = default;
  WordSink(const WordSink&) = delete;
  WordSink& operator=(const WordSink&) = delete;
  virtual ~WordSink();
  virtual void Take(std::string_view word) = 0;
};

// Words one behind the other in one text, and their lengths beside it: a list takes little more
// room than the text it was made from. A list that is too large even for that is not held at all:
// it is told anew, stretch by stretch, while somebody walks it. Views of words live until the list
// is changed, and until the walk goes on. One thread at a time.
class WordList {
 public:
  static constexpr size_t kLongestWord = 255;

  // Tells all words of a list, in their order.
  using Retell = std::function<void(WordSink* sink)>;

  struct End {};

  class Iterator {
   public:
    std::string_view operator*() const { return {m_text, *m_length}; }
    Iterator& operator++() {
      m_text += *m_length++;
      if (m_length == m_end && m_stretch != nullptr) {
        NextStretch();
      }
      return *this;
    }
    friend bool operator==(const Iterator& iterator, End) {
      return iterator.m_length == iterator.m_end;
    }

   private:
    friend class WordList;
    struct Stretch;

    Iterator(const char* text, const uint8_t* length, const uint8_t* end)
        : m_text(text), m_length(length), m_end(end) {}
    explicit Iterator(std::shared_ptr<Stretch> stretch);
    void NextStretch();

    const char* m_text = nullptr;
    const uint8_t* m_length = nullptr;
    const uint8_t* m_end = nullptr;
    std::shared_ptr<Stretch> m_stretch;  // of a list that is not held
  };

  WordList() = default;
  WordList(const WordList&) = delete;
  WordList& operator=(const WordList&) = delete;
  ~WordList();

  // What the list takes from now on is charged to `budget`, which must outlive it.
  void ChargeTo(MemoryBudget* budget) { m_budget = budget; }

  // Adds a word at the end; an empty one is no word. REQUIRES: it has at most kLongestWord bytes.
  void Append(std::string_view word) {
    if (word.empty()) {
      return;
    }
    if (m_diverted) {
      Divert(word);
      return;
    }
    if (m_text.size() + word.size() > m_text.capacity() ||
        m_lengths.size() == m_lengths.capacity()) {
      Grow(word.size());
    }
    m_text.insert(m_text.end(), word.begin(), word.end());
    m_longest = word.size() > m_longest ? word.size() : m_longest;
    m_lengths.push_back(static_cast<uint8_t>(word.size()));
  }

  // Adds all words of another list.
  void Append(const WordList& other);

  // The list is empty and holds its own words.
  void Clear();

  // The list holds nothing any more: whoever reads it is told its words anew, and what is appended
  // is passed over. Walking it takes about `memory` bytes. REQUIRES: `retell` lives as long as the
  // list is read.
  void ReadThrough(Retell retell, size_t memory);

  // Words appended to a list that is read through go to `sink`, or nowhere where it is null.
  void DivertTo(WordSink* sink) { m_sink = sink; }

  [[nodiscard]] size_t Size() const;
  [[nodiscard]] bool Empty() const { return begin() == end(); }

  // The bytes of all words, and the length of the longest one, of a list that holds its words.
  [[nodiscard]] size_t TextSize() const { return m_text.size(); }
  [[nodiscard]] size_t LongestLength() const { return m_longest; }

  [[nodiscard]] Iterator begin() const;
  [[nodiscard]] End end() const { return {}; }

 private:
  static constexpr size_t kMostKept = 65536;  // of the memory that an empty list holds

  void Divert(std::string_view word);
  void Grow(size_t more);
  void Release();

  std::vector<char> m_text;  // it grows as told, which a string may not
  std::vector<uint8_t> m_lengths;
  size_t m_longest = 0;
  MemoryBudget* m_budget = nullptr;
  size_t m_charged = 0;
  bool m_diverted = false;
  WordSink* m_sink = nullptr;
  Retell m_retell;
  size_t m_memory = 0;
};

}  // namespace postmarker
