// What a statistical filter works on: what is counted of one message.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "analysis/features/HeaderLog.h"
#include "analysis/words/FeatureLimit.h"
#include "analysis/words/TokenCountMap.h"
#include "analysis/words/WordList.h"

namespace postmarker {

// Counters that tell of tricks in the text.
struct TextStats {
  int32_t helperCountA = 0;  // the HTML helper's counts, summed over parts
  int32_t helperCountB = 0;
  int32_t firstPartNewTokens = 0;  // tokens that the first text part added
  int32_t maxSpecialDensity = 0;   // the largest of any part
  int32_t rndMacroCount = 0;       // header values and text parts that hold "%rnd"
  int32_t exeLinkCount = 0;        // HTML tags with a link that ends in ".exe"
  int32_t mismatchedLinkCount =
      0;  // HTML tags whose following text names another domain than their link
};

// What an HTML helper made of a part.
struct HelperText {
  std::string text;
  int32_t countA = 0;
  int32_t countB = 0;
  bool failed = false;  // the part costs its features then
};

// Where features come from. The texts are not owned.
struct FeatureSources {
  HeaderLog* headers;  // subjects and senders alone; gathering sorts them
  const std::vector<std::string>* htmlParts;
  const std::vector<std::string>* plainParts;
  const std::vector<HelperText>* htmlTexts;  // one for each HTML part, or none
  const std::vector<std::string>* pdfTexts;
};

// The features of one message, and how they follow from its headers and texts. Names, weights and
// order are those that stored training data was made with. One thread per object. All text is
// bytes.
class MessageFeatures {
 public:
  MessageFeatures();
  MessageFeatures(const MessageFeatures&) = delete;
  MessageFeatures& operator=(const MessageFeatures&) = delete;
  ~MessageFeatures() = default;

  void Clear();

  // Adds what the sources give. A message that has more than the limit allows (FeatureLimit) costs
  // the rest of its features: those gathered so far stay. No failure leaves this. REQUIRES: nothing
  // was gathered since Clear.
  void Gather(const FeatureSources& sources);

  // Counts a header value that holds a macro that a mass mailer forgot to replace.
  void CountRndMacro() { ++m_stats.rndMacroCount; }

  [[nodiscard]] const TokenCountMap& Tokens() const { return m_tokens; }
  [[nodiscard]] const TokenCountMap& SubjectTokens() const { return m_subjectTokens; }
  [[nodiscard]] const TokenCountMap& FromNameTokens() const { return m_fromNameTokens; }
  [[nodiscard]] const WordList& BodyWords() const { return m_bodyWords; }
  [[nodiscard]] const WordList& SubjectWords() const { return m_subjectWords; }
  [[nodiscard]] const WordList& FromNameWords() const { return m_fromNameWords; }
  [[nodiscard]] const TokenCountMap& HtmlUrls() const { return m_htmlUrls; }
  [[nodiscard]] const TokenCountMap& HtmlAddresses() const { return m_htmlAddresses; }
  [[nodiscard]] const TokenCountMap& TextUrls() const { return m_textUrls; }
  [[nodiscard]] const TokenCountMap& TextAddresses() const { return m_textAddresses; }
  [[nodiscard]] const TextStats& Stats() const { return m_stats; }

  // False if the sources give more than was gathered.
  [[nodiscard]] bool AreComplete() const { return m_areComplete; }

 private:
  std::array<TokenCountMap*, 7> AllMaps();
  std::array<WordList*, 3> AllLists();
  void CountHeaders(const HeaderLog& headers);
  void CountSubject(std::string_view key, std::string_view value);
  void CountSender(std::string_view key, std::string_view label, std::string_view value);
  void CountAddress(std::string_view label, std::string_view address);
  void CountWords(std::string_view text, const std::string& prefix, TokenCountMap* ownTokens,
                  WordList* ownWords);
  void CountParts(const FeatureSources& sources);
  std::optional<TextStats> TryCountPart(std::string_view text, const HelperText* helper,
                                        bool isHtml);
  std::optional<TextStats> CountPart(std::string_view text, const HelperText* helper, bool isHtml);
  void CountText(std::string_view text);
  void CountSequences();

  FeatureLimit m_limit;  // of the maps and lists that follow
  TokenCountMap m_tokens;
  TokenCountMap m_subjectTokens;
  TokenCountMap m_fromNameTokens;
  WordList m_bodyWords;
  WordList m_subjectWords;
  WordList m_fromNameWords;
  TokenCountMap m_htmlUrls;
  TokenCountMap m_htmlAddresses;
  TokenCountMap m_textUrls;
  TokenCountMap m_textAddresses;
  TextStats m_stats;
  bool m_areComplete = true;
  TokenCountMap m_localTokens;  // of one header
  WordList m_localWords;
};

}  // namespace postmarker
