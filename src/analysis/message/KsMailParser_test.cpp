#include "analysis/message/KsMailParser.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "support/Prefixes.h"
#include "support/TempFolder.h"

namespace postmarker {
namespace {

// Notes the calls of the hooks, and all body bytes.
class Recorder : public KsMailParser {
 public:
  std::string calls;
  std::string bodies;
  std::string throwAt;

  ResultCode Parse(std::string_view message) {
    return ParseBuffer(message.data(), static_cast<uint32_t>(message.size()));
  }

  using KsMailParser::GetContentType;
  using KsMailParser::GetPartName;

 protected:
  ResultCode OnParseBegin() override { return Note("begin", kOk); }
  ResultCode OnParseEnd() override { return Note("end", kOk); }
  void OnBodyByte(uint8_t byte, bool inHeader, int level) override {
    KsMailParser::OnBodyByte(byte, inHeader, level);
    if (!inHeader) {
      bodies.push_back(static_cast<char>(byte));
      ++m_bytes;
    } else {
      ++m_headerBytes;
    }
  }
  void SelectHeaders(HeaderMap*, int level) override { Note("select", level); }
  ResultCode OnHeaders(HeaderMap*, int level, bool afterChildren) override {
    return Note(afterChildren ? "again" : "headers", level);
  }
  void OnBodyBegin(int level) override {
    Note("body", level);
    KsMailParser::OnBodyBegin(level);
  }
  void OnBodyEnd(int level) override {
    Note("ended", level);
    KsMailParser::OnBodyEnd(level);
  }
  void OnBodyDone(int level) override {
    Note("done", level);
    KsMailParser::OnBodyDone(level);
  }

 private:
  int Note(const std::string& call, int number) {
    if (m_headerBytes > 0) {
      calls += " h" + std::to_string(m_headerBytes);
    }
    if (m_bytes > 0) {
      calls += " b" + std::to_string(m_bytes);
    }
    m_bytes = m_headerBytes = 0;
    calls += " " + call + std::to_string(number);
    if (!throwAt.empty() && calls.ends_with(throwAt)) {
      throw std::runtime_error("hook");
    }
    return number;
  }

