#include "progress/PendingSteps.h"

#include <algorithm>
#include <utility>

namespace postmarker {

bool PendingSteps::Report(int32_t steps) {
  if (m_isGathering) {
    m_steps += std::max<int32_t>(steps, 0);
    return false;
  }
  m_isGathering = true;
  ++m_underWay;
  return true;
}

void PendingSteps::TakeBack(int32_t steps) {
  --m_underWay;
  m_isGathering = false;
  m_steps += std::max<int32_t>(steps, 0);
}

void PendingSteps::BeginRange() {
  m_isGathering = false;
  m_steps = 0;
}

int64_t PendingSteps::MessageArrived() {
  // Anybody can send such a message, so there may be more of them than were asked for.
  m_underWay = std::max(m_underWay - 1, 0);
  return FetchSteps();
}

PendingSteps::Gathered PendingSteps::FetchGathered() {
  if (m_underWay > 0) {
    return {};  // what was gathered belongs after that message, which begins a new while
  }
  const int64_t steps = FetchSteps();
  m_isGathering = steps > 0;
  return {steps, m_isGathering};
}

int64_t PendingSteps::FetchSteps() {
  return m_underWay == 0 ? std::exchange(m_steps, 0) : 0;
}

}  // namespace postmarker
