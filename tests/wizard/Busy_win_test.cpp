#include <windows.h>

#include <gmock/gmock.h>

#include "support/ObjectCount_win.h"
#include "ui/CWaitCursor.h"
#include "wizard/WizardFixture_win.h"

namespace postmarker::test {
namespace {

// How the wizard behaves while it is busy: what it shows, and what it takes.
class BusyTest : public WizardFixture {
 protected:
  static bool IsWaitCursorHere() { return ::GetCursor() == WaitCursor(); }

  // The cursor that a window's thread shows after the pointer has moved over the window.
  // What moves or appears under the pointer can take the cursor away again at once, so a wait
  // cursor is waited for.
  static bool ShowsWaitCursor(HWND window) {
    const DWORD thread = ::GetWindowThreadProcessId(window, nullptr);
    ::SendMessageW(window, WM_SETCURSOR, reinterpret_cast<WPARAM>(window),
                   MAKELPARAM(HTCLIENT, WM_MOUSEMOVE));
    ::AttachThreadInput(::GetCurrentThreadId(), thread, TRUE);
    const bool isWait = IsWaitCursorHere();
    ::AttachThreadInput(::GetCurrentThreadId(), thread, FALSE);
    return isWait;
  }

  std::unique_ptr<WizardSession> StartAtPrefill() {
    auto session = StartAtFolders();
    session->ClickItem(L"Inbox");
    session->ClickButton(kNextButton);
    session->WaitForPage(Page::kPrefill);
    return session;
  }

  // The client collects until it is let go, whatever the user wants.
  void CollectUntilLetGo() {
    m_clients.client.whileCollecting = [this](const ProgressCallbacks* /*callbacks*/) {
      m_isCollecting = true;
      WaitUntil([this] { return m_letGo.load(); });
    };
  }

  // The visible boxes of this process over a sheet.
  static std::vector<HWND> Boxes(const WizardSession& session) {
    std::vector<HWND> boxes;
    for (HWND window = nullptr;
         (window = ::FindWindowExW(nullptr, window, L"#32770", L"Kestrelon")) != nullptr;) {
      DWORD process = 0;
      ::GetWindowThreadProcessId(window, &process);
      if (process == ::GetCurrentProcessId() && window != session.Sheet() &&
          ::IsWindowVisible(window)) {
        boxes.push_back(window);
      }
    }
    return boxes;
  }

  // Presses everything that a sheet has, as assistive programs do, which no disabled window stops.
  static void PressEverything(const WizardSession& session) {
    for (const int id : {kFinishButton, kBackButton, kNextButton, IDCANCEL}) {
      ::PostMessageW(session.Button(id), BM_CLICK, 0, 0);
      ::PostMessageW(session.Sheet(), WM_COMMAND, MAKEWPARAM(id, BN_CLICKED),
                     reinterpret_cast<LPARAM>(session.Button(id)));
    }
    for (const int button : {PSBTN_FINISH, PSBTN_BACK, PSBTN_CANCEL}) {
      ::PostMessageW(session.Sheet(), PSM_PRESSBUTTON, static_cast<WPARAM>(button), 0);
    }
    ::PostMessageW(session.Sheet(), WM_SYSCOMMAND, SC_CLOSE, 0);
    session.Close();
    ::Sleep(200);
  }

