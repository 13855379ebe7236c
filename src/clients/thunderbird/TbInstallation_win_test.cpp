#include "clients/thunderbird/TbInstallation_win.h"

#include <windows.h>

#include <shlobj.h>

#include <gtest/gtest.h>

#include <filesystem>

#include "support/RegistrySandbox_win.h"
#include "support/Registry_win.h"
#include "support/TempFolder.h"

namespace postmarker::thunderbird {
namespace {

constexpr wchar_t kClientKey[] = L"Software\\Mozilla\\Mozilla Thunderbird";

class TbInstallationTest : public testing::Test {
 protected:
  static RegistryKey Machine(const std::wstring& path) {
    return RegistryKey::Create(HKEY_LOCAL_MACHINE, path, KEY_ALL_ACCESS);
  }
  static RegistryKey User(const std::wstring& path) {
    return RegistryKey::Create(HKEY_CURRENT_USER, path, KEY_ALL_ACCESS);
  }

  // The user's data lie in the test's folder from now on.
  void MoveData() const {
    User(L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders")
        .WriteString(L"AppData", m_folder.Path().wstring());
  }

  void AddProfile(std::string_view profilesIni) const {
    MoveData();
    std::filesystem::create_directories(m_folder.Path() / "Thunderbird" / "Profiles" / "p");
    test::WriteFile(m_folder.PathOf("Thunderbird\\profiles.ini"), profilesIni);
  }
  void AddDefaultProfile() const {
    AddProfile("[Profile0]\r\nName=default\r\nIsRelative=1\r\nPath=Profiles/p\r\n");
  }
  void AddExtensionsIni(std::string_view text) const {
    test::WriteFile(m_folder.PathOf("Thunderbird\\Profiles\\p\\extensions.ini"), text);
  }
  static void RegisterExtension(const std::wstring& path, DWORD type = REG_SZ) {
    User(kExtensionsKey)
        .WriteBytes(kExtensionId, type, path.c_str(),
                    static_cast<DWORD>((path.size() + 1) * sizeof(wchar_t)));
  }

  test::RegistrySandbox m_registry{test::Redirect::kUserAndMachine};
  test::TempFolder m_folder;
  std::wstring m_path = L"(as before)";
};

TEST_F(TbInstallationTest, ProgramIsThatOfTheCurrentVersion) {
  Machine(kClientKey).WriteString(L"CurrentVersion", L"3.1");
  Machine(std::wstring(kClientKey) + L"\\2.0\\Main").WriteString(L"PathToExe", L"C:\\old.exe");
  Machine(std::wstring(kClientKey) + L"\\3.1\\Main").WriteString(L"PathToExe", L"C:\\tb ü.exe");
  EXPECT_EQ(GetThunderbirdExePath(), L"C:\\tb ü.exe");
}

TEST_F(TbInstallationTest, ProgramIsEmptyWhenAPieceIsMissing) {
  EXPECT_EQ(GetThunderbirdExePath(), L"");
  Machine(std::wstring(kClientKey) + L"\\3.1\\Main").WriteString(L"PathToExe", L"C:\\tb.exe");
  EXPECT_EQ(GetThunderbirdExePath(), L"");
  Machine(kClientKey).WriteString(L"CurrentVersion", L"3.2");
  EXPECT_EQ(GetThunderbirdExePath(), L"");
  Machine(kClientKey).WriteDword(L"CurrentVersion", 3);
  EXPECT_EQ(GetThunderbirdExePath(), L"");
  Machine(kClientKey).WriteString(L"CurrentVersion", L"3.1");
  EXPECT_EQ(GetThunderbirdExePath(), L"C:\\tb.exe");
}

TEST_F(TbInstallationTest, ProgramPathOfMoreThan259CharactersIsNotTaken) {
  Machine(kClientKey).WriteString(L"CurrentVersion", L"3.1");
  const RegistryKey main = Machine(std::wstring(kClientKey) + L"\\3.1\\Main");
  main.WriteString(L"PathToExe", std::wstring(259, L'x'));
  EXPECT_EQ(GetThunderbirdExePath(), std::wstring(259, L'x'));
  main.WriteString(L"PathToExe", std::wstring(260, L'x'));
  EXPECT_EQ(GetThunderbirdExePath(), L"");
}

TEST_F(TbInstallationTest, ProfileIsBelowTheUsersData) {
  AddDefaultProfile();
  EXPECT_EQ(GetThunderbirdProfilePath(&m_path), kOk);
  EXPECT_EQ(m_path, m_folder.Path().wstring() + L"\\Thunderbird\\Profiles\\p");
}

TEST_F(TbInstallationTest, ProfileWithoutTheFileOrItsLinesFails) {
  MoveData();
  EXPECT_EQ(GetThunderbirdProfilePath(&m_path), kFail);
  EXPECT_EQ(m_path, L"");
  AddProfile("[Profile0]\r\nName=work\r\nIsRelative=1\r\nPath=Profiles/p\r\n");
  EXPECT_EQ(GetThunderbirdProfilePath(&m_path), kFail);
  AddProfile("");
  EXPECT_EQ(GetThunderbirdProfilePath(&m_path), kFail);
}

TEST_F(TbInstallationTest, ExtensionIsInstalledWhenTheProfileKnowsItsPath) {
  AddDefaultProfile();
  AddExtensionsIni("[ExtensionDirs]\r\nExtension0=C:\\Suite\\tb\r\n");
  RegisterExtension(L"C:\\Suite\\tb");
  EXPECT_TRUE(IsThunderbirdExtensionInstalled());
  RegisterExtension(L"C:\\SUITE\\tb");
  EXPECT_FALSE(IsThunderbirdExtensionInstalled());
}

TEST_F(TbInstallationTest, EnvironmentVariablesOfTheExtensionsPathAreExpanded) {
  ::SetEnvironmentVariableW(L"PM_TEST_SUITE", L"D:\\Suite");
  AddDefaultProfile();
  AddExtensionsIni("Extension0=D:\\Suite\\tb\r\n");
  for (const DWORD type : {DWORD{REG_SZ}, DWORD{REG_EXPAND_SZ}}) {
    RegisterExtension(L"%PM_TEST_SUITE%\\tb", type);
    EXPECT_TRUE(IsThunderbirdExtensionInstalled());
  }
}

TEST_F(TbInstallationTest, ExpandedPathIsKeptAsFarAsTheRoomGoes) {
  ::SetEnvironmentVariableW(L"PM_TEST_LONG", std::wstring(300, L'x').c_str());
  AddDefaultProfile();
  AddExtensionsIni(std::string(259, 'x') + "\r\n");
  RegisterExtension(L"%PM_TEST_LONG%");
  EXPECT_TRUE(IsThunderbirdExtensionInstalled());
  RegisterExtension(L"%PM_TEST_LONG%%PM_TEST_LONG%%PM_TEST_LONG%%PM_TEST_LONG%");
  EXPECT_FALSE(IsThunderbirdExtensionInstalled());
}

TEST_F(TbInstallationTest, ExtensionIsNotInstalledWhenAnythingCannotBeRead) {
  EXPECT_FALSE(IsThunderbirdExtensionInstalled());
  AddDefaultProfile();
  EXPECT_FALSE(IsThunderbirdExtensionInstalled());
  RegisterExtension(L"C:\\Suite\\tb");
  EXPECT_FALSE(IsThunderbirdExtensionInstalled());
  AddExtensionsIni("C:\\Suite\\tb");
  EXPECT_TRUE(IsThunderbirdExtensionInstalled());
  User(kExtensionsKey).DeleteValue(kExtensionId);
  EXPECT_FALSE(IsThunderbirdExtensionInstalled());
  RegisterExtension(L"C:\\Suite\\tb", REG_BINARY);
  EXPECT_FALSE(IsThunderbirdExtensionInstalled());
  RegisterExtension(L"");
  EXPECT_FALSE(IsThunderbirdExtensionInstalled());
}

}  // namespace
}  // namespace postmarker::thunderbird
