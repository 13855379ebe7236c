// The collecting of addresses against a stand-in for Thunderbird in a process of its own.
#include <windows.h>

#include <gmock/gmock.h>

#include <functional>
#include <thread>

#include "support/Handles_win.h"
#include "support/Text.h"
#include "support/ThunderbirdFixture_win.h"

namespace postmarker::test {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;

// The page's side of a harvest.
class ThunderbirdHarvestTest : public ThunderbirdTest {
 protected:
  ThunderbirdHarvestTest() : m_stop(::CreateEventW(nullptr, TRUE, FALSE, nullptr)) {
    m_callbacks.handle = this;
    m_callbacks.isCancelled = &IsStopped;
    m_callbacks.setProgress = &SetTotal;
    m_callbacks.increaseProgress = &Increase;
  }

  static int32_t POSTMARKER_CALL IsStopped(void* handle) {
    auto* const self = static_cast<ThunderbirdHarvestTest*>(handle);
    return ::WaitForSingleObject(self->m_stop.Get(), 0) == WAIT_OBJECT_0 ? 1 : 0;
  }
  static void POSTMARKER_CALL SetTotal(void* handle, const wchar_t* /*text*/, int32_t total) {
    static_cast<ThunderbirdHarvestTest*>(handle)->m_total = total;
  }
  static void POSTMARKER_CALL Increase(void* handle, int32_t steps) {
    static_cast<ThunderbirdHarvestTest*>(handle)->m_steps += steps;
  }

  ResultCode Collect() {
    return ThunderbirdAdapter().CollectSentAddresses({}, &m_callbacks, &m_addresses);
  }

