// What a person meets who walks the pages by the Tab key and hears what has the focus: names and
// shortcuts come through the platform's own interface for such programs.
#include <windows.h>

#include <oleacc.h>

#include <gmock/gmock.h>

#include "settings/GlobalSettings.h"
#include "support/ComPtr_win.h"
#include "support/TrainingPages_win.h"
#include "support/Variant_win.h"
#include "support/WinEvents_win.h"
#include "wizard/ClientGrid_win.h"
#include "wizard/WizardFixture_win.h"

namespace postmarker::test {
namespace {

using testing::ElementsAre;

std::wstring TextOf(const Bstr& text) {
  return text ? std::wstring(text.Get(), ::SysStringLen(text.Get())) : std::wstring();
}

struct Spoken {
  std::wstring name;
  std::wstring shortcut;
};

Spoken Ask(HWND window) {
  ComPtr<IAccessible> object;
  if (FAILED(::AccessibleObjectFromWindow(window, static_cast<DWORD>(OBJID_CLIENT),
                                          __uuidof(IAccessible), object.PutVoid()))) {
    return {};
  }
  const VARIANT self = NumberVariant(CHILDID_SELF);
  Bstr name;
  Bstr shortcut;
  object->get_accName(self, name.Put());
  object->get_accKeyboardShortcut(self, shortcut.Put());
  return {TextOf(name), TextOf(shortcut)};
}

bool IsLabel(HWND window) {
  wchar_t windowClass[16] = {};
  ::GetClassNameW(window, windowClass, 16);
  return ::lstrcmpiW(windowClass, L"Static") == 0;
}

// A control as it is read aloud: its number, its name, and its shortcut in brackets, which may be
// that of the label before it.
std::string ReadAloud(HWND window) {
  Spoken spoken = Ask(window);
  const HWND before = ::GetWindow(window, GW_HWNDPREV);
  if (spoken.shortcut.empty() && before != nullptr && IsLabel(before)) {
    spoken.shortcut = Ask(before).shortcut;
  }
  std::string text = std::to_string(::GetDlgCtrlID(window)) + " ";
  text += spoken.name.empty() ? "no name" : NarrowUtf8(spoken.name);
  return spoken.shortcut.empty() ? text : text + " (" + NarrowUtf8(spoken.shortcut) + ")";
}

class AccessibilityTest : public WizardFixture {
 protected:
  AccessibilityTest() {
    m_request.clientName.clear();
    m_clients.client.addresses = {L"anna@b.org"};
  }

  std::unique_ptr<WizardSession> Start() {
    auto session = std::make_unique<WizardSession>(&WizardFixture::RunSheet, &m_request);
    session->WaitForPage(Page::kWelcome);
    ::SetForegroundWindow(session->Sheet());
    return session;
  }

  static HWND Focus(const WizardSession& session) {
    GUITHREADINFO info = {};
    info.cbSize = sizeof(info);
    ::GetGUIThreadInfo(::GetWindowThreadProcessId(session.Sheet(), nullptr), &info);
    return info.hwndFocus;
  }

  // Goes once around by the Tab key, beginning with the page's first control.
  static std::vector<std::string> Walk(const WizardSession& session) {
    std::vector<std::string> heard;
    const HWND first = Focus(session);
    HWND current = first;
    do {
      heard.push_back(ReadAloud(current));
      PressKey(VK_TAB);
      const HWND before = current;
      WizardSession::Require(
          [&] { return (current = Focus(session)) != before && current != nullptr; },
          "the Tab key went nowhere");
    } while (current != first && heard.size() < 20);
    return heard;
  }

