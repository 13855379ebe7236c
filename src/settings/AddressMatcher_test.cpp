#include "settings/AddressMatcher.h"

#include <gtest/gtest.h>

#include <chrono>
#include <random>
#include <regex>

#include "support/AddressTexts.h"

namespace postmarker {
namespace {

constexpr AddressMode kModes[] = {AddressMode::kAddress, AddressMode::kDomain};

TEST(AddressMatcher, BarPassesAsALetterAndASecondDotInTheNameDoesNot) {
  EXPECT_TRUE(MatchesAddressPattern(L"a|b@c.org", AddressMode::kAddress));
  EXPECT_FALSE(MatchesAddressPattern(L"first.second.third@c.org", AddressMode::kAddress));
}

TEST(AddressMatcher, DomainPatternIsNotAnchoredAtItsStart) {
  EXPECT_TRUE(MatchesAddressPattern(L"!!!.org", AddressMode::kDomain));
  EXPECT_TRUE(MatchesAddressPattern(L"a b.org", AddressMode::kDomain));
  EXPECT_FALSE(MatchesAddressPattern(L"a b.org", AddressMode::kAddress));
}

TEST(AddressMatcher, TextWithoutADotFailsInEveryMode) {
  for (const AddressMode mode : kModes) {
    EXPECT_FALSE(MatchesAddressPattern(L"@b", mode));
    EXPECT_FALSE(MatchesAddressPattern(L"", mode));
  }
}

TEST(AddressMatcher, FirstUnderscoreNeedsAUnitBehindItOrAHyphenBeforeIt) {
  EXPECT_FALSE(MatchesAddressPattern(L"a_@b.c", AddressMode::kAddress));
  EXPECT_FALSE(MatchesAddressPattern(L"_@b.c", AddressMode::kAddress));
  EXPECT_TRUE(MatchesAddressPattern(L"a_b@b.c", AddressMode::kAddress));
  EXPECT_TRUE(MatchesAddressPattern(L"__@b.c", AddressMode::kAddress));
  EXPECT_TRUE(MatchesAddressPattern(L"-_@b.c", AddressMode::kAddress));
  EXPECT_FALSE(MatchesAddressPattern(L"a_.b@b.c", AddressMode::kAddress));
  EXPECT_TRUE(MatchesAddressPattern(L"a.b_@b.c", AddressMode::kAddress));
  EXPECT_TRUE(MatchesAddressPattern(L"a.__@b.c", AddressMode::kAddress));
}

TEST(AddressMatcher, GivesTheVerdictOfAStandardEngineOnRandomTexts) {
  const std::wstring alphabet = L"abZ0|-_--__.@!";
  std::mt19937 random(20260101);
  for (const AddressMode mode : kModes) {
    const std::wregex pattern(AddressPattern(mode), std::regex::icase);
    int matches = 0;
    for (int i = 0; i < 10000; ++i) {
      const std::wstring text = test::RandomAddressText(&random, alphabet);
      const bool expected = std::regex_search(text, pattern);
      matches += expected ? 1 : 0;
      ASSERT_EQ(MatchesAddressPattern(text, mode), expected) << testing::PrintToString(text);
    }
    EXPECT_GT(matches, 200) << "the texts hit the pattern too seldom";
  }
}

TEST(AddressMatcher, LongTextsThatMakeEnginesBacktrackAreAnsweredAtOnce) {
  const auto start = std::chrono::steady_clock::now();
  for (const wchar_t* const unit : {L"-", L"a-", L"_-", L"a_", L"_", L".-", L"-.", L"@", L"a"}) {
    std::wstring text;
    while (text.size() < 200000) {
      text.append(unit);
    }
    const std::wstring address = std::wstring(text).append(L"@").append(text).append(L".");
    for (const AddressMode mode : kModes) {
      MatchesAddressPattern(text, mode);
      MatchesAddressPattern(address, mode);
    }
  }
  // Such an engine would be busy for seconds with 46 units, and twice as long with every two more.
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

class ToldPlatform final : public RegExpEngine {
 public:
  explicit ToldPlatform(int* asked) : m_asked(asked) {}
  bool SetPattern(const std::wstring& pattern) override { return pattern != L"refused"; }
  std::optional<bool> Test(const std::wstring& /*text*/) override {
    ++*m_asked;
    return std::nullopt;
  }

 private:
  int* m_asked;
};

TEST(PromptEngine, AnswersForTheTwoPatternsAndAsksThePlatformForOthers) {
  int asked = 0;
  const auto engine = MakePromptEngine(std::make_unique<ToldPlatform>(&asked));
  ASSERT_TRUE(engine->SetPattern(AddressPattern(AddressMode::kAddress)));
  EXPECT_EQ(engine->Test(L"a@b.org"), true);
  EXPECT_EQ(engine->Test(L"!!!.org"), false);
  ASSERT_TRUE(engine->SetPattern(AddressPattern(AddressMode::kDomain)));
  EXPECT_EQ(engine->Test(L"!!!.org"), true);
  EXPECT_EQ(asked, 0);
  ASSERT_TRUE(engine->SetPattern(L"x+"));
  EXPECT_EQ(engine->Test(L"a@b.org"), std::nullopt);
  EXPECT_EQ(asked, 1);
  EXPECT_FALSE(engine->SetPattern(L"refused"));
}

TEST(PromptEngine, ThereIsNoneWithoutThePlatformsSoThatThePlainRulesHold) {
  EXPECT_FALSE(MakePromptEngine(nullptr));
  const AddressValidator validator(MakePromptEngine(nullptr));
  EXPECT_FALSE(validator.IsValid(L"a b.org")) << "the pattern would let a blank pass";
}

}  // namespace
}  // namespace postmarker
