#include "PipeTexts.h"

#include <gtest/gtest.h>

namespace postmarker::bridge {
namespace {

FolderItem Folder(std::vector<std::string> path) {
  return {std::move(path), std::string(32, '0'), "account1", true};
}

const std::wstring kId(32, L'0');

TEST(PipeTexts, TellsAFolder) {
  EXPECT_EQ(FolderText(Folder({"Local Folders", "B\xC3\xBCro", "\xE6\xA1\x88"})),
            L"\\\\Local Folders\\B\u00FCro\\\u6848######" + kId + L"######account1######true");
  FolderItem second = Folder({"A"});
  second.first = false;
  EXPECT_EQ(FolderText(second), L"\\\\A######" + kId + L"######account1######false");
  EXPECT_EQ(NewFolderText(second), L"\\\\A######" + kId + L"######account1");
}

TEST(PipeTexts, LeavesOutAFolderThatTheRecordCantHold) {
  for (const char* name : {"", "a#b", "a\\b", "a\nb", "a\x7F", "#"}) {
    EXPECT_EQ(FolderText(Folder({"A", name})), std::nullopt) << name;
    EXPECT_EQ(FolderText(Folder({name, "A"})), std::nullopt) << name;
  }
  EXPECT_EQ(FolderText(Folder({"A", std::string("a\0b", 3)})), std::nullopt);
  EXPECT_EQ(FolderText(Folder({})), std::nullopt);
  for (const char* id : {"", "a#", "a b", "\xC3\xBC"}) {
    FolderItem folder = Folder({"A"});
    folder.id = id;
    EXPECT_EQ(FolderText(folder), std::nullopt) << id;
    folder = Folder({"A"});
    folder.store = id;
    EXPECT_EQ(NewFolderText(folder), std::nullopt) << id;
  }
}

TEST(PipeTexts, TakesIdsOfLettersDigitsAndFewOtherCharacters) {
  FolderItem folder = Folder({"A"});
  folder.id = "azAZ09.-_@:";
  EXPECT_EQ(NewFolderText(folder), L"\\\\A######azAZ09.-_@:######account1");
  for (const char* id : {"`", "{", "[", "/", ";", "~", "\x80"}) {
    folder.id = id;
    EXPECT_EQ(NewFolderText(folder), std::nullopt) << id;
  }
}

TEST(PipeTexts, TellsARecordOfExactlyTheLimit) {
  const size_t rest = FolderText(Folder({"A"}))->size() - 1;
  const auto text = FolderText(Folder({std::string(kMaxPipeText - rest, 'x')}));
  ASSERT_TRUE(text);
  EXPECT_EQ(text->size(), kMaxPipeText);
  EXPECT_EQ(FolderText(Folder({std::string(kMaxPipeText - rest + 1, 'x')})), std::nullopt);
}

TEST(PipeTexts, TellsAnAddressThatNoReaderMistakes) {
  EXPECT_EQ(AddressText("a#b@example.com"), L"a#b@example.com");
  EXPECT_EQ(AddressText(std::string(kMaxPipeText, 'x'))->size(), kMaxPipeText);
  EXPECT_EQ(AddressText(std::string(kMaxPipeText + 1, 'x')), std::nullopt);
  for (const char* text : {"", "#####GiveContacts", "a\rb", "IncreaseProgressBar"}) {
    EXPECT_EQ(AddressText(text), std::nullopt) << text;
  }
}

TEST(PipeTexts, TellsACount) {
  EXPECT_EQ(CountText(0), L"0");
  EXPECT_EQ(CountText(2147483647), L"2147483647");
  EXPECT_EQ(CountText(2147483648), std::nullopt);
  EXPECT_EQ(CountText(-1), std::nullopt);
}

TEST(PipeTexts, JoinsTheAddressesOfRecipients) {
  std::vector<std::wstring> texts = {L"before"};
  EXPECT_EQ(AppendRecipientTexts({"a@example.com", "\"X, <Y>\" <b@example.com>"}, &texts), 0U);
  EXPECT_EQ(texts, (std::vector<std::wstring>{L"before", L"a@example.com, b@example.com"}));
  EXPECT_EQ(AppendRecipientTexts({}, &texts), 0U);
  EXPECT_EQ(texts.size(), 2U);
}

TEST(PipeTexts, CutsRecipientsBetweenEntriesAlone) {
  // Two of them with what stands between are exactly as long as a message.
  const std::string half = std::string((kMaxPipeText - 3) / 2 - 1, 'x') + "@";
  std::vector<std::wstring> texts;
  EXPECT_EQ(AppendRecipientTexts({half, half + "y", half + "y", "@z"}, &texts), 0U);
  ASSERT_EQ(texts.size(), 2U);
  EXPECT_EQ(texts[0].size(), kMaxPipeText);
  EXPECT_TRUE(texts[0].ends_with(L"@y"));
  EXPECT_TRUE(texts[1].starts_with(L"x"));
  EXPECT_TRUE(texts[1].ends_with(L"@y, @z"));
}

TEST(PipeTexts, TellsARecipientAsLongAsAMessageByItself) {
  const std::string longest = std::string(kMaxPipeText - 1, 'x') + "@";
  std::vector<std::wstring> texts;
  EXPECT_EQ(AppendRecipientTexts({longest, "a@b"}, &texts), 0U);
  ASSERT_EQ(texts.size(), 2U);
  EXPECT_EQ(texts[0].size(), kMaxPipeText);
  EXPECT_EQ(texts[1], L"a@b");
}

TEST(PipeTexts, CutsRecipientsThatWouldFitWithoutWhatStandsBetween) {
  const std::string half = std::string(kMaxPipeText / 2 - 1, 'x') + "@";
  std::vector<std::wstring> texts;
  EXPECT_EQ(AppendRecipientTexts({half, half}, &texts), 0U);
  EXPECT_EQ(texts.size(), 2U);
}

TEST(PipeTexts, CountsRecipientsThatHaveNoText) {
  const std::vector<std::string> wrong = {"",
                                          std::string(kMaxPipeText, 'x') + "@",
                                          "a@\tb",
                                          "IncreaseProgressBar",
                                          "undisclosed-recipients:;",
                                          "\"a b\"@example.com",
                                          "X <a@b.example, c@d.example>",
                                          "X <>",
                                          "group:a@b.example",
                                          "a@b.example>"};
  for (const std::string& entry : wrong) {
    std::vector<std::wstring> texts;
    EXPECT_EQ(AppendRecipientTexts({entry, "good@example.com"}, &texts), 1U) << entry;
    EXPECT_EQ(texts, std::vector<std::wstring>{L"good@example.com"}) << entry;
  }
}

TEST(PipeTexts, ReadsWhatANewFolderIsToBe) {
  const auto folder = ParseNewFolderText(L"\\\\Local Folders\\B\u00FCro\\Spam######account1");
  ASSERT_TRUE(folder);
  EXPECT_EQ(folder->path, (std::vector<std::string>{"Local Folders", "B\xC3\xBCro", "Spam"}));
  EXPECT_EQ(folder->store, "account1");
  EXPECT_EQ(ParseNewFolderText(L"A\\B######s")->path, (std::vector<std::string>{"A", "B"}));
}

TEST(PipeTexts, RefusesANewFolderThatCouldNotBeTold) {
  const std::wstring levels = [] {
    std::wstring path = L"\\\\a";
    for (int i = 0; i < 100; ++i) {
      path += L"\\b";
    }
    return path;
  }();
  const std::vector<std::wstring> wrong = {
      L"", L"A\\B", L"A\\B######", L"######s", L"A######s", L"A\\######s", L"A\\\\B######s",
      L"A\\B#C######s", L"A\\B\n######s", L"A\\B######s t", L"\\\\", levels + L"######s",
      L"A\\" + std::wstring(1000, L'x') + L"######s",
      // Half a character.
      std::wstring(L"A\\B") + static_cast<wchar_t>(0xD83D) + L"######s"};
  for (const std::wstring& text : wrong) {
    EXPECT_EQ(ParseNewFolderText(text), std::nullopt) << text.size();
  }
  EXPECT_TRUE(ParseNewFolderText(levels.substr(0, levels.size() - 2) + L"######s"));
}

TEST(PipeTexts, KnowsTheIdsOfFolders) {
  EXPECT_TRUE(IsFolderId("0123456789abcdef0123456789abcdef"));
  for (const char* text :
       {"", "0", "0123456789ABCDEF0123456789ABCDEF", "0123456789abcdef0123456789abcdef0",
        "g123456789abcdef0123456789abcdef"}) {
    EXPECT_FALSE(IsFolderId(text)) << text;
  }
}

}  // namespace
}  // namespace postmarker::bridge
