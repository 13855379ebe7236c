// Outlook's object model, as far as it is used: an object of the model is a class, a member of it a
// function of the same name.
//
// Members are called by dispatch id, which works through a proxy without Outlook's type library.
// Each returns the call's HRESULT; out parameters are set on success only. An answer of another
// type than the model promises is DISP_E_TYPEMISMATCH, a missing object E_POINTER. For the
// apartment that the application was reached in; a call blocks until Outlook answers.
#pragma once

#include <windows.h>

#include <oaidl.h>

#include <initializer_list>
#include <string>

#include "support/ComPtr_win.h"
#include "support/Variant_win.h"

namespace postmarker {

// What `Class` answers, by Outlook's published numbers.
enum class OutlookClass : LONG { kFolder = 2, kContact = 40, kMail = 43 };

// The default folders and types of items, by Outlook's published numbers.
inline constexpr LONG kOlFolderDeletedItems = 3;
inline constexpr LONG kOlFolderSentMail = 5;
inline constexpr LONG kOlFolderInbox = 6;
inline constexpr LONG kOlFolderContacts = 10;
inline constexpr LONG kOlMailItem = 0;

class OutlookObject {
 public:
  explicit operator bool() const { return static_cast<bool>(m_object); }

  // Makes this the object behind `object`, with a reference of its own. E_POINTER for null.
  HRESULT Attach(IUnknown* object);

  // A reference on the object for the caller. E_POINTER if there is none.
  HRESULT GetDispatch(ComPtr<IDispatch>* dispatch) const;

  HRESULT Class(OutlookClass* value) const;

 protected:
  HRESULT GetNumber(DISPID id, LONG* value) const;
  HRESULT GetText(DISPID id, std::wstring* value) const;
  HRESULT GetMember(DISPID id, OutlookObject* value) const;
  HRESULT GetUnknown(DISPID id, ComPtr<IUnknown>* value) const;

  // Arguments as they stand in the model's documentation.
  HRESULT Call(DISPID id, std::initializer_list<VARIANT> arguments) const;
  HRESULT CallForObject(DISPID id, std::initializer_list<VARIANT> arguments,
                        OutlookObject* value) const;

 private:
  HRESULT Invoke(DISPID id, WORD kind, std::initializer_list<VARIANT> arguments,
                 Variant* result) const;

  ComPtr<IDispatch> m_object;
};

class OutlookRecipient : public OutlookObject {
 public:
  HRESULT Address(std::wstring* value) const;
};

class OutlookRecipients : public OutlookObject {
 public:
  HRESULT Count(LONG* value) const;
  HRESULT Item(LONG index, OutlookRecipient* value) const;
};

// An item of any kind. A member that its kind does not have fails.
class OutlookItem : public OutlookObject {
 public:
  HRESULT MapiObject(ComPtr<IUnknown>* value) const;
  HRESULT Recipients(OutlookRecipients* value) const;
  HRESULT Email1Address(std::wstring* value) const;
};

class OutlookItems : public OutlookObject {
 public:
  HRESULT Count(LONG* value) const;
  HRESULT Item(LONG index, OutlookItem* value) const;
};

class OutlookFolders;

class OutlookFolder : public OutlookObject {
 public:
  HRESULT Name(std::wstring* value) const;
  HRESULT EntryID(std::wstring* value) const;
  HRESULT StoreID(std::wstring* value) const;
  HRESULT DefaultItemType(LONG* value) const;
  // A folder, or the namespace at the top: `Class` tells.
  HRESULT Parent(OutlookFolder* value) const;
  HRESULT Folders(OutlookFolders* value) const;
  HRESULT Items(OutlookItems* value) const;
};

class OutlookFolders : public OutlookObject {
 public:
  HRESULT Count(LONG* value) const;
  HRESULT Item(LONG index, OutlookFolder* value) const;
  HRESULT Add(const std::wstring& name, LONG type, OutlookFolder* value) const;
};

class OutlookNameSpace : public OutlookObject {
 public:
  HRESULT Folders(OutlookFolders* value) const;
  HRESULT GetDefaultFolder(LONG type, OutlookFolder* value) const;
  HRESULT GetFolderFromID(const std::wstring& entryId, const std::wstring& storeId,
                          OutlookFolder* value) const;
  // With password, dialog and new session left out.
  HRESULT Logon(const std::wstring& profile) const;
  HRESULT Logoff() const;
};

class OutlookApplication : public OutlookObject {
 public:
  HRESULT Version(std::wstring* value) const;
  HRESULT Session(OutlookNameSpace* value) const;
  HRESULT GetNamespace(const std::wstring& type, OutlookNameSpace* value) const;
};

}  // namespace postmarker
