#include "clients/livemail/LiveStore.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include "clients/livemail/EseJetApi.h"
#include "clients/livemail/LiveMailPaths.h"
#include "clients/livemail/LiveStoreId.h"
#include "support/LiveMailStore.h"
#include "support/RecordingJet.h"
#include "support/TempFolder.h"
#include "support/Text.h"

namespace postmarker::livemail {
namespace {

using test::LiveMailContent;
using Names = std::vector<std::string>;

// An account with an inbox and two folders of sent mail, and what is in them.
LiveMailContent Ordinary() {
  return {.folders = {{1, 0, u"Ann", 0, 2, u"Ann\\"},
                      {2, 1, u"Inbox", 1, 3, u"Inbox\\"},
                      {3, 1, u"Sent Items", 0, 3, u"Sent\\"},
                      {4, std::nullopt, u"Other sent", 3, 2, u"Other\\"}},
          .messages = {{11, 3, 2, u"Ann <Ann@x>", u"ben@x", 16},
                       {12, 3, std::nullopt, u"second@x", std::nullopt},
                       {13, 3, 9, std::nullopt, u"carl@x"},
                       {14, 2, 3, u"dora@x", u"ann@x"},
                       {15, std::nullopt, 2, u"fifth@x", u"x@x"},
                       {16, 4, 4, u"\"A, n\" <ann@y>, eve@y", u"", 1}},
          .streams = {{1, u"1.eml"}, {2, u"Inbox\\2.eml"}, {3, std::nullopt}}};
}

class LiveStoreTest : public testing::Test {
 protected:
  LiveStoreTest() { Write(Ordinary()); }

  void Write(const LiveMailContent& content, test::EseOptions options = {.pageSize = 8192}) {
    test::WriteFile(m_path, test::MakeLiveMailStore(content, options));
  }

  WlmFolders ReadFolders() {
    LiveStore store(m_path, EseJetApi());
    WlmFolders folders;
    EXPECT_EQ(store.ReadFolders(&m_never, &folders), kOk);
    return folders;
  }

  WlmMessages QueryMessages(const JetRow& filter) {
    LiveStore store(m_path, EseJetApi());
    WlmMessages messages;
    EXPECT_EQ(store.QueryMessages(filter, MessageFiles::kFind, &m_never, &messages), kOk);
    return messages;
  }

  AddressSet Addresses() {
    AddressSet addresses;
    CollectStoreAddresses(m_path, &m_never, &addresses);
    return addresses;
  }

  Names Listed(const StopQuery& stop = {}) {
    MailFolderList list;
    ListStoreFolders(m_path, stop, &list);
    Names names;
    for (const MailFolderRef& folder : list) {
      names.push_back(NarrowUtf8(folder.name));
    }
    return names;
  }

