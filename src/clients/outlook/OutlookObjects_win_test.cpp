// The layer over Outlook's object model: how a member is called, and what is made of its answer.
#include "clients/outlook/OutlookObjects_win.h"

#include <gtest/gtest.h>

#include "support/Bstr_win.h"
#include "support/FakeDispatch_win.h"

// COM interfaces have no virtual destructor, by their nature.
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

namespace postmarker::test {
namespace {

class OutlookObjectsTest : public testing::Test {
 protected:
  OutlookObjectsTest() { EXPECT_EQ(m_folder.Attach(&m_object), S_OK); }

  void AnswerText(const wchar_t* text, UINT length) {
    m_answer.vt = VT_BSTR;
    m_answer.bstrVal = ::SysAllocStringLen(text, length);
  }

  // What the object answers to anything, once; the caller gets it.
  VARIANT m_answer = {};
  FakeDispatch m_object{[this](DISPID, DISPPARAMS*, VARIANT* result) {
    *result = m_answer;
    return S_OK;
  }};
  OutlookFolder m_folder;
};

TEST_F(OutlookObjectsTest, NumberOfAnotherTypeIsAFailureThatChangesNothing) {
  LONG number = 7;
  for (const VARENUM type : {VT_EMPTY, VT_NULL, VT_R8, VT_UI1}) {
    m_answer.vt = static_cast<VARTYPE>(type);
    EXPECT_EQ(m_folder.DefaultItemType(&number), DISP_E_TYPEMISMATCH);
  }
  EXPECT_EQ(number, 7);
}

TEST_F(OutlookObjectsTest, TextOfAnotherTypeIsAFailureThatChangesNothing) {
  std::wstring text = L"before";
  for (const VARENUM type : {VT_EMPTY, VT_NULL, VT_I4}) {
    m_answer.vt = static_cast<VARTYPE>(type);
    EXPECT_EQ(m_folder.Name(&text), DISP_E_TYPEMISMATCH);
  }
  EXPECT_EQ(text, L"before");
}

TEST_F(OutlookObjectsTest, TextMayBeNullOrHaveZerosInIt) {
  std::wstring text = L"before";
  m_answer.vt = VT_BSTR;
  m_answer.bstrVal = nullptr;
  EXPECT_EQ(m_folder.Name(&text), S_OK);
  EXPECT_EQ(text, L"");
  AnswerText(L"a\0b", 3);
  EXPECT_EQ(m_folder.Name(&text), S_OK);
  EXPECT_EQ(text, std::wstring(L"a\0b", 3));
}

TEST_F(OutlookObjectsTest, ObjectThatIsMissingIsAFailure) {
  OutlookFolders folders;
  for (const VARENUM type : {VT_EMPTY, VT_DISPATCH, VT_UNKNOWN, VT_I4}) {
    m_answer = {};
    m_answer.vt = static_cast<VARTYPE>(type);
    EXPECT_EQ(m_folder.Folders(&folders), E_POINTER);
    EXPECT_FALSE(folders);
  }
  ComPtr<IUnknown> object;
  OutlookItem item;
  EXPECT_EQ(item.Attach(&m_object), S_OK);
  EXPECT_EQ(item.MapiObject(&object), E_POINTER);
}

TEST_F(OutlookObjectsTest, MembersOfNoObjectFail) {
  const OutlookFolder none;
  std::wstring text;
  LONG number = 0;
  OutlookFolders folders;
  ComPtr<IDispatch> dispatch;
  EXPECT_EQ(none.Name(&text), E_POINTER);
  EXPECT_EQ(none.DefaultItemType(&number), E_POINTER);
  EXPECT_EQ(none.Folders(&folders), E_POINTER);
  EXPECT_EQ(none.GetDispatch(&dispatch), E_POINTER);
  EXPECT_EQ(OutlookNameSpace().Logoff(), E_POINTER);
}

TEST_F(OutlookObjectsTest, PropertiesAreAskedForAsMethodsToo) {
  LONG number = 0;
  (void)m_folder.DefaultItemType(&number);
  EXPECT_EQ(m_object.LastKind(), DISPATCH_PROPERTYGET | DISPATCH_METHOD);
  OutlookItems items;
  EXPECT_EQ(items.Attach(&m_object), S_OK);
  OutlookItem item;
  (void)items.Item(1, &item);
  EXPECT_EQ(m_object.LastKind(), DISPATCH_METHOD);
}

// Says that it has what it is asked for, and gives nothing.
class EmptyPromise final : public IUnknown {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** out) override {
    *out = nullptr;
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
};

TEST_F(OutlookObjectsTest, ObjectWithoutAutomationIsAFailureAndTheOneBeforeStays) {
  EmptyPromise promise;
  EXPECT_EQ(m_folder.Attach(&promise), E_POINTER);
  EXPECT_EQ(m_folder.Attach(nullptr), E_POINTER);
  EXPECT_TRUE(m_folder);
}

}  // namespace
}  // namespace postmarker::test
