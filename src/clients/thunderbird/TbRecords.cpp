#include "clients/thunderbird/TbRecords.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <limits>

#include "analysis/headers/AddressList.h"
#include "support/Text.h"

namespace postmarker::thunderbird {
namespace {

constexpr wchar_t kMark = L'#';
constexpr std::wstring_view kEndMarks = L"#####";
constexpr std::wstring_view kSeparator = L"######";

// The first fields of a record; empty where it has fewer.
template <size_t count>
std::array<std::wstring_view, count> TakeFields(std::wstring_view text) {
  std::array<std::wstring_view, count> fields;
  for (std::wstring_view& field : fields) {
    text.remove_prefix(std::min(text.find_first_not_of(kMark), text.size()));
    field = text.substr(0, text.find(kMark));
    text.remove_prefix(field.size());
  }
  return fields;
}

bool IsSpace(wchar_t c) {
  return c == L' ' || (c >= L'\t' && c <= L'\r');
}

}  // namespace

std::wstring EndMarker(std::wstring_view command) {
  return std::wstring(kEndMarks).append(command);
}

MailFolderRef ParseFolderRecord(std::wstring_view text) {
  const auto [name, firstId, secondId, flag] = TakeFields<4>(text);
  return {std::wstring(name), Narrow(firstId), Narrow(secondId),
          EqualNoCase(flag, L"false") ? 0U : 1U};
}

MailFolderRef ParseNewFolderRecord(std::wstring_view text, uint32_t parentFlag) {
  const auto [name, firstId, secondId] = TakeFields<3>(text);
  return {std::wstring(name), Narrow(firstId), Narrow(secondId), parentFlag};
}

std::wstring NewFolderRequest(const MailFolderRef& parent, std::wstring_view name) {
  std::wstring text = parent.name;
  return text.append(L"\\").append(name).append(kSeparator).append(Widen(parent.secondId));
}

int32_t ParseCount(std::wstring_view text) {
  size_t at = 0;
  while (at < text.size() && IsSpace(text[at])) {
    ++at;
  }
  const bool isNegative = at < text.size() && text[at] == L'-';
  if (isNegative || (at < text.size() && text[at] == L'+')) {
    ++at;
  }
  const int64_t limit = int64_t{std::numeric_limits<int32_t>::max()} + (isNegative ? 1 : 0);
  int64_t value = 0;
  for (; at < text.size() && text[at] >= L'0' && text[at] <= L'9'; ++at) {
    value = std::min(value * 10 + (text[at] - L'0'), limit);
  }
  return static_cast<int32_t>(isNegative ? -value : value);
}

std::vector<std::wstring> ParseAddresses(std::wstring_view text) {
  AddressMap list;
  ParseAddressList(Narrow(text), &list);
  std::vector<std::wstring> addresses;
  addresses.reserve(list.size());
  for (const auto& [address, displayName] : list) {
    addresses.push_back(Widen(address));
  }
  return addresses;
}

}  // namespace postmarker::thunderbird
