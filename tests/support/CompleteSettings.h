// A settings record whose every value differs from its default.
#pragma once

#include <cstdint>
#include <string>

#include "settings/FilterSettings.h"
#include "support/MemorySettingsStore.h"

namespace postmarker::test {

inline constexpr wchar_t kClient[] = L"IncrediMail";
inline constexpr wchar_t kClientPath[] = L"\\IncrediMail";

// A store with all values of kClient.
inline MemorySettingsStore CompleteStore() {
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

inline std::string StoreIdOf(const FilterSettings& settings) {
  std::string id(5000, '#');
  auto size = static_cast<uint32_t>(id.size());
  settings.GetMessageStoreId(id.data(), &size);
  return id.substr(0, size);
}

}  // namespace postmarker::test
