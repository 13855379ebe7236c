#include "MapiObjects_win.h"

#include <mapicode.h>
#include <mapidefs.h>
#include <mapitags.h>

#include <algorithm>

#include "CallGate_win.h"
#include "support/Text.h"

// The interfaces' members are written by the header's own lists, which name parameters.
#pragma GCC diagnostic ignored "-Wunused-parameter"
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

namespace postmarker::peer {
namespace {

constexpr IID kUnknown = {0, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
constexpr IID kPropertyInterface = {0x00020303, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};
constexpr IID kMessageInterface = {0x00020307, 0, 0, {0xC0, 0, 0, 0, 0, 0, 0, 0x46}};

// Where the numbers of named properties begin.
constexpr ULONG kNamedContactEmail = PROP_TAG(PT_UNSPECIFIED, 0x8101);

#define REFUSE                \
  override {                  \
    return MAPI_E_NO_SUPPORT; \
  }

// Members that nobody needs refuse.
class SessionMembers : public IMAPISession {
 public:
  MAPI_IMAPISESSION_METHODS(REFUSE)
};
class StoreMembers : public IMsgStore {
 public:
  MAPI_IMAPIPROP_METHODS(REFUSE)
  MAPI_IMSGSTORE_METHODS(REFUSE)
};
class TableMembers : public IMAPITable {
 public:
  MAPI_IMAPITABLE_METHODS(REFUSE)
};
class MessageMembers : public IMessage {
 public:
  MAPI_IMAPIPROP_METHODS(REFUSE)
  MAPI_IMESSAGE_METHODS(REFUSE)
};

#undef REFUSE

template <class Members>
class Counted : public Members, public LiveObject {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    *out = nullptr;
    if (iid != kUnknown && !Offers(iid)) {
      return E_NOINTERFACE;
    }
    if (iid != kUnknown) {
      if (const auto result = CallGate::Instance().Enter("IMessage.QueryInterface")) {
        return *result;
      }
    }
    AddRef();
    *out = this;
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++m_references; }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --m_references;
    if (left == 0) {
      delete this;
    }
    return left;
  }

 protected:
  virtual ~Counted() = default;
  [[nodiscard]] virtual bool Offers(REFIID /*iid*/) const { return false; }

 private:
  std::atomic<ULONG> m_references = 1;
};

std::string Bytes(const std::string& hex) {
  std::string bytes;
  for (size_t i = 0; i + 1 < hex.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(hex.substr(i, 2), nullptr, 16));
  }
  return bytes;
}

// A property that is not there is one of a type of its own.
Property Binary(ULONG tag, const std::string& hex) {
  return hex.empty() ? Property{CHANGE_PROP_TYPE(tag, PT_ERROR), {}, false}
                     : Property{tag, Bytes(hex), false};
}
Property Text(ULONG tag, const std::wstring& text) {
  return {tag, Narrow(text), false};
}

class Table final : public Counted<TableMembers> {
 public:
  Table(std::string name, std::vector<std::vector<Property>> rows)
      : m_name(std::move(name)), m_rows(std::move(rows)) {}

  HRESULT STDMETHODCALLTYPE SetColumns(SPropTagArray* tags, ULONG /*flags*/) override {
    if (const auto result = CallGate::Instance().Enter(m_name + ".SetColumns")) {
      return *result;
    }
    m_columns.assign(tags->aulPropTag, tags->aulPropTag + tags->cValues);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE QueryRows(LONG most, ULONG /*flags*/, SRowSet** rows) override {
    *rows = nullptr;
    if (const auto result = CallGate::Instance().Enter(m_name + ".QueryRows")) {
      return *result;
    }
    const size_t end = std::min(m_rows.size(), m_next + static_cast<size_t>(most));
    *rows = MakeRows(RowsUpTo(end));
    return S_OK;
  }

  // All rows, with these columns.
  SRowSet* AllRows(const SPropTagArray& tags) {
    m_columns.assign(tags.aulPropTag, tags.aulPropTag + tags.cValues);
    return MakeRows(RowsUpTo(m_rows.size()));
  }

 private:
  std::vector<std::vector<Property>> RowsUpTo(size_t end) {
    std::vector<std::vector<Property>> rows;
    for (; m_next < end; ++m_next) {
      std::vector<Property> row;
      for (const ULONG column : m_columns) {
        const auto& have = m_rows[m_next];
        const auto found = std::find_if(
            have.begin(), have.end(), [column](const Property& one) { return one.tag == column; });
        row.push_back(
            found != have.end() ? *found : Property{CHANGE_PROP_TYPE(column, PT_ERROR), {}, false});
      }
      rows.push_back(std::move(row));
    }
    return rows;
  }

  std::string m_name;
  std::vector<std::vector<Property>> m_rows;
  std::vector<ULONG> m_columns;
  size_t m_next = 0;
};

class MessageStore final : public Counted<StoreMembers> {
 public:
  explicit MessageStore(const Store* store) : m_store(store) {}

