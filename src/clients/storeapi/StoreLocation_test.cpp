#include "clients/storeapi/StoreLocation.h"

#include <gtest/gtest.h>

#include "support/FakeMachine.h"

namespace postmarker::storeapi {
namespace {

constexpr wchar_t kAnnsKey[] = L"Identities\\{ANN}\\Software\\Microsoft\\Outlook Express\\5.0";

class StoreLocation : public testing::Test {
 protected:
  StoreLocation() {
    m_machine.variables[L"%UserProfile%"] = L"C:\\Users\\ann";
    SetUser(L"Identities", L"Last User ID", L"{ANN}");
  }

  void SetUser(const std::wstring& key, const std::wstring& name, const std::wstring& text) {
    m_machine.AddText(RegistryRoot::kUser, key, name, text);
  }

  test::FakeMachine m_machine;
};

TEST_F(StoreLocation, RootIsThatOfTheIdentityExpanded) {
  SetUser(kAnnsKey, L"Store Root", L"%UserProfile%\\Store");
  SetUser(IdentityKey(L"{BEN}"), L"Store Root", L"D:\\Ben");
  SetUser(kWindowsMailKey, L"Store Root", L"C:\\WindowsMail");
  EXPECT_EQ(GetStoreRoot(L"", m_machine), L"C:\\Users\\ann\\Store");
  EXPECT_EQ(GetStoreRoot(L"{BEN}", m_machine), L"D:\\Ben");
}

TEST_F(StoreLocation, RootOfWindowsMailIsTakenIfTheIdentityHasNone) {
  SetUser(kWindowsMailKey, L"Store Root", L"%UserProfile%\\Windows Mail");
  EXPECT_EQ(GetStoreRoot(L"", m_machine), L"C:\\Users\\ann\\Windows Mail");
  EXPECT_EQ(GetStoreRoot(L"{UNKNOWN}", m_machine), L"C:\\Users\\ann\\Windows Mail");
  SetUser(L"Identities", L"Last User ID", L"");
  EXPECT_EQ(GetStoreRoot(L"", m_machine), L"C:\\Users\\ann\\Windows Mail");
}

TEST_F(StoreLocation, WithoutAnyStoreTheRootIsEmptyAndThereIsNoId) {
  EXPECT_EQ(GetStoreRoot(L"", m_machine), L"");
  EXPECT_EQ(ReadMessageStoreId(StoreClient::kOutlookExpress, m_machine), std::nullopt);
  EXPECT_EQ(ReadMessageStoreId(StoreClient::kWindowsMail, m_machine), std::nullopt);
}

TEST_F(StoreLocation, RootThatGrowsBeyond1023CharactersCountsAsNone) {
  SetUser(kAnnsKey, L"Store Root", L"%long%");
  SetUser(kWindowsMailKey, L"Store Root", L"C:\\WindowsMail");
  m_machine.variables[L"%long%"] = std::wstring(1023, L'l');
  EXPECT_EQ(GetStoreRoot(L"", m_machine), std::wstring(1023, L'l'));
  m_machine.variables[L"%long%"] = std::wstring(1024, L'l');
  EXPECT_EQ(GetStoreRoot(L"", m_machine), L"C:\\WindowsMail");
}

TEST_F(StoreLocation, AddressBookIsTheUnnamedValueOfItsKey) {
  EXPECT_EQ(ReadWabPath(m_machine), L"");
  SetUser(L"Software\\Microsoft\\WAB\\WAB4\\Wab File Name", L"", L"C:\\ann.wab");
  EXPECT_EQ(ReadWabPath(m_machine), L"C:\\ann.wab");
}

}  // namespace
}  // namespace postmarker::storeapi
