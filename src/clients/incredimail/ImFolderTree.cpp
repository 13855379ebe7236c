#include "clients/incredimail/ImFolderTree.h"

#include "support/Text.h"

namespace postmarker {
namespace {

// The UTF-16 units that all paths of a tree may have together.
constexpr size_t kPathUnitsPerTree = size_t{16} * 1024 * 1024;
constexpr size_t kPathUnitsPerFolder = 128;

// The path of such a folder does not depend on its parent's.
bool StartsPath(const ImContainer& container) {
  return container.ContainerID.empty() || container.Label.empty() ||
         container.ParentContainerID.empty();
}

std::wstring_view StartingPath(const ImContainer& container, std::wstring_view root,
                               ImContainerMap* containers) {
  const bool isRoot = container.ContainerID.empty() || container.Label.empty();
  return isRoot ? root : containers->KeepPath(root, container.Label);
}

}  // namespace

void LocalizeLabels(ImContainerMap* containers, std::span<const std::wstring> names) {
  const auto all = containers->Containers();
  for (uint32_t position = 0; position < all.size(); ++position) {
    const uint32_t index = all[position].IndexInParent;
    const uint32_t parent = containers->Parent(position);
    if (index < names.size() && parent != ImContainerMap::kNone &&
        containers->Parent(parent) == ImContainerMap::kNone) {
      all[position].Label = containers->Keep(names[index]);
    }
  }
}

void FillPaths(ImContainerMap* containers, std::wstring_view rootLabel) {
  const std::span<ImContainer> all = containers->Containers();
  const std::wstring_view root = containers->Keep(rootLabel);
  std::vector<uint32_t> ready;  // folders with a path, level by level
  ready.reserve(all.size());
  for (uint32_t position = 0; position < all.size(); ++position) {
    ImContainer& container = all[position];
    container.Path = {};
    if (StartsPath(container)) {
      container.Path = StartingPath(container, root, containers);
      ready.push_back(position);
    }
  }
  size_t unitsLeft = kPathUnitsPerTree + kPathUnitsPerFolder * all.size();
  for (size_t next = 0; next < ready.size(); ++next) {
    const std::wstring_view parentPath = all[ready[next]].Path;
    for (const uint32_t position : containers->Children(ready[next])) {
      ImContainer& child = all[position];
      if (StartsPath(child)) {
        continue;
      }
      const size_t length = parentPath.size() + 1 + child.Label.size();
      if (length > unitsLeft) {
        return;
      }
      unitsLeft -= length;
      child.Path = containers->KeepPath(parentPath, child.Label);
      ready.push_back(position);
    }
  }
}

std::vector<const ImContainer*> OrderContainers(const ImContainerMap& containers) {
  const auto all = containers.Containers();
  std::vector<const ImContainer*> ordered;
  ordered.reserve(all.size());
  std::vector<uint32_t> pending;  // the next folder is the last element
  const auto add = [&pending](std::span<const uint32_t> children) {
    pending.insert(pending.end(), children.rbegin(), children.rend());
  };
  add(containers.TopLevel());
  while (!pending.empty()) {
    const uint32_t position = pending.back();
    pending.pop_back();
    ordered.push_back(&all[position]);
    add(containers.Children(position));
  }
  return ordered;
}

void AppendFolders(const ImContainerMap& containers, std::wstring_view identityName,
                   MailFolderList* folders) {
  const std::vector<const ImContainer*> ordered = OrderContainers(containers);
  const std::string storeId = Narrow(identityName);
  folders->reserve(folders->size() + ordered.size());
  for (const ImContainer* const container : ordered) {
    const bool lacksPath = container->Path.empty() && !container->Label.empty();
    if (container->ContainerID.empty() || lacksPath) {
      continue;
    }
    MailFolderRef& folder = folders->emplace_back();
    folder.name = container->Path;
    folder.firstId = Narrow(container->ContainerID);
    folder.secondId = storeId;
    folder.flag = 1;
  }
}

std::wstring FindRootChild(const ImContainerMap& containers, uint32_t index) {
  const auto all = containers.Containers();
  for (uint32_t position = 0; position < all.size(); ++position) {
    const uint32_t parent = containers.Parent(position);
    if (all[position].IndexInParent == index && !all[position].ParentContainerID.empty() &&
        parent != ImContainerMap::kNone && all[parent].ParentContainerID.empty()) {
      return std::wstring(all[position].ContainerID);
    }
  }
  return {};
}

}  // namespace postmarker
