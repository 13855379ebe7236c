#include "Record.h"

#include <cstdint>
#include <nlohmann/json.hpp>
#include <utility>

namespace postmarker::install {
namespace {

using Json = nlohmann::json;

constexpr std::string_view kDigits = "0123456789abcdef";

Json ToJson(const Content& content) {
  if (!content) {
    return nullptr;
  }
  std::string hex;
  hex.reserve(2 * content->size());
  for (const char c : *content) {
    const auto byte = static_cast<unsigned char>(c);
    hex.push_back(kDigits[byte >> 4]);
    hex.push_back(kDigits[byte & 0xF]);
  }
  return hex;
}

bool ReadContent(const Json& json, Content* content) {
  content->reset();
  if (json.is_null()) {
    return true;
  }
  const auto* hex = json.get_ptr<const std::string*>();
  if (hex == nullptr || hex->size() % 2 != 0) {
    return false;
  }
  std::string bytes;
  bytes.reserve(hex->size() / 2);
  for (size_t i = 0; i < hex->size(); i += 2) {
    const size_t high = kDigits.find((*hex)[i]);
    const size_t low = kDigits.find((*hex)[i + 1]);
    if (high == std::string_view::npos || low == std::string_view::npos) {
      return false;
    }
    bytes.push_back(static_cast<char>(high << 4 | low));
  }
  *content = std::move(bytes);
  return true;
}

bool ReadTexts(const Json& json, std::vector<std::string>* texts) {
  texts->clear();
  for (const Json& text : json) {
    if (!text.is_string()) {
      return false;
    }
    texts->push_back(text.get<std::string>());
  }
  return json.is_array();
}

bool ReadEntry(const Json& json, Entry* entry) {
  return json.is_object() && json.contains("before") && json.contains("after") &&
         json.contains("made") && ReadContent(json["before"], &entry->before) &&
         ReadContent(json["after"], &entry->after) && ReadTexts(json["made"], &entry->made);
}

}  // namespace

std::string RecordText(const Record& record) {
  Json places = Json::object();
  for (const auto& [name, entry] : record.entries) {
    places[name] = {
        {"before", ToJson(entry.before)}, {"after", ToJson(entry.after)}, {"made", entry.made}};
  }
  const Json json = {{"target", record.target}, {"made", record.made}, {"places", places}};
  // Names are UTF-8 as a rule; a name that is not must not end the program.
  return json.dump(1, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::optional<Record> ParseRecord(std::string_view text) {
  const Json json = Json::parse(text, nullptr, false);
  if (!json.is_object() || !json.contains("target") || !json.contains("made") ||
      !json.contains("places") || !json["target"].is_string() || !json["places"].is_object()) {
    return std::nullopt;
  }
  Record record;
  record.target = json["target"].get<std::string>();
  if (!ReadTexts(json["made"], &record.made)) {
    return std::nullopt;
  }
  for (const auto& [name, place] : json["places"].items()) {
    if (!ReadEntry(place, &record.entries[name])) {
      return std::nullopt;
    }
  }
  return record;
}

}  // namespace postmarker::install
