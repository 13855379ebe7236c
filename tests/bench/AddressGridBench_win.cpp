// How long addresses take into the address grid, beside what the bare list view needs to take them
// as rows, and how long a typed text takes to be judged.
#include <windows.h>

#include <benchmark/benchmark.h>
#include <commctrl.h>

#include <algorithm>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "controls/KsEmailAddressGridCtrl_win.h"
#include "settings/AddressMatcher.h"
#include "settings/VbScriptRegExp_win.h"
#include "support/ComPtr_win.h"
#include "ui/CWinApp.h"

namespace postmarker {
namespace {

class BenchApp : public CWinApp {};
BenchApp g_app;

// Distinct addresses in ascending order, as a harvest posts them.
std::vector<std::wstring> MakeAddresses(int64_t count) {
  std::vector<std::wstring> addresses;
  for (int64_t i = 0; i < count; ++i) {
    std::wstring number = std::to_wstring(i);
    number.insert(0, 6 - number.size(), L'0');
    addresses.push_back(L"name." + number + L"@example.org");
  }
  return addresses;
}

// A visible list view on a window of its own.
class ListWindow {
 public:
  ListWindow()
      : m_frame(::CreateWindowExW(0, L"STATIC", L"", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 50, 50, 480,
                                  400, nullptr, nullptr, nullptr, nullptr)),
        m_list(::CreateWindowExW(0, WC_LISTVIEWW, L"",
                                 WS_CHILD | WS_VISIBLE | LVS_REPORT | LVS_SHOWSELALWAYS, 0, 0, 440,
                                 340, m_frame, nullptr, nullptr, nullptr)) {
    if (m_list == nullptr) {
      throw std::runtime_error("no list view");
    }
  }
  ListWindow(const ListWindow&) = delete;
  ListWindow& operator=(const ListWindow&) = delete;
  ~ListWindow() { ::DestroyWindow(m_frame); }

  [[nodiscard]] HWND List() const { return m_list; }

 private:
  HWND m_frame;
  HWND m_list;
};

// The bare control: the same rows, given in their final order.
void ListViewAlone(benchmark::State& state) {
  const std::vector<std::wstring> addresses = MakeAddresses(state.range(0));
  for (auto _ : state) {
    state.PauseTiming();
    const ListWindow window;
    CListCtrl list;
    list.Subclass(window.List());
    list.InsertColumn(0, L"Address", 210);
    list.InsertColumn(1, L"Domain", 210);
    state.ResumeTiming();
    list.SetRedraw(false);
    for (const std::wstring& address : addresses) {
      list.SetItemText(list.InsertItem(list.ItemCount(), address), 1, L"example.org");
    }
    list.SetRedraw(true);
  }
}

// Adds the addresses one by one.
void AddAll(benchmark::State& state, const std::vector<std::wstring>& addresses) {
  for (auto _ : state) {
    state.PauseTiming();
    const ModuleStateGuard guard;
    const ListWindow window;
    KsEmailAddressGridCtrl grid;
    if (!grid.Attach(window.List()) || !grid.Initialise(210, 22, {})) {
      state.SkipWithError("no grid");
    }
    state.ResumeTiming();
    for (const std::wstring& address : addresses) {
      grid.AddAddress(address);
    }
    state.PauseTiming();
    AddressSet rows;
    grid.ReadAddresses(&rows);
    if (rows.size() != addresses.size()) {
      state.SkipWithError("the grid has not all addresses");
    }
    state.ResumeTiming();
  }
}

void AddressGrid(benchmark::State& state) {
  AddAll(state, MakeAddresses(state.range(0)));
}

// In an order that jumps about, so that the control has to move rows at each.
void AddressGridShuffled(benchmark::State& state) {
  std::vector<std::wstring> addresses = MakeAddresses(state.range(0));
  std::shuffle(addresses.begin(), addresses.end(), std::mt19937(1));
  AddAll(state, addresses);
}

// Texts that begin like addresses and turn out to be none.
std::wstring HostileText(size_t length) {
  std::wstring text;
  while (text.size() < length) {
    text.append(L"a-");
  }
  return text;
}

void PlatformJudges(benchmark::State& state) {
  const ComApartment apartment;
  const auto engine = CreateVbScriptRegExp();
  if (!engine || !engine->SetPattern(AddressPattern(AddressMode::kAddress))) {
    state.SkipWithError("the platform has no engine");
    return;
  }
  const std::wstring text = HostileText(static_cast<size_t>(state.range(0)));
  for (auto _ : state) {
    if (engine->Test(text) != false) {
      state.SkipWithError("wrong verdict");
    }
  }
}

void GridJudges(benchmark::State& state) {
  const ComApartment apartment;
  AddressValidator validator(MakePromptEngine(CreateVbScriptRegExp()));
  validator.SetMode(AddressMode::kAddress);
  const std::wstring text = HostileText(static_cast<size_t>(state.range(0)));
  for (auto _ : state) {
    if (validator.IsValid(text.c_str())) {
      state.SkipWithError("wrong verdict");
    }
  }
}

void Sizes(benchmark::internal::Benchmark* benchmark) {
  for (const int64_t count : {1000, 5000, 20000}) {
    benchmark->Arg(count);
  }
  benchmark->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);
}

BENCHMARK(ListViewAlone)->Apply(Sizes);
BENCHMARK(AddressGrid)->Apply(Sizes);
BENCHMARK(AddressGridShuffled)->Apply(Sizes);
BENCHMARK(PlatformJudges)->Arg(26)->Arg(28)->Arg(30)->Unit(benchmark::kMicrosecond);
BENCHMARK(GridJudges)->Arg(26)->Arg(100)->Arg(100000)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace postmarker

int main(int argc, char** argv) {
  postmarker::g_app.SetModule(::GetModuleHandleW(nullptr));
  INITCOMMONCONTROLSEX controls = {sizeof(controls), ICC_LISTVIEW_CLASSES};
  ::InitCommonControlsEx(&controls);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
