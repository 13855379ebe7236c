#include <windows.h>

#include <gmock/gmock.h>

#include <filesystem>

#include "clients/MachineView.h"
#include "module/ModuleFixture_win.h"
#include "support/Stage_win.h"

namespace postmarker::test {
namespace {

using testing::ElementsAre;

class ShowWizardTest : public ModuleFixture {
 protected:
  ShowWizardTest() { Load(); }

  static int CountVisibleWindows() {
    int count = 0;
    ::EnumWindows(&CountIfOurs, reinterpret_cast<LPARAM>(&count));
    return count;
  }

 private:
  static BOOL CALLBACK CountIfOurs(HWND window, LPARAM argument) {
    DWORD process = 0;
    ::GetWindowThreadProcessId(window, &process);
    if (process == ::GetCurrentProcessId() && ::IsWindowVisible(window)) {
      ++*reinterpret_cast<int*>(argument);
    }
    return TRUE;
  }
};

// A window of the test's own, with a message loop on a thread of its own.
class OwnerWindow {
 public:
  OwnerWindow() : m_thread([this] { Run(); }) {
    WizardSession::Require([this] { return m_window.load() != nullptr; }, "no owner window");
  }
  OwnerWindow(const OwnerWindow&) = delete;
  OwnerWindow& operator=(const OwnerWindow&) = delete;
  ~OwnerWindow() {
    Destroy();
    m_thread.join();
  }
  [[nodiscard]] HWND Get() const { return m_window; }
  void Destroy() const { ::PostMessageW(m_window, WM_CLOSE, 0, 0); }

 private:
  void Run() {
    m_window = ::CreateWindowExW(0, L"STATIC", L"A host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 40, 40,
                                 400, 300, nullptr, nullptr, nullptr, nullptr);
    MSG message = {};
    while (::IsWindow(m_window) && ::GetMessageW(&message, nullptr, 0, 0) > 0) {
      ::DispatchMessageW(&message);
    }
  }

