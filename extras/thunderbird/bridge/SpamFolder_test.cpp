#include "SpamFolder.h"

#include <gtest/gtest.h>

#include "settings/FilterSettings.h"
#include "support/MemorySettingsStore.h"

namespace postmarker::bridge {
namespace {

TEST(SpamFolder, IsTheOneThatTheSettingsOfThunderbirdName) {
  test::MemorySettingsStore store;
  for (const wchar_t* client : {L"Mozilla Thunderbird", L"IncrediMail"}) {
    FilterSettings settings(client, store);
    settings.SetSpamFolderId(client[0] == L'M' ? "0123456789abcdef0123456789abcdef" : "other");
  }
  EXPECT_EQ(ReadSpamFolderId(store), "0123456789abcdef0123456789abcdef");
}

TEST(SpamFolder, IsNoneWithoutSettings) {
  test::MemorySettingsStore store;
  EXPECT_EQ(ReadSpamFolderId(store), "");
  const std::unique_ptr<SettingsKey> key = store.Create(L"\\Mozilla Thunderbird");
  EXPECT_EQ(ReadSpamFolderId(store), "");
  const std::vector<uint8_t> tooLong(261, 'a');
  key->Write(L"SpamFolderId", ValueType::kBinary, tooLong);
  EXPECT_EQ(ReadSpamFolderId(store), "");
}

}  // namespace
}  // namespace postmarker::bridge
