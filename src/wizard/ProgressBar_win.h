// Progress bars that follow what a long operation reports.
#pragma once

#include <windows.h>

#include <cstdint>

namespace postmarker {

// Gives a progress bar the range of an expected number of steps, and the position to begin with
// (see RangeFor). A null bar is passed over, here and below.
void SetProgressRange(HWND bar, int32_t total);

// Moves the bar as far as `steps` single steps do, in a time that doesn't depend on them.
void AdvanceProgress(HWND bar, int64_t steps);

}  // namespace postmarker
