#include "settings/AddressMatcher.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace postmarker {
namespace {

bool IsLetter(wchar_t unit) {
  return (unit >= L'a' && unit <= L'z') || (unit >= L'A' && unit <= L'Z');
}

// What a label of a domain may hold: [a-z|0-9|-].
bool IsLabelUnit(wchar_t unit) {
  return IsLetter(unit) || (unit >= L'0' && unit <= L'9') || unit == L'|' || unit == L'-';
}

// What the parts of a name before the "@" may hold: [a-z|0-9|_-].
bool IsNameUnit(wchar_t unit) {
  return IsLabelUnit(unit) || unit == L'_';
}

// [a-z|0-9|-]*
bool IsOpenLabel(std::wstring_view text) {
  return std::all_of(text.begin(), text.end(), IsLabelUnit);
}

// [a-z][a-z|0-9|-]*
bool IsLabel(std::wstring_view text) {
  return !text.empty() && IsLetter(text.front()) && IsOpenLabel(text);
}

// [a-z|0-9|-]*([_-][a-z|0-9|_-]+)*
// The repeat takes any name units after a "_" or "-" if there is at least one. It must reach back
// to the first "_", which the part before it can't take.
bool IsNameHead(std::wstring_view text) {
  if (!std::all_of(text.begin(), text.end(), IsNameUnit)) {
    return false;
  }
  const size_t underscore = text.find(L'_');
  return underscore == std::wstring_view::npos || underscore + 1 < text.size() ||
         text.find(L'-') != std::wstring_view::npos;
}

// ([.][a-z|0-9|_-]+([_-][a-z|0-9|_-]+)*)
bool IsNameTail(std::wstring_view text) {
  return text.size() > 1 && std::all_of(text.begin() + 1, text.end(), IsNameUnit);
}

bool IsName(std::wstring_view text) {
  const size_t dot = text.find(L'.');
  return dot == std::wstring_view::npos
             ? IsNameHead(text)
             : IsNameHead(text.substr(0, dot)) && IsNameTail(text.substr(dot));
}

// [a-z|0-9|-]*\.([a-z][a-z|0-9|-]*(\.[a-z][a-z|0-9|-]*)?)
bool IsHost(std::wstring_view text) {
  const size_t first = text.find(L'.');
  if (first == std::wstring_view::npos || !IsOpenLabel(text.substr(0, first))) {
    return false;
  }
  const std::wstring_view labels = text.substr(first + 1);
  const size_t second = labels.find(L'.');
  return second == std::wstring_view::npos
             ? IsLabel(labels)
             : IsLabel(labels.substr(0, second)) && IsLabel(labels.substr(second + 1));
}

bool IsAddress(std::wstring_view text) {
  // Neither side can hold an "@".
  const size_t at = text.find(L'@');
  return at != std::wstring_view::npos && IsName(text.substr(0, at)) && IsHost(text.substr(at + 1));
}

// The match may begin at any ".", and the optional label after it decides nothing.
bool EndsLikeDomain(std::wstring_view text) {
  const size_t dot = text.rfind(L'.');
  return dot != std::wstring_view::npos && IsLabel(text.substr(dot + 1));
}

class PromptEngine final : public RegExpEngine {
 public:
  explicit PromptEngine(std::unique_ptr<RegExpEngine> platform) : m_platform(std::move(platform)) {}

  bool SetPattern(const std::wstring& pattern) override {
    m_mode.reset();
    for (const AddressMode mode : {AddressMode::kAddress, AddressMode::kDomain}) {
      if (pattern == AddressPattern(mode)) {
        m_mode = mode;
      }
    }
    return m_platform->SetPattern(pattern);
  }

  std::optional<bool> Test(const std::wstring& text) override {
    return m_mode ? MatchesAddressPattern(text, *m_mode) : m_platform->Test(text);
  }

 private:
  std::unique_ptr<RegExpEngine> m_platform;
  std::optional<AddressMode> m_mode;
};

}  // namespace

bool MatchesAddressPattern(std::wstring_view text, AddressMode mode) {
  return mode == AddressMode::kAddress ? IsAddress(text) : EndsLikeDomain(text);
}

std::unique_ptr<RegExpEngine> MakePromptEngine(std::unique_ptr<RegExpEngine> platform) {
  return platform ? std::make_unique<PromptEngine>(std::move(platform)) : nullptr;
}

}  // namespace postmarker
