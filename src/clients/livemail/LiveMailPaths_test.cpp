#include "clients/livemail/LiveMailPaths.h"

#include <gtest/gtest.h>

#include "support/FakeMachine.h"

namespace postmarker::livemail {
namespace {

constexpr wchar_t kKey[] = L"Software\\Microsoft\\Windows Live Mail";

#if defined(_WIN32)
const std::wstring kSlash = L"\\";
#else
const std::wstring kSlash = L"/";
#endif

class LiveMailPaths : public testing::Test {
 protected:
  void SetStoreRoot(const std::wstring& root) {
    m_machine.AddText(RegistryRoot::kUser, kKey, L"Store Root", root);
  }

  test::FakeMachine m_machine;
};

TEST_F(LiveMailPaths, RootsAreReadFromTheirKeysAndExpanded) {
  EXPECT_EQ(FindStoreRoot(m_machine), std::nullopt);
  EXPECT_EQ(FindInstallRoot(m_machine), std::nullopt);
  m_machine.variables[L"%A%"] = L"C:" + kSlash + L"Ann";
  SetStoreRoot(L"%A%" + kSlash + L"Mail");
  m_machine.AddText(RegistryRoot::kMachine, kKey, L"InstallRoot", L"%A%" + kSlash + L"Programs");
  EXPECT_EQ(FindStoreRoot(m_machine), L"C:" + kSlash + L"Ann" + kSlash + L"Mail");
  EXPECT_EQ(FindInstallRoot(m_machine), L"C:" + kSlash + L"Ann" + kSlash + L"Programs");
}

TEST_F(LiveMailPaths, RootsAreReadInTheViewOf32BitPrograms) {
  SetStoreRoot(L"root");
  m_machine.AddText(RegistryRoot::kMachine, kKey, L"InstallRoot", L"root");
  (void)FindStoreRoot(m_machine);
  (void)FindInstallRoot(m_machine);
  EXPECT_EQ(m_machine.viewsOfTexts, (std::vector{RegistryView::k32Bit, RegistryView::k32Bit}));
}

TEST_F(LiveMailPaths, ClientIsInstalledIfItsRootIsNotEmpty) {
  EXPECT_FALSE(IsWindowsLiveMailInstalled(m_machine));
  m_machine.AddText(RegistryRoot::kMachine, kKey, L"InstallRoot", L"");
  EXPECT_FALSE(IsWindowsLiveMailInstalled(m_machine)) << "an empty root";
  m_machine.AddText(RegistryRoot::kMachine, kKey, L"InstallRoot", L"root");
  EXPECT_TRUE(IsWindowsLiveMailInstalled(m_machine));
}

TEST_F(LiveMailPaths, DatabaseAndBackupAreBelowTheStoreRoot) {
  for (const std::wstring& end : {std::wstring(), kSlash}) {
    SetStoreRoot(L"root" + end);
    EXPECT_EQ(LiveDatabasePath(m_machine), L"root" + kSlash + L"Mail.MSMessageStore");
    std::wstring backup = L"root";
    for (const wchar_t* const element : {L"Backup", L"New", L"Mail.MSMessageStore"}) {
      backup.append(kSlash).append(element);
    }
    EXPECT_EQ(BackupDatabasePath(m_machine), backup);
  }
}

TEST_F(LiveMailPaths, WithoutAStoreRootThereAreNoPaths) {
  EXPECT_EQ(LiveDatabasePath(m_machine), L"");
  EXPECT_EQ(BackupDatabasePath(m_machine), L"");
  SetStoreRoot(L"");
  EXPECT_EQ(LiveDatabasePath(m_machine), L"") << "an empty root";
  EXPECT_EQ(BackupDatabasePath(m_machine), L"") << "an empty root";
}

TEST_F(LiveMailPaths, RootOfADatabaseIsItsFolder) {
  EXPECT_EQ(StoreRootOf(L"a" + kSlash + L"b" + kSlash + L"store.edb"),
            L"a" + kSlash + L"b" + kSlash);
  EXPECT_EQ(StoreRootOf(L"store.edb"), L"");
}

}  // namespace
}  // namespace postmarker::livemail
