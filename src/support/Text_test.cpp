#include "support/Text.h"

#include <gtest/gtest.h>

#include "support/Prefixes.h"

namespace postmarker {
namespace {

TEST(Text, AsciiSurvivesBothConversionsWithEmbeddedNul) {
  const std::string narrow("a\0b", 3);
  const std::wstring wide(L"a\0b", 3);
  EXPECT_EQ(Widen(narrow), wide);
  EXPECT_EQ(Narrow(wide), narrow);
  EXPECT_TRUE(Widen("").empty());
  EXPECT_TRUE(Narrow(L"").empty());
}

TEST(Text, WesternBytesConvertInWindows1252) {
  EXPECT_EQ(Widen("\xE4\x80\x9F"), L"\x00E4\x20AC\x0178");
  EXPECT_EQ(Narrow(L"\x00E4\x20AC\x0178"), "\xE4\x80\x9F");
}

TEST(Text, EveryByteSurvivesThereAndBack) {
  for (int byte = 0; byte < 256; ++byte) {
    const std::string narrow(1, static_cast<char>(byte));
    EXPECT_EQ(Narrow(Widen(narrow)), narrow) << byte;
  }
}

TEST(Text, WhatTheCodePageLacksBecomesAQuestionMark) {
  EXPECT_EQ(Narrow(L"a\x65E5z"), "a?z");
}

TEST(Text, WhatMerelyLooksAlikeIsNotTakenForIt) {
  EXPECT_EQ(Narrow(L"\x0100\x221E\x03B1"), "???");
}

TEST(Text, Utf8ConvertsThereAndBackInUtf16Units) {
  EXPECT_EQ(WidenUtf8("a\xC3\xA4\xE2\x82\xAC"), L"a\x00E4\x20AC");
  const std::wstring pair = {0xD83D, 0xDE00};
  EXPECT_EQ(WidenUtf8("\xF0\x9F\x98\x80"), pair);
  EXPECT_EQ(NarrowUtf8(pair), "\xF0\x9F\x98\x80");
  EXPECT_EQ(NarrowUtf8(L"a\x00E4\x20AC"), "a\xC3\xA4\xE2\x82\xAC");
}

TEST(Text, IllFormedUtf8BecomesReplacementCharacters) {
  EXPECT_EQ(WidenUtf8("\x80"), L"\xFFFD");
  EXPECT_EQ(WidenUtf8("\xC0\xAF"), L"\xFFFD\xFFFD") << "overlong";
  EXPECT_EQ(WidenUtf8("\xE0\x80\x80"), L"\xFFFD") << "overlong";
  EXPECT_EQ(WidenUtf8("\xED\xA0\x80"), L"\xFFFD") << "a surrogate";
  EXPECT_EQ(WidenUtf8("\xF4\x90\x80\x80"), L"\xFFFD") << "beyond the last code point";
  EXPECT_EQ(WidenUtf8("\xFF"), L"\xFFFD");
  EXPECT_EQ(WidenUtf8("\xE2\x82z"), L"\xFFFDz") << "a sequence that breaks off";
}

TEST(Text, Utf8IsToldFromTextOfACodePage) {
  for (const std::string_view text :
       {"", "a", "Gr\xC3\xBC\xC3\x9F", "\xEF\xBF\xBD", "\xF0\x9F\x98\x80"}) {
    EXPECT_TRUE(IsUtf8(text)) << text;
  }
  for (const std::string_view text :
       {"Gr\xFC\xDF", "\xC3", "\xC3\xBC\x80", "\xED\xA0\x80", "\xC0\xAF"}) {
    EXPECT_FALSE(IsUtf8(text)) << text;
  }
}

TEST(Text, EveryPrefixOfUtf8IsReadWithinItsBytes) {
  test::ForEveryPrefix("a\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80", [](std::string_view prefix) {
    EXPECT_LE(WidenUtf8(prefix).size(), prefix.size());
  });
}

TEST(Text, SurrogatesWithoutPartnerBecomeReplacementCharacters) {
  EXPECT_EQ(NarrowUtf8(std::wstring{0xD83D}), "\xEF\xBF\xBD");
  EXPECT_EQ(NarrowUtf8(std::wstring{0xDE00, L'a'}),
            "\xEF\xBF\xBD"
            "a");
  EXPECT_EQ(NarrowUtf8(std::wstring{0xD83D, 0xD83D, 0xDE00}), "\xEF\xBF\xBD\xF0\x9F\x98\x80");
}

TEST(Text, LowerCaseOfLatinGreekAndCyrillic) {
  const struct {
    wchar_t upper, lower;
  } cases[] = {
      {L'A', L'a'},     {L'Z', L'z'},   {0xC4, 0xE4},     {0xDE, 0xFE},     {0x100, 0x101},
      {0x130, L'i'},    {0x139, 0x13A}, {0x178, 0xFF},    {0x179, 0x17A},   {0x17D, 0x17E},
      {0x386, 0x3AC},   {0x388, 0x3AD}, {0x38C, 0x3CC},   {0x38E, 0x3CD},   {0x38F, 0x3CE},
      {0x391, 0x3B1},   {0x3A9, 0x3C9}, {0x400, 0x450},   {0x410, 0x430},   {0x42F, 0x44F},
      {0x490, 0x491},   {0x4C0, 0x4CF}, {0x4C1, 0x4C2},   {0x1E00, 0x1E01}, {0x1EA0, 0x1EA1},
      {0x1A0, 0x1A1},   {0x1AF, 0x1B0}, {0x2160, 0x2170}, {0x216F, 0x217F}, {0xFF21, 0xFF41},
      {0xFF3A, 0xFF5A},
  };
  for (const auto& one : cases) {
    EXPECT_EQ(ToLower(one.upper), one.lower) << std::hex << static_cast<unsigned>(one.upper);
    EXPECT_EQ(ToLower(one.lower), one.lower) << std::hex << static_cast<unsigned>(one.lower);
  }
}

TEST(Text, UnitsWithoutCaseStayAsTheyAre) {
  for (const wchar_t unit :
       {L'@',      L'[',      L'`',      L'{',      L'0',      L'\x00D7', L'\x00DF',
        L'\x00F7', L'\x03A2', L'\x0138', L'\x0149', L'\x0377', L'\x0482', L'\x05D0',
        L'\x019F', L'\x01A2', L'\x01AE', L'\x01B1', L'\xFF20', L'\xFF3B', L'\x2126',
        L'\x212B', L'\x215F', L'\x2180', L'\x65E5', L'\xD800', L'\xFFFD'}) {
    EXPECT_EQ(ToLower(unit), unit) << std::hex << static_cast<unsigned>(unit);
  }
}

TEST(Text, ComparisonIgnoresCaseAndOrdersByUnitThenLength) {
  EXPECT_EQ(CompareNoCase(L"Gr\x00DC\x00DF", L"gr\x00FC\x00DF"), 0);
  EXPECT_LT(CompareNoCase(L"A", L"b"), 0);
  EXPECT_GT(CompareNoCase(L"B", L"a"), 0);
  EXPECT_LT(CompareNoCase(L"ab", L"ABC"), 0);
  EXPECT_GT(CompareNoCase(L"ABC", L"ab"), 0);
  EXPECT_LT(CompareNoCase(L"", L"a"), 0);
  EXPECT_TRUE(EqualNoCase(std::wstring_view(L"IncrediMail"), std::wstring_view(L"INCREDIMAIL")));
  EXPECT_FALSE(EqualNoCase(std::wstring_view(L"a"), std::wstring_view(L"ab")));
}

TEST(Text, NarrowComparisonKnowsTheCaseOfAsciiLettersOnly) {
  EXPECT_TRUE(EqualNoCase(std::string_view("aBc"), std::string_view("AbC")));
  EXPECT_FALSE(EqualNoCase(std::string_view("\xC4"), std::string_view("\xE4")));
  EXPECT_FALSE(EqualNoCase(std::string_view("a"), std::string_view("ab")));
  EXPECT_FALSE(EqualNoCase(std::string_view("@"), std::string_view("`")));
}

TEST(Text, WhiteSpaceIsTrimmedAtTheEndsOnly) {
  EXPECT_EQ(TrimWhiteSpace(L" \t\r\n\v\fa b \n"), L"a b");
  EXPECT_EQ(TrimWhiteSpace(L" \t "), L"");
  EXPECT_EQ(TrimWhiteSpace(L""), L"");
}

}  // namespace
}  // namespace postmarker
