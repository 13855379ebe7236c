// Replaces a function that a loaded module imports, so that a test sees its calls or makes them
// fail.
#pragma once

#include <windows.h>

#include <cstring>
#include <stdexcept>
#include <string>

namespace postmarker::test {

// While it lives, calls of `name` from the code of `module` come to `replacement`. Throws if the
// module imports no such function: then the test would show nothing. No call may be running when it
// ends.
class ImportPatch {
 public:
  template <class Function>
  ImportPatch(HMODULE module, const char* name, Function* replacement)
      : m_slot(FindSlot(module, name)), m_original(*m_slot) {
    Write(reinterpret_cast<ULONG_PTR>(replacement));
  }
  ImportPatch(const ImportPatch&) = delete;
  ImportPatch& operator=(const ImportPatch&) = delete;
  ~ImportPatch() { Write(m_original); }

 private:
  static ULONG_PTR* FindSlot(HMODULE module, const char* name) {
    auto* const base = reinterpret_cast<BYTE*>(module);
    const auto* const dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* const headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const IMAGE_DATA_DIRECTORY& imports =
        headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    const auto* library =
        reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + imports.VirtualAddress);
    for (; library->Name != 0; ++library) {
      const auto* names =
          reinterpret_cast<const IMAGE_THUNK_DATA*>(base + library->OriginalFirstThunk);
      auto* slot = reinterpret_cast<ULONG_PTR*>(base + library->FirstThunk);
      for (; names->u1.AddressOfData != 0; ++names, ++slot) {
        if (!IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal) &&
            std::strcmp(
                reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + names->u1.AddressOfData)->Name,
                name) == 0) {
          return slot;
        }
      }
    }
    throw std::runtime_error(std::string("the module does not import ") + name);
  }

  void Write(ULONG_PTR value) {
    DWORD protection = 0;
    ::VirtualProtect(m_slot, sizeof(*m_slot), PAGE_READWRITE, &protection);
    *m_slot = value;
    ::VirtualProtect(m_slot, sizeof(*m_slot), protection, &protection);
  }

  ULONG_PTR* m_slot;
  ULONG_PTR m_original;
};

}  // namespace postmarker::test
