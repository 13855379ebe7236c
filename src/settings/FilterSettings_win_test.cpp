#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "settings/FilterSettings.h"
#include "settings/GlobalSettings.h"
#include "support/RegistrySandbox_win.h"
#include "support/Registry_win.h"
#include "support/SuiteKeys.h"

namespace postmarker {
namespace {

using test::DumpRegistry;
using test::HexText;
using test::RegistrySandbox;
using testing::ElementsAreArray;
using testing::IsEmpty;
using Lines = std::vector<std::string>;

constexpr wchar_t kClient[] = L"Outlook Express";

// Spelled out, since the dumps are what other programs of the suite find.
constexpr char kGlobalPath[] = "Software\\Kestrelon Ltd.\\Kestrelon\\Spamfilter";
constexpr char kClientPath[] = "Software\\Kestrelon Ltd.\\Kestrelon\\Spamfilter\\Outlook Express";

RegistryKey GlobalKey() {
  return RegistryKey::Create(HKEY_CURRENT_USER, kSpamfilterKey, KEY_READ | KEY_WRITE);
}
RegistryKey ClientKey() {
  return RegistryKey::Create(HKEY_CURRENT_USER, std::wstring(kSpamfilterKey) + L"\\" + kClient,
                             KEY_READ | KEY_WRITE);
}

// A line of the dump.
std::string Value(const std::string& path, const std::string& name,
                  const std::string& typeAndBytes) {
  std::string line = path;
  return line.append(" | ").append(name).append(" | ").append(typeAndBytes);
}

// The whole dump: these values, sorted, and the keys above them.
Lines WithKeys(Lines values) {
  values.insert(
      values.end(),
      {"[Software]", "[Software\\Kestrelon Ltd.]", "[Software\\Kestrelon Ltd.\\Kestrelon]",
       std::string("[").append(kGlobalPath) + "]", std::string("[").append(kClientPath) + "]"});
  std::sort(values.begin(), values.end());
  return values;
}

class RegistryFilterSettings : public testing::Test {
 protected:
  Lines Dump() const { return DumpRegistry(m_sandbox.User()); }

