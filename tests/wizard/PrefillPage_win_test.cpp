#include <windows.h>

#include <commctrl.h>
#include <oaidl.h>
#include <objidl.h>

#include <gmock/gmock.h>

#include "settings/AddressLists.h"
#include "support/ComPtr_win.h"
#include "wizard/PrefillFixture_win.h"

namespace postmarker::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr UINT kRangeMessage = 0x401;
constexpr UINT kAdvanceMessage = 0x402;

// How long closing may take beyond the client's interval on a busy machine.
constexpr DWORD kSlackMs = 700;

// COM interfaces have no virtual destructor, by their nature.
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

// A client's object that lives in the apartment of the sheet's thread and counts its calls.
class ApartmentObject final : public IDispatch {
 public:
  std::atomic<int> calls = 0;

  STDMETHODIMP QueryInterface(REFIID id, void** object) override {
    const bool isKnown = id == IID_IUnknown || id == IID_IDispatch;
    *object = isKnown ? this : nullptr;
    return isKnown ? S_OK : E_NOINTERFACE;
  }
  // It lives as long as its test.
  STDMETHODIMP_(ULONG) AddRef() override { return 2; }
  STDMETHODIMP_(ULONG) Release() override { return 1; }
  STDMETHODIMP GetTypeInfoCount(UINT* count) override {
    *count = 0;
    return S_OK;
  }
  STDMETHODIMP GetTypeInfo(UINT /*type*/, LCID /*locale*/, ITypeInfo** /*info*/) override {
    return E_NOTIMPL;
  }
  STDMETHODIMP GetIDsOfNames(REFIID /*id*/, LPOLESTR* /*names*/, UINT /*count*/, LCID /*locale*/,
                             DISPID* /*ids*/) override {
    return E_NOTIMPL;
  }
  STDMETHODIMP Invoke(DISPID /*member*/, REFIID /*id*/, LCID /*locale*/, WORD /*flags*/,
                      DISPPARAMS* /*parameters*/, VARIANT* /*result*/, EXCEPINFO* /*exception*/,
                      UINT* /*argument*/) override {
    ++calls;
    return S_OK;
  }
};