  ComApartment m_apartment;
};

TEST_F(AccessibilityTest, EveryPageIsReadInOrderAndWorkedByKeysAlone) {
  const auto session = Start();
  WizardSession::Require([&] { return Focus(*session) == session->Button(kNextButton); },
                         "Next has no focus");
  EXPECT_THAT(Walk(*session), ElementsAre("12324 Next > (Alt+N)", "2 Cancel"));

  PressKey(L'N', {VK_MENU});
  session->WaitForPage(Page::kClients);
  WizardSession::Require([&] { return Focus(*session) == session->Control(kClientGrid); },
                         "the tiles have no focus");
  EXPECT_THAT(Walk(*session),
              ElementsAre("13032 Mail programs (Alt+M)", "12324 Next > (Alt+N)", "2 Cancel"));
  PressKey(VK_HOME);
  PressKey(L'N', {VK_MENU});

  session->WaitForTree();
  WizardSession::Require([&] { return Focus(*session) == session->Tree(); }, "no focus");
  WizardSession::Require([&] { return session->IsButtonUsable(kNextButton); }, "no Next");
  EXPECT_THAT(Walk(*session),
              ElementsAre("10015 Folders in your mail program (Alt+o)",
                          "10022 New folder... (Alt+e)", "12324 Next > (Alt+N)", "2 Cancel"));
  PressKey(VK_HOME);
  PressKey(VK_DOWN);
  WizardSession::Require([&] { return session->SelectedText() == L"Inbox"; }, "no selection");
  PressKey(L'N', {VK_MENU});

  session->WaitForAddresses();
  WizardSession::Require([&] { return session->IsButtonUsable(kNextButton); }, "no Next");
  WizardSession::Require([&] { return Focus(*session) == session->AddressGrid(); }, "no focus");
  PressKey(VK_SPACE, {VK_CONTROL});
  WizardSession::Require([&] { return ::IsWindowEnabled(session->Control(13034)) != FALSE; },
                         "no row is selected");
  EXPECT_THAT(Walk(*session),
              ElementsAre("10016 Addresses that you want to allow (Alt+A)", "13033 Add (Alt+d)",
                          "13034 Remove (Alt+R)", "12323 < Back (Alt+B)", "12324 Next > (Alt+N)",
                          "2 Cancel"));
  PressKey(L'N', {VK_MENU});

  session->WaitForPage(Page::kSettings);
  WizardSession::Require([&] { return session->IsButtonUsable(kFinishButton); }, "no Finish");
  WizardSession::Require([&] { return Focus(*session) == session->Control(13029); }, "no focus");
  EXPECT_THAT(
      Walk(*session),
      ElementsAre("13029 Move spam to the folder that I selected (Alt+M)",
                  "13030 Add senders of messages that I block to the list of blocked senders "
                  "(Alt+l)",
                  "13031 Add senders of messages that I unblock to the list of allowed senders "
                  "(Alt+s)",
                  "12323 < Back (Alt+B)", "12325 Finish", "2 Cancel"));
  PressKey(VK_RETURN);
  EXPECT_EQ(session->Result(), kFinishButton);
  EXPECT_EQ(m_request.clientName, L"Plain");
  EXPECT_THAT(m_request.prefillAddresses, ElementsAre(L"anna@b.org"));
}

TEST_F(AccessibilityTest, TrainingPagesAreReadInOrderAndWorkedByKeysAlone) {
  m_request.clientName = L"Plain";
  m_request.offerTraining = 1;
  const auto session = StartAtFolders();
  ::SetForegroundWindow(session->Sheet());
  GoToTraining(*session, L"Trash");
  const HWND tree = session->Tree();
  WizardSession::Require([&] { return Focus(*session) == tree; }, "the tree has no focus");
  EXPECT_EQ(Ask(session->Control(10037)).name,
            L"The filter learns from messages that you have already received. Select the check "
            L"boxes of folders that contain only spam. A folder's check box also selects or clears "
            L"all folders in it. If you have no such folders, click Next.");
  EXPECT_THAT(Walk(*session),
              ElementsAre("10018 Folders in your mail program (Alt+o)", "12323 < Back (Alt+B)",
                          "12324 Next > (Alt+N)", "2 Cancel"));
  PressKey(VK_HOME);
  PressKey(VK_DOWN);
  WizardSession::Require([&] { return session->SelectedText() == L"Inbox"; }, "no selection");
  PressKey(VK_SPACE);
  EXPECT_TRUE(WaitUntil([&] { return session->TreeLines()[2] == "    Friends [x]"; }));
  PressKey(VK_TAB);
  WizardSession::Require([&] { return Focus(*session) != tree; }, "no Tab");
  PressKey(L'O', {VK_MENU});
  WizardSession::Require([&] { return Focus(*session) == tree; }, "Alt+O leads elsewhere");
  PressKey(VK_RETURN);
  WaitForTraining(*session, TrainingPage::kSecond);
  WizardSession::Require([&] { return Focus(*session) == session->Tree(); }, "no focus");
  EXPECT_THAT(Walk(*session),
              ElementsAre("10018 Folders in your mail program (Alt+o)", "12323 < Back (Alt+B)",
                          "12324 Next > (Alt+N)", "2 Cancel"));
  PressKey(L'N', {VK_MENU});
  session->WaitForPage(Page::kSettings);
  EXPECT_EQ(m_request.trainFoldersFirst[L"2"].checked, 1U);
  EXPECT_EQ(m_request.trainFoldersFirst[L"4"].checked, 0U);
  EXPECT_EQ(m_request.trainFoldersSecond[L"2"].checked, 0U);
}

TEST_F(AccessibilityTest, RunningHarvestIsToldAndStoppedByItsShortcut) {
  m_request.clientName = L"Plain";
  m_clients.client.whileCollecting = [](const ProgressCallbacks* callbacks) {
    while (callbacks->isCancelled(callbacks->handle) == 0) {
      ::Sleep(10);
    }
  };
  const auto session = Start();
  PressKey(VK_RETURN);
  session->WaitForTree();
  session->ClickItem(L"Inbox");
  session->ClickButton(kNextButton);
  session->WaitForPage(Page::kPrefill);
  WizardSession::Require([&] { return Focus(*session) == session->Control(10043); }, "no focus");
  EXPECT_THAT(Walk(*session), ElementsAre("10043 Stop (Alt+S)", "2 Cancel"));
  EXPECT_EQ(ReadAloud(session->Control(10041)), "10041 Progress");
  PressKey(L'S', {VK_MENU});
  session->WaitForAddresses();
  EXPECT_THAT(session->Addresses(), ElementsAre(L"anna@b.org"));
}

TEST_F(AccessibilityTest, LabelsShortcutsLeadToTheirControls) {
  SetActionPlugin(L"Plain");
  const auto session = Start();
  PressKey(VK_RETURN);
  session->WaitForPage(Page::kClients);
  PressKey(VK_TAB);
  WizardSession::Require([&] { return Focus(*session) == session->Button(kNextButton); }, "no Tab");
  PressKey(L'M', {VK_MENU});
  EXPECT_TRUE(WaitUntil([&] { return Focus(*session) == session->Control(kClientGrid); }));
  PressKey(VK_RETURN);
  session->WaitForTree();
  session->ClickItem(L"Inbox");
  session->ClickButton(kNextButton);
  session->WaitForAddresses();
  WizardSession::Require([&] { return session->IsButtonUsable(kNextButton); }, "no Next");
  PressKey(VK_TAB);
  WizardSession::Require([&] { return Focus(*session) == session->Control(13033); }, "no Tab");
  PressKey(L'A', {VK_MENU});
  EXPECT_TRUE(WaitUntil([&] { return Focus(*session) == session->AddressGrid(); }));
}

TEST_F(AccessibilityTest, RowsKeepTheirTextsInTheListItems) {
  const auto session = Start();
  PressKey(VK_RETURN);
  session->WaitForPage(Page::kClients);
  EXPECT_THAT(TileTexts(*session), ElementsAre(L"Plain", L"Local", L"Windows Mail", L"Still"));
}

TEST_F(AccessibilityTest, TabToTheTilesTellsOfTheSelectedOne) {
  SetActionPlugin(L"Windows Mail");
  const auto session = Start();
  PressKey(VK_RETURN);
  session->WaitForPage(Page::kClients);
  const HWND tiles = session->Control(kClientGrid);
  WizardSession::Require([&] { return Focus(*session) == tiles; }, "the tiles have no focus");
  PressKey(VK_TAB);
  WizardSession::Require([&] { return Focus(*session) == session->Button(kNextButton); }, "no Tab");
  WinEvents events;
  PressKey(VK_TAB, {VK_SHIFT});
  const WinEvent third = {EVENT_OBJECT_FOCUS, tiles, OBJID_CLIENT, 3};
  EXPECT_TRUE(WaitUntil([&] {
    const std::vector<WinEvent> heard = events.Of(tiles, {EVENT_OBJECT_FOCUS});
    return !heard.empty() && heard.back() == third;
  })) << "the tile was not announced";
}

TEST_F(AccessibilityTest, RefusalIsHeardAsAnAlert) {
  const auto session = Start();
  PressKey(VK_RETURN);
  session->WaitForPage(Page::kClients);
  WinEvents events;
  session->ClickButton(kNextButton);
  HWND tip = nullptr;
  WizardSession::Require([&] { return (tip = FindVisibleWindow(L"KsToolTipWnd")) != nullptr; },
                         "no tip was shown");
  EXPECT_TRUE(WaitUntil([&] { return events.Of(tip, {EVENT_SYSTEM_ALERT}).size() == 1; }));
  EXPECT_EQ(
      Ask(tip).name,
      L"Please select a mail program. Programs with a note below their name cannot be set up.");
}

TEST_F(AccessibilityTest, EditorOfANewRowHasTheColumnsName) {
  m_request.clientName = L"Plain";
  const auto session = StartAtFolders();
  session->ClickItem(L"Inbox");
  session->ClickButton(kNextButton);
  session->WaitForAddresses();
  session->ClickControl(13033);
  HWND edit = nullptr;
  WizardSession::Require(
      [&] {
        return (edit = ::FindWindowExW(session->AddressGrid(), nullptr, L"Edit", nullptr)) !=
               nullptr;
      },
      "no edit was opened");
  EXPECT_EQ(ReadAloud(edit), "10 Address");
}

}  // namespace
}  // namespace postmarker::test
