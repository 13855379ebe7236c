#include "clients/incredimail/ImFolderFile.h"

#include <algorithm>
#include <optional>
#include <vector>

#include "clients/incredimail/ImFieldReader.h"
#include "clients/incredimail/ImPaths.h"
#include "support/MappedFile.h"
#include "support/Text.h"

namespace postmarker {
namespace {

constexpr uint64_t kFirstEntry = 58;
constexpr uint64_t kLengthSize = 4;
constexpr uint64_t kNameToCount = 8;   // from the name's end to the number of children
constexpr uint64_t kCountToNext = 12;  // from there to the next entry
constexpr uint64_t kCountToTightEnd =
    8;  // the client ends some lists before the entry's last bytes
constexpr uint64_t kMinEntryBytes = 46;
constexpr wchar_t kZeroId[] = L"{00000000-0000-0000-0000-000000000000}";

// Lengths that lead back make entries that are read again and again. This many may be, beyond what
// the file has room for.
constexpr uint64_t kEntriesReadAgain = 65536;

// Walks over the entries of a list. Functions give false where the walk can't go on.
class EntryReader : public ImFieldReader {
 public:
  explicit EntryReader(std::string_view bytes)
      : ImFieldReader(bytes, kFirstEntry),
        m_entriesLeft(bytes.size() / kMinEntryBytes + kEntriesReadAgain) {}

  // Call before each entry.
  bool BeginEntry() {
    if (IsAtEnd() || m_entriesLeft == 0) {
      return false;
    }
    --m_entriesLeft;
    return true;
  }

  // Passes over a name by its short length. With `looksAhead` the place after it must be in the
  // file, otherwise the length itself must not end the file.
  bool SkipName(bool looksAhead) {
    if (!Has(kLengthSize)) {
      MoveToEnd();
      return false;
    }
    const int64_t length = ReadShortLength();
    const int64_t place = static_cast<int64_t>(Cursor() + kNameToCount) + 2 * length;
    const bool isInside = looksAhead ? place < static_cast<int64_t>(Size()) : !IsAtEnd();
    if (place < 0 || !isInside) {
      MoveToEnd();
      return false;
    }
    MoveTo(static_cast<uint64_t>(place));
    return true;
  }

  // The number of children, whose entries follow.
  std::optional<uint32_t> ReadChildCount() {
    const bool isLast = Cursor() + kCountToNext >= Size();
    if (isLast && Cursor() + kCountToTightEnd != Size()) {
      MoveToEnd();
      return std::nullopt;
    }
    const int8_t count = SignedByteAt(Cursor());
    Advance(kCountToNext);
    return static_cast<uint32_t>(std::max<int8_t>(count, 0));
  }

 private:
  uint64_t m_entriesLeft;
};

class FolderFileParser {
 public:
  FolderFileParser(std::string_view bytes, std::wstring_view rootLabel) : m_entries(bytes) {
    m_rootId = m_rows.Keep(rootLabel.empty() ? kZeroId : rootLabel);
    m_rows.Add({.ContainerID = m_rootId});
  }

  ImContainerMap Parse() {
    for (uint32_t index = 0; m_entries.BeginEntry() && ReadTopLevelEntry(index); ++index) {
    }
    return ImContainerMap(std::move(m_rows));
  }

 private:
  // Children of one entry that are not read yet.
  struct Siblings {
    std::wstring_view parentId;
    uint32_t count;
    uint32_t next = 0;
  };

  bool ReadTopLevelEntry(uint32_t index) {
    const std::wstring id = m_entries.ReadGuid();
    const std::wstring label = m_entries.ReadText();
    const std::wstring fileName = m_entries.ReadText();
    if (id.empty() || label.empty() || fileName.empty()) {
      return false;
    }
    m_entries.Advance(kNameToCount);
    if (m_entries.IsAtEnd()) {
      return false;
    }
    const std::optional<uint32_t> count = m_entries.ReadChildCount();
    if (!count) {
      return false;
    }
    const std::wstring_view kept = Add({.ContainerID = m_rows.Keep(id),
                                        .ParentContainerID = m_rootId,
                                        .IndexInParent = index,
                                        .Label = m_rows.Keep(label),
                                        .FileName = m_rows.Keep(fileName)});
    ReadChildren({kept, *count});
    return true;
  }

