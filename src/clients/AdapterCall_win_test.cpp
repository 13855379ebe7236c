#include "clients/AdapterCall_win.h"

#include <windows.h>

#include <gtest/gtest.h>

#include <new>

#include "clients/MailClientAdapter.h"

namespace postmarker {
namespace {

constexpr uint32_t kAccessViolation = 0xC0000005;
constexpr ResultCode kOwnFailure = -7;

void Raise(uint32_t code) {
  ::RaiseException(code, EXCEPTION_NONCONTINUABLE, 0, nullptr);
}

TEST(AdapterCall, ReturnsTheResultOfTheOperation) {
  EXPECT_EQ(CallAdapter([] { return kOwnFailure; }), kOwnFailure);
  EXPECT_EQ(CallAdapter([] { return kOk; }), kOk);
}

TEST(AdapterCall, ReturnsZeroForAnOperationWithoutResult) {
  int calls = 0;
  EXPECT_EQ(CallAdapter([&calls] { ++calls; }), kOk);
  EXPECT_EQ(calls, 1);
}

TEST(AdapterCall, FailsWhenTheDriveGoesAwayAndKeepsWhatWasReadBefore) {
  MailFolderList folders;
  const ResultCode result = CallAdapter([&folders] {
    folders.push_back({L"Inbox", "1", "store", 1});
    Raise(EXCEPTION_IN_PAGE_ERROR);
  });
  EXPECT_EQ(result, kFail);
  ASSERT_EQ(folders.size(), 1U);
  EXPECT_EQ(folders[0].name, L"Inbox");
}

TEST(AdapterCall, FailsWhenMemoryRunsOut) {
  EXPECT_EQ(CallAdapter([]() -> ResultCode { throw std::bad_alloc(); }), kFail);
}

TEST(AdapterCall, LetsOtherCrashesGoOn) {
  const uint32_t outer =
      RunGuarded([]() noexcept { (void)CallAdapter([] { Raise(kAccessViolation); }); });
  EXPECT_EQ(outer, kAccessViolation);
}

}  // namespace
}  // namespace postmarker
