// ScanHtml, with and without stats.
#include "FuzzTarget.h"
#include "analysis/words/HtmlTokens.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace postmarker;
  const std::string_view text = fuzz::Bytes(data, size);
  TokenCountMap tokens;
  TokenCountMap urls;
  TokenCountMap addresses;
  WordList words;
  HtmlStats stats;
  ScanHtml(text, &tokens, &words, &urls, &addresses, &stats);
  fuzz::Require(stats.exeLinkCount >= 0 && stats.mismatchedLinkCount >= 0);
  TokenCountMap again;
  TokenCountMap otherUrls;
  ScanHtml(text, &again, &words, &otherUrls, &addresses, nullptr);
  fuzz::Require(tokens.Size() == again.Size() && urls.Size() == otherUrls.Size());
  return 0;
}
