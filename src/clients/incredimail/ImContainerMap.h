// The folders of one identity as its store names them, and the table in which they are kept.
#pragma once

#include <cstdint>
#include <memory>
#include <memory_resource>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace postmarker {

// One folder. Its texts belong to the rows or the map that it stands in and live as long as they.
struct ImContainer {
  std::wstring_view ContainerID = {};        // a GUID in braces
  std::wstring_view ParentContainerID = {};  // empty for the root
  uint32_t IndexInParent = 0;                // the place among the parent's children
  std::wstring_view Label = {};              // the name shown; empty for the root
  std::wstring_view Path = {};               // the full path shown, see FillPaths
  std::wstring_view FileName = {};  // base name of the folder's files, without an extension
  uint32_t MsgsCount = 0;
};

// Folders in the order in which a store gives them. Keeps their texts in few blocks of memory, as
// a store has thousands of short ones. From one thread at a time.
class ImContainerRows {
 public:
  ImContainerRows();

  // A copy of the text, which lives as long as this object or what it is moved into.
  [[nodiscard]] std::wstring_view Keep(std::wstring_view text);

  // The two texts with a backslash between them, kept likewise.
  [[nodiscard]] std::wstring_view KeepPath(std::wstring_view parent, std::wstring_view label);

  // Appends a folder whose texts were kept here or live at least as long.
  void Add(const ImContainer& container) { m_containers.push_back(container); }

 private:
  friend class ImContainerMap;

  std::unique_ptr<std::pmr::monotonic_buffer_resource> m_texts;
  std::vector<ImContainer> m_containers;
};

// Folders by ContainerID, in ordinal order of the ids. The set of folders and their parents never
// change; labels and paths do. From one thread at a time.
class ImContainerMap {
 public:
  // No folders.
  ImContainerMap() = default;

  // Of several rows with one id the last one stays.
  explicit ImContainerMap(ImContainerRows rows);

  [[nodiscard]] bool IsEmpty() const { return m_rows.m_containers.empty(); }
  [[nodiscard]] size_t Size() const { return m_rows.m_containers.size(); }

  // The folders in the map's order. Ids and parents must be left as they are.
  [[nodiscard]] std::span<ImContainer> Containers() { return m_rows.m_containers; }
  [[nodiscard]] std::span<const ImContainer> Containers() const { return m_rows.m_containers; }

  // The folder with this id, or null.
  [[nodiscard]] const ImContainer* Find(std::wstring_view id) const;

  // The positions in Containers() of the folders that name this parent, sorted by IndexInParent
  // and where that is equal in the map's order. The parent need not be in the map.
  [[nodiscard]] std::span<const uint32_t> Children(std::wstring_view parentId) const;

  // As ImContainerRows: texts for Label and Path.
  [[nodiscard]] std::wstring_view Keep(std::wstring_view text) { return m_rows.Keep(text); }
  [[nodiscard]] std::wstring_view KeepPath(std::wstring_view parent, std::wstring_view label) {
    return m_rows.KeepPath(parent, label);
  }

 private:
  struct Range {
    uint32_t begin = 0;
    uint32_t count = 0;
  };

  void SortById();
  void GroupByParent();

  ImContainerRows m_rows;
  std::vector<uint32_t> m_children;  // positions, one parent's children next to each other
  std::unordered_map<std::wstring_view, Range> m_childrenOf;
};

}  // namespace postmarker
