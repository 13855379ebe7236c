#include "clients/livemail/EseEngine.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "support/Text.h"

namespace postmarker {
namespace {

template <class Number>
std::string BytesOf(Number number) {
  return {reinterpret_cast<const char*>(&number), sizeof(number)};
}

const std::shared_ptr<EseAttachment>* FindFile(
    const std::vector<std::shared_ptr<EseAttachment>>& files, const std::wstring& path) {
  const auto found = std::find_if(files.begin(), files.end(), [&path](const auto& file) {
    return EqualNoCase(file->Path(), path);
  });
  return found == files.end() ? nullptr : &*found;
}

// The columns that a key definition names.
std::optional<std::vector<ese::KeyColumn>> ParseKey(const ese::Table& table, std::string_view key) {
  std::vector<ese::KeyColumn> columns;
  while (!key.empty() && key.front() != '\0') {
    const std::string_view part = key.substr(0, key.find('\0'));
    key.remove_prefix(std::min(part.size() + 1, key.size()));
    const ese::Column* const column =
        part.front() == '+' || part.front() == '-' ? table.FindColumn(part.substr(1)) : nullptr;
    if (column == nullptr) {
      return std::nullopt;
    }
    columns.push_back({column->id, part.front() == '-', column->isFromTemplate});
  }
  return columns;
}

// A list of so many rows that names no columns yet.
template <class List>
void DescribeRows(const std::vector<EseListing::Row>& rows, List* list) {
  *list = {};
  list->size = sizeof(*list);
  list->recordCount = static_cast<uint32_t>(rows.size());
}

}  // namespace

// What GetInstanceInfo gives, and all that it points to.
struct EseEngine::InfoBlock {
  std::vector<jet::InstanceInfo> infos;
  std::vector<std::vector<wchar_t*>> fileNames;
  std::vector<std::wstring> texts;
};

jet::Code EseEngine::CreateInstance(jet::Instance* instance, const wchar_t* name) {
  for (const auto& [handle, running] : m_instances) {
    if (EqualNoCase(running.name, name)) {
      return jet::kInstanceNameInUse;
    }
  }
  *instance = m_nextHandle++;
  m_instances[*instance].name = name;
  return jet::kSuccess;
}

jet::Code EseEngine::Init(const jet::Instance* instance) {
  const auto found = m_instances.find(*instance);
  if (found == m_instances.end()) {
    return jet::kInvalidInstance;
  }
  found->second.isRunning = true;
  return jet::kSuccess;
}

jet::Code EseEngine::Term(jet::Instance instance) {
  if (m_instances.erase(instance) == 0) {
    return jet::kInvalidInstance;
  }
  std::vector<jet::Session> sessions;
  for (const auto& [handle, session] : m_sessions) {
    if (session.instance == instance) {
      sessions.push_back(handle);
    }
  }
  for (const jet::Session session : sessions) {
    EndSession(session);
  }
  return jet::kSuccess;
}

jet::Code EseEngine::GetInstanceInfo(uint32_t* count, jet::InstanceInfo** infos) {
  auto block = std::make_shared<InfoBlock>();
  // Texts must not move once they are pointed to.
  size_t texts = m_instances.size();
  for (const auto& [handle, instance] : m_instances) {
    texts += instance.files.size();
  }
  block->texts.reserve(texts);
  block->fileNames.reserve(m_instances.size());
  const auto keep = [&block](const std::wstring& text) {
    return block->texts.emplace_back(text).data();
  };
  for (const auto& [handle, instance] : m_instances) {
    if (!instance.isRunning) {
      continue;
    }
    std::vector<wchar_t*>& names = block->fileNames.emplace_back();
    for (const std::shared_ptr<EseAttachment>& file : instance.files) {
      names.push_back(keep(file->Path()));
    }
    wchar_t** const array = names.empty() ? nullptr : names.data();
    block->infos.push_back({handle, keep(instance.name), names.size(), array, array, nullptr});
  }
  *count = static_cast<uint32_t>(block->infos.size());
  *infos = block->infos.empty() ? nullptr : block->infos.data();
  if (*infos != nullptr) {
    m_infos[reinterpret_cast<const char*>(*infos)] = std::move(block);
  }
  return jet::kSuccess;
}

jet::Code EseEngine::FreeBuffer(const char* buffer) {
  return buffer == nullptr || m_infos.erase(buffer) > 0 ? jet::kSuccess : jet::kInvalidParameter;
}

jet::Code EseEngine::BeginSession(jet::Instance instance, jet::Session* session) {
  const auto found = m_instances.find(instance);
  if (found == m_instances.end() || !found->second.isRunning) {
    return jet::kInvalidInstance;
  }
  *session = m_nextHandle++;
  m_sessions[*session] = {instance};
  return jet::kSuccess;
}

jet::Code EseEngine::EndSession(jet::Session session) {
  if (m_sessions.erase(session) == 0) {
    return jet::kInvalidSession;
  }
  std::erase_if(m_tables, [session](const auto& table) { return table.second.session == session; });
  std::erase_if(m_databases,
                [session](const auto& database) { return database.second.session == session; });
  return jet::kSuccess;
}

EseEngine::RunningInstance* EseEngine::InstanceOf(jet::Session session) {
  const auto found = m_sessions.find(session);
  return found == m_sessions.end() ? nullptr : &m_instances.at(found->second.instance);
}

jet::Code EseEngine::AttachDatabase(jet::Session session, const std::wstring& path) {
  RunningInstance* const instance = InstanceOf(session);
  if (instance == nullptr) {
    return jet::kInvalidSession;
  }
  if (FindFile(instance->files, path) != nullptr) {
    return jet::kDatabaseAttached;
  }
  jet::Code error = jet::kSuccess;
  std::shared_ptr<EseAttachment> file = EseAttachment::Open(path, &error);
  if (file) {
    instance->files.push_back(std::move(file));
  }
  return error;
}

jet::Code EseEngine::DetachDatabase(jet::Session session, const std::wstring& path) {
  RunningInstance* const instance = InstanceOf(session);
  if (instance == nullptr) {
    return jet::kInvalidSession;
  }
  const std::shared_ptr<EseAttachment>* const file = FindFile(instance->files, path);
  if (file == nullptr) {
    return jet::kDatabaseNotFound;
  }
  const bool isOpen = std::any_of(m_databases.begin(), m_databases.end(),
                                  [&](const auto& opened) { return opened.second.file == *file; });
  if (isOpen) {
    return jet::kDatabaseInUse;
  }
  instance->files.erase(instance->files.begin() + (file - instance->files.data()));
  return jet::kSuccess;
}

jet::Code EseEngine::OpenDatabase(jet::Session session, const std::wstring& path,
                                  jet::DatabaseId* database) {
  RunningInstance* const instance = InstanceOf(session);
  if (instance == nullptr) {
    return jet::kInvalidSession;
  }
  const std::shared_ptr<EseAttachment>* const file = FindFile(instance->files, path);
  if (file == nullptr) {
    return jet::kDatabaseNotFound;
  }
  *database = static_cast<jet::DatabaseId>(m_nextHandle++);
  m_databases[*database] = {session, *file};
  return jet::kSuccess;
}

const EseEngine::OpenedDatabase* EseEngine::DatabaseOf(jet::Session session,
                                                       jet::DatabaseId database) const {
  const auto found = m_databases.find(database);
  return found == m_databases.end() || found->second.session != session ? nullptr : &found->second;
}

jet::Code EseEngine::CloseDatabase(jet::Session session, jet::DatabaseId database) {
  if (DatabaseOf(session, database) == nullptr) {
    return jet::kInvalidDatabaseId;
  }
  m_databases.erase(database);
  return jet::kSuccess;
}

jet::Code EseEngine::BeginTransaction(jet::Session session) {
  const auto found = m_sessions.find(session);
  if (found == m_sessions.end()) {
    return jet::kInvalidSession;
  }
  ++found->second.transactions;
  return jet::kSuccess;
}

jet::Code EseEngine::CommitTransaction(jet::Session session) {
  const auto found = m_sessions.find(session);
  if (found == m_sessions.end()) {
    return jet::kInvalidSession;
  }
  if (found->second.transactions == 0) {
    return jet::kNotInTransaction;
  }
  --found->second.transactions;
  return jet::kSuccess;
}

jet::TableId EseEngine::AddListing(jet::Session session, std::vector<EseListing::Row> rows) {
  const jet::TableId table = m_nextHandle++;
  m_tables[table] = {session, false, std::make_unique<EseListing>(std::move(rows))};
  return table;
}

jet::Code EseEngine::GetTables(jet::Session session, jet::DatabaseId database,
                               jet::ObjectList* list) {
  const OpenedDatabase* const opened = DatabaseOf(session, database);
  if (opened == nullptr) {
    return jet::kInvalidDatabaseId;
  }
  std::vector<EseListing::Row> rows;
  for (const ese::Table& table : opened->file->Database().Tables()) {
    rows.push_back({table.name, BytesOf(jet::kTables), BytesOf(table.flags)});
  }
  DescribeRows(rows, list);
  list->objectName = 1;
  list->objectType = 2;
  list->flags = 3;
  list->table = AddListing(session, std::move(rows));
  return jet::kSuccess;
}

jet::Code EseEngine::GetColumns(jet::Session session, jet::TableId table, jet::ColumnList* list) {
  const EseStoredRows* const stored = FindStored(session, table);
  if (stored == nullptr) {
    return jet::kInvalidTableId;
  }
  std::vector<const ese::Column*> columns = stored->Table().AllColumns();
  std::stable_sort(columns.begin(), columns.end(), [](const auto* a, const auto* b) {
    return EseStoredRows::IdOf(*a) < EseStoredRows::IdOf(*b);
  });
  std::vector<EseListing::Row> rows;
  rows.reserve(columns.size());
  for (const ese::Column* const column : columns) {
    // The engine has code pages in two bytes.
    rows.push_back({column->name, BytesOf(EseStoredRows::IdOf(*column)), BytesOf(column->type),
                    BytesOf(static_cast<uint16_t>(column->codePage))});
  }
  DescribeRows(rows, list);
  list->columnName = 1;
  list->columnId = 2;
  list->columnType = 3;
  list->codePage = 4;
  list->table = AddListing(session, std::move(rows));
  return jet::kSuccess;
}

jet::Code EseEngine::GetIndexes(jet::Session session, jet::TableId table, jet::IndexList* list) {
  const EseStoredRows* const stored = FindStored(session, table);
  if (stored == nullptr) {
    return jet::kInvalidTableId;
  }
  std::vector<EseListing::Row> rows;
  for (const ese::Index* const index : stored->File().IndexesOf(stored->Table())) {
    uint32_t number = 0;
    for (const ese::KeyColumn& key : index->columns) {
      const ese::Column* const column = stored->Table().FindColumn(key);
      rows.push_back({index->name, BytesOf(number++),
                      column == nullptr ? std::nullopt : std::optional(column->name)});
    }
  }
  DescribeRows(rows, list);
  list->indexName = 1;
  list->columnNumber = 2;
  list->columnName = 3;
  list->table = AddListing(session, std::move(rows));
  return jet::kSuccess;
}

jet::Code EseEngine::OpenTable(jet::Session session, jet::DatabaseId database, const char* name,
                               jet::Grbit grbit, jet::TableId* table) {
  const OpenedDatabase* const opened = DatabaseOf(session, database);
  if (opened == nullptr) {
    return jet::kInvalidDatabaseId;
  }
  const ese::Table* const found = opened->file->Database().FindTable(name);
  if (found == nullptr) {
    return jet::kObjectNotFound;
  }
  *table = m_nextHandle++;
  m_tables[*table] = {session, grbit == jet::kTableUpdatable,
                      std::make_unique<EseStoredRows>(opened->file, *found)};
  return jet::kSuccess;
}

jet::Code EseEngine::CloseTable(jet::Session session, jet::TableId table) {
  if (FindRows(session, table) == nullptr) {
    return jet::kInvalidTableId;
  }
  m_tables.erase(table);
  return jet::kSuccess;
}

EseRows* EseEngine::FindRows(jet::Session session, jet::TableId table) const {
  const auto found = m_tables.find(table);
  return found == m_tables.end() || found->second.session != session ? nullptr
                                                                     : found->second.rows.get();
}

EseStoredRows* EseEngine::FindStored(jet::Session session, jet::TableId table) const {
  return dynamic_cast<EseStoredRows*>(FindRows(session, table));
}

jet::Code EseEngine::CreateIndex(jet::Session session, jet::TableId table, const char* name,
                                 std::string_view key) {
  EseStoredRows* const stored = FindStored(session, table);
  if (stored == nullptr) {
    return jet::kInvalidTableId;
  }
  if (!m_tables.at(table).isUpdatable) {
    return jet::kPermissionDenied;
  }
  const std::vector<const ese::Index*> indexes = stored->File().IndexesOf(stored->Table());
  if (std::any_of(indexes.begin(), indexes.end(),
                  [name](const ese::Index* index) { return ese::IsSameName(index->name, name); })) {
    return jet::kIndexDuplicate;
  }
  std::optional<std::vector<ese::KeyColumn>> columns = ParseKey(stored->Table(), key);
  if (!columns) {
    return jet::kColumnNotFound;
  }
  if (columns->empty()) {
    return jet::kIndexInvalidDefinition;
  }
  ese::Index definition;
  definition.name = name;
  definition.columns = *std::move(columns);
  stored->File().AddIndex(stored->Table(), std::move(definition));
  return jet::kSuccess;
}

}  // namespace postmarker
