#include "analysis/TagIndex.h"

#include <algorithm>

namespace postmarker {

std::span<uint32_t> TagIndex::TakeNumbers() {
  const auto end = std::remove(m_numbers.begin(), m_numbers.end(), 0U);
  std::for_each(m_numbers.begin(), end, [](uint32_t& number) { --number; });
  return {m_numbers.begin(), end};
}

}  // namespace postmarker
