// The owner of a COM interface pointer.
#pragma once

#include <windows.h>

#include <objbase.h>
#include <unknwn.h>

#include <utility>

namespace postmarker {

// Holds one reference and gives it back once. For use in the apartment that the pointer belongs to.
template <class Interface>
class ComPtr {
 public:
  ComPtr() = default;
  // Takes over a reference that the caller owns.
  explicit ComPtr(Interface* pointer) : m_pointer(pointer) {}
  ComPtr(const ComPtr&) = delete;
  ComPtr& operator=(const ComPtr&) = delete;
  ComPtr(ComPtr&& other) noexcept : m_pointer(std::exchange(other.m_pointer, nullptr)) {}
  ComPtr& operator=(ComPtr&& other) noexcept {
    if (this != &other) {
      Reset(std::exchange(other.m_pointer, nullptr));
    }
    return *this;
  }
  ~ComPtr() { Reset(); }

  [[nodiscard]] Interface* Get() const { return m_pointer; }
  Interface* operator->() const { return m_pointer; }
  explicit operator bool() const { return m_pointer != nullptr; }

  // Releases what is held and takes over `pointer`.
  void Reset(Interface* pointer = nullptr) {
    if (Interface* const old = std::exchange(m_pointer, pointer)) {
      old->Release();  // owner
    }
  }

  // Gives up the reference: the caller releases.
  [[nodiscard]] Interface* Detach() { return std::exchange(m_pointer, nullptr); }

  // For functions that write an interface pointer.
  [[nodiscard]] Interface** Put() {
    Reset();
    return &m_pointer;
  }
  [[nodiscard]] void** PutVoid() { return reinterpret_cast<void**>(Put()); }

 private:
  Interface* m_pointer = nullptr;
};

// Joins the thread to a single-threaded apartment for the life of the object, and leaves it again
// if that worked.
class ComApartment {
 public:
  ComApartment() : m_result(::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) {}
  ComApartment(const ComApartment&) = delete;
  ComApartment& operator=(const ComApartment&) = delete;
  ~ComApartment() {
    if (SUCCEEDED(m_result)) {
      ::CoUninitialize();
    }
  }
  [[nodiscard]] HRESULT Result() const { return m_result; }

 private:
  HRESULT m_result;
};

}  // namespace postmarker
