// The verdict of the two patterns of AddressValidator.h, found in one pass over the text.
#pragma once

#include <memory>
#include <string_view>

#include "settings/AddressValidator.h"

namespace postmarker {

// Does the pattern of the mode match somewhere in the text? The same answer as a regular expression
// engine that ignores case, without its backtracking: the time grows with the length of the text.
// White space at the ends counts.
bool MatchesAddressPattern(std::wstring_view text, AddressMode mode);

// An engine that gives that verdict for the two patterns, and asks `platform` for any other one.
// The nested repeats of the address pattern make an engine that backtracks take twice as long for
// every two characters more. Null for a null `platform`: where the platform has no engine, the
// plainer rules hold.
std::unique_ptr<RegExpEngine> MakePromptEngine(std::unique_ptr<RegExpEngine> platform);

}  // namespace postmarker
