// Runs a wizard on a thread of its own and operates it as a person or a host does: by clicks, keys
// and the standard messages of windows.
#pragma once

#include <windows.h>

#include <commctrl.h>
#include <prsht.h>

#include <atomic>
#include <chrono>
#include <cstring>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "postmarker/WizardRequest.h"
#include "support/Text.h"

namespace postmarker::test {

// The sheet's buttons.
inline constexpr int kBackButton = 12323;
inline constexpr int kNextButton = 12324;
inline constexpr int kFinishButton = 12325;

// A control that one page alone has.
enum class Page {
  kWelcome = 13050,
  kClients = 13053,
  kFolders = 13051,
  kPrefill = 10043,
  kTraining = 13054,
  kSettings = 13029
};

inline constexpr std::chrono::milliseconds kPatience{10000};

// Waits until `condition` holds. False if it does not within kPatience.
template <class Condition>
bool WaitUntil(Condition condition, std::chrono::milliseconds patience = kPatience) {
  const auto end = std::chrono::steady_clock::now() + patience;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) {
      return false;
    }
    ::Sleep(5);
  }
  return true;
}

inline std::wstring TextOf(HWND window) {
  wchar_t text[1024] = {};
  ::SendMessageW(window, WM_GETTEXT, std::size(text), reinterpret_cast<LPARAM>(text));
  return text;
}

// The visible window of a class that this process shows, or null.
inline HWND FindVisibleWindow(const wchar_t* windowClass) {
  for (HWND window = nullptr;
       (window = ::FindWindowExW(nullptr, window, windowClass, nullptr)) != nullptr;) {
    DWORD process = 0;
    ::GetWindowThreadProcessId(window, &process);
    if (process == ::GetCurrentProcessId() && ::IsWindowVisible(window)) {
      return window;
    }
  }
  return nullptr;
}

// A search for a window with a control, and what it found.
struct ControlSearch {
  int control;
  HWND found;
};

inline BOOL CALLBACK TakeWindowWithControl(HWND window, LPARAM argument) {
  auto* const search = reinterpret_cast<ControlSearch*>(argument);
  if (::IsWindowVisible(window) && ::GetDlgItem(window, search->control) != nullptr) {
    search->found = window;
  }
  return search->found == nullptr ? TRUE : FALSE;
}

// The visible top-level window of a thread that has a control of this id, or null.
inline HWND FindDialogWithControl(DWORD thread, int control) {
  ControlSearch search = {control, nullptr};
  ::EnumThreadWindows(thread, &TakeWindowWithControl, reinterpret_cast<LPARAM>(&search));
  return search.found;
}

// The functions that wait throw when their patience ends, which fails the test with what was waited
// for.
class WizardSession {
 public:
  using Show = std::function<int32_t(WizardRequest* request)>;

  WizardSession(Show show, WizardRequest* request)
      : m_request(request), m_thread([this, show = std::move(show)] {
          m_result = show(m_request);
          m_ended = true;
        }) {}
  WizardSession(const WizardSession&) = delete;
  WizardSession& operator=(const WizardSession&) = delete;
  ~WizardSession() {
    // A test that failed may have left a dialog open over the sheet.
    while (m_thread.joinable() && !m_ended) {
      if (const HWND sheet = Sheet()) {
        ::PostMessageW(::GetLastActivePopup(sheet), WM_CLOSE, 0, 0);
      }
      ::Sleep(20);
    }
    if (m_thread.joinable()) {
      m_thread.join();
    }
  }

  // The sheet's window, or null while there is none.
  [[nodiscard]] HWND Sheet() const { return *static_cast<HWND volatile*>(&m_request->sheetWindow); }

  void WaitForPage(Page page) const {
    Require([this, page] { return IsOn(page); }, "the page did not come");
  }
  [[nodiscard]] bool IsOn(Page page) const {
    return Sheet() != nullptr && ::IsWindowVisible(Sheet()) && CurrentPage() != nullptr &&
           ::GetDlgItem(CurrentPage(), static_cast<int>(page)) != nullptr;
  }

  // The dialog over the sheet that has this control, once it is there.
  [[nodiscard]] HWND WaitForDialog(int control) const {
    const DWORD thread = ::GetWindowThreadProcessId(Sheet(), nullptr);
    HWND dialog = nullptr;
    Require([&] { return (dialog = FindDialogWithControl(thread, control)) != nullptr; },
            "the dialog did not open");
    return dialog;
  }

  [[nodiscard]] HWND CurrentPage() const {
    return reinterpret_cast<HWND>(::SendMessageW(Sheet(), PSM_GETCURRENTPAGEHWND, 0, 0));
  }
  [[nodiscard]] HWND Control(int id) const { return ::GetDlgItem(CurrentPage(), id); }
  [[nodiscard]] HWND Button(int id) const { return ::GetDlgItem(Sheet(), id); }
  [[nodiscard]] bool IsButtonUsable(int id) const {
    return ::IsWindowVisible(Button(id)) && ::IsWindowEnabled(Button(id));
  }

