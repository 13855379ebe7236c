// An automation object for tests that look at single calls.
#pragma once

#include <windows.h>

#include <oaidl.h>

#include <atomic>
#include <functional>
#include <utility>

// COM interfaces have no virtual destructor, by their nature.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

namespace postmarker::test {

// Its members are a function. Lives in the test and counts its references.
class FakeDispatch final : public IDispatch {
 public:
  using Member = std::function<HRESULT(DISPID id, DISPPARAMS* arguments, VARIANT* result)>;
  explicit FakeDispatch(Member member) : m_member(std::move(member)) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    if (iid != IID_IUnknown && iid != IID_IDispatch) {
      *out = nullptr;
      return E_NOINTERFACE;
    }
    *out = static_cast<IDispatch*>(this);
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(++m_references); }
  ULONG STDMETHODCALLTYPE Release() override { return static_cast<ULONG>(--m_references); }
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
    *count = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD kind, DISPPARAMS* arguments,
                                   VARIANT* result, EXCEPINFO*, UINT*) override {
    m_lastKind = kind;
    return m_member(id, arguments, result);
  }
  [[nodiscard]] int References() const { return m_references; }
  // How the last call was made: DISPATCH_METHOD and its like.
  [[nodiscard]] WORD LastKind() const { return m_lastKind; }

 private:
  Member m_member;
  std::atomic<int> m_references = 1;
  std::atomic<WORD> m_lastKind = 0;
};

}  // namespace postmarker::test

#pragma GCC diagnostic pop
