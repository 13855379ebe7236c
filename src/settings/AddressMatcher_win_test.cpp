#include <gtest/gtest.h>

#include <chrono>
#include <random>

#include "settings/AddressMatcher.h"
#include "settings/VbScriptRegExp_win.h"
#include "support/AddressTexts.h"
#include "support/ComPtr_win.h"

namespace postmarker {
namespace {

TEST(AddressMatcherAndThePlatform, AgreeOnRandomTexts) {
  const ComApartment apartment;
  const auto engine = CreateVbScriptRegExp();
  ASSERT_TRUE(engine);
  // Besides what the patterns name, units that a case mapping may turn into letters: dotless i,
  // long s, the Kelvin sign.
  const std::wstring alphabets[] = {L"abZ0|-_--__.@", L"aZ0|-_.@kis! \t\x0131\x017F\x212A\x00E4"};
  std::mt19937 random(20260101);
  for (const AddressMode mode : {AddressMode::kAddress, AddressMode::kDomain}) {
    ASSERT_TRUE(engine->SetPattern(AddressPattern(mode)));
    int matches = 0;
    for (size_t i = 0; i < 50000; ++i) {
      const std::wstring text = test::RandomAddressText(&random, alphabets[i % 2]);
      const std::optional<bool> verdict = engine->Test(text);
      ASSERT_TRUE(verdict);
      matches += *verdict ? 1 : 0;
      ASSERT_EQ(MatchesAddressPattern(text, mode), *verdict) << testing::PrintToString(text);
    }
    EXPECT_GT(matches, 1000) << "the texts hit the pattern too seldom";
  }
}

TEST(AddressMatcherAndThePlatform, HundredUnitsAreJudgedWithinTwoTenthsOfASecond) {
  const ComApartment apartment;
  AddressValidator validator(MakePromptEngine(CreateVbScriptRegExp()));
  validator.SetMode(AddressMode::kAddress);
  for (const wchar_t* const unit : {L"-", L"a-", L"_-", L"a_"}) {
    std::wstring text;
    while (text.size() < 100) {
      text.append(unit);
    }
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(validator.IsValid(text.c_str()));
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(200));
  }
}

}  // namespace
}  // namespace postmarker
