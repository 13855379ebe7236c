// A database engine that writes down each call and can fail at any of them. What the calls do is
// done by the engine over the reader, on a file that the test made.
#pragma once

#include <cstdint>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "clients/livemail/EseJetApi.h"
#include "support/Text.h"

namespace postmarker::test {

// What the one recording engine of a test program has seen. Reset before each use.
struct JetRecord {
  std::vector<std::string> calls;   // name and what matters of the arguments
  int failAt = 0;                   // the number of the call that fails, from 1; 0: none
  jet::Code failure = -1;           // with this code
  std::map<std::string, int> open;  // by kind, what is still to be closed

  [[nodiscard]] bool NothingIsOpen() const {
    for (const auto& [kind, count] : open) {
      if (count != 0) {
        return false;
      }
    }
    return true;
  }
};

inline JetRecord& Recorded() {
  static JetRecord record;
  return record;
}

namespace recording_jet {

template <class... Parts>
std::string Line(const Parts&... parts) {
  std::ostringstream line;
  const char* separator = "";
  ((line << separator << parts, separator = " "), ...);
  return line.str();
}

inline std::string PathText(const wchar_t* path) {
  return path == nullptr ? "null" : NarrowUtf8(path);
}

inline const char* NameText(const char* name) {
  return name == nullptr ? "null" : name;
}

// Notes a call that makes something; it fails in the place of the engine if it is its turn.
template <class Work>
jet::Code Note(const std::string& line, Work work) {
  JetRecord& record = Recorded();
  record.calls.push_back(line);
  return static_cast<int>(record.calls.size()) == record.failAt ? record.failure : work();
}

template <class Work>
jet::Code Opens(const char* kind, const std::string& line, Work work) {
  const jet::Code code = Note(line, work);
  Recorded().open[kind] += code >= 0 ? 1 : 0;
  return code;
}

// A call that closes closes also where it fails.
template <class Work>
jet::Code Closes(const char* kind, const std::string& line, Work work) {
  --Recorded().open[kind];
  const jet::Code code = work();
  return Note(line, [code] { return code; });
}

// The functions of the table have the platform's calling convention, which a lambda can't have
// where it differs from the compiler's own, as in 32 bits.
template <class Lambda>
struct LambdaFunction {
  template <class... Arguments>
  static jet::Code POSTMARKER_CALL Call(Arguments... arguments) {
    return Lambda{}(arguments...);
  }

