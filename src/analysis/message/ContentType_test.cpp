#include "analysis/message/ContentType.h"

#include <gtest/gtest.h>

#include <string>

namespace postmarker {
namespace {

std::string Split(std::string_view text) {
  HeaderMap map;
  SplitParameters(text, &map);
  std::string listed;
  for (const auto& [key, value] : map.Sorted()) {
    listed.append("[").append(key).append("=").append(value).append("]");
  }
  return listed;
}

TEST(SplitParameters, CutsPiecesAndSplitsThemOnce) {
  EXPECT_EQ(Split("text/html; charset=x"), "[charset=x][text=html]");
  EXPECT_EQ(Split("base64"), "[base64=base64]");
  EXPECT_EQ(Split("a/b=c"), "[a=b=c]");
  EXPECT_EQ(Split("a=b/c"), "[a=b/c]");
}

TEST(SplitParameters, TrimsSpaceThenQuotesAndLowersKeys) {
  EXPECT_EQ(Split(" Boundary\t=\t\"\" X \"\" "), "[boundary= X ]");
}

TEST(SplitParameters, AQuotedSemicolonCutsToo) {
  EXPECT_EQ(Split("a=\"x;y\""), "[a=x][y\"=y]");
}

TEST(SplitParameters, ALaterPieceReplacesAnEarlierOne) {
  EXPECT_EQ(Split("a=1;A=2"), "[a=2]");
}

TEST(SplitParameters, OnlyTheLastPieceCountsWhereItIsEmpty) {
  EXPECT_EQ(Split(""), "");
  EXPECT_EQ(Split("a;"), "[=][a=a]");
  EXPECT_EQ(Split(";a"), "[a=a]");
  EXPECT_EQ(Split("a;;b"), "[a=a][b=b]");
  EXPECT_EQ(Split(" "), "[=]");
}

TEST(Extensions, StandAnywhereBehindTheLastDot) {
  EXPECT_TRUE(HasPdfExtension("a.pdf"));
  EXPECT_TRUE(HasPdfExtension("a.xpdfx"));
  EXPECT_FALSE(HasPdfExtension("pdf"));
  EXPECT_FALSE(HasPdfExtension("a.pdf.txt"));
  for (const char* name : {"a.jpg", "a.jpeg", "a.bmp", "a.gif", ".gif87"}) {
    EXPECT_TRUE(HasImageExtension(name)) << name;
  }
  EXPECT_FALSE(HasImageExtension("a.png"));
  EXPECT_FALSE(HasImageExtension("gif"));
}

struct Case {
  const char* name;
  const char* contentType;
  const char* encoding;
  const char* disposition;  // null: there is none
  std::string expected;     // flags, type and part name
};

std::string Describe(const ContentType& type) {
  std::string text;
  text += type.quotedPrintable ? "q" : "";
  text += type.base64 ? "b" : "";
  text += type.text ? "t" : "";
  text += type.html ? "h" : "";
  text += type.pdf ? "p" : "";
  text += type.image ? "i" : "";
  text += type.multipart ? "m" : "";
  return text + "|" + type.type + "|" + type.partName;
}

class ContentTypeTest : public testing::TestWithParam<Case> {};

TEST_P(ContentTypeTest, IsJudgedAsTold) {
  HeaderMap headers;
  headers.Set("content-type", GetParam().contentType);
  headers.Set("content-transfer-encoding", GetParam().encoding);
  if (GetParam().disposition != nullptr) {
    headers.Set("content-disposition", GetParam().disposition);
  }
  EXPECT_EQ(Describe(ReadContentType(&headers)), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Types, ContentTypeTest,
    testing::Values(
        Case{"NoneIsPlainText", "", "", nullptr, "t|text/plain|"},
        Case{"Html", "Text/HTML; x=y", "", nullptr, "th|text/html|"},
        Case{"RichText", "text/richtext", "", nullptr, "th|text/richtext|"},
        Case{"TypeIsNotTrimmed", "text/plain ;x", "", nullptr, "t|text/plain |"},
        Case{"EmptyTypeInFrontOfParameters", ";text/plain", "", nullptr, "t||"},
        Case{"BothEncodings", "", "base64; quoted-printable", nullptr, "qbt|text/plain|"},
        Case{"Image", "image/png", "Base64", nullptr, "bi|image/png|"},
        Case{"Pdf", "application/PDF", "", nullptr, "p|application/pdf|"},
        Case{"PdfByName", "application/x; name=A.PDF", "", nullptr, "p|application/x|A.PDF"},
        Case{"ImageByName", "application/x; name=\"a.Gif\"", "", nullptr, "i|image/jpg|a.Gif"},
        Case{"PdfByTypeImageByFileName", "application/pdf", "", "attachment; filename=a.bmp",
             "pi|application/pdf|"},
        Case{"NameOfTheDispositionWithoutFilename", "application/x", "", "inline; name=a.pdf",
             "p|application/x|"},
        Case{"AnEmptyFilenameDoesNotLetNameDecide", "application/x", "",
             "inline; filename=; name=a.pdf", "|application/x|"},
        Case{"TextWithAnImageNameStaysText", "text/plain; name=x.jpg", "", nullptr,
             "t|image/jpg|x.jpg"},
        Case{"ImageTypeKeepsItsName", "image/gif; name=x.jpg", "", nullptr, "i|image/gif|x.jpg"},
        Case{"Multipart", "multipart/mixed; boundary=x", "", nullptr, "m|multipart/mixed|"},
        Case{"LastNameCounts", "application/x; name=a.pdf; name=b.doc", "", nullptr,
             "|application/x|b.doc"}),
    [](const auto& tested) { return tested.param.name; });

TEST(ReadContentType, LeavesTheTwoKeysInTheMap) {
  HeaderMap headers;
  ReadContentType(&headers);
  EXPECT_EQ(headers.Size(), 2U);
  EXPECT_TRUE(headers.Contains("content-type"));
  EXPECT_TRUE(headers.Contains("content-transfer-encoding"));
}

}  // namespace
}  // namespace postmarker
