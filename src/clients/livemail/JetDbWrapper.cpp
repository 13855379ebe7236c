#include "clients/livemail/JetDbWrapper.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <utility>

#include "clients/livemail/JetProvider.h"
#include "clients/livemail/JetRows.h"
#include "support/Text.h"

namespace postmarker {
namespace {

constexpr wchar_t kInstanceName[] = L"Kestrelon";
constexpr uintptr_t kPageSize = 8192;
constexpr uintptr_t kRetryMilliseconds = 1000;
constexpr uint32_t kDensity = 100;
constexpr size_t kKeyBuffer = 1024;

// The path without its last component.
std::wstring DirectoryOf(const std::wstring& path) {
#if defined(_WIN32)
  constexpr wchar_t kSeparators[] = L"\\/";
#else
  constexpr wchar_t kSeparators[] = L"/";
#endif
  const size_t end = path.find_last_of(kSeparators);
  return end == std::wstring::npos ? std::wstring() : path.substr(0, end);
}

void MakeDirectory(const std::wstring& directory) {
  if (!directory.empty()) {
    std::error_code ignored;
    const std::u16string units(directory.begin(), directory.end());
    std::filesystem::create_directory(std::filesystem::path(units), ignored);
  }
}

}  // namespace

JetDbWrapper::JetDbWrapper(const std::wstring& path) : JetDbWrapper(path, MachineJetApi()) {}

JetDbWrapper::JetDbWrapper(const std::wstring& path, const JetApi& api)
    : DatabasePath(path), m_api(&api) {
  if (Open()) {
    Status = kOk;
  } else {
    Close();
  }
}

JetDbWrapper::~JetDbWrapper() {
  Close();
}

void JetDbWrapper::Close() {
  Database.Reset();
  Session.Reset();
  Instance.Reset();
}

bool JetDbWrapper::Open() {
  // For the whole process, so it can be too late for it: then the engine's own size holds.
  m_api->JetSetSystemParameter(nullptr, 0, jet::kDatabasePageSize, kPageSize, nullptr);
  std::optional<jet::Instance> running;
  if (!FindRunningInstance(&running) || (!running && !CreateInstance())) {
    return false;
  }
  jet::Session session = 0;
  if (m_api->JetBeginSession(running.value_or(Instance.Get().id), &session, nullptr, nullptr) < 0) {
    return false;
  }
  Session.Reset({m_api, session});
  const jet::Code attached = m_api->JetAttachDatabase(session, DatabasePath.c_str(), 0);
  if (attached != jet::kSuccess && attached != jet::kDatabaseAttached) {
    return false;
  }
  jet::DatabaseId database = 0;
  if (m_api->JetOpenDatabase(session, DatabasePath.c_str(), nullptr, &database, 0) < 0) {
    return false;
  }
  Database.Reset({m_api, session, database, &DatabasePath});
  return true;
}

// An instance of this process that has the file attached.
bool JetDbWrapper::FindRunningInstance(std::optional<jet::Instance>* instance) const {
  uint32_t count = 0;
  jet::InstanceInfo* infos = nullptr;
  if (m_api->JetGetInstanceInfo(&count, &infos) < 0) {
    return false;
  }
  const JetInfoBuffer owner({infos == nullptr ? nullptr : m_api, infos});
  for (uint32_t i = 0; infos != nullptr && i < count; ++i) {
    for (uintptr_t j = 0; infos[i].databaseFileNames != nullptr && j < infos[i].databaseCount;
         ++j) {
      const wchar_t* const name = infos[i].databaseFileNames[j];
      if (name != nullptr && EqualNoCase(std::wstring_view(name), DatabasePath)) {
        *instance = infos[i].instance;
      }
    }
  }
  return true;
}

bool JetDbWrapper::CreateInstance() {
  jet::Instance instance = 0;
  if (m_api->JetCreateInstance(&instance, kInstanceName) < 0) {
    return false;
  }
  Instance.Reset({m_api, instance});
  const std::wstring directory = DirectoryOf(DatabasePath);
  MakeDirectory(directory);
  const std::wstring path = directory + L"\\";
  for (const uint32_t parameter : {jet::kTempPath, jet::kSystemPath, jet::kLogFilePath}) {
    m_api->JetSetSystemParameter(&instance, jet::kNoSession, parameter, 0, path.c_str());
  }
  m_api->JetSetSystemParameter(&instance, jet::kNoSession, jet::kAccessDeniedRetryPeriod,
                               kRetryMilliseconds, nullptr);
  return m_api->JetInit(&instance) >= 0;
}

JetTransaction JetDbWrapper::BeginTransaction() const {
  const jet::Session session = Session.Get().id;
  return m_api->JetBeginTransaction(session) < 0 ? JetTransaction()
                                                 : JetTransaction({m_api, session});
}

JetTableHandle JetDbWrapper::OpenTable(const std::wstring& table, jet::Grbit grbit) const {
  const jet::Session session = Session.Get().id;
  jet::TableId id = 0;
  const jet::Code code = m_api->JetOpenTable(session, Database.Get().id, Narrow(table).c_str(),
                                             nullptr, 0, grbit, &id);
  return code < 0 ? JetTableHandle() : JetTableHandle({m_api, session, id});
}

ResultCode JetDbWrapper::GetTableNames(std::set<std::wstring>* names) {
  names->clear();
  const JetTransaction transaction = BeginTransaction();
  const jet::Session session = Session.Get().id;
  jet::ObjectList list = {};
  list.size = sizeof(list);
  if (!transaction || m_api->JetGetObjectInfo(session, Database.Get().id, jet::kTables, nullptr,
                                              nullptr, &list, sizeof(list), jet::kObjectList) < 0) {
    return kFail;
  }
  const JetTableHandle rows({m_api, session, list.table});
  for (jet::Code code = MoveTo(rows.Get(), jet::kMoveFirst); code == jet::kSuccess;
       code = MoveTo(rows.Get(), jet::kMoveNext)) {
    if (auto name = ReadName(rows.Get(), list.objectName)) {
      names->insert(*std::move(name));
    }
  }
  return kOk;
}

ResultCode JetDbWrapper::GetTableColumns(const std::wstring& table, JetColumns* columns) {
  columns->clear();
  const JetTransaction transaction = BeginTransaction();
  const JetTableHandle opened =
      transaction ? OpenTable(table, jet::kTableReadOnly) : JetTableHandle();
  const jet::Session session = Session.Get().id;
  jet::ColumnList list = {};
  list.size = sizeof(list);
  if (!opened || m_api->JetGetTableColumnInfo(session, opened.Get().id, nullptr, &list,
                                              sizeof(list), jet::kColumnListById) < 0) {
    return kFail;
  }
  const JetTableHandle rows({m_api, session, list.table});
  for (jet::Code code = MoveTo(rows.Get(), jet::kMoveFirst); code == jet::kSuccess;
       code = MoveTo(rows.Get(), jet::kMoveNext)) {
    const auto name = ReadName(rows.Get(), list.columnName);
    const auto id = name ? ReadNumber(rows.Get(), list.columnId) : std::nullopt;
    const auto type = id ? ReadNumber(rows.Get(), list.columnType) : std::nullopt;
    const auto codePage = type ? ReadNumber(rows.Get(), list.codePage) : std::nullopt;
    if (codePage) {
      (*columns)[*name] = {*id, *type, *codePage};
    }
  }
  return kOk;
}

ResultCode JetDbWrapper::GetTableIndexes(const std::wstring& table, JetIndexes* indexes) {
  indexes->clear();
  const JetTransaction transaction = BeginTransaction();
  const JetTableHandle opened =
      transaction ? OpenTable(table, jet::kTableReadOnly) : JetTableHandle();
  const jet::Session session = Session.Get().id;
  jet::IndexList list = {};
  list.size = sizeof(list);
  if (!opened || m_api->JetGetTableIndexInfo(session, opened.Get().id, nullptr, &list, sizeof(list),
                                             jet::kIndexList) < 0) {
    return kFail;
  }
  const JetTableHandle rows({m_api, session, list.table});
  for (jet::Code code = MoveTo(rows.Get(), jet::kMoveFirst); code == jet::kSuccess;
       code = MoveTo(rows.Get(), jet::kMoveNext)) {
    const auto index = ReadName(rows.Get(), list.indexName);
    auto column = index ? ReadName(rows.Get(), list.columnName) : std::nullopt;
    if (column) {
      (*indexes)[*index].push_back(*std::move(column));
    }
  }
  return kOk;
}

ResultCode JetDbWrapper::CreateSingleColumnIndex(const std::wstring& table,
                                                 const std::wstring& index,
                                                 const std::wstring& column) {
  const std::string key = "+" + Narrow(column);
  // Deliberate: the length is twice what the text needs. The engine stops at the second NUL, and
  // the bytes after it are zero.
  const size_t length = 2 * key.size() + 4;
  std::array<char, kKeyBuffer> buffer = {};
  if (length > buffer.size()) {
    return kFail;
  }
  std::copy(key.begin(), key.end(), buffer.begin());
  const JetTransaction transaction = BeginTransaction();
  const JetTableHandle opened =
      transaction ? OpenTable(table, jet::kTableUpdatable) : JetTableHandle();
  const bool isCreated =
      opened && m_api->JetCreateIndex(Session.Get().id, opened.Get().id, Narrow(index).c_str(), 0,
                                      buffer.data(), static_cast<uint32_t>(length),
                                      kDensity) == jet::kSuccess;
  return isCreated ? kOk : kFail;
}

std::wstring JetDbWrapper::FindOrCreateIndex(const std::wstring& table, const JetRow& filter,
                                             std::vector<std::wstring>* columns) {
  columns->clear();
  if (!IndexCache.contains(table)) {
    JetIndexes indexes;
    if (Failed(GetTableIndexes(table, &indexes))) {
      return {};
    }
    IndexCache[table] = std::move(indexes);
  }
  JetIndexes& indexes = IndexCache[table];
  for (const auto& [name, indexColumns] : indexes) {
    if (indexColumns.size() == filter.size() &&
        std::all_of(indexColumns.begin(), indexColumns.end(),
                    [&](const std::wstring& column) { return filter.contains(column); })) {
      *columns = indexColumns;
      return name;
    }
  }
  if (filter.size() != 1) {
    return {};
  }
  const std::wstring& column = filter.begin()->first;
  std::wstring name = L"KS" + column;
  std::erase(name, L'_');
  if (Failed(CreateSingleColumnIndex(table, name, column))) {
    return {};
  }
  *columns = indexes[name] = {column};
  return name;
}

ResultCode JetDbWrapper::Query(const std::wstring& table, const JetColumns& columns,
                               const JetRow& filter, const JetRow& required,
                               std::vector<JetRow>* rows) {
  rows->clear();
  return Visit(table, columns, filter, required, [rows](JetRow row) {
    rows->push_back(std::move(row));
    return true;
  });
}

ResultCode JetDbWrapper::Visit(const std::wstring& table, const JetColumns& columns,
                               const JetRow& filter, const JetRow& required,
                               const RowVisitor& visit) {
  std::wstring index;
  std::vector<std::wstring> indexColumns;
  if (!filter.empty()) {
    index = FindOrCreateIndex(table, filter, &indexColumns);
    if (index.empty()) {
      return kFail;
    }
  }
  const JetTransaction transaction = BeginTransaction();
  const JetTableHandle opened =
      transaction ? OpenTable(table, jet::kTableReadOnly) : JetTableHandle();
  if (!opened) {
    return kFail;
  }
  const JetTableRef chosen = opened.Get();
  jet::Code code = filter.empty() ? MoveTo(chosen, jet::kMoveFirst)
                                  : MoveToFiltered(chosen, index, indexColumns, columns, filter);
  for (; code == jet::kSuccess; code = MoveTo(chosen, jet::kMoveNext)) {
    if (!HasRequired(chosen, columns, required)) {
      continue;
    }
    JetRow row;
    for (const auto& [name, column] : columns) {
      if (std::optional<JetValue> value = ReadColumn(chosen, column)) {
        row.emplace_hint(row.end(), name, *std::move(value));
      }
    }
    if (!visit(std::move(row))) {
      break;
    }
  }
  return kOk;
}

}  // namespace postmarker
