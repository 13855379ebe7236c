#include "settings/AddressValidator.h"

#include <utility>

#include "support/Text.h"

namespace postmarker {
namespace {

// Deliberate: the bars inside the brackets stand for themselves, so a bar passes as a letter. Lists
// that were made with these patterns must stay valid.
constexpr wchar_t kAddressPattern[] =
    LR"(^[a-z|0-9|-]*([_-][a-z|0-9|_-]+)*([.][a-z|0-9|_-]+([_-][a-z|0-9|_-]+)*)?@)"
    LR"([a-z|0-9|-]*\.([a-z][a-z|0-9|-]*(\.[a-z][a-z|0-9|-]*)?)$)";

// Deliberate: not anchored at its start, so a whole address passes as a domain and is cut at its
// "@" later.
constexpr wchar_t kDomainPattern[] =
    LR"([a-z|0-9|-|]*\.([a-z][a-z|0-9|-]*(\.[a-z][a-z|0-9|-]*)?)$)";

}  // namespace

AddressValidator::AddressValidator(std::unique_ptr<RegExpEngine> engine)
    : m_engine(std::move(engine)) {
  SetMode(AddressMode::kDomain);
}

void AddressValidator::SetMode(AddressMode mode) {
  m_mode = mode;
  m_hasPattern = m_engine && m_engine->SetPattern(AddressPattern(mode));
}

bool AddressValidator::IsValid(const wchar_t* text) const {
  if (text == nullptr) {
    return false;
  }
  const std::wstring trimmed(TrimWhiteSpace(text));
  const std::optional<bool> answer = m_hasPattern ? m_engine->Test(trimmed) : std::nullopt;
  return answer ? *answer : LooksValid(trimmed, m_mode);
}

const wchar_t* AddressPattern(AddressMode mode) {
  return mode == AddressMode::kAddress ? kAddressPattern : kDomainPattern;
}

bool LooksValid(const std::wstring& text, AddressMode mode) {
  const size_t lastDot = text.rfind(L'.');
  if (lastDot == std::wstring::npos || text.find(L' ') != std::wstring::npos) {
    return false;
  }
  const size_t at = text.find(L'@');
  return mode == AddressMode::kDomain || (at != std::wstring::npos && at < lastDot);
}

}  // namespace postmarker
