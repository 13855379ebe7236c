// jet: the tables of a database file, by the wrapper that the product reads them with.
#include <charconv>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "Commands.h"
#include "clients/livemail/JetDbWrapper.h"
#include "support/Text.h"

namespace postmarker::inspect {
namespace {

template <class Number>
std::optional<JetValue> ParseNumber(std::string_view text) {
  Number number = 0;
  const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool isWhole = error == std::errc() && stop == text.data() + text.size();
  return isWhole ? std::optional(JetValue(number)) : std::nullopt;
}

// A value as "i32:5", "i64:-1" or "text:abc".
std::optional<JetValue> ParseValue(std::string_view text) {
  const size_t colon = text.find(':');
  if (colon == std::string_view::npos) {
    return std::nullopt;
  }
  const std::string_view kind = text.substr(0, colon);
  const std::string_view content = text.substr(colon + 1);
  if (kind == "i32") {
    return ParseNumber<int32_t>(content);
  }
  if (kind == "i64") {
    return ParseNumber<int64_t>(content);
  }
  return kind == "text" ? std::optional(JetValue(WidenUtf8(content))) : std::nullopt;
}

// The values of all options of that name, each COLUMN=VALUE. Nothing if one makes no sense.
std::optional<JetRow> ParseValues(const Arguments& arguments, std::string_view option) {
  JetRow values;
  for (const auto& [name, text] : arguments.options) {
    if (name != option) {
      continue;
    }
    const size_t equals = text.find('=');
    const auto value = equals == std::string::npos
                           ? std::nullopt
                           : ParseValue(std::string_view(text).substr(equals + 1));
    if (!value) {
      return std::nullopt;
    }
    values.emplace(WidenUtf8(std::string_view(text).substr(0, equals)), *value);
  }
  return values;
}

void WriteValue(JsonWriter* json, const JetValue& value) {
  json->BeginObject();
  if (const int32_t* const number = value.AsInt32()) {
    json->Key("i32").Number(*number);
  } else if (const int64_t* const wideNumber = value.AsInt64()) {
    json->Key("i64").Number(*wideNumber);
  } else if (const std::wstring* const text = value.AsText()) {
    json->Key("text").Wide(*text);
  }
  json->EndObject();
}

// Begins the document of an operation; the caller writes the content of its one member.
void BeginResult(JsonWriter* json, ResultCode result, std::string_view member) {
  json->BeginObject();
  json->Key("result").Number(result);
  json->Key(member);
}

void ShowTables(JetDbWrapper* database, JsonWriter* json) {
  std::set<std::wstring> names;
  const ResultCode result = Succeeded(database->Status) ? database->GetTableNames(&names) : kFail;
  if (json != nullptr) {
    BeginResult(json, result, "tables");
    json->BeginArray();
    for (const std::wstring& name : names) {
      json->Wide(name);
    }
    json->EndArray().EndObject();
  }
}

void ShowColumns(JetDbWrapper* database, const std::wstring& table, JsonWriter* json) {
  JetColumns columns;
  const ResultCode result =
      Succeeded(database->Status) ? database->GetTableColumns(table, &columns) : kFail;
  if (json == nullptr) {
    return;
  }
  BeginResult(json, result, "columns");
  json->BeginObject();
  for (const auto& [name, column] : columns) {
    json->WideKey(name).BeginObject();
    json->Key("id").Number(column.ColumnId);
    json->Key("type").Number(column.ColumnType);
    json->Key("codePage").Number(column.CodePage);
    json->EndObject();
  }
  json->EndObject().EndObject();
}

void ShowIndexes(JetDbWrapper* database, const std::wstring& table, JsonWriter* json) {
  JetIndexes indexes;
  const ResultCode result =
      Succeeded(database->Status) ? database->GetTableIndexes(table, &indexes) : kFail;
  if (json == nullptr) {
    return;
  }
  BeginResult(json, result, "indexes");
  json->BeginObject();
  for (const auto& [name, columns] : indexes) {
    json->WideKey(name).BeginArray();
    for (const std::wstring& column : columns) {
      json->Wide(column);
    }
    json->EndArray();
  }
  json->EndObject().EndObject();
}

ResultCode QueryAll(JetDbWrapper* database, const std::wstring& table, const JetRow& filter,
                    const JetRow& required, std::vector<JetRow>* rows) {
  JetColumns columns;
  if (Failed(database->Status) || Failed(database->GetTableColumns(table, &columns))) {
    return kFail;
  }
  // The client declares this column for bytes and keeps UTF-16 in it.
  if (const auto name = columns.find(L"Table");
      table == L"UserDataTable" && name != columns.end()) {
    constexpr uint32_t kUtf16 = 1200;
    name->second.CodePage = kUtf16;
  }
  return database->Query(table, columns, filter, required, rows);
}

void ShowRows(JetDbWrapper* database, const std::wstring& table, const JetRow& filter,
              const JetRow& required, JsonWriter* json) {
  std::vector<JetRow> rows;
  const ResultCode result = QueryAll(database, table, filter, required, &rows);
  if (json == nullptr) {
    return;
  }
  BeginResult(json, result, "rows");
  json->BeginArray();
  for (const JetRow& row : rows) {
    json->BeginObject();
    for (const auto& [name, value] : row) {
      json->WideKey(name);
      WriteValue(json, value);
    }
    json->EndObject();
  }
  json->EndArray().EndObject();
}

}  // namespace

bool RunJet(const Arguments& arguments, JsonWriter* json) {
  const std::vector<std::string>& texts = arguments.texts;
  const std::string& what = texts[1];
  const bool isOfTable = what == "columns" || what == "indexes" || what == "query";
  const std::optional<JetRow> filter = ParseValues(arguments, "--filter");
  const std::optional<JetRow> required = ParseValues(arguments, "--require");
  if ((!isOfTable && what != "tables") || texts.size() != (isOfTable ? 3U : 2U) || !filter ||
      !required || (what != "query" && !arguments.options.empty())) {
    return false;
  }
  JetDbWrapper database(WidenUtf8(texts[0]));
  const std::wstring table = isOfTable ? WidenUtf8(texts[2]) : std::wstring();
  if (what == "tables") {
    ShowTables(&database, json);
  } else if (what == "columns") {
    ShowColumns(&database, table, json);
  } else if (what == "indexes") {
    ShowIndexes(&database, table, json);
  } else {
    ShowRows(&database, table, *filter, *required, json);
  }
  return true;
}

}  // namespace postmarker::inspect
