#include "ObjectModel_win.h"

#include <mapicode.h>
#include <objbase.h>

#include <string>
#include <utility>

#include "CallGate_win.h"
#include "MapiObjects_win.h"
#include "support/ComPtr_win.h"
#include "support/Text.h"

#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

namespace postmarker::peer {
namespace {

// The arguments of a call, in the order in which they were written.
class Arguments {
 public:
  explicit Arguments(const DISPPARAMS& parameters) : m_parameters(parameters) {}

  [[nodiscard]] size_t Count() const { return m_parameters.cArgs; }
  [[nodiscard]] LONG Number(UINT index) const {
    return index < Count() && At(index).vt == VT_I4 ? At(index).lVal : -1;
  }
  [[nodiscard]] std::wstring Text(UINT index) const {
    return index < Count() && At(index).vt == VT_BSTR
               ? std::wstring(At(index).bstrVal, ::SysStringLen(At(index).bstrVal))
               : L"?";
  }

 private:
  [[nodiscard]] const VARIANT& At(UINT index) const {
    return m_parameters.rgvarg[m_parameters.cArgs - 1 - index];
  }

  const DISPPARAMS& m_parameters;
};

HRESULT Give(VARIANT* result, LONG number) {
  result->vt = VT_I4;
  result->lVal = number;
  return S_OK;
}
HRESULT Give(VARIANT* result, const std::wstring& text) {
  result->vt = VT_BSTR;
  result->bstrVal = ::SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
  return S_OK;
}
HRESULT Give(VARIANT* result, IDispatch* object) {
  if (object == nullptr) {
    return MAPI_E_NOT_FOUND;
  }
  result->vt = VT_DISPATCH;
  result->pdispVal = object;
  return S_OK;
}

class PeerObject : public IDispatch, public LiveObject {
 public:
  explicit PeerObject(std::string kind) : m_kind(std::move(kind)) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    *out = nullptr;
    if (iid == IID_IMarshal && CallGate::Instance().mailbox.isFreeThreaded) {
      return Marshaler(out);
    }
    if (iid != IID_IUnknown && iid != IID_IDispatch) {
      return E_NOINTERFACE;
    }
    AddRef();
    *out = static_cast<IDispatch*>(this);
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
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
    *count = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* parameters,
                                   VARIANT* result, EXCEPINFO*, UINT*) override {
    VARIANT unwanted = {};
    VARIANT* const out = result != nullptr ? result : &unwanted;
    out->vt = VT_EMPTY;
    const Arguments arguments(*parameters);
    const std::string member = Member(id);
    if (const auto early = CallGate::Instance().Enter(m_kind + "." + member)) {
      return *early;
    }
    return Call(member, arguments, out);
  }

 protected:
  virtual ~PeerObject() = default;
  virtual HRESULT Call(const std::string& member, const Arguments& arguments, VARIANT* result) = 0;

 private:
  // The name of a member by Outlook's published ids.
  static std::string Member(DISPID id) {
    static const std::map<DISPID, const char*> names = {{0x3001, "Name"},
                                                        {0xF00A, "Class"},
                                                        {0xF001, "Parent"},
                                                        {0xF100, "MAPIOBJECT"},
                                                        {0x50, "Count"},
                                                        {0x51, "Item"},
                                                        {0x5F, "Add"},
                                                        {0x2103, "Folders"},
                                                        {0x3003, "Address"},
                                                        {0xF814, "Recipients"},
                                                        {0x8083, "Email1Address"},
                                                        {0xF01E, "EntryID"},
                                                        {0x3108, "StoreID"},
                                                        {0x3106, "DefaultItemType"},
                                                        {0x3100, "Items"},
                                                        {0x210B, "GetDefaultFolder"},
                                                        {0x2108, "GetFolderFromID"},
                                                        {0x2105, "Logon"},
                                                        {0x2106, "Logoff"},
                                                        {0x116, "Version"},
                                                        {0xF00B, "Session"},
                                                        {0x110, "GetNamespace"}};
    const auto found = names.find(id);
    return found == names.end() ? "?" : found->second;
  }

  HRESULT Marshaler(void** out) {
    if (!m_marshaler &&
        FAILED(::CoCreateFreeThreadedMarshaler(static_cast<IDispatch*>(this), m_marshaler.Put()))) {
      return E_NOINTERFACE;
    }
    return m_marshaler->QueryInterface(IID_IMarshal, out);
  }

