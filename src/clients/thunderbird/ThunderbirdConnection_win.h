// A connection to the extension inside Thunderbird, which is started if it does not run.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "clients/thunderbird/TbCommands.h"
#include "ipc/NamedPipeClient_win.h"
#include "support/Results.h"
#include "support/StopQuery.h"

namespace postmarker {

// How long the wizard lets Thunderbird start, and how long it lets a command be silent.
inline constexpr int32_t kThunderbirdStartMilliseconds = 15000;
inline constexpr int32_t kThunderbirdCommandSeconds = 20;

// A pipe, and who is to end Thunderbird. Several may be open at once. For one thread; closed at the
// object's end.
class ThunderbirdConnection : public thunderbird::TbChannel {
 public:
  // 1 if Thunderbird ran before the connection was made, 0 if it was started for it.
  uint8_t alreadyRunning = 0;

  NamedPipeClient& Pipe() { return m_pipe; }

  // An empty `stop` never ends anything. What it asks must outlive the connection.
  explicit ThunderbirdConnection(StopQuery stop = {}) : m_stop(std::move(stop)) {}

  // Is the operation to end: connecting, and waiting for a reply.
  [[nodiscard]] const StopQuery& Stop() const { return m_stop; }

  bool HasMessage() override { return m_pipe.HasMessage(); }
  bool Read(std::wstring* message) override { return m_pipe.Read(message); }
  bool Write(const std::wstring& message) override { return m_pipe.Write(message); }
  int64_t Now() override;
  void Sleep(int32_t milliseconds) override;
  bool IsAbandoned() override;

 private:
  NamedPipeClient m_pipe;
  StopQuery m_stop;
  int64_t m_nextLook = 0;
};

// Connects to a Thunderbird that runs, or starts it hidden and waits `limitMilliseconds` at most
// for its extension to serve the pipe. Sets connection->alreadyRunning. E_FAIL if Thunderbird is
// not installed, can't be started, or does not serve the pipe in time, and as soon as the
// connection's Stop says so, which is asked at least every 100 ms; one that was started stays.
// A connection that stands is closed first, without a word to Thunderbird.
ResultCode ConnectOrLaunch(ThunderbirdConnection* connection, int32_t limitMilliseconds);

// Tells a Thunderbird that was started for this connection to exit; short of memory it stays.
// Always 0.
ResultCode ReleaseThunderbird(ThunderbirdConnection* connection) noexcept;

}  // namespace postmarker
