#include "wizard/ProgressBar_win.h"

#include <commctrl.h>

#include "wizard/ProgressRange.h"

namespace postmarker {

void SetProgressRange(HWND bar, int32_t total) {
  const ProgressRange range = RangeFor(total);
  ::SendMessageW(bar, PBM_SETRANGE, 0, MAKELPARAM(0, range.upper));
  ::SendMessageW(bar, PBM_SETSTEP, 1, 0);
  ::SendMessageW(bar, PBM_SETPOS, static_cast<WPARAM>(range.position), 0);
}

void AdvanceProgress(HWND bar, int64_t steps) {
  if (steps <= 0) {
    return;
  }
  const auto upper = static_cast<int32_t>(::SendMessageW(bar, PBM_GETRANGE, FALSE, 0));
  const auto position = static_cast<int32_t>(::SendMessageW(bar, PBM_GETPOS, 0, 0));
  ::SendMessageW(bar, PBM_SETPOS, static_cast<WPARAM>(PositionAfter(position, steps, upper)), 0);
}

}  // namespace postmarker
