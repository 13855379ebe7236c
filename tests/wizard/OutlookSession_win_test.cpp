#include <windows.h>

#include <gmock/gmock.h>

#include <atomic>

#include "clients/outlook/OutlookAdapter_win.h"
#include "clients/outlook/OutlookHold_win.h"
#include "support/FakeDispatch_win.h"
#include "support/Registry_win.h"
#include "wizard/WizardFixture_win.h"

namespace postmarker::test {
namespace {

constexpr DISPID kSession = 0xF00B;
constexpr DISPID kLogon = 0x2105;
constexpr DISPID kLogoff = 0x2106;

// COM interfaces have no virtual destructor, by their nature.
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

// Outlook's application object with one namespace.
struct FakeOutlook {
  std::string* calls = nullptr;  // gets the logoff, if set
  std::wstring profile;
  UINT logonArguments = 0;
  int logons = 0;
  int logoffs = 0;
  HRESULT logonResult = S_OK;
  FakeDispatch nameSpace{[this](DISPID id, DISPPARAMS* arguments, VARIANT*) {
    if (id == kLogon) {
      ++logons;
      logonArguments = arguments->cArgs;
      profile = arguments->rgvarg[arguments->cArgs - 1].bstrVal;
      return logonResult;
    }
    logoffs += id == kLogoff ? 1 : 0;
    if (id == kLogoff && calls != nullptr) {
      *calls += "logoff ";
    }
    return id == kLogoff ? S_OK : DISP_E_MEMBERNOTFOUND;
  }};
  FakeDispatch application{[this](DISPID id, DISPPARAMS*, VARIANT* result) {
    if (id != kSession) {
      return DISP_E_MEMBERNOTFOUND;
    }
    result->vt = VT_DISPATCH;
    result->pdispVal = &nameSpace;
    nameSpace.AddRef();
    return S_OK;
  }};
};

// A global interface table that notes what becomes of its one entry.
class FakeTable final : public IGlobalInterfaceTable {
 public:
  explicit FakeTable(std::string* calls) : m_calls(calls) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** out) override {
    *out = nullptr;
    return E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override {
    *m_calls += "release ";
    return 1;
  }
  HRESULT STDMETHODCALLTYPE RegisterInterfaceInGlobal(IUnknown*, REFIID, DWORD* cookie) override {
    *cookie = 0x7777;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE RevokeInterfaceFromGlobal(DWORD cookie) override {
    *m_calls += cookie == 0x7777 ? "revoke " : "other ";
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetInterfaceFromGlobal(DWORD, REFIID, void**) override {
    return E_NOTIMPL;
  }

 private:
  std::string* m_calls;
};

// Notes whether it was given Outlook's application.
class OutlookLikeClient : public OutlookAdapter {
 public:
  mutable std::atomic<int> listingsWithOutlook = 0;
  mutable std::atomic<int> creations = 0;
  mutable std::atomic<int> creationsWithOutlook = 0;
  bool hasTable = true;
  [[nodiscard]] std::shared_ptr<ClientHold> MakeHold(WizardRequest* request) const override {
    return hasTable ? OutlookAdapter::MakeHold(request)
                    : std::make_shared<OutlookHold>(request, ComPtr<IGlobalInterfaceTable>());
  }
  void ListFolders(const ClientSession& session, MailFolderList* folders) const override {
    listingsWithOutlook += session.outlookApplication != nullptr ? 1 : 0;
    *folders = SmallStore();
  }
  ResultCode CreateFolder(const ClientSession& session, const std::wstring&, const MailFolderRef&,
                          MailFolderRef*) const override {
    ++creations;
    creationsWithOutlook += session.outlookApplication != nullptr ? 1 : 0;
    return kFail;
  }
};

class OutlookSessionTest : public WizardFixture {
 protected:
  OutlookSessionTest() {
    m_row.displayName = L"Microsoft Outlook";
    m_row.settingsName = L"Microsoft Outlook";
    m_row.adapter = &m_client;
    m_table = std::make_unique<ScopedClientTable>(std::span<const ClientRow>(&m_row, 1));
    m_request.clientName = L"Microsoft Outlook";
    m_request.outlookApplication = &m_outlook.application;
  }

  static void Pump() {
    MSG message = {};
    while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
      ::DispatchMessageW(&message);
    }
  }

  OutlookLikeClient m_client;
  FakeOutlook m_outlook;

 private:
  ClientRow m_row;
  std::unique_ptr<ScopedClientTable> m_table;
};

TEST_F(OutlookSessionTest, HostsApplicationIsLoggedOnWithTheDefaultProfileAndLoggedOffAtTheEnd) {
  RegistryKey::Create(HKEY_CURRENT_USER,
                      L"Software\\Microsoft\\Windows NT\\CurrentVersion\\Windows Messaging "
                      L"Subsystem\\Profiles",
                      KEY_ALL_ACCESS)
      .WriteString(L"DefaultProfile", L"Anna");
  {
    const ModuleStateGuard guard;
    CWizardSheet sheet(L"Kestrelon", &m_request, nullptr, 0);
    MailFolderList folders;
    sheet.GetFolders(&folders);
    EXPECT_EQ(folders.size(), 4U);
    EXPECT_NE(m_request.outlookCookie, 0U);
    EXPECT_EQ(m_outlook.logons, 1);
    EXPECT_EQ(m_outlook.logonArguments, 4U);
    EXPECT_EQ(m_outlook.profile, L"Anna");
    EXPECT_EQ(m_client.listingsWithOutlook, 1);
    EXPECT_EQ(m_outlook.logoffs, 0);
  }
  EXPECT_EQ(m_outlook.logoffs, 1);
  EXPECT_EQ(m_outlook.application.References(), 1);
  EXPECT_EQ(m_outlook.nameSpace.References(), 1);
}

TEST_F(OutlookSessionTest, MissingProfileLogsOnWithAnEmptyName) {
  const ModuleStateGuard guard;
  CWizardSheet sheet(L"Kestrelon", &m_request, nullptr, 0);
  MailFolderList folders;
  sheet.GetFolders(&folders);
  EXPECT_EQ(m_outlook.logons, 1);
  EXPECT_EQ(m_outlook.profile, L"");
}

TEST_F(OutlookSessionTest, SessionIsOpenedOnce) {
  const ModuleStateGuard guard;
  CWizardSheet sheet(L"Kestrelon", &m_request, nullptr, 0);
  MailFolderList folders;
  MailFolderRef rec;
  sheet.GetFolders(&folders);
  sheet.GetDefaultFolder(&rec);
  (void)sheet.CreateFolder(L"x", folders[0], &rec);
  EXPECT_EQ(m_outlook.logons, 1);
  EXPECT_EQ(m_client.creations, 1);
}

TEST_F(OutlookSessionTest, WorkerGetsTheApplicationThroughTheTable) {
  const ModuleStateGuard guard;
  CWizardSheet sheet(L"Kestrelon", &m_request, nullptr, 0);
  sheet.StartFolderWorker();
  EXPECT_TRUE(WaitUntil([&] {
    Pump();
    return sheet.AreFoldersReady();
  }));
  EXPECT_EQ(m_client.listingsWithOutlook, 1);
}

TEST_F(OutlookSessionTest, FailedLogonMeansNoSessionAndNoCookie) {
  m_outlook.logonResult = E_FAIL;
  {
    const ModuleStateGuard guard;
    CWizardSheet sheet(L"Kestrelon", &m_request, nullptr, 0);
    MailFolderList folders;
    sheet.GetFolders(&folders);
    EXPECT_EQ(m_client.listingsWithOutlook, 0);
    EXPECT_EQ(m_request.outlookCookie, 0U);
  }
  EXPECT_EQ(m_outlook.logoffs, 0);
  EXPECT_EQ(m_outlook.application.References(), 1);
}

TEST_F(OutlookSessionTest, FailedLogonKeepsNoApplicationAndIsTriedAgain) {
  m_outlook.logonResult = E_FAIL;
  const ModuleStateGuard guard;
  CWizardSheet sheet(L"Kestrelon", &m_request, nullptr, 0);
  EXPECT_EQ(sheet.EnsureOutlookSession(), E_FAIL);
  EXPECT_EQ(m_outlook.application.References(), 1);
  EXPECT_EQ(m_outlook.nameSpace.References(), 1);
  EXPECT_EQ(sheet.EnsureOutlookSession(), E_FAIL);
  EXPECT_EQ(m_outlook.logons, 2);
  m_outlook.logonResult = S_OK;
  EXPECT_EQ(sheet.EnsureOutlookSession(), S_OK);
  EXPECT_EQ(sheet.EnsureOutlookSession(), S_OK);
  EXPECT_EQ(m_outlook.logons, 3);
}

TEST_F(OutlookSessionTest, WithoutATableTheClientIsCalledWithoutAnApplication) {
  m_client.hasTable = false;
  const ModuleStateGuard guard;
  CWizardSheet sheet(L"Kestrelon", &m_request, nullptr, 0);
  MailFolderList folders;
  sheet.GetFolders(&folders);
  EXPECT_EQ(folders.size(), 4U);
  EXPECT_EQ(m_client.listingsWithOutlook, 0);
  EXPECT_EQ(m_outlook.logons, 1);
  EXPECT_EQ(m_request.outlookCookie, 0U);
  MailFolderRef rec;
  EXPECT_EQ(sheet.CreateFolder(L"x", folders[0], &rec), kFail);
  EXPECT_EQ(m_client.creations, 1);
  EXPECT_EQ(m_client.creationsWithOutlook, 0);
}

TEST_F(OutlookSessionTest, ApplicationIsRevokedThenLoggedOffThenTheTableGoes) {
  const ComApartment apartment;
  std::string calls;
  FakeTable table(&calls);
  m_outlook.calls = &calls;
  OutlookHold hold(&m_request, ComPtr<IGlobalInterfaceTable>(&table));
  EXPECT_EQ(hold.EnsureSession(), kOk);
  EXPECT_EQ(m_request.outlookCookie, 0x7777U);
  hold.Disconnect();
  EXPECT_EQ(calls, "revoke logoff release ");
  EXPECT_EQ(m_outlook.application.References(), 1);
  hold.Disconnect();
  EXPECT_EQ(calls, "revoke logoff release ") << "the second time there is nothing to do";
}

TEST_F(OutlookSessionTest, SessionAfterTheEndOfTheHoldIsEmpty) {
  const ComApartment apartment;
  const auto hold = OutlookAdapter().MakeHold(&m_request);
  hold->Connect();
  EXPECT_NE(hold->OpenSession().outlookApplication, nullptr);
  hold->Disconnect();
  EXPECT_EQ(hold->OpenSession().outlookApplication, nullptr);
}

TEST_F(OutlookSessionTest, FolderThatNoSessionCreatedIsARefusalForThePage) {
  m_outlook.logonResult = E_FAIL;
  const auto session = StartAtFolders();
  session->ClickItem(L"Inbox");
  session->CreateFolder(L"Junk");
  HWND tip = nullptr;
  EXPECT_TRUE(WaitUntil([&] { return (tip = FindVisibleWindow(L"KsToolTipWnd")) != nullptr; }));
  EXPECT_THAT(TextOf(tip), testing::HasSubstr(L"could not be created"));
  EXPECT_EQ(m_client.creations, 0);
  EXPECT_EQ(session->SelectedText(), L"Inbox");
  EXPECT_EQ(session->TreeLines().size(), 4U);
}

TEST_F(OutlookSessionTest, DefaultProfileFailsWithoutOne) {
  std::wstring name = L"before";
  EXPECT_EQ(GetOutlookDefaultProfile(&name), kFail);
  EXPECT_EQ(name, L"");
  EXPECT_EQ(GetOutlookNamespace(nullptr, nullptr), kNullPointer);
}

TEST_F(OutlookSessionTest, WithoutASessionANewFolderIsAnEmptyRecordAndTheClientIsNotAsked) {
  m_outlook.logonResult = E_FAIL;
  const ModuleStateGuard guard;
  CWizardSheet sheet(L"Kestrelon", &m_request, nullptr, 0);
  MailFolderRef rec;
  EXPECT_EQ(sheet.CreateFolder(L"x", {}, &rec), kOk);
  EXPECT_EQ(m_client.creations, 0);
  EXPECT_EQ(rec, MailFolderRef());
  EXPECT_EQ(m_request.folders.size(), 1U);
}

}  // namespace
}  // namespace postmarker::test
