// Headers put aside for later, in the order in which they came.
#pragma once

#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "analysis/TextPool.h"

namespace postmarker {

// Groups of headers, packed tightly. One thread at a time.
class HeaderLog {
 public:
  using Item = std::pair<std::string_view, std::string_view>;

  // Adds a header to the group that was begun last.
  void Add(std::string_view key, std::string_view value);

  // What is added from now on belongs to another group.
  void BeginGroup() { m_groupBegins = true; }

  void Clear();

  // Calls visit(headers) for each group, its headers in the order of their keys' bytes. The views
  // live during the call.
  template <class Visit>
  void ForEachGroup(Visit visit) const {
    std::vector<Item> group;
    for (uint32_t offset = 0; offset < m_pool.End();) {
      offset = ReadGroup(offset, &group);
      visit(group);
    }
  }

 private:
  uint32_t ReadGroup(uint32_t offset, std::vector<Item>* group) const;

  TextPool m_pool;
  bool m_groupBegins = true;
};

}  // namespace postmarker
