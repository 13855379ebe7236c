#include "clients/incredimail/ImStore.h"

#include <algorithm>

#include "clients/incredimail/ImFolderFile.h"
#include "clients/incredimail/ImPaths.h"
#include "clients/incredimail/ImSqlCursor.h"
#include "support/MappedFile.h"
#include "support/Text.h"

namespace postmarker {
namespace {

constexpr wchar_t kReadFolders[] =
    L"SELECT ContainerID,ParentContainerID, IndexInParent, Label, FileName, MsgsCount FROM "
    L"Containers;";

constexpr wchar_t kAddFolder[] =
    L"INSERT OR REPLACE INTO Containers(ContainerID, ParentContainerID, IndexInParent, Label, "
    L"FileName, SortField, SortOrder, Color, MsgsCount, NewMsgsCount) VALUES(";

std::wstring Quoted(const std::wstring& text) {
  return L"'" + text + L"'";
}

}  // namespace

ImContainerMap ReadContainerRows(const std::wstring& database, const StopQuery& stop) {
  if (!CanOpenForReading(database)) {
    return {};
  }
  ImContainerRows rows;
  for (ImSqlCursor cursor(database, kReadFolders, stop); cursor.HasRow(); cursor.Next()) {
    ImContainer row;
    row.ContainerID = rows.Keep(cursor.Text(0));
    row.ParentContainerID = rows.Keep(cursor.Text(1));
    row.IndexInParent = static_cast<uint32_t>(cursor.Integer(2));
    row.Label = rows.Keep(cursor.Text(3));
    row.FileName = rows.Keep(cursor.Text(4));
    row.MsgsCount = static_cast<uint32_t>(cursor.Integer(5));
    rows.Add(row);
  }
  return ImContainerMap(std::move(rows));
}

ImContainerMap ReadStoredContainers(const std::wstring& identityDirectory,
                                    const std::wstring& rootLabel, const StopQuery& stop) {
  const std::wstring database = ContainersDatabasePath(identityDirectory);
  if (CanOpenForReading(database)) {
    return ReadContainerRows(database, stop);
  }
  ImContainerMap containers;
  ReadFolderFile(&containers, rootLabel, FolderFilePath(identityDirectory));
  return containers;
}

std::wstring AddFolderStatement(const ImNewFolder& folder) {
  // SortField is 1; SortOrder, Color, MsgsCount and NewMsgsCount are 0.
  return kAddFolder + Quoted(folder.id) + L"," + Quoted(folder.parentId) + L"," +
         std::to_wstring(folder.index) + L"," + Quoted(folder.label) + L"," +
         Quoted(folder.fileName) + L",1,0,0,0,0);";
}

bool CanBeAdded(const ImNewFolder& folder) {
  const std::wstring_view texts[] = {folder.id, folder.parentId, folder.label, folder.fileName};
  return std::none_of(std::begin(texts), std::end(texts), [](std::wstring_view text) {
    return text.find(L'\'') != std::wstring_view::npos;
  });
}

bool AddFolder(const std::wstring& database, const ImNewFolder& folder) {
  return CanBeAdded(folder) && ImSqlCursor(database, AddFolderStatement(folder)).IsDone();
}

uint32_t CountChildren(const ImContainerMap& containers, std::wstring_view parentId) {
  const auto all = containers.Containers();
  return static_cast<uint32_t>(std::count_if(all.begin(), all.end(), [&](const ImContainer& c) {
    return EqualNoCase(c.ParentContainerID, parentId);
  }));
}

}  // namespace postmarker
