// How a progress bar follows what a long operation reports.
#pragma once

#include <cstdint>

namespace postmarker {

// The bar's range begins at 0.
struct ProgressRange {
  uint16_t upper = 1;
  uint16_t position = 0;
};

// The range for an expected number of steps. A number below 1 gives a range of one step, which 0
// shows as done: there is nothing to do.
// Deliberate: the bar holds 16 bits, of which larger numbers keep the lower ones. Its position
// wraps at the end, so such a bar fills several times.
ProgressRange RangeFor(int32_t total);

// How many single steps move a bar of the range 0 to `upper` as far as `steps` do. It begins again
// after its end, so rounds are left out; a number below 1 moves nothing.
int32_t StepsToTake(int64_t steps, int32_t upper);

// Where so many single steps lead from a position of such a bar.
int32_t PositionAfter(int32_t position, int64_t steps, int32_t upper);

}  // namespace postmarker
