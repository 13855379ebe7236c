#include "ExtensionsIni.h"

#include <gtest/gtest.h>

#include "clients/thunderbird/TbIniFile.h"

namespace postmarker::install {
namespace {

constexpr wchar_t kPath[] = L"C:\\p\\x.xpi";

TEST(ExtensionsIni, GetsALineOfItsOwn) {
  EXPECT_EQ(WithExtension("", kPath), "[Postmarker]\r\nExtension=C:\\p\\x.xpi\r\n");
  EXPECT_EQ(WithExtension("[ExtensionDirs]\r\nExtension0=C:\\a\r\n", kPath),
            "[ExtensionDirs]\r\nExtension0=C:\\a\r\n[Postmarker]\r\nExtension=C:\\p\\x.xpi\r\n");
}

TEST(ExtensionsIni, KeepsItsLineEnds) {
  EXPECT_EQ(WithExtension("a\nb\n", kPath), "a\nb\n[Postmarker]\nExtension=C:\\p\\x.xpi\n");
  EXPECT_EQ(WithExtension("a\nb", kPath), "a\nb\n[Postmarker]\nExtension=C:\\p\\x.xpi\n");
  EXPECT_EQ(WithExtension("a\r\nb", kPath), "a\r\nb\r\n[Postmarker]\r\nExtension=C:\\p\\x.xpi\r\n");
  EXPECT_EQ(WithExtension("a", kPath), "a\r\n[Postmarker]\r\nExtension=C:\\p\\x.xpi\r\n");
}

TEST(ExtensionsIni, StaysAsItIsWhenItNamesTheExtension) {
  for (const char* text :
       {"Extension0=C:\\p\\x.xpi", "[Postmarker]\r\nExtension=C:\\p\\x.xpi\r\n"}) {
    EXPECT_EQ(WithExtension(text, kPath), text);
  }
}

TEST(ExtensionsIni, NamesTheExtensionInTheFilesOwnEncoding) {
  EXPECT_EQ(WithExtension("a=\xC3\xA4\n", L"C:\\\u00FC"),
            "a=\xC3\xA4\n[Postmarker]\nExtension=C:\\\xC3\xBC\n");
  EXPECT_EQ(WithExtension("a=\xE4\n", L"C:\\\u00FC"), "a=\xE4\n[Postmarker]\nExtension=C:\\\xFC\n");
}

TEST(ExtensionsIni, IsRefusedWhenNobodyWouldFindTheExtensionThere) {
  EXPECT_EQ(WithExtension("a=\xE4\n", L"C:\\\u6848"), std::nullopt) << "not in the code page";
  EXPECT_EQ(WithExtension("", std::wstring(250, L'x')), std::nullopt) << "too long for a line";
  EXPECT_TRUE(WithExtension("", std::wstring(249, L'x')));
  EXPECT_EQ(WithExtension("\x1A", kPath), std::nullopt) << "the text ends before";
  EXPECT_EQ(WithExtension("", L""), std::nullopt);
}

}  // namespace
}  // namespace postmarker::install
