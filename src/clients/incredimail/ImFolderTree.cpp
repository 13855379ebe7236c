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

void LocaliseLabels(ImContainerMap* containers, std::span<const std::wstring> names) {
  for (ImContainer& container : containers->Containers()) {
    if (container.IndexInParent >= names.size()) {
      continue;
    }
    const ImContainer* const parent = containers->Find(container.ParentContainerID);
    if (parent != nullptr && containers->Find(parent->ParentContainerID) == nullptr) {
      container.Label = containers->Keep(names[container.IndexInParent]);
    }
  }
}

void FillPaths(ImContainerMap* containers, std::wstring_view rootLabel) {
  const std::span<ImContainer> all = containers->Containers();
  const std::wstring_view root = containers->Keep(rootLabel);
  std::vector<const ImContainer*> ready;  // folders with a path, level by level
  ready.reserve(all.size());
  for (ImContainer& container : all) {
    container.Path = {};
    if (StartsPath(container)) {
      container.Path = StartingPath(container, root, containers);
      ready.push_back(&container);
    }
  }
  size_t unitsLeft = kPathUnitsPerTree + kPathUnitsPerFolder * all.size();
  for (size_t next = 0; next < ready.size(); ++next) {
    const ImContainer& parent = *ready[next];
    for (const uint32_t position : containers->Children(parent.ContainerID)) {
      ImContainer& child = all[position];
      if (StartsPath(child)) {
        continue;
      }
      const size_t length = parent.Path.size() + 1 + child.Label.size();
      if (length > unitsLeft) {
        return;
      }
      unitsLeft -= length;
      child.Path = containers->KeepPath(parent.Path, child.Label);
      ready.push_back(&child);
    }
  }
}

std::vector<const ImContainer*> OrderContainers(const ImContainerMap& containers) {
  const auto all = containers.Containers();
  std::vector<const ImContainer*> ordered;
  ordered.reserve(all.size());
  std::vector<uint32_t> pending;  // the next folder is the last element
  const auto addChildren = [&](std::wstring_view id) {
    const auto children = containers.Children(id);
    pending.insert(pending.end(), children.rbegin(), children.rend());
  };
  addChildren(L"");
  while (!pending.empty()) {
    const ImContainer& container = all[pending.back()];
    pending.pop_back();
    ordered.push_back(&container);
    // The children of the empty id are in already; each other folder has one parent and comes once.
    if (!container.ContainerID.empty()) {
      addChildren(container.ContainerID);
    }
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
    folders->push_back({.name = std::wstring(container->Path),
                        .firstId = Narrow(container->ContainerID),
                        .secondId = storeId,
                        .flag = 1});
  }
}

std::wstring FindRootChild(const ImContainerMap& containers, uint32_t index) {
  for (const ImContainer& container : containers.Containers()) {
    if (container.IndexInParent != index || container.ParentContainerID.empty()) {
      continue;
    }
    const ImContainer* const parent = containers.Find(container.ParentContainerID);
    if (parent != nullptr && parent->ParentContainerID.empty()) {
      return std::wstring(container.ContainerID);
    }
  }
  return {};
}

}  // namespace postmarker
