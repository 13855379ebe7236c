// Stand-in for the suite's window hook module. The counts of its calls are read through an export
// of its own.
#include <windows.h>

namespace {

int g_calls[3] = {};

}  // namespace

extern "C" {

void __stdcall InitHook(HWND /*window*/) {
  ++g_calls[0];
}
void __stdcall AddHookableWindow(HWND /*window*/) {
  ++g_calls[1];
}
void __stdcall UninitHook() {
  ++g_calls[2];
}
void __stdcall AddHookableThread(DWORD /*thread*/) {}
int __stdcall CallsOf(int function) {
  return g_calls[function];
}

}  // extern "C"
