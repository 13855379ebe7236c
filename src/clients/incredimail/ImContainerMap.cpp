#include "clients/incredimail/ImContainerMap.h"

#include <algorithm>
#include <utility>

namespace postmarker {
namespace {

constexpr size_t kFirstBlock = size_t{64} * 1024;

wchar_t* AllocateText(std::pmr::memory_resource* memory, size_t length) {
  return static_cast<wchar_t*>(memory->allocate(length * sizeof(wchar_t), alignof(wchar_t)));
}

struct Child {
  std::wstring_view parentId;
  uint32_t index;
  uint32_t position;
};

// By parent, and by index for each. Where both are equal the order stays.
std::vector<Child> SortedChildren(std::span<const ImContainer> containers) {
  std::vector<Child> children;
  children.reserve(containers.size());
  for (const ImContainer& container : containers) {
    children.push_back({container.ParentContainerID, container.IndexInParent,
                        static_cast<uint32_t>(children.size())});
  }
  std::stable_sort(children.begin(), children.end(), [](const Child& a, const Child& b) {
    const int order = a.parentId.compare(b.parentId);
    return order != 0 ? order < 0 : a.index < b.index;
  });
  return children;
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

std::wstring_view ImContainerRows::KeepPath(std::wstring_view parent, std::wstring_view label) {
  const size_t length = parent.size() + 1 + label.size();
  wchar_t* const path = AllocateText(m_texts.get(), length);
  wchar_t* const end = std::copy(parent.begin(), parent.end(), path);
  *end = L'\\';
  std::copy(label.begin(), label.end(), end + 1);
  return {path, length};
}

ImContainerMap::ImContainerMap(ImContainerRows rows) : m_rows(std::move(rows)) {
  SortById();
  GroupByParent();
}

void ImContainerMap::SortById() {
  std::vector<ImContainer>& all = m_rows.m_containers;
  std::stable_sort(all.begin(), all.end(), [](const ImContainer& a, const ImContainer& b) {
    return a.ContainerID < b.ContainerID;
  });
  // From the back, so that of several rows with one id the last stays.
  const auto first = std::unique(
      all.rbegin(), all.rend(),
      [](const ImContainer& a, const ImContainer& b) { return a.ContainerID == b.ContainerID; });
  all.erase(all.begin(), first.base());
}

void ImContainerMap::GroupByParent() {
  const std::vector<Child> children = SortedChildren(Containers());
  m_children.reserve(children.size());
  for (const Child& child : children) {
    m_children.push_back(child.position);
  }
  m_parents.assign(Size(), kNone);
  m_groups.resize(Size());
  for (auto first = children.begin(); first != children.end();) {
    const auto last = std::find_if(first, children.end(), [first](const Child& child) {
      return child.parentId != first->parentId;
    });
    const auto begin = static_cast<size_t>(first - children.begin());
    const auto size = static_cast<size_t>(last - first);
    AddGroup(first->parentId, std::span(m_children).subspan(begin, size));
    first = last;
  }
}

void ImContainerMap::AddGroup(std::wstring_view parentId, std::span<const uint32_t> children) {
  const uint32_t parent = PositionOf(parentId);
  for (const uint32_t child : children) {
    m_parents[child] = parent;
  }
  if (parentId.empty()) {
    m_topLevel = children;
  } else if (parent != kNone) {
    m_groups[parent] = children;
  }
}

uint32_t ImContainerMap::PositionOf(std::wstring_view id) const {
  const auto all = Containers();
  const auto found = std::lower_bound(
      all.begin(), all.end(), id,
      [](const ImContainer& a, std::wstring_view wanted) { return a.ContainerID < wanted; });
  return found != all.end() && found->ContainerID == id ? static_cast<uint32_t>(found - all.begin())
                                                        : kNone;
}

const ImContainer* ImContainerMap::Find(std::wstring_view id) const {
  const uint32_t position = PositionOf(id);
  return position == kNone ? nullptr : &Containers()[position];
}

}  // namespace postmarker
