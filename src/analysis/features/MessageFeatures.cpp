#include "analysis/features/MessageFeatures.h"

#include <algorithm>
#include <optional>

#include "analysis/features/FeatureHeaders.h"
#include "analysis/headers/AddressList.h"
#include "analysis/words/DomainTable.h"
#include "analysis/words/HtmlTokens.h"
#include "analysis/words/TextTokens.h"
#include "support/Bytes.h"

namespace postmarker {
namespace {

constexpr size_t kNone = std::string_view::npos;

// A large free mail provider with a domain in many countries. Its senders' addresses are also
// counted under the main domain.
constexpr std::string_view kProviderLabel = "yahoo";
constexpr std::string_view kProviderDomain = "yahoo.com";

// The subject without its bracketed stretches, a blank before each capital, and then all in
// lower case: words that were run together come apart.
std::string SpreadSubject(std::string_view value) {
  std::string spread;
  while (!value.empty()) {
    const size_t open = std::min(value.find('['), value.size());
    const size_t close = value.find(']', open);
    const size_t end = close == kNone ? value.size() : open;
    for (const char c : value.substr(0, end)) {
      if (Is(c, kUpperByte)) {
        spread.push_back(' ');
      }
      spread.push_back(LowerByte(c));
    }
    value.remove_prefix(close == kNone ? value.size() : close + 1);
  }
  return spread;
}

void AddToStats(const TextStats& part, TextStats* sum) {
  sum->helperCountA += part.helperCountA;
  sum->helperCountB += part.helperCountB;
  sum->maxSpecialDensity = std::max(sum->maxSpecialDensity, part.maxSpecialDensity);
  sum->rndMacroCount += part.rndMacroCount;
  sum->exeLinkCount += part.exeLinkCount;
  sum->mismatchedLinkCount += part.mismatchedLinkCount;
}

}  // namespace

MessageFeatures::MessageFeatures() {
  for (TokenCountMap* const map : AllMaps()) {
    map->SetLimit(&m_limit);
  }
  for (WordList* const list : AllLists()) {
    list->SetLimit(&m_limit);
  }
}

std::array<TokenCountMap*, 7> MessageFeatures::AllMaps() {
  return {&m_tokens,        &m_subjectTokens, &m_fromNameTokens, &m_htmlUrls,
          &m_htmlAddresses, &m_textUrls,      &m_textAddresses};
}

std::array<WordList*, 3> MessageFeatures::AllLists() {
  return {&m_bodyWords, &m_subjectWords, &m_fromNameWords};
}

void MessageFeatures::Clear() {
  for (TokenCountMap* const map : AllMaps()) {
    map->Clear();
  }
  for (WordList* const list : AllLists()) {
    list->Clear();
  }
  m_limit.Reset();
  m_stats = TextStats();
  m_areComplete = true;
}

void MessageFeatures::Gather(const FeatureSources& sources) {
  try {
    sources.headers->Sort();
    CountHeaders(*sources.headers);
    CountParts(sources);
    CountSequences();
  } catch (...) {
    m_areComplete = false;
  }
}

void MessageFeatures::CountHeaders(const HeaderLog& headers) {
  headers.ForEach([this](std::string_view key, std::string_view value) {
    if (IsSubjectHeader(key)) {
      CountSubject(key, value);
    } else {
      CountSender(key, SenderLabel(key).value_or(std::string_view()), value);
    }
  });
}

void MessageFeatures::CountSubject(std::string_view key, std::string_view value) {
  CountWords(SpreadSubject(value), std::string(key) + "*", &m_subjectTokens, &m_subjectWords);
}

void MessageFeatures::CountSender(std::string_view key, std::string_view label,
                                  std::string_view value) {
  AddressMap addresses;
  ParseAddressList(value, &addresses);
  for (const auto& [address, displayName] : addresses) {
    CountAddress(label, address);
    CountWords(LowerText(displayName), std::string(key) + "name*", &m_fromNameTokens,
               &m_fromNameWords);
  }
}

void MessageFeatures::CountAddress(std::string_view label, std::string_view address) {
  if (const size_t colon = address.find(':'); colon != kNone) {
    address.remove_prefix(colon + 1);
  }
  const std::string prefix = std::string(label) + "*";
  m_tokens.Add(prefix, address, 1);
  if (const size_t at = address.find('@'); at != kNone) {
    const std::string_view local = address.substr(0, at);
    address.remove_prefix(at + 1);
    m_tokens.Add(prefix, local, 1);
    const std::string_view domain = GetRegisteredDomain(address);
    if (label != "reply-to" && EqualNoCase(domain.substr(0, domain.find('.')), kProviderLabel)) {
      m_tokens.Add(prefix, std::string(local).append("@").append(kProviderDomain), 1);
    }
  }
  if (!address.empty()) {
    // An address without an "@" counts twice, on purpose.
    m_tokens.Add(prefix, address, 1);
  }
  if (address.find('.') != kNone) {
    ForEachLabel(address, [&](std::string_view text) { m_tokens.Add(prefix, text, 1); });
  }
}

// Counts the words of a header's text, with a prefix among all tokens, and as they are in a map of
// their own.
void MessageFeatures::CountWords(std::string_view text, const std::string& prefix,
                                 TokenCountMap* ownTokens, WordList* ownWords) {
  m_localTokens.Clear();
  m_localWords.Clear();
  Tokenize(text, &m_localTokens, &m_localWords, &m_textUrls, &m_textAddresses);
  m_localTokens.ForEach([&](std::string_view word, int32_t count) {
    m_tokens.Add(prefix, word, count);
    ownTokens->Add(word, count);
  });
  m_bodyWords.Append(m_localWords);
  ownWords->Append(m_localWords);
}

// HTML parts come first. The text of a part ends at its first NUL.
void MessageFeatures::CountParts(const FeatureSources& sources) {
  bool first = true;
  for (const bool isHtml : {true, false}) {
    const std::vector<std::string>& parts = isHtml ? *sources.htmlParts : *sources.plainParts;
    for (size_t i = 0; i < parts.size(); ++i) {
      const bool hasHelper = isHtml && i < sources.htmlTexts->size();
      const std::optional<TextStats> found =
          TryCountPart(parts[i].c_str(), hasHelper ? &(*sources.htmlTexts)[i] : nullptr, isHtml);
      if (found) {
        AddToStats(*found, &m_stats);
        m_stats.firstPartNewTokens = first ? found->firstPartNewTokens : m_stats.firstPartNewTokens;
      }
      first = false;
    }
  }
  for (const std::string& text : *sources.pdfTexts) {
    CountText(text);
  }
}

// A failure costs the part's stats and the rest of its features, but the limit ends all gathering.
std::optional<TextStats> MessageFeatures::TryCountPart(std::string_view text,
                                                       const HelperText* helper, bool isHtml) {
  try {
    return CountPart(text, helper, isHtml);
  } catch (const FeatureLimit::Reached&) {
    throw;
  } catch (...) {
    return std::nullopt;
  }
}

std::optional<TextStats> MessageFeatures::CountPart(std::string_view text, const HelperText* helper,
                                                    bool isHtml) {
  const size_t tokensBefore = m_tokens.Size();
  TextStats found;
  if (isHtml) {
    HtmlStats html;
    ScanHtml(text, &m_tokens, &m_bodyWords, &m_htmlUrls, &m_htmlAddresses, &html);
    found.exeLinkCount = html.exeLinkCount;
    found.mismatchedLinkCount = html.mismatchedLinkCount;
  }
  if (helper != nullptr && helper->failed) {
    return std::nullopt;
  }
  if (helper != nullptr) {
    found.helperCountA = helper->countA;
    found.helperCountB = helper->countB;
  }
  if (!isHtml || helper != nullptr) {
    const std::string_view plain = isHtml ? std::string_view(helper->text) : text;
    CountText(plain);
    found.maxSpecialDensity = MaxSpecialDensity(plain);
  }
  found.rndMacroCount = HoldsRndMacro(text) ? 1 : 0;
  found.firstPartNewTokens = static_cast<int32_t>(m_tokens.Size() - tokensBefore);
  return found;
}

void MessageFeatures::CountText(std::string_view text) {
  Tokenize(text, &m_tokens, &m_bodyWords, &m_textUrls, &m_textAddresses);
}

// From here on a word counts once, however often it came. Sequences come after, and keep their
// weights.
void MessageFeatures::CountSequences() {
  m_tokens.CapCounts();
  m_subjectTokens.CapCounts();
  m_fromNameTokens.CapCounts();
  AddWordSequences(&m_tokens, m_bodyWords);
  m_subjectTokens.AddWordSequences(m_subjectWords);
  m_tokens.AddWordSequences(m_subjectWords, "subject*");
  m_fromNameTokens.AddWordSequences(m_fromNameWords);
  m_tokens.AddWordSequences(m_fromNameWords, "fromname*");
}

}  // namespace postmarker
