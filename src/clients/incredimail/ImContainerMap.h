// The folders of one identity as its store names them, and the table in which they are kept.
#pragma once

#include <cstdint>
#include <memory>
#include <memory_resource>
#include <span>
#include <string>
#include <string_view>
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
// change; labels and paths do. A folder is named by its position in that order.
// An array that is sorted once, with views of texts: for 5,000 folders, std::map with a text for
// each field takes four to five times as long as the statement that reads them, and this 1.6 to 1.9
// times. Sort and searches cost the same for all ids, as a table of hashes would not.
// From one thread at a time.
class ImContainerMap {
 public:
  // The position of no folder.
  static constexpr uint32_t kNone = 0xFFFFFFFF;

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

  // The folder that is the parent of another; kNone if it is not in the map.
  [[nodiscard]] uint32_t Parent(uint32_t position) const { return m_parents[position]; }

  // A folder's children, and the folders whose parent's id is empty: sorted by IndexInParent and
  // where that is equal in the map's order. Each folder is in one of these lists at most. The
  // folder without an id has no children: they are at the top.
  [[nodiscard]] std::span<const uint32_t> Children(uint32_t position) const {
    return m_groups[position];
  }
  [[nodiscard]] std::span<const uint32_t> TopLevel() const { return m_topLevel; }

  // As ImContainerRows: texts for Label and Path.
  [[nodiscard]] std::wstring_view Keep(std::wstring_view text) { return m_rows.Keep(text); }
  [[nodiscard]] std::wstring_view KeepPath(std::wstring_view parent, std::wstring_view label) {
    return m_rows.KeepPath(parent, label);
  }

 private:
  void SortById();
  void GroupByParent();
  void AddGroup(std::wstring_view parentId, std::span<const uint32_t> children);
  [[nodiscard]] uint32_t PositionOf(std::wstring_view id) const;

  ImContainerRows m_rows;
  std::vector<uint32_t> m_parents;                  // of each folder
  std::vector<uint32_t> m_children;                 // positions, one group next to the other
  std::vector<std::span<const uint32_t>> m_groups;  // in m_children, of each folder
  std::span<const uint32_t> m_topLevel;             // in m_children
};

}  // namespace postmarker
