// How a long operation on a mail store reports progress and asks whether to stop.
#pragma once

#include <cstdint>

#if defined(_WIN32)
#define POSTMARKER_CALL __stdcall
#else
#define POSTMARKER_CALL
#endif

namespace postmarker {

// The reporter's record. A null record, handle or function means no reporting. The functions are
// called on the thread of the operation, with `handle` as their first argument. Texts are
// NUL-terminated UTF-16 and belong to the caller.
struct ProgressCallbacks {
  void* handle = nullptr;   // opaque, given back to each function
  wchar_t* text = nullptr;  // a BSTR, owned by who filled the record
  void* reserved[3] = {};   // stay null
  // Nonzero when the user stopped the operation, which then returns as soon as it can.
  int32_t(POSTMARKER_CALL* isCancelled)(void* handle) = nullptr;
  int32_t(POSTMARKER_CALL* reservedQuery)(void* handle) = nullptr;  // returns 0, does nothing
  // Sets the text shown and the number of steps expected.
  void(POSTMARKER_CALL* setProgress)(void* handle, const wchar_t* text, int32_t total) = nullptr;
  // Reports that further `steps` are done.
  void(POSTMARKER_CALL* increaseProgress)(void* handle, int32_t steps) = nullptr;
  void(POSTMARKER_CALL* reservedThree)(void* handle, int32_t, int32_t) = nullptr;  // does nothing
  void(POSTMARKER_CALL* reservedTwo)(void* handle, int32_t) = nullptr;             // does nothing
  // Nonzero when the handle's window is gone.
  int32_t(POSTMARKER_CALL* isFinished)(void* handle) = nullptr;
};

}  // namespace postmarker
