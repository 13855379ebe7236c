#include "wizard/ProgressRange.h"

#include <algorithm>

namespace postmarker {

ProgressRange RangeFor(int32_t total) {
  return {static_cast<uint16_t>(std::max<int32_t>(total, 1)),
          static_cast<uint16_t>(total == 0 ? 1 : 0)};
}

int32_t StepsToTake(int64_t steps, int32_t upper) {
  // One step more than the range is long leads back to where it began.
  return steps > 0 ? static_cast<int32_t>(steps % (std::max<int64_t>(upper, 0) + 1)) : 0;
}

int32_t PositionAfter(int32_t position, int64_t steps, int32_t upper) {
  return StepsToTake(int64_t{position} + StepsToTake(steps, upper), upper);
}

}  // namespace postmarker
