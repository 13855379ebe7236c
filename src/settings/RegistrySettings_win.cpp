// The settings store in the registry of the current user.
#include "settings/SettingsStore.h"
#include "support/Registry_win.h"
#include "support/SuiteKeys.h"

namespace postmarker {
namespace {

class RegistrySettingsKey final : public SettingsKey {
 public:
  explicit RegistrySettingsKey(RegistryKey key) : m_key(std::move(key)) {}

  std::optional<std::vector<uint8_t>> Read(const std::wstring& name, uint32_t room) const override {
    return m_key.ReadBytes(name.c_str(), room);
  }

  bool Write(const std::wstring& name, ValueType type, std::span<const uint8_t> bytes) override {
    return m_key.WriteBytes(name.c_str(), static_cast<DWORD>(type), bytes.data(),
                            static_cast<DWORD>(bytes.size()));
  }

  bool Delete(const std::wstring& name) override { return m_key.DeleteValue(name.c_str()); }

  std::optional<std::wstring> NameAt(uint32_t index, uint32_t room) const override {
    std::wstring name(room, L'\0');
    DWORD length = room;
    if (::RegEnumValueW(m_key.Get(), index, name.data(), &length, nullptr, nullptr, nullptr,
                        nullptr) != ERROR_SUCCESS) {
      return std::nullopt;
    }
    name.resize(length);
    return name;
  }

 private:
  RegistryKey m_key;
};

class RegistrySettingsStore final : public SettingsStore {
 public:
  std::unique_ptr<SettingsKey> Open(const std::wstring& path) const override {
    return Hand(
        RegistryKey::Open(HKEY_CURRENT_USER, kSpamfilterKey + path, KEY_READ | SuiteKeyView()));
  }

  std::unique_ptr<SettingsKey> Create(const std::wstring& path) override {
    return Hand(
        RegistryKey::Create(HKEY_CURRENT_USER, kSpamfilterKey + path, KEY_WRITE | SuiteKeyView()));
  }

 private:
  static std::unique_ptr<SettingsKey> Hand(RegistryKey key) {
    return key ? std::make_unique<RegistrySettingsKey>(std::move(key)) : nullptr;
  }
};

}  // namespace

SettingsStore& UserSettings() {
  static RegistrySettingsStore store;
  return store;
}

}  // namespace postmarker
