// The folders of the store, read, looked up and made through the store's own object.
#include <gmock/gmock.h>

#include "clients/storeapi/StoreAdapter_win.h"
#include "clients/storeapi/StoreInterfaces_win.h"
#include "clients/storeapi/StoreSession_win.h"
#include "support/ComPtr_win.h"
#include "support/StoreInstallation_win.h"

namespace postmarker::storeapi {
namespace {

using nlohmann::json;
using test::StoreInstallation;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr auto kNotThere = static_cast<ResultCode>(0x800CCF65);

class StoreFolders : public testing::Test {
 protected:
  ~StoreFolders() override { EXPECT_EQ(Peer()->countLive(), 0) << "objects were left"; }

  [[nodiscard]] const test::StorePeer& Peer() const { return m_client.Peer(); }

  MailFolderList List(const StopQuery& stop = {}) {
    MailFolderList folders;
    ListStoreFolders(stop, false, &folders, &m_text);
    return folders;
  }
  ResultCode Create(const MailFolderRef& parent, const std::string& name) {
    return CreateStoreFolder(parent, nullptr, name, false, &m_created);
  }
  std::optional<uint32_t> CompactCount(const wchar_t* key) const {
    return StoreInstallation::ReadNumber(key, StoreInstallation::kCompactCount);
  }

