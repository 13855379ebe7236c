#include "ese/IndexKey.h"

#include <algorithm>
#include <array>

#include "ese/ByteAccess.h"
#include "support/Text.h"

namespace postmarker::ese {
namespace {

constexpr char kNull = '\0';
constexpr char kNullLast = '\xC0';
constexpr char kEmpty = '\x40';
constexpr char kValue = '\x7F';
constexpr uint32_t kTopBit = 0x80;

void AppendBigEndian(std::string_view value, std::string* key) {
  key->append(value.rbegin(), value.rend());
}

// Negative numbers come first.
void AppendSigned(std::string_view value, std::string* key) {
  const size_t start = key->size();
  AppendBigEndian(value, key);
  (*key)[start] = static_cast<char>(ByteAt(*key, start) ^ kTopBit);
}

void Invert(std::string* key, size_t start) {
  std::transform(key->begin() + static_cast<std::ptrdiff_t>(start), key->end(),
                 key->begin() + static_cast<std::ptrdiff_t>(start),
                 [](char c) { return static_cast<char>(~c); });
}

void AppendFloat(std::string_view value, std::string* key) {
  const size_t start = key->size();
  AppendBigEndian(value, key);
  if ((ByteAt(*key, start) & kTopBit) != 0) {
    Invert(key, start);
  } else {
    (*key)[start] = static_cast<char>(ByteAt(*key, start) | kTopBit);
  }
}

void AppendGuid(std::string_view value, std::string* key) {
  constexpr std::array<size_t, 16> kOrder = {10, 11, 12, 13, 14, 15, 8, 9, 6, 7, 4, 5, 0, 1, 2, 3};
  for (const size_t place : kOrder) {
    key->push_back(value[place]);
  }
}

// Groups of eight bytes, each followed by the number of bytes used, or by 9 if more come.
void AppendBinary(std::string_view value, std::string* key) {
  constexpr size_t kGroup = 8;
  for (; value.size() > kGroup; value.remove_prefix(kGroup)) {
    key->append(value.substr(0, kGroup)).push_back(static_cast<char>(kGroup + 1));
  }
  key->append(value).append(kGroup - value.size(), '\0');
  key->push_back(static_cast<char>(value.size()));
}

void AppendNarrowText(std::string_view value, std::string* key) {
  for (const char c : value.substr(0, value.find('\0'))) {
    key->push_back(c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c);
  }
  key->push_back('\0');
}

void AppendWideText(std::string_view value, std::string* key) {
  for (size_t place = 0; place + 1 < value.size(); place += 2) {
    const auto unit = LoadAt<uint16_t>(value, place);
    if (unit == 0) {
      break;
    }
    const wchar_t lower = ToLower(static_cast<wchar_t>(unit));
    key->push_back(static_cast<char>(lower >> 8 & 0xFF));
    key->push_back(static_cast<char>(lower & 0xFF));
  }
  key->append(2, '\0');
}

void AppendNumber(const Column& column, std::string_view value, std::string* key) {
  switch (column.type) {
    case ColumnType::kBit:
      key->push_back(value[0] != 0 ? '\xFF' : '\0');
      return;
    case ColumnType::kUnsignedByte:
    case ColumnType::kUnsignedShort:
    case ColumnType::kUnsignedLong:
    case ColumnType::kUnsignedLongLong:
      AppendBigEndian(value, key);
      return;
    case ColumnType::kSingle:
    case ColumnType::kDouble:
    case ColumnType::kDate:
      AppendFloat(value, key);
      return;
    case ColumnType::kGuid:
      AppendGuid(value, key);
      return;
    default:
      AppendSigned(value, key);
      return;
  }
}

using AppendUtf16 = void (*)(std::string_view value, std::string* key);

KeyOutcome AppendPiece(const Column& column, KeyRule rule, std::optional<std::string_view> value,
                       AppendUtf16 appendUtf16, std::string* key) {
  const bool isText = IsText(column.type);
  const uint32_t size = FixedSize(column.type);
  if (isText && column.codePage == kCodePageUtf16 && appendUtf16 == nullptr) {
    return KeyOutcome::kUnknownOrder;
  }
  if (value && size > 0 && value->size() != size) {
    return KeyOutcome::kWrongSize;
  }
  const size_t start = key->size();
  if (!value) {
    key->push_back(rule.hasNullsLast ? kNullLast : kNull);
  } else if (size == 0 && value->empty()) {
    key->push_back(kEmpty);
  } else {
    key->push_back(kValue);
    if (size > 0) {
      AppendNumber(column, *value, key);
    } else if (!isText && column.id <= kLastFixedId) {
      key->append(*value);
    } else if (!isText) {
      AppendBinary(*value, key);
    } else if (column.codePage == kCodePageUtf16) {
      appendUtf16(*value, key);
    } else {
      AppendNarrowText(*value, key);
    }
  }
  if (rule.isDescending) {
    Invert(key, start);
  }
  return KeyOutcome::kMade;
}

}  // namespace

KeyOutcome AppendKeyPiece(const Column& column, KeyRule rule, std::optional<std::string_view> value,
                          std::string* key) {
  return AppendPiece(column, rule, value, nullptr, key);
}

KeyOutcome AppendOwnKeyPiece(const Column& column, KeyRule rule,
                             std::optional<std::string_view> value, std::string* key) {
  return AppendPiece(column, rule, value, AppendWideText, key);
}

}  // namespace postmarker::ese
