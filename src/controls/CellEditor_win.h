// The windows of in-place editing: an edit box or a combo box over a cell of a list view.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

namespace postmarker {

// The control id of every cell editor.
inline constexpr int kEditorId = 10;

// What an editor's user data says once a key has ended the edit; 0 before.
inline constexpr LONG_PTR kEditAccepted = 0x10000;
inline constexpr LONG_PTR kEditCancelled = 0x10001;
inline constexpr LONG_PTR kComboAccepted = 0x20000;
inline constexpr LONG_PTR kComboCancelled = 0x20001;

// The registered messages: an editor posts WM_COMMAND with KillMe as its notification to the list
// view, and an editor gets Suicide posted to it to be destroyed outside its own notifications.
UINT KillMeMessage();
UINT SuicideMessage();

// Where an editor opens and with what.
struct CellEditorPlace {
  HWND list;
  RECT rect;          // in the list view's client area
  std::wstring name;  // what a screen reader calls the editor
  std::wstring text;  // selected as a whole
};

// An edit box with the focus in which texts of up to `limit` units can be typed; a longer one that
// is there already stays whole. Null if the system refuses or
// if there is an editor somewhere in the process: they share the data of their window procedures.
HWND CreateCellEdit(const CellEditorPlace& place, uint16_t limit);

// A combo box with the focus. The choice that equals the text is chosen; an editable one takes the
// text in any case.
HWND CreateCellCombo(const CellEditorPlace& place, const std::vector<std::wstring>& choices,
                     bool editable, uint16_t limit);

// Marks the outcome, for DestroyCellEditor's caller to read, as the return or the escape key does.
void MarkCellEditor(HWND editor, bool accept);
bool IsCellEditorCancelled(HWND editor);

// Forgets a key that has ended the edit: the editor stays.
void ReopenCellEditor(HWND editor);

// The editor's whole text. In a combo box without an edit control that of the chosen item, empty
// for none.
std::wstring CellEditorText(HWND editor);

// In a combo box: the chosen item, -1 for none. An editable one whose text is none of its items
// first gets it as a new one. -1 for an edit box.
int CellEditorItem(HWND editor);

// Hides it and destroys it as soon as its notifications are through. Another one can be made at
// once.
void DestroyCellEditor(HWND editor);

}  // namespace postmarker
