#include "wizard/ResourceLanguage_win.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/RegistrySandbox_win.h"
#include "support/Registry_win.h"
#include "support/SuiteKeys.h"
#include "support/TempFolder.h"

namespace postmarker::test {
namespace {

class ResourceLanguageTest : public testing::Test {
 protected:
  static RegistryKey MainKey() {
    return RegistryKey::Create(HKEY_LOCAL_MACHINE, kMainKey, KEY_ALL_ACCESS | SuiteKeyView());
  }
  [[nodiscard]] std::wstring Scan() const { return ScanForLanguage(m_folder.PathOf("host.exe")); }
  void AddFolder(const char* name) const {
    std::filesystem::create_directories(m_folder.Path() / "res" / name);
  }

  RegistrySandbox m_registry{Redirect::kUserAndMachine};
  TempFolder m_folder;
};

TEST_F(ResourceLanguageTest, SettingOfTwoCharactersCounts) {
  MainKey().WriteString(L"Language", L"de");
  EXPECT_EQ(ReadLanguageSetting(), L"de");
}

TEST_F(ResourceLanguageTest, SettingThatIsTooLongOfAnotherTypeOrWithoutSizeFails) {
  MainKey().WriteString(L"Language", L"deu");
  EXPECT_EQ(ReadLanguageSetting(), L"");
  MainKey().WriteBytes(L"Language", REG_EXPAND_SZ, L"de", 6);
  EXPECT_EQ(ReadLanguageSetting(), L"");
  MainKey().WriteBytes(L"Language", REG_SZ, nullptr, 0);
  EXPECT_EQ(ReadLanguageSetting(), L"");
}

TEST_F(ResourceLanguageTest, MissingSettingFails) {
  EXPECT_EQ(ReadLanguageSetting(), L"");
}

TEST_F(ResourceLanguageTest, ScanTakesATwoLetterFolderAndNoOther) {
  AddFolder("xyz");
  AddFolder("a");
  EXPECT_EQ(Scan(), L"");
  AddFolder("en");
  AddFolder("de");
  const std::wstring found = Scan();
  EXPECT_TRUE(found == L"de" || found == L"en");
}

TEST_F(ResourceLanguageTest, ScanTakesNoFileForALanguage) {
  std::filesystem::create_directories(m_folder.Path() / "res");
  WriteFile(m_folder.PathOf("res\\fr"), "not a folder");
  EXPECT_EQ(Scan(), L"");
}

TEST_F(ResourceLanguageTest, ScanWithoutAFolderOrAPathFails) {
  EXPECT_EQ(Scan(), L"");
  EXPECT_EQ(ScanForLanguage(L""), L"");
}

TEST_F(ResourceLanguageTest, WithoutAnySourceTheLanguageIsEnglish) {
  EXPECT_EQ(FindResourceLanguage(), L"en");
}

TEST_F(ResourceLanguageTest, FolderAboveCutsAtBackslashes) {
  EXPECT_EQ(FolderAbove(L"C:\\Suite\\Spamfilter\\Postmarker.dll", 2), L"C:\\Suite");
  EXPECT_EQ(FolderAbove(L"Postmarker.dll", 2), L"");
}

}  // namespace
}  // namespace postmarker::test
