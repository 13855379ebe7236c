#include "clients/incredimail/ImContainerMap.h"

#include <algorithm>
#include <bit>
#include <numeric>
#include <random>
#include <utility>

#include "clients/incredimail/ImPrefixSort.h"
#include "support/Ascii.h"

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
  const std::wstring_view units = id.substr(0, sizeof(uint64_t));
  uint64_t prefix = 0;
  if (units.size() == sizeof(prefix) && IsAscii(units)) {
    for (const wchar_t unit : units) {
      prefix = prefix << 8 | static_cast<uint64_t>(unit);
    }
    return prefix;
  }
  bool isExact = true;
  for (size_t i = 0; i < sizeof(prefix); ++i) {
    const uint64_t unit = i < units.size() ? static_cast<char32_t>(units[i]) : 0;
    isExact = isExact && unit < kHighest;
    prefix = prefix << 8 | (isExact ? unit : kHighest);
  }
  return prefix;
}

// One of 2^bits lists. With an odd multiplier that nobody can foresee, two prefixes share one
// hardly more often than by chance.
size_t ListOf(uint64_t prefix, int bits) {
  static const uint64_t multiplier = [] {
    std::random_device random;
    return (uint64_t{random()} << 32 | random()) | 1;
  }();
  return static_cast<size_t>(prefix * multiplier >> (64 - bits));
}

struct SortKey {
  uint64_t prefix;
  uint32_t row;
};

// Of the ids, and where they are equal of the rows.
std::vector<SortKey> SortedKeys(std::span<const ImContainer> rows) {
  std::vector<SortKey> keys;
  keys.reserve(rows.size());
  for (const ImContainer& row : rows) {
    keys.push_back({PrefixOf(row.ContainerID), static_cast<uint32_t>(keys.size())});
  }
  std::vector<SortKey> spare(keys.size());
  SortByPrefix(std::span(keys), std::span(spare));
  const auto isBefore = [rows](const SortKey& a, const SortKey& b) {
    const int order = rows[a.row].ContainerID.compare(rows[b.row].ContainerID);
    return order != 0 ? order < 0 : a.row < b.row;
  };
  for (auto first = keys.begin(); first != keys.end();) {
    const auto last = std::find_if(
        first + 1, keys.end(), [first](const SortKey& key) { return key.prefix != first->prefix; });
    // Mostly a folder on its own, or one that came again and again.
    if (!std::is_sorted(first, last, isBefore)) {
      std::sort(first, last, isBefore);
    }
    first = last;
  }
  return keys;
}

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

std::wstring_view ImContainerRows::KeepAscii(std::string_view text) {
  if (text.empty()) {
    return {};
  }
  wchar_t* const copy = AllocateText(m_texts.get(), text.size());
  WidenAscii(text, copy);
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
  const std::vector<uint32_t> positionOfRow = SortById(unsorted);
  ListPrefixes();
  FindParents(unsorted, positionOfRow);
  GroupByParent();
}

std::vector<uint32_t> ImContainerMap::SortById(std::span<const ImContainer> rows) {
  std::vector<ImContainer>& sorted = m_rows.m_containers;
  sorted.reserve(rows.size());
  m_idPrefixes.reserve(rows.size());
  std::vector<uint32_t> positionOfRow(rows.size());
  for (const SortKey& key : SortedKeys(rows)) {
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

void ImContainerMap::ListPrefixes() {
  m_listBits = static_cast<int>(std::bit_width(m_idPrefixes.size())) + 1;
  m_prefixLists.assign(size_t{1} << m_listBits, kNone);
  m_nextInList.assign(m_idPrefixes.size(), kNone);
  for (uint32_t position = 0; position < m_idPrefixes.size(); ++position) {
    if (position == 0 || m_idPrefixes[position - 1] != m_idPrefixes[position]) {
      uint32_t& first = m_prefixLists[ListOf(m_idPrefixes[position], m_listBits)];
      m_nextInList[position] = std::exchange(first, position);
    }
  }
}

uint32_t ImContainerMap::FirstWithPrefix(uint64_t prefix) const {
  if (m_prefixLists.empty()) {
    return kNone;
  }
  uint32_t position = m_prefixLists[ListOf(prefix, m_listBits)];
  while (position != kNone && m_idPrefixes[position] != prefix) {
    position = m_nextInList[position];
  }
  return position;
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
std::vector<uint32_t> ImContainerMap::Groups() const {
  std::vector<uint32_t> groups(m_parents);
  const auto all = Containers();
  for (uint32_t position = 0; position < groups.size(); ++position) {
    if (all[position].ParentContainerID.empty()) {
      groups[position] = static_cast<uint32_t>(Size());
    }
  }
  return groups;
}

void ImContainerMap::GroupByParent() {
  const std::vector<uint32_t> groups = Groups();
  m_groupBegins.assign(Size() + 2, 0);
  for (const uint32_t group : groups) {
    if (group != kNone) {
      ++m_groupBegins[group + 1];
    }
  }
  std::partial_sum(m_groupBegins.begin(), m_groupBegins.end(), m_groupBegins.begin());
  // The index, and behind it the position.
  std::vector<uint64_t> children(m_groupBegins.back());
  std::vector<uint32_t> ends(m_groupBegins.begin(), m_groupBegins.end() - 1);
  const auto all = Containers();
  for (uint32_t position = 0; position < groups.size(); ++position) {
    if (groups[position] != kNone) {
      const uint64_t index = all[position].IndexInParent;
      children[ends[groups[position]]++] = index << 32 | position;
    }
  }
  for (size_t group = 0; group < ends.size(); ++group) {
    std::sort(children.begin() + m_groupBegins[group], children.begin() + ends[group]);
  }
  m_children.resize(children.size());
  std::transform(children.begin(), children.end(), m_children.begin(),
                 [](uint64_t child) { return static_cast<uint32_t>(child); });
}

uint32_t ImContainerMap::PositionOf(std::wstring_view id) const {
  const auto all = Containers();
  const uint64_t prefix = PrefixOf(id);
  uint32_t position = FirstWithPrefix(prefix);
  if (position == kNone) {
    return kNone;
  }
  if (position + 1 < all.size() && m_idPrefixes[position + 1] == prefix) {
    // Several ids begin alike.
    const auto first = m_idPrefixes.begin() + position;
    const auto last = std::upper_bound(first, m_idPrefixes.end(), prefix);
    const auto alike = all.subspan(position, static_cast<size_t>(last - first));
    const auto found = std::lower_bound(
        alike.begin(), alike.end(), id,
        [](const ImContainer& a, std::wstring_view wanted) { return a.ContainerID < wanted; });
    position += static_cast<uint32_t>(found - alike.begin());
  }
  return position < all.size() && all[position].ContainerID == id ? position : kNone;
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
