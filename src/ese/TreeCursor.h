// Walks over the entries of a B+ tree in the order of their keys.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "ese/Page.h"
#include "ese/PageFile.h"

namespace postmarker::ese {

struct TreeRoot {
  uint32_t page = 0;  // 0: there is no tree
  uint32_t objectId = 0;
};

// Where an entry is in the file. The file does not change, so it is found there again.
struct EntryPlace {
  uint32_t page = 0;
  uint32_t entry = 0;
};

// What a walk does at an entry or page that is damaged, deleted or empty.
enum class AtDamage {
  kPassOver,  // goes on after it
  kStop,      // ends, so that each move looks at few pages however the tree was harmed
};

// A cursor that stands on an entry of a leaf, or on none. It goes through the branches, so that a
// damaged page costs the entries below it and no others. No page is read twice in one walk: a tree
// that loops ends.
class TreeCursor {
 public:
  // `file` must outlive the cursor. It stands on no entry.
  TreeCursor(const PageFile& file, TreeRoot root, AtDamage atDamage = AtDamage::kPassOver)
      : m_file(&file), m_root(root), m_atDamage(atDamage) {}

  // To the first entry, or to the next one. False at the end, and from then on.
  bool MoveFirst();
  bool MoveNext();

  // To the first entry whose key is not below `key`; false if there is none. In a damaged tree the
  // entry's key can be below it.
  bool Seek(std::string_view key);

  // To the entry with this key, in a tree without equal keys; false if there is none. Looks at one
  // page of each level.
  bool Find(std::string_view key);

  // The current entry and its page. REQUIRES: the last move returned true.
  [[nodiscard]] const PageEntry& Entry() const { return m_entry; }
  [[nodiscard]] const Page& Leaf() const { return m_levels.back().page; }
  [[nodiscard]] EntryPlace Place() const {
    return {m_levels.back().number, m_levels.back().next - 1};
  }

 private:
  struct Level {
    Page page;
    uint32_t number;
    uint32_t next;  // entry
  };

  void Restart();
  bool Push(uint32_t number);
  bool PushChild();
  void RememberPages();

  const PageFile* m_file;
  TreeRoot m_root;
  AtDamage m_atDamage;
  std::vector<Level> m_levels;  // the root first, the leaf last
  std::unordered_set<uint32_t> m_seen;
  bool m_remembers = false;  // a seek alone needs no memory of pages
  PageEntry m_entry;
};

// The leaf of that tree with the entry at `place`, and the entry. Nothing if it is not there.
struct FoundEntry {
  Page leaf;
  PageEntry entry;
};
std::optional<FoundEntry> ReadEntry(const PageFile& file, TreeRoot root, EntryPlace place);

}  // namespace postmarker::ese
