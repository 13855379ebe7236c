// What only this system tells: how much memory a program has needed.
#include <sys/resource.h>

#include <gtest/gtest.h>

#include "NativeFrames.h"

namespace postmarker::bridge {
namespace {

long PeakKilobytes() {
  rusage usage = {};
  ::getrusage(RUSAGE_SELF, &usage);
  return usage.ru_maxrss;
}

// Thunderbird runs all day, and so does the program that it started.
TEST(NativeFrames, KeepsNothingOfWhatWasRead) {
  const size_t size = 250'000;
  std::string frame = MakeFrame(std::string(size, 'x'));
  FrameReader reader;
  const long before = PeakKilobytes();
  for (int i = 0; i < 2000; ++i) {
    ASSERT_TRUE(reader.Append(frame));
    ASSERT_EQ(reader.Next()->size(), size);
  }
  // Of 500 MB. Sanitizers keep some of what was freed.
  EXPECT_LT(PeakKilobytes() - before, 320'000);
}

}  // namespace
}  // namespace postmarker::bridge
