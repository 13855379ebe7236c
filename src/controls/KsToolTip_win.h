// A tool tip of the module's own: a balloon beside a control, or a tip over the windows that it
// watches.
#pragma once

#include <windows.h>

#include <oleacc.h>

#include <string>
#include <vector>

#include "controls/OwnerWatch_win.h"
#include "support/ComPtr_win.h"
#include "support/Handles_win.h"
#include "ui/CWnd.h"

namespace postmarker {

// Belongs to one thread. The balloon never takes the focus or a click; it goes when it is clicked,
// when its time is over, and when its owner is hidden or moved, or its owner's top-level window is
// deactivated. To programs for the blind a message is an alert, which they read at once, and the
// tip of a watched window a tool tip.
class KsToolTip : public CWnd {
 public:
  KsToolTip();
  ~KsToolTip() override;

  // Makes the hidden window; `owner` is the window whose page it speaks for. `delayMs` passes
  // between the mouse coming to rest over a tool and its tip, `durationMs` until a balloon hides
  // itself (0: never), `balloon` gives it a stem that points at its place. False if the system
  // refuses.
  bool Create(HWND owner, UINT delayMs, UINT durationMs, bool balloon);

  // Shows `text` as a message that points at the rectangle, in screen coordinates. An empty text
  // hides it.
  void ShowAt(const std::wstring& text, const RECT& target);

  void Hide();

  // Watches a window: `text` is shown when the mouse rests over it. A window that is watched
  // already gets the new text. The window may be destroyed at any time.
  bool AddTool(HWND window, const std::wstring& text);

  // Ends the watch.
  void RemoveTool(HWND window);

  [[nodiscard]] size_t ToolCount() const { return m_tools.size(); }

  // What it shows or showed last, and whether that is a message.
  [[nodiscard]] const std::wstring& Text() const { return m_text; }
  [[nodiscard]] bool IsMessage() const { return m_isMessage; }

 protected:
  [[nodiscard]] const MessageTable* Messages() const override { return &kMessages; }
  static const MessageTable kMessages;
  static const MessageEntry kEntries[];

 private:
  struct Tool {
    HWND window;
    std::wstring text;
  };

  static LRESULT CALLBACK ToolProc(HWND window, UINT message, WPARAM wParam,
                                   LPARAM lParam) noexcept;
  void RelayEvent(HWND window, UINT message, LPARAM lParam);
  void ForgetTool(HWND window);
  void Show(const std::wstring& text, const RECT& target, bool isMessage);
  void Place(const RECT& target);
  [[nodiscard]] SIZE TextSize(HDC dc, int widest) const;
  void Paint(HDC dc) const;

  LRESULT HandlePaint(const MessageArgs& args);
  LRESULT HandleTimer(const MessageArgs& args);
  LRESULT HandleMouseActivate(const MessageArgs& args);
  LRESULT HandleClick(const MessageArgs& args);
  LRESULT HandleGetObject(const MessageArgs& args);
  LRESULT HandleDestroy(const MessageArgs& args);

  HWND m_owner = nullptr;
  OwnerWatch m_watch;
  ComPtr<IAccessible> m_accessible;  // made when somebody asks
  std::wstring m_text;
  bool m_isMessage = false;
  POINT m_point = {};  // where the stem's tip stands, in client coordinates
  std::vector<Tool> m_tools;
  HWND m_hovered = nullptr;
  UINT m_delayMs = 0;
  UINT m_durationMs = 0;
  bool m_balloon = false;
  bool m_stemBelow = false;
  FontHandle m_font;
};

}  // namespace postmarker
