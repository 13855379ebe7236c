// Values of a database, as the wrapper gives them.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <variant>

#include "clients/livemail/JetApi.h"

namespace postmarker {

// Nothing, an integer of 32 or 64 bits, or a text in UTF-16.
class JetValue {
 public:
  JetValue() = default;
  explicit JetValue(int32_t number) : m_content(number) {}
  explicit JetValue(int64_t number) : m_content(number) {}
  explicit JetValue(std::wstring text) : m_content(std::move(text)) {}

  [[nodiscard]] bool IsNothing() const { return std::holds_alternative<std::monostate>(m_content); }

  // Null if the value holds something else.
  [[nodiscard]] const int32_t* AsInt32() const { return std::get_if<int32_t>(&m_content); }
  [[nodiscard]] const int64_t* AsInt64() const { return std::get_if<int64_t>(&m_content); }
  [[nodiscard]] const std::wstring* AsText() const { return std::get_if<std::wstring>(&m_content); }

  // Values of different kinds differ: 5 in 32 bits is not 5 in 64 bits. Texts are equal if the
  // user's locale says so.
  bool operator==(const JetValue& other) const;

 private:
  std::variant<std::monostate, int32_t, int64_t, std::wstring> m_content;
};

// What a table tells of a column.
struct JetColumnInfo {
  uint32_t ColumnId = 0;
  uint32_t ColumnType = 0;  // as the engine numbers types
  uint32_t CodePage = 0;    // of texts; 1200 is UTF-16

  bool operator==(const JetColumnInfo&) const = default;
};

// By the names of columns. A column that could not be read is absent.
using JetColumns = std::map<std::wstring, JetColumnInfo>;
using JetRow = std::map<std::wstring, JetValue>;

// The value of a column of a row; nothing if it is absent.
const JetValue& ValueOf(const JetRow& row, const std::wstring& column);

// The value that the bytes of a column stand for.
JetValue TextFromUtf16(std::string_view bytes);   // up to the first NUL; an odd byte is left out
JetValue TextFromNarrow(std::string_view bytes);  // up to the first NUL
JetValue TextFromBinary(std::string_view bytes);  // two upper-case hexadecimal digits for each byte

// True if the texts are equal in the user's locale; ordinal where there is no such thing.
bool IsSameInLocale(const std::wstring& a, const std::wstring& b);

}  // namespace postmarker
