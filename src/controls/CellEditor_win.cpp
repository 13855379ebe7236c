#include "controls/CellEditor_win.h"

#include <commctrl.h>

#include <atomic>
#include <cwchar>

#include "ui/CWnd.h"

namespace postmarker {
namespace {

// How far an open list may reach below its combo box, at 96 pixels per inch.
constexpr int kDropHeight = 160;

// For an item's text, before more is known of its length.
constexpr size_t kFirstRoom = 255;

// Of the one editor of the process.
std::atomic<HWND> g_editor = nullptr;
HWND g_label = nullptr;
WNDPROC g_editProc = nullptr;
WNDPROC g_comboExProc = nullptr;
WNDPROC g_comboProc = nullptr;
bool g_isCombo = false;
bool g_isEditable = false;
WORD g_listEnd = 0;  // how the combo box's list is closing: CBN_SELENDOK or CBN_SELENDCANCEL

// What holds the place while the editor is being made.
const HWND kBeingMade = reinterpret_cast<HWND>(-1);

WNDPROC TakeOver(HWND window, WNDPROC proc) {
  return reinterpret_cast<WNDPROC>(
      ::SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(proc)));
}

void PostEnd(HWND editor, bool accept) {
  MarkCellEditor(editor, accept);
  ::PostMessageW(::GetParent(editor), WM_COMMAND, MAKEWPARAM(kEditorId, KillMeMessage()),
                 reinterpret_cast<LPARAM>(editor));
}

bool IsListOpen() {
  return g_isCombo && ::SendMessageW(g_editor, CB_GETDROPPEDSTATE, 0, 0) != 0;
}

// What editors do with keys. True: the message is dealt with.
bool HandleKey(UINT message, WPARAM key) {
  if (message == WM_CHAR) {
    // Their key downs have done the work; the edit box would beep.
    return key == L'\r' || key == L'\t' || key == VK_ESCAPE;
  }
  if (message != WM_KEYDOWN || g_editor == nullptr || IsListOpen()) {
    return false;
  }
  if (key == VK_RETURN || key == VK_TAB || key == VK_ESCAPE) {
    PostEnd(g_editor, key != VK_ESCAPE);
    return true;
  }
  return false;
}

// The editor's edit is over, or its window gone with the list view.
void FreePlace(HWND editor) {
  if (editor == g_editor) {
    ::DestroyWindow(g_label);
    g_label = nullptr;
    g_editor = nullptr;
  }
}

LRESULT CALLBACK EditProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
  if (message == SuicideMessage()) {
    ::DestroyWindow(window);
    return 0;
  }
  if (HandleKey(message, wParam)) {
    return 0;
  }
  const LRESULT result = ::CallWindowProcW(g_editProc, window, message, wParam, lParam);
  if (message == WM_NCDESTROY) {
    FreePlace(window);
  }
  return message == WM_GETDLGCODE ? result | DLGC_WANTALLKEYS : result;
}

// The combo box inside a ComboBoxEx32.
LRESULT CALLBACK ComboProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
  if (message == SuicideMessage()) {
    ::DestroyWindow(::GetParent(window));
    return 0;
  }
  if (message == WM_GETDLGCODE) {
    return ::CallWindowProcW(g_comboProc, window, message, wParam, lParam) | DLGC_WANTALLKEYS;
  }
  if (HandleKey(message, wParam)) {
    return 0;
  }
  return ::CallWindowProcW(g_comboProc, window, message, wParam, lParam);
}

// Closing the list ends the edit, but for an editable box whose list was closed without a choice.
void WatchList(HWND editor, WORD notification) {
  if (notification == CBN_SELENDOK || notification == CBN_SELENDCANCEL) {
    g_listEnd = notification;
  } else if (notification == CBN_CLOSEUP && (g_listEnd == CBN_SELENDOK || !g_isEditable)) {
    PostEnd(editor, g_listEnd == CBN_SELENDOK);
  }
}

// The ComboBoxEx32 itself.
LRESULT CALLBACK ComboExProc(HWND window, UINT message, WPARAM wParam, LPARAM lParam) noexcept {
  const LRESULT result = ::CallWindowProcW(g_comboExProc, window, message, wParam, lParam);
  if (message == WM_COMMAND) {
    WatchList(window, HIWORD(wParam));
  } else if (message == WM_NCDESTROY) {
    FreePlace(window);
  }
  return result;
}

