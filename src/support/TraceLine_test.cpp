#include "support/TraceLine.h"

#include <gtest/gtest.h>

namespace postmarker {
namespace {

constexpr TraceTime kTime = {2026, 3, 9, 7, 5, 2, 45};

TEST(TraceLine, HasFieldsOfFixedWidth) {
  EXPECT_EQ(FormatTraceLine(kTime, L"Postmarker.dll", 21, 12),
            L"2026/03/09 07:05:02.045 | Postmarker.dll                 |    21 |    12ms\r\n");
}

TEST(TraceLine, LongFieldsAreNotCut) {
  const std::wstring module(259, L'm');
  EXPECT_EQ(FormatTraceLine({65535, 12, 31, 23, 59, 59, 999}, module, -2147483647, 4294967295U),
            L"65535/12/31 23:59:59.999 | " + module + L" | -2147483647 | 4294967295ms\r\n");
  EXPECT_EQ(FormatTraceLine(kTime, std::wstring(30, L'm'), 1, 0),
            L"2026/03/09 07:05:02.045 | " + std::wstring(30, L'm') + L" |     1 |     0ms\r\n");
}

TEST(TraceLine, MillisecondsAreTheDifferenceInWholeUnits) {
  EXPECT_EQ(TraceMilliseconds(0, 9'999), 0U);
  EXPECT_EQ(TraceMilliseconds(0, 10'000), 1U);
  EXPECT_EQ(TraceMilliseconds(1'000'000, 3'505'000), 250U);
}

TEST(TraceLine, WrapOfTheLowWordIsStillADifference) {
  EXPECT_EQ(TraceMilliseconds(0xFFFFFFFF, 19'999), 2U);
}

TEST(TraceLine, IntervalsBeyondTheLowWordLoseIt) {
  // 2^32 units are 429.4967296 s.
  const uint64_t start = 5'000;
  const uint64_t end = start + (uint64_t{1} << 32) + 10'000;
  EXPECT_EQ(TraceMilliseconds(static_cast<uint32_t>(start), static_cast<uint32_t>(end)), 1U);
}

}  // namespace
}  // namespace postmarker
