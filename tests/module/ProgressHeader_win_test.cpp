// The header of the progress service as a host in C uses it.
#include <gtest/gtest.h>

#include <cstring>

#include "module/ProgressFixture_win.h"
#include "module/ProgressHost.h"

namespace postmarker::test {
namespace {

class ProgressHeaderTest : public ProgressFixture {};

TEST_F(ProgressHeaderTest, HostInCRunsAJob) {
  EXPECT_EQ(RunJobInC(m_library.Get(), 50), 50);
}

TEST_F(ProgressHeaderTest, LoaderTakesEachFunctionByItsName) {
  PostmarkerProgressFunctions functions = {};
  ASSERT_NE(PostmarkerLoadProgress(m_library.Get(), &functions), 0);
  const auto is = [this](auto function, const char* name) {
    const FARPROC exported = ::GetProcAddress(m_library.Get(), name);
    return exported != nullptr && std::memcmp(&function, &exported, sizeof(exported)) == 0;
  };
  EXPECT_TRUE(is(functions.create, "CreateProgressbar"));
  EXPECT_TRUE(is(functions.set, "SetProgressbar"));
  EXPECT_TRUE(is(functions.increase, "IncreaseProgressbar"));
  EXPECT_TRUE(is(functions.complete, "CompleteProgressbar"));
  EXPECT_TRUE(is(functions.isCancelled, "GetIsCancelledProgressbar"));
  EXPECT_TRUE(is(functions.isFinished, "GetIsFinishedProgressbar"));
  EXPECT_TRUE(is(functions.destroy, "DestroyProgressbar"));
}

TEST_F(ProgressHeaderTest, LoaderGivesNothingForAnotherModuleOrNone) {
  for (const HMODULE module : {::GetModuleHandleW(L"kernel32.dll"), HMODULE{nullptr}}) {
    PostmarkerProgressFunctions functions;
    std::memset(&functions, 0xCC, sizeof(functions));
    EXPECT_EQ(PostmarkerLoadProgress(module, &functions), 0);
    EXPECT_EQ(functions.create, nullptr);
    EXPECT_EQ(functions.destroy, nullptr);
    EXPECT_EQ(RunJobInC(module, 1), -1);
  }
}

}  // namespace
}  // namespace postmarker::test
