// The dialogs' layout, measured in each language and at several screen resolutions.
#include <gtest/gtest.h>
#include <windows.h>

#include <commctrl.h>

#include <algorithm>
#include <cwctype>
#include <iterator>
#include <ostream>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "LanguageModule_win.h"
#include "resource.h"
#include "support/DeviceContext_win.h"

namespace postmarker::test {
namespace {

constexpr int kMargin = 7;
constexpr UINT kPages[] = {IDD_PAGE_WELCOME, IDD_PAGE_CHOOSE_CLIENT, IDD_PAGE_SPAM_FOLDER,
                           IDD_PAGE_PREFILL, IDD_PAGE_TRAIN,         IDD_PAGE_SETTINGS};
constexpr UINT kDialogs[] = {IDD_PAGE_WELCOME, IDD_PAGE_CHOOSE_CLIENT, IDD_PAGE_SPAM_FOLDER,
                             IDD_PAGE_PREFILL, IDD_PAGE_TRAIN,         IDD_PAGE_SETTINGS,
                             IDD_NEW_FOLDER,   IDD_PROGRESS,           IDD_TRAIN,
                             IDD_CONFIRMATION};

// Letters of the sheet's own buttons, in the languages of the system that the module can meet:
// Back, Next, Finish, Help; Zurück, Weiter.
constexpr wchar_t kSheetLetters[] = L"BNFHZW";

// Headings are drawn at most this much larger than the text, and bold.
constexpr int kHeadingNumerator = 3;
constexpr int kHeadingDenominator = 2;

bool IsPage(UINT dialog) {
  return std::find(std::begin(kPages), std::end(kPages), dialog) != std::end(kPages);
}

// Some dialogs have faces, whose controls share the room: the prefill page one while addresses are
// read and one afterward, the training pages one for each of the two, the progress window one while
// the job runs and two afterward, of which the last has just a text of its own. What belongs to no
// face, as everything on other pages, is always shown.
enum class Face { kBoth, kFirst, kSecond, kThird };

Face FaceOf(UINT dialog, int control) {
  if (dialog != IDD_PAGE_PREFILL && dialog != IDD_PAGE_TRAIN && dialog != IDD_TRAIN) {
    return Face::kBoth;
  }
  switch (control) {
    case IDC_PREFILL_RUNNING:
    case IDC_PREFILL_PROGRESS:
    case IDC_PREFILL_STOP:
    case IDC_TRAIN_NOTE_FIRST:
    case IDC_PROGRESS_BODY:
    case IDC_PROGRESS_TEXT:
    case IDC_PROGRESS_BAR:
    case IDC_PROGRESS_STOP:
    case IDC_PROGRESS_NOTE:
      return Face::kFirst;
    case IDC_ADDRESS_LABEL:
    case IDC_ADDRESS_GRID:
    case IDC_ADD_ADDRESS:
    case IDC_REMOVE_ADDRESS:
    case IDC_TRAIN_NOTE_SECOND:
    case IDC_PROGRESS_FINISHED:
    case IDC_PROGRESS_HELP:
    case IDC_SUPPORT_LABEL:
    case IDC_SUPPORT_LINK:
    case IDC_SECOND_LABEL:
    case IDC_SECOND_LINK:
      return Face::kSecond;
    case IDC_PROGRESS_STOPPED:
      return Face::kThird;
    default:
      return Face::kBoth;
  }
}

// A static text whose tags a label reads. ResourceMarkup_win_test.cpp measures it.
bool IsMarkup(int control) {
  return control == IDC_TRAIN_NOTE_FIRST || control == IDC_TRAIN_NOTE_SECOND;
}

bool IsHeading(int control) {
  return control == IDC_HEADING || control == IDC_PROGRESS_HEADING;
}

// The letter after the single ampersand of a text, in upper case; 0 without one.
wchar_t Accelerator(const std::wstring& text) {
  for (size_t i = 0; i + 1 < text.size(); ++i) {
    if (text[i] != L'&') {
      continue;
    }
    if (text[i + 1] != L'&') {
      return static_cast<wchar_t>(std::towupper(text[i + 1]));
    }
    ++i;
  }
  return 0;
}

SIZE Measure(HFONT font, const std::wstring& text, int width, UINT flags) {
  const WindowDc screen(nullptr);
  const ObjectSelection selection(screen.Get(), font);
  RECT rect = {0, 0, width, 0};
  ::DrawTextW(screen.Get(), text.c_str(), static_cast<int>(text.size()), &rect,
              DT_CALCRECT | flags);
  return {rect.right, rect.bottom};
}

struct Case {
  const wchar_t* language;
  UINT dialog;
  int dpi;
};

std::vector<Case> AllCases() {
  std::vector<Case> cases;
  for (const wchar_t* language : kLanguages) {
    for (const UINT dialog : kDialogs) {
      for (const int dpi : {96, 120, 144, 192}) {
        cases.push_back({language, dialog, dpi});
      }
    }
  }
  return cases;
}

std::string CaseName(const testing::TestParamInfo<Case>& info) {
  const std::wstring language = info.param.language;
  return std::string(language.begin(), language.end()) + "_" + std::to_string(info.param.dialog) +
         "_" + std::to_string(info.param.dpi) + "dpi";
}

void PrintTo(const Case& value, std::ostream* out) {
  *out << "dialog " << value.dialog << " at " << value.dpi << " dpi";
}

class LayoutTest : public testing::TestWithParam<Case> {
 protected:
  void SetUp() override {
    ASSERT_NE(nullptr, m_module.Handle());
    ASSERT_NE(nullptr, m_dialog.Window());
    ASSERT_FALSE(m_dialog.Controls().empty());
  }

