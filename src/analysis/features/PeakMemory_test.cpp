// The memory that reading a message takes at most. All allocations of this program are counted.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <random>
#include <string>
#include <vector>

#include "analysis/features/KsMailTokenizer.h"
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
constexpr size_t kMaxMemoryBytes = 256 * kMiB;

// Where it is set, messages of up to 16 MiB are read.
constexpr char kAllSizes[] = "POSTMARKER_LARGE_MESSAGES";

// The peak of memory that `work` takes beyond what is held already.
template <class Work>
size_t PeakOf(Work work) {
  const size_t before = g_held;
  g_peak = before;
  work();
  return g_peak - before;
}

// Reads all features in their order.
size_t ReadFeatures(KsMailTokenizer* tokenizer) {
  size_t bytes = 0;
  const auto walk = [&](const auto& items, auto sizeOf) {
    for (auto item = items.begin(); !(item == items.end()); ++item) {
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

struct Peaks {
  size_t parse;  // of the walk and what it keeps
  size_t all;    // with all features, each of them walked
  bool complete;
};

Peaks PeaksOf(const std::string& message) {
  Peaks peaks = {};
  peaks.all = PeakOf([&] {
    const auto tokenizer = std::make_unique<KsMailTokenizer>();
    const size_t before = g_held;
    tokenizer->Parse(message.data(), static_cast<uint32_t>(message.size()), nullptr, nullptr);
    peaks.parse = g_peak - before + sizeof(KsMailTokenizer);
    ReadFeatures(tokenizer.get());
    peaks.complete = tokenizer->HasAllFeatures();
  });
  return peaks;
}

void ExpectBounded(const test::HostileShape& shape, size_t size) {
  const std::string message = shape.make(size);
  const Peaks peaks = PeaksOf(message);
  EXPECT_LE(peaks.parse, kFactor * message.size() + kFixed);
  EXPECT_LE(peaks.all + message.size(), kMaxMemoryBytes);
  std::printf("%-40s %9zu bytes: parse %5.2f times, all %6.1f MiB%s\n", shape.name, message.size(),
              static_cast<double>(peaks.parse) / static_cast<double>(message.size()),
              static_cast<double>(peaks.all) / static_cast<double>(kMiB),
              peaks.complete ? "" : ", features at the limit");
}

class PeakMemoryTest : public testing::TestWithParam<test::HostileShape> {};
class PeakMemoryOfPartsTest : public testing::TestWithParam<test::HostileShape> {};

TEST_P(PeakMemoryTest, StaysBounded) {
  ExpectBounded(GetParam(), kMiB / 2);
  if (std::getenv(kAllSizes) != nullptr) {
    for (const size_t size : {kMiB / 8, kMiB, 16 * kMiB}) {
      ExpectBounded(GetParam(), size);
    }
  }
}

// What is read of parts is bounded, so that the smallest message that fills them costs most.
TEST_P(PeakMemoryOfPartsTest, StaysBounded) {
  ExpectBounded(GetParam(), kMiB / 8);
  if (std::getenv(kAllSizes) != nullptr) {
    for (const size_t size : {kMiB / 4, 3 * kMiB / 4, kMiB, 16 * kMiB}) {
      ExpectBounded(GetParam(), size);
    }
  }
}

// The shape that comes closest to the limit, and all of them where time doesn't count.
TEST(FeatureLimitTest, IsBeyondWhat256KiBOfSendersAndFullPartsGive) {
  const std::string parts = test::FullTextParts(
      [](size_t part) { return test::ManyWords(2, part); }, size_t{6} * 0x1FFFF);
  std::vector<test::HostileShape> shapes = test::SenderShapes();
  if (std::getenv(kAllSizes) == nullptr) {
    shapes = {test::LongSenderShape()};
  }
  for (const test::HostileShape& shape : shapes) {
    EXPECT_TRUE(PeaksOf(shape.make(kMiB / 4) + parts).complete) << shape.name;
  }
}

// Senders' names of random pairs of letters: four keys for each byte.
std::string RandomNames(size_t size) {
  std::mt19937 random(1);
  std::string text;
  while (text.size() < size) {
    text.append("from:");
    for (int word = 0; word < 330; ++word) {
      text.push_back(static_cast<char>('a' + random() % 26));
      text.push_back(static_cast<char>(0xC0 + random() % 54));
      text.push_back(' ');
    }
    text.append("<x>\r\n");
  }
  return text;
}

// The worst known: keys and text up to the limit, and for the rest what costs the walk most.
TEST(FeatureLimitTest, MessagesThatReachItStayBelow256MiB) {
  const size_t size = std::getenv(kAllSizes) == nullptr ? 0 : 16 * kMiB;
  for (const test::HostileShape& shape : test::SenderShapes()) {
    for (const size_t wordy : {kMiB / 16, kMiB / 4, kMiB}) {
      if (size == 0 && wordy > kMiB / 16) {
        continue;
      }
      std::string message = shape.make(wordy);
      message.append(RandomNames(size / 20));
      message.append(test::Repeated(":b\r\n", size - std::min(size, message.size())));
      const Peaks peaks = PeaksOf(message);
      EXPECT_EQ(peaks.complete, size == 0);
      EXPECT_LE(peaks.all + message.size(), kMaxMemoryBytes);
      std::printf("%s: %.1f MiB\n", shape.name,
                  static_cast<double>(peaks.all) / static_cast<double>(kMiB));
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
