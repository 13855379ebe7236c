// How the values of a settings record are read and kept: widths, ends of texts, ids.
#include <gtest/gtest.h>

#include <string>

#include "settings/FilterSettings.h"
#include "support/CompleteSettings.h"
#include "support/MemorySettingsStore.h"
#include "support/Prefixes.h"

namespace postmarker {
namespace {

using test::Bytes;
using test::CompleteStore;
using test::kClient;
using test::kClientPath;
using test::MemorySettingsStore;
using test::StoreIdOf;

TEST(FilterSettingsValues, SpamFolderNameGetsItsFinalBackslashUnlessEmpty) {
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

TEST(FilterSettingsValues, SpamFolderNameIsReadInto520Bytes) {
  MemorySettingsStore store = CompleteStore();
  store.SetText(kClientPath, L"MO SFolder", std::wstring(259, L'x'));
  EXPECT_EQ(FilterSettings(kClient, store).GetSpamFolderName(), std::wstring(259, L'x') + L"\\");
  store.SetText(kClientPath, L"MO SFolder", std::wstring(260, L'x'));
  const FilterSettings tooLong(kClient, store);
  EXPECT_EQ(tooLong.GetSpamFolderName(), L"");
  EXPECT_FALSE(tooLong.IsDirty());
}

TEST(FilterSettingsValues, SpamFolderNameWithoutTerminatorOrWithOddByteIsReadWithinItsBytes) {
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

TEST(FilterSettingsValues, NumbersAreReadIntoFourBytes) {
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

TEST(FilterSettingsValues, MessageStoreIdOfZeroBytesIsNoIdAndLeavesDirtyAlone) {
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

TEST(FilterSettingsValues, LoadingAZeroStoreIdAgainForgetsTheOldOne) {
  MemorySettingsStore store = CompleteStore();
  FilterSettings settings(kClient, store);
  store.SetBinary(kClientPath, L"MessageStoreId", std::vector<uint8_t>(16, 0));
  settings.Load(kClient);
  EXPECT_EQ(StoreIdOf(settings), "");
}

TEST(FilterSettingsValues, MessageStoreIdKeepsZeroBytesAroundOthers) {
  MemorySettingsStore store = CompleteStore();
  const std::string id("\0\0x\0", 4);
  store.SetBinary(kClientPath, L"MessageStoreId", Bytes(id));
  EXPECT_EQ(StoreIdOf(FilterSettings(kClient, store)), id);
}

TEST(FilterSettingsValues, MessageStoreIdIsReadUpTo4095Bytes) {
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

TEST(FilterSettingsValues, MessageStoreIdIsKeptUpTo4096BytesAndSavedUpTo4095) {
  MemorySettingsStore store = CompleteStore();
  {
    FilterSettings settings(kClient, store);
    const std::string id(5000, 'y');
    settings.SetMessageStoreId(id.data(), static_cast<uint32_t>(id.size()));
    EXPECT_EQ(StoreIdOf(settings), std::string(4096, 'y'));
  }
  EXPECT_EQ(store.keys[kClientPath][L"MessageStoreId"].bytes, std::vector<uint8_t>(4095, 'y'));
}

TEST(FilterSettingsValues, ShorterMessageStoreIdReplacesALongerOneWhole) {
  MemorySettingsStore store = CompleteStore();
  FilterSettings settings(kClient, store);
  settings.SetMessageStoreId("longer", 6);
  settings.SetMessageStoreId("ab", 2);
  EXPECT_EQ(StoreIdOf(settings), "ab");
  settings.SetMessageStoreId(nullptr, 0);
  EXPECT_EQ(StoreIdOf(settings), "");
}

TEST(FilterSettingsValues, GetMessageStoreIdCopiesTheSmallerOfBothLengths) {
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

TEST(FilterSettingsValues, SpamFolderIdIsReadInto260BytesUpToItsFirstZero) {
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

TEST(FilterSettingsValues, EmptySpamFolderIdBecomesTheDefaultFolderAndIsDirty) {
  MemorySettingsStore store = CompleteStore();
  for (const std::string& stored :
       {std::string(), std::string("\0", 1), std::string("\0id\0", 4)}) {
    store.SetBinary(kClientPath, L"SpamFolderId", Bytes(stored));
    const FilterSettings settings(kClient, store);
    EXPECT_EQ(settings.GetSpamFolderId(), "0");
    EXPECT_TRUE(settings.IsDirty());
  }
}

}  // namespace
}  // namespace postmarker
