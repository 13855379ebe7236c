#include "clients/storeapi/StoreMail.h"

#include <algorithm>
#include <optional>

#include "analysis/headers/AddressList.h"
#include "analysis/headers/KsMailHeaderParser.h"
#include "support/Text.h"

namespace postmarker::storeapi {
namespace {

constexpr std::string_view kEndOfHeaders = "\r\n\r\n";
constexpr std::string_view kSpamHeader = "x-zpam";
constexpr std::string_view kRecipientHeaders[] = {"to", "cc"};
constexpr std::string_view kIdentityHeaders[] = {"message-id", "date",         "from",
                                                 "to",         "content-type", "return-path"};

}  // namespace

bool ReadHeaders(std::string_view bytes, HeaderMap* headers) {
  const size_t end = bytes.find(kEndOfHeaders);
  if (end == std::string_view::npos) {
    return false;
  }
  KsMailHeaderParser parser;
  (void)parser.Parse(bytes.data(), static_cast<uint32_t>(end + kEndOfHeaders.size()));
  *headers = parser.GetHeaders();
  return true;
}

void AddRecipients(std::string_view bytes, AddressSet* addresses) {
  HeaderMap headers;
  if (!ReadHeaders(bytes, &headers)) {
    return;
  }
  for (const std::string_view name : kRecipientHeaders) {
    if (const std::optional<std::string_view> list = headers.Find(name)) {
      ForEachAddress(*list,
                     [addresses](std::string_view address) { addresses->insert(Widen(address)); });
    }
  }
}

bool HaveSameIdentity(const HeaderMap& a, const HeaderMap& b) {
  return std::all_of(std::begin(kIdentityHeaders), std::end(kIdentityHeaders),
                     [&](std::string_view name) {
                       const auto inA = a.Find(name);
                       const auto inB = b.Find(name);
                       return inA.has_value() == inB.has_value() &&
                              EqualNoCase(inA.value_or(""), inB.value_or(""));
                     });
}

std::string GetSpamHeader(const char* message, uint32_t size) {
  KsMailHeaderParser parser;
  (void)parser.Parse(message, size);
  return std::string(parser.GetHeaders().Get(kSpamHeader));
}

std::string WithoutSubjectMarks(std::string_view subject) {
  std::string clean;
  for (const char c : subject) {
    clean.push_back(c);
    if (clean.ends_with(kSubjectMark)) {
      clean.resize(clean.size() - kSubjectMark.size());
    }
  }
  return clean;
}

}  // namespace postmarker::storeapi