  std::string m_kind;
  std::atomic<ULONG> m_references = 1;
  ComPtr<IUnknown> m_marshaler;
};

class RecipientObject final : public PeerObject {
 public:
  explicit RecipientObject(std::wstring address)
      : PeerObject("Recipient"), m_address(std::move(address)) {}

 private:
  HRESULT Call(const std::string& member, const Arguments&, VARIANT* result) override {
    return member == "Address" ? Give(result, m_address) : DISP_E_MEMBERNOTFOUND;
  }
  std::wstring m_address;
};

class RecipientsObject final : public PeerObject {
 public:
  explicit RecipientsObject(const Item* item) : PeerObject("Recipients"), m_item(item) {}

 private:
  HRESULT Call(const std::string& member, const Arguments& arguments, VARIANT* result) override {
    if (member == "Count") {
      return Give(result, static_cast<LONG>(m_item->to.size()));
    }
    const auto index = static_cast<size_t>(arguments.Number(0)) - 1;
    return member == "Item" && index < m_item->to.size()
               ? Give(result, new RecipientObject(m_item->to[index]))
               : DISP_E_BADINDEX;
  }
  const Item* m_item;
};

class ItemObject final : public PeerObject {
 public:
  explicit ItemObject(const Item* item) : PeerObject("Item"), m_item(item) {}

 private:
  HRESULT Call(const std::string& member, const Arguments&, VARIANT* result) override {
    if (member == "Class") {
      return Give(result, m_item->kind);
    }
    if (member == "MAPIOBJECT") {
      result->vt = VT_UNKNOWN;
      result->punkVal = MakeMessage(m_item);
      return S_OK;
    }
    if (member == "Recipients" && m_item->kind == 43) {
      return Give(result, new RecipientsObject(m_item));
    }
    if (member == "Email1Address" && m_item->kind == 40) {
      return Give(result, m_item->hasModelProperty ? m_item->email : std::wstring());
    }
    return DISP_E_MEMBERNOTFOUND;
  }
  const Item* m_item;
};

class ItemsObject final : public PeerObject {
 public:
  explicit ItemsObject(const Folder* folder) : PeerObject("Items"), m_folder(folder) {}

 private:
  HRESULT Call(const std::string& member, const Arguments& arguments, VARIANT* result) override {
    if (member == "Count") {
      return Give(result, static_cast<LONG>(m_folder->items.size()));
    }
    const auto index = static_cast<size_t>(arguments.Number(0)) - 1;
    return member == "Item" && index < m_folder->items.size()
               ? Give(result, new ItemObject(&m_folder->items[index]))
               : DISP_E_BADINDEX;
  }
  const Folder* m_folder;
};

IDispatch* MakeFolderObject(Folder* folder);
IDispatch* MakeNameSpace();

// The children of a folder, or the roots of the stores.
class FoldersObject final : public PeerObject {
 public:
  explicit FoldersObject(Folder* parent) : PeerObject("Folders"), m_parent(parent) {}

 private:
  HRESULT Call(const std::string& member, const Arguments& arguments, VARIANT* result) override {
    if (member == "Count") {
      return Give(result, static_cast<LONG>(Size()));
    }
    if (member == "Item") {
      const auto index = static_cast<size_t>(arguments.Number(0)) - 1;
      return index < Size() ? Give(result, MakeFolderObject(At(index))) : DISP_E_BADINDEX;
    }
    if (member == "Add" && m_parent != nullptr && arguments.Number(1) == 6) {
      return Add(arguments.Text(0), result);
    }
    return DISP_E_MEMBERNOTFOUND;
  }
  HRESULT Add(const std::wstring& name, VARIANT* result) {
    for (const auto& child : m_parent->folders) {
      if (child->name == name) {
        return MAPI_E_COLLISION;
      }
    }
    auto folder = std::make_unique<Folder>();
    folder->id = m_parent->id + "F" + std::to_string(m_parent->folders.size());
    folder->name = name;
    folder->store = m_parent->store;
    folder->parent = m_parent;
    m_parent->folders.push_back(std::move(folder));
    return Give(result, MakeFolderObject(m_parent->folders.back().get()));
  }
  [[nodiscard]] size_t Size() const {
    return m_parent != nullptr ? m_parent->folders.size()
                               : CallGate::Instance().mailbox.stores.size();
  }
  [[nodiscard]] Folder* At(size_t index) const {
    return m_parent != nullptr ? m_parent->folders[index].get()
                               : CallGate::Instance().mailbox.stores[index]->root.get();
  }
  Folder* m_parent;  // null: the roots
};

class FolderObject final : public PeerObject {
 public:
  explicit FolderObject(Folder* folder) : PeerObject("Folder"), m_folder(folder) {}

