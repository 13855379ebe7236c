// Reads the top-level headers of a message and the hops that they tell of.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "analysis/headers/HopList.h"
#include "analysis/message/KsMailParser.h"

namespace postmarker {

// Stops after the top-level header block. One message at a time, one thread per object; results
// stay until the next Parse. All text is bytes.
class KsMailHeaderParser : public KsMailParser {
 public:
  KsMailHeaderParser() = default;
  ~KsMailHeaderParser() override;

  // Empties the headers and hops.
  void Clear();

  // Reads a message, or the message in a file (UTF-16 path). 0, or 0x80004005 for no bytes or an
  // unreadable file; then nothing is there.
  ResultCode Parse(const char* data, uint32_t size);
  ResultCode Parse(const wchar_t* path);

  // A copy, which shares its bytes and costs nothing.
  [[nodiscard]] HeaderMap GetHeaders() const { return m_headers; }

  // Removes a header if it is there. Hops are not touched.
  void RemoveHeader(std::string_view key);
  void SetHeader(std::string_view key, std::string_view value);

  // The value of "subject", or an empty text.
  [[nodiscard]] std::string GetSubject() const { return std::string(m_headers.Get("subject")); }

  // The hops in the order of the "Received:" lines, the last hop in time first.
  [[nodiscard]] const HopList& GetHops() const { return m_hops; }

 protected:
  ResultCode OnParseEnd() override;
  ResultCode OnHeaders(HeaderMap* headers, int level, bool afterChildren) override;
  bool WantsBody() override;
  // False. A class that derives from this one and overrides OnRawByte or OnBodyByte says true.
  [[nodiscard]] bool WantsSingleBytes() const override;

  // Makes the list of the hops that the headers tell of.
  void ParseReceivedLines();

 private:
  HeaderMap m_headers;
  HopList m_hops;
};

}  // namespace postmarker
