// The progress window while the job runs and when it is over.
#include <windows.h>

#include <gtest/gtest.h>

#include <commctrl.h>

#include <string>
#include <vector>

#include "module/ProgressFixture_win.h"
#include "support/WizardSession_win.h"

namespace postmarker::test {
namespace {

class ProgressTest : public ProgressFixture {
 protected:
  // The controls among these that are shown.
  static std::vector<int> Shown(const Job& job) {
    std::vector<int> shown;
    for (const int id : {kBody, kNote, kText, kBar, kStop, kClose, kFinishedText, kStoppedText,
                         kHelp, kSupportLabel, kSupportLink, kSecondLabel, kSecondLink}) {
      if (job.IsShown(id)) {
        shown.push_back(id);
      }
    }
    return shown;
  }
  static bool IsEnabled(const Job& job, int id) { return ::IsWindowEnabled(job.Control(id)); }

  static inline const std::vector<int> kRunning = {kBody, kNote, kText, kBar, kStop, kClose};
  static inline const std::vector<int> kFinished = {
      kClose, kFinishedText, kHelp, kSupportLabel, kSupportLink, kSecondLabel, kSecondLink};
  static inline const std::vector<int> kStopped = {
      kClose, kStoppedText, kHelp, kSupportLabel, kSupportLink, kSecondLabel, kSecondLink};
};

TEST_F(ProgressTest, NullHandleIsIgnored) {
  m_progress.set(nullptr, "Text", 3);
  m_progress.increase(nullptr, 1);
  m_progress.complete(nullptr);
  m_progress.destroy(nullptr, 0);
  m_progress.destroy(nullptr, 1);
  EXPECT_EQ(m_progress.isCancelled(nullptr), 0);
  EXPECT_EQ(m_progress.isFinished(nullptr), 0);
}

TEST_F(ProgressTest, NewJobIsRunningWithoutAStop) {
  const Job job(m_progress);
  EXPECT_FALSE(job.IsCancelled());
  EXPECT_FALSE(job.IsFinished());
  EXPECT_EQ(Shown(job), kRunning);
  EXPECT_FALSE(IsEnabled(job, kClose));
  EXPECT_EQ(TextOf(job.Control(kText)), L"Please wait...");
  EXPECT_EQ(TextOf(job.Window()), L"Kestrelon \u2013 Training the spam filter");
}

TEST_F(ProgressTest, TitleAndTextCanBeNull) {
  PostmarkerProgress* const handle = m_progress.create(7, nullptr, 0);
  ASSERT_NE(handle, nullptr);
  m_progress.set(handle, nullptr, 5);
  EXPECT_EQ(m_progress.isCancelled(handle), 0);
  m_progress.destroy(handle, 1);
}

TEST_F(ProgressTest, SetShowsTheTextAndBeginsTheBar) {
  const Job job(m_progress);
  job.Set(
      "Reading Gr\xFC\xDF"
      "e",
      300);
  job.Increase(7);
  job.WaitForPosition(7);
  EXPECT_EQ(TextOf(job.Control(kText)),
            L"Reading Gr\xFC\xDF"
            L"e");
  EXPECT_EQ(::SendMessageW(job.Control(kBar), PBM_GETRANGE, FALSE, 0), 300);
  EXPECT_EQ(::SendMessageW(job.Control(kBar), PBM_GETRANGE, TRUE, 0), 0);
}

TEST_F(ProgressTest, EmptyTextLeavesTheLastOne) {
  const Job job(m_progress);
  job.Set("First", 10);
  job.Set("", 20);
  job.Settle();
  EXPECT_EQ(TextOf(job.Control(kText)), L"First");
}

TEST_F(ProgressTest, TotalOfZeroShowsAFullBarAndANegativeOneAnEmptyBar) {
  const Job job(m_progress);
  job.Set("None", 0);
  job.WaitForPosition(1);
  EXPECT_EQ(::SendMessageW(job.Control(kBar), PBM_GETRANGE, FALSE, 0), 1);
  job.Set("Odd", -5);
  job.WaitForPosition(0);
  EXPECT_EQ(::SendMessageW(job.Control(kBar), PBM_GETRANGE, FALSE, 0), 1);
}

TEST_F(ProgressTest, TotalOfMoreThan16BitsKeepsTheLowerOnes) {
  const Job job(m_progress);
  job.Set("Many", 65536 + 20);
  job.Increase(20);
  job.WaitForPosition(20);
  EXPECT_EQ(::SendMessageW(job.Control(kBar), PBM_GETRANGE, FALSE, 0), 20);
  job.Increase(2);
  job.WaitForPosition(1);
}

TEST_F(ProgressTest, BurstOfCallsIsHandledInItsOrder) {
  const Job job(m_progress);
  for (int round = 1; round <= 50; ++round) {
    job.Set(("Round " + std::to_string(round)).c_str(), 100);
    for (int step = 0; step < round; ++step) {
      job.Increase(1);
    }
  }
  job.WaitForPosition(50);
  ::Sleep(100);
  EXPECT_EQ(job.Position(), 50) << "no step of a round before has come late";
  EXPECT_EQ(TextOf(job.Control(kText)), L"Round 50");
}

TEST_F(ProgressTest, NumberOfStepsBelowOneMovesNothing) {
  const Job job(m_progress);
  job.Set("Text", 50);
  job.Increase(5);
  job.Increase(0);
  job.Increase(-3);
  job.Increase(1);
  job.WaitForPosition(6);
}

TEST_F(ProgressTest, CompleteReturnsWithTheFinishedFace) {
  const Job job(m_progress);
  job.Complete();
  EXPECT_EQ(Shown(job), kFinished);
  EXPECT_TRUE(IsEnabled(job, kClose));
  EXPECT_FALSE(job.IsCancelled());
  EXPECT_FALSE(job.IsFinished());
}

TEST_F(ProgressTest, CloseButtonEndsTheWindowOnlyWhenTheJobIsOver) {
  const Job job(m_progress);
  ::SendMessageW(job.Window(), WM_COMMAND, kClose, 0);
  job.Settle();
  EXPECT_FALSE(job.IsFinished());
  job.Complete();
  job.Click(kClose);
  EXPECT_TRUE(WaitUntil([&] { return job.IsFinished(); }));
  EXPECT_TRUE(job.IsCancelled()) << "a handle whose window has ended";
}

TEST_F(ProgressTest, StopRaisesTheMarkAndShowsTheStoppedFace) {
  const Job job(m_progress);
  job.Click(kStop);
  job.WaitForFace(true);
  EXPECT_EQ(Shown(job), kStopped);
  EXPECT_TRUE(IsEnabled(job, kClose));
  EXPECT_TRUE(job.IsCancelled());
  EXPECT_FALSE(job.IsFinished()) << "a stop does not end the window";
}

TEST_F(ProgressTest, StoppedJobStaysStoppedWhenItIsCompletedAndClosed) {
  const Job job(m_progress);
  job.Click(kStop);
  job.WaitForFace(true);
  job.Complete();
  EXPECT_EQ(Shown(job), kStopped);
  job.Click(kClose);
  EXPECT_TRUE(WaitUntil([&] { return job.IsFinished(); }));
  EXPECT_TRUE(job.IsCancelled());
}

TEST_F(ProgressTest, StopAfterTheEndDoesNothing) {
  const Job job(m_progress);
  job.Complete();
  ::SendMessageW(job.Window(), WM_COMMAND, kStop, 0);
  job.Settle();
  EXPECT_FALSE(job.IsCancelled());
  EXPECT_EQ(Shown(job), kFinished);
}

TEST_F(ProgressTest, EnterEndsOnlyAWindowWhoseJobIsOver) {
  const Job job(m_progress);
  ::SendMessageW(job.Window(), WM_COMMAND, IDOK, 0);
  job.Settle();
  EXPECT_FALSE(job.IsFinished());
  job.Complete();
  ::SendMessageW(job.Window(), WM_COMMAND, IDOK, 0);
  EXPECT_TRUE(job.IsFinished());
}

TEST_F(ProgressTest, FinishedFaceHasTheFocusOnItsCloseButton) {
  const Job job(m_progress);
  job.Complete();
  GUITHREADINFO info = {};
  info.cbSize = sizeof(info);
  ASSERT_TRUE(::GetGUIThreadInfo(::GetWindowThreadProcessId(job.Window(), nullptr), &info));
  EXPECT_EQ(info.hwndFocus, job.Control(kClose));
  EXPECT_EQ(LOWORD(::SendMessageW(job.Window(), DM_GETDEFID, 0, 0)), kClose);
}

TEST_F(ProgressTest, WindowsCloseAsksBeforeItStopsAJob) {
  const Job job(m_progress);
  job.PressWindowClose();
  HWND question = job.WaitForQuestion();
  EXPECT_FALSE(::IsWindowEnabled(job.Window()));
  Job::Answer(question, IDCANCEL);
  EXPECT_EQ(Shown(job), kRunning);
  EXPECT_FALSE(job.IsCancelled());
  job.PressWindowClose();
  Job::Answer(job.WaitForQuestion(), IDOK);
  job.WaitForFace(true);
  EXPECT_EQ(Shown(job), kStopped);
  EXPECT_TRUE(job.IsCancelled());
  EXPECT_FALSE(job.IsFinished());
}

TEST_F(ProgressTest, QuestionIsAskedOnceHoweverOftenTheWindowIsClosed) {
  const Job job(m_progress);
  job.PressWindowClose();
  const HWND question = job.WaitForQuestion();
  job.PressWindowClose();
  ::SendMessageW(job.Window(), WM_CLOSE, 0, 0);
  job.Settle();
  EXPECT_EQ(job.Question(), question);
  Job::Answer(question, IDCANCEL);
  EXPECT_EQ(job.Question(), nullptr);
  EXPECT_TRUE(::IsWindowEnabled(job.Window()));
}

TEST_F(ProgressTest, ProgressGoesOnBehindTheQuestion) {
  const Job job(m_progress);
  job.Set("Before", 50);
  job.PressWindowClose();
  const HWND question = job.WaitForQuestion();
  job.Set("Meanwhile", 60);
  job.Increase(4);
  job.Increase(5);
  job.WaitForPosition(9);
  EXPECT_EQ(TextOf(job.Control(kText)), L"Meanwhile");
  Job::Answer(question, IDCANCEL);
}

TEST_F(ProgressTest, QuestionIsWithdrawnWhenTheJobIsFinishedMeanwhile) {
  const Job job(m_progress);
  job.PressWindowClose();
  const HWND question = job.WaitForQuestion();
  job.Complete();
  EXPECT_TRUE(WaitUntil([&] { return !::IsWindow(question); }));
  EXPECT_TRUE(WaitUntil([&] { return ::IsWindowEnabled(job.Window()) != FALSE; }));
  EXPECT_EQ(Shown(job), kFinished);
  EXPECT_FALSE(job.IsCancelled()) << "a finished job was not stopped";
}

TEST_F(ProgressTest, WindowsCloseEndsAWindowWhoseJobIsOver) {
  const Job job(m_progress);
  job.Complete();
  job.PressWindowClose();
  EXPECT_TRUE(WaitUntil([&] { return job.IsFinished(); }));
  EXPECT_TRUE(job.IsCancelled());
}

TEST_F(ProgressTest, WindowsShowJobsOfSeveralThreadsEachItsOwn) {
  std::vector<std::thread> hosts;
  for (int number = 1; number <= 4; ++number) {
    hosts.emplace_back([this, number] {
      const Job job(m_progress);
      const std::string text = "Job " + std::to_string(number);
      job.Set(text.c_str(), 100);
      for (int i = 0; i < 10; ++i) {
        job.Increase(number);
      }
      job.WaitForPosition(10 * number);
      EXPECT_EQ(NarrowUtf8(TextOf(job.Control(kText))), text);
      if (number % 2 == 0) {
        job.Click(kStop);
        job.WaitForFace(true);
      }
      EXPECT_EQ(job.IsCancelled(), number % 2 == 0);
      EXPECT_FALSE(job.IsFinished());
    });
  }
  for (std::thread& host : hosts) {
    host.join();
  }
}

}  // namespace
}  // namespace postmarker::test
