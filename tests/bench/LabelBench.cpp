// Labels that are made to cost time, up to 100,000 characters: parsing and word wrap, with a fit of
// the processor time to the size. The surface measures by counting, so what is timed is the
// label's.
#include <benchmark/benchmark.h>

#include <string>

#include "Contest.h"
#include "controls/LabelLayout.h"
#include "support/HostileLabels.h"
#include "support/PlainLabelSurface.h"

namespace postmarker::bench {
namespace {

void LayOut(benchmark::State& state, const test::LabelShape& shape) {
  const std::wstring text = test::LabelText(shape, static_cast<size_t>(state.range(0)));
  LabelArea area;
  area.width = 300;
  for ([[maybe_unused]] const auto round : state) {
    const LabelMarkup markup = ParseLabel(text);
    test::PlainLabelSurface surface;
    benchmark::DoNotOptimize(LayOutLabel(markup, area, &surface).height);
  }
  state.SetComplexityN(state.range(0));
}

void Register() {
  for (const test::LabelShape& shape : test::kLabelShapes) {
    auto* const benchmark = benchmark::RegisterBenchmark(
        shape.name, [&shape](benchmark::State& state) { LayOut(state, shape); });
    for (const int64_t size : {12'500, 25'000, 50'000, 100'000}) {
      benchmark->Arg(size);
    }
    benchmark->Unit(benchmark::kMillisecond)->MinTime(0.1)->Complexity();
  }
}

}  // namespace
}  // namespace postmarker::bench

int main(int argc, char** argv) {
  postmarker::bench::KeepFreedMemory();
  postmarker::bench::Register();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
