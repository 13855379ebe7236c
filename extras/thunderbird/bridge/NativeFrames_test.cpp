#include "NativeFrames.h"

#include <gtest/gtest.h>

namespace postmarker::bridge {
namespace {

using namespace std::string_literals;

// The frame of a message of any length, also of one that is not allowed.
std::string FrameOf(const std::string& message) {
  const size_t size = message.size();
  std::string frame;
  for (const size_t shift : {0U, 8U, 16U, 24U}) {
    frame.push_back(static_cast<char>((size >> shift) & 0xFF));
  }
  return frame + message;
}

std::vector<std::string> ReadAll(FrameReader* reader) {
  std::vector<std::string> messages;
  while (std::optional<std::string> message = reader->Next()) {
    messages.push_back(*std::move(message));
  }
  return messages;
}

TEST(NativeFrames, PutsTheLengthBeforeTheMessageLowestByteFirst) {
  EXPECT_EQ(MakeFrame("{}"), "\x02\0\0\0{}"s);
  const std::string frame = MakeFrame(std::string(0x10203, 'x'));
  EXPECT_EQ(frame.substr(0, 4), "\x03\x02\x01\0"s);
  EXPECT_EQ(frame.size(), 4U + 0x10203);
}

TEST(NativeFrames, MakesNoFrameThatThunderbirdWouldRefuse) {
  EXPECT_EQ(MakeFrame(""), "");
  EXPECT_EQ(MakeFrame(std::string(kMaxSentBytes + 1, 'x')), "");
  EXPECT_EQ(MakeFrame(std::string(kMaxSentBytes, 'x')).size(), 4 + kMaxSentBytes);
}

TEST(NativeFrames, FindsTheMessagesHoweverTheStreamIsCut) {
  const std::string stream = FrameOf("first") + FrameOf("2") + FrameOf(std::string(300, 'x'));
  for (size_t size = 1; size <= stream.size(); ++size) {
    FrameReader reader;
    std::vector<std::string> messages;
    for (size_t at = 0; at < stream.size(); at += size) {
      ASSERT_TRUE(reader.Append(std::string_view(stream).substr(at, size)));
      for (std::string& message : ReadAll(&reader)) {
        messages.push_back(std::move(message));
      }
    }
    ASSERT_EQ(messages, (std::vector<std::string>{"first", "2", std::string(300, 'x')}))
        << "in pieces of " << size;
  }
}

TEST(NativeFrames, ReadsLengthsWhoseBytesAreAnything) {
  for (const size_t size : {0x7F, 0x80, 0xFF, 0x100, 0x8000, 0xFFFF, 0x0F00FF}) {
    FrameReader reader;
    ASSERT_TRUE(reader.Append(FrameOf(std::string(size, 'x'))));
    EXPECT_EQ(reader.Next(), std::string(size, 'x')) << size;
  }
}

TEST(NativeFrames, ReadsTheLargestMessageAndNoLargerOne) {
  FrameReader reader;
  ASSERT_TRUE(reader.Append(FrameOf(std::string(kMaxReceivedBytes, 'x'))));
  EXPECT_EQ(ReadAll(&reader).size(), 1U);
  EXPECT_FALSE(reader.Append(FrameOf(std::string(kMaxReceivedBytes + 1, 'x')).substr(0, 4)))
      << "the length alone is enough to refuse it";
}

TEST(NativeFrames, StaysBrokenAfterALengthThatCantBe) {
  for (const std::string& bad : {"\0\0\0\0"s, "\xFF\xFF\xFF\xFF"s}) {
    FrameReader reader;
    EXPECT_FALSE(reader.Append(bad));
    EXPECT_FALSE(reader.Append(FrameOf("good")));
    EXPECT_EQ(reader.Next(), std::nullopt);
  }
}

TEST(NativeFrames, BreaksAtABadLengthAfterAGoodMessage) {
  FrameReader reader;
  ASSERT_TRUE(reader.Append(FrameOf("good") + "\0\0\0\0"s));
  EXPECT_EQ(reader.Next(), "good");
  EXPECT_EQ(reader.Next(), std::nullopt);
  EXPECT_FALSE(reader.Append("x"));
}

}  // namespace
}  // namespace postmarker::bridge
