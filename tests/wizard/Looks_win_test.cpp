#include <windows.h>

#include <gmock/gmock.h>

#include <algorithm>

#include "support/DeviceContext_win.h"
#include "support/Handles_win.h"
#include "wizard/WizardFixture_win.h"

namespace postmarker::test {
namespace {

using testing::ElementsAre;

constexpr int kHeading = 10001;
constexpr int kBody = 10003;
constexpr int kSettingsText = 13028;

// What other modules of the suite see of the wizard's windows: numbers that are agreed on.
constexpr UINT kSkinTitle = 0x825A;
constexpr UINT kSkinStyle = 0x8259;
constexpr UINT kHelpLink = 0x6A9;

struct SkinMessage {
  HWND window;
  WPARAM wParam;
  LPARAM lParam;
};

// What was sent on the sheet's thread while a hook was there. The thread has ended, or waits for
// messages, when it is read.
std::vector<SkinMessage> g_styles;
std::vector<std::wstring> g_titles;

LRESULT CALLBACK NoteSkinMessages(int code, WPARAM wParam, LPARAM lParam) {
  const auto* const sent = reinterpret_cast<const CWPSTRUCT*>(lParam);
  if (code >= 0 && sent->message == kSkinStyle) {
    g_styles.push_back({sent->hwnd, sent->wParam, sent->lParam});
  }
  if (code >= 0 && sent->message == kSkinTitle) {
    g_titles.emplace_back(reinterpret_cast<const wchar_t*>(sent->wParam));
  }
  return ::CallNextHookEx(nullptr, code, wParam, lParam);
}

int32_t RunSheetUnderHook(WizardRequest* request) {
  g_styles.clear();
  g_titles.clear();
  const WindowsHook hook(
      ::SetWindowsHookExW(WH_CALLWNDPROC, &NoteSkinMessages, nullptr, ::GetCurrentThreadId()));
  const ModuleStateGuard guard;
  CWizardSheet sheet(L"Kestrelon", request, nullptr, 0);
  return static_cast<int32_t>(sheet.DoModal());
}

class LooksTest : public WizardFixture {
 protected:
  using Styles = std::vector<std::pair<WPARAM, LPARAM>>;

  static Styles StylesOf(HWND window) {
    Styles styles;
    for (const SkinMessage& message : g_styles) {
      if (message.window == window) {
        styles.emplace_back(message.wParam, message.lParam);
      }
    }
    return styles;
  }

