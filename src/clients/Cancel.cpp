#include "clients/Cancel.h"

namespace postmarker {

bool CanReport(const ProgressCallbacks* callbacks) {
  return callbacks != nullptr && callbacks->handle != nullptr;
}

bool IsCancelled(const ProgressCallbacks* callbacks) {
  return CanReport(callbacks) && callbacks->isCancelled != nullptr &&
         callbacks->isCancelled(callbacks->handle) != 0;
}

StopQuery StopOrCancel(const ClientSession& session, const ProgressCallbacks* callbacks) {
  return [&stop = session.stop, callbacks] { return ShouldStop(stop) || IsCancelled(callbacks); };
}

}  // namespace postmarker
