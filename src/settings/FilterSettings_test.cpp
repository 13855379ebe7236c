#include "settings/FilterSettings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "settings/GlobalSettings.h"
#include "support/MemorySettingsStore.h"
#include "support/Prefixes.h"

namespace postmarker {
namespace {

using test::Bytes;
using test::MemorySettingsStore;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr wchar_t kClient[] = L"IncrediMail";
constexpr wchar_t kClientPath[] = L"\\IncrediMail";

// Every value there is, none of them with its default.
MemorySettingsStore CompleteStore() {
  MemorySettingsStore store;
  store.SetNumber(L"", L"AddRecipients", 0);
  store.SetNumber(L"", L"AddCCS", 0);
  store.SetNumber(L"", L"SignEmail", 1);
  store.SetNumber(L"", L"EnableLogs", 1);
  store.SetNumber(kClientPath, L"AddBLocked", 1);
  store.SetNumber(kClientPath, L"AddBlockedDomains", 2);
  store.SetNumber(kClientPath, L"AddUnblocked", 0);
  store.SetNumber(kClientPath, L"AddUnblockedDomains", 3);
  store.SetNumber(kClientPath, L"MoveEmails", 4);
  store.SetText(kClientPath, L"MO SFolder", L"\\\\Mail\\Spam\\");
  store.SetNumber(kClientPath, L"ToolbarLeft", 10);
  store.SetNumber(kClientPath, L"ToolbarTop", 20);
  store.SetNumber(kClientPath, L"ToolbarRowIndex", 30);
  store.SetNumber(kClientPath, L"ShowWizard", 0);
  store.SetBinary(kClientPath, L"MessageStoreId", Bytes("store"));
  store.SetBinary(kClientPath, L"SpamFolderId", Bytes(std::string("folder\0", 7)));
  return store;
}

std::string StoreIdOf(const FilterSettings& settings) {
  std::string id(5000, '#');
  auto size = static_cast<uint32_t>(id.size());
  settings.GetMessageStoreId(id.data(), &size);
  return id.substr(0, size);
}

TEST(FilterSettings, FreshUserLoadsDefaultsAndIsDirty) {
  MemorySettingsStore store;
  FilterSettings settings(kClient, store);
  EXPECT_EQ(settings.Load(kClient), -1);
  EXPECT_TRUE(settings.IsDirty());
  EXPECT_EQ(settings.GetClientName(), kClient);
  EXPECT_EQ(settings.GetAddBlocked(), 0U);
  EXPECT_EQ(settings.GetAddBlockedDomains(), 0U);
  EXPECT_EQ(settings.GetAddUnblocked(), 1U);
  EXPECT_EQ(settings.GetAddUnblockedDomains(), 0U);
  EXPECT_EQ(settings.GetMoveEmails(), 0U);
  EXPECT_EQ(settings.GetSpamFolderName(), L"");
  EXPECT_EQ(settings.GetToolbarLeft(), 5000U);
  EXPECT_EQ(settings.GetToolbarTop(), 5000U);
  EXPECT_EQ(settings.GetToolbarRowIndex(), 5000U);
  EXPECT_EQ(settings.GetShowWizard(), 1U);
  EXPECT_EQ(settings.GetAddRecipients(), 1U);
  EXPECT_EQ(settings.GetAddCcs(), 1U);
  EXPECT_EQ(settings.GetSignEmail(), 0U);
  EXPECT_EQ(settings.GetEnableLogs(), 0U);
  EXPECT_EQ(settings.GetSpamFolderId(), "0");
  EXPECT_EQ(StoreIdOf(settings), "");
}

TEST(FilterSettings, FreshUserIsSavedWithAllDefaultsButEnableLogs) {
  MemorySettingsStore store;
  { const FilterSettings settings(kClient, store); }
  EXPECT_THAT(store.Dump(), ElementsAre(" | AddCCS | 4 | 01000000",                            //
                                        " | AddRecipients | 4 | 01000000",                     //
                                        " | SignEmail | 4 | 00000000",                         //
                                        "\\IncrediMail | AddBLocked | 4 | 00000000",           //
                                        "\\IncrediMail | AddBlockedDomains | 4 | 00000000",    //
                                        "\\IncrediMail | AddUnblocked | 4 | 01000000",         //
                                        "\\IncrediMail | AddUnblockedDomains | 4 | 00000000",  //
                                        "\\IncrediMail | MessageStoreId | 3 | ",               //
                                        "\\IncrediMail | MO SFolder | 1 | 0000",               //
                                        "\\IncrediMail | MoveEmails | 4 | 00000000",           //
                                        "\\IncrediMail | ShowWizard | 4 | 01000000",           //
                                        "\\IncrediMail | SpamFolderId | 3 | 3000",             //
                                        "\\IncrediMail | ToolbarLeft | 4 | 88130000",          //
                                        "\\IncrediMail | ToolbarRowIndex | 4 | 88130000",      //
                                        "\\IncrediMail | ToolbarTop | 4 | 88130000"));
}

TEST(FilterSettings, LoadReadsInItsFixedOrder) {
  MemorySettingsStore store = CompleteStore();
  const FilterSettings settings(kClient, store);
  EXPECT_THAT(
      store.log,
      ElementsAre("open ", "read AddRecipients", "read AddCCS", "read SignEmail", "read EnableLogs",
                  "open \\IncrediMail", "read AddBLocked", "read AddBlockedDomains",
                  "read AddUnblocked", "read AddUnblockedDomains", "read MoveEmails",
                  "read MO SFolder", "read ToolbarLeft", "read ToolbarTop", "read ToolbarRowIndex",
                  "read ShowWizard", "read MessageStoreId", "read SpamFolderId"));
}

TEST(FilterSettings, SaveWritesInItsFixedOrder) {
  MemorySettingsStore store = CompleteStore();
  const FilterSettings settings(kClient, store);
  store.log.clear();
  EXPECT_EQ(settings.Save(kClient), 0);
  EXPECT_THAT(store.log,
              ElementsAre("create ", "write AddRecipients", "write AddCCS", "write SignEmail",
                          "create \\IncrediMail", "write AddBLocked", "write AddBlockedDomains",
                          "write AddUnblocked", "write AddUnblockedDomains", "write MoveEmails",
                          "write MO SFolder", "write ToolbarLeft", "write ToolbarTop",
                          "write ToolbarRowIndex", "write ShowWizard", "write MessageStoreId",
                          "write SpamFolderId"));
}

TEST(FilterSettings, CompleteValuesAreReadIntoTheirFields) {
  MemorySettingsStore store = CompleteStore();
  FilterSettings settings(kClient, store);
  EXPECT_EQ(settings.Load(kClient), 0);
  EXPECT_FALSE(settings.IsDirty());
  EXPECT_EQ(settings.GetAddBlocked(), 1U);
  EXPECT_EQ(settings.GetAddBlockedDomains(), 2U);
  EXPECT_EQ(settings.GetAddUnblocked(), 0U);
  EXPECT_EQ(settings.GetAddUnblockedDomains(), 3U);
  EXPECT_EQ(settings.GetMoveEmails(), 4U);
  EXPECT_EQ(settings.GetSpamFolderName(), L"\\\\Mail\\Spam\\");
  EXPECT_EQ(settings.GetToolbarLeft(), 10U);
  EXPECT_EQ(settings.GetToolbarTop(), 20U);
  EXPECT_EQ(settings.GetToolbarRowIndex(), 30U);
  EXPECT_EQ(settings.GetShowWizard(), 0U);
  EXPECT_EQ(settings.GetAddRecipients(), 0U);
  EXPECT_EQ(settings.GetAddCcs(), 0U);
  EXPECT_EQ(settings.GetSignEmail(), 1U);
  EXPECT_EQ(settings.GetEnableLogs(), 1U);
  EXPECT_EQ(settings.GetSpamFolderId(), "folder");
  EXPECT_EQ(StoreIdOf(settings), "store");
}

TEST(FilterSettings, CompleteValuesWithNoSetterCalledAreNotWritten) {
  MemorySettingsStore store = CompleteStore();
  { const FilterSettings settings(kClient, store); }
  EXPECT_THAT(store.log, testing::Each(testing::AnyOf(testing::StartsWith("open "),
                                                      testing::StartsWith("read "))));
}

TEST(FilterSettings, SavingCompleteValuesChangesNothing) {
  MemorySettingsStore store = CompleteStore();
  const auto before = store.Dump();
  const FilterSettings settings(kClient, store);
  settings.Save(kClient);
  EXPECT_EQ(store.Dump(), before);
}

// A missing value makes the record dirty or leaves it clean, as the table of values tells.
struct MissingCase {
  const wchar_t* path;
  const wchar_t* name;
  bool dirty;
};

class FilterSettingsMissing : public testing::TestWithParam<MissingCase> {};

TEST_P(FilterSettingsMissing, MarksTheRecordDirtyOrNot) {
  MemorySettingsStore store = CompleteStore();
  ASSERT_EQ(store.keys[GetParam().path].erase(GetParam().name), 1U);
  FilterSettings settings(kClient, store);
  EXPECT_EQ(settings.IsDirty(), GetParam().dirty);
  EXPECT_EQ(settings.Load(kClient), 0);
}

INSTANTIATE_TEST_SUITE_P(Values, FilterSettingsMissing,
                         testing::Values(MissingCase{L"", L"AddRecipients", true},
                                         MissingCase{L"", L"AddCCS", true},
                                         MissingCase{L"", L"SignEmail", true},
                                         MissingCase{L"", L"EnableLogs", false},
                                         MissingCase{kClientPath, L"AddBLocked", true},
                                         MissingCase{kClientPath, L"AddBlockedDomains", true},
                                         MissingCase{kClientPath, L"AddUnblocked", true},
                                         MissingCase{kClientPath, L"AddUnblockedDomains", true},
                                         MissingCase{kClientPath, L"MoveEmails", true},
                                         MissingCase{kClientPath, L"MO SFolder", false},
                                         MissingCase{kClientPath, L"ToolbarLeft", false},
                                         MissingCase{kClientPath, L"ToolbarTop", false},
                                         MissingCase{kClientPath, L"ToolbarRowIndex", false},
                                         MissingCase{kClientPath, L"ShowWizard", true},
                                         MissingCase{kClientPath, L"MessageStoreId", true},
                                         MissingCase{kClientPath, L"SpamFolderId", true}),
                         [](const testing::TestParamInfo<MissingCase>& test) {
                           std::string name = NarrowUtf8(test.param.name);
                           name.erase(std::remove(name.begin(), name.end(), ' '), name.end());
                           return name;
                         });

TEST(FilterSettings, MissingClientKeyKeepsDefaultsAndIsDirty) {
  MemorySettingsStore store = CompleteStore();
  store.keys.erase(kClientPath);
  FilterSettings settings(kClient, store);
  EXPECT_EQ(settings.Load(kClient), -1);
  EXPECT_TRUE(settings.IsDirty());
  EXPECT_EQ(settings.GetSignEmail(), 1U) << "the global values were read before";
  EXPECT_EQ(settings.GetAddUnblocked(), 1U);
  EXPECT_EQ(settings.GetSpamFolderId(), "0");
}

TEST(FilterSettings, EmptyNameWithoutActionPluginLoadsGlobalOptionsAndReturnsMinusOne) {
  MemorySettingsStore store = CompleteStore();
  FilterSettings settings(L"", store);
  EXPECT_EQ(settings.Load(L""), -1);
  EXPECT_FALSE(settings.IsDirty()) << "stays as it is";
  EXPECT_EQ(settings.GetSignEmail(), 1U);
  EXPECT_EQ(settings.GetEnableLogs(), 1U);
}

TEST(FilterSettings, EmptyNameLoadsTheClientOfActionPluginAndSavesGlobalValuesOnly) {
  MemorySettingsStore store = CompleteStore();
  SetActionPlugin(kClient, store);
  {
    FilterSettings settings(L"", store);
    EXPECT_EQ(settings.GetClientName(), L"");
    EXPECT_EQ(settings.GetSpamFolderId(), "folder");
    EXPECT_EQ(settings.Load(L""), 0);
    settings.SetMoveEmails(77);
    EXPECT_EQ(settings.Save(L""), -1);
    store.log.clear();
  }
  EXPECT_THAT(store.log,
              ElementsAre("create ", "write AddRecipients", "write AddCCS", "write SignEmail"));
  EXPECT_EQ(FilterSettings(kClient, store).GetMoveEmails(), 4U);
}

// Each sets one value and tells whether the getter then gives it.
bool SetsMoveEmails(FilterSettings* s) {
  return s->SetMoveEmails(9), s->GetMoveEmails() == 9;
}
bool SetsAddBlocked(FilterSettings* s) {
  return s->SetAddBlocked(9), s->GetAddBlocked() == 9;
}
bool SetsAddUnblocked(FilterSettings* s) {
  return s->SetAddUnblocked(9), s->GetAddUnblocked() == 9;
}
bool SetsShowWizard(FilterSettings* s) {
  return s->SetShowWizard(9), s->GetShowWizard() == 9;
}
bool SetsFolderName(FilterSettings* s) {
  return s->SetSpamFolderName(L"x"), s->GetSpamFolderName() == L"x";
}
bool SetsFolderId(FilterSettings* s) {
  return s->SetSpamFolderId("x"), s->GetSpamFolderId() == "x";
}
bool SetsStoreId(FilterSettings* s) {
  return s->SetMessageStoreId("x", 1), StoreIdOf(*s) == "x";
}
bool SetsTheSameAgain(FilterSettings* s) {
  return s->SetMoveEmails(4), s->GetMoveEmails() == 4;
}

class FilterSettingsSetter : public testing::TestWithParam<bool (*)(FilterSettings*)> {};

TEST_P(FilterSettingsSetter, StoresTheValueAndMarksTheRecordDirty) {
  MemorySettingsStore store = CompleteStore();
  FilterSettings settings(kClient, store);
  ASSERT_FALSE(settings.IsDirty());
  EXPECT_TRUE(GetParam()(&settings));
  EXPECT_TRUE(settings.IsDirty());
}

INSTANTIATE_TEST_SUITE_P(All, FilterSettingsSetter,
                         testing::Values(SetsMoveEmails, SetsAddBlocked, SetsAddUnblocked,
                                         SetsShowWizard, SetsFolderName, SetsFolderId, SetsStoreId,
                                         SetsTheSameAgain));

TEST(FilterSettings, ChangedRecordIsSavedWhenItIsDestroyed) {
  MemorySettingsStore store = CompleteStore();
  {
    FilterSettings settings(kClient, store);
    settings.SetMoveEmails(1);
    settings.SetSpamFolderName(L"\\\\Mail\\Junk");
    settings.SetSpamFolderId("id");
    settings.SetMessageStoreId("new store", 9);
  }
  const FilterSettings again(kClient, store);
  EXPECT_FALSE(again.IsDirty());
  EXPECT_EQ(again.GetMoveEmails(), 1U);
  EXPECT_EQ(again.GetSpamFolderName(), L"\\\\Mail\\Junk\\");
  EXPECT_EQ(again.GetSpamFolderId(), "id");
  EXPECT_EQ(StoreIdOf(again), "new store");
  EXPECT_EQ(store.keys[kClientPath][L"SpamFolderId"].bytes, Bytes(std::string("id\0", 3)));
}

TEST(FilterSettings, ExplicitSaveWritesAtOnceAndTheDestructorDoesNotWriteAgain) {
  MemorySettingsStore store = CompleteStore();
  {
    FilterSettings settings(kClient, store);
    settings.SetMoveEmails(1);
    EXPECT_EQ(settings.Save(), kOk);
    EXPECT_FALSE(settings.IsDirty());
    EXPECT_EQ(FilterSettings(kClient, store).GetMoveEmails(), 1U);
    store.log.clear();
  }
  EXPECT_THAT(store.log, IsEmpty());
}

TEST(FilterSettings, ChangeAfterAnExplicitSaveIsSavedWhenTheRecordIsDestroyed) {
  MemorySettingsStore store = CompleteStore();
  {
    FilterSettings settings(kClient, store);
    settings.SetMoveEmails(1);
    settings.Save();
    settings.SetMoveEmails(2);
  }
  EXPECT_EQ(FilterSettings(kClient, store).GetMoveEmails(), 2U);
}

TEST(FilterSettings, ExplicitSaveOfAnUnchangedRecordWritesNothing) {
  MemorySettingsStore store = CompleteStore();
  FilterSettings settings(kClient, store);
  store.log.clear();
  EXPECT_EQ(settings.Save(), kOk);
  EXPECT_THAT(store.log, IsEmpty());
}

TEST(FilterSettings, ExplicitSaveThatIsRefusedIsNotRepeatedByTheDestructor) {
  MemorySettingsStore store = CompleteStore();
  {
    FilterSettings settings(kClient, store);
    settings.SetMoveEmails(1);
    store.refused[kClientPath] = true;
    EXPECT_EQ(settings.Save(), -1);
    store.log.clear();
  }
  EXPECT_THAT(store.log, IsEmpty());
}

TEST(FilterSettings, SpamFolderNameGetsItsFinalBackslashUnlessEmpty) {
  MemorySettingsStore store = CompleteStore();
  store.SetText(kClientPath, L"MO SFolder", L"Spam");
  {
    FilterSettings settings(kClient, store);
    EXPECT_EQ(settings.GetSpamFolderName(), L"Spam\\");
    EXPECT_FALSE(settings.IsDirty());
    settings.SetShowWizard(0);
  }
  EXPECT_EQ(store.keys[kClientPath][L"MO SFolder"].bytes, EncodeTextValue(L"Spam\\"));
  store.SetText(kClientPath, L"MO SFolder", L"");
  {
    FilterSettings settings(kClient, store);
    EXPECT_EQ(settings.GetSpamFolderName(), L"");
    settings.SetShowWizard(0);
  }
  EXPECT_EQ(store.keys[kClientPath][L"MO SFolder"].bytes, EncodeTextValue(L""));
}

TEST(FilterSettings, SpamFolderNameIsReadInto520Bytes) {
  MemorySettingsStore store = CompleteStore();
  store.SetText(kClientPath, L"MO SFolder", std::wstring(259, L'x'));
  EXPECT_EQ(FilterSettings(kClient, store).GetSpamFolderName(), std::wstring(259, L'x') + L"\\");
  store.SetText(kClientPath, L"MO SFolder", std::wstring(260, L'x'));
  const FilterSettings tooLong(kClient, store);
  EXPECT_EQ(tooLong.GetSpamFolderName(), L"");
  EXPECT_FALSE(tooLong.IsDirty());
}

TEST(FilterSettings, SpamFolderNameWithoutTerminatorOrWithOddByteIsReadWithinItsBytes) {
  MemorySettingsStore store = CompleteStore();
  auto bytes = EncodeTextValue(L"ab");
  test::ForEveryPrefix(std::string(bytes.begin(), bytes.end()), [&store](std::string_view prefix) {
    store.SetBinary(kClientPath, L"MO SFolder", Bytes(std::string(prefix)));
    const std::wstring expected = std::wstring(L"ab").substr(0, prefix.size() / 2);
    EXPECT_EQ(FilterSettings(kClient, store).GetSpamFolderName(),
              expected.empty() ? expected : expected + L"\\");
  });
  store.SetBinary(kClientPath, L"MO SFolder", std::vector<uint8_t>(520, 'x'));
  EXPECT_EQ(FilterSettings(kClient, store).GetSpamFolderName().size(), 261U);
}

TEST(FilterSettings, NumbersAreReadIntoFourBytes) {
  MemorySettingsStore store = CompleteStore();
  store.SetBinary(kClientPath, L"MoveEmails", {1, 2, 3, 4});
  store.SetBinary(kClientPath, L"AddUnblocked", {7});
  EXPECT_EQ(FilterSettings(kClient, store).GetMoveEmails(), 0x04030201U);
  EXPECT_EQ(FilterSettings(kClient, store).GetAddUnblocked(), 7U);
  store.SetBinary(kClientPath, L"AddUnblocked", {1, 2, 3, 4, 5});
  const FilterSettings settings(kClient, store);
  EXPECT_EQ(settings.GetAddUnblocked(), 1U) << "the default";
  EXPECT_TRUE(settings.IsDirty());
}

TEST(FilterSettings, MessageStoreIdOfZeroBytesIsNoIdAndLeavesDirtyAlone) {
  MemorySettingsStore store = CompleteStore();
  store.SetBinary(kClientPath, L"MessageStoreId", std::vector<uint8_t>(16, 0));
  const FilterSettings zeros(kClient, store);
  EXPECT_EQ(StoreIdOf(zeros), "");
  EXPECT_FALSE(zeros.IsDirty());
  store.SetBinary(kClientPath, L"MessageStoreId", {});
  const FilterSettings empty(kClient, store);
  EXPECT_EQ(StoreIdOf(empty), "");
  EXPECT_FALSE(empty.IsDirty());
}

TEST(FilterSettings, LoadingAZeroStoreIdAgainForgetsTheOldOne) {
  MemorySettingsStore store = CompleteStore();
  FilterSettings settings(kClient, store);
  store.SetBinary(kClientPath, L"MessageStoreId", std::vector<uint8_t>(16, 0));
  settings.Load(kClient);
  EXPECT_EQ(StoreIdOf(settings), "");
}

TEST(FilterSettings, MessageStoreIdKeepsZeroBytesAroundOthers) {
  MemorySettingsStore store = CompleteStore();
  const std::string id("\0\0x\0", 4);
  store.SetBinary(kClientPath, L"MessageStoreId", Bytes(id));
  EXPECT_EQ(StoreIdOf(FilterSettings(kClient, store)), id);
}

TEST(FilterSettings, MessageStoreIdIsReadUpTo4095Bytes) {
  MemorySettingsStore store = CompleteStore();
  store.SetBinary(kClientPath, L"MessageStoreId", std::vector<uint8_t>(4095, 'x'));
  const FilterSettings longest(kClient, store);
  EXPECT_EQ(StoreIdOf(longest), std::string(4095, 'x'));
  EXPECT_FALSE(longest.IsDirty());
  store.SetBinary(kClientPath, L"MessageStoreId", std::vector<uint8_t>(4096, 'x'));
  const FilterSettings tooLong(kClient, store);
  EXPECT_EQ(StoreIdOf(tooLong), "");
  EXPECT_TRUE(tooLong.IsDirty());
}

TEST(FilterSettings, MessageStoreIdIsKeptUpTo4096BytesAndSavedUpTo4095) {
  MemorySettingsStore store = CompleteStore();
  {
    FilterSettings settings(kClient, store);
    const std::string id(5000, 'y');
    settings.SetMessageStoreId(id.data(), static_cast<uint32_t>(id.size()));
    EXPECT_EQ(StoreIdOf(settings), std::string(4096, 'y'));
  }
  EXPECT_EQ(store.keys[kClientPath][L"MessageStoreId"].bytes, std::vector<uint8_t>(4095, 'y'));
}

TEST(FilterSettings, ShorterMessageStoreIdReplacesALongerOneWhole) {
  MemorySettingsStore store = CompleteStore();
  FilterSettings settings(kClient, store);
  settings.SetMessageStoreId("longer", 6);
  settings.SetMessageStoreId("ab", 2);
  EXPECT_EQ(StoreIdOf(settings), "ab");
  settings.SetMessageStoreId(nullptr, 0);
  EXPECT_EQ(StoreIdOf(settings), "");
}

TEST(FilterSettings, GetMessageStoreIdCopiesTheSmallerOfBothLengths) {
  MemorySettingsStore store = CompleteStore();
  const FilterSettings settings(kClient, store);
  char buffer[8] = "#######";
  uint32_t size = 3;
  settings.GetMessageStoreId(buffer, &size);
  EXPECT_EQ(size, 3U);
  EXPECT_STREQ(buffer, "sto####");
  size = 8;
  settings.GetMessageStoreId(buffer, &size);
  EXPECT_EQ(size, 5U);
  EXPECT_STREQ(buffer, "store##");
  size = 0;
  settings.GetMessageStoreId(nullptr, &size);
  EXPECT_EQ(size, 0U);
}

TEST(FilterSettings, SpamFolderIdIsReadInto260BytesUpToItsFirstZero) {
  MemorySettingsStore store = CompleteStore();
  store.SetBinary(kClientPath, L"SpamFolderId", Bytes(std::string("a\0b\0", 4)));
  EXPECT_EQ(FilterSettings(kClient, store).GetSpamFolderId(), "a");
  store.SetBinary(kClientPath, L"SpamFolderId", Bytes(std::string(260, 'z')));
  EXPECT_EQ(FilterSettings(kClient, store).GetSpamFolderId(), std::string(260, 'z'));
  store.SetBinary(kClientPath, L"SpamFolderId", Bytes(std::string(261, 'z')));
  const FilterSettings tooLong(kClient, store);
  EXPECT_EQ(tooLong.GetSpamFolderId(), "0");
  EXPECT_TRUE(tooLong.IsDirty());
}

TEST(FilterSettings, EmptySpamFolderIdBecomesTheDefaultFolderAndIsDirty) {
  MemorySettingsStore store = CompleteStore();
  for (const std::string& stored :
       {std::string(), std::string("\0", 1), std::string("\0id\0", 4)}) {
    store.SetBinary(kClientPath, L"SpamFolderId", Bytes(stored));
    const FilterSettings settings(kClient, store);
    EXPECT_EQ(settings.GetSpamFolderId(), "0");
    EXPECT_TRUE(settings.IsDirty());
  }
}

TEST(FilterSettings, StoreThatRefusesGivesMinusOneAndKeepsTheValuesInMemory) {
  MemorySettingsStore store;
  store.refusesAll = true;
  {
    FilterSettings settings(kClient, store);
    settings.SetMoveEmails(1);
    EXPECT_EQ(settings.Save(kClient), -1);
    EXPECT_EQ(settings.GetMoveEmails(), 1U);
  }
  EXPECT_THAT(store.Dump(), IsEmpty());
}

TEST(FilterSettings, ClientKeyThatIsRefusedGivesMinusOneBehindTheGlobalValues) {
  MemorySettingsStore store;
  store.refused[kClientPath] = true;
  FilterSettings settings(kClient, store);
  EXPECT_EQ(settings.Save(kClient), -1);
  EXPECT_THAT(store.Dump(),
              ElementsAre(" | AddCCS | 4 | 01000000", " | AddRecipients | 4 | 01000000",
                          " | SignEmail | 4 | 00000000"));
}

TEST(FilterSettings, ClientsWithOneKeyNameShareOneRecord) {
  MemorySettingsStore store;
  FilterSettings(L"Outlook Express", store).SetSpamFolderId("17");
  EXPECT_EQ(FilterSettings(L"OUTLOOK EXPRESS", store).GetSpamFolderId(), "17");
  EXPECT_EQ(FilterSettings(L"Windows Live Mail", store).GetSpamFolderId(), "0");
}

TEST(TextValues, ConvertThereAndBack) {
  EXPECT_EQ(EncodeTextValue(L"a\x20AC"), (std::vector<uint8_t>{'a', 0, 0xAC, 0x20, 0, 0}));
  EXPECT_EQ(DecodeTextValue(EncodeTextValue(L"a\x20AC")), L"a\x20AC");
  EXPECT_EQ(DecodeTextValue(EncodeTextValue(std::wstring(L"a\0b", 3))), L"a");
  EXPECT_EQ(DecodeTextValue({}), L"");
}

}  // namespace
}  // namespace postmarker
