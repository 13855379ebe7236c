// Keeps a crash in foreign code, or a drive that goes away, from ending the process.
#pragma once

#include <cstdint>
#include <type_traits>

namespace postmarker {

// Calls work(argument). Returns 0 when it came back, otherwise the code of the structured exception
// that nobody within it handled, such as 0xC0000005 for an access violation. What the work owned at
// that moment is not released, and locks that it held stay held. After a stack overflow the
// thread's stack can be used to its end again. A C++ exception must not leave the work. Calls may
// nest; any thread.
uint32_t CallGuarded(void (*work)(void* argument), void* argument) noexcept;

// The same for any callable object, which must not throw.
template <class Work>
uint32_t RunGuarded(Work&& work) noexcept {
  using Object = std::remove_reference_t<Work>;
  const auto call = [](void* object) { (*static_cast<Object*>(object))(); };
  return CallGuarded(call, const_cast<std::remove_const_t<Object>*>(&work));
}

// Calls work(argument) and catches only the error that reading a mapped file raises when its drive
// is gone; all other structured exceptions go on as if there were no guard. True if the work came
// back. After the error no destructor of the work has run: what it owned is not released, and locks
// that it held stay held. So the work must not read mapped files while it holds a lock; memory and
// handles of the one failed call are lost. A C++ exception must not leave the work. Calls may nest;
// any thread.
bool CallGuardedAgainstInPageErrors(void (*work)(void* argument), void* argument) noexcept;

// The same for any callable object, which must not throw.
template <class Work>
bool RunGuardedAgainstInPageErrors(Work&& work) noexcept {
  using Object = std::remove_reference_t<Work>;
  const auto call = [](void* object) { (*static_cast<Object*>(object))(); };
  return CallGuardedAgainstInPageErrors(call, const_cast<std::remove_const_t<Object>*>(&work));
}

}  // namespace postmarker
