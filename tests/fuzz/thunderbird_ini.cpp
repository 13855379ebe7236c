// profiles.ini and extensions.ini of Thunderbird.
#include "FuzzTarget.h"
#include "clients/thunderbird/TbIniFile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace postmarker;
  const std::string_view bytes = fuzz::Bytes(data, size);
  constexpr wchar_t kData[] = L"C:\\Data";
  if (const auto profile = thunderbird::FindDefaultProfile(bytes, kData)) {
    fuzz::Require(profile->size() <= 254 + 21);
    fuzz::Require(profile->find(L'\n') == std::wstring::npos);
  }
  fuzz::Require(!thunderbird::HasLineWith(bytes, L""));
  const bool holds = thunderbird::HasLineWith(bytes, L"tb");
  fuzz::Require(!holds || bytes.find("tb") != std::string_view::npos);
  return 0;
}