  int m_bytes = 0;
  int m_headerBytes = 0;
};

// The parts that the parser keeps, read in runs.
struct Kept {
  std::vector<std::string> plain;
  std::vector<std::string> html;
  std::vector<std::string> pdf;
  std::vector<std::string> image;
  bool operator==(const Kept&) const = default;
};

Kept KeptBy(const KsMailParser& parser) {
  return {parser.PlainParts(), parser.HtmlParts(), parser.PdfBlobs(), parser.ImageBlobs()};
}

Kept Parse(std::string_view message) {
  KsMailParser parser;
  parser.ParseBuffer(message.data(), static_cast<uint32_t>(message.size()));
  Recorder recorder;
  recorder.Parse(message);
  EXPECT_EQ(KeptBy(parser), KeptBy(recorder)) << "runs and single bytes differ";
  return KeptBy(parser);
}

std::string Part(std::string_view headers, std::string_view body) {
  return "--b\r\n" + std::string(headers) + "\r\n" + std::string(body) + "\r\n";
}

std::string Multipart(std::string_view parts) {
  return "Content-Type: multipart/mixed; boundary=b\r\n\r\n" + std::string(parts) + "--b--\r\n";
}

TEST(KsMailParser, CallsHooksInTheirOrder) {
  Recorder recorder;
  EXPECT_EQ(recorder.Parse("Content-Type: multipart/mixed; boundary=xx\r\n\r\npre\r\n"
                           "--xx\r\nA: b\r\n\r\none\r\n--xx\r\nA: b\r\n\r\ntwo\r\n--xx--\r\nepi"),
            kOk);
  EXPECT_EQ(recorder.calls,
            " begin0 select0 h46 headers0 body0 b5 ended0 b6 done0"
            " select1 h8 headers1 again1 body1 b5 ended1 b6 done1"
            " select1 h8 headers1 again1 body1 b5 ended1 b8 done1"
            " again0 body0 b3 ended0 done0 end0");
}

TEST(KsMailParser, AMessageInAMessageStaysAtItsBoundary) {
  Recorder recorder;
  recorder.Parse(
      "Content-Type: multipart/x; boundary=b\r\n\r\n--b\r\nContent-Type: message/rfc822\r\n"
      "\r\nSubject: inner\r\n\r\ntext\r\n--b--\r\nepilogue");
  EXPECT_EQ(recorder.calls,
            " begin0 select0 h41 headers0 body0 ended0 b5 done0"
            " select1 h32 headers1 select2 h18 headers2 again2 body2 b6 ended2 b7 done2"
            " again0 body0 b8 ended0 done0 end0");
}

TEST(KsMailParser, AMultipartWithoutABoundaryIsAllPreamble) {
  Recorder recorder;
  recorder.Parse("Content-Type: multipart/mixed\r\n\r\n--b\r\n\r\ntext");
  EXPECT_EQ(recorder.calls,
            " begin0 select0 h33 headers0 body0 b11 ended0 done0 select1 headers1 again1 body1"
            " ended1 done1 again0 body0 ended0 done0 end0");
}

TEST(KsMailParser, ABoundaryThatNeverComesEndsNoBody) {
  Recorder recorder;
  recorder.Parse("Content-Type: multipart/x; boundary=b\r\n\r\n--b\r\nA: b\r\n\r\ntext");
  EXPECT_EQ(recorder.calls,
            " begin0 select0 h41 headers0 body0 ended0 b5 done0 select1 h8 headers1 again1 body1"
            " b4 done1 again0 body0 ended0 done0 end0");
}

TEST(KsMailParser, AnEpilogueIsReadUpToTheOuterBoundary) {
  Recorder recorder;
  recorder.Parse(
      "Content-Type: multipart/x; boundary=out\r\n\r\n--out\r\n"
      "Content-Type: multipart/x; boundary=inn\r\n\r\n--inn\r\nA: b\r\n\r\nx\r\n--inn--\r\n"
      "epi\r\n--out\r\nA: b\r\n\r\ny\r\n--out--\r\n");
  EXPECT_EQ(recorder.bodies, "--out\r\n--inn\r\nx\r\n--inn--\r\nepi\r\n--out\r\ny\r\n--out--\r\n");
  EXPECT_NE(recorder.calls.find(" again1 body1 b5 ended1 b7 done1 select1"), std::string::npos)
      << recorder.calls;
}

struct DelimiterCase {
  const char* name;
  std::string line;
  bool ends;
  bool more;
};

class DelimiterTest : public testing::TestWithParam<DelimiterCase> {};

TEST_P(DelimiterTest, IsFoundByContainment) {
  Recorder recorder;
  recorder.Parse("Content-Type: multipart/x; boundary=bound\r\n\r\n-bound\r\n\r\n\r\ntext\r\n" +
                 GetParam().line + "after\r\n");
  const bool ended = recorder.calls.find(" ended1") != std::string::npos;
  const bool another =
      recorder.calls.find("select1", recorder.calls.find("done1")) != std::string::npos;
  EXPECT_EQ(ended, GetParam().ends) << recorder.calls;
  EXPECT_EQ(another, GetParam().more) << recorder.calls;
}

INSTANTIATE_TEST_SUITE_P(
    Lines, DelimiterTest,
    testing::Values(
        DelimiterCase{"Usual", "--bound\r\n", true, true},
        DelimiterCase{"Closing", "--bound--\r\n", true, false},
        DelimiterCase{"OneDashCloses", "--bound-\r\n", true, false},
        DelimiterCase{"DashBlankBoundary", "- bound\r\n", true, true},
        DelimiterCase{"AnywhereInTheLine", "-xboundx\r\n", true, true},
        DelimiterCase{"NoDashInFront", "bound\r\n", false, false},
        DelimiterCase{"BlankInFront", " --bound\r\n", false, false},
        DelimiterCase{"BareLfEndsNoLine", "x\n--bound\r\n", false, false},
        DelimiterCase{"CrCrLfEndsALine", "x\r\r\n--bound\r\n", true, true},
        DelimiterCase{"AlmostTheBoundary", "--boun\r\n", false, false},
        DelimiterCase{"CaseMatters", "--BOUND\r\n", false, false},
        DelimiterCase{"LineOf512Bytes", "--bound" + std::string(503, 'x') + "\r\n", true, true},
        DelimiterCase{"LineOf513Bytes", "--bound" + std::string(504, 'x') + "\r\n", false, false}),
    [](const auto& tested) { return tested.param.name; });

struct LastLineCase {
  const char* name;
  std::string line;
  bool ends;
  bool more;
};

class LastLineTest : public testing::TestWithParam<LastLineCase> {};

TEST_P(LastLineTest, EndsABodyWithoutItsLineEnd) {
  Recorder recorder;
  recorder.Parse("Content-Type: multipart/x; boundary=bound\r\n\r\n-bound\r\n\r\n\r\ntext\r\n" +
                 GetParam().line);
  EXPECT_EQ(recorder.calls.find(" ended1") != std::string::npos, GetParam().ends) << recorder.calls;
  const bool another =
      recorder.calls.find("select1", recorder.calls.find("done1")) != std::string::npos;
  EXPECT_EQ(another, GetParam().more) << recorder.calls;
}

INSTANTIATE_TEST_SUITE_P(
    Lines, LastLineTest,
    testing::Values(LastLineCase{"Usual", "--bound", true, true},
                    LastLineCase{"Closing", "--bound--", true, false},
                    LastLineCase{"DashInTheLastThree", "--bound-xx", true, false},
                    LastLineCase{"DashBeforeTheLastThree", "--bound-xxx", true, true},
                    LastLineCase{"NoDashNeeded", "bound", true, true},
                    LastLineCase{"LoneCrBelongsToIt", "--bound-\r", true, false},
                    LastLineCase{"512Bytes", "bound" + std::string(507, 'x'), true, true},
                    LastLineCase{"513Bytes", "bound" + std::string(508, 'x'), false, false},
                    LastLineCase{"Other", "bond", false, false}),
    [](const auto& tested) { return tested.param.name; });

TEST(KsMailParser, AMessageWithoutAContentTypeIsText) {
  Recorder recorder;
  recorder.Parse("A: b\r\n\r\ntext");
  EXPECT_EQ(recorder.GetContentType(), "text/plain");
  EXPECT_EQ(recorder.PlainParts(), std::vector<std::string>{"text"});
}

TEST(KsMailParser, KeepsThreeTextsOfAKind) {
  const std::string html = "Content-Type: text/html\r\n";
  const std::string plain = "A: b\r\n";
  const Kept kept =
      Parse(Multipart(Part(plain, "1") + Part(plain, "2") + Part(html, "a") + Part(plain, "3") +
                      Part(plain, "4") + Part(html, "b") + Part(html, "c") + Part(html, "d")));
  EXPECT_EQ(kept.plain, (std::vector<std::string>{"1\r\n", "2\r\n", "3\r\n"}));
  EXPECT_EQ(kept.html, (std::vector<std::string>{"a\r\n", "b\r\n", "c\r\n"}));
}

TEST(KsMailParser, CutsTextsAndDropsAttachmentsAtTheLimit) {
  const std::string fits(0x1FFFF, 'x');
  const std::string tooLong(0x20000, 'x');
  EXPECT_EQ(Parse("A: b\r\n\r\n" + fits).plain, std::vector<std::string>{fits});
  EXPECT_EQ(Parse("A: b\r\n\r\n" + tooLong).plain, std::vector<std::string>{fits});
  const std::string pdf = "Content-Type: application/pdf\r\n\r\n";
  EXPECT_EQ(Parse(pdf + fits).pdf, std::vector<std::string>{fits});
  EXPECT_TRUE(Parse(pdf + tooLong).pdf.empty());
  const std::string image = "Content-Type: image/gif\r\n\r\n";
  EXPECT_EQ(Parse(image + fits).image, std::vector<std::string>{fits});
  EXPECT_TRUE(Parse(image + tooLong).image.empty());
}

TEST(KsMailParser, APdfByItsTypeAndImageByItsNameIsAPdf) {
  const Kept kept = Parse("Content-Type: application/pdf; name=x.gif\r\n\r\nbytes");
  EXPECT_EQ(kept.pdf, std::vector<std::string>{"bytes"});
  EXPECT_TRUE(kept.image.empty());
}

TEST(KsMailParser, AnAttachmentWithoutItsEndIsDropped) {
  const std::string start = "Content-Type: multipart/x; boundary=b\r\n\r\n--b\r\n";
  EXPECT_TRUE(Parse(start + "Content-Type: image/gif\r\n\r\nGIF").image.empty());
  EXPECT_EQ(Parse(start + "A: b\r\n\r\ntext").plain, std::vector<std::string>{"text"});
}

TEST(KsMailParser, ATextWithAnImageNameStaysText) {
  Recorder recorder;
  recorder.Parse("Content-Type: text/plain; name=x.jpg\r\n\r\ntext");
  EXPECT_EQ(recorder.GetContentType(), "image/jpg");
  EXPECT_EQ(recorder.GetPartName(), "x.jpg");
  EXPECT_EQ(recorder.PlainParts(), std::vector<std::string>{"text"});
}

struct EncodingCase {
  const char* name;
  const char* encoding;
  std::string body;
  std::string decoded;
};

class EncodingTest : public testing::TestWithParam<EncodingCase> {};

TEST_P(EncodingTest, IsUndoneInRunsAndByteByByte) {
  const std::string message = "Content-Transfer-Encoding: " + std::string(GetParam().encoding) +
                              "\r\n\r\n" + GetParam().body;
  EXPECT_EQ(Parse(message).plain, std::vector<std::string>{GetParam().decoded});
}

INSTANTIATE_TEST_SUITE_P(
    Bodies, EncodingTest,
    testing::Values(EncodingCase{"QuotedPrintable", "quoted-printable", "a=3Db=\r\nc\r\n",
                                 "a=bc\r\n"},
                    EncodingCase{"LowerCaseDigitsAreDropped", "Quoted-Printable", "a=3db", "ab"},
                    EncodingCase{"WrongEscapeIsDropped", "quoted-printable", "a=ZZb=\nc", "ab"},
                    EncodingCase{"EqualsSignStartsAnew", "quoted-printable", "a=4=41b", "aAb"},
                    EncodingCase{"UnfinishedEscape", "quoted-printable", "a=4", "a"},
                    EncodingCase{"Base64", "base64", "QU\r\nJDRA==", "ABCD"},
                    EncodingCase{"Base64KeepsZeroBytes", "base64", "QQBC", std::string("A\0B", 3)},
                    EncodingCase{"Base64EndsAtTheEqualsSign", "base64", "QQ==QUJD", "A"},
                    EncodingCase{"BothAtOnce", "quoted-printable; base64", "Q=55JD", "ABC"},
                    EncodingCase{"LongBase64", "base64", "QUJD" + std::string(12000, 'Q'),
                                 "ABC" +
                                     [] {
                                       std::string decoded;
                                       for (int i = 0; i < 3000; ++i) {
                                         decoded += "A\x04\x10";
                                       }
                                       return decoded;
                                     }()},
                    EncodingCase{"Unknown", "8bit", "a=3D", "a=3D"}),
    [](const auto& tested) { return tested.param.name; });

TEST(KsMailParser, TheDecoderStartsAfreshWithEachBody) {
  const std::string encoded = "Content-Transfer-Encoding: base64\r\n";
  const Kept kept = Parse(Multipart(Part(encoded, "QQ==") + Part(encoded, "QUJD")));
  EXPECT_EQ(kept.plain, (std::vector<std::string>{"A", "ABC"}));
}

TEST(KsMailParser, FailsWithoutBytes) {
  Recorder recorder;
  EXPECT_EQ(recorder.ParseBuffer(nullptr, 1), kFail);
  EXPECT_EQ(recorder.ParseBuffer("x", 0), kFail);
  EXPECT_EQ(recorder.calls, "");
  EXPECT_EQ(recorder.ParseFile(L"no such file"), kFail);
}

TEST(KsMailParser, AFailureOfAHookStaysInside) {
  for (const char* hook : {"select0", "headers0", "body0", "ended0", "done0", "again0"}) {
    Recorder recorder;
    recorder.throwAt = hook;
    EXPECT_EQ(recorder.Parse("A: b\r\n\r\ntext"), kOk) << hook;
    EXPECT_TRUE(recorder.calls.ends_with(" end0")) << recorder.calls;
  }
  Recorder recorder;
  recorder.throwAt = " end0";
  EXPECT_EQ(recorder.Parse("A: b\r\n\r\ntext"), kOk);
  EXPECT_EQ(recorder.PlainParts(), std::vector<std::string>{"text"});
}

class Refusing : public KsMailParser {
 public:
  bool ended = false;

