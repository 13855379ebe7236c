// The bridge and the adapter against a stand-in for Thunderbird in a process of its own.
#include <windows.h>

#include <gmock/gmock.h>

#include <thread>

#include "support/Text.h"
#include "support/ThunderbirdFixture_win.h"

namespace postmarker::test {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;

TEST_F(ThunderbirdTest, RunningClientIsUsedAndLeftRunningWithoutAWord) {
  Client().ClearJournal();
  {
    const auto connection = Connect();
    EXPECT_EQ(connection->alreadyRunning, 1);
    EXPECT_EQ(ReleaseThunderbird(connection.get()), kOk);
  }
  EXPECT_EQ(FolderNames().size(), 6U);
  EXPECT_THAT(Client().Journal(), ElementsAre(testing::StartsWith(L"started "),
                                              testing::EndsWith(L"> GiveAllFolders")));
}

TEST_F(ThunderbirdTest, ClientThatDoesNotRunIsStartedHiddenAndToldToExit) {
  End();
  {
    const auto connection = Connect();
    EXPECT_EQ(connection->alreadyRunning, 0);
    Client().Require(L"window hidden", "the window was not hidden");
    const DWORD process = Client().Processes().at(0);
    EXPECT_EQ(Client().Journal().at(0), L"started " + std::to_wstring(process) + L" 0");
    EXPECT_EQ(ReleaseThunderbird(connection.get()), kOk);
  }
  Client().Require(L"exit", "the client was not told to exit");
  EXPECT_TRUE(WaitUntil([] { return !Client().IsRunning(); }));
  EXPECT_EQ(Client().Count(L"HideThunderbirdWindow"), 1);
  EXPECT_EQ(Client().Count(L"ExitThunderbird"), 1);
}

TEST_F(ThunderbirdTest, SlowStartIsWaitedFor) {
  End();
  Client().SetMailbox(R"({"start": {"delayMs": 400}})");
  ThunderbirdConnection connection;
  EXPECT_EQ(ConnectOrLaunch(&connection, kThunderbirdStartMilliseconds), kOk);
  EXPECT_EQ(connection.alreadyRunning, 0);
}

TEST_F(ThunderbirdTest, ClientThatNeverServesFailsAfterTheLimitAndIsLeftRunning) {
  End();
  Client().SetMailbox(R"({"start": {"serve": false}})");
  ThunderbirdConnection connection;
  const milliseconds time = TimeOf([&] { EXPECT_EQ(ConnectOrLaunch(&connection, 400), kFail); });
  // 2 attempts with 100 ms between them, then 20 with 20 ms.
  EXPECT_GE(time, milliseconds(450));
  Client().Require(L"window shown", "the client was not started");
  EXPECT_TRUE(Client().IsRunning());
  EXPECT_EQ(Client().Count(L"exit"), 0);
  End();
}

// Closes the box in which the system tells of the missing file, as the person would.
class BoxCloser {
 public:
  BoxCloser()
      : m_thread([this] {
          while (!m_ends) {
            if (const HWND box = FindVisibleWindow(L"#32770")) {
              ::PostMessageW(box, WM_COMMAND, IDOK, 0);
            }
            ::Sleep(5);
          }
        }) {}
  BoxCloser(const BoxCloser&) = delete;
  BoxCloser& operator=(const BoxCloser&) = delete;
  ~BoxCloser() {
    m_ends = true;
    m_thread.join();
  }

