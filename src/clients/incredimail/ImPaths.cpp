#include "clients/incredimail/ImPaths.h"

namespace postmarker {
namespace {

#if defined(_WIN32)
constexpr wchar_t kSeparator = L'\\';
#else
constexpr wchar_t kSeparator = L'/';
#endif

std::wstring Folder(const std::wstring& parent, const wchar_t* name) {
  return parent + kSeparator + name + kSeparator;
}

}  // namespace

std::wstring MessageStoreFolder(const std::wstring& identityDirectory) {
  return Folder(identityDirectory, L"Message Store");
}

std::wstring ContainersDatabasePath(const std::wstring& identityDirectory) {
  return MessageStoreFolder(identityDirectory) + L"Containers.db";
}

std::wstring FolderFilePath(const std::wstring& identityDirectory) {
  return MessageStoreFolder(identityDirectory) + L"Folders.imm";
}

std::wstring SentHeadersPath(const std::wstring& identityDirectory) {
  return MessageStoreFolder(identityDirectory) + kSentItems + L".imh";
}

std::wstring AddressDatabasePath(const std::wstring& identityDirectory) {
  return Folder(identityDirectory, L"AddressBook") + L"AddrBook.db3";
}

std::wstring AddressFilePath(const std::wstring& identityDirectory) {
  return Folder(identityDirectory, L"AddressBook") + L"AddressBook.imb";
}

std::wstring AttachmentsFolder(const std::wstring& storePath) {
  return storePath + L"Attachments" + kSeparator;
}

}  // namespace postmarker
