#include "ese/TreeCursor.h"

#include "ese/ByteAccess.h"

namespace postmarker::ese {
namespace {

// A tree of this depth with two entries a page would not fit into any file.
constexpr size_t kMaxDepth = 32;

// The first entry of the page for which `isBelow(order of its key against the sought one)` is
// false, by halves. In a branch, the entry without a key is above all others.
template <class IsBelow>
uint32_t FirstNotBelow(const Page& page, std::string_view key, IsBelow isBelow) {
  uint32_t low = page.FirstEntry();
  uint32_t high = page.EndEntry();
  while (low < high) {
    const uint32_t middle = low + (high - low) / 2;
    const std::optional<PageEntry> entry = page.EntryAt(middle);
    const bool hasNoBound = entry && !page.IsLeaf() && entry->KeySize() == 0;
    if (entry && (hasNoBound || !isBelow(CompareKey(*entry, key)))) {
      high = middle;
    } else {
      low = middle + 1;
    }
  }
  return low;
}

bool IsLess(int order) {
  return order < 0;
}

bool IsLessOrEqual(int order) {
  return order <= 0;
}

}  // namespace

void TreeCursor::Restart() {
  m_levels.clear();
  m_seen.clear();
  m_remembers = false;
}

bool TreeCursor::Push(uint32_t number) {
  if (m_levels.size() == kMaxDepth || (m_remembers && !m_seen.insert(number).second)) {
    return false;
  }
  const std::optional<Page> page = m_file->ReadPage(number, m_root.objectId);
  if (!page) {
    return false;
  }
  m_levels.push_back({*page, number, page->FirstEntry()});
  return true;
}

// Goes down from the branch at the end, whose next entry is used up whether its child can be read
// or not. False if it can't be.
bool TreeCursor::PushChild() {
  Level& branch = m_levels.back();
  const std::optional<PageEntry> entry = branch.page.EntryAt(branch.next++);
  return entry && !entry->isDeleted && entry->data.size() == sizeof(uint32_t) &&
         Push(LoadAt<uint32_t>(entry->data, 0));
}

void TreeCursor::RememberPages() {
  if (!m_remembers) {
    m_remembers = true;
    for (const Level& level : m_levels) {
      m_seen.insert(level.number);
    }
  }
}

bool TreeCursor::MoveFirst() {
  Restart();
  return Push(m_root.page) && MoveNext();
}

bool TreeCursor::MoveNext() {
  while (!m_levels.empty()) {
    Level& last = m_levels.back();
    bool isWhole = true;
    if (last.next >= last.page.EndEntry()) {
      RememberPages();
      isWhole = last.page.FirstEntry() < last.page.EndEntry();
      m_levels.pop_back();
    } else if (!last.page.IsLeaf()) {
      RememberPages();
      isWhole = PushChild();
    } else {
      const std::optional<PageEntry> entry = last.page.EntryAt(last.next++);
      if (entry && !entry->isDeleted) {
        m_entry = *entry;
        return true;
      }
      isWhole = false;
    }
    if (!isWhole && m_atDamage == AtDamage::kStop) {
      m_levels.clear();
    }
  }
  return false;
}

bool TreeCursor::Seek(std::string_view key) {
  Restart();
  if (!Push(m_root.page)) {
    return false;
  }
  for (;;) {
    // A child whose bound is the key itself holds smaller keys only. It is read all the same: the
    // bound can be shorter than the keys where they are not unique.
    Level& last = m_levels.back();
    last.next = FirstNotBelow(last.page, key, IsLess);
    if (last.page.IsLeaf() || last.next >= last.page.EndEntry() || !PushChild()) {
      return MoveNext();
    }
  }
}

bool TreeCursor::Find(std::string_view key) {
  Restart();
  bool isOpen = Push(m_root.page);
  while (isOpen && !m_levels.back().page.IsLeaf()) {
    Level& branch = m_levels.back();
    branch.next = FirstNotBelow(branch.page, key, IsLessOrEqual);
    isOpen = branch.next < branch.page.EndEntry() && PushChild();
  }
  if (isOpen) {
    Level& leaf = m_levels.back();
    leaf.next = FirstNotBelow(leaf.page, key, IsLess);
    if (leaf.next < leaf.page.EndEntry()) {
      const std::optional<PageEntry> entry = leaf.page.EntryAt(leaf.next++);
      if (entry && !entry->isDeleted && CompareKey(*entry, key) == 0) {
        m_entry = *entry;
        return true;
      }
    }
  }
  Restart();
  return false;
}

std::optional<FoundEntry> ReadEntry(const PageFile& file, TreeRoot root, EntryPlace place) {
  const std::optional<Page> leaf = file.ReadPage(place.page, root.objectId);
  if (!leaf || place.entry < leaf->FirstEntry() || place.entry >= leaf->EndEntry()) {
    return std::nullopt;
  }
  const std::optional<PageEntry> entry = leaf->EntryAt(place.entry);
  if (!entry || entry->isDeleted) {
    return std::nullopt;
  }
  return FoundEntry{*leaf, *entry};
}

}  // namespace postmarker::ese
