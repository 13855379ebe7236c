// The owner of a file descriptor.
#pragma once

#include <unistd.h>

#include "support/UniqueHandle.h"

namespace postmarker {

struct DescriptorTraits {
  using Type = int;
  static Type None() noexcept { return -1; }
  static bool IsOpen(Type descriptor) noexcept { return descriptor >= 0; }
  static void Close(Type descriptor) noexcept { ::close(descriptor); }
};
using Descriptor = UniqueHandle<DescriptorTraits>;

}  // namespace postmarker
