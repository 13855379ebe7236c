#include "ExtensionMessages.h"

#include <nlohmann/json.hpp>
#include <utility>

namespace postmarker::bridge {
namespace {

using Json = nlohmann::json;

// Answers have lists in items in a list in an object. What is nested deeper is dropped unread.
constexpr int kMaxDepth = 5;

// The member with this name; null if there is none.
const Json& Member(const Json& object, const char* name) {
  static const Json kNull;
  const auto found = object.find(name);
  return found == object.end() ? kNull : *found;
}

// False, with *texts unchanged, for what is no list of texts.
bool ReadTexts(const Json& json, std::vector<std::string>* texts) {
  if (!json.is_array()) {
    return false;
  }
  std::vector<std::string> read;
  read.reserve(json.size());
  for (const Json& text : json) {
    if (!text.is_string()) {
      return false;
    }
    read.push_back(text.get<std::string>());
  }
  *texts = std::move(read);
  return true;
}

bool ReadText(const Json& json, std::string* text) {
  if (!json.is_string()) {
    return false;
  }
  *text = json.get<std::string>();
  return true;
}

std::optional<Item> ReadObject(const Json& json) {
  FolderItem folder;
  if (ReadTexts(Member(json, "path"), &folder.path) && ReadText(Member(json, "id"), &folder.id) &&
      ReadText(Member(json, "store"), &folder.store)) {
    const Json& first = Member(json, "first");
    folder.first = !first.is_boolean() || first.get<bool>();
    return folder;
  }
  SentItem sent;
  if (ReadTexts(Member(json, "to"), &sent.to) && ReadTexts(Member(json, "cc"), &sent.cc) &&
      ReadTexts(Member(json, "bcc"), &sent.bcc)) {
    return sent;
  }
  return std::nullopt;
}

std::optional<Item> ReadItem(const Json& json) {
  if (json.is_object()) {
    return ReadObject(json);
  }
  if (json.is_string()) {
    return json.get<std::string>();
  }
  if (json.is_number_integer()) {
    // A number above the limit of the type becomes a negative one, which no count is.
    return json.get<int64_t>();
  }
  return std::nullopt;
}

void ReadItems(const Json& list, Answer* answer) {
  answer->items.reserve(list.size());
  for (const Json& json : list) {
    if (std::optional<Item> item = ReadItem(json)) {
      answer->items.push_back(*std::move(item));
    } else {
      ++answer->unusable;
    }
  }
}

Json Request(uint64_t id, std::string_view command) {
  return {{"id", id}, {"command", command}};
}

// Texts that are no UTF-8 can't come from here; a replacement is better than an exception.
std::string Text(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace

std::optional<Answer> ParseAnswer(std::string_view message) {
  const auto isShallow = [](int depth, Json::parse_event_t /*event*/, Json& /*json*/) {
    return depth <= kMaxDepth;
  };
  const Json json = Json::parse(message, isShallow, false);
  if (!json.is_object()) {
    return std::nullopt;
  }
  const Json& id = Member(json, "id");
  if (!id.is_number_unsigned()) {
    return std::nullopt;
  }
  Answer answer;
  answer.id = id.get<uint64_t>();
  if (std::string error; ReadText(Member(json, "error"), &error)) {
    answer.error = std::move(error);
    answer.done = true;
    return answer;
  }
  const Json& done = Member(json, "done");
  const Json& items = Member(json, "items");
  if (!done.is_boolean() || !items.is_array()) {
    return std::nullopt;
  }
  answer.done = done.get<bool>();
  ReadItems(items, &answer);
  return answer;
}

std::string RequestText(uint64_t id, std::string_view command) {
  return Text(Request(id, command));
}

std::string NewFolderRequestText(uint64_t id, const std::vector<std::string>& path,
                                 const std::string& store) {
  Json request = Request(id, "AddNewFolder");
  request["path"] = path;
  request["store"] = store;
  return Text(request);
}

std::string MoveRequestText(uint64_t id, bool move, const std::string& folderId) {
  Json request = Request(id, "SetMoveMails");
  request["move"] = move;
  request["folder"] = folderId;
  return Text(request);
}

}  // namespace postmarker::bridge