  std::atomic<HWND> m_window = nullptr;
  std::thread m_thread;
};

TEST_F(ShowWizardTest, NullRequestReturnsCancelAndShowsNothing) {
  EXPECT_EQ(m_module->ShowWizard(nullptr), IDCANCEL);
  EXPECT_EQ(CountVisibleWindows(), 0);
}

TEST_F(ShowWizardTest, GivenClientGoesStraightFromWelcomeToFolders) {
  m_request.clientName = L"Windows Mail";
  const auto session = StartAtFolders();
  EXPECT_TRUE(session->IsOn(Page::kFolders));
}

TEST_F(ShowWizardTest, WithoutTrainingTheSettingsFollowTheAddresses) {
  const auto session = StartAtFolders();
  session->ClickItem(L"Junk");
  session->ClickButton(kNextButton);
  session->WaitForAddresses();
  // A tab for each page: welcome, folders, addresses, settings.
  const auto tabs =
      reinterpret_cast<HWND>(::SendMessageW(session->Sheet(), PSM_GETTABCONTROL, 0, 0));
  EXPECT_EQ(::SendMessageW(tabs, TCM_GETITEMCOUNT, 0, 0), 4);
  session->ClickButton(kNextButton);
  session->WaitForPage(Page::kSettings);
}

TEST_F(ShowWizardTest, VersionOfTheModuleIsReadFromItsResource) {
  const std::wstring path = StageFolder() + L"\\Spamfilter\\Postmarker.dll";
  const auto text = ThisMachine().FileVersionText(path);
  ASSERT_TRUE(text.has_value());
  // The same version is in the file once more, as numbers.
  std::vector<BYTE> info(::GetFileVersionInfoSizeW(path.c_str(), nullptr));
  VS_FIXEDFILEINFO* numbers = nullptr;
  UINT size = 0;
  ASSERT_TRUE(::GetFileVersionInfoW(path.c_str(), 0, static_cast<DWORD>(info.size()), info.data()));
  ASSERT_TRUE(::VerQueryValueW(info.data(), L"\\", reinterpret_cast<void**>(&numbers), &size));
  EXPECT_EQ(*text, std::to_wstring(HIWORD(numbers->dwFileVersionMS)) + L"." +
                       std::to_wstring(LOWORD(numbers->dwFileVersionMS)) + L"." +
                       std::to_wstring(HIWORD(numbers->dwFileVersionLS)));
}

TEST_F(ShowWizardTest, FoldersOfTheDefaultIdentityAreShown) {
  const auto session = StartAtFolders();
  EXPECT_THAT(session->TreeLines(),
              ElementsAre("Anna*", "  Inbox", "    Grüße", "  Sent Items", "  Junk"));
}

TEST_F(ShowWizardTest, FinishLeavesTheAnswersInTheRecord) {
  EXPECT_EQ(Finish(L"Grüße"), kWizardFinished);
  EXPECT_EQ(m_request.spamFolder,
            (MailFolderRef{L"\\\\Anna\\Inbox\\Grüße", Narrow(ImGuid(3)), "{ANNA}", 1}));
  EXPECT_EQ(m_request.folders.size(), 5U);
  EXPECT_EQ(m_request.addUnblocked, 1);
  EXPECT_EQ(m_request.sheetWindow, nullptr);
  EXPECT_EQ(m_request.hostData, 0U);
}

TEST_F(ShowWizardTest, CancelOnEachPageReturnsCancel) {
  {
    WizardSession session(Show(), &m_request);
    session.WaitForPage(Page::kWelcome);
    session.ClickButton(IDCANCEL);
    EXPECT_EQ(session.Result(), IDCANCEL);
    EXPECT_EQ(DumpRegistryOfSuite(), std::vector<std::string>());
  }
  {
    const auto session = StartAtFolders();
    session->ClickButton(IDCANCEL);
    EXPECT_EQ(session->Result(), IDCANCEL);
  }
  {
    const auto session = StartAtFolders();
    session->ClickItem(L"Junk");
    session->ClickButton(kNextButton);
    session->WaitForPage(Page::kPrefill);
    session->ClickButton(IDCANCEL);
    EXPECT_EQ(session->Result(), IDCANCEL);
  }
  const auto session = StartAtFolders();
  session->ClickItem(L"Junk");
  session->ClickButton(kNextButton);
  session->PassAddresses();
  session->ClickButton(IDCANCEL);
  EXPECT_EQ(session->Result(), IDCANCEL);
  // The folder page has read the settings, which completes a record that was not there; no answer
  // is in it.
  const auto lines = DumpRegistryOfSuite();
  EXPECT_THAT(lines, testing::Not(testing::Contains(testing::HasSubstr("LastConfigured"))));
  EXPECT_THAT(lines, testing::Contains(testing::HasSubstr("ShowWizard | REG_DWORD | 01000000")));
  EXPECT_THAT(lines, testing::Contains(testing::HasSubstr("SpamFolderId | REG_BINARY | 3000")));
}

TEST_F(ShowWizardTest, CloseButtonCancels) {
  WizardSession session(Show(), &m_request);
  session.WaitForPage(Page::kWelcome);
  ::PostMessageW(session.Sheet(), WM_SYSCOMMAND, SC_CLOSE, 0);
  EXPECT_EQ(session.Result(), IDCANCEL);
}

TEST_F(ShowWizardTest, OwnerThatIsGoneReturnsCancelAndShowsNothing) {
  HWND gone = nullptr;
  {
    const OwnerWindow owner;
    gone = owner.Get();
  }
  m_request.parentWindow = gone;
  EXPECT_EQ(m_module->ShowWizard(&m_request), IDCANCEL);
  EXPECT_EQ(CountVisibleWindows(), 0);
}

TEST_F(ShowWizardTest, OwnerIsDisabledWhileTheWizardIsUp) {
  const OwnerWindow owner;
  m_request.parentWindow = owner.Get();
  WizardSession session(Show(), &m_request);
  session.WaitForPage(Page::kWelcome);
  EXPECT_EQ(::GetWindow(session.Sheet(), GW_OWNER), owner.Get());
  EXPECT_FALSE(::IsWindowEnabled(owner.Get()));
  session.ClickButton(IDCANCEL);
  EXPECT_EQ(session.Result(), IDCANCEL);
  EXPECT_TRUE(::IsWindowEnabled(owner.Get()));
}

TEST_F(ShowWizardTest, OwnerDestroyedMeanwhileCancelsTheWizard) {
  const OwnerWindow owner;
  m_request.parentWindow = owner.Get();
  WizardSession session(Show(), &m_request);
  session.WaitForPage(Page::kWelcome);
  owner.Destroy();
  EXPECT_EQ(session.Result(), IDCANCEL);
  EXPECT_EQ(m_request.sheetWindow, nullptr);
}

TEST_F(ShowWizardTest, OwnerOfTheSameThreadDestroyedMeanwhileCancelsTheWizard) {
  std::atomic<HWND> owner = nullptr;
  WizardSession session(
      [&](WizardRequest* request) {
        owner = ::CreateWindowExW(0, L"STATIC", L"A host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 40, 40,
                                  400, 300, nullptr, nullptr, nullptr, nullptr);
        request->parentWindow = owner;
        return m_module->ShowWizard(request);
      },
      &m_request);
  session.WaitForPage(Page::kWelcome);
  ::PostMessageW(owner, WM_CLOSE, 0, 0);
  EXPECT_EQ(session.Result(), IDCANCEL);
  EXPECT_EQ(m_request.sheetWindow, nullptr);
}

TEST_F(ShowWizardTest, QuitMessageEndsTheWizardAndReachesTheHost) {
  std::atomic<DWORD> thread = 0;
  std::atomic<bool> sawQuit = false;
  WizardSession session(
      [&](WizardRequest* request) {
        thread = ::GetCurrentThreadId();
        const int32_t result = m_module->ShowWizard(request);
        MSG message = {};
        sawQuit = ::PeekMessageW(&message, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE) != 0 &&
                  message.wParam == 7;
        return result;
      },
      &m_request);
  session.WaitForPage(Page::kWelcome);
  ::PostThreadMessageW(thread, WM_QUIT, 7, 0);
  EXPECT_EQ(session.Result(), IDCANCEL);
  EXPECT_TRUE(sawQuit);
}

TEST_F(ShowWizardTest, TwoWizardsOneAfterTheOther) {
  EXPECT_EQ(Finish(L"Junk"), kWizardFinished);
  WizardRequest second;
  second.clientName = L"IncrediMail";
  std::swap(m_request, second);
  const auto session = StartAtFolders();
  EXPECT_EQ(session->SelectedText(), L"Junk");
  session->ClickButton(IDCANCEL);
  EXPECT_EQ(session->Result(), IDCANCEL);
}

TEST_F(ShowWizardTest, WizardAfterTheModuleWasUnloadedAndLoadedAgain) {
  EXPECT_EQ(Finish(L"Junk"), kWizardFinished);
  Unload();
  EXPECT_TRUE(WaitUntil([] { return ::GetModuleHandleW(L"Postmarker.dll") == nullptr; }));
  Load();
  m_request = {};
  m_request.clientName = L"IncrediMail";
  EXPECT_EQ(Finish(L"Inbox"), kWizardFinished);
}

TEST_F(ShowWizardTest, ModuleUnloadedWhileItsWorkerReadsStaysUntilTheWorkerLeaves) {
  std::vector<ImRow> rows = {{ImGuid(1), L"", 0, L""}};
  for (uint32_t i = 2; i < 8000; ++i) {
    rows.push_back({ImGuid(i), ImGuid(1), static_cast<int>(i), L"Folder " + std::to_wstring(i)});
  }
  m_client.AddStore(L"{MANY}", rows);
  m_client.AddIdentity(L"{MANY}", L"Many", 9);
  m_client.SetDefaultIdentity(L"{MANY}");
  for (int i = 0; i < 5; ++i) {
    {
      WizardSession session(Show(), &m_request);
      session.WaitForPage(Page::kWelcome);
      session.ClickButton(kNextButton);
      session.WaitForPage(Page::kFolders);
      session.ClickButton(IDCANCEL);
      EXPECT_EQ(session.Result(), IDCANCEL);
    }
    Unload();
    EXPECT_TRUE(WaitUntil([] { return ::GetModuleHandleW(L"Postmarker.dll") == nullptr; }));
    Load();
  }
}

TEST_F(ShowWizardTest, TwoWizardsOnTwoThreadsHaveARecordOfTheirOwn) {
  WizardRequest other;
  other.clientName = L"IncrediMail";
  WizardSession second(Show(), &other);
  second.WaitForPage(Page::kWelcome);
  EXPECT_EQ(Finish(L"Junk"), kWizardFinished);
  second.ClickButton(IDCANCEL);
  EXPECT_EQ(second.Result(), IDCANCEL);
  EXPECT_EQ(other.spamFolder, MailFolderRef());
}

TEST_F(ShowWizardTest, CanBeWorkedByKeysAlone) {
  WizardSession session(Show(), &m_request);
  session.WaitForPage(Page::kWelcome);
  const auto press = [](WORD key) {
    INPUT input[2] = {};
    input[0].type = input[1].type = INPUT_KEYBOARD;
    input[0].ki.wVk = input[1].ki.wVk = key;
    input[1].ki.dwFlags = KEYEVENTF_KEYUP;
    ::SendInput(2, input, sizeof(INPUT));
  };
  ::SetForegroundWindow(session.Sheet());
  press(VK_RETURN);
  session.WaitForTree();
  press(VK_HOME);
  press(VK_DOWN);
  WizardSession::Require([&] { return session.SelectedText() == L"Inbox"; },
                         "the keys went elsewhere");
  press(VK_RETURN);
  session.WaitForAddresses();
  WizardSession::Require([&] { return session.IsButtonUsable(kNextButton); }, "no Next");
  press(VK_RETURN);
  session.WaitForPage(Page::kSettings);
  press(VK_RETURN);
  EXPECT_EQ(session.Result(), kWizardFinished);
  EXPECT_EQ(m_request.spamFolder.firstId, Narrow(ImGuid(2)));
}

}  // namespace
}  // namespace postmarker::test
