#include "clients/CrashGuard_win.h"

#include <windows.h>

#include <gtest/gtest.h>

#include "support/SmallStack_win.h"

namespace postmarker {
namespace {

constexpr uint32_t kAccessViolation = 0xC0000005;
constexpr uint32_t kStackOverflow = 0xC00000FD;
constexpr uint32_t kOwnCode = 0xE0001234;

void TouchNothing() {
  volatile int* const nothing = nullptr;
  *nothing = 1;  // NOLINT(clang-analyzer-core.NullDereference): the fault to be caught
}

int Recurse(volatile int* depth) {
  volatile char frame[512];
  *depth = *depth + 1;
  frame[0] = static_cast<char>(*depth);
  return *depth < 0 ? 0 : Recurse(depth) + frame[0];
}

void Overflow() {
  volatile int depth = 0;
  (void)Recurse(&depth);
}

TEST(CrashGuard, WorkThatComesBackGivesZero) {
  int calls = 0;
  EXPECT_EQ(RunGuarded([&calls]() noexcept { ++calls; }), 0U);
  EXPECT_EQ(calls, 1);
}

TEST(CrashGuard, EveryAccessViolationIsCaughtWithItsCode) {
  for (int i = 0; i < 1000; ++i) {
    ASSERT_EQ(RunGuarded([]() noexcept { TouchNothing(); }), kAccessViolation);
  }
}

TEST(CrashGuard, StackOverflowIsCaughtAgainAndAgain) {
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(RunGuarded([]() noexcept { Overflow(); }), kStackOverflow);
  }
}

TEST(CrashGuard, StackOverflowOfASmallThreadIsCaught) {
  uint32_t first = 0;
  uint32_t second = 0;
  test::RunWithSmallStack([&] {
    first = RunGuarded([]() noexcept { Overflow(); });
    second = RunGuarded([]() noexcept { Overflow(); });
  });
  EXPECT_EQ(first, kStackOverflow);
  EXPECT_EQ(second, kStackOverflow);
}

TEST(CrashGuard, WhatTheWorkHandlesItselfIsLeftToIt) {
  uint32_t inner = 0;
  const uint32_t outer = RunGuarded([&inner]() noexcept {
    inner = RunGuarded(
        []() noexcept { ::RaiseException(kOwnCode, EXCEPTION_NONCONTINUABLE, 0, nullptr); });
  });
  EXPECT_EQ(inner, kOwnCode);
  EXPECT_EQ(outer, 0U);
}

TEST(CrashGuard, CxxExceptionsWithinTheWorkAreNoneOfItsBusiness) {
  int caught = 0;
  const uint32_t code = RunGuarded([&caught]() noexcept {
    try {
      throw 7;
    } catch (int value) {
      caught = value;
    }
  });
  EXPECT_EQ(caught, 7);
  EXPECT_EQ(code, 0U);
}

TEST(CrashGuard, CallersVariablesSurviveACrash) {
  // Enough of them that some live in registers.
  int64_t sum = 0;
  for (int64_t i = 0; i < 100; ++i) {
    const uint32_t code = RunGuarded([]() noexcept { TouchNothing(); });
    sum += i * (code == kAccessViolation ? 1 : 1000);
  }
  EXPECT_EQ(sum, 4950);
}

void RaiseInPageError() {
  ::RaiseException(EXCEPTION_IN_PAGE_ERROR, EXCEPTION_NONCONTINUABLE, 0, nullptr);
}

TEST(InPageGuard, WorkThatComesBackGivesTrue) {
  int calls = 0;
  EXPECT_TRUE(RunGuardedAgainstInPageErrors([&calls]() noexcept { ++calls; }));
  EXPECT_EQ(calls, 1);
}

TEST(InPageGuard, CatchesEveryInPageErrorAndKeepsTheCallersVariables) {
  int64_t sum = 0;
  for (int64_t i = 0; i < 100; ++i) {
    sum += i * (RunGuardedAgainstInPageErrors([]() noexcept { RaiseInPageError(); }) ? 1000 : 1);
  }
  EXPECT_EQ(sum, 4950);
}

TEST(InPageGuard, LetsOtherExceptionsGoOnToTheGuardAroundIt) {
  bool wentOn = false;
  for (const uint32_t code : {kAccessViolation, kOwnCode}) {
    const uint32_t outer = RunGuarded([&]() noexcept {
      (void)RunGuardedAgainstInPageErrors(
          [code]() noexcept { ::RaiseException(code, EXCEPTION_NONCONTINUABLE, 0, nullptr); });
      wentOn = true;
    });
    EXPECT_EQ(outer, code);
  }
  EXPECT_FALSE(wentOn) << "the inner guard swallowed an exception that is not for it";
}

TEST(InPageGuard, LeavesCxxExceptionsWithinTheWorkAlone) {
  int caught = 0;
  EXPECT_TRUE(RunGuardedAgainstInPageErrors([&caught]() noexcept {
    try {
      throw 7;
    } catch (int value) {
      caught = value;
    }
  }));
  EXPECT_EQ(caught, 7);
}

}  // namespace
}  // namespace postmarker
