#include <windows.h>

#include <gtest/gtest.h>

#include <commctrl.h>

#include "progress/CDlgProgress_win.h"
#include "progress/DialogRun_win.h"
#include "resource.h"
#include "wizard/WizardFixture_win.h"

namespace postmarker::test {
namespace {

class ProgressPlainTest : public WizardFixture {};

TEST_F(ProgressPlainTest, ShowsTextAndSteps) {
  DialogRun run(DialogRun::Of<CDlgProgress>());
  run.Handle().PostText(MakeBstr(L"Reading"), 20);
  run.Handle().PostSteps(3);
  run.Handle().PostSteps(4);
  const HWND bar = run.Control(IDC_PROGRESS_BAR);
  EXPECT_TRUE(WaitUntil([&] { return ::SendMessageW(bar, PBM_GETPOS, 0, 0) == 7; }));
  EXPECT_EQ(TextOf(run.Control(IDC_PROGRESS_TEXT)), L"Reading");
}

TEST_F(ProgressPlainTest, BarHasItsColors) {
  const DialogRun run(DialogRun::Of<CDlgProgress>());
  const HWND bar = run.Control(IDC_PROGRESS_BAR);
  // Setting a color returns the one before.
  EXPECT_EQ(::SendMessageW(bar, PBM_SETBKCOLOR, 0, 0), 0xE5E9EB);
  EXPECT_EQ(::SendMessageW(bar, PBM_SETBARCOLOR, 0, 0), 171);
}

TEST_F(ProgressPlainTest, EndOfTheJobClosesIt) {
  DialogRun run(DialogRun::Of<CDlgProgress>());
  run.Handle().PostEnd(false);
  EXPECT_EQ(run.Result(), IDCANCEL);
  EXPECT_EQ(run.Handle().window, nullptr);
  EXPECT_EQ(run.Handle().cancelled, 0U);
}

TEST_F(ProgressPlainTest, CancelAsksFirstAndThenClosesIt) {
  DialogRun run(DialogRun::Of<CDlgProgress>());
  ::PostMessageW(run.Window(), WM_CLOSE, 0, 0);
  HWND question = run.WaitForQuestion();
  ::PostMessageW(question, WM_COMMAND, IDCANCEL, 0);
  ASSERT_TRUE(WaitUntil([&] { return !::IsWindow(question); }));
  EXPECT_EQ(run.Handle().window, run.Window());
  ::PostMessageW(run.Window(), WM_COMMAND, IDCANCEL, 0);
  question = run.WaitForQuestion();
  ::PostMessageW(question, WM_COMMAND, IDOK, 0);
  EXPECT_EQ(run.Result(), IDCANCEL);
  EXPECT_EQ(run.Handle().window, nullptr);
}

TEST_F(ProgressPlainTest, EndOfTheJobWithdrawsTheQuestion) {
  DialogRun run(DialogRun::Of<CDlgProgress>());
  ::PostMessageW(run.Window(), WM_CLOSE, 0, 0);
  (void)run.WaitForQuestion();
  run.Handle().PostEnd(false);
  EXPECT_EQ(run.Result(), IDCANCEL);
}

TEST_F(ProgressPlainTest, EnterDoesNotCloseIt) {
  DialogRun run(DialogRun::Of<CDlgProgress>());
  ::SendMessageW(run.Window(), WM_COMMAND, IDOK, 0);
  EXPECT_EQ(run.Handle().window, run.Window());
}

}  // namespace
}  // namespace postmarker::test
