// A settings store in memory, which notes what is done with it and refuses on request.
#pragma once

#include <cstdint>
#include <cstdio>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "settings/SettingsStore.h"
#include "support/Text.h"

namespace postmarker::test {

struct NoCaseLess {
  bool operator()(const std::wstring& a, const std::wstring& b) const {
    return CompareNoCase(a, b) < 0;
  }
};

struct MemoryValue {
  ValueType type = ValueType::kText;
  std::vector<uint8_t> bytes;
};
using MemoryValues = std::map<std::wstring, MemoryValue, NoCaseLess>;

// Two lower-case digits a byte.
inline std::string Hex(std::span<const uint8_t> bytes) {
  std::string hex;
  for (const uint8_t byte : bytes) {
    char digits[3];
    std::snprintf(digits, sizeof(digits), "%02x", byte);
    hex += digits;
  }
  return hex;
}

inline std::vector<uint8_t> NumberBytes(uint32_t number) {
  return {static_cast<uint8_t>(number), static_cast<uint8_t>(number >> 8),
          static_cast<uint8_t>(number >> 16), static_cast<uint8_t>(number >> 24)};
}

inline std::vector<uint8_t> Bytes(const std::string& text) {
  return {text.begin(), text.end()};
}

// For one thread. Keys that it gave must not outlive it.
class MemorySettingsStore final : public SettingsStore {
 public:
  // The keys by path, each with its values.
  std::map<std::wstring, MemoryValues, NoCaseLess> keys;

  // Paths that can't be created or opened for writing.
  std::map<std::wstring, bool, NoCaseLess> refused;

  // Nothing can be created or written.
  bool refusesAll = false;

  // What was done, such as "open \IncrediMail", "read MoveEmails", "write AddCCS".
  mutable std::vector<std::string> log;

  std::unique_ptr<SettingsKey> Open(const std::wstring& path) const override;
  std::unique_ptr<SettingsKey> Create(const std::wstring& path) override;

  void SetNumber(const std::wstring& path, const std::wstring& name, uint32_t number) {
    keys[path][name] = {ValueType::kDword, NumberBytes(number)};
  }
  void SetText(const std::wstring& path, const std::wstring& name, const std::wstring& text) {
    keys[path][name] = {ValueType::kText, EncodeTextValue(text)};
  }
  void SetBinary(const std::wstring& path, const std::wstring& name, std::vector<uint8_t> bytes) {
    keys[path][name] = {ValueType::kBinary, std::move(bytes)};
  }

  // All values as "path | name | type number | bytes", in the order of the maps.
  [[nodiscard]] std::vector<std::string> Dump() const {
    std::vector<std::string> lines;
    for (const auto& [path, values] : keys) {
      for (const auto& [name, value] : values) {
        std::string line = NarrowUtf8(path);
        line.append(" | ").append(NarrowUtf8(name)).append(" | ");
        line.append(std::to_string(static_cast<int>(value.type)))
            .append(" | ")
            .append(Hex(value.bytes));
        lines.push_back(std::move(line));
      }
    }
    return lines;
  }
};

class MemorySettingsKey final : public SettingsKey {
 public:
  MemorySettingsKey(MemoryValues* values, std::vector<std::string>* log)
      : m_values(values), m_log(log) {}

  std::optional<std::vector<uint8_t>> Read(const std::wstring& name, uint32_t room) const override {
    Note("read ", name);
    const auto found = m_values->find(name);
    if (found == m_values->end() || found->second.bytes.size() > room) {
      return std::nullopt;
    }
    return found->second.bytes;
  }

  bool Write(const std::wstring& name, ValueType type, std::span<const uint8_t> bytes) override {
    Note("write ", name);
    (*m_values)[name] = {type, {bytes.begin(), bytes.end()}};
    return true;
  }

  bool Delete(const std::wstring& name) override {
    Note("delete ", name);
    return m_values->erase(name) > 0;
  }

  std::optional<std::wstring> NameAt(uint32_t index, uint32_t room) const override {
    if (index >= m_values->size()) {
      return std::nullopt;
    }
    // A walk goes through the indexes in order, so the place is kept.
    if (index == 0 || index != m_nextIndex) {
      m_next = std::next(m_values->begin(), index);
    }
    const std::wstring& name = m_next->first;
    ++m_next;
    m_nextIndex = index + 1;
    return name.size() < room ? std::optional(name) : std::nullopt;
  }

 private:
  void Note(const char* what, const std::wstring& name) const {
    m_log->push_back(std::string(what).append(NarrowUtf8(name)));
  }

  MemoryValues* m_values;
  std::vector<std::string>* m_log;
  mutable MemoryValues::const_iterator m_next;
  mutable uint32_t m_nextIndex = 0;
};

inline std::unique_ptr<SettingsKey> MemorySettingsStore::Open(const std::wstring& path) const {
  log.push_back(std::string("open ").append(NarrowUtf8(path)));
  const auto found = keys.find(path);
  if (found == keys.end()) {
    return nullptr;
  }
  // A key that is opened for reading is used for nothing else.
  return std::make_unique<MemorySettingsKey>(const_cast<MemoryValues*>(&found->second), &log);
}

inline std::unique_ptr<SettingsKey> MemorySettingsStore::Create(const std::wstring& path) {
  log.push_back(std::string("create ").append(NarrowUtf8(path)));
  if (refusesAll || refused.contains(path)) {
    return nullptr;
  }
  return std::make_unique<MemorySettingsKey>(&keys[path], &log);
}

}  // namespace postmarker::test
