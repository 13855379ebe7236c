#include "support/Variant_win.h"

#include <gtest/gtest.h>

namespace postmarker {
namespace {

// The system's interfaces have no virtual destructors.
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

// An object that counts the references on it.
class CountedObject final : public IDispatch {
 public:
  int references = 1;

  STDMETHODIMP QueryInterface(REFIID /*id*/, void** out) override {
    *out = nullptr;
    return E_NOINTERFACE;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(++references); }
  STDMETHODIMP_(ULONG) Release() override { return static_cast<ULONG>(--references); }
  STDMETHODIMP GetTypeInfoCount(UINT* /*count*/) override { return E_NOTIMPL; }
  STDMETHODIMP GetTypeInfo(UINT /*index*/, LCID /*locale*/, ITypeInfo** /*out*/) override {
    return E_NOTIMPL;
  }
  STDMETHODIMP GetIDsOfNames(REFIID /*id*/, LPOLESTR* /*names*/, UINT /*count*/, LCID /*locale*/,
                             DISPID* /*out*/) override {
    return E_NOTIMPL;
  }
  STDMETHODIMP Invoke(DISPID /*member*/, REFIID /*id*/, LCID /*locale*/, WORD /*flags*/,
                      DISPPARAMS* /*arguments*/, VARIANT* /*result*/, EXCEPINFO* /*exception*/,
                      UINT* /*wrong*/) override {
    return E_NOTIMPL;
  }
};

// Writes a reference on the object, as a call's result.
void Answer(CountedObject* object, VARIANT* result) {
  object->AddRef();
  result->vt = VT_DISPATCH;
  result->pdispVal = object;
}

TEST(Variant, ReleasesTheObjectThatItWasGiven) {
  CountedObject object;
  {
    Variant result;
    Answer(&object, result.Put());
    EXPECT_EQ(object.references, 2);
    EXPECT_EQ(result.Get().vt, VT_DISPATCH);
  }
  EXPECT_EQ(object.references, 1);
}

TEST(Variant, IsClearedBeforeTheNextResult) {
  CountedObject object;
  Variant result;
  Answer(&object, result.Put());
  Answer(&object, result.Put());
  EXPECT_EQ(object.references, 2);
}

TEST(Variant, BorrowedTextStaysWithItsOwner) {
  const Bstr text = MakeBstr(L"profile");
  const VARIANT value = TextVariant(text);
  EXPECT_EQ(value.vt, VT_BSTR);
  EXPECT_EQ(value.bstrVal, text.Get());
}

TEST(Variant, ValuesSayWhatTheyAre) {
  EXPECT_EQ(NumberVariant(7).vt, VT_I4);
  EXPECT_EQ(NumberVariant(7).lVal, 7);
  EXPECT_EQ(BoolVariant(true).boolVal, VARIANT_TRUE);
  EXPECT_EQ(BoolVariant(false).vt, VT_BOOL);
  EXPECT_EQ(MissingVariant().vt, VT_ERROR);
  EXPECT_EQ(MissingVariant().scode, DISP_E_PARAMNOTFOUND);
}

}  // namespace
}  // namespace postmarker
