#include "analysis/words/WordList.h"

#include <algorithm>

namespace postmarker {

void WordList::Append(std::string_view word) {
  if (word.empty()) {
    return;
  }
  if (m_limit != nullptr) {
    m_limit->TakeWord(word.size());
  }
  char* const record = m_pool.At(m_pool.Allocate(1 + word.size()));
  *record = static_cast<char>(word.size());
  std::copy(word.begin(), word.end(), record + 1);
  ++m_size;
  m_textSize += word.size();
}

void WordList::Append(const WordList& other) {
  for (const std::string_view word : other) {
    Append(word);
  }
}

void WordList::Clear() {
  m_pool.Clear();
  m_size = 0;
  m_textSize = 0;
}

}  // namespace postmarker