  // What a page answers for a control: the colors that it sets, and its brush.
  struct Colors {
    COLORREF text;
    int mode;
    LRESULT brush;
  };
  static Colors ColorsOf(HWND page, UINT message, int control) {
    const WindowDc dc(nullptr);
    ::SetTextColor(dc.Get(), RGB(1, 2, 3));
    ::SetBkMode(dc.Get(), OPAQUE);
    const LRESULT brush = ::SendMessageW(page, message, reinterpret_cast<WPARAM>(dc.Get()),
                                         reinterpret_cast<LPARAM>(::GetDlgItem(page, control)));
    return {::GetTextColor(dc.Get()), ::GetBkMode(dc.Get()), brush};
  }
};

TEST_F(LooksTest, SkinIsToldTheCaptionTheFrameAndTheTexts) {
  WizardSession session(&RunSheetUnderHook, &m_request);
  session.WaitForPage(Page::kWelcome);
  EXPECT_THAT(g_titles, ElementsAre(L"Kestrelon \u2013 Spam filter setup"));
  EXPECT_EQ(StylesOf(session.Sheet()), (Styles{{2, 0x1000001}}));
  session.ClickButton(kNextButton);
  session.WaitForTree();
  EXPECT_EQ(StylesOf(session.Control(kHeading)), (Styles{{3, 0}, {9, 204}}));
  EXPECT_EQ(StylesOf(session.Control(kBody)), (Styles{{4, 0}}));
  GoToSettings(session, L"Inbox");
  EXPECT_EQ(StylesOf(session.Control(kSettingsText)), (Styles{{4, 0}}));
}

TEST_F(LooksTest, HeadingIsRedTextBlackAndTheBackgroundWhite) {
  const auto session = StartAtFolders();
  const HWND page = session->CurrentPage();
  const auto white = reinterpret_cast<LRESULT>(::GetStockObject(WHITE_BRUSH));
  const Colors heading = ColorsOf(page, WM_CTLCOLORSTATIC, kHeading);
  EXPECT_EQ(heading.text, RGB(204, 0, 0));
  EXPECT_EQ(heading.mode, TRANSPARENT);
  EXPECT_EQ(heading.brush, white);
  const Colors body = ColorsOf(page, WM_CTLCOLORSTATIC, kBody);
  EXPECT_EQ(body.text, RGB(0, 0, 0));
  EXPECT_EQ(body.mode, TRANSPARENT);
  EXPECT_EQ(body.brush, white);
  for (const UINT message : {WM_CTLCOLORDLG, WM_CTLCOLOREDIT, WM_CTLCOLORLISTBOX, WM_CTLCOLORBTN}) {
    EXPECT_EQ(ColorsOf(page, message, kBody).brush, white) << message;
    EXPECT_EQ(ColorsOf(session->Sheet(), message, kBody).brush, white) << message;
  }
}

// The pixels of an icon's picture; empty for none.
std::vector<uint32_t> PixelsOf(HICON icon) {
  ICONINFO info = {};
  if (!::GetIconInfo(icon, &info)) {
    return {};
  }
  const BitmapHandle mask(info.hbmMask);
  const BitmapHandle color(info.hbmColor);
  BITMAP picture = {};
  ::GetObjectW(color.Get(), sizeof(picture), &picture);
  BITMAPINFO format = {};
  format.bmiHeader.biSize = sizeof(format.bmiHeader);
  format.bmiHeader.biWidth = picture.bmWidth;
  format.bmiHeader.biHeight = picture.bmHeight;
  format.bmiHeader.biPlanes = 1;
  format.bmiHeader.biBitCount = 32;
  std::vector<uint32_t> pixels(static_cast<size_t>(picture.bmWidth) *
                               static_cast<size_t>(picture.bmHeight));
  const WindowDc screen(nullptr);
  ::GetDIBits(screen.Get(), color.Get(), 0, static_cast<UINT>(picture.bmHeight), pixels.data(),
              &format, DIB_RGB_COLORS);
  return pixels;
}

TEST_F(LooksTest, SheetHasTheProgramsIconInBothSizes) {
  const auto session = StartAtFolders();
  const auto shown = [&](WPARAM kind) {
    return PixelsOf(reinterpret_cast<HICON>(::SendMessageW(session->Sheet(), WM_GETICON, kind, 0)));
  };
  const auto expected = [](int width, int height) {
    const IconHandle icon(
        static_cast<HICON>(::LoadImageW(AfxGetResourceHandle(), MAKEINTRESOURCEW(10001), IMAGE_ICON,
                                        ::GetSystemMetrics(width), ::GetSystemMetrics(height), 0)));
    return PixelsOf(icon.Get());
  };
  ASSERT_THAT(expected(SM_CXSMICON, SM_CYSMICON), testing::Not(testing::IsEmpty()));
  EXPECT_EQ(shown(ICON_SMALL), expected(SM_CXSMICON, SM_CYSMICON));
  EXPECT_EQ(shown(ICON_BIG), expected(SM_CXICON, SM_CYICON));
}

// A host's window that answers the help link, and notes when it is enabled.
struct Host {
  WPARAM helpNumber = 0;
  std::wstring helpTopic;
  BSTR helpAnswer = nullptr;
  HWND volatile* sheet = nullptr;
  bool sheetStoodWhenEnabled = false;
  int enablings = 0;
};
Host g_host;

LRESULT CALLBACK HostProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == kHelpLink) {
    const auto topic = reinterpret_cast<BSTR>(lParam);
    g_host.helpNumber = wParam;
    g_host.helpTopic = topic;
    ::SysFreeString(topic);  // owner
    g_host.helpAnswer = ::SysAllocString(L"the host's");
    return reinterpret_cast<LRESULT>(g_host.helpAnswer);
  }
  if (message == WM_ENABLE && wParam != FALSE) {
    ++g_host.enablings;
    g_host.sheetStoodWhenEnabled = ::IsWindow(*g_host.sheet) != FALSE;
  }
  return ::DefWindowProcW(window, message, wParam, lParam);
}

