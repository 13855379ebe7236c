// The drawing of tiles.
#include <algorithm>
#include <vector>

#include "controls/KsImageGridCtrl_win.h"
#include "support/DeviceContext_win.h"

namespace postmarker {
namespace {

// Are the colors the person's own, for contrast or as a dark scheme? Then the system's are used
// instead of the tiles'.
bool UsesSystemColors() {
  HIGHCONTRASTW contrast = {};
  contrast.cbSize = sizeof(contrast);
  const bool highContrast =
      ::SystemParametersInfoW(SPI_GETHIGHCONTRAST, sizeof(contrast), &contrast, 0) &&
      (contrast.dwFlags & HCF_HIGHCONTRASTON) != 0;
  return highContrast || ::GetSysColor(COLOR_WINDOW) != RGB(255, 255, 255);
}

RECT Moved(const CellRect& rect, const RECT& cell) {
  return {cell.left + rect.left, cell.top + rect.top,
          std::min<LONG>(cell.left + rect.right, cell.right), cell.top + rect.bottom};
}

// A frame inside the rectangle.
void Frame(HDC dc, RECT rect, HBRUSH brush, int thickness) {
  for (int i = 0; i < thickness; ++i) {
    ::FrameRect(dc, &rect, brush);
    ::InflateRect(&rect, -1, -1);
  }
}

// Makes what stands in the rectangle gray and light.
void WashOut(HDC dc, const RECT& rect) {
  const int width = rect.right - rect.left;
  const int height = rect.bottom - rect.top;
  if (width <= 0 || height <= 0) {
    return;
  }
  BITMAPINFO info = {};
  info.bmiHeader = {sizeof(info.bmiHeader), width, height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
  void* bits = nullptr;
  const BitmapHandle bitmap(::CreateDIBSection(dc, &info, DIB_RGB_COLORS, &bits, nullptr, 0));
  const MemoryDc memory(::CreateCompatibleDC(dc));
  if (!bitmap || !memory) {
    return;
  }
  const ObjectSelection selection(memory.Get(), bitmap.Get());
  ::BitBlt(memory.Get(), 0, 0, width, height, dc, rect.left, rect.top, SRCCOPY);
  ::GdiFlush();
  auto* const pixels = static_cast<uint32_t*>(bits);
  const size_t count = static_cast<size_t>(width) * static_cast<size_t>(height);
  std::transform(pixels, pixels + count, pixels, [](uint32_t pixel) {
    const uint32_t gray = ((pixel & 0xFF) + ((pixel >> 8) & 0xFF) * 2 + ((pixel >> 16) & 0xFF)) / 4;
    const uint32_t light = 0x80 + gray / 2;
    return light | (light << 8) | (light << 16);
  });
  ::BitBlt(dc, rect.left, rect.top, width, height, memory.Get(), 0, 0, SRCCOPY);
}

// The colors of one tile.
struct TileColors {
  COLORREF name;
  COLORREF status;
};

TileColors TextColors(bool enabled, bool selected, bool systemColors) {
  if (systemColors) {
    const COLORREF text = ::GetSysColor(!enabled   ? COLOR_GRAYTEXT
                                        : selected ? COLOR_HIGHLIGHTTEXT
                                                   : COLOR_WINDOWTEXT);
    return {text, text};
  }
  // The line that tells why a tile can't be chosen must be as readable as any other.
  constexpr COLORREF kText = RGB(0, 0, 0);
  constexpr COLORREF kQuiet = RGB(96, 96, 96);
  return {enabled ? kText : kQuiet, kQuiet};
}

}  // namespace

void KsImageGridCtrl::DrawCell(DrawContext* context) const {
  Tile tile;
  const int entry = EntryAt(context->row, context->col);
  if (ReadTile(entry, &tile)) {
    DrawTile(*context, tile, entry == m_selected);
  } else {
    ::FillRect(context->dc, &context->rect, ::GetSysColorBrush(COLOR_WINDOW));
  }
}

void KsImageGridCtrl::DrawTile(const DrawContext& context, const Tile& tile, bool selected) const {
  const bool filled = selected && tile.enabled;
  const bool usable = tile.enabled && context.enabled;
  DrawTileBackground(context, usable, filled, selected);
  const TileLayout layout = Layout(context.dc);
  const RECT image = Moved(layout.image, context.rect);
  if (tile.icon != nullptr) {
    ::DrawIconEx(context.dc, image.left, image.top, tile.icon, m_imageSize, m_imageSize, 0, nullptr,
                 DI_NORMAL);
    if (!usable && !UsesSystemColors()) {
      WashOut(context.dc, image);
    }
  }
  DrawTileText(context, tile, layout, filled);
  if (filled) {
    DrawMark(context);
  }
  if (context.focused) {
    RECT frame = context.rect;
    ::InflateRect(&frame, -Scaled(5), -Scaled(5));
    ::SetTextColor(context.dc, RGB(0, 0, 0));
    ::SetBkColor(context.dc, RGB(255, 255, 255));
    ::DrawFocusRect(context.dc, &frame);
  }
}

void KsImageGridCtrl::DrawTileBackground(const DrawContext& context, bool usable, bool filled,
                                         bool selected) const {
  const bool systemColors = UsesSystemColors();
  HBRUSH background = m_plainBrush.Get();
  if (systemColors) {
    background = ::GetSysColorBrush(filled ? COLOR_HIGHLIGHT : COLOR_WINDOW);
  } else if (filled) {
    background = m_selectedBrush.Get();
  } else if (context.hovered && usable) {
    background = m_hoverBrush.Get();
  }
  RECT tile = context.rect;
  ::FillRect(context.dc, &tile,
             systemColors ? ::GetSysColorBrush(COLOR_WINDOW) : m_plainBrush.Get());
  ::InflateRect(&tile, -Scaled(2), -Scaled(2));
  ::FillRect(context.dc, &tile, background);
  if (filled) {
    Frame(context.dc, tile,
          ::GetSysColorBrush(systemColors ? COLOR_HIGHLIGHTTEXT : COLOR_HIGHLIGHT), Scaled(2));
  } else if (context.hovered || context.focused || selected) {
    Frame(context.dc, tile,
          systemColors ? ::GetSysColorBrush(COLOR_WINDOWTEXT) : m_borderBrush.Get(), 1);
  }
}

void KsImageGridCtrl::DrawTileText(const DrawContext& context, const Tile& tile,
                                   const TileLayout& layout, bool selected) const {
  const TileColors colors =
      TextColors(tile.enabled && context.enabled, selected, UsesSystemColors());
  ::SetBkMode(context.dc, TRANSPARENT);
  const ObjectSelection nameFont(context.dc, selected ? m_selectedFont.Get() : m_nameFont.Get());
  RECT name = Moved(layout.name, context.rect);
  const std::wstring shown = FitText(
      tile.name, name.right - name.left, true, [&context](const std::wstring& text) -> int32_t {
        SIZE size = {};
        ::GetTextExtentPoint32W(context.dc, text.c_str(), static_cast<int>(text.size()), &size);
        return size.cx;
      });
  ::SetTextColor(context.dc, colors.name);
  ::DrawTextW(context.dc, shown.c_str(), static_cast<int>(shown.size()), &name,
              DT_SINGLELINE | DT_CENTER | DT_NOPREFIX);
  RECT status = Moved(layout.state, context.rect);
  const ObjectSelection statusFont(context.dc, m_statusFont.Get());
  ::SetTextColor(context.dc, colors.status);
  ::DrawTextW(context.dc, tile.status.c_str(), static_cast<int>(tile.status.size()), &status,
              DT_WORDBREAK | DT_END_ELLIPSIS | DT_CENTER | DT_NOPREFIX);
}

// A tick in the corner: the selection must not be told by color alone.
void KsImageGridCtrl::DrawMark(const DrawContext& context) const {
  const int size = Scaled(14);
  const int margin = Scaled(7);
  const RECT box = {context.rect.right - margin - size, context.rect.top + margin,
                    context.rect.right - margin, context.rect.top + margin + size};
  if (m_mark) {
    BITMAP bitmap = {};
    ::GetObjectW(m_mark.Get(), sizeof(bitmap), &bitmap);
    const MemoryDc memory(::CreateCompatibleDC(context.dc));
    const ObjectSelection selection(memory.Get(), m_mark.Get());
    ::BitBlt(context.dc, context.rect.right - margin - bitmap.bmWidth, box.top, bitmap.bmWidth,
             bitmap.bmHeight, memory.Get(), 0, 0, SRCCOPY);
    return;
  }
  const COLORREF color = ::GetSysColor(UsesSystemColors() ? COLOR_HIGHLIGHTTEXT : COLOR_HIGHLIGHT);
  const PenHandle pen(::CreatePen(PS_SOLID, Scaled(2), color));
  const ObjectSelection selection(context.dc, pen.Get());
  const POINT tick[] = {{box.left + size / 8, box.top + size / 2},
                        {box.left + size * 3 / 8, box.top + size * 3 / 4},
                        {box.right - size / 8, box.top + size / 4}};
  ::Polyline(context.dc, tick, 3);
}

}  // namespace postmarker
