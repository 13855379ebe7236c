// Messages with more features than the memory holds: the same features all the same.
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "analysis/KsMailTokenizer.h"
#include "support/HostileMail.h"
#include "support/Prefixes.h"

namespace postmarker {
namespace {

constexpr size_t kPlenty = size_t{1} << 28;
constexpr size_t kLittle = 3000;

class Bounded : public KsMailTokenizer {
 public:
  explicit Bounded(size_t memory) : m_memory(memory) {}

 protected:
  [[nodiscard]] bool WantsSingleBytes() const override { return false; }
  [[nodiscard]] size_t FeatureMemory() const override { return m_memory; }

 private:
  size_t m_memory;
};

std::string Listed(const TokenCountMap& counts) {
  std::string listed;
  for (const TokenCountMap::Item& item : counts) {
    listed.append(item.key).append(":").append(std::to_string(item.count)).append(" ");
  }
  return listed;
}

std::string Listed(const WordList& words) {
  std::string listed;
  for (const std::string_view word : words) {
    listed.append(word).append("|");
  }
  return listed;
}

std::string Listed(const TextStats& stats) {
  std::string listed;
  for (const int32_t count :
       {stats.helperCountA, stats.helperCountB, stats.firstPartNewTokens, stats.maxSpecialDensity,
        stats.rndMacroCount, stats.exeLinkCount, stats.mismatchedLinkCount}) {
    listed.append(std::to_string(count)).append(" ");
  }
  return listed;
}

void ExpectSame(KsMailTokenizer* a, KsMailTokenizer* b) {
  EXPECT_EQ(Listed(a->Stats()), Listed(b->Stats()));
  EXPECT_EQ(Listed(a->Tokens()), Listed(b->Tokens()));
  EXPECT_EQ(Listed(a->SubjectTokens()), Listed(b->SubjectTokens()));
  EXPECT_EQ(Listed(a->FromNameTokens()), Listed(b->FromNameTokens()));
  EXPECT_EQ(Listed(a->HtmlUrls()), Listed(b->HtmlUrls()));
  EXPECT_EQ(Listed(a->HtmlAddresses()), Listed(b->HtmlAddresses()));
  EXPECT_EQ(Listed(a->TextUrls()), Listed(b->TextUrls()));
  EXPECT_EQ(Listed(a->TextAddresses()), Listed(b->TextAddresses()));
  EXPECT_EQ(Listed(a->BodyWords()), Listed(b->BodyWords()));
  EXPECT_EQ(Listed(a->SubjectWords()), Listed(b->SubjectWords()));
  EXPECT_EQ(Listed(a->FromNameWords()), Listed(b->FromNameWords()));
  EXPECT_EQ(a->Tokens().Size(), b->Tokens().Size());
}

void ExpectSameWithLittleMemory(std::string_view message, HtmlToText html = nullptr,
                                PdfHelper* pdf = nullptr) {
  Bounded plenty(kPlenty);
  Bounded little(kLittle);
  for (KsMailTokenizer* const tokenizer : {&plenty, &little}) {
    tokenizer->Parse(message.data(), static_cast<uint32_t>(message.size()), html, pdf);
    tokenizer->Tokens();
  }
  EXPECT_EQ(little.Tokens().Held(), 0U);
  ExpectSame(&plenty, &little);
}

std::string Parts() {
  return "Subject: [x] FreeMoney a.b.com\r\nFrom: Bob Smith <bob@mail.example.com>\r\n"
         "Reply-To: x@yahoo.de, \"a b\" <c@yahoo.fr>\r\nX: %RND\r\n"
         "Content-Type: multipart/x; boundary=b\r\n\r\n"
         "--b\r\nFrom: inner a b <c>\r\nSubject: more words\r\nContent-Type: text/html\r\n\r\n"
         "<base href=\"http://free.com/\"><a href=x>free.de<a href=y><img alt=\"Free a.b@c.de\">"
         "<a href=\"http://x.de/a.exe?http://subject*free/\">text<a href=mailto:a@b.de>"
         "<font size=7 color=red>\r\n"
         "--b\r\n\r\nFree Bob wrote: money FREE at http://a.de or x@y.de, %rnd.... a.b.com\r\n"
         "--b\r\nContent-Type: application/pdf\r\n\r\npdf\r\n--b--\r\n";
}

TEST(TokenizerPasses, LittleMemoryGivesTheSameFeatures) {
  const std::string words = test::ManyWords(2, 3000) + test::ManyWords(4, 2000);
  ExpectSameWithLittleMemory(Parts() + "--b\r\n\r\n" + words);
  ExpectSameWithLittleMemory("Subject: " + words.substr(0, 900) + "\r\n" + Parts());
}

TEST(TokenizerPasses, LittleMemoryGivesTheSameFeaturesOfHostileMessages) {
  for (const test::HostileShape& shape : test::HostileShapes()) {
    const std::string message = shape.make(2000);
    Bounded plenty(kPlenty);
    Bounded little(kLittle);
    for (KsMailTokenizer* const tokenizer : {&plenty, &little}) {
      tokenizer->Parse(message.data(), static_cast<uint32_t>(message.size()), nullptr, nullptr);
    }
    SCOPED_TRACE(shape.name);
    ExpectSame(&plenty, &little);
  }
}

// All that goes through memory that may be short.
std::string AllListed(KsMailTokenizer* tokenizer) {
  return Listed(tokenizer->Stats()) + Listed(tokenizer->Tokens()) +
         Listed(tokenizer->FromNameTokens()) + Listed(tokenizer->TextUrls()) +
         Listed(tokenizer->TextAddresses()) + Listed(tokenizer->BodyWords());
}

// From what holds next to nothing to what holds all: tables, tighter ones, and windows.
TEST(TokenizerPasses, AnyMemoryGivesTheSameFeatures) {
  const std::string text =
      "\r\nA: b\r\n\r\n" + test::ManyWords(4, 20000) + test::Repeated("%d@b%d.de ", 5000);
  const std::string names = test::HeadersOfWords("from:", 2, "<x>", 10000);
  for (const std::string& message : {"Subject: x" + text, names + text}) {
    Bounded plenty(kPlenty);
    plenty.Parse(message.data(), static_cast<uint32_t>(message.size()), nullptr, nullptr);
    const std::string expected = AllListed(&plenty);
    bool held = false;
    for (size_t memory = 200000; !held; memory += memory / 4) {
      Bounded bounded(memory);
      bounded.Parse(message.data(), static_cast<uint32_t>(message.size()), nullptr, nullptr);
      EXPECT_TRUE(AllListed(&bounded) == expected) << memory;
      held = bounded.Tokens().Held() != 0;
    }
  }
}

TEST(TokenizerPasses, AnObjectForgetsThatTheLastMessageWasTooMuch) {
  Bounded little(30000);
  const std::string large = "A: b\r\n\r\n" + test::ManyWords(5, 20000);
  little.Parse(large.data(), static_cast<uint32_t>(large.size()), nullptr, nullptr);
  EXPECT_EQ(little.Tokens().Held(), 0U);
  EXPECT_GT(little.Tokens().Size(), 3000U);
  const std::string small = "A: b\r\n\r\none two";
  little.Parse(small.data(), static_cast<uint32_t>(small.size()), nullptr, nullptr);
  EXPECT_EQ(Listed(little.Tokens()), "one:1 onetwo:4 two:1 ");
  EXPECT_EQ(little.Tokens().Held(), 3U);
}

void ManyWordsOfHtml(const char*, const int32_t*, std::string* text, int32_t* countB,
                     int32_t* countA) {
  *text = test::ManyWords(3, 4000);
  *countA = 2;
  *countB = 3;
}

void FailingHtml(const char*, const int32_t*, std::string*, int32_t*, int32_t*) {
  throw std::runtime_error("helper");
}

const char* ExtractPdf(const char*, uint32_t, int32_t* length) {
  *length = 12;
  return "words of pdf and more";
}

void ReleasePdf(const char*) {}

TEST(TokenizerPasses, WhatHelpersMadeIsKeptAsLongAsItIsNeeded) {
  PdfHelper pdf;
  pdf.extract = ExtractPdf;
  pdf.release = ReleasePdf;
  ExpectSameWithLittleMemory(Parts(), ManyWordsOfHtml, &pdf);
  ExpectSameWithLittleMemory(Parts() + "--b\r\n\r\n" + test::ManyWords(3, 4000), FailingHtml, &pdf);
}

}  // namespace
}  // namespace postmarker
