// Messages that are made to exhaust the stack or the time of the process that reads them.
#include <gtest/gtest.h>

#include <string>

#include "analysis/features/KsMailTokenizer.h"
#include "support/HostileMail.h"
#if defined(_WIN32)
#include "support/SmallStack_win.h"
#else
#include "support/SmallStack_posix.h"
#endif

namespace postmarker {
namespace {

constexpr int kLevels = 200000;

std::string Times(int count, std::string_view piece) {
  std::string text;
  text.reserve(static_cast<size_t>(count) * piece.size());
  for (int i = 0; i < count; ++i) {
    text.append(piece);
  }
  return text;
}

// Counts hooks, and the deepest level.
class Counter : public KsMailParser {
 public:
  int deepest = 0;
  int headersBefore = 0;
  int headersAfter = 0;
  int bodies = 0;
  int ended = 0;

 protected:
  ResultCode OnHeaders(HeaderMap* headers, int level, bool afterChildren) override {
    deepest = std::max(deepest, level);
    ++(afterChildren ? headersAfter : headersBefore);
    return KsMailParser::OnHeaders(headers, level, afterChildren);
  }
  void OnBodyBegin(int level) override {
    ++bodies;
    KsMailParser::OnBodyBegin(level);
  }
  void OnBodyEnd(int level) override {
    ++ended;
    KsMailParser::OnBodyEnd(level);
  }
  [[nodiscard]] bool WantsSingleBytes() const override { return false; }
};

void Count(Counter* counter, const std::string& message) {
  test::RunWithSmallStack(
      [&] { counter->ParseBuffer(message.data(), static_cast<uint32_t>(message.size())); });
}

TEST(HostileMail, NestedMessagesNeedNoStack) {
  Counter counter;
  Count(&counter, Times(kLevels, "Content-Type: message/rfc822\r\n\r\n") + "A: b\r\n\r\ntext");
  EXPECT_EQ(counter.deepest, kLevels);
  EXPECT_EQ(counter.headersBefore, kLevels + 1);
  EXPECT_EQ(counter.headersAfter, 1);
  EXPECT_EQ(counter.bodies, 1);
  EXPECT_EQ(counter.ended, 1);
  EXPECT_EQ(counter.PlainParts().front(), "text");
}

TEST(HostileMail, NestedMultipartsNeedNoStack) {
  Counter counter;
  Count(&counter, Times(kLevels, "Content-Type: multipart/x; boundary=b\r\n\r\n--b\r\n") +
                      "A: b\r\n\r\ntext\r\n--b--\r\n");
  EXPECT_EQ(counter.deepest, kLevels);
  EXPECT_EQ(counter.headersBefore, kLevels + 1);
  EXPECT_EQ(counter.headersAfter, kLevels + 1);
  EXPECT_EQ(counter.bodies, 2 * kLevels + 1);  // what is before the parts and after them
  // Each one before parts, the text, and the outermost one at the end: the others wait for a
  // boundary.
  EXPECT_EQ(counter.ended, kLevels + 2);
  EXPECT_EQ(counter.PlainParts().front(), "text\r\n");
}

TEST(HostileMail, AllShapesAreReadWithLittleStackAndInTime) {
  for (const test::HostileShape& shape : test::HostileShapes()) {
    const std::string message = shape.make(size_t{1} << 17);
    KsMailTokenizer tokenizer;
    test::RunWithSmallStack([&] {
      tokenizer.Parse(message.data(), static_cast<uint32_t>(message.size()), nullptr, nullptr);
      tokenizer.Tokens();
    });
    EXPECT_GE(tokenizer.GetHeaders().Size(), 1U) << shape.name;
  }
}

}  // namespace
}  // namespace postmarker
