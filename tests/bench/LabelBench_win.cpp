// A label of 100,000 characters as a person meets it: the control gets its text, lays it out with a
// device context, and paints what can be seen.
#include <windows.h>

#include <benchmark/benchmark.h>

#include <string>

#include "LabelShapes.h"
#include "controls/CXHTMLStatic_win.h"
#include "ui/CWinApp.h"

namespace postmarker::bench {
namespace {

void SetAndPaint(benchmark::State& state, const std::wstring& text) {
  const ModuleStateGuard guard;
  const HWND window = ::CreateWindowExW(0, L"STATIC", L"", WS_POPUP | WS_VISIBLE, 0, 0, 300, 120,
                                        nullptr, nullptr, nullptr, nullptr);
  ::SendMessageW(window, WM_SETFONT, reinterpret_cast<WPARAM>(::GetStockObject(DEFAULT_GUI_FONT)),
                 FALSE);
  CXHTMLStatic label;
  label.Attach(window);
  for ([[maybe_unused]] const auto round : state) {
    label.SetText(text);
    ::UpdateWindow(window);
  }
}

}  // namespace
}  // namespace postmarker::bench

int main(int argc, char** argv) {
  postmarker::bench::RegisterLabelShapes(&postmarker::bench::SetAndPaint);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
