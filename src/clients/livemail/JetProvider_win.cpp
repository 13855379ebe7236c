#include <windows.h>

#include "clients/CrashGuard_win.h"
#include "clients/livemail/EseJetApi.h"
#include "clients/livemail/JetHandles.h"
#include "clients/livemail/JetProvider.h"
#include "support/Handles_win.h"

namespace postmarker {
namespace {

template <class Function>
bool Load(HMODULE library, const char* name, Function* function) {
  *function = reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(library, name)));
  return *function != nullptr;
}

// False if a function is missing, as the wide ones are before Windows Vista.
bool LoadFunctions(HMODULE library, JetApi* api) {
  return Load(library, "JetSetSystemParameterW", &api->JetSetSystemParameter) &&
         Load(library, "JetGetInstanceInfoW", &api->JetGetInstanceInfo) &&
         Load(library, "JetFreeBuffer", &api->JetFreeBuffer) &&
         Load(library, "JetCreateInstanceW", &api->JetCreateInstance) &&
         Load(library, "JetInit", &api->JetInit) && Load(library, "JetTerm", &api->JetTerm) &&
         Load(library, "JetBeginSessionA", &api->JetBeginSession) &&
         Load(library, "JetEndSession", &api->JetEndSession) &&
         Load(library, "JetAttachDatabaseW", &api->JetAttachDatabase) &&
         Load(library, "JetDetachDatabaseW", &api->JetDetachDatabase) &&
         Load(library, "JetOpenDatabaseW", &api->JetOpenDatabase) &&
         Load(library, "JetCloseDatabase", &api->JetCloseDatabase) &&
         Load(library, "JetBeginTransaction", &api->JetBeginTransaction) &&
         Load(library, "JetCommitTransaction", &api->JetCommitTransaction) &&
         Load(library, "JetGetObjectInfoA", &api->JetGetObjectInfo) &&
         Load(library, "JetGetTableColumnInfoA", &api->JetGetTableColumnInfo) &&
         Load(library, "JetGetTableIndexInfoA", &api->JetGetTableIndexInfo) &&
         Load(library, "JetOpenTableA", &api->JetOpenTable) &&
         Load(library, "JetCloseTable", &api->JetCloseTable) &&
         Load(library, "JetMove", &api->JetMove) &&
         Load(library, "JetRetrieveColumn", &api->JetRetrieveColumn) &&
         Load(library, "JetCreateIndexA", &api->JetCreateIndex) &&
         Load(library, "JetSetCurrentIndexA", &api->JetSetCurrentIndex) &&
         Load(library, "JetMakeKey", &api->JetMakeKey) && Load(library, "JetSeek", &api->JetSeek) &&
         Load(library, "JetSetIndexRange", &api->JetSetIndexRange);
}

// Some systems have a library whose functions only raise an exception. An instance that was ended
// before it ran is refused by JetInit, so asking with it starts nothing.
bool IsImplemented(const JetApi& api) {
  return RunGuarded([&api]() noexcept {
           jet::Instance instance = 0;
           if (api.JetCreateInstance(&instance, L"Kestrelon.Probe") >= 0) {
             JetInstanceHandle({&api, instance}).Reset();
             api.JetInit(&instance);
           }
         }) == 0;
}

struct MachineEngine {
  LibraryHandle library{::LoadLibraryW(L"esent.dll")};
  JetApi api = {};
  bool isUsable = library && LoadFunctions(library.Get(), &api) && IsImplemented(api);
};

}  // namespace

const JetApi& MachineJetApi() {
  static const MachineEngine engine;
  return engine.isUsable ? engine.api : EseJetApi();
}

}  // namespace postmarker
