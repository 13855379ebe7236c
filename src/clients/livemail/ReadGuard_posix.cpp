#include "clients/livemail/ReadGuard.h"

namespace postmarker {

bool CallReading(void (*work)(void* argument), void* argument) noexcept {
  work(argument);
  return true;
}

}  // namespace postmarker