  RegistrySandbox m_sandbox;
};

TEST_F(RegistryFilterSettings, FreshUserIsSavedValueByValue) {
  {
    FilterSettings settings(kClient);
    EXPECT_EQ(settings.Load(kClient), -1);
    EXPECT_TRUE(settings.IsDirty());
    EXPECT_THAT(Dump(), IsEmpty());
  }
  EXPECT_EQ(Dump(), WithKeys({
                        Value(kGlobalPath, "AddRecipients", "REG_DWORD | 01000000"),
                        Value(kGlobalPath, "AddCCS", "REG_DWORD | 01000000"),
                        Value(kGlobalPath, "SignEmail", "REG_DWORD | 00000000"),
                        Value(kClientPath, "AddBLocked", "REG_DWORD | 00000000"),
                        Value(kClientPath, "AddBlockedDomains", "REG_DWORD | 00000000"),
                        Value(kClientPath, "AddUnblocked", "REG_DWORD | 01000000"),
                        Value(kClientPath, "AddUnblockedDomains", "REG_DWORD | 00000000"),
                        Value(kClientPath, "MoveEmails", "REG_DWORD | 00000000"),
                        Value(kClientPath, "MO SFolder", "REG_SZ | 0000"),
                        Value(kClientPath, "ToolbarLeft", "REG_DWORD | 88130000"),
                        Value(kClientPath, "ToolbarTop", "REG_DWORD | 88130000"),
                        Value(kClientPath, "ToolbarRowIndex", "REG_DWORD | 88130000"),
                        Value(kClientPath, "ShowWizard", "REG_DWORD | 01000000"),
                        Value(kClientPath, "MessageStoreId", "REG_BINARY | "),
                        Value(kClientPath, "SpamFolderId", "REG_BINARY | 3000"),
                    }));
}

TEST_F(RegistryFilterSettings, OldValuesAreReplacedAndForeignOnesKept) {
  GlobalKey().WriteDword(L"AddRecipients", 0);
  GlobalKey().WriteDword(L"EnableLogs", 7);
  GlobalKey().WriteString(L"Other", L"x");
  ClientKey().WriteDword(L"AddBlockedDomains", 1);
  ClientKey().WriteDword(L"ToolbarLeft", 0x12345678);
  ClientKey().WriteDword(L"MoveEmails", 1);
  ClientKey().WriteString(L"MO SFolder", L"Spam");
  ClientKey().WriteBytes(L"MessageStoreId", REG_BINARY, "old", 3);
  ClientKey().WriteBytes(L"SpamFolderId", REG_SZ, "12", 3);
  ClientKey().WriteDword(L"Other", 9);
  {
    FilterSettings settings(kClient);
    EXPECT_EQ(settings.GetEnableLogs(), 7U);
    EXPECT_EQ(settings.GetSpamFolderId(), "12");
    settings.SetMoveEmails(0);
    settings.SetSpamFolderName(
        L"\\\\Gr\x00FC\x00DF"
        L"e");
    settings.SetSpamFolderId("345");
    settings.SetMessageStoreId("\x01\x00\xFF", 3);
    settings.SetShowWizard(0);
  }
  EXPECT_EQ(Dump(), WithKeys({
                        Value(kGlobalPath, "AddRecipients", "REG_DWORD | 00000000"),
                        Value(kGlobalPath, "AddCCS", "REG_DWORD | 01000000"),
                        Value(kGlobalPath, "SignEmail", "REG_DWORD | 00000000"),
                        Value(kGlobalPath, "EnableLogs", "REG_DWORD | 07000000"),
                        Value(kGlobalPath, "Other", "REG_SZ | 78000000"),
                        Value(kClientPath, "AddBLocked", "REG_DWORD | 00000000"),
                        Value(kClientPath, "AddBlockedDomains", "REG_DWORD | 01000000"),
                        Value(kClientPath, "AddUnblocked", "REG_DWORD | 01000000"),
                        Value(kClientPath, "AddUnblockedDomains", "REG_DWORD | 00000000"),
                        Value(kClientPath, "MoveEmails", "REG_DWORD | 00000000"),
                        Value(kClientPath, "MO SFolder",
                              "REG_SZ | " + HexText(L"\\\\Gr\x00FC\x00DF"
                                                    L"e\\")),
                        Value(kClientPath, "ToolbarLeft", "REG_DWORD | 78563412"),
                        Value(kClientPath, "ToolbarTop", "REG_DWORD | 88130000"),
                        Value(kClientPath, "ToolbarRowIndex", "REG_DWORD | 88130000"),
                        Value(kClientPath, "ShowWizard", "REG_DWORD | 00000000"),
                        Value(kClientPath, "MessageStoreId", "REG_BINARY | 0100ff"),
                        Value(kClientPath, "SpamFolderId", "REG_BINARY | 33343500"),
                        Value(kClientPath, "Other", "REG_DWORD | 09000000"),
                    }));
}

TEST_F(RegistryFilterSettings, CompleteValuesWithNoSetterCalledAreNotWritten) {
  { const FilterSettings firstRun(kClient); }
  // Readable but different from what a save would write: a save would show.
  ClientKey().WriteString(L"MO SFolder", L"Spam");
  const Lines before = Dump();
  {
    const FilterSettings settings(kClient);
    EXPECT_FALSE(settings.IsDirty());
    EXPECT_EQ(settings.GetSpamFolderName(), L"Spam\\");
  }
  EXPECT_EQ(Dump(), before);
}

TEST_F(RegistryFilterSettings, TextsWithoutTerminatorOrWithOddByteAreReadWithinTheirBytes) {
  { const FilterSettings firstRun(kClient); }
  const std::string bytes(522, 'x');
  for (const DWORD size : {1U, 2U, 3U, 519U, 520U}) {
    ASSERT_TRUE(ClientKey().WriteBytes(L"MO SFolder", REG_SZ, bytes.data(), size));
    const FilterSettings settings(kClient);
    const std::wstring expected(size / 2, static_cast<wchar_t>(0x7878));
    EXPECT_EQ(settings.GetSpamFolderName(), expected.empty() ? expected : expected + L"\\") << size;
  }
  ASSERT_TRUE(ClientKey().WriteBytes(L"MO SFolder", REG_SZ, bytes.data(), 521));
  EXPECT_EQ(FilterSettings(kClient).GetSpamFolderName(), L"");
  for (const DWORD size : {1U, 255U, 256U, 257U}) {
    ASSERT_TRUE(GlobalKey().WriteBytes(L"ActionPlugin", REG_SZ, bytes.data(), size));
    EXPECT_EQ(GetActionPlugin().size(), size == 255 ? 127U : 0U) << size;
  }
}

TEST_F(RegistryFilterSettings, GlobalTextsAreStoredValueByValue) {
  EXPECT_TRUE(SetActionPlugin(L"IncrediMail"));
  EXPECT_TRUE(SetLastConfigured(L"Windows Mail"));
  EXPECT_TRUE(SetLastEditGlobal(std::chrono::local_days{std::chrono::year(2010) / 5 / 3}));
  EXPECT_THAT(
      Dump(),
      ElementsAreArray(
          Lines{Value(kGlobalPath, "ActionPlugin", "REG_SZ | " + HexText(L"IncrediMail")),
                Value(kGlobalPath, "LastConfigured", "REG_SZ | " + HexText(L"Windows Mail")),
                Value(kGlobalPath, "LastEditGlobal", "REG_SZ | " + HexText(L"2010-5-3")),
                std::string("[").append(kGlobalPath) + "]", "[Software\\Kestrelon Ltd.\\Kestrelon]",
                "[Software\\Kestrelon Ltd.]", "[Software]"}));
  EXPECT_EQ(GetActionPlugin(), L"IncrediMail");
  EXPECT_EQ(GetLastConfigured(), L"Windows Mail");
}

TEST_F(RegistryFilterSettings, KeysThatDenyWritesGiveMinusOneAndKeepTheirValues) {
  { const FilterSettings firstRun(kClient); }
  test::DenyWrites(HKEY_CURRENT_USER, kSpamfilterKey);
  test::DenyWrites(HKEY_CURRENT_USER, std::wstring(kSpamfilterKey) + L"\\" + kClient);
  const Lines before = Dump();
  {
    FilterSettings settings(kClient);
    EXPECT_FALSE(settings.IsDirty()) << "reading is still allowed";
    settings.SetMoveEmails(1);
    EXPECT_EQ(settings.Save(kClient), -1);
    EXPECT_EQ(settings.GetMoveEmails(), 1U);
  }
  EXPECT_FALSE(SetActionPlugin(L"x"));
  EXPECT_EQ(Dump(), before);
}

TEST_F(RegistryFilterSettings, ClientKeyThatDeniesWritesGivesMinusOneBehindTheGlobalValues) {
  { const FilterSettings firstRun(kClient); }
  test::DenyWrites(HKEY_CURRENT_USER, std::wstring(kSpamfilterKey) + L"\\" + kClient);
  GlobalKey().DeleteValue(L"SignEmail");
  FilterSettings settings(kClient);
  EXPECT_TRUE(settings.IsDirty());
  EXPECT_EQ(settings.Save(kClient), -1);
  EXPECT_EQ(GlobalKey().ReadDword(L"SignEmail"), 0U);
}

TEST(RegistryThatTakesNoKeys, SavingGivesMinusOneAndLeavesNothing) {
  const RegistrySandbox sandbox(test::Redirect::kUser, test::NewKeys::kRefused);
  {
    FilterSettings settings(kClient);
    EXPECT_TRUE(settings.IsDirty());
    EXPECT_EQ(settings.Save(kClient), -1);
  }
  EXPECT_FALSE(SetLastConfigured(L"x"));
  EXPECT_THAT(DumpRegistry(sandbox.User()), IsEmpty());
}

}  // namespace
}  // namespace postmarker
