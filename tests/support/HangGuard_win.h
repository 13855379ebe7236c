// Ends a test program in which a wait has no end, and says in which test that is.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <string>

namespace postmarker::test {

class HangGuard : public testing::EmptyTestEventListener {
 public:
  // Guards all tests of this program from its start on. `seconds` is more than any of them takes on
  // a busy machine. Returns true, for a variable whose initialization calls this.
  static bool Install(DWORD seconds) {
    testing::UnitTest::GetInstance()->listeners().Append(new HangGuard(seconds * 1'000));
    return true;
  }

 private:
  explicit HangGuard(DWORD milliseconds) : m_milliseconds(milliseconds) {}

  void OnTestStart(const testing::TestInfo& test) override {
    m_name = std::string(test.test_suite_name()) + "." + test.name();
    HANDLE timer = nullptr;
    ::CreateTimerQueueTimer(&timer, nullptr, End, this, m_milliseconds, 0, WT_EXECUTEONLYONCE);
    m_timer = timer;
  }

  void OnTestEnd(const testing::TestInfo& /*test*/) override {
    ::DeleteTimerQueueTimer(nullptr, m_timer, INVALID_HANDLE_VALUE);
  }

  static void CALLBACK End(void* self, BOOLEAN /*fired*/) {
    const auto* const guard = static_cast<const HangGuard*>(self);
    std::printf("[  FAILED  ] %s: a wait has no end, %lu s have passed\n", guard->m_name.c_str(),
                guard->m_milliseconds / 1'000);
    std::fflush(stdout);
    ::TerminateProcess(::GetCurrentProcess(), 3);
  }

  DWORD m_milliseconds;
  std::string m_name;
  HANDLE m_timer = nullptr;
};

}  // namespace postmarker::test
