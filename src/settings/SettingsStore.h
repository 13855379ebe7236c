// What the settings need of the place where they are kept: a key with values of its own, and named
// keys below it. On Windows that is the registry, in tests also a map.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace postmarker {

// The types of values, by the registry's numbers.
enum class ValueType : uint32_t { kText = 1, kBinary = 3, kDword = 4 };

// One open key. Names of values are compared without regard to case.
class SettingsKey {
 public:
  SettingsKey() = default;
  SettingsKey(const SettingsKey&) = delete;
  SettingsKey& operator=(const SettingsKey&) = delete;
  virtual ~SettingsKey() = default;

  // The value's bytes, whatever its type; nothing if it is missing or longer than `room` bytes.
  [[nodiscard]] virtual std::optional<std::vector<uint8_t>> Read(const std::wstring& name,
                                                                 uint32_t room) const = 0;

  // Sets the value. False if the store refuses.
  virtual bool Write(const std::wstring& name, ValueType type, std::span<const uint8_t> bytes) = 0;

  // Removes the value. False if it is missing or the store refuses.
  virtual bool Delete(const std::wstring& name) = 0;

  // The name of the value with this index, in an order of the store's own; nothing after the last
  // one, and for a name that needs more than `room` units with its terminator.
  [[nodiscard]] virtual std::optional<std::wstring> NameAt(uint32_t index, uint32_t room) const = 0;
};

// Where keys come from. `path` is what follows the text of the spam filter's own key: nothing
// for that key itself, else a backslash and the name of a key below it. Any thread may use a store;
// the keys that it gives belong to the caller and are used by one thread at a time.
class SettingsStore {
 public:
  // Opens a key for reading; null if it is missing or can't be opened.
  [[nodiscard]] virtual std::unique_ptr<SettingsKey> Open(const std::wstring& path) const = 0;

  // Opens a key for writing, and creates it and the ones above it as needed; null if the store
  // refuses.
  [[nodiscard]] virtual std::unique_ptr<SettingsKey> Create(const std::wstring& path) = 0;

 protected:
  SettingsStore() = default;
  SettingsStore(const SettingsStore&) = default;
  SettingsStore& operator=(const SettingsStore&) = default;
  ~SettingsStore() = default;
};

// The current user's settings in the registry, under Software\Kestrelon Ltd.\Kestrelon\Spamfilter.
// It lives as long as the module. There is none in builds for other systems: there, a store is
// always handed over.
SettingsStore& UserSettings();

// The bytes of a text value: two for each UTF-16 unit, low byte first, and two zero bytes at the
// end.
std::vector<uint8_t> EncodeTextValue(std::wstring_view text);

// The text that such bytes stand for, up to the first zero unit. Its terminator may be missing, and
// an odd last byte is left out.
std::wstring DecodeTextValue(std::span<const uint8_t> bytes);

}  // namespace postmarker