  std::atomic<bool> m_isCollecting = false;
  std::atomic<bool> m_letGo = false;
};

TEST_F(BusyTest, ClientIsPreparedUnderAWaitCursor) {
  m_clients.client.needsHold = true;
  std::atomic<bool> wasWaiting = false;
  m_clients.client.whileConnecting = [&] { wasWaiting = IsWaitCursorHere(); };
  const auto session = StartAtFolders();
  EXPECT_EQ(m_clients.client.connections, 1);
  EXPECT_TRUE(wasWaiting);
}

TEST_F(BusyTest, PageShowsTheWaitCursorWhileTheWorkerReads) {
  std::atomic<bool> go = false;
  std::atomic<bool> isReading = false;
  m_clients.client.beforeListing = [&] {
    isReading = true;
    WaitUntil([&] { return go.load(); });
  };
  WizardSession session(&WizardFixture::RunSheet, &m_request);
  session.WaitForPage(Page::kWelcome);
  session.ClickButton(kNextButton);
  session.WaitForPage(Page::kFolders);
  EXPECT_TRUE(WaitUntil([&] { return isReading.load(); }));
  EXPECT_TRUE(WaitUntil([&] { return ShowsWaitCursor(session.CurrentPage()); }));
  EXPECT_FALSE(ShowsWaitCursor(session.Sheet())) << "the sheet can still be canceled";
  go = true;
  session.WaitForTree();
  EXPECT_TRUE(WaitUntil([&] { return !ShowsWaitCursor(session.CurrentPage()); }));
}

TEST_F(BusyTest, FinishRunsUnderAWaitCursor) {
  std::atomic<bool> wasWaiting = false;
  m_clients.client.whileSwitching = [&] { wasWaiting = IsWaitCursorHere(); };
  const auto session = StartAtFolders();
  GoToSettings(*session, L"Friends");
  session->ClickButton(kFinishButton);
  EXPECT_EQ(session->Result(), kFinishButton);
  EXPECT_EQ(m_clients.client.moveSwitches, 1);
  EXPECT_TRUE(wasWaiting);
}

TEST_F(BusyTest, SheetTakesNoInputWhileTheNoticeOfFinishIsUp) {
  m_request.clientName = L"Local";
  const auto session = StartAtFolders();
  GoToSettings(*session, L"Friends");
  session->ClickButton(kFinishButton);
  ASSERT_TRUE(WaitUntil([&] { return Boxes(*session).size() == 1; }));
  EXPECT_FALSE(::IsWindowEnabled(session->Sheet()));
  EXPECT_TRUE(WaitUntil([&] { return ShowsWaitCursor(session->Sheet()); }));
  PressEverything(*session);
  const auto boxes = Boxes(*session);
  ASSERT_EQ(boxes.size(), 1U) << "Finish ran once more within itself";
  EXPECT_TRUE(session->IsOn(Page::kSettings));
  EXPECT_EQ(m_clients.client.moveSwitches, 0);
  ::PostMessageW(::GetDlgItem(boxes[0], IDOK), BM_CLICK, 0, 0);
  EXPECT_EQ(session->Result(), kFinishButton);
  EXPECT_EQ(m_clients.client.moveSwitches, 1);
}

TEST_F(BusyTest, SheetTakesNoInputWhileCancelWaitsForTheClient) {
  CollectUntilLetGo();
  const auto session = StartAtPrefill();
  WizardSession::Require([&] { return m_isCollecting.load(); }, "nothing is collected");
  session->ClickButton(IDCANCEL);
  EXPECT_TRUE(WaitUntil([&] { return !::IsWindowEnabled(session->Sheet()); },
                        std::chrono::milliseconds(2000)))
      << "the sheet was not disabled";
  EXPECT_TRUE(WaitUntil([&] { return ShowsWaitCursor(session->Sheet()); }));
  PressEverything(*session);
  EXPECT_TRUE(session->IsOn(Page::kPrefill));
  m_letGo = true;
  EXPECT_EQ(session->Result(), IDCANCEL);
  EXPECT_EQ(m_clients.client.collections, 1);
}

// The sheet's thread is stopped while the worker posts, and what closes it comes before what was
// posted.
TEST_F(BusyTest, AddressesThatNobodyReadsAreFreedWithThePage) {
  constexpr size_t kLength = 100'000;
  for (wchar_t c = L'a'; c <= L'z'; ++c) {
    m_clients.client.addresses.insert(std::wstring(kLength, c) + L"@b.org");
  }
  const size_t bytes = m_clients.client.addresses.size() * kLength * sizeof(wchar_t);
  CollectUntilLetGo();
  const auto runOnce = [&] {
    m_isCollecting = m_letGo = false;
    const auto session = StartAtPrefill();
    WizardSession::Require([&] { return m_isCollecting.load(); }, "nothing is collected");
    ::Sleep(100);  // the sheet's thread has nothing left to do
    const DWORD id = ::GetWindowThreadProcessId(session->Sheet(), nullptr);
    const KernelHandle thread(::OpenThread(THREAD_SUSPEND_RESUME, FALSE, id));
    ::SuspendThread(thread.Get());
    m_letGo = true;
    ::Sleep(100);
    ::SendNotifyMessageW(session->Sheet(), WM_CLOSE, 0, 0);
    ::ResumeThread(thread.Get());
    EXPECT_EQ(session->Result(), IDCANCEL);
  };
  runOnce();
  const int64_t before = ReadHeapUse().bytes;
  for (int i = 0; i < 4; ++i) {
    runOnce();
  }
  EXPECT_LT(ReadHeapUse().bytes, before + 2 * static_cast<int64_t>(bytes))
      << "of " << 4 * bytes << " bytes posted";
}

}  // namespace
}  // namespace postmarker::test