  // Presses Cancel some time after this line is in the client's journal. True if that ended the
  // harvest, false if it took the end of the client: a harvest that does not look at Cancel would
  // go on for ever, or until its own 20 s are over.
  bool EndsByCancelDuring(const std::wstring& line, DWORD pressedAfter = 0) {
    constexpr DWORD kPatienceMs = 10'000;
    const KernelHandle ended(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    bool endsByCancel = false;
    std::thread person([&] {
      Client().Require(line, "the line did not come");
      ::Sleep(pressedAfter);
      ::SetEvent(m_stop.Get());
      endsByCancel = ::WaitForSingleObject(ended.Get(), kPatienceMs) == WAIT_OBJECT_0;
      if (!endsByCancel) {
        Client().Kill();
      }
    });
    EXPECT_EQ(Collect(), kOk);
    ::SetEvent(ended.Get());
    person.join();
    return endsByCancel;
  }

  KernelHandle m_stop;
  ProgressCallbacks m_callbacks;
  AddressSet m_addresses;
  int32_t m_total = 0;
  int32_t m_steps = 0;
};

TEST_F(ThunderbirdHarvestTest, ContactsAndRecipientsAreCollectedWithProgress) {
  EXPECT_EQ(Collect(), kOk);
  EXPECT_THAT(m_addresses, ElementsAre(L"Ben@Post.Example", L"bond@mi6.example",
                                       L"clara@post.example", L"dmitri@post.example"));
  EXPECT_EQ(m_total, 2);
  EXPECT_EQ(m_steps, 2);
}

TEST_F(ThunderbirdHarvestTest, WithoutCallbacksTheSameIsCollected) {
  EXPECT_EQ(ThunderbirdAdapter().CollectSentAddresses({}, nullptr, &m_addresses), kOk);
  EXPECT_EQ(m_addresses.size(), 4U);
}

TEST_F(ThunderbirdHarvestTest, SilentHarvestDoesNotCountTheMails) {
  Client().ClearJournal();
  EXPECT_EQ(ThunderbirdAdapter().HarvestAddresses({}, &m_addresses), kOk);
  EXPECT_EQ(m_addresses.size(), 4U);
  EXPECT_EQ(Client().Count(L"SentItemsEntries"), 0);
  EXPECT_EQ(Client().Count(L"GiveContacts"), 1);
}

TEST_F(ThunderbirdHarvestTest, CancelBeforeTheStartCollectsNothing) {
  ::SetEvent(m_stop.Get());
  EXPECT_EQ(Collect(), kOk);
  EXPECT_THAT(m_addresses, IsEmpty());
}

TEST_F(ThunderbirdHarvestTest, CancelWhileTheCountTheContactsOrTheMailsAreSilentEndsIt) {
  for (const char* command : {"SentItemsEntries", "GiveContacts", "GiveAddressesFromSentItems"}) {
    ::ResetEvent(m_stop.Get());
    Client().ClearJournal();
    Client().SetMailbox(MailboxWith("{\"" + std::string(command) + "\": {\"stopAfter\": 1}}"));
    EXPECT_TRUE(EndsByCancelDuring(WidenUtf8(command), 50)) << command;
  }
}

TEST_F(ThunderbirdHarvestTest, CancelKeepsWhatArrivedAndAStartedClientIsToldToExit) {
  End();
  Client().SetMailbox(MailboxWith(R"({"GiveAddressesFromSentItems": {"stopAfter": 2}})"));
  // What the client sends before it falls silent arrives first.
  EXPECT_TRUE(EndsByCancelDuring(L"GiveAddressesFromSentItems", 300));
  EXPECT_EQ(m_addresses.size(), 4U);
  Client().Require(L"exit", "the client was not told to exit");
}

TEST_F(ThunderbirdHarvestTest, CancelInAStreamThatNeverPausesEndsIt) {
  std::string raw = "\"a@post.example\"";
  for (int i = 0; i < 30; ++i) {
    raw += ",\"a@post.example\"";
  }
  Client().SetMailbox(
      MailboxWith("{\"GiveContacts\": {\"raw\": [" + raw + "], \"repeat\": true}}"));
  EXPECT_TRUE(EndsByCancelDuring(L"GiveContacts"));
  EXPECT_EQ(Client().Count(L"GiveAddressesFromSentItems"), 0);
}

TEST_F(ThunderbirdHarvestTest, CancelWhileTheClientStartsEndsTheWaitAndLeavesItRunning) {
  End();
  Client().SetMailbox(R"({"start": {"serve": false}})");
  EXPECT_TRUE(EndsByCancelDuring(L"window shown"));
  EXPECT_TRUE(Client().IsRunning());
  EXPECT_EQ(Client().Count(L"exit"), 0);
  End();
}

TEST_F(ThunderbirdHarvestTest, StopOfTheSessionEndsEveryOperationWhileTheClientStarts) {
  const ThunderbirdAdapter adapter;
  MailFolderList folders;
  MailFolderRef created;
  const std::function<void(const ClientSession&)> operations[] = {
      [&](const ClientSession& session) { adapter.ListFolders(session, &folders); },
      [&](const ClientSession& session) {
        EXPECT_EQ(adapter.CreateFolder(session, L"x", {}, &created), kNullPointer);
      },
      [&](const ClientSession& session) {
        EXPECT_EQ(adapter.CollectSentAddresses(session, nullptr, &m_addresses), kOk);
      },
      [&](const ClientSession& session) {
        EXPECT_EQ(adapter.HarvestAddresses(session, &m_addresses), kOk);
      }};
  for (const auto& operation : operations) {
    End();
    Client().SetMailbox(R"({"start": {"serve": false}})");
    int asked = 0;
    int askedAfterYes = 0;
    ClientSession session;
    session.stop = [&] {
      askedAfterYes += asked >= 5 ? 1 : 0;
      return ++asked >= 5;
    };
    operation(session);
    EXPECT_GE(asked, 5);
    EXPECT_LE(askedAfterYes, 2) << "it went on after a yes";
    // Before it has told of itself, it can't be ended for the next round.
    Client().Require(L"window shown", "no client was started");
  }
  End();
}

TEST_F(ThunderbirdHarvestTest, StoppedBeforeItBeginsAnOperationStartsNoClient) {
  End();
  ClientSession session;
  session.stop = [] { return true; };
  MailFolderList folders;
  ThunderbirdAdapter().ListFolders(session, &folders);
  EXPECT_EQ(ThunderbirdAdapter().HarvestAddresses(session, &m_addresses), kOk);
  EXPECT_FALSE(Client().HasProcess());
}

TEST_F(ThunderbirdHarvestTest, StoppedWhileItLooksForARunningClientAnOperationStartsNone) {
  End();
  int asked = 0;
  ClientSession session;
  session.stop = [&] { return ++asked > 1; };
  EXPECT_EQ(ThunderbirdAdapter().HarvestAddresses(session, &m_addresses), kOk);
  EXPECT_GT(asked, 1);
  EXPECT_FALSE(Client().HasProcess());
}

// The real limits: each silent command of each operation ends after 20 s, all of them side by side.
TEST_F(ThunderbirdHarvestTest, EverySilentCommandOfTheAdapterEndsAfterTwentySeconds) {
  Client().SetMailbox(MailboxWith(
      R"({"GiveAllFolders": {"stopAfter": 1}, "AddNewFolder": {"stopAfter": 0},
          "SetMoveMails": {"stopAfter": 0}, "SentItemsEntries": {"stopAfter": 0}})"));
  const ThunderbirdAdapter adapter;
  milliseconds times[4] = {};
  MailFolderList folders;
  std::thread threads[] = {
      std::thread([&] { times[0] = TimeOf([&] { adapter.ListFolders({}, &folders); }); }),
      std::thread([&] {
        MailFolderRef created;
        times[1] = TimeOf([&] { EXPECT_EQ(adapter.CreateFolder({}, L"x", {}, &created), kOk); });
      }),
      std::thread([&] { times[2] = TimeOf([&] { adapter.SetMoveMails(true); }); }),
      std::thread([&] { times[3] = TimeOf([&] { EXPECT_EQ(Collect(), kOk); }); })};
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(folders.size(), 1U);
  EXPECT_EQ(m_addresses.size(), 4U);
  for (const milliseconds time : times) {
    EXPECT_GE(time, milliseconds(19'400));
    EXPECT_LT(time, milliseconds(24'000));
  }
}

}  // namespace
}  // namespace postmarker::test
