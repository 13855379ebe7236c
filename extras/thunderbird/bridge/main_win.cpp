// The extension's native program. Thunderbird starts it with both streams tied to itself, and ends
// it by closing them. Lines for whoever looks for a fault go to the error stream, which Thunderbird
// shows in its console.
#include <windows.h>

#include <cstdio>

#include "Bridge.h"
#include "NativePort_win.h"
#include "PipeService_win.h"
#include "SpamFolder.h"

namespace postmarker::bridge {
namespace {

constexpr wchar_t kPipeName[] = L"\\\\.\\pipe\\TB_SPAMFILTER{47D90EE3-EF55-4f69-B0E9-BB740F0ADD6F}";

// A pipe that doesn't wait has to be looked at. Seldom while nobody is there, as Thunderbird runs
// all day.
constexpr DWORD kIdleMs = 100;
constexpr DWORD kBusyMs = 10;

// Until Thunderbird ends it.
void Run() {
  NativePort port(::GetStdHandle(STD_INPUT_HANDLE), ::GetStdHandle(STD_OUTPUT_HANDLE));
  bool isHeard = true;
  Bridge bridge({[&](const std::string& message) { isHeard = port.Write(message) && isHeard; },
                 [](const std::string& line) {
                   std::fprintf(stderr, "postmarker-thunderbird: %s\n", line.c_str());
                 },
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

int main() {
  postmarker::bridge::Run();
  return 0;
}
