// Words, dotted names and addresses of plain text.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "analysis/words/TokenCountMap.h"
#include "analysis/words/WordList.h"

namespace postmarker {

// Splits text into words. Words, dotted names and their capital letters are counted in `tokens`;
// words are appended to `words` in their order; what looks like a host or URL is counted in `urls`,
// and what holds an
// "@" in `addresses`, both in lower case. The case of words stays. Bytes only; time linear in the
// text.
void Tokenize(std::string_view text, TokenCountMap* tokens, WordList* words, TokenCountMap* urls,
              TokenCountMap* addresses);

// The same for texts of which only the URLs matter.
void CollectTextUrls(std::string_view text, TokenCountMap* urls);

// The most special characters that stand in any 100 bytes in a row: a measure of letter-spacing and
// of tricks with symbols. The window fills up from the start, so short texts count too.
int32_t MaxSpecialDensity(std::string_view text);

// True for what may be a URL or a host name: with "://" in it, and then the text is cut to what
// follows; with "www." in it; or with a registered domain.
bool IsUrlLike(std::string_view* text);

// The ASCII capitals of a word in their order, where there are `minimum` of them, otherwise
// nothing.
std::string UpperLettersOf(std::string_view word, size_t minimum);

// True if the text holds "%rnd", case ignored: a macro that a mass mailer forgot to replace.
bool HoldsRndMacro(std::string_view text);

}  // namespace postmarker
