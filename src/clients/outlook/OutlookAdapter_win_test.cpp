#include "clients/outlook/OutlookAdapter_win.h"

#include <gmock/gmock.h>

#include <thread>

#include "clients/outlook/OutlookAddresses_win.h"
#include "clients/outlook/OutlookHold_win.h"
#include "support/HookModuleFixture_win.h"
#include "support/OutlookFixture_win.h"

namespace postmarker::test {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const AddressSet kAllAddresses = {L"ann@x.example", L"ben@x.example", L"carl@x.example",
                                  L"dora@x.example", L"eve@x.example"};

class OutlookAdapterTest : public OutlookTest {
 protected:
  explicit OutlookAdapterTest(OutlookClassServer server = OutlookClassServer::kNone)
      : OutlookTest(server) {}

  // A session with the application, which the caller lets go.
  ClientSession Session() const {
    ClientSession session;
    session.outlookApplication =
        std::shared_ptr<IUnknown>(m_outlook.MakeApplication().Detach(),
                                  [](IUnknown* object) { const ComPtr<IUnknown> last(object); });
    return session;
  }

  void SetFault(const char* call) {
    json mailbox = OutlookMailbox();
    mailbox["faults"] = json::array({{{"at", call}, {"result", E_FAIL}}});
    m_outlook.SetMailbox(mailbox);
  }
};

TEST_F(OutlookAdapterTest, DeletedItemsAreTheDefaultFolder) {
  EXPECT_EQ(OutlookAdapter().FindDefaultFolder(Session(), {}).firstId, "B2");
  EXPECT_EQ(OutlookAdapter().FindDefaultFolder({}, {}), MailFolderRef());
}

TEST_F(OutlookAdapterTest, AddressesAreCollectedWithALogonOfTheirOwn) {
  AddressSet addresses;
  EXPECT_EQ(OutlookAdapter().CollectSentAddresses(Session(), nullptr, &addresses), kOk);
  EXPECT_EQ(addresses, kAllAddresses);
  const std::string journal = Peer().Journal();
  EXPECT_THAT(journal, testing::StartsWith("Application.Session\nNameSpace.Logon\n"));
  EXPECT_THAT(journal, testing::EndsWith("NameSpace.Logoff\n"));
}

TEST_F(OutlookAdapterTest, FailedLogonReadsNothing) {
  SetFault("NameSpace.Logon");
  AddressSet addresses;
  EXPECT_EQ(OutlookAdapter().CollectSentAddresses(Session(), nullptr, &addresses), kNullPointer);
  EXPECT_THAT(addresses, IsEmpty());
  EXPECT_EQ(Peer().CallsOf("Application.GetNamespace"), 0);
  EXPECT_EQ(Peer().CallsOf("NameSpace.Logoff"), 0);
}

TEST_F(OutlookAdapterTest, CollectionThatIsCancelledReadsNoContacts) {
  CountedProgress progress;
  progress.cancelAtStep = 1;
  AddressSet addresses;
  EXPECT_EQ(OutlookAdapter().CollectSentAddresses(Session(), &progress.callbacks, &addresses), kOk);
  EXPECT_EQ(progress.steps, 1);
  EXPECT_EQ(Peer().CallsOf("NameSpace.GetDefaultFolder"), 0);
  Peer().ResetCalls();
  EXPECT_EQ(OutlookAdapter().CollectSentAddresses(Session(), &progress.callbacks, &addresses), kOk);
  EXPECT_EQ(Peer().Calls(), 0) << "it was canceled before it began";
}

TEST_F(OutlookAdapterTest, FailureOfEitherHalfIsTheResult) {
  const std::string nameSpaceOfSentMail = "Application.Session\nNameSpace.Logon\n";
  AddressSet addresses;
  const ClientSession session = Session();
  Peer().SetFault({.call = 3, .result = E_ACCESSDENIED});
  EXPECT_EQ(OutlookAdapter().CollectSentAddresses(session, nullptr, &addresses), E_ACCESSDENIED);
  EXPECT_THAT(Peer().Journal(),
              testing::StartsWith(nameSpaceOfSentMail + "Application.GetNamespace\n"));
  EXPECT_THAT(addresses, ElementsAre(L"carl@x.example", L"dora@x.example"));
}

TEST_F(OutlookAdapterTest, MissingContactsAreAFailureThatKeepsTheRecipients) {
  SetFault("NameSpace.GetDefaultFolder");
  AddressSet addresses;
  EXPECT_EQ(OutlookAdapter().CollectSentAddresses(Session(), nullptr, &addresses), E_FAIL);
  EXPECT_EQ(addresses.size(), 3U);
}

TEST_F(OutlookAdapterTest, ContactsAreCollectedThoughSentMailCanNotBe) {
  json mailbox = OutlookMailbox();
  mailbox["faults"] = json::array({{{"at", "NameSpace.GetFolderFromID"}, {"result", E_FAIL}}});
  m_outlook.SetMailbox(mailbox);
  AddressSet addresses;
  EXPECT_EQ(OutlookAdapter().CollectSentAddresses(Session(), nullptr, &addresses), kOk);
  EXPECT_THAT(addresses, ElementsAre(L"carl@x.example", L"dora@x.example"));
}

TEST_F(OutlookAdapterTest, ThreadOfAnotherApartmentReachesTheApplicationByAProxy) {
  json mailbox = OutlookMailbox();
  mailbox["freeThreaded"] = false;
  m_outlook.SetMailbox(mailbox);
  const ComPtr<IDispatch> application = m_outlook.MakeApplication();
  WizardRequest request;
  request.outlookApplication = application.Get();
  const auto hold = OutlookAdapter().MakeHold(&request);
  ASSERT_EQ(hold->EnsureSession(), kOk);
  MailFolderList folders;
  AddressSet addresses;
  const KernelHandle done(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
  std::thread worker([&] {
    const ComApartment apartment;
    OutlookAdapter().ListFolders(hold->OpenSession(), &folders);
    (void)OutlookAdapter().CollectSentAddresses(hold->OpenSession(), nullptr, &addresses);
    ::SetEvent(done.Get());
  });
  // The objects live here, so this thread has to answer.
  DWORD index = 0;
  HANDLE event = done.Get();
  EXPECT_EQ(::CoWaitForMultipleHandles(0, 60'000, 1, &event, &index), S_OK);
  worker.join();
  EXPECT_EQ(folders.size(), 9U);
  EXPECT_EQ(addresses, kAllAddresses);
  EXPECT_GT(Peer().CallsOf("Recipient.Address"), 0) << "MAPI's objects have no proxies here";
  hold->Disconnect();
}

class OutlookHarvestTest : public OutlookAdapterTest {
 protected:
  OutlookHarvestTest() : OutlookAdapterTest(OutlookClassServer::kInProcess) {}
};

TEST_F(OutlookHarvestTest, HarvestStartsOutlookLogsOnAndLetsItGo) {
  AddressSet addresses;
  std::thread([&] { EXPECT_EQ(OutlookAdapter().HarvestAddresses({}, &addresses), kOk); }).join();
  EXPECT_EQ(addresses, kAllAddresses);
  EXPECT_THAT(Peer().Journal(),
              testing::StartsWith("CreateInstance\nApplication.Session\nNameSpace.Logon\n"));
  EXPECT_EQ(Peer().CallsOf("NameSpace.Logoff"), 1);
}

TEST_F(OutlookHarvestTest, HarvestWithAnApplicationStartsNone) {
  AddressSet addresses;
  EXPECT_EQ(OutlookAdapter().HarvestAddresses(Session(), &addresses), kOk);
  EXPECT_EQ(addresses, kAllAddresses);
  EXPECT_EQ(Peer().CallsOf("CreateInstance"), 0);
}

TEST_F(OutlookHarvestTest, StoppedHarvestStartsNothing) {
  AddressSet addresses;
  EXPECT_EQ(OutlookAdapter().HarvestAddresses({nullptr, [] { return true; }}, &addresses), kOk);
  EXPECT_EQ(Peer().Calls(), 0);
}

// The suite's add-in is there, as a process of its own.
class OutlookAddInTest : public OutlookAdapterTest {
 protected:
  OutlookAddInTest() : m_stateFile(m_outlook.Folder().PathOf("addin.json")) {}

  void StartAddIn(const json& more = json::object()) {
    json state = {{"module", NarrowUtf8(kOutlookAddIn)},
                  {"text", "a text"},
                  {"folders", json::array({ToJson(kInbox)})},
                  {"lookup", json::object({{"3", ToJson(kStrange)}})},
                  {"contacts", json::array({"Gil@x.example"})},
                  {"sent", json::array({"/o=org/cn=Hal"})}};
    state.update(more);
    WriteFile(m_stateFile, state.dump());
    m_addIn.emplace(StartPeer(PeerPath(L"hookmodule\\hookmodule.exe"), {m_stateFile}));
  }

  void TearDown() override {
    m_addIn.reset();
    OutlookAdapterTest::TearDown();
  }

 private:
  std::wstring m_stateFile;
  std::optional<PeerProcess> m_addIn;
};

TEST_F(OutlookAddInTest, AddInThatAnswersHasTheLastWord) {
  StartAddIn();
  const ClientSession session = Session();
  MailFolderList folders;
  std::wstring text;
  EXPECT_EQ(
      ListOutlookFolders(session.outlookApplication.get(), UseHook::kYes, {}, &text, &folders),
      kOk);
  EXPECT_EQ(text, L"a text");
  EXPECT_THAT(folders, ElementsAre(kInbox));
  EXPECT_EQ(OutlookAdapter().FindDefaultFolder(session, {}), kStrange);
  MailFolderRef created;
  EXPECT_EQ(OutlookAdapter().CreateFolder(session, L"Spam", kInbox, &created), kOk);
  EXPECT_EQ(created, (MailFolderRef{L"\\\\Post\\Inbox\\Spam", "new-1", "made", 1}));
  EXPECT_EQ(Peer().Calls(), 0) << "Outlook was asked as well";
  AddressSet addresses;
  EXPECT_EQ(OutlookAdapter().CollectSentAddresses(session, nullptr, &addresses), kOk);
  EXPECT_THAT(addresses, ElementsAre(L"/o=org/cn=Hal", L"Gil@x.example"))
      << "what the add-in tells is taken as it stands";
  EXPECT_EQ(Peer().CallsOf("Items.Item"), 0);
}

TEST_F(OutlookAddInTest, EmptyAnswersOfTheAddInAreAnswers) {
  StartAddIn({{"folders", json::array()}, {"contacts", json::array()}, {"sent", json::array()}});
  MailFolderList folders;
  OutlookAdapter().ListFolders(Session(), &folders);
  EXPECT_THAT(folders, IsEmpty());
  AddressSet addresses;
  EXPECT_EQ(OutlookAdapter().CollectSentAddresses({}, nullptr, &addresses), kOk);
  EXPECT_THAT(addresses, IsEmpty());
}

TEST_F(OutlookAddInTest, AddInWhoseChannelCanNotBeReachedLeavesAllEmptyButTheNewFolder) {
  StartAddIn({{"tunnel", false}});
  MailFolderList folders;
  OutlookAdapter().ListFolders(Session(), &folders);
  EXPECT_THAT(folders, IsEmpty());
  EXPECT_EQ(Peer().Calls(), 0) << "the object model was tried";
  MailFolderRef created;
  EXPECT_EQ(OutlookAdapter().CreateFolder(Session(), L"Spam", {L"", "B4", "A1", 1}, &created), kOk);
  EXPECT_EQ(created.firstId, "B4F1");
}

TEST_F(OutlookAddInTest, EmptyFolderFromTheAddInLeavesItToOutlook) {
  StartAddIn({{"fault", {{"do", "text"}, {"command", 5}, {"message", 0}, {"value", ""}}}});
  MailFolderRef created;
  EXPECT_EQ(OutlookAdapter().CreateFolder(Session(), L"Spam", {L"", "B4", "A1", 1}, &created), kOk);
  EXPECT_EQ(created.firstId, "B4F1");
}

TEST_F(OutlookAddInTest, DefaultFolderThatTheAddInDoesNotKnowIsNone) {
  StartAddIn();
  MailFolderList folders;
  const ClientSession session = Session();
  EXPECT_EQ(
      GetOutlookDefaultFolderRef(session.outlookApplication.get(), 99, UseHook::kYes, {}, &folders),
      kOk);
  EXPECT_THAT(folders, IsEmpty());
  EXPECT_EQ(Peer().Calls(), 0);
}

TEST_F(OutlookAddInTest, WithoutASessionNobodyIsAskedForTheDefaultFolder) {
  StartAddIn();
  EXPECT_EQ(OutlookAdapter().FindDefaultFolder({}, {}), MailFolderRef());
}

TEST_F(OutlookAddInTest, AddInIsAskedOnlyWithTheFlag) {
  StartAddIn();
  const ClientSession session = Session();
  AddressSet addresses;
  EXPECT_EQ(CollectOutlookContacts(session.outlookApplication.get(), UseHook::kNo, {}, &addresses),
            kOk);
  EXPECT_THAT(addresses, ElementsAre(L"carl@x.example", L"dora@x.example"));
}

// Outlook as a program of its own, reached by COM alone.
class OutlookProgramTest : public OutlookAdapterTest {
 protected:
  OutlookProgramTest() : OutlookAdapterTest(OutlookClassServer::kProgram) {}
};

TEST_F(OutlookProgramTest, OutlookThatDoesNotRunIsStartedAndReached) {
  WizardRequest request;
  const auto hold = OutlookAdapter().MakeHold(&request);
  ASSERT_EQ(hold->EnsureSession(), kOk);
  MailFolderList folders;
  AddressSet addresses;
  std::thread([&] {
    const ComApartment apartment;
    OutlookAdapter().ListFolders(hold->OpenSession(), &folders);
    (void)OutlookAdapter().CollectSentAddresses(hold->OpenSession(), nullptr, &addresses);
  }).join();
  EXPECT_EQ(folders.size(), 9U);
  EXPECT_EQ(addresses, kAllAddresses);
  MailFolderRef created;
  EXPECT_EQ(OutlookAdapter().CreateFolder(hold->OpenSession(), L"Spam", folders.at(1), &created),
            kOk);
  EXPECT_EQ(created.name, L"\\\\Personal Folders\\Inbox\\Spam");
  hold->Disconnect();
}

TEST_F(OutlookProgramTest, HarvestReleasesAllThatTheProgramGave) {
  AddressSet addresses;
  std::thread([&] { EXPECT_EQ(OutlookAdapter().HarvestAddresses({}, &addresses), kOk); }).join();
  EXPECT_EQ(addresses, kAllAddresses);
  EXPECT_TRUE(m_outlook.WaitUntilReleased());
}

}  // namespace
}  // namespace postmarker::test
