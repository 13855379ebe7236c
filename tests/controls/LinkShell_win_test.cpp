#include "controls/LinkShell_win.h"

#include <gtest/gtest.h>

#include "support/RegistrySandbox_win.h"
#include "support/Registry_win.h"

namespace postmarker::test {
namespace {

// Classes of the test's own.
class SystemLinkShellTest : public testing::Test {
 protected:
  SystemLinkShellTest() { ::RegOverridePredefKey(HKEY_CLASSES_ROOT, m_sandbox.Machine()); }
  ~SystemLinkShellTest() override { ::RegOverridePredefKey(HKEY_CLASSES_ROOT, nullptr); }

  void SetClass(const std::wstring& key, const std::wstring& value, DWORD type = REG_SZ) const {
    RegistryKey::Create(m_sandbox.Machine(), key, KEY_ALL_ACCESS)
        .WriteBytes(nullptr, type, value.c_str(),
                    static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
  }

  RegistrySandbox m_sandbox;
  SystemLinkShell m_shell;
};

TEST_F(SystemLinkShellTest, ReadsTheDefaultValueOfAClass) {
  SetClass(L"http\\shell\\open\\command", L"\"C:\\b.exe\" \"%1\"");
  EXPECT_EQ(m_shell.ReadClass(L"http\\shell\\open\\command"), L"\"C:\\b.exe\" \"%1\"");
  EXPECT_EQ(m_shell.ReadClass(L"http\\shell\\open"), std::nullopt);
  EXPECT_EQ(m_shell.ReadClass(L".htm"), std::nullopt);
}

TEST_F(SystemLinkShellTest, ReplacesEnvironmentVariables) {
  ::SetEnvironmentVariableW(L"LABEL_TEST", L"C:\\place");
  SetClass(L"page", L"%LABEL_TEST%\\b.exe %1", REG_EXPAND_SZ);
  EXPECT_EQ(m_shell.ReadClass(L"page"), L"C:\\place\\b.exe %1");
}

TEST_F(SystemLinkShellTest, ReadsNoOtherValues) {
  SetClass(L"binary", L"text", REG_BINARY);
  EXPECT_EQ(m_shell.ReadClass(L"binary"), std::nullopt);
  SetClass(L"long", std::wstring(40'000, L'x'));
  EXPECT_EQ(m_shell.ReadClass(L"long"), std::nullopt);
}

TEST_F(SystemLinkShellTest, StartsAProcess) {
  EXPECT_TRUE(m_shell.StartProcess(L"cmd.exe /c exit"));
  EXPECT_FALSE(m_shell.StartProcess(L"C:\\no such folder\\no-such-program.exe http://x"));
  EXPECT_FALSE(m_shell.StartProcess(L""));
}

TEST_F(SystemLinkShellTest, ReportsAVerbThatTheShellRefuses) {
  EXPECT_FALSE(m_shell.RunVerb(L"open", L"no-such-scheme-of-links:x"));
}

}  // namespace
}  // namespace postmarker::test
