// Message tables: which member function handles which message of a window.
#pragma once

#include <windows.h>

#include <span>

namespace postmarker {

class CWnd;

// One message as it came.
struct MessageArgs {
  UINT message;
  WPARAM wParam;
  LPARAM lParam;
};

// The point that a message of the mouse carries. Either coordinate can be negative.
inline POINT PointOf(const MessageArgs& args) {
  return {static_cast<SHORT>(LOWORD(args.lParam)), static_cast<SHORT>(HIWORD(args.lParam))};
}

using MessageHandler = LRESULT (CWnd::*)(const MessageArgs& args);

enum class MessageKind { kMessage, kCommand, kNotify };

struct MessageEntry {
  MessageKind kind;
  UINT id;    // the message, or the control's id
  UINT code;  // the control's notification code
  MessageHandler handler;
};

// A class's own entries, and the table of the class it derives from.
struct MessageTable {
  const MessageTable* base;
  std::span<const MessageEntry> entries;
};

// A row for a window message.
template <class Window>
constexpr MessageEntry OnMessage(UINT message, LRESULT (Window::*handler)(const MessageArgs&)) {
  return {MessageKind::kMessage, message, 0, static_cast<MessageHandler>(handler)};
}

// A row for a WM_COMMAND from a control, by default its click.
template <class Window>
constexpr MessageEntry OnCommand(UINT control, LRESULT (Window::*handler)(const MessageArgs&),
                                 UINT code = BN_CLICKED) {
  return {MessageKind::kCommand, control, code, static_cast<MessageHandler>(handler)};
}

// A row for a WM_NOTIFY from a control.
template <class Window>
constexpr MessageEntry OnNotify(UINT control, UINT code,
                                LRESULT (Window::*handler)(const MessageArgs&)) {
  return {MessageKind::kNotify, control, code, static_cast<MessageHandler>(handler)};
}

}  // namespace postmarker
