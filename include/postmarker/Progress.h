/* The progress service of Postmarker.dll: a window on a thread of its own that shows how far a long
 * job of the host is, and by which the user can stop it. For C and C++ hosts.
 *
 * Threads: every function may be called from any thread, but not from the window's own. The calls
 * of one handle are for one thread at a time, apart from DestroyProgressbar, which must be the
 * last. Any number of handles may exist at a time. No function throws. A null handle is ignored.
 *
 * A host links the import library, or loads the module and takes the functions by
 * PostmarkerLoadProgress.
 */
#ifndef POSTMARKER_PROGRESS_H
#define POSTMARKER_PROGRESS_H

#include <stdint.h>
#include <string.h>
#include <windows.h>

#ifndef POSTMARKER_CALL
#define POSTMARKER_CALL __stdcall
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* A window of the service. Opaque. */
typedef struct PostmarkerProgress PostmarkerProgress;

/* Opens a window and returns as soon as it exists. `reserved` is ignored; pass 0. `title` names the
 * job for the module and is not shown; it is in the thread's ANSI code page, copied, and may be
 * null. A nonzero `useHook` passes the window to the suite's window hook module, unless another
 * window of this module is with it. Null if there is no memory or no thread. Without dialog
 * templates the handle has no window: it counts as canceled and finished, and the other calls do
 * nothing. */
PostmarkerProgress* POSTMARKER_CALL CreateProgressbar(int32_t reserved, const char* title,
                                                      int32_t useHook);

/* Shows a text and begins the bar at 0 of `total` steps. The text is in the thread's ANSI code page
 * and copied; an empty or null one leaves the last text. A total of 0 shows a full bar; of a total
 * above 65535 the bar takes the lower 16 bits. Returns at once. */
void POSTMARKER_CALL SetProgressbar(PostmarkerProgress* progress, const char* text, int32_t total);

/* Moves the bar by `steps`; one below 1 moves nothing. After its end the bar begins again at 0.
 * Returns at once, and may be called as often as the host likes: the window shows what has come
 * together about thirty times a second. */
void POSTMARKER_CALL IncreaseProgressbar(PostmarkerProgress* progress, int32_t steps);

/* Tells the window that the job is done. Returns when it shows that. The user closes it then, or
 * the host by DestroyProgressbar. */
void POSTMARKER_CALL CompleteProgressbar(PostmarkerProgress* progress);

/* 1 if the user wants the job to stop or the window is gone, otherwise 0. A host asks this between
 * its steps: a stop ends nothing by itself. */
int32_t POSTMARKER_CALL GetIsCancelledProgressbar(PostmarkerProgress* progress);

/* 1 if the window is gone, otherwise 0. */
int32_t POSTMARKER_CALL GetIsFinishedProgressbar(PostmarkerProgress* progress);

/* Ends the job as CompleteProgressbar does, waits until the window is gone, without limit, and
 * frees the handle. A nonzero `closeNow` closes the window; otherwise the user does. Messages that
 * other threads send to windows of this thread are answered meanwhile, posted ones wait. */
void POSTMARKER_CALL DestroyProgressbar(PostmarkerProgress* progress, int32_t closeNow);

#ifdef __cplusplus
}
#endif

/* The functions, for a host that loads the module. */
typedef struct PostmarkerProgressFunctions {
  PostmarkerProgress*(POSTMARKER_CALL* create)(int32_t reserved, const char* title,
                                               int32_t useHook);
  void(POSTMARKER_CALL* set)(PostmarkerProgress* progress, const char* text, int32_t total);
  void(POSTMARKER_CALL* increase)(PostmarkerProgress* progress, int32_t steps);
  void(POSTMARKER_CALL* complete)(PostmarkerProgress* progress);
  int32_t(POSTMARKER_CALL* isCancelled)(PostmarkerProgress* progress);
  int32_t(POSTMARKER_CALL* isFinished)(PostmarkerProgress* progress);
  void(POSTMARKER_CALL* destroy)(PostmarkerProgress* progress, int32_t closeNow);
} PostmarkerProgressFunctions;

/* Fills `functions` from a loaded Postmarker.dll, which must stay loaded while they are used.
 * Nonzero if the module has all of them; otherwise 0, and all are null. */
static inline int PostmarkerLoadProgress(HMODULE module, PostmarkerProgressFunctions* functions) {
  /* In the order of the fields. */
  static const char* const names[] = {"CreateProgressbar",         "SetProgressbar",
                                      "IncreaseProgressbar",       "CompleteProgressbar",
                                      "GetIsCancelledProgressbar", "GetIsFinishedProgressbar",
                                      "DestroyProgressbar"};
  FARPROC found[sizeof(names) / sizeof(names[0])];
  size_t i;
  memset(functions, 0, sizeof(*functions));
  if (!module) {
    return 0;
  }
  for (i = 0; i < sizeof(names) / sizeof(names[0]); ++i) {
    found[i] = GetProcAddress(module, names[i]);
    if (!found[i]) {
      return 0;
    }
  }
  /* Seven pointers to functions on both sides, which are of one size. */
  memcpy(functions, found, sizeof(found));
  return 1;
}

#endif /* POSTMARKER_PROGRESS_H */
