#include "analysis/message/Decoders.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/Prefixes.h"

namespace postmarker {
namespace {

// Runs a decoder with an output of exactly the room it may use, and checks the closing NUL.
template <class Decode>
std::string Run(size_t capacity, Decode decode) {
  std::vector<char> out(capacity + 1, 'x');
  const size_t count = decode(out.data());
  EXPECT_LE(count, capacity);
  EXPECT_EQ(out[count], '\0');
  return {out.data(), count};
}

std::string QuotedPrintable(std::string_view in, size_t capacity = 1000, bool wrap = false) {
  return Run(capacity, [&](char* out) { return DecodeQuotedPrintable(in, out, capacity, wrap); });
}

std::string Base64(std::string_view in, size_t capacity = 1000, bool keep = false) {
  return Run(capacity, [&](char* out) { return DecodeBase64(in, out, capacity, keep); });
}

std::string Encode(std::string_view in, size_t capacity, bool wrap) {
  return Run(capacity, [&](char* out) { return EncodeBase64(in, out, capacity, wrap); });
}

struct Words {
  std::string text;
  size_t consumed;
  bool operator==(const Words&) const = default;
};

Words EncodedWords(std::string_view in) {
  std::vector<char> out(in.size() + 1, 'x');
  size_t length = 77;
  const size_t consumed = DecodeEncodedWords(in, out.data(), &length);
  return {std::string(out.data(), length), consumed};
}

TEST(HexPairToByte, TakesUpperCaseOnly) {
  uint8_t byte = 7;
  EXPECT_TRUE(HexPairToByte('A', '0', &byte));
  EXPECT_EQ(byte, 0xA0);
  EXPECT_FALSE(HexPairToByte('a', '0', &byte));
  EXPECT_FALSE(HexPairToByte('0', 'G', &byte));
  EXPECT_FALSE(HexPairToByte('/', ':', &byte));
  EXPECT_EQ(byte, 0xA0);
}

TEST(DecodeQuotedPrintable, DecodesPairsOfEitherCase) {
  EXPECT_EQ(QuotedPrintable("a=3Db=3dc"), "a=b=c");
}

TEST(DecodeQuotedPrintable, DropsSoftBreaksAndCopiesOtherLineEnds) {
  EXPECT_EQ(QuotedPrintable("a=\r\nb\r\nc=\nd"), "ab\r\nc=\nd");
}

TEST(DecodeQuotedPrintable, CopiesAnEqualsSignWithoutDigits) {
  EXPECT_EQ(QuotedPrintable("=ZZ=4"), "=ZZ=4");
  EXPECT_EQ(QuotedPrintable("="), "=");
}

TEST(DecodeQuotedPrintable, StopsAtNul) {
  EXPECT_EQ(QuotedPrintable(std::string_view("a\0b", 3)), "a");
  EXPECT_EQ(QuotedPrintable(std::string_view("a=4\0b", 5)), "a=4");
}

TEST(DecodeQuotedPrintable, StopsAtTheCapacity) {
  EXPECT_EQ(QuotedPrintable("abcdef", 3), "abc");
  EXPECT_EQ(QuotedPrintable("abc", 0), "");
}

TEST(DecodeQuotedPrintable, WrapsAfter75Columns) {
  const std::string line(75, 'x');
  EXPECT_EQ(QuotedPrintable(line + "yz", 1000, true), line + "\r\nyz");
  EXPECT_EQ(QuotedPrintable("ab\r\n" + line, 1000, true), "ab\r\n" + line + "\r\n");
}

TEST(DecodeBase64, SkipsWhatIsNotOfTheAlphabet) {
  EXPECT_EQ(Base64("Q U-J*D"), "ABC");
}

TEST(DecodeBase64, EndsAtTheFirstEqualsSign) {
  EXPECT_EQ(Base64("QQ==QUJD"), "A");
}

TEST(DecodeBase64, DropsZeroBytes) {
  EXPECT_EQ(Base64("AAAA"), "");
  EXPECT_EQ(Base64("QQBC"), "AB");
}

TEST(DecodeBase64, KeepsLineBreaksWhereAsked) {
  EXPECT_EQ(Base64("QU\r\nJD"), "ABC");
  EXPECT_EQ(Base64("QU\r\nJD", 1000, true), "A\r\nBC");
}

TEST(DecodeBase64, StopsAtTheCapacity) {
  EXPECT_EQ(Base64("QUJDREVG", 4), "ABCD");
}

TEST(EncodeBase64, PadsAndStops) {
  EXPECT_EQ(Encode("", 10, false), "");
  EXPECT_EQ(Encode("A", 10, false), "QQ==");
  EXPECT_EQ(Encode("AB", 10, false), "QUI=");
  EXPECT_EQ(Encode("ABC", 10, false), "QUJD");
  EXPECT_EQ(Encode("ABCDEF", 5, false), "QUJDR");
}

TEST(EncodeBase64, BreaksLinesInFrontOfEachGroup) {
  const std::string group(57, 'A');
  const std::string line = Encode(group, 1000, false);
  EXPECT_EQ(line.size(), 76U);
  EXPECT_EQ(Encode(group + "ABC", 1000, true), "\r\n" + line + "\r\nQUJD\r\n\r\n");
  EXPECT_EQ(Encode("", 1000, true), "\r\n\r\n");
  EXPECT_EQ(Encode("ABC", 7, true), "\r\nQUJD");  // no room for a whole line break at the end
}

TEST(DecodeEncodedWords, DecodesBothEncodings) {
  EXPECT_EQ(EncodedWords("x =?u?Q?a=41?= y"), (Words{"x aA y", 12}));
  EXPECT_EQ(EncodedWords("=?u?b?QUJD?="), (Words{"ABC", 12}));
}

TEST(DecodeEncodedWords, DecodesTheShortestWordAtTheEndOfTheText) {
  EXPECT_EQ(EncodedWords("=??q?x?="), (Words{"x", 8}));
  EXPECT_EQ(EncodedWords("text =??q?x?="), (Words{"text x", 8}));
  EXPECT_EQ(EncodedWords("=??q?x?"), (Words{"=??q?x?", 0}));
}

TEST(DecodeEncodedWords, UnderscoreStays) {
  EXPECT_EQ(EncodedWords("=?iso-8859-1?q?a_b?="), (Words{"a_b", 20}));
}

TEST(DecodeEncodedWords, BlanksBetweenWordsStay) {
  EXPECT_EQ(EncodedWords("=?u?q?a?= =?u?q?b?="), (Words{"a b", 18}));
}

TEST(DecodeEncodedWords, LeavesPlainText) {
  const char* const kPlain[] = {
      "",
      "=?",
      "=?u?q?a b?=",   // a blank inside
      "=?u?q?a\tb?=",  // a tab inside
      "=?u?x?ab?=",    // an unknown encoding
      "=?x?b?AAAA?=",  // nothing comes out
      "=?u?q?\?=",     // no text
      "=?u?q?ab?",     // no byte after the last mark
      "=?u?q?ab?x",    // no "="
      "=?u?q?ab",      // incomplete
      "=?u?q",         //
      "=?u?q=",        // too short
      "a = ? b",
  };
  for (const char* text : kPlain) {
    EXPECT_EQ(EncodedWords(text), (Words{text, 0})) << text;
  }
}

TEST(DecodeEncodedWords, AQuestionMarkAsLetterCountsAsAMark) {
  // The letter itself is the second mark.
  EXPECT_EQ(EncodedWords("=?u??x?="), (Words{"=?u??x?=", 0}));
  EXPECT_EQ(EncodedWords("=?u?quite?a?="), (Words{"a", 13}));
}

TEST(DecodeEncodedWords, GoesOnBehindAFailedWord) {
  EXPECT_EQ(EncodedWords("=?x?y=?u?q?a?="), (Words{"=?x?ya", 9}));
  EXPECT_EQ(EncodedWords("=?x?b?AAAA?==?u?q?a?="), (Words{"=?x?b?AAAA?=a", 9}));
}

TEST(DecodeEncodedWords, NullGivesNothing) {
  size_t length = 5;
  char out = 0;
  EXPECT_EQ(DecodeEncodedWords({}, &out, &length), 0U);
  EXPECT_EQ(length, 0U);
  length = 5;
  EXPECT_EQ(DecodeEncodedWords("abc", nullptr, &length), 0U);
  EXPECT_EQ(length, 0U);
}

TEST(Decoders, HarmedInputStaysWithinTheOutput) {
  constexpr std::string_view kInput = "x =?u?Q?a=41=\r\n?= =?u?b?QUJD?==?u?q?=?= \r\n=3D";
  const auto check = [](std::string_view bytes) {
    const Words words = EncodedWords(bytes);
    EXPECT_LE(words.text.size(), bytes.size());
    EXPECT_LE(words.consumed, bytes.size());
    EXPECT_LE(QuotedPrintable(bytes, 10, true).size(), 10U);
    EXPECT_LE(Base64(bytes, 3, true).size(), 3U);
  };
  test::ForEveryPrefix(kInput, check);
  test::ForEveryFlippedByte(kInput, check);
}

}  // namespace
}  // namespace postmarker
