// The id of a mail store, searched in the bytes of the client's own files. It takes no engine, and
// works while the client holds the file.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace postmarker {

// An id is this many bytes. One of zeros alone is none.
inline constexpr size_t kStoreIdBytes = 8;

// Where a store of Outlook Express ("Folders.dbx") has its id.
inline constexpr size_t kDbxStoreIdOffset = 0x24BC;

// The id in the bytes of a database of Windows Mail or Windows Live Mail: what follows the first
// occurrence of the user data row of "Folders". Nothing if there is no such row, if its id doesn't
// end before the last byte of the file, or if it is zero; later occurrences are not looked at.
std::optional<std::string> FindStoreId(std::string_view file);

// The id in the bytes of "Folders.dbx". Nothing if the file ends before it, or if it is zero.
std::optional<std::string> DbxStoreId(std::string_view file);

// FindStoreId in the file at `path` or, if that can't be mapped, in its backup. Paths are UTF-16. A
// file without an id is not looked for in the backup.
std::optional<std::string> FindStoreIdInFile(const std::wstring& path,
                                             const std::wstring& backupPath);

// DbxStoreId of the file at `path`.
std::optional<std::string> ReadDbxStoreId(const std::wstring& path);

}  // namespace postmarker
