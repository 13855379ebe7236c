#include "settings/FilterSettings.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "settings/GlobalSettings.h"
#include "support/CompleteSettings.h"
#include "support/MemorySettingsStore.h"

namespace postmarker {
namespace {

using test::Bytes;
using test::CompleteStore;
using test::kClient;
using test::kClientPath;
using test::MemorySettingsStore;
using test::StoreIdOf;
using testing::ElementsAre;
using testing::IsEmpty;

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
