// KsMailTokenizer: what is counted in headers and parts.
#include <algorithm>
#include <optional>
#include <utility>

#include "analysis/AddressList.h"
#include "analysis/Bytes.h"
#include "analysis/DomainTable.h"
#include "analysis/FeatureHeaders.h"
#include "analysis/HtmlTokens.h"
#include "analysis/KsMailTokenizer.h"
#include "analysis/TextTokens.h"
#include "support/UniqueHandle.h"

namespace postmarker {
namespace {

constexpr size_t kNone = std::string_view::npos;

// A large free mail provider with a domain in many countries. Its senders' addresses are also
// counted under the main domain.
constexpr std::string_view kProviderLabel = "yahoo";
constexpr std::string_view kProviderDomain = "yahoo.com";

// The subject without its bracketed stretches, a blank in front of each capital, and then all in
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

std::array<TokenCountMap*, 7> KsMailTokenizer::AllMaps() {
  return {&m_tokens,        &m_subjectTokens, &m_fromNameTokens, &m_htmlUrls,
          &m_htmlAddresses, &m_textUrls,      &m_textAddresses};
}

std::array<WordList*, 3> KsMailTokenizer::AllLists() {
  return {&m_bodyWords, &m_subjectWords, &m_fromNameWords};
}

void KsMailTokenizer::CollectFeatures() {
  if (!std::exchange(m_featuresPending, false)) {
    return;
  }
  // A message that is too much costs the rest of its features. Those gathered so far stay.
  try {
    m_headerSources.Sort();
    CountHeaders();
    CountParts();
    CountSequences();
  } catch (...) {
    m_localTokens.Clear();
    m_hasAllFeatures = false;
  }
  m_headerSources.Clear();
  ForgetHelperTexts();
}

// Helpers live for one parse, so what they make of the parts is kept until it is counted.
void KsMailTokenizer::AskHelpers() {
  try {
    if (m_htmlToText != nullptr) {
      AskHtmlHelper();
    }
    AskPdfHelper();
  } catch (...) {
    m_pdfFailed = true;
  }
}

void KsMailTokenizer::AskHtmlHelper() {
  for (const std::string& part : HtmlParts()) {
    HelperText& helped = m_htmlTexts.emplace_back();
    const std::string_view html = part.c_str();
    const auto length = static_cast<int32_t>(html.size());
    try {
      m_htmlToText(html.data(), &length, &helped.text, &helped.countB, &helped.countA);
    } catch (...) {
      helped.failed = true;
    }
  }
}

void KsMailTokenizer::AskPdfHelper() {
  if (m_pdfHelper == nullptr || m_pdfHelper->extract == nullptr ||
      m_pdfHelper->release == nullptr || PdfBlobs().empty()) {
    return;
  }
  const std::lock_guard<std::mutex> lock(m_pdfHelper->lock);
  for (const std::string& pdf : PdfBlobs()) {
    int32_t length = 0;
    const char* const text =
        m_pdfHelper->extract(pdf.data(), static_cast<uint32_t>(pdf.size()), &length);
    if (text != nullptr) {
      const ScopeExit release([&] { m_pdfHelper->release(text); });
      m_pdfTexts.emplace_back(text, static_cast<size_t>(std::max(length, 0)));
    }
  }
}

void KsMailTokenizer::ForgetHelperTexts() {
  m_htmlTexts.clear();
  m_pdfTexts.clear();
  m_pdfFailed = false;
}

void KsMailTokenizer::CountHeaders() {
  m_headerSources.ForEach([&](std::string_view key, std::string_view value) {
    if (IsSubjectHeader(key)) {
      CollectSubjectTokens(key, value);
    } else {
      CollectSenderTokens(key, SenderLabel(key).value_or(std::string_view()), value);
    }
  });
}

void KsMailTokenizer::CollectSubjectTokens(std::string_view key, std::string_view value) {
  CollectWords(SpreadSubject(value), std::string(key) + "*", &m_subjectTokens, &m_subjectWords);
}

// Counts the words of a header's text, with a prefix among all tokens, and as they are in a map of
// their own.
void KsMailTokenizer::CollectWords(std::string_view text, const std::string& prefix,
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

void KsMailTokenizer::CollectSenderTokens(std::string_view key, std::string_view label,
                                          std::string_view value) {
  AddressMap addresses;
  ParseAddressList(value, &addresses);
  for (const auto& [address, displayName] : addresses) {
    CollectAddressTokens(label, address);
    CollectNameTokens(key, displayName);
  }
}

void KsMailTokenizer::CollectAddressTokens(std::string_view label, std::string_view address) {
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
    if (label != "reply-to" && SameText(domain.substr(0, domain.find('.')), kProviderLabel)) {
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

void KsMailTokenizer::CollectNameTokens(std::string_view key, std::string_view displayName) {
  CollectWords(LowerText(displayName), std::string(key) + "name*", &m_fromNameTokens,
               &m_fromNameWords);
}

// HTML parts come first.
void KsMailTokenizer::CountParts() {
  bool first = true;
  for (const bool isHtml : {true, false}) {
    const std::vector<std::string>& parts = isHtml ? HtmlParts() : PlainParts();
    for (size_t i = 0; i < parts.size(); ++i) {
      const HelperText* const helper = isHtml && i < m_htmlTexts.size() ? &m_htmlTexts[i] : nullptr;
      TextStats found;
      ProcessTextPart(parts[i], helper, isHtml, &found);
      AddToStats(found, &m_stats);
      m_stats.firstPartNewTokens = first ? found.firstPartNewTokens : m_stats.firstPartNewTokens;
      first = false;
    }
  }
  for (const std::string& text : m_pdfTexts) {
    TokenizeText(text);
  }
}

// From here on a word counts once, however often it came. Sequences come behind, and keep their
// weights.
void KsMailTokenizer::CountSequences() {
  m_tokens.CapCounts();
  m_subjectTokens.CapCounts();
  m_fromNameTokens.CapCounts();
  AddWordSequences(&m_tokens, m_bodyWords);
  m_subjectTokens.AddWordSequences(m_subjectWords);
  m_tokens.AddWordSequences(m_subjectWords, "subject*");
  m_fromNameTokens.AddWordSequences(m_fromNameWords);
  m_tokens.AddWordSequences(m_fromNameWords, "fromname*");
}

void KsMailTokenizer::TokenizeText(std::string_view text) {
  Tokenize(text, &m_tokens, &m_bodyWords, &m_textUrls, &m_textAddresses);
}

// The text of a part ends at its first NUL. A failure leaves *stats as it was.
void KsMailTokenizer::ProcessTextPart(const std::string& part, const HelperText* helper,
                                      bool isHtml, TextStats* stats) {
  const std::string_view text = part.c_str();
  const size_t tokensBefore = m_tokens.Size();
  TextStats found;
  try {
    if (isHtml) {
      HtmlStats html;
      ScanHtml(text, &m_tokens, &m_bodyWords, &m_htmlUrls, &m_htmlAddresses, &html);
      found.exeLinkCount = html.exeLinkCount;
      found.mismatchedLinkCount = html.mismatchedLinkCount;
    }
    if (helper != nullptr && helper->failed) {
      return;
    }
    if (helper != nullptr) {
      found.helperCountA = helper->countA;
      found.helperCountB = helper->countB;
    }
    if (!isHtml || helper != nullptr) {
      const std::string_view plain = isHtml ? std::string_view(helper->text) : text;
      TokenizeText(plain);
      found.maxSpecialDensity = MaxSpecialDensity(plain);
    }
  } catch (const FeatureLimit::Reached&) {
    throw;
  } catch (...) {
    return;
  }
  found.rndMacroCount = HoldsRndMacro(text) ? 1 : 0;
  found.firstPartNewTokens = static_cast<int32_t>(m_tokens.Size() - tokensBefore);
  *stats = found;
}

}  // namespace postmarker
