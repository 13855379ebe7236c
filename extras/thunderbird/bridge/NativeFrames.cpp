#include "NativeFrames.h"

#include <cstdint>

namespace postmarker::bridge {
namespace {

constexpr size_t kLengthBytes = 4;

// REQUIRES: bytes.size() >= kLengthBytes.
size_t ReadLength(std::string_view bytes) {
  uint32_t length = 0;
  for (size_t i = kLengthBytes; i-- > 0;) {
    length = (length << 8) | static_cast<unsigned char>(bytes[i]);
  }
  return length;
}

}  // namespace

std::string MakeFrame(std::string_view message) {
  if (message.empty() || message.size() > kMaxSentBytes) {
    return {};
  }
  std::string frame;
  frame.reserve(kLengthBytes + message.size());
  for (size_t i = 0; i < kLengthBytes; ++i) {
    frame.push_back(static_cast<char>((message.size() >> (8 * i)) & 0xFF));
  }
  return frame.append(message);
}

bool FrameReader::Append(std::string_view bytes) {
  if (!m_isBroken) {
    m_bytes.erase(0, m_read);
    m_read = 0;
    m_bytes.append(bytes);
    CheckLength();
  }
  return !m_isBroken;
}

std::optional<std::string> FrameReader::Next() {
  const std::string_view rest = std::string_view(m_bytes).substr(m_read);
  if (rest.size() < kLengthBytes) {
    return std::nullopt;
  }
  const size_t length = ReadLength(rest);
  if (rest.size() - kLengthBytes < length) {
    return std::nullopt;
  }
  m_read += kLengthBytes + length;
  std::string message(rest.substr(kLengthBytes, length));
  CheckLength();
  return message;
}

// A wrong length is seen as soon as it is there, not when so many bytes have come. Nothing is kept
// after it.
void FrameReader::CheckLength() {
  const std::string_view rest = std::string_view(m_bytes).substr(m_read);
  if (rest.size() < kLengthBytes) {
    return;
  }
  const size_t length = ReadLength(rest);
  if (length == 0 || length > kMaxReceivedBytes) {
    m_isBroken = true;
    m_bytes = {};
    m_read = 0;
  }
}

}  // namespace postmarker::bridge
