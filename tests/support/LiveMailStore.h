// Stores of Windows Live Mail, made by tests.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "support/EseFile.h"

namespace postmarker::test {

// A row of a store's table. What has no value is null.
struct LiveFolderRow {
  std::optional<int64_t> id;
  std::optional<int64_t> parent;
  std::optional<std::u16string> name;
  std::optional<uint8_t> special = 0;
  std::optional<uint8_t> type = 2;
  std::optional<std::u16string> path = u"p";
};
struct LiveMessageRow {
  std::optional<int64_t> id;
  std::optional<int64_t> folder;
  std::optional<int32_t> stream = std::nullopt;
  std::optional<std::u16string> from = std::nullopt;
  std::optional<std::u16string> to = std::nullopt;
  std::optional<int32_t> flags = std::nullopt;
};
struct LiveStreamRow {
  int32_t id;
  std::optional<std::u16string> path;
};
struct LiveUserDataRow {
  std::u16string table;
  int64_t folder;
  std::optional<std::string> data;
};

// What a store holds. Rows stand in the order of their ids, or of their numbers where they have
// none.
struct LiveMailContent {
  std::vector<LiveFolderRow> folders = {};
  std::vector<LiveMessageRow> messages = {};
  std::vector<LiveStreamRow> streams = {};
  std::vector<LiveUserDataRow> userData = {};
  bool hasFolderIndex = false;  // on the folders of the messages
};

namespace live_mail_store {

template <class Number>
EseCell NumberCell(const std::optional<Number>& number) {
  return {number ? std::optional(EseBytes(*number)) : std::nullopt};
}

// As the client writes them, texts have a closing NUL.
inline EseCell TextCell(const std::optional<std::u16string>& text) {
  return {text ? std::optional(EseUtf16(*text + u'\0')) : std::nullopt};
}

inline std::string KeyOf(const std::optional<int64_t>& id, size_t number) {
  return EseKey(id.value_or(0)) + EseBigEndian(static_cast<uint32_t>(number));
}

inline EseTable MakeFolders(const LiveMailContent& content) {
  EseTable table = {.name = "Folders",
                    .columns = {{"FLDCOL_ID", 1, kEseLongLong, 8},
                                {"FLDCOL_PARENT", 2, kEseLongLong, 8},
                                {"FLDCOL_SPECIAL", 3, kEseByte, 1},
                                {"FLDCOL_TYPE", 4, kEseByte, 1},
                                {"FLDCOL_NAMEW", 128, kEseText, 255, 1200},
                                {"FLDCOL_PATH", 129, kEseText, 255, 1200},
                                {"FLDCOL_OTHER", 130, kEseText, 255, 1200}},
                    .entriesPerPage = 16};
  for (const LiveFolderRow& row : content.folders) {
    table.rows.push_back({{{1, NumberCell(row.id)},
                           {2, NumberCell(row.parent)},
                           {3, NumberCell(row.special)},
                           {4, NumberCell(row.type)},
                           {128, TextCell(row.name)},
                           {129, TextCell(row.path)},
                           {130, TextCell(row.name)}},
                          KeyOf(row.id, table.rows.size())});
  }
  return table;
}

inline EseTable MakeMessages(const LiveMailContent& content) {
  EseTable table = {.name = "Messages",
                    .columns = {{"MSGCOL_ID", 1, kEseLongLong, 8},
                                {"MSGCOL_FOLDERID", 2, kEseLongLong, 8},
                                {"MSGCOL_STREAM", 3},
                                {"MSGCOL_FLAGS", 4},
                                {"MSGCOL_EMAILFROM", 128, kEseText, 255, 1200},
                                {"MSGCOL_EMAILTO", 129, kEseText, 255, 1200},
                                {"MSGCOL_SUBJECT", 130, kEseText, 255, 1200}},
                    .entriesPerPage = 24};
  EseIndex byFolder = {.name = "1", .columns = {2}};
  for (const LiveMessageRow& row : content.messages) {
    if (row.folder) {
      byFolder.entries.emplace_back(EseKey(*row.folder), table.rows.size());
    }
    table.rows.push_back({{{1, NumberCell(row.id)},
                           {2, NumberCell(row.folder)},
                           {3, NumberCell(row.stream)},
                           {4, NumberCell(row.flags)},
                           {128, TextCell(row.from)},
                           {129, TextCell(row.to)},
                           {130, TextCell(u"about")}},
                          KeyOf(row.id, table.rows.size())});
  }
  if (content.hasFolderIndex) {
    table.indexes.push_back(byFolder);
  }
  return table;
}

inline EseTable MakeStreams(const LiveMailContent& content) {
  EseTable table = {.name = "Streams",
                    .columns = {{"Id", 1}, {"Path", 128, kEseText, 255, 1200}},
                    .indexes = {{"Id", {1}, true}},
                    .entriesPerPage = 32};
  for (const LiveStreamRow& row : content.streams) {
    table.rows.push_back({{{1, {EseBytes(row.id)}}, {128, TextCell(row.path)}}, EseKey(row.id)});
  }
  return table;
}

inline EseTable MakeUserData(const LiveMailContent& content) {
  // The client declares the column of the names as one of bytes.
  EseTable table = {.name = "UserDataTable",
                    .columns = {{"Id", 1},
                                {"FolderId", 2, kEseLongLong, 8},
                                {"Table", 128, kEseText, 255, 1252},
                                {"Data", 129, kEseBinary, 255}}};
  for (const LiveUserDataRow& row : content.userData) {
    const auto id = static_cast<int32_t>(table.rows.size() + 1);
    table.rows.push_back({{{1, {EseBytes(id)}},
                           {2, {EseBytes(row.folder)}},
                           {128, TextCell(row.table)},
                           {129, {row.data}}}});
  }
  return table;
}

}  // namespace live_mail_store

// The database's bytes. An option's size of pages other than 8 KiB may have no room for long rows.
inline std::string MakeLiveMailStore(const LiveMailContent& content,
                                     EseOptions options = {.pageSize = 8192}) {
  return MakeEseFile(
      {live_mail_store::MakeFolders(content), live_mail_store::MakeMessages(content),
       live_mail_store::MakeStreams(content), live_mail_store::MakeUserData(content)},
      options);
}

// The row of user data that has the id of the store.
inline LiveUserDataRow LiveStoreIdRow(const std::string& id) {
  return {u"Folders", -1, id};
}

}  // namespace postmarker::test
