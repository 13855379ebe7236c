// What fuzz targets share.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace postmarker::fuzz {

inline std::string_view Bytes(const uint8_t* data, size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

// A finding, where something that always holds does not.
inline void Require(bool holds) {
  if (!holds) {
    std::abort();
  }
}

}  // namespace postmarker::fuzz
