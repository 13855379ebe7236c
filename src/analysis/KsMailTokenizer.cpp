#include "analysis/KsMailTokenizer.h"

#include <typeinfo>
#include <utility>

#include "analysis/FeatureHeaders.h"
#include "analysis/TextTokens.h"

namespace postmarker {
// The hash buffer stays as it is: nothing reads it beyond what was stored.
KsMailTokenizer::KsMailTokenizer() {
  for (TokenCountMap* const map : AllMaps()) {
    map->SetLimit(&m_limit);
  }
  for (WordList* const list : AllLists()) {
    list->SetLimit(&m_limit);
  }
}

KsMailTokenizer::~KsMailTokenizer() = default;

void KsMailTokenizer::Clear() {
  KsMailHeaderParser::Clear();
  for (TokenCountMap* const map : AllMaps()) {
    map->Clear();
  }
  for (WordList* const list : AllLists()) {
    list->Clear();
  }
  m_limit.Reset();
  m_fingerprints.clear();
  m_fingerprintTypes.Clear();
  m_stats = TextStats();
  m_headerSources.Clear();
  ForgetHelperTexts();
  m_featuresPending = false;
  m_hasAllFeatures = true;
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
    AskHelpers();
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
    if (IsSubjectHeader(key) || SenderLabel(key)) {
      m_headerSources.Add(key, value);
    }
  });
}

}  // namespace postmarker
