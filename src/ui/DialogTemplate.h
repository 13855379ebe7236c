// Builds a dialog template in memory, and measures texts for it.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

#include "support/Handles_win.h"

namespace postmarker {

// Sizes and places are in dialog units. The template is complete after each call.
class DialogTemplate {
 public:
  // A dialog with the font "MS Shell Dlg" of 8 points.
  DialogTemplate(const std::wstring& caption, DWORD style, DWORD extendedStyle, SIZE size);

  // The predefined window classes of dialog templates.
  enum class ControlClass : uint16_t {
    kButton = 0x80,
    kEdit = 0x81,
    kStatic = 0x82,
    kListBox = 0x83
  };

  // Adds a control. `style` is joined with WS_CHILD and WS_VISIBLE.
  void AddControl(ControlClass controlClass, uint16_t id, const std::wstring& text, DWORD style,
                  const RECT& place);

  // The template, for the functions of the system; valid until the next change.
  [[nodiscard]] const DLGTEMPLATE* Get() const {
    return reinterpret_cast<const DLGTEMPLATE*>(m_words.data());
  }

 private:
  void Word(uint16_t value) { m_words.push_back(value); }
  void Double(DWORD value);
  void Text(const std::wstring& text);
  void AlignToDouble();

  std::vector<uint16_t> m_words;
};

// Measures texts in the font of a DialogTemplate, in dialog units.
class DialogUnits {
 public:
  DialogUnits();

  // The size of a text, broken at words into lines of at most `widest` units. A "&" shows nothing
  // where `prefix` is on.
  [[nodiscard]] SIZE TextSize(const std::wstring& text, int widest, bool prefix) const;

 private:
  FontHandle m_font;
  SIZE m_base = {};  // pixels in 4 horizontal and 8 vertical units
};

}  // namespace postmarker
