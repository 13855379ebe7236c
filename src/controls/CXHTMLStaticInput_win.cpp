// The links of a label: mouse, keyboard, and what a screen reader is told.
#include <algorithm>

#include "controls/CXHTMLStatic_win.h"

namespace postmarker {
namespace {

bool IsShiftDown() {
  return ::GetKeyState(VK_SHIFT) < 0;
}

POINT ScreenPoint(HWND window, POINT point) {
  ::ClientToScreen(window, &point);
  return point;
}

}  // namespace

// The number of the link at a point of the client area.
size_t CXHTMLStatic::VisibleLinkAt(POINT point) {
  const size_t link = LabelLinkAt(Layout(), point.x, point.y);
  const auto found = std::lower_bound(m_visibleLinks.begin(), m_visibleLinks.end(), link);
  return found != m_visibleLinks.end() && *found == link
             ? static_cast<size_t>(found - m_visibleLinks.begin())
             : kNone;
}

// The link that the Tab key goes to, or none.
size_t CXHTMLStatic::NextLink(bool backward) {
  if (m_focusedLink >= VisibleLinks().size()) {
    return kNone;
  }
  if (backward) {
    return m_focusedLink > 0 ? m_focusedLink - 1 : kNone;
  }
  return m_focusedLink + 1 < VisibleLinks().size() ? m_focusedLink + 1 : kNone;
}

void CXHTMLStatic::MoveFocus(size_t link) {
  m_focusedLink = link;
  Repaint();
  if (::GetFocus() == Handle() && link != kNone) {
    ::NotifyWinEvent(EVENT_OBJECT_FOCUS, Handle(), OBJID_CLIENT, static_cast<LONG>(link) + 1);
  }
}

// The label may be gone afterwards.
void CXHTMLStatic::OpenVisibleLink(size_t link) {
  if (link < VisibleLinks().size()) {
    const std::wstring target = Links()[m_visibleLinks[link]].target;
    OpenLink(target);
  }
}

// All of the label takes the mouse: a static control leaves it to its parent.
LRESULT CXHTMLStatic::HandleHitTest(const MessageArgs& /*args*/) {
  return HTCLIENT;
}

LRESULT CXHTMLStatic::HandleCursor(const MessageArgs& args) {
  POINT point = {};
  ::GetCursorPos(&point);
  ::ScreenToClient(Handle(), &point);
  if (LOWORD(args.lParam) == HTCLIENT && VisibleLinkAt(point) != kNone) {
    ::SetCursor(m_linkCursor);
    return TRUE;
  }
  return Default(args);
}

LRESULT CXHTMLStatic::HandleMouseMove(const MessageArgs& args) {
  m_overLink = VisibleLinkAt(PointOf(args)) != kNone;
  if (m_overLink) {
    ::SetCursor(m_linkCursor);
  }
  return 0;
}

LRESULT CXHTMLStatic::HandleButtonDown(const MessageArgs& args) {
  const POINT point = PointOf(args);
  m_pressedLink = VisibleLinkAt(point);
  if (m_pressedLink != kNone) {
    MoveFocus(m_pressedLink);
    ::SetFocus(Handle());
    ::SetCapture(Handle());
    return 0;
  }
  // The window with the caption: a page of a sheet must not move within it.
  const POINT screen = ScreenPoint(Handle(), point);
  ::ReleaseCapture();
  ::SendMessageW(::GetAncestor(Handle(), GA_ROOT), WM_NCLBUTTONDOWN, HTCAPTION,
                 MAKELPARAM(screen.x, screen.y));
  return 0;
}

// Like other buttons, a link opens when the mouse goes up over it: whoever moves away has thought
// better of it.
LRESULT CXHTMLStatic::HandleButtonUp(const MessageArgs& args) {
  const size_t pressed = m_pressedLink;
  if (::GetCapture() == Handle()) {
    ::ReleaseCapture();
  }
  if (pressed != kNone && VisibleLinkAt(PointOf(args)) == pressed) {
    OpenVisibleLink(pressed);
  }
  return 0;
}

LRESULT CXHTMLStatic::HandleCaptureChanged(const MessageArgs& /*args*/) {
  m_pressedLink = kNone;
  return 0;
}

bool CXHTMLStatic::WantsKey(const MSG& message) {
  if (message.message != WM_KEYDOWN && message.message != WM_CHAR) {
    return false;
  }
  // These keys and their characters have the same numbers.
  if (message.wParam == VK_TAB) {
    return NextLink(IsShiftDown()) != kNone;
  }
  return (message.wParam == VK_RETURN || message.wParam == VK_SPACE) && m_focusedLink != kNone;
}

// Not as a static text, in which the dialog would take each "&" for a shortcut.
LRESULT CXHTMLStatic::HandleDialogCode(const MessageArgs& args) {
  const auto* const message = reinterpret_cast<const MSG*>(args.lParam);
  return message != nullptr && WantsKey(*message) ? DLGC_WANTMESSAGE : 0;
}

LRESULT CXHTMLStatic::HandleKeyDown(const MessageArgs& args) {
  constexpr LPARAM kRepeated = 1 << 30;
  if (args.wParam == VK_TAB) {
    const size_t next = NextLink(IsShiftDown());
    if (next != kNone) {
      MoveFocus(next);
    }
    return 0;
  }
  if (args.wParam == VK_RETURN || args.wParam == VK_SPACE) {
    // A key that is held down opens its link once.
    if ((args.lParam & kRepeated) == 0) {
      OpenVisibleLink(m_focusedLink);
    }
    return 0;
  }
  return Default(args);
}

// From the end, the Tab key comes to the last link.
LRESULT CXHTMLStatic::HandleSetFocus(const MessageArgs& /*args*/) {
  const size_t count = VisibleLinks().size();
  if (m_focusedLink >= count && count > 0) {
    const bool fromBehind = ::GetKeyState(VK_TAB) < 0 && IsShiftDown();
    m_focusedLink = fromBehind ? count - 1 : 0;
  }
  MoveFocus(m_focusedLink);
  return 0;
}

// In the same window the focus comes back to the label as a whole; from another window, to the link
// that had it.
LRESULT CXHTMLStatic::HandleKillFocus(const MessageArgs& args) {
  const HWND next = reinterpret_cast<HWND>(args.wParam);
  if (next != nullptr && ::GetAncestor(next, GA_ROOT) == ::GetAncestor(Handle(), GA_ROOT)) {
    m_focusedLink = kNone;
  }
  Repaint();
  return 0;
}

// Another dialog may have opened over the label's own since this was posted.
LRESULT CXHTMLStatic::HandleOpenLink(const MessageArgs& args) {
  if (TakesInput()) {
    OpenVisibleLink(args.wParam);
  }
  return 0;
}

// A window whose dialog is disabled does not know of it itself.
bool CXHTMLStatic::TakesInput() const {
  return ::IsWindowEnabled(Handle()) && ::IsWindowEnabled(::GetAncestor(Handle(), GA_ROOT));
}

int CXHTMLStatic::LinkCount() {
  return static_cast<int>(VisibleLinks().size());
}

bool CXHTMLStatic::ReadLinkFacts(int link, ItemFacts* facts) {
  const auto number = static_cast<size_t>(link);
  if (link < 0 || number >= VisibleLinks().size()) {
    return false;
  }
  const LabelLink& read = Links()[m_visibleLinks[number]];
  facts->name = read.name;
  facts->value = read.target;
  facts->place = {};
  for (const LabelLinkPlace& place : LinkPlaces()) {
    if (place.link == m_visibleLinks[number]) {
      const RECT rect = {place.place.left, place.place.top, place.place.right, place.place.bottom};
      ::UnionRect(&facts->place, &facts->place, &rect);
    }
  }
  ::MapWindowPoints(Handle(), nullptr, reinterpret_cast<POINT*>(&facts->place), 2);
  facts->enabled = TakesInput();
  facts->focused = ::GetFocus() == Handle() && m_focusedLink == number;
  return true;
}

int CXHTMLStatic::LinkFromPoint(POINT point) {
  ::ScreenToClient(Handle(), &point);
  RECT client = {};
  ::GetClientRect(Handle(), &client);
  const size_t link = ::PtInRect(&client, point) ? VisibleLinkAt(point) : kNone;
  return link != kNone ? static_cast<int>(link) : -1;
}

void CXHTMLStatic::FocusLink(int link) {
  MoveFocus(static_cast<size_t>(link));
  ::SetFocus(Handle());
}

void CXHTMLStatic::OpenLinkLater(int link) {
  ::PostMessageW(Handle(), kOpenLinkMessage, static_cast<WPARAM>(link), 0);
}

}  // namespace postmarker
