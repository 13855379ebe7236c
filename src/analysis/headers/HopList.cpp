#include "analysis/headers/HopList.h"

#include "support/Bytes.h"

namespace postmarker {

// Reads on up to a line that gives a hop. A failure ends the list: hops that were found stay.
void HopList::Iterator::Next() {
  try {
    while (ReadLine()) {
      if (!m_hop.first.name.empty() || !m_hop.second.name.empty()) {
        return;
      }
    }
  } catch (...) {
    // No more hops, then.
  }
  m_atEnd = true;
}

bool HopList::Iterator::ReadLine() {
  std::string key = "received-";
  if (m_line > 0) {
    key.append(std::to_string(m_line)).append("-");
  }
  const auto value = m_headers->Find(key.append("comment"));
  if (!value) {
    return false;
  }
  ++m_line;
  m_hop = ReceivedHop();
  ParseReceivedLine(LowerText(*value), &m_hop.first, &m_hop.second);
  return true;
}

size_t HopList::CountHops() const {
  size_t count = 0;
  for (Iterator hop = begin(); !(hop == end()); ++hop) {
    ++count;
  }
  return count;
}

ReceivedHop HopList::ReadHop(size_t index) const {
  Iterator hop = begin();
  for (; index > 0; --index) {
    ++hop;
  }
  return *hop;
}

}  // namespace postmarker
