#include "analysis/message/HeaderBlock.h"

#include <gtest/gtest.h>

#include <string>

#include "support/Prefixes.h"

namespace postmarker {
namespace {

std::string Listed(const HeaderMap& headers) {
  std::string listed;
  for (const auto& [key, value] : headers.Sorted()) {
    listed.append("[").append(key).append("=").append(value).append("]");
  }
  return listed;
}

// The headers of a block, without the entry that the block's empty line leaves.
std::string Read(std::string_view block) {
  HeaderMap headers;
  ReadHeaderBlock(block, &headers);
  headers.Erase("");
  return Listed(headers);
}

struct Case {
  const char* name;
  std::string block;
  std::string expected;
};

class HeaderBlockTest : public testing::TestWithParam<Case> {};

TEST_P(HeaderBlockTest, SplitsAsTold) {
  EXPECT_EQ(Read(GetParam().block), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Blocks, HeaderBlockTest,
    testing::Values(
        Case{"TwoHeaders", "A: b\r\nC: d\r\n\r\n", "[a=b][c=d]"},
        Case{"BlanksGoTabsStay", "  A \t:\t b  \r\n\r\n", "[a \t=\t b]"},
        Case{"ContinuationKeepsItsWhiteSpace", "A: b\r\n\tc\r\n d\r\n\r\n", "[a=b\tc d]"},
        Case{"CommentsGo", "X-Foo: a (b) c\r\n\r\n", "[x-foo=a  c]"},
        Case{"NestedCommentsGo", "X: a(b(c)d)e\r\n\r\n", "[x=ae]"},
        Case{"SubjectKeepsParentheses", "Subject: a (b) c\r\n\r\n", "[subject=a (b) c]"},
        Case{"ThreadIndexKeepsParentheses", "THREAD-Index: (b\r\n\r\n", "[thread-index=(b]"},
        Case{"VerbatimIsJudgedUntrimmed", "Subject : (b)\r\n\r\n", "[subject=]"},
        Case{"StrayCloserCountsAsOutside", "X: a)b(c)d\r\n\r\n", "[x=abcd]"},
        Case{"CommentInTheName", "X(:y):b\r\n\r\n", "[x=b]"},
        Case{"QuotesKeepParenthesesAndBlanks", "X: \"(a)  b\"  (c)\r\n\r\n", "[x=\"(a)  b\"]"},
        Case{"OpenQuoteEndsWithItsHeader", "A: \"b\r\nC: d (e)  f  g\r\n\r\n", "[a=\"b][c=d  f g]"},
        Case{"BlankAfterBlankGoes", "X: a   b\r\n\r\n", "[x=a b]"},
        Case{"BlankAfterCommentStays", "X: a (b) c\r\n\r\n", "[x=a  c]"},
        Case{"BlankAfterCrStays", "X: a \r b\r\n\r\n", "[x=a  b]"},
        Case{"TabIsNoBlank", "X: a\t b\r\n\r\n", "[x=a\t b]"},
        Case{"ColonEndsTheNameInQuotes", "\"X:Y\": z\r\n\r\n", "[\"x=Y\": z]"},
        Case{"LaterColonsStay", "X: a:b\r\n\r\n", "[x=a:b]"},
        Case{"BareLfDoesNotEndALine", "A: b\nC: d\r\n\r\n", "[a=bC: d]"},
        Case{"CrLfLfEndsOneLine", "A: b\r\n\nC: d\r\n\r\n", "[a=b][c=d]"},
        Case{"LfOnlyBlockIsOneHeaderAndLost", "A: b\nC: d\n\nbody", ""},
        Case{"LfOnlyBlockIsOneHeader", "A: b\nC: d\n\nbody\r\n\r\n", "[a=bC: dbody]"},
        Case{"BareCrGoes", "A: b\rc\r\n\r\n", "[a=bc]"},
        Case{"EmptyLineAtTheStartEndsNothing", "\r\nA: b\r\n\r\n", "[a=b]"},
        Case{"CutOffHeaderIsLost", "A: b\r\nC: d", "[a=b]"},
        Case{"CutOffBehindTheLineEndIsLost", "A: b\r\n", ""},
        Case{"NoColonGivesAnEmptyValue", "abc\r\n\r\n", "[abc=]"},
        Case{"RepeatsAreNumbered", "A: 1\r\nA: 2\r\na: 3\r\n\r\n", "[a=1][a-1=2][a-2=3]"},
        Case{"EmptyValueIsOverwritten", "A:\r\nA: 2\r\nA: 3\r\n\r\n", "[a=2][a-1=3]"},
        Case{"NumbersSkipRealNames", "A: 1\r\nA-1: x\r\nA: 2\r\n\r\n", "[a=1][a-1=x][a-2=2]"},
        Case{"EncodedWords", "A: =?u?q?x=41?= y\r\n\r\n", "[a=xA y]"},
        Case{"DecodedValueEndsAtItsNul", "A: x=?u?q?a=00b?=y\r\n\r\n", "[a=xa]"},
        Case{"NulStaysWithoutEncodedWords", std::string("A: x\0y\r\n\r\n", 10),
             std::string("[a=x\0y]", 7)},
        Case{"TwoReceivedLines", "Received: a (b) c\r\nReceived: d\r\n\r\n",
             "[received=a  c][received-1=d][received-1-comment=d][received-comment=a (b) c]"},
        Case{"ReceivedKeepsDepthZeroOnly", "Received: a)b(c\r\n\r\n",
             "[received=ac][received-comment=a)b(c]"}),
    [](const auto& tested) { return tested.param.name; });

TEST(HeaderBlock, LeavesAnEmptyEntryForItsEmptyLine) {
  HeaderMap headers;
  EXPECT_EQ(ReadHeaderBlock("A: b\r\n\r\nbody", &headers), 8U);
  EXPECT_EQ(Listed(headers), "[=][a=b]");
}

TEST(HeaderBlock, ReadsAllBytesWhereNoEmptyLineComes) {
  HeaderMap headers;
  EXPECT_EQ(ReadHeaderBlock("A: b\r\nC", &headers), 7U);
  EXPECT_EQ(ReadHeaderBlock("", &headers), 0U);
}

TEST(HeaderBlock, FillsOnlySelectedHeaders) {
  HeaderMap headers;
  headers.Set("a", "");
  headers.Set("received", "");
  ReadHeaderBlock("A: 1\r\nB: 2\r\nA: 3\r\nReceived: x\r\n\r\n", &headers);
  EXPECT_EQ(Listed(headers), "[a=1][a-1=3][received=x][received-comment=x]");
}

TEST(HeaderBlock, KeepsNothingWithoutAMap) {
  EXPECT_EQ(ReadHeaderBlock("A: b\r\n\r\n", nullptr), 8U);
}

TEST(HeaderBlock, CutsNamesAndValuesAt1022Bytes) {
  const std::string name(1100, 'n');
  const std::string value(1100, 'v');
  HeaderMap headers;
  ReadHeaderBlock(name + ":" + value + "\r\nA: b\r\n\r\n", &headers);
  EXPECT_EQ(headers.Get(name.substr(0, 1022)), value.substr(0, 1022));
  EXPECT_EQ(headers.Get("a"), "b");
}

TEST(HeaderBlock, NumbersALongRowOfRepeats) {
  std::string block;
  for (int i = 0; i < 300; ++i) {
    block.append("a: ").append(std::to_string(i)).append("\r\n");
    if (i == 100) {
      block.append("a-150: taken\r\n");
    }
  }
  HeaderMap headers;
  ReadHeaderBlock(block + "\r\n", &headers);
  EXPECT_EQ(headers.Get("a-149"), "149");
  EXPECT_EQ(headers.Get("a-150"), "taken");
  EXPECT_EQ(headers.Get("a-151"), "150");
  EXPECT_EQ(headers.Get("a-300"), "299");
}

TEST(HeaderBlock, AReceivedLineMayEmptyAHeaderThatWasRepeated) {
  std::string block;
  for (int i = 0; i < 40; ++i) {
    block.append("received-comment: x\r\n");
  }
  HeaderMap headers;
  ReadHeaderBlock(block + "received:\r\nreceived-comment: again\r\n\r\n", &headers);
  EXPECT_EQ(headers.Get("received-comment"), "again");
  EXPECT_EQ(headers.Get("received-comment-39"), "x");
  EXPECT_FALSE(headers.Contains("received-comment-40"));
}

TEST(HeaderBlock, HarmedBlocksAreReadWithoutFailure) {
  constexpr std::string_view kBlock =
      "A: b (c\r\n\"d)\" e\r\nReceived: f\r\nSubject: =?u?q?x=41?= =?u?b?QUJD?=\r\n\r\n";
  const auto check = [](std::string_view bytes) {
    HeaderMap headers;
    EXPECT_LE(ReadHeaderBlock(bytes, &headers), bytes.size());
  };
  test::ForEveryPrefix(kBlock, check);
  test::ForEveryFlippedByte(kBlock, check);
}

}  // namespace
}  // namespace postmarker
