#include "clients/thunderbird/TbCommands.h"

#include <gmock/gmock.h>

#include "support/ScriptedTbChannel.h"

namespace postmarker::thunderbird {
namespace {

using test::ScriptedTbChannel;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int32_t kLimitSeconds = 20;

// Notes what is reported and stops when it is told to.
struct Progress {
  Progress() {
    record.handle = this;
    record.text = text;
    record.isCancelled = &IsCancelledNow;
    record.setProgress = &SetTotal;
    record.increaseProgress = &Increase;
  }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;
  ~Progress() = default;

  static int32_t POSTMARKER_CALL IsCancelledNow(void* handle) {
    auto* const self = static_cast<Progress*>(handle);
    return ++self->questions > self->stopAfter ? 1 : 0;
  }
  static void POSTMARKER_CALL SetTotal(void* handle, const wchar_t* shown, int32_t total) {
    auto* const self = static_cast<Progress*>(handle);
    self->totals.push_back(total);
    self->shownText = shown;
  }
  static void POSTMARKER_CALL Increase(void* handle, int32_t steps) {
    static_cast<Progress*>(handle)->steps += steps;
  }

  wchar_t text[6] = L"(any)";
  ProgressCallbacks record;
  int stopAfter = 1'000'000;  // questions that are answered with no
  int questions = 0;
  std::vector<int32_t> totals;
  const wchar_t* shownText = nullptr;
  int32_t steps = 0;
};

class TbCommandsTest : public testing::Test {
 protected:
  // Lets a mailbox with sent mail be read with this total.
  AddressSet ReadSentMail(int32_t total, const ProgressCallbacks* callbacks) {
    for (const wchar_t* list : {L"a@x.example", L"B <b@x.example>", L"c@x.example"}) {
      m_channel.Say(L"IncreaseProgressBar");
      m_channel.Say(list);
    }
    m_channel.Say(L"#####GiveAddressesFromSentItems");
    AddressSet addresses;
    EXPECT_EQ(GiveAddressesFromSentItems(&m_channel, total, callbacks, kLimitSeconds, &addresses),
              kOk);
    return addresses;
  }

