// Tokenize and the measures of text.
#include "FuzzTarget.h"
#include "analysis/words/TextTokens.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace postmarker;
  const std::string_view text = fuzz::Bytes(data, size);
  TokenCountMap tokens;
  TokenCountMap urls;
  TokenCountMap addresses;
  WordList words;
  Tokenize(text, &tokens, &words, &urls, &addresses);
  fuzz::Require(words.TextSize() <= size);
  for (const std::string_view word : words) {
    fuzz::Require(word.size() <= 64 && tokens.Contains(word));
  }
  TokenCountMap urlsAlone;
  CollectTextUrls(text, &urlsAlone);
  fuzz::Require(urls.Size() == urlsAlone.Size());
  AddWordSequences(&tokens, words);
  size_t walked = 0;
  for ([[maybe_unused]] const TokenCountMap::Item& item : tokens) {
    ++walked;
  }
  fuzz::Require(walked == tokens.Size());
  const int32_t density = MaxSpecialDensity(text);
  fuzz::Require(density >= 0 && density <= 100);
  HoldsRndMacro(text);
  return 0;
}
