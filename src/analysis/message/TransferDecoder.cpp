#include "analysis/message/TransferDecoder.h"

#include <algorithm>
#include <cstring>

#include "analysis/message/Decoders.h"

namespace postmarker {

bool TransferDecoder::DecodeQuotedPrintable(uint8_t* byte) {
  if (*byte == '=') {
    m_qpState = 1;
    return false;
  }
  if (m_qpState == 0) {
    return true;
  }
  ++m_qpState;
  if (m_qpState == 2) {
    m_qpHigh = *byte;
    return false;
  }
  m_qpLow = *byte;
  m_qpState = 0;
  // A soft line break, a pair of digits, or nothing that counts.
  const bool softBreak = m_qpHigh == '\r' && m_qpLow == '\n';
  return !softBreak && HexPairToByte(static_cast<char>(m_qpHigh), static_cast<char>(m_qpLow), byte);
}

bool TransferDecoder::DecodeBase64(uint8_t* byte) {
  if (m_base64Done) {
    return false;
  }
  if (*byte == '=') {
    m_base64Done = true;
    return false;
  }
  const int bits = Base64Bits(static_cast<char>(*byte));
  if (bits < 0) {
    return false;
  }
  m_base64Bits = m_base64Bits << 6 | static_cast<uint32_t>(bits);
  m_base64Count += 6;
  if (m_base64Count < 8) {
    return false;
  }
  m_base64Count -= 8;
  *byte = static_cast<uint8_t>(m_base64Bits >> m_base64Count);
  return true;
}

size_t TransferDecoder::DecodeQuotedPrintableRun(std::string_view in, char* out) {
  size_t written = 0;
  while (!in.empty()) {
    if (m_qpState == 0) {
      const size_t plain = std::min(in.find('='), in.size());
      std::memmove(out + written, in.data(), plain);
      written += plain;
      in.remove_prefix(plain);
      if (in.empty()) {
        break;
      }
    }
    auto byte = static_cast<uint8_t>(in.front());
    in.remove_prefix(1);
    if (DecodeQuotedPrintable(&byte)) {
      out[written++] = static_cast<char>(byte);
    }
  }
  return written;
}

size_t TransferDecoder::DecodeBase64Run(std::string_view in, char* out) {
  size_t written = 0;
  size_t i = 0;
  while (i < in.size() && !m_base64Done) {
    // Whole groups of four, where nothing is held: most of every body.
    if (m_base64Count == 0 && i + 4 <= in.size()) {
      const int a = Base64Bits(in[i]);
      const int b = Base64Bits(in[i + 1]);
      const int c = Base64Bits(in[i + 2]);
      const int d = Base64Bits(in[i + 3]);
      if ((a | b | c | d) >= 0) {
        const int group = a << 18 | b << 12 | c << 6 | d;
        out[written] = static_cast<char>(group >> 16);
        out[written + 1] = static_cast<char>(group >> 8);
        out[written + 2] = static_cast<char>(group);
        written += 3;
        i += 4;
        continue;
      }
    }
    auto byte = static_cast<uint8_t>(in[i++]);
    if (DecodeBase64(&byte)) {
      out[written++] = static_cast<char>(byte);
    }
  }
  return written;
}

}  // namespace postmarker
