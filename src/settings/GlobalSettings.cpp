#include "settings/GlobalSettings.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace postmarker {
namespace {

using std::chrono::local_days;

constexpr wchar_t kActionPlugin[] = L"ActionPlugin";
constexpr wchar_t kLastConfigured[] = L"LastConfigured";
constexpr wchar_t kLastEditGlobal[] = L"LastEditGlobal";

constexpr uint32_t kTextRoom = 256;
constexpr size_t kMaxTextChars = kTextRoom / 2 - 1;

constexpr local_days kNeverEdited{std::chrono::year(1980) / std::chrono::January / 1};

std::wstring ReadText(const SettingsStore& store, const wchar_t* name) {
  const auto key = store.Open({});
  const auto bytes = key ? key->Read(name, kTextRoom) : std::nullopt;
  std::wstring text = bytes ? DecodeTextValue(*bytes) : std::wstring();
  // Without its terminator a text one unit too long would still fit into the room.
  return text.size() <= kMaxTextChars ? text : std::wstring();
}

bool WriteText(SettingsStore& store, const wchar_t* name, const std::wstring& text) {
  const auto key = store.Create({});
  return key && key->Write(name, ValueType::kText, EncodeTextValue(text));
}

bool IsBlank(wchar_t c) {
  return c == L' ' || (c >= L'\t' && c <= L'\r');
}

// The number at the start of a text, after blanks and a sign: 0 without digits, and the nearest
// number that fits where there are too many.
int LeadingNumber(std::wstring_view text) {
  size_t pos = 0;
  while (pos < text.size() && IsBlank(text[pos])) {
    ++pos;
  }
  const bool negative = pos < text.size() && text[pos] == L'-';
  if (pos < text.size() && (text[pos] == L'-' || text[pos] == L'+')) {
    ++pos;
  }
  constexpr int64_t kMax = std::numeric_limits<int>::max();
  int64_t number = 0;
  for (; pos < text.size() && text[pos] >= L'0' && text[pos] <= L'9'; ++pos) {
    number = std::min<int64_t>(number * 10 + (text[pos] - L'0'), kMax + 1);
  }
  return static_cast<int>(negative ? -number : std::min(number, kMax));
}

}  // namespace

std::wstring GetActionPlugin(const SettingsStore& store) {
  return ReadText(store, kActionPlugin);
}

bool SetActionPlugin(const std::wstring& clientName, SettingsStore& store) {
  return WriteText(store, kActionPlugin, clientName);
}

std::wstring GetLastConfigured(const SettingsStore& store) {
  return ReadText(store, kLastConfigured);
}

bool SetLastConfigured(const std::wstring& clientName, SettingsStore& store) {
  return WriteText(store, kLastConfigured, clientName);
}

local_days GetLastEditGlobal(const SettingsStore& store) {
  return ParseEditDate(ReadText(store, kLastEditGlobal));
}

bool SetLastEditGlobal(local_days day, SettingsStore& store) {
  return WriteText(store, kLastEditGlobal, FormatEditDate(day));
}

local_days ParseEditDate(std::wstring_view text) {
  const size_t first = text.find(L'-');
  const size_t second = first == text.npos ? text.npos : text.find(L'-', first + 1);
  if (second == text.npos) {
    return kNeverEdited;
  }
  const int year = std::clamp(LeadingNumber(text.substr(0, first)), 2000, 2100);
  const int month = std::clamp(LeadingNumber(text.substr(first + 1, second - first - 1)), 1, 12);
  const int day = std::clamp(LeadingNumber(text.substr(second + 1)), 1, 31);
  const local_days firstOfMonth{std::chrono::year(year) / month / 1};
  return firstOfMonth + std::chrono::days(day - 1);
}

std::wstring FormatEditDate(local_days day) {
  const std::chrono::year_month_day date(day);
  return std::to_wstring(static_cast<int>(date.year())) + L'-' +
         std::to_wstring(static_cast<unsigned>(date.month())) + L'-' +
         std::to_wstring(static_cast<unsigned>(date.day()));
}

}  // namespace postmarker
