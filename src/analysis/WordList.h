// A list of words in the order of a text.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace postmarker {

// Words one behind the other in one string, and their lengths beside it: a list takes little more
// room than the text it was made from. Views of words live until the list is changed. One thread at
// a time.
class WordList {
 public:
  static constexpr size_t kLongestWord = 255;

  class Iterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using value_type = std::string_view;
    using difference_type = std::ptrdiff_t;
    using pointer = const std::string_view*;
    using reference = std::string_view;

    Iterator(const char* text, const uint8_t* length) : m_text(text), m_length(length) {}
    std::string_view operator*() const { return {m_text, *m_length}; }
    Iterator& operator++() {
      m_text += *m_length++;
      return *this;
    }
    friend bool operator==(const Iterator& a, const Iterator& b) {
      return a.m_length == b.m_length;
    }

   private:
    const char* m_text;
    const uint8_t* m_length;
  };

  // Adds a word at the end; an empty one is no word. REQUIRES: it has at most kLongestWord bytes.
  void Append(std::string_view word) {
    if (word.empty()) {
      return;
    }
    m_text.append(word);
    m_longest = std::max(m_longest, word.size());
    m_lengths.push_back(static_cast<uint8_t>(word.size()));
  }

  // Adds all words of another list.
  void Append(const WordList& other) {
    m_text.append(other.m_text);
    m_lengths.insert(m_lengths.end(), other.m_lengths.begin(), other.m_lengths.end());
    m_longest = std::max(m_longest, other.m_longest);
  }

  void Clear() {
    m_text.clear();
    m_lengths.clear();
    m_longest = 0;
  }

  [[nodiscard]] size_t Size() const { return m_lengths.size(); }
  [[nodiscard]] bool Empty() const { return m_lengths.empty(); }

  // The bytes of all words, and the length of the longest one.
  [[nodiscard]] size_t TextSize() const { return m_text.size(); }
  [[nodiscard]] size_t LongestLength() const { return m_longest; }

  [[nodiscard]] Iterator begin() const { return {m_text.data(), m_lengths.data()}; }
  [[nodiscard]] Iterator end() const {
    return {m_text.data() + m_text.size(), m_lengths.data() + m_lengths.size()};
  }

 private:
  std::string m_text;
  std::vector<uint8_t> m_lengths;
  size_t m_longest = 0;
};

}  // namespace postmarker
