#include "ese/Compression.h"

#include <algorithm>
#include <cstdint>

#include "ese/ByteAccess.h"

namespace postmarker::ese {
namespace {

// The kind stands in the top bits of the first byte.
constexpr uint32_t kKindShift = 3;
constexpr uint32_t kPackedBytes = 1;
constexpr uint32_t kPackedUtf16 = 2;
constexpr uint32_t kLz77 = 3;
constexpr uint32_t kPackedWidth = 7;

// `bytesPerValue` is 2 where each value is a UTF-16 unit.
std::optional<std::string> Unpack(std::string_view bytes, size_t bytesPerValue) {
  if (bytes.size() < 2) {
    return std::nullopt;
  }
  const size_t bitsInLast = (ByteAt(bytes, 0) & 7U) + 1;
  const size_t count = ((bytes.size() - 2) * 8 + bitsInLast) / kPackedWidth;
  std::string value(count * bytesPerValue, '\0');
  uint32_t bits = 0;
  uint32_t held = 0;
  size_t place = 1;
  for (size_t i = 0; i < count; ++i) {
    if (held < kPackedWidth) {
      bits |= static_cast<uint32_t>(ByteAt(bytes, place++)) << held;
      held += 8;
    }
    value[i * bytesPerValue] = static_cast<char>(bits & 0x7FU);
    bits >>= kPackedWidth;
    held -= kPackedWidth;
  }
  return value;
}

// Plain LZ77: words of 32 flags, each flag a byte to copy or a match with what was written so far.
class Lz77Reader {
 public:
  explicit Lz77Reader(std::string_view bytes) : m_bytes(bytes) {}

  std::optional<std::string> Read(size_t size) {
    std::string value;
    value.reserve(size);
    uint32_t flags = 0;
    for (uint32_t flagsLeft = 0; value.size() < size; --flagsLeft, flags <<= 1U) {
      if (flagsLeft == 0) {
        const auto word = Next<uint32_t>();
        if (!word) {
          return std::nullopt;
        }
        flags = *word;
        flagsLeft = 32;
      }
      const bool isMatch = (flags & 0x80000000U) != 0;
      if (isMatch ? !CopyMatch(size, &value) : !CopyByte(&value)) {
        return std::nullopt;
      }
    }
    return value;
  }

 private:
  template <class Number>
  std::optional<Number> Next() {
    const auto number = TryLoadAt<Number>(m_bytes, m_place);
    m_place += sizeof(Number);
    return number;
  }

  bool CopyByte(std::string* value) {
    const auto byte = Next<uint8_t>();
    if (byte) {
      value->push_back(static_cast<char>(*byte));
    }
    return byte.has_value();
  }

  bool CopyMatch(size_t size, std::string* value) {
    const auto match = Next<uint16_t>();
    if (!match) {
      return false;
    }
    const size_t distance = (*match >> 3U) + 1U;
    const std::optional<size_t> length = ReadLength(*match & 7U);
    if (!length || distance > value->size() || *length > size - value->size()) {
      return false;
    }
    // Byte by byte: the match may reach into what it writes.
    for (size_t i = 0; i < *length; ++i) {
      value->push_back((*value)[value->size() - distance]);
    }
    return true;
  }

  // A length that does not fit into the match goes on in half a byte, whose other half serves the
  // next such match, then in a byte, then in the whole number.
  std::optional<size_t> ReadLength(uint32_t inMatch) {
    constexpr size_t kMinMatchBytes = 3;
    if (inMatch < 7) {
      return inMatch + kMinMatchBytes;
    }
    uint32_t half = 0;
    if (m_halfPlace != 0) {
      half = ByteAt(m_bytes, m_halfPlace) >> 4U;
      m_halfPlace = 0;
    } else {
      const auto byte = Next<uint8_t>();
      if (!byte) {
        return std::nullopt;
      }
      m_halfPlace = m_place - 1;
      half = *byte & 15U;
    }
    if (half < 15) {
      return inMatch + half + kMinMatchBytes;
    }
    const auto byte = Next<uint8_t>();
    if (!byte || *byte < 255) {
      return byte ? std::optional<size_t>(inMatch + half + *byte + kMinMatchBytes) : std::nullopt;
    }
    size_t whole = 0;
    if (const auto word = Next<uint16_t>(); word && *word != 0) {
      whole = *word;
    } else if (const auto longWord = word ? Next<uint32_t>() : std::nullopt) {
      whole = *longWord;
    }
    return whole == 0 ? std::nullopt : std::optional<size_t>(whole + kMinMatchBytes);
  }

  std::string_view m_bytes;
  size_t m_place = 0;
  size_t m_halfPlace = 0;  // of the byte whose upper half is not used yet; 0 if there is none
};

std::optional<std::string> ReadLz77(std::string_view bytes) {
  constexpr size_t kHead = 3;
  const auto size = TryLoadAt<uint16_t>(bytes, 1);
  return size ? Lz77Reader(bytes.substr(kHead)).Read(*size) : std::nullopt;
}

}  // namespace

std::optional<std::string> Decompress(std::string_view bytes) {
  switch (bytes.empty() ? 0 : ByteAt(bytes, 0) >> kKindShift) {
    case kPackedBytes:
      return Unpack(bytes, 1);
    case kPackedUtf16:
      return Unpack(bytes, 2);
    case kLz77:
      return ReadLz77(bytes);
    default:
      return std::nullopt;
  }
}

}  // namespace postmarker::ese
