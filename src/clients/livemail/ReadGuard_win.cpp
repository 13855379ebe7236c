#include "clients/CrashGuard_win.h"
#include "clients/livemail/ReadGuard.h"

namespace postmarker {

bool CallReading(void (*work)(void* argument), void* argument) noexcept {
  return CallGuardedAgainstInPageErrors(work, argument);
}

}  // namespace postmarker
