#include "clients/livemail/LiveMailAdapter_win.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "clients/ClientDetection.h"
#include "clients/ClientTable.h"
#include "support/LiveMailInstallation_win.h"
#include "support/StoreIdFiles.h"

namespace postmarker {
namespace {

using nlohmann::json;
using test::LiveMailContent;

// What the module says differs from what the store says.
const json kModuleState = {
    {"text", "to be kept"},
    {"folders",
     {{{"name", "\\\\Module\\Inbox"}, {"firstId", "4"}, {"secondId", "1"}, {"flag", 1}}}},
    {"contacts", {"Friend@x"}},
    {"sent", {"ben@x"}}};

const MailFolderList kModuleFolders = {{L"\\\\Module\\Inbox", "4", "1", 1}};
const MailFolderList kStoreFolders = {{L"\\\\Ann", "1", "1", 1},
                                      {L"\\\\Ann\\Sent Items", "4", "1", 1}};
const AddressSet kModuleAddresses = {L"Friend@x", L"ben@x"};
const AddressSet kStoreAddresses = {L"ann@x"};

// What the person's wizard shows of an operation.
struct Progress {
  std::vector<std::string> calls;
  int cancelAt = 0;  // the number of the question that is answered with yes, from 1
  int questions = 0;

  static Progress& Of(void* handle) { return *static_cast<Progress*>(handle); }
  static void POSTMARKER_CALL Set(void* handle, const wchar_t* text, int32_t total) {
    Of(handle).calls.push_back("set '" + NarrowUtf8(text) + "' " + std::to_string(total));
  }
  static void POSTMARKER_CALL Increase(void* handle, int32_t steps) {
    Of(handle).calls.push_back("increase " + std::to_string(steps));
  }
  static int32_t POSTMARKER_CALL IsCancelled(void* handle) {
    return ++Of(handle).questions == Of(handle).cancelAt ? 1 : 0;
  }

  ProgressCallbacks Callbacks() {
    ProgressCallbacks callbacks;
    callbacks.handle = this;
    callbacks.setProgress = &Set;
    callbacks.increaseProgress = &Increase;
    callbacks.isCancelled = &IsCancelled;
    return callbacks;
  }
};

class LiveMailTest : public testing::Test {
 protected:
  LiveMailTest() { WriteStore(); }

  void WriteStore(const std::string& id = "StoreId!") {
    LiveMailContent content = {
        .folders = {{1, 0, u"Ann", 0, 2, u"Ann\\"}, {4, 1, u"Sent Items", 0, 3, u"Sent\\"}},
        .messages = {{11, 4, 2, u"Ann <ann@x>", u"ben@x"}}};
    content.userData.push_back(test::LiveStoreIdRow(id));
    m_client.WriteStore(content);
  }

  static const MailClientAdapter& Adapter() { return *FindClient(L"Windows Live Mail")->adapter; }

  static MailFolderList List() {
    MailFolderList folders;
    Adapter().ListFolders({}, &folders);
    return folders;
  }

  static AddressSet Collect(const ProgressCallbacks* callbacks = nullptr) {
    AddressSet addresses;
    EXPECT_EQ(Adapter().CollectSentAddresses({}, callbacks, &addresses), kOk);
    return addresses;
  }

  static std::string StoreId() {
    std::string id = "(as before)";
    const bool isRead = Adapter().ReadStoreId(&id);
    EXPECT_EQ(isRead, id != "(as before)");
    return id;
  }

