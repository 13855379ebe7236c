#include "controls/KsToolTip_win.h"

#include <algorithm>

#include "controls/WindowAccessible_win.h"
#include "support/DeviceContext_win.h"
#include "support/Variant_win.h"
#include "ui/CWinApp.h"

namespace postmarker {
namespace {

constexpr wchar_t kWindowClass[] = L"KsToolTipWnd";
constexpr wchar_t kToolTipProperty[] = L"KSTOOLTIP";
constexpr wchar_t kPreviousProcProperty[] = L"WNDPROC_BEFORE_CPTT";
constexpr size_t kToolRoom = 10;

constexpr UINT_PTR kDelayTimer = 1;
constexpr UINT_PTR kDurationTimer = 2;

// Sizes at 96 pixels per inch.
constexpr int kPadding = 8;
constexpr int kStemHeight = 10;
constexpr int kStemWidth = 12;
constexpr int kCorner = 8;
constexpr int kWidestText = 300;

int Scaled(HWND window, int size) {
  const WindowDc dc(window);
  return ::MulDiv(size, ::GetDeviceCaps(dc.Get(), LOGPIXELSX), 96);
}

HINSTANCE ThisModule() {
  return AfxGetApp() != nullptr ? AfxGetApp()->Module() : ::GetModuleHandleW(nullptr);
}

bool RegisterWindowClass() {
  WNDCLASSEXW known = {};
  known.cbSize = sizeof(known);
  if (::GetClassInfoExW(ThisModule(), kWindowClass, &known)) {
    return true;
  }
  WNDCLASSEXW description = {};
  description.cbSize = sizeof(description);
  description.style = CS_DROPSHADOW | CS_SAVEBITS;
  description.lpfnWndProc = ::DefWindowProcW;
  description.hInstance = ThisModule();
  description.hCursor = ::LoadCursorW(nullptr, MAKEINTRESOURCEW(32512));
  description.lpszClassName = kWindowClass;
  return ::RegisterClassExW(&description) != 0;
}

// The font that the system gives to message texts.
FontHandle MessageFont() {
  NONCLIENTMETRICSW metrics = {};
  metrics.cbSize = sizeof(metrics);
  if (!::SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof(metrics), &metrics, 0)) {
    return {};
  }
  return FontHandle(::CreateFontIndirectW(&metrics.lfMessageFont));
}

// A tip as the platform's accessibility interface shows it.
class ToolTipAccessible final : public WindowAccessible {
 public:
  using WindowAccessible::WindowAccessible;

