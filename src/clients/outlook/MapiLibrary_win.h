// Extended MAPI, loaded at run time: Outlook's own library, or the system's.
#pragma once

#include <windows.h>

#include <mapix.h>

#include <string>

#include "support/Handles_win.h"

namespace postmarker {

// One library with its entry points; one that the library lacks is null. The library stays loaded
// as long as the object lives, and whatever it gave must be gone by then.
class MapiLibrary {
 public:
  // Outlook's library: the first that loads in the language folders below the system's folder for
  // common files. Not loaded if there is none, as for an Outlook of the other width.
  static MapiLibrary LoadOutlooks();

  // The same below another folder, which has no backslash at its end.
  static MapiLibrary LoadBelow(const std::wstring& commonFiles);

  // The system's own.
  static MapiLibrary LoadSystems();

  MapiLibrary() = default;
  MapiLibrary(MapiLibrary&&) = default;
  MapiLibrary& operator=(MapiLibrary&&) = delete;
  MapiLibrary(const MapiLibrary&) = delete;
  MapiLibrary& operator=(const MapiLibrary&) = delete;
  ~MapiLibrary();

  [[nodiscard]] bool IsLoaded() const { return static_cast<bool>(m_module); }

  // Is it loaded, with all of its entry points.
  [[nodiscard]] bool IsUsable() const;

  LPMAPIINITIALIZE initialize = nullptr;
  LPMAPIUNINITIALIZE uninitialize = nullptr;
  LPMAPILOGONEX logonEx = nullptr;
  LPMAPIFREEBUFFER freeBuffer = nullptr;
  // Writes two upper-case digits for each byte, and a NUL.
  void(WINAPI* hexFromBin)(BYTE* bytes, int count, char* text) = nullptr;
  HRESULT(WINAPI* hrQueryAllRows)
  (IMAPITable* table, SPropTagArray* columns, SRestriction* restriction, SSortOrderSet* sort,
   LONG most, SRowSet** rows) = nullptr;
  void(WINAPI* freeProws)(SRowSet* rows) = nullptr;
  HRESULT(WINAPI* hrGetOneProp)(IMAPIProp* object, ULONG tag, SPropValue** value) = nullptr;

 private:
  explicit MapiLibrary(LibraryHandle module);

  LibraryHandle m_module;
};

// Keeps a library initialized for the calling thread, if that worked. The library must be usable.
class MapiInitialization {
 public:
  explicit MapiInitialization(const MapiLibrary& library)
      : m_library(library), m_result(library.initialize(nullptr)) {}
  MapiInitialization(const MapiInitialization&) = delete;
  MapiInitialization& operator=(const MapiInitialization&) = delete;
  ~MapiInitialization() {
    if (SUCCEEDED(m_result)) {
      m_library.uninitialize();
    }
  }
  [[nodiscard]] HRESULT Result() const { return m_result; }

 private:
  const MapiLibrary& m_library;
  HRESULT m_result;
};

// Owns memory that a library gave, until it is given back there.
template <class Type, auto release>
class MapiOwner {
 public:
  explicit MapiOwner(const MapiLibrary& library) : m_library(library) {}
  MapiOwner(const MapiOwner&) = delete;
  MapiOwner& operator=(const MapiOwner&) = delete;
  ~MapiOwner() { Reset(); }

  [[nodiscard]] Type* Get() const { return m_memory; }
  Type* operator->() const { return m_memory; }
  explicit operator bool() const { return m_memory != nullptr; }

  // For functions that write a pointer.
  [[nodiscard]] Type** Put() {
    Reset();
    return &m_memory;
  }

 private:
  void Reset() {
    if (m_memory != nullptr) {
      (m_library.*release)(m_memory);
      m_memory = nullptr;
    }
  }

  const MapiLibrary& m_library;
  Type* m_memory = nullptr;
};
using MapiRows = MapiOwner<SRowSet, &MapiLibrary::freeProws>;
template <class Type>
using MapiBuffer = MapiOwner<Type, &MapiLibrary::freeBuffer>;

// An entry id as hexadecimal text, as Outlook's object model takes it. Empty if there are no bytes,
// or more than give 4096 digits.
std::string HexText(const MapiLibrary& library, const SBinary& bytes);

}  // namespace postmarker