  // Clicks a button of the sheet once it can be clicked.
  void ClickButton(int id) const {
    Require([this, id] { return IsButtonUsable(id); }, "the button can't be clicked");
    ::PostMessageW(Button(id), BM_CLICK, 0, 0);
  }

  // Clicks a control of the page.
  void ClickControl(int id) const {
    Require([this, id] { return ::IsWindowEnabled(Control(id)); }, "the control can't be clicked");
    ::PostMessageW(Control(id), BM_CLICK, 0, 0);
  }

  void Close() const { ::PostMessageW(Sheet(), WM_CLOSE, 0, 0); }

  // Waits for the wizard's end and returns its result.
  int32_t Result() {
    if (m_thread.joinable()) {
      m_thread.join();
    }
    return m_result;
  }

  // The tree of the folder page, once it is filled, or of a training page.
  [[nodiscard]] HWND Tree() const { return Control(IsOn(Page::kTraining) ? 10018 : 10015); }
  void WaitForTree() const {
    WaitForPage(Page::kFolders);
    Require([this] { return ::IsWindowEnabled(Tree()); }, "the tree was not filled");
  }

  // The tree's items in the order in which they are shown, two blanks a level, "*" after a bold
  // one, and what its check box shows, if it has one.
  [[nodiscard]] std::vector<std::string> TreeLines() const {
    std::vector<std::string> lines;
    for (HTREEITEM item = TreeItemAt(nullptr, TVGN_ROOT); item != nullptr;
         item = NextInTree(item)) {
      std::string line(Depth(item) * 2, ' ');
      line.append(NarrowUtf8(ItemText(item))).append(IsBold(item) ? "*" : "");
      line.append(BoxOf(item));
      lines.push_back(line);
    }
    return lines;
  }

  // The grid of the prefill page, once the worker has ended.
  [[nodiscard]] HWND AddressGrid() const { return Control(10016); }
  void WaitForAddresses() const {
    WaitForPage(Page::kPrefill);
    Require([this] { return ::IsWindowVisible(AddressGrid()) != FALSE; },
            "the addresses were not read");
  }

  // The addresses in the order of the grid's rows.
  [[nodiscard]] std::vector<std::wstring> Addresses() const {
    std::vector<std::wstring> addresses;
    const LRESULT count = ::SendMessageW(AddressGrid(), LVM_GETITEMCOUNT, 0, 0);
    for (LRESULT row = 0; row < count; ++row) {
      addresses.push_back(CellText(AddressGrid(), row, 0));
    }
    return addresses;
  }

  // What a list view holds in a cell.
  static std::wstring CellText(HWND list, LRESULT row, int column) {
    wchar_t text[512] = {};
    LVITEMW read = {};
    read.iSubItem = column;
    read.pszText = text;
    read.cchTextMax = 512;
    ::SendMessageW(list, LVM_GETITEMTEXTW, static_cast<WPARAM>(row),
                   reinterpret_cast<LPARAM>(&read));
    return read.pszText;
  }

  // From the page after the folders to the settings, with the addresses as they were found.
  void PassAddresses() const {
    WaitForAddresses();
    ClickButton(kNextButton);
    WaitForPage(Page::kSettings);
  }

  // The first item with this text, or null.
  [[nodiscard]] HTREEITEM FindItem(const std::wstring& text) const {
    HTREEITEM item = TreeItemAt(nullptr, TVGN_ROOT);
    while (item != nullptr && ItemText(item) != text) {
      item = NextInTree(item);
    }
    return item;
  }
  [[nodiscard]] std::wstring SelectedText() const {
    const HTREEITEM item = TreeItemAt(nullptr, TVGN_CARET);
    return item != nullptr ? ItemText(item) : std::wstring();
  }

  // The middle of an item's check box, on the screen; the item is scrolled into view.
  [[nodiscard]] POINT BoxPlace(const std::wstring& text) const {
    const RECT label = LabelPlace(text);
    TVHITTESTINFO hit = {};
    hit.pt.y = (label.top + label.bottom) / 2;
    std::vector<LONG> places;
    for (hit.pt.x = 0; hit.pt.x < label.left; ++hit.pt.x) {
      ::SendMessageW(Tree(), TVM_HITTEST, 0, reinterpret_cast<LPARAM>(&hit));
      if (hit.flags == TVHT_ONITEMSTATEICON) {
        places.push_back(hit.pt.x);
      }
    }
    if (places.empty()) {
      throw std::runtime_error("the item has no check box: " + NarrowUtf8(text));
    }
    POINT point = {places[places.size() / 2], hit.pt.y};
    ::ClientToScreen(Tree(), &point);
    return point;
  }

