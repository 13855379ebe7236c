// How long a tree of 10,000 folders in three levels takes, beside what the tree control alone needs
// to take the same items.
#include <windows.h>

#include <benchmark/benchmark.h>
#include <commctrl.h>

#include <stdexcept>

#include "wizard/FolderTreeControl_win.h"

namespace postmarker {
namespace {

constexpr int kBranches = 100;
constexpr int kLeaves = 99;

// One root, then branches with leaves: 1 + 100 + 100 * 99 folders.
MailFolderList MakeFolders(int branches) {
  MailFolderList folders = {{L"\\\\Post", "root", "store", 1}};
  for (int i = 0; i < branches; ++i) {
    const std::wstring branch = L"\\\\Post\\Branch " + std::to_wstring(i);
    folders.push_back({branch, "b" + std::to_string(i), "store", 1});
    for (int j = 0; j < kLeaves; ++j) {
      std::wstring leaf = branch;
      leaf.append(L"\\Leaf ").append(std::to_wstring(j));
      folders.push_back({leaf, std::to_string(i * kLeaves + j), "store", 1});
    }
  }
  return folders;
}

// A visible tree view on a window of its own.
class TreeWindow {
 public:
  TreeWindow()
      : m_frame(::CreateWindowExW(0, L"STATIC", L"", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 50, 50, 400,
                                  500, nullptr, nullptr, nullptr, nullptr)) {
    const HWND window = ::CreateWindowExW(
        0, WC_TREEVIEWW, L"",
        WS_CHILD | WS_VISIBLE | TVS_HASBUTTONS | TVS_HASLINES | TVS_LINESATROOT | TVS_SHOWSELALWAYS,
        0, 0, 380, 460, m_frame, nullptr, nullptr, nullptr);
    if (!m_tree.Subclass(window)) {
      throw std::runtime_error("no tree view");
    }
  }
  TreeWindow(const TreeWindow&) = delete;
  TreeWindow& operator=(const TreeWindow&) = delete;
  ~TreeWindow() { ::DestroyWindow(m_frame); }

  [[nodiscard]] const CTreeCtrl& Tree() const { return m_tree; }
  void Clear() const {
    FreeTreeItemData(m_tree, TVI_ROOT);
    m_tree.SetRedraw(false);
    m_tree.DeleteAllItems();
    m_tree.SetRedraw(true);
  }

 private:
  HWND m_frame;
  CTreeCtrl m_tree;
};

void CheckCount(benchmark::State& state, const TreeWindow& window, size_t expected) {
  if (static_cast<size_t>(window.Tree().Send(TVM_GETCOUNT)) != expected) {
    state.SkipWithError("the tree has not all items");
  }
}

// The control alone: the same items in the same order, and the same openings.
void ControlAlone(benchmark::State& state) {
  const MailFolderList folders = MakeFolders(static_cast<int>(state.range(0)));
  SeenStores seen;
  FolderTreeLayout layout(folders, &seen);
  layout.FillAll();
  const TreeWindow window;
  const CTreeCtrl& tree = window.Tree();
  for (auto _ : state) {
    std::vector<HTREEITEM> handles;
    handles.reserve(layout.Items().size());
    tree.SetRedraw(false);
    for (const auto& item : layout.Items()) {
      const HTREEITEM parent = item.parent == FolderTreeLayout::kRoot
                                   ? TVI_ROOT
                                   : handles[item.parent - FolderTreeLayout::kRoot - 1];
      handles.push_back(tree.InsertItem(item.text, parent));
    }
    for (size_t i = handles.size(); i-- > 0;) {
      if (tree.FirstChild(handles[i]) != nullptr) {
        tree.Expand(handles[i]);
      }
    }
    tree.SetRedraw(true);
    state.PauseTiming();
    CheckCount(state, window, folders.size());
    window.Clear();
    state.ResumeTiming();
  }
}

// What the folder page does with the client's list.
void FolderPage(benchmark::State& state) {
  const MailFolderList folders = MakeFolders(static_cast<int>(state.range(0)));
  const TreeWindow window;
  for (auto _ : state) {
    SeenStores seen;
    FolderTreeLayout layout(folders, &seen);
    layout.FillAll();
    FillTreeControl(window.Tree(), layout);
    state.PauseTiming();
    CheckCount(state, window, folders.size());
    window.Clear();
    state.ResumeTiming();
  }
}

BENCHMARK(ControlAlone)
    ->Arg(kBranches)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(20);
BENCHMARK(FolderPage)->Arg(kBranches)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(20);
BENCHMARK(ControlAlone)
    ->Arg(2 * kBranches)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(20);
BENCHMARK(FolderPage)
    ->Arg(2 * kBranches)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime()
    ->Iterations(20);

}  // namespace
}  // namespace postmarker

BENCHMARK_MAIN();
