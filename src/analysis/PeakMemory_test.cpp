// The memory that reading a message takes at most. All allocations of this program are counted.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>
#include <string>

#include "analysis/KsMailTokenizer.h"
#include "support/HostileMail.h"

namespace {

constexpr size_t kHeader = 2 * sizeof(void*);       // keeps the alignment that malloc gives
constexpr size_t kBookkeeping = 2 * sizeof(void*);  // what an allocator adds to each block, about

std::atomic<size_t> g_held{0};
std::atomic<size_t> g_peak{0};

void* CountedAllocate(size_t size) {
  auto* const block = static_cast<size_t*>(std::malloc(size + kHeader));
  if (block == nullptr) {
    throw std::bad_alloc();
  }
  *block = size;
  const size_t held = g_held += size + kBookkeeping;
  g_peak = std::max(g_peak.load(), held);
  return reinterpret_cast<char*>(block) + kHeader;
}

void CountedFree(void* memory) noexcept {
  if (memory != nullptr) {
    auto* const block = reinterpret_cast<size_t*>(static_cast<char*>(memory) - kHeader);
    g_held -= *block + kBookkeeping;
    std::free(block);
  }
}

}  // namespace

void* operator new(size_t size) {
  return CountedAllocate(size);
}
void* operator new[](size_t size) {
  return CountedAllocate(size);
}
void operator delete(void* memory) noexcept {
  CountedFree(memory);
}
void operator delete[](void* memory) noexcept {
  CountedFree(memory);
}
void operator delete(void* memory, size_t) noexcept {
  CountedFree(memory);
}
void operator delete[](void* memory, size_t) noexcept {
  CountedFree(memory);
}

namespace postmarker {
namespace {

constexpr size_t kMiB = size_t{1} << 20;
constexpr size_t kFixed = 2 * kMiB;
constexpr size_t kFactor = 6;

// The peak of memory that `work` takes beyond what is held already.
template <class Work>
size_t PeakOf(Work work) {
  const size_t before = g_held;
  g_peak = before;
  work();
  return g_peak - before;
}

class PeakMemoryTest : public testing::TestWithParam<test::HostileShape> {};

TEST_P(PeakMemoryTest, StaysInProportionToTheMessage) {
  const char* const largest = std::getenv("POSTMARKER_LARGE_MESSAGES");
  const size_t most = largest == nullptr ? kMiB : 16 * kMiB;
  for (const size_t size : {kMiB / 8, most}) {
    const std::string message = GetParam().make(size);
    KsMailTokenizer tokenizer;
    const auto length = static_cast<uint32_t>(message.size());
    const size_t parse = PeakOf([&] { tokenizer.Parse(message.data(), length, nullptr, nullptr); });
    EXPECT_LE(parse, kFactor * message.size() + kFixed);
    const size_t features = PeakOf([&] {
      tokenizer.GetHops();
      tokenizer.Tokens();
    });
    std::printf("%s, %zu bytes: parse %.2f times, features %.2f times\n", GetParam().name,
                message.size(), static_cast<double>(parse) / static_cast<double>(message.size()),
                static_cast<double>(features) / static_cast<double>(message.size()));
  }
}

INSTANTIATE_TEST_SUITE_P(Shapes, PeakMemoryTest, testing::ValuesIn(test::HostileShapes()),
                         [](const auto& tested) {
                           std::string name = tested.param.name;
                           std::replace(name.begin(), name.end(), ' ', '_');
                           return name;
                         });

}  // namespace
}  // namespace postmarker