 private:
  HRESULT Call(const std::string& member, const Arguments&, VARIANT* result) override {
    if (member == "Name") {
      return Give(result, m_folder->name);
    }
    if (member == "Class") {
      return Give(result, 2);
    }
    if (member == "EntryID") {
      return Give(result, WidenUtf8(m_folder->id));
    }
    if (member == "StoreID") {
      return Give(result, WidenUtf8(m_folder->store->id));
    }
    if (member == "DefaultItemType") {
      return Give(result, m_folder->type);
    }
    if (member == "Parent") {
      return Give(result, m_folder->parent != nullptr ? MakeFolderObject(m_folder->parent)
                                                      : MakeNameSpace());
    }
    if (member == "Folders") {
      return Give(result, new FoldersObject(m_folder));
    }
    return member == "Items" ? Give(result, new ItemsObject(m_folder)) : DISP_E_MEMBERNOTFOUND;
  }
  Folder* m_folder;
};

class NameSpaceObject final : public PeerObject {
 public:
  NameSpaceObject() : PeerObject("NameSpace") {}

 private:
  HRESULT Call(const std::string& member, const Arguments& arguments, VARIANT* result) override {
    const Mailbox& mailbox = CallGate::Instance().mailbox;
    if (member == "Class") {
      return Give(result, 1);
    }
    if (member == "Logon") {
      return arguments.Count() == 4 ? S_OK : DISP_E_BADPARAMCOUNT;
    }
    if (member == "Logoff") {
      return S_OK;
    }
    if (member == "Folders") {
      return Give(result, new FoldersObject(nullptr));
    }
    if (member == "GetDefaultFolder") {
      return Give(result, MakeFolderObject(mailbox.FindDefault(arguments.Number(0))));
    }
    if (member == "GetFolderFromID") {
      Folder* const folder = mailbox.FindFolder(NarrowUtf8(arguments.Text(0)));
      const bool isOfStore =
          folder != nullptr && folder->store->id == NarrowUtf8(arguments.Text(1));
      return Give(result, isOfStore ? MakeFolderObject(folder) : nullptr);
    }
    return DISP_E_MEMBERNOTFOUND;
  }
};

class ApplicationObject final : public PeerObject {
 public:
  ApplicationObject() : PeerObject("Application") {}

 private:
  HRESULT Call(const std::string& member, const Arguments& arguments, VARIANT* result) override {
    if (member == "Version") {
      return Give(result, CallGate::Instance().mailbox.version);
    }
    const bool isNameSpace =
        member == "Session" || (member == "GetNamespace" && arguments.Text(0) == L"MAPI");
    return isNameSpace ? Give(result, MakeNameSpace()) : DISP_E_MEMBERNOTFOUND;
  }
};

IDispatch* MakeFolderObject(Folder* folder) {
  return folder != nullptr ? new FolderObject(folder) : nullptr;
}

IDispatch* MakeNameSpace() {
  return new NameSpaceObject();
}

// Lives as long as the program; only what it makes is counted.
class Factory final : public IClassFactory {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    *out = iid == IID_IUnknown || iid == IID_IClassFactory ? this : nullptr;
    return *out != nullptr ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** out) override {
    *out = nullptr;
    if (outer != nullptr) {
      return CLASS_E_NOAGGREGATION;
    }
    if (const auto result = CallGate::Instance().Enter("CreateInstance")) {
      return *result == S_OK ? E_OUTOFMEMORY : *result;
    }
    const ComPtr<IDispatch> application(MakeApplication());
    return application->QueryInterface(iid, out);
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

}  // namespace

IDispatch* MakeApplication() {
  return new ApplicationObject();
}

IUnknown* MakeFactory() {
  static Factory factory;
  return &factory;
}

}  // namespace postmarker::peer
