#include "ese/Compression.h"

#include <gtest/gtest.h>

#include <string>

#include "support/EsePages.h"
#include "support/Prefixes.h"

namespace postmarker::ese {
namespace {

// Packs 7-bit characters after a first byte of that kind.
std::string Pack(uint32_t kind, std::string_view text) {
  std::string bytes(1 + (text.size() * 7 + 7) / 8, '\0');
  for (size_t bit = 0; bit < text.size() * 7; ++bit) {
    if ((static_cast<unsigned>(text[bit / 7]) >> (bit % 7) & 1U) != 0) {
      bytes[1 + bit / 8] = static_cast<char>(bytes[1 + bit / 8] | 1 << bit % 8);
    }
  }
  const size_t used = (text.size() * 7 + 7) % 8;  // bits of the last byte, less 1
  bytes[0] = static_cast<char>(kind << 3U | used);
  return bytes;
}

std::string Lz77(uint16_t size, uint32_t flags, const std::string& rest) {
  return "\x18" + test::EseBytes(size) + test::EseBytes(flags) + rest;
}

std::string Match(size_t distance, uint32_t n) {
  return test::EseBytes(static_cast<uint16_t>((distance - 1) << 3U | n));
}

TEST(EseCompression, UnpacksTextsOfEachLength) {
  std::string text;
  for (char c = ' '; c < 'z'; ++c) {
    text.push_back(c);
    EXPECT_EQ(Decompress(Pack(1, text)), text);
    std::string wide;
    for (const char unit : text) {
      wide.push_back(unit);
      wide.push_back('\0');
    }
    EXPECT_EQ(Decompress(Pack(2, text)), wide);
  }
}

TEST(EseCompression, ReadsBytesAndMatches) {
  EXPECT_EQ(Decompress(Lz77(3, 0, "abc")), "abc");
  EXPECT_EQ(Decompress(Lz77(9, 0x20000000, "ab" + Match(2, 4))), "ababababa");
  // A match that reaches into what it writes.
  EXPECT_EQ(Decompress(Lz77(7, 0x40000000, "x" + Match(1, 3))), "xxxxxxx");
}

TEST(EseCompression, LongMatchesShareAByteForTheirHalves) {
  const std::string twoHalves = "x" + Match(1, 7) + "\x21" + Match(1, 7);
  EXPECT_EQ(Decompress(Lz77(1 + 11 + 12, 0x60000000, twoHalves)), std::string(24, 'x'));
  const std::string inAByte = "x" + Match(1, 7) + "\x0F" + "\x05";
  EXPECT_EQ(Decompress(Lz77(1 + 7 + 15 + 5 + 3, 0x40000000, inAByte)), std::string(31, 'x'));
  const std::string inAWord = "x" + Match(1, 7) + "\x0F\xFF" + test::EseBytes(uint16_t{1000});
  EXPECT_EQ(Decompress(Lz77(1004, 0x40000000, inAWord)), std::string(1004, 'x'));
  const std::string inALongWord =
      "x" + Match(1, 7) + "\x0F\xFF" + std::string(2, '\0') + test::EseBytes(uint32_t{60000});
  EXPECT_EQ(Decompress(Lz77(60004, 0x40000000, inALongWord)), std::string(60004, 'x'));
}

TEST(EseCompression, FlagsGoOnInASecondWord) {
  const std::string text = "0123456789abcdefghijklmnopqrstuvwxyz";
  const std::string bytes = text.substr(0, 32) + test::EseBytes(uint32_t{0}) + text.substr(32);
  EXPECT_EQ(Decompress(Lz77(36, 0, bytes)), text);
}

TEST(EseCompression, RefusesWhatIsDamagedOrUnknown) {
  EXPECT_EQ(Decompress(""), std::nullopt);
  EXPECT_EQ(Decompress("\x08"), std::nullopt);
  EXPECT_EQ(Decompress("plain"), std::nullopt);
  EXPECT_EQ(Decompress("\x20x"), std::nullopt);
  EXPECT_EQ(Decompress(std::string(8, '\0')), std::nullopt);
  // A match before the beginning, and one beyond the end.
  EXPECT_EQ(Decompress(Lz77(9, 0x20000000, "ab" + Match(3, 4))), std::nullopt);
  EXPECT_EQ(Decompress(Lz77(8, 0x20000000, "ab" + Match(2, 4))), std::nullopt);
  EXPECT_EQ(Decompress(Lz77(9, 0x20000000, "ab" + Match(2, 4))).has_value(), true);
}

TEST(EseCompression, PrefixesOfAValueAreRefused) {
  const std::string twoHalves =
      "x" + Match(1, 7) + "\x2F" + "\xFF" + test::EseBytes(uint16_t{500}) + Match(1, 7) + "abc";
  const std::string whole = Lz77(1 + 503 + 12 + 3, 0x60000000, twoHalves);
  ASSERT_EQ(Decompress(whole), std::string(516, 'x') + "abc");
  test::ForEveryPrefix(whole, [](std::string_view part) {
    EXPECT_EQ(Decompress(part), std::nullopt) << part.size();
  });
}

}  // namespace
}  // namespace postmarker::ese
