#include "analysis/features/KsMailTokenizer.h"

#include <algorithm>
#include <utility>

#include "analysis/features/FeatureHeaders.h"
#include "analysis/words/TextTokens.h"
#include "support/UniqueHandle.h"

namespace postmarker {
// The hash buffer stays as it is: nothing reads it beyond what was stored.
KsMailTokenizer::KsMailTokenizer() = default;

KsMailTokenizer::~KsMailTokenizer() = default;

void KsMailTokenizer::Clear() {
  KsMailHeaderParser::Clear();
  m_features.Clear();
  m_fingerprints.clear();
  m_fingerprintTypes.Clear();
  m_headerSources.Clear();
  m_htmlTexts.clear();
  m_pdfTexts.clear();
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
    AskHelpers();
    Features();
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
  return false;
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

// Counts at once what needs no tokens, and puts aside the headers that give some.
void KsMailTokenizer::NoteHeaders(const HeaderMap& headers) {
  m_headerSources.BeginGroup();
  headers.ForEach([this](std::string_view key, std::string_view value) {
    if (HoldsRndMacro(value)) {
      m_features.CountRndMacro();
    }
    if (IsSubjectHeader(key) || SenderLabel(key)) {
      m_headerSources.Add(key, value);
    }
  });
}

const MessageFeatures& KsMailTokenizer::Features() {
  if (!std::exchange(m_featuresPending, false)) {
    return m_features;
  }
  m_features.Gather({&m_headerSources, &HtmlParts(), &PlainParts(), &m_htmlTexts, &m_pdfTexts});
  m_headerSources.Clear();
  m_htmlTexts.clear();
  m_pdfTexts.clear();
  return m_features;
}

// Helpers live for one parse, so what they make of the parts is kept until it is counted.
void KsMailTokenizer::AskHelpers() {
  try {
    if (m_htmlToText != nullptr) {
      AskHtmlHelper();
    }
    AskPdfHelper();
  } catch (...) {
    // What the helpers gave so far is counted.
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

}  // namespace postmarker
