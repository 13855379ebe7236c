// The progress service under load: many windows, many calls, users that act at any moment.
#include <windows.h>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <random>
#include <thread>
#include <vector>

#include "module/HeldWindow_win.h"
#include "module/ProgressFixture_win.h"
#include "support/ImportPatch_win.h"
#include "support/ObjectCount_win.h"
#include "support/WizardSession_win.h"

namespace postmarker::test {
namespace {

constexpr int kThreads = 8;

class ProgressLoadTest : public ProgressFixture {
 protected:
  // Calls of a host that has no time to look at its window.
  void RunCycle() const {
    PostmarkerProgress* const handle = m_progress.create(0, "A job", 0);
    m_progress.set(handle, "Reading", 10);
    m_progress.increase(handle, 3);
    m_progress.complete(handle);
    m_progress.destroy(handle, 1);
  }

  static void OnThreads(int count, const std::function<void()>& work) {
    std::vector<std::thread> threads;
    threads.reserve(static_cast<size_t>(count));
    for (int i = 0; i < count; ++i) {
      threads.emplace_back(work);
    }
    for (std::thread& thread : threads) {
      thread.join();
    }
  }
};

TEST(ObjectCount, CountsEachKindOfObjectThatStays) {
  constexpr int kLeaked = 20;
  const ObjectCounts before;
  std::vector<KernelHandle> events;
  std::vector<HMENU> menus;
  std::vector<BrushHandle> brushes;
  std::vector<std::unique_ptr<std::string>> blocks;
  for (int i = 0; i < kLeaked; ++i) {
    events.emplace_back(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    menus.push_back(::CreateMenu());
    brushes.emplace_back(::CreateSolidBrush(RGB(3, 2, 1)));
    blocks.push_back(std::make_unique<std::string>());
  }
  const ObjectCounts after;
  EXPECT_EQ(after.handles - before.handles, kLeaked);
  EXPECT_EQ(after.userObjects - before.userObjects, kLeaked);
  EXPECT_EQ(after.gdiObjects - before.gdiObjects, kLeaked);
  EXPECT_GE(after.heapBlocks - before.heapBlocks, kLeaked);
  for (const HMENU menu : menus) {
    const ScopeExit destroy([menu] { ::DestroyMenu(menu); });
  }
}

BOOL WINAPI ActivateNothing(HANDLE, ULONG_PTR*) {
  return FALSE;
}

TEST_F(ProgressLoadTest, ThousandWindowsOnEightThreadsLeaveNothingBehind) {
  constexpr int kCycles = 1000;
  // Wine's version 6 of the static control never frees 24 bytes of each one that has a font: here
  // the windows have the plain controls.
  const ImportPatch patch(m_library.Get(), "ActivateActCtx", &ActivateNothing);
  const auto run = [this](int cycles) {
    std::atomic<int> left = cycles;
    OnThreads(kThreads, [&] {
      while (--left >= 0) {
        RunCycle();
      }
    });
  };
  // What the system makes once, and for each of so many threads at a time.
  run(50);
  const ObjectCounts before;
  run(kCycles);
  const ObjectCounts after;
  // A leak of a single object a window would be a thousand.
  SCOPED_TRACE(testing::PrintToString(before) + "; " + testing::PrintToString(after));
  EXPECT_LT(after.handles - before.handles, kCycles / 20);
  EXPECT_LT(after.userObjects - before.userObjects, kCycles / 10);
  EXPECT_LT(after.gdiObjects - before.gdiObjects, kCycles / 20);
  EXPECT_LT(after.heapBlocks - before.heapBlocks, kCycles / 5);
}

std::atomic<int> g_postedSteps = 0;

BOOL WINAPI CountPostedSteps(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  g_postedSteps += message == 0x402 ? 1 : 0;
  return ::PostMessageW(window, message, wParam, lParam);
}

TEST_F(ProgressLoadTest, MillionCallsLeaveOneMessageInTheQueueAndLoseNoStep) {
  constexpr int kCalls = 1'000'000;
  const ImportPatch patch(m_library.Get(), "PostMessageW", &CountPostedSteps);
  const Job job(m_progress);
  HeldWindow held(job.Window());
  g_postedSteps = 0;
  job.Set("Fast", 60'000);
  ASSERT_TRUE(HeldWindow::WaitUntilHeld());
  for (int i = 0; i < kCalls; ++i) {
    job.Increase(1);
  }
  EXPECT_EQ(g_postedSteps, 1) << "none was handled meanwhile";
  held.GoOn();
  job.WaitForPosition(kCalls % 60'001);
}

// Clicks a button by the mouse, as the hardware does: such messages wait while there are posted
// ones.
void ClickByMouse(HWND window, HWND button) {
  ::SetForegroundWindow(window);
  RECT place = {};
  ::GetWindowRect(button, &place);
  ::SetCursorPos((place.left + place.right) / 2, (place.top + place.bottom) / 2);
  INPUT click[2] = {};
  click[0].type = click[1].type = INPUT_MOUSE;
  click[0].mi.dwFlags = MOUSEEVENTF_LEFTDOWN;
  click[1].mi.dwFlags = MOUSEEVENTF_LEFTUP;
  ::SendInput(2, click, sizeof(click[0]));
}

// The host's loop ends only when a click has arrived: a window that lets it wait for a pause of the
// host fails.
TEST_F(ProgressLoadTest, ClickIsAnsweredWhileTheHostReportsWithoutAPause) {
  const Job job(m_progress);
  job.Set("Fast", 60'000);
  std::atomic<bool> isTimeUp = false;
  std::atomic<int64_t> calls = 0;
  std::thread host([&] {
    while (!job.IsCancelled() && !isTimeUp) {
      job.Increase(1);
      ++calls;
    }
  });
  EXPECT_TRUE(WaitUntil([&] { return calls > 1000; }));
  EXPECT_TRUE(WaitUntil([&] {
    // Again if it went astray: another window can have been in front.
    ClickByMouse(job.Window(), job.Control(kStop));
    return WaitUntil([&] { return job.IsCancelled(); }, std::chrono::seconds(1));
  })) << "after "
      << calls << " calls";
  isTimeUp = true;
  host.join();
}

// What a user can do to a window, whatever its state is.
void Act(HWND window, unsigned action) {
  const HWND popup = ::GetLastActivePopup(window);
  switch (action) {
    case 0:
      ::PostMessageW(::GetDlgItem(window, kStop), BM_CLICK, 0, 0);
      break;
    case 1:
      ::PostMessageW(::GetDlgItem(window, kClose), BM_CLICK, 0, 0);
      break;
    case 2:
      ::PostMessageW(popup, WM_CLOSE, 0, 0);
      break;
    case 3:
      ::PostMessageW(popup, WM_COMMAND, IDOK, 0);
      break;
    default:
      ::PostMessageW(popup, WM_COMMAND, IDCANCEL, 0);
      break;
  }
}

TEST_F(ProgressLoadTest, HostThatPollsEndsWhateverTheUserDoesMeanwhile) {
  constexpr unsigned kRounds = 60;
  for (unsigned round = 0; round < kRounds; ++round) {
    SCOPED_TRACE(round);
    std::mt19937 random(round);
    const unsigned steps = random() % 200;
    Job job(m_progress);
    std::atomic<bool> isOver = false;
    std::thread user([&] {
      std::mt19937 choice(round);
      while (!isOver) {
        Act(job.Window(), choice() % 5);
        ::Sleep(choice() % 4);
      }
    });
    for (unsigned i = 0; i < steps && !job.IsCancelled(); ++i) {
      job.Set("Reading", 200);
      job.Increase(1);
      ::SwitchToThread();
    }
    const bool wasCancelled = job.IsCancelled();
    job.Complete();
    EXPECT_GE(job.IsCancelled(), wasCancelled) << "a mark of a stop stays";
    job.StartDestroy(random() % 2 == 0);
    job.WaitForDestroy();
    isOver = true;
    user.join();
  }
}

}  // namespace
}  // namespace postmarker::test
