// The calling end of a named pipe that another process serves, for short messages of text.
#pragma once

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <string>
#include <utility>

#include "ipc/NamedPipeMessages_win.h"
#include "ipc/PipeOwner_win.h"
#include "support/Handles_win.h"
#include "support/StopQuery.h"

namespace postmarker {

// One conversation over a pipe in message mode. Each message is one NUL-terminated text; a received
// one is cut at NamedPipeMessages::kMaxMessageChars characters. Nothing throws but for want of
// memory; every failure is a false.
//
// For one thread, except that RequestStop and Shutdown may be called on another one while
// TryConnect, ConnectBlocking, Transact or Flush runs. A client that was told to stop stays so
// until the next Init.
class NamedPipeClient {
 public:
  // `owner` tells whose a pipe is; a test passes another one.
  explicit NamedPipeClient(PipeOwnerQuery owner = OwnerOfPipe) : m_owner(std::move(owner)) {}
  NamedPipeClient(const NamedPipeClient&) = delete;
  NamedPipeClient& operator=(const NamedPipeClient&) = delete;
  ~NamedPipeClient() { Shutdown(); }

  // Prepares for the pipe of this full name, of at least kMinPipeNameChars characters, with a
  // transfer buffer of `bufferChars` wide characters, more than 0. `overlapped` must be 0: all
  // calls are synchronous. What an earlier Init made is shut down first, as it is on failure.
  bool Init(const wchar_t* name, int32_t bufferChars, uint8_t overlapped);

  // Tells every operation to give up, waits until the long ones have returned, disconnects and
  // releases everything. Does nothing if there is nothing to release.
  void Shutdown();

  // Tells every operation, also one that runs, to give up.
  void RequestStop() const;
  [[nodiscard]] bool StopRequested() const;

  // One attempt to connect. The server can find out who is calling, and can't act in their name; a
  // pipe that is known to be another user's is as none. Deliberate: on a connected client it
  // disconnects and fails, so that a conversation never goes on with a peer that the caller takes
  // for another.
  bool Open();

  // Up to `attempts` attempts with pauses between them. 0 attempts succeed without doing anything.
  // False, and disconnected, as soon as RequestStop is called or `stop` says so: it is
  // asked before the first attempt and every 100 ms during each pause.
  bool TryConnect(int32_t attempts, int32_t pauseMilliseconds, const StopQuery& stop = {});

  // Waits for the server until connected (true) or stopped. False at once, and disconnected, on a
  // connected client, and on one without Init.
  bool ConnectBlocking();

  void Close() { m_pipe.Reset(); }

  // Would Read return at once with something, be it a failure. True also when stop was requested.
  bool HasMessage();

  // Takes the next message. False, with *text empty, when there is none, when the pipe is broken
  // and when stop was requested.
  bool Read(std::wstring* text);

  // Sends a message. False for an empty text, for one of the buffer's size or more, for a broken or
  // full pipe, and when stop was requested.
  bool Write(const std::wstring& text);

  // Sends a message and waits for one without a limit; only stop and a broken pipe end the wait. On
  // failure *answer is empty.
  bool Transact(const std::wstring& text, std::wstring* answer);

  // Waits until the server has read everything. False when stop was requested.
  bool Flush();

 private:
  class BusyMark;

  enum class Opening {
    kConnected,
    kNone,      // nobody serves the pipe, or all its instances are busy
    kUnusable,  // somebody does, whom this client doesn't talk to
  };
  Opening TryOpen();

  // True when stop is requested before the time is over.
  [[nodiscard]] bool WaitForStop(DWORD milliseconds) const;

  // The same, and true as well when `stop` says so.
  [[nodiscard]] bool PauseUntilStop(DWORD milliseconds, const StopQuery& stop) const;

  PipeOwnerQuery m_owner;
  std::wstring m_name;
  FileHandle m_pipe;
  KernelHandle m_stopEvent;
  // Is the event set. It is asked twice for each message, and an atomic costs no call.
  mutable std::atomic<bool> m_isStopped = false;
  NamedPipeMessages m_messages;
  std::atomic<int32_t> m_busyCount = 0;
};

}  // namespace postmarker
