// Addresses from the sent folder, from Windows Contacts and from the address book file.
#include <gmock/gmock.h>

#include "clients/storeapi/StoreAdapter_win.h"
#include "clients/storeapi/StoreMail.h"
#include "support/StoreInstallation_win.h"

namespace postmarker::storeapi {
namespace {

using nlohmann::json;
using test::StoreInstallation;
using testing::ElementsAre;
using testing::IsEmpty;

// What an operation reported.
struct Report {
  int32_t total = -1;
  int32_t steps = 0;
  int questions = 0;
  int stopAt = 0;  // the question that is answered by a yes; 0: none
  ProgressCallbacks record;

  Report() {
    record.handle = this;
    record.setProgress = &SetTotal;
    record.increaseProgress = &AddSteps;
    record.isCancelled = &IsCancelled;
  }
  Report(const Report&) = delete;
  Report& operator=(const Report&) = delete;
  ~Report() = default;

  static void POSTMARKER_CALL SetTotal(void* handle, const wchar_t* /*text*/, int32_t total) {
    static_cast<Report*>(handle)->total = total;
  }
  static void POSTMARKER_CALL AddSteps(void* handle, int32_t steps) {
    static_cast<Report*>(handle)->steps += steps;
  }
  static int32_t POSTMARKER_CALL IsCancelled(void* handle) {
    auto* const report = static_cast<Report*>(handle);
    return ++report->questions >= report->stopAt && report->stopAt != 0 ? 1 : 0;
  }
};

class StoreAddresses : public testing::Test {
 protected:
  ~StoreAddresses() override { EXPECT_EQ(Peer()->countLive(), 0) << "objects were left"; }

  [[nodiscard]] const test::StorePeer& Peer() const { return m_client.Peer(); }

  // A store whose sent folder has these messages.
  void SetSent(const std::vector<std::string>& messages, const json& more = json::object()) {
    json store = {
        {"root",
         {{"name", "R"}, {"children", {{{"id", 6}, {"type", 2}, {"messages", messages}}}}}}};
    store.update(more);
    Peer().SetState(store);
  }
  AddressSet CollectSent(const ProgressCallbacks* callbacks = nullptr,
                         const ClientSession& session = {}) {
    AddressSet addresses;
    m_result = CollectStoreSentAddresses(session, callbacks, false, &addresses);
    return addresses;
  }
  AddressSet CollectContacts(const StopQuery& stop = {}) {
    AddressSet addresses;
    CollectStoreContacts(stop, false, &addresses);
    return addresses;
  }

