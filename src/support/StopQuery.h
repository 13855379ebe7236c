// How a long operation learns that nobody waits for it any more.
#pragma once

#include <functional>

namespace postmarker {

// True when the operation is to end as soon as it can. Called on the operation's thread, often: it
// must be quick and must not throw. An empty one means that nothing stops the operation.
using StopQuery = std::function<bool()>;

inline bool ShouldStop(const StopQuery& stop) {
  return stop && stop();
}

}  // namespace postmarker