  // The text as the running wizard shows it.
  [[nodiscard]] std::wstring ShownText(const Control& control) const {
    if (GetParam().dialog == IDD_PAGE_SPAM_FOLDER && control.id == IDC_BODY) {
      return control.text + L" " + m_module.Text(IDS_FOLDER_CAN_BE_CREATED);
    }
    return control.text;
  }

  // The width of a check box's square and the gap after it. The system draws a square of 13 pixels
  // at 96 dpi.
  [[nodiscard]] int CheckMarkWidth() const { return ::MulDiv(13 + 4, GetParam().dpi, 96); }

  // The room that a push button's frame takes on both sides together.
  [[nodiscard]] int ButtonFrame() const { return ::MulDiv(8, GetParam().dpi, 96); }

  const LanguageModule m_module{GetParam().language};
  const HiddenDialog m_dialog{m_module, GetParam().dialog, GetParam().dpi};
};

TEST_P(LayoutTest, FontFollowsTheResolution) {
  // The measures below would prove nothing for a resolution that did not reach the dialog.
  LOGFONTW description = {};
  const FontHandle font = m_dialog.Font(1, 1, FW_NORMAL);
  ASSERT_NE(0, ::GetObjectW(font.Get(), sizeof(description), &description));
  EXPECT_EQ(-::MulDiv(8, GetParam().dpi, 72), description.lfHeight);
}

TEST_P(LayoutTest, TextsFitTheirControls) {
  const FontHandle plain = m_dialog.Font(1, 1, FW_NORMAL);
  const FontHandle heading = m_dialog.Font(kHeadingNumerator, kHeadingDenominator, FW_BOLD);
  for (const Control& control : m_dialog.Controls()) {
    const bool isStatic = control.IsStaticText();
    if ((!isStatic && !control.IsCheckBox() && !control.IsPushButton()) || IsMarkup(control.id)) {
      continue;
    }
    SCOPED_TRACE(control.id);
    int width = control.Width();
    if (control.IsCheckBox()) {
      width -= CheckMarkWidth();
    } else if (control.IsPushButton()) {
      width -= ButtonFrame();
    }
    const UINT wrap = control.IsPushButton() ? DT_SINGLELINE : DT_WORDBREAK;
    const UINT prefix = (control.style & SS_NOPREFIX) != 0 && isStatic ? DT_NOPREFIX : 0;
    const HFONT font = IsHeading(control.id) ? heading.Get() : plain.Get();
    const std::wstring text = ShownText(control);
    EXPECT_FALSE(text.empty());
    const SIZE size = Measure(font, text, width, wrap | prefix);
    EXPECT_LE(size.cx, width);
    EXPECT_LE(size.cy, control.Height());
  }
}

TEST_P(LayoutTest, CaptionFits) {
  wchar_t caption[200] = {};
  ASSERT_LT(0, ::GetWindowTextW(m_dialog.Window(), caption, static_cast<int>(std::size(caption))));
  const FontHandle bold = m_dialog.Font(1, 1, FW_BOLD);
  // Room for the icon before and the close button after the caption, each as wide as it is high.
  const int room = m_dialog.Size().cx - 2 * m_dialog.FromDialogUnits(0, 18).cy;
  EXPECT_LE(Measure(bold.Get(), caption, room, DT_SINGLELINE).cx, room);
}

TEST_P(LayoutTest, ControlsDoNotOverlap) {
  const auto& controls = m_dialog.Controls();
  for (size_t i = 0; i < controls.size(); ++i) {
    for (size_t k = i + 1; k < controls.size(); ++k) {
      const Face first = FaceOf(GetParam().dialog, controls[i].id);
      const Face second = FaceOf(GetParam().dialog, controls[k].id);
      if (first != Face::kBoth && second != Face::kBoth && first != second) {
        continue;
      }
      RECT common = {};
      EXPECT_FALSE(::IntersectRect(&common, &controls[i].rect, &controls[k].rect))
          << controls[i].id << " and " << controls[k].id;
    }
  }
}

TEST_P(LayoutTest, ControlsKeepTheMarginsAndTheBannerFillsItsEdge) {
  const SIZE size = m_dialog.Size();
  const SIZE margin = m_dialog.FromDialogUnits(kMargin, kMargin);
  const int rounding = 1;
  for (const Control& control : m_dialog.Controls()) {
    SCOPED_TRACE(control.id);
    if (control.id == IDC_BANNER) {
      EXPECT_EQ(0, control.rect.left);
      EXPECT_EQ(0, control.rect.top);
      EXPECT_NEAR(size.cy, control.rect.bottom, rounding);
      continue;
    }
    EXPECT_GE(control.rect.left, margin.cx - rounding);
    EXPECT_GE(control.rect.top, margin.cy - rounding);
    EXPECT_LE(control.rect.right, size.cx - margin.cx + rounding);
    EXPECT_LE(control.rect.bottom, size.cy - margin.cy + rounding);
  }
}

TEST_P(LayoutTest, ControlsHaveTheUsualSizes) {
  const SIZE button = m_dialog.FromDialogUnits(50, 14);
  const SIZE line = m_dialog.FromDialogUnits(0, 10);
  for (const Control& control : m_dialog.Controls()) {
    SCOPED_TRACE(control.id);
    if (control.IsPushButton()) {
      EXPECT_GE(control.Width(), button.cx - 1);
      EXPECT_NEAR(button.cy, control.Height(), 1);
    } else if (control.IsCheckBox()) {
      const bool oneLine = control.Height() <= line.cy + 1;
      EXPECT_NEAR(oneLine ? line.cy : 2 * line.cy, control.Height(), 1);
    }
  }
}

TEST_P(LayoutTest, OrderOfControlsIsReadingOrder) {
  for (const Face face : {Face::kFirst, Face::kSecond, Face::kThird}) {
    const Control* before = nullptr;
    for (const Control& control : m_dialog.Controls()) {
      const Face own = FaceOf(GetParam().dialog, control.id);
      if (control.id == IDC_BANNER || (own != Face::kBoth && own != face)) {
        continue;
      }
      if (before != nullptr) {
        const bool below = control.rect.top >= before->rect.bottom;
        const bool beside =
            control.rect.top == before->rect.top && control.rect.left >= before->rect.right;
        EXPECT_TRUE(below || beside) << before->id << " and " << control.id;
      }
      before = &control;
    }
  }
}

TEST_P(LayoutTest, AcceleratorsAreUniqueTogetherWithTheSheets) {
  std::set<wchar_t> taken;
  if (IsPage(GetParam().dialog)) {
    taken.insert(std::begin(kSheetLetters), std::end(kSheetLetters) - 1);
  }
  for (const Control& control : m_dialog.Controls()) {
    const bool usesPrefix = (control.style & SS_NOPREFIX) == 0;
    const bool isLabel = control.IsStaticText() && usesPrefix;
    const bool isReached = control.IsCheckBox() ||
                           (control.IsPushButton() && control.id != IDOK && control.id != IDCANCEL);
    if (!isLabel && !isReached) {
      continue;
    }
    SCOPED_TRACE(control.id);
    const wchar_t letter = Accelerator(control.text);
    EXPECT_NE(0, letter);
    EXPECT_TRUE(taken.insert(letter).second);
  }
}

TEST_P(LayoutTest, ControlsThatTakeInputAreTabStops) {
  for (const Control& control : m_dialog.Controls()) {
    const bool takesInput = control.className != L"Static" && control.className != PROGRESS_CLASSW;
    EXPECT_EQ(takesInput, (control.style & WS_TABSTOP) != 0) << control.id;
  }
}

TEST_P(LayoutTest, ControlsWithoutALabelInThemselvesHaveAName) {
  for (const Control& control : m_dialog.Controls()) {
    if (control.className == L"SysTreeView32" || control.className == L"SysListView32" ||
        control.className == PROGRESS_CLASSW) {
      EXPECT_FALSE(control.text.empty()) << control.id;
      EXPECT_EQ(std::wstring::npos, control.text.find(L'&')) << control.id;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Every, LayoutTest, testing::ValuesIn(AllCases()), CaseName);

TEST(LayoutOfLanguagesTest, AllHaveTheSameControls) {
  const LanguageModule english(kLanguages[0]);
  for (const wchar_t* language : kLanguages) {
    const LanguageModule module(language);
    for (const UINT id : kDialogs) {
      SCOPED_TRACE(id);
      const HiddenDialog first(english, id, 96);
      const HiddenDialog other(module, id, 96);
      ASSERT_EQ(first.Controls().size(), other.Controls().size());
      for (size_t i = 0; i < first.Controls().size(); ++i) {
        const Control& expected = first.Controls()[i];
        const Control& control = other.Controls()[i];
        EXPECT_EQ(expected.id, control.id);
        EXPECT_EQ(expected.className, control.className) << control.id;
        EXPECT_EQ(expected.style, control.style) << control.id;
      }
    }
  }
}

TEST(LayoutOfLanguagesTest, PagesHaveTheStandardSizeAndTheSheetsCaption) {
  for (const wchar_t* language : kLanguages) {
    const LanguageModule module(language);
    for (const UINT id : kPages) {
      SCOPED_TRACE(id);
      const HiddenDialog page(module, id, 96);
      const SIZE standard = page.FromDialogUnits(317, 193);
      EXPECT_NEAR(standard.cx, page.Size().cx, 1);
      EXPECT_NEAR(standard.cy, page.Size().cy, 1);
      wchar_t caption[200] = {};
      ::GetWindowTextW(page.Window(), caption, static_cast<int>(std::size(caption)));
      EXPECT_EQ(module.Text(IDS_SHEET_CAPTION), caption);
    }
  }
}

TEST(LayoutOfLanguagesTest, ProgressWindowsHoldTheControlsThatTheCodeUses) {
  const LanguageModule module(kLanguages[0]);
  const HiddenDialog train(module, IDD_TRAIN, 96);
  for (const int id :
       {IDC_BANNER, IDC_PROGRESS_HEADING, IDC_PROGRESS_BODY, IDC_PROGRESS_NOTE, IDC_PROGRESS_TEXT,
        IDC_PROGRESS_BAR, IDC_PROGRESS_STOP, IDC_PROGRESS_CLOSE, IDC_PROGRESS_FINISHED,
        IDC_PROGRESS_STOPPED, IDC_PROGRESS_HELP, IDC_PROGRESS_SEPARATOR, IDC_SUPPORT_LABEL,
        IDC_SUPPORT_LINK, IDC_SECOND_LABEL, IDC_SECOND_LINK}) {
    EXPECT_NE(nullptr, train.Find(id)) << id;
  }
  const HiddenDialog plain(module, IDD_PROGRESS, 96);
  for (const int id : {IDC_PROGRESS_TEXT, IDC_PROGRESS_BAR, IDCANCEL}) {
    EXPECT_NE(nullptr, plain.Find(id)) << id;
  }
  const HiddenDialog question(module, IDD_CONFIRMATION, 96);
  for (const int id : {IDC_BODY, IDOK, IDCANCEL}) {
    EXPECT_NE(nullptr, question.Find(id)) << id;
  }
}

TEST(LayoutOfLanguagesTest, ProgressWindowsHaveTheirCaption) {
  for (const wchar_t* language : kLanguages) {
    const LanguageModule module(language);
    for (const UINT id : {IDD_PROGRESS, IDD_TRAIN, IDD_CONFIRMATION}) {
      const HiddenDialog dialog(module, id, 96);
      wchar_t caption[200] = {};
      ::GetWindowTextW(dialog.Window(), caption, static_cast<int>(std::size(caption)));
      EXPECT_EQ(module.Text(IDS_PROGRESS_CAPTION), caption) << id;
    }
  }
}

TEST(LayoutOfLanguagesTest, DialogsHoldTheControlsThatTheCodeUses) {
  const LanguageModule module(kLanguages[0]);
  const HiddenDialog welcome(module, IDD_PAGE_WELCOME, 96);
  const HiddenDialog folder(module, IDD_PAGE_SPAM_FOLDER, 96);
  const HiddenDialog settings(module, IDD_PAGE_SETTINGS, 96);
  const HiddenDialog newFolder(module, IDD_NEW_FOLDER, 96);
  for (const HiddenDialog* page : {&welcome, &folder, &settings}) {
    EXPECT_NE(nullptr, page->Find(IDC_HEADING));
    EXPECT_NE(nullptr, page->Find(IDC_BODY));
    EXPECT_EQ(page == &folder, page->Find(IDC_BANNER) == nullptr);
  }
  const HiddenDialog clients(module, IDD_PAGE_CHOOSE_CLIENT, 96);
  const HiddenDialog prefill(module, IDD_PAGE_PREFILL, 96);
  for (const auto& [page, grid] :
       {std::pair(&clients, IDC_CLIENT_GRID), std::pair(&prefill, IDC_ADDRESS_GRID)}) {
    EXPECT_NE(nullptr, page->Find(IDC_HEADING));
    EXPECT_NE(nullptr, page->Find(IDC_BODY));
    ASSERT_NE(nullptr, page->Find(grid));
    EXPECT_EQ(L"SysListView32", page->Find(grid)->className);
    const DWORD wanted = LVS_REPORT | LVS_OWNERDRAWFIXED;
    EXPECT_EQ(wanted, page->Find(grid)->style & wanted);
  }
  for (const int id : {IDC_PREFILL_RUNNING, IDC_PREFILL_PROGRESS, IDC_PREFILL_STOP,
                       IDC_ADDRESS_LABEL, IDC_ADD_ADDRESS, IDC_REMOVE_ADDRESS}) {
    EXPECT_NE(nullptr, prefill.Find(id)) << id;
  }
  const HiddenDialog training(module, IDD_PAGE_TRAIN, 96);
  EXPECT_NE(nullptr, training.Find(IDC_HEADING));
  EXPECT_NE(nullptr, training.Find(IDC_TRAIN_LABEL));
  for (const int note : {IDC_TRAIN_NOTE_FIRST, IDC_TRAIN_NOTE_SECOND}) {
    ASSERT_NE(nullptr, training.Find(note)) << note;
    EXPECT_TRUE(training.Find(note)->IsStaticText()) << note;
  }
  for (const Control* tree : {folder.Find(IDC_FOLDER_TREE), training.Find(IDC_TRAIN_TREE)}) {
    ASSERT_NE(nullptr, tree);
    EXPECT_EQ(L"SysTreeView32", tree->className);
  }
  EXPECT_NE(nullptr, folder.Find(IDC_NEW_FOLDER));
  for (const int box : {IDC_MOVE_EMAILS, IDC_ADD_BLOCKED, IDC_ADD_UNBLOCKED}) {
    ASSERT_NE(nullptr, settings.Find(box)) << box;
    EXPECT_TRUE(settings.Find(box)->IsCheckBox()) << box;
  }
  EXPECT_NE(nullptr, settings.Find(IDC_SETTINGS_FINISH));
  for (const int id : {IDC_NEW_FOLDER_NAME, IDOK, IDCANCEL}) {
    EXPECT_NE(nullptr, newFolder.Find(id)) << id;
  }
}

}  // namespace
}  // namespace postmarker::test
