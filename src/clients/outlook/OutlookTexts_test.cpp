#include "clients/outlook/OutlookTexts.h"

#include <gmock/gmock.h>

namespace postmarker {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

AddressSet Normalized(std::wstring_view text) {
  AddressSet addresses;
  EXPECT_EQ(NormaliseOutlookAddress(text, &addresses), kOk);
  return addresses;
}

TEST(OutlookAddressTest, IsLoweredAndTrimmed) {
  EXPECT_THAT(Normalized(L"A@B.Org"), ElementsAre(L"a@b.org"));
  EXPECT_THAT(Normalized(L" \t\xC4nn@B.Org\r\n"), ElementsAre(L"\xE4nn@b.org"));
}

TEST(OutlookAddressTest, EmptyTextFailsAndABlankOneIsDropped) {
  AddressSet addresses = {L"there@before"};
  EXPECT_EQ(NormaliseOutlookAddress(L"", &addresses), kFail);
  EXPECT_EQ(NormaliseOutlookAddress(L"  ", &addresses), kOk);
  EXPECT_THAT(addresses, ElementsAre(L"there@before"));
}

TEST(OutlookAddressTest, TextWithoutAnAtSignIsDropped) {
  EXPECT_THAT(Normalized(L"Ann Smith"), IsEmpty());
}

TEST(OutlookAddressTest, ExchangeAddressCountsOnlyWithAnInternetAddressAtItsEnd) {
  EXPECT_THAT(Normalized(L"/o=org/ou=first/cn=recipients/cn=jdoe"), IsEmpty());
  EXPECT_THAT(Normalized(L"/o=org/cn=recipients/cn=a@b.org"), ElementsAre(L"a@b.org"));
  EXPECT_THAT(Normalized(L" /O=ORG/CN=RECIPIENTS/CN=A@B.ORG "), ElementsAre(L"a@b.org"));
}

TEST(OutlookAddressTest, OnlyWhatFollowsTheSecondCommonNameIsKept) {
  EXPECT_THAT(Normalized(L"/o=a@b.org/cn=recipients/cn=jdoe"), IsEmpty());
  EXPECT_THAT(Normalized(L"/o=org/cn=a/cn=b/cn=c@d.org"), ElementsAre(L"b/cn=c@d.org"));
  EXPECT_THAT(Normalized(L"/o=org/cn=a/cn="), IsEmpty());
}

TEST(OutlookAddressTest, ExchangeAddressWithOneCommonNameStaysWhole) {
  EXPECT_THAT(Normalized(L"/o=org/cn=a@b.org"), ElementsAre(L"/o=org/cn=a@b.org"));
  EXPECT_THAT(Normalized(L"/o=org/cn=/c@d.org"), ElementsAre(L"/o=org/cn=/c@d.org"));
  EXPECT_THAT(Normalized(L"x/o=org/cn=a/cn=b@c.org"), ElementsAre(L"x/o=org/cn=a/cn=b@c.org"));
}

TEST(OutlookVersionTest, ReleaseIsFoundByTheLeadingNumber) {
  EXPECT_EQ(OutlookVersionName(L"8.0.0.3514"), L"97");
  EXPECT_EQ(OutlookVersionName(L"8.5.5104.6"), L"98");
  EXPECT_EQ(OutlookVersionName(L"9.0.0.2711"), L"2000");
  EXPECT_EQ(OutlookVersionName(L"10.0.0.2627"), L"2002");
  EXPECT_EQ(OutlookVersionName(L"11.0.0.8002"), L"2003");
  EXPECT_EQ(OutlookVersionName(L"12.0.4518.1014"), L"2007");
  EXPECT_EQ(OutlookVersionName(L"16.0.4266.1001"), L"2007");
}

TEST(OutlookVersionTest, TextWithoutANumberCountsAsTheOldestRelease) {
  for (const wchar_t* const text : {L"", L"Outlook", L"\x661\x662", L".", L"-12.0"}) {
    EXPECT_EQ(OutlookVersionName(text), L"97");
  }
  EXPECT_EQ(OutlookVersionName(L"  12"), L"2007");
  EXPECT_EQ(OutlookVersionName(L"12beta"), L"2007");
}

}  // namespace
}  // namespace postmarker
