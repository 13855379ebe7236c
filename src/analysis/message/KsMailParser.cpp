#include "analysis/message/KsMailParser.h"

#include <array>
#include <deque>
#include <utility>

#include "analysis/message/HeaderBlock.h"
#include "analysis/message/TextSearch.h"
#include "support/MappedFile.h"

namespace postmarker {
namespace {

constexpr size_t kMaxDelimiterBytes = 512;    // a longer line is no delimiter
constexpr size_t kMaxTextParts = 3;           // of a kind
constexpr size_t kMaxCaptureBytes = 0x1FFFF;  // bytes that are kept of one body
constexpr size_t kDecodedRun = 4096;

// The line that ends a body.
struct Delimiter {
  size_t start;       // the body's size where there is none
  size_t length = 0;  // 0 where there is none
  bool more = false;  // another part follows
};

// Finds the first line of at most 512 bytes that begins with "-" and holds the boundary; lines end
// at CR LF. What follows the last CR LF ends the body as well if it holds the boundary.
// Deliberate: anywhere in the line, since mailers write more or fewer dashes and blanks than they
// should.
Delimiter FindDelimiter(std::string_view body, std::string_view boundary) {
  TextSearch search(boundary);
  size_t start = 0;
  for (size_t lf = body.find('\n'); lf != std::string_view::npos; lf = body.find('\n', lf + 1)) {
    if (lf == 0 || body[lf - 1] != '\r') {
      continue;
    }
    const std::string_view line = body.substr(start, lf + 1 - start);
    if (line.front() == '-' && line.size() <= kMaxDelimiterBytes && search.FoundIn(line)) {
      return {start, line.size(), line.size() < 3 || line[line.size() - 3] != '-'};
    }
    start = lf + 1;
  }
  const std::string_view last = body.substr(start);
  if (last.size() > kMaxDelimiterBytes || !search.FoundIn(last)) {
    return {body.size()};
  }
  const bool dashes = last.size() >= 3 && last.substr(last.size() - 3).find('-') != last.npos;
  return {start, last.size(), !dashes};
}

}  // namespace

// A multipart whose parts are being read.
struct KsMailParser::Multipart {
  // The boundary of its parts, which stands in its content type. There may be very many open
  // multiparts, so it is not kept a second time.
  [[nodiscard]] std::string_view Boundary() const {
    return headers.Get("content-type").substr(boundaryOffset, boundaryLength);
  }

