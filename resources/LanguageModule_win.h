// What the tests see of one language module: its resources, and its dialogs made into hidden
// windows.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "support/Handles_win.h"

namespace postmarker::test {

inline constexpr const wchar_t* kLanguages[] = {L"en", L"de"};

// A staged PostmarkerRes.dll, opened as data.
class LanguageModule {
 public:
  // Opens the module of the language, such as "en". A failure shows as a null Handle().
  explicit LanguageModule(const std::wstring& language);

  [[nodiscard]] HMODULE Handle() const { return m_module.Get(); }
  [[nodiscard]] const std::wstring& Path() const { return m_path; }

  // The text with this number, empty if there is none.
  [[nodiscard]] std::wstring Text(UINT id) const;

  // The bytes of a resource, empty if there is none. `type` as for FindResource.
  [[nodiscard]] std::vector<BYTE> Bytes(UINT id, const wchar_t* type) const;

 private:
  std::wstring m_path;
  LibraryHandle m_module;
};

// One control as the dialog holds it, in the dialog's order.
struct Control {
  HWND window;
  int id;
  std::wstring className;
  DWORD style;
  RECT rect;  // in the dialog's client area, pixels
  std::wstring text;

  [[nodiscard]] bool IsStaticText() const;
  [[nodiscard]] bool IsCheckBox() const;
  [[nodiscard]] bool IsPushButton() const;
  [[nodiscard]] int Width() const { return rect.right - rect.left; }
  [[nodiscard]] int Height() const { return rect.bottom - rect.top; }
};

// A dialog of a language module as a window that is never shown.
class HiddenDialog {
 public:
  // `dpi` is stood in for by the size of the template's font, from which the system derives every
  // measure.
  HiddenDialog(const LanguageModule& module, UINT id, int dpi);
  HiddenDialog(const HiddenDialog&) = delete;
  HiddenDialog& operator=(const HiddenDialog&) = delete;
  ~HiddenDialog();

  // Null if the dialog could not be made.
  [[nodiscard]] HWND Window() const { return m_dialog; }
  [[nodiscard]] const std::vector<Control>& Controls() const { return m_controls; }
  [[nodiscard]] const Control* Find(int id) const;

  // The size of the client area as the template gives it, and a distance, both in pixels of this
  // dialog.
  [[nodiscard]] SIZE Size() const;
  [[nodiscard]] SIZE FromDialogUnits(int x, int y) const;

  // A new font made from the dialog's, larger by a fraction and with the weight given.
  [[nodiscard]] FontHandle Font(int numerator, int denominator, LONG weight) const;

 private:
  HWND m_owner = nullptr;
  HWND m_dialog = nullptr;
  std::vector<Control> m_controls;
};

}  // namespace postmarker::test