  // A child that fails ends the children of all entries around it; the next top-level entry is
  // read from where it failed.
  void ReadChildren(Siblings first) {
    std::vector<Siblings> open = {first};
    while (!open.empty()) {
      if (open.back().next == open.back().count) {
        open.pop_back();
        continue;
      }
      const std::wstring_view parentId = open.back().parentId;
      const std::optional<Siblings> children = ReadChild(parentId, open.back().next++);
      if (!children) {
        return;
      }
      open.push_back(*children);
    }
  }

  std::optional<Siblings> ReadChild(std::wstring_view parentId, uint32_t index) {
    if (!m_entries.BeginEntry()) {
      return std::nullopt;
    }
    const std::wstring id = m_entries.ReadGuid();
    const std::wstring label = m_entries.ReadText();
    if (id.empty() || label.empty() || !m_entries.SkipName(true)) {
      return std::nullopt;
    }
    const std::optional<uint32_t> count = m_entries.ReadChildCount();
    if (!count) {
      return std::nullopt;
    }
    // Deliberate: the label is the file's name. Below the top level the client calls the files
    // after the folder; what stands in the entry is the name that the folder was made with.
    const std::wstring_view name = m_rows.Keep(label);
    const std::wstring_view kept = Add({.ContainerID = m_rows.Keep(id),
                                        .ParentContainerID = parentId,
                                        .IndexInParent = index,
                                        .Label = name,
                                        .FileName = name});
    return Siblings{kept, *count};
  }

  // Texts must be kept already. Gives the id.
  std::wstring_view Add(const ImContainer& container) {
    m_rows.Add(container);
    return container.ContainerID;
  }

  EntryReader m_entries;
  ImContainerRows m_rows;
  std::wstring_view m_rootId;
};

class FolderFileSearch {
 public:
  FolderFileSearch(std::string_view bytes, std::wstring_view id) : m_entries(bytes), m_id(id) {}

  std::wstring Find() {
    while (LookAtEntry(true)) {
      // Counts of children that are not looked at yet, the innermost last.
      std::vector<uint32_t> open = {m_childCount};
      while (!open.empty()) {
        if (open.back() == 0) {
          open.pop_back();
          continue;
        }
        --open.back();
        if (!LookAtEntry(false)) {
          return m_name;
        }
        open.push_back(m_childCount);
      }
    }
    return m_name;
  }

 private:
  // False if the search is over: the entry is the wanted one, or the walk can't go on.
  // Deliberate: below the top level the place after an entry's name is not tested. Some lists of
  // the client end in entries that lead back, and the search must stop there.
  bool LookAtEntry(bool isTopLevel) {
    if (!m_entries.BeginEntry()) {
      return false;
    }
    const std::wstring id = m_entries.ReadGuid();
    if (id.empty()) {
      return false;
    }
    m_entries.SkipText();
    if (EqualNoCase(id, m_id)) {
      m_name = m_entries.ReadText();
      return false;
    }
    if (!m_entries.SkipName(isTopLevel)) {
      return false;
    }
    const std::optional<uint32_t> count = m_entries.ReadChildCount();
    m_childCount = count.value_or(0);
    return count.has_value();
  }

  EntryReader m_entries;
  std::wstring_view m_id;
  std::wstring m_name;
  uint32_t m_childCount = 0;
};

}  // namespace

ImContainerMap ParseFolderFile(std::string_view bytes, std::wstring_view rootLabel) {
  return FolderFileParser(bytes, rootLabel).Parse();
}

ResultCode ReadFolderFile(ImContainerMap* containers, const std::wstring& rootLabel,
                          const std::wstring& path) {
  const MappedFile file(path, 1);
  *containers =
      Succeeded(file.Status()) ? ParseFolderFile(file.Bytes(), rootLabel) : ImContainerMap();
  return file.Status();
}

std::wstring FindContainerName(std::string_view bytes, std::wstring_view id) {
  return FolderFileSearch(bytes, id).Find();
}

std::wstring FindContainerFile(const std::wstring& id, const std::wstring& path) {
  return FindContainerName(MappedFile(path, 1).Bytes(), id);
}

ResultCode ResolveOlderContainer(const std::wstring& identityDirectory, const std::wstring& id,
                                 std::wstring* headerPath, std::wstring* fileName) {
  *fileName = FindContainerFile(id, FolderFilePath(identityDirectory));
  if (fileName->empty()) {
    return kFail;
  }
  *headerPath = MessageStoreFolder(identityDirectory) + *fileName + L".imh";
  return kOk;
}

}  // namespace postmarker
