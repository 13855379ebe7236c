#include "support/ModuleReference_win.h"

#include <gtest/gtest.h>

namespace postmarker {
namespace {

TEST(ModuleReference, RefersToTheModuleThatContainsThisCode) {
  const LibraryHandle reference = ReferToThisModule();
  EXPECT_EQ(reference.Get(), ::GetModuleHandleW(nullptr));
}

}  // namespace
}  // namespace postmarker