// A sheet over such a host, or over a child window of it.
class OwnedSheetTest : public WizardFixture {
 protected:
  int32_t RunOverHost(WizardRequest* request, bool overChild) {
    g_host = {};
    g_host.sheet = &request->sheetWindow;
    WNDCLASSW kind = {};
    kind.lpfnWndProc = &HostProc;
    kind.lpszClassName = L"PostmarkerTestHost";
    ::RegisterClassW(&kind);
    m_host = ::CreateWindowExW(0, kind.lpszClassName, L"A host", WS_OVERLAPPEDWINDOW | WS_VISIBLE,
                               40, 40, 400, 300, nullptr, nullptr, nullptr, nullptr);
    const HWND child = ::CreateWindowExW(0, L"STATIC", L"A part", WS_CHILD | WS_VISIBLE, 0, 0, 50,
                                         50, m_host, nullptr, nullptr, nullptr);
    const ModuleStateGuard guard;
    int32_t result = 0;
    {
      CWizardSheet sheet(L"Kestrelon", request, overChild ? child : m_host.load(), 0);
      result = static_cast<int32_t>(sheet.DoModal());
    }
    m_wasEnabledAtTheEnd = ::IsWindowEnabled(m_host) != FALSE;
    ::DestroyWindow(m_host);
    return result;
  }
  WizardSession::Show Over(bool child) {
    return [this, child](WizardRequest* request) { return RunOverHost(request, child); };
  }

  std::atomic<HWND> m_host = nullptr;
  std::atomic<bool> m_wasEnabledAtTheEnd = false;
};

TEST_F(OwnedSheetTest, HelpLinkIsToldToTheOwnerWhoseAnswerTheSheetKeeps) {
  WizardSession session(Over(false), &m_request);
  session.WaitForPage(Page::kWelcome);
  EXPECT_EQ(g_host.helpNumber, 4U);
  EXPECT_EQ(g_host.helpTopic, L"Configure");
  EXPECT_EQ(::GetPropW(session.Sheet(), L"KSHelpLink"), static_cast<HANDLE>(g_host.helpAnswer));
}

TEST_F(OwnedSheetTest, OwnerIsEnabledBeforeTheSheetGoes) {
  WizardSession session(Over(false), &m_request);
  session.WaitForPage(Page::kWelcome);
  EXPECT_FALSE(::IsWindowEnabled(m_host));
  session.ClickButton(IDCANCEL);
  EXPECT_EQ(session.Result(), IDCANCEL);
  EXPECT_EQ(g_host.enablings, 1);
  EXPECT_TRUE(g_host.sheetStoodWhenEnabled);
  EXPECT_TRUE(m_wasEnabledAtTheEnd);
}

TEST_F(OwnedSheetTest, ChildWindowAsOwnerDisablesItsTopLevelWindow) {
  WizardSession session(Over(true), &m_request);
  session.WaitForPage(Page::kWelcome);
  EXPECT_FALSE(::IsWindowEnabled(m_host));
  EXPECT_EQ(::GetWindow(session.Sheet(), GW_OWNER), m_host);
  session.ClickButton(IDCANCEL);
  EXPECT_EQ(session.Result(), IDCANCEL);
  EXPECT_TRUE(g_host.sheetStoodWhenEnabled);
  EXPECT_TRUE(m_wasEnabledAtTheEnd);
}

}  // namespace
}  // namespace postmarker::test
