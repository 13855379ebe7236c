#include <windows.h>

#include <gtest/gtest.h>

#include "clients/ClientDetection.h"
#include "support/RegistrySandbox_win.h"
#include "support/Registry_win.h"

namespace postmarker {
namespace {

constexpr auto kUser = RegistryRoot::kUser;
constexpr auto kMachine = RegistryRoot::kMachine;
constexpr wchar_t kKey[] = L"Software\\Somewhere";

class MachineViewTest : public testing::Test {
 protected:
  static void WriteBytes(const wchar_t* name, DWORD type, const std::wstring& units, size_t size) {
    RegistryKey::Create(HKEY_LOCAL_MACHINE, kKey, KEY_ALL_ACCESS)
        .WriteBytes(name, type, units.data(), static_cast<DWORD>(size));
  }
  static std::optional<std::wstring> ReadText(const wchar_t* name) {
    return ThisMachine().ReadText(kMachine, kKey, name, RegistryView::kDefault);
  }

  test::RegistrySandbox m_registry{test::Redirect::kUserAndMachine};
};

TEST_F(MachineViewTest, VersionIsThatOfThePlatform) {
  EXPECT_EQ(ThisMachine().Version().major, PlatformMajorVersion());
}

TEST_F(MachineViewTest, KeysAreFoundInTheirOwnRoot) {
  RegistryKey::Create(HKEY_CURRENT_USER, L"A\\B", KEY_ALL_ACCESS);
  EXPECT_TRUE(ThisMachine().HasKey(kUser, L"a\\b"));
  EXPECT_FALSE(ThisMachine().HasKey(kMachine, L"A\\B"));
  EXPECT_FALSE(ThisMachine().HasKey(kUser, L"A\\C"));
}

TEST_F(MachineViewTest, SubkeysWithNamesTooLongForTheRoomAreSkipped) {
  for (const size_t length : {1, 9, 10, 200}) {
    RegistryKey::Create(HKEY_CURRENT_USER, std::wstring(L"A\\").append(length, L'k'),
                        KEY_ALL_ACCESS);
  }
  RegistryKey::Create(HKEY_CURRENT_USER, L"A\\z", KEY_ALL_ACCESS);
  EXPECT_EQ(ThisMachine().SubkeyNames(kUser, L"A", 10),
            (std::vector<std::wstring>{L"k", std::wstring(9, L'k'), L"z"}));
  EXPECT_EQ(ThisMachine().SubkeyNames(kUser, L"A", 1024).size(), 5U);
  EXPECT_TRUE(ThisMachine().SubkeyNames(kUser, L"Missing", 100).empty());
}

TEST_F(MachineViewTest, ValueOfAnyTypeCountsUpToTheRoom) {
  WriteBytes(L"Five", REG_BINARY, L"abc", 5);
  WriteBytes(L"None", REG_DWORD, L"", 0);
  EXPECT_TRUE(ThisMachine().HasValue(kMachine, kKey, L"five", 5));
  EXPECT_FALSE(ThisMachine().HasValue(kMachine, kKey, L"five", 4));
  EXPECT_TRUE(ThisMachine().HasValue(kMachine, kKey, L"None", 4));
  EXPECT_FALSE(ThisMachine().HasValue(kMachine, kKey, L"Missing", 4));
}

TEST_F(MachineViewTest, TextsOfBothTypesAreReadUpToTheRoom) {
  WriteBytes(L"Plain", REG_SZ, L"text", 10);
  WriteBytes(L"ToExpand", REG_EXPAND_SZ, L"%X%\\a", 12);
  WriteBytes(L"Unterminated", REG_SZ, L"open", 8);
  WriteBytes(L"Number", REG_DWORD, L"ab", 4);
  const std::wstring longest(259, L'x');
  WriteBytes(L"Longest", REG_SZ, longest, 520);
  WriteBytes(L"TooLong", REG_SZ, longest + L"x", 522);
  EXPECT_EQ(ReadText(L"Plain"), L"text");
  EXPECT_EQ(ReadText(L"ToExpand"), L"%X%\\a");
  EXPECT_EQ(ReadText(L"Unterminated"), L"open");
  EXPECT_EQ(ReadText(L"Longest"), longest);
  EXPECT_EQ(ReadText(L"TooLong"), std::nullopt);
  EXPECT_EQ(ReadText(L"Number"), std::nullopt);
  EXPECT_EQ(ReadText(L"Missing"), std::nullopt);
}

TEST_F(MachineViewTest, VariablesAreExpandedIntoAtMost2048Units) {
  ::SetEnvironmentVariableW(L"POSTMARKER_TEST", std::wstring(2000, L'v').c_str());
  EXPECT_EQ(ThisMachine().Expand(L"a%POSTMARKER_TEST%"), L'a' + std::wstring(2000, L'v'));
  EXPECT_EQ(ThisMachine().Expand(std::wstring(48, L'a') + L"%POSTMARKER_TEST%").value().size(),
            2048U);
  EXPECT_EQ(ThisMachine().Expand(std::wstring(49, L'a') + L"%POSTMARKER_TEST%"), std::nullopt);
  EXPECT_EQ(ThisMachine().Expand(L"%NO_SUCH_VARIABLE%"), L"%NO_SUCH_VARIABLE%");
  ::SetEnvironmentVariableW(L"POSTMARKER_TEST", nullptr);
}

TEST_F(MachineViewTest, FileWithoutAVersionHasNone) {
  EXPECT_EQ(ThisMachine().FileVersionText(L"C:\\no such file.exe"), std::nullopt);
  EXPECT_EQ(ThisMachine().FileVersionText(L"C:\\windows\\win.ini"), std::nullopt);
}

TEST_F(MachineViewTest, NothingLoadsBesideAModuleThatIsNotThere) {
  ASSERT_EQ(::GetModuleHandleW(L"Postmarker.dll"), nullptr);
  EXPECT_FALSE(ThisMachine().CanLoadBesideModule(L"kernel32.dll"));
}

TEST_F(MachineViewTest, ClientsOf32BitsAreLookedForInTheirView) {
  RegistryKey::Create(HKEY_LOCAL_MACHINE, L"Software\\Microsoft\\Windows Live Mail",
                      KEY_ALL_ACCESS | KEY_WOW64_32KEY)
      .WriteString(L"InstallRoot", L"C:\\Mail");
  EXPECT_TRUE(IsClientInstalled(L"Windows Live Mail"));
}

TEST_F(MachineViewTest, OutlooksProfilesAreFoundInTheUsersRegistry) {
  EXPECT_FALSE(IsOutlookConfigured());
  RegistryKey::Create(HKEY_CURRENT_USER,
                      L"Software\\Microsoft\\Windows NT\\CurrentVersion\\Windows Messaging "
                      L"Subsystem\\Profiles\\Outlook\\0a0d020000000000c000000000000046",
                      KEY_ALL_ACCESS)
      .WriteBytes(L"001f6700", REG_BINARY, L"C:\\x.pst", 16);
  EXPECT_TRUE(IsOutlookConfigured());
}

}  // namespace
}  // namespace postmarker
