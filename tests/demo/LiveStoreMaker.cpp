// Makes a store of Windows Live Mail from a readable source (demo/live-mail.txt).
// Usage: live_store_maker SOURCE TARGET_FILE
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "support/LiveMailStore.h"
#include "support/TempFolder.h"

namespace postmarker::test {
namespace {

std::vector<std::string> SplitLine(const std::string& line) {
  std::vector<std::string> fields;
  std::istringstream stream(line);
  for (std::string field; std::getline(stream, field, '|');) {
    fields.push_back(field);
  }
  return fields;
}

std::u16string Utf16(const std::string& utf8) {
  const std::wstring wide = WidenUtf8(utf8);
  return {wide.begin(), wide.end()};
}

std::string BytesOfDigits(const std::string& digits) {
  std::string bytes;
  for (size_t i = 0; i + 1 < digits.size(); i += 2) {
    bytes.push_back(static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16)));
  }
  return bytes;
}

// False for a line of no known kind.
bool AddLine(const std::vector<std::string>& fields, LiveMailContent* content) {
  const std::string& kind = fields.front();
  if (kind == "store" && fields.size() == 2) {
    content->userData.push_back(LiveStoreIdRow(BytesOfDigits(fields[1])));
  } else if (kind == "folder" && fields.size() == 6) {
    content->folders.push_back({std::stoll(fields[1]), std::stoll(fields[2]), Utf16(fields[5]),
                                static_cast<uint8_t>(std::stoi(fields[3])),
                                static_cast<uint8_t>(std::stoi(fields[4])),
                                Utf16(fields[5] + "\\")});
  } else if (kind == "message" && fields.size() == 4) {
    const auto id = static_cast<int32_t>(content->messages.size() + 1);
    content->messages.push_back(
        {id, std::stoll(fields[1]), id + 1, Utf16(fields[2]), Utf16(fields[3]), 0});
    content->streams.push_back({id, Utf16("Mail\\" + std::to_string(id) + ".eml")});
  } else {
    return false;
  }
  return true;
}

int Make(const char* source, const std::wstring& target) {
  LiveMailContent content = {.hasFolderIndex = true};
  std::ifstream file(source, std::ios::binary);
  for (std::string line; std::getline(file, line);) {
    if (!line.empty() && line.front() != '#' && !AddLine(SplitLine(line), &content)) {
      std::fprintf(stderr, "live_store_maker: not understood: %s\n", line.c_str());
      return 1;
    }
  }
  if (content.folders.empty()) {
    std::fprintf(stderr, "live_store_maker: %s has no folders\n", source);
    return 1;
  }
  WriteFile(target, MakeLiveMailStore(content));
  return 0;
}

}  // namespace
}  // namespace postmarker::test

int main(int argc, char** argv) {
  if (argc != 3) {
    std::fprintf(stderr, "usage: live_store_maker SOURCE TARGET_FILE\n");
    return 2;
  }
  return postmarker::test::Make(argv[1], postmarker::WidenUtf8(argv[2]));
}
