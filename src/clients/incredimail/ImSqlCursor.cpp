#include "clients/incredimail/ImSqlCursor.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "support/Ascii.h"
#include "support/Text.h"

namespace postmarker {
namespace {

// The library's own instructions: how many between two looks at the clock of work, and how many a
// statement may take on top of some for each byte of the file. A row takes a dozen of them and at
// least a dozen bytes.
constexpr int kInstructionsPerLook = 100'000;
constexpr uint64_t kInstructionsAtLeast = 20'000'000;
constexpr uint64_t kInstructionsPerByte = 64;

// A list of a hundred thousand recipients fits. What is longer is no text of the client's, and
// would keep a reader busy that is to stop.
constexpr int kMaxTextBytes = 4 * 1024 * 1024;

// The library takes 16-bit units, also where wide characters are wider.
std::u16string ToUtf16(const std::wstring& wide) {
  return {wide.begin(), wide.end()};
}

uint64_t LooksFor(const std::wstring& database) {
  std::error_code failure;
  const auto size = std::filesystem::file_size(std::filesystem::path(ToUtf16(database)), failure);
  const uint64_t instructions =
      kInstructionsAtLeast + (failure ? 0 : static_cast<uint64_t>(size) * kInstructionsPerByte);
  return instructions / kInstructionsPerLook;
}

}  // namespace

ImSqlCursor::ImSqlCursor(const std::wstring& database, const std::wstring& statement,
                         StopQuery stop)
    : m_stop(std::move(stop)) {
  // One thread uses the connection, so that it needs no lock, which each column would take.
  constexpr int kFlags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
  // A failed open still gives a handle that must be closed.
  if (::sqlite3_open_v2(NarrowUtf8(database).c_str(), m_database.Put(), kFlags, nullptr) !=
      SQLITE_OK) {
    Close();
    return;
  }
  ::sqlite3_limit(m_database.Get(), SQLITE_LIMIT_LENGTH, kMaxTextBytes);
  m_workLeft = LooksFor(database);
  ::sqlite3_progress_handler(m_database.Get(), kInstructionsPerLook, &CountWork, this);
  m_isUtf8 = HasUtf8Texts();
  if (::sqlite3_prepare16_v2(m_database.Get(), ToUtf16(statement).c_str(), -1, m_statement.Put(),
                             nullptr) != SQLITE_OK) {
    Close();
    return;
  }
  m_status = ::sqlite3_step(m_statement.Get());
  if (m_status != SQLITE_ROW && m_status != SQLITE_DONE) {
    Close();
  }
}

ImSqlCursor::~ImSqlCursor() = default;

bool ImSqlCursor::HasUtf8Texts() const {
  UniqueHandle<StatementTraits> query;
  if (::sqlite3_prepare16_v2(m_database.Get(), u"PRAGMA encoding;", -1, query.Put(), nullptr) !=
          SQLITE_OK ||
      ::sqlite3_step(query.Get()) != SQLITE_ROW) {
    return false;
  }
  const unsigned char* const name = ::sqlite3_column_text(query.Get(), 0);
  return name != nullptr && reinterpret_cast<const char*>(name) == std::string_view("UTF-8");
}

int ImSqlCursor::CountWork(void* cursor) {
  auto* const self = static_cast<ImSqlCursor*>(cursor);
  if (self->m_workLeft == 0 || ShouldStop(self->m_stop)) {
    return 1;
  }
  --self->m_workLeft;
  return 0;
}

void ImSqlCursor::Next() {
  if (!IsOpen()) {
    return;
  }
  m_status = ::sqlite3_step(m_statement.Get());
  if (m_status != SQLITE_ROW) {
    Close();
  }
}

void ImSqlCursor::Close() {
  m_statement.Reset();
  m_database.Reset();
  m_status = SQLITE_ERROR;
}

template <class Units>
std::wstring_view ImSqlCursor::Widened(const Units& units) {
  // Not assign, which goes through a string of its own when the units differ in type.
  m_text.resize(units.size());
  std::copy(units.begin(), units.end(), m_text.begin());
  return m_text;
}

std::optional<std::string_view> ImSqlCursor::AsciiText(int column) {
  if (!HasRow() || !m_isUtf8) {
    return std::nullopt;
  }
  const unsigned char* const text = ::sqlite3_column_text(m_statement.Get(), column);
  const std::string_view narrow(text == nullptr ? "" : reinterpret_cast<const char*>(text));
  return IsAscii(narrow) ? std::optional(narrow) : std::nullopt;
}

// Nearly all texts are ASCII. Widening those here takes half as long as the library's conversion,
// which all others go through. A database in UTF-16 hands out its texts as they are.
std::wstring_view ImSqlCursor::Text(int column) {
  if (!HasRow()) {
    return {};
  }
  if (const std::optional<std::string_view> narrow = AsciiText(column)) {
    return Widened(*narrow);
  }
  const auto* const text =
      static_cast<const char16_t*>(::sqlite3_column_text16(m_statement.Get(), column));
  if (text == nullptr) {
    return {};
  }
  return Widened(std::u16string_view(text));
}

int32_t ImSqlCursor::Integer(int column) const {
  return HasRow() ? ::sqlite3_column_int(m_statement.Get(), column) : 0;
}

}  // namespace postmarker
