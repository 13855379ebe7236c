// The texts that cross the pipe to Thunderbird's extension.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "postmarker/MailFolderRef.h"

namespace postmarker::thunderbird {

// A record's fields stand between runs of "#". Deliberate: a run of any length is one separator, as
// extensions differ in how many they send; so an empty field vanishes and moves the later ones to
// the left, and a "#" within a folder's name splits it. Nothing escapes the character. Fields
// after those that a record has are ignored.

// The message that ends the reply to a command.
std::wstring EndMarker(std::wstring_view command);

// One folder of a list: path, the two ids, and the flag, which is 1 but for the word "false" in any
// case. What is missing is empty; a missing flag is 1.
MailFolderRef ParseFolderRecord(std::wstring_view text);

// The answer to a new folder: path and the two ids. The flag is the parent's.
MailFolderRef ParseNewFolderRecord(std::wstring_view text, uint32_t parentFlag);

// What is sent for a new folder: its path, and the id of the parent's store.
std::wstring NewFolderRequest(const MailFolderRef& parent, std::wstring_view name);

// A number as C reads it: white space, a sign, digits, and whatever follows. 0 if there is none;
// the nearest 32-bit number if it is too large.
int32_t ParseCount(std::wstring_view text);

// The addresses of a list of recipients, in lower case and without the display names.
std::vector<std::wstring> ParseAddresses(std::wstring_view text);

}  // namespace postmarker::thunderbird
