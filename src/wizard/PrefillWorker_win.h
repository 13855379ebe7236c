// The thread that collects addresses from the chosen client while the prefill page shows how far it
// is.
#pragma once

#include <windows.h>

#include <atomic>
#include <memory>

#include "clients/ClientLink.h"
#include "support/Handles_win.h"

namespace postmarker {

// What the worker posts to the page. It never waits for an answer.
inline constexpr UINT kPrefillRange = 0x401;     // second parameter: the number of steps expected
inline constexpr UINT kPrefillAdvance = 0x402;   // second parameter: steps done
inline constexpr UINT kPrefillAddress = 0x405;   // first parameter: a BSTR, which the page frees
inline constexpr UINT kPrefillFinished = 0x406;  // second parameter: 1; comes last

// What a worker takes along. The page waits for the worker before it goes, so what belongs to it
// outlives the job.
struct PrefillJob {
  HWND pageWindow = nullptr;                         // where messages go
  HWND progressWindow = nullptr;                     // the bar that shows them
  ClientLink client;                                 // without an adapter nothing is collected
  HANDLE stopEvent = nullptr;                        // not owned; signalled: return early
  const std::atomic<bool>* abandoned = nullptr;      // true: nobody reads what is posted any more
  std::atomic<int>* unreadAddresses = nullptr;       // posted, and not read by the page yet
  decltype(&::PostMessageW) post = &::PostMessageW;  // how messages go there
};

// Starts the worker, which frees the job. None if the thread can't be made.
KernelHandle StartPrefillWorker(std::unique_ptr<PrefillJob> job);

}  // namespace postmarker
