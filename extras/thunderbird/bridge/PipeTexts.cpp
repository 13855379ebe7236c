#include "PipeTexts.h"

#include <algorithm>
#include <limits>

#include "support/Text.h"

namespace postmarker::bridge {
namespace {

constexpr std::wstring_view kSeparator = L"######";
constexpr std::wstring_view kEndMarks = L"#####";
constexpr std::wstring_view kStep = L"IncreaseProgressBar";
constexpr std::wstring_view kBetweenRecipients = L", ";
// Two backslashes before the store's name are what folder trees tell a store by.
constexpr std::wstring_view kStoreMark = L"\\\\";
constexpr wchar_t kLevelMark = L'\\';

constexpr size_t kFolderIdLength = 32;
constexpr size_t kMaxLevels = 100;

bool IsControl(wchar_t unit) {
  return unit < L' ' || unit == 0x7F;
}

bool IsName(std::wstring_view name) {
  return !name.empty() && std::none_of(name.begin(), name.end(), [](wchar_t unit) {
    return IsControl(unit) || unit == L'#' || unit == kLevelMark;
  });
}

// Ids go through the code page of whoever reads them, so only these letters are sure to arrive.
bool IsId(std::string_view id) {
  return !id.empty() && std::all_of(id.begin(), id.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::string_view(".-_@:").find(c) != std::string_view::npos;
  });
}

// A message by itself that no reader takes for something else.
bool IsPlainText(std::wstring_view text) {
  return !text.empty() && text.size() <= kMaxPipeText && !text.starts_with(kEndMarks) &&
         text != kStep && std::none_of(text.begin(), text.end(), IsControl);
}

// The address of a recipient, who may have a name before it.
std::wstring_view AddressOf(std::wstring_view entry) {
  const size_t open = entry.rfind(L'<');
  if (open == std::wstring_view::npos || !entry.ends_with(L'>')) {
    return entry;
  }
  return entry.substr(open + 1, entry.size() - open - 2);
}

// Can it stand in a list without being taken for something else than one address.
bool IsListedAddress(std::wstring_view text) {
  return IsPlainText(text) && text.find(L'@') != std::wstring_view::npos &&
         text.find_first_of(L" ,:;<>") == std::wstring_view::npos;
}

std::optional<std::wstring> Record(const FolderItem& folder) {
  if (folder.path.empty() || !IsId(folder.id) || !IsId(folder.store)) {
    return std::nullopt;
  }
  std::wstring record(kStoreMark);
  for (size_t i = 0; i < folder.path.size(); ++i) {
    const std::wstring name = WidenUtf8(folder.path[i]);
    if (!IsName(name)) {
      return std::nullopt;
    }
    if (i > 0) {
      record.push_back(kLevelMark);
    }
    record.append(name);
  }
  record.append(kSeparator).append(WidenUtf8(folder.id));
  return record.append(kSeparator).append(WidenUtf8(folder.store));
}

std::optional<std::wstring> IfItFits(std::optional<std::wstring> text) {
  return text && text->size() <= kMaxPipeText ? text : std::nullopt;
}

}  // namespace

std::wstring EndText(std::string_view command) {
  return std::wstring(kEndMarks).append(WidenUtf8(command));
}

std::optional<std::wstring> FolderText(const FolderItem& folder) {
  std::optional<std::wstring> record = Record(folder);
  if (record) {
    record->append(kSeparator).append(folder.first ? L"true" : L"false");
  }
  return IfItFits(std::move(record));
}

std::optional<std::wstring> NewFolderText(const FolderItem& folder) {
  return IfItFits(Record(folder));
}

std::optional<std::wstring> AddressText(std::string_view address) {
  std::wstring text = WidenUtf8(address);
  return IsPlainText(text) ? std::optional(std::move(text)) : std::nullopt;
}

std::optional<std::wstring> CountText(int64_t count) {
  if (count < 0 || count > std::numeric_limits<int32_t>::max()) {
    return std::nullopt;
  }
  return std::to_wstring(count);
}

size_t AppendRecipientTexts(const std::vector<std::string>& entries,
                            std::vector<std::wstring>* texts) {
  size_t leftOut = 0;
  std::wstring line;
  for (const std::string& entry : entries) {
    const std::wstring recipient = WidenUtf8(entry);
    const std::wstring_view text = AddressOf(recipient);
    if (!IsListedAddress(text)) {
      ++leftOut;
      continue;
    }
    if (!line.empty() && line.size() + kBetweenRecipients.size() + text.size() > kMaxPipeText) {
      texts->push_back(std::move(line));
      line.clear();
    }
    if (!line.empty()) {
      line.append(kBetweenRecipients);
    }
    line.append(text);
  }
  if (!line.empty()) {
    texts->push_back(std::move(line));
  }
  return leftOut;
}

std::optional<FolderItem> ParseNewFolderText(std::wstring_view text) {
  const size_t cut = text.rfind(kSeparator);
  if (cut == std::wstring_view::npos) {
    return std::nullopt;
  }
  FolderItem folder;
  folder.store = NarrowUtf8(text.substr(cut + kSeparator.size()));
  std::wstring_view path = text.substr(0, cut);
  path.remove_prefix(std::min(path.find_first_not_of(kLevelMark), path.size()));
  for (size_t end = 0; end != std::wstring_view::npos && folder.path.size() <= kMaxLevels;) {
    end = path.find(kLevelMark);
    const std::wstring_view name = path.substr(0, end);
    folder.path.push_back(NarrowUtf8(name));
    // Half a character would make a folder of another name.
    if (WidenUtf8(folder.path.back()) != name) {
      return std::nullopt;
    }
    path.remove_prefix(end == std::wstring_view::npos ? path.size() : end + 1);
  }
  FolderItem made = folder;
  made.id.assign(kFolderIdLength, '0');
  if (folder.path.size() < 2 || folder.path.size() > kMaxLevels || !NewFolderText(made)) {
    return std::nullopt;
  }
  return folder;
}

bool IsFolderId(std::string_view text) {
  return text.size() == kFolderIdLength && std::all_of(text.begin(), text.end(), [](char c) {
           return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f');
         });
}

}  // namespace postmarker::bridge
