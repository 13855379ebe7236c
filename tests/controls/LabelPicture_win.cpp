// Shows a label that uses all of its markup, and writes what it looks like to a bitmap file, at the
// resolution of the screen. Usage: label_picture.exe FILE.bmp
#include <windows.h>

#include <cstdio>

#include "controls/CXHTMLStatic_win.h"
#include "support/ControlPicture_win.h"
#include "support/RecordingLinkShell.h"
#include "ui/CWinApp.h"

namespace postmarker::test {
namespace {

constexpr wchar_t kText[] =
    L"<FONT SIZE=\"6\" COLOR=\"MidnightBlue\" FACE=\"Liberation Serif\">A label in its Sunday best"
    L"</FONT>Plain, <B>bold</B>, <I>slanted</I>, <U>underlined</U>, <STRIKE>struck out</STRIKE>, "
    L"<B><I><U>all at once</U></I></B>, <BIG>big</BIG>, <SMALL>small</SMALL>, "
    L"<SPACING>far apart</SPACING>, <CODE>code(x)</CODE>, E = mc<SUP>2</SUP>, H<SUB>2</SUB>O, "
    L"<FONT BGCOLOR=\"Yellow\">marked</FONT> and <FONT COLOR=\"#C00000\">red</FONT>."
    L"<HR SIZE=2>A &lt; sign, &amp; more: &copy; &reg; &para; &pound; &iquest; &quot;quoted&quot;, "
    L"and a malformed <FONT COLOR=\"Red and <P>unknown tag</P>."
    L"<FONT COLOR=\"Teal\"><HR></FONT>"
    L"The <A HREF=\"http://example.com/support\"><U><FONT COLOR=\"Blue\">first link, which is long "
    L"enough to go over two lines</FONT></U></A> and the <A "
    L"HREF=APP:close><U>second</U></A>.<BR><BR>"
    L"<JUSTIFY>This paragraph is justified: the blanks of each line that is full are spread until "
    L"its "
    L"last word <B>reaches the right margin</B>, and the last line stays as it is.</JUSTIFY>";

// Pixels at 96 per inch.
constexpr int kWidth = 360;
constexpr int kHeight = 300;
constexpr int kFontHeight = 11;

int Scaled(int size) {
  const WindowDc screen(nullptr);
  return ::MulDiv(size, ::GetDeviceCaps(screen.Get(), LOGPIXELSX), 96);
}

bool ShowAndWrite(const char* path) {
  const ModuleStateGuard guard;
  const FontHandle font(::CreateFontW(-Scaled(kFontHeight), 0, 0, 0, FW_NORMAL, 0, 0, 0,
                                      DEFAULT_CHARSET, 0, 0, 0, 0, L"MS Shell Dlg"));
  RecordingLinkShell shell;
  CXHTMLStatic label(&shell);
  label.Attach(::CreateWindowExW(0, L"STATIC", kText, WS_POPUP | WS_VISIBLE, 20, 20, Scaled(kWidth),
                                 Scaled(kHeight), nullptr, nullptr, nullptr, nullptr));
  label.Send(WM_SETFONT, reinterpret_cast<WPARAM>(font.Get()), FALSE);
  label.SetMargins(Scaled(8), Scaled(8));
  label.SetLineSpacing(Scaled(2));
  label.SetBackColor(L"WhiteSmoke");
  ::SetFocus(label.Handle());
  ::UpdateWindow(label.Handle());
  return ControlPicture(label.Handle()).Write(path);
}

}  // namespace
}  // namespace postmarker::test

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("usage: label_picture FILE.bmp\n", stderr);
    return 2;
  }
  return postmarker::test::ShowAndWrite(argv[1]) ? 0 : 1;
}
