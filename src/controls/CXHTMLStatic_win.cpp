#include "controls/CXHTMLStatic_win.h"

#include <algorithm>

#include "controls/LabelSurface_win.h"
#include "controls/LinkShell_win.h"
#include "controls/WindowAccessible_win.h"
#include "support/Text.h"

namespace postmarker {
namespace {

// No sensible distance is larger, in pixels.
constexpr int kMaxDistancePx = 1 << 20;

SystemLinkShell& SystemShell() {
  static SystemLinkShell shell;
  return shell;
}

HFONT FontOf(HWND window) {
  return reinterpret_cast<HFONT>(::SendMessageW(window, WM_GETFONT, 0, 0));
}

}  // namespace

const MessageEntry CXHTMLStatic::kEntries[] = {
    OnMessage(WM_PAINT, &CXHTMLStatic::HandlePaint),
    OnMessage(WM_PRINTCLIENT, &CXHTMLStatic::HandlePrint),
    OnMessage(WM_ERASEBKGND, &CXHTMLStatic::HandleErase),
    OnMessage(WM_SETTEXT, &CXHTMLStatic::HandleSetText),
    OnMessage(WM_SETFONT, &CXHTMLStatic::HandleSetFont),
    OnMessage(WM_ENABLE, &CXHTMLStatic::HandleEnable),
    OnMessage(WM_SIZE, &CXHTMLStatic::HandleSize),
    OnMessage(WM_STYLECHANGED, &CXHTMLStatic::HandleStyle),
    OnMessage(WM_SYSCOLORCHANGE, &CXHTMLStatic::HandleColors),
    OnMessage(WM_NCHITTEST, &CXHTMLStatic::HandleHitTest),
    OnMessage(WM_SETCURSOR, &CXHTMLStatic::HandleCursor),
    OnMessage(WM_MOUSEMOVE, &CXHTMLStatic::HandleMouseMove),
    OnMessage(WM_LBUTTONDOWN, &CXHTMLStatic::HandleButtonDown),
    OnMessage(WM_LBUTTONDBLCLK, &CXHTMLStatic::HandleButtonDown),
    OnMessage(WM_LBUTTONUP, &CXHTMLStatic::HandleButtonUp),
    OnMessage(WM_CAPTURECHANGED, &CXHTMLStatic::HandleCaptureChanged),
    OnMessage(WM_GETDLGCODE, &CXHTMLStatic::HandleDialogCode),
    OnMessage(WM_KEYDOWN, &CXHTMLStatic::HandleKeyDown),
    OnMessage(WM_SETFOCUS, &CXHTMLStatic::HandleSetFocus),
    OnMessage(WM_KILLFOCUS, &CXHTMLStatic::HandleKillFocus),
    OnMessage(WM_GETOBJECT, &CXHTMLStatic::HandleGetObject),
    OnMessage(kOpenLinkMessage, &CXHTMLStatic::HandleOpenLink),
    OnMessage(WM_DESTROY, &CXHTMLStatic::HandleDestroy),
};
const MessageTable CXHTMLStatic::kMessages = {&CStatic::kMessages, CXHTMLStatic::kEntries};

CXHTMLStatic::CXHTMLStatic(LinkShell* shell)
    : m_shell(shell), m_linkCursor(::LoadCursorW(nullptr, IDC_HAND)) {}

CXHTMLStatic::CXHTMLStatic() : CXHTMLStatic(&SystemShell()) {}

bool CXHTMLStatic::Attach(HWND label) {
  if (!Subclass(label)) {
    return false;
  }
  ForgetText();
  return true;
}

CXNamedColors CXHTMLStatic::SetTextColor(const CXNamedColors& color) {
  const CXNamedColors before = m_textColor.value_or(CXNamedColors(::GetSysColor(COLOR_WINDOWTEXT)));
  m_textColor = color;
  Repaint();
  return before;
}

CXNamedColors CXHTMLStatic::SetBackColor(const CXNamedColors& color) {
  const CXNamedColors before = m_backColor.value_or(CXNamedColors(::GetSysColor(COLOR_WINDOW)));
  m_backColor = color;
  Repaint();
  return before;
}

void CXHTMLStatic::SetMargins(int left, int right) {
  m_area.leftMargin = std::clamp(left, 0, kMaxDistancePx);
  m_area.rightMargin = std::clamp(right, 0, kMaxDistancePx);
  ForgetLayout();
}

void CXHTMLStatic::SetLineSpacing(int pixels) {
  m_area.lineSpacing = std::clamp(pixels, 0, kMaxDistancePx);
  ForgetLayout();
}

void CXHTMLStatic::SetAppCommands(const AppCommand* commands, size_t count) {
  m_appCommands.assign(commands, commands + count);
}

bool CXHTMLStatic::OpenLink(const std::wstring& target) {
  const std::optional<std::wstring> name = AppCommandName(target);
  if (!name) {
    return OpenTarget(target, m_shell);
  }
  const auto found =
      std::find_if(m_appCommands.begin(), m_appCommands.end(), [&name](const AppCommand& command) {
        return EqualNoCase(command.name, *name) && ::IsWindow(command.window);
      });
  if (found == m_appCommands.end()) {
    return false;
  }
  // The command may close the dialog, and this label with it.
  ::SendMessageW(found->window, found->message, found->wParam, 0);
  return true;
}

const LabelMarkup& CXHTMLStatic::Markup() {
  if (!m_markup) {
    m_markup = ParseLabel(Text());
  }
  return *m_markup;
}

const LabelLayout& CXHTMLStatic::Layout() {
  if (!m_layout) {
    RECT client = {};
    ::GetClientRect(Handle(), &client);
    LabelArea area = m_area;
    area.width = client.right;
    area.wrap = Kind() != SS_SIMPLE && Kind() != SS_LEFTNOWORDWRAP;
    const WindowDc dc(Handle());
    GdiLabelSurface surface(dc.Get(), FontOf(Handle()));
    m_layout = LayOutLabel(Markup(), area, &surface);
    m_visibleLinks = VisibleLabelLinks(*m_layout);
  }
  return *m_layout;
}

const std::vector<size_t>& CXHTMLStatic::VisibleLinks() {
  Layout();
  return m_visibleLinks;
}

void CXHTMLStatic::ForgetText() {
  m_markup.reset();
  m_pressedLink = kNone;
  ForgetLayout();
  m_focusedLink = ::GetFocus() == Handle() && !VisibleLinks().empty() ? 0 : kNone;
  UpdateTabStop();
}

void CXHTMLStatic::ForgetLayout() {
  m_layout.reset();
  Repaint();
}

// Only a label with links is a stop of the Tab key.
void CXHTMLStatic::UpdateTabStop() {
  const LONG_PTR style = ::GetWindowLongPtrW(Handle(), GWL_STYLE);
  const LONG_PTR wanted =
      VisibleLinks().empty() ? style & ~LONG_PTR{WS_TABSTOP} : style | LONG_PTR{WS_TABSTOP};
  if (wanted != style) {
    ::SetWindowLongPtrW(Handle(), GWL_STYLE, wanted);
  }
}

void CXHTMLStatic::Paint(HDC dc, const RECT& clip) {
  RECT client = {};
  ::GetClientRect(Handle(), &client);
  const bool enabled = ::IsWindowEnabled(Handle()) != FALSE;
  const CXNamedColors text = m_textColor.value_or(
      CXNamedColors(::GetSysColor(enabled ? COLOR_WINDOWTEXT : COLOR_GRAYTEXT)));
  const CXNamedColors back = m_backColor.value_or(CXNamedColors(::GetSysColor(COLOR_WINDOW)));
  const LabelLayout& layout = Layout();
  GdiLabelSurface surface(dc, FontOf(Handle()));
  surface.FillRectangle({0, 0, client.right, client.bottom}, back.Value());
  DrawLabel(Markup(), layout, {clip.left, clip.top, clip.right, clip.bottom}, text.Value(),
            &surface);
}

void CXHTMLStatic::DrawFocus(HDC dc) {
  if (::GetFocus() != Handle() || m_focusedLink >= VisibleLinks().size()) {
    return;
  }
  const SavedDcState state(dc);
  ::SetTextColor(dc, RGB(0, 0, 0));
  ::SetBkColor(dc, RGB(255, 255, 255));
  for (const LabelLinkPlace& place : Layout().links) {
    if (place.link == m_visibleLinks[m_focusedLink]) {
      const RECT rect = {place.place.left, place.place.top, place.place.right, place.place.bottom};
      ::DrawFocusRect(dc, &rect);
    }
  }
}

LRESULT CXHTMLStatic::HandlePaint(const MessageArgs& /*args*/) {
  const PaintDc paint(Handle());
  RECT client = {};
  ::GetClientRect(Handle(), &client);
  RECT clip = {};
  ::GetClipBox(paint.Get(), &clip);
  // In memory first, so that nothing flickers.
  const MemoryDc memory(::CreateCompatibleDC(paint.Get()));
  const BitmapHandle bitmap(::CreateCompatibleBitmap(paint.Get(), std::max(1L, client.right),
                                                     std::max(1L, client.bottom)));
  if (memory && bitmap) {
    const ObjectSelection selection(memory.Get(), bitmap.Get());
    Paint(memory.Get(), clip);
    DrawFocus(memory.Get());
    ::BitBlt(paint.Get(), clip.left, clip.top, clip.right - clip.left, clip.bottom - clip.top,
             memory.Get(), clip.left, clip.top, SRCCOPY);
  } else {
    Paint(paint.Get(), clip);
    DrawFocus(paint.Get());
  }
  return 0;
}

LRESULT CXHTMLStatic::HandlePrint(const MessageArgs& args) {
  const HDC dc = reinterpret_cast<HDC>(args.wParam);
  RECT client = {};
  ::GetClientRect(Handle(), &client);
  Paint(dc, client);
  DrawFocus(dc);
  return 0;
}

// Painting covers all of the window.
LRESULT CXHTMLStatic::HandleErase(const MessageArgs& /*args*/) {
  return TRUE;
}

// Past the control's own handler, which would draw the tags at once.
LRESULT CXHTMLStatic::HandleSetText(const MessageArgs& args) {
  const LRESULT result = ::DefWindowProcW(Handle(), args.message, args.wParam, args.lParam);
  ForgetText();
  return result;
}

// Without the control's own repainting, for the same reason.
LRESULT CXHTMLStatic::HandleSetFont(const MessageArgs& args) {
  const LRESULT result = Default({args.message, args.wParam, FALSE});
  ForgetLayout();
  return result;
}

LRESULT CXHTMLStatic::HandleEnable(const MessageArgs& /*args*/) {
  Repaint();
  return 0;
}

LRESULT CXHTMLStatic::HandleSize(const MessageArgs& args) {
  ForgetLayout();
  return Default(args);
}

LRESULT CXHTMLStatic::HandleStyle(const MessageArgs& args) {
  const auto* const styles = reinterpret_cast<const STYLESTRUCT*>(args.lParam);
  if (((styles->styleOld ^ styles->styleNew) & SS_TYPEMASK) != 0) {
    ForgetLayout();
  }
  return Default(args);
}

LRESULT CXHTMLStatic::HandleColors(const MessageArgs& args) {
  Repaint();
  return Default(args);
}

LRESULT CXHTMLStatic::HandleGetObject(const MessageArgs& args) {
  if (!AsksForClientArea(args.lParam)) {
    return Default(args);
  }
  if (!m_accessible) {
    m_accessible = MakeLabelAccessible(Handle());
  }
  return m_accessible ? ::LresultFromObject(__uuidof(IAccessible), args.wParam, m_accessible.Get())
                      : Default(args);
}

LRESULT CXHTMLStatic::HandleDestroy(const MessageArgs& args) {
  m_accessible.Reset();
  return Default(args);
}

}  // namespace postmarker