  test::TempFolder m_folder;
  std::wstring m_path = m_folder.PathOf("Mail.MSMessageStore");
  std::wstring m_root = StoreRootOf(m_path);
  PacedStop m_never;
};

JetRow ById(int64_t id) {
  return {{L"MSGCOL_ID", JetValue(id)}};
}

TEST_F(LiveStoreTest, ReadsFoldersWithPathsAndRoots) {
  const WlmFolders folders = ReadFolders();
  ASSERT_EQ(folders.size(), 4U);
  const WlmFolder& sent = folders.at(3);
  EXPECT_EQ(sent.ParentId, 1U);
  EXPECT_EQ(sent.Special, SpecialSent);
  EXPECT_EQ(sent.DisplayPath, L"\\\\Ann\\Sent Items");
  EXPECT_EQ(sent.RootIdText, L"1");
  EXPECT_EQ(sent.StoreFile, m_root + L"Sent\\");
  EXPECT_EQ(folders.at(4).ParentId, kNoFolder);
}

TEST_F(LiveStoreTest, ListsFoldersInDisplayOrder) {
  MailFolderList list;
  ListStoreFolders(m_path, {}, &list);
  EXPECT_EQ(list, (MailFolderList{{L"\\\\Ann", "1", "1", 1},
                                  {L"\\\\Ann\\Inbox", "2", "1", 1},
                                  {L"\\\\Ann\\Sent Items", "3", "1", 1},
                                  {L"\\\\Other sent", "4", "4", 1}}));
}

TEST_F(LiveStoreTest, InboxOfASubfolderIsSpecialToo) {
  Write({.folders = {{1, 0, u"Ann"}, {2, 1, u"Deep"}, {3, 2, u"Inbox"}, {4, 2, u"Early", 0}}});
  EXPECT_EQ(ReadFolders().at(3).Special, SpecialInbox);
  EXPECT_EQ(Listed(),
            (Names{"\\\\Ann", "\\\\Ann\\Deep", "\\\\Ann\\Deep\\Inbox", "\\\\Ann\\Deep\\Early"}));
}

TEST_F(LiveStoreTest, OfRowsWithEqualIdsTheLaterStays) {
  Write({.folders = {{1, 0, u"First"}, {1, 0, u"Second"}, {1, 0, u"Dropped", 10}}});
  EXPECT_EQ(Listed(), Names{"\\\\Second"});
}

TEST_F(LiveStoreTest, ColumnsThatTheTableLacksAreNotAskedFor) {
  test::WriteFile(m_path,
                  test::MakeEseFile({{.name = "Folders",
                                      .columns = {{"FLDCOL_TYPE", 1},
                                                  {"FLDCOL_NAMEW", 128, test::kEseText, 255, 1200},
                                                  {"FLDCOL_PATH", 129, test::kEseText, 255, 1200}},
                                      .rows = {{{{1, {test::EseBytes(2)}},
                                                 {128, {test::EseUtf16(u"Only")}},
                                                 {129, {test::EseUtf16(u"p")}}}}}}}));
  EXPECT_EQ(Listed(), Names{"\\\\Only"});
  EXPECT_EQ(ReadFolders().begin()->first, 0U);
}

TEST_F(LiveStoreTest, StoreThatCanNotBeReadHasNoFoldersAndFails) {
  const auto expectNothing = [this] {
    WlmFolders folders = {{1, {}}};
    EXPECT_EQ(LiveStore(m_path, EseJetApi()).ReadFolders(&m_never, &folders), kFail);
    EXPECT_TRUE(folders.empty());
    WlmMessages messages;
    EXPECT_EQ(
        LiveStore(m_path, EseJetApi()).QueryMessages({}, MessageFiles::kFind, &m_never, &messages),
        kFail);
    EXPECT_EQ(Listed(), Names());
    EXPECT_EQ(Addresses(), AddressSet());
  };
  test::WriteFile(m_path, std::string(20'000, 'x'));
  expectNothing();
  test::WriteFile(m_path, test::MakeEseFile({{.name = "Other", .columns = {{"Id", 1}}}}));
  expectNothing();
  m_path = m_folder.PathOf("missing");
  expectNothing();
  m_path.clear();
  expectNothing();
}

TEST_F(LiveStoreTest, MessagesAreQueriedByTheirFolder) {
  for (const bool hasIndex : {false, true}) {
    LiveMailContent content = Ordinary();
    content.hasFolderIndex = hasIndex;
    Write(content);
    LiveStore store(m_path, EseJetApi());
    WlmFolder folder;
    folder.Id = 3;
    WlmMessages messages;
    EXPECT_EQ(store.ListFolderMessages(folder, MessageFiles::kFind, &m_never, &messages), kOk);
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_EQ(messages[3].size(), 3U);
    const WlmMessage& message = messages[3][11];
    EXPECT_EQ(message.Id, 11U);
    EXPECT_EQ(message.FolderId, 3U);
    EXPECT_EQ(message.Flags, 16U);
    EXPECT_EQ(message.From, L"Ann <Ann@x>");
    EXPECT_EQ(message.Path, m_root + L"1.eml");
  }
}

// The values of the filter are compared again, whatever an index says.
TEST_F(LiveStoreTest, RowsThatAnIndexNamesWronglyAreDropped) {
  LiveMailContent content = Ordinary();
  content.hasFolderIndex = true;
  test::EseTable table = test::live_mail_store::MakeMessages(content);
  constexpr size_t kOfFolder2 = 3;
  table.indexes.front().entries.emplace_back(test::EseKey(int64_t{3}), kOfFolder2);
  test::WriteFile(m_path, test::MakeEseFile({table}, {.pageSize = 8192}));
  LiveStore store(m_path, EseJetApi());
  WlmFolder folder;
  folder.Id = 3;
  WlmMessages messages;
  EXPECT_EQ(store.ListFolderMessages(folder, MessageFiles::kFind, &m_never, &messages), kOk);
  EXPECT_EQ(messages.size(), 1U);
  EXPECT_EQ(messages[3].size(), 3U);
}

TEST_F(LiveStoreTest, FolderIdIsSignExtendedForTheQuery) {
  Write({.messages = {{1, -2, std::nullopt, u"a@x", u"b"}, {2, 0xFFFFFFFE}}});
  LiveStore store(m_path, EseJetApi());
  WlmFolder folder;
  folder.Id = 0xFFFFFFFE;
  WlmMessages messages;
  EXPECT_EQ(store.ListFolderMessages(folder, MessageFiles::kFind, &m_never, &messages), kOk);
  ASSERT_EQ(messages[0xFFFFFFFE].size(), 1U);
  EXPECT_EQ(messages[0xFFFFFFFE].begin()->second.From, L"a@x");
}

TEST_F(LiveStoreTest, RecipientColumnDecidesAndTheTextIsTheSenders) {
  WlmMessages messages = QueryMessages({});
  EXPECT_EQ(messages[3][11].To, L"Ann <Ann@x>");
  EXPECT_EQ(messages[3][12].To, L"") << "no recipient";
  EXPECT_EQ(messages[3][12].From, L"second@x");
  EXPECT_EQ(messages[3][13].To, L"") << "a recipient and no sender";
  EXPECT_EQ(messages[4][16].To, L"\"A, n\" <ann@y>, eve@y") << "an empty recipient is a text";
}

TEST_F(LiveStoreTest, MessagesWithoutAnIdAreLeftOut) {
  Write({.messages = {{1, std::nullopt}, {std::nullopt, 1}, {2, 2}}});
  const WlmMessages messages = QueryMessages({});
  ASSERT_EQ(messages.size(), 1U);
  EXPECT_EQ(messages.at(2).size(), 1U);
  EXPECT_EQ(messages.at(2).at(2).Flags, 0U) << "flags without a value";
}

TEST_F(LiveStoreTest, OfMessagesWithEqualIdsTheLaterStays) {
  Write({.messages = {{1, 2, std::nullopt, u"first@x"}, {1, 2, std::nullopt, u"later@x"}}});
  EXPECT_EQ(QueryMessages({}).at(2).at(1).From, L"later@x");
}

TEST_F(LiveStoreTest, PathIsThatOfTheStreamBelowTheMessagesNumber) {
  WlmMessages messages = QueryMessages({});
  EXPECT_EQ(messages[3][11].Path, m_root + L"1.eml");
  EXPECT_EQ(messages[2][14].Path, m_root + L"Inbox\\2.eml");
  EXPECT_EQ(messages[3][12].Path, L"") << "no stream";
  EXPECT_EQ(messages[3][13].Path, L"") << "a stream without a row";
  EXPECT_EQ(messages[4][16].Path, L"") << "a stream without a path";
}

TEST_F(LiveStoreTest, SmallestStreamNumberHasNoStreamBelowIt) {
  Write({.messages = {{1, 2, INT32_MIN}, {2, 2, 0}},
         .streams = {{INT32_MAX, u"largest"}, {-1, u"minus one"}}});
  WlmMessages messages = QueryMessages({});
  EXPECT_EQ(messages[2][1].Path, m_root + L"largest") << "numbers go round";
  EXPECT_EQ(messages[2][2].Path, m_root + L"minus one");
}

TEST_F(LiveStoreTest, WithoutATableOfStreamsMessagesHaveNoPath) {
  test::WriteFile(m_path, test::MakeEseFile({test::live_mail_store::MakeMessages(Ordinary())},
                                            {.pageSize = 8192}));
  EXPECT_EQ(QueryMessages({})[3][11].Path, L"");
}

// The number of walks over the streams must not depend on that of the messages.
TEST_F(LiveStoreTest, StreamsAreReadOnceForAllMessages) {
  LiveMailContent content;
  for (int32_t i = 1; i <= 300; ++i) {
    content.messages.push_back({i, 3 + i % 2, i + 1});
    content.streams.push_back({i, u"x"});
  }
  Write(content);
  test::Recorded() = {};
  LiveStore store(m_path, test::RecordingJet());
  WlmMessages messages;
  EXPECT_EQ(store.QueryMessages({}, MessageFiles::kFind, &m_never, &messages), kOk);
  for (const uint32_t id : {3, 4}) {
    WlmFolder folder;
    folder.Id = id;
    EXPECT_EQ(store.ListFolderMessages(folder, MessageFiles::kFind, &m_never, &messages), kOk);
  }
  const auto& calls = test::Recorded().calls;
  // Once for the columns, once for the rows.
  EXPECT_EQ(std::count(calls.begin(), calls.end(), "OpenTable Streams 4"), 2);
  EXPECT_EQ(messages[3].size() + messages[4].size(), 300U);
  EXPECT_EQ(messages[4][299].Path, m_root + L"x");
}

TEST_F(LiveStoreTest, StopEndsAWalkOverRows) {
  LiveMailContent content;
  for (int32_t i = 1; i <= 1000; ++i) {
    content.messages.push_back({i, 3});
  }
  Write(content);
  LiveStore store(m_path, EseJetApi());
  PacedStop stop([] { return true; });
  WlmMessages messages;
  EXPECT_EQ(store.QueryMessages({}, MessageFiles::kFind, &stop, &messages), kOk);
  EXPECT_EQ(messages[3].size(), size_t{PacedStop::kStepsPerLook});
}

TEST_F(LiveStoreTest, StoppedListingAddsNothing) {
  LiveMailContent content;
  for (int32_t i = 1; i <= 1000; ++i) {
    content.folders.push_back({i, 0, u"x"});
  }
  Write(content);
  EXPECT_EQ(Listed([] { return true; }), Names());
  int looks = 0;
  EXPECT_EQ(Listed([&looks] { return ++looks > 2; }), Names());
  EXPECT_EQ(looks, 3) << "one look more after the yes";
  EXPECT_EQ(Listed().size(), 1000U);
}

TEST_F(LiveStoreTest, AddressesAreThoseOfAllSentFolders) {
  EXPECT_EQ(Addresses(), (AddressSet{L"ann@x", L"ann@y", L"eve@y"}));
}

TEST_F(LiveStoreTest, WithoutASentFolderThereAreNoAddresses) {
  LiveMailContent content = Ordinary();
  content.folders[2].name = u"Sent";
  content.folders[2].special = 6;
  content.folders[3].special = 6;
  Write(content);
  EXPECT_EQ(Addresses(), AddressSet());
  content.folders[2].special = 0;
  Write(content);
  EXPECT_EQ(Addresses(), AddressSet{L"ann@x"}) << "the id stands in for a missing Special";
}

TEST_F(LiveStoreTest, StoppedCollectingKeepsWhatItHas) {
  LiveMailContent content = Ordinary();
  for (int32_t i = 100; i <= 1000; ++i) {
    content.messages.push_back({i, 3, std::nullopt, u"late@x", u"x"});
  }
  content.messages.push_back({2000, 3, std::nullopt, u"last@x", u"x"});
  Write(content);
  PacedStop stop([] { return true; });
  AddressSet addresses = {L"before"};
  CollectStoreAddresses(m_path, &stop, &addresses);
  EXPECT_EQ(addresses, (AddressSet{L"before", L"ann@x", L"late@x"}));
}

TEST_F(LiveStoreTest, TextOfAMessageIsItsFileUpToTheFirstNul) {
  test::WriteFile(m_root + L"1.eml", std::string("Subject: x\r\n\0hidden", 19));
  LiveStore store(m_path, EseJetApi());
  EXPECT_EQ(ReadMessageText(&store, 3, 11, nullptr), "Subject: x\r\n" + std::string(7, '\0'));
  test::WriteFile(m_root + L"1.eml", "Subject: y");
  EXPECT_EQ(ReadMessageText(&store, 3, 11, nullptr), "Subject: y");
}

TEST_F(LiveStoreTest, TextOfAGivenMessageTakesNoQuery) {
  test::WriteFile(m_root + L"given.eml", "given");
  WlmMessage message;
  message.Path = m_root + L"given.eml";
  LiveStore missing(m_folder.PathOf("missing"), EseJetApi());
  EXPECT_EQ(ReadMessageText(&missing, 1, 2, &message), "given");
  EXPECT_EQ(ReadMessageText(&missing, 1, 2, nullptr), std::nullopt);
}

TEST_F(LiveStoreTest, MessageThatIsNotThereHasNoText) {
  LiveStore store(m_path, EseJetApi());
  EXPECT_EQ(ReadMessageText(&store, 3, 11, nullptr), std::nullopt) << "no file";
  test::WriteFile(m_root + L"1.eml", "x");
  EXPECT_EQ(ReadMessageText(&store, 4, 11, nullptr), std::nullopt) << "in another folder";
  EXPECT_EQ(ReadMessageText(&store, 3, 99, nullptr), std::nullopt);
  EXPECT_EQ(ReadMessageText(&store, 3, 12, nullptr), std::nullopt) << "without a stream";
}

TEST_F(LiveStoreTest, StoreThatWasNotClosedIsReadAsFarAsItGoes) {
  constexpr uint32_t kDirty = 2;
  Write(Ordinary(), {.pageSize = 8192, .state = kDirty});
  EXPECT_EQ(Listed().size(), 4U);
  EXPECT_EQ(Addresses(), (AddressSet{L"ann@x", L"ann@y", L"eve@y"}));
}

TEST_F(LiveStoreTest, StoreIsNeverWritten) {
  const std::string before = test::ReadFile(m_path);
  (void)Listed();
  (void)Addresses();
  (void)QueryMessages(ById(11));
  (void)ReadLiveMessageStoreId(m_path, L"", EseJetApi());
  EXPECT_TRUE(test::ReadFile(m_path) == before);
  size_t files = 0;
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(m_folder.Path())) {
    ++files;
  }
  EXPECT_EQ(files, 1U) << "nothing was put beside it";
}

}  // namespace
}  // namespace postmarker::livemail
