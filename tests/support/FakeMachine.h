// A machine made up by a test, for the detection of mail clients.
#pragma once

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "clients/MachineView.h"
#include "support/Text.h"

namespace postmarker::test {

// A key is there as soon as it, a value of it or a key below it was added. Paths are compared
// without regard to case.
class FakeMachine final : public MachineView {
 public:
  PlatformVersion version = {10, 0};
  std::map<std::wstring, std::wstring> fileVersions;  // by full path
  std::set<std::wstring> modules;                     // files beside the module that load
  std::map<std::wstring, std::wstring> variables;     // with their percent signs
  mutable std::vector<RegistryView> viewsOfTexts;     // in which texts were asked for

  void AddKey(RegistryRoot root, const std::wstring& path) { m_keys[{root, ToLower(path)}]; }
  void AddText(RegistryRoot root, const std::wstring& path, const std::wstring& name,
               const std::wstring& text) {
    m_keys[{root, ToLower(path)}][ToLower(name)] = text;
  }
  // A value that is no text, of so many bytes.
  void AddBytes(RegistryRoot root, const std::wstring& path, const std::wstring& name,
                size_t size) {
    AddKey(root, path);
    m_sizes[{root, ToLower(path) + L"|" + ToLower(name)}] = size;
  }

  PlatformVersion Version() const override { return version; }

  bool HasKey(RegistryRoot root, const std::wstring& path) const override {
    const std::wstring wanted = ToLower(path);
    for (const auto& [key, values] : m_keys) {
      if (key.first == root && (key.second == wanted || key.second.starts_with(wanted + L"\\"))) {
        return true;
      }
    }
    return false;
  }

  std::vector<std::wstring> SubkeyNames(RegistryRoot root, const std::wstring& path,
                                        size_t room) const override {
    const std::wstring above = ToLower(path) + L"\\";
    std::set<std::wstring> names;
    for (const auto& [key, values] : m_keys) {
      if (key.first == root && key.second.starts_with(above)) {
        const std::wstring rest = key.second.substr(above.size());
        names.insert(rest.substr(0, rest.find(L'\\')));
      }
    }
    std::erase_if(names, [room](const std::wstring& name) { return name.size() >= room; });
    return {names.begin(), names.end()};
  }

  bool HasValue(RegistryRoot root, const std::wstring& path, const std::wstring& name,
                size_t roomInBytes) const override {
    const auto sized = m_sizes.find({root, ToLower(path) + L"|" + ToLower(name)});
    if (sized != m_sizes.end()) {
      return sized->second <= roomInBytes;
    }
    const auto text = ReadText(root, path, name, RegistryView::kDefault);
    return text && 2 * (text->size() + 1) <= roomInBytes;
  }

  std::optional<std::wstring> ReadText(RegistryRoot root, const std::wstring& path,
                                       const std::wstring& name, RegistryView view) const override {
    viewsOfTexts.push_back(view);
    const auto key = m_keys.find({root, ToLower(path)});
    if (key == m_keys.end()) {
      return std::nullopt;
    }
    const auto value = key->second.find(ToLower(name));
    return value != key->second.end() ? std::optional(value->second) : std::nullopt;
  }

  std::optional<std::wstring> Expand(const std::wstring& text) const override {
    std::wstring expanded = text;
    for (const auto& [name, value] : variables) {
      const size_t at = expanded.find(name);
      if (at != std::wstring::npos) {
        expanded.replace(at, name.size(), value);
      }
    }
    return expanded;
  }

  std::optional<std::wstring> FileVersionText(const std::wstring& path) const override {
    const auto found = fileVersions.find(path);
    return found != fileVersions.end() ? std::optional(found->second) : std::nullopt;
  }

  bool CanLoadBesideModule(const std::wstring& fileName) const override {
    return modules.contains(fileName);
  }

 private:
  std::map<std::pair<RegistryRoot, std::wstring>, std::map<std::wstring, std::wstring>> m_keys;
  std::map<std::pair<RegistryRoot, std::wstring>, size_t> m_sizes;
};

}  // namespace postmarker::test
