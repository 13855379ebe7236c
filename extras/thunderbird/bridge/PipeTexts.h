// The texts of the named pipe's protocol. It has no way to escape a character and no room for more
// than 1,023 UTF-16 units in a message: what can't be expressed has no text.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "ExtensionMessages.h"

namespace postmarker::bridge {

// UTF-16 units of a message.
inline constexpr size_t kMaxPipeText = 1023;

// The end of the reply to a command.
std::wstring EndText(std::string_view command);

// The record of a folder in a list of folders.
std::optional<std::wstring> FolderText(const FolderItem& folder);

// The record of a folder that was made.
std::optional<std::wstring> NewFolderText(const FolderItem& folder);

// The message for a contact's address.
std::optional<std::wstring> AddressText(std::string_view address);

// The message for a number of sent messages.
std::optional<std::wstring> CountText(int64_t count);

// Appends the messages for the recipients of a header: their addresses with ", " between them, in
// as many messages as they need. Returns how many entries have no text. Names are left out: a
// reader takes an address without angle brackets before one with them for a part of the name.
size_t AppendRecipientTexts(const std::vector<std::string>& entries,
                            std::vector<std::wstring>* texts);

// What a client asks for: the new folder's path, its own name last, and the store. The id is empty.
// None for a text of another form, and for a folder whose record would have no text.
std::optional<FolderItem> ParseNewFolderText(std::wstring_view text);

// Is it an id as the extension makes them for folders.
bool IsFolderId(std::string_view text);

}  // namespace postmarker::bridge
