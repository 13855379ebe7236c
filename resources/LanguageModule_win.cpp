#include "LanguageModule_win.h"

#include <commctrl.h>

#include <algorithm>
#include <cstring>
#include <iterator>

#include "support/Stage_win.h"

namespace postmarker::test {
namespace {

constexpr int kUsualDpi = 96;
constexpr DWORD kButtonTypeMask = 0xF;

// The place of the font's size in an extended dialog template: after the fixed part and three
// strings, of which menu and class are absent or numbers.
size_t PointSizeIndex(const std::vector<WORD>& words) {
  constexpr size_t kFixedWords = 13;
  size_t at = kFixedWords;
  for (int string = 0; string < 3 && at < words.size(); ++string) {
    if (words[at] == 0xFFFF) {
      at += 2;
      continue;
    }
    while (at < words.size() && words[at] != 0) {
      ++at;
    }
    ++at;
  }
  return at;
}

std::vector<WORD> TemplateForDpi(const LanguageModule& module, UINT id, int dpi) {
  const std::vector<BYTE> bytes = module.Bytes(id, RT_DIALOG);
  std::vector<WORD> words(bytes.size() / sizeof(WORD));
  std::memcpy(words.data(), bytes.data(), words.size() * sizeof(WORD));
  const size_t at = PointSizeIndex(words);
  if (at < words.size()) {
    words[at] = static_cast<WORD>(::MulDiv(words[at], dpi, kUsualDpi));
  }
  return words;
}

INT_PTR CALLBACK DoNothing(HWND, UINT, WPARAM, LPARAM) {
  return FALSE;
}

Control Describe(HWND dialog, HWND window) {
  Control control = {};
  control.window = window;
  control.id = ::GetDlgCtrlID(window);
  wchar_t name[64] = {};
  ::GetClassNameW(window, name, static_cast<int>(std::size(name)));
  control.className = name;
  control.style = static_cast<DWORD>(::GetWindowLongPtrW(window, GWL_STYLE));
  ::GetWindowRect(window, &control.rect);
  ::MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&control.rect), 2);
  control.text.resize(static_cast<size_t>(::GetWindowTextLengthW(window)) + 1);
  const int length =
      ::GetWindowTextW(window, control.text.data(), static_cast<int>(control.text.size()));
  control.text.resize(static_cast<size_t>(length));
  return control;
}

}  // namespace

LanguageModule::LanguageModule(const std::wstring& language)
    : m_path(StageFolder() + L"\\res\\" + language + L"\\PostmarkerRes.dll"),
      m_module(::LoadLibraryExW(m_path.c_str(), nullptr,
                                LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE)) {}

std::wstring LanguageModule::Text(UINT id) const {
  const wchar_t* text = nullptr;
  // With a size of zero the function gives the text where it lies in the module.
  const int length = ::LoadStringW(Handle(), id, reinterpret_cast<wchar_t*>(&text), 0);
  return length > 0 ? std::wstring(text, static_cast<size_t>(length)) : std::wstring();
}

std::vector<BYTE> LanguageModule::Bytes(UINT id, const wchar_t* type) const {
  const HRSRC found = ::FindResourceW(Handle(), MAKEINTRESOURCEW(id), type);
  const HGLOBAL loaded = found != nullptr ? ::LoadResource(Handle(), found) : nullptr;
  const void* const bytes = loaded != nullptr ? ::LockResource(loaded) : nullptr;
  if (bytes == nullptr) {
    return {};
  }
  const auto* const first = static_cast<const BYTE*>(bytes);
  return std::vector<BYTE>(first, first + ::SizeofResource(Handle(), found));
}

bool Control::IsStaticText() const {
  const DWORD kind = style & SS_TYPEMASK;
  return className == L"Static" && kind != SS_BITMAP && kind != SS_ETCHEDHORZ;
}

bool Control::IsCheckBox() const {
  return className == L"Button" && (style & kButtonTypeMask) == BS_AUTOCHECKBOX;
}

bool Control::IsPushButton() const {
  const DWORD type = style & kButtonTypeMask;
  return className == L"Button" && (type == BS_PUSHBUTTON || type == BS_DEFPUSHBUTTON);
}

HiddenDialog::HiddenDialog(const LanguageModule& module, UINT id, int dpi) {
  const INITCOMMONCONTROLSEX classes = {sizeof(classes), ICC_TREEVIEW_CLASSES};
  ::InitCommonControlsEx(&classes);
  // Pages are child windows and need an owner to be children of.
  m_owner = ::CreateWindowExW(0, L"Static", L"", WS_POPUP, 0, 0, 10, 10, nullptr, nullptr,
                              ::GetModuleHandleW(nullptr), nullptr);
  const std::vector<WORD> words = TemplateForDpi(module, id, dpi);
  if (words.empty()) {
    return;
  }
  m_dialog = ::CreateDialogIndirectParamW(
      module.Handle(), reinterpret_cast<const DLGTEMPLATE*>(words.data()), m_owner, DoNothing, 0);
  for (HWND child = ::GetWindow(m_dialog, GW_CHILD); child != nullptr;
       child = ::GetWindow(child, GW_HWNDNEXT)) {
    m_controls.push_back(Describe(m_dialog, child));
  }
}

HiddenDialog::~HiddenDialog() {
  if (m_dialog != nullptr) {
    ::DestroyWindow(m_dialog);
  }
  ::DestroyWindow(m_owner);
}

const Control* HiddenDialog::Find(int id) const {
  const auto found = std::find_if(m_controls.begin(), m_controls.end(),
                                  [id](const Control& control) { return control.id == id; });
  return found != m_controls.end() ? &*found : nullptr;
}

SIZE HiddenDialog::Size() const {
  RECT rect = {};
  ::GetClientRect(m_dialog, &rect);
  return {rect.right, rect.bottom};
}

SIZE HiddenDialog::FromDialogUnits(int x, int y) const {
  RECT rect = {0, 0, x, y};
  ::MapDialogRect(m_dialog, &rect);
  return {rect.right, rect.bottom};
}

FontHandle HiddenDialog::Font(int numerator, int denominator, LONG weight) const {
  LOGFONTW description = {};
  const auto font = reinterpret_cast<HFONT>(::SendMessageW(m_dialog, WM_GETFONT, 0, 0));
  ::GetObjectW(font, sizeof(description), &description);
  description.lfHeight = ::MulDiv(description.lfHeight, numerator, denominator);
  description.lfWeight = weight;
  return FontHandle(::CreateFontIndirectW(&description));
}

}  // namespace postmarker::test
