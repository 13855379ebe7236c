// One end of a channel that stops in the middle of the handshake, to be killed there.
// Usage: channel_end READY serve|connect RENDEZVOUS STEP REACHED. Sets the event READY at its
// start, the event REACHED after the step of that number (see RawChannel_win.h), and then does
// nothing.
#include <windows.h>

#include <shellapi.h>

#include <string_view>

#include "RawChannel_win.h"

namespace {

void Set(const wchar_t* name) {
  const postmarker::KernelHandle event(::OpenEventW(EVENT_MODIFY_STATE, FALSE, name));
  ::SetEvent(event.Get());
}

}  // namespace

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
  using namespace postmarker::peer;
  int count = 0;
  wchar_t** const arguments = ::CommandLineToArgvW(::GetCommandLineW(), &count);
  if (arguments == nullptr || count != 6) {
    return 2;
  }
  const auto stopAt = static_cast<int>(std::wcstol(arguments[4], nullptr, 10));
  const auto onStep = [&](auto step) {
    if (static_cast<int>(step) == stopAt) {
      Set(arguments[5]);
      ::Sleep(INFINITE);
    }
  };
  Set(arguments[1]);
  if (std::wstring_view(arguments[2]) == L"serve") {
    RawServerOptions options;
    options.name = arguments[3];
    options.onStep = onStep;
    RawListen(options);
  } else {
    RawClientOptions options;
    options.name = arguments[3];
    options.onStep = onStep;
    RawConnect(options);
  }
  return 1;
}