  HRESULT STDMETHODCALLTYPE get_accName(VARIANT child, BSTR* out) override {
    const KsToolTip* const tip = Tip();
    if (tip == nullptr) {
      return WindowAccessible::get_accName(child, out);
    }
    *out = MakeBstr(tip->Text()).Release();
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_accRole(VARIANT /*child*/, VARIANT* out) override {
    const KsToolTip* const tip = Tip();
    const bool isMessage = tip != nullptr && tip->IsMessage();
    *out = NumberVariant(isMessage ? ROLE_SYSTEM_ALERT : ROLE_SYSTEM_TOOLTIP);
    return S_OK;
  }

 private:
  ~ToolTipAccessible() override = default;

  [[nodiscard]] const KsToolTip* Tip() const {
    return dynamic_cast<const KsToolTip*>(CWnd::FromHandle(Window()));
  }
};

}  // namespace

const MessageEntry KsToolTip::kEntries[] = {
    OnMessage(WM_PAINT, &KsToolTip::HandlePaint),
    OnMessage(WM_TIMER, &KsToolTip::HandleTimer),
    OnMessage(WM_MOUSEACTIVATE, &KsToolTip::HandleMouseActivate),
    OnMessage(WM_LBUTTONDOWN, &KsToolTip::HandleClick),
    OnMessage(WM_GETOBJECT, &KsToolTip::HandleGetObject),
    OnMessage(WM_DESTROY, &KsToolTip::HandleDestroy),
};
const MessageTable KsToolTip::kMessages = {&CWnd::kMessages, KsToolTip::kEntries};

KsToolTip::KsToolTip() {
  m_tools.reserve(kToolRoom);
}

KsToolTip::~KsToolTip() {
  while (!m_tools.empty()) {
    RemoveTool(m_tools.back().window);
  }
}

bool KsToolTip::Create(HWND owner, UINT delayMs, UINT durationMs, bool balloon) {
  m_owner = owner;
  m_delayMs = delayMs;
  m_durationMs = durationMs;
  m_balloon = balloon;
  if (!RegisterWindowClass()) {
    return false;
  }
  m_font = MessageFont();
  const CreationHook hook(this);
  return ::CreateWindowExW(WS_EX_TOOLWINDOW | WS_EX_NOACTIVATE | WS_EX_TOPMOST, kWindowClass, L"",
                           WS_POPUP, 0, 0, 0, 0, owner, nullptr, ThisModule(), nullptr) != nullptr;
}

void KsToolTip::ShowAt(const std::wstring& text, const RECT& target) {
  Show(text, target, true);
}

void KsToolTip::Show(const std::wstring& text, const RECT& target, bool isMessage) {
  if (Handle() == nullptr) {
    return;
  }
  if (text.empty()) {
    Hide();
    return;
  }
  m_text = text;
  m_isMessage = isMessage;
  ::SetWindowTextW(Handle(), text.c_str());
  Place(target);
  m_watch.Begin(m_owner, [this] { Hide(); });
  ::ShowWindow(Handle(), SW_SHOWNOACTIVATE);
  ::InvalidateRect(Handle(), nullptr, TRUE);
  ::NotifyWinEvent(EVENT_OBJECT_SHOW, Handle(), OBJID_WINDOW, CHILDID_SELF);
  if (isMessage) {
    ::NotifyWinEvent(EVENT_SYSTEM_ALERT, Handle(), OBJID_CLIENT, CHILDID_SELF);
  }
  if (m_durationMs != 0) {
    ::SetTimer(Handle(), kDurationTimer, m_durationMs, nullptr);
  }
}

void KsToolTip::Hide() {
  m_watch.End();
  if (Handle() != nullptr) {
    ::KillTimer(Handle(), kDelayTimer);
    ::KillTimer(Handle(), kDurationTimer);
    ::ShowWindow(Handle(), SW_HIDE);
  }
}

SIZE KsToolTip::TextSize(HDC dc, int widest) const {
  RECT rect = {0, 0, widest, 0};
  const ObjectSelection font(dc, m_font.Get());
  ::DrawTextW(dc, m_text.c_str(), static_cast<int>(m_text.size()), &rect,
              DT_CALCRECT | DT_WORDBREAK | DT_NOPREFIX);
  return {rect.right, rect.bottom};
}

void KsToolTip::Place(const RECT& target) {
  const SIZE text = TextSize(WindowDc(Handle()).Get(), Scaled(Handle(), kWidestText));
  const int padding = Scaled(Handle(), kPadding);
  const int stem = m_balloon ? Scaled(Handle(), kStemHeight) : 0;
  const SIZE size = {text.cx + 2 * padding, text.cy + 2 * padding + stem};

  MONITORINFO monitor = {};
  monitor.cbSize = sizeof(monitor);
  ::GetMonitorInfoW(::MonitorFromRect(&target, MONITOR_DEFAULTTONEAREST), &monitor);
  const RECT& work = monitor.rcWork;
  // Above the target if there is room, as a hand or a key press is often below it.
  m_stemBelow = target.top - size.cy >= work.top;
  const LONG middle = (target.left + target.right) / 2;
  const LONG left = std::max(work.left, std::min(middle - 2 * padding, work.right - size.cx));
  const LONG top = m_stemBelow ? target.top - size.cy : target.bottom;
  m_point = {middle - left, m_stemBelow ? size.cy : 0};

  const int corner = Scaled(Handle(), kCorner);
  const int bodyTop = m_stemBelow ? 0 : stem;
  RegionHandle shape(
      ::CreateRoundRectRgn(0, bodyTop, size.cx + 1, bodyTop + size.cy - stem + 1, corner, corner));
  if (m_balloon) {
    const int half = Scaled(Handle(), kStemWidth) / 2;
    const LONG base = m_stemBelow ? size.cy - stem : stem;
    const LONG x =
        std::max<LONG>(padding + half, std::min<LONG>(m_point.x, size.cx - padding - half));
    const POINT corners[] = {{x - half, base}, {x + half, base}, {m_point.x, m_point.y}};
    const RegionHandle stemShape(::CreatePolygonRgn(corners, 3, WINDING));
    ::CombineRgn(shape.Get(), shape.Get(), stemShape.Get(), RGN_OR);
  }
  // The system owns the region from here on, unless it refuses.
  if (::SetWindowRgn(Handle(), shape.Get(), FALSE) != 0) {
    (void)shape.Release();
  }
  ::SetWindowPos(Handle(), HWND_TOPMOST, left, top, size.cx, size.cy, SWP_NOACTIVATE);
}

void KsToolTip::Paint(HDC dc) const {
  RECT rect = {};
  ::GetClientRect(Handle(), &rect);
  ::FillRect(dc, &rect, ::GetSysColorBrush(COLOR_INFOBK));
  const RegionHandle shape(::CreateRectRgn(0, 0, 0, 0));
  if (::GetWindowRgn(Handle(), shape.Get()) != ERROR) {
    ::FrameRgn(dc, shape.Get(), ::GetSysColorBrush(COLOR_3DSHADOW), 1, 1);
  }
  const int stem = m_balloon ? Scaled(Handle(), kStemHeight) : 0;
  const int padding = Scaled(Handle(), kPadding);
  rect.top += m_stemBelow ? 0 : stem;
  ::InflateRect(&rect, -padding, -padding);
  ::SetBkMode(dc, TRANSPARENT);
  ::SetTextColor(dc, ::GetSysColor(COLOR_INFOTEXT));
  const ObjectSelection font(dc, m_font.Get());
  ::DrawTextW(dc, m_text.c_str(), static_cast<int>(m_text.size()), &rect,
              DT_WORDBREAK | DT_NOPREFIX);
}

LRESULT KsToolTip::HandlePaint(const MessageArgs& /*args*/) {
  Paint(PaintDc(Handle()).Get());
  return 0;
}

LRESULT KsToolTip::HandleTimer(const MessageArgs& args) {
  if (args.wParam == kDurationTimer) {
    Hide();
    return 0;
  }
  if (args.wParam != kDelayTimer) {
    return Default(args);
  }
  ::KillTimer(Handle(), kDelayTimer);
  const auto tool = std::find_if(m_tools.begin(), m_tools.end(),
                                 [this](const Tool& t) { return t.window == m_hovered; });
  if (tool != m_tools.end()) {
    RECT rect = {};
    ::GetWindowRect(tool->window, &rect);
    Show(tool->text, rect, false);
  }
  return 0;
}

LRESULT KsToolTip::HandleMouseActivate(const MessageArgs& /*args*/) {
  return MA_NOACTIVATE;
}

LRESULT KsToolTip::HandleClick(const MessageArgs& /*args*/) {
  Hide();
  return 0;
}

LRESULT KsToolTip::HandleGetObject(const MessageArgs& args) {
  if (!AsksForClientArea(args.lParam)) {
    return Default(args);
  }
  if (!m_accessible) {
    m_accessible = MakeWindowAccessible<ToolTipAccessible>(Handle());
  }
  return m_accessible ? ::LresultFromObject(__uuidof(IAccessible), args.wParam, m_accessible.Get())
                      : Default(args);
}

LRESULT KsToolTip::HandleDestroy(const MessageArgs& args) {
  m_watch.End();
  m_accessible.Reset();
  return Default(args);
}

bool KsToolTip::AddTool(HWND window, const std::wstring& text) {
  for (Tool& tool : m_tools) {
    if (tool.window == window) {
      tool.text = text;
      return true;
    }
  }
  if (!::IsWindow(window) || ::GetPropW(window, kToolTipProperty) != nullptr) {
    return false;
  }
  const auto previous = ::GetWindowLongPtrW(window, GWLP_WNDPROC);
  if (!::SetPropW(window, kToolTipProperty, this) ||
      !::SetPropW(window, kPreviousProcProperty, reinterpret_cast<HANDLE>(previous))) {
    ::RemovePropW(window, kToolTipProperty);
    return false;
  }
  m_tools.push_back({window, text});
  ::SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&KsToolTip::ToolProc));
  return true;
}