  // Clicks the label of an item with a mouse button, as the mouse's messages arrive; again if the
  // tree took the click for the beginning of a drag, which a pointer that is moved on a busy
  // machine can look like.
  void ClickItem(const std::wstring& text, bool rightButton = false) const {
    for (int attempt = 0; attempt < 4; ++attempt) {
      ClickItemOnce(text, rightButton);
      if (WaitUntil([this, &text] { return SelectedText() == text; }, kPatience / 4)) {
        return;
      }
    }
    throw std::runtime_error("the click did not select the item");
  }

  // Opens the folder page's dialog for a new folder over the selected item, types a name and
  // presses OK.
  void CreateFolder(const std::wstring& name) const {
    constexpr int kNewFolderButton = 10022;
    constexpr int kNewFolderName = 10023;
    ClickControl(kNewFolderButton);
    const HWND dialog = WaitForDialog(kNewFolderName);
    for (const wchar_t c : name) {
      ::PostMessageW(::GetDlgItem(dialog, kNewFolderName), WM_CHAR, c, 1);
    }
    ::PostMessageW(::GetDlgItem(dialog, IDOK), BM_CLICK, 0, 0);
    Require([&] { return !::IsWindow(dialog); }, "the dialog did not close");
  }

  template <class Condition>
  static void Require(Condition condition, const char* otherwise) {
    if (!WaitUntil(condition)) {
      throw std::runtime_error(otherwise);
    }
  }

 private:
  // Where the text of an item is in the tree, which is scrolled to it.
  [[nodiscard]] RECT LabelPlace(const std::wstring& text) const {
    const HTREEITEM item = FindItem(text);
    if (item == nullptr) {
      throw std::runtime_error("no such item: " + NarrowUtf8(text));
    }
    ::SendMessageW(Tree(), TVM_ENSUREVISIBLE, 0, reinterpret_cast<LPARAM>(item));
    RECT rect = {};
    // The message takes the item in the place where it writes the rectangle.
    const auto number = reinterpret_cast<uintptr_t>(item);
    std::memcpy(&rect, &number, sizeof(number));
    ::SendMessageW(Tree(), TVM_GETITEMRECT, TRUE, reinterpret_cast<LPARAM>(&rect));
    return rect;
  }
  void ClickItemOnce(const std::wstring& text, bool rightButton) const {
    const RECT rect = LabelPlace(text);
    POINT point = {(rect.left + rect.right) / 2, (rect.top + rect.bottom) / 2};
    const LPARAM place = MAKELPARAM(point.x, point.y);
    ::ClientToScreen(Tree(), &point);
    ::SetCursorPos(point.x, point.y);
    ::PostMessageW(Tree(), rightButton ? WM_RBUTTONDOWN : WM_LBUTTONDOWN,
                   rightButton ? MK_RBUTTON : MK_LBUTTON, place);
    ::PostMessageW(Tree(), rightButton ? WM_RBUTTONUP : WM_LBUTTONUP, 0, place);
  }
  [[nodiscard]] HTREEITEM TreeItemAt(HTREEITEM item, UINT relation) const {
    return reinterpret_cast<HTREEITEM>(
        ::SendMessageW(Tree(), TVM_GETNEXTITEM, relation, reinterpret_cast<LPARAM>(item)));
  }
  [[nodiscard]] HTREEITEM NextInTree(HTREEITEM item) const {
    if (const HTREEITEM child = TreeItemAt(item, TVGN_CHILD)) {
      return child;
    }
    while (item != nullptr) {
      if (const HTREEITEM sibling = TreeItemAt(item, TVGN_NEXT)) {
        return sibling;
      }
      item = TreeItemAt(item, TVGN_PARENT);
    }
    return nullptr;
  }
  [[nodiscard]] size_t Depth(HTREEITEM item) const {
    size_t depth = 0;
    while ((item = TreeItemAt(item, TVGN_PARENT)) != nullptr) {
      ++depth;
    }
    return depth;
  }
  [[nodiscard]] std::wstring ItemText(HTREEITEM item) const {
    wchar_t text[260] = {};
    TVITEMW read = {};
    read.mask = TVIF_TEXT;
    read.hItem = item;
    read.pszText = text;
    read.cchTextMax = 260;
    ::SendMessageW(Tree(), TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&read));
    return read.pszText;
  }
  [[nodiscard]] UINT ItemState(HTREEITEM item, UINT mask) const {
    return static_cast<UINT>(
               ::SendMessageW(Tree(), TVM_GETITEMSTATE, reinterpret_cast<WPARAM>(item), mask)) &
           mask;
  }
  [[nodiscard]] bool IsBold(HTREEITEM item) const { return ItemState(item, TVIS_BOLD) != 0; }
  [[nodiscard]] const char* BoxOf(HTREEITEM item) const {
    switch (ItemState(item, TVIS_STATEIMAGEMASK)) {
      case INDEXTOSTATEIMAGEMASK(1):
        return " [ ]";
      case INDEXTOSTATEIMAGEMASK(2):
        return " [x]";
      default:
        return "";
    }
  }

  WizardRequest* m_request;
  int32_t m_result = 0;
  std::atomic<bool> m_ended = false;
  std::thread m_thread;
};

}  // namespace postmarker::test
