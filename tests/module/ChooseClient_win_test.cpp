// The wizard of a host that leaves the choice of the client to the person, from the first page to
// Finish, by the mouse alone and by keys alone.
#include <windows.h>

#include <gmock/gmock.h>
#include <oleacc.h>

#include <atomic>
#include <filesystem>

#include "module/ModuleFixture_win.h"
#include "settings/AddressLists.h"
#include "settings/GlobalSettings.h"
#include "support/ComPtr_win.h"
#include "wizard/ClientGrid_win.h"

namespace postmarker::test {
namespace {

using testing::ElementsAre;

class ChooseClientTest : public ModuleFixture {
 protected:
  ChooseClientTest() {
    m_request.clientName.clear();
    ImDatabase database(m_client.DataFolder() +
                        L"\\Identities\\{ANNA}\\Message Store\\Containers.db");
    database.AddHeadersTable();
    database.AddHeaderRows({{ImGuid(900), ImGuid(4), L"Zoe <Zoe@example.com>, ben@example.com"}});
  }

  std::unique_ptr<WizardSession> Start() {
    auto session = std::make_unique<WizardSession>(Show(), &m_request);
    session->WaitForPage(Page::kWelcome);
    ::SetForegroundWindow(session->Sheet());
    return session;
  }

  // A press of the mouse's left button, as its messages arrive, until that has led somewhere: a
  // list takes a pointer that is moved on a busy machine for the beginning of a drag.
  template <class Condition>
  static void ClickUntil(HWND control, POINT place, Condition condition) {
    for (int attempt = 0; attempt < 4; ++attempt) {
      const LPARAM position = MAKELPARAM(place.x, place.y);
      POINT pointer = place;
      ::ClientToScreen(control, &pointer);
      ::SetCursorPos(pointer.x, pointer.y);
      ::PostMessageW(control, WM_LBUTTONDOWN, MK_LBUTTON, position);
      ::PostMessageW(control, WM_LBUTTONUP, 0, position);
      if (WaitUntil(condition, kPatience / 4)) {
        return;
      }
    }
    throw std::runtime_error("the click led nowhere");
  }
  template <class Condition>
  static void ClickUntil(HWND control, Condition condition) {
    WizardSession::Require(
        [control] { return ::IsWindowVisible(control) && ::IsWindowEnabled(control); },
        "there is nothing to click");
    RECT rect = {};
    ::GetClientRect(control, &rect);
    ClickUntil(control, {rect.right / 2, rect.bottom / 2}, condition);
  }
  static void ClickNextTo(const WizardSession& session, Page page) {
    ClickUntil(session.Button(kNextButton), [&] { return session.IsOn(page); });
  }

  void ExpectOutcome(WizardSession& session) {
    EXPECT_EQ(session.Result(), kWizardFinished);
    EXPECT_EQ(m_request.clientName, L"IncrediMail");
    EXPECT_EQ(GetActionPlugin(), L"IncrediMail");
    EXPECT_EQ(GetLastConfigured(), L"IncrediMail");
    EXPECT_EQ(m_request.spamFolder.firstId, Narrow(ImGuid(5)));
    EXPECT_THAT(m_request.prefillAddresses, ElementsAre(L"zoe@example.com"));
    EXPECT_TRUE(IsAddressWhitelisted(L"zoe@example.com"));
    EXPECT_FALSE(IsAddressWhitelisted(L"ben@example.com"));
  }

