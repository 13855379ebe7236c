// Thunderbird's extension as a script, with a clock that moves when the bridge sleeps.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "clients/thunderbird/TbCommands.h"

namespace postmarker::test {

class ScriptedTbChannel : public thunderbird::TbChannel {
 public:
  std::vector<std::wstring> sent;  // by the bridge
  bool takesMessages = true;
  bool isAbandoned = false;
  int looks = 0;  // of the bridge for a message
  int reads = 0;

  // What the bridge will find, in order.
  void Say(const std::wstring& message, int times = 1) {
    m_steps.push_back({0, message, false, times});
  }
  void Pause(int64_t milliseconds) { m_steps.push_back({milliseconds, {}, false, 1}); }
  void SayForEver(const std::wstring& message) { m_endless = message; }
  void SayNumberedForEver(const std::wstring& message) {
    m_endless = message;
    m_isNumbered = true;
  }
  void Break() { m_steps.push_back({0, {}, true, 1}); }

  [[nodiscard]] int64_t Clock() const { return m_now; }

  bool HasMessage() override {
    ++looks;
    while (!m_steps.empty() && m_steps.front().pause > 0) {
      if (m_pauseEnd < 0) {
        m_pauseEnd = m_now + m_steps.front().pause;
      }
      if (m_now < m_pauseEnd) {
        return false;
      }
      m_pauseEnd = -1;
      m_steps.pop_front();
    }
    return !m_steps.empty() || !m_endless.empty();
  }

  bool Read(std::wstring* message) override {
    ++reads;
    *message = m_isNumbered ? std::to_wstring(reads) + m_endless : m_endless;
    if (m_steps.empty() && !m_endless.empty()) {
      return true;
    }
    message->clear();
    if (m_steps.empty() || m_steps.front().breaks) {
      return false;
    }
    *message = m_steps.front().message;
    if (--m_steps.front().times == 0) {
      m_steps.pop_front();
    }
    return true;
  }

  bool Write(const std::wstring& message) override {
    if (takesMessages) {
      sent.push_back(message);
    }
    return takesMessages;
  }

  int64_t Now() override { return m_now; }
  void Sleep(int32_t milliseconds) override { m_now += milliseconds; }
  bool IsAbandoned() override { return isAbandoned; }

 private:
  struct Step {
    int64_t pause;
    std::wstring message;
    bool breaks;
    int times;
  };

  std::deque<Step> m_steps;
  std::wstring m_endless;     // after the steps, if not empty
  bool m_isNumbered = false;  // the endless message, each with a number of its own
  int64_t m_now = 1'000'000;
  int64_t m_pauseEnd = -1;
};

}  // namespace postmarker::test
