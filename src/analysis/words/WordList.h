// A list of words in the order of a text.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "analysis/words/FeatureLimit.h"
#include "support/TextPool.h"

namespace postmarker {

// Words in one pool, each after a byte that tells its length: a list takes little more memory than
// the text that it was made from, and is never copied while it grows. Views of words live until the
// list is cleared. One thread at a time.
class WordList {
 public:
  static constexpr size_t kMaxWordBytes = 255;

  struct End {};

  class Iterator {
   public:
    std::string_view operator*() const {
      const char* const record = m_pool->At(m_offset);
      return {record + 1, static_cast<uint8_t>(*record)};
    }
    Iterator& operator++() {
      m_offset = m_pool->After(m_offset, 1 + (**this).size());
      return *this;
    }
    friend bool operator==(const Iterator& iterator, End) {
      return iterator.m_offset >= iterator.m_pool->End();
    }

   private:
    friend class WordList;
    explicit Iterator(const TextPool* pool) : m_pool(pool) {}

    const TextPool* m_pool;
    uint32_t m_offset = 0;
  };

  WordList() = default;
  WordList(const WordList&) = delete;
  WordList& operator=(const WordList&) = delete;
  ~WordList() = default;

  // Each word is taken from `limit` from now on, which must outlive the list. Append may then throw
  // FeatureLimit::Reached; the words appended so far stay.
  void SetLimit(FeatureLimit* limit) { m_limit = limit; }

  // Adds a word at the end; an empty one is no word. REQUIRES: it has at most kMaxWordBytes bytes.
  void Append(std::string_view word);

  // Adds all words of another list.
  void Append(const WordList& other);

  void Clear();

  [[nodiscard]] size_t Size() const { return m_size; }
  [[nodiscard]] bool IsEmpty() const { return m_size == 0; }

  // The bytes of all words.
  [[nodiscard]] size_t TextSize() const { return m_textSize; }

  [[nodiscard]] Iterator begin() const { return Iterator(&m_pool); }
  [[nodiscard]] End end() const { return {}; }

 private:
  TextPool m_pool;
  size_t m_size = 0;
  size_t m_textSize = 0;
  FeatureLimit* m_limit = nullptr;
};

}  // namespace postmarker
