// The stand-in as a library that is two things at once, so that one mailbox, one count of calls and
// one count of live objects serve both: Outlook's MAPI library, and an in-process server of
// Outlook's class.
#include <windows.h>

#include <mapicode.h>
#include <mapix.h>

#include <cstdio>
#include <exception>

#include "CallGate_win.h"
#include "MapiObjects_win.h"
#include "ObjectModel_win.h"
#include "PeerControl.h"

namespace postmarker::peer {
namespace {

class Control final : public PeerControl {
 public:
  bool Load(const wchar_t* file) override {
    try {
      Gate().mailbox = Mailbox::Read(file);
      return true;
    } catch (const std::exception& problem) {
      std::fprintf(stderr, "outlook: %s\n", problem.what());
      return false;
    }
  }
  IDispatch* MakeApplication() override { return peer::MakeApplication(); }
  long Live() override { return Gate().live; }
  long FalseReleases() override { return Gate().falseReleases; }
  void ResetCalls() override { Gate().Reset(); }
  void SetFault(const PeerFault& fault) override { Gate().SetFault(fault); }
  long Calls() override { return Gate().Calls(); }
  long CallsOf(const char* name) override { return Gate().CallsOf(name); }
  const char* Journal() override {
    m_journal = Gate().Journal();
    return m_journal.c_str();
  }
  bool IsHanging() override { return Gate().IsHanging(); }
  void EndHangs() override { ::SetEvent(Gate().hangEnd.Get()); }

 private:
  static CallGate& Gate() { return CallGate::Instance(); }

  std::string m_journal;
};

}  // namespace
}  // namespace postmarker::peer

using postmarker::peer::CallGate;

extern "C" {

postmarker::peer::PeerControl* __cdecl OutlookPeerControl() {
  static postmarker::peer::Control control;
  return &control;
}

HRESULT WINAPI PeerGetClassObject(REFCLSID id, REFIID iid, void** out) {
  *out = nullptr;
  return id == postmarker::peer::kOutlookClass
             ? postmarker::peer::MakeFactory()->QueryInterface(iid, out)
             : CLASS_E_CLASSNOTAVAILABLE;
}

HRESULT WINAPI PeerCanUnloadNow() {
  return CallGate::Instance().live == 0 ? S_OK : S_FALSE;
}

HRESULT WINAPI PeerInitialize(void* /*options*/) {
  const auto result = CallGate::Instance().Enter("MAPIInitialize");
  if (!result) {
    ++CallGate::Instance().live;
  }
  // One that says that it worked has to work.
  return result == S_OK ? MAPI_E_CALL_FAILED : result.value_or(S_OK);
}

void WINAPI PeerUninitialize() {
  --CallGate::Instance().live;
}

HRESULT WINAPI PeerLogonEx(ULONG_PTR /*window*/, LPTSTR profile, LPTSTR password, ULONG flags,
                           IMAPISession** session) {
  *session = nullptr;
  const bool isAsAgreed = profile == nullptr && password == nullptr && flags == 0x28;
  if (const auto result = CallGate::Instance().Enter("MAPILogonEx")) {
    return *result;
  }
  if (!isAsAgreed) {
    return MAPI_E_LOGON_FAILED;
  }
  *session = postmarker::peer::MakeSession();
  return S_OK;
}

ULONG WINAPI PeerFreeBuffer(void* memory) {
  postmarker::peer::FreeMemory(memory);
  return 0;
}

void WINAPI PeerHexFromBin(BYTE* bytes, int count, char* text) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  for (int i = 0; i < count; ++i) {
    *text++ = kDigits[bytes[i] >> 4];
    *text++ = kDigits[bytes[i] & 15];
  }
  *text = '\0';
}

HRESULT WINAPI PeerQueryAllRows(IMAPITable* table, SPropTagArray* columns,
                                SRestriction* restriction, SSortOrderSet* sort, LONG most,
                                SRowSet** rows) {
  *rows = nullptr;
  if (const auto result = CallGate::Instance().Enter("HrQueryAllRows")) {
    return *result;
  }
  if (restriction != nullptr || sort != nullptr || most != 0) {
    return MAPI_E_INVALID_PARAMETER;
  }
  *rows = postmarker::peer::AllRowsOf(table, *columns);
  return S_OK;
}

void WINAPI PeerFreeProws(SRowSet* rows) {
  postmarker::peer::FreeRows(rows);
}

HRESULT WINAPI PeerGetOneProp(IMAPIProp* object, ULONG tag, SPropValue** value) {
  *value = nullptr;
  if (const auto result = CallGate::Instance().Enter("HrGetOneProp")) {
    return *result;
  }
  SPropTagArray tags = {1, {tag}};
  ULONG count = 0;
  return object->GetProps(&tags, 0, &count, value);
}

}  // extern "C"
