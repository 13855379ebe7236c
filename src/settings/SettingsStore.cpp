#include "settings/SettingsStore.h"

namespace postmarker {

std::vector<uint8_t> EncodeTextValue(std::wstring_view text) {
  std::vector<uint8_t> bytes;
  bytes.reserve((text.size() + 1) * 2);
  for (const wchar_t unit : text) {
    bytes.push_back(static_cast<uint8_t>(unit & 0xFF));
    bytes.push_back(static_cast<uint8_t>((unit >> 8) & 0xFF));
  }
  bytes.insert(bytes.end(), {0, 0});
  return bytes;
}

std::wstring DecodeTextValue(std::span<const uint8_t> bytes) {
  std::wstring text;
  for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
    const auto unit = static_cast<wchar_t>(bytes[i] | (bytes[i + 1] << 8));
    if (unit == 0) {
      break;
    }
    text.push_back(unit);
  }
  return text;
}

}  // namespace postmarker
