// Where the client keeps the files of one identity.
#pragma once

#include <string>

namespace postmarker {

// In all of them `identityDirectory` is UTF-16 and has no separator at its end. Folders have one.
std::wstring MessageStoreFolder(const std::wstring& identityDirectory);

// The folder database.
std::wstring ContainersDatabasePath(const std::wstring& identityDirectory);

// The older store's list of folders, and the headers of its sent mail.
std::wstring FolderFilePath(const std::wstring& identityDirectory);
std::wstring SentHeadersPath(const std::wstring& identityDirectory);

// The base name of the older store's files of sent mail.
inline constexpr wchar_t kSentItems[] = L"Sent Items";

// The address book as a database, and the older one.
std::wstring AddressDatabasePath(const std::wstring& identityDirectory);
std::wstring AddressFilePath(const std::wstring& identityDirectory);

// The folder of a message store's attachments. `storePath` ends in a separator.
std::wstring AttachmentsFolder(const std::wstring& storePath);

}  // namespace postmarker
