#include "clients/outlook/OutlookFolderList_win.h"

#include <gmock/gmock.h>

#include "clients/outlook/OutlookSession_win.h"
#include "support/FakeDispatch_win.h"
#include "support/OutlookFixture_win.h"

namespace postmarker::test {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr DISPID kName = 0x3001;
constexpr DISPID kParent = 0xF001;
constexpr DISPID kCount = 0x50;
constexpr DISPID kEntryId = 0xF01E;
constexpr DISPID kStoreId = 0x3108;
constexpr DISPID kDefaultItemType = 0x3106;

class OutlookFoldersTest : public OutlookTest {
 protected:
  MailFolderList List(const StopQuery& stop = {}) const {
    const ComPtr<IDispatch> application = m_outlook.MakeApplication();
    std::wstring text;
    MailFolderList folders;
    EXPECT_EQ(ListOutlookFolders(application.Get(), UseHook::kNo, stop, &text, &folders), kOk);
    return folders;
  }
  std::vector<std::wstring> Names() const {
    std::vector<std::wstring> names;
    for (const MailFolderRef& folder : List()) {
      names.push_back(folder.name);
    }
    return names;
  }
};

const MailFolderList kAllFolders = {{L"\\\\Personal Folders", "B0", "A1", 1},
                                    {L"\\\\Personal Folders\\Inbox", "B4", "A1", 1},
                                    {L"\\\\Personal Folders\\Inbox\\Gr\xFC\xDF"
                                     L"e",
                                     "B41", "A1", 1},
                                    {L"\\\\Personal Folders\\Deleted Items", "B2", "A1", 1},
                                    {L"\\\\Personal Folders\\Sent Items", "B3", "A1", 1},
                                    {L"\\\\Public", "D0", "A3", 0},
                                    {L"\\\\Public\\News", "D1", "A3", 0},
                                    {L"\\\\Archive", "C0", "A2", 0},
                                    {L"\\\\Archive\\Sent", "C3", "A2", 0}};

TEST_F(OutlookFoldersTest, AllStoresAreListedWithTheirFoldersForMail) {
  EXPECT_EQ(List(), kAllFolders);
}

TEST_F(OutlookFoldersTest, FolderForMailInACalendarIsNotListed) {
  EXPECT_THAT(Names(), Not(testing::Contains(HasSubstr(L"Mail in a calendar"))));
}

TEST_F(OutlookFoldersTest, StoresAreWalkedByMapiWithTheSharedSessionAndLeftInOrder) {
  (void)List();
  const std::string journal = Peer().Journal();
  EXPECT_THAT(journal, HasSubstr("MAPIInitialize\nMAPILogonEx\nIMAPISession.GetMsgStoresTable\n"
                                 "HrQueryAllRows\nIMAPISession.OpenMsgStore 24\nHrGetOneProp\n"));
  EXPECT_EQ(Peer().CallsOf("IMsgStore.StoreLogoff 2"), 3);
}

TEST_F(OutlookFoldersTest, WithoutOutlooksLibraryTheObjectModelTellsTheStores) {
  m_outlook.RemoveLibrary();
  EXPECT_EQ(List(), kAllFolders);
  EXPECT_EQ(Peer().CallsOf("MAPIInitialize"), 0);
}

TEST_F(OutlookFoldersTest, WithoutOutlooksLibraryTheSystemsMapiIsAskedFirst) {
  m_outlook.RemoveLibrary();
  // The system's library has no stores of its own, and leaves all to the mail program's.
  ASSERT_EQ(::GetModuleHandleW(L"mapi32.dll"), nullptr);
  const std::wstring clients = L"Software\\Clients\\Mail";
  RegistryKey::Create(HKEY_LOCAL_MACHINE, clients, KEY_ALL_ACCESS).WriteString(nullptr, L"Peer");
  RegistryKey::Create(HKEY_LOCAL_MACHINE, clients + L"\\Peer", KEY_ALL_ACCESS)
      .WriteString(L"DLLPathEx", m_outlook.LibraryPath());
  EXPECT_EQ(List(), kAllFolders);
  EXPECT_EQ(Peer().CallsOf("IMAPISession.OpenMsgStore 24"), 3);
}

TEST_F(OutlookFoldersTest, MapiThatRefusesTheLogonIsAsOneThatIsNotThere) {
  json mailbox = OutlookMailbox();
  mailbox["faults"] = json::array({{{"at", "MAPILogonEx"}, {"result", E_FAIL}}});
  m_outlook.SetMailbox(mailbox);
  EXPECT_EQ(List(), kAllFolders);
  EXPECT_EQ(Peer().CallsOf("IMAPISession.GetMsgStoresTable"), 0);
}

TEST_F(OutlookFoldersTest, StoreThatCanNotBeOpenedIsSkipped) {
  json mailbox = OutlookMailbox();
  mailbox["stores"][0]["id"] = std::string(4098, 'A');
  m_outlook.SetMailbox(mailbox);
  EXPECT_EQ(List().front().name, L"\\\\Public") << "a store's id has 4096 digits at most";
  Peer().ResetCalls();
  (void)List();
  EXPECT_EQ(Peer().CallsOf("IMAPISession.OpenMsgStore 24"), 2);
}

TEST_F(OutlookFoldersTest, StoreWithoutARootIsSkipped) {
  json mailbox = OutlookMailbox();
  mailbox["stores"][1]["root"]["id"] = "";
  m_outlook.SetMailbox(mailbox);
  EXPECT_EQ(List().size(), kAllFolders.size() - 2);
}

TEST_F(OutlookFoldersTest, FoldersInACircleEnd) {
  json mailbox = OutlookMailbox();
  // A folder that says that it is the one above it.
  mailbox["stores"][0]["root"]["folders"][0]["folders"][0]["id"] = "B4";
  m_outlook.SetMailbox(mailbox);
  EXPECT_EQ(List().size(), kAllFolders.size() - 1);
}

TEST_F(OutlookFoldersTest, FolderThatSaysThatItIsItsStoresRootIsListedOnce) {
  json mailbox = OutlookMailbox();
  mailbox["stores"][2]["root"]["folders"][0]["id"] = "C0";
  mailbox["stores"][2]["root"]["folders"][0]["folders"] =
      json::array({OutlookFolderJson("C9", "Below")});
  m_outlook.SetMailbox(mailbox);
  EXPECT_EQ(List().size(), kAllFolders.size() - 1);
}

TEST_F(OutlookFoldersTest, FoldersDeeperThanAThousandLevelsAreLeft) {
  m_outlook.RemoveLibrary();
  // One object is all that there is: each folder has one below it, with an id of its own.
  int ids = 0;
  FakeDispatch* self = nullptr;
  FakeDispatch endless([&](DISPID id, DISPPARAMS*, VARIANT* result) {
    if (id == kCount || id == kDefaultItemType) {
      *result = NumberVariant(id == kCount ? 1 : kOlMailItem);
    } else if (id == kName || id == kEntryId || id == kStoreId) {
      result->vt = VT_BSTR;
      result->bstrVal = MakeBstr(id == kEntryId ? std::to_wstring(++ids) : L"n").Release();
    } else {
      self->AddRef();
      result->vt = VT_DISPATCH;
      result->pdispVal = self;
    }
    return S_OK;
  });
  self = &endless;
  std::wstring text;
  MailFolderList folders;
  EXPECT_EQ(ListOutlookFolders(
                &endless, UseHook::kNo, [&ids] { return ids > 5000; }, &text, &folders),
            kOk);
  EXPECT_EQ(folders.size(), 1U + 1000) << "a root, and a thousand levels below it";
}

TEST_F(OutlookFoldersTest, FolderWhoseParentsGoInACircleHasNoPath) {
  int names = 0;
  FakeDispatch* self = nullptr;
  FakeDispatch circle([&](DISPID id, DISPPARAMS*, VARIANT* result) {
    if (id == kName) {
      ++names;
      result->vt = VT_BSTR;
    } else if (id == kParent) {
      self->AddRef();
      result->vt = VT_DISPATCH;
      result->pdispVal = self;
    } else {
      *result = NumberVariant(static_cast<LONG>(OutlookClass::kFolder));
    }
    // A walk without an end would fail here at last.
    return names > 5000 ? E_FAIL : S_OK;
  });
  self = &circle;
  OutlookFolder folder;
  ASSERT_EQ(folder.Attach(&circle), S_OK);
  std::wstring path = L"before";
  EXPECT_EQ(BuildOutlookFolderPath(folder, &path), E_FAIL);
  EXPECT_EQ(path, L"before");
  EXPECT_EQ(names, 1000);
}

TEST_F(OutlookFoldersTest, FoldersAHundredLevelsDeepAreListed) {
  json deepest = OutlookFolderJson("F0", "deepest");
  for (int i = 1; i < 100; ++i) {
    deepest = OutlookFolderJson("F" + std::to_string(i), "n", 0, json::array({deepest}));
  }
  json mailbox = OutlookMailbox();
  mailbox["stores"][1]["root"]["folders"] = json::array({deepest});
  m_outlook.SetMailbox(mailbox);
  EXPECT_EQ(List().size(), kAllFolders.size() - 1 + 100);
}

TEST_F(OutlookFoldersTest, StopEndsTheListAndKeepsWhatIsThere) {
  for (int question = 1; question < 12; ++question) {
    const MailFolderList folders = List(StopAtQuestion(question));
    ASSERT_LT(folders.size(), kAllFolders.size());
    EXPECT_TRUE(std::equal(folders.begin(), folders.end(), kAllFolders.begin())) << question;
  }
}

TEST_F(OutlookFoldersTest, WithoutAnApplicationTheListFails) {
  std::wstring text;
  MailFolderList folders;
  EXPECT_EQ(ListOutlookFolders(nullptr, UseHook::kYes, {}, &text, &folders), kFail);
  EXPECT_EQ(GetOutlookDefaultFolderRef(nullptr, 3, UseHook::kYes, {}, &folders), kNullPointer);
  EXPECT_THAT(folders, IsEmpty());
}

TEST_F(OutlookFoldersTest, DefaultFolderHasItsPathIdsAndFlag) {
  const ComPtr<IDispatch> application = m_outlook.MakeApplication();
  MailFolderList folders;
  EXPECT_EQ(GetOutlookDefaultFolderRef(application.Get(), kOlFolderDeletedItems, UseHook::kNo, {},
                                       &folders),
            kOk);
  EXPECT_EQ(folders, (MailFolderList{{L"\\\\Personal Folders\\Deleted Items", "B2", "A1", 1}}));
  EXPECT_LT(GetOutlookDefaultFolderRef(application.Get(), 23, UseHook::kNo, {}, &folders), 0);
  EXPECT_EQ(folders.size(), 1U);
}

TEST_F(OutlookFoldersTest, NewFolderIsMadeForMailBelowItsParent) {
  const ComPtr<IDispatch> application = m_outlook.MakeApplication();
  const MailFolderRef parent = {L"\\\\Archive\\Sent", "C3", "A2", 7};
  MailFolderRef created;
  EXPECT_EQ(CreateOutlookFolder(application.Get(), parent, L"Sp\xE4m", UseHook::kNo, {}, &created),
            kOk);
  EXPECT_EQ(created, (MailFolderRef{L"\\\\Archive\\Sent\\Sp\xE4m", "C3F0", "A2", 7}));
  EXPECT_THAT(Names(), testing::Contains(L"\\\\Archive\\Sent\\Sp\xE4m"));
  EXPECT_EQ(Peer().CallsOf("NameSpace.Logon"), 1);
}

TEST_F(OutlookFoldersTest, FolderThatCanNotBeMadeLeavesTheRecordAsItIs) {
  const ComPtr<IDispatch> application = m_outlook.MakeApplication();
  const MailFolderRef before = {L"before", "1", "2", 3};
  MailFolderRef created = before;
  const MailFolderRef inbox = {L"\\\\Personal Folders\\Inbox", "B4", "A1", 1};
  EXPECT_LT(CreateOutlookFolder(application.Get(), inbox,
                                L"Gr\xFC\xDF"
                                L"e",
                                UseHook::kNo, {}, &created),
            0)
      << "there is such a folder already";
  EXPECT_LT(CreateOutlookFolder(application.Get(), {L"", "FFFF", "A1", 1}, L"x", UseHook::kNo, {},
                                &created),
            0);
  EXPECT_LT(CreateOutlookFolder(application.Get(), {L"", "B4", "A2", 1}, L"x", UseHook::kNo, {},
                                &created),
            0)
      << "the folder is in another store";
  EXPECT_EQ(created, before);
}

TEST_F(OutlookFoldersTest, VersionHasTheNameOfItsRelease) {
  const ComPtr<IDispatch> application = m_outlook.MakeApplication();
  std::wstring name;
  EXPECT_EQ(GetOutlookVersionName(application.Get(), &name), kOk);
  EXPECT_EQ(name, L"2007");
  EXPECT_EQ(GetOutlookVersionName(nullptr, &name), kNullPointer);
}

class OutlookClassTest : public OutlookTest {
 protected:
  OutlookClassTest() : OutlookTest(OutlookClassServer::kInProcess) {}
};

TEST_F(OutlookClassTest, NewFolderStartsOutlookIfThereIsNoApplication) {
  MailFolderRef created;
  EXPECT_EQ(CreateOutlookFolder(nullptr, {L"", "B4", "A1", 1}, L"Spam", UseHook::kNo, {}, &created),
            kOk);
  EXPECT_EQ(created, (MailFolderRef{L"\\\\Personal Folders\\Inbox\\Spam", "B4F1", "A1", 1}));
  EXPECT_EQ(Peer().CallsOf("CreateInstance"), 1);
}

}  // namespace
}  // namespace postmarker::test