  HRESULT STDMETHODCALLTYPE StoreLogoff(ULONG* flags) override {
    const auto result =
        CallGate::Instance().Enter("IMsgStore.StoreLogoff " + std::to_string(*flags));
    return result.value_or(S_OK);
  }
  HRESULT STDMETHODCALLTYPE GetProps(SPropTagArray* tags, ULONG /*flags*/, ULONG* count,
                                     SPropValue** values) override {
    const ULONG tag = tags->aulPropTag[0];
    *count = 1;
    *values = MakeProperties(
        {Binary(tag, tag == PR_IPM_SUBTREE_ENTRYID ? m_store->root->id : m_store->sent)});
    return S_OK;
  }

 private:
  const Store* m_store;
};

class Session final : public Counted<SessionMembers> {
 public:
  HRESULT STDMETHODCALLTYPE GetMsgStoresTable(ULONG /*flags*/, IMAPITable** table) override {
    *table = nullptr;
    if (const auto result = CallGate::Instance().Enter("IMAPISession.GetMsgStoresTable")) {
      return *result;
    }
    std::vector<std::vector<Property>> rows;
    for (const auto& store : CallGate::Instance().mailbox.stores) {
      rows.push_back({Binary(PR_ENTRYID, store->id), {PR_DEFAULT_STORE, {}, store->isDefault}});
    }
    *table = new Table("Stores", std::move(rows));
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE OpenMsgStore(ULONG_PTR /*window*/, ULONG size, ENTRYID* id,
                                         LPCIID /*iid*/, ULONG flags, IMsgStore** store) override {
    *store = nullptr;
    if (const auto result =
            CallGate::Instance().Enter("IMAPISession.OpenMsgStore " + std::to_string(flags))) {
      return *result;
    }
    const std::string bytes(reinterpret_cast<const char*>(id), size);
    for (const auto& one : CallGate::Instance().mailbox.stores) {
      if (Bytes(one->id) == bytes) {
        *store = new MessageStore(one.get());
        return S_OK;
      }
    }
    return MAPI_E_NOT_FOUND;
  }
};

class Message final : public Counted<MessageMembers> {
 public:
  explicit Message(const Item* item) : m_item(item) {}

  HRESULT STDMETHODCALLTYPE GetRecipientTable(ULONG /*flags*/, IMAPITable** table) override {
    *table = nullptr;
    if (const auto result = CallGate::Instance().Enter("IMessage.GetRecipientTable")) {
      return *result;
    }
    if (m_item->tableResult != 0) {
      return m_item->tableResult;
    }
    std::vector<std::vector<Property>> rows;
    for (const std::wstring& address : m_item->to) {
      rows.push_back({});
      // Recipients without an address have no such property.
      if (!address.empty()) {
        rows.back().push_back(Text(PR_EMAIL_ADDRESS_A, address));
      }
    }
    *table = new Table("Recipients table", std::move(rows));
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetIDsFromNames(ULONG count, MAPINAMEID** names, ULONG /*flags*/,
                                            SPropTagArray** tags) override {
    *tags = nullptr;
    if (const auto result = CallGate::Instance().Enter("IMAPIProp.GetIDsFromNames")) {
      return *result;
    }
    const bool isContactEmail = count == 1 && names[0]->ulKind == MNID_ID &&
                                names[0]->Kind.lID == 0x8083 &&
                                names[0]->lpguid->Data1 == 0x00062004;
    *tags = MakeTags({isContactEmail ? kNamedContactEmail : PROP_TAG(PT_ERROR, 0)});
    return isContactEmail ? S_OK : MAPI_W_ERRORS_RETURNED;
  }
  HRESULT STDMETHODCALLTYPE GetProps(SPropTagArray* tags, ULONG /*flags*/, ULONG* count,
                                     SPropValue** values) override {
    *count = 0;
    *values = nullptr;
    if (const auto result = CallGate::Instance().Enter("IMAPIProp.GetProps")) {
      return *result;
    }
    const ULONG wanted = CHANGE_PROP_TYPE(kNamedContactEmail, PT_STRING8);
    const bool isThere = tags->aulPropTag[0] == wanted && m_item->hasNamedProperty;
    *count = 1;
    *values = MakeProperties({isThere ? Text(wanted, m_item->email)
                                      : Property{CHANGE_PROP_TYPE(wanted, PT_ERROR), {}, false}});
    return isThere ? S_OK : MAPI_W_ERRORS_RETURNED;
  }

 private:
  [[nodiscard]] bool Offers(REFIID iid) const override {
    return iid == kMessageInterface || iid == kPropertyInterface;
  }

  const Item* m_item;
};

}  // namespace

IMAPISession* MakeSession() {
  return new Session();
}

IUnknown* MakeMessage(const Item* item) {
  return new Message(item);
}

SRowSet* AllRowsOf(IMAPITable* table, const SPropTagArray& tags) {
  return static_cast<Table*>(table)->AllRows(tags);
}

}  // namespace postmarker::peer
