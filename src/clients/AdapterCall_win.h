// How a worker calls a mail client's adapter, whose store can lie on a drive that goes away.
#pragma once

#include <exception>
#include <type_traits>

#include "clients/CrashGuard_win.h"
#include "support/Results.h"

namespace postmarker {

// Calls `operation`, which calls one operation of an adapter and returns its ResultCode or nothing.
// Returns that result, or 0. If the drive with the store went away meanwhile, or memory ran out,
// the general failure code: for the caller that is a store that can't be read. What the operation
// wrote to its out parameters by then is whole and stays, since only the reading of a mapped file
// fails and its bytes are read before they are linked anywhere. Any other crash goes on. Adapters
// hold no lock while they read, so none stays held; what the failed call owned is lost. Any thread.
template <class Operation>
ResultCode CallAdapter(Operation&& operation) noexcept {
  ResultCode result = kFail;
  (void)RunGuardedAgainstInPageErrors([&]() noexcept {
    try {
      if constexpr (std::is_void_v<std::invoke_result_t<Operation>>) {
        operation();
        result = kOk;
      } else {
        result = operation();
      }
    } catch (const std::exception&) {
      result = kFail;
    }
  });
  return result;
}

}  // namespace postmarker
