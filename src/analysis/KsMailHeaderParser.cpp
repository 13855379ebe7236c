#include "analysis/KsMailHeaderParser.h"

#include <typeinfo>
#include <utility>

#include "analysis/Bytes.h"

namespace postmarker {

KsMailHeaderParser::~KsMailHeaderParser() = default;

void KsMailHeaderParser::Clear() {
  m_headers.Clear();
  m_hops.clear();
  m_hopsPending = false;
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
  EnsureHops();
  m_headers.Erase(key);
}

void KsMailHeaderParser::SetHeader(std::string_view key, std::string_view value) {
  EnsureHops();
  m_headers.Set(key, value);
}

const std::vector<ReceivedHop>& KsMailHeaderParser::GetHops() {
  EnsureHops();
  return m_hops;
}

ResultCode KsMailHeaderParser::OnParseEnd() {
  m_hopsPending = true;
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
  return typeid(*this) != typeid(KsMailHeaderParser);
}

void KsMailHeaderParser::EnsureHops() {
  if (!std::exchange(m_hopsPending, false)) {
    return;
  }
  try {
    ParseReceivedLines();
  } catch (...) {
    // Hops that were found stay.
    m_hopsPending = false;
  }
}

void KsMailHeaderParser::ParseReceivedLines() {
  std::string key = "received-comment";
  for (int number = 0;;) {
    const auto value = m_headers.Find(key);
    if (!value) {
      return;
    }
    ReceivedHop hop;
    ParseReceivedLine(LowerText(*value), &hop.first, &hop.second);
    if (!hop.first.name.empty() || !hop.second.name.empty()) {
      m_hops.push_back(std::move(hop));
    }
    ++number;
    key = "received-" + std::to_string(number) + "-comment";
  }
}

}  // namespace postmarker
