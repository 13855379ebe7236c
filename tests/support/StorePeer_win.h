// The stand-in for the mail store of Outlook Express and Windows Mail, as a test uses it.
#pragma once

#include <windows.h>

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>

#include "peers/storeapi/StorePeerControl.h"
#include "support/Handles_win.h"
#include "support/PeerProcess_win.h"

namespace postmarker::test {

// The store and the contacts of this process, from construction to destruction; without a state
// there are none. Registers their classes for the machine: in other processes they come without a
// store. One at a time on the machine, as programs of two builds register two files: the next one
// waits. Constructed and destroyed on one thread.
class StorePeer {
 public:
  StorePeer() : m_path(PeerPath(L"storeapi\\storeapi.dll")) {
    constexpr DWORD kTurnMs = 120'000;
    const DWORD turn = ::WaitForSingleObject(m_turn.Get(), kTurnMs);
    if (turn != WAIT_OBJECT_0 && turn != WAIT_ABANDONED) {
      throw std::runtime_error("another program keeps the store's stand-in");
    }
    Register(L"{E70C92A9-4BFD-11D1-8A95-00C04FB951F3}");
    Register(L"{7165C8AB-AF88-42BD-86FD-5310B4285A02}");
    m_library.Reset(::LoadLibraryW(m_path.c_str()));
    const auto getPeer = reinterpret_cast<peer::GetStorePeerFunction>(
        reinterpret_cast<void*>(::GetProcAddress(m_library.Get(), "GetStorePeer")));
    if (getPeer == nullptr) {
      throw std::runtime_error("the store's stand-in can't be loaded");
    }
    m_control = getPeer();
    SetState(nlohmann::json::object());
  }
  StorePeer(const StorePeer&) = delete;
  StorePeer& operator=(const StorePeer&) = delete;
  ~StorePeer() {
    m_control->setState("{}");
    ::ReleaseMutex(m_turn.Get());
  }

  void SetState(const nlohmann::json& state) const { m_control->setState(state.dump().c_str()); }

  const peer::StorePeerControl* operator->() const { return m_control; }

 private:
  // The keys go with the system's session.
  void Register(const std::wstring& classId) const {
    RegistryKeyHandle key;
    const std::wstring path = L"CLSID\\" + classId + L"\\InprocServer32";
    const auto set = [&key](const wchar_t* name, const std::wstring& text) {
      const auto size = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
      return ::RegSetValueExW(key.Get(), name, 0, REG_SZ,
                              reinterpret_cast<const BYTE*>(text.c_str()), size);
    };
    if (::RegCreateKeyExW(HKEY_CLASSES_ROOT, path.c_str(), 0, nullptr, REG_OPTION_VOLATILE,
                          KEY_ALL_ACCESS, nullptr, key.Put(), nullptr) != ERROR_SUCCESS ||
        set(nullptr, m_path) != ERROR_SUCCESS ||
        set(L"ThreadingModel", L"Apartment") != ERROR_SUCCESS) {
      throw std::runtime_error("the store's stand-in can't be registered");
    }
  }

  KernelHandle m_turn{::CreateMutexW(nullptr, FALSE, L"Local\\PostmarkerTest-StorePeer")};
  std::wstring m_path;
  LibraryHandle m_library;
  const peer::StorePeerControl* m_control = nullptr;
};

}  // namespace postmarker::test
