// A dialog with the role of a context menu.
#pragma once

#include <windows.h>

#include <memory>
#include <string>
#include <vector>

#include "ui/CDialog.h"
#include "ui/DialogTemplate.h"

namespace postmarker {

// One command of a context menu. The text may hold an accelerator.
struct ContextMenuItem {
  int id;
  std::wstring text;
};

// Shows the commands below each other at a point of the screen. A click, Enter or the accelerator
// chooses one; Escape, a click elsewhere or another window's activation closes it.
class KsContextMenuDlg : public CDialog {
 public:
  // `owner` may be null. The ids must be above 2 and below 0x8000.
  KsContextMenuDlg(HWND owner, std::vector<ContextMenuItem> items);

  // The id of the command chosen, or 0. REQUIRES: a ModuleStateGuard on this thread.
  int ShowAt(POINT screen);

  // The suite's window hook module, if it is loaded beside this module; its skin then styles the
  // dialog.
  [[nodiscard]] HMODULE WindowHook() const { return m_windowHook; }

 protected:
  bool OnInitDialog() override;
  const DLGTEMPLATE* MemoryTemplate() override;

  [[nodiscard]] const MessageTable* Messages() const override { return &kMessages; }
  static const MessageTable kMessages;
  static const MessageEntry kEntries[];

 private:
  LRESULT HandleCommand(const MessageArgs& args);
  LRESULT HandleActivate(const MessageArgs& args);

  HMODULE m_windowHook;
  std::vector<ContextMenuItem> m_items;
  std::unique_ptr<DialogTemplate> m_template;
  POINT m_point = {};
  bool m_ended = false;
};

}  // namespace postmarker
