// The extension's native program. Thunderbird starts it with both streams tied to itself, and ends
// it by closing them. Lines for whoever looks for a fault go to the error stream, which Thunderbird
// shows in its console. People start it with --install or --remove.
#include <windows.h>

#include <array>
#include <cstdio>

#include "Bridge.h"
#include "NativePort_win.h"
#include "PipeService_win.h"
#include "SpamFolder.h"
#include "Task.h"
#include "ThunderbirdSetup_win.h"
#include "support/Text.h"

namespace postmarker::bridge {
namespace {

constexpr wchar_t kPipeName[] = L"\\\\.\\pipe\\TB_SPAMFILTER{47D90EE3-EF55-4f69-B0E9-BB740F0ADD6F}";

// A pipe that doesn't wait has to be looked at. Seldom while nobody is there, as Thunderbird runs
// all day.
constexpr DWORD kIdleMs = 100;
constexpr DWORD kBusyMs = 10;

void Say(const std::string& line) {
  std::fprintf(stderr, "postmarker-thunderbird: %s\n", line.c_str());
}

// Where this program lies; empty if the path is too long to be told.
std::wstring ProgramFolder() {
  std::array<wchar_t, MAX_PATH> path = {};
  const DWORD length = ::GetModuleFileNameW(nullptr, path.data(), MAX_PATH);
  const std::wstring_view program(path.data(), length < MAX_PATH ? length : 0);
  return std::wstring(program.substr(0, std::min(program.rfind(L'\\'), program.size())));
}

// Until Thunderbird ends it.
void Run() {
  NativePort port(::GetStdHandle(STD_INPUT_HANDLE), ::GetStdHandle(STD_OUTPUT_HANDLE));
  bool isHeard = true;
  Bridge bridge({[&](const std::string& message) { isHeard = port.Write(message) && isHeard; }, Say,
                 [] { return ReadSpamFolderId(UserSettings()); }},
                kPipeInstances);
  PipeService pipe(kPipeName);
  while (isHeard && !port.HasEnded()) {
    bool hasWorked = false;
    while (const std::optional<std::string> message = port.Next()) {
      bridge.TakeMessage(*message);
      hasWorked = true;
    }
    hasWorked = pipe.Step(&bridge) || hasWorked;
    if (!hasWorked) {
      port.Wait(pipe.HasClients() ? kBusyMs : kIdleMs);
    }
  }
}

}  // namespace
}  // namespace postmarker::bridge

int wmain(int argc, wchar_t** argv) {
  using namespace postmarker;
  std::vector<std::string> arguments;
  for (int i = 1; i < argc; ++i) {
    arguments.push_back(NarrowUtf8(argv[i]));
  }
  const install::Task task = install::ParseTask(arguments);
  if (task.kind == install::TaskKind::kUnknown) {
    std::fputs(install::kUsage, stderr);
    return install::kMisused;
  }
  if (task.kind != install::TaskKind::kServe) {
    return install::RunSetup(task, bridge::ProgramFolder(), bridge::Say);
  }
  bridge::Run();
  return install::kDone;
}
