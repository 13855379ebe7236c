#include "RegistryPlace_win.h"

#include <gmock/gmock.h>

#include "support/RegistrySandbox_win.h"
#include "support/Registry_win.h"

namespace postmarker::install {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr wchar_t kKey[] = L"Software\\Suite\\Key";

class RegistryPlaceTest : public testing::Test {
 protected:
  [[nodiscard]] std::vector<std::string> Dump() const {
    return test::DumpRegistry(registry.User());
  }

  test::RegistrySandbox registry;
  RegistryPlace place{kKey, L"value"};
  Content content;
};

TEST_F(RegistryPlaceTest, WritesReadsAndDeletesATextInAKeyOfItsOwn) {
  EXPECT_TRUE(place.Read(&content));
  EXPECT_EQ(content, std::nullopt);
  EXPECT_TRUE(place.Write(TextContent(L"C:\\\u6848")));
  EXPECT_TRUE(place.Read(&content));
  EXPECT_EQ(content, TextContent(L"C:\\\u6848"));
  EXPECT_EQ(RegistryKey::Open(HKEY_CURRENT_USER, kKey, KEY_READ).ReadString(L"value", 100),
            L"C:\\\u6848");
  EXPECT_TRUE(place.Write(std::nullopt));
  EXPECT_TRUE(place.Read(&content));
  EXPECT_EQ(content, std::nullopt);
}

TEST_F(RegistryPlaceTest, PutsBackAValueOfAnyTypeAndLength) {
  const RegistryKey key = RegistryKey::Create(HKEY_CURRENT_USER, kKey, KEY_ALL_ACCESS);
  const std::vector<uint8_t> bytes(50, 7);
  for (const DWORD type : {DWORD{REG_SZ}, DWORD{REG_EXPAND_SZ}, DWORD{REG_BINARY}, DWORD{REG_DWORD},
                           DWORD{REG_MULTI_SZ}, DWORD{0x12345678}}) {
    for (const DWORD size : {0U, 1U, 4U, 49U, 50U}) {
      ASSERT_TRUE(key.WriteBytes(L"value", type, bytes.data(), size));
      const std::vector<std::string> before = Dump();
      ASSERT_TRUE(place.Read(&content));
      const Content kept = content;
      ASSERT_TRUE(place.Write(TextContent(L"x")));
      EXPECT_NE(Dump(), before);
      EXPECT_TRUE(place.Write(kept));
      EXPECT_EQ(Dump(), before) << type << " " << size;
    }
  }
}

TEST_F(RegistryPlaceTest, IsTheKeysOwnValueWithoutAName) {
  RegistryPlace own(kKey, std::wstring());
  EXPECT_EQ(own.Name(), "HKEY_CURRENT_USER\\Software\\Suite\\Key");
  EXPECT_EQ(place.Name(), "HKEY_CURRENT_USER\\Software\\Suite\\Key | value");
  EXPECT_TRUE(own.Write(TextContent(L"x")));
  EXPECT_EQ(RegistryKey::Open(HKEY_CURRENT_USER, kKey, KEY_READ).ReadString(L"", 100), L"x");
}

TEST_F(RegistryPlaceTest, MakesItsKeysAndRemovesThemWhenTheyAreEmpty) {
  const std::vector<std::string> missing = place.MissingParents();
  EXPECT_THAT(missing, ElementsAre("Software", "Software\\Suite", "Software\\Suite\\Key"));
  ASSERT_TRUE(place.Write(TextContent(L"x")));
  EXPECT_THAT(place.MissingParents(), IsEmpty());
  const std::vector<std::string> filled = Dump();
  for (const std::string& parent : missing) {
    place.RemoveParent(parent);
  }
  EXPECT_EQ(Dump(), filled) << "what has something in it stays";
  ASSERT_TRUE(place.Write(std::nullopt));
  place.RemoveParent(missing[1]);
  EXPECT_EQ(Dump().size(), 3U);
  for (const size_t i : {2, 1, 0}) {
    place.RemoveParent(missing[i]);
  }
  EXPECT_THAT(Dump(), IsEmpty());
}

TEST_F(RegistryPlaceTest, FailsOnAKeyThatNobodyMayWrite) {
  ASSERT_TRUE(place.Write(TextContent(L"x")));
  test::DenyWrites(HKEY_CURRENT_USER, kKey);
  const std::vector<std::string> before = Dump();
  EXPECT_FALSE(place.Write(TextContent(L"y")));
  EXPECT_FALSE(place.Write(std::nullopt));
  EXPECT_EQ(Dump(), before);
  EXPECT_TRUE(place.Read(&content));
  EXPECT_EQ(content, TextContent(L"x"));
}

TEST_F(RegistryPlaceTest, RefusesAContentWithoutAType) {
  EXPECT_FALSE(place.Write("123"));
  EXPECT_THAT(Dump(), IsEmpty());
}

}  // namespace
}  // namespace postmarker::install
