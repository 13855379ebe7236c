#include "clients/incredimail/ImIdentity_win.h"

#include <gtest/gtest.h>

#include "support/ImInstallation_win.h"

namespace postmarker::incredimail {
namespace {

using test::ImInstallation;
using Names = std::vector<std::wstring>;

Names WalkNames() {
  Names names;
  for (ImIdentityWalker walker; Succeeded(walker.Status()); walker.Next()) {
    names.push_back(walker.Name());
  }
  return names;
}

class ImIdentityTest : public testing::Test {
 protected:
  // Stores the bytes as the value "ApplicationPath" and reads it back.
  std::wstring ReadBack(DWORD type, const std::vector<uint8_t>& bytes) {
    ImInstallation::WriteBytes(HKEY_CURRENT_USER, ImInstallation::kClientKey, L"ApplicationPath",
                               type, bytes);
    std::wstring path = L"(as before)";
    const ResultCode result = FindApplicationPath(&path);
    EXPECT_EQ(result, path == L"(as before)" ? kFail : kOk);
    return path;
  }

  ImInstallation m_client;
};

TEST_F(ImIdentityTest, ViewIsThe32BitOneExceptOnVersion50) {
  EXPECT_EQ(KeyViewOf(5, 0), 0U);
  EXPECT_EQ(KeyViewOf(5, 1), REGSAM{KEY_WOW64_32KEY});
  EXPECT_EQ(KeyViewOf(6, 0), REGSAM{KEY_WOW64_32KEY});
  EXPECT_EQ(KeyViewOf(10, 0), REGSAM{KEY_WOW64_32KEY});
}

TEST_F(ImIdentityTest, NothingRegistered) {
  std::wstring path = L"(as before)";
  EXPECT_EQ(FindExecutablePath(&path), kFail);
  EXPECT_EQ(FindApplicationPath(&path), kFail);
  EXPECT_EQ(path, L"(as before)");
  EXPECT_FALSE(IsIncrediMailInstalled());
  const ImIdentityWalker walker;
  EXPECT_EQ(walker.Status(), kFail);
  EXPECT_EQ(walker.IdentitiesDir(), L"");
  EXPECT_EQ(walker.Path(), L"");
  EXPECT_EQ(GetDefaultIdentityName(), L"");
}

TEST_F(ImIdentityTest, ProgramIsInstalledIfItsPathIsNotEmpty) {
  m_client.RegisterProgram();
  EXPECT_TRUE(IsIncrediMailInstalled());
  ImInstallation::WriteString(HKEY_LOCAL_MACHINE, ImInstallation::kAppPath, nullptr, L"");
  std::wstring path = L"(as before)";
  EXPECT_EQ(FindExecutablePath(&path), kOk);
  EXPECT_EQ(path, L"");
  EXPECT_FALSE(IsIncrediMailInstalled());
}

TEST_F(ImIdentityTest, StringsMustBeStringsOfAnEvenSizeWithANulAtTheEnd) {
  EXPECT_EQ(ReadBack(REG_SZ, {'a', 0, 0, 0}), L"a");
  EXPECT_EQ(ReadBack(REG_EXPAND_SZ, {'%', 0, 'T', 0, '%', 0, 0, 0}), L"%T%");
  EXPECT_EQ(ReadBack(REG_SZ, {'a', 0, 0, 0, 'b', 0, 0, 0}), L"a");
  EXPECT_EQ(ReadBack(REG_SZ, {'a', 0}), L"(as before)");
  EXPECT_EQ(ReadBack(REG_SZ, {'a', 0, 0, 0, 0}), L"(as before)");
  EXPECT_EQ(ReadBack(REG_SZ, {0}), L"(as before)");
  EXPECT_EQ(ReadBack(REG_SZ, {}), L"(as before)");
  EXPECT_EQ(ReadBack(REG_BINARY, {'a', 0, 0, 0}), L"(as before)");
  EXPECT_EQ(ReadBack(REG_MULTI_SZ, {'a', 0, 0, 0}), L"(as before)");
}

TEST_F(ImIdentityTest, PathsHaveAtMost259Characters) {
  const auto read = [](size_t length) {
    ImInstallation::WriteString(HKEY_CURRENT_USER, ImInstallation::kClientKey, L"ApplicationPath",
                                std::wstring(length, L'p'));
    std::wstring path;
    FindApplicationPath(&path);
    return path.size();
  };
  EXPECT_EQ(read(259), 259U);
  EXPECT_EQ(read(260), 0U);
}

TEST_F(ImIdentityTest, NamesHaveAtMost4095Characters) {
  const auto read = [this](size_t length) {
    m_client.AddIdentity(L"{1}", std::wstring(length, L'n'));
    return ReadIdentityDisplayName(L"{1}").size();
  };
  EXPECT_EQ(read(4095), 4095U);
  EXPECT_EQ(read(4096), 0U);
}

TEST_F(ImIdentityTest, DisplayNameIsEmptyIfKeyOrValueIsMissing) {
  EXPECT_EQ(ReadIdentityDisplayName(L"{1}"), L"");
  m_client.AddIdentity(L"{1}");
  EXPECT_EQ(ReadIdentityDisplayName(L"{1}"), L"");
  m_client.AddIdentity(L"{1}", L"J\u00FCrgen");
  EXPECT_EQ(ReadIdentityDisplayName(L"{1}"), L"J\u00FCrgen");
}

TEST_F(ImIdentityTest, WalkerFailsWithoutIdentities) {
  m_client.RegisterData();
  const ImIdentityWalker noKey;
  EXPECT_EQ(noKey.Status(), kFail);
  EXPECT_EQ(noKey.IdentitiesDir(), m_client.DataFolder() + L"\\Identities\\");
  m_client.SetDefaultIdentity(L"{1}");
  EXPECT_EQ(ImIdentityWalker().Status(), kFail);
}

TEST_F(ImIdentityTest, WalkerStepsThroughTheIdentities) {
  m_client.RegisterData();
  m_client.SetDefaultIdentity(L"{2}");
  m_client.AddIdentity(L"{1}", L"Ann", 7);
  m_client.AddIdentity(L"{2}", L"Ben");
  ImIdentityWalker walker;
  EXPECT_EQ(walker.Status(), kOk);
  EXPECT_EQ(walker.Name(), L"{1}");
  EXPECT_EQ(walker.IsDefault(), 0);
  EXPECT_EQ(walker.Language(), 7U);
  EXPECT_EQ(walker.Path(), m_client.DataFolder() + L"\\Identities\\{1}");
  walker.Next();
  EXPECT_EQ(walker.Status(), kOk);
  EXPECT_EQ(walker.Name(), L"{2}");
  EXPECT_EQ(walker.IsDefault(), 1);
  EXPECT_EQ(walker.Language(), 9U);
  walker.Next();
  EXPECT_EQ(walker.Status(), kFail);
  EXPECT_EQ(walker.Name(), L"");
  EXPECT_EQ(walker.IsDefault(), 0);
  EXPECT_EQ(walker.Path(), L"");
  walker.Next();
  EXPECT_EQ(walker.Status(), kFail);
}

TEST_F(ImIdentityTest, LanguageOfAnotherTypeCountsAsMissing) {
  m_client.RegisterData();
  m_client.AddIdentity(L"{1}");
  ImInstallation::WriteString(HKEY_CURRENT_USER,
                              std::wstring(ImInstallation::kIdentitiesKey) + L"\\{1}",
                              L"UILanguage", L"7");
  EXPECT_EQ(ImIdentityWalker().Language(), 9U);
}

TEST_F(ImIdentityTest, DefaultIdentityIsComparedWithCase) {
  m_client.RegisterData();
  m_client.AddIdentity(L"{abc}");
  m_client.SetDefaultIdentity(L"{ABC}");
  EXPECT_EQ(GetDefaultIdentityName(), L"");
  m_client.SetDefaultIdentity(L"{abc}");
  EXPECT_EQ(GetDefaultIdentityName(), L"{abc}");
}

TEST_F(ImIdentityTest, NoDefaultValueMeansNoDefaultIdentity) {
  m_client.RegisterData();
  m_client.AddIdentity(L"{1}");
  EXPECT_EQ(GetDefaultIdentityName(), L"");
  EXPECT_EQ(ImIdentityWalker().IsDefault(), 0);
}

TEST_F(ImIdentityTest, RegistryIsReadAnewEachTime) {
  m_client.RegisterData();
  m_client.AddIdentity(L"{1}");
  EXPECT_EQ(WalkNames(), (Names{L"{1}"}));
  m_client.AddIdentity(L"{2}");
  EXPECT_EQ(WalkNames(), (Names{L"{1}", L"{2}"}));
}

// The views differ only in the real registry, so this test takes a key of its own there.
TEST(ImClientKey, IsOpenedInThe32BitView) {
  const std::wstring path =
      L"Software\\PostmarkerClientKey" + std::to_wstring(::GetCurrentProcessId());
  for (const REGSAM view : {KEY_WOW64_32KEY, KEY_WOW64_64KEY}) {
    const RegistryKey key = RegistryKey::Create(HKEY_LOCAL_MACHINE, path, KEY_ALL_ACCESS | view);
    ASSERT_TRUE(key.WriteString(L"View", view == KEY_WOW64_32KEY ? L"32" : L"64"));
  }
  std::wstring view;
  EXPECT_TRUE(
      ReadClientString(OpenClientKey(HKEY_LOCAL_MACHINE, path, KEY_READ), L"View", 64, &view));
  EXPECT_EQ(view, L"32");
  for (const REGSAM each : {KEY_WOW64_32KEY, KEY_WOW64_64KEY}) {
    EXPECT_EQ(::RegDeleteKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), each, 0), ERROR_SUCCESS);
  }
}

}  // namespace
}  // namespace postmarker::incredimail