 protected:
  ResultCode OnParseBegin() override { return kNullPointer; }
  ResultCode OnParseEnd() override {
    ended = true;
    return kOk;
  }
};

TEST(KsMailParser, ARefusedBeginEndsAtOnce) {
  Refusing parser;
  EXPECT_EQ(parser.ParseBuffer("A: b\r\n\r\n", 8), kNullPointer);
  EXPECT_FALSE(parser.ended);
}

class Selecting : public KsMailParser {
 public:
  HeaderMap seen;
  HeaderMap seenAgain;

 protected:
  void SelectHeaders(HeaderMap* wanted, int) override { wanted->Set("b", ""); }
  ResultCode OnHeaders(HeaderMap* headers, int, bool afterChildren) override {
    (afterChildren ? seenAgain : seen) = *headers;
    return kOk;
  }
};

TEST(KsMailParser, ASelectionNeverLosesTheContentHeaders) {
  Selecting parser;
  const std::string message = "A: 1\r\nB: 2\r\nContent-Type: text/html\r\n\r\ntext";
  parser.ParseBuffer(message.data(), static_cast<uint32_t>(message.size()));
  EXPECT_EQ(parser.seen.Size(), 3U);
  EXPECT_EQ(parser.seen.Get("b"), "2");
  EXPECT_EQ(parser.HtmlParts().size(), 1U);
}

class Watching : public KsMailParser {
 public:
  HeaderMap seen;
  HeaderMap seenAgain;

