#include "ui/CWnd.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "support/Handles_win.h"
#include "ui/ThreadState.h"

namespace postmarker {
namespace {

// What another hook of the thread, set before the module's, was told of.
using Told = std::pair<int, HWND>;
std::vector<Told> g_told;
bool g_refuse = false;
bool g_createsOne = false;

HWND MakeWindow() {
  return ::CreateWindowExW(0, L"STATIC", L"window", WS_POPUP, 10, 10, 50, 50, nullptr, nullptr,
                           nullptr, nullptr);
}

LRESULT CALLBACK OtherHook(int code, WPARAM wParam, LPARAM lParam) {
  g_told.emplace_back(code, reinterpret_cast<HWND>(wParam));
  if (code != HCBT_CREATEWND) {
    return ::CallNextHookEx(nullptr, code, wParam, lParam);
  }
  if (std::exchange(g_createsOne, false)) {
    ::DestroyWindow(MakeWindow());
  }
  return g_refuse ? 1 : 0;
}

class CreationHookTest : public testing::Test {
 protected:
  CreationHookTest()
      : m_other(::SetWindowsHookExW(WH_CBT, &OtherHook, nullptr, ::GetCurrentThreadId())) {
    g_told.clear();
    g_refuse = false;
    g_createsOne = false;
  }
  ~CreationHookTest() override { g_refuse = false; }

  // How often it was told of this.
  static ptrdiff_t Count(int code, HWND window) {
    return std::count(g_told.begin(), g_told.end(), Told(code, window));
  }

  ThreadState m_state;
  WindowsHook m_other;
  CWnd m_window;
};

TEST_F(CreationHookTest, AttachesTheNextWindowAndNoOther) {
  const CreationHook hook(&m_window);
  const HWND first = MakeWindow();
  const HWND second = MakeWindow();
  EXPECT_EQ(m_window.Handle(), first);
  EXPECT_EQ(CWnd::FromHandle(second), nullptr);
  ::DestroyWindow(second);
}

TEST_F(CreationHookTest, HooksBeforeItSeeTheWindowThatItAttaches) {
  const CreationHook hook(&m_window);
  const HWND made = MakeWindow();
  EXPECT_EQ(Count(HCBT_CREATEWND, made), 1);
}

TEST_F(CreationHookTest, HooksBeforeItSeeAllElseWhileItWaits) {
  const HWND other = MakeWindow();
  const CreationHook hook(&m_window);
  ::DestroyWindow(other);
  EXPECT_EQ(Count(HCBT_DESTROYWND, other), 1);
}

TEST_F(CreationHookTest, WindowThatAnotherHookRefusesIsNotAttached) {
  g_refuse = true;
  const CreationHook hook(&m_window);
  EXPECT_EQ(MakeWindow(), nullptr);
  EXPECT_EQ(m_window.Handle(), nullptr);
  ASSERT_EQ(g_told.size(), 1U);
  EXPECT_EQ(CWnd::FromHandle(g_told.front().second), nullptr);
}

TEST_F(CreationHookTest, WindowThatAnotherHookMakesMeanwhileIsNotTakenForIt) {
  g_createsOne = true;
  const CreationHook hook(&m_window);
  const HWND made = MakeWindow();
  EXPECT_FALSE(g_createsOne) << "the other hook made none";
  EXPECT_EQ(m_window.Handle(), made);
}

}  // namespace
}  // namespace postmarker
