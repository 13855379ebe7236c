#include "clients/outlook/OutlookTexts.h"

#include <charconv>
#include <string>

#include "support/Text.h"

namespace postmarker {
namespace {

constexpr std::wstring_view kExchangeStart = L"/o=";
constexpr std::wstring_view kCommonName = L"/cn=";

// What follows the second common name of an Exchange address; the whole if there are not two.
std::wstring_view AfterSecondCommonName(std::wstring_view address) {
  const size_t first = address.find(kCommonName);
  if (first == std::wstring_view::npos) {
    return address;
  }
  const size_t second = address.find(kCommonName, first + kCommonName.size());
  return second == std::wstring_view::npos ? address : address.substr(second + kCommonName.size());
}

double LeadingNumber(std::wstring_view text) {
  text = TrimWhiteSpace(text);
  // A character that is not ASCII ends the number, as a letter does.
  std::string narrow;
  for (const wchar_t unit : text) {
    narrow += unit < 0x80 ? static_cast<char>(unit) : 'x';
  }
  double number = 0;
  (void)std::from_chars(narrow.data(), narrow.data() + narrow.size(), number,
                        std::chars_format::fixed);
  return number;
}

}  // namespace

ResultCode NormaliseOutlookAddress(std::wstring_view text, AddressSet* addresses) {
  if (text.empty()) {
    return kFail;
  }
  const std::wstring lower = ToLower(TrimWhiteSpace(text));
  std::wstring_view address = lower;
  // Deliberate: the directory's own addresses are dropped, since no sender's address looks like
  // them. The few whose last part is an address of Internet mail count with that.
  if (address.starts_with(kExchangeStart)) {
    address = AfterSecondCommonName(address);
  }
  if (address.find(L'@') != std::wstring_view::npos) {
    addresses->emplace(address);
  }
  return kOk;
}

std::wstring_view OutlookVersionName(std::wstring_view version) {
  static constexpr struct {
    double below;
    std::wstring_view name;
  } kReleases[] = {{8.5, L"97"}, {9.0, L"98"}, {10.0, L"2000"}, {11.0, L"2002"}, {12.0, L"2003"}};
  const double number = LeadingNumber(version);
  for (const auto& release : kReleases) {
    if (number < release.below) {
      return release.name;
    }
  }
  return L"2007";
}

}  // namespace postmarker