  StoreInstallation m_client;
  std::wstring m_text = L"as before";
  MailFolderRef m_created = {L"as before", "1", "s", 1};
};

const MailFolderList& UsualFolders() {
  static const MailFolderList folders = {
      {L"\\\\Local Folders", "0", "0", 1},
      {L"\\\\Local Folders\\Inbox", "4", "0", 1},
      {L"\\\\Local Folders\\Outbox", "5", "0", 1},
      {L"\\\\Local Folders\\Sent Items", "6", "0", 1},
      {L"\\\\Local Folders\\Deleted Items", "7", "0", 1},
      {L"\\\\Local Folders\\Drafts", "8", "0", 1},
      {L"\\\\Local Folders\\Inbox\\Spam", "9", "0", 1},
  };
  return folders;
}

TEST_F(StoreFolders, AreListedFromEitherFormOfTheRecords) {
  json store = StoreInstallation::UsualStore();
  for (const int form : {280, 288}) {
    SCOPED_TRACE(form);
    store["form"] = form;
    Peer().SetState(store);
    EXPECT_EQ(List(), UsualFolders());
    EXPECT_EQ(m_text, L"as before");
    // One question more for the root, and one more for each level.
    EXPECT_EQ(Peer()->countCalls("Namespace.GetFolderProps"), form == 280 ? 1 : 2);
    EXPECT_EQ(Peer()->countCalls("Namespace.GetFirstSubFolder"), form == 280 ? 7 : 14);
    EXPECT_EQ(Peer()->countCalls("Namespace.GetSubFolderClose"), form == 280 ? 7 : 14);
  }
}

TEST_F(StoreFolders, RootWithAnIdOfItsOwnIsTheStoreOfAllAndHasTheIdZero) {
  Peer().SetState(
      {{"root",
        {{"id", 1'000}, {"name", "Mail"}, {"children", {{{"id", 3}, {"bytes", "4772fcdf65"}}}}}}});
  EXPECT_THAT(List(), ElementsAre(MailFolderRef{L"\\\\Mail", "0", "1000", 1},
                                  MailFolderRef{L"\\\\Mail\\Gr\xFC\xDF"
                                                L"e",
                                                "3", "1000", 1}));
}

TEST_F(StoreFolders, StoreThatContainsItselfHasAnEnd) {
  Peer().SetState(
      {{"root",
        {{"id", 1},
         {"name", "R"},
         {"children",
          {{{"id", 2}, {"name", "a"}, {"children", {{{"again", 1}}}}}, {{"again", 2}}}}}}});
  const MailFolderList folders = List();
  EXPECT_THAT(folders, SizeIs(4));
  EXPECT_EQ(Peer()->countCalls("Namespace.GetFirstSubFolder"), 2);
}

TEST_F(StoreFolders, EnumerationWithoutEndEndsAtTheLimit) {
  json store = StoreInstallation::UsualStore();
  store["endless"] = true;
  Peer().SetState(store);
  EXPECT_THAT(List(), SizeIs(100'000));
}

TEST_F(StoreFolders, AreReadAsFarAsStopAllows) {
  Peer().SetState(StoreInstallation::UsualStore());
  EXPECT_THAT(List([] { return true; }), IsEmpty());
  EXPECT_EQ(Peer()->countCalls(""), 0);
  int questions = 0;
  EXPECT_THAT(List([&questions] { return ++questions > 4; }), SizeIs(3));
}

TEST_F(StoreFolders, WithoutAStoreThereAreNone) {
  EXPECT_THAT(List(), IsEmpty());
  MailFolderRef folder = m_created;
  EXPECT_TRUE(Failed(GetStoreSpecialFolder(StoreFolderKind::kDeleted, {}, false, &folder)));
  EXPECT_EQ(folder, m_created);
  EXPECT_TRUE(Failed(Create({}, "x")));
  EXPECT_EQ(m_created.name, L"as before");
}

TEST_F(StoreFolders, SpecialFolderIsFoundByItsKind) {
  Peer().SetState(StoreInstallation::UsualStore());
  const std::pair<StoreFolderKind, std::string> expected[] = {
      {StoreFolderKind::kInbox, "4"}, {StoreFolderKind::kOutbox, "5"},
      {StoreFolderKind::kSent, "6"},  {StoreFolderKind::kDeleted, "7"},
      {StoreFolderKind::kDraft, "8"}, {StoreFolderKind::kOther, "0"}};
  for (const auto& [kind, id] : expected) {
    MailFolderRef folder;
    EXPECT_EQ(GetStoreSpecialFolder(kind, {}, false, &folder), kOk);
    EXPECT_EQ(folder.firstId, id);
  }
  MailFolderRef folder;
  EXPECT_EQ(GetStoreSpecialFolder(StoreFolderKind::kDeleted, {}, false, &folder), kOk);
  EXPECT_EQ(folder, UsualFolders()[4]);
}

TEST_F(StoreFolders, StoreWithoutTheKindFails) {
  Peer().SetState({{"root", {{"name", "R"}}}});
  MailFolderRef folder = m_created;
  EXPECT_EQ(GetStoreSpecialFolder(StoreFolderKind::kDeleted, {}, false, &folder), kFail);
  EXPECT_EQ(folder, m_created);
}

TEST_F(StoreFolders, NewFolderLiesBelowItsParent) {
  Peer().SetState(StoreInstallation::UsualStore());
  const MailFolderRef parent = {L"\\\\Local Folders\\Inbox", "4", "store", 5};
  EXPECT_EQ(Create(parent,
                   "Gr\xFC\xDF"
                   "e"),
            kOk);
  EXPECT_EQ(m_created, (MailFolderRef{L"\\\\Local Folders\\Inbox\\Gr\xFC\xDF"
                                      L"e",
                                      "10", "store", 5}));
  EXPECT_STREQ(Peer()->journal(),
               "create 10 below 4 Gr\xFC\xDF"
               "e\n");
  EXPECT_EQ(List().back().name, m_created.name);
}

TEST_F(StoreFolders, IdZeroMakesAFolderBelowTheRoot) {
  Peer().SetState(StoreInstallation::UsualStore());
  EXPECT_EQ(Create(UsualFolders().front(), "New"), kOk);
  EXPECT_EQ(m_created, (MailFolderRef{L"\\\\Local Folders\\New", "10", "0", 1}));
}

TEST_F(StoreFolders, FailedCreationLeavesTheRecordAsItWas) {
  Peer().SetState(StoreInstallation::UsualStore());
  EXPECT_EQ(Create({L"\\\\gone", "77", "0", 1}, "New"), kNotThere);
  EXPECT_EQ(m_created.name, L"as before");
}

TEST_F(StoreFolders, GivenStoreIsAskedForItsInterfaceAndNotOpened) {
  Peer().SetState(StoreInstallation::UsualStore());
  {
    const StoreSession session;
    ASSERT_EQ(session.Result(), S_OK);
    ComPtr<IUnknown> unknown;
    ASSERT_EQ(session.Store()->QueryInterface(IID_IUnknown, unknown.PutVoid()), S_OK);
    EXPECT_EQ(CreateStoreFolder(UsualFolders()[1], unknown.Get(), "New", false, &m_created), kOk);
    EXPECT_EQ(m_created.firstId, "10");
    EXPECT_EQ(Peer()->countCalls("Store.Create"), 1);
    ComPtr<IStoreFolder> folder;
    ASSERT_EQ(session.Store()->OpenFolder(4, 0, folder.Put()), S_OK);
    EXPECT_EQ(CreateStoreFolder(UsualFolders()[1], folder.Get(), "New", false, &m_created),
              E_NOINTERFACE);
  }
}

TEST_F(StoreFolders, OpeningTellsTheClientNotToCompact) {
  Peer().SetState(StoreInstallation::UsualStore());
  (void)RegistryKey::Create(HKEY_CURRENT_USER, StoreInstallation::kWindowsMailKey, KEY_ALL_ACCESS);
  RegistryKey::Create(HKEY_CURRENT_USER, StoreInstallation::kIdentityKey, KEY_ALL_ACCESS)
      .WriteDword(StoreInstallation::kCompactCount, 99);
  (void)List();
  EXPECT_EQ(CompactCount(StoreInstallation::kIdentityKey), 0U);
  EXPECT_EQ(CompactCount(StoreInstallation::kWindowsMailKey), std::nullopt);
}

TEST_F(StoreFolders, WithoutTheIdentitysKeyWindowsMailIsTold) {
  Peer().SetState(StoreInstallation::UsualStore());
  StoreInstallation::DeleteKey(StoreInstallation::kIdentityKey);
  (void)List();
  EXPECT_EQ(CompactCount(StoreInstallation::kWindowsMailKey), std::nullopt);
  (void)RegistryKey::Create(HKEY_CURRENT_USER, StoreInstallation::kWindowsMailKey, KEY_ALL_ACCESS);
  (void)List();
  EXPECT_EQ(CompactCount(StoreInstallation::kWindowsMailKey), 0U);
}

TEST_F(StoreFolders, WithoutAnIdentityNothingIsWritten) {
  Peer().SetState(StoreInstallation::UsualStore());
  StoreInstallation::DeleteKey(L"Identities");
  (void)RegistryKey::Create(HKEY_CURRENT_USER, StoreInstallation::kWindowsMailKey, KEY_ALL_ACCESS);
  EXPECT_EQ(List(), UsualFolders());
  EXPECT_EQ(CompactCount(StoreInstallation::kWindowsMailKey), std::nullopt);
}

TEST_F(StoreFolders, StoreThatCanNotBeInitializedIsNotTouched) {
  Peer().SetState(StoreInstallation::UsualStore());
  Peer()->failCall("Namespace.Initialize", 1, E_ACCESSDENIED);
  EXPECT_THAT(List(), IsEmpty());
  EXPECT_EQ(CompactCount(StoreInstallation::kIdentityKey), std::nullopt);
  Peer()->failCall("Store.Create", 2, E_ACCESSDENIED);
  EXPECT_EQ(Create({}, "x"), E_ACCESSDENIED);
}

TEST_F(StoreFolders, EachClientReadsTheIdFromItsOwnFile) {
  const std::string id("\x01\x23\x45\x67\x89\xAB\xCD\xEF", 8);
  const std::string other("\xFE\xDC\xBA\x98\x76\x54\x32\x10", 8);
  const StoreAdapter outlookExpress(StoreClient::kOutlookExpress);
  const StoreAdapter windowsMail(StoreClient::kWindowsMail);
  std::string read = "as before";
  EXPECT_FALSE(outlookExpress.ReadStoreId(&read));
  EXPECT_FALSE(windowsMail.ReadStoreId(&read));
  EXPECT_EQ(read, "as before");
  test::WriteFile(m_client.BackupPath(), StoreInstallation::DatabaseWith(other));
  EXPECT_TRUE(windowsMail.ReadStoreId(&read));
  EXPECT_EQ(read, other);
  test::WriteFile(m_client.DatabasePath(), StoreInstallation::DatabaseWith(id));
  EXPECT_TRUE(windowsMail.ReadStoreId(&read));
  EXPECT_EQ(read, id);
  EXPECT_FALSE(outlookExpress.ReadStoreId(&read));
  test::WriteFile(m_client.DbxPath(), test::MakeDbxFile(other));
  EXPECT_TRUE(outlookExpress.ReadStoreId(&read));
  EXPECT_EQ(read, other);
}

}  // namespace
}  // namespace postmarker::storeapi
