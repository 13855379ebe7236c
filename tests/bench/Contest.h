// How benchmarks set one way of doing a thing against another.
#pragma once

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <ctime>
#include <vector>

namespace postmarker::bench {

// Of the processor's time: what the machine does for others in between does not count.
template <class Work>
double SecondsOf(Work work) {
  const std::clock_t begin = std::clock();
  auto result = work();
  const std::clock_t end = std::clock();
  benchmark::DoNotOptimize(result);
  return static_cast<double>(end - begin) / CLOCKS_PER_SEC;
}

inline double Median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

// Memory that was freed stays with the process: how long the kernel takes to hand out pages depends
// on what else the machine does, and is paid by all contestants or by none.
inline void KeepFreedMemory() {
  constexpr int kBytes = 256 * 1024 * 1024;
  mallopt(M_TRIM_THRESHOLD, kBytes);
  mallopt(M_MMAP_THRESHOLD, kBytes);
}

}  // namespace postmarker::bench
