#include "clients/storeapi/WindowsContacts_win.h"

#include <array>
#include <string>

#include "clients/storeapi/StoreInterfaces_win.h"
#include "support/ComPtr_win.h"

namespace postmarker::storeapi {
namespace {

constexpr wchar_t kApplication[] = L"Kestrelon";
constexpr wchar_t kVersion[] = L"8.0";
constexpr wchar_t kFirstAddress[] = L"EmailAddressCollection/EmailAddress[1]/Address";
constexpr DWORD kAddressRoom = 260;

// A collection that never ends, ends here.
constexpr int kMaxContacts = 1'000'000;

HRESULT OpenContacts(ComPtr<IContactManager>* manager, ComPtr<IContactCollection>* contacts) {
  HRESULT result = ::CoCreateInstance(kContactManagerClass, nullptr, CLSCTX_ALL, kContactManagerId,
                                      manager->PutVoid());
  if (SUCCEEDED(result)) {
    result = *manager ? (*manager)->Initialize(kApplication, kVersion) : E_NOINTERFACE;
  }
  if (SUCCEEDED(result)) {
    result = (*manager)->GetContactCollection(contacts->Put());
  }
  if (SUCCEEDED(result)) {
    result = *contacts ? (*contacts)->Reset() : E_FAIL;
  }
  return result;
}

void AddFirstAddress(IContactCollection* contacts, AddressSet* addresses) {
  ComPtr<IContact> contact;
  ComPtr<IContactProperties> properties;
  if (FAILED(contacts->GetCurrent(contact.Put())) || !contact ||
      FAILED(contact->QueryInterface(kContactPropertiesId, properties.PutVoid())) || !properties) {
    return;
  }
  std::array<wchar_t, kAddressRoom + 1> text = {};  // one for a terminator that may be missing
  // S_FALSE stands for an address that the person has deleted.
  if (properties->GetString(kFirstAddress, 0, text.data(), kAddressRoom, nullptr) == S_OK) {
    addresses->insert(text.data());
  }
}

}  // namespace

ResultCode ReadWindowsContacts(const StopQuery& stop, AddressSet* addresses) {
  ComPtr<IContactManager> manager;
  ComPtr<IContactCollection> contacts;
  const HRESULT result = OpenContacts(&manager, &contacts);
  if (FAILED(result)) {
    return result;
  }
  for (int i = 0; i < kMaxContacts && !ShouldStop(stop); ++i) {
    const HRESULT next = contacts->Next();
    if (FAILED(next) || next == S_FALSE) {
      break;
    }
    AddFirstAddress(contacts.Get(), addresses);
  }
  return kOk;
}

}  // namespace postmarker::storeapi
