// A value of the user's registry that an installation fills.
#pragma once

#include <windows.h>

#include <string>
#include <utility>
#include <vector>

#include "Place.h"

namespace postmarker::install {

// What a REG_SZ value with this text holds.
std::string TextContent(const std::wstring& text);

class RegistryPlace : public Place {
 public:
  // A key below the user's root. An empty `value` is the key's own value.
  RegistryPlace(std::wstring key, std::wstring value)
      : m_key(std::move(key)), m_value(std::move(value)) {}

  [[nodiscard]] std::string Name() const override;
  bool Read(Content* content) const override;
  bool Write(const Content& content) override;
  [[nodiscard]] std::vector<std::string> MissingParents() const override;
  void RemoveParent(const std::string& parent) override;

 private:
  std::wstring m_key;
  std::wstring m_value;
};

}  // namespace postmarker::install
