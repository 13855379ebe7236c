// The database engine's interface, as its own header has it, for all systems. Names, order of
// fields and sizes are the engine's; only the types have names of ours.
#pragma once

#include <cstdint>

#include "postmarker/ProgressCallbacks.h"

namespace postmarker::jet {

using Code = int32_t;  // 0, a positive warning, or a negative error
using Instance = uintptr_t;
using Session = uintptr_t;
using TableId = uintptr_t;
using DatabaseId = uint32_t;
using ColumnId = uint32_t;
using Grbit = uint32_t;

inline constexpr Session kNoSession = ~Session{0};

// Warnings and errors.
inline constexpr Code kSuccess = 0;
inline constexpr Code kColumnNull = 1004;
inline constexpr Code kBufferTruncated = 1006;
inline constexpr Code kDatabaseAttached = 1007;
inline constexpr Code kSeekNotEqual = 1039;
inline constexpr Code kInvalidGrbit = -900;
inline constexpr Code kInvalidParameter = -1003;
inline constexpr Code kOutOfMemory = -1011;
inline constexpr Code kDiskIo = -1022;
inline constexpr Code kFileAccessDenied = -1032;
inline constexpr Code kInvalidBufferSize = -1047;
inline constexpr Code kNotInTransaction = -1054;
inline constexpr Code kInstanceNameInUse = -1086;
inline constexpr Code kInvalidInstance = -1115;
inline constexpr Code kInvalidSession = -1104;
inline constexpr Code kDatabaseInUse = -1202;
inline constexpr Code kDatabaseNotFound = -1203;
inline constexpr Code kDatabaseCorrupted = -1206;
inline constexpr Code kInvalidDatabaseVersion = -1209;
inline constexpr Code kInvalidDatabaseId = -1010;
inline constexpr Code kObjectNotFound = -1305;
inline constexpr Code kInvalidTableId = -1310;
inline constexpr Code kIndexDuplicate = -1403;
inline constexpr Code kIndexNotFound = -1404;
inline constexpr Code kIndexInvalidDefinition = -1406;
inline constexpr Code kColumnNotFound = -1507;
inline constexpr Code kNoCurrentIndex = -1515;
inline constexpr Code kKeyIsMade = -1516;
inline constexpr Code kRecordNotFound = -1601;
inline constexpr Code kNoCurrentRecord = -1603;
inline constexpr Code kKeyNotMade = -1608;
inline constexpr Code kPermissionDenied = -1809;
inline constexpr Code kFileNotFound = -1811;

// Parameters of the engine.
inline constexpr uint32_t kSystemPath = 0;
inline constexpr uint32_t kTempPath = 1;
inline constexpr uint32_t kLogFilePath = 2;
inline constexpr uint32_t kAccessDeniedRetryPeriod = 53;
inline constexpr uint32_t kDatabasePageSize = 64;

// Flags, kinds of listings, and steps.
inline constexpr Grbit kTableReadOnly = 4;
inline constexpr Grbit kTableUpdatable = 8;
inline constexpr Grbit kNewKey = 1;
inline constexpr Grbit kSeekGreaterOrEqual = 8;
inline constexpr Grbit kRangeInclusive = 1;
inline constexpr Grbit kRangeUpperLimit = 2;
inline constexpr uint32_t kTables = 1;          // objects of this type
inline constexpr uint32_t kObjectList = 1;      // level of information
inline constexpr uint32_t kColumnListById = 7;  // level of information
inline constexpr uint32_t kIndexList = 1;       // level of information
inline constexpr int32_t kMoveFirst = INT32_MIN;
inline constexpr int32_t kMoveNext = 1;

struct InstanceInfo {
  Instance instance;
  wchar_t* name;
  uintptr_t databaseCount;
  wchar_t** databaseFileNames;
  wchar_t** databaseDisplayNames;
  wchar_t** obsolete;
};

// Each list names a temporary table and the ids of its columns.
struct ObjectList {
  uint32_t size;
  TableId table;
  uint32_t recordCount;
  ColumnId containerName;
  ColumnId objectName;
  ColumnId objectType;
  ColumnId created;
  ColumnId updated;
  ColumnId grbit;
  ColumnId flags;
  ColumnId recordCountOfTable;
  ColumnId pageCount;
};

struct ColumnList {
  uint32_t size;
  TableId table;
  uint32_t recordCount;
  ColumnId presentationOrder;
  ColumnId columnName;
  ColumnId columnId;
  ColumnId columnType;
  ColumnId country;
  ColumnId language;
  ColumnId codePage;
  ColumnId collate;
  ColumnId maximum;
  ColumnId grbit;
  ColumnId defaultValue;
  ColumnId baseTableName;
  ColumnId baseColumnName;
  ColumnId definitionName;
};

struct IndexList {
  uint32_t size;
  TableId table;
  uint32_t recordCount;
  ColumnId indexName;
  ColumnId grbitOfIndex;
  ColumnId keyCount;
  ColumnId entryCount;
  ColumnId pageCount;
  ColumnId columnCount;
  ColumnId columnNumber;
  ColumnId columnId;
  ColumnId columnType;
  ColumnId country;
  ColumnId language;
  ColumnId codePage;
  ColumnId collate;
  ColumnId grbitOfColumn;
  ColumnId columnName;
  ColumnId mapFlags;
};

static_assert(sizeof(InstanceInfo) == 6 * sizeof(void*));
static_assert(sizeof(ObjectList) == (sizeof(void*) == 8 ? 56 : 48));
static_assert(sizeof(ColumnList) == (sizeof(void*) == 8 ? 80 : 68));
static_assert(sizeof(IndexList) == (sizeof(void*) == 8 ? 88 : 76));

}  // namespace postmarker::jet

