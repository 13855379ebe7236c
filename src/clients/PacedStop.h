// How a loop of many quick steps looks whether it is to end.
#pragma once

#include <utility>

#include "support/StopQuery.h"

namespace postmarker {

// Asks a question that costs something at every hundredth step only, and remembers a yes: an
// operation that was stopped stays so. For one thread.
class PacedStop {
 public:
  static constexpr int kStepsPerLook = 100;

  // An empty query never stops.
  explicit PacedStop(StopQuery query = {}) : m_query(std::move(query)) {}

  // Asks now.
  bool Look() {
    m_isStopped = m_isStopped || ShouldStop(m_query);
    return m_isStopped;
  }

  // Counts a step that was made, and asks after every hundredth.
  bool LookAfterStep() {
    if (++m_steps < kStepsPerLook) {
      return m_isStopped;
    }
    m_steps = 0;
    return Look();
  }

  // The last answer.
  [[nodiscard]] bool IsStopped() const { return m_isStopped; }

 private:
  StopQuery m_query;
  int m_steps = 0;
  bool m_isStopped = false;
};

}  // namespace postmarker
