#include <windows.h>

#include <gmock/gmock.h>

#include <atomic>
#include <thread>

#include "controls/KsContextMenuDlg_win.h"
#include "controls/KsMessageBoxDlg_win.h"
#include "support/Stage_win.h"
#include "support/WizardSession_win.h"
#include "ui/CWinApp.h"

namespace postmarker::test {
namespace {

using testing::ElementsAre;

class TestApp : public CWinApp {};
TestApp g_app;

// The results of a style's buttons, in their order.
std::vector<int> ResultsOf(UINT style) {
  std::vector<int> results;
  for (const MessageBoxButton& button : MessageBoxButtons(style)) {
    results.push_back(button.result);
  }
  return results;
}

TEST(KsMessageBox, LowFourBitsPickTheButtons) {
  EXPECT_THAT(ResultsOf(0), ElementsAre(IDOK));
  EXPECT_THAT(ResultsOf(1), ElementsAre(IDOK, IDCANCEL));
  EXPECT_THAT(ResultsOf(2), ElementsAre(IDABORT, IDRETRY, IDIGNORE));
  EXPECT_THAT(ResultsOf(3), ElementsAre(IDYES, IDNO, IDCANCEL));
  EXPECT_THAT(ResultsOf(4), ElementsAre(IDYES, IDNO));
  EXPECT_THAT(ResultsOf(5), ElementsAre(IDRETRY, IDCANCEL));
  EXPECT_THAT(ResultsOf(6), ElementsAre(IDCANCEL, IDTRYAGAIN, IDCONTINUE));
  EXPECT_THAT(ResultsOf(7), ElementsAre(IDOK));
  EXPECT_THAT(ResultsOf(MB_ICONERROR | 4), ElementsAre(IDYES, IDNO));
}

TEST(KsMessageBox, TextsOfTheButtonsAreNumberedByTheirResults) {
  for (const UINT style : {0U, 1U, 2U, 3U, 4U, 5U}) {
    for (const MessageBoxButton& button : MessageBoxButtons(style)) {
      EXPECT_EQ(button.textId, 799U + static_cast<UINT>(button.result));
    }
  }
}

// Shows a dialog on a thread of its own.
class DialogRun {
 public:
  explicit DialogRun(std::function<int()> show)
      : m_thread([this, show = std::move(show)] {
          const ModuleStateGuard guard;
          m_id = ::GetCurrentThreadId();
          m_result = show();
        }) {}
  DialogRun(const DialogRun&) = delete;
  DialogRun& operator=(const DialogRun&) = delete;
  ~DialogRun() {
    if (m_thread.joinable()) {
      m_thread.join();
    }
  }
  [[nodiscard]] HWND WaitForControl(int control) const {
    HWND dialog = nullptr;
    WizardSession::Require(
        [&] { return m_id != 0 && (dialog = FindDialogWithControl(m_id, control)) != nullptr; },
        "the dialog did not open");
    return dialog;
  }
  int Result() {
    m_thread.join();
    return m_result;
  }

 private:
  std::atomic<DWORD> m_id = 0;
  int m_result = -2;
  std::thread m_thread;
};

class DialogsTest : public testing::Test {
 protected:
  DialogsTest()
      : m_language(::LoadLibraryExW((StageFolder() + L"\\res\\en\\PostmarkerRes.dll").c_str(),
                                    nullptr,
                                    LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE)) {
    g_app.SetModule(::GetModuleHandleW(nullptr));
    g_app.SetResourceModule(m_language.Get());
  }
  ~DialogsTest() override { g_app.SetResourceModule(nullptr); }

