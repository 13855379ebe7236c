// Messages that are made to cost time, at sizes 1, 2, 4 and 8, with a fit of the processor time to
// the size. Everything is read: headers, hops and all features.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "analysis/features/KsMailTokenizer.h"
#include "analysis/headers/AddressList.h"
#include "support/HostileMail.h"

namespace postmarker::bench {
namespace {

// Text parts are read up to 128 KiB, so their shapes grow up to that; the others to a megabyte.
constexpr int64_t kTextUnit = 16384;
constexpr int64_t kUnit = 131072;

// Headers may have more features than the memory for them holds. Up to a megabyte the larger sizes
// of such a shape do and the smaller ones don't, so these shapes are also measured up to 16
// megabytes.
constexpr int64_t kLargeUnit = 2 * 1024 * 1024;
constexpr std::string_view kLargeShapes[] = {"senders", "sender addresses", "sender names",
                                             "sender names of pairs of letters"};

template <class Work>
void Measure(benchmark::State& state, Work work) {
  for ([[maybe_unused]] const auto round : state) {
    work();
  }
  state.SetComplexityN(state.range(0));
}

void ReadWhole(benchmark::State& state, const test::HostileShape& shape) {
  const std::string message = shape.make(static_cast<size_t>(state.range(0)));
  Measure(state, [&] {
    KsMailTokenizer tokenizer;
    tokenizer.Parse(message.data(), static_cast<uint32_t>(message.size()), nullptr, nullptr);
    benchmark::DoNotOptimize(tokenizer.GetHops().CountHops() + tokenizer.Tokens().Size());
  });
}

void ReadAddresses(benchmark::State& state) {
  const std::string text = test::Repeated("<,>", static_cast<size_t>(state.range(0)));
  Measure(state, [&] {
    AddressMap addresses;
    ParseAddressList(text, &addresses);
    benchmark::DoNotOptimize(addresses.size());
  });
}

void ReadCommas(benchmark::State& state) {
  const std::string text = test::Repeated("a,", static_cast<size_t>(state.range(0))) + "<";
  Measure(state, [&] {
    AddressMap addresses;
    ParseAddressList(text, &addresses);
    benchmark::DoNotOptimize(addresses.size());
  });
}

void Sizes(benchmark::internal::Benchmark* benchmark, int64_t unit) {
  for (const int64_t size : {1, 2, 4, 8}) {
    benchmark->Arg(size * unit);
  }
  benchmark->Unit(benchmark::kMillisecond)->MinTime(0.1)->Complexity();
}

void Register(const std::vector<test::HostileShape>& shapes, int64_t unit,
              const std::string& prefix = {}) {
  for (const test::HostileShape& shape : shapes) {
    std::string name = prefix + shape.name;
    std::replace(name.begin(), name.end(), ' ', '_');
    Sizes(benchmark::RegisterBenchmark(
              name.c_str(), [shape](benchmark::State& state) { ReadWhole(state, shape); }),
          unit);
  }
}

void RegisterAll() {
  Register(test::HeaderShapes(), kUnit);
  Register(test::SenderShapes(), kUnit / 4);
  Register(test::EntityShapes(), kUnit);
  Register(test::TextShapes(), kTextUnit);
  std::vector<test::HostileShape> large = test::HeaderShapes();
  std::erase_if(large, [](const test::HostileShape& shape) {
    return std::find(std::begin(kLargeShapes), std::end(kLargeShapes), shape.name) ==
           std::end(kLargeShapes);
  });
  Register(large, kLargeUnit, "large ");
  Sizes(benchmark::RegisterBenchmark("address_list", ReadAddresses), kUnit);
  Sizes(benchmark::RegisterBenchmark("address_list_of_commas", ReadCommas), kUnit);
}

}  // namespace
}  // namespace postmarker::bench

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  postmarker::bench::RegisterAll();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
