// The state behind the reader's engine: instances, sessions, open databases and tables.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "clients/livemail/EseRows.h"
#include "clients/livemail/JetApi.h"

namespace postmarker {

// Does what the platform's engine does for reading, over the reader of the file format: one object
// stands for one process. Handles are numbers that never come back, so a stale one is refused.
// Operations give the engine's codes; those that it would not give by these arguments are noted.
// From one thread at a time.
class EseEngine {
 public:
  // A name that is in use is refused.
  jet::Code CreateInstance(jet::Instance* instance, const wchar_t* name);
  jet::Code Init(const jet::Instance* instance);
  // Ends what is still open in it. Handles of it are stale from then on.
  jet::Code Term(jet::Instance instance);

  // The running instances and their files, in one block for FreeBuffer.
  jet::Code GetInstanceInfo(uint32_t* count, jet::InstanceInfo** infos);
  jet::Code FreeBuffer(const char* buffer);

  jet::Code BeginSession(jet::Instance instance, jet::Session* session);
  jet::Code EndSession(jet::Session session);

  // Reads the header and the catalog. Sessions of one instance share the file.
  jet::Code AttachDatabase(jet::Session session, const std::wstring& path);
  // Refused while the database is open in a session.
  jet::Code DetachDatabase(jet::Session session, const std::wstring& path);
  jet::Code OpenDatabase(jet::Session session, const std::wstring& path, jet::DatabaseId* database);
  jet::Code CloseDatabase(jet::Session session, jet::DatabaseId database);

  // Nothing is ever written, so a transaction is a count.
  jet::Code BeginTransaction(jet::Session session);
  jet::Code CommitTransaction(jet::Session session);

  // Listings: the lists name only the columns that they have. All tables are listed, those of the
  // engine included.
  jet::Code GetTables(jet::Session session, jet::DatabaseId database, jet::ObjectList* list);
  jet::Code GetColumns(jet::Session session, jet::TableId table, jet::ColumnList* list);
  jet::Code GetIndexes(jet::Session session, jet::TableId table, jet::IndexList* list);

  jet::Code OpenTable(jet::Session session, jet::DatabaseId database, const char* name,
                      jet::Grbit grbit, jet::TableId* table);
  jet::Code CloseTable(jet::Session session, jet::TableId table);

  // The index stands in memory, for as long as the file is attached. `key` is "+", a column's name
  // and a NUL for each column, and a last NUL.
  jet::Code CreateIndex(jet::Session session, jet::TableId table, const char* name,
                        std::string_view key);

  // The rows behind a table handle, and those of a stored table. Null for handles that are not of
  // this session.
  [[nodiscard]] EseRows* FindRows(jet::Session session, jet::TableId table) const;
  [[nodiscard]] EseStoredRows* FindStored(jet::Session session, jet::TableId table) const;

 private:
  struct RunningInstance {
    std::wstring name;
    bool isRunning = false;
    std::vector<std::shared_ptr<EseAttachment>> files;
  };
  struct OpenSession {
    jet::Instance instance;
    uint32_t transactions = 0;
  };
  struct OpenedDatabase {
    jet::Session session;
    std::shared_ptr<EseAttachment> file;
  };
  struct OpenedTable {
    jet::Session session;
    bool isUpdatable;
    std::unique_ptr<EseRows> rows;
  };
  struct InfoBlock;

  [[nodiscard]] RunningInstance* InstanceOf(jet::Session session);
  [[nodiscard]] const OpenedDatabase* DatabaseOf(jet::Session session,
                                                 jet::DatabaseId database) const;
  jet::TableId AddListing(jet::Session session, std::vector<EseListing::Row> rows);

  uintptr_t m_nextHandle = 1;
  std::map<jet::Instance, RunningInstance> m_instances;
  std::map<jet::Session, OpenSession> m_sessions;
  std::map<jet::DatabaseId, OpenedDatabase> m_databases;
  std::map<jet::TableId, OpenedTable> m_tables;
  std::map<const char*, std::shared_ptr<InfoBlock>> m_infos;
};

}  // namespace postmarker
