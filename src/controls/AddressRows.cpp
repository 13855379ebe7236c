#include "controls/AddressRows.h"

#include <algorithm>

#include "support/Text.h"

namespace postmarker {
namespace {

constexpr std::wstring_view kSeparators = L" \t\r\n\v\f,;\x00A0";
constexpr std::wstring_view kWrappings = L"<>\"'";

std::wstring_view Unwrap(std::wstring_view text) {
  const size_t first = text.find_first_not_of(kWrappings);
  if (first == std::wstring_view::npos) {
    return {};
  }
  return text.substr(first, text.find_last_not_of(kWrappings) - first + 1);
}

}  // namespace

RowPlace FindRowPlace(int32_t count, const RowText& textOf, const std::wstring& text) {
  int32_t low = 0;
  int32_t high = count;
  while (low < high) {
    const int32_t middle = low + (high - low) / 2;
    const int order = textOf(middle).compare(text);
    if (order == 0) {
      return {middle, true};
    }
    if (order < 0) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  return {low, false};
}

std::wstring DomainOf(const std::wstring& address) {
  const size_t at = address.rfind(L'@');
  return at == std::wstring::npos ? std::wstring() : address.substr(at + 1);
}

std::wstring AddressForm(std::wstring_view typed) {
  return ToLower(TrimWhiteSpace(typed));
}

std::vector<std::wstring> SplitAddresses(std::wstring_view text) {
  std::vector<std::wstring> addresses;
  for (size_t pos = 0;
       (pos = text.find_first_not_of(kSeparators, pos)) != std::wstring_view::npos;) {
    const size_t end = std::min(text.find_first_of(kSeparators, pos), text.size());
    const std::wstring_view bare = Unwrap(text.substr(pos, end - pos));
    if (!bare.empty()) {
      addresses.push_back(AddressForm(bare));
    }
    pos = end;
  }
  return addresses;
}

EditOutcome DecideEdit(const AddressEdit& edit,
                       const std::function<bool(const std::wstring&)>& isValid,
                       const std::function<bool(const std::wstring&)>& exists) {
  const std::wstring form = AddressForm(edit.typed);
  // A collected text need not be in the form of typed ones.
  if (edit.cancelled || edit.typed == edit.before || form == edit.before) {
    return edit.before.empty() ? EditOutcome::kRemove : EditOutcome::kKeep;
  }
  if (form.empty()) {
    return EditOutcome::kRemove;
  }
  if (!isValid(form)) {
    return EditOutcome::kInvalid;
  }
  return exists(form) ? EditOutcome::kDuplicate : EditOutcome::kStore;
}

std::wstring WithNumber(std::wstring text, int32_t number) {
  constexpr std::wstring_view kPlace = L"%d";
  const size_t place = text.find(kPlace);
  return place == std::wstring::npos ? text
                                     : text.replace(place, kPlace.size(), std::to_wstring(number));
}

}  // namespace postmarker
