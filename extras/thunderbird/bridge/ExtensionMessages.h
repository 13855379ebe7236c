// The messages between the extension and the bridge, in JSON. docs/formats/thunderbird-bridge.md
// describes them. Texts are UTF-8.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace postmarker::bridge {

struct FolderItem {
  std::vector<std::string> path;  // the store's name, then those of the levels
  std::string id;
  std::string store;
  bool first = true;

  friend bool operator==(const FolderItem&, const FolderItem&) = default;
};

struct SentItem {
  std::vector<std::string> to;
  std::vector<std::string> cc;
  std::vector<std::string> bcc;

  friend bool operator==(const SentItem&, const SentItem&) = default;
};

// A text is an address, a number a count.
using Item = std::variant<FolderItem, SentItem, std::string, int64_t>;

struct Answer {
  uint64_t id = 0;
  std::vector<Item> items;
  size_t unusable = 0;  // items of no known form, which are left out
  bool done = false;
  std::optional<std::string> error;  // with it there are no items, and `done` is true
};

// The answer that a message is; none if it is not one. Any bytes will do.
std::optional<Answer> ParseAnswer(std::string_view message);

// Requests. `command` is the name of a command without arguments, "Next" or "Stop".
std::string RequestText(uint64_t id, std::string_view command);
std::string NewFolderRequestText(uint64_t id, const std::vector<std::string>& path,
                                 const std::string& store);
std::string MoveRequestText(uint64_t id, bool move, const std::string& folderId);

}  // namespace postmarker::bridge
