// Each single call into the store and the contacts fails in turn.
#include <gmock/gmock.h>

#include <algorithm>
#include <functional>

#include "clients/storeapi/StoreAdapter_win.h"
#include "clients/storeapi/StoreMessages_win.h"
#include "clients/storeapi/StoreSession_win.h"
#include "support/HangGuard_win.h"
#include "support/StoreInstallation_win.h"

namespace postmarker::storeapi {
namespace {

using nlohmann::json;
using test::StoreInstallation;

// What an operation added to what was there before.
struct Yield {
  AddressSet addresses = {L"before"};
  MailFolderList folders = {{L"before", "", "", 0}};
  MailFolderRef record = {L"before", "", "", 0};
  ResultCode result = kOk;
};

struct Operation {
  const char* name;
  std::function<void(Yield* yield)> run;
};

const Operation kOperations[] = {
    {"listing",
     [](Yield* yield) {
       std::wstring text;
       ListStoreFolders({}, false, &yield->folders, &text);
     }},
    {"special",
     [](Yield* yield) {
       yield->result = GetStoreSpecialFolder(StoreFolderKind::kDeleted, {}, false, &yield->record);
     }},
    {"creating",
     [](Yield* yield) {
       yield->result = CreateStoreFolder({L"p", "4", "s", 1}, nullptr, "x", false, &yield->record);
     }},
    {"sent",
     [](Yield* yield) {
       yield->result = CollectStoreSentAddresses({}, nullptr, false, &yield->addresses);
     }},
    {"contacts", [](Yield* yield) { CollectStoreContacts({}, false, &yield->addresses); }},
    {"messages",
     [](Yield* /*yield*/) {
       const StoreSession session;
       ComPtr<IStoreFolder> folder;
       if (FAILED(session.Result()) || FAILED(session.Store()->OpenFolder(6, 0, folder.Put())) ||
           !folder) {
         return;
       }
       (void)IsSameMessage(folder.Get(), 1, {});
       (void)MoveStoreMessages(session.Store(), {{4, {1}}, {6, {1}}}, folder.Get());
       (void)MarkStoreMessagesRead(session.Store(), {{4, {1}}, {6, {1}}}, true);
     }},
};

// A crash waits for a debugger under Wine, and a walk may lose its end.
[[maybe_unused]] const bool s_isGuarded = test::HangGuard::Install(120);

class StoreFaults : public testing::TestWithParam<Operation> {
 protected:
  // Runs the operation on a fresh store in which one call fails; 0: none.
  Yield RunWithFault(int number, HRESULT failure) {
    json store = StoreInstallation::UsualStore();
    store["form"] = 288;
    m_client.Peer().SetState(store);
    m_client.Peer()->failCall("", number, failure);
    Yield yield;
    GetParam().run(&yield);
    EXPECT_EQ(m_client.Peer()->countLive(), 0) << "objects were left";
    return yield;
  }

  StoreInstallation m_client;
};

void ExpectPartOf(const Yield& part, const Yield& whole) {
  EXPECT_TRUE(part.addresses.contains(L"before"));
  EXPECT_TRUE(std::includes(whole.addresses.begin(), whole.addresses.end(), part.addresses.begin(),
                            part.addresses.end()));
  ASSERT_FALSE(part.folders.empty());
  EXPECT_EQ(part.folders.front().name, L"before");
  EXPECT_LE(part.folders.size(), whole.folders.size());
  if (Failed(part.result)) {
    EXPECT_EQ(part.record.name, L"before") << "a failure changed the out parameter";
  }
}

TEST_P(StoreFaults, CallThatFailsLosesNothingButItsOwn) {
  const Yield whole = RunWithFault(0, S_OK);
  EXPECT_EQ(whole.result, kOk);
  const int calls = m_client.Peer()->countCalls("");
  ASSERT_GT(calls, 0);
  for (const HRESULT failure : {E_FAIL, kWrongStructSize, static_cast<HRESULT>(S_FALSE)}) {
    for (int number = 1; number <= calls; ++number) {
      SCOPED_TRACE(testing::Message() << "call " << number << ", code " << failure);
      ExpectPartOf(RunWithFault(number, failure), whole);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(All, StoreFaults, testing::ValuesIn(kOperations),
                         [](const auto& tested) { return std::string(tested.param.name); });

class StoreFaultsOfEnumerations : public testing::Test {
 protected:
  ~StoreFaultsOfEnumerations() override { EXPECT_EQ(m_client.Peer()->countLive(), 0); }

  StoreInstallation m_client;
};

TEST_F(StoreFaultsOfEnumerations, AddressesBeforeTheMessageThatFailsAreKept) {
  for (int number = 1; number <= 4; ++number) {
    m_client.Peer().SetState(
        {{"root",
          {{"name", "R"},
           {"children",
            {{{"id", 6},
              {"type", 2},
              {"messages",
               {"To: a@x\r\n\r\n", "To: b@x\r\n\r\n", "To: c@x\r\n\r\n", "To: d@x\r\n\r\n"}}}}}}}});
    m_client.Peer()->failCall("Folder.GetNextMessage", number, E_FAIL);
    AddressSet addresses;
    EXPECT_EQ(CollectStoreSentAddresses({}, nullptr, false, &addresses), kOk);
    EXPECT_EQ(addresses.size(), static_cast<size_t>(number));
  }
}

TEST_F(StoreFaultsOfEnumerations, FoldersBeforeTheOneThatFailsAreKept) {
  for (int number = 1; number <= 4; ++number) {
    json children = json::array();
    for (int id = 1; id <= 4; ++id) {
      children.push_back({{"id", id}, {"name", "f"}, {"children", {{{"id", id + 10}}}}});
    }
    m_client.Peer().SetState({{"root", {{"name", "R"}, {"children", children}}}});
    // The second call for each folder is the one after its only child.
    m_client.Peer()->failCall("Namespace.GetNextSubFolder", 2 * number, E_FAIL);
    MailFolderList folders;
    std::wstring text;
    ListStoreFolders({}, false, &folders, &text);
    EXPECT_EQ(folders.size(), static_cast<size_t>(1 + 2 * number));
  }
}

TEST_F(StoreFaultsOfEnumerations, ContactsBeforeTheOneThatFailsAreKept) {
  for (int number = 1; number <= 3; ++number) {
    m_client.Peer().SetState({{"contacts", {"a@x", "b@x", "c@x"}}});
    m_client.Peer()->failCall("Collection.Next", number, E_FAIL);
    AddressSet addresses;
    CollectStoreContacts({}, false, &addresses);
    EXPECT_EQ(addresses.size(), static_cast<size_t>(number - 1));
  }
}

TEST_F(StoreFaultsOfEnumerations, MessagesAndContactsWithoutEndEnd) {
  json store = {{"root", {{"name", "R"}, {"children", {{{"id", 6}, {"type", 2}}}}}},
                {"contacts", json::array()},
                {"endless", true}};
  m_client.Peer().SetState(store);
  AddressSet addresses;
  EXPECT_EQ(CollectStoreSentAddresses({}, nullptr, false, &addresses), kOk);
  EXPECT_EQ(m_client.Peer()->countCalls("Folder.GetNextMessage"), 1'000'000);
  CollectStoreContacts({}, false, &addresses);
  EXPECT_EQ(m_client.Peer()->countCalls("Collection.Next"), 1'000'000);
  EXPECT_TRUE(addresses.empty());
}

}  // namespace
}  // namespace postmarker::storeapi
