// Labels that are made to cost time, up to 100,000 characters: parsing and word wrap, with a fit of
// the processor time to the size. The surface measures by counting, so what is timed is the
// label's.
#include <benchmark/benchmark.h>

#include <string>

#include "Contest.h"
#include "LabelShapes.h"
#include "controls/LabelLayout.h"
#include "support/PlainLabelSurface.h"

namespace postmarker::bench {
namespace {

void LayOut(benchmark::State& state, const std::wstring& text) {
  LabelArea area;
  area.width = 300;
  for ([[maybe_unused]] const auto round : state) {
    const LabelMarkup markup = ParseLabel(text);
    test::PlainLabelSurface surface;
    benchmark::DoNotOptimize(LayOutLabel(markup, area, &surface).height);
  }
}

}  // namespace
}  // namespace postmarker::bench

int main(int argc, char** argv) {
  postmarker::bench::KeepFreedMemory();
  postmarker::bench::RegisterLabelShapes(&postmarker::bench::LayOut);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
