#include "ui/CWinApp.h"

#include <gtest/gtest.h>

#include "support/Handles_win.h"

namespace postmarker {
namespace {

// The context that is active on this thread, with a reference on it.
ActivationContext ActiveContext() {
  HANDLE context = nullptr;
  ::GetCurrentActCtx(&context);
  return ActivationContext(context);
}

class ModuleStateGuardTest : public testing::Test {
 protected:
  ModuleStateGuardTest() { m_app.SetModule(::GetModuleHandleW(nullptr)); }

  CWinApp m_app;
};

TEST_F(ModuleStateGuardTest, ActivatesTheModulesManifestForItsScope) {
  EXPECT_FALSE(ActiveContext());
  {
    const ModuleStateGuard guard;
    EXPECT_TRUE(ActiveContext());
  }
  EXPECT_FALSE(ActiveContext());
}

TEST_F(ModuleStateGuardTest, NestsAndGivesBackWhatWasActive) {
  const ModuleStateGuard outer;
  const ActivationContext active = ActiveContext();
  {
    const ModuleStateGuard inner;
    EXPECT_EQ(ActiveContext().Get(), active.Get());
  }
  EXPECT_EQ(ActiveContext().Get(), active.Get());
}

TEST_F(ModuleStateGuardTest, MakesTheContextOnceForAllGuards) {
  ActivationContext first;
  {
    const ModuleStateGuard guard;
    // The reference keeps its address from being used again.
    first = ActiveContext();
  }
  ASSERT_TRUE(first);
  const ModuleStateGuard guard;
  EXPECT_EQ(ActiveContext().Get(), first.Get());
}

}  // namespace
}  // namespace postmarker
