// The one owner of operating system resources. Each kind of handle is an alias with a traits type.
#pragma once

#include <type_traits>
#include <utility>

namespace postmarker {

// Owns a value of Traits::Type and closes it exactly once.
// Traits has `using Type`, `static Type None()`, `static bool IsOpen(Type)` and `static void
// Close(Type)`. A moved-from owner holds None(). Not for use from several threads at once.
template <class Traits>
class UniqueHandle {
 public:
  using Type = typename Traits::Type;
  static_assert(std::is_trivially_copyable_v<Type>, "a handle is a plain value");

  UniqueHandle() noexcept = default;
  explicit UniqueHandle(Type handle) noexcept : m_handle(handle) {}
  UniqueHandle(const UniqueHandle&) = delete;
  UniqueHandle& operator=(const UniqueHandle&) = delete;
  UniqueHandle(UniqueHandle&& other) noexcept : m_handle(other.Release()) {}
  UniqueHandle& operator=(UniqueHandle&& other) noexcept {
    if (this != &other) {
      Reset(other.Release());
    }
    return *this;
  }
  ~UniqueHandle() { Reset(); }

  // The handle, still owned.
  [[nodiscard]] Type Get() const noexcept { return m_handle; }

  explicit operator bool() const noexcept { return Traits::IsOpen(m_handle); }

  // Gives up ownership: the caller closes.
  [[nodiscard]] Type Release() noexcept { return std::exchange(m_handle, Traits::None()); }

  // Closes what was owned and takes `handle`. The new one stands before the old one is closed, so a
  // close that comes back here finds a valid owner.
  void Reset(Type handle = Traits::None()) noexcept {
    const Type old = std::exchange(m_handle, handle);
    if (Traits::IsOpen(old)) {
      Traits::Close(old);
    }
  }

  // For functions that write a handle: closes what was owned first.
  [[nodiscard]] Type* Put() noexcept {
    Reset();
    return &m_handle;
  }

 private:
  Type m_handle = Traits::None();
};

// Runs a function at the end of a scope, for the few things that are not handles.
template <class Function>
class ScopeExit {
 public:
  explicit ScopeExit(Function function) : m_function(std::move(function)) {}
  ScopeExit(const ScopeExit&) = delete;
  ScopeExit& operator=(const ScopeExit&) = delete;
  ~ScopeExit() { m_function(); }

 private:
  Function m_function;
};

}  // namespace postmarker
