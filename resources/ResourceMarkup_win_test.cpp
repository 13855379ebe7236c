// The texts that code puts into dialogs, and those whose tags a label reads, measured in each
// language and at several screen resolutions.
#include <gtest/gtest.h>
#include <windows.h>

#include <iterator>
#include <string>

#include "LanguageModule_win.h"
#include "controls/LabelLayout.h"
#include "controls/LabelSurface_win.h"
#include "resource.h"
#include "support/DeviceContext_win.h"
#include "support/Text.h"

namespace postmarker::test {
namespace {

constexpr int kNotes[] = {IDC_TRAIN_NOTE_FIRST, IDC_TRAIN_NOTE_SECOND};

// Headings are drawn half as large again as the text, and bold in skinned windows.
constexpr int kHeadingNumerator = 3;
constexpr int kHeadingDenominator = 2;

// How high a label lays its text out in this width.
int MarkupHeight(HFONT font, const LabelMarkup& markup, int width) {
  const WindowDc screen(nullptr);
  GdiLabelSurface surface(screen.Get(), font);
  LabelArea area;
  area.width = width;
  return LayOutLabel(markup, area, &surface).height;
}

// Calls a check with the training page in each language at each resolution.
template <class Check>
void ForEachTrainingPage(Check check) {
  for (const wchar_t* language : kLanguages) {
    const LanguageModule module(language);
    for (const int dpi : {96, 120, 144, 192}) {
      SCOPED_TRACE(NarrowUtf8(language) + " at " + std::to_string(dpi));
      const HiddenDialog page(module, IDD_PAGE_TRAIN, dpi);
      ASSERT_NE(nullptr, page.Window());
      check(module, page);
    }
  }
}

// The screen of a test has 96 pixels per inch: sizes that a text sets would not follow the
// resolution here.
TEST(ResourceMarkupTest, NotesFitTheirControlsAndSetNoSizes) {
  ForEachTrainingPage([](const LanguageModule&, const HiddenDialog& page) {
    const FontHandle font = page.Font(1, 1, FW_NORMAL);
    for (const int id : kNotes) {
      const Control* const note = page.Find(id);
      ASSERT_NE(nullptr, note);
      const LabelMarkup markup = ParseLabel(note->text);
      EXPECT_FALSE(LabelPlainText(markup).empty());
      EXPECT_LE(MarkupHeight(font.Get(), markup, note->Width()), note->Height()) << id;
      for (const LabelItem& item : markup.items) {
        EXPECT_EQ(0, item.style.font.size) << id;
        EXPECT_NE(LabelItemKind::kRule, item.kind) << id;
      }
    }
  });
}

TEST(ResourceMarkupTest, NotesHoldNoTagThatIsShownAsText) {
  ForEachTrainingPage([](const LanguageModule&, const HiddenDialog& page) {
    for (const int id : kNotes) {
      const std::wstring text = LabelPlainText(ParseLabel(page.Find(id)->text));
      EXPECT_EQ(std::wstring::npos, text.find_first_of(L"<>&")) << NarrowUtf8(text);
    }
  });
}

// The template holds one of the two headings; the code sets either.
TEST(ResourceMarkupTest, HeadingsOfTheTrainingPagesFit) {
  ForEachTrainingPage([](const LanguageModule& module, const HiddenDialog& page) {
    const Control* const heading = page.Find(IDC_HEADING);
    ASSERT_NE(nullptr, heading);
    const FontHandle font = page.Font(kHeadingNumerator, kHeadingDenominator, FW_BOLD);
    const WindowDc screen(nullptr);
    const ObjectSelection selection(screen.Get(), font.Get());
    for (const UINT id : {IDS_TRAIN_FIRST, IDS_TRAIN_SECOND}) {
      const std::wstring text = module.Text(id);
      EXPECT_FALSE(text.empty()) << id;
      RECT rect = {};
      ::DrawTextW(screen.Get(), text.c_str(), -1, &rect, DT_CALCRECT | DT_SINGLELINE);
      EXPECT_LE(rect.right, heading->Width()) << id;
      EXPECT_LE(rect.bottom, heading->Height()) << id;
    }
  });
}

}  // namespace
}  // namespace postmarker::test
