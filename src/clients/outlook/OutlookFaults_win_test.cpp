// A fault at each single call in turn: of the object model, of MAPI's functions and of its objects.
#include <gmock/gmock.h>

#include <algorithm>
#include <functional>

#include "clients/outlook/OutlookAdapter_win.h"
#include "clients/outlook/OutlookAddresses_win.h"
#include "clients/outlook/OutlookHold_win.h"
#include "support/OutlookFixture_win.h"

namespace postmarker::test {
namespace {

// What an operation has found, as texts.
using Found = std::set<std::wstring>;
using Operation = std::function<void(IDispatch* application, Found* found)>;

// A call fails; it says that it worked and gives nothing; it and all later ones find Outlook gone.
const peer::PeerFault kFaults[] = {
    {.result = E_FAIL}, {.result = S_OK}, {.andLater = true, .result = RPC_E_DISCONNECTED}};

class OutlookFaultsTest : public OutlookTest {
 protected:
  explicit OutlookFaultsTest(OutlookClassServer server = OutlookClassServer::kNone)
      : OutlookTest(server) {}

  Found Run(const Operation& operation, const peer::PeerFault& fault) {
    // A folder that was created before is gone again.
    m_outlook.SetMailbox(OutlookMailbox());
    Found found;
    {
      const ComPtr<IDispatch> application = m_outlook.MakeApplication();
      Peer().SetFault(fault);
      operation(application.Get(), &found);
    }
    ExpectNothingLeft();
    return found;
  }

  void RunWithAllFaults(const Operation& operation) {
    const Found all = Run(operation, {});
    const long calls = Peer().Calls();
    ASSERT_FALSE(all.empty());
    ASSERT_GT(calls, 3);
    for (peer::PeerFault fault : kFaults) {
      size_t kept = 0;
      for (fault.call = 1; fault.call <= calls; ++fault.call) {
        SCOPED_TRACE(std::to_string(fault.call) + " of " + std::to_string(calls) + ", result " +
                     std::to_string(fault.result));
        const Found found = Run(operation, fault);
        EXPECT_TRUE(std::includes(all.begin(), all.end(), found.begin(), found.end()))
            << "something was found that is not there";
        if (fault.andLater) {
          EXPECT_GE(found.size(), kept) << "what was collected before the fault is lost";
          kept = found.size();
        }
        if (HasFailure()) {
          return;
        }
      }
    }
  }
};

void AddFolders(const MailFolderList& folders, Found* found) {
  for (const MailFolderRef& folder : folders) {
    found->insert(folder.name + L"|" + Widen(folder.firstId) + L"|" + Widen(folder.secondId) +
                  L"|" + std::to_wstring(folder.flag));
  }
}

TEST_F(OutlookFaultsTest, ListOfFoldersStandsThemAll) {
  RunWithAllFaults([](IDispatch* application, Found* found) {
    MailFolderList folders;
    std::wstring text;
    (void)ListOutlookFolders(application, UseHook::kNo, {}, &text, &folders);
    AddFolders(folders, found);
  });
}

TEST_F(OutlookFaultsTest, DefaultFolderStandsThemAll) {
  RunWithAllFaults([](IDispatch* application, Found* found) {
    MailFolderList folders;
    (void)GetOutlookDefaultFolderRef(application, kOlFolderDeletedItems, UseHook::kNo, {},
                                     &folders);
    AddFolders(folders, found);
  });
}

TEST_F(OutlookFaultsTest, NewFolderStandsThemAll) {
  RunWithAllFaults([](IDispatch* application, Found* found) {
    const MailFolderRef parent = {L"\\\\Personal Folders\\Inbox", "B4", "A1", 1};
    const MailFolderRef before = {L"before", "", "", 0};
    MailFolderRef created = before;
    if (Succeeded(CreateOutlookFolder(application, parent, L"Spam", UseHook::kNo, {}, &created))) {
      AddFolders({created}, found);
    } else {
      EXPECT_EQ(created, before);
    }
  });
}

TEST_F(OutlookFaultsTest, SentAddressesStandThemAll) {
  RunWithAllFaults([](IDispatch* application, Found* found) {
    (void)CollectOutlookSentAddresses(application, nullptr, UseHook::kNo, {}, found);
  });
}

TEST_F(OutlookFaultsTest, SentAddressesByTheObjectModelStandThemAll) {
  m_outlook.RemoveLibrary();
  RunWithAllFaults([](IDispatch* application, Found* found) {
    (void)CollectOutlookSentAddresses(application, nullptr, UseHook::kNo, {}, found);
  });
}

TEST_F(OutlookFaultsTest, ContactsStandThemAll) {
  RunWithAllFaults([](IDispatch* application, Found* found) {
    (void)CollectOutlookContacts(application, UseHook::kNo, {}, found);
  });
}

TEST_F(OutlookFaultsTest, SessionStandsThemAll) {
  RunWithAllFaults([](IDispatch* application, Found* found) {
    WizardRequest request;
    request.outlookApplication = application;
    OutlookAdapter adapter;
    const auto hold = adapter.MakeHold(&request);
    const ResultCode result = hold->EnsureSession();
    EXPECT_EQ(Succeeded(result), request.outlookCookie != 0);
    MailFolderList folders;
    adapter.ListFolders(hold->OpenSession(), &folders);
    AddFolders(folders, found);
    hold->Disconnect();
  });
}

class OutlookHarvestFaultsTest : public OutlookFaultsTest {
 protected:
  OutlookHarvestFaultsTest() : OutlookFaultsTest(OutlookClassServer::kInProcess) {}
};

TEST_F(OutlookHarvestFaultsTest, HarvestStandsThemAll) {
  RunWithAllFaults([](IDispatch* /*application*/, Found* found) {
    (void)OutlookAdapter().HarvestAddresses({}, found);
  });
}

}  // namespace
}  // namespace postmarker::test
