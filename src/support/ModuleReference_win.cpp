#include "support/ModuleReference_win.h"

namespace postmarker {

LibraryHandle ReferToThisModule() {
  HMODULE module = nullptr;
  ::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                       reinterpret_cast<LPCWSTR>(&ReferToThisModule), &module);
  return LibraryHandle(module);
}

}  // namespace postmarker
