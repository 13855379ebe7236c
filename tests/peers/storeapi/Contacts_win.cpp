// Windows Contacts.
#include <cstring>

#include "StoreState_win.h"
#include "support/Text.h"

namespace postmarker::peer {
namespace {

using nlohmann::json;
using storeapi::IContact;
using storeapi::IContactCollection;

constexpr wchar_t kAddress[] = L"EmailAddressCollection/EmailAddress[1]/Address";

class PeerContactProperties final
    : public PeerObject<storeapi::IContactProperties, storeapi::kContactPropertiesId> {
 public:
  explicit PeerContactProperties(json address) : m_address(std::move(address)) {}

  HRESULT __stdcall GetString(const wchar_t* name, DWORD /*flags*/, wchar_t* text, DWORD room,
                              DWORD* /*needed*/) override {
    POSTMARKER_PEER_ENTER("Properties.GetString");
    if (std::wcscmp(name, kAddress) != 0) {
      return E_INVALIDARG;
    }
    if (!m_address.is_string()) {
      return m_address.is_null() ? S_FALSE : E_FAIL;
    }
    const std::wstring address = WidenUtf8(m_address.get<std::string>());
    if (address.size() >= room) {
      return HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER);
    }
    std::wcscpy(text, address.c_str());
    return S_OK;
  }

 private:
  json m_address;
};

class PeerContact final : public PeerObject<IContact, storeapi::kContactId> {
 public:
  explicit PeerContact(json address) : m_address(std::move(address)) {}

  HRESULT __stdcall QueryInterface(REFIID wanted, void** object) override {
    if (wanted != storeapi::kContactPropertiesId) {
      return PeerObject::QueryInterface(wanted, object);
    }
    *object = nullptr;
    POSTMARKER_PEER_ENTER("Contact.QueryInterface");
    *object = static_cast<storeapi::IContactProperties*>(new PeerContactProperties(m_address));
    return S_OK;
  }
  HRESULT __stdcall GetContactID(wchar_t*, DWORD, DWORD*) override { return E_NOTIMPL; }
  HRESULT __stdcall GetPath(wchar_t*, DWORD, DWORD*) override { return E_NOTIMPL; }
  HRESULT __stdcall CommitChanges(DWORD) override { return E_NOTIMPL; }

 private:
  json m_address;
};

class PeerContacts final : public PeerObject<IContactCollection, storeapi::kContactCollectionId> {
 public:
  HRESULT __stdcall Reset() override {
    POSTMARKER_PEER_ENTER("Collection.Reset");
    m_position = 0;
    return S_OK;
  }
  HRESULT __stdcall Next() override {
    POSTMARKER_PEER_ENTER("Collection.Next");
    ++m_position;
    return m_position <= State().contacts->size() || State().isEndless ? S_OK : S_FALSE;
  }
  HRESULT __stdcall GetCurrent(IContact** contact) override {
    POSTMARKER_PEER_ENTER("Collection.GetCurrent");
    const auto& contacts = *State().contacts;
    if (m_position == 0 || m_position > contacts.size()) {
      return E_FAIL;
    }
    *contact = new PeerContact(contacts[m_position - 1]);
    return S_OK;
  }

 private:
  size_t m_position = 0;
};

class PeerContactManager final
    : public PeerObject<storeapi::IContactManager, storeapi::kContactManagerId> {
 public:
  HRESULT __stdcall Initialize(const wchar_t* application, const wchar_t* version) override {
    POSTMARKER_PEER_ENTER("Manager.Initialize");
    State().Note("contacts for " + NarrowUtf8(application) + " " + NarrowUtf8(version));
    return S_OK;
  }
  HRESULT __stdcall GetContactCollection(IContactCollection** collection) override {
    POSTMARKER_PEER_ENTER("Manager.GetContactCollection");
    *collection = new PeerContacts;
    return S_OK;
  }
  HRESULT __stdcall Load(const wchar_t*, IContact**) override { return E_NOTIMPL; }
  HRESULT __stdcall MergeContactIDs() override { return E_NOTIMPL; }
  HRESULT __stdcall GetMeContact(IContact**) override { return E_NOTIMPL; }
  HRESULT __stdcall SetMeContact(IContact*) override { return E_NOTIMPL; }
};

}  // namespace

storeapi::IContactManager* MakeContactManager() {
  return new PeerContactManager;
}

}  // namespace postmarker::peer
