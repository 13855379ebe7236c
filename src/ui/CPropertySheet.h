// A property sheet in wizard mode, run modally.
#pragma once

#include <string>
#include <vector>

#include "ui/CPropertyPage.h"
#include "ui/CWaitCursor.h"

namespace postmarker {

class CPropertySheet : public CWnd {
 public:
  // `owner` may be null; a window that dies while the sheet is up cancels it. Of a child window the
  // top-level window is the owner.
  CPropertySheet(std::wstring caption, HWND owner, UINT firstPage);

  // Adds a page at the end. The page belongs to the caller and must outlive DoModal.
  void AddPage(CPropertyPage* page);

  // Shows the sheet until it is closed: ID_WIZFINISH after Finish, IDCANCEL otherwise, -1 if a
  // page's template is missing or the system makes no sheet. Throws what a handler threw. A WM_QUIT
  // ends the sheet and is posted again. REQUIRES: a ModuleStateGuard on this thread.
  INT_PTR DoModal();

  [[nodiscard]] const std::wstring& Caption() const { return m_caption; }

  // While one lives, the sheet takes no input: it is disabled, shows the wait cursor, and drops
  // what is sent or posted to its buttons and its close box all the same. May nest; the sheet must
  // outlive it, its window need not. A null sheet is passed over.
  class InputPause {
   public:
    explicit InputPause(CPropertySheet* sheet);
    InputPause(const InputPause&) = delete;
    InputPause& operator=(const InputPause&) = delete;
    ~InputPause();

   private:
    CPropertySheet* m_sheet;
    bool m_wasForeground = false;
    CWaitCursor m_cursor;
  };

 protected:
  // Runs after the system has set the sheet up.
  virtual bool OnInitDialog();

  LRESULT WindowProc(const MessageArgs& args) override;
  [[nodiscard]] const MessageTable* Messages() const override { return &kMessages; }
  static const MessageTable kMessages;
  static const MessageEntry kEntries[];

 private:
  LRESULT HandleInitDialog(const MessageArgs& args);
  [[nodiscard]] bool TemplatesExist() const;
  bool CreateSheet();
  INT_PTR RunModalLoop();
  [[nodiscard]] bool IsOpen() const;
  [[nodiscard]] bool TakesInput(MSG* message) const;
  void EnsureFocus() const;

  std::wstring m_caption;
  HWND m_owner;
  UINT m_firstPage;
  bool m_mayHaveEnded = true;  // since the modal loop looked last
  int m_pauses = 0;
  std::vector<CPropertyPage*> m_pages;
};

// Puts a window into the middle of another one, or of the screen's work area if that is null or
// hidden.
void CenterWindow(HWND window, HWND over);

}  // namespace postmarker
