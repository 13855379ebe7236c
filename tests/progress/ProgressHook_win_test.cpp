// Which window of the module the suite's hook module is told of.
#include <windows.h>

#include <gmock/gmock.h>

#include <mutex>
#include <vector>

#include "progress/CDlgProgress_win.h"
#include "progress/DialogRun_win.h"
#include "progress/ProgressService_win.h"
#include "wizard/WindowHook_win.h"
#include "wizard/WizardFixture_win.h"

namespace postmarker::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::mutex g_lock;
std::vector<std::string> g_calls;

void Note(const char* call) {
  const std::lock_guard lock(g_lock);
  g_calls.emplace_back(call);
}

void __stdcall NoteInit(HWND /*window*/) {
  Note("init");
}
void __stdcall NoteAdd(HWND /*window*/) {
  Note("add");
}
// Whoever sees the mark cleared begins a hook.
void __stdcall NoteUninit() {
  Note(HookActive != 0 ? "uninit" : "uninit after the mark was cleared");
}
void __stdcall NoteThread(DWORD /*thread*/) {
  Note("thread");
}
void __stdcall NoteRelease(DWORD /*thread*/) {
  Note("release");
}

class ProgressHookTest : public WizardFixture {
 protected:
  ProgressHookTest() {
    g_calls.clear();
    HookActive = 0;
    WindowHook().InitHook = &NoteInit;
    WindowHook().AddHookableWindow = &NoteAdd;
    WindowHook().UninitHook = &NoteUninit;
    WindowHook().AddHookableThread = &NoteThread;
    WindowHook().ReleaseHookableThread = &NoteRelease;
  }
  ~ProgressHookTest() override {
    WindowHook().Clear();
    HookActive = 0;
  }

  static void RunJob(uint32_t useHook) {
    const ModuleStateGuard guard;
    DestroyProgress(CreateProgress("A job", useHook), true);
  }
};

TEST_F(ProgressHookTest, WindowThatAsksForItIsHookedOnceAndEndsIt) {
  RunJob(1);
  EXPECT_THAT(g_calls, ElementsAre("init", "add", "uninit"));
  EXPECT_EQ(HookActive, 0U);
}

TEST_F(ProgressHookTest, WindowThatDoesNotAskLeavesTheHookAlone) {
  RunJob(0);
  EXPECT_THAT(g_calls, IsEmpty());
}

TEST_F(ProgressHookTest, ThreadBesideAHookedWindowIsMadeKnownAndReleased) {
  HookActive = 1;
  RunJob(1);
  EXPECT_THAT(g_calls, ElementsAre("thread", "release"));
  EXPECT_EQ(HookActive, 1U) << "the hook is another window's";
}

TEST_F(ProgressHookTest, SecondWindowLeavesTheHookToTheFirst) {
  const ModuleStateGuard guard;
  ProgressHandle* const first = CreateProgress("First", 1);
  ProgressHandle* const second = CreateProgress("Second", 1);
  DestroyProgress(second, true);
  EXPECT_THAT(g_calls, ElementsAre("init", "add", "thread", "release"));
  DestroyProgress(first, true);
  EXPECT_THAT(g_calls, ElementsAre("init", "add", "thread", "release", "uninit"));
  RunJob(1);
  EXPECT_EQ(g_calls.size(), 8U) << "the hook is free again";
}

TEST_F(ProgressHookTest, MissingEntryPointsAreLeftOut) {
  WindowHook().AddHookableThread = nullptr;
  WindowHook().AddHookableWindow = nullptr;
  HookActive = 1;
  RunJob(1);
  HookActive = 0;
  RunJob(1);
  EXPECT_THAT(g_calls, IsEmpty());
  WindowHook().AddHookableThread = &NoteThread;
  WindowHook().ReleaseHookableThread = nullptr;
  HookActive = 1;
  RunJob(1);
  EXPECT_THAT(g_calls, ElementsAre("thread"));
}

TEST_F(ProgressHookTest, PlainWindowIsHookedWithoutBeingAsked) {
  { DialogRun run(DialogRun::Of<CDlgProgress>()); }
  EXPECT_THAT(g_calls, ElementsAre("init", "add", "uninit"));
}

}  // namespace
}  // namespace postmarker::test
