#include "clients/livemail/LiveStoreId.h"

#include "clients/StoreIdSearch.h"
#include "clients/livemail/JetDbWrapper.h"
#include "support/MappedFile.h"

namespace postmarker::livemail {
namespace {

constexpr wchar_t kUserData[] = L"UserDataTable";
constexpr wchar_t kTableColumn[] = L"Table";
constexpr uint32_t kUtf16 = 1200;
constexpr size_t kDigits = 2 * kStoreIdBytes;

uint32_t DigitOf(wchar_t c) {
  return static_cast<uint32_t>(c) - (c > L'9' ? 55 : 48);
}

std::optional<std::string> IdOfDigits(const std::wstring* digits) {
  if (digits == nullptr || digits->size() < kDigits) {
    return std::nullopt;
  }
  std::string id;
  for (size_t i = 0; i < kDigits; i += 2) {
    id.push_back(static_cast<char>(DigitOf((*digits)[i]) * 16 + DigitOf((*digits)[i + 1])));
  }
  return id;
}

std::optional<std::string> ReadIdOfDatabase(const std::wstring& path, const JetApi& api) {
  JetDbWrapper database(path, api);
  JetColumns columns;
  if (Failed(database.Status) || Failed(database.GetTableColumns(kUserData, &columns))) {
    return std::nullopt;
  }
  // The client declares this column for bytes and keeps UTF-16 in it.
  if (const auto table = columns.find(kTableColumn); table != columns.end()) {
    table->second.CodePage = kUtf16;
  }
  const JetRow required = {{kTableColumn, JetValue(std::wstring(L"Folders"))},
                           {L"FolderId", JetValue(int64_t{-1})}};
  std::optional<std::string> id;
  database.Visit(kUserData, columns, {}, required, [&id](const JetRow& row) {
    id = IdOfDigits(ValueOf(row, L"Data").AsText());
    return false;
  });
  return id;
}

}  // namespace

std::optional<std::string> ReadLiveMessageStoreId(const std::wstring& databasePath,
                                                  const std::wstring& backupPath,
                                                  const JetApi& api) {
  if (CanOpenForReading(databasePath)) {
    if (std::optional<std::string> id = ReadIdOfDatabase(databasePath, api)) {
      return id;
    }
  }
  return FindStoreIdInFile(databasePath, backupPath);
}

}  // namespace postmarker::livemail
