#include "analysis/words/DomainTable.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace postmarker {
namespace {

struct Case {
  const char* name;
  const char* host;
  const char* domain;
};

class RegisteredDomainTest : public testing::TestWithParam<Case> {};

TEST_P(RegisteredDomainTest, IsToldFromTheLabels) {
  EXPECT_EQ(GetRegisteredDomain(GetParam().host), GetParam().domain) << GetParam().host;
}

INSTANTIATE_TEST_SUITE_P(
    Hosts, RegisteredDomainTest,
    testing::Values(Case{"Host", "mail.example.com", "example.com"},
                    Case{"DomainItself", "example.com", "example.com"},
                    Case{"TopLevelAlone", "com", ""},
                    Case{"SecondLevelLabel", "a.example.co.uk", "example.co.uk"},
                    Case{"TwoLabelsStay", "co.uk", "co.uk"},
                    Case{"WwwInFront", "www.example.com", "example.com"},
                    Case{"WwwAsSecondLabel", "example.www.com", "example.www.com"},
                    Case{"Address", "user@example.com", "example.com"},
                    Case{"AddressAtSecondLevel", "user@co.uk", "user@co.uk"},
                    Case{"AddressBelowSecondLevel", "x@user@co.uk", "user@co.uk"},
                    Case{"Local", "host.local", ""}, Case{"MissingCountry", "host.zw", ""},
                    Case{"Numbers", "192.0.2.1", ""}, Case{"UpperCase", "MAIL.EXAMPLE.COM", ""},
                    Case{"TrailingDot", "example.com.", ""}, Case{"Empty", "", ""},
                    Case{"DotInFront", ".com", ".com"}, Case{"EmptyLabel", "a..com", ".com"},
                    Case{"DotAndSecondLevel", ".co.uk", ".co.uk"},
                    Case{"AtInFront", "@example.com", "example.com"}),
    [](const auto& tested) { return tested.param.name; });

TEST(DomainTable, EmptyLabelInFrontOfTheTopLevel) {
  // The walk stops at the next dot, so nothing stands between.
  EXPECT_EQ(GetRegisteredDomain("x.y..com"), ".com");
}

TEST(DomainTable, HasAllRows) {
  EXPECT_EQ(TopLevelDomains().size(), 278U);
  EXPECT_EQ(SecondLevelLabels().size(), 13U);
  const auto value = [](std::string_view key) {
    const auto rows = TopLevelDomains();
    const auto row = std::find_if(rows.begin(), rows.end(),
                                  [&](const auto& entry) { return entry.first == key; });
    return row == rows.end() ? "missing" : row->second;
  };
  EXPECT_EQ(value("ae"), "");
  EXPECT_EQ(value("nom"), "");
  EXPECT_EQ(value("arpa"), "arpa");
  EXPECT_EQ(value("net"), "generic top-level domain");
  EXPECT_EQ(value("uk"), "united kingdom");
  EXPECT_EQ(value("ci"), "cote d'ivoire");
  EXPECT_EQ(value("zm"), "zambia");
  EXPECT_EQ(value("zw"), "missing");
}

}  // namespace
}  // namespace postmarker
