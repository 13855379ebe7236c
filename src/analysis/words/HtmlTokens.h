// Links, alternative texts and attributes of the tags of an HTML text.
#pragma once

#include <cstdint>
#include <string_view>

#include "analysis/words/TokenCountMap.h"
#include "analysis/words/WordList.h"

namespace postmarker {

// What ScanHtml counts besides tokens.
struct HtmlStats {
  int32_t exeLinkCount = 0;  // tags with a link that ends in ".exe"
  int32_t mismatchedLinkCount =
      0;  // tags whose following text names another domain than their link
};

// Reads the tags of an HTML text: links and their parts, alternative texts of pictures and the
// attributes of some tags go to `tokens` (the words of alternative texts also to `words`), link
// hosts and links to `urls`, mail addresses to `addresses`. Text between tags adds nothing to
// `tokens`. `stats` may be null; otherwise its counts are raised. Bytes only; time linear in the
// text.
void ScanHtml(std::string_view text, TokenCountMap* tokens, WordList* words, TokenCountMap* urls,
              TokenCountMap* addresses, HtmlStats* stats);

}  // namespace postmarker
