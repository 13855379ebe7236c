// Headers put aside for later.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "support/TextPool.h"

namespace postmarker {

// Groups of headers, packed tightly. One thread at a time.
class HeaderLog {
 public:
  // Adds a header to the group that was begun last.
  void Add(std::string_view key, std::string_view value);

  // What is added from now on belongs to another group.
  void BeginGroup() { m_groupBegins = true; }

  // Puts the headers of each group in the order of their keys' bytes. Nothing is added afterwards.
  void Sort();

  void Clear();

  // Calls visit(key, value) for each header of a sorted log, group after group. The views live
  // until the log is cleared.
  template <class Visit>
  void ForEach(Visit visit) const {
    for (const uint32_t offset : m_order) {
      const Record record = ReadRecord(offset);
      visit(record.key, record.value);
    }
  }

 private:
  struct Record {
    std::string_view key;
    std::string_view value;
    size_t size;
    bool beginsGroup;
  };

  [[nodiscard]] Record ReadRecord(uint32_t offset) const;

  TextPool m_pool;
  size_t m_count = 0;
  bool m_groupBegins = true;
  std::vector<uint32_t> m_order;  // of the records, once they are sorted
};

}  // namespace postmarker
