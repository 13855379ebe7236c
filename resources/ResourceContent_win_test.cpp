// The language modules' texts, pictures and version information.
#include <gtest/gtest.h>
#include <windows.h>

#include <set>
#include <string>
#include <utility>
#include <vector>

#include "LanguageModule_win.h"
#include "resource.h"
#include "support/Text.h"

namespace postmarker::test {
namespace {

constexpr UINT kTexts[] = {
    IDS_BUTTON_OK,          IDS_BUTTON_CANCEL,      IDS_BUTTON_ABORT,
    IDS_BUTTON_RETRY,       IDS_BUTTON_IGNORE,      IDS_BUTTON_YES,
    IDS_BUTTON_NO,          IDS_BUTTON_TRY_AGAIN,   IDS_BUTTON_CONTINUE,
    IDS_MUST_SELECT_FOLDER, IDS_FOLDER_NOT_CREATED, IDS_SHEET_CAPTION,
    IDS_READING_FOLDERS,    IDS_RESTART_CLIENT,     IDS_FOLDER_CAN_BE_CREATED,
    IDS_MUST_SELECT_CLIENT, IDS_CLIENT_NOT_FOUND,   IDS_CLIENT_NOT_READY,
    IDS_ADDRESS_IS_THERE,   IDS_ADDRESS_INVALID,    IDS_NO_ADDRESSES,
    IDS_ADDRESS_GRID,       IDS_DOMAIN_COLUMN,      IDS_TYPE_ADDRESS,
    IDS_ADDRESSES_LEFT_OUT, IDS_ADDRESS_COLUMN,     IDS_TRAIN_FIRST,
    IDS_TRAIN_SECOND,       IDS_PROGRESS_CAPTION,   IDS_SUPPORT_SITE};

constexpr UINT kDialogs[] = {IDD_PAGE_WELCOME, IDD_PAGE_CHOOSE_CLIENT, IDD_PAGE_SPAM_FOLDER,
                             IDD_PAGE_PREFILL, IDD_PAGE_TRAIN,         IDD_PAGE_SETTINGS,
                             IDD_NEW_FOLDER,   IDD_PROGRESS,           IDD_TRAIN,
                             IDD_CONFIRMATION};

constexpr UINT kTiles[] = {IDB_TILE_OUTLOOK,     IDB_TILE_WINDOWS_MAIL, IDB_TILE_OUTLOOK_EXPRESS,
                           IDB_TILE_THUNDERBIRD, IDB_TILE_INCREDIMAIL,  IDB_TILE_WINDOWS_LIVE_MAIL};

size_t Count(const std::wstring& text, const std::wstring& part) {
  size_t count = 0;
  for (size_t at = text.find(part); at != std::wstring::npos; at = text.find(part, at + 1)) {
    ++count;
  }
  return count;
}

// Every text of a language that a person can read, in lower case.
std::vector<std::wstring> AllTexts(const LanguageModule& module) {
  std::vector<std::wstring> texts;
  for (const UINT id : kTexts) {
    texts.push_back(module.Text(id));
  }
  for (const UINT id : kDialogs) {
    const HiddenDialog dialog(module, id, 96);
    for (const Control& control : dialog.Controls()) {
      texts.push_back(control.text);
    }
  }
  for (std::wstring& text : texts) {
    ::CharLowerBuffW(text.data(), static_cast<DWORD>(text.size()));
  }
  return texts;
}

// Expects that no text has a word with one of these beginnings.
void ExpectNoWord(const LanguageModule& module, const std::vector<std::wstring>& beginnings) {
  for (const std::wstring& text : AllTexts(module)) {
    for (const std::wstring& beginning : beginnings) {
      EXPECT_EQ(0u, Count(L" " + text, L" " + beginning))
          << NarrowUtf8(beginning) << " in: " << NarrowUtf8(text);
    }
  }
}

class ContentTest : public testing::TestWithParam<const wchar_t*> {
 protected:
  void SetUp() override { ASSERT_NE(nullptr, m_module.Handle()); }

