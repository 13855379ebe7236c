#include "wizard/PrefillWorker_win.h"

#include "clients/AdapterCall_win.h"
#include "postmarker/ProgressCallbacks.h"
#include "support/Bstr_win.h"
#include "support/ComPtr_win.h"
#include "ui/CWinApp.h"

namespace postmarker {
namespace {

// How many addresses may stand in the queue of the page's thread: a click that a person makes
// waits for these. The system itself would take 10,000 messages.
constexpr int kMaxUnreadAddresses = 50;

// How long the worker rests while there are more.
constexpr DWORD kRestMs = 1;

bool IsStopped(const PrefillJob& job) {
  return ::WaitForSingleObject(job.stopEvent, 0) == WAIT_OBJECT_0;
}

// What must arrive is offered again until the system takes it.
bool PostSurely(const PrefillJob& job, UINT message, WPARAM wParam, LPARAM lParam) {
  while (!*job.abandoned) {
    if (job.post(job.pageWindow, message, wParam, lParam)) {
      return true;
    }
    if (::GetLastError() != ERROR_NOT_ENOUGH_QUOTA) {
      return false;
    }
    ::Sleep(kRestMs);
  }
  return false;
}

bool PostAddress(const PrefillJob& job, const std::wstring& address) {
  while (*job.unreadAddresses >= kMaxUnreadAddresses && !*job.abandoned) {
    ::Sleep(kRestMs);
  }
  Bstr text = MakeBstr(address);
  ++*job.unreadAddresses;
  if (!PostSurely(job, kPrefillAddress, reinterpret_cast<WPARAM>(text.Get()), 0)) {
    return false;
  }
  (void)text.Release();
  return true;
}

// The functions of the progress record, called by the adapter on the worker. `handle` is the job.

int32_t POSTMARKER_CALL IsCancelled(void* handle) noexcept {
  const ModuleStateGuard guard;
  return IsStopped(*static_cast<const PrefillJob*>(handle)) ? 1 : 0;
}

int32_t POSTMARKER_CALL ReservedQuery(void* /*handle*/) noexcept {
  return 0;
}

void POSTMARKER_CALL SetProgress(void* handle, const wchar_t* /*text*/, int32_t total) noexcept {
  const ModuleStateGuard guard;
  const auto& job = *static_cast<const PrefillJob*>(handle);
  job.post(job.pageWindow, kPrefillRange, 0, total);
}

void POSTMARKER_CALL IncreaseProgress(void* handle, int32_t steps) noexcept {
  const ModuleStateGuard guard;
  const auto& job = *static_cast<const PrefillJob*>(handle);
  job.post(job.pageWindow, kPrefillAdvance, 0, steps);
}

void POSTMARKER_CALL ReservedThree(void* /*handle*/, int32_t /*a*/, int32_t /*b*/) noexcept {}

void POSTMARKER_CALL ReservedTwo(void* /*handle*/, int32_t /*a*/) noexcept {}

int32_t POSTMARKER_CALL IsFinished(void* handle) noexcept {
  const ModuleStateGuard guard;
  return static_cast<const PrefillJob*>(handle)->pageWindow == nullptr ? 1 : 0;
}

ProgressCallbacks CallbacksFor(PrefillJob* job, BSTR text) {
  ProgressCallbacks callbacks;
  callbacks.handle = job;
  callbacks.text = text;
  callbacks.isCancelled = &IsCancelled;
  callbacks.reservedQuery = &ReservedQuery;
  callbacks.setProgress = &SetProgress;
  callbacks.increaseProgress = &IncreaseProgress;
  callbacks.reservedThree = &ReservedThree;
  callbacks.reservedTwo = &ReservedTwo;
  callbacks.isFinished = &IsFinished;
  return callbacks;
}

// Also what a stopped collection has found so far is posted.
void PostAddresses(const PrefillJob& job, const AddressSet& addresses) {
  for (const std::wstring& address : addresses) {
    if (!PostAddress(job, address)) {
      return;
    }
  }
}

// The clients' own collections bring the contacts along, so there is no step for these.
void Collect(PrefillJob* job) {
  if (IsStopped(*job)) {
    return;
  }
  const Bstr text = MakeBstr({});
  const ProgressCallbacks callbacks = CallbacksFor(job, text.Get());
  AddressSet addresses;
  (void)CallAdapter([&] {
    return job->client.CollectSentAddresses(
        &callbacks, [job] { return IsStopped(*job); }, &addresses);
  });
  PostAddresses(*job, addresses);
}

DWORD WINAPI PrefillWorker(void* argument) noexcept {
  const std::unique_ptr<PrefillJob> job(static_cast<PrefillJob*>(argument));
  if (!job) {
    return 0;
  }
  const ComApartment apartment;
  try {
    Collect(job.get());
  } catch (...) {
    // Out of memory, at worst: the page shows what arrived.
    ::SetLastError(ERROR_OUTOFMEMORY);
  }
  (void)PostSurely(*job, kPrefillFinished, 0, 1);
  return 0;
}

}  // namespace

KernelHandle StartPrefillWorker(std::unique_ptr<PrefillJob> job) {
  KernelHandle thread(::CreateThread(nullptr, 0, &PrefillWorker, job.get(), 0, nullptr));
  if (thread) {
    (void)job.release();
  }
  return thread;
}

}  // namespace postmarker
