#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>

#include "clients/ClientTable.h"
#include "clients/HookModule_win.h"
#include "module/ModuleFixture_win.h"

namespace postmarker::test {
namespace {

// The folder from which the suite's modules are taken in this program, without a backslash at its
// end.
std::wstring SuiteFolder() {
  return std::filesystem::path(TestProgramFolder()).parent_path().wstring();
}

std::wstring HookPath(const std::wstring& file) {
  return SuiteFolder() + L"\\Spamfilter\\" + file;
}

class HookModuleTest : public testing::Test {
 protected:
  static RegistryKey Notes() {
    return RegistryKey::Open(HKEY_CURRENT_USER, L"Software\\PostmarkerPeers", KEY_READ);
  }

  RegistrySandbox m_registry;
};

// A copy of some library under the name of one of the suite's own, loaded.
class SuiteLibrary {
 public:
  SuiteLibrary(const TempFolder& root, const wchar_t* folder, const wchar_t* name) {
    const auto path = root.Path() / folder / name;
    std::filesystem::create_directories(path.parent_path());
    std::filesystem::copy_file(SuiteFolder() + L"\\SQLite.dll", path);
    m_library.Reset(::LoadLibraryW(TempFolder::Wide(path).c_str()));
  }
  [[nodiscard]] bool IsLoaded() const { return static_cast<bool>(m_library); }

