#include "clients/livemail/JetRows.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "support/Text.h"

namespace postmarker {
namespace {

constexpr uint32_t kMaxNameBytes = 1023;
constexpr uint32_t kMaxValueBytes = 2047;

// Types of columns.
enum JetType : uint32_t {
  kUnsignedByte = 2,
  kShort = 3,
  kLong = 4,
  kCurrency = 5,
  kBinary = 9,
  kText = 10,
  kLongBinary = 11,
  kLongText = 12,
  kUnsignedLong = 14,
  kLongLong = 15,
  kUnsignedShort = 17,
};

constexpr uint32_t kUtf16 = 1200;

template <class Number>
Number NumberOf(const std::string& bytes) {
  Number number = 0;
  std::memcpy(&number, bytes.data(), std::min(bytes.size(), sizeof(number)));
  return number;
}

// At most `limit` bytes of a column; nothing if it can't be read as a whole.
std::optional<std::string> Retrieve(JetTableRef table, jet::ColumnId column, uint32_t limit) {
  std::array<char, kMaxValueBytes> buffer = {};
  uint32_t length = 0;
  const jet::Code code = table.api->JetRetrieveColumn(table.session, table.id, column,
                                                      buffer.data(), limit, &length, 0, nullptr);
  // Warnings as well: a value that was cut, or null, is none.
  if (code != jet::kSuccess || length > limit) {
    return std::nullopt;
  }
  return std::string(buffer.data(), length);
}

// The content of a filter's value, as the engine takes it.
std::string ContentOf(const JetValue& value, bool isUtf16) {
  if (const int32_t* const number = value.AsInt32()) {
    return {reinterpret_cast<const char*>(number), sizeof(*number)};
  }
  if (const int64_t* const number = value.AsInt64()) {
    return {reinterpret_cast<const char*>(number), sizeof(*number)};
  }
  const std::wstring* const text = value.AsText();
  if (text == nullptr || !isUtf16) {
    return text == nullptr ? std::string() : Narrow(*text);
  }
  const std::u16string units(text->begin(), text->end());
  return {reinterpret_cast<const char*>(units.data()), units.size() * sizeof(char16_t)};
}

jet::Code MakeKey(JetTableRef table, const std::vector<std::wstring>& indexColumns,
                  const JetColumns& columns, const JetRow& filter) {
  jet::Code code = jet::kSuccess;
  for (const std::wstring& column : indexColumns) {
    const JetValue& value = ValueOf(filter, column);
    const auto info = columns.find(column);
    const std::string content =
        ContentOf(value, info != columns.end() && info->second.CodePage == kUtf16);
    // Deliberate: each column begins a new key, so that of several only the last one stays.
    code =
        table.api->JetMakeKey(table.session, table.id, value.IsNothing() ? nullptr : content.data(),
                              static_cast<uint32_t>(content.size()), jet::kNewKey);
    if (code != jet::kSuccess) {
      break;
    }
  }
  return code;
}

}  // namespace

jet::Code MoveTo(JetTableRef table, int32_t step) {
  return table.api->JetMove(table.session, table.id, step, 0);
}

jet::Code MoveToFiltered(JetTableRef table, const std::wstring& index,
                         const std::vector<std::wstring>& indexColumns, const JetColumns& columns,
                         const JetRow& filter) {
  const JetApi& api = *table.api;
  jet::Code code = api.JetSetCurrentIndex(table.session, table.id, Narrow(index).c_str());
  if (code == jet::kSuccess) {
    code = MakeKey(table, indexColumns, columns, filter);
  }
  if (code == jet::kSuccess) {
    code = api.JetSeek(table.session, table.id, jet::kSeekGreaterOrEqual);
  }
  // The search has used the key up.
  if (code == jet::kSuccess) {
    code = MakeKey(table, indexColumns, columns, filter);
  }
  if (code == jet::kSuccess) {
    code =
        api.JetSetIndexRange(table.session, table.id, jet::kRangeInclusive | jet::kRangeUpperLimit);
  }
  return code;
}

std::optional<std::wstring> ReadName(JetTableRef table, jet::ColumnId column) {
  const std::optional<std::string> name = Retrieve(table, column, kMaxNameBytes);
  return name ? std::optional(Widen(name->substr(0, name->find('\0')))) : std::nullopt;
}

std::optional<uint32_t> ReadNumber(JetTableRef table, jet::ColumnId column) {
  const std::optional<std::string> bytes = Retrieve(table, column, sizeof(uint32_t));
  return bytes ? std::optional(NumberOf<uint32_t>(*bytes)) : std::nullopt;
}

std::optional<JetValue> ReadColumn(JetTableRef table, const JetColumnInfo& column) {
  const auto read = [&](uint32_t limit) { return Retrieve(table, column.ColumnId, limit); };
  std::optional<std::string> bytes;
  switch (column.ColumnType) {
    case kUnsignedByte:
    case kShort:
    case kLong:
    case kUnsignedLong:
    case kUnsignedShort:
      bytes = read(sizeof(int32_t));
      return bytes ? std::optional(JetValue(NumberOf<int32_t>(*bytes))) : std::nullopt;
    case kCurrency:
    case kLongLong:
      bytes = read(sizeof(int64_t));
      return bytes ? std::optional(JetValue(NumberOf<int64_t>(*bytes))) : std::nullopt;
    case kBinary:
    case kLongBinary:
      bytes = read(kMaxValueBytes);
      return bytes ? std::optional(TextFromBinary(*bytes)) : std::nullopt;
    case kText:
    case kLongText:
      bytes = read(kMaxValueBytes);
      if (!bytes) {
        return std::nullopt;
      }
      return column.CodePage == kUtf16 ? TextFromUtf16(*bytes) : TextFromNarrow(*bytes);
    default:
      return std::nullopt;
  }
}

bool HasRequired(JetTableRef table, const JetColumns& columns, const JetRow& required) {
  return std::all_of(required.begin(), required.end(), [&](const auto& wanted) {
    const auto column = columns.find(wanted.first);
    if (column == columns.end()) {
      return true;
    }
    const std::optional<JetValue> value = ReadColumn(table, column->second);
    return !value || *value == wanted.second;
  });
}

}  // namespace postmarker
