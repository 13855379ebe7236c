#include "analysis/features/KsMailTokenizer.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "support/Prefixes.h"
#include "support/TokenListing.h"

namespace postmarker {
namespace {

using test::Listed;

ResultCode Parse(KsMailTokenizer* tokenizer, std::string_view message, HtmlToText html = nullptr,
                 PdfHelper* pdf = nullptr) {
  return tokenizer->Parse(message.data(), static_cast<uint32_t>(message.size()), html, pdf);
}

std::string TokensOf(std::string_view message) {
  KsMailTokenizer tokenizer;
  Parse(&tokenizer, message);
  return Listed(tokenizer.Tokens());
}

// A class that looks at single bytes and says so.
class ByteByByte : public KsMailTokenizer {
 public:
  size_t bytes = 0;  // of bodies

 protected:
  [[nodiscard]] bool WantsSingleBytes() const override { return true; }
  void OnBodyByte(uint8_t byte, bool inHeader, int level) override {
    bytes += inHeader ? 0 : 1;
    KsMailTokenizer::OnBodyByte(byte, inHeader, level);
  }
};

TEST(KsMailTokenizer, WalksBodies) {
  KsMailTokenizer tokenizer;
  EXPECT_EQ(Parse(&tokenizer, "A: b\r\n\r\nsome text"), kOk);
  EXPECT_EQ(Listed(tokenizer.BodyWords()), "some|text");
  EXPECT_EQ(Listed(tokenizer.Tokens()), "some sometext:4 text");
}

TEST(KsMailTokenizer, AMessageWithoutABodyHasTheFingerprintOfNothing) {
  KsMailTokenizer tokenizer;
  Parse(&tokenizer, "Subject: x\r\n\r\n");
  ASSERT_EQ(tokenizer.FingerprintCount(), 1U);
  EXPECT_EQ(tokenizer.Fingerprint(0).digest, "d41d8cd98f00b204e9800998ecf8427e");
  EXPECT_EQ(tokenizer.Fingerprint(0).length, 0);
  EXPECT_EQ(tokenizer.Fingerprint(0).contentType, "text/plain");
  EXPECT_EQ(Listed(tokenizer.Tokens()), "subject*x");
}

TEST(KsMailTokenizer, FingerprintsEachSimpleBodyAsItDecodes) {
  KsMailTokenizer tokenizer;
  Parse(&tokenizer,
        "Content-Type: multipart/mixed; boundary=b\r\n\r\npreamble\r\n"
        "--b\r\nContent-Type: application/x\r\nContent-Transfer-Encoding: base64\r\n\r\nYWJj\r\n"
        "--b\r\nContent-Type: Application/X\r\n\r\nabc\r\n"
        "--b\r\nA: b\r\n\r\n--b--\r\nepilogue");
  ASSERT_EQ(tokenizer.FingerprintCount(), 3U);
  EXPECT_EQ(tokenizer.Fingerprint(0).digest, "900150983cd24fb0d6963f7d28e17f72");
  EXPECT_EQ(tokenizer.Fingerprint(0).length, 3);
  EXPECT_EQ(tokenizer.Fingerprint(0).contentType, "application/x");
  EXPECT_EQ(tokenizer.Fingerprint(1).length, 5);
  EXPECT_EQ(tokenizer.Fingerprint(1).contentType, "application/x");
  EXPECT_EQ(tokenizer.Fingerprint(2).contentType, "text/plain");
}

TEST(KsMailTokenizer, ABodyWithoutItsBoundaryHasNoFingerprint) {
  KsMailTokenizer tokenizer;
  Parse(&tokenizer, "Content-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\nA: b\r\n\r\ntext");
  EXPECT_EQ(tokenizer.FingerprintCount(), 0U);
  EXPECT_EQ(Listed(tokenizer.BodyWords()), "text");
}

TEST(KsMailTokenizer, CountsASenderTokenByToken) {
  EXPECT_EQ(TokensOf("From: Bob <bob@mail.example.com>\r\n\r\n"),
            "from*bob from*bob@mail.example.com from*com from*example from*mail"
            " from*mail.example.com fromname*bob");
}

TEST(KsMailTokenizer, SenderHeadersAreToldByTheirBeginning) {
  EXPECT_EQ(
      TokensOf("From: B <a@x>\r\nFrom: C <a@x>\r\nX-From: D <a@x>\r\nFromage: E <a@x>\r\n\r\n"),
      "bc:4 bce:16 be:4 ce:4 from*a from*a@x from*x from-1name*c fromagename*e fromname*b"
      " fromname*bc:4 fromname*bce:16 fromname*be:4 fromname*ce:4");
  EXPECT_EQ(TokensOf("Reply-To: a@x\r\nReturn-Path: <b@y>\r\n\r\n"),
            "reply-to*a reply-to*a@x reply-to*x return-path*b return-path*b@y return-path*y");
}

struct ProviderCase {
  const char* name;
  const char* header;
  bool folded;
};

class ProviderTest : public testing::TestWithParam<ProviderCase> {};

TEST_P(ProviderTest, CountriesFoldIntoOneDomain) {
  const std::string tokens = TokensOf(std::string(GetParam().header) + "\r\n\r\n");
  EXPECT_EQ(tokens.find("*joe@yahoo.com") != std::string::npos, GetParam().folded) << tokens;
}

INSTANTIATE_TEST_SUITE_P(
    Senders, ProviderTest,
    testing::Values(ProviderCase{"Country", "From: joe@yahoo.co.uk", true},
                    ProviderCase{"Host", "From: joe@mail.YAHOO.de", true},
                    ProviderCase{"ReturnPath", "Return-Path: <joe@yahoo.fr>", true},
                    ProviderCase{"ReplyToIsNotFolded", "Reply-To: joe@yahoo.fr", false},
                    ProviderCase{"OtherLabel", "From: joe@notyahoo.fr", false},
                    ProviderCase{"LabelElsewhere", "From: joe@yahoo.example.com", false},
                    ProviderCase{"NoDomain", "From: joe@yahoo.invalid", false}),
    [](const auto& tested) { return tested.param.name; });

TEST(KsMailTokenizer, AddressesOfAllForms) {
  EXPECT_EQ(TokensOf("From: joe\r\n\r\n"), "from*joe");
  EXPECT_EQ(TokensOf("From: \r\nFrom: ,\r\n\r\n"), "from*");
  EXPECT_EQ(TokensOf("From: x:joe@\r\n\r\n"), "from*joe from*joe@");
  EXPECT_EQ(TokensOf("From: a@b..c\r\n\r\n"), "from*a from*a@b..c from*b from*b..c from*c");
}

TEST(KsMailTokenizer, DisplayNamesAreTokenizedInLowerCase) {
  KsMailTokenizer tokenizer;
  Parse(&tokenizer, "From: Bob's WWW.Site.com <b@x>\r\n\r\n");
  EXPECT_EQ(Listed(tokenizer.FromNameWords()), "bob's|www|site|com");
  EXPECT_EQ(Listed(tokenizer.BodyWords()), "bob's|www|site|com");
  EXPECT_EQ(Listed(tokenizer.TextUrls()), "www.site.com");
  EXPECT_EQ(tokenizer.FromNameTokens().Count("www.site.com"), 1);
  EXPECT_EQ(tokenizer.FromNameTokens().Count("bob'swww"), 4);
}

TEST(KsMailTokenizer, TheSubjectLosesBracketsAndItsWordsComeApart) {
  KsMailTokenizer tokenizer;
  Parse(&tokenizer, "Subject: [ADV] FreeMoney\r\n\r\n");
  EXPECT_EQ(Listed(tokenizer.SubjectWords()), "free|money");
  EXPECT_EQ(Listed(tokenizer.SubjectTokens()), "free freemoney:4 money");
  EXPECT_EQ(Listed(tokenizer.Tokens()),
            "freemoney:4 subject*free subject*freemoney:4 subject*money");
}

TEST(KsMailTokenizer, SubjectsOfAllForms) {
  EXPECT_EQ(TokensOf("Subject: a[b]c[d\r\n\r\n").substr(0, 4), "acd:");
  EXPECT_EQ(TokensOf("Subject: ]a[\r\n\r\n"), "subject*a");
  EXPECT_EQ(TokensOf("Subject: [[a]b]c\r\n\r\n").substr(0, 4), "bc:4");
  EXPECT_EQ(TokensOf("Subject: a[B]c\r\n\r\n"), "subject*ac");  // put together, not apart
}

TEST(KsMailTokenizer, SubjectsOfAllLevelsCount) {
  KsMailTokenizer tokenizer;
  Parse(&tokenizer, "Subject: outer\r\nContent-Type: message/rfc822\r\n\r\nSubject: inner\r\n\r\n");
  EXPECT_EQ(Listed(tokenizer.SubjectWords()), "outer|inner");
  EXPECT_EQ(tokenizer.GetSubject(), "outer");
}

TEST(KsMailTokenizer, HeadersComeInTheOrderOfTheirKeys) {
  KsMailTokenizer tokenizer;
  Parse(&tokenizer, "Subject: c\r\nReply-To: b <x>\r\nFrom: a <x>\r\n\r\nd");
  EXPECT_EQ(Listed(tokenizer.BodyWords()), "a|b|c|d");
}

TEST(KsMailTokenizer, WordsCountOnceAndPairsKeepTheirWeights) {
  EXPECT_EQ(TokensOf("A: b\r\n\r\na a a a a"), "a aa:28 aaa:48");
  KsMailTokenizer tokenizer;
  Parse(&tokenizer, "A: b\r\n\r\none two. one two.");
  EXPECT_EQ(tokenizer.Tokens().Count("one"), 1);
  EXPECT_EQ(tokenizer.Tokens().Count("onetwo"), 8);
  EXPECT_EQ(tokenizer.Tokens().Count("oneone"), 4);
  EXPECT_EQ(tokenizer.Tokens().Count("onetwoone"), 16);
}

TEST(KsMailTokenizer, UrlCountsAreNotCapped) {
  KsMailTokenizer tokenizer;
  Parse(&tokenizer, "A: b\r\n\r\nx.com x.com joe@x.com");
  EXPECT_EQ(Listed(tokenizer.TextUrls()), "x.com:3");
  EXPECT_EQ(Listed(tokenizer.TextAddresses()), "joe@x.com");
}

TEST(KsMailTokenizer, TheTextOfAnHtmlPartGivesNoTokens) {
  KsMailTokenizer tokenizer;
  Parse(&tokenizer,
        "Content-Type: text/html\r\n\r\n<font size=1>words.....</font><a href=\"http://x.com/\">");
  EXPECT_EQ(tokenizer.Tokens().Count("words"), 0);
  EXPECT_EQ(tokenizer.Tokens().Count("html*font+size+1"), 1);
  EXPECT_EQ(Listed(tokenizer.HtmlUrls()), "x.com x.com/");
  EXPECT_EQ(tokenizer.Stats().maxSpecialDensity, 0);
}

TEST(KsMailTokenizer, PartsEndAtTheirFirstNul) {
  KsMailTokenizer tokenizer;
  Parse(&tokenizer, std::string_view("A: b\r\n\r\none\0two", 15));
  EXPECT_EQ(Listed(tokenizer.BodyWords()), "one");
}

TEST(KsMailTokenizer, CountsItsStats) {
  KsMailTokenizer tokenizer;
  Parse(&tokenizer,
        "Subject: one %RND\r\nX: %rnd\r\nY: %rn\r\nContent-Type: multipart/x; boundary=b\r\n\r\n"
        "--b\r\nA: b\r\n\r\nplain one... %rnd %rnd\r\n"
        "--b\r\nContent-Type: text/html\r\n\r\n<a "
        "href=\"http://a.com/x.exe\">www.b.com\r\n--b--\r\n");
  const TextStats& stats = tokenizer.Stats();
  EXPECT_EQ(stats.rndMacroCount, 3);
  EXPECT_EQ(stats.maxSpecialDensity, 3);
  EXPECT_EQ(stats.exeLinkCount, 1);
  EXPECT_EQ(stats.mismatchedLinkCount, 1);
  EXPECT_EQ(stats.firstPartNewTokens, 4);  // a.com/x.exe, a.com, a, com: the HTML part comes first
  EXPECT_EQ(stats.helperCountA, 0);
}

TEST(KsMailTokenizer, TokensOfTheHeadersAreNotNewInTheFirstPart) {
  KsMailTokenizer tokenizer;
  Parse(&tokenizer, "From: a <b>\r\n\r\nfrom*b c c");
  EXPECT_EQ(tokenizer.Stats().firstPartNewTokens, 3);
}

void FakeHtml(const char* html, const int32_t* length, std::string* text, int32_t* countB,
              int32_t* countA) {
  *text = "seen " + std::to_string(std::string_view(html).size() - static_cast<size_t>(*length)) +
          " ...";
  *countA = 2;
  *countB = 3;
}

void FailingHtml(const char*, const int32_t*, std::string*, int32_t* countB, int32_t*) {
  *countB = 3;
  throw std::runtime_error("helper");
}

constexpr std::string_view kTwoHtmlParts =
    "Content-Type: multipart/x; boundary=b\r\n\r\n"
    "--b\r\nContent-Type: text/html\r\n\r\n<td a=b>%rnd\r\n"
    "--b\r\nContent-Type: text/html\r\n\r\nx\r\n--b\r\nA: b\r\n\r\nplain\r\n--b--\r\n";

TEST(KsMailTokenizer, ReadsTheTextThatTheHtmlHelperGives) {
  KsMailTokenizer tokenizer;
  Parse(&tokenizer, kTwoHtmlParts, FakeHtml);
  EXPECT_EQ(Listed(tokenizer.BodyWords()), "seen|0|seen|0|plain");
  EXPECT_EQ(tokenizer.Stats().helperCountA, 4);
  EXPECT_EQ(tokenizer.Stats().helperCountB, 6);
  EXPECT_EQ(tokenizer.Stats().maxSpecialDensity, 3);
  EXPECT_EQ(tokenizer.Stats().rndMacroCount, 1);
}

TEST(KsMailTokenizer, AFailingHelperCostsItsPartOnly) {
  KsMailTokenizer tokenizer;
  EXPECT_EQ(Parse(&tokenizer, kTwoHtmlParts, FailingHtml), kOk);
  EXPECT_EQ(Listed(tokenizer.BodyWords()), "plain");
  EXPECT_EQ(tokenizer.Tokens().Count("html*td+a+b"), 1);  // what was gathered stays
  EXPECT_EQ(tokenizer.Stats().helperCountB, 0);
  EXPECT_EQ(tokenizer.Stats().rndMacroCount, 0);
  EXPECT_EQ(tokenizer.Stats().firstPartNewTokens, 0);
}

int g_released = 0;

const char* ExtractPdf(const char* pdf, uint32_t length, int32_t* textLength) {
  if (length != 3) {
    return nullptr;
  }
  *textLength = 8;
  return pdf[0] == 'p' ? "from pdf and more" : nullptr;
}

void ReleasePdf(const char*) {
  ++g_released;
}

TEST(KsMailTokenizer, ReadsPdfPartsThroughTheirHelper) {
  const std::string message =
      "Content-Type: multipart/x; boundary=b\r\n\r\n"
      "--b\r\nContent-Type: application/pdf\r\nContent-Transfer-Encoding: base64\r\n\r\ncGRm\r\n"
      "--b\r\nContent-Type: application/pdf\r\n\r\nother\r\n--b--\r\n";
  g_released = 0;
  PdfHelper helper;
  KsMailTokenizer tokenizer;
  helper.extract = ExtractPdf;
  Parse(&tokenizer, message, nullptr, &helper);
  EXPECT_EQ(Listed(tokenizer.BodyWords()), "");  // not ready without `release`
  helper.release = ReleasePdf;
  Parse(&tokenizer, message, nullptr, &helper);
  EXPECT_EQ(Listed(tokenizer.BodyWords()), "from|pdf");
  EXPECT_EQ(g_released, 1);
  EXPECT_TRUE(helper.lock.try_lock());
  helper.lock.unlock();
}

TEST(KsMailTokenizer, GetHeadersHasTheKeysThatReadingTheTypeCreates) {
  KsMailTokenizer tokenizer;
  Parse(&tokenizer, "A: b\r\n\r\ntext");
  EXPECT_TRUE(tokenizer.GetHeaders().Contains("content-type"));
  EXPECT_EQ(tokenizer.GetHeaders().Size(), 4U);
}

TEST(KsMailTokenizer, ClearsWhatTheLastMessageLeft) {
  KsMailTokenizer tokenizer;
  Parse(&tokenizer, "Subject: a b\r\nFrom: c <d@e.com>\r\n\r\n%rnd f.com g@h.com");
  tokenizer.Tokens();
  EXPECT_EQ(Parse(&tokenizer, ""), kFail);
  EXPECT_TRUE(tokenizer.Tokens().IsEmpty());
  EXPECT_TRUE(tokenizer.SubjectTokens().IsEmpty());
  EXPECT_TRUE(tokenizer.FromNameTokens().IsEmpty());
  EXPECT_TRUE(tokenizer.BodyWords().IsEmpty());
  EXPECT_TRUE(tokenizer.TextUrls().IsEmpty());
  EXPECT_TRUE(tokenizer.TextAddresses().IsEmpty());
  EXPECT_EQ(tokenizer.Stats().rndMacroCount, 0);
  EXPECT_EQ(tokenizer.FingerprintCount(), 0U);
  EXPECT_TRUE(tokenizer.GetHeaders().IsEmpty());
  EXPECT_EQ(tokenizer.Parse(L"no such file", nullptr, nullptr), kFail);
}

TEST(KsMailTokenizer, AClassThatSaysSoSeesEachByteOfABody) {
  ByteByByte bytewise;
  Parse(&bytewise, "A: b\r\n\r\nbody");
  EXPECT_EQ(bytewise.bytes, 4U);
}

TEST(KsMailTokenizer, RunsAndSingleBytesGiveTheSame) {
  const std::string message =
      "Subject: x =?u?q?y=41?=\r\nContent-Type: multipart/x; boundary=b\r\n\r\n--b\r\n"
      "Content-Transfer-Encoding: quoted-printable\r\n\r\nwords =3D=\r\n here\r\n"
      "--b\r\nContent-Type: text/html\r\nContent-Transfer-Encoding: base64\r\n\r\n" +
      std::string(70000, 'Q') + "\r\n--b--\r\n";
  const auto check = [](std::string_view bytes) {
    KsMailTokenizer runs;
    ByteByByte bytewise;
    Parse(&runs, bytes);
    Parse(&bytewise, bytes);
    EXPECT_EQ(Listed(runs.Tokens()), Listed(bytewise.Tokens()));
    ASSERT_EQ(runs.FingerprintCount(), bytewise.FingerprintCount());
    for (size_t i = 0; i < runs.FingerprintCount(); ++i) {
      EXPECT_EQ(runs.Fingerprint(i).digest, bytewise.Fingerprint(i).digest);
      EXPECT_EQ(runs.Fingerprint(i).length, bytewise.Fingerprint(i).length);
    }
  };
  check(message);
  test::ForEveryFlippedByte(std::string_view(message).substr(0, 300), check);
  test::ForEveryPrefix(std::string_view(message).substr(0, 300), check);
}

}  // namespace
}  // namespace postmarker
