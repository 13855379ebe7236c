// What the exported functions of the progress service do; include/postmarker/Progress.h documents
// them.
#pragma once

#include <cstdint>

#include "progress/ProgressHandle_win.h"

namespace postmarker {

// REQUIRES, for all: a ModuleStateGuard on this thread. Each ignores a null handle. Want of memory
// is an exception.
ProgressHandle* CreateProgress(const char* title, uint32_t useHook);
void SetProgress(ProgressHandle* handle, const char* text, int32_t total);
void IncreaseProgress(ProgressHandle* handle, int32_t steps);
void CompleteProgress(const ProgressHandle* handle);
bool IsProgressCancelled(const ProgressHandle* handle);
bool IsProgressFinished(const ProgressHandle* handle);
void DestroyProgress(ProgressHandle* handle, bool closeNow);

}  // namespace postmarker
