// A host that reports progress in a tight loop: what a call costs beside a bare post of a message,
// and how long a click of the mouse waits meanwhile.
#include <windows.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <thread>

#include "postmarker/Progress.h"
#include "support/Handles_win.h"
#include "support/Stage_win.h"
#include "support/WizardSession_win.h"

namespace postmarker::test {
namespace {

constexpr int64_t kCalls = 1'000'000;
constexpr int kStop = 13014;
constexpr UINT kBareMessage = WM_USER + 2;

double Milliseconds() {
  LARGE_INTEGER frequency = {};
  LARGE_INTEGER count = {};
  ::QueryPerformanceFrequency(&frequency);
  ::QueryPerformanceCounter(&count);
  return 1000.0 * static_cast<double>(count.QuadPart) / static_cast<double>(frequency.QuadPart);
}

class Service {
 public:
  Service() : m_module(::LoadLibraryW((StageFolder() + L"\\Spamfilter\\Postmarker.dll").c_str())) {
    PostmarkerLoadProgress(m_module.Get(), &m_functions);
    m_progress = m_functions.create(0, "A job", 0);
    m_functions.set(m_progress, "Fast", 60'000);
    WizardSession::Require([this] { return (m_window = FindVisibleWindow(L"#32770")) != nullptr; },
                           "the window was not shown");
  }
  Service(const Service&) = delete;
  Service& operator=(const Service&) = delete;
  ~Service() { m_functions.destroy(m_progress, 1); }
  void Increase() const { m_functions.increase(m_progress, 1); }
  [[nodiscard]] bool IsCancelled() const { return m_functions.isCancelled(m_progress) != 0; }
  [[nodiscard]] HWND Window() const { return m_window; }

 private:
  LibraryHandle m_module;
  PostmarkerProgressFunctions m_functions = {};
  PostmarkerProgress* m_progress = nullptr;
  HWND m_window = nullptr;
};

// A window that does nothing, on a thread that takes its messages.
class BareWindow {
 public:
  BareWindow() : m_thread([this] { Run(); }) {
    WizardSession::Require([this] { return m_window != nullptr; }, "no window");
  }
  BareWindow(const BareWindow&) = delete;
  BareWindow& operator=(const BareWindow&) = delete;
  ~BareWindow() {
    ::PostMessageW(m_window, WM_CLOSE, 0, 0);
    m_thread.join();
  }
  void Post() const { ::PostMessageW(m_window, kBareMessage, 0, 1); }

 private:
  void Run() {
    m_window = ::CreateWindowExW(0, L"STATIC", L"", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr,
                                 nullptr);
    MSG message = {};
    while (::GetMessageW(&message, nullptr, 0, 0) > 0 && message.message != WM_CLOSE) {
      ::DispatchMessageW(&message);
    }
  }

  std::atomic<HWND> m_window = nullptr;
  std::thread m_thread;
};

void BarePost(benchmark::State& state) {
  const BareWindow window;
  for (auto _ : state) {
    window.Post();
  }
}

void IncreaseProgressbarCall(benchmark::State& state) {
  const Service service;
  for (auto _ : state) {
    service.Increase();
  }
}

// Clicks Stop by the mouse. How many milliseconds the answer took, at most a second.
double ClickStop(const Service& service) {
  RECT stop = {};
  ::GetWindowRect(::GetDlgItem(service.Window(), kStop), &stop);
  ::SetForegroundWindow(service.Window());
  ::SetCursorPos((stop.left + stop.right) / 2, (stop.top + stop.bottom) / 2);
  INPUT click[2] = {};
  click[0].type = click[1].type = INPUT_MOUSE;
  click[0].mi.dwFlags = MOUSEEVENTF_LEFTDOWN;
  click[1].mi.dwFlags = MOUSEEVENTF_LEFTUP;
  const double begin = Milliseconds();
  ::SendInput(2, click, sizeof(click[0]));
  while (!service.IsCancelled() && Milliseconds() - begin < 1000) {
    ::Sleep(1);
  }
  return Milliseconds() - begin;
}

void ClickWhileTheHostReports(benchmark::State& state) {
  double longest = 0;
  for (auto _ : state) {
    const Service service;
    std::atomic<bool> isOver = false;
    std::thread host([&] {
      while (!isOver) {
        service.Increase();
      }
    });
    ::Sleep(300);
    double waited = 0;
    // Again if it went astray: the first window of a desktop is not at the front at once.
    for (int attempt = 0; attempt < 10 && !service.IsCancelled(); ++attempt) {
      waited = ClickStop(service);
    }
    longest = std::max(longest, waited);
    state.SetIterationTime(waited / 1000);
    isOver = true;
    host.join();
  }
  state.counters["longest_wait_ms"] = longest;
}

BENCHMARK(BarePost)->Iterations(kCalls)->UseRealTime();
BENCHMARK(IncreaseProgressbarCall)->Iterations(kCalls)->UseRealTime();
BENCHMARK(ClickWhileTheHostReports)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(10);

}  // namespace
}  // namespace postmarker::test

BENCHMARK_MAIN();
