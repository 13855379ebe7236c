#include "clients/incredimail/ImContainerMap.h"

#include <algorithm>

namespace postmarker {
namespace {

constexpr size_t kFirstBlock = size_t{64} * 1024;

wchar_t* AllocateText(std::pmr::memory_resource* memory, size_t length) {
  return static_cast<wchar_t*>(memory->allocate(length * sizeof(wchar_t), alignof(wchar_t)));
}

bool HasLesserId(const ImContainer& a, const ImContainer& b) {
  return a.ContainerID < b.ContainerID;
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
  std::stable_sort(all.begin(), all.end(), HasLesserId);
  // Read backwards, the last of several rows with one id comes first and is the one that stays.
  const auto kept = std::unique(all.rbegin(), all.rend(), [](const auto& a, const auto& b) {
    return a.ContainerID == b.ContainerID;
  });
  all.erase(all.begin(), kept.base());
}

void ImContainerMap::GroupByParent() {
  const std::span<const ImContainer> all = m_rows.m_containers;
  std::vector<Range*> rangeOf;
  rangeOf.reserve(all.size());
  for (const ImContainer& container : all) {
    rangeOf.push_back(&m_childrenOf[container.ParentContainerID]);
    ++rangeOf.back()->count;
  }
  uint32_t begin = 0;
  for (auto& [parent, range] : m_childrenOf) {
    range.begin = begin;
    begin += range.count;
    range.count = 0;
  }
  m_children.resize(all.size());
  for (uint32_t position = 0; position < all.size(); ++position) {
    Range* const range = rangeOf[position];
    m_children[range->begin + range->count++] = position;
  }
  for (const auto& [parent, range] : m_childrenOf) {
    const auto first = m_children.begin() + range.begin;
    std::stable_sort(first, first + range.count, [all](uint32_t a, uint32_t b) {
      return all[a].IndexInParent < all[b].IndexInParent;
    });
  }
}

const ImContainer* ImContainerMap::Find(std::wstring_view id) const {
  const auto all = Containers();
  const auto found =
      std::lower_bound(all.begin(), all.end(), ImContainer{.ContainerID = id}, HasLesserId);
  return found != all.end() && found->ContainerID == id ? &*found : nullptr;
}

std::span<const uint32_t> ImContainerMap::Children(std::wstring_view parentId) const {
  const auto found = m_childrenOf.find(parentId);
  if (found == m_childrenOf.end()) {
    return {};
  }
  return std::span(m_children).subspan(found->second.begin, found->second.count);
}

}  // namespace postmarker
