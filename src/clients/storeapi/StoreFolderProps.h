// The records in which the store tells about a folder. Stores differ in the form that they accept
// and tell the forms apart by the size in the first field.
#pragma once

#include <cstddef>
#include <cstdint>

namespace postmarker::storeapi {

// The room for a folder's name, in bytes of the code page, terminator included.
inline constexpr size_t kFolderNameRoom = 256;

// The form in which this program works.
struct StoreFolderProps {
  uint32_t cbSize = sizeof(StoreFolderProps);
  uint32_t dwFolderId = 0;
  uint32_t cSubFolders = 0;
  int32_t sfType = 0;
  uint32_t cUnread = 0;
  uint32_t cMessage = 0;
  char szName[kFolderNameRoom] = {};
};
static_assert(sizeof(StoreFolderProps) == 280 && offsetof(StoreFolderProps, szName) == 24);

// The form of stores whose folder ids have 64 bits.
struct StoreFolderPropsLong {
  uint32_t cbSize = sizeof(StoreFolderPropsLong);
  uint32_t reserved = 0;
  uint64_t dwFolderId = 0;
  uint32_t cSubFolders = 0;
  int32_t sfType = 0;
  uint32_t cUnread = 0;
  uint32_t cMessage = 0;
  char szName[kFolderNameRoom] = {};
};
static_assert(sizeof(StoreFolderPropsLong) == 288 &&
              offsetof(StoreFolderPropsLong, dwFolderId) == 8 &&
              offsetof(StoreFolderPropsLong, cSubFolders) == 16 &&
              offsetof(StoreFolderPropsLong, sfType) == 20 &&
              offsetof(StoreFolderPropsLong, cUnread) == 24 &&
              offsetof(StoreFolderPropsLong, cMessage) == 28 &&
              offsetof(StoreFolderPropsLong, szName) == 32);

// The long form in the other one. Of the id the lower half is kept, which is what the store's
// functions take.
StoreFolderProps ToShortForm(const StoreFolderPropsLong& props);

}  // namespace postmarker::storeapi
