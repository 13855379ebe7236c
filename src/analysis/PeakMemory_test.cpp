// The memory that reading a message takes at most. All allocations of this program are counted.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <memory>
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

// Where it is set, messages of up to 16 MiB are read, and all their features.
constexpr char kAllSizes[] = "POSTMARKER_LARGE_MESSAGES";

// The peak of memory that `work` takes beyond what is held already.
template <class Work>
size_t PeakOf(Work work) {
  const size_t before = g_held;
  g_peak = before;
  work();
  return g_peak - before;
}

// Reads all features in their order, as far as `most` of each.
size_t ReadFeatures(KsMailTokenizer* tokenizer, size_t most) {
  size_t bytes = 0;
  const auto walk = [&](const auto& items, auto sizeOf) {
    size_t left = most;
    for (auto item = items.begin(); !(item == items.end()) && left > 0; ++item, --left) {
      bytes += sizeOf(*item);
    }
  };
  for (const TokenCountMap* const map :
       {&tokenizer->Tokens(), &tokenizer->SubjectTokens(), &tokenizer->FromNameTokens(),
        &tokenizer->HtmlUrls(), &tokenizer->HtmlAddresses(), &tokenizer->TextUrls(),
        &tokenizer->TextAddresses()}) {
    walk(*map, [](const TokenCountMap::Item& item) { return item.key.size(); });
  }
  for (const WordList* const list :
       {&tokenizer->BodyWords(), &tokenizer->SubjectWords(), &tokenizer->FromNameWords()}) {
    walk(*list, [](std::string_view word) { return word.size(); });
  }
  walk(tokenizer->GetHops(), [](const ReceivedHop& hop) { return hop.first.name.size(); });
  tokenizer->GetHeaders().ForEachSorted(
      [&](std::string_view key, std::string_view value) { bytes += key.size() + value.size(); });
  return bytes;
}

// The peak is reached with the first stretch of each feature.
constexpr size_t kFewItems = 1000;

void ExpectProportion(const test::HostileShape& shape, size_t size) {
  const std::string message = shape.make(size);
  const auto length = static_cast<uint32_t>(message.size());
  const size_t few = std::getenv(kAllSizes) == nullptr ? kFewItems : SIZE_MAX;
  size_t parse = 0;
  const size_t all = PeakOf([&] {
    const auto tokenizer = std::make_unique<KsMailTokenizer>();
    parse = PeakOf([&] { tokenizer->Parse(message.data(), length, nullptr, nullptr); });
    g_peak = g_held.load();
    ReadFeatures(tokenizer.get(), few);
  });
  EXPECT_LE(parse, kFactor * message.size() + kFixed);
  EXPECT_LE(all, kFactor * message.size() + kFixed);
  const auto ratio = [&](size_t peak) {
    return static_cast<double>(peak) / static_cast<double>(message.size());
  };
  std::printf("%-40s %9zu bytes: parse %5.2f, features %5.2f, beyond 2 MiB %5.2f times\n",
              shape.name, message.size(), ratio(parse), ratio(all),
              ratio(all - std::min(all, kFixed)));
}

class PeakMemoryTest : public testing::TestWithParam<test::HostileShape> {};
class PeakMemoryOfPartsTest : public testing::TestWithParam<test::HostileShape> {};

TEST_P(PeakMemoryTest, StaysInProportionToTheMessage) {
  ExpectProportion(GetParam(), kMiB / 2);
  if (std::getenv(kAllSizes) != nullptr) {
    for (const size_t size : {kMiB / 8, kMiB, 16 * kMiB}) {
      ExpectProportion(GetParam(), size);
    }
  }
}

// What is read of parts is bounded, so that the smallest message that fills them costs most.
TEST_P(PeakMemoryOfPartsTest, StaysInProportionToTheMessage) {
  ExpectProportion(GetParam(), kMiB / 8);
  if (std::getenv(kAllSizes) != nullptr) {
    for (const size_t size : {kMiB / 4, 3 * kMiB / 4, kMiB, 16 * kMiB}) {
      ExpectProportion(GetParam(), size);
    }
  }
}

std::string TestName(const testing::TestParamInfo<test::HostileShape>& tested) {
  std::string name = tested.param.name;
  std::replace(name.begin(), name.end(), ' ', '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(Headers, PeakMemoryTest, testing::ValuesIn(test::HeaderShapes()),
                         TestName);
INSTANTIATE_TEST_SUITE_P(Entities, PeakMemoryTest, testing::ValuesIn(test::EntityShapes()),
                         TestName);
INSTANTIATE_TEST_SUITE_P(Parts, PeakMemoryOfPartsTest, testing::ValuesIn(test::TextShapes()),
                         TestName);

}  // namespace
}  // namespace postmarker
