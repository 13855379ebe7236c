#include "ipc/NamedPipeServer_win.h"

#include "ipc/ObjectSecurity_win.h"

namespace postmarker {
namespace {

constexpr DWORD kDefaultTimeoutMs = 1000;
constexpr DWORD kAnswerPollMs = 5;
constexpr DWORD kPauseAfterFailureMs = 100;

}  // namespace

bool NamedPipeServer::Init(const wchar_t* name, int32_t bufferChars, PipeClients clients) {
  Shutdown();
  if (!ArePipeArgumentsValid(name, bufferChars)) {
    return false;
  }
  m_name = name;
  m_bufferChars = bufferChars;
  m_clients = clients;
  if (!m_messages.Allocate(bufferChars) || !Create()) {
    Shutdown();
    return false;
  }
  return true;
}

bool NamedPipeServer::Create() {
  if (m_pipe || m_name.empty()) {
    Close();
    return false;
  }
  const bool isPrivate = m_clients == PipeClients::kThisUser;
  ObjectSecurity security = isPrivate ? ObjectSecurity::ForThisUser() : ObjectSecurity::Open();
  if (!security) {
    return false;
  }
  const DWORD size = static_cast<DWORD>(m_bufferChars) * sizeof(wchar_t);
  m_pipe.Reset(::CreateNamedPipeW(
      m_name.c_str(), PIPE_ACCESS_DUPLEX,
      PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_NOWAIT |
          (isPrivate ? PIPE_REJECT_REMOTE_CLIENTS : PIPE_ACCEPT_REMOTE_CLIENTS),
      PIPE_UNLIMITED_INSTANCES, size, size, kDefaultTimeoutMs, security.Attributes()));
  if (!m_pipe) {
    Close();
    return false;
  }
  return true;
}

bool NamedPipeServer::Accept() {
  if (::ConnectNamedPipe(m_pipe.Get(), nullptr)) {
    return true;
  }
  const DWORD error = ::GetLastError();
  if (error == ERROR_PIPE_CONNECTED) {
    return true;
  }
  if (error != ERROR_PIPE_LISTENING) {
    Close();
    if (!Create()) {
      ::Sleep(kPauseAfterFailureMs);
    }
  }
  return false;
}

bool NamedPipeServer::IsConnected() const {
  return m_pipe && ::PeekNamedPipe(m_pipe.Get(), nullptr, 0, nullptr, nullptr, nullptr);
}

bool NamedPipeServer::Transact(const std::wstring& text, std::wstring* answer) {
  answer->clear();
  if (!Write(text)) {
    return false;
  }
  while (!HasMessage()) {
    ::Sleep(kAnswerPollMs);
  }
  return Read(answer);
}

void NamedPipeServer::Shutdown() {
  Close();
  m_messages.Free();
  m_name.clear();
  m_bufferChars = 0;
}

}  // namespace postmarker
