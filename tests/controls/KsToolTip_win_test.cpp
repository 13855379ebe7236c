#include "controls/KsToolTip_win.h"

#include <gtest/gtest.h>

#include <memory>

#include "ui/CWinApp.h"

namespace postmarker::test {
namespace {

constexpr wchar_t kToolTipProperty[] = L"KSTOOLTIP";
constexpr wchar_t kPreviousProcProperty[] = L"WNDPROC_BEFORE_CPTT";

LRESULT CALLBACK OtherProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  const auto next = reinterpret_cast<WNDPROC>(::GetPropW(window, L"Other"));
  return ::CallWindowProcW(next, window, message, wParam, lParam);
}

class KsToolTipTest : public testing::Test {
 protected:
  KsToolTipTest()
      : m_owner(::CreateWindowExW(0, L"STATIC", L"owner", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 100,
                                  200, 300, 200, nullptr, nullptr, nullptr, nullptr)),
        m_control(::CreateWindowExW(0, L"BUTTON", L"control", WS_CHILD | WS_VISIBLE, 10, 10, 80, 24,
                                    m_owner, nullptr, nullptr, nullptr)),
        m_toolTip(std::make_unique<KsToolTip>()) {
    AfxGetApp()->SetModule(::GetModuleHandleW(nullptr));
    m_toolTip->Create(m_owner, 0, 3000, true);
  }
  ~KsToolTipTest() override {
    m_toolTip.reset();
    ::DestroyWindow(m_owner);
  }

  static void Pump(DWORD milliseconds) {
    const DWORD end = ::GetTickCount() + milliseconds;
    do {
      MSG message = {};
      while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        ::DispatchMessageW(&message);
      }
      ::Sleep(5);
    } while (::GetTickCount() < end);
  }

  static LONG_PTR ProcOf(HWND window) { return ::GetWindowLongPtrW(window, GWLP_WNDPROC); }

  ModuleStateGuard m_guard;
  HWND m_owner;
  HWND m_control;
  std::unique_ptr<KsToolTip> m_toolTip;
};

TEST_F(KsToolTipTest, WindowClassIsRegisteredOnceForAllToolTips) {
  KsToolTip second;
  EXPECT_TRUE(second.Create(m_owner, 0, 0, false));
  wchar_t name[32] = {};
  ::GetClassNameW(second.Handle(), name, 32);
  EXPECT_STREQ(name, L"KsToolTipWnd");
  EXPECT_EQ(::GetClassLongPtrW(second.Handle(), GCLP_HCURSOR),
            reinterpret_cast<ULONG_PTR>(::LoadCursorW(nullptr, MAKEINTRESOURCEW(32512))));
}

TEST_F(KsToolTipTest, WatchedWindowBearsBothPropertiesUntilTheWatchEnds) {
  const LONG_PTR before = ProcOf(m_control);
  ASSERT_TRUE(m_toolTip->AddTool(m_control, L"tip"));
  EXPECT_EQ(::GetPropW(m_control, kToolTipProperty), m_toolTip.get());
  EXPECT_EQ(reinterpret_cast<LONG_PTR>(::GetPropW(m_control, kPreviousProcProperty)), before);
  EXPECT_NE(ProcOf(m_control), before);
  m_toolTip->RemoveTool(m_control);
  EXPECT_EQ(::GetPropW(m_control, kToolTipProperty), nullptr);
  EXPECT_EQ(::GetPropW(m_control, kPreviousProcProperty), nullptr);
  EXPECT_EQ(ProcOf(m_control), before);
}

TEST_F(KsToolTipTest, DestructionOfAWatchedWindowEndsItsWatch) {
  ASSERT_TRUE(m_toolTip->AddTool(m_control, L"tip"));
  ::DestroyWindow(m_control);
  EXPECT_EQ(m_toolTip->ToolCount(), 0U);
}

TEST_F(KsToolTipTest, MoreToolsThanTheFirstRoomHolds) {
  for (int i = 0; i < 25; ++i) {
    const HWND child = ::CreateWindowExW(0, L"STATIC", L"", WS_CHILD, 0, 0, 1, 1, m_owner, nullptr,
                                         nullptr, nullptr);
    EXPECT_TRUE(m_toolTip->AddTool(child, L"tip"));
  }
  EXPECT_EQ(m_toolTip->ToolCount(), 25U);
}

