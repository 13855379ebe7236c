// The platform's interfaces to the mail store, to MIME messages and to Windows Contacts, in the
// order in which they are published. The number at the end of a line is the slot in the table of
// functions; slots 0 to 2 are those of IUnknown. Functions that nothing here calls and whose
// arguments are of other interfaces take them as untyped pointers; where only the place matters
// they are declared without arguments.
#pragma once

#include <windows.h>

#include <objidl.h>
#include <unknwn.h>

#include "clients/storeapi/StoreFolderProps.h"

namespace postmarker::storeapi {

// Objects behind interfaces are released and never deleted, as IUnknown itself has it.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

// The store.

inline constexpr CLSID kStoreNamespaceClass = {
    0xE70C92A9, 0x4BFD, 0x11D1, {0x8A, 0x95, 0x00, 0xC0, 0x4F, 0xB9, 0x51, 0xF3}};
inline constexpr IID kStoreNamespaceId = {
    0xE70C92AA, 0x4BFD, 0x11D1, {0x8A, 0x95, 0x00, 0xC0, 0x4F, 0xB9, 0x51, 0xF3}};
inline constexpr IID kStoreFolderId = {
    0xE70C92AC, 0x4BFD, 0x11D1, {0x8A, 0x95, 0x00, 0xC0, 0x4F, 0xB9, 0x51, 0xF3}};

using FolderId = DWORD;
using MessageId = DWORD;
struct StoreEnumeration;  // what a handle of an enumeration points to
using EnumHandle = StoreEnumeration*;
struct BatchLock;
using BatchLockHandle = BatchLock*;

// "Invalid structure size".
inline constexpr auto kWrongStructSize = static_cast<HRESULT>(0x800CCF67);

inline constexpr MessageId kFirstMessage = 0xFFFFFFFF;
inline constexpr DWORD kFastMessageProps = 1;
inline constexpr DWORD kMoveMessages = 1;  // for CopyMoveMessages

// What the store tells about a message. It owns the texts until the record is given back.
struct MessageProps {
  DWORD cbSize = sizeof(MessageProps);
  DWORD dwReserved = 0;
  MessageId dwMessageId = 0;
  DWORD dwLanguage = 0;
  DWORD dwState = 0;
  DWORD cbMessage = 0;
  DWORD priority = 0;
  FILETIME ftReceived = {};
  FILETIME ftSent = {};
  char* pszSubject = nullptr;
  char* pszDisplayTo = nullptr;
  char* pszDisplayFrom = nullptr;
  char* pszNormalSubject = nullptr;
  DWORD dwFlags = 0;
  IStream* pStmOffsetTable = nullptr;
};
static_assert(sizeof(MessageProps) == (sizeof(void*) == 4 ? 68 : 96));

struct MessageIdList {
  DWORD cbSize = sizeof(MessageIdList);
  DWORD cMsgs = 0;
  MessageId* prgdwMsgId = nullptr;
};

struct IStoreFolder : IUnknown {
  virtual HRESULT __stdcall GetFolderProps(DWORD reserved, StoreFolderProps* props) = 0;  // 3
  virtual HRESULT __stdcall GetMessageProps(MessageId message, DWORD flags,
                                            MessageProps* props) = 0;   // 4
  virtual HRESULT __stdcall FreeMessageProps(MessageProps* props) = 0;  // 5
  virtual HRESULT __stdcall DeleteMessages(MessageIdList* messages, DWORD reserved,
                                           IUnknown* progress) = 0;  // 6
  virtual HRESULT __stdcall SetLanguage(DWORD language, DWORD reserved,
                                        MessageIdList* messages) = 0;  // 7
  virtual HRESULT __stdcall MarkMessagesAsRead(BOOL read, DWORD reserved,
                                               MessageIdList* messages) = 0;  // 8
  virtual HRESULT __stdcall SetFlags(MessageIdList* messages, DWORD state, DWORD mask,
                                     DWORD* newFlags) = 0;                                  // 9
  virtual HRESULT __stdcall OpenMessage(MessageId message, REFIID iid, void** object) = 0;  // 10
  virtual HRESULT __stdcall SaveMessage(REFIID iid, void* object, DWORD flags,
                                        MessageId* message) = 0;                    // 11
  virtual HRESULT __stdcall BatchLock(DWORD reserved, BatchLockHandle* lock) = 0;   // 12
  virtual HRESULT __stdcall BatchFlush(DWORD reserved, BatchLockHandle lock) = 0;   // 13
  virtual HRESULT __stdcall BatchUnlock(DWORD reserved, BatchLockHandle lock) = 0;  // 14
  virtual HRESULT __stdcall CreateStream(BatchLockHandle lock, DWORD reserved, IStream** stream,
                                         MessageId* message) = 0;  // 15
  virtual HRESULT __stdcall CommitStream(BatchLockHandle lock, DWORD flags, DWORD messageFlags,
                                         IStream* stream, MessageId message,
                                         IUnknown* mimeMessage) = 0;                  // 16
  virtual HRESULT __stdcall RegisterNotification(DWORD reserved, HWND window) = 0;    // 17
  virtual HRESULT __stdcall UnregisterNotification(DWORD reserved, HWND window) = 0;  // 18
  virtual HRESULT __stdcall Compact(DWORD reserved) = 0;                              // 19
  virtual HRESULT __stdcall GetFirstMessage(DWORD flags, DWORD messageFlags, MessageId first,
                                            MessageProps* props, EnumHandle* handle) = 0;  // 20
  virtual HRESULT __stdcall GetNextMessage(EnumHandle handle, DWORD flags,
                                           MessageProps* props) = 0;  // 21
  virtual HRESULT __stdcall GetMessageClose(EnumHandle handle) = 0;   // 22
};

struct IStoreNamespace : IUnknown {
  virtual HRESULT __stdcall Initialize(HWND owner, DWORD reserved) = 0;  // 3
  virtual HRESULT __stdcall GetDirectory(char* path, DWORD room) = 0;    // 4
  virtual HRESULT __stdcall OpenSpecialFolder(int sfType, DWORD reserved,
                                              IStoreFolder** folder) = 0;  // 5
  virtual HRESULT __stdcall OpenFolder(FolderId id, DWORD reserved,
                                       IStoreFolder** folder) = 0;  // 6
  virtual HRESULT __stdcall CreateFolder(FolderId parent, const char* name, DWORD reserved,
                                         FolderId* id) = 0;                                   // 7
  virtual HRESULT __stdcall RenameFolder(FolderId id, DWORD reserved, const char* name) = 0;  // 8
  virtual HRESULT __stdcall MoveFolder(FolderId id, FolderId parent, DWORD reserved) = 0;     // 9
  virtual HRESULT __stdcall DeleteFolder(FolderId id, DWORD reserved) = 0;                    // 10
  virtual HRESULT __stdcall GetFolderProps(FolderId id, DWORD reserved,
                                           StoreFolderProps* props) = 0;  // 11
  virtual HRESULT __stdcall CopyMoveMessages(IStoreFolder* source, IStoreFolder* target,
                                             MessageIdList* messages, DWORD flags,
                                             DWORD flagsRemove, IUnknown* progress) = 0;  // 12
  virtual HRESULT __stdcall RegisterNotification(DWORD reserved, HWND window) = 0;        // 13
  virtual HRESULT __stdcall UnregisterNotification(DWORD reserved, HWND window) = 0;      // 14
  virtual HRESULT __stdcall CompactAll(DWORD reserved) = 0;                               // 15
  virtual HRESULT __stdcall GetFirstSubFolder(FolderId parent, StoreFolderProps* props,
                                              EnumHandle* handle) = 0;                         // 16
  virtual HRESULT __stdcall GetNextSubFolder(EnumHandle handle, StoreFolderProps* props) = 0;  // 17
  virtual HRESULT __stdcall GetSubFolderClose(EnumHandle handle) = 0;                          // 18
};

// MIME messages.

inline constexpr CLSID kMimeMessageClass = {
    0xFD853CE3, 0x7F86, 0x11D0, {0x82, 0x52, 0x00, 0xC0, 0x4F, 0xD8, 0x5A, 0xB4}};
inline constexpr CLSID kMimeAllocatorClass = {
    0xFD853CDD, 0x7F86, 0x11D0, {0x82, 0x52, 0x00, 0xC0, 0x4F, 0xD8, 0x5A, 0xB4}};
inline constexpr IID kMimeMessageId = {
    0xFD853CD5, 0x7F86, 0x11D0, {0x82, 0x52, 0x00, 0xC0, 0x4F, 0xD8, 0x5A, 0xB4}};
inline constexpr IID kMimeBodyId = {
    0xC558834C, 0x7F86, 0x11D0, {0x82, 0x52, 0x00, 0xC0, 0x4F, 0xD8, 0x5A, 0xB4}};
inline constexpr IID kMimeAllocatorId = {
    0xC5588351, 0x7F86, 0x11D0, {0x82, 0x52, 0x00, 0xC0, 0x4F, 0xD8, 0x5A, 0xB4}};

struct MimeBody;
using BodyHandle = MimeBody*;

// The root body, for functions that take a handle.
inline BodyHandle RootBody() {
  return reinterpret_cast<BodyHandle>(static_cast<INT_PTR>(-1));
}

inline constexpr DWORD kReuseStorage = 2;  // for Commit

// IPersistStreamInit: where both other interfaces begin.
struct IMimePersist : IUnknown {
  virtual HRESULT __stdcall GetClassID(CLSID* id) = 0;                   // 3
  virtual HRESULT __stdcall IsDirty() = 0;                               // 4
  virtual HRESULT __stdcall Load(IStream* stream) = 0;                   // 5
  virtual HRESULT __stdcall Save(IStream* stream, BOOL clearDirty) = 0;  // 6
  virtual HRESULT __stdcall GetSizeMax(ULARGE_INTEGER* size) = 0;        // 7
  virtual HRESULT __stdcall InitNew() = 0;                               // 8
};

// The message, as far as its tree of bodies goes.
struct IMimeMessage : IMimePersist {
  virtual HRESULT __stdcall GetMessageSource() = 0;                                        // 9
  virtual HRESULT __stdcall GetMessageSize() = 0;                                          // 10
  virtual HRESULT __stdcall LoadOffsetTable() = 0;                                         // 11
  virtual HRESULT __stdcall SaveOffsetTable() = 0;                                         // 12
  virtual HRESULT __stdcall GetFlags() = 0;                                                // 13
  virtual HRESULT __stdcall Commit(DWORD flags) = 0;                                       // 14
  virtual HRESULT __stdcall HandsOffStorage() = 0;                                         // 15
  virtual HRESULT __stdcall BindToObject(BodyHandle body, REFIID iid, void** object) = 0;  // 16
};

struct IMimeBody : IMimePersist {
  virtual HRESULT __stdcall GetPropInfo() = 0;                                               // 9
  virtual HRESULT __stdcall SetPropInfo() = 0;                                               // 10
  virtual HRESULT __stdcall GetProp(const char* name, DWORD flags, PROPVARIANT* value) = 0;  // 11
  virtual HRESULT __stdcall SetProp(const char* name, DWORD flags, PROPVARIANT* value) = 0;  // 12
};

// An IMalloc (slots 3 to 8) and, after these, functions that free records of the MIME interfaces.
using IMimeAllocator = IMalloc;

// Windows Contacts.

inline constexpr CLSID kContactManagerClass = {
    0x7165C8AB, 0xAF88, 0x42BD, {0x86, 0xFD, 0x53, 0x10, 0xB4, 0x28, 0x5A, 0x02}};
inline constexpr IID kContactManagerId = {
    0xAD553D98, 0xDEB1, 0x474A, {0x8E, 0x17, 0xFC, 0x0C, 0x20, 0x75, 0xB7, 0x38}};
inline constexpr IID kContactCollectionId = {
    0xB6AFA338, 0xD779, 0x11D9, {0x8B, 0xDE, 0xF6, 0x6B, 0xAD, 0x1E, 0x3F, 0x3A}};
inline constexpr IID kContactId = {
    0xF941B671, 0xBDA7, 0x4F77, {0x88, 0x4A, 0xF4, 0x64, 0x62, 0xF2, 0x26, 0xA7}};
inline constexpr IID kContactPropertiesId = {
    0x70DD27DD, 0x5CBD, 0x46E8, {0xBE, 0xF0, 0x23, 0xB6, 0xB3, 0x46, 0x28, 0x8F}};

struct IContact : IUnknown {
  virtual HRESULT __stdcall GetContactID(wchar_t* text, DWORD room, DWORD* needed) = 0;  // 3
  virtual HRESULT __stdcall GetPath(wchar_t* text, DWORD room, DWORD* needed) = 0;       // 4
  virtual HRESULT __stdcall CommitChanges(DWORD flags) = 0;                              // 5
};

// The functions after GetString are not declared.
struct IContactProperties : IUnknown {
  virtual HRESULT __stdcall GetString(const wchar_t* name, DWORD flags, wchar_t* text, DWORD room,
                                      DWORD* needed) = 0;  // 3
};

struct IContactCollection : IUnknown {
  virtual HRESULT __stdcall Reset() = 0;                         // 3
  virtual HRESULT __stdcall Next() = 0;                          // 4
  virtual HRESULT __stdcall GetCurrent(IContact** contact) = 0;  // 5
};

struct IContactManager : IUnknown {
  virtual HRESULT __stdcall Initialize(const wchar_t* application,
                                       const wchar_t* version) = 0;                     // 3
  virtual HRESULT __stdcall Load(const wchar_t* id, IContact** contact) = 0;            // 4
  virtual HRESULT __stdcall MergeContactIDs() = 0;                                      // 5
  virtual HRESULT __stdcall GetMeContact(IContact** contact) = 0;                       // 6
  virtual HRESULT __stdcall SetMeContact(IContact* contact) = 0;                        // 7
  virtual HRESULT __stdcall GetContactCollection(IContactCollection** collection) = 0;  // 8
};

#pragma GCC diagnostic pop

}  // namespace postmarker::storeapi
