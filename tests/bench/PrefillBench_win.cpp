// The prefill page while addresses arrive: how long it takes until all are in the grid, and how
// long a click that is posted meanwhile waits at most.
#include <windows.h>

#include <benchmark/benchmark.h>
#include <commctrl.h>

#include <algorithm>
#include <atomic>
#include <iterator>

#include "support/RegistrySandbox_win.h"
#include "support/Stage_win.h"
#include "support/TestClients_win.h"
#include "support/WizardSession_win.h"
#include "ui/CWinApp.h"
#include "wizard/CPostmarkerApp_win.h"
#include "wizard/CWizardSheet_win.h"

namespace postmarker::test {
namespace {

constexpr wchar_t kProbeClass[] = L"PostmarkerProbe";
constexpr UINT kProbeMessage = WM_APP;
constexpr DWORD kClickEveryMs = 2;

CPostmarkerApp g_app;

double Milliseconds() {
  LARGE_INTEGER frequency = {};
  LARGE_INTEGER count = {};
  ::QueryPerformanceFrequency(&frequency);
  ::QueryPerformanceCounter(&count);
  return 1000.0 * static_cast<double>(count.QuadPart) / static_cast<double>(frequency.QuadPart);
}

// A window of the wizard's thread, to which clicks are posted. Each stands in the queue among the
// messages of the page.
struct Probe {
  std::atomic<HWND> window = nullptr;
  double longestWait = 0;
};
Probe g_probe;

LRESULT CALLBACK ProbeProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message != kProbeMessage) {
    return ::DefWindowProcW(window, message, wParam, lParam);
  }
  const double postedAt = static_cast<double>(lParam) / 1000;
  g_probe.longestWait = std::max(g_probe.longestWait, Milliseconds() - postedAt);
  return 0;
}

int32_t RunSheet(WizardRequest* request) {
  const ModuleStateGuard guard;
  WNDCLASSW description = {};
  description.lpfnWndProc = &ProbeProc;
  description.lpszClassName = kProbeClass;
  ::RegisterClassW(&description);
  g_probe.window = ::CreateWindowExW(0, kProbeClass, L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr,
                                     nullptr, nullptr);
  CWizardSheet sheet(L"Kestrelon", request, nullptr, 0);
  return static_cast<int32_t>(sheet.DoModal());
}

// Texts and dialogs as the module has them.
class Resources {
 public:
  Resources()
      : m_module(::LoadLibraryExW((StageFolder() + L"\\res\\en\\PostmarkerRes.dll").c_str(),
                                  nullptr,
                                  LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE)) {
    g_app.SetModule(::GetModuleHandleW(nullptr));
    g_app.SetResourceModule(m_module.Get());
    INITCOMMONCONTROLSEX controls = {sizeof(controls), ICC_WIN95_CLASSES | ICC_STANDARD_CLASSES};
    ::InitCommonControlsEx(&controls);
  }
  Resources(const Resources&) = delete;
  Resources& operator=(const Resources&) = delete;
  ~Resources() { g_app.SetResourceModule(nullptr); }

 private:
  LibraryHandle m_module;
};

AddressSet MakeAddresses(int64_t count) {
  AddressSet addresses;
  for (int64_t i = 0; i < count; ++i) {
    // Capitals make the order in which they are posted another one than that of the grid.
    addresses.insert((i % 3 == 0 ? L"User" : L"user") + std::to_wstring(i * 7919 % 1'000'003) +
                     L"@example.org");
  }
  return addresses;
}

AddressSet InLowerCase(const AddressSet& addresses) {
  AddressSet lower;
  for (const std::wstring& address : addresses) {
    lower.insert(ToLower(address));
  }
  return lower;
}

// Looks at some rows for their order, as a question to another thread takes its time, and at the
// page's answer for the rest.
bool HasRows(const WizardSession& session, const WizardRequest& request,
             const AddressSet& expected) {
  const HWND grid = session.AddressGrid();
  const auto count = static_cast<LRESULT>(expected.size());
  bool matches = ::SendMessageW(grid, LVM_GETITEMCOUNT, 0, 0) == count;
  for (LRESULT row = 0; row < count; row += count / 50) {
    matches = matches && WizardSession::CellText(grid, row, 0) == *std::next(expected.begin(), row);
  }
  session.ClickButton(kNextButton);
  session.WaitForPage(Page::kSettings);
  return matches && request.prefillAddresses == expected;
}

void PostClicksUntilShown(HWND grid) {
  while (!::IsWindowVisible(grid)) {
    // In microseconds, for which the parameter has room in this program of 64 bits.
    ::PostMessageW(g_probe.window, kProbeMessage, 0, static_cast<LPARAM>(Milliseconds() * 1000));
    ::Sleep(kClickEveryMs);
  }
}

void PostedAddresses(benchmark::State& state) {
  const Resources resources;
  const RegistrySandbox registry(Redirect::kUserAndMachine);
  TestClients clients;
  clients.client.folders = SmallStore();
  clients.client.addresses = MakeAddresses(state.range(0));
  const AddressSet expected = InLowerCase(clients.client.addresses);
  double longestWait = 0;
  for (auto _ : state) {
    std::atomic<bool> go = false;
    std::atomic<double> begin = 0;
    clients.client.whileCollecting = [&](const ProgressCallbacks* /*callbacks*/) {
      while (!go) {
        ::Sleep(1);
      }
      begin = Milliseconds();
    };
    g_probe.longestWait = 0;
    WizardRequest request;
    request.clientName = L"Plain";
    WizardSession session(&RunSheet, &request);
    session.WaitForPage(Page::kWelcome);
    session.ClickButton(kNextButton);
    session.WaitForTree();
    session.ClickItem(L"Inbox");
    session.ClickButton(kNextButton);
    session.WaitForPage(Page::kPrefill);
    const HWND grid = session.AddressGrid();
    go = true;
    PostClicksUntilShown(grid);
    state.SetIterationTime((Milliseconds() - begin) / 1000);
    longestWait = std::max(longestWait, g_probe.longestWait);
    if (!HasRows(session, request, expected)) {
      state.SkipWithError("the grid has not the rows that it should have");
    }
    session.Close();
    session.Result();
  }
  state.counters["longest_wait_ms"] = longestWait;
}

BENCHMARK(PostedAddresses)
    ->Arg(1000)
    ->Arg(5000)
    ->Arg(20000)
    ->Unit(benchmark::kMillisecond)
    ->UseManualTime()
    ->Iterations(3);

}  // namespace
}  // namespace postmarker::test

BENCHMARK_MAIN();
