#include <windows.h>

#include <gmock/gmock.h>

#include <filesystem>

#include "module/ModuleFixture_win.h"
#include "support/SuiteKeys.h"

namespace postmarker::test {
namespace {

constexpr int kHeading = 10001;

class ResourcesTest : public ModuleFixture {
 protected:
  static void SetLanguage(const std::wstring& language) {
    RegistryKey::Create(HKEY_LOCAL_MACHINE, kMainKey, KEY_ALL_ACCESS | SuiteKeyView())
        .WriteString(L"Language", language);
  }

  // The heading of the welcome page of a module loaded now.
  std::wstring WelcomeHeading() {
    Load();
    WizardSession session(Show(), &m_request);
    session.WaitForPage(Page::kWelcome);
    std::wstring heading = TextOf(session.Control(kHeading));
    session.ClickButton(IDCANCEL);
    session.Result();
    return heading;
  }
};

TEST_F(ResourcesTest, LanguageSettingChoosesTheTexts) {
  SetLanguage(L"de");
  EXPECT_EQ(WelcomeHeading(), L"Spamfilter einrichten");
}

TEST_F(ResourcesTest, WithoutAnySourceTheTextsAreEnglish) {
  EXPECT_EQ(WelcomeHeading(), L"Set up your spam filter");
}

TEST_F(ResourcesTest, SettingOfThreeCharactersDoesNotCount) {
  SetLanguage(L"deu");
  EXPECT_EQ(WelcomeHeading(), L"Set up your spam filter");
}

TEST_F(ResourcesTest, MissingResourceModuleGivesNoWizard) {
  const TempFolder root;
  std::filesystem::create_directories(root.Path() / "Spamfilter");
  std::filesystem::copy_file(StageFolder() + L"\\Spamfilter\\Postmarker.dll",
                             root.Path() / "Spamfilter" / "Postmarker.dll");
  m_module = std::make_unique<Module>(root.Wide(root.Path()));
  ASSERT_TRUE(m_module->IsLoaded());
  EXPECT_EQ(m_module->ShowWizard(&m_request), kWizardNoResources);
  EXPECT_EQ(m_request.sheetWindow, nullptr);
  Unload();
}

}  // namespace
}  // namespace postmarker::test
