#include "clients/thunderbird/TbRecords.h"

#include <gtest/gtest.h>

#include <limits>

#include "support/Prefixes.h"
#include "support/Text.h"

namespace postmarker::thunderbird {
namespace {

struct FolderCase {
  const wchar_t* text;
  MailFolderRef folder;
};

TEST(FolderRecord, FieldsByTable) {
  const FolderCase cases[] = {
      {L"Inbox######a######b######FALSE", {L"Inbox", "a", "b", 0}},
      {L"Inbox######a######b######false", {L"Inbox", "a", "b", 0}},
      {L"Inbox######a######b######true", {L"Inbox", "a", "b", 1}},
      {L"Inbox######a######b######0", {L"Inbox", "a", "b", 1}},
      {L"Inbox######a######b######false######more", {L"Inbox", "a", "b", 0}},
      {L"######Inbox######a######b######false######", {L"Inbox", "a", "b", 0}},
      {L"Inbox#a##b###false", {L"Inbox", "a", "b", 0}},
      {L"Inbox######a", {L"Inbox", "a", "", 1}},
      {L"Local Folders\\Trash######mailbox://nobody@x/Trash######s######false ",
       {L"Local Folders\\Trash", "mailbox://nobody@x/Trash", "s", 1}},
  };
  for (const FolderCase& row : cases) {
    EXPECT_EQ(ParseFolderRecord(row.text), row.folder) << NarrowUtf8(row.text);
  }
}

TEST(FolderRecord, FlagOfFalseInAnyCaseIsZero) {
  EXPECT_EQ(ParseFolderRecord(L"Inbox######a######b######FALSE").flag, 0U);
  EXPECT_EQ(ParseFolderRecord(L"Inbox######a######b######False").flag, 0U);
}

TEST(FolderRecord, ThreeFieldsGiveFlagOne) {
  EXPECT_EQ(ParseFolderRecord(L"Inbox######a######b"), (MailFolderRef{L"Inbox", "a", "b", 1}));
}

TEST(FolderRecord, EmptyFieldVanishesAndMovesTheLaterOnes) {
  EXPECT_EQ(ParseFolderRecord(L"Inbox############b######false"),
            (MailFolderRef{L"Inbox", "b", "false", 1}));
}

TEST(FolderRecord, NumberSignInANameLosesItsTailToTheNextField) {
  EXPECT_EQ(ParseFolderRecord(L"Bugs #12######a######b######false"),
            (MailFolderRef{L"Bugs ", "12", "a", 1}));
}

TEST(FolderRecord, TextWithoutFieldsIsAnEmptyFolder) {
  for (const wchar_t* text : {L"", L"#", L"######", L"########################"}) {
    EXPECT_EQ(ParseFolderRecord(text), (MailFolderRef{L"", "", "", 1}));
  }
}

TEST(FolderRecord, NameIsWideAndIdsAreOfTheCodePage) {
  EXPECT_EQ(ParseFolderRecord(L"Входящие\\Grüße######Grüße######日"),
            (MailFolderRef{L"Входящие\\Grüße", Narrow(L"Grüße"), Narrow(L"日"), 1}));
}

TEST(FolderRecord, EveryPrefixGivesItsOwnFields) {
  const MailFolderRef whole = ParseFolderRecord(L"Inbox######a######b######false");
  test::ForEveryPrefix("Inbox######a######b######false", [&](std::string_view prefix) {
    const MailFolderRef folder = ParseFolderRecord(WidenUtf8(prefix));
    EXPECT_TRUE(whole.name.starts_with(folder.name));
    EXPECT_TRUE(whole.firstId.starts_with(folder.firstId));
    EXPECT_TRUE(whole.secondId.starts_with(folder.secondId));
    EXPECT_EQ(folder.flag, 1U);
  });
}

TEST(FolderRecord, LongTextIsReadInLinearTime) {
  std::wstring text(1'000'000, L'#');
  text += L"name";
  text += std::wstring(1'000'000, L'#');
  text += L"a#b#FALSE";
  EXPECT_EQ(ParseFolderRecord(text), (MailFolderRef{L"name", "a", "b", 0}));
}

TEST(NewFolderRecord, TakesThreeFieldsAndTheParentsFlag) {
  EXPECT_EQ(ParseNewFolderRecord(L"A\\B######i######s######false", 1),
            (MailFolderRef{L"A\\B", "i", "s", 1}));
  EXPECT_EQ(ParseNewFolderRecord(L"A\\B######i", 0), (MailFolderRef{L"A\\B", "i", "", 0}));
  EXPECT_EQ(ParseNewFolderRecord(L"", 7), (MailFolderRef{L"", "", "", 7}));
}

TEST(NewFolderRequest, JoinsPathAndStoreOfTheParent) {
  EXPECT_EQ(NewFolderRequest({L"Local Folders", "first", "store-ü", 1}, L"Spam"),
            L"Local Folders\\Spam######" + Widen("store-ü"));
  EXPECT_EQ(NewFolderRequest({}, L""), L"\\######");
}

TEST(EndMarkerText, IsTheCommandBehindFiveSigns) {
  EXPECT_EQ(EndMarker(L"GiveAllFolders"), L"#####GiveAllFolders");
}

TEST(CountText, IsReadAsCReadsNumbers) {
  EXPECT_EQ(ParseCount(L"0"), 0);
  EXPECT_EQ(ParseCount(L"42"), 42);
  EXPECT_EQ(ParseCount(L" \t\r\n\v\f-42 mails"), -42);
  EXPECT_EQ(ParseCount(L"+7"), 7);
  EXPECT_EQ(ParseCount(L"0x10"), 0);
  EXPECT_EQ(ParseCount(L"- 1"), 0);
  EXPECT_EQ(ParseCount(L"+-1"), 0);
}

TEST(CountText, NonNumericTextIsZero) {
  for (const wchar_t* text : {L"", L"many", L"#12", L"-", L"\u0661"}) {
    EXPECT_EQ(ParseCount(text), 0);
  }
}

TEST(CountText, TooLargeNumberIsTheNearest) {
  EXPECT_EQ(ParseCount(L"2147483647"), std::numeric_limits<int32_t>::max());
  EXPECT_EQ(ParseCount(L"2147483648"), std::numeric_limits<int32_t>::max());
  EXPECT_EQ(ParseCount(L"-2147483648"), std::numeric_limits<int32_t>::min());
  EXPECT_EQ(ParseCount(L"-2147483649"), std::numeric_limits<int32_t>::min());
  EXPECT_EQ(ParseCount(std::wstring(1000, L'9')), std::numeric_limits<int32_t>::max());
}

using Addresses = std::vector<std::wstring>;

TEST(AddressListText, AddressesAreLowerCaseAndNamesAreDropped) {
  EXPECT_EQ(ParseAddresses(L"\"Bond, James\" <007@MI6.example>, Q@mi6.example"),
            (Addresses{L"007@mi6.example", L"q@mi6.example"}));
}

TEST(AddressListText, NamesInOtherScriptsDoNoHarm) {
  EXPECT_EQ(ParseAddresses(L"Владимир <v@post.example>, 山田 <y@post.example>"),
            (Addresses{L"v@post.example", L"y@post.example"}));
}

TEST(AddressListText, EmptyTextHasNoAddress) {
  EXPECT_TRUE(ParseAddresses(L"").empty());
}

}  // namespace
}  // namespace postmarker::thunderbird
