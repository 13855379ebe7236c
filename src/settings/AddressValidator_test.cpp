#include "settings/AddressValidator.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace postmarker {
namespace {

// Gives the answer it was told to give, and notes what it was asked.
class ToldEngine final : public RegExpEngine {
 public:
  struct Notes {
    std::vector<std::wstring> patterns;
    std::vector<std::wstring> texts;
    std::optional<bool> answer;
    bool takesPatterns = true;
  };
  explicit ToldEngine(Notes* notes) : m_notes(notes) {}
  bool SetPattern(const std::wstring& pattern) override {
    m_notes->patterns.push_back(pattern);
    return m_notes->takesPatterns;
  }
  std::optional<bool> Test(const std::wstring& text) override {
    m_notes->texts.push_back(text);
    return m_notes->answer;
  }

 private:
  Notes* m_notes;
};

class AddressValidatorTest : public testing::Test {
 protected:
  AddressValidator Make() { return AddressValidator(std::make_unique<ToldEngine>(&m_notes)); }
  ToldEngine::Notes m_notes;
};

TEST_F(AddressValidatorTest, PatternsAreTheOnesThatListsWereMadeWith) {
  EXPECT_EQ(
      AddressPattern(AddressMode::kAddress),
      std::wstring(
          L"^[a-z|0-9|-]*([_-][a-z|0-9|_-]+)*([.][a-z|0-9|_-]+([_-][a-z|0-9|_-]+)*)?@[a-z|0-9|-]*"
          L"\\.([a-z][a-z|0-9|-]*(\\.[a-z][a-z|0-9|-]*)?)$"));
  EXPECT_EQ(AddressPattern(AddressMode::kDomain),
            std::wstring(L"[a-z|0-9|-|]*\\.([a-z][a-z|0-9|-]*(\\.[a-z][a-z|0-9|-]*)?)$"));
}

TEST_F(AddressValidatorTest, StartsInDomainModeAndTakesThePatternOfEachMode) {
  AddressValidator validator = Make();
  EXPECT_EQ(validator.Mode(), AddressMode::kDomain);
  validator.SetMode(AddressMode::kAddress);
  EXPECT_EQ(validator.Mode(), AddressMode::kAddress);
  EXPECT_EQ(m_notes.patterns, (std::vector<std::wstring>{AddressPattern(AddressMode::kDomain),
                                                         AddressPattern(AddressMode::kAddress)}));
}

TEST_F(AddressValidatorTest, NullTextIsInvalidAndTheEngineNotAsked) {
  m_notes.answer = true;
  EXPECT_FALSE(Make().IsValid(nullptr));
  EXPECT_TRUE(m_notes.texts.empty());
}

TEST_F(AddressValidatorTest, TextIsTrimmedBeforeTheEngineSeesIt) {
  m_notes.answer = true;
  EXPECT_TRUE(Make().IsValid(L" \ta b.org\r\n"));
  EXPECT_EQ(m_notes.texts, std::vector<std::wstring>{L"a b.org"});
}

TEST_F(AddressValidatorTest, AnswerOfTheEngineIsTheResult) {
  m_notes.answer = true;
  EXPECT_TRUE(Make().IsValid(L"no dot"));
  m_notes.answer = false;
  EXPECT_FALSE(Make().IsValid(L"b.org"));
}

TEST_F(AddressValidatorTest, PlainRulesHoldWhereTheEngineFails) {
  m_notes.answer = std::nullopt;
  EXPECT_TRUE(Make().IsValid(L"b.org"));
  EXPECT_FALSE(Make().IsValid(L"no dot"));
}

TEST_F(AddressValidatorTest, EngineThatRefusedThePatternIsNotAsked) {
  m_notes.takesPatterns = false;
  m_notes.answer = true;
  EXPECT_FALSE(Make().IsValid(L"no dot"));
  EXPECT_TRUE(m_notes.texts.empty());
}

TEST(AddressValidatorWithoutEngine, ChecksByPlainRules) {
  const struct {
    const wchar_t* text;
    bool address;
    bool domain;
  } cases[] = {
      {L"a@b.org", true, true},    {L"b.org", false, true},      {L" a@b.org\t", true, true},
      {L"a b.org", false, false},  {L"a@b c.org", false, false}, {L"@b", false, false},
      {L"", false, false},         {L"  ", false, false},        {L".", false, true},
      {L"a.b@c", false, true},     {L"a.b@c.d", true, true},     {L"a@b@c.d", true, true},
      {L"a@.b@c", true, true},     {L"@.", true, true},          {L"!!!.org", false, true},
      {L"a\tb@c.org", true, true},
  };
  for (const auto& one : cases) {
    AddressValidator validator(nullptr);
    EXPECT_EQ(validator.IsValid(one.text), one.domain)
        << "domain: " << testing::PrintToString(one.text);
    validator.SetMode(AddressMode::kAddress);
    EXPECT_EQ(validator.IsValid(one.text), one.address)
        << "address: " << testing::PrintToString(one.text);
  }
}

TEST(AddressValidatorWithoutEngine, NullTextIsInvalid) {
  EXPECT_FALSE(AddressValidator(nullptr).IsValid(nullptr));
}

}  // namespace
}  // namespace postmarker
