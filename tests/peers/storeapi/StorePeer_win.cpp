// The library: what the platform asks it for, and what a test does with it.
#include "StorePeerControl.h"
#include "StoreState_win.h"

namespace postmarker::peer {
namespace {

enum class PeerClass { kStore, kContacts };

class Factory final : public PeerObject<IClassFactory, IID_IClassFactory> {
 public:
  explicit Factory(PeerClass made) : m_made(made) { --State().live; }
  ~Factory() override { ++State().live; }  // held by the platform as long as it likes

  HRESULT __stdcall CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
    *object = nullptr;
    if (outer != nullptr) {
      return CLASS_E_NOAGGREGATION;
    }
    POSTMARKER_PEER_ENTER(m_made == PeerClass::kStore ? "Store.Create" : "Contacts.Create");
    if (m_made == PeerClass::kStore ? !State().root : !State().contacts) {
      return CLASS_E_CLASSNOTAVAILABLE;
    }
    const ComPtr<IUnknown> made(m_made == PeerClass::kStore
                                    ? static_cast<IUnknown*>(MakeStoreNamespace())
                                    : static_cast<IUnknown*>(MakeContactManager()));
    return made->QueryInterface(iid, object);
  }
  HRESULT __stdcall LockServer(BOOL /*lock*/) override { return S_OK; }

 private:
  PeerClass m_made;
};

std::string SubjectOf(storeapi::IMimeMessage* message) {
  ComPtr<storeapi::IMimeBody> body;
  PROPVARIANT value = {};
  value.vt = VT_LPSTR;
  if (FAILED(message->BindToObject(storeapi::RootBody(), storeapi::kMimeBodyId, body.PutVoid())) ||
      FAILED(body->GetProp("Subject", 0, &value)) || value.vt != VT_LPSTR) {
    return "(no subject)";
  }
  std::string subject = value.pszVal;
  ::PropVariantClear(&value);
  return subject;
}

const char* CloseMimeMessage(uint32_t* references) {
  static std::string subject;
  subject = "(no message)";
  if (storeapi::IMimeMessage* const message = State().lastMimeMessage.Detach()) {
    subject = SubjectOf(message);
    *references = message->Release();  // owner
  }
  return subject.c_str();
}

constexpr StorePeerControl kControl = {
    .setState = [](const char* json) { State().Set(nlohmann::json::parse(json)); },
    .failCall = [](const char* method, int number,
                   int32_t result) { State().FailCall(method, number, result); },
    .countCalls = [](const char* method) { return State().CountCalls(method); },
    .countLive = []() -> int { return State().live; },
    .largestRead = [] { return State().largestRead; },
    .journal = [] { return State().Journal().c_str(); },
    .closeMimeMessage = &CloseMimeMessage};

}  // namespace
}  // namespace postmarker::peer

extern "C" {

const postmarker::peer::StorePeerControl* GetStorePeer() {
  return &postmarker::peer::kControl;
}

HRESULT __stdcall DllGetClassObject(REFCLSID clsid, REFIID iid, void** object) {
  using namespace postmarker;
  const bool isStore = clsid == storeapi::kStoreNamespaceClass;
  if (!isStore && clsid != storeapi::kContactManagerClass) {
    return CLASS_E_CLASSNOTAVAILABLE;
  }
  const ComPtr<IClassFactory> factory(
      new peer::Factory(isStore ? peer::PeerClass::kStore : peer::PeerClass::kContacts));
  return factory->QueryInterface(iid, object);
}

// The test holds the library itself.
HRESULT __stdcall DllCanUnloadNow() {
  return S_FALSE;
}
}