  // The version resource, empty if the module has none.
  [[nodiscard]] std::vector<BYTE> VersionInfo() const {
    DWORD ignored = 0;
    const DWORD size = ::GetFileVersionInfoSizeW(m_module.Path().c_str(), &ignored);
    std::vector<BYTE> info(size);
    if (size == 0 || !::GetFileVersionInfoW(m_module.Path().c_str(), 0, size, info.data())) {
      return {};
    }
    return info;
  }

  [[nodiscard]] bool IsGerman() const { return std::wstring(GetParam()) == L"de"; }

  const LanguageModule m_module{GetParam()};
};

TEST_P(ContentTest, LoadsAsAnOrdinaryLibrary) {
  const LibraryHandle library(::LoadLibraryW(m_module.Path().c_str()));
  EXPECT_TRUE(library);
}

TEST_P(ContentTest, HasEveryText) {
  for (const UINT id : kTexts) {
    const std::wstring text = m_module.Text(id);
    EXPECT_FALSE(text.empty()) << id;
    EXPECT_EQ(std::wstring::npos, text.find(L'!')) << id;
  }
}

TEST_P(ContentTest, RestartNoticeNamesTheClientTwiceAndHoldsNoOtherPlaceholder) {
  const std::wstring text = m_module.Text(IDS_RESTART_CLIENT);
  EXPECT_EQ(2u, Count(text, L"%s"));
  EXPECT_EQ(2u, Count(text, L"%"));
}

TEST_P(ContentTest, TipAfterAPasteHasAPlaceForTheNumber) {
  const std::wstring text = m_module.Text(IDS_ADDRESSES_LEFT_OUT);
  EXPECT_EQ(1u, Count(text, L"%d"));
  EXPECT_EQ(1u, Count(text, L"%"));
}

TEST_P(ContentTest, OtherTextsHoldNoPlaceholder) {
  for (const UINT id : kTexts) {
    if (id != IDS_RESTART_CLIENT && id != IDS_ADDRESSES_LEFT_OUT) {
      EXPECT_EQ(std::wstring::npos, m_module.Text(id).find(L'%')) << id;
    }
  }
}

TEST_P(ContentTest, NoTextSpeaksByColor) {
  ExpectNoWord(m_module,
               IsGerman() ? std::vector<std::wstring>{L"grau", L"rot", L"gr\u00FCn", L"blau",
                                                      L"schwarz", L"wei\u00DF", L"farb"}
                          : std::vector<std::wstring>{L"gray", L"grey", L"red ", L"green", L"blue",
                                                      L"black", L"white", L"dimmed", L"color"});
}

TEST_P(ContentTest, PageThatTellsHowToChangeTheAddressesNamesTheKeys) {
  const HiddenDialog page(m_module, IDD_PAGE_PREFILL, 96);
  ASSERT_NE(nullptr, page.Find(IDC_ADDRESS_LABEL));
  const std::wstring label = page.Find(IDC_ADDRESS_LABEL)->text;
  const std::wstring insert = IsGerman() ? L"Einfg" : L"Insert";
  for (const std::wstring& key :
       {std::wstring(L"F2"), insert, std::wstring(IsGerman() ? L"Entf" : L"Delete")}) {
    EXPECT_NE(std::wstring::npos, label.find(key)) << NarrowUtf8(key);
  }
  EXPECT_NE(std::wstring::npos, m_module.Text(IDS_NO_ADDRESSES).find(insert));
}

TEST_P(ContentTest, WelcomePageNamesTheButtonThatSavesAsTheSettingsPageDoes) {
  const std::wstring finish = IsGerman() ? L"\u201EFertig stellen\u201C" : L"click Finish";
  for (const auto& [dialog, control] :
       {std::pair<UINT, int>(IDD_PAGE_WELCOME, IDC_BODY),
        std::pair<UINT, int>(IDD_PAGE_SETTINGS, IDC_SETTINGS_FINISH)}) {
    const HiddenDialog page(m_module, dialog, 96);
    ASSERT_NE(nullptr, page.Find(control));
    EXPECT_NE(std::wstring::npos, page.Find(control)->text.find(finish)) << dialog;
  }
}

TEST_P(ContentTest, MessageBoxButtonsThatStandTogetherHaveDifferentLetters) {
  // The sets that the platform's message box knows; OK and Cancel need no letter.
  const std::vector<std::vector<UINT>> sets = {
      {IDS_BUTTON_ABORT, IDS_BUTTON_RETRY, IDS_BUTTON_IGNORE},
      {IDS_BUTTON_YES, IDS_BUTTON_NO},
      {IDS_BUTTON_TRY_AGAIN, IDS_BUTTON_CONTINUE}};
  for (const auto& set : sets) {
    std::set<wchar_t> letters;
    for (const UINT id : set) {
      const std::wstring text = m_module.Text(id);
      const size_t at = text.find(L'&');
      ASSERT_LT(at + 1, text.size()) << id;
      EXPECT_TRUE(letters.insert(text[at + 1]).second) << id;
    }
  }
}

TEST_P(ContentTest, IconHasEverySizeWithTransparency) {
  for (const int pixels : {16, 20, 24, 32, 48}) {
    SCOPED_TRACE(pixels);
    const IconHandle icon(static_cast<HICON>(::LoadImageW(
        m_module.Handle(), MAKEINTRESOURCEW(IDI_POSTMARKER), IMAGE_ICON, pixels, pixels, 0)));
    EXPECT_TRUE(icon);
  }
  // The group's entries: a header of three words, then 14 bytes an image; width, height and depth
  // are the first two bytes and the fourth word.
  const std::vector<BYTE> group = m_module.Bytes(IDI_POSTMARKER, RT_GROUP_ICON);
  ASSERT_LE(6u, group.size());
  std::set<int> sizes;
  for (size_t at = 6; at + 14 <= group.size(); at += 14) {
    EXPECT_EQ(group[at], group[at + 1]);
    EXPECT_EQ(32, group[at + 6]);
    sizes.insert(group[at]);
    const std::vector<BYTE> image = m_module.Bytes(group[at + 12], RT_ICON);
    const size_t pixels = size_t{group[at]} * group[at + 1];
    ASSERT_LE(sizeof(BITMAPINFOHEADER) + 4 * pixels, image.size());
    std::set<BYTE> alphas;
    for (size_t i = 0; i < pixels; ++i) {
      alphas.insert(image[sizeof(BITMAPINFOHEADER) + 4 * i + 3]);
    }
    EXPECT_EQ(1u, alphas.count(0));
    EXPECT_EQ(1u, alphas.count(255));
    EXPECT_LT(2u, alphas.size()) << "edges are smooth";
  }
  EXPECT_EQ((std::set<int>{16, 20, 24, 32, 48}), sizes);
}

TEST_P(ContentTest, BannerIsTwiceTheSizeOfItsControl) {
  const BitmapHandle banner(static_cast<HBITMAP>(::LoadImageW(
      m_module.Handle(), MAKEINTRESOURCEW(IDB_BANNER), IMAGE_BITMAP, 0, 0, LR_CREATEDIBSECTION)));
  ASSERT_TRUE(banner);
  BITMAP bitmap = {};
  ASSERT_NE(0, ::GetObjectW(banner.Get(), sizeof(bitmap), &bitmap));
  for (const UINT id : {IDD_PAGE_WELCOME, IDD_PAGE_SETTINGS, IDD_TRAIN}) {
    const HiddenDialog page(m_module, id, 96);
    const Control* control = page.Find(IDC_BANNER);
    ASSERT_NE(nullptr, control);
    EXPECT_NEAR(2 * control->Width(), bitmap.bmWidth, 2);
    EXPECT_NEAR(2 * control->Height(), bitmap.bmHeight, 2);
  }
}

TEST_P(ContentTest, TilesAreSquaresOfOneSizeWithTransparentCornersAndDifferFromEachOther) {
  std::set<std::vector<BYTE>> pictures;
  for (const UINT id : kTiles) {
    SCOPED_TRACE(id);
    const BitmapHandle tile(static_cast<HBITMAP>(::LoadImageW(
        m_module.Handle(), MAKEINTRESOURCEW(id), IMAGE_BITMAP, 0, 0, LR_CREATEDIBSECTION)));
    ASSERT_TRUE(tile);
    DIBSECTION section = {};
    ASSERT_NE(0, ::GetObjectW(tile.Get(), sizeof(section), &section));
    EXPECT_EQ(48, section.dsBm.bmWidth);
    EXPECT_EQ(48, section.dsBm.bmHeight);
    EXPECT_EQ(24, section.dsBm.bmBitsPixel);
    const auto* bytes = static_cast<const BYTE*>(section.dsBm.bmBits);
    const auto size = static_cast<size_t>(section.dsBm.bmWidthBytes) * 48;
    EXPECT_EQ((std::vector<BYTE>{255, 255, 255}), std::vector<BYTE>(bytes, bytes + 3));
    EXPECT_TRUE(pictures.emplace(bytes, bytes + size).second);
  }
}

TEST_P(ContentTest, VersionInformationNamesMakerProductAndLanguage) {
  const std::vector<BYTE> info = VersionInfo();
  ASSERT_FALSE(info.empty());
  struct Translation {
    WORD language;
    WORD codePage;
  };
  Translation* translation = nullptr;
  UINT size = 0;
  ASSERT_TRUE(::VerQueryValueW(info.data(), L"\\VarFileInfo\\Translation",
                               reinterpret_cast<void**>(&translation), &size));
  ASSERT_EQ(sizeof(Translation), size);
  const bool german = IsGerman();
  EXPECT_EQ(german ? LANG_GERMAN : LANG_ENGLISH, PRIMARYLANGID(translation->language));

  const std::wstring block =
      german ? L"\\StringFileInfo\\040704B0\\" : L"\\StringFileInfo\\040904B0\\";
  wchar_t* text = nullptr;
  ASSERT_TRUE(::VerQueryValueW(info.data(), (block + L"CompanyName").c_str(),
                               reinterpret_cast<void**>(&text), &size));
  EXPECT_STREQ(L"Kestrelon Ltd.", text);
  ASSERT_TRUE(::VerQueryValueW(info.data(), (block + L"ProductName").c_str(),
                               reinterpret_cast<void**>(&text), &size));
  EXPECT_STREQ(L"Postmarker", text);
}

TEST_P(ContentTest, ResourcesAreMarkedWithTheModulesLanguage) {
  const bool german = IsGerman();
  const WORD language = german ? MAKELANGID(LANG_GERMAN, SUBLANG_GERMAN)
                               : MAKELANGID(LANG_ENGLISH, SUBLANG_ENGLISH_US);
  for (const UINT id : kDialogs) {
    EXPECT_NE(nullptr,
              ::FindResourceExW(m_module.Handle(), RT_DIALOG, MAKEINTRESOURCEW(id), language))
        << id;
  }
}

std::string LanguageName(const testing::TestParamInfo<const wchar_t*>& info) {
  const std::wstring language = info.param;
  return std::string(language.begin(), language.end());
}

INSTANTIATE_TEST_SUITE_P(Every, ContentTest, testing::ValuesIn(kLanguages), LanguageName);

TEST(TextsOfLanguagesTest, EnglishIsAmerican) {
  ExpectNoWord(LanguageModule(L"en"),
               {L"behaviour", L"cancelled", L"catalogue", L"centre", L"colour", L"customis",
                L"dialogue", L"favour", L"finalis", L"grey", L"initialis", L"licence", L"organis",
                L"programme", L"recognis", L"summaris", L"synchronis", L"whilst"});
}

TEST(TextsOfLanguagesTest, GermanKeepsItsUmlauts) {
  const LanguageModule german(L"de");
  EXPECT_NE(std::wstring::npos, german.Text(IDS_MUST_SELECT_FOLDER).find(L"w\u00E4hlen"));
  EXPECT_NE(std::wstring::npos, german.Text(IDS_FOLDER_CAN_BE_CREATED).find(L"\u201ENeuer"));
}

}  // namespace
}  // namespace postmarker::test
