// A label of 100,000 characters as a person meets it: the control gets its text, lays it out with a
// device context, and paints what can be seen.
#include <windows.h>

#include <benchmark/benchmark.h>

#include <string>

#include "controls/CXHTMLStatic_win.h"
#include "support/HostileLabels.h"
#include "ui/CWinApp.h"

namespace postmarker::bench {
namespace {

void SetAndPaint(benchmark::State& state, const test::LabelShape& shape) {
  const ModuleStateGuard guard;
  const HWND window = ::CreateWindowExW(0, L"STATIC", L"", WS_POPUP | WS_VISIBLE, 0, 0, 300, 120,
                                        nullptr, nullptr, nullptr, nullptr);
  ::SendMessageW(window, WM_SETFONT, reinterpret_cast<WPARAM>(::GetStockObject(DEFAULT_GUI_FONT)),
                 FALSE);
  CXHTMLStatic label;
  label.Attach(window);
  const std::wstring text = test::LabelText(shape, static_cast<size_t>(state.range(0)));
  for ([[maybe_unused]] const auto round : state) {
    label.SetText(text);
    ::UpdateWindow(window);
  }
  state.SetComplexityN(state.range(0));
}

void Register() {
  for (const test::LabelShape& shape : test::kLabelShapes) {
    auto* const benchmark = benchmark::RegisterBenchmark(
        shape.name, [&shape](benchmark::State& state) { SetAndPaint(state, shape); });
    for (const int64_t size : {12'500, 25'000, 50'000, 100'000}) {
      benchmark->Arg(size);
    }
    benchmark->Unit(benchmark::kMillisecond)->MinTime(0.1)->Complexity();
  }
}

}  // namespace
}  // namespace postmarker::bench

int main(int argc, char** argv) {
  postmarker::bench::Register();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
