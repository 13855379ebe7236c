#include <windows.h>

#include <gtest/gtest.h>

#include <filesystem>

#include "module/ModuleFixture_win.h"
#include "support/WindowPixels_win.h"
#include "wizard/ClientGrid_win.h"
#include "wizard/WindowHook_win.h"

namespace postmarker::test {
namespace {

// The folder from which the suite's modules are taken in this program, without a backslash at its
// end.
std::wstring SuiteFolder() {
  return std::filesystem::path(TestProgramFolder()).parent_path().wstring();
}

class RuleTest : public ModuleFixture {
 protected:
  static RegistryKey Notes() {
    return RegistryKey::Open(HKEY_CURRENT_USER, L"Software\\PostmarkerPeers", KEY_READ);
  }
};

TEST_F(RuleTest, FinishHandsTheRuleToTheModuleInsideTheClient) {
  Load();
  EXPECT_EQ(Finish(L"Junk"), kWizardFinished);
  EXPECT_EQ(Notes().ReadString(L"Rule", 64), L"[KSSpam]");
  EXPECT_EQ(Notes().ReadDword(L"Rules"), 1U);
}

TEST_F(RuleTest, SameFolderAndSwitchAddTheRuleAgain) {
  Load();
  EXPECT_EQ(Finish(L"Junk"), kWizardFinished);
  m_request = {};
  m_request.clientName = L"IncrediMail";
  EXPECT_EQ(Finish(L"Junk"), kWizardFinished);
  EXPECT_EQ(Notes().ReadDword(L"Rules"), 2U);
}

TEST_F(RuleTest, CancelAddsNoRule) {
  Load();
  const auto session = StartAtFolders();
  session->ClickButton(IDCANCEL);
  session->Result();
  EXPECT_FALSE(Notes());
}

TEST(WindowHookFile, EntryPointsAreTakenByNameAndAMissingOneStaysNull) {
  WindowHookModule hook;
  hook.Load(SuiteFolder() + L"\\peers\\suite\\WndShim.dll");
  ASSERT_TRUE(hook.module);
  EXPECT_NE(hook.InitHook, nullptr);
  EXPECT_NE(hook.UninitHook, nullptr);
  EXPECT_NE(hook.AddHookableWindow, nullptr);
  EXPECT_NE(hook.AddHookableThread, nullptr);
  EXPECT_EQ(hook.ReleaseHookableThread, nullptr);
  hook.Load(L"C:\\no such folder\\WndShim.dll");
  EXPECT_FALSE(hook.module);
  EXPECT_EQ(hook.InitHook, nullptr);
}

// A suite in a folder of the test's own, with the module, its texts and the window hook module.
class WindowHookTest : public RuleTest {
 protected:
  WindowHookTest() {
    Copy(StageFolder() + L"\\Spamfilter\\Postmarker.dll", "Spamfilter", "Postmarker.dll");
    Copy(StageFolder() + L"\\res\\en\\PostmarkerRes.dll", "res/en", "PostmarkerRes.dll");
    Copy(SuiteFolder() + L"\\peers\\suite\\WndShim.dll", ".", "WndShim.dll");
    m_module = std::make_unique<Module>(TempFolder::Wide(m_root.Path()));
    m_request.useWindowHook = 1;
  }

  // The module is unloaded before its file goes.
  ~WindowHookTest() override { Unload(); }

 private:
  void Copy(const std::wstring& from, const char* folder, const char* name) {
    std::filesystem::create_directories(m_root.Path() / folder);
    std::filesystem::copy_file(from, m_root.Path() / folder / name);
  }

  TempFolder m_root;
};

TEST_F(WindowHookTest, ModuleHooksTheSheetThroughTheSuitesWindowHookModule) {
  ASSERT_TRUE(m_module->IsLoaded());
  {
    WizardSession session(Show(), &m_request);
    session.WaitForPage(Page::kWelcome);
    session.ClickButton(IDCANCEL);
    EXPECT_EQ(session.Result(), IDCANCEL);
  }
  using CallsOf = int(__stdcall*)(int function);
  const auto calls = reinterpret_cast<CallsOf>(
      reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"WndShim.dll"), "CallsOf")));
  ASSERT_NE(calls, nullptr);
  EXPECT_EQ(calls(0), 1);
  EXPECT_EQ(calls(1), 1);
  EXPECT_EQ(calls(2), 1);
  Unload();
  EXPECT_EQ(::GetModuleHandleW(L"WndShim.dll"), nullptr);
}

// The stand-in's sign is 4 by 4 pixels of a color that nothing else has.
TEST_F(WindowHookTest, ChosenClientHasTheSignOfTheSuitesSkin) {
  constexpr uint32_t kSignColor = 0xFE01FD;
  ASSERT_TRUE(m_module->IsLoaded());
  m_request.clientName.clear();
  WizardSession session(Show(), &m_request);
  session.WaitForPage(Page::kWelcome);
  session.ClickButton(kNextButton);
  session.WaitForPage(Page::kClients);
  const HWND grid = session.Control(kClientGrid);
  EXPECT_EQ(PixelsOf(grid, kSignColor), 0U);
  ClickTile(session, L"IncrediMail");
  EXPECT_TRUE(WaitUntil([&] { return PixelsOf(grid, kSignColor) == 16; }));
  session.ClickButton(IDCANCEL);
  EXPECT_EQ(session.Result(), IDCANCEL);
}

}  // namespace
}  // namespace postmarker::test
