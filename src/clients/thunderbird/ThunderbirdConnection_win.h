// A connection to the extension inside Thunderbird, which is started if it does not run.
#pragma once

#include <cstdint>
#include <string>

#include "clients/thunderbird/TbCommands.h"
#include "ipc/NamedPipeClient_win.h"
#include "postmarker/ProgressCallbacks.h"
#include "support/Results.h"

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

  // From now on the operation is abandoned when the user cancels. `callbacks` may be null and must
  // outlive the connection.
  void WatchCancel(const ProgressCallbacks* callbacks) { m_callbacks = callbacks; }

  bool HasMessage() override { return m_pipe.HasMessage(); }
  bool Read(std::wstring* message) override { return m_pipe.Read(message); }
  bool Write(const std::wstring& message) override { return m_pipe.Write(message); }
  int64_t Now() override;
  void Sleep(int32_t milliseconds) override;
  bool IsAbandoned() override;

 private:
  NamedPipeClient m_pipe;
  const ProgressCallbacks* m_callbacks = nullptr;
  int64_t m_nextLook = 0;
};

// Connects to a Thunderbird that runs, or starts it hidden and waits `limitMilliseconds` at most
// for its extension to serve the pipe. Sets connection->alreadyRunning. E_FAIL if Thunderbird is
// not installed, can't be started, or does not serve the pipe in time; one that was started stays.
// A connection that stands is closed first, without a word to Thunderbird.
ResultCode ConnectOrLaunch(ThunderbirdConnection* connection, int32_t limitMilliseconds);

// Tells a Thunderbird that was started for this connection to exit. Always 0.
ResultCode ReleaseThunderbird(ThunderbirdConnection* connection);

}  // namespace postmarker
