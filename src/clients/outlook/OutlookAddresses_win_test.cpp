#include "clients/outlook/OutlookAddresses_win.h"

#include <gmock/gmock.h>

#include "settings/AddressLists.h"
#include "support/OutlookFixture_win.h"
#include "support/Whitelist.h"

namespace postmarker::test {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kTableNotFound = static_cast<int>(0x8004010F);
constexpr int kTableBusy = static_cast<int>(0x8004010B);
constexpr int kTableNotSupported = static_cast<int>(0x80040102);
constexpr int kTableFailed = static_cast<int>(0x80004005);

class OutlookAddressesTest : public OutlookTest {
 protected:
  AddressSet Sent(const ProgressCallbacks* callbacks = nullptr, const StopQuery& stop = {}) const {
    const ComPtr<IDispatch> application = m_outlook.MakeApplication();
    AddressSet addresses;
    EXPECT_EQ(
        CollectOutlookSentAddresses(application.Get(), callbacks, UseHook::kNo, stop, &addresses),
        kOk);
    return addresses;
  }
  AddressSet Contacts(const StopQuery& stop = {}) const {
    const ComPtr<IDispatch> application = m_outlook.MakeApplication();
    AddressSet addresses;
    EXPECT_EQ(CollectOutlookContacts(application.Get(), UseHook::kNo, stop, &addresses), kOk);
    return addresses;
  }

