#include "analysis/KsMailTokenizer.h"

#include <algorithm>
#include <optional>
#include <typeinfo>
#include <utility>

#include "analysis/AddressList.h"
#include "analysis/Bytes.h"
#include "analysis/DomainTable.h"
#include "analysis/HtmlTokens.h"
#include "analysis/TextTokens.h"
#include "support/UniqueHandle.h"

namespace postmarker {
namespace {

constexpr size_t kNone = std::string_view::npos;

// A large free mail provider with a domain in many countries. Its senders' addresses are also
// counted under the main domain.
constexpr std::string_view kProviderLabel = "yahoo";
constexpr std::string_view kProviderDomain = "yahoo.com";

// Headers that name a sender. Deliberate: what follows in the header's name does not matter.
constexpr std::array<std::string_view, 3> kSenderLabels = {"from", "reply-to", "return-path"};

bool IsSubject(std::string_view key) {
  return SameText(key, "subject");
}

std::optional<std::string_view> SenderLabel(std::string_view key) {
  const auto* const label =
      std::find_if(kSenderLabels.begin(), kSenderLabels.end(),
                   [&](std::string_view text) { return key.starts_with(text); });
  return label == kSenderLabels.end() ? std::nullopt : std::optional(*label);
}

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

// The hash buffer stays as it is: nothing reads it beyond what was stored.
KsMailTokenizer::KsMailTokenizer() {}  // NOLINT(modernize-use-equals-default)

KsMailTokenizer::~KsMailTokenizer() = default;

void KsMailTokenizer::Clear() {
  KsMailHeaderParser::Clear();
  m_tokens.Clear();
  m_subjectTokens.Clear();
  m_fromNameTokens.Clear();
  m_bodyWords.Clear();
  m_subjectWords.Clear();
  m_fromNameWords.Clear();
  m_htmlUrls.Clear();
  m_htmlAddresses.Clear();
  m_textUrls.Clear();
  m_textAddresses.Clear();
  m_fingerprints.clear();
  m_fingerprintTypes.Clear();
  m_stats = TextStats();
  m_headerSources.Clear();
  m_featuresPending = false;
}

ResultCode KsMailTokenizer::Parse(const wchar_t* path, HtmlToText htmlToText,
                                  PdfHelper* pdfHelper) {
  Clear();
  m_htmlToText = htmlToText;
  m_pdfHelper = pdfHelper;
  const ResultCode result = ParseFile(path);
  m_htmlToText = nullptr;
  m_pdfHelper = nullptr;
  return result;
}

ResultCode KsMailTokenizer::Parse(const char* data, uint32_t size, HtmlToText htmlToText,
                                  PdfHelper* pdfHelper) {
  Clear();
  m_htmlToText = htmlToText;
  m_pdfHelper = pdfHelper;
  const ResultCode result = ParseBuffer(data, size);
  m_htmlToText = nullptr;
  m_pdfHelper = nullptr;
  return result;
}

ResultCode KsMailTokenizer::OnParseBegin() {
  KsMailHeaderParser::OnParseBegin();
  return kOk;
}

ResultCode KsMailTokenizer::OnParseEnd() {
  KsMailHeaderParser::OnParseEnd();
  m_featuresPending = true;
  if (m_htmlToText != nullptr || m_pdfHelper != nullptr) {
    CollectFeatures();
  }
  return kOk;
}

void KsMailTokenizer::SelectHeaders(HeaderMap* wanted, int level) {
  KsMailHeaderParser::SelectHeaders(wanted, level);
}

ResultCode KsMailTokenizer::OnHeaders(HeaderMap* headers, int level, bool afterChildren) {
  const ResultCode result = KsMailHeaderParser::OnHeaders(headers, level, afterChildren);
  if (headers != nullptr && !afterChildren) {
    NoteHeaders(*headers);
  }
  return result;
}

bool KsMailTokenizer::WantsBody() {
  return true;
}

bool KsMailTokenizer::WantsSingleBytes() const {
  return typeid(*this) != typeid(KsMailTokenizer);
}

void KsMailTokenizer::OnBodyBegin(int level) {
  KsMailHeaderParser::OnBodyBegin(level);
  m_hashBufferUsed = 0;
  m_bodyLength = 0;
  m_digestOpen = !IsMultipart();
  if (m_digestOpen) {
    m_digest.Start();
  }
}

void KsMailTokenizer::OnBodyByte(uint8_t byte, bool inHeader, int level) {
  KsMailHeaderParser::OnBodyByte(byte, inHeader, level);
  if (inHeader || !m_digestOpen) {
    return;
  }
  if (m_hashBufferUsed == static_cast<int32_t>(kHashBufferFull)) {
    FlushHashBuffer();
  }
  m_hashBuffer[static_cast<size_t>(m_hashBufferUsed++)] = static_cast<char>(byte);
  ++m_bodyLength;
}

void KsMailTokenizer::OnBodyRun(std::string_view bytes, int level) {
  KsMailHeaderParser::OnBodyRun(bytes, level);
  if (m_digestOpen) {
    m_digest.Add(bytes);
    m_bodyLength += static_cast<int32_t>(bytes.size());
  }
}

void KsMailTokenizer::FlushHashBuffer() {
  m_digest.Add({m_hashBuffer.data(), static_cast<size_t>(m_hashBufferUsed)});
  m_hashBufferUsed = 0;
}

void KsMailTokenizer::OnBodyEnd(int level) {
  KsMailHeaderParser::OnBodyEnd(level);
  if (std::exchange(m_digestOpen, false)) {
    FlushHashBuffer();
    AddFingerprint();
  }
}

void KsMailTokenizer::OnBodyDone(int level) {
  KsMailHeaderParser::OnBodyDone(level);
  m_digestOpen = false;
}

// The type's text is kept once for all bodies in a row that have the same.
void KsMailTokenizer::AddFingerprint() {
  FingerprintRecord record = {};
  record.digest = m_digest.Finish();
  record.length = m_bodyLength;
  const std::string type = GetContentType();
  record.typeLength = static_cast<uint32_t>(type.size());
  if (!type.empty()) {
    const bool again =
        !m_fingerprints.empty() && Fingerprint(m_fingerprints.size() - 1).contentType == type;
    record.typeOffset = again ? m_fingerprints.back().typeOffset : m_fingerprintTypes.Add(type);
  }
  m_fingerprints.push_back(record);
}

PartFingerprint KsMailTokenizer::Fingerprint(size_t index) const {
  const FingerprintRecord& record = m_fingerprints[index];
  PartFingerprint fingerprint = {DigestText(record.digest), record.length, {}};
  if (record.typeLength > 0) {
    fingerprint.contentType.assign(m_fingerprintTypes.At(record.typeOffset), record.typeLength);
  }
  return fingerprint;
}

// Counts at once what needs no tokens, and puts aside what CollectHeaderTokens will read.
void KsMailTokenizer::NoteHeaders(const HeaderMap& headers) {
  m_headerSources.BeginGroup();
  headers.ForEach([this](std::string_view key, std::string_view value) {
    if (HoldsRndMacro(value)) {
      ++m_stats.rndMacroCount;
    }
    if (IsSubject(key) || SenderLabel(key)) {
      m_headerSources.Add(key, value);
    }
  });
}

void KsMailTokenizer::CollectFeatures() {
  if (!std::exchange(m_featuresPending, false)) {
    return;
  }
  // A message that is too much for the memory there is costs its features, and those gathered so
  // far stay.
  try {
    m_headerSources.ForEachGroup([this](const std::vector<HeaderLog::Item>& headers) {
      for (const auto& [key, value] : headers) {
        CollectHeaderTokens(key, value);
      }
    });
    AnalyzeParts();
  } catch (...) {
    m_localTokens.Clear();
  }
  m_headerSources.Clear();
}

void KsMailTokenizer::CollectHeaderTokens(std::string_view key, std::string_view value) {
  if (IsSubject(key)) {
    CollectSubjectTokens(key, value);
  } else if (const std::optional<std::string_view> label = SenderLabel(key)) {
    CollectSenderTokens(key, *label, value);
  }
}

void KsMailTokenizer::CollectSubjectTokens(std::string_view key, std::string_view value) {
  m_localTokens.Clear();
  m_localWords.Clear();
  Tokenize(SpreadSubject(value), &m_localTokens, &m_localWords, &m_textUrls, &m_textAddresses);
  const std::string prefix = std::string(key) + "*";
  m_localTokens.ForEach([&](std::string_view word, int32_t count) {
    m_tokens.Add(prefix, word, count);
    m_subjectTokens.Add(word, count);
  });
  m_bodyWords.Append(m_localWords);
  m_subjectWords.Append(m_localWords);
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
  m_localTokens.Clear();
  m_localWords.Clear();
  Tokenize(LowerText(displayName), &m_localTokens, &m_localWords, &m_textUrls, &m_textAddresses);
  const std::string prefix = std::string(key) + "name*";
  m_localTokens.ForEach([&](std::string_view word, int32_t count) {
    m_tokens.Add(prefix, word, count);
    m_fromNameTokens.Add(word, count);
  });
  m_bodyWords.Append(m_localWords);
  m_fromNameWords.Append(m_localWords);
}

void KsMailTokenizer::AnalyzeParts() {
  bool first = true;
  for (const bool isHtml : {true, false}) {
    for (const std::string& part : isHtml ? HtmlParts() : PlainParts()) {
      TextStats stats;
      ProcessTextPart(part, isHtml, &stats);
      AddToStats(stats, &m_stats);
      if (std::exchange(first, false)) {
        m_stats.firstPartNewTokens = stats.firstPartNewTokens;
      }
    }
  }
  ProcessPdfParts();
  // From here on a word counts once, however often it came. Sequences come behind, and keep their
  // weights.
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
void KsMailTokenizer::ProcessTextPart(const std::string& part, bool isHtml, TextStats* stats) {
  const std::string_view text = part.c_str();
  const size_t tokensBefore = m_tokens.Size();
  TextStats found;
  try {
    if (!isHtml) {
      TokenizeText(text);
      found.maxSpecialDensity = MaxSpecialDensity(text);
    } else {
      HtmlStats html;
      ScanHtml(text, &m_tokens, &m_bodyWords, &m_htmlUrls, &m_htmlAddresses, &html);
      found.exeLinkCount = html.exeLinkCount;
      found.mismatchedLinkCount = html.mismatchedLinkCount;
      if (m_htmlToText != nullptr) {
        std::string plain;
        const auto length = static_cast<int32_t>(text.size());
        m_htmlToText(text.data(), &length, &plain, &found.helperCountB, &found.helperCountA);
        TokenizeText(plain);
        found.maxSpecialDensity = MaxSpecialDensity(plain);
      }
    }
  } catch (...) {
    return;
  }
  found.rndMacroCount = HoldsRndMacro(text) ? 1 : 0;
  found.firstPartNewTokens = static_cast<int32_t>(m_tokens.Size() - tokensBefore);
  *stats = found;
}

void KsMailTokenizer::ProcessPdfParts() {
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
      TokenizeText({text, static_cast<size_t>(std::max(length, 0))});
    }
  }
}

}  // namespace postmarker
