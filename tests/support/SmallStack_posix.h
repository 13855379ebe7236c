// A thread with as little stack as programs give their own.
#pragma once

#include <pthread.h>

#include <functional>
#include <system_error>

namespace postmarker::test {

inline constexpr size_t kSmallStack = size_t{1} << 20;

// Runs `work` in a thread with a stack of 1 MiB and waits for it. `work` must not throw.
inline void RunWithSmallStack(std::function<void()> work) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, kSmallStack);
  pthread_t thread = {};
  const auto run = [](void* argument) -> void* {
    (*static_cast<std::function<void()>*>(argument))();
    return nullptr;
  };
  const int error = pthread_create(&thread, &attributes, run, &work);
  pthread_attr_destroy(&attributes);
  if (error != 0) {
    throw std::system_error(error, std::generic_category());
  }
  pthread_join(thread, nullptr);
}

}  // namespace postmarker::test
