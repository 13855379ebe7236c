#include "analysis/words/TagAttributes.h"

#include <algorithm>
#include <array>
#include <string>

#include "support/Bytes.h"

namespace postmarker {
namespace {

struct TagRow {
  std::string_view name;
  bool withValue;
};

constexpr std::array<TagRow, 10> kTags = {{
    {"body", true},
    {"meta", true},
    {"font", true},
    {"style", true},
    {"div", true},
    {"table", true},
    {"tr", true},
    {"td", true},
    {"strong", true},
    {"img", false},
}};

size_t SkipSpace(std::string_view tag, size_t position) {
  while (position < tag.size() && Is(tag[position], kSpaceByte)) {
    ++position;
  }
  return position;
}

size_t SkipToSpace(std::string_view tag, size_t position) {
  while (position < tag.size() && !Is(tag[position], kSpaceByte)) {
    ++position;
  }
  return position;
}

const TagRow* FindTag(std::string_view name) {
  const auto* const row = std::find_if(kTags.begin(), kTags.end(), [&](const TagRow& candidate) {
    return EqualNoCase(candidate.name, name);
  });
  return row == kTags.end() ? nullptr : row;
}

// Reads a value and moves past it: from a double quote to the next one, or else up to white
// space.
std::string_view TakeValue(std::string_view tag, size_t* position) {
  const size_t start = *position;
  if (start < tag.size() && tag[start] == '"') {
    const size_t close = std::min(tag.find('"', start + 1), tag.size());
    *position = std::min(close + 1, tag.size());
    return tag.substr(start + 1, close - start - 1);
  }
  *position = SkipToSpace(tag, start);
  return tag.substr(start, *position - start);
}

}  // namespace

void CollectTagAttributes(std::string_view tag, TokenCountMap* tokens) {
  if (tag.starts_with('<')) {
    tag.remove_prefix(1);
  }
  if (tag.starts_with('/')) {
    return;
  }
  const size_t nameStart = SkipSpace(tag, 0);
  size_t position = SkipToSpace(tag, nameStart);
  const TagRow* const row = FindTag(tag.substr(nameStart, position - nameStart));
  if (row == nullptr) {
    return;
  }
  std::string key;
  while (position < tag.size()) {
    position = SkipSpace(tag, position);
    const size_t start = position;
    while (position < tag.size() && tag[position] != '=' && !Is(tag[position], kSpaceByte)) {
      ++position;
    }
    key.assign("html*").append(row->name);
    if (position > start) {
      key.append("+").append(tag.substr(start, position - start));
    }
    if (position < tag.size() && tag[position] == '=') {
      ++position;
      const std::string_view value = TakeValue(tag, &position);
      if (row->withValue && !value.empty()) {
        key.append("+").append(value);
      }
    }
    tokens->Add(key, 1);
  }
}

}  // namespace postmarker