  test::LiveMailInstallation m_client;
};

TEST_F(LiveMailTest, TableHasTheAdapterOfTheClient) {
  EXPECT_NE(dynamic_cast<const LiveMailAdapter*>(&Adapter()), nullptr);
  EXPECT_TRUE(IsClientInstalled(L"Windows Live Mail"));
}

TEST_F(LiveMailTest, ModuleIsAskedBeforeTheStore) {
  m_client.StartModule(kModuleState);
  EXPECT_EQ(List(), kModuleFolders);
  EXPECT_EQ(Collect(), kModuleAddresses);
}

TEST_F(LiveMailTest, EmptyAnswerOfTheModuleKeepsTheStoreClosed) {
  m_client.StartModule(json::object());
  EXPECT_EQ(List(), MailFolderList());
  EXPECT_EQ(Collect(), AddressSet());
}

TEST_F(LiveMailTest, StoreIsReadWithoutTheModule) {
  EXPECT_EQ(List(), kStoreFolders);
  EXPECT_EQ(Collect(), kStoreAddresses);
}

TEST_F(LiveMailTest, ModuleThatCanNotBeReachedKeepsTheStoreClosed) {
  m_client.OwnEventOfModule();
  EXPECT_EQ(List(), MailFolderList());
  AddressSet addresses;
  EXPECT_EQ(livemail::CollectSentAddresses(true, {}, nullptr, &addresses), kOk);
  EXPECT_EQ(addresses, AddressSet());
}

TEST_F(LiveMailTest, StoreIsReadAtOnceOnDemand) {
  m_client.StartModule(kModuleState);
  MailFolderList folders;
  EXPECT_EQ(livemail::ListFolders(false, {}, &folders), kOk);
  EXPECT_EQ(folders, kStoreFolders);
  AddressSet addresses;
  EXPECT_EQ(livemail::CollectSentAddresses(false, {}, nullptr, &addresses), kOk);
  EXPECT_EQ(addresses, kStoreAddresses);
  EXPECT_EQ(livemail::CollectContacts(false, {}, nullptr, &addresses), kOk);
  EXPECT_EQ(addresses, kStoreAddresses) << "only the module knows contacts";
}

TEST_F(LiveMailTest, WithoutRegistryOrDatabaseThereIsNothingAndNoFailure) {
  m_client.RemoveStore();
  EXPECT_EQ(List(), MailFolderList());
  EXPECT_EQ(Collect(), AddressSet());
  test::LiveMailInstallation::RemoveRoots();
  EXPECT_EQ(List(), MailFolderList());
  EXPECT_EQ(Collect(), AddressSet());
  EXPECT_EQ(StoreId(), "(as before)");
  EXPECT_FALSE(IsClientInstalled(L"Windows Live Mail"));
}

TEST_F(LiveMailTest, NoFolderIsOffered) {
  EXPECT_EQ(livemail::CanCreateFolder(), 0);
  EXPECT_FALSE(Adapter().CanCreateFolder());
}

TEST_F(LiveMailTest, FolderIsCreatedByTheModuleAlone) {
  MailFolderRef created = {L"as before", "1", "s", 1};
  const MailFolderRef before = created;
  EXPECT_EQ(Adapter().CreateFolder({}, L"Junk", kStoreFolders[0], &created), kFail);
  EXPECT_EQ(created, before);
  m_client.StartModule(kModuleState);
  EXPECT_EQ(livemail::CreateFolder(false, kStoreFolders[0], L"Junk", &created), kFail);
  EXPECT_EQ(created, before);
  EXPECT_EQ(Adapter().CreateFolder({}, L"Junk", kStoreFolders[0], &created), kOk);
  EXPECT_EQ(created, (MailFolderRef{L"\\\\Ann\\Junk", "new-1", "made", 1}));
}

TEST_F(LiveMailTest, CreatedFolderWithoutAnIdIsAFailure) {
  json state = kModuleState;
  state["fault"] = {
      {"do", "text"}, {"command", 5}, {"message", 0}, {"value", "#-#T#-##-#s#-#n#-#"}};
  m_client.StartModule(state);
  MailFolderRef created = {L"as before", "1", "s", 1};
  EXPECT_EQ(Adapter().CreateFolder({}, L"Junk", kStoreFolders[0], &created), kFail);
  EXPECT_EQ(created, (MailFolderRef{L"as before", "1", "s", 1}));
}

TEST_F(LiveMailTest, DefaultFolderIsTheLastWithTheNumberOfDeletedItems) {
  const MailFolderList folders = {{L"a", "4", "s", 1}, {L"b", "4", "t", 1}, {L"c", "44", "s", 1}};
  EXPECT_EQ(Adapter().FindDefaultFolder({}, folders), folders[1]);
  EXPECT_EQ(Adapter().FindDefaultFolder({}, {folders[2]}), MailFolderRef());
}

TEST_F(LiveMailTest, StoreIdIsReadFromDatabaseFileOrBackup) {
  EXPECT_EQ(StoreId(), "StoreId!");
  const std::string mark(test::kStoreIdMark);
  test::WriteFile(m_client.DatabasePath(), "damaged" + mark + "Searched.");
  EXPECT_EQ(StoreId(), "Searched");
  m_client.RemoveStore();
  test::WriteFile(m_client.BackupPath(), mark + "BackupId.");
  EXPECT_EQ(StoreId(), "BackupId");
}

// As the client holds it while it runs.
TEST_F(LiveMailTest, StoreThatIsHeldByTheClientIsRead) {
  const FileHandle client(::CreateFileW(m_client.DatabasePath().c_str(),
                                        GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                        OPEN_EXISTING, 0, nullptr));
  ASSERT_TRUE(client);
  EXPECT_EQ(StoreId(), "StoreId!");
}

TEST_F(LiveMailTest, StoreThatIsHeldForItsOwnerAloneHasNoFolders) {
  const FileHandle client(::CreateFileW(m_client.DatabasePath().c_str(),
                                        GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0,
                                        nullptr));
  ASSERT_TRUE(client);
  EXPECT_EQ(List(), MailFolderList());
  test::WriteFile(m_client.BackupPath(), std::string(test::kStoreIdMark) + "BackupId.");
  EXPECT_EQ(StoreId(), "BackupId");
}

TEST_F(LiveMailTest, ProgressIsOneStep) {
  for (const bool hasModule : {false, true}) {
    if (hasModule) {
      m_client.StartModule(kModuleState);
    }
    Progress progress;
    const ProgressCallbacks callbacks = progress.Callbacks();
    EXPECT_FALSE(Collect(&callbacks).empty());
    EXPECT_EQ(progress.calls, (std::vector<std::string>{"set '' 1", "increase 1"}));
  }
}

TEST_F(LiveMailTest, CancelAtTheBeginningEndsBeforeAnythingIsAsked) {
  m_client.StartModule(kModuleState);
  Progress progress;
  progress.cancelAt = 1;
  const ProgressCallbacks callbacks = progress.Callbacks();
  AddressSet addresses;
  EXPECT_EQ(livemail::CollectSentAddresses(true, {}, &callbacks, &addresses), kOk);
  EXPECT_EQ(addresses, AddressSet());
  EXPECT_EQ(progress.calls, std::vector<std::string>{"set '' 1"});
  EXPECT_EQ(progress.questions, 1);
}

TEST_F(LiveMailTest, RecordWithoutHandleOrFunctionsReportsNothing) {
  Progress progress;
  ProgressCallbacks callbacks = progress.Callbacks();
  callbacks.handle = nullptr;
  EXPECT_EQ(Collect(&callbacks), kStoreAddresses);
  callbacks = {};
  callbacks.handle = &progress;
  EXPECT_EQ(Collect(&callbacks), kStoreAddresses);
  EXPECT_TRUE(progress.calls.empty());
}

TEST_F(LiveMailTest, StopEndsTheConversationWithTheModule) {
  m_client.StartModule(kModuleState);
  const ClientSession stopped = {nullptr, [] { return true; }};
  MailFolderList folders;
  Adapter().ListFolders(stopped, &folders);
  EXPECT_EQ(folders, MailFolderList());
  AddressSet addresses;
  EXPECT_EQ(Adapter().CollectSentAddresses(stopped, nullptr, &addresses), kOk);
  EXPECT_EQ(addresses, AddressSet());
}

}  // namespace
}  // namespace postmarker
