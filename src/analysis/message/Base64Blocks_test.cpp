#include "analysis/message/Base64Blocks.h"

#include <gtest/gtest.h>

#include <string>

#include "analysis/message/Decoders.h"

namespace postmarker {
namespace {

// Digit by digit.
std::string PlainBase64(std::string_view bytes) {
  std::string text;
  for (size_t bit = 0; bit < bytes.size() * 8; bit += 6) {
    unsigned value = 0;
    for (size_t i = bit; i < bit + 6; ++i) {
      const unsigned byte = i / 8 < bytes.size() ? static_cast<unsigned char>(bytes[i / 8]) : 0U;
      value = value << 1 | (byte >> (7 - i % 8) & 1);
    }
    text.push_back(kBase64Alphabet[value]);
  }
  text.resize((text.size() + 3) / 4 * 4, '=');
  return text;
}

// Every value of a byte in every place.
std::string AllBytes(size_t size, unsigned step) {
  std::string bytes;
  for (unsigned value = step; bytes.size() < size; value += step) {
    bytes.push_back(static_cast<char>(value));
  }
  return bytes;
}

TEST(Base64Blocks, EncodingIsThePlainOneForEveryLength) {
  for (const unsigned step : {1U, 7U, 101U, 255U}) {
    for (size_t size = 0; size < 300; ++size) {
      // A block of its own, so that a read after it is seen.
      const std::string bytes = AllBytes(size, step);
      const std::string expected = PlainBase64(bytes);
      std::string out(expected.size() + 1, 'x');
      EXPECT_EQ(EncodeBase64(bytes, out.data(), expected.size(), false), expected.size());
      EXPECT_EQ(out, expected + '\0');
    }
  }
}

TEST(Base64Blocks, EncodingEndsWhereTheRoomDoes) {
  const std::string bytes = AllBytes(60, 13);
  const std::string expected = PlainBase64(bytes);
  for (size_t room = 0; room < expected.size(); ++room) {
    std::string out(room + 1, 'x');
    EXPECT_EQ(EncodeBase64(bytes, out.data(), room, false), room);
    EXPECT_EQ(out, expected.substr(0, room) + '\0');
  }
}

TEST(Base64Blocks, OnlyWholeGroupsAreDone) {
  std::string out(100, 'x');
  EXPECT_EQ(EncodeBase64Groups("Man", 0, out.data()), 0U);
  EXPECT_EQ(EncodeBase64Groups("Many", 5, out.data()), 1U);
  EXPECT_EQ(out.substr(0, 5), "TWFux");
  EXPECT_EQ(EncodeBase64Groups(AllBytes(48, 1), 7, out.data()), 7U);
  EXPECT_EQ(out[28], 'x');
}

}  // namespace
}  // namespace postmarker