  HeaderMap headers;
  uint32_t boundaryOffset;
  uint32_t boundaryLength;
  int level;
};

KsMailParser::~KsMailParser() = default;

ResultCode KsMailParser::OnParseBegin() {
  return kOk;
}
ResultCode KsMailParser::OnParseEnd() {
  return kOk;
}
void KsMailParser::SelectHeaders(HeaderMap* /*wanted*/, int /*level*/) {}
ResultCode KsMailParser::OnHeaders(HeaderMap* /*headers*/, int /*level*/, bool /*afterChildren*/) {
  return kOk;
}
bool KsMailParser::WantsBody() {
  return true;
}

bool KsMailParser::WantsSingleBytes() const {
  return true;
}

ResultCode KsMailParser::ParseBuffer(const char* data, uint32_t size) {
  if (data == nullptr || size == 0) {
    return kFail;
  }
  Reset();
  m_data = data;
  m_size = size;
  ResultCode result = kFail;
  // No failure of a hook may reach the program whose process this runs in.
  try {
    result = OnParseBegin();
    if (Succeeded(result)) {
      ParseEntity(0, std::string());
    }
  } catch (...) {
    ForgetCapture();
  }
  m_data = nullptr;
  m_size = 0;
  m_position = 0;
  if (Succeeded(result)) {
    try {
      OnParseEnd();
    } catch (...) {
      ForgetCapture();
    }
  }
  return result;
}

ResultCode KsMailParser::ParseFile(const wchar_t* path) {
  const MappedFile file(path, 1);
  if (Failed(file.Status())) {
    return kFail;
  }
  return ParseBuffer(file.Bytes().data(), file.Size());
}

void KsMailParser::Reset() {
  m_data = nullptr;
  m_size = 0;
  m_position = 0;
  ForgetCapture();
  m_plainParts.clear();
  m_htmlParts.clear();
  m_pdfBlobs.clear();
  m_imageBlobs.clear();
  m_decoder.Reset();
  m_type = ContentType();
}

bool KsMailParser::ReadByte(uint8_t* byte) {
  if (m_position >= m_size) {
    *byte = 0;
    return false;
  }
  *byte = static_cast<uint8_t>(m_data[m_position++]);
  return true;
}

void KsMailParser::ParseHeaderBlock(int level, HeaderMap* headers) {
  const size_t length = ReadHeaderBlock({m_data + m_position, m_size - m_position}, headers);
  if (!WantsSingleBytes()) {
    m_position += static_cast<uint32_t>(length);
    return;
  }
  uint8_t byte = 0;
  for (size_t i = 0; i < length && ReadByte(&byte); ++i) {
    OnRawByte(byte, true, level);
  }
}

// Reads the header block and what a multipart has before its parts.
KsMailParser::Kind KsMailParser::OpenEntity(int level, HeaderMap* headers,
                                            std::string_view* inner) {
  SelectHeaders(headers, level);
  if (!headers->IsEmpty()) {
    headers->Set("content-type", {});
    headers->Set("content-transfer-encoding", {});
  }
  ParseHeaderBlock(level, headers);
  OnHeaders(headers, level, false);
  AnalyzeContentType(headers);
  if (!WantsBody()) {
    return Kind::kUnwanted;
  }
  const std::string_view contentType = headers->Get("content-type");
  if (FindParameter(contentType, "message")) {
    return Kind::kMessage;
  }
  if (!FindParameter(contentType, "multipart")) {
    return Kind::kSimple;
  }
  *inner = FindParameter(contentType, "boundary").value_or(contentType.substr(0, 0));
  ParseBody(level, std::string(*inner));
  return Kind::kMultipart;
}

bool KsMailParser::CloseEntity(int level, const std::string& boundary, HeaderMap* headers) {
  OnHeaders(headers, level, true);
  AnalyzeContentType(headers);
  return ParseBody(level, boundary);
}

bool KsMailParser::ParseEntity(int level, const std::string& boundary) {
  std::deque<Multipart> open;
  std::string boundaryHere = boundary;
  for (;;) {
    HeaderMap headers;
    std::string_view inner;
    const Kind kind = OpenEntity(level, &headers, &inner);
    if (kind == Kind::kMessage) {
      // Its header block simply follows, and the same boundary ends it.
      ++level;
      continue;
    }
    if (kind == Kind::kMultipart) {
      boundaryHere = inner;
      const auto offset = inner.data() - headers.Get("content-type").data();
      headers.Shrink();
      open.push_back({std::move(headers), static_cast<uint32_t>(offset),
                      static_cast<uint32_t>(inner.size()), level});
      ++level;
      continue;
    }
    bool more = kind == Kind::kSimple && CloseEntity(level, boundaryHere, &headers);
    while (!more && !open.empty()) {
      Multipart multipart = std::move(open.back());
      open.pop_back();
      level = multipart.level;
      boundaryHere = open.empty() ? std::string_view(boundary) : open.back().Boundary();
      more = CloseEntity(level, boundaryHere, &multipart.headers);
    }
    if (open.empty()) {
      return more;
    }
    level = open.back().level + 1;
  }
}

bool KsMailParser::ParseBody(int level, const std::string& boundary) {
  OnBodyBegin(level);
  const std::string_view body(m_data + m_position, m_size - m_position);
  const Delimiter end = boundary.empty() ? Delimiter{body.size()} : FindDelimiter(body, boundary);
  m_position += static_cast<uint32_t>(end.start + end.length);
  SendBody(body.substr(0, end.start), level);
  if (end.length > 0) {
    OnBodyEnd(level);
    SendBody(body.substr(end.start, end.length), level);
  } else if (boundary.empty()) {
    OnBodyEnd(level);
  }
  OnBodyDone(level);
  return end.more;
}

void KsMailParser::SendBody(std::string_view bytes, int level) {
  if (WantsSingleBytes()) {
    for (const char c : bytes) {
      OnRawByte(static_cast<uint8_t>(c), false, level);
    }
    return;
  }
  const bool quotedPrintable = IsQuotedPrintable();
  const bool base64 = IsBase64();
  if (!quotedPrintable && !base64) {
    if (!bytes.empty()) {
      OnBodyRun(bytes, level);
    }
    return;
  }
  std::array<char, kDecodedRun> buffer;
  while (!bytes.empty()) {
    std::string_view run = bytes.substr(0, buffer.size());
    bytes.remove_prefix(run.size());
    if (quotedPrintable) {
      run = {buffer.data(), m_decoder.DecodeQuotedPrintableRun(run, buffer.data())};
    }
    if (base64) {
      run = {buffer.data(), m_decoder.DecodeBase64Run(run, buffer.data())};
    }
    if (!run.empty()) {
      OnBodyRun(run, level);
    }
  }
}

void KsMailParser::OnRawByte(uint8_t byte, bool inHeader, int level) {
  if (IsQuotedPrintable() && !m_decoder.DecodeQuotedPrintable(&byte)) {
    return;
  }
  if (IsBase64() && !m_decoder.DecodeBase64(&byte)) {
    return;
  }
  OnBodyByte(byte, inHeader, level);
}

void KsMailParser::OnBodyByte(uint8_t byte, bool /*inHeader*/, int /*level*/) {
  const char c = static_cast<char>(byte);
  CaptureBytes({&c, 1});
}

void KsMailParser::OnBodyRun(std::string_view bytes, int /*level*/) {
  CaptureBytes(bytes);
}

void KsMailParser::CaptureBytes(std::string_view bytes) {
  if (m_capturing == Capture::kNothing || m_captureFull) {
    return;
  }
  const std::string_view fitting = bytes.substr(0, kMaxCaptureBytes - m_captureBuffer->size());
  m_captureFull = fitting.size() < bytes.size();
  if (m_captureFull && m_capturing == Capture::kBlob) {
    m_blob = std::string();
  } else {
    m_captureBuffer->append(fitting);
  }
}

void KsMailParser::BeginTextCapture(std::vector<std::string>* parts) {
  if (parts->size() < kMaxTextParts) {
    m_captureBuffer = &parts->emplace_back();
    m_capturing = Capture::kText;
  }
}

void KsMailParser::OnBodyBegin(int /*level*/) {
  ForgetCapture();
  m_decoder.Reset();
  if (IsText()) {
    BeginTextCapture(IsHtml() ? &m_htmlParts : &m_plainParts);
  } else if (IsPdf() || IsImage()) {
    m_captureBuffer = &m_blob;
    m_capturing = Capture::kBlob;
  }
}

void KsMailParser::OnBodyEnd(int /*level*/) {
  if (m_capturing == Capture::kBlob && !m_captureFull) {
    m_blob.shrink_to_fit();
    (IsPdf() ? m_pdfBlobs : m_imageBlobs).push_back(std::move(m_blob));
  }
  ForgetCapture();
}

void KsMailParser::OnBodyDone(int /*level*/) {
  ForgetCapture();
}

void KsMailParser::ForgetCapture() {
  m_capturing = Capture::kNothing;
  m_captureBuffer = nullptr;
  m_captureFull = false;
  m_blob = std::string();
}

}  // namespace postmarker
