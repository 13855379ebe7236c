// How progress windows end, and what happens without one.
#include <windows.h>

#include <gtest/gtest.h>
#include <oleauto.h>

#include <atomic>
#include <filesystem>

#include "module/HeldWindow_win.h"
#include "module/ProgressFixture_win.h"
#include "support/ImportPatch_win.h"
#include "support/Stage_win.h"
#include "support/TempFolder.h"
#include "support/WizardSession_win.h"

namespace postmarker::test {
namespace {

class ProgressEndTest : public ProgressFixture {};

TEST_F(ProgressEndTest, DestroyWaitsUntilTheUserClosesAFinishedWindow) {
  Job job(m_progress);
  job.Complete();
  job.StartDestroy(false);
  ::Sleep(300);
  EXPECT_FALSE(job.IsDestroyed());
  EXPECT_TRUE(job.IsShown(kHelp));
  job.Click(kClose);
  job.WaitForDestroy();
}

TEST_F(ProgressEndTest, DestroyShowsTheFinishedFaceOfAJobThatRunsAndWaitsForTheUser) {
  Job job(m_progress);
  job.StartDestroy(false);
  job.WaitForFace(true);
  EXPECT_TRUE(job.IsShown(kFinishedText));
  EXPECT_FALSE(job.IsDestroyed());
  job.PressWindowClose();
  job.WaitForDestroy();
}

TEST_F(ProgressEndTest, DestroyClosesTheWindowAtOnceInEveryState) {
  for (const int state : {0, 1, 2, 3}) {
    SCOPED_TRACE(state);
    Job job(m_progress);
    if (state == 1) {
      job.Complete();
    } else if (state == 2) {
      job.Click(kStop);
      job.WaitForFace(true);
    } else if (state == 3) {
      job.PressWindowClose();
      job.WaitForQuestion();
    }
    job.StartDestroy(true);
    job.WaitForDestroy();
    EXPECT_FALSE(::IsWindow(job.Window()));
  }
}

TEST_F(ProgressEndTest, DestroyClosesAWindowThatDoesNotExistCompletelyYet) {
  for (int i = 0; i < 20; ++i) {
    PostmarkerProgress* const handle = m_progress.create(0, "A job", 0);
    m_progress.destroy(handle, 1);
  }
}

TEST_F(ProgressEndTest, EndThatComesBeforeTheControlsAreSetUpIsNotLost) {
  PostmarkerProgress* const handle = m_progress.create(0, "A job", 0);
  m_progress.complete(handle);
  HWND window = nullptr;
  ASSERT_TRUE(WaitUntil([&] { return (window = FindVisibleWindow(L"#32770")) != nullptr; }));
  EXPECT_TRUE(WaitUntil([&] { return ::IsWindowVisible(::GetDlgItem(window, kHelp)) != FALSE; }));
  EXPECT_FALSE(::IsWindowVisible(::GetDlgItem(window, kBar)));
  m_progress.destroy(handle, 1);
}

TEST_F(ProgressEndTest, CallsOfAHandleWhoseWindowIsGoneDoNothing) {
  const Job job(m_progress);
  job.Complete();
  job.Click(kClose);
  ASSERT_TRUE(WaitUntil([&] { return job.IsFinished(); }));
  job.Set("Late", 10);
  job.Increase(3);
  job.Complete();
  EXPECT_TRUE(job.IsCancelled());
  EXPECT_TRUE(job.IsFinished());
}

TEST_F(ProgressEndTest, WindowThatOthersDestroyIsGone) {
  const Job job(m_progress);
  ::PostThreadMessageW(::GetWindowThreadProcessId(job.Window(), nullptr), WM_QUIT, 0, 0);
  EXPECT_TRUE(WaitUntil([&] { return job.IsFinished(); }));
  EXPECT_TRUE(job.IsCancelled());
  job.Set("Late", 10);
}

// A window of the host's that has the foreground hears of the progress window's coming and going
// from that window's thread, while the host waits for it.
TEST_F(ProgressEndTest, HostWithAWindowOfItsOwnCanWaitForTheEnd) {
  const HWND own = ::CreateWindowExW(0, L"STATIC", L"A host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 10,
                                     10, 200, 100, nullptr, nullptr, nullptr, nullptr);
  ::SetForegroundWindow(own);
  for (int i = 0; i < 5; ++i) {
    PostmarkerProgress* const handle = m_progress.create(0, "A job", 0);
    std::thread asker;
    std::atomic<bool> isAnswered = false;
    HWND window = nullptr;
    EXPECT_TRUE(WaitUntil([&] { return (window = FindVisibleWindow(L"#32770")) != nullptr; }));
    m_progress.complete(handle);
    asker = std::thread([&] {
      // Asked while the host waits: the answer has to come from this wait.
      ::Sleep(50);
      wchar_t text[20] = {};
      DWORD_PTR length = 0;
      isAnswered = ::SendMessageTimeoutW(own, WM_GETTEXT, 20, reinterpret_cast<LPARAM>(text),
                                         SMTO_NORMAL, 10'000, &length) != 0;
      ::PostMessageW(::GetDlgItem(window, kClose), BM_CLICK, 0, 0);
    });
    m_progress.destroy(handle, 0);
    asker.join();
    EXPECT_TRUE(isAnswered);
  }
  ::DestroyWindow(own);
}

// Without texts and dialogs beside it.
TEST_F(ProgressEndTest, MissingTemplateGivesAHandleWithoutAWindow) {
  const TempFolder root;
  const auto folder = root.Path() / "Spamfilter";
  std::filesystem::create_directories(folder);
  std::filesystem::copy_file(StageFolder() + L"\\Spamfilter\\Postmarker.dll",
                             folder / "Postmarker.dll");
  m_library.Reset();
  const LibraryHandle alone(::LoadLibraryW(TempFolder::Wide(folder / "Postmarker.dll").c_str()));
  PostmarkerProgressFunctions progress = {};
  ASSERT_NE(PostmarkerLoadProgress(alone.Get(), &progress), 0);
  PostmarkerProgress* const handle = progress.create(0, "A job", 1);
  ASSERT_NE(handle, nullptr);
  EXPECT_EQ(progress.isCancelled(handle), 1);
  EXPECT_EQ(progress.isFinished(handle), 1);
  progress.set(handle, "Text", 5);
  progress.increase(handle, 1);
  progress.complete(handle);
  progress.destroy(handle, 0);
}

HANDLE WINAPI MakeNoThread(LPSECURITY_ATTRIBUTES, SIZE_T, LPTHREAD_START_ROUTINE, LPVOID, DWORD,
                           LPDWORD) {
  ::SetLastError(ERROR_NOT_ENOUGH_MEMORY);
  return nullptr;
}

HANDLE WINAPI MakeNoEvent(LPSECURITY_ATTRIBUTES, BOOL, BOOL, LPCWSTR) {
  ::SetLastError(ERROR_NOT_ENOUGH_MEMORY);
  return nullptr;
}

TEST_F(ProgressEndTest, WithoutAThreadThereIsNoHandle) {
  {
    const ImportPatch patch(m_library.Get(), "CreateThread", &MakeNoThread);
    EXPECT_EQ(m_progress.create(0, "A job", 0), nullptr);
  }
  const Job job(m_progress);
  EXPECT_FALSE(job.IsFinished());
}

TEST_F(ProgressEndTest, WithoutAnEventThereIsNoHandle) {
  const ImportPatch patch(m_library.Get(), "CreateEventW", &MakeNoEvent);
  EXPECT_EQ(m_progress.create(0, "A job", 0), nullptr);
}

// Texts on their way: what the module makes of them, and what it frees.
std::atomic<int> g_made = 0;
std::atomic<int> g_freed = 0;
std::atomic<int> g_postedTexts = 0;

BSTR WINAPI CountMade(const OLECHAR* text, UINT length) {
  ++g_made;
  return ::SysAllocStringLen(text, length);
}

void WINAPI CountFreed(BSTR text) {
  ++g_freed;
  ::SysFreeString(text);  // owner
}

BOOL WINAPI CountPosted(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  g_postedTexts += message == 0x401 ? 1 : 0;
  return ::PostMessageW(window, message, wParam, lParam);
}

class ProgressTextTest : public ProgressFixture {
 protected:
  ProgressTextTest() { g_made = g_freed = g_postedTexts = 0; }

  ImportPatch m_made{m_library.Get(), "SysAllocStringLen", &CountMade};
  ImportPatch m_freed{m_library.Get(), "SysFreeString", &CountFreed};
  ImportPatch m_posted{m_library.Get(), "PostMessageW", &CountPosted};
};

TEST_F(ProgressTextTest, TextThatIsNotPostedIsFreedAtOnce) {
  const Job job(m_progress);
  job.Complete();
  job.Click(kClose);
  ASSERT_TRUE(WaitUntil([&] { return job.IsFinished(); }));
  const int posted = g_postedTexts;
  const int made = g_made;
  const int freed = g_freed;
  for (int i = 0; i < 100; ++i) {
    job.Set("Late", 10);
  }
  EXPECT_EQ(g_postedTexts, posted);
  EXPECT_EQ(g_made - made, 100);
  EXPECT_EQ(g_freed - freed, 100);
}

TEST_F(ProgressTextTest, TextThatArrivesIsFreedByTheWindow) {
  const Job job(m_progress);
  for (int i = 0; i < 100; ++i) {
    job.Set("Text", 10);
  }
  job.Settle();
  EXPECT_EQ(g_postedTexts, 101);
  EXPECT_EQ(g_made, g_freed);
}

TEST_F(ProgressTextTest, TextsThatWaitWhenTheWindowEndsAreFreed) {
  const Job job(m_progress);
  HeldWindow held(job.Window());
  job.Set("First", 10);
  ASSERT_TRUE(HeldWindow::WaitUntilHeld());
  ::PostMessageW(job.Window(), 0x403, 0, 1);
  for (int i = 0; i < 100; ++i) {
    job.Set("Behind the end", 10);
  }
  EXPECT_EQ(g_postedTexts, 101);
  held.GoOn();
  ASSERT_TRUE(WaitUntil([&] { return !::IsWindow(job.Window()); }));
  EXPECT_TRUE(WaitUntil([] { return g_freed == g_made; })) << g_freed << " of " << g_made;
}

}  // namespace
}  // namespace postmarker::test
