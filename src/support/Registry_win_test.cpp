#include "support/Registry_win.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "support/RegistrySandbox_win.h"

namespace postmarker {
namespace {

using test::DumpRegistry;
using test::HexText;
using test::Redirect;
using test::RegistrySandbox;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr wchar_t kPath[] = L"Software\\Maker\\Product";

class RegistryKeyTest : public testing::Test {
 protected:
  // Bytes that are no NUL follow the value: the platform adds a terminator right after
  // a text.
  void Store(const wchar_t* name, DWORD type, const std::string& bytes) const {
    const std::string guarded = bytes + "xx";
    ASSERT_TRUE(m_key.WriteBytes(name, type, guarded.data(), static_cast<DWORD>(bytes.size())));
  }

  RegistrySandbox m_sandbox;
  RegistryKey m_key =
      RegistryKey::Create(HKEY_CURRENT_USER, kPath, KEY_READ | KEY_WRITE | SuiteKeyView());
};

TEST_F(RegistryKeyTest, WritesAreStoredByteByByte) {
  ASSERT_TRUE(m_key);
  EXPECT_TRUE(m_key.WriteDword(L"Number", 0x01020304));
  EXPECT_TRUE(m_key.WriteString(L"Text", L"a\x00E4"));
  EXPECT_TRUE(m_key.WriteString(L"Empty", L""));
  EXPECT_TRUE(m_key.WriteBytes(L"NoData", REG_SZ, nullptr, 0));
  EXPECT_TRUE(m_key.WriteBytes(L"Bytes", REG_BINARY, "\x00\xFF", 2));
  EXPECT_THAT(DumpRegistry(m_sandbox.User()),
              ElementsAre("Software\\Maker\\Product | Bytes | REG_BINARY | 00ff",
                          "Software\\Maker\\Product | Empty | REG_SZ | 0000",
                          "Software\\Maker\\Product | NoData | REG_SZ | ",
                          "Software\\Maker\\Product | Number | REG_DWORD | 04030201",
                          "Software\\Maker\\Product | Text | REG_SZ | 6100e4000000",
                          "[Software\\Maker\\Product]", "[Software\\Maker]", "[Software]"));
}

TEST_F(RegistryKeyTest, OpenFindsOnlyWhatIsThere) {
  EXPECT_TRUE(RegistryKey::Open(HKEY_CURRENT_USER, kPath, KEY_READ));
  EXPECT_FALSE(RegistryKey::Open(HKEY_CURRENT_USER, L"Software\\Missing", KEY_READ));
}

TEST_F(RegistryKeyTest, KeyWithoutWriteRightRefusesWrites) {
  const RegistryKey reader = RegistryKey::Open(HKEY_CURRENT_USER, kPath, KEY_READ);
  ASSERT_TRUE(reader);
  EXPECT_FALSE(reader.WriteDword(L"Number", 1));
  EXPECT_FALSE(reader.DeleteValue(L"Number"));
}

TEST_F(RegistryKeyTest, NoKeyFailsEveryReadAndWrite) {
  const RegistryKey none;
  EXPECT_FALSE(none);
  EXPECT_EQ(none.Get(), nullptr);
  EXPECT_FALSE(none.ReadDword(L"Number"));
  EXPECT_FALSE(none.ReadAnyDword(L"Number"));
  EXPECT_FALSE(none.ReadBytes(L"Bytes", 10));
  EXPECT_FALSE(none.ReadString(L"Text", 10));
  EXPECT_FALSE(none.WriteDword(L"Number", 1));
  EXPECT_FALSE(none.WriteString(L"Text", L"x"));
  EXPECT_FALSE(none.WriteBytes(L"Bytes", REG_BINARY, "x", 1));
  EXPECT_FALSE(none.DeleteValue(L"Number"));
}

TEST_F(RegistryKeyTest, DwordMustHaveItsTypeAndSize) {
  m_key.WriteDword(L"Good", 7);
  Store(L"Short", REG_DWORD, "ab");
  Store(L"Long", REG_DWORD, "abcdef");
  Store(L"Binary", REG_BINARY, "abcd");
  EXPECT_EQ(m_key.ReadDword(L"Good"), 7U);
  EXPECT_FALSE(m_key.ReadDword(L"Short"));
  EXPECT_FALSE(m_key.ReadDword(L"Long"));
  EXPECT_FALSE(m_key.ReadDword(L"Binary"));
  EXPECT_FALSE(m_key.ReadDword(L"Missing"));
}

TEST_F(RegistryKeyTest, AnyDwordTakesWhatFitsIntoFourBytes) {
  m_key.WriteDword(L"Good", 7);
  Store(L"Binary", REG_BINARY, std::string("\x01\x02\x03\x04", 4));
  Store(L"Short", REG_BINARY, "\x09");
  Store(L"Empty", REG_BINARY, "");
  Store(L"Long", REG_DWORD, "abcde");
  EXPECT_EQ(m_key.ReadAnyDword(L"Good"), 7U);
  EXPECT_EQ(m_key.ReadAnyDword(L"Binary"), 0x04030201U);
  EXPECT_EQ(m_key.ReadAnyDword(L"Short"), 9U);
  EXPECT_EQ(m_key.ReadAnyDword(L"Empty"), 0U);
  EXPECT_FALSE(m_key.ReadAnyDword(L"Long"));
  EXPECT_FALSE(m_key.ReadAnyDword(L"Missing"));
}

TEST_F(RegistryKeyTest, BytesComeBackUpToTheRoomAndNotBeyond) {
  Store(L"Bytes", REG_BINARY, "abc");
  EXPECT_EQ(m_key.ReadBytes(L"Bytes", 3), (std::vector<uint8_t>{'a', 'b', 'c'}));
  EXPECT_FALSE(m_key.ReadBytes(L"Bytes", 2));
  EXPECT_FALSE(m_key.ReadBytes(L"Bytes", 0)) << "no room is not a question for the size";
  Store(L"Empty", REG_BINARY, "");
  EXPECT_EQ(m_key.ReadBytes(L"Empty", 0), std::vector<uint8_t>{});
}

TEST_F(RegistryKeyTest, StringEndsAtItsFirstNul) {
  m_key.WriteString(L"Text", std::wstring(L"ab\0cd", 5));
  EXPECT_EQ(m_key.ReadString(L"Text", 100), L"ab");
}

TEST_F(RegistryKeyTest, StringWithoutTerminatorOrWithOddByteIsReadWithinItsBytes) {
  Store(L"Unterminated", REG_SZ, std::string("a\0b\0", 4));
  Store(L"Odd", REG_SZ, std::string("a\0b\0c", 5));
  Store(L"OneByte", REG_SZ, "a");
  EXPECT_EQ(m_key.ReadString(L"Unterminated", 100), L"ab");
  EXPECT_EQ(m_key.ReadString(L"Unterminated", 4), L"ab");
  EXPECT_EQ(m_key.ReadString(L"Odd", 100), L"ab");
  EXPECT_EQ(m_key.ReadString(L"Odd", 5), L"ab");
  EXPECT_EQ(m_key.ReadString(L"OneByte", 1), L"");
}

TEST_F(RegistryKeyTest, StringOfAnotherTypeTooLongOrWithoutSizeIsNothing) {
  m_key.WriteString(L"Long", L"abc");
  Store(L"Binary", REG_BINARY, std::string("a\0\0\0", 4));
  Store(L"NoData", REG_SZ, "");
  EXPECT_EQ(m_key.ReadString(L"Long", 8), L"abc");
  EXPECT_FALSE(m_key.ReadString(L"Long", 7));
  EXPECT_FALSE(m_key.ReadString(L"Binary", 100));
  EXPECT_FALSE(m_key.ReadString(L"NoData", 100));
  EXPECT_FALSE(m_key.ReadString(L"Missing", 100));
}

TEST_F(RegistryKeyTest, DeletedValueIsGone) {
  m_key.WriteDword(L"Number", 1);
  EXPECT_TRUE(m_key.DeleteValue(L"Number"));
  EXPECT_FALSE(m_key.ReadDword(L"Number"));
  EXPECT_FALSE(m_key.DeleteValue(L"Number"));
}

TEST(RegistryViews, SuiteSeesOneKeyUnlessThePlatformIsTooOld) {
  EXPECT_EQ(SuiteKeyView(), PlatformMajorVersion() == 5 ? 0U : 0x100U);
}

TEST(RegistrySandboxTest, RedirectsTheUsersRootInEveryView) {
  {
    const RegistrySandbox sandbox;
    for (const REGSAM view : {0, KEY_WOW64_64KEY, KEY_WOW64_32KEY}) {
      const RegistryKey key = RegistryKey::Create(HKEY_CURRENT_USER, L"Software\\SandboxTest",
                                                  KEY_READ | KEY_WRITE | view);
      ASSERT_TRUE(key);
      EXPECT_TRUE(key.WriteDword((L"View" + std::to_wstring(view)).c_str(), 1));
    }
    EXPECT_THAT(DumpRegistry(sandbox.User()),
                ElementsAre("Software\\SandboxTest | View0 | REG_DWORD | 01000000",
                            "Software\\SandboxTest | View256 | REG_DWORD | 01000000",
                            "Software\\SandboxTest | View512 | REG_DWORD | 01000000",
                            "[Software\\SandboxTest]", "[Software]"));
  }
  EXPECT_FALSE(RegistryKey::Open(HKEY_CURRENT_USER, L"Software\\SandboxTest", KEY_READ));
}

TEST(RegistrySandboxTest, RedirectsTheMachinesRootWhenAsked) {
  {
    const RegistrySandbox sandbox(Redirect::kUserAndMachine);
    for (const REGSAM view : {0, KEY_WOW64_64KEY}) {
      const RegistryKey key = RegistryKey::Create(HKEY_LOCAL_MACHINE, L"Software\\SandboxTest",
                                                  KEY_READ | KEY_WRITE | view);
      ASSERT_TRUE(key);
      EXPECT_TRUE(key.WriteString((L"View" + std::to_wstring(view)).c_str(), L"x"));
    }
    EXPECT_THAT(DumpRegistry(sandbox.User()), IsEmpty());
    EXPECT_THAT(DumpRegistry(sandbox.Machine()),
                ElementsAre("Software\\SandboxTest | View0 | REG_SZ | " + HexText(L"x"),
                            "Software\\SandboxTest | View256 | REG_SZ | " + HexText(L"x"),
                            "[Software\\SandboxTest]", "[Software]"));
  }
  EXPECT_FALSE(
      RegistryKey::Open(HKEY_LOCAL_MACHINE, L"Software\\SandboxTest", KEY_READ | KEY_WOW64_64KEY));
}

TEST(RegistrySandboxTest, RefusesNewKeysWhenAsked) {
  const RegistrySandbox sandbox(Redirect::kUserAndMachine, test::NewKeys::kRefused);
  EXPECT_FALSE(RegistryKey::Create(HKEY_CURRENT_USER, kPath, KEY_WRITE));
  EXPECT_FALSE(RegistryKey::Create(HKEY_CURRENT_USER, kPath, KEY_WRITE | KEY_WOW64_64KEY));
  EXPECT_FALSE(RegistryKey::Create(HKEY_LOCAL_MACHINE, kPath, KEY_WRITE));
  EXPECT_THAT(DumpRegistry(sandbox.User()), IsEmpty());
}

TEST(RegistrySandboxTest, DeniesWritesToAKeyThatCanStillBeRead) {
  const RegistrySandbox sandbox;
  ASSERT_TRUE(RegistryKey::Create(HKEY_CURRENT_USER, kPath, KEY_WRITE).WriteDword(L"Number", 7));
  test::DenyWrites(HKEY_CURRENT_USER, kPath);
  EXPECT_FALSE(RegistryKey::Create(HKEY_CURRENT_USER, kPath, KEY_WRITE | SuiteKeyView()));
  EXPECT_FALSE(RegistryKey::Create(HKEY_CURRENT_USER, kPath, KEY_QUERY_VALUE | KEY_SET_VALUE));
  const RegistryKey reader = RegistryKey::Open(HKEY_CURRENT_USER, kPath, KEY_READ | SuiteKeyView());
  ASSERT_TRUE(reader);
  EXPECT_EQ(reader.ReadDword(L"Number"), 7U);
}

TEST(RegistrySandboxTest, LeavesNothingBehindAndClearsWhatACrashedRunLeft) {
  constexpr wchar_t kCrashed[] = L"Software\\PostmarkerTests\\4294967292-1";
  ASSERT_TRUE(
      RegistryKey::Create(HKEY_CURRENT_USER, std::wstring(kCrashed) + L"\\User\\Deep", KEY_WRITE));
  { const RegistrySandbox sandbox; }
  EXPECT_FALSE(RegistryKey::Open(HKEY_CURRENT_USER, kCrashed, KEY_READ));
  const std::wstring own =
      L"Software\\PostmarkerTests\\" + std::to_wstring(::GetCurrentProcessId());
  for (int i = 1; i < 50; ++i) {
    EXPECT_FALSE(RegistryKey::Open(HKEY_CURRENT_USER, own + L"-" + std::to_wstring(i), KEY_READ))
        << i;
  }
}

}  // namespace
}  // namespace postmarker
