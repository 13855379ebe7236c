// The exports of the progress service.
#include "postmarker/Progress.h"
#include "progress/ProgressService_win.h"
#include "ui/CWinApp.h"

namespace postmarker {
namespace {

ProgressHandle* HandleOf(PostmarkerProgress* progress) {
  return reinterpret_cast<ProgressHandle*>(progress);
}

// Runs an export's work in the module's state. No exception may reach the host, whose code may have
// been built by another compiler; a call without memory does nothing.
template <class Work>
auto RunExport(Work work) -> decltype(work()) {
  try {
    const ModuleStateGuard guard;
    return work();
  } catch (...) {
    ::SetLastError(ERROR_OUTOFMEMORY);
    return decltype(work())();
  }
}

}  // namespace
}  // namespace postmarker

using postmarker::HandleOf;
using postmarker::RunExport;

extern "C" PostmarkerProgress* __stdcall CreateProgressbar(int32_t /*reserved*/, const char* title,
                                                           int32_t useHook) {
  return RunExport([&] {
    return reinterpret_cast<PostmarkerProgress*>(
        postmarker::CreateProgress(title, static_cast<uint32_t>(useHook)));
  });
}

extern "C" void __stdcall SetProgressbar(PostmarkerProgress* progress, const char* text,
                                         int32_t total) {
  RunExport([&] { postmarker::SetProgress(HandleOf(progress), text, total); });
}

extern "C" void __stdcall IncreaseProgressbar(PostmarkerProgress* progress, int32_t steps) {
  RunExport([&] { postmarker::IncreaseProgress(HandleOf(progress), steps); });
}

extern "C" void __stdcall CompleteProgressbar(PostmarkerProgress* progress) {
  RunExport([&] { postmarker::CompleteProgress(HandleOf(progress)); });
}

extern "C" int32_t __stdcall GetIsCancelledProgressbar(PostmarkerProgress* progress) {
  return RunExport([&] { return postmarker::IsProgressCancelled(HandleOf(progress)) ? 1 : 0; });
}

extern "C" int32_t __stdcall GetIsFinishedProgressbar(PostmarkerProgress* progress) {
  return RunExport([&] { return postmarker::IsProgressFinished(HandleOf(progress)) ? 1 : 0; });
}

extern "C" void __stdcall DestroyProgressbar(PostmarkerProgress* progress, int32_t closeNow) {
  RunExport([&] { postmarker::DestroyProgress(HandleOf(progress), closeNow != 0); });
}
