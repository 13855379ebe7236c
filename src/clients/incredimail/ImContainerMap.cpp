#include "clients/incredimail/ImContainerMap.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace postmarker {
namespace {

constexpr size_t kFirstBlock = size_t{64} * 1024;

wchar_t* AllocateText(std::pmr::memory_resource* memory, size_t length) {
  return static_cast<wchar_t*>(memory->allocate(length * sizeof(wchar_t), alignof(wchar_t)));
}

// The first eight units as a number that compares as they do, or as equal. A unit that does not
// fit into a byte counts as the highest, as does everything behind it.
uint64_t PrefixOf(std::wstring_view id) {
  constexpr uint64_t kHighest = 0xFF;
  uint64_t prefix = 0;
  bool isExact = true;
  for (size_t i = 0; i < sizeof(prefix); ++i) {
    const uint64_t unit = i < id.size() ? static_cast<char32_t>(id[i]) : 0;
    isExact = isExact && unit < kHighest;
    prefix = prefix << 8 | (isExact ? unit : kHighest);
  }
  return prefix;
}

struct SortKey {
  uint64_t prefix;
  uint32_t row;
};

}  // namespace

ImContainerRows::ImContainerRows()
    : m_texts(std::make_unique<std::pmr::monotonic_buffer_resource>(kFirstBlock)) {}

std::wstring_view ImContainerRows::Keep(std::wstring_view text) {
  if (text.empty()) {
    return {};
  }
  wchar_t* const copy = AllocateText(m_texts.get(), text.size());
  std::copy(text.begin(), text.end(), copy);
  return {copy, text.size()};
}

std::wstring_view ImContainerRows::KeepPath(std::wstring_view parent, std::wstring_view label) {
  const size_t length = parent.size() + 1 + label.size();
  wchar_t* const path = AllocateText(m_texts.get(), length);
  wchar_t* const end = std::copy(parent.begin(), parent.end(), path);
  *end = L'\\';
  std::copy(label.begin(), label.end(), end + 1);
  return {path, length};
}

ImContainerMap::ImContainerMap(ImContainerRows rows) : m_rows(std::move(rows)) {
  const std::vector<ImContainer> unsorted = std::exchange(m_rows.m_containers, {});
  FindParents(unsorted, SortById(unsorted));
  GroupByParent();
}

std::vector<uint32_t> ImContainerMap::SortById(std::span<const ImContainer> rows) {
  std::vector<SortKey> keys;
  keys.reserve(rows.size());
  for (const ImContainer& row : rows) {
    keys.push_back({PrefixOf(row.ContainerID), static_cast<uint32_t>(keys.size())});
  }
  std::sort(keys.begin(), keys.end(), [rows](const SortKey& a, const SortKey& b) {
    if (a.prefix != b.prefix) {
      return a.prefix < b.prefix;
    }
    const int order = rows[a.row].ContainerID.compare(rows[b.row].ContainerID);
    return order != 0 ? order < 0 : a.row < b.row;
  });
  std::vector<ImContainer>& sorted = m_rows.m_containers;
  sorted.reserve(rows.size());
  m_idPrefixes.reserve(rows.size());
  std::vector<uint32_t> positionOfRow(rows.size());
  for (const SortKey& key : keys) {
    const ImContainer& row = rows[key.row];
    const bool isKnown = !sorted.empty() && m_idPrefixes.back() == key.prefix &&
                         sorted.back().ContainerID == row.ContainerID;
    if (isKnown) {
      sorted.back() = row;
    } else {
      sorted.push_back(row);
      m_idPrefixes.push_back(key.prefix);
    }
    positionOfRow[key.row] = static_cast<uint32_t>(sorted.size() - 1);
  }
  return positionOfRow;
}

// In the order of the rows, in which their texts lie in memory. Of several rows with one id the
// last one stays here as well.
void ImContainerMap::FindParents(std::span<const ImContainer> rows,
                                 std::span<const uint32_t> positionOfRow) {
  m_parents.resize(Size());
  for (size_t row = 0; row < rows.size(); ++row) {
    m_parents[positionOfRow[row]] = PositionOf(rows[row].ParentContainerID);
  }
}

// A folder whose parent is not in the map is in no group.
uint32_t ImContainerMap::GroupOf(uint32_t position) const {
  const bool isTop = Containers()[position].ParentContainerID.empty();
  return isTop ? static_cast<uint32_t>(Size()) : m_parents[position];
}

void ImContainerMap::GroupByParent() {
  const auto size = static_cast<uint32_t>(Size());
  m_groupBegins.assign(size + 2, 0);
  for (uint32_t position = 0; position < size; ++position) {
    const uint32_t group = GroupOf(position);
    if (group != kNone) {
      ++m_groupBegins[group + 1];
    }
  }
  std::partial_sum(m_groupBegins.begin(), m_groupBegins.end(), m_groupBegins.begin());
  m_children.resize(m_groupBegins.back());
  std::vector<uint32_t> ends(m_groupBegins.begin(), m_groupBegins.end() - 1);
  for (uint32_t position = 0; position < size; ++position) {
    const uint32_t group = GroupOf(position);
    if (group != kNone) {
      m_children[ends[group]++] = position;
    }
  }
  const auto all = Containers();
  for (uint32_t group = 0; group <= size; ++group) {
    std::sort(m_children.begin() + m_groupBegins[group], m_children.begin() + ends[group],
              [all](uint32_t a, uint32_t b) {
                return std::pair(all[a].IndexInParent, a) < std::pair(all[b].IndexInParent, b);
              });
  }
}

uint32_t ImContainerMap::PositionOf(std::wstring_view id) const {
  const auto all = Containers();
  const uint64_t prefix = PrefixOf(id);
  const auto first = std::lower_bound(m_idPrefixes.begin(), m_idPrefixes.end(), prefix);
  auto position = static_cast<size_t>(first - m_idPrefixes.begin());
  if (position + 1 < all.size() && m_idPrefixes[position + 1] == prefix) {
    // Several ids begin alike.
    const auto last = std::upper_bound(first, m_idPrefixes.end(), prefix);
    const auto alike = all.subspan(position, static_cast<size_t>(last - first));
    const auto found = std::lower_bound(
        alike.begin(), alike.end(), id,
        [](const ImContainer& a, std::wstring_view wanted) { return a.ContainerID < wanted; });
    position += static_cast<size_t>(found - alike.begin());
  }
  const bool isFound = position < all.size() && all[position].ContainerID == id;
  return isFound ? static_cast<uint32_t>(position) : kNone;
}

const ImContainer* ImContainerMap::Find(std::wstring_view id) const {
  const uint32_t position = PositionOf(id);
  return position == kNone ? nullptr : &Containers()[position];
}

std::span<const uint32_t> ImContainerMap::ChildrenInGroup(uint32_t group) const {
  if (m_groupBegins.empty()) {
    return {};
  }
  return std::span(m_children)
      .subspan(m_groupBegins[group], m_groupBegins[group + 1] - m_groupBegins[group]);
}

}  // namespace postmarker