  StoreInstallation m_client;
  ResultCode m_result = 7;
};

TEST_F(StoreAddresses, AreTheRecipientsOfEachSentMessage) {
  Peer().SetState(StoreInstallation::UsualStore());
  EXPECT_THAT(CollectSent(), ElementsAre(L"ann@x.example", L"ben@x.example", L"cd@x.example"));
  EXPECT_EQ(m_result, kOk);
  EXPECT_EQ(Peer()->countCalls("Stream.Read"), 2);
}

TEST_F(StoreAddresses, MessageIsReadOnceAndAtMost65535Bytes) {
  const std::string endsInView = "To: in@x\r\nX: " + std::string(65'535 - 17, 'x') + "\r\n\r\n";
  const std::string endsBeyond = "To: out@x\r\nX: " + std::string(65'535 - 17, 'x') + "\r\n\r\n";
  SetSent({endsInView, endsBeyond, "To: c@x\r\n\r\n" + std::string(200'000, 'b')});
  EXPECT_THAT(CollectSent(), ElementsAre(L"c@x", L"in@x"));
  EXPECT_EQ(Peer()->countCalls("Stream.Read"), 3);
  EXPECT_EQ(Peer()->largestRead(), kMessageBytesRead);
}

TEST_F(StoreAddresses, WhatOneReadReturnsIsAllThatIsRead) {
  SetSent({"To: a@x\r\n\r\nbody", "To: somebody@x\r\nCc: other@x\r\n\r\n"}, {{"shortReads", 13}});
  EXPECT_THAT(CollectSent(), ElementsAre(L"a@x"));
  EXPECT_EQ(Peer()->countCalls("Stream.Read"), 2);
}

TEST_F(StoreAddresses, MessageThatCanNotBeOpenedOrReadIsSkipped) {
  const std::vector<std::string> messages = {"To: a@x\r\n\r\n", "To: b@x\r\n\r\n",
                                             "To: c@x\r\n\r\n"};
  for (const char* const method : {"Folder.OpenMessage", "Stream.Read"}) {
    SetSent(messages);
    Peer()->failCall(method, 2, E_FAIL);
    EXPECT_THAT(CollectSent(), ElementsAre(L"a@x", L"c@x")) << method;
    EXPECT_EQ(m_result, kOk);
  }
}

TEST_F(StoreAddresses, MessageWithoutAnEndOfItsHeadersIsSkipped) {
  SetSent({"To: a@x\r\n", "", "To: b@x\r\n\r\n"});
  EXPECT_THAT(CollectSent(), ElementsAre(L"b@x"));
}

TEST_F(StoreAddresses, NumberOfMessagesIsToldFromEitherForm) {
  for (const int form : {280, 288}) {
    SetSent({"To: a@x\r\n\r\n"}, {{"form", form}});
    Report report;
    EXPECT_THAT(CollectSent(&report.record), ElementsAre(L"a@x"));
    EXPECT_EQ(report.total, 1);
    EXPECT_EQ(report.steps, 1);
    EXPECT_EQ(Peer()->countCalls("Folder.GetFolderProps"), form == 280 ? 1 : 2);
  }
}

TEST_F(StoreAddresses, EachMessageIsReportedAndAskedFor) {
  SetSent({"To: a@x\r\n\r\n", "To: b@x\r\n\r\n", "To: c@x\r\n\r\n"});
  Report report;
  (void)CollectSent(&report.record);
  EXPECT_EQ(report.total, 3);
  EXPECT_EQ(report.steps, 3);
  EXPECT_GE(report.questions, 4);  // one after the total, one at each message
}

TEST_F(StoreAddresses, CancelKeepsWhatWasRead) {
  const std::vector<std::string> messages = {"To: a@x\r\n\r\n", "To: b@x\r\n\r\n",
                                             "To: c@x\r\n\r\n"};
  // Before the store is opened, after the total, and at each of the messages.
  const size_t expected[] = {0, 0, 0, 1, 2, 3};
  for (size_t i = 0; i < std::size(expected); ++i) {
    SetSent(messages);
    Report report;
    report.stopAt = static_cast<int>(i) + 1;
    EXPECT_EQ(CollectSent(&report.record).size(), expected[i]) << i;
    EXPECT_EQ(m_result, kOk);
    EXPECT_EQ(Peer()->countLive(), 0);
  }
}

TEST_F(StoreAddresses, SessionsStopEndsTheReadingToo) {
  Peer().SetState(StoreInstallation::UsualStore());
  ClientSession session;
  session.stop = [] { return true; };
  EXPECT_THAT(CollectSent(nullptr, session), IsEmpty());
  EXPECT_EQ(m_result, kOk);
  EXPECT_EQ(Peer()->countCalls(""), 0);
  EXPECT_THAT(CollectContacts(session.stop), IsEmpty());
}

TEST_F(StoreAddresses, StoreWithoutASentFolderGivesItsCode) {
  Peer().SetState({{"root", {{"name", "R"}}}});
  EXPECT_THAT(CollectSent(), IsEmpty());
  EXPECT_EQ(m_result, static_cast<ResultCode>(0x800CCF65));
}

TEST_F(StoreAddresses, CountThatCanNotBeReadIsZeroAndTheMessagesAreRead) {
  SetSent({"To: a@x\r\n\r\n"});
  Peer()->failCall("Folder.GetFolderProps", 1, E_FAIL);
  Report report;
  EXPECT_THAT(CollectSent(&report.record), ElementsAre(L"a@x"));
  EXPECT_EQ(report.total, 0);
}

TEST_F(StoreAddresses, ContactsAndTheAddressBookAreBothRead) {
  Peer().SetState({{"contacts", {"Friend@x.example", "other@x.example"}}});
  m_client.WriteAddressBook({L"Book@x.example"});
  EXPECT_THAT(CollectContacts(),
              ElementsAre(L"Book@x.example", L"Friend@x.example", L"other@x.example"));
  EXPECT_STREQ(Peer()->journal(), "contacts for Kestrelon 8.0\n");
}

TEST_F(StoreAddresses, WithoutContactsTheAddressBookIsRead) {
  m_client.WriteAddressBook({L"Book@x.example"});
  EXPECT_THAT(CollectContacts(), ElementsAre(L"Book@x.example"));
}

TEST_F(StoreAddresses, ContactWithoutAnAddressAddsNothing) {
  Peer().SetState({{"contacts", {"a@x", nullptr, 5, "b@x"}}});
  EXPECT_THAT(CollectContacts(), ElementsAre(L"a@x", L"b@x"));
}

TEST_F(StoreAddresses, AddressOf260CharactersDoesNotFit) {
  const std::string fits(259, 'f');
  Peer().SetState({{"contacts", {std::string(260, 'x'), fits}}});
  EXPECT_THAT(CollectContacts(), ElementsAre(std::wstring(259, L'f')));
}

TEST_F(StoreAddresses, StopIsAskedAtEachContact) {
  Peer().SetState({{"contacts", {"a@x", "b@x", "c@x"}}});
  int questions = 0;
  EXPECT_THAT(CollectContacts([&questions] { return ++questions > 3; }),
              ElementsAre(L"a@x", L"b@x"));
}

// Through the adapter, as the wizard and the silent harvest do it.
TEST_F(StoreAddresses, AdapterAddsSentMailAndContactsWithAndWithoutAStore) {
  const StoreAdapter adapter(StoreClient::kWindowsMail);
  Peer().SetState(StoreInstallation::UsualStore());
  AddressSet addresses;
  EXPECT_EQ(adapter.HarvestAddresses({}, &addresses), kOk);
  EXPECT_THAT(addresses, ElementsAre(L"Friend@x.example", L"ann@x.example", L"ben@x.example",
                                     L"cd@x.example"));
  Peer().SetState({{"contacts", {"only@x"}}});
  addresses.clear();
  EXPECT_EQ(adapter.CollectSentAddresses({}, nullptr, &addresses), CLASS_E_CLASSNOTAVAILABLE);
  EXPECT_THAT(addresses, ElementsAre(L"only@x"));
}

}  // namespace
}  // namespace postmarker::storeapi
