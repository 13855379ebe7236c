// What an installation writes down, so that it can be undone; a file in JSON.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Place.h"

namespace postmarker::install {

// One place: what was there, what was put there, and which of its parents were made for it.
struct Entry {
  Content before;
  Content after;
  std::vector<std::string> made;

  friend bool operator==(const Entry&, const Entry&) = default;
};

struct Record {
  std::string target;                    // what was installed into; UTF-8
  std::vector<std::string> made;         // the record's own parents
  std::map<std::string, Entry> entries;  // by the place's name

  friend bool operator==(const Record&, const Record&) = default;
};

std::string RecordText(const Record& record);

// Nothing for what is no whole record.
std::optional<Record> ParseRecord(std::string_view text);

}  // namespace postmarker::install
