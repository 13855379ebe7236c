#include "settings/VbScriptRegExp_win.h"

#include <gtest/gtest.h>

#include <thread>

#include "support/ComPtr_win.h"

namespace postmarker {
namespace {

class VbScriptRegExpTest : public testing::Test {
 protected:
  bool IsValid(const wchar_t* text, AddressMode mode) {
    AddressValidator validator(CreateVbScriptRegExp());
    validator.SetMode(mode);
    return validator.IsValid(text);
  }

  ComApartment m_apartment;
};

TEST_F(VbScriptRegExpTest, ThePlatformHasTheClass) {
  const auto engine = CreateVbScriptRegExp();
  ASSERT_TRUE(engine);
  ASSERT_TRUE(engine->SetPattern(L"^b+$"));
  EXPECT_EQ(engine->Test(L"BBB"), true) << "case is ignored";
  EXPECT_EQ(engine->Test(L"abbb"), false);
  EXPECT_EQ(engine->Test(L""), false);
}

TEST_F(VbScriptRegExpTest, PatternThatIsNoneFailsTheTest) {
  const auto engine = CreateVbScriptRegExp();
  ASSERT_TRUE(engine);
  const bool taken = engine->SetPattern(L"(((");
  EXPECT_FALSE(taken && engine->Test(L"x").has_value());
}

TEST_F(VbScriptRegExpTest, AddressesPassTheAddressPattern) {
  for (const wchar_t* const text :
       {L"a@b.org", L"A.B@C.ORG", L"first.second@mail.example.org", L"a|b@c.org", L"a-b_c@d-e.org",
        L"a_b.c-d@e.org", L"  a@b.org ", L"@b.org", L"a@.org", L"1@2.org", L"a@b.o-r.g|"}) {
    EXPECT_TRUE(IsValid(text, AddressMode::kAddress)) << testing::PrintToString(text);
  }
}

TEST_F(VbScriptRegExpTest, OtherTextsFailTheAddressPattern) {
  for (const wchar_t* const text :
       {L"first.second.third@c.org", L"a@b", L"@b", L"b.org", L"a b@c.org", L"a@b@c.org",
        L"a@b.c.d.org", L"a@b.1rg", L"a+b@c.org", L"a.@c.org", L".", L"", L"\x00E4@b.org",
        L"a@b.org\nx"}) {
    EXPECT_FALSE(IsValid(text, AddressMode::kAddress)) << testing::PrintToString(text);
  }
}

TEST_F(VbScriptRegExpTest, TextsThatEndLikeADomainPassTheDomainPattern) {
  for (const wchar_t* const text : {L"b.org", L"!!!.org", L"a@b.org", L"mail.EXAMPLE.org", L".org",
                                    L"first second.org", L"a.b.c.d.e.org", L" b.org\t"}) {
    EXPECT_TRUE(IsValid(text, AddressMode::kDomain)) << testing::PrintToString(text);
  }
}

TEST_F(VbScriptRegExpTest, OtherTextsFailTheDomainPattern) {
  for (const wchar_t* const text : {L"@b", L"org", L"b.org.", L"b.o!g", L"b.1", L"", L"."}) {
    EXPECT_FALSE(IsValid(text, AddressMode::kDomain)) << testing::PrintToString(text);
  }
}

TEST_F(VbScriptRegExpTest, ModeCanBeChangedBackAndForth) {
  AddressValidator validator(CreateVbScriptRegExp());
  EXPECT_TRUE(validator.IsValid(L"!!!.org"));
  validator.SetMode(AddressMode::kAddress);
  EXPECT_FALSE(validator.IsValid(L"!!!.org"));
  validator.SetMode(AddressMode::kDomain);
  EXPECT_TRUE(validator.IsValid(L"!!!.org"));
}

TEST(VbScriptRegExpWithoutApartment, ThereIsNoEngineAndPlainRulesHold) {
  bool hasEngine = true;
  bool valid = true;
  std::thread([&hasEngine, &valid] {
    auto engine = CreateVbScriptRegExp();
    hasEngine = engine != nullptr;
    valid = AddressValidator(std::move(engine)).IsValid(L"a b.org");
  }).join();
  EXPECT_FALSE(hasEngine);
  EXPECT_FALSE(valid) << "the pattern would let a blank pass";
}

}  // namespace
}  // namespace postmarker
