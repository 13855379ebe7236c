// Databases whose checksums are right whatever was done to them.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>

#include "ese/PageFile.h"
#include "support/EseFile.h"

namespace postmarker::fuzz {

// The size of pages that the header tells, 0 if it can't be one.
inline size_t PageSizeOf(const std::string& file) {
  uint32_t size = 0;
  if (file.size() >= ese::kMinPageBytes) {
    std::memcpy(&size, file.data() + 236, sizeof(size));
  }
  return ese::IsPageSize(size) ? size : 0;
}

// Makes the checksums of headers and pages right.
inline void Seal(std::string* file) {
  const size_t pageSize = PageSizeOf(*file);
  if (pageSize == 0) {
    return;
  }
  for (size_t start = 0; start + pageSize <= file->size(); start += pageSize) {
    std::string page = file->substr(start, pageSize);
    const size_t number = start / pageSize;
    if (number < 2) {
      test::EseFileBuilder::SealHeader(&page);
    } else {
      test::SealEsePage(&page, static_cast<uint32_t>(number - 1));
    }
    file->replace(start, pageSize, page);
  }
}

}  // namespace postmarker::fuzz