void KsToolTip::RemoveTool(HWND window) {
  const auto previous = reinterpret_cast<LONG_PTR>(::GetPropW(window, kPreviousProcProperty));
  ForgetTool(window);
  if (previous == 0) {
    return;
  }
  ::RemovePropW(window, kToolTipProperty);
  const auto current = ::GetWindowLongPtrW(window, GWLP_WNDPROC);
  // Where another one has taken the window over since, our procedure stays in its chain and only
  // passes on.
  if (current == reinterpret_cast<LONG_PTR>(&KsToolTip::ToolProc)) {
    ::SetWindowLongPtrW(window, GWLP_WNDPROC, previous);
    ::RemovePropW(window, kPreviousProcProperty);
  }
}

void KsToolTip::ForgetTool(HWND window) {
  std::erase_if(m_tools, [window](const Tool& tool) { return tool.window == window; });
  if (m_hovered == window) {
    m_hovered = nullptr;
    Hide();
  }
}

void KsToolTip::RelayEvent(HWND window, UINT message, LPARAM /*lParam*/) {
  switch (message) {
    case WM_MOUSEMOVE:
      if (m_hovered != window) {
        m_hovered = window;
        ::SetTimer(Handle(), kDelayTimer, m_delayMs, nullptr);
        TRACKMOUSEEVENT track = {sizeof(track), TME_LEAVE, window, 0};
        ::TrackMouseEvent(&track);
      }
      break;
    case WM_MOUSELEAVE:
    case WM_LBUTTONDOWN:
    case WM_RBUTTONDOWN:
    case WM_KEYDOWN:
      if (m_hovered == window) {
        m_hovered = message == WM_MOUSELEAVE ? nullptr : window;
        Hide();
      }
      break;
    default:
      break;
  }
}

LRESULT CALLBACK KsToolTip::ToolProc(HWND window, UINT message, WPARAM wParam,
                                     LPARAM lParam) noexcept {
  auto* const toolTip = static_cast<KsToolTip*>(::GetPropW(window, kToolTipProperty));
  const auto previous = reinterpret_cast<WNDPROC>(::GetPropW(window, kPreviousProcProperty));
  if (message == WM_NCDESTROY) {
    if (toolTip != nullptr) {
      toolTip->ForgetTool(window);
    }
    ::RemovePropW(window, kToolTipProperty);
    ::SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(previous));
    ::RemovePropW(window, kPreviousProcProperty);
  } else if (toolTip != nullptr) {
    toolTip->RelayEvent(window, message, lParam);
  }
  if (previous == nullptr) {
    return ::DefWindowProcW(window, message, wParam, lParam);
  }
  return ::CallWindowProcW(previous, window, message, wParam, lParam);
}

}  // namespace postmarker
