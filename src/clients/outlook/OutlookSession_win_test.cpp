#include "clients/outlook/OutlookSession_win.h"

#include <gtest/gtest.h>
#include <oleidl.h>

#include "support/FakeDispatch_win.h"
#include "support/OutlookFixture_win.h"

// COM interfaces have no virtual destructor, by their nature.
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

namespace postmarker::test {
namespace {

class OutlookSessionTest : public OutlookTest {
 protected:
  static RegistryKey Profiles() {
    return RegistryKey::Create(HKEY_CURRENT_USER, OutlookInstallation::kProfiles, KEY_ALL_ACCESS);
  }
};

TEST_F(OutlookSessionTest, DefaultProfileIsReadUpToItsLimit) {
  std::wstring name;
  EXPECT_EQ(GetOutlookDefaultProfile(&name), kOk);
  EXPECT_EQ(name, L"Anna");
  // With its end, a text of the limit fills the room.
  const std::wstring longest(8710, L'n');
  Profiles().WriteString(L"DefaultProfile", longest);
  EXPECT_EQ(GetOutlookDefaultProfile(&name), kOk);
  EXPECT_EQ(name, longest);
  Profiles().WriteString(L"DefaultProfile", longest + L"n");
  EXPECT_EQ(GetOutlookDefaultProfile(&name), kFail);
  EXPECT_EQ(name, L"");
}

TEST_F(OutlookSessionTest, MissingProfileIsAFailure) {
  Profiles().DeleteValue(L"DefaultProfile");
  std::wstring name = L"before";
  EXPECT_EQ(GetOutlookDefaultProfile(&name), kFail);
  EXPECT_EQ(name, L"");
}

TEST_F(OutlookSessionTest, FailureLeavesNoNamespace) {
  FakeDispatch withoutSession([](DISPID, DISPPARAMS*, VARIANT*) { return E_FAIL; });
  const ComPtr<IDispatch> application = m_outlook.MakeApplication();
  ComPtr<IDispatch> nameSpace;
  EXPECT_EQ(GetOutlookNamespace(application.Get(), &nameSpace), kOk);
  ASSERT_TRUE(nameSpace);
  EXPECT_EQ(GetOutlookNamespace(&withoutSession, &nameSpace), E_FAIL);
  EXPECT_FALSE(nameSpace);
  EXPECT_EQ(GetOutlookNamespace(nullptr, &nameSpace), kNullPointer);
  EXPECT_EQ(GetOutlookNamespace(application.Get(), nullptr), kNullPointer);
}

TEST_F(OutlookSessionTest, NoCookieGivesNoApplication) {
  ComPtr<IDispatch> application;
  EXPECT_EQ(GetOutlookApplication(0, &application), kFail);
  EXPECT_FALSE(application);
}

// An application that has to be run before it can be used. Lives in the test, with its class.
class SleepingApplication final : public IDispatch, public IRunnableObject, public IClassFactory {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    *out = nullptr;
    if (iid == IID_IRunnableObject) {
      *out = static_cast<IRunnableObject*>(this);
    } else if (iid == IID_IClassFactory) {
      *out = static_cast<IClassFactory*>(this);
    } else if (iid == IID_IUnknown || iid == IID_IDispatch) {
      *out = static_cast<IDispatch*>(this);
    }
    return *out != nullptr ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }

  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown*, REFIID iid, void** out) override {
    return QueryInterface(iid, out);
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

  HRESULT STDMETHODCALLTYPE Run(IBindCtx*) override {
    ++runs;
    return runResult;
  }
  HRESULT STDMETHODCALLTYPE GetRunningClass(CLSID*) override { return E_NOTIMPL; }
  BOOL STDMETHODCALLTYPE IsRunning() override { return runs != 0 ? TRUE : FALSE; }
  HRESULT STDMETHODCALLTYPE LockRunning(BOOL, BOOL) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE SetContainedObject(BOOL) override { return S_OK; }

  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                   UINT*) override {
    return E_NOTIMPL;
  }

  int runs = 0;
  HRESULT runResult = S_OK;
};

TEST_F(OutlookSessionTest, StartedOutlookIsRun) {
  constexpr CLSID kClass = {0x0006F03A, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
  SleepingApplication outlook;
  DWORD cookie = 0;
  ASSERT_EQ(::CoRegisterClassObject(kClass, static_cast<IClassFactory*>(&outlook),
                                    CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie),
            S_OK);
  ComPtr<IDispatch> application;
  EXPECT_EQ(StartOutlook(&application), kOk);
  EXPECT_EQ(outlook.runs, 1);
  EXPECT_TRUE(application);
  outlook.runs = 0;
  outlook.runResult = E_OUTOFMEMORY;
  application.Reset();
  EXPECT_EQ(StartOutlook(&application), E_OUTOFMEMORY);
  EXPECT_FALSE(application);
  ::CoRevokeClassObject(cookie);
}

}  // namespace
}  // namespace postmarker::test
