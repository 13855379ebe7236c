// Progress bars that follow what a long operation reports.
#pragma once

#include <windows.h>

#include <cstdint>

namespace postmarker {

// Gives a progress bar the range of an expected number of steps, and the position to begin with
// (see RangeFor). A null bar is passed over, here and below.
void SetProgressRange(HWND bar, int32_t total);

// Moves the bar by `steps` single steps.
void AdvanceProgress(HWND bar, int32_t steps);

}  // namespace postmarker