TEST_F(KsToolTipTest, SecondTextOfAToolReplacesTheFirst) {
  EXPECT_TRUE(m_toolTip->AddTool(m_control, L"one"));
  EXPECT_TRUE(m_toolTip->AddTool(m_control, L"two"));
  EXPECT_EQ(m_toolTip->ToolCount(), 1U);
}

TEST_F(KsToolTipTest, WindowOfAnotherToolTipIsRefused) {
  KsToolTip second;
  second.Create(m_owner, 0, 0, false);
  EXPECT_TRUE(m_toolTip->AddTool(m_control, L"tip"));
  EXPECT_FALSE(second.AddTool(m_control, L"tip"));
  EXPECT_FALSE(second.AddTool(nullptr, L"tip"));
}

TEST_F(KsToolTipTest, ObjectMayGoBeforeAWindowThatSomebodyElseTookOverSince) {
  ASSERT_TRUE(m_toolTip->AddTool(m_control, L"tip"));
  ::SetPropW(m_control, L"Other", reinterpret_cast<HANDLE>(ProcOf(m_control)));
  ::SetWindowLongPtrW(m_control, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&OtherProc));
  m_toolTip.reset();
  EXPECT_EQ(ProcOf(m_control), reinterpret_cast<LONG_PTR>(&OtherProc));
  ::SetWindowTextW(m_control, L"still works");
  wchar_t text[32] = {};
  ::GetWindowTextW(m_control, text, 32);
  EXPECT_STREQ(text, L"still works");
}

TEST_F(KsToolTipTest, BalloonShowsItsTextAndPointsAtItsTarget) {
  const RECT target = {400, 500, 480, 524};
  m_toolTip->ShowAt(L"A text for the balloon.", target);
  EXPECT_TRUE(::IsWindowVisible(m_toolTip->Handle()));
  EXPECT_EQ(WindowText(m_toolTip->Handle()), L"A text for the balloon.");
  RECT place = {};
  ::GetWindowRect(m_toolTip->Handle(), &place);
  EXPECT_EQ(place.bottom, target.top);
  EXPECT_LE(place.left, 440);
  EXPECT_GE(place.right, 440);
}

TEST_F(KsToolTipTest, BalloonStaysOnTheScreen) {
  m_toolTip->ShowAt(
      L"A text that is long enough to be broken into several lines of the balloon, "
      L"which is as wide as it gets.",
      {0, 0, 10, 10});
  RECT place = {};
  ::GetWindowRect(m_toolTip->Handle(), &place);
  EXPECT_GE(place.left, 0);
  EXPECT_GE(place.top, 10);
}

TEST_F(KsToolTipTest, EmptyTextHides) {
  m_toolTip->ShowAt(L"text", {400, 500, 480, 524});
  m_toolTip->ShowAt(L"", {400, 500, 480, 524});
  EXPECT_FALSE(::IsWindowVisible(m_toolTip->Handle()));
}

TEST_F(KsToolTipTest, ClickHidesAndTakesNoFocus) {
  m_toolTip->ShowAt(L"text", {400, 500, 480, 524});
  EXPECT_EQ(m_toolTip->Send(WM_MOUSEACTIVATE), MA_NOACTIVATE);
  m_toolTip->Send(WM_LBUTTONDOWN);
  EXPECT_FALSE(::IsWindowVisible(m_toolTip->Handle()));
}

TEST_F(KsToolTipTest, MouseOverAToolShowsItsTipAndLeavingHidesIt) {
  ASSERT_TRUE(m_toolTip->AddTool(m_control, L"over the control"));
  ::SendMessageW(m_control, WM_MOUSEMOVE, 0, MAKELPARAM(5, 5));
  Pump(100);
  EXPECT_TRUE(::IsWindowVisible(m_toolTip->Handle()));
  EXPECT_EQ(WindowText(m_toolTip->Handle()), L"over the control");
  ::SendMessageW(m_control, WM_MOUSELEAVE, 0, 0);
  EXPECT_FALSE(::IsWindowVisible(m_toolTip->Handle()));
}

TEST_F(KsToolTipTest, DestroyedOwnerTakesTheBalloonAlong) {
  m_toolTip->ShowAt(L"text", {400, 500, 480, 524});
  ::DestroyWindow(m_owner);
  EXPECT_EQ(m_toolTip->Handle(), nullptr);
  m_toolTip->ShowAt(L"text", {400, 500, 480, 524});
  m_toolTip->Hide();
}

}  // namespace
}  // namespace postmarker::test
