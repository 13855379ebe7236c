#include "clients/incredimail/ImAttachmentName.h"

#include <algorithm>
#include <array>
#include <string>

#include "support/Text.h"

namespace postmarker {
namespace {

// What no file system of the client's takes in one name.
constexpr size_t kMaxNameBytes = 255;

constexpr auto kDevices =
    std::to_array<std::wstring_view>({L"con", L"prn", L"aux", L"nul", L"conin$", L"conout$"});
constexpr auto kNumberedDevices = std::to_array<std::wstring_view>({L"com", L"lpt"});
constexpr std::wstring_view kDeviceNumbers = L"0123456789\u00B9\u00B2\u00B3";

// Devices are everywhere, with any extension and with blanks after their names.
bool IsDevice(std::wstring_view name) {
  name = name.substr(0, name.find(L'.'));
  name = name.substr(0, name.find_last_not_of(L' ') + 1);
  const auto is = [](std::wstring_view a) {
    return [a](std::wstring_view b) { return EqualNoCase(a, b); };
  };
  if (std::any_of(kDevices.begin(), kDevices.end(), is(name))) {
    return true;
  }
  return name.size() == 4 && kDeviceNumbers.find(name.back()) != std::wstring_view::npos &&
         std::any_of(kNumberedDevices.begin(), kNumberedDevices.end(), is(name.substr(0, 3)));
}

}  // namespace

bool IsAttachmentName(std::string_view name) {
  if (name.size() > kMaxNameBytes) {
    return false;
  }
  // The code page decides which bytes are separators.
  const std::wstring wide = Widen(name);
  const bool isNamed = wide.find_first_not_of(L". ") != std::wstring::npos;
  return isNamed && wide.find_first_of(L"/\\:") == std::wstring::npos && !IsDevice(wide);
}

}  // namespace postmarker
