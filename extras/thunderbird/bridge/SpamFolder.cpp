#include "SpamFolder.h"

#include <algorithm>

namespace postmarker::bridge {
namespace {

constexpr wchar_t kClientPath[] = L"\\Mozilla Thunderbird";
constexpr wchar_t kFolderIdValue[] = L"SpamFolderId";
constexpr uint32_t kFolderIdRoom = 260;

}  // namespace

std::string ReadSpamFolderId(const SettingsStore& store) {
  const std::unique_ptr<SettingsKey> key = store.Open(kClientPath);
  if (!key) {
    return {};
  }
  const auto bytes = key->Read(kFolderIdValue, kFolderIdRoom);
  return bytes ? std::string(bytes->begin(), std::find(bytes->begin(), bytes->end(), uint8_t{0}))
               : std::string();
}

}  // namespace postmarker::bridge
