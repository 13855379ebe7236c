// What the skin and the eye see of the progress window.
#include <windows.h>

#include <gmock/gmock.h>

#include <mutex>
#include <vector>

#include "progress/CDlgTrain_win.h"
#include "progress/DialogRun_win.h"
#include "resource.h"
#include "support/DeviceContext_win.h"
#include "wizard/WizardFixture_win.h"

namespace postmarker::test {
namespace {

using testing::Contains;
using testing::ElementsAre;

struct SkinMessage {
  HWND window;
  UINT message;
  WPARAM wParam;
  LPARAM lParam;
};
std::mutex g_lock;
std::vector<SkinMessage> g_styles;
std::vector<std::wstring> g_titles;

LRESULT CALLBACK NoteSkinMessages(int code, WPARAM wParam, LPARAM lParam) {
  const auto* const sent = reinterpret_cast<const CWPSTRUCT*>(lParam);
  const std::lock_guard lock(g_lock);
  if (code >= 0 && (sent->message == 0x8259 || sent->message == 0x81FC)) {
    g_styles.push_back({sent->hwnd, sent->message, sent->wParam, sent->lParam});
  }
  if (code >= 0 && sent->message == 0x825A) {
    g_titles.emplace_back(reinterpret_cast<const wchar_t*>(sent->wParam));
  }
  return ::CallNextHookEx(nullptr, code, wParam, lParam);
}

INT_PTR RunUnderHook(ProgressHandle* handle) {
  const WindowsHook hook(
      ::SetWindowsHookExW(WH_CALLWNDPROC, &NoteSkinMessages, nullptr, ::GetCurrentThreadId()));
  return CDlgTrain(handle).DoModal();
}

class ProgressLooksTest : public WizardFixture {
 protected:
  using Styles = std::vector<std::tuple<UINT, WPARAM, LPARAM>>;

  static Styles StylesOf(HWND window) {
    const std::lock_guard lock(g_lock);
    Styles styles;
    for (const SkinMessage& message : g_styles) {
      if (message.window == window) {
        styles.emplace_back(message.message, message.wParam, message.lParam);
      }
    }
    return styles;
  }
};

TEST_F(ProgressLooksTest, SkinIsToldTheCaptionTheFrameAndTheControls) {
  g_styles.clear();
  g_titles.clear();
  const DialogRun run(&RunUnderHook);
  {
    const std::lock_guard lock(g_lock);
    EXPECT_THAT(g_titles, ElementsAre(L"Kestrelon \u2013 Training the spam filter"));
  }
  EXPECT_EQ(StylesOf(run.Window()), (Styles{{0x8259, 2, 0x1000001}, {0x8259, 2, 0x2000001}}));
  EXPECT_EQ(StylesOf(run.Control(13007)), (Styles{{0x8259, 3, 0}, {0x8259, 9, 204}}));
  for (const int body : {13008, 13017, 13025, 13009}) {
    EXPECT_EQ(StylesOf(run.Control(body)), (Styles{{0x8259, 4, 0}})) << body;
  }
  EXPECT_EQ(StylesOf(run.Control(13019)), (Styles{{0x8259, 2, 0}}));
  EXPECT_EQ(StylesOf(run.Control(13015)), (Styles{{0x81FC, 64, 0}}));
}

TEST_F(ProgressLooksTest, WindowHasTheIconThePictureAndARedHeadingOnWhite) {
  const DialogRun run(DialogRun::Of<CDlgTrain>());
  EXPECT_NE(::SendMessageW(run.Window(), WM_GETICON, ICON_SMALL, 0), 0);
  EXPECT_NE(::SendMessageW(run.Control(IDC_BANNER), STM_GETIMAGE, IMAGE_BITMAP, 0), 0);
  const WindowDc dc(nullptr);
  const auto askColor = [&](int control) {
    const LRESULT brush =
        ::SendMessageW(run.Window(), WM_CTLCOLORSTATIC, reinterpret_cast<WPARAM>(dc.Get()),
                       reinterpret_cast<LPARAM>(run.Control(control)));
    EXPECT_EQ(brush, reinterpret_cast<LRESULT>(::GetStockObject(WHITE_BRUSH)));
    return ::GetTextColor(dc.Get());
  };
  EXPECT_EQ(askColor(13007), RGB(204, 0, 0));
  EXPECT_EQ(askColor(13008), RGB(0, 0, 0));
}

TEST_F(ProgressLooksTest, QuestionHasThePagesColors) {
  const DialogRun run(DialogRun::Of<CDlgTrain>());
  ::PostMessageW(run.Window(), WM_CLOSE, 0, 0);
  const HWND question = run.WaitForQuestion();
  const WindowDc dc(nullptr);
  for (const UINT message : {WM_CTLCOLORDLG, WM_CTLCOLORSTATIC, WM_CTLCOLORBTN}) {
    EXPECT_EQ(::SendMessageW(question, message, reinterpret_cast<WPARAM>(dc.Get()),
                             reinterpret_cast<LPARAM>(::GetDlgItem(question, IDC_BODY))),
              reinterpret_cast<LRESULT>(::GetStockObject(WHITE_BRUSH)))
        << message;
  }
}

}  // namespace
}  // namespace postmarker::test