 private:
  std::atomic<bool> m_ends = false;
  std::thread m_thread;
};

TEST(ThunderbirdStart, IsGivenFifteenSeconds) {
  EXPECT_EQ(kThunderbirdStartMilliseconds, 15'000);
}

TEST_F(ThunderbirdTest, ProgramThatIsGoneFailsAndNewFolderGivesItsOwnCode) {
  End();
  Client().RegisterAs(L"C:\\no such folder\\thunderbird.exe");
  {
    const BoxCloser closer;
    ThunderbirdConnection connection;
    EXPECT_EQ(ConnectOrLaunch(&connection, kThunderbirdStartMilliseconds), kFail);
    MailFolderRef created = {L"as before", "", "", 0};
    EXPECT_EQ(ThunderbirdAdapter().CreateFolder({}, L"x", {}, &created), kNullPointer);
    EXPECT_EQ(created.name, L"as before");
  }
  Client().Register();
}

TEST_F(ThunderbirdTest, ClientThatIsNotInstalledFailsEvenWhileItServes) {
  RegistryKey::Open(HKEY_LOCAL_MACHINE, ThunderbirdInstallation::kClientKey, KEY_ALL_ACCESS)
      .DeleteValue(L"CurrentVersion");
  ThunderbirdConnection connection;
  EXPECT_EQ(ConnectOrLaunch(&connection, kThunderbirdStartMilliseconds), kFail);
  EXPECT_EQ(AllFolders(), MailFolderList());
  AddressSet addresses;
  EXPECT_EQ(ThunderbirdAdapter().CollectSentAddresses({}, nullptr, &addresses), kFail);
  EXPECT_EQ(ThunderbirdAdapter().HarvestAddresses({}, &addresses), kFail);
  MailFolderRef created;
  EXPECT_EQ(ThunderbirdAdapter().CreateFolder({}, L"x", {}, &created), kNullPointer);
  ThunderbirdAdapter().SetMoveMails(true);
  EXPECT_EQ(Client().Count(L"SetMoveMails"), 0);
  Client().Register();
}

TEST_F(ThunderbirdTest, ConnectingTwiceConnectsTwiceAndTheSecondResultStands) {
  End();
  const auto connection = Connect();
  EXPECT_EQ(connection->alreadyRunning, 0);
  EXPECT_EQ(ConnectOrLaunch(connection.get(), kThunderbirdStartMilliseconds), kOk);
  EXPECT_EQ(connection->alreadyRunning, 1);
  MailFolderList folders;
  EXPECT_EQ(thunderbird::GiveAllFolders(connection.get(), kQuickLimit, &folders), kOk);
  EXPECT_EQ(folders.size(), 6U);
  EXPECT_EQ(Client().Count(L"exit"), 0);
}

TEST_F(ThunderbirdTest, HoldThatNeverConnectedReleasesNothing) {
  WizardRequest request;
  ThunderbirdAdapter().MakeHold(&request)->Disconnect();
  EXPECT_EQ(Client().Count(L"ExitThunderbird"), 0);
}

TEST_F(ThunderbirdTest, FoldersComeWithTheirLevelsIdsAndFlags) {
  EXPECT_THAT(AllFolders(),
              ElementsAre(MailFolderRef{L"Local Folders", "1", "local", 1},
                          MailFolderRef{L"Local Folders\\Trash", "2", "local", 1},
                          MailFolderRef{L"Local Folders\\Входящие", "3", "local", 0},
                          MailFolderRef{L"Local Folders\\Входящие\\Grüße", "4", "local", 1},
                          MailFolderRef{L"anna@post.example", "5", "imap", 1},
                          MailFolderRef{L"anna@post.example\\Inbox", "6", "imap", 1}));
}

TEST_F(ThunderbirdTest, DefaultFolderIsTheLastTrashOfTheLocalFolders) {
  const ThunderbirdAdapter adapter;
  EXPECT_EQ(adapter.FindDefaultFolder({}, AllFolders()).firstId, "2");
  const MailFolderList folders = {{L"local folders\\TRASH", "a", "s", 1},
                                  {L"\\\\Local Folders\\Trash", "b", "s", 1},
                                  {L"\\Local Folders\\Trash", "c", "s", 1},
                                  {L"Local Folders\\Trash\\Old", "d", "s", 1}};
  EXPECT_EQ(adapter.FindDefaultFolder({}, folders).firstId, "b");
  EXPECT_EQ(adapter.FindDefaultFolder({}, {}), MailFolderRef());
}

TEST_F(ThunderbirdTest, CreatedFolderIsInTheClient) {
  const ThunderbirdAdapter adapter;
  EXPECT_TRUE(adapter.CanCreateFolder());
  MailFolderRef created;
  const MailFolderRef parent = {L"Local Folders\\Входящие", "3", "local", 0};
  EXPECT_EQ(adapter.CreateFolder({}, L"Спам", parent, &created), kOk);
  EXPECT_EQ(created.name, L"Local Folders\\Входящие\\Спам");
  EXPECT_EQ(created.secondId, "local");
  EXPECT_EQ(created.flag, 0U);
  EXPECT_THAT(FolderNames(), testing::Contains(L"Local Folders\\Входящие\\Спам"));
}

TEST_F(ThunderbirdTest, NewFolderWithoutAnAnswerSucceedsWithTheRecordAsItWas) {
  Client().SetMailbox(MailboxWith(R"({"AddNewFolder": {"raw": ["OK"]}})"));
  MailFolderRef created = {L"as before", "", "", 0};
  EXPECT_EQ(ThunderbirdAdapter().CreateFolder({}, L"x", {}, &created), kOk);
  EXPECT_EQ(created.name, L"as before");
}

TEST_F(ThunderbirdTest, MoveSwitchReachesTheClient) {
  ThunderbirdAdapter().SetMoveMails(true);
  EXPECT_THAT(Client().MailboxText(), testing::HasSubstr(R"("moveMails": true)"));
  ThunderbirdAdapter().SetMoveMails(false);
  EXPECT_THAT(Client().MailboxText(), testing::HasSubstr(R"("moveMails": false)"));
}

TEST_F(ThunderbirdTest, MessageOf1023CharactersIsWholeAndOneOf1024IsCut) {
  Client().SetMailbox(MailboxWith(
      R"({"GiveContacts": {"raw": [{"text": "a", "times": 1023}, {"text": "b", "times": 1024},
                                   {"text": "ж", "times": 5000}, "last"]}})"));
  AddressSet addresses;
  thunderbird::GiveContacts(Connect().get(), kQuickLimit, &addresses);
  EXPECT_THAT(addresses, ElementsAre(std::wstring(1023, L'a'), std::wstring(1023, L'b'), L"last",
                                     std::wstring(1023, L'ж')));
}

