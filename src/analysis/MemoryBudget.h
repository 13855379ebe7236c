// How much memory a group of containers may take together.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <utility>

#include "support/UniqueHandle.h"

namespace postmarker {

// Containers charge what they are about to allocate and refund what they give back. One thread at a
// time.
class MemoryBudget {
 public:
  // Thrown by Charge where the limit does not allow it; nothing was charged then.
  struct Exceeded {};

  void SetLimit(size_t limit) { m_limit = limit; }

  // `relief` is called where something does not fit, to refund what can be spared, or to throw
  // Exceeded. It may charge too, and is not called again for that.
  void SetRelief(std::function<void()> relief) { m_relief = std::move(relief); }

  // The bytes that may still be charged.
  [[nodiscard]] size_t Room() const { return m_used < m_limit ? m_limit - m_used : 0; }
  [[nodiscard]] bool HasRoom(size_t bytes) const { return bytes <= Room(); }

  // True if the limit allows as much for all of a task as is charged now that `done` of it is done.
  [[nodiscard]] bool LastsFor(size_t all, size_t done) const {
    return static_cast<uint64_t>(m_used) * all <= static_cast<uint64_t>(m_limit) * done;
  }

  void Charge(size_t bytes) {
    if (!HasRoom(bytes)) {
      Relieve();
      if (!HasRoom(bytes)) {
        throw Exceeded();
      }
    }
    m_used += bytes;
  }
  void Refund(size_t bytes) { m_used -= bytes; }

  // Calls the relief, unless it is running.
  void Relieve() {
    if (m_relief != nullptr && !std::exchange(m_isRelieving, true)) {
      const ScopeExit end([this] { m_isRelieving = false; });
      m_relief();
    }
  }

 private:
  size_t m_limit = 0;
  size_t m_used = 0;
  std::function<void()> m_relief;
  bool m_isRelieving = false;
};

}  // namespace postmarker