  // The usual mailbox; the first sent item's table of recipients answers with a code.
  void SetTableOfFirstItem(int result) {
    json mailbox = OutlookMailbox();
    mailbox["stores"][0]["root"]["folders"][2]["items"][0]["table"] = result;
    m_outlook.SetMailbox(mailbox);
  }
};

TEST_F(OutlookAddressesTest, RecipientsOfAllStoresAreFoundByTheirTables) {
  EXPECT_THAT(Sent(), ElementsAre(L"ann@x.example", L"ben@x.example", L"eve@x.example"));
  EXPECT_EQ(Peer().CallsOf("Item.Recipients"), 0);
  EXPECT_EQ(Peer().CallsOf("IMessage.GetRecipientTable"), 3) << "items of other kinds are skipped";
}

TEST_F(OutlookAddressesTest, WithoutOutlooksLibraryTheObjectModelTellsRecipientsOfTheDefaultStore) {
  m_outlook.RemoveLibrary();
  EXPECT_THAT(Sent(), ElementsAre(L"ann@x.example", L"ben@x.example"));
  EXPECT_EQ(Peer().CallsOf("Item.MAPIOBJECT"), 0);
}

TEST_F(OutlookAddressesTest, MapiThatCanNotBeInitializedLeavesItToTheObjectModel) {
  json mailbox = OutlookMailbox();
  mailbox["faults"] = json::array({{{"at", "MAPIInitialize"}, {"result", E_FAIL}}});
  m_outlook.SetMailbox(mailbox);
  EXPECT_THAT(Sent(), ElementsAre(L"ann@x.example", L"ben@x.example"));
  EXPECT_EQ(Peer().CallsOf("Item.MAPIOBJECT"), 0);
}

TEST_F(OutlookAddressesTest, ItemWithoutATableEndsTheRoadQuietly) {
  for (const int result : {kTableNotFound, kTableBusy, kTableNotSupported}) {
    SCOPED_TRACE(result);
    SetTableOfFirstItem(result);
    EXPECT_THAT(Sent(), ElementsAre(L"ann@x.example", L"ben@x.example", L"eve@x.example"));
    EXPECT_EQ(Peer().CallsOf("Item.Recipients"), 0);
  }
}

TEST_F(OutlookAddressesTest, TableThatFailsLeavesTheItemToTheObjectModel) {
  SetTableOfFirstItem(kTableFailed);
  EXPECT_THAT(Sent(), ElementsAre(L"ann@x.example", L"ben@x.example", L"eve@x.example"));
  EXPECT_EQ(Peer().CallsOf("Item.Recipients"), 1);
  EXPECT_EQ(Peer().CallsOf("Recipient.Address"), 2);
}

TEST_F(OutlookAddressesTest, StoreWithoutASentFolderAddsNothingAndTheNextIsWalked) {
  json mailbox = OutlookMailbox();
  mailbox["stores"][0].erase("sent");
  m_outlook.SetMailbox(mailbox);
  EXPECT_THAT(Sent(), ElementsAre(L"ann@x.example", L"eve@x.example"));
}

TEST_F(OutlookAddressesTest, EachFolderTellsItsSizeAndEachItemAStep) {
  CountedProgress progress;
  (void)Sent(&progress.callbacks);
  EXPECT_THAT(progress.totals, ElementsAre(3, 1));
  EXPECT_EQ(progress.steps, 4);
}

TEST_F(OutlookAddressesTest, CancelInTheMiddleOfAFolderKeepsWhatWasFound) {
  CountedProgress progress;
  progress.cancelAtStep = 3;
  EXPECT_THAT(Sent(&progress.callbacks), ElementsAre(L"ann@x.example"));
  EXPECT_EQ(Peer().CallsOf("Items.Item"), 2);
  EXPECT_EQ(progress.totals.size(), 1U) << "the next store was opened";
}

TEST_F(OutlookAddressesTest, CancelBeforeTheFirstItemReadsNone) {
  CountedProgress progress;
  progress.cancelAtStep = 0;
  EXPECT_THAT(Sent(&progress.callbacks), IsEmpty());
  EXPECT_EQ(Peer().CallsOf("Items.Item"), 0);
}

TEST_F(OutlookAddressesTest, ReporterWithoutAHandleOrFunctionsIsLeftAlone) {
  CountedProgress progress;
  progress.callbacks.handle = nullptr;
  (void)Sent(&progress.callbacks);
  EXPECT_EQ(progress.steps, 0);
  ProgressCallbacks empty;
  empty.handle = &progress;
  EXPECT_EQ(Sent(&empty).size(), 3U);
}

TEST_F(OutlookAddressesTest, ContactsAreFoundByTheNamedPropertyOrElseByTheObjectModel) {
  EXPECT_THAT(Contacts(), ElementsAre(L"carl@x.example", L"dora@x.example"));
  EXPECT_EQ(Peer().CallsOf("IMAPIProp.GetIDsFromNames"), 1) << "one number serves the folder";
  EXPECT_EQ(Peer().CallsOf("Item.Email1Address"), 2) << "of one without the property, and of the "
                                                        "one without an address";
}

TEST_F(OutlookAddressesTest, ContactsAreFoundWithoutOutlooksLibrary) {
  m_outlook.RemoveLibrary();
  EXPECT_THAT(Contacts(), ElementsAre(L"carl@x.example", L"dora@x.example"));
  EXPECT_EQ(Peer().CallsOf("Item.MAPIOBJECT"), 0);
}

TEST_F(OutlookAddressesTest, ContactThatOnlyTheNamedPropertyTellsIsFound) {
  json mailbox = OutlookMailbox();
  mailbox["stores"][0]["root"]["folders"][3]["items"] =
      json::array({{{"class", 40}, {"email", "fay@x.example"}, {"model", false}}});
  m_outlook.SetMailbox(mailbox);
  EXPECT_THAT(Contacts(), ElementsAre(L"fay@x.example"));
}

TEST_F(OutlookAddressesTest, MissingFolderOfContactsIsAFailure) {
  json mailbox = OutlookMailbox();
  mailbox["stores"][0]["defaults"].erase("10");
  m_outlook.SetMailbox(mailbox);
  const ComPtr<IDispatch> application = m_outlook.MakeApplication();
  AddressSet addresses;
  EXPECT_LT(CollectOutlookContacts(application.Get(), UseHook::kNo, {}, &addresses), 0);
}

TEST_F(OutlookAddressesTest, WithoutAnApplicationBothFail) {
  AddressSet addresses;
  EXPECT_EQ(CollectOutlookSentAddresses(nullptr, nullptr, UseHook::kYes, {}, &addresses),
            kNullPointer);
  EXPECT_EQ(CollectOutlookContacts(nullptr, UseHook::kYes, {}, &addresses), kNullPointer);
}

TEST_F(OutlookAddressesTest, HarvestPutsWhatIsFoundOnTheWhitelistAndTakesItOffTheBlacklist) {
  const ComPtr<IDispatch> application = m_outlook.MakeApplication();
  (void)AddAddressToBlacklist(L"carl@x.example", false);
  EXPECT_EQ(HarvestOutlookContacts(application.Get()), kOk);
  EXPECT_THAT(Whitelist(), ElementsAre(L"carl@x.example", L"dora@x.example"));
  EXPECT_FALSE(IsAddressBlacklisted(L"carl@x.example"));
  EXPECT_EQ(HarvestOutlookSentAddresses(application.Get()), kOk);
  EXPECT_THAT(Whitelist(), ElementsAre(L"ann@x.example", L"ben@x.example", L"carl@x.example",
                                       L"dora@x.example", L"eve@x.example"));
}

TEST_F(OutlookAddressesTest, HarvestWithoutAnApplicationFailsAndAddsNothing) {
  EXPECT_EQ(HarvestOutlookSentAddresses(nullptr), kNullPointer);
  EXPECT_EQ(HarvestOutlookContacts(nullptr), kNullPointer);
  EXPECT_THAT(Whitelist(), IsEmpty());
}

TEST_F(OutlookAddressesTest, StopIsLookedAtBeforeEachItem) {
  m_outlook.SetMailbox(LargeOutlookMailbox(50, 50));
  const auto sent = static_cast<int>(Sent(nullptr, StopAtQuestion(20)).size());
  EXPECT_GT(sent, 0);
  EXPECT_LT(sent, 20);
  EXPECT_EQ(Contacts(StopAtQuestion(20)).size(), 18U);
}

TEST_F(OutlookAddressesTest, ItemCostsOneCallToFetchOneToQueryAndWhatItsTableNeeds) {
  m_outlook.SetMailbox(LargeOutlookMailbox(50, 0));
  (void)Sent();
  constexpr long kItems = 51;  // with the one of another store
  for (const char* const once :
       {"Items.Item", "Item.Class", "Item.MAPIOBJECT", "IMessage.QueryInterface",
        "IMessage.GetRecipientTable", "Recipients table.SetColumns"}) {
    EXPECT_EQ(Peer().CallsOf(once), kItems) << once;
  }
  EXPECT_EQ(Peer().CallsOf("Recipients table.QueryRows"), 2 * kItems) << "rows, and then none";
}

TEST_F(OutlookAddressesTest, LargeMailboxIsReadWhole) {
  m_outlook.SetMailbox(LargeOutlookMailbox(2000, 500));
  EXPECT_EQ(Sent().size(), 2002U);
  EXPECT_EQ(Contacts().size(), 500U);
}

}  // namespace
}  // namespace postmarker::test
