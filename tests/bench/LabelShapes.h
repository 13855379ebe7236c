// The benchmarks of texts that are made to cost time, at sizes 1, 2, 4 and 8.
#pragma once

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>

#include "support/HostileLabels.h"

namespace postmarker::bench {

// Registers one benchmark for each shape; `work` gets the state and the text.
template <class Work>
void RegisterLabelShapes(Work work) {
  for (const test::LabelShape& shape : test::kLabelShapes) {
    auto* const benchmark =
        benchmark::RegisterBenchmark(shape.name, [&shape, work](benchmark::State& state) {
          work(state, test::LabelText(shape, static_cast<size_t>(state.range(0))));
          state.SetComplexityN(state.range(0));
        });
    for (const int64_t size : {12'500, 25'000, 50'000, 100'000}) {
      benchmark->Arg(size);
    }
    benchmark->Unit(benchmark::kMillisecond)->MinTime(0.1)->Complexity();
  }
}

}  // namespace postmarker::bench
