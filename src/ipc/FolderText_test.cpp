#include "ipc/FolderText.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace postmarker {
namespace {

const MailFolderRef kInbox = {L"\\\\Post\\Inbox", "12", "store", 1};

TEST(FolderText, HoldsFourFieldsEachFollowedByTheMark) {
  EXPECT_EQ(EncodeFolderText(kInbox), L"#-#T#-#12#-#store#-#\\\\Post\\Inbox#-#");
}

TEST(FolderText, ClearFlagIsF) {
  EXPECT_EQ(EncodeFolderText({L"a", "b", "c", 0}), L"#-#F#-#b#-#c#-#a#-#");
}

TEST(FolderText, AnyFlagButZeroIsT) {
  EXPECT_EQ(EncodeFolderText({L"", "", "", 0x8000'0000}), L"#-#T#-##-##-##-#");
}

TEST(FolderText, SignsInIdsAndPathAreDoubled) {
  EXPECT_EQ(EncodeFolderText({L"#", "a#b", "##", 1}),
            L"#-#T#-#"
            L"a##b#-#"
            L"#####-#"
            L"###-#");
}

TEST(FolderText, PathThatHoldsTheMarkSurvivesTheRoundTrip) {
  const MailFolderRef folder = {L"\\\\Post\\a#-#b", "1", "2", 1};
  EXPECT_EQ(EncodeFolderText(folder), L"#-#T#-#1#-#2#-#\\\\Post\\a##-##b#-#");
  EXPECT_EQ(DecodeFolderText(EncodeFolderText(folder)), folder);
}

TEST(FolderText, EveryShortFieldOfSignsAndDashesSurvivesTheRoundTrip) {
  // All texts of up to six units of an alphabet of three, in a field before others and in the
  // last one.
  constexpr std::wstring_view kAlphabet = L"#-x";
  std::vector<std::wstring> texts = {L""};
  for (size_t i = 0; texts[i].size() < 6; ++i) {
    for (const wchar_t unit : kAlphabet) {
      texts.push_back(texts[i] + unit);
    }
  }
  ASSERT_EQ(texts.size(), 1093U);
  for (const std::wstring& text : texts) {
    const std::string narrow(text.begin(), text.end());
    const MailFolderRef folder = {text, narrow, narrow, 1};
    EXPECT_EQ(DecodeFolderText(EncodeFolderText(folder)), folder) << narrow;
  }
}

TEST(FolderText, FlagIsReadInEitherCase) {
  EXPECT_EQ(DecodeFolderText(L"#-#t#-#").flag, 1U);
  EXPECT_EQ(DecodeFolderText(L"#-#T#-#").flag, 1U);
  EXPECT_EQ(DecodeFolderText(L"#-#f#-#").flag, 0U);
  EXPECT_EQ(DecodeFolderText(L"#-#true#-#").flag, 0U);
  EXPECT_EQ(DecodeFolderText(L"#-##-#").flag, 0U);
}

TEST(FolderText, FewerFieldsLeaveTheRestEmpty) {
  EXPECT_EQ(DecodeFolderText(L""), MailFolderRef());
  EXPECT_EQ(DecodeFolderText(L"#-"), MailFolderRef());
  EXPECT_EQ(DecodeFolderText(L"#-#"), MailFolderRef());
  EXPECT_EQ(DecodeFolderText(L"#-#T#-#"), (MailFolderRef{L"", "", "", 1}));
  EXPECT_EQ(DecodeFolderText(L"#-#T#-#1#-#"), (MailFolderRef{L"", "1", "", 1}));
  EXPECT_EQ(DecodeFolderText(L"#-#T#-#1#-#2#-#"), (MailFolderRef{L"", "1", "2", 1}));
}

TEST(FolderText, FieldWithoutAMarkBehindItIsNone) {
  EXPECT_EQ(DecodeFolderText(L"#-#T#-#1#-#2#-#path"), (MailFolderRef{L"", "1", "2", 1}));
  EXPECT_EQ(DecodeFolderText(L"#-#T"), MailFolderRef());
}

TEST(FolderText, EmptyFieldsKeepTheirPlaces) {
  EXPECT_EQ(DecodeFolderText(L"#-#T#-##-#2#-#path#-#"), (MailFolderRef{L"path", "", "2", 1}));
}

TEST(FolderText, ReaderStartsAtTheFourthUnitWhateverStandsBefore) {
  EXPECT_EQ(DecodeFolderText(L"abcT#-#1#-#2#-#path#-#"), (MailFolderRef{L"path", "1", "2", 1}));
}

TEST(FolderText, WhatFollowsTheFourthFieldIsIgnored) {
  EXPECT_EQ(DecodeFolderText(EncodeFolderText(kInbox) + L"more#-#and more#-#"), kInbox);
}

TEST(FolderText, SingleSignThatIsNoMarkStays) {
  EXPECT_EQ(DecodeFolderText(L"#-#T#-#a#b#-##-#c#-d#-#"), (MailFolderRef{L"c#-d", "a#b", "", 1}));
}

TEST(FolderText, IdsAreBytesOfTheCodePage) {
  const MailFolderRef folder = {L"", "caf\xE9", "", 0};
  EXPECT_EQ(EncodeFolderText(folder), L"#-#F#-#caf\xE9#-##-##-#");
  EXPECT_EQ(DecodeFolderText(EncodeFolderText(folder)), folder);
}

TEST(FolderText, UnitsOfThePathAreKeptWhateverTheyAre) {
  const MailFolderRef folder = {std::wstring(L"\x3B1\xD83D\xDE00 \xD800 a\0b", 9), "", "", 0};
  EXPECT_EQ(DecodeFolderText(EncodeFolderText(folder)), folder);
}

TEST(FolderText, LongTextTakesTimeThatGrowsWithItsLength) {
  const MailFolderRef folder = {std::wstring(2'000'000, L'#'), "1", "2", 1};
  EXPECT_EQ(DecodeFolderText(EncodeFolderText(folder)), folder);
}

}  // namespace
}  // namespace postmarker