void SetFont(HWND list, HWND editor) {
  ::SendMessageW(editor, WM_SETFONT, ::SendMessageW(list, WM_GETFONT, 0, 0), FALSE);
}

// A control's name is the text of the static control before it. It has no size.
HWND MakeLabel(const CellEditorPlace& place) {
  return ::CreateWindowExW(0, L"STATIC", place.name.c_str(), WS_CHILD | WS_VISIBLE, 0, 0, 0, 0,
                           place.list, nullptr, nullptr, nullptr);
}

HWND MakeEditor(const CellEditorPlace& place, const wchar_t* windowClass, DWORD style, int height) {
  const RECT& rect = place.rect;
  return ::CreateWindowExW(0, windowClass, L"", WS_CHILD | WS_VISIBLE | style, rect.left, rect.top,
                           rect.right - rect.left, height, place.list,
                           reinterpret_cast<HMENU>(static_cast<INT_PTR>(kEditorId)), nullptr,
                           nullptr);
}

// Takes the process's one place. False if it is taken.
bool TakePlace() {
  HWND none = nullptr;
  return g_editor.compare_exchange_strong(none, kBeingMade);
}

// Gives the place to the editor, or gives it back.
HWND KeepPlace(HWND editor) {
  if (editor == nullptr && g_label != nullptr) {
    ::DestroyWindow(g_label);
    g_label = nullptr;
  }
  g_editor = editor;
  return editor;
}

void FillCombo(HWND combo, const CellEditorPlace& place, const std::vector<std::wstring>& choices) {
  int chosen = -1;
  for (size_t i = 0; i < choices.size(); ++i) {
    COMBOBOXEXITEMW item = {};
    item.mask = CBEIF_TEXT | CBEIF_LPARAM;
    item.iItem = static_cast<INT_PTR>(i);
    item.pszText = const_cast<wchar_t*>(choices[i].c_str());
    item.lParam = static_cast<LPARAM>(i);
    ::SendMessageW(combo, CBEM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
    if (choices[i] == place.text) {
      chosen = static_cast<int>(i);
    }
  }
  ::SendMessageW(combo, CB_SETCURSEL, static_cast<WPARAM>(chosen), 0);
}

}  // namespace

UINT KillMeMessage() {
  static const UINT message = ::RegisterWindowMessageW(L"CGridCtrl_KillMe");
  return message;
}

UINT SuicideMessage() {
  static const UINT message = ::RegisterWindowMessageW(L"CGridCtrl_Suicide");
  return message;
}

HWND CreateCellEdit(const CellEditorPlace& place, uint16_t limit) {
  if (!TakePlace()) {
    return nullptr;
  }
  g_label = MakeLabel(place);
  g_isCombo = false;
  const int height = place.rect.bottom - place.rect.top;
  const HWND edit = MakeEditor(place, L"EDIT", WS_BORDER | ES_AUTOHSCROLL, height);
  if (edit == nullptr) {
    return KeepPlace(nullptr);
  }
  SetFont(place.list, edit);
  ::SendMessageW(edit, EM_SETLIMITTEXT, limit, 0);
  ::SetWindowTextW(edit, place.text.c_str());
  g_editProc = TakeOver(edit, &EditProc);
  KeepPlace(edit);
  ::SetFocus(edit);
  ::SendMessageW(edit, EM_SETSEL, 0, -1);
  return edit;
}