TEST_F(ThunderbirdTest, LongListOfAddressesIsCutAndTheRestOfTheMailIsRead) {
  std::string list;
  for (int i = 100; i < 200; ++i) {
    list += (list.empty() ? "" : ", ") + std::string("p") + std::to_string(i) + "@post.example";
  }
  Client().SetMailbox("{\"sent\": [\"" + list + "\", \"last@post.example\"]}");
  AddressSet addresses;
  thunderbird::GiveAddressesFromSentItems(Connect().get(), 0, nullptr, kQuickLimit, &addresses);
  // 19 characters an address: 53 whole ones, and what is left of the next.
  EXPECT_EQ(addresses.size(), 53U + 1 + 1);
  EXPECT_TRUE(addresses.contains(L"last@post.example"));
  EXPECT_TRUE(addresses.contains(L"p152@post.example"));
}

TEST_F(ThunderbirdTest, RecordsWithMissingAndEmptyFieldsAreTakenAsTheyAre) {
  Client().SetMailbox(MailboxWith(
      R"({"GiveAllFolders": {"raw": ["Inbox", "", "######", "A######1######s",
          "Inbox############b######false", "Bugs #1######i######s######false"]}})"));
  EXPECT_THAT(
      AllFolders(),
      ElementsAre(MailFolderRef{L"Inbox", "", "", 1}, MailFolderRef{L"", "", "", 1},
                  MailFolderRef{L"", "", "", 1}, MailFolderRef{L"A", "1", "s", 1},
                  MailFolderRef{L"Inbox", "b", "false", 1}, MailFolderRef{L"Bugs ", "1", "i", 1}));
}

TEST_F(ThunderbirdTest, ReplyThatStopsEndsAtTheLimitWithWhatArrived) {
  Client().SetMailbox(MailboxWith(R"({"GiveAllFolders": {"stopAfter": 2}})"));
  const milliseconds time = TimeOf([] { EXPECT_EQ(FolderNames().size(), 2U); });
  EXPECT_GE(time, milliseconds(500));
}

TEST_F(ThunderbirdTest, PauseWithinTheLimitIsWaitedForAndALongerOneIsNot) {
  Client().SetMailbox(MailboxWith(R"({"GiveAllFolders": {"pauseAfter": 3, "pauseMs": 250}})"));
  EXPECT_EQ(FolderNames().size(), 6U);
  Client().SetMailbox(MailboxWith(R"({"GiveAllFolders": {"pauseAfter": 3, "pauseMs": 1500}})"));
  EXPECT_EQ(FolderNames().size(), 3U);
}

TEST_F(ThunderbirdTest, ConnectionThatBreaksEndsAtOnceWithWhatArrived) {
  Client().SetMailbox(MailboxWith(R"({"GiveAllFolders": {"closeAfter": 2}})"));
  MailFolderList folders;
  const milliseconds time = TimeOf([&] { folders = AllFolders(); });
  EXPECT_EQ(folders.size(), 2U);
  EXPECT_LT(time, milliseconds(5000));
}

