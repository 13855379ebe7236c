#include <windows.h>

#include <gmock/gmock.h>

#include <algorithm>
#include <limits>
#include <mutex>
#include <random>

#include "settings/FilterSettings.h"
#include "support/ObjectCount_win.h"
#include "wizard/WindowHook_win.h"
#include "wizard/WizardFixture_win.h"
#include "wizard/WorkerMap_win.h"

namespace postmarker::test {
namespace {

using testing::IsEmpty;

class SheetTest : public WizardFixture {
 protected:
  // A sheet without windows, on this thread.
  struct Sheet {
    explicit Sheet(WizardRequest* request) : sheet(L"Kestrelon", request, nullptr, 0) {}
    ModuleStateGuard guard;
    CWizardSheet sheet;
  };

  // Waits until so many workers have done with the client. A worker may outlive its sheet, but not
  // the client, which is the test's.
  [[nodiscard]] bool WaitForWorkers(int count) const {
    return WaitUntil([this, count] { return m_clients.client.defaultFolders == count; });
  }
};

TEST_F(SheetTest, FirstQuestionForTheDefaultFolderLeavesTheRecordAlone) {
  Sheet s(&m_request);
  MailFolderRef rec = {L"before", "b", "b", 7};
  s.sheet.GetDefaultFolder(&rec);
  EXPECT_EQ(rec, (MailFolderRef{L"before", "b", "b", 7}));
  s.sheet.GetDefaultFolder(&rec);
  EXPECT_EQ(rec, SmallStore().back());
}

TEST_F(SheetTest, UnknownClientGetsNoFoldersNoDefaultAndItsOwnNameAsKey) {
  m_request.clientName = L"Pigeon Post";
  Sheet s(&m_request);
  MailFolderList folders;
  s.sheet.GetFolders(&folders);
  EXPECT_THAT(folders, IsEmpty());
  MailFolderRef rec = {L"before", "b", "b", 7};
  s.sheet.GetDefaultFolder(&rec);
  s.sheet.GetDefaultFolder(&rec);
  EXPECT_EQ(rec, MailFolderRef());
  EXPECT_EQ(s.sheet.GetClientSettingsName(), L"Pigeon Post");
  EXPECT_TRUE(s.sheet.CanCreateFolder());
  EXPECT_EQ(s.sheet.CreateFolder(L"x", {}, &rec), kFail);
}

TEST_F(SheetTest, ClientNamesAreComparedWithoutRegardToCase) {
  m_request.clientName = L"wINDOWS mAIL";
  Sheet s(&m_request);
  EXPECT_EQ(s.sheet.GetClientSettingsName(), L"Outlook Express");
}

TEST_F(SheetTest, WithoutARequestEveryOperationKeepsStill) {
  // A client that would answer to the name that no request gives.
  m_clients.client.needsHold = true;
  const ClientRow nameless[] = {{.settingsName = L"Nameless", .adapter = &m_clients.client}};
  const ScopedClientTable table(nameless);
  Sheet s(nullptr);
  MailFolderList folders = {{L"before", "b", "b", 7}};
  s.sheet.GetFolders(&folders);
  EXPECT_EQ(folders.size(), 1U);
  MailFolderRef rec = {L"before", "b", "b", 7};
  s.sheet.GetDefaultFolder(&rec);
  s.sheet.GetDefaultFolder(&rec);
  EXPECT_EQ(rec.name, L"before");
  EXPECT_TRUE(s.sheet.AreFoldersReady());
  EXPECT_EQ(s.sheet.ChooseClient(L"Plain"), kNullPointer);
  EXPECT_EQ(s.sheet.LoadConfiguredSpamFolder(&rec), kFail);
  EXPECT_EQ(s.sheet.SetSpamFolder(rec), kFail);
  EXPECT_EQ(s.sheet.CreateFolder(L"x", rec, &rec), kFail);
  EXPECT_EQ(s.sheet.ApplySettings(), kOk);
  s.sheet.StartFolderWorker();
  EXPECT_EQ(rec, (MailFolderRef{L"before", "b", "b", 7}));
  EXPECT_EQ(m_clients.client.connections, 0);
  EXPECT_EQ(m_clients.client.creations, 0);
  EXPECT_EQ(m_clients.client.listings, 0);
  EXPECT_THAT(DumpRegistry(m_registry.User()), IsEmpty());
}

TEST_F(SheetTest, WithoutARequestTheSettingsNameIsEmpty) {
  const Sheet s(nullptr);
  EXPECT_EQ(s.sheet.GetClientSettingsName(), L"");
}

TEST_F(SheetTest, FoldersAreReadOnThisThreadIfNoWorkerDid) {
  Sheet s(&m_request);
  EXPECT_FALSE(s.sheet.AreFoldersReady());
  MailFolderList folders;
  s.sheet.GetFolders(&folders);
  EXPECT_EQ(folders, SmallStore());
  EXPECT_TRUE(s.sheet.AreFoldersReady());
}

TEST_F(SheetTest, WorkerThatFoundNothingCountsAsReadyWhenItEnds) {
  m_clients.client.folders.clear();
  Sheet s(&m_request);
  EXPECT_FALSE(s.sheet.AreFoldersReady());
  s.sheet.StartFolderWorker();
  EXPECT_TRUE(WaitUntil([&] { return s.sheet.AreFoldersReady(); }));
}

TEST_F(SheetTest, WorkerWhoseStoreGoesAwayEndsAsOneThatFoundNoFolders) {
  m_clients.client.beforeListing = &LoseDrive;
  Sheet s(&m_request);
  s.sheet.StartFolderWorker();
  EXPECT_TRUE(WaitUntil([&] { return s.sheet.AreFoldersReady(); }));
  EXPECT_EQ(m_clients.client.listings, 0);
  EXPECT_THAT(m_request.folders, IsEmpty());
  MailFolderRef rec;
  s.sheet.GetDefaultFolder(&rec);
  EXPECT_EQ(rec, SmallStore().back()) << "the worker gave up";
}

TEST_F(SheetTest, OneSheetHasOneWorker) {
  Sheet s(&m_request);
  s.sheet.StartFolderWorker();
  s.sheet.StartFolderWorker();
  EXPECT_TRUE(WaitUntil([&] { return s.sheet.AreFoldersReady(); }));
  ::Sleep(50);
  EXPECT_EQ(m_clients.client.listings, 1);
}

TEST_F(SheetTest, ClientThatNeedsItIsHeldFromTheWorkersStartToTheSheetsEnd) {
  m_clients.client.needsHold = true;
  {
    Sheet s(&m_request);
    EXPECT_EQ(m_clients.client.holds, 0);
    s.sheet.StartFolderWorker();
    s.sheet.StartFolderWorker();
    EXPECT_TRUE(WaitUntil([&] { return s.sheet.AreFoldersReady(); }));
    EXPECT_EQ(m_clients.client.holds, 1);
    EXPECT_EQ(m_clients.client.connections, 1);
  }
  EXPECT_EQ(m_clients.client.holds, 0);
}

TEST_F(SheetTest, PreparingTwiceConnectsTheOneHoldTwice) {
  m_clients.client.needsHold = true;
  Sheet s(&m_request);
  MailFolderList folders;
  s.sheet.GetFolders(&folders);
  s.sheet.StartFolderWorker();
  EXPECT_EQ(m_clients.client.holds, 1);
  EXPECT_EQ(m_clients.client.connections, 2);
  EXPECT_TRUE(WaitForWorkers(1));
}

TEST_F(SheetTest, CreatedFolderBecomesTheSpamFolderAndTheLastOfTheList) {
  Sheet s(&m_request);
  MailFolderList folders;
  s.sheet.GetFolders(&folders);
  MailFolderRef rec;
  EXPECT_EQ(s.sheet.CreateFolder(L"New", folders[1], &rec), kOk);
  EXPECT_EQ(m_request.spamFolder, rec);
  EXPECT_EQ(m_request.folders.back(), rec);
}

TEST_F(SheetTest, CreatedFolderWithoutAnIdIsAFailureThatChangesNothing) {
  m_clients.client.createsWithoutId = true;
  Sheet s(&m_request);
  MailFolderList folders;
  s.sheet.GetFolders(&folders);
  MailFolderRef rec = {L"before", "b", "b", 7};
  EXPECT_EQ(s.sheet.CreateFolder(L"New", folders[1], &rec), kFail);
  EXPECT_EQ(m_clients.client.creations, 1);
  EXPECT_EQ(rec.name, L"before");
  EXPECT_EQ(m_request.spamFolder, MailFolderRef());
  EXPECT_EQ(m_request.folders, SmallStore());
}

TEST_F(SheetTest, FoldersArriveUnderTheirLock) {
  Sheet s(&m_request);
  std::unique_lock lock(FolderLock);
  s.sheet.StartFolderWorker();
  ASSERT_TRUE(WaitUntil([&] { return m_clients.client.listings == 1; }));
  ::Sleep(100);
  EXPECT_THAT(m_request.folders, IsEmpty()) << "they came while the lock was held";
  lock.unlock();
  EXPECT_TRUE(WaitUntil([&] { return s.sheet.AreFoldersReady(); }));
  EXPECT_EQ(m_request.folders, SmallStore());
}

TEST_F(SheetTest, WorkerIsToldToStopOnceItsSheetIsGone) {
  std::atomic<bool> letGo = false;
  std::atomic<bool> isListing = false;
  std::atomic<bool> isToStop = false;
  m_clients.client.whileListing = [&](const ClientSession& session) {
    do {
      isToStop = ShouldStop(session.stop);
      isListing = true;
      ::Sleep(1);
    } while (!letGo);
  };
  {
    Sheet s(&m_request);
    s.sheet.StartFolderWorker();
    ASSERT_TRUE(WaitUntil([&] { return isListing.load(); }));
    EXPECT_FALSE(isToStop);
  }
  EXPECT_TRUE(WaitUntil([&] { return isToStop.load(); }, std::chrono::milliseconds(2000)))
      << "the sheet is gone and its entry in WorkerMap is not";
  letGo = true;
  EXPECT_TRUE(WaitForWorkers(1));
}

TEST_F(SheetTest, StoreIdOfTheClientsListWinsOverTheSavedOne) {
  m_request.clientName = L"Local";
  {
    FilterSettings settings(L"Local");
    settings.SetSpamFolderId("2");
    settings.SetMessageStoreId("old", 3);
  }
  Sheet s(&m_request);
  MailFolderRef rec;
  EXPECT_EQ(s.sheet.LoadConfiguredSpamFolder(&rec), kOk);
  EXPECT_EQ(rec.secondId, "store");
}

TEST_F(SheetTest, SavedStoreIdEndsAtItsFirstZeroByte) {
  {
    FilterSettings settings(L"Plain");
    settings.SetSpamFolderId("2");
    settings.SetMessageStoreId("ab\0cd", 5);
  }
  Sheet s(&m_request);
  MailFolderRef rec;
  EXPECT_EQ(s.sheet.LoadConfiguredSpamFolder(&rec), kOk);
  EXPECT_EQ(rec.secondId, "ab");
  EXPECT_EQ(rec.flag, 1U);
}

TEST_F(SheetTest, ClientWithoutLocalIdsKeepsTheChosenFoldersOwnId) {
  Sheet s(&m_request);
  const MailFolderRef trash = SmallStore().back();
  EXPECT_EQ(s.sheet.SetSpamFolder(trash), kOk);
  EXPECT_EQ(m_request.spamFolder, trash);
}

// What a round of work leaves behind for good, counting as little as the best of several rounds
// does: the first fill caches, and a thread may be about to end.
struct LeftBehind {
  int64_t bytes = std::numeric_limits<int64_t>::max();
  int64_t handles = std::numeric_limits<int64_t>::max();
};

template <class Round>
LeftBehind LeftBehindBy(Round round) {
  LeftBehind least;
  for (int i = 0; i < 4 && (least.bytes > 0 || least.handles > 0); ++i) {
    const int64_t bytes = ReadHeapUse().bytes;
    const int64_t handles = CountKernelHandles();
    round();
    ::Sleep(100);
    least.bytes = std::min(least.bytes, ReadHeapUse().bytes - bytes);
    least.handles = std::min(least.handles, CountKernelHandles() - handles);
  }
  return least;
}

TEST_F(SheetTest, SheetsDestroyedWhileTheirWorkersReadLeaveNothingBehind) {
  std::mt19937 random(20);
  std::atomic<int> delay = 0;
  int workers = 0;
  m_clients.client.beforeListing = [&] { ::Sleep(static_cast<DWORD>(delay)); };
  const LeftBehind left = LeftBehindBy([&] {
    for (int i = 0; i < 100; ++i) {
      delay = static_cast<int>(random() % 20);
      WizardRequest request;
      request.clientName = L"Plain";
      Sheet s(&request);
      s.sheet.StartFolderWorker();
      ++workers;
      ::Sleep(random() % 20);
    }
    EXPECT_TRUE(WaitForWorkers(workers));
  });
  EXPECT_LE(left.bytes, 0);
  EXPECT_LE(left.handles, 0);
}

// A host's way to do the same, with windows.
TEST_F(SheetTest, WizardsCancelledWhileReadingLeaveNothingBehind) {
  std::mt19937 random(6);
  m_clients.client.needsHold = true;
  m_clients.client.beforeListing = [] { ::Sleep(5); };
  constexpr int kWizards = 20;
  constexpr int kBytesThatWineKeeps = 40;  // a block of its own for each sheet
  const LeftBehind left = LeftBehindBy([&] {
    for (int i = 0; i < kWizards; ++i) {
      WizardRequest request;
      request.clientName = L"Plain";
      WizardSession session(&WizardFixture::RunSheet, &request);
      session.WaitForPage(Page::kWelcome);
      session.ClickButton(kNextButton);
      session.WaitForPage(Page::kFolders);
      ::Sleep(random() % 20);
      session.Close();
      EXPECT_EQ(session.Result(), IDCANCEL);
      EXPECT_EQ(request.sheetWindow, nullptr);
    }
    // The page may have been closed before it started a worker.
    EXPECT_TRUE(WaitForWorkers(m_clients.client.connections));
  });
  EXPECT_LE(left.bytes, kWizards * kBytesThatWineKeeps);
  EXPECT_LE(left.handles, 0);
}

// The window hook module, stood in for by functions.
std::string g_hookCalls;  // in their order
int g_initHooks = 0;
int g_hookedWindows = 0;
int g_uninitHooks = 0;
void __stdcall InitHook(HWND /*window*/) {
  g_hookCalls += "init ";
  ++g_initHooks;
}
void __stdcall AddHookableWindow(HWND /*window*/) {
  g_hookCalls += "add ";
  ++g_hookedWindows;
}
void __stdcall UninitHook() {
  g_hookCalls += "uninit ";
  ++g_uninitHooks;
}

class WindowHookTest : public SheetTest {
 protected:
  WindowHookTest() {
    g_initHooks = g_hookedWindows = g_uninitHooks = 0;
    g_hookCalls.clear();
    HookActive = 0;
    WindowHook().InitHook = &InitHook;
    WindowHook().AddHookableWindow = &AddHookableWindow;
    WindowHook().UninitHook = &UninitHook;
  }
  ~WindowHookTest() override {
    WindowHook().Clear();
    HookActive = 0;
  }
  void RunAndCancel() {
    WizardSession session(&WizardFixture::RunSheet, &m_request);
    session.WaitForPage(Page::kWelcome);
    session.ClickButton(IDCANCEL);
    EXPECT_EQ(session.Result(), IDCANCEL);
  }
};

TEST_F(WindowHookTest, RequestThatAsksForItHooksTheSheetOnceAndEndsIt) {
  m_request.useWindowHook = 1;
  RunAndCancel();
  EXPECT_EQ(g_initHooks, 1);
  EXPECT_EQ(g_hookedWindows, 1);
  EXPECT_EQ(g_uninitHooks, 1);
  EXPECT_EQ(g_hookCalls, "init add uninit ");
  EXPECT_EQ(HookActive, 0U);
}

TEST_F(WindowHookTest, RequestThatDoesNotAskLeavesTheHookAlone) {
  RunAndCancel();
  EXPECT_EQ(g_initHooks + g_hookedWindows + g_uninitHooks, 0);
}

TEST_F(WindowHookTest, HookOfAnotherWindowIsLeftToIt) {
  m_request.useWindowHook = 1;
  HookActive = 1;
  RunAndCancel();
  EXPECT_EQ(g_initHooks + g_uninitHooks, 0);
  EXPECT_EQ(HookActive, 1U);
}

TEST_F(WindowHookTest, MissingEntryPointMeansNoHook) {
  m_request.useWindowHook = 1;
  WindowHook().AddHookableWindow = nullptr;
  RunAndCancel();
  EXPECT_EQ(g_initHooks + g_uninitHooks, 0);
}

}  // namespace
}  // namespace postmarker::test
