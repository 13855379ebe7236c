// A static text with a small markup language: styles, fonts, colors, links, rules and word wrap.
#pragma once

#include <windows.h>

#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "controls/CXNamedColors.h"
#include "controls/LabelAccessible_win.h"
#include "controls/LabelLayout.h"
#include "controls/LabelMarkup.h"
#include "controls/LinkOpener.h"
#include "ui/CStatic.h"

namespace postmarker {

// The window and the message to send for a link whose target is "APP:" and the name.
struct AppCommand {
  HWND window = nullptr;
  UINT message = 0;
  WPARAM wParam = 0;
  std::wstring name;
};

// The markup is the window's text, in the language of LabelMarkup.h. Set any time, by SetText or by
// the system's own messages, it shows at once. Links are opened by a click, by Enter and by the
// blank; the Tab key stops at each of them. A label without links is no stop. Anywhere else the
// label moves its dialog, as the caption does. For the window's own thread.
class CXHTMLStatic : public CStatic, public LinkSource {
 public:
  // Opens links through `shell`, which must outlive the label.
  explicit CXHTMLStatic(LinkShell* shell);
  // Opens links through the system's shell.
  CXHTMLStatic();

  // Takes an existing static control over. With the style SS_SIMPLE or SS_LEFTNOWORDWRAP, lines end
  // only where the text says so. False if there is no such window or the object has one already.
  bool Attach(HWND label);

  // The colors of what has none of its own, by name or by value, and of the ground. At first they
  // are the system's colors of windows and of texts in them. Both return the color before.
  CXNamedColors SetTextColor(const CXNamedColors& color);
  CXNamedColors SetBackColor(const CXNamedColors& color);

  // Pixels beside the lines; at first none. Negative ones count as none.
  void SetMargins(int left, int right);

  // Pixels between two lines; at first none. Negative ones count as none.
  void SetLineSpacing(int pixels);

  // Replaces the commands of the program by `count` records. They are copied.
  void SetAppCommands(const AppCommand* commands, size_t count);

  // Opens a target as a click on its link does. "APP:" and a name, compared ignoring case, sends
  // the message of the first command of that name whose window exists; any other target is opened
  // by the shell. False if there is no such command, or if the shell opens nothing. The label may
  // be gone afterwards.
  bool OpenLink(const std::wstring& target);

  // The rectangles of the links, in client coordinates, and the links themselves, which rectangles
  // name by number.
  const std::vector<LabelLinkPlace>& LinkPlaces() { return Layout().links; }
  const std::vector<LabelLink>& Links() { return Markup().links; }

  // Was the mouse over a link when it moved last?
  [[nodiscard]] bool IsOverLink() const { return m_overLink; }

  // How many pixels high the text is in the control's width.
  int TextHeight() { return Layout().height; }

 protected:
  [[nodiscard]] const MessageTable* Messages() const override { return &kMessages; }
  static const MessageTable kMessages;
  static const MessageEntry kEntries[];

 private:
  // Posted to itself: opens the link whose number is the first parameter.
  static constexpr UINT kOpenLinkMessage = WM_USER + 1;

  // Of no link. Links that can be seen have numbers from 0 on.
  static constexpr size_t kNone = std::numeric_limits<size_t>::max();

  [[nodiscard]] std::wstring PlainText() override { return LabelPlainText(Markup()); }
  [[nodiscard]] int LinkCount() override;
  bool ReadLinkFacts(int link, ItemFacts* facts) override;
  [[nodiscard]] int LinkFromPoint(POINT point) override;
  void FocusLink(int link) override;
  void OpenLinkLater(int link) override;

  const LabelMarkup& Markup();
  const LabelLayout& Layout();
  const std::vector<size_t>& VisibleLinks();
  void ForgetText();
  void ForgetLayout();
  void UpdateTabStop();

  void Paint(HDC dc, const RECT& clip);
  void DrawFocus(HDC dc);
  void Repaint() { ::InvalidateRect(Handle(), nullptr, FALSE); }

  size_t VisibleLinkAt(POINT point);
  void MoveFocus(size_t link);
  [[nodiscard]] size_t NextLink(bool backward);
  [[nodiscard]] bool TakesInput() const;
  void OpenVisibleLink(size_t link);
  bool WantsKey(const MSG& message);

  LRESULT HandlePaint(const MessageArgs& args);
  LRESULT HandlePrint(const MessageArgs& args);
  LRESULT HandleErase(const MessageArgs& args);
  LRESULT HandleSetText(const MessageArgs& args);
  LRESULT HandleSetFont(const MessageArgs& args);
  LRESULT HandleEnable(const MessageArgs& args);
  LRESULT HandleSize(const MessageArgs& args);
  LRESULT HandleStyle(const MessageArgs& args);
  LRESULT HandleColors(const MessageArgs& args);
  LRESULT HandleHitTest(const MessageArgs& args);
  LRESULT HandleCursor(const MessageArgs& args);
  LRESULT HandleMouseMove(const MessageArgs& args);
  LRESULT HandleButtonDown(const MessageArgs& args);
  LRESULT HandleButtonUp(const MessageArgs& args);
  LRESULT HandleCaptureChanged(const MessageArgs& args);
  LRESULT HandleDialogCode(const MessageArgs& args);
  LRESULT HandleKeyDown(const MessageArgs& args);
  LRESULT HandleSetFocus(const MessageArgs& args);
  LRESULT HandleKillFocus(const MessageArgs& args);
  LRESULT HandleGetObject(const MessageArgs& args);
  LRESULT HandleOpenLink(const MessageArgs& args);
  LRESULT HandleDestroy(const MessageArgs& args);

  LinkShell* m_shell;
  std::vector<AppCommand> m_appCommands;
  std::optional<CXNamedColors> m_textColor;  // none: the system's
  std::optional<CXNamedColors> m_backColor;
  LabelArea m_area;  // but for its width, which is the window's

  // What follows from the text and from the window, until one of them changes.
  std::optional<LabelMarkup> m_markup;
  std::optional<LabelLayout> m_layout;
  std::vector<size_t> m_visibleLinks;

  HCURSOR m_linkCursor;
  bool m_overLink = false;
  size_t m_pressedLink = kNone;
  size_t m_focusedLink = kNone;
  ComPtr<IAccessible> m_accessible;  // made when somebody asks
};

}  // namespace postmarker
