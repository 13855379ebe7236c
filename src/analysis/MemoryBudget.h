// How much memory a group of containers may take together.
#pragma once

#include <cstddef>

namespace postmarker {

// Containers charge what they are about to allocate and refund what they give back. One thread at a
// time.
class MemoryBudget {
 public:
  // Thrown by Charge where the limit does not allow it; nothing was charged then.
  struct Exceeded {};

  void SetLimit(size_t limit) { m_limit = limit; }

  void Charge(size_t bytes) {
    if (bytes > m_limit || m_used > m_limit - bytes) {
      throw Exceeded();
    }
    m_used += bytes;
  }
  void Refund(size_t bytes) { m_used -= bytes; }

 private:
  size_t m_limit = 0;
  size_t m_used = 0;
};

}  // namespace postmarker
