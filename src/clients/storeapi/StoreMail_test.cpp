#include "clients/storeapi/StoreMail.h"

#include <gmock/gmock.h>

namespace postmarker::storeapi {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

AddressSet RecipientsOf(std::string_view bytes) {
  AddressSet addresses;
  AddRecipients(bytes, &addresses);
  return addresses;
}

HeaderMap Headers(std::initializer_list<std::pair<std::string_view, std::string_view>> headers) {
  HeaderMap map;
  for (const auto& [name, value] : headers) {
    map.Set(name, value);
  }
  return map;
}

TEST(StoreMail, RecipientsAreThoseOfToAndCcInLowerCase) {
  EXPECT_THAT(RecipientsOf("From: me@x\r\nTo: Ann <ANN@x>, ben@x\r\nCC: \"C, D\" <c@x>\r\n"
                           "Bcc: secret@x\r\nReply-To: other@x\r\n\r\nTo: body@x\r\n"),
              ElementsAre(L"ann@x", L"ben@x", L"c@x"));
}

TEST(StoreMail, MessageWithoutRecipientsOrWithoutBodyAddsWhatItHas) {
  EXPECT_THAT(RecipientsOf("From: me@x\r\n\r\n"), IsEmpty());
  EXPECT_THAT(RecipientsOf("Cc: c@x\r\n\r\n"), ElementsAre(L"c@x"));
  EXPECT_THAT(RecipientsOf(""), IsEmpty());
}

TEST(StoreMail, MessageWithoutAnEndOfItsHeadersIsSkipped) {
  EXPECT_THAT(RecipientsOf("To: ann@x\r\nSubject: y\r\n"), IsEmpty());
  EXPECT_THAT(RecipientsOf("To: ann@x\n\nbody"), IsEmpty());
}

TEST(StoreMail, HeaderBlockOfMoreThanWhatIsReadIsSkipped) {
  const std::string start = "To: ann@x\r\nX: ";
  const std::string fits =
      start + std::string(kMessageBytesRead - start.size() - 4, 'x') + "\r\n\r\n";
  EXPECT_THAT(RecipientsOf(std::string_view(fits).substr(0, kMessageBytesRead)),
              ElementsAre(L"ann@x"));
  const std::string tooLong =
      start + std::string(kMessageBytesRead - start.size() - 3, 'x') + "\r\n\r\n";
  EXPECT_THAT(RecipientsOf(std::string_view(tooLong).substr(0, kMessageBytesRead)), IsEmpty());
}

TEST(StoreMail, SameMailHasEachOfSixHeadersInBothOrNeither) {
  const HeaderMap mail = Headers({{"message-id", "<1@X>"},
                                  {"date", "today"},
                                  {"from", "a"},
                                  {"to", "b"},
                                  {"content-type", "text/plain"},
                                  {"return-path", "<a>"},
                                  {"subject", "one"}});
  HeaderMap other = mail;
  other.Set("message-id", "<1@x>");
  other.Set("subject", "two");
  EXPECT_TRUE(HaveSameIdentity(mail, other));
  EXPECT_TRUE(HaveSameIdentity({}, {}));
  for (const char* const name :
       {"message-id", "date", "from", "to", "content-type", "return-path"}) {
    HeaderMap changed = mail;
    changed.Set(name, "another");
    EXPECT_FALSE(HaveSameIdentity(mail, changed)) << name;
    HeaderMap absent = mail;
    absent.Erase(name);
    EXPECT_FALSE(HaveSameIdentity(mail, absent)) << name;
    EXPECT_FALSE(HaveSameIdentity(absent, mail)) << name;
    // Present and empty is not the same as absent.
    absent.Set(name, "");
    HeaderMap empty = mail;
    empty.Erase(name);
    EXPECT_FALSE(HaveSameIdentity(absent, empty)) << name;
  }
}

TEST(StoreMail, SpamHeaderIsFoundWhateverItsCase) {
  const std::string message = "To: a\r\nX-ZPAM: Yes, 99\r\n\r\nX-Zpam: body\r\n";
  EXPECT_EQ(GetSpamHeader(message.data(), static_cast<uint32_t>(message.size())), "Yes, 99");
  const std::string without = "To: a\r\n\r\n";
  EXPECT_EQ(GetSpamHeader(without.data(), static_cast<uint32_t>(without.size())), "");
  EXPECT_EQ(GetSpamHeader(nullptr, 0), "");
}

TEST(StoreMail, EveryMarkIsTakenOutOfASubject) {
  EXPECT_EQ(WithoutSubjectMarks("[KSSpam] Win [KSSpam][KSSpam]now"), " Win now");
  EXPECT_EQ(WithoutSubjectMarks("[KS[KSSpam]Spam]x"), "x");
  EXPECT_EQ(WithoutSubjectMarks("[ksspam] x"), "[ksspam] x");
  EXPECT_EQ(WithoutSubjectMarks(""), "");
}

}  // namespace
}  // namespace postmarker::storeapi
