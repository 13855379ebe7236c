#include "analysis/headers/KsMailHeaderParser.h"

#include <gtest/gtest.h>

#include <string>

namespace postmarker {
namespace {

ResultCode Parse(KsMailHeaderParser* parser, std::string_view message) {
  return parser->Parse(message.data(), static_cast<uint32_t>(message.size()));
}

constexpr std::string_view kMessage =
    "Received: from mail.example.org (helo=a.example.org [192.0.2.1])\r\n"
    " by mx.Example.com with smtp; today\r\n"
    "Received: from [10.0.0.1] by inner\r\n"
    "Received: nonsense\r\n"
    "Subject: Hi (there)\r\n"
    "Content-Type: multipart/mixed; boundary=x\r\n"
    "\r\n--x\r\nSubject: inner\r\n\r\nbody\r\n--x--\r\n";

TEST(KsMailHeaderParser, KeepsTheTopLevelHeadersOnly) {
  KsMailHeaderParser parser;
  EXPECT_EQ(Parse(&parser, kMessage), kOk);
  EXPECT_EQ(parser.GetSubject(), "Hi (there)");
  EXPECT_EQ(parser.GetHeaders().Get("received-1"), "from [10.0.0.1] by inner");
  // The keys that reading the content type creates come after.
  EXPECT_FALSE(parser.GetHeaders().Contains("content-transfer-encoding"));
}

TEST(KsMailHeaderParser, TwoReceivedLinesGiveFourKeysAndTwoHops) {
  KsMailHeaderParser parser;
  Parse(&parser, "Received: from a by b\r\nReceived: from c by d\r\n\r\n");
  for (const char* key : {"received", "received-1", "received-comment", "received-1-comment"}) {
    EXPECT_TRUE(parser.GetHeaders().Contains(key)) << key;
  }
  ASSERT_EQ(parser.GetHops().CountHops(), 2U);
  EXPECT_EQ(parser.GetHops().ReadHop(0).first.name, "a");
  EXPECT_EQ(parser.GetHops().ReadHop(1).second.name, "d");
}

TEST(KsMailHeaderParser, ReadsHopsFromTheLinesWithTheirComments) {
  KsMailHeaderParser parser;
  Parse(&parser, kMessage);
  ASSERT_EQ(parser.GetHops().CountHops(), 2U);  // the third line names no host
  const KsHostInfo& from = parser.GetHops().ReadHop(0).first;
  EXPECT_EQ(from.name, "mail.example.org");
  EXPECT_EQ(from.address, "[192.0.2.1]");
  EXPECT_EQ(from.helo, "a.example.org");
  EXPECT_EQ(parser.GetHops().ReadHop(0).second.name, "mx.example.com");  // in lower case
}

TEST(KsMailHeaderParser, HopsAreThoseOfTheMessageWhateverIsSetLater) {
  KsMailHeaderParser parser;
  Parse(&parser, "Received: from a by b\r\n\r\n");
  parser.SetHeader("received-comment", "from x by y");
  parser.RemoveHeader("received");
  ASSERT_EQ(parser.GetHops().CountHops(), 1U);
  EXPECT_EQ(parser.GetHops().ReadHop(0).first.name, "a");
}

TEST(KsMailHeaderParser, FailsWithoutBytesAndIsEmptyThen) {
  KsMailHeaderParser parser;
  Parse(&parser, kMessage);
  EXPECT_EQ(parser.Parse(nullptr, 5), kFail);
  EXPECT_TRUE(parser.GetHeaders().IsEmpty());
  EXPECT_TRUE(parser.GetHops().IsEmpty());
  Parse(&parser, kMessage);
  EXPECT_EQ(parser.Parse("x", 0), kFail);
  EXPECT_TRUE(parser.GetHeaders().IsEmpty());
  EXPECT_EQ(parser.Parse(L"no such file"), kFail);
}

TEST(KsMailHeaderParser, ClearForgets) {
  KsMailHeaderParser parser;
  Parse(&parser, kMessage);
  parser.Clear();
  EXPECT_TRUE(parser.GetHeaders().IsEmpty());
  EXPECT_TRUE(parser.GetHops().IsEmpty());
  EXPECT_EQ(parser.GetSubject(), "");
}

TEST(KsMailHeaderParser, SetsAndRemovesHeaders) {
  KsMailHeaderParser parser;
  parser.SetHeader("subject", "x");
  EXPECT_EQ(parser.GetSubject(), "x");
  const HeaderMap copy = parser.GetHeaders();
  parser.RemoveHeader("subject");
  parser.RemoveHeader("subject");
  EXPECT_EQ(parser.GetSubject(), "");
  EXPECT_EQ(copy.Get("subject"), "x");
}

class HeaderHooks : public KsMailHeaderParser {
 public:
  using KsMailHeaderParser::OnHeaders;
};

TEST(KsMailHeaderParser, ANullMapIsAFailure) {
  HeaderHooks hooks;
  EXPECT_EQ(hooks.OnHeaders(nullptr, 0, false), kFail);
  HeaderMap headers;
  headers.Set("subject", "x");
  EXPECT_EQ(hooks.OnHeaders(&headers, 1, false), kOk);
  EXPECT_EQ(hooks.GetSubject(), "");
}

}  // namespace
}  // namespace postmarker
