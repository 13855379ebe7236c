// Stand-in for a module of a mail client that has a fault. What is asked of it, it does to the
// calling thread.
#include <windows.h>

namespace {

// Not a tail call, and not one that ends.
int Recurse(volatile int* depth) {
  volatile char frame[512];
  *depth = *depth + 1;
  frame[0] = static_cast<char>(*depth);
  return *depth < 0 ? 0 : Recurse(depth) + frame[0];
}

}  // namespace

extern "C" int __stdcall CrashOnDemand(int kind) {
  switch (kind) {
    case 1: {
      volatile int* const nothing = nullptr;
      return *nothing;  // NOLINT(clang-analyzer-core.NullDereference): the fault asked for
    }
    case 2: {
      volatile int depth = 0;
      return Recurse(&depth);
    }
    case 3:
      ::RaiseException(0xE0000001, EXCEPTION_NONCONTINUABLE, 0, nullptr);
      return 0;
    default:
      return 0;
  }
}