 protected:
  ResultCode OnHeaders(HeaderMap* headers, int, bool afterChildren) override {
    (afterChildren ? seenAgain : seen) = *headers;
    return kOk;
  }
};

TEST(KsMailParser, ReadingTheContentTypeLeavesItsKeys) {
  Watching parser;
  parser.ParseBuffer("A: 1\r\n\r\ntext", 12);
  EXPECT_FALSE(parser.seen.Contains("content-type"));
  EXPECT_TRUE(parser.seenAgain.Contains("content-type"));
  EXPECT_TRUE(parser.seenAgain.Contains("content-transfer-encoding"));
}

TEST(KsMailParser, ReadsFiles) {
  const test::TempFolder folder;
  const std::string message = "A: b\r\n\r\ntext";
  const std::wstring path = folder.PathOf("message.eml");
  test::WriteFile(path, message);
  KsMailParser parser;
  EXPECT_EQ(parser.ParseFile(path.c_str()), kOk);
  EXPECT_EQ(parser.PlainParts(), std::vector<std::string>{"text"});
}

TEST(KsMailParser, ReadByteGivesNulAtTheEnd) {
  KsMailParser parser;
  uint8_t byte = 7;
  EXPECT_FALSE(parser.ReadByte(&byte));
  EXPECT_EQ(byte, 0);
}

TEST(KsMailParser, HarmedMessagesAreWalkedAlikeInRunsAndByteByByte) {
  const std::string message = Multipart(
      Part("Content-Type: message/rfc822\r\n", "S: x\r\n\r\ntext") +
      Part("Content-Type: text/html\r\nContent-Transfer-Encoding: quoted-printable\r\n",
           "<a=3D=\r\nb>") +
      Part("Content-Type: image/gif\r\nContent-Transfer-Encoding: base64\r\n", "QUJDRA=="));
  const auto check = [](std::string_view bytes) { Parse(bytes); };
  test::ForEveryPrefix(message, check);
  test::ForEveryFlippedByte(message, check);
}

}  // namespace
}  // namespace postmarker
