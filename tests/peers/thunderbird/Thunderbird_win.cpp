// A stand-in for Thunderbird with the suite's extension in it. It takes no arguments: its mailbox
// is the file mailbox.json in its own folder (see Mailbox.h), and all that happens is told, a line
// each, in journal.txt beside it:
//
//   started PROCESS SHOW     the process id, and how its window was to be shown
//   serving                  the pipe is there
//   N> MESSAGE               a message of the connection with this number
//   silent                   a reply has stopped before its end, as the mailbox wants it
//   window shown / hidden
//   exit                     it was told to exit
//
// It serves several connections at a time and can be killed at any moment.
#include <windows.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "peers/thunderbird/Mailbox.h"
#include "support/DetachedThread_win.h"
#include "support/Handles_win.h"
#include "support/Text.h"

namespace postmarker::peer {
namespace {

constexpr wchar_t kPipeName[] = L"\\\\.\\pipe\\TB_SPAMFILTER{47D90EE3-EF55-4f69-B0E9-BB740F0ADD6F}";
constexpr DWORD kPipeBytes = 1 << 20;
constexpr int kInstances = 6;
constexpr size_t kMaxMessageChars = 65536;
constexpr UINT kHideMessage = WM_APP;

std::wstring OwnFolder() {
  std::wstring path(MAX_PATH, L'\0');
  path.resize(::GetModuleFileNameW(nullptr, path.data(), MAX_PATH));
  return path.substr(0, path.rfind(L'\\') + 1);
}

// A line at a time, from any thread; nothing is lost when the process is killed.
class Journal {
 public:
  explicit Journal(const std::wstring& path)
      : m_file(::CreateFileW(path.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE,
                             nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr)) {}

  void Add(const std::wstring& line) {
    const std::string text = NarrowUtf8(line) + "\n";
    const std::lock_guard lock(m_mutex);
    DWORD written = 0;
    ::WriteFile(m_file.Get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
  }

 private:
  std::mutex m_mutex;
  FileHandle m_file;
};

struct Thunderbird {
  Thunderbird() : journal(OwnFolder() + L"journal.txt"), mailbox(OwnFolder() + L"mailbox.json") {}

  Journal journal;
  std::mutex mailboxMutex;
  Mailbox mailbox;
  HWND window = nullptr;
  std::atomic<int> connections = 0;
};

// Ends a reply before its end marker.
struct SilentFromNowOn {};
struct ConnectionOver {};

// The extension's side of one connection.
class Conversation {
 public:
  Conversation(Thunderbird* owner, HANDLE pipe)
      : m_owner(owner), m_pipe(pipe), m_number(++owner->connections) {}

  // Until the connection is over.
  void Run() {
    try {
      for (;;) {
        Answer(Receive());
      }
    } catch (const ConnectionOver&) {
      ::DisconnectNamedPipe(m_pipe);
    }
  }

 private:
  std::wstring Receive() {
    std::wstring message(kMaxMessageChars, L'\0');
    DWORD bytes = 0;
    if (!::ReadFile(m_pipe, message.data(), static_cast<DWORD>(message.size() * sizeof(wchar_t)),
                    &bytes, nullptr)) {
      throw ConnectionOver();
    }
    message.resize(bytes / sizeof(wchar_t));
    message.resize(std::wcslen(message.c_str()));
    m_owner->journal.Add(std::to_wstring(m_number) + L"> " + message);
    return message;
  }

  void Misbehave() const {
    if (m_said == m_script.pauseAfter) {
      ::Sleep(m_script.pauseMs);
    }
    if (m_said == m_script.dieAfter) {
      ::TerminateProcess(::GetCurrentProcess(), 1);
    }
    if (m_said == m_script.closeAfter) {
      // What was said arrives before the end.
      ::FlushFileBuffers(m_pipe);
      throw ConnectionOver();
    }
    if (m_said == m_script.stopAfter) {
      throw SilentFromNowOn();
    }
  }

  void Say(const std::wstring& message) {
    Misbehave();
    const auto bytes = static_cast<DWORD>((message.size() + 1) * sizeof(wchar_t));
    DWORD written = 0;
    if (!::WriteFile(m_pipe, message.c_str(), bytes, &written, nullptr)) {
      throw ConnectionOver();
    }
    ++m_said;
  }

  void SayAll(const std::vector<std::wstring>& messages) {
    for (const std::wstring& message : messages) {
      Say(message);
    }
  }

  void Answer(const std::wstring& command) {
    if (command == L"HideThunderbirdWindow") {
      ::PostMessageW(m_owner->window, kHideMessage, 0, 0);
      return;
    }
    if (command == L"ExitThunderbird") {
      m_owner->journal.Add(L"exit");
      ::TerminateProcess(::GetCurrentProcess(), 0);
    }
    {
      const std::lock_guard lock(m_owner->mailboxMutex);
      m_owner->mailbox.Load();
      m_script = m_owner->mailbox.ScriptOf(command);
    }
    m_said = 0;
    try {
      if (m_script.hasRaw) {
        do {
          SayAll(m_script.raw);
        } while (m_script.repeat);
      } else {
        AnswerFromMailbox(command);
      }
      Say(L"#####" + command);
    } catch (const SilentFromNowOn&) {
      m_owner->journal.Add(L"silent");
    }
  }

