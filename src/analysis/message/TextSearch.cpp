#include "analysis/message/TextSearch.h"

namespace postmarker {

void TextSearch::Prepare() {
  m_fallback.assign(m_pattern.size() + 1, 0);
  uint32_t matched = 0;
  for (size_t i = 1; i < m_pattern.size(); ++i) {
    while (matched > 0 && m_pattern[i] != m_pattern[matched]) {
      matched = m_fallback[matched];
    }
    matched += m_pattern[i] == m_pattern[matched] ? 1 : 0;
    m_fallback[i + 1] = matched;
  }
}

bool TextSearch::FoundIn(std::string_view text) {
  if (text.size() < m_pattern.size()) {
    return false;
  }
  if (m_fallback.empty()) {
    Prepare();
  }
  size_t matched = 0;
  for (size_t i = 0; matched < m_pattern.size() && i < text.size(); ++i) {
    while (matched > 0 && text[i] != m_pattern[matched]) {
      matched = m_fallback[matched];
    }
    matched += text[i] == m_pattern[matched] ? 1 : 0;
  }
  return matched == m_pattern.size();
}

}  // namespace postmarker
