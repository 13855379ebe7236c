#include "controls/FileExtension.h"

#include <gtest/gtest.h>

namespace postmarker {
namespace {

TEST(FileExtension, SpellingsOfOneExtensionHaveOneForm) {
  for (const wchar_t* const text : {L"txt", L".txt", L"*.txt", L" TXT ", L"*.Txt\t"}) {
    EXPECT_EQ(FileExtensionForm(text), L".txt") << testing::PrintToString(text);
  }
  EXPECT_EQ(FileExtensionForm(L"tar.gz"), L".tar.gz");
  EXPECT_EQ(FileExtensionForm(L"\x00C4\x00D6"), L".\x00E4\x00F6");
  EXPECT_EQ(FileExtensionForm(std::wstring(64, L'x')), L"." + std::wstring(64, L'x'));
}

TEST(FileExtension, TextsThatNoFileCanEndInHaveNoForm) {
  for (const wchar_t* const text : {L"", L" ", L".", L"*.", L"a b", L"a\\b", L"a/b", L"a:b", L"*",
                                    L"a?", L"\"a\"", L"<a>", L"a|b", L"a.", L"a\x01", L"*.*"}) {
    EXPECT_FALSE(FileExtensionForm(text)) << testing::PrintToString(text);
  }
  EXPECT_FALSE(FileExtensionForm(std::wstring(65, L'x')));
}

}  // namespace
}  // namespace postmarker
