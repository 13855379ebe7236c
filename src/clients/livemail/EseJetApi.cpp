#include "clients/livemail/EseJetApi.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <mutex>
#include <string_view>

#include "clients/livemail/EseEngine.h"
#include "clients/livemail/ReadGuard.h"

namespace postmarker {
namespace {

using namespace jet;

// The one engine of the process.
struct SharedEngine {
  std::mutex lock;
  EseEngine engine;
};

SharedEngine& Shared() {
  static SharedEngine shared;
  return shared;
}

// Runs `work` on the engine: one call at a time, and without an exception. If the drive with the
// file goes away, the call fails: nothing may pass the lock by.
template <class Work>
Code WithEngine(Work work) noexcept {
  SharedEngine& shared = Shared();
  const std::lock_guard guard(shared.lock);
  Code code = kDiskIo;
  (void)RunReading([&]() noexcept {
    try {
      code = work(shared.engine);
    } catch (const std::exception&) {
      code = kOutOfMemory;
    }
  });
  return code;
}

// The same on the rows behind a handle.
template <class Work>
Code WithRows(Session session, TableId table, Work work) {
  return WithEngine([&](EseEngine& engine) {
    EseRows* const rows = engine.FindRows(session, table);
    return rows == nullptr ? kInvalidTableId : work(*rows);
  });
}

template <class Work>
Code WithStored(Session session, TableId table, Work work) {
  return WithEngine([&](EseEngine& engine) {
    EseStoredRows* const rows = engine.FindStored(session, table);
    return rows == nullptr ? kInvalidTableId : work(*rows);
  });
}

Code POSTMARKER_CALL SetSystemParameter(Instance* /*instance*/, Session /*session*/,
                                        uint32_t /*parameter*/, uintptr_t /*number*/,
                                        const wchar_t* /*text*/) {
  // Each file tells the size of its pages, and no file is ever made: no parameter matters.
  return kSuccess;
}

Code POSTMARKER_CALL GetInstanceInfo(uint32_t* count, InstanceInfo** infos) {
  return WithEngine([&](EseEngine& engine) { return engine.GetInstanceInfo(count, infos); });
}

Code POSTMARKER_CALL FreeBuffer(char* buffer) {
  return WithEngine([&](EseEngine& engine) { return engine.FreeBuffer(buffer); });
}

Code POSTMARKER_CALL CreateInstance(Instance* instance, const wchar_t* name) {
  return WithEngine([&](EseEngine& engine) { return engine.CreateInstance(instance, name); });
}

Code POSTMARKER_CALL Init(Instance* instance) {
  return WithEngine([&](EseEngine& engine) { return engine.Init(instance); });
}

Code POSTMARKER_CALL Term(Instance instance) {
  return WithEngine([&](EseEngine& engine) { return engine.Term(instance); });
}

Code POSTMARKER_CALL BeginSession(Instance instance, Session* session, const char* /*user*/,
                                  const char* /*password*/) {
  return WithEngine([&](EseEngine& engine) { return engine.BeginSession(instance, session); });
}

Code POSTMARKER_CALL EndSession(Session session, Grbit /*grbit*/) {
  return WithEngine([&](EseEngine& engine) { return engine.EndSession(session); });
}

Code POSTMARKER_CALL AttachDatabase(Session session, const wchar_t* path, Grbit /*grbit*/) {
  return WithEngine([&](EseEngine& engine) { return engine.AttachDatabase(session, path); });
}

Code POSTMARKER_CALL DetachDatabase(Session session, const wchar_t* path) {
  return WithEngine([&](EseEngine& engine) { return engine.DetachDatabase(session, path); });
}

Code POSTMARKER_CALL OpenDatabase(Session session, const wchar_t* path, const wchar_t* /*connect*/,
                                  DatabaseId* database, Grbit /*grbit*/) {
  return WithEngine(
      [&](EseEngine& engine) { return engine.OpenDatabase(session, path, database); });
}

Code POSTMARKER_CALL CloseDatabase(Session session, DatabaseId database, Grbit /*grbit*/) {
  return WithEngine([&](EseEngine& engine) { return engine.CloseDatabase(session, database); });
}

Code POSTMARKER_CALL BeginTransaction(Session session) {
  return WithEngine([&](EseEngine& engine) { return engine.BeginTransaction(session); });
}

Code POSTMARKER_CALL CommitTransaction(Session session, Grbit /*grbit*/) {
  return WithEngine([&](EseEngine& engine) { return engine.CommitTransaction(session); });
}

Code POSTMARKER_CALL GetObjectInfo(Session session, DatabaseId database, uint32_t type,
                                   const char* /*container*/, const char* object, void* result,
                                   uint32_t size, uint32_t level) {
  if (type != kTables || object != nullptr || level != kObjectList || size < sizeof(ObjectList)) {
    return kInvalidParameter;
  }
  return WithEngine([&](EseEngine& engine) {
    return engine.GetTables(session, database, static_cast<ObjectList*>(result));
  });
}

Code POSTMARKER_CALL GetTableColumnInfo(Session session, TableId table, const char* column,
                                        void* result, uint32_t size, uint32_t level) {
  if (column != nullptr || level != kColumnListById || size < sizeof(ColumnList)) {
    return kInvalidParameter;
  }
  return WithEngine([&](EseEngine& engine) {
    return engine.GetColumns(session, table, static_cast<ColumnList*>(result));
  });
}

Code POSTMARKER_CALL GetTableIndexInfo(Session session, TableId table, const char* index,
                                       void* result, uint32_t size, uint32_t level) {
  if (index != nullptr || level != kIndexList || size < sizeof(IndexList)) {
    return kInvalidParameter;
  }
  return WithEngine([&](EseEngine& engine) {
    return engine.GetIndexes(session, table, static_cast<IndexList*>(result));
  });
}

Code POSTMARKER_CALL OpenTable(Session session, DatabaseId database, const char* name,
                               const void* /*parameters*/, uint32_t /*size*/, Grbit grbit,
                               TableId* table) {
  return WithEngine(
      [&](EseEngine& engine) { return engine.OpenTable(session, database, name, grbit, table); });
}

Code POSTMARKER_CALL CloseTable(Session session, TableId table) {
  return WithEngine([&](EseEngine& engine) { return engine.CloseTable(session, table); });
}

Code POSTMARKER_CALL Move(Session session, TableId table, int32_t step, Grbit /*grbit*/) {
  return WithRows(session, table, [&](EseRows& rows) { return rows.Move(step); });
}

Code POSTMARKER_CALL RetrieveColumn(Session session, TableId table, ColumnId column, void* data,
                                    uint32_t size, uint32_t* actual, Grbit /*grbit*/,
                                    void* /*which*/) {
  std::string value;
  size_t fullSize = 0;
  const Code code = WithRows(
      session, table, [&](EseRows& rows) { return rows.Read(column, size, &value, &fullSize); });
  if (actual != nullptr) {
    *actual = code == kSuccess ? static_cast<uint32_t>(fullSize) : 0;
  }
  if (code != kSuccess) {
    return code;
  }
  if (data != nullptr && !value.empty()) {
    std::memcpy(data, value.data(), std::min<size_t>(value.size(), size));
  }
  return fullSize > size ? kBufferTruncated : kSuccess;
}

Code POSTMARKER_CALL CreateIndex(Session session, TableId table, const char* name, Grbit /*grbit*/,
                                 const char* key, uint32_t keySize, uint32_t /*density*/) {
  return WithEngine([&](EseEngine& engine) {
    return engine.CreateIndex(session, table, name, std::string_view(key, keySize));
  });
}

Code POSTMARKER_CALL SetCurrentIndex(Session session, TableId table, const char* name) {
  return WithStored(session, table,
                    [&](EseStoredRows& rows) { return rows.SetCurrentIndex(name); });
}

Code POSTMARKER_CALL MakeKey(Session session, TableId table, const void* data, uint32_t size,
                             Grbit grbit) {
  return WithStored(session, table,
                    [&](EseStoredRows& rows) { return rows.MakeKey(data, size, grbit); });
}

Code POSTMARKER_CALL Seek(Session session, TableId table, Grbit grbit) {
  return WithStored(session, table, [&](EseStoredRows& rows) { return rows.Seek(grbit); });
}

Code POSTMARKER_CALL SetIndexRange(Session session, TableId table, Grbit grbit) {
  return WithStored(session, table, [&](EseStoredRows& rows) { return rows.SetIndexRange(grbit); });
}

constexpr JetApi kApi = {
    .JetSetSystemParameter = SetSystemParameter,
    .JetGetInstanceInfo = GetInstanceInfo,
    .JetFreeBuffer = FreeBuffer,
    .JetCreateInstance = CreateInstance,
    .JetInit = Init,
    .JetTerm = Term,
    .JetBeginSession = BeginSession,
    .JetEndSession = EndSession,
    .JetAttachDatabase = AttachDatabase,
    .JetDetachDatabase = DetachDatabase,
    .JetOpenDatabase = OpenDatabase,
    .JetCloseDatabase = CloseDatabase,
    .JetBeginTransaction = BeginTransaction,
    .JetCommitTransaction = CommitTransaction,
    .JetGetObjectInfo = GetObjectInfo,
    .JetGetTableColumnInfo = GetTableColumnInfo,
    .JetGetTableIndexInfo = GetTableIndexInfo,
    .JetOpenTable = OpenTable,
    .JetCloseTable = CloseTable,
    .JetMove = Move,
    .JetRetrieveColumn = RetrieveColumn,
    .JetCreateIndex = CreateIndex,
    .JetSetCurrentIndex = SetCurrentIndex,
    .JetMakeKey = MakeKey,
    .JetSeek = Seek,
    .JetSetIndexRange = SetIndexRange,
};

}  // namespace

const JetApi& EseJetApi() {
  return kApi;
}

}  // namespace postmarker