 private:
  LibraryHandle m_library;
};

TEST_F(HookModuleTest, RootIsTwoLevelsAboveTheHostsProgramWithoutModulesOfTheSuite) {
  ASSERT_EQ(::GetModuleHandleW(L"KsSieve.dll"), nullptr);
  ASSERT_EQ(::GetModuleHandleW(L"TinyShim.dll"), nullptr);
  EXPECT_EQ(GetSuiteRootFolder(), SuiteFolder());
}

TEST_F(HookModuleTest, RootIsTwoLevelsAboveTheFilterModuleElseTheShim) {
  const TempFolder shimRoot;
  const TempFolder filterRoot;
  const SuiteLibrary shim(shimRoot, L"Any", L"TinyShim.dll");
  ASSERT_TRUE(shim.IsLoaded());
  EXPECT_EQ(GetSuiteRootFolder(), TempFolder::Wide(shimRoot.Path()));
  const SuiteLibrary filter(filterRoot, L"Any", L"KsSieve.dll");
  ASSERT_TRUE(filter.IsLoaded());
  EXPECT_EQ(GetSuiteRootFolder(), TempFolder::Wide(filterRoot.Path()));
}

TEST_F(HookModuleTest, LoadTakesAllSevenEntryPointsAndUnloadClearsThem) {
  HookModule module;
  module.Load(HookPath(L"StoreShim.dll"));
  ASSERT_TRUE(module.IsLoaded());
  const auto isAnySet = [&module] {
    return module.InitSpam != nullptr || module.UninitSpam != nullptr ||
           module.AddIncomingRule != nullptr || module.CanSubclassWindow != nullptr ||
           module.InitHookWindow != nullptr || module.UninitHookWindow != nullptr ||
           module.MainWndProc != nullptr;
  };
  EXPECT_NE(module.InitSpam, nullptr);
  EXPECT_NE(module.UninitSpam, nullptr);
  EXPECT_NE(module.AddIncomingRule, nullptr);
  EXPECT_NE(module.CanSubclassWindow, nullptr);
  EXPECT_NE(module.InitHookWindow, nullptr);
  EXPECT_NE(module.UninitHookWindow, nullptr);
  EXPECT_NE(module.MainWndProc, nullptr);
  module.Unload();
  EXPECT_FALSE(module.IsLoaded());
  EXPECT_FALSE(isAnySet());
  EXPECT_EQ(::GetModuleHandleW(L"StoreShim.dll"), nullptr);
  EXPECT_EQ(::GetModuleHandleW(L"SQLite.dll"), nullptr);
}

TEST_F(HookModuleTest, ModuleThatLacksAnEntryPointIsUnloadedAgainAndNoRuleIsAdded) {
  for (const wchar_t* missing :
       {L"InitSpam", L"UninitSpam", L"AddIncomingRule", L"CanSubclassWindow", L"InitHookWindow",
        L"UninitHookWindow", L"MainWndProc"}) {
    const std::wstring file = std::wstring(L"ShimWithout") + missing + L".dll";
    SCOPED_TRACE(NarrowUtf8(file));
    ASSERT_TRUE(std::filesystem::exists(HookPath(file)));
    HookModule module;
    module.Load(HookPath(file));
    EXPECT_FALSE(module.IsLoaded());
    EXPECT_FALSE(module.sqliteHandle);
    EXPECT_EQ(::GetModuleHandleW(file.c_str()), nullptr);
    AddSpamRule(file, L"[KSSpam]");
    EXPECT_FALSE(Notes());
  }
}

TEST_F(HookModuleTest, MissingModuleAndNoModuleDoNothing) {
  AddSpamRule(L"NoSuchShim.dll", L"[KSSpam]");
  AddSpamRule(L"", L"[KSSpam]");
  EXPECT_FALSE(Notes());
}

TEST_F(HookModuleTest, OnlyAFolderBelowADriveOrAShareCanHoldTheSuite) {
  for (const wchar_t* folder :
       {L"C:\\Suite", L"C:\\Programs\\Suite", L"\\\\server\\share\\Suite", L"\\\\?\\C:\\Suite"}) {
    EXPECT_TRUE(CanHoldSuite(folder)) << NarrowUtf8(folder);
  }
  for (const wchar_t* folder :
       {L"", L"C:", L"C:\\", L"C:\\\\", L"C:Suite", L"Suite\\Programs", L"\\Suite\\Programs",
        L"\\\\server", L"\\\\server\\share", L"\\\\server\\share\\", L"\\\\?\\C:"}) {
    EXPECT_FALSE(CanHoldSuite(folder)) << NarrowUtf8(folder);
  }
}

TEST_F(HookModuleTest, RootOfADriveLoadsNothing) {
  constexpr wchar_t kShim[] = L"ShallowRootShim.dll";
  const std::filesystem::path planted = std::filesystem::path(L"C:\\Spamfilter") / kShim;
  const std::filesystem::path above = L"C:\\PostmarkerShallowRoot";
  const ScopeExit clean([&] {
    std::error_code ignored;
    std::filesystem::remove(planted, ignored);
    std::filesystem::remove_all(above, ignored);
  });
  std::filesystem::create_directories(planted.parent_path());
  std::filesystem::copy_file(HookPath(L"StoreShim.dll"), planted);
  std::filesystem::create_directories(above);
  std::filesystem::copy_file(SuiteFolder() + L"\\SQLite.dll", above / L"KsSieve.dll");
  const LibraryHandle filter(::LoadLibraryW((above / L"KsSieve.dll").c_str()));
  ASSERT_EQ(GetSuiteRootFolder(), L"C:");

  AddSpamRule(kShim, L"[KSSpam]");
  EXPECT_FALSE(Notes()) << "a module in the root of the drive was loaded";
}

TEST_F(HookModuleTest, LoadedModuleIsNotReplaced) {
  HookModule module;
  module.Load(HookPath(L"IncrediMailShim.dll"));
  const HMODULE before = module.hookHandle.Get();
  ASSERT_NE(before, nullptr);
  module.Load(HookPath(L"StoreShim.dll"));
  EXPECT_EQ(module.hookHandle.Get(), before);
  EXPECT_EQ(::GetModuleHandleW(L"StoreShim.dll"), nullptr);
}

TEST_F(HookModuleTest, EachClientsModuleGetsTheRuleAndIsUnloaded) {
  for (const ClientRow& client : AllClients()) {
    if (client.hookModule.empty()) {
      continue;
    }
    SCOPED_TRACE(NarrowUtf8(client.displayName));
    ::RegDeleteTreeW(HKEY_CURRENT_USER, L"Software\\PostmarkerPeers");
    AddSpamRule(client.hookModule, L"[KSSpam]");
    EXPECT_EQ(Notes().ReadString(L"Rule", 64), L"[KSSpam]");
    EXPECT_EQ(Notes().ReadString(L"Module", 64), client.hookModule);
    EXPECT_EQ(Notes().ReadDword(L"Rules"), 1U);
    EXPECT_EQ(::GetModuleHandleW(std::wstring(client.hookModule).c_str()), nullptr);
  }
}

TEST_F(HookModuleTest, SqliteIsLoadedAheadFromTheFolderAbove) {
  AddSpamRule(L"StoreShim.dll", L"[KSSpam]");
  EXPECT_EQ(Notes().ReadDword(L"SqliteWasThere"), 1U);
  EXPECT_EQ(::GetModuleHandleW(L"SQLite.dll"), nullptr);
}

TEST_F(HookModuleTest, MissingSqliteDoesNotStopTheLoad) {
  const TempFolder root;
  const auto path = root.Path() / "Spamfilter" / "StoreShim.dll";
  std::filesystem::create_directories(path.parent_path());
  std::filesystem::copy_file(HookPath(L"StoreShim.dll"), path);
  HookModule module;
  module.Load(TempFolder::Wide(path));
  EXPECT_TRUE(module.IsLoaded());
  EXPECT_FALSE(module.sqliteHandle);
}

}  // namespace
}  // namespace postmarker::test