  ScriptedTbChannel m_channel;
  Progress m_progress;
  MailFolderList m_folders;
};

TEST_F(TbCommandsTest, FoldersArriveInTheirOrderUntilTheEndMarker) {
  m_channel.Say(L"B######1######s######true");
  m_channel.Say(L"A######2######s######false");
  m_channel.Say(L"#####GiveAllFolders");
  m_channel.Say(L"C######3######s######true");
  EXPECT_EQ(GiveAllFolders(&m_channel, kLimitSeconds, &m_folders), kOk);
  EXPECT_THAT(m_folders,
              ElementsAre(MailFolderRef{L"B", "1", "s", 1}, MailFolderRef{L"A", "2", "s", 0}));
  EXPECT_THAT(m_channel.sent, ElementsAre(L"GiveAllFolders"));
}

TEST_F(TbCommandsTest, FoldersAreAppendedToWhatTheListHolds) {
  m_folders = {{L"old", "0", "s", 1}};
  m_channel.Say(L"new######1######s######true");
  m_channel.Say(L"#####GiveAllFolders");
  GiveAllFolders(&m_channel, kLimitSeconds, &m_folders);
  EXPECT_EQ(m_folders.size(), 2U);
}

TEST_F(TbCommandsTest, EndMarkerOfAnotherCommandOrCaseIsARecord) {
  m_channel.Say(L"#####GiveContacts");
  m_channel.Say(L"#####giveallfolders");
  m_channel.Say(L"#####GiveAllFolders ");
  m_channel.Say(L"#####GiveAllFolders");
  GiveAllFolders(&m_channel, kLimitSeconds, &m_folders);
  EXPECT_THAT(m_folders, ElementsAre(MailFolderRef{L"GiveContacts", "", "", 1},
                                     MailFolderRef{L"giveallfolders", "", "", 1},
                                     MailFolderRef{L"GiveAllFolders ", "", "", 1}));
}

TEST_F(TbCommandsTest, CommandThatCannotBeSentFailsAndReadsNothing) {
  m_channel.takesMessages = false;
  m_channel.Say(L"x");
  AddressSet addresses;
  int32_t count = 5;
  EXPECT_EQ(GiveAllFolders(&m_channel, kLimitSeconds, &m_folders), kFail);
  EXPECT_EQ(GiveContacts(&m_channel, kLimitSeconds, &addresses), kFail);
  EXPECT_EQ(SentItemsEntries(&m_channel, kLimitSeconds, &count), kFail);
  EXPECT_EQ(
      GiveAddressesFromSentItems(&m_channel, 3, &m_progress.record, kLimitSeconds, &addresses),
      kFail);
  EXPECT_EQ(AddNewFolder(&m_channel, L"x", {}, kLimitSeconds, &m_folders), kFail);
  EXPECT_EQ(SetMoveMails(&m_channel, true, kLimitSeconds), kFail);
  EXPECT_EQ(m_channel.looks, 0);
  EXPECT_EQ(count, 5);
  EXPECT_THAT(m_progress.totals, IsEmpty());
}

TEST_F(TbCommandsTest, SilenceEndsWithWhatArrivedAfterTheLimitInWholeSeconds) {
  m_channel.Say(L"A######1######s");
  const int64_t start = m_channel.Clock();
  EXPECT_EQ(GiveAllFolders(&m_channel, kLimitSeconds, &m_folders), kOk);
  EXPECT_EQ(m_folders.size(), 1U);
  // Elapsed seconds are rounded, so half a second before the limit counts as it.
  EXPECT_EQ(m_channel.Clock() - start, 19'500);
}

TEST_F(TbCommandsTest, LimitRunsFromTheStartAndIsNotRenewedByTraffic) {
  for (int i = 0; i < 10; ++i) {
    m_channel.Pause(5'000);
    m_channel.Say(L"A######1######s");
  }
  const int64_t start = m_channel.Clock();
  GiveAllFolders(&m_channel, kLimitSeconds, &m_folders);
  EXPECT_EQ(m_folders.size(), 3U);
  EXPECT_EQ(m_channel.Clock() - start, 19'500);
}

TEST_F(TbCommandsTest, LimitIsTestedInSilenceOnly) {
  for (int i = 0; i < 100; ++i) {
    m_channel.Say(L"A######1######s");
  }
  m_channel.Say(L"#####GiveAllFolders");
  // The clock has passed the limit when the first message is looked for.
  EXPECT_EQ(GiveAllFolders(&m_channel, 0, &m_folders), kOk);
  EXPECT_EQ(m_folders.size(), 100U);
}

TEST_F(TbCommandsTest, SilenceIsLookedIntoEveryTenthOfASecond) {
  m_channel.Pause(950);
  m_channel.Say(L"#####GiveAllFolders");
  const int64_t start = m_channel.Clock();
  GiveAllFolders(&m_channel, kLimitSeconds, &m_folders);
  EXPECT_EQ(m_channel.Clock() - start, 1'000);
  EXPECT_EQ(m_channel.looks, 11);
}

TEST_F(TbCommandsTest, BrokenChannelEndsWithWhatArrived) {
  m_channel.Say(L"A######1######s");
  m_channel.Break();
  EXPECT_EQ(GiveAllFolders(&m_channel, kLimitSeconds, &m_folders), kOk);
  EXPECT_EQ(m_folders.size(), 1U);
}

TEST_F(TbCommandsTest, AbandonedCommandEndsWithinOnePoll) {
  m_channel.isAbandoned = true;
  m_channel.Say(L"A######1######s");
  EXPECT_EQ(GiveAllFolders(&m_channel, kLimitSeconds, &m_folders), kOk);
  EXPECT_EQ(m_channel.reads, 0);
}

TEST_F(TbCommandsTest, EndlessListOfNewTextsEndsAt64MebibytesHeld) {
  m_channel.SayNumberedForEver(std::wstring(1000, L'x'));
  AddressSet addresses;
  EXPECT_EQ(GiveContacts(&m_channel, kLimitSeconds, &addresses), kOk);
  size_t held = 0;
  for (const std::wstring& address : addresses) {
    held += address.size() * sizeof(wchar_t) + 64;
  }
  EXPECT_GE(held, size_t{64} * 1024 * 1024);
  EXPECT_LT(held, size_t{65} * 1024 * 1024);
  addresses.clear();
  EXPECT_EQ(GiveAllFolders(&m_channel, kLimitSeconds, &m_folders), kOk);
  EXPECT_LT(m_folders.size(), size_t{64} * 1024 * 1024 / (1000 * sizeof(wchar_t)));
}

TEST_F(TbCommandsTest, ListThatRepeatsWhatIsHeldIsNotCut) {
  const std::wstring list(1000, L'x');
  m_channel.Say(list, 110'000);
  m_channel.Say(L"last@x");
  m_channel.Say(L"#####GiveContacts");
  AddressSet addresses;
  EXPECT_EQ(GiveContacts(&m_channel, kLimitSeconds, &addresses), kOk);
  EXPECT_THAT(addresses, ElementsAre(L"last@x", list));
}

TEST_F(TbCommandsTest, EndlessAnswerThatHoldsNothingEndsSoon) {
  m_channel.SayForEver(L"OK");
  EXPECT_EQ(SetMoveMails(&m_channel, true, kLimitSeconds), kOk);
  EXPECT_EQ(m_channel.reads, 8'192);
  EXPECT_EQ(AddNewFolder(&m_channel, L"New", {}, kLimitSeconds, &m_folders), kOk);
  EXPECT_EQ(m_channel.reads, 16'384);
  int32_t count = 0;
  EXPECT_EQ(SentItemsEntries(&m_channel, kLimitSeconds, &count), kOk);
  EXPECT_EQ(m_channel.reads, 24'576);
}

TEST_F(TbCommandsTest, ContactsAreTakenUnchanged) {
  AddressSet addresses;
  m_channel.Say(L"Anna@Post.Example");
  m_channel.Say(L"#not a record# <x>");
  m_channel.Say(L"");
  m_channel.Say(L"#####GiveContacts");
  EXPECT_EQ(GiveContacts(&m_channel, kLimitSeconds, &addresses), kOk);
  EXPECT_THAT(addresses, ElementsAre(L"", L"#not a record# <x>", L"Anna@Post.Example"));
}

TEST_F(TbCommandsTest, LaterCountOverwritesTheEarlier) {
  int32_t count = 0;
  m_channel.Say(L"12");
  m_channel.Say(L"34");
  m_channel.Say(L"#####SentItemsEntries");
  EXPECT_EQ(SentItemsEntries(&m_channel, kLimitSeconds, &count), kOk);
  EXPECT_EQ(count, 34);
}

TEST_F(TbCommandsTest, CountWithoutAnAnswerIsAsItWas) {
  int32_t count = 9;
  m_channel.Say(L"#####SentItemsEntries");
  SentItemsEntries(&m_channel, kLimitSeconds, &count);
  EXPECT_EQ(count, 9);
}

TEST_F(TbCommandsTest, NonNumericCountIsZero) {
  int32_t count = 9;
  m_channel.Say(L"lots");
  m_channel.Say(L"#####SentItemsEntries");
  SentItemsEntries(&m_channel, kLimitSeconds, &count);
  EXPECT_EQ(count, 0);
}

TEST_F(TbCommandsTest, SentMailReportsTotalAndSteps) {
  EXPECT_THAT(ReadSentMail(3, &m_progress.record),
              ElementsAre(L"a@x.example", L"b@x.example", L"c@x.example"));
  EXPECT_THAT(m_progress.totals, ElementsAre(3));
  EXPECT_EQ(m_progress.shownText, m_progress.text);
  EXPECT_EQ(m_progress.steps, 3);
  EXPECT_EQ(m_progress.questions, 4);
}

TEST_F(TbCommandsTest, TotalOfZeroReportsNothingAndDoesNotAskWhetherToStop) {
  m_progress.stopAfter = 0;
  EXPECT_EQ(ReadSentMail(0, &m_progress.record).size(), 3U);
  EXPECT_THAT(m_progress.totals, IsEmpty());
  EXPECT_EQ(m_progress.steps, 0);
  EXPECT_EQ(m_progress.questions, 0);
}

TEST_F(TbCommandsTest, NegativeTotalIsSetButNotCounted) {
  EXPECT_EQ(ReadSentMail(-4, &m_progress.record).size(), 3U);
  EXPECT_THAT(m_progress.totals, ElementsAre(-4));
  EXPECT_EQ(m_progress.steps, 0);
  EXPECT_EQ(m_progress.questions, 1);
}

TEST_F(TbCommandsTest, CancelAtTheStartReadsNothing) {
  m_progress.stopAfter = 0;
  EXPECT_THAT(ReadSentMail(3, &m_progress.record), IsEmpty());
  EXPECT_THAT(m_progress.totals, ElementsAre(3));
  EXPECT_EQ(m_channel.looks, 0);
}

TEST_F(TbCommandsTest, CancelAfterAStepKeepsWhatArrived) {
  m_progress.stopAfter = 2;
  EXPECT_THAT(ReadSentMail(3, &m_progress.record), ElementsAre(L"a@x.example"));
  EXPECT_EQ(m_progress.steps, 2);
}

TEST_F(TbCommandsTest, NoRecordNoHandleAndNoFunctionsMeanNoReporting) {
  EXPECT_EQ(ReadSentMail(3, nullptr).size(), 3U);
  m_progress.record.handle = nullptr;
  EXPECT_EQ(ReadSentMail(3, &m_progress.record).size(), 3U);
  EXPECT_EQ(m_progress.questions, 0);
  ProgressCallbacks withoutFunctions;
  withoutFunctions.handle = &m_progress;
  EXPECT_EQ(ReadSentMail(3, &withoutFunctions).size(), 3U);
  m_progress.record.handle = &m_progress;
  m_progress.record.setProgress = nullptr;
  m_progress.record.increaseProgress = nullptr;
  EXPECT_EQ(ReadSentMail(3, &m_progress.record).size(), 3U);
  EXPECT_EQ(m_progress.questions, 4);
}

TEST_F(TbCommandsTest, NewFolderIsNamedAfterTheAnswerOk) {
  m_channel.Say(L"OK");
  m_channel.Say(L"Local Folders\\Spam######7######s");
  m_channel.Say(L"#####AddNewFolder");
  const MailFolderRef parent = {L"Local Folders", "1", "store", 0};
  EXPECT_EQ(AddNewFolder(&m_channel, L"Spam", parent, kLimitSeconds, &m_folders), kOk);
  EXPECT_THAT(m_channel.sent, ElementsAre(L"AddNewFolder", L"Local Folders\\Spam######store"));
  EXPECT_THAT(m_folders, ElementsAre(MailFolderRef{L"Local Folders\\Spam", "7", "s", 0}));
}

TEST_F(TbCommandsTest, OkCountsInItsOwnCaseAndAsOftenAsItComes) {
  m_channel.Say(L"ok");
  m_channel.Say(L"OK");
  m_channel.Say(L"OK");
  m_channel.Say(L"#####AddNewFolder");
  AddNewFolder(&m_channel, L"B", {L"A", "", "s", 1}, kLimitSeconds, &m_folders);
  EXPECT_EQ(m_channel.sent.size(), 3U);
  EXPECT_THAT(m_folders, ElementsAre(MailFolderRef{L"ok", "", "", 1}));
}

TEST_F(TbCommandsTest, MoveSwitchIsTheWordTrueOrFalseAfterOk) {
  for (const bool move : {true, false}) {
    m_channel.sent.clear();
    m_channel.Say(L"OK");
    m_channel.Say(L"#####SetMoveMails");
    EXPECT_EQ(SetMoveMails(&m_channel, move, kLimitSeconds), kOk);
    EXPECT_THAT(m_channel.sent, ElementsAre(L"SetMoveMails", move ? L"true" : L"false"));
  }
}

TEST_F(TbCommandsTest, OtherRepliesToTheMoveSwitchAreSkippedWithoutAnAnswer) {
  m_channel.Say(L"NO");
  m_channel.Say(L"ok");
  m_channel.Say(L"");
  m_channel.Say(L"#####SetMoveMails");
  EXPECT_EQ(SetMoveMails(&m_channel, true, kLimitSeconds), kOk);
  EXPECT_THAT(m_channel.sent, ElementsAre(L"SetMoveMails"));
}

}  // namespace
}  // namespace postmarker::thunderbird
