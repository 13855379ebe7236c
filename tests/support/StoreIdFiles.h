// What tests of store ids put into files.
#pragma once

#include <string>
#include <string_view>

namespace postmarker::test {

// What stands before the id in a database of Windows Mail or Windows Live Mail.
inline constexpr char kStoreIdMarkBytes[] = {0x40, 0x01, 'F', 0, 'o', 0, 'l', 0, 'd', 0,
                                             'e',  0,    'r', 0, 's', 0, 0,   0, 0x01};
inline constexpr std::string_view kStoreIdMark(kStoreIdMarkBytes, sizeof(kStoreIdMarkBytes));

// A "Folders.dbx" that ends with its id.
inline std::string MakeDbxFile(std::string_view id) {
  return std::string(0x24BC, 'd').append(id);
}

}  // namespace postmarker::test