TEST_F(ThunderbirdTest, ManyMessagesWithoutAPauseAllArrive) {
  std::string contacts;
  for (int i = 0; i < 1'000; ++i) {
    contacts += (contacts.empty() ? "\"" : ",\"") + std::to_string(i) + "@post.example\"";
  }
  Client().SetMailbox("{\"contacts\": [" + contacts + "]}");
  AddressSet addresses;
  EXPECT_EQ(thunderbird::GiveContacts(Connect().get(), 60, &addresses), kOk);
  EXPECT_EQ(addresses.size(), 1'000U);
}

TEST_F(ThunderbirdTest, SeveralConnectionsAreServedAtOnce) {
  std::thread threads[4];
  std::atomic<int> complete = 0;
  for (std::thread& thread : threads) {
    thread = std::thread([&] { complete += AllFolders().size() == 6 ? 1 : 0; });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(complete, 4);
}

// What happens to one command.
struct Harm {
  const char* name;
  const char* command;
  const char* script;
};

class HarmedCommandTest : public ThunderbirdTest, public testing::WithParamInterface<Harm> {};

// The command ends at once, as a command that got no answer, and the next connection works.
TEST_P(HarmedCommandTest, EndsAtOnceAndLeavesTheNextOneWell) {
  Client().SetMailbox(
      MailboxWith("{\"" + std::string(GetParam().command) + "\": " + GetParam().script + "}"));
  const ThunderbirdAdapter adapter;
  const milliseconds time = TimeOf([&] {
    const auto connection = Connect();
    MailFolderList folders;
    AddressSet addresses;
    int32_t count = 0;
    const std::string command = GetParam().command;
    if (command == "GiveAllFolders") {
      EXPECT_EQ(thunderbird::GiveAllFolders(connection.get(), 20, &folders), kOk);
      EXPECT_LT(folders.size(), 6U);
    } else if (command == "GiveContacts") {
      EXPECT_EQ(thunderbird::GiveContacts(connection.get(), 20, &addresses), kOk);
      EXPECT_LT(addresses.size(), 2U);
    } else if (command == "SentItemsEntries") {
      EXPECT_EQ(thunderbird::SentItemsEntries(connection.get(), 20, &count), kOk);
    } else if (command == "GiveAddressesFromSentItems") {
      EXPECT_EQ(
          thunderbird::GiveAddressesFromSentItems(connection.get(), 2, nullptr, 20, &addresses),
          kOk);
      EXPECT_LT(addresses.size(), 3U);
    } else if (command == "AddNewFolder") {
      EXPECT_EQ(thunderbird::AddNewFolder(connection.get(), L"Spam",
                                          {L"Local Folders", "1", "local", 1}, 20, &folders),
                kOk);
    } else {
      EXPECT_EQ(thunderbird::SetMoveMails(connection.get(), true, 20), kOk);
    }
    EXPECT_EQ(ReleaseThunderbird(connection.get()), kOk);
  });
  EXPECT_LT(time, milliseconds(5000));
  SetUp();
  EXPECT_EQ(AllFolders().size(), 6U);
}

INSTANTIATE_TEST_SUITE_P(
    EachCommand, HarmedCommandTest,
    testing::Values(Harm{"FoldersDie", "GiveAllFolders", R"({"dieAfter": 2})"},
                    Harm{"ContactsDie", "GiveContacts", R"({"dieAfter": 1})"},
                    Harm{"CountDies", "SentItemsEntries", R"({"dieAfter": 0})"},
                    Harm{"SentMailDies", "GiveAddressesFromSentItems", R"({"dieAfter": 2})"},
                    Harm{"SentMailCloses", "GiveAddressesFromSentItems", R"({"closeAfter": 3})"},
                    Harm{"NewFolderDies", "AddNewFolder", R"({"dieAfter": 0})"},
                    Harm{"NewFolderDiesAfterOk", "AddNewFolder",
                         R"({"raw": ["OK"], "dieAfter": 1})"},
                    Harm{"SwitchDies", "SetMoveMails", R"({"dieAfter": 0})"},
                    Harm{"SwitchDiesAfterOk", "SetMoveMails", R"({"raw": ["OK"], "dieAfter": 1})"},
                    Harm{"SwitchCloses", "SetMoveMails", R"({"raw": ["OK"], "closeAfter": 1})"}),
    [](const testing::TestParamInfo<Harm>& harm) { return harm.param.name; });

TEST_F(ThunderbirdTest, ClientKilledFromOutsideEndsASilentCommandAtOnce) {
  Client().SetMailbox(MailboxWith(R"({"GiveAllFolders": {"stopAfter": 3}})"));
  // The commands of the tests before have to go, or the client is killed before it is asked.
  Client().ClearJournal();
  std::thread killer([] {
    Client().Require(L"silent", "the client still talks");
    Client().Kill();
  });
  const milliseconds time = TimeOf([] { EXPECT_EQ(AllFolders().size(), 3U); });
  killer.join();
  EXPECT_LT(time, milliseconds(5000));
}

TEST_F(ThunderbirdTest, ClientKilledBetweenCommandsFailsTheNextSend) {
  const auto connection = Connect();
  Client().Kill();
  MailFolderList folders;
  EXPECT_EQ(thunderbird::GiveAllFolders(connection.get(), kQuickLimit, &folders), kFail);
}

}  // namespace
}  // namespace postmarker::test