constexpr CLSID kGlobalInterfaceTable = {0x00000323, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

ComPtr<IGlobalInterfaceTable> OpenTable() {
  ComPtr<IGlobalInterfaceTable> table;
  (void)::CoCreateInstance(kGlobalInterfaceTable, nullptr, CLSCTX_INPROC_SERVER,
                           IID_IGlobalInterfaceTable, table.PutVoid());
  return table;
}

class PrefillPageTest : public PrefillFixture {};

TEST_F(PrefillPageTest, AddressesAreSortedInLowerCaseWithoutDuplicates) {
  const auto session = StartAtAddresses({L"Ben@B.org", L"anna@b.org", L"BEN@b.org", L"zoe@a.org"});
  EXPECT_THAT(session->Addresses(), ElementsAre(L"anna@b.org", L"ben@b.org", L"zoe@a.org"));
}

TEST_F(PrefillPageTest, EmptyAddressIsDropped) {
  const auto session = StartAtAddresses({L"", L"anna@b.org"});
  EXPECT_THAT(session->Addresses(), ElementsAre(L"anna@b.org"));
}

TEST_F(PrefillPageTest, WhateverTheClientYieldsIsShown) {
  const auto session = StartAtAddresses({L"no address", L"\x0416@post.example"});
  EXPECT_THAT(session->Addresses(), ElementsAre(L"no address", L"\x0436@post.example"));
}

TEST_F(PrefillPageTest, WhileItRunsTheBarIsShownAndNoButtonButStopAndCancelWorks) {
  CollectUntilStopped();
  const auto session = StartAtPrefill();
  for (const int control : {kRunningText, kProgressBar, kStopButton}) {
    EXPECT_TRUE(IsShown(*session, control)) << control;
  }
  for (const int control : {kGridLabel, kGrid, kAddButton, kRemoveButton}) {
    EXPECT_FALSE(IsShown(*session, control)) << control;
  }
  WizardSession::Require([&] { return !session->IsButtonUsable(kNextButton); }, "Next stayed");
  EXPECT_FALSE(session->IsButtonUsable(kBackButton));
  EXPECT_TRUE(session->IsButtonUsable(IDCANCEL));
  // A host that presses Next finds the page staying as well.
  ::SendMessageW(session->Sheet(), PSM_PRESSBUTTON, PSBTN_NEXT, 0);
  EXPECT_TRUE(session->IsOn(Page::kPrefill));
  m_letGo = true;
  session->WaitForAddresses();
  for (const int control : {kRunningText, kProgressBar, kStopButton}) {
    EXPECT_FALSE(IsShown(*session, control)) << control;
  }
  for (const int control : {kGridLabel, kGrid, kAddButton, kRemoveButton}) {
    EXPECT_TRUE(IsShown(*session, control)) << control;
  }
  EXPECT_TRUE(WaitUntil([&] {
    return session->IsButtonUsable(kNextButton) && session->IsButtonUsable(kBackButton);
  }));
}

TEST_F(PrefillPageTest, StopShowsWhatWasCollectedSoFar) {
  CollectUntilStopped();
  m_clients.client.addresses = {L"early@b.org"};
  const auto session = StartAtPrefill();
  // A stop before that collects nothing.
  WizardSession::Require([&] { return m_collecting.load(); }, "nothing is collected");
  session->ClickControl(kStopButton);
  session->WaitForAddresses();
  EXPECT_FALSE(::IsWindowEnabled(session->Control(kStopButton)));
  EXPECT_THAT(session->Addresses(), ElementsAre(L"early@b.org"));
  EXPECT_TRUE(WaitUntil([&] { return session->IsButtonUsable(kNextButton); }));
}

TEST_F(PrefillPageTest, CancelWaitsForTheClientAndNotMuchLonger) {
  CollectUntilStopped();
  const auto session = StartAtPrefill();
  WizardSession::Require([&] { return m_collecting.load(); }, "nothing is collected");
  const ULONGLONG before = ::GetTickCount64();
  session->ClickButton(IDCANCEL);
  EXPECT_EQ(session->Result(), IDCANCEL);
  EXPECT_LE(::GetTickCount64() - before, kPollMs + kSlackMs);
  EXPECT_FALSE(m_collecting);
  EXPECT_EQ(m_clients.client.collections, 1);
}

// As in a host that is the client itself.
TEST_F(PrefillPageTest, ClientInTheSheetsApartmentCanAnswerWhileTheWizardCloses) {
  ApartmentObject object;
  std::atomic<DWORD> cookie = 0;
  std::atomic<HRESULT> answer = E_PENDING;
  m_clients.client.whileCollecting = [&](const ProgressCallbacks* callbacks) {
    ComPtr<IDispatch> client;
    (void)OpenTable()->GetInterfaceFromGlobal(cookie, IID_IDispatch, client.PutVoid());
    m_collecting = true;
    while (callbacks->isCancelled(callbacks->handle) == 0) {
      ::Sleep(kPollMs);
    }
    ::Sleep(kPollMs);  // by now the sheet's thread waits
    DISPPARAMS none = {};
    answer = client
                 ? client->Invoke(1, IID_NULL, 0, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr)
                 : E_POINTER;
  };
  WizardSession session(
      [&](WizardRequest* request) {
        const ComApartment apartment;
        const auto table = OpenTable();
        DWORD registered = 0;
        table->RegisterInterfaceInGlobal(&object, IID_IDispatch, &registered);
        cookie = registered;
        const int32_t result = RunSheet(request);
        table->RevokeInterfaceFromGlobal(registered);
        return result;
      },
      &m_request);
  session.WaitForPage(Page::kWelcome);
  session.ClickButton(kNextButton);
  session.WaitForTree();
  session.ClickItem(L"Inbox");
  session.ClickButton(kNextButton);
  WizardSession::Require([&] { return m_collecting.load(); }, "nothing is collected");
  session.ClickButton(IDCANCEL);
  EXPECT_EQ(session.Result(), IDCANCEL);
  EXPECT_EQ(answer, S_OK);
  EXPECT_EQ(object.calls, 1);
}

TEST_F(PrefillPageTest, ClosingDropsThousandsOfFoundAddresses) {
  CollectUntilStopped();
  for (int i = 0; i < 20'000; ++i) {
    m_clients.client.addresses.insert(std::to_wstring(i) + L"@b.org");
  }
  const auto session = StartAtPrefill();
  WizardSession::Require([&] { return m_collecting.load(); }, "nothing is collected");
  const ULONGLONG before = ::GetTickCount64();
  session->Close();
  EXPECT_EQ(session->Result(), IDCANCEL);
  EXPECT_LE(::GetTickCount64() - before, kPollMs + kSlackMs);
}

TEST_F(PrefillPageTest, OwnerThatGoesEndsTheWorkerAsWell) {
  CollectUntilStopped();
  std::atomic<HWND> owner = nullptr;
  WizardSession session(
      [&](WizardRequest* request) {
        const ModuleStateGuard guard;
        owner = ::CreateWindowExW(0, L"STATIC", L"A host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 40, 40,
                                  400, 300, nullptr, nullptr, nullptr, nullptr);
        CWizardSheet sheet(L"Kestrelon", request, owner, 0);
        return static_cast<int32_t>(sheet.DoModal());
      },
      &m_request);
  session.WaitForPage(Page::kWelcome);
  session.ClickButton(kNextButton);
  session.WaitForTree();
  session.ClickItem(L"Inbox");
  session.ClickButton(kNextButton);
  WizardSession::Require([&] { return m_collecting.load(); }, "nothing is collected");
  ::PostMessageW(owner, WM_CLOSE, 0, 0);
  EXPECT_EQ(session.Result(), IDCANCEL);
  EXPECT_FALSE(m_collecting);
}

TEST_F(PrefillPageTest, ClientThatFailsLeavesWhatArrived) {
  m_clients.client.addresses = {L"some@b.org"};
  m_clients.client.collectResult = kFail;
  const auto session = StartAtPrefill();
  session->WaitForAddresses();
  EXPECT_THAT(session->Addresses(), ElementsAre(L"some@b.org"));
}

TEST_F(PrefillPageTest, ClientThatThrowsLeavesAnEmptyGrid) {
  m_clients.client.addresses = {L"some@b.org"};
  m_clients.client.whileCollecting = [](const ProgressCallbacks* /*callbacks*/) {
    throw std::bad_alloc();
  };
  const auto session = StartAtPrefill();
  session->WaitForAddresses();
  EXPECT_THAT(session->Addresses(), IsEmpty());
}

TEST_F(PrefillPageTest, NoRequestFailsWithANullPointer) {
  AddressSet addresses;
  const ModuleStateGuard guard;
  const CWizardSheet sheet(L"Kestrelon", nullptr, nullptr, 0);
  EXPECT_EQ(sheet.CollectSentAddresses(nullptr, nullptr, &addresses), kNullPointer);
  EXPECT_THAT(addresses, IsEmpty());
}

TEST_F(PrefillPageTest, RecordOfTheClientIsFilledAsAgreed) {
  bool asAgreed = false;
  m_clients.client.whileCollecting = [&asAgreed](const ProgressCallbacks* callbacks) {
    void* const handle = callbacks->handle;
    callbacks->reservedThree(handle, 1, 2);
    callbacks->reservedTwo(handle, 1);
    asAgreed = handle != nullptr && callbacks->text != nullptr && callbacks->text[0] == 0 &&
               callbacks->reserved[0] == nullptr && callbacks->isCancelled(handle) == 0 &&
               callbacks->reservedQuery(handle) == 0 && callbacks->isFinished(handle) == 0;
  };
  const auto session = StartAtPrefill();
  session->WaitForAddresses();
  EXPECT_TRUE(asAgreed);
}

TEST_F(PrefillPageTest, BarFollowsTheClient) {
  CollectUntilStopped();
  const auto session = StartAtPrefill();
  const HWND page = session->CurrentPage();
  const auto range = [&] { return Ask(*session, kProgressBar, PBM_GETRANGE, FALSE); };
  const auto position = [&] { return Ask(*session, kProgressBar, PBM_GETPOS); };
  ::SendMessageW(page, kRangeMessage, 0, 300);
  EXPECT_EQ(range(), 300);
  EXPECT_EQ(position(), 0);
  ::SendMessageW(page, kAdvanceMessage, 0, 7);
  EXPECT_EQ(position(), 7);
  ::SendMessageW(page, kAdvanceMessage, 0, -5);
  EXPECT_EQ(position(), 7);
  ::SendMessageW(page, kAdvanceMessage, 0, 293);
  EXPECT_EQ(position(), 300);
  ::SendMessageW(page, kRangeMessage, 0, 0);
  EXPECT_EQ(range(), 1);
  EXPECT_EQ(position(), 1);
  ::SendMessageW(page, kRangeMessage, 0, 70'000);
  EXPECT_EQ(range(), 70'000 - 65'536);
}

TEST_F(PrefillPageTest, ThousandsOfAddressesAllArriveInOrder) {
  for (int i = 0; i < 5'000; ++i) {
    std::wstring number = std::to_wstring(i);
    number.insert(0, 5 - number.size(), L'0');
    m_clients.client.addresses.insert(L"user" + number + L"@b.org");
  }
  const auto session = StartAtPrefill();
  session->WaitForAddresses();
  EXPECT_EQ(Ask(*session, kGrid, LVM_GETITEMCOUNT), 5'000);
  for (const int row : {0, 1, 999, 4'999}) {
    EXPECT_EQ(WizardSession::CellText(session->AddressGrid(), row, 0),
              *std::next(m_clients.client.addresses.begin(), row));
  }
  session->ClickButton(kNextButton);
  session->WaitForPage(Page::kSettings);
  EXPECT_EQ(m_request.prefillAddresses, m_clients.client.addresses);
}

}  // namespace
}  // namespace postmarker::test