namespace postmarker {

// The functions of the engine that JetDbWrapper calls. Paths are UTF-16, names of tables, columns
// and indexes are bytes in the code page of the platform. What each function promises is told in
// the engine's documentation; a table of them is never changed once it is made.
struct JetApi {
  template <class... Arguments>
  using Function = jet::Code(POSTMARKER_CALL*)(Arguments...);

  Function<jet::Instance*, jet::Session, uint32_t, uintptr_t, const wchar_t*> JetSetSystemParameter;
  Function<uint32_t*, jet::InstanceInfo**> JetGetInstanceInfo;
  Function<char*> JetFreeBuffer;
  Function<jet::Instance*, const wchar_t*> JetCreateInstance;
  Function<jet::Instance*> JetInit;
  Function<jet::Instance> JetTerm;
  Function<jet::Instance, jet::Session*, const char*, const char*> JetBeginSession;
  Function<jet::Session, jet::Grbit> JetEndSession;
  Function<jet::Session, const wchar_t*, jet::Grbit> JetAttachDatabase;
  Function<jet::Session, const wchar_t*> JetDetachDatabase;
  Function<jet::Session, const wchar_t*, const wchar_t*, jet::DatabaseId*, jet::Grbit>
      JetOpenDatabase;
  Function<jet::Session, jet::DatabaseId, jet::Grbit> JetCloseDatabase;
  Function<jet::Session> JetBeginTransaction;
  Function<jet::Session, jet::Grbit> JetCommitTransaction;
  Function<jet::Session, jet::DatabaseId, uint32_t, const char*, const char*, void*, uint32_t,
           uint32_t>
      JetGetObjectInfo;
  Function<jet::Session, jet::TableId, const char*, void*, uint32_t, uint32_t>
      JetGetTableColumnInfo;
  Function<jet::Session, jet::TableId, const char*, void*, uint32_t, uint32_t> JetGetTableIndexInfo;
  Function<jet::Session, jet::DatabaseId, const char*, const void*, uint32_t, jet::Grbit,
           jet::TableId*>
      JetOpenTable;
  Function<jet::Session, jet::TableId> JetCloseTable;
  Function<jet::Session, jet::TableId, int32_t, jet::Grbit> JetMove;
  Function<jet::Session, jet::TableId, jet::ColumnId, void*, uint32_t, uint32_t*, jet::Grbit, void*>
      JetRetrieveColumn;
  Function<jet::Session, jet::TableId, const char*, jet::Grbit, const char*, uint32_t, uint32_t>
      JetCreateIndex;
  Function<jet::Session, jet::TableId, const char*> JetSetCurrentIndex;
  Function<jet::Session, jet::TableId, const void*, uint32_t, jet::Grbit> JetMakeKey;
  Function<jet::Session, jet::TableId, jet::Grbit> JetSeek;
  Function<jet::Session, jet::TableId, jet::Grbit> JetSetIndexRange;
};

}  // namespace postmarker