  LibraryHandle m_language;
};

TEST_F(DialogsTest, EachButtonReturnsItsResult) {
  for (const int wanted : {IDYES, IDNO, IDCANCEL}) {
    DialogRun run([] { return ShowMessageBox(nullptr, L"Question?", L"Caption", MB_YESNOCANCEL); });
    const HWND box = run.WaitForControl(IDYES);
    EXPECT_EQ(TextOf(box), L"Caption");
    EXPECT_EQ(TextOf(::GetDlgItem(box, 0xFFFF)), L"Question?");
    EXPECT_EQ(TextOf(::GetDlgItem(box, IDNO)), L"&No");
    ::PostMessageW(::GetDlgItem(box, wanted), BM_CLICK, 0, 0);
    EXPECT_EQ(run.Result(), wanted);
  }
}

TEST_F(DialogsTest, EscapeEndsABoxOfOneButtonAndIsNothingWhereNoButtonCancels) {
  DialogRun single([] { return ShowMessageBox(nullptr, L"Done.", L"Caption", MB_OK); });
  ::PostMessageW(single.WaitForControl(IDOK), WM_COMMAND, IDCANCEL, 0);
  EXPECT_EQ(single.Result(), IDOK);

  DialogRun pair([] { return ShowMessageBox(nullptr, L"Sure?", L"Caption", MB_YESNO); });
  const HWND box = pair.WaitForControl(IDYES);
  ::SendMessageW(box, WM_COMMAND, IDCANCEL, 0);
  EXPECT_TRUE(::IsWindow(box));
  ::PostMessageW(::GetDlgItem(box, IDNO), BM_CLICK, 0, 0);
  EXPECT_EQ(pair.Result(), IDNO);
}

TEST_F(DialogsTest, DefaultButtonIsTheStylesAndHasTheFocus) {
  DialogRun run(
      [] { return ShowMessageBox(nullptr, L"Sure?", L"Caption", MB_YESNO | MB_DEFBUTTON2); });
  const HWND box = run.WaitForControl(IDYES);
  EXPECT_EQ(LOWORD(::SendMessageW(box, DM_GETDEFID, 0, 0)), IDNO);
  ::PostMessageW(::GetDlgItem(box, IDNO), BM_CLICK, 0, 0);
  run.Result();
}

TEST_F(DialogsTest, LongTextIsBrokenIntoLinesAndStaysInsideTheBox) {
  std::wstring text;
  for (int i = 0; i < 60; ++i) {
    text.append(L"Rindfleischetikettierung ");
  }
  DialogRun run(
      [text] { return ShowMessageBox(nullptr, text, L"Caption", MB_OK | MB_ICONINFORMATION); });
  const HWND box = run.WaitForControl(IDOK);
  RECT client = {};
  ::GetClientRect(box, &client);
  for (const int id : {20, 0xFFFF, static_cast<int>(IDOK)}) {
    RECT place = {};
    ::GetWindowRect(::GetDlgItem(box, id), &place);
    ::MapWindowPoints(nullptr, box, reinterpret_cast<POINT*>(&place), 2);
    EXPECT_GE(place.left, 0) << id;
    EXPECT_LE(place.right, client.right) << id;
    EXPECT_LE(place.bottom, client.bottom) << id;
  }
  ::PostMessageW(::GetDlgItem(box, IDOK), BM_CLICK, 0, 0);
  EXPECT_EQ(run.Result(), IDOK);
}

TEST_F(DialogsTest, MenuReturnsTheCommandThatWasClicked) {
  DialogRun run([] {
    return KsContextMenuDlg(nullptr, {{101, L"&Delete"}, {102, L"&Rename"}}).ShowAt({50, 60});
  });
  const HWND menu = run.WaitForControl(102);
  EXPECT_EQ(TextOf(::GetDlgItem(menu, 101)), L"&Delete");
  RECT place = {};
  ::GetWindowRect(menu, &place);
  EXPECT_EQ(place.left, 50);
  EXPECT_EQ(place.top, 60);
  ::PostMessageW(::GetDlgItem(menu, 102), BM_CLICK, 0, 0);
  EXPECT_EQ(run.Result(), 102);
}

TEST_F(DialogsTest, MenuThatIsLeftReturnsNothing) {
  for (const bool byEscape : {true, false}) {
    DialogRun run([] { return KsContextMenuDlg(nullptr, {{101, L"One"}}).ShowAt({50, 60}); });
    const HWND menu = run.WaitForControl(101);
    if (byEscape) {
      ::PostMessageW(menu, WM_COMMAND, IDCANCEL, 0);
    } else {
      ::PostMessageW(menu, WM_ACTIVATE, WA_INACTIVE, 0);
    }
    EXPECT_EQ(run.Result(), 0);
  }
}

TEST_F(DialogsTest, MenuAtTheScreensEdgeStaysOnIt) {
  DialogRun run([] {
    return KsContextMenuDlg(nullptr, {{101, L"One"}, {102, L"Two"}}).ShowAt({5000, 5000});
  });
  const HWND menu = run.WaitForControl(101);
  RECT place = {};
  ::GetWindowRect(menu, &place);
  EXPECT_LE(place.right, ::GetSystemMetrics(SM_CXSCREEN));
  EXPECT_LE(place.bottom, ::GetSystemMetrics(SM_CYSCREEN));
  ::PostMessageW(menu, WM_COMMAND, IDCANCEL, 0);
  EXPECT_EQ(run.Result(), 0);
}

}  // namespace
}  // namespace postmarker::test