  template <class... Arguments>
  operator JetApi::Function<Arguments...>() const {
    return &Call<Arguments...>;
  }
};

template <class Lambda>
LambdaFunction<Lambda> AsFunction(Lambda /*lambda*/) {
  return {};
}

inline JetApi MakeOpening() {
  static const JetApi& engine = EseJetApi();
  JetApi api = engine;
  api.JetSetSystemParameter = AsFunction([](jet::Instance* instance, jet::Session session,
                                            uint32_t parameter, uintptr_t number,
                                            const wchar_t* text) -> jet::Code {
    const char* const whose = instance != nullptr ? "instance" : "process";
    const bool isNone = session == jet::kNoSession;
    return Note(
        Line("SetSystemParameter", whose, isNone ? "nil" : std::to_string(session), parameter,
             number, PathText(text)),
        [&] { return engine.JetSetSystemParameter(instance, session, parameter, number, text); });
  });
  api.JetGetInstanceInfo = AsFunction([](uint32_t* count, jet::InstanceInfo** infos) -> jet::Code {
    const jet::Code code =
        Note("GetInstanceInfo", [&] { return engine.JetGetInstanceInfo(count, infos); });
    Recorded().open["buffer"] += code >= 0 && *infos != nullptr ? 1 : 0;
    return code;
  });
  api.JetFreeBuffer = AsFunction([](char* buffer) -> jet::Code {
    return Closes("buffer", "FreeBuffer", [&] { return engine.JetFreeBuffer(buffer); });
  });
  api.JetCreateInstance = AsFunction([](jet::Instance* instance, const wchar_t* name) -> jet::Code {
    return Opens("instance", Line("CreateInstance", PathText(name)),
                 [&] { return engine.JetCreateInstance(instance, name); });
  });
  api.JetInit = AsFunction([](jet::Instance* instance) -> jet::Code {
    return Note("Init", [&] { return engine.JetInit(instance); });
  });
  api.JetTerm = AsFunction([](jet::Instance instance) -> jet::Code {
    return Closes("instance", "Term", [&] { return engine.JetTerm(instance); });
  });
  api.JetBeginSession = AsFunction([](jet::Instance instance, jet::Session* session,
                                      const char* user, const char* password) -> jet::Code {
    return Opens("session", Line("BeginSession", NameText(user), NameText(password)),
                 [&] { return engine.JetBeginSession(instance, session, user, password); });
  });
  api.JetEndSession = AsFunction([](jet::Session session, jet::Grbit grbit) -> jet::Code {
    return Closes("session", Line("EndSession", grbit),
                  [&] { return engine.JetEndSession(session, grbit); });
  });
  return api;
}

inline void AddDatabase(JetApi* api) {
  static const JetApi& engine = EseJetApi();
  api->JetAttachDatabase =
      AsFunction([](jet::Session session, const wchar_t* path, jet::Grbit grbit) -> jet::Code {
        return Note(Line("AttachDatabase", grbit),
                    [&] { return engine.JetAttachDatabase(session, path, grbit); });
      });
  api->JetDetachDatabase = AsFunction([](jet::Session session, const wchar_t* path) -> jet::Code {
    return Note("DetachDatabase", [&] { return engine.JetDetachDatabase(session, path); });
  });
  api->JetOpenDatabase =
      AsFunction([](jet::Session session, const wchar_t* path, const wchar_t* connect,
                    jet::DatabaseId* database, jet::Grbit grbit) -> jet::Code {
        return Opens("database", Line("OpenDatabase", PathText(connect), grbit), [&] {
          return engine.JetOpenDatabase(session, path, connect, database, grbit);
        });
      });
  api->JetCloseDatabase =
      AsFunction([](jet::Session session, jet::DatabaseId database, jet::Grbit grbit) -> jet::Code {
        return Closes("database", Line("CloseDatabase", grbit),
                      [&] { return engine.JetCloseDatabase(session, database, grbit); });
      });
  api->JetBeginTransaction = AsFunction([](jet::Session session) -> jet::Code {
    return Opens("transaction", "BeginTransaction",
                 [&] { return engine.JetBeginTransaction(session); });
  });
  api->JetCommitTransaction = AsFunction([](jet::Session session, jet::Grbit grbit) -> jet::Code {
    return Closes("transaction", Line("CommitTransaction", grbit),
                  [&] { return engine.JetCommitTransaction(session, grbit); });
  });
}

inline void AddListings(JetApi* api) {
  static const JetApi& engine = EseJetApi();
  api->JetGetObjectInfo = AsFunction([](jet::Session session, jet::DatabaseId database,
                                        uint32_t type, const char* container, const char* object,
                                        void* result, uint32_t size, uint32_t level) -> jet::Code {
    return Opens("table",
                 Line("GetObjectInfo", type, NameText(container), NameText(object),
                      size == sizeof(jet::ObjectList) ? "whole" : "cut", level),
                 [&] {
                   return engine.JetGetObjectInfo(session, database, type, container, object,
                                                  result, size, level);
                 });
  });
  api->JetGetTableColumnInfo = AsFunction([](jet::Session session, jet::TableId table,
                                             const char* column, void* result, uint32_t size,
                                             uint32_t level) -> jet::Code {
    return Opens(
        "table",
        Line("GetTableColumnInfo", NameText(column),
             size == sizeof(jet::ColumnList) ? "whole" : "cut", level),
        [&] { return engine.JetGetTableColumnInfo(session, table, column, result, size, level); });
  });
  api->JetGetTableIndexInfo = AsFunction([](jet::Session session, jet::TableId table,
                                            const char* index, void* result, uint32_t size,
                                            uint32_t level) -> jet::Code {
    return Opens(
        "table",
        Line("GetTableIndexInfo", NameText(index), size == sizeof(jet::IndexList) ? "whole" : "cut",
             level),
        [&] { return engine.JetGetTableIndexInfo(session, table, index, result, size, level); });
  });
}

inline void AddTables(JetApi* api) {
  static const JetApi& engine = EseJetApi();
  api->JetOpenTable = AsFunction([](jet::Session session, jet::DatabaseId database,
                                    const char* name, const void* parameters, uint32_t size,
                                    jet::Grbit grbit, jet::TableId* table) -> jet::Code {
    return Opens("table", Line("OpenTable", name, grbit), [&] {
      return engine.JetOpenTable(session, database, name, parameters, size, grbit, table);
    });
  });
  api->JetCloseTable = AsFunction([](jet::Session session, jet::TableId table) -> jet::Code {
    return Closes("table", "CloseTable", [&] { return engine.JetCloseTable(session, table); });
  });
  api->JetMove = AsFunction(
      [](jet::Session session, jet::TableId table, int32_t step, jet::Grbit grbit) -> jet::Code {
        return Note(step == jet::kMoveFirst ? Line("Move first", grbit) : Line("Move", step, grbit),
                    [&] { return engine.JetMove(session, table, step, grbit); });
      });
  api->JetRetrieveColumn =
      AsFunction([](jet::Session session, jet::TableId table, jet::ColumnId column, void* data,
                    uint32_t size, uint32_t* actual, jet::Grbit grbit, void* which) -> jet::Code {
        return Note(Line("RetrieveColumn", column, size, grbit), [&] {
          return engine.JetRetrieveColumn(session, table, column, data, size, actual, grbit, which);
        });
      });
}

inline void AddIndexes(JetApi* api) {
  static const JetApi& engine = EseJetApi();
  api->JetCreateIndex =
      AsFunction([](jet::Session session, jet::TableId table, const char* name, jet::Grbit grbit,
                    const char* key, uint32_t size, uint32_t density) -> jet::Code {
        return Note(Line("CreateIndex", name, grbit, key, size, density), [&] {
          return engine.JetCreateIndex(session, table, name, grbit, key, size, density);
        });
      });
  api->JetSetCurrentIndex =
      AsFunction([](jet::Session session, jet::TableId table, const char* name) -> jet::Code {
        return Note(Line("SetCurrentIndex", name),
                    [&] { return engine.JetSetCurrentIndex(session, table, name); });
      });
  api->JetMakeKey = AsFunction([](jet::Session session, jet::TableId table, const void* data,
                                  uint32_t size, jet::Grbit grbit) -> jet::Code {
    return Note(Line("MakeKey", data == nullptr ? "null" : "data", size, grbit),
                [&] { return engine.JetMakeKey(session, table, data, size, grbit); });
  });
  api->JetSeek =
      AsFunction([](jet::Session session, jet::TableId table, jet::Grbit grbit) -> jet::Code {
        return Note(Line("Seek", grbit), [&] { return engine.JetSeek(session, table, grbit); });
      });
  api->JetSetIndexRange =
      AsFunction([](jet::Session session, jet::TableId table, jet::Grbit grbit) -> jet::Code {
        return Note(Line("SetIndexRange", grbit),
                    [&] { return engine.JetSetIndexRange(session, table, grbit); });
      });
}

}  // namespace recording_jet

// The recording engine. What it has seen is in Recorded().
inline const JetApi& RecordingJet() {
  static const JetApi api = [] {
    JetApi made = recording_jet::MakeOpening();
    recording_jet::AddDatabase(&made);
    recording_jet::AddListings(&made);
    recording_jet::AddTables(&made);
    recording_jet::AddIndexes(&made);
    return made;
  }();
  return api;
}

}  // namespace postmarker::test
