#include "MailFolder.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace postmarker::bench {
namespace {

MailFolder ReadFolder() {
  MailFolder folder;
  const char* const root = std::getenv("POSTMARKER_MAIL");
  if (root == nullptr) {
    return folder;
  }
  for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
    if (entry.is_regular_file() && entry.path().extension() == ".eml") {
      folder.paths.push_back(entry.path().string());
    }
  }
  std::sort(folder.paths.begin(), folder.paths.end());
  for (const std::string& path : folder.paths) {
    std::ifstream file(path, std::ios::binary);
    folder.messages.emplace_back((std::istreambuf_iterator<char>(file)),
                                 std::istreambuf_iterator<char>());
    folder.bytes += folder.messages.back().size();
  }
  return folder;
}

}  // namespace

const MailFolder& Mail() {
  static const MailFolder folder = ReadFolder();
  return folder;
}

}  // namespace postmarker::bench
