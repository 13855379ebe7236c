// A named pipe of a test's own.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

#include "ipc/NamedPipeClient_win.h"
#include "ipc/NamedPipeServer_win.h"

namespace postmarker::test {

using std::chrono::milliseconds;

inline constexpr int32_t kBufferChars = 4096;

inline std::wstring FreshPipeName() {
  static int count = 0;
  return L"\\\\.\\pipe\\postmarker-test-" + std::to_wstring(::GetCurrentProcessId()) + L"-" +
         std::to_wstring(++count);
}

inline bool WaitUntil(const std::function<bool()>& condition,
                      milliseconds patience = milliseconds(5000)) {
  const auto end = std::chrono::steady_clock::now() + patience;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) {
      return false;
    }
    ::Sleep(1);
  }
  return true;
}

inline milliseconds TimeOf(const std::function<void()>& action) {
  const auto start = std::chrono::steady_clock::now();
  action();
  return std::chrono::duration_cast<milliseconds>(std::chrono::steady_clock::now() - start);
}

// A pipe with the two ends of the product.
class NamedPipeFixture : public testing::Test {
 protected:
  void Connect(int32_t clientChars = kBufferChars, int32_t serverChars = kBufferChars) {
    ASSERT_TRUE(m_server.Init(m_name.c_str(), serverChars));
    ASSERT_TRUE(m_client.Init(m_name.c_str(), clientChars, 0));
    ASSERT_TRUE(m_client.Open());
    ASSERT_TRUE(WaitUntil([this] { return m_server.Accept(); }));
  }

  // What the client takes from the pipe; fails the test if it takes nothing.
  std::wstring Received() {
    EXPECT_TRUE(WaitUntil([this] { return m_client.HasMessage(); }));
    std::wstring text = L"(as before)";
    EXPECT_TRUE(m_client.Read(&text));
    return text;
  }

  std::wstring m_name = FreshPipeName();
  NamedPipeServer m_server;
  NamedPipeClient m_client;
};

}  // namespace postmarker::test
