// The stand-in as a program: a local server of Outlook's class.
// Usage: outlook MAILBOX.json NAME PROCESS [-Embedding]. The test, whose process' id that is, has
// events whose names begin with NAME: "-released" is set when the last object has been released,
// "-hangs" when a call begins to hang, which goes on when "-goes-on" is set, and the program ends
// when "-end" is set or the process has ended. While it runs it has "-runs".
#include <windows.h>

#include <objbase.h>
#include <shellapi.h>

#include <cwchar>

#include "CallGate_win.h"
#include "ObjectModel_win.h"
#include "support/ComPtr_win.h"
#include "support/Handles_win.h"

namespace postmarker::peer {
namespace {

constexpr DWORD kLookMs = 20;

void DispatchMessages() {
  MSG message = {};
  while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
    ::DispatchMessageW(&message);
  }
}

int Serve(wchar_t** arguments) {
  CallGate::Instance().mailbox = Mailbox::Read(arguments[1]);
  const std::wstring name = arguments[2];
  const KernelHandle runs(::CreateEventW(nullptr, TRUE, FALSE, (name + L"-runs").c_str()));
  const KernelHandle released(
      ::OpenEventW(EVENT_MODIFY_STATE, FALSE, (name + L"-released").c_str()));
  const KernelHandle hangs(::OpenEventW(EVENT_MODIFY_STATE, FALSE, (name + L"-hangs").c_str()));
  CallGate::Instance().hangSignal = hangs.Get();
  CallGate::Instance().hangEnd.Reset(
      ::OpenEventW(SYNCHRONIZE, FALSE, (name + L"-goes-on").c_str()));
  const KernelHandle end(::OpenEventW(SYNCHRONIZE, FALSE, (name + L"-end").c_str()));
  const KernelHandle test(
      ::OpenProcess(SYNCHRONIZE, FALSE, std::wcstoul(arguments[3], nullptr, 10)));
  const ComApartment apartment;
  DWORD cookie = 0;
  if (!released || !hangs || !CallGate::Instance().hangEnd || !end || !test ||
      FAILED(::CoRegisterClassObject(kOutlookClass, MakeFactory(), CLSCTX_LOCAL_SERVER,
                                     REGCLS_MULTIPLEUSE, &cookie))) {
    return 1;
  }
  const HANDLE ends[] = {end.Get(), test.Get()};
  bool wasUsed = false;
  while (::MsgWaitForMultipleObjects(2, ends, FALSE, kLookMs, QS_ALLINPUT) >= WAIT_OBJECT_0 + 2) {
    DispatchMessages();
    const long live = CallGate::Instance().live;
    wasUsed = wasUsed || live != 0;
    if (wasUsed && live == 0) {
      ::SetEvent(released.Get());
    }
  }
  ::CoRevokeClassObject(cookie);
  return 0;
}

}  // namespace
}  // namespace postmarker::peer

int WINAPI WinMain(HINSTANCE, HINSTANCE, LPSTR, int) {
  int count = 0;
  wchar_t** const arguments = ::CommandLineToArgvW(::GetCommandLineW(), &count);
  return arguments != nullptr && count >= 4 ? postmarker::peer::Serve(arguments) : 2;
}