  template <class Question>
  auto Ask(Question question) {
    const std::lock_guard lock(m_owner->mailboxMutex);
    return question(m_owner->mailbox);
  }

  void AnswerFromMailbox(const std::wstring& command) {
    if (command == L"GiveAllFolders") {
      SayAll(Ask([](Mailbox& mailbox) { return mailbox.FolderRecords(); }));
    } else if (command == L"GiveContacts") {
      SayAll(Ask([](Mailbox& mailbox) { return mailbox.Contacts(); }));
    } else if (command == L"SentItemsEntries") {
      Say(std::to_wstring(Ask([](Mailbox& mailbox) { return mailbox.Sent(); }).size()));
    } else if (command == L"GiveAddressesFromSentItems") {
      for (const std::wstring& recipients : Ask([](Mailbox& mailbox) { return mailbox.Sent(); })) {
        Say(L"IncreaseProgressBar");
        Say(recipients);
      }
    } else if (command == L"AddNewFolder") {
      Say(L"OK");
      AddFolder(Receive());
    } else if (command == L"SetMoveMails") {
      Say(L"OK");
      const bool move = Receive() == L"true";
      Ask([move](Mailbox& mailbox) {
        mailbox.SetMoveMails(move);
        return 0;
      });
    }
  }

  void AddFolder(const std::wstring& request) {
    const size_t cut = request.rfind(L"######");
    const std::wstring store = cut == std::wstring::npos ? L"" : request.substr(cut + 6);
    Say(Ask([&](Mailbox& mailbox) { return mailbox.AddFolder(request.substr(0, cut), store); }));
  }

  Thunderbird* m_owner;
  HANDLE m_pipe;
  int m_number;
  Script m_script;
  int m_said = 0;  // messages of the current reply
};

FileHandle MakeInstance() {
  return FileHandle(::CreateNamedPipeW(
      kPipeName, PIPE_ACCESS_DUPLEX, PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_WAIT,
      PIPE_UNLIMITED_INSTANCES, kPipeBytes, kPipeBytes, 0, nullptr));
}

void ServeInstance(Thunderbird* owner, FileHandle pipe) {
  for (; pipe; pipe = MakeInstance()) {
    if (::ConnectNamedPipe(pipe.Get(), nullptr) || ::GetLastError() == ERROR_PIPE_CONNECTED) {
      Conversation(owner, pipe.Get()).Run();
    }
  }
}

void ServeAll(Thunderbird* owner) {
  ::Sleep(owner->mailbox.StartDelay());
  for (int i = 0; i < kInstances; ++i) {
    test::RunDetached([owner, pipe = std::make_shared<FileHandle>(MakeInstance())] {
      ServeInstance(owner, std::move(*pipe));
    });
  }
  owner->journal.Add(L"serving");
}

// The client's window, which comes up whatever the starter asked for, as Thunderbird's does.
HWND MakeMainWindow() {
  WNDCLASSEXW windowClass = {};
  windowClass.cbSize = sizeof(windowClass);
  windowClass.lpfnWndProc = ::DefWindowProcW;
  windowClass.hInstance = ::GetModuleHandleW(nullptr);
  windowClass.lpszClassName = L"PostmarkerThunderbirdPeer";
  ::RegisterClassExW(&windowClass);
  return ::CreateWindowExW(WS_EX_NOACTIVATE, windowClass.lpszClassName, L"Thunderbird",
                           WS_OVERLAPPEDWINDOW, 900, 700, 200, 100, nullptr, nullptr,
                           windowClass.hInstance, nullptr);
}

int Run() {
  Thunderbird thunderbird;
  STARTUPINFOW startup = {};
  ::GetStartupInfoW(&startup);
  const int show = (startup.dwFlags & STARTF_USESHOWWINDOW) != 0 ? startup.wShowWindow : SW_SHOW;
  thunderbird.journal.Add(L"started " + std::to_wstring(::GetCurrentProcessId()) + L" " +
                          std::to_wstring(show));
  thunderbird.window = MakeMainWindow();
  ::ShowWindow(thunderbird.window, SW_SHOWNOACTIVATE);
  thunderbird.journal.Add(L"window shown");
  if (thunderbird.mailbox.Serves()) {
    test::RunDetached([&thunderbird] { ServeAll(&thunderbird); });
  }
  MSG message;
  while (::GetMessageW(&message, nullptr, 0, 0) > 0) {
    if (message.message == kHideMessage) {
      ::ShowWindow(thunderbird.window, SW_HIDE);
      thunderbird.journal.Add(L"window hidden");
    }
    ::DispatchMessageW(&message);
  }
  // The threads that serve use the mailbox: nothing is taken down around them.
  ::TerminateProcess(::GetCurrentProcess(), 0);
  return 0;
}

}  // namespace
}  // namespace postmarker::peer

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
  return postmarker::peer::Run();
}
