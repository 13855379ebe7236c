#include "clients/incredimail/ImFieldReader.h"

#include "support/Text.h"

namespace postmarker {
namespace {

constexpr uint64_t kGuidSize = 16;
constexpr uint64_t kCountSize = 4;

// The places of the id's bytes in its text, as it lies in memory; -1 is a hyphen.
constexpr int8_t kGuidOrder[] = {3,  2, 1, 0,  -1, 5,  4,  -1, 7,  6,
                                 -1, 8, 9, -1, 10, 11, 12, 13, 14, 15};

}  // namespace

std::wstring ImFieldReader::ReadGuid() {
  static constexpr wchar_t kDigits[] = L"0123456789ABCDEF";
  if (!Has(kGuidSize)) {
    MoveToEnd();
    return {};
  }
  std::wstring text = L"{00000000-0000-0000-0000-000000000000}";
  auto to = text.begin() + 1;
  for (const int8_t place : kGuidOrder) {
    if (place < 0) {
      ++to;
    } else {
      const uint8_t byte = ByteAt(m_cursor + static_cast<uint64_t>(place));
      *to++ = kDigits[byte >> 4];
      *to++ = kDigits[byte & 0xF];
    }
  }
  Advance(kGuidSize);
  return text;
}

uint32_t ImFieldReader::ReadCount() {
  uint32_t count = 0;
  for (uint64_t i = 0; i < kCountSize; ++i) {
    count |= uint32_t{ByteAt(m_cursor + i)} << (8 * i);
  }
  Advance(kCountSize);
  return count;
}

std::wstring ImFieldReader::ReadText() {
  if (!Has(kCountSize)) {
    MoveToEnd();
    return {};
  }
  const uint64_t size = uint64_t{2} * ReadCount();
  if (!Has(size)) {
    MoveToEnd();
    return {};
  }
  const std::string_view stored =
      m_bytes.substr(static_cast<size_t>(m_cursor), static_cast<size_t>(size));
  // Each byte is written, and one that is 0 is written over by the next.
  std::string narrow(stored.size(), '\0');
  size_t length = 0;
  for (const char byte : stored) {
    narrow[length] = byte;
    length += byte != 0 ? 1 : 0;
  }
  narrow.resize(length);
  Advance(size);
  return Widen(narrow);
}

void ImFieldReader::SkipText() {
  if (Has(kCountSize)) {
    Advance(uint64_t{2} * ReadCount());
  } else {
    MoveToEnd();
  }
}

int32_t ImFieldReader::ReadShortLength() {
  int8_t last = 0;
  for (uint64_t i = 0; i < kCountSize; ++i) {
    if (ByteAt(m_cursor + i) != 0) {
      last = SignedByteAt(m_cursor + i);
    }
  }
  Advance(kCountSize);
  return last;
}

uint32_t ImFieldReader::DwordAt(uint64_t offset) const {
  uint32_t number = 0;
  for (uint64_t i = 0; i < sizeof(number) && offset + i < Size(); ++i) {
    const uint8_t byte = ByteAt(offset + i);
    if (byte == 0) {
      break;
    }
    number |= uint32_t{byte} << (8 * i);
  }
  return number;
}

}  // namespace postmarker
