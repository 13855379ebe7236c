// Looks for one text in many others, in time linear in their length whatever they hold.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace postmarker {

// The pattern must outlive the object. It is prepared by the first search, so an object that never
// searches costs nothing.
class TextSearch {
 public:
  explicit TextSearch(std::string_view pattern) : m_pattern(pattern) {}

  // True if the pattern, which may be empty, stands anywhere in `text`.
  bool FoundIn(std::string_view text);

 private:
  void Prepare();

  std::string_view m_pattern;
  std::vector<uint32_t>
      m_fallback;  // the longest proper start of the pattern that also ends its first n bytes
};

}  // namespace postmarker
