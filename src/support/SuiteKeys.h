// The suite's keys in the registry, below the root of a user or of the machine.
#pragma once

namespace postmarker {

// What all programs of the suite share: the language, the recommendations.
inline constexpr wchar_t kMainKey[] = L"Software\\Kestrelon Ltd.\\Kestrelon\\Main";

// The filter's own: global settings and address lists, and a key below it for each client.
inline constexpr wchar_t kSpamfilterKey[] = L"Software\\Kestrelon Ltd.\\Kestrelon\\Spamfilter";

}  // namespace postmarker
