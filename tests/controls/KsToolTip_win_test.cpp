#include "controls/KsToolTip_win.h"

#include <gtest/gtest.h>
#include <oleacc.h>

#include <memory>

#include "support/ComPtr_win.h"
#include "support/Variant_win.h"
#include "support/WinEvents_win.h"
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

  // A place beside the windows of the test.
  static constexpr RECT kTarget = {600, 500, 680, 524};

  [[nodiscard]] bool IsShown() const { return ::IsWindowVisible(m_toolTip->Handle()) != FALSE; }

  // Shows the tip over the control, as the resting mouse does.
  void HoverControl() {
    ASSERT_TRUE(m_toolTip->AddTool(m_control, L"over the control"));
    ::SendMessageW(m_control, WM_MOUSEMOVE, 0, MAKELPARAM(5, 5));
    Pump(100);
    ASSERT_TRUE(IsShown());
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
  HoverControl();
  EXPECT_EQ(WindowText(m_toolTip->Handle()), L"over the control");
  ::SendMessageW(m_control, WM_MOUSELEAVE, 0, 0);
  EXPECT_FALSE(IsShown());
}

TEST_F(KsToolTipTest, KeyAndButtonsInAToolHideItsTip) {
  HoverControl();
  for (const UINT message : {WM_KEYDOWN, WM_LBUTTONDOWN, WM_RBUTTONDOWN}) {
    m_toolTip->ShowAt(L"over the control", kTarget);
    ASSERT_TRUE(IsShown());
    ::SendMessageW(m_control, message, 0, 0);
    EXPECT_FALSE(IsShown()) << "message " << message;
  }
}

TEST_F(KsToolTipTest, GoesWhenItsOwnerIsHiddenOrMoved) {
  m_toolTip->ShowAt(L"text", kTarget);
  ::ShowWindow(m_owner, SW_HIDE);
  EXPECT_FALSE(IsShown()) << "hidden";
  ::ShowWindow(m_owner, SW_SHOW);
  EXPECT_FALSE(IsShown()) << "a message is not said twice";
  m_toolTip->ShowAt(L"text", kTarget);
  ::SetWindowPos(m_owner, nullptr, 110, 200, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
  EXPECT_FALSE(IsShown()) << "moved";
}

TEST_F(KsToolTipTest, GoesWhenAWindowThatItsOwnerLiesInIsHiddenOrMoved) {
  KsToolTip inner;
  ASSERT_TRUE(inner.Create(m_control, 0, 3000, true));
  inner.ShowAt(L"text", kTarget);
  ::SetWindowPos(m_owner, nullptr, 110, 200, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
  EXPECT_FALSE(::IsWindowVisible(inner.Handle())) << "moved";
  inner.ShowAt(L"text", kTarget);
  ::ShowWindow(m_owner, SW_HIDE);
  EXPECT_FALSE(::IsWindowVisible(inner.Handle())) << "hidden";
}

TEST_F(KsToolTipTest, GoesWhenItsOwnersWindowIsDeactivated) {
  KsToolTip inner;
  ASSERT_TRUE(inner.Create(m_control, 0, 3000, true));
  ::SetActiveWindow(m_owner);
  inner.ShowAt(L"text", kTarget);
  const HWND elsewhere = ::CreateWindowExW(0, L"STATIC", L"elsewhere", WS_POPUP | WS_VISIBLE, 700,
                                           60, 50, 50, nullptr, nullptr, nullptr, nullptr);
  ::SetActiveWindow(elsewhere);
  EXPECT_FALSE(::IsWindowVisible(inner.Handle()));
  ::DestroyWindow(elsewhere);
}

TEST_F(KsToolTipTest, GoesWhenItsOwnerIsDestroyedAlone) {
  KsToolTip inner;
  ASSERT_TRUE(inner.Create(m_control, 0, 3000, true));
  inner.ShowAt(L"text", kTarget);
  ::DestroyWindow(m_control);
  EXPECT_FALSE(::IsWindowVisible(inner.Handle()));
  ::SetWindowTextW(m_owner, L"still works");
  EXPECT_EQ(WindowText(m_owner), L"still works");
}

TEST_F(KsToolTipTest, StaysWhileItsOwnerStaysWhereItIs) {
  m_toolTip->ShowAt(L"text", kTarget);
  ::SetWindowTextW(m_owner, L"other text");
  ::SetWindowPos(m_owner, HWND_TOP, 0, 0, 0, 0, SWP_NOSIZE | SWP_NOMOVE | SWP_NOACTIVATE);
  ::MoveWindow(m_control, 20, 20, 80, 24, TRUE);
  Pump(50);
  EXPECT_TRUE(IsShown());
}

TEST_F(KsToolTipTest, TakesNoOwnerOverBeyondTheTimeItIsShown) {
  const LONG_PTR before = ProcOf(m_owner);
  m_toolTip->ShowAt(L"text", kTarget);
  m_toolTip->ShowAt(L"another text", kTarget);
  m_toolTip->Hide();
  EXPECT_EQ(ProcOf(m_owner), before);
  m_toolTip->ShowAt(L"text", kTarget);
  m_toolTip.reset();
  EXPECT_EQ(ProcOf(m_owner), before);
}

class KsToolTipAccessibilityTest : public KsToolTipTest {
 protected:
  // What a screen reader learns of the tip's window: its role and its name.
  [[nodiscard]] std::pair<LONG, std::wstring> Ask() const {
    ComPtr<IAccessible> object;
    ::AccessibleObjectFromWindow(m_toolTip->Handle(), static_cast<DWORD>(OBJID_CLIENT),
                                 __uuidof(IAccessible), object.PutVoid());
    if (!object) {
      return {};
    }
    Variant role;
    Bstr name;
    object->get_accRole(NumberVariant(CHILDID_SELF), role.Put());
    object->get_accName(NumberVariant(CHILDID_SELF), name.Put());
    return {role.Get().lVal, name ? name.Get() : L""};
  }

  ComApartment m_apartment;
  WinEvents m_events;
};

TEST_F(KsToolTipAccessibilityTest, MessageIsAnAlertThatIsHeard) {
  const std::vector<WinEvent> heard = {
      {EVENT_SYSTEM_ALERT, m_toolTip->Handle(), OBJID_CLIENT, CHILDID_SELF}};
  m_toolTip->ShowAt(L"Please select a folder & go on.", kTarget);
  EXPECT_EQ(m_events.Of(m_toolTip->Handle(), {EVENT_SYSTEM_ALERT}), heard);
  EXPECT_EQ(Ask(),
            std::pair(LONG{ROLE_SYSTEM_ALERT}, std::wstring(L"Please select a folder & go on.")));
  m_events.Forget();
  m_toolTip->ShowAt(L"And now?", kTarget);
  EXPECT_EQ(m_events.Of(m_toolTip->Handle(), {EVENT_SYSTEM_ALERT}), heard) << "the next one too";
  EXPECT_EQ(Ask().second, L"And now?");
}

TEST_F(KsToolTipAccessibilityTest, TipOfAToolIsNoAlert) {
  HoverControl();
  EXPECT_TRUE(m_events.Of(m_toolTip->Handle(), {EVENT_SYSTEM_ALERT}).empty());
  EXPECT_EQ(Ask(), std::pair(LONG{ROLE_SYSTEM_TOOLTIP}, std::wstring(L"over the control")));
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
