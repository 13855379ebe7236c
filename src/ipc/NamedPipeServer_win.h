// The listening end of a named pipe, one instance of it.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

#include "ipc/NamedPipeMessages_win.h"
#include "support/Handles_win.h"

namespace postmarker {

// Who may connect to a pipe.
enum class PipeClients {
  kEveryone,  // also other users of the machine, and other machines
  kThisUser,  // processes of the server's own account on this machine
};

// Serves one client at a time; several objects with one name serve several. Messages are as for
// NamedPipeClient. For one thread; every failure is a false.
class NamedPipeServer {
 public:
  // Makes the pipe with this full name, of at least kMinPipeNameChars characters, and a transfer
  // buffer of `bufferChars` wide characters, more than 0. What an earlier Init made is released.
  bool Init(const wchar_t* name, int32_t bufferChars, PipeClients clients = PipeClients::kEveryone);

  // Makes the pipe's end again. Deliberate: with an end already there it closes that one and fails,
  // as a client that is still connected must see the pipe break first.
  bool Create();

  // Is a client there; doesn't wait for one. After an error, such as a client that has left, it
  // makes a new end for the next one.
  bool Accept();

  [[nodiscard]] bool IsConnected() const;

  // The transfers of NamedPipeMessages.
  bool HasMessage() { return m_messages.HasMessage(m_pipe.Get()); }
  bool Read(std::wstring* text) { return m_messages.Read(m_pipe.Get(), text); }
  bool Write(const std::wstring& text) { return m_messages.Write(m_pipe.Get(), text); }

  // Sends a message and waits for one without a limit; only a broken pipe ends the wait. On failure
  // *answer is empty.
  bool Transact(const std::wstring& text, std::wstring* answer);

  void Close() { m_pipe.Reset(); }

  // Closes the end and frees the buffer.
  void Shutdown();

 private:
  std::wstring m_name;
  FileHandle m_pipe;
  NamedPipeMessages m_messages;
  int32_t m_bufferChars = 0;
  PipeClients m_clients = PipeClients::kEveryone;
};

}  // namespace postmarker