  static void WaitForFocus(const WizardSession& session, HWND control) {
    WizardSession::Require(
        [&] {
          GUITHREADINFO info = {};
          info.cbSize = sizeof(info);
          ::GetGUIThreadInfo(::GetWindowThreadProcessId(session.Sheet(), nullptr), &info);
          return info.hwndFocus == control;
        },
        "the control has no focus");
  }
  static void WaitForRows(const WizardSession& session, size_t count) {
    WizardSession::Require([&] { return session.Addresses().size() == count; },
                           "the grid has other rows");
  }
};

TEST_F(ChooseClientTest, ByMouseAlone) {
  Load();
  const auto session = Start();
  ClickNextTo(*session, Page::kClients);
  EXPECT_THAT(TileTexts(*session), ElementsAre(L"Microsoft Outlook, Not found",
                                               L"Mozilla Thunderbird, Not found", L"IncrediMail"));
  ClickTile(*session, L"IncrediMail");
  ClickNextTo(*session, Page::kFolders);
  session->WaitForTree();
  session->ClickItem(L"Junk");
  ClickNextTo(*session, Page::kPrefill);
  session->WaitForAddresses();
  WaitForRows(*session, 2);
  // The second column of a row selects it.
  RECT row = {};
  row.left = LVIR_BOUNDS;
  ::SendMessageW(session->AddressGrid(), LVM_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&row));
  const POINT inRow = {(row.left + 3 * row.right) / 4, (row.top + row.bottom) / 2};
  const HWND remove = session->Control(13034);
  ClickUntil(session->AddressGrid(), inRow,
             [remove] { return ::IsWindowEnabled(remove) != FALSE; });
  ClickUntil(remove, [&] { return session->Addresses().size() == 1; });
  ClickNextTo(*session, Page::kSettings);
  ClickUntil(session->Button(kFinishButton), [&] { return session->Sheet() == nullptr; });
  ExpectOutcome(*session);
}

TEST_F(ChooseClientTest, ByKeysAlone) {
  Load();
  const auto session = Start();
  PressKey(VK_RETURN);
  session->WaitForPage(Page::kClients);
  WaitForFocus(*session, session->Control(kClientGrid));
  // Typing a name leads to its tile.
  for (const wchar_t letter : {L'I', L'N', L'C'}) {
    PressKey(static_cast<WORD>(letter));
  }
  PressKey(VK_RETURN);
  session->WaitForTree();
  WaitForFocus(*session, session->Tree());
  PressKey(VK_END);
  WizardSession::Require([&] { return session->SelectedText() == L"Junk"; }, "no selection");
  PressKey(VK_RETURN);
  session->WaitForAddresses();
  WaitForRows(*session, 2);
  WaitForFocus(*session, session->AddressGrid());
  PressKey(VK_SPACE, {VK_CONTROL});
  WizardSession::Require([&] { return ::IsWindowEnabled(session->Control(13034)) != FALSE; },
                         "no row is selected");
  PressKey(VK_DELETE);
  WaitForRows(*session, 1);
  WizardSession::Require([&] { return session->IsButtonUsable(kNextButton); }, "no Next");
  PressKey(L'N', {VK_MENU});
  session->WaitForPage(Page::kSettings);
  PressKey(VK_RETURN);
  ExpectOutcome(*session);
}

TEST_F(ChooseClientTest, ThunderbirdWithoutTheExtensionIsShownButCannotBeChosen) {
  const std::wstring key = L"Software\\Mozilla\\Mozilla Thunderbird";
  RegistryKey::Create(HKEY_LOCAL_MACHINE, key, KEY_ALL_ACCESS | KEY_WOW64_32KEY)
      .WriteString(L"CurrentVersion", L"2.0");
  RegistryKey::Create(HKEY_LOCAL_MACHINE, key + L"\\2.0\\Main", KEY_ALL_ACCESS | KEY_WOW64_32KEY)
      .WriteString(L"PathToExe", L"C:\\Programs\\thunderbird.exe");
  Load();
  const auto session = Start();
  PressKey(VK_RETURN);
  session->WaitForPage(Page::kClients);
  EXPECT_THAT(TileTexts(*session),
              ElementsAre(L"Microsoft Outlook, Not found",
                          L"Mozilla Thunderbird, Extension missing", L"IncrediMail"));
  ClickTile(*session, L"Mozilla Thunderbird, Extension missing");
  session->ClickButton(kNextButton);
  EXPECT_TRUE(WaitUntil([] { return FindVisibleWindow(L"KsToolTipWnd") != nullptr; }));
  EXPECT_TRUE(session->IsOn(Page::kClients));
  EXPECT_EQ(m_request.clientName, L"");
}

// As a screen reader does, which may ask once more after the wizard's end.
TEST_F(ChooseClientTest, ModuleStaysWhileAnotherHoldsTheTilesAccessibilityObject) {
  const ComApartment apartment;
  Load();
  ComPtr<IAccessible> tiles;
  std::atomic<bool> isHeld = true;
  std::atomic<bool> hasReturned = false;
  {
    // The host's thread has an apartment beyond the wizard's, in which the object lives on.
    WizardSession session(
        [&](WizardRequest* request) {
          const ComApartment hosts;
          const int32_t result = m_module->ShowWizard(request);
          hasReturned = true;
          while (isHeld) {
            MSG message = {};
            while (::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
              ::DispatchMessageW(&message);
            }
            ::Sleep(5);
          }
          return result;
        },
        &m_request);
    const ScopeExit letGo([&isHeld] { isHeld = false; });
    session.WaitForPage(Page::kWelcome);
    session.ClickButton(kNextButton);
    session.WaitForPage(Page::kClients);
    ASSERT_EQ(
        ::AccessibleObjectFromWindow(session.Control(kClientGrid), static_cast<DWORD>(OBJID_CLIENT),
                                     __uuidof(IAccessible), tiles.PutVoid()),
        S_OK);
    LONG count = 0;
    EXPECT_EQ(tiles->get_accChildCount(&count), S_OK);
    EXPECT_EQ(count, 3);
    session.ClickButton(IDCANCEL);
    WizardSession::Require([&] { return hasReturned.load(); }, "the wizard did not end");
    Unload();
    EXPECT_NE(::GetModuleHandleW(L"Postmarker.dll"), nullptr);
    EXPECT_EQ(tiles->get_accChildCount(&count), S_OK);
    EXPECT_EQ(count, 0);
    tiles.Reset();
    EXPECT_TRUE(WaitUntil([] { return ::GetModuleHandleW(L"Postmarker.dll") == nullptr; }));
  }
}

TEST_F(ChooseClientTest, SecondRunBeginsWithTheClientOfTheFirst) {
  SetActionPlugin(L"IncrediMail");
  Load();
  const auto session = Start();
  PressKey(VK_RETURN);
  session->WaitForPage(Page::kClients);
  PressKey(VK_RETURN);
  session->WaitForTree();
  EXPECT_EQ(m_request.clientName, L"IncrediMail");
}

// A suite in a folder of the test's own, whose module for Windows Live Mail lies beside the
// wizard's.
TEST_F(ChooseClientTest, WindowsLiveMailIsOfferedWhereItsHookModuleLoads) {
  const TempFolder root;
  const auto copy = [&root](const std::filesystem::path& from, const char* to) {
    std::filesystem::create_directories((root.Path() / to).parent_path());
    std::filesystem::copy_file(from, root.Path() / to);
  };
  const std::filesystem::path stage = StageFolder();
  copy(stage / "Spamfilter" / "Postmarker.dll", "Spamfilter/Postmarker.dll");
  copy(stage / "res" / "en" / "PostmarkerRes.dll", "res/en/PostmarkerRes.dll");
  copy(TestProgramFolder().parent_path() / "Spamfilter" / "WindowsLiveShim.dll",
       "Spamfilter/WindowsLiveShim.dll");
  m_module = std::make_unique<Module>(TempFolder::Wide(root.Path()));
  ASSERT_TRUE(m_module->IsLoaded());
  {
    const auto session = Start();
    PressKey(VK_RETURN);
    session->WaitForPage(Page::kClients);
    EXPECT_THAT(TileTexts(*session),
                ElementsAre(L"Microsoft Outlook, Not found", L"Windows Live Mail, Not found",
                            L"Mozilla Thunderbird, Not found", L"IncrediMail"));
    session->ClickButton(IDCANCEL);
    EXPECT_EQ(session->Result(), IDCANCEL);
  }
  EXPECT_EQ(::GetModuleHandleW(L"WindowsLiveShim.dll"), nullptr);
  Unload();
}

TEST_F(ChooseClientTest, BackgroundHarvestBringsTheAddressesToTheWhitelist) {
  AddAddressToBlacklist(L"ben@example.com", false);
  Load();
  m_module->StartWhitelistPrefill();
  Unload();
  EXPECT_TRUE(WaitUntil([] { return ::GetModuleHandleW(L"Postmarker.dll") == nullptr; }));
  EXPECT_TRUE(IsAddressWhitelisted(L"zoe@example.com"));
  EXPECT_TRUE(IsAddressWhitelisted(L"ben@example.com"));
  EXPECT_FALSE(IsAddressBlacklisted(L"ben@example.com"));
}

}  // namespace
}  // namespace postmarker::test
