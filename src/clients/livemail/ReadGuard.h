// Reading of a mapped file whose drive can go away.
#pragma once

#include <type_traits>

namespace postmarker {

// Calls work(argument). False if the drive with a mapped file went away meanwhile; then no
// destructor of the work has run, and what it owned is lost. A C++ exception must not leave the
// work. Any thread. Where the system ends the process in that case, always true.
bool CallReading(void (*work)(void* argument), void* argument) noexcept;

// The same for any callable object, which must not throw.
template <class Work>
bool RunReading(Work&& work) noexcept {
  using Object = std::remove_reference_t<Work>;
  return CallReading([](void* object) { (*static_cast<Object*>(object))(); }, &work);
}

}  // namespace postmarker
