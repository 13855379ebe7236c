#include "analysis/headers/KsMailHeaderParser.h"

namespace postmarker {

KsMailHeaderParser::~KsMailHeaderParser() = default;

void KsMailHeaderParser::Clear() {
  m_headers.Clear();
  m_hops = HopList();
}

ResultCode KsMailHeaderParser::Parse(const char* data, uint32_t size) {
  KsMailHeaderParser::Clear();
  return ParseBuffer(data, size);
}

ResultCode KsMailHeaderParser::Parse(const wchar_t* path) {
  KsMailHeaderParser::Clear();
  return ParseFile(path);
}

void KsMailHeaderParser::RemoveHeader(std::string_view key) {
  m_headers.Erase(key);
}

void KsMailHeaderParser::SetHeader(std::string_view key, std::string_view value) {
  m_headers.Set(key, value);
}

ResultCode KsMailHeaderParser::OnParseEnd() {
  ParseReceivedLines();
  return kOk;
}

ResultCode KsMailHeaderParser::OnHeaders(HeaderMap* headers, int level, bool afterChildren) {
  KsMailParser::OnHeaders(headers, level, afterChildren);
  if (headers == nullptr) {
    return kFail;
  }
  if (level == 0) {
    m_headers = *headers;
  }
  return kOk;
}

bool KsMailHeaderParser::WantsBody() {
  return false;
}

bool KsMailHeaderParser::WantsSingleBytes() const {
  return false;
}

void KsMailHeaderParser::ParseReceivedLines() {
  m_hops = HopList(m_headers);
}

}  // namespace postmarker
