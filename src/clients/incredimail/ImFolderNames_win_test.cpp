#include "clients/incredimail/ImFolderNames_win.h"

#include <gtest/gtest.h>

#include "support/ImInstallation_win.h"

namespace postmarker::incredimail {
namespace {

using test::ImInstallation;
using Names = std::vector<std::wstring>;

// Primary language numbers of the stand-in's message table.
enum Language : uint32_t { kGerman = 7, kGreek = 8, kFrench = 12, kItalian = 16, kPolish = 21 };

class ImFolderNamesTest : public testing::Test {
 protected:
  ImFolderNamesTest() {
    m_client.RegisterProgram();
    std::filesystem::create_directories(m_client.ProgramFolder());
  }

  void InstallMessages() {
    std::filesystem::copy(test::TestProgramFolder() / "ImSuppRU.dll", m_client.ProgramFolder());
  }

  ImInstallation m_client;
};

TEST_F(ImFolderNamesTest, ReadsTheSixNamesInOrder) {
  InstallMessages();
  Names names;
  EXPECT_EQ(ReadLocalisedFolderNames(kGerman, &names), kOk);
  EXPECT_EQ(names, (Names{L"Posteingang", L"Postausgang", L"Gesendete Objekte",
                          L"Gel\u00F6schte Objekte", L"Entw\u00FCrfe", L"Junk-E-Mail"}));
}

TEST_F(ImFolderNamesTest, CutsLineEndsAndBlanksAtTheEnd) {
  InstallMessages();
  Names names;
  EXPECT_EQ(ReadLocalisedFolderNames(kGreek, &names), kOk);
  ASSERT_EQ(names.size(), 6U);
  EXPECT_EQ(names[0], L"\u0395\u03B9\u03C3\u03B5\u03C1\u03C7\u03CC\u03BC\u03B5\u03BD\u03B1 100%");
}

TEST_F(ImFolderNamesTest, MissingMessageFailsAndKeepsTheNamesBeforeIt) {
  InstallMessages();
  Names names;
  EXPECT_EQ(ReadLocalisedFolderNames(kFrench, &names), kFail);
  EXPECT_EQ(names, (Names{L"Bo\u00EEte de r\u00E9ception", L"Bo\u00EEte d'envoi",
                          L"\u00C9l\u00E9ments envoy\u00E9s"}));
}

TEST_F(ImFolderNamesTest, NameOf256CharactersOrMoreFails) {
  InstallMessages();
  Names names;
  EXPECT_EQ(ReadLocalisedFolderNames(kItalian, &names), kFail);
  EXPECT_EQ(names, (Names{L"Posta in arrivo"}));
}

TEST_F(ImFolderNamesTest, LanguageWithoutMessagesFails) {
  InstallMessages();
  Names names;
  EXPECT_EQ(ReadLocalisedFolderNames(kPolish, &names), kFail);
  EXPECT_TRUE(names.empty());
}

TEST_F(ImFolderNamesTest, MissingFileFails) {
  Names names;
  EXPECT_EQ(ReadLocalisedFolderNames(kGerman, &names), kFail);
}

TEST_F(ImFolderNamesTest, FileThatIsNoModuleFails) {
  test::WriteFile(m_client.ProgramFolder() + L"\\ImSuppRU.dll", "not a module");
  Names names;
  EXPECT_EQ(ReadLocalisedFolderNames(kGerman, &names), kFail);
}

TEST_F(ImFolderNamesTest, ProgramPathMustHoldABackslash) {
  Names names;
  for (const wchar_t* const path : {L"", L"IncMail.exe"}) {
    ImInstallation::WriteString(HKEY_LOCAL_MACHINE, ImInstallation::kAppPath, nullptr, path);
    EXPECT_EQ(ReadLocalisedFolderNames(kGerman, &names), kFail);
  }
}

}  // namespace
}  // namespace postmarker::incredimail
