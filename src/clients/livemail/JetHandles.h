// Owners of what the database engine hands out. Each knows the engine that it came from.
#pragma once

#include <string>

#include "clients/livemail/JetApi.h"
#include "support/UniqueHandle.h"

namespace postmarker {

// The handles are plain values, so each names the engine and what closing it takes. One without an
// engine is none.
struct JetInstanceRef {
  const JetApi* api;
  jet::Instance id;
};
struct JetSessionRef {
  const JetApi* api;
  jet::Session id;
};
struct JetDatabaseRef {
  const JetApi* api;
  jet::Session session;
  jet::DatabaseId id;
  const std::wstring* path;  // outlives the handle
};
struct JetTransactionRef {
  const JetApi* api;
  jet::Session session;
};
struct JetTableRef {
  const JetApi* api;
  jet::Session session;
  jet::TableId id;
};
struct JetInfoRef {
  const JetApi* api;
  jet::InstanceInfo* infos;
};

namespace jet_close {
inline void Close(JetInstanceRef instance) noexcept {
  instance.api->JetTerm(instance.id);  // owner
}
inline void Close(JetSessionRef session) noexcept {
  session.api->JetEndSession(session.id, 0);  // owner
}
inline void Close(JetDatabaseRef database) noexcept {
  database.api->JetCloseDatabase(database.session, database.id, 0);           // owner
  database.api->JetDetachDatabase(database.session, database.path->c_str());  // owner
}
inline void Close(JetTransactionRef transaction) noexcept {
  transaction.api->JetCommitTransaction(transaction.session, 0);  // owner
}
inline void Close(JetTableRef table) noexcept {
  table.api->JetCloseTable(table.session, table.id);  // owner
}
inline void Close(JetInfoRef info) noexcept {
  info.api->JetFreeBuffer(reinterpret_cast<char*>(info.infos));  // owner
}
}  // namespace jet_close

template <class Ref>
struct JetHandleTraits {
  using Type = Ref;
  static Type None() noexcept { return {}; }
  static bool IsOpen(Type handle) noexcept { return handle.api != nullptr; }
  static void Close(Type handle) noexcept { jet_close::Close(handle); }
};

using JetInstanceHandle = UniqueHandle<JetHandleTraits<JetInstanceRef>>;
using JetSessionHandle = UniqueHandle<JetHandleTraits<JetSessionRef>>;
using JetDatabaseHandle = UniqueHandle<JetHandleTraits<JetDatabaseRef>>;  // closes and detaches
using JetTransaction = UniqueHandle<JetHandleTraits<JetTransactionRef>>;  // commits
using JetTableHandle = UniqueHandle<JetHandleTraits<JetTableRef>>;
using JetInfoBuffer = UniqueHandle<JetHandleTraits<JetInfoRef>>;

}  // namespace postmarker