HWND CreateCellCombo(const CellEditorPlace& place, const std::vector<std::wstring>& choices,
                     bool editable, uint16_t limit) {
  if (!TakePlace()) {
    return nullptr;
  }
  g_label = MakeLabel(place);
  g_isCombo = true;
  g_isEditable = editable;
  const int height = place.rect.bottom - place.rect.top + kDropHeight;
  const DWORD style = (editable ? CBS_DROPDOWN : CBS_DROPDOWNLIST) | CBS_AUTOHSCROLL | WS_VSCROLL;
  const HWND combo = MakeEditor(place, WC_COMBOBOXEXW, style, height);
  if (combo == nullptr) {
    return KeepPlace(nullptr);
  }
  SetFont(place.list, combo);
  FillCombo(combo, place, choices);
  const auto inner = reinterpret_cast<HWND>(::SendMessageW(combo, CBEM_GETCOMBOCONTROL, 0, 0));
  const auto edit = reinterpret_cast<HWND>(::SendMessageW(combo, CBEM_GETEDITCONTROL, 0, 0));
  g_comboExProc = TakeOver(combo, &ComboExProc);
  g_comboProc = TakeOver(inner, &ComboProc);
  KeepPlace(combo);
  if (edit != nullptr) {
    ::SendMessageW(edit, EM_SETLIMITTEXT, limit, 0);
    ::SetWindowTextW(edit, place.text.c_str());
    g_editProc = TakeOver(edit, &EditProc);
    ::SetFocus(edit);
    ::SendMessageW(edit, EM_SETSEL, 0, -1);
  } else {
    ::SetFocus(inner);
  }
  return combo;
}

void MarkCellEditor(HWND editor, bool accept) {
  const LONG_PTR outcome = g_isCombo ? (accept ? kComboAccepted : kComboCancelled)
                                     : (accept ? kEditAccepted : kEditCancelled);
  ::SetWindowLongPtrW(editor, GWLP_USERDATA, outcome);
}

bool IsCellEditorCancelled(HWND editor) {
  const LONG_PTR outcome = ::GetWindowLongPtrW(editor, GWLP_USERDATA);
  return outcome == kEditCancelled || outcome == kComboCancelled;
}

void ReopenCellEditor(HWND editor) {
  ::SetWindowLongPtrW(editor, GWLP_USERDATA, 0);
}

std::wstring CellEditorText(HWND editor) {
  if (!g_isCombo || g_isEditable) {
    return WindowText(editor);
  }
  // The window's text of a box without an edit control is empty.
  const LRESULT chosen = ::SendMessageW(editor, CB_GETCURSEL, 0, 0);
  if (chosen < 0) {
    return {};
  }
  std::wstring text(kFirstRoom, L'\0');
  for (;;) {
    COMBOBOXEXITEMW item = {};
    item.mask = CBEIF_TEXT;
    item.iItem = chosen;
    item.pszText = text.data();
    item.cchTextMax = static_cast<int>(text.size());
    ::SendMessageW(editor, CBEM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item));
    const size_t length = std::wcslen(text.c_str());
    if (length + 1 < text.size()) {
      text.resize(length);
      return text;
    }
    // It may have been cut.
    text.resize(text.size() * 2);
  }
}

int CellEditorItem(HWND editor) {
  if (!g_isCombo) {
    return -1;
  }
  if (!g_isEditable) {
    return static_cast<int>(::SendMessageW(editor, CB_GETCURSEL, 0, 0));
  }
  const std::wstring text = WindowText(editor);
  const auto found = static_cast<int>(::SendMessageW(
      editor, CB_FINDSTRINGEXACT, static_cast<WPARAM>(-1), reinterpret_cast<LPARAM>(text.c_str())));
  if (found >= 0 || text.empty()) {
    return found;
  }
  COMBOBOXEXITEMW item = {};
  item.mask = CBEIF_TEXT | CBEIF_LPARAM;
  item.iItem = -1;
  item.pszText = const_cast<wchar_t*>(text.c_str());
  item.lParam = -1;
  return static_cast<int>(
      ::SendMessageW(editor, CBEM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item)));
}

void DestroyCellEditor(HWND editor) {
  if (editor != g_editor) {
    return;
  }
  HWND last = editor;
  if (g_isCombo) {
    // Windows that wait for their end must not meet the procedures of a next editor.
    last = reinterpret_cast<HWND>(::SendMessageW(editor, CBEM_GETCOMBOCONTROL, 0, 0));
    TakeOver(editor, g_comboExProc);
    if (const auto edit =
            reinterpret_cast<HWND>(::SendMessageW(editor, CBEM_GETEDITCONTROL, 0, 0))) {
      TakeOver(edit, g_editProc);
    }
  }
  FreePlace(editor);
  ::ShowWindow(editor, SW_HIDE);
  ::PostMessageW(last, SuicideMessage(), 0, 0);
}

}  // namespace postmarker
