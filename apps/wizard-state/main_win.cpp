// Tells scripts what a wizard that runs in another process shows, and waits for it to show
// something: so a script that clicks through the wizard never has to guess how long a step takes.
#include <windows.h>

#include <commctrl.h>
#include <prsht.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace postmarker {
namespace {

constexpr int kExitShown = 0;
constexpr int kExitNotShown = 1;
constexpr int kExitUsage = 2;

constexpr DWORD kPollMs = 20;
constexpr DWORD kAnswerMs = 1000;

constexpr int kBackButton = 12323;
constexpr int kNextButton = 12324;
constexpr int kFinishButton = 12325;
constexpr int kFolderTree = 10015;
constexpr int kTrainTree = 10018;
constexpr int kTrainNoteFirst = 10037;
constexpr int kTrainNoteSecond = 10038;
constexpr int kClientGrid = 13032;
constexpr int kAddressGrid = 10016;
constexpr int kNewFolderName = 10023;

constexpr char kUsage[] =
    "usage: wizard-state SECONDS FACT...\n"
    "Waits until a wizard shows all facts, at most so long, then prints in pixels of the screen\n"
    "\"NAME LEFT TOP WIDTH HEIGHT\" for the sheet, its buttons, a tip and a notice.\n"
    "Ends with 1 if the time was over first. Facts:\n"
    "  welcome clients folders addresses training-first training-second settings  the page\n"
    "  next back finish          the button can be pressed\n"
    "  tree                      the tree of folders is filled and has the focus\n"
    "  checked                   the check box of the tree's selected item is checked\n"
    "  tiles                     the tiles of the mail clients have the focus\n"
    "  grid                      the addresses are shown and have the focus\n"
    "  root folder               an item at the top of the tree is selected, or another one\n"
    "  new-folder                the dialog for a new folder waits for its name\n"
    "  tip                       a tip is shown\n"
    "  front behind              the sheet is the foreground window, or another one is\n"
    "  notice                    a message box is shown\n"
    "  gone                      there is no wizard\n"
    "  running finished stopped  the face of the progress window, whose place is that of a sheet\n"
    "  question                  its question before a stop is open\n";

// Controls of the progress window that only one of its faces shows.
constexpr int kProgressStop = 13014;
constexpr int kProgressClose = 13015;
constexpr int kProgressFinished = 13017;
constexpr int kProgressStopped = 13025;

// Pages by a control that each has alone.
struct PageMark {
  const char* name;
  int control;
};
constexpr PageMark kPages[] = {{"welcome", 13050},
                               {"clients", 13053},
                               {"folders", 13051},
                               {"addresses", 10043},
                               {"settings", 13029}};

// The training pages hold the same controls, but each shows a note of its own.
constexpr PageMark kTrainingPages[] = {{"training-first", kTrainNoteFirst},
                                       {"training-second", kTrainNoteSecond}};

// The answer of a window of another process, or 0 if it is busy for long.
LRESULT Ask(HWND window, UINT message, WPARAM wParam = 0, LPARAM lParam = 0) {
  DWORD_PTR answer = 0;
  ::SendMessageTimeoutW(window, message, wParam, lParam, SMTO_ABORTIFHUNG, kAnswerMs, &answer);
  return static_cast<LRESULT>(answer);
}

HWND FindDialog(int control) {
  for (HWND window = nullptr;
       (window = ::FindWindowExW(nullptr, window, L"#32770", nullptr)) != nullptr;) {
    if (::IsWindowVisible(window) && ::GetDlgItem(window, control) != nullptr) {
      return window;
    }
  }
  return nullptr;
}

HWND FindProgress() {
  return FindDialog(kProgressStop);
}

// The dialog over the progress window.
HWND FindQuestion() {
  const HWND progress = FindProgress();
  const HWND popup = progress != nullptr ? ::GetLastActivePopup(progress) : nullptr;
  return popup != progress && ::IsWindowVisible(popup) ? popup : nullptr;
}

// The wizard's sheet, or the progress window.
HWND FindSheet() {
  const HWND sheet = FindDialog(kNextButton);
  return sheet != nullptr ? sheet : FindProgress();
}

HWND FindTip() {
  HWND window = nullptr;
  do {
    window = ::FindWindowExW(nullptr, window, L"KsToolTipWnd", nullptr);
  } while (window != nullptr && !::IsWindowVisible(window));
  return window;
}

// A message box: a dialog with a text and a button, and nothing of the wizard.
HWND FindNotice() {
  constexpr int kMessageText = 0xFFFF;
  HWND window = nullptr;
  do {
    window = ::FindWindowExW(nullptr, window, L"#32770", nullptr);
  } while (window != nullptr &&
           (!::IsWindowVisible(window) || ::GetDlgItem(window, kMessageText) == nullptr));
  return window;
}

HWND CurrentPage(HWND sheet) {
  return reinterpret_cast<HWND>(Ask(sheet, PSM_GETCURRENTPAGEHWND));
}

bool IsUsable(HWND window) {
  return window != nullptr && ::IsWindowVisible(window) && ::IsWindowEnabled(window);
}

bool HasFocus(HWND window) {
  GUITHREADINFO info = {};
  info.cbSize = sizeof(info);
  return ::GetGUIThreadInfo(::GetWindowThreadProcessId(window, nullptr), &info) &&
         info.hwndFocus == window && ::GetForegroundWindow() == ::GetAncestor(window, GA_ROOT);
}

// Whether an item is selected, and one at the top or not.
bool IsSelected(HWND tree, bool atTop) {
  const LRESULT item = Ask(tree, TVM_GETNEXTITEM, TVGN_CARET);
  return item != 0 && (Ask(tree, TVM_GETNEXTITEM, TVGN_PARENT, item) == 0) == atTop;
}

bool IsChecked(HWND tree) {
  const LRESULT item = Ask(tree, TVM_GETNEXTITEM, TVGN_CARET);
  const LRESULT state = Ask(tree, TVM_GETITEMSTATE, static_cast<WPARAM>(item), TVIS_STATEIMAGEMASK);
  return item != 0 && (state & TVIS_STATEIMAGEMASK) == INDEXTOSTATEIMAGEMASK(2);
}

bool IsShown(HWND sheet, const std::string& fact) {
  if (fact == "gone") {
    return sheet == nullptr;
  }
  if (fact == "tip") {
    return FindTip() != nullptr;
  }
  if (fact == "notice") {
    return FindNotice() != nullptr;
  }
  if (fact == "new-folder") {
    const HWND name = ::GetDlgItem(FindDialog(kNewFolderName), kNewFolderName);
    return name != nullptr && HasFocus(name);
  }
  if (fact == "question") {
    return FindQuestion() != nullptr;
  }
  if (fact == "running" || fact == "finished" || fact == "stopped") {
    const int control = fact == "running"    ? kProgressStop
                        : fact == "finished" ? kProgressFinished
                                             : kProgressStopped;
    return ::IsWindowVisible(::GetDlgItem(FindProgress(), control));
  }
  if (fact == "front" || fact == "behind") {
    return sheet != nullptr && (::GetForegroundWindow() == sheet) == (fact == "front");
  }
  const HWND page = sheet != nullptr ? CurrentPage(sheet) : nullptr;
  if (page == nullptr) {
    return false;
  }
  for (const PageMark& mark : kPages) {
    if (fact == mark.name) {
      return ::GetDlgItem(page, mark.control) != nullptr;
    }
  }
  for (const PageMark& mark : kTrainingPages) {
    if (fact == mark.name) {
      return ::IsWindowVisible(::GetDlgItem(page, mark.control)) != FALSE;
    }
  }
  const HWND folders = ::GetDlgItem(page, kFolderTree);
  const HWND tree = folders != nullptr ? folders : ::GetDlgItem(page, kTrainTree);
  const HWND tiles = ::GetDlgItem(page, kClientGrid);
  const HWND grid = ::GetDlgItem(page, kAddressGrid);
  return (fact == "next" && IsUsable(::GetDlgItem(sheet, kNextButton))) ||
         (fact == "back" && IsUsable(::GetDlgItem(sheet, kBackButton))) ||
         (fact == "finish" && IsUsable(::GetDlgItem(sheet, kFinishButton))) ||
         (fact == "tree" && IsUsable(tree) && HasFocus(tree)) ||
         (fact == "checked" && tree != nullptr && IsChecked(tree)) ||
         (fact == "tiles" && IsUsable(tiles) && HasFocus(tiles)) ||
         (fact == "grid" && IsUsable(grid) && HasFocus(grid)) ||
         (fact == "root" && tree != nullptr && IsSelected(tree, true)) ||
         (fact == "folder" && tree != nullptr && IsSelected(tree, false));
}

bool AreShown(const std::vector<std::string>& facts) {
  const HWND sheet = FindSheet();
  for (const std::string& fact : facts) {
    if (!IsShown(sheet, fact)) {
      return false;
    }
  }
  return true;
}

void PrintPlace(const char* name, HWND window) {
  RECT rect = {};
  if (window != nullptr && ::IsWindowVisible(window) && ::GetWindowRect(window, &rect)) {
    std::printf("%s %ld %ld %ld %ld\n", name, rect.left, rect.top, rect.right - rect.left,
                rect.bottom - rect.top);
  }
}

void PrintPlaces() {
  if (const HWND sheet = FindSheet()) {
    PrintPlace("sheet", sheet);
    PrintPlace("back", ::GetDlgItem(sheet, kBackButton));
    PrintPlace("next", ::GetDlgItem(sheet, kNextButton));
    PrintPlace("finish", ::GetDlgItem(sheet, kFinishButton));
    PrintPlace("cancel", ::GetDlgItem(sheet, IDCANCEL));
  }
  if (const HWND progress = FindProgress()) {
    PrintPlace("stop", ::GetDlgItem(progress, kProgressStop));
    PrintPlace("close", ::GetDlgItem(progress, kProgressClose));
  }
  if (const HWND question = FindQuestion()) {
    PrintPlace("question", question);
    PrintPlace("question-stop", ::GetDlgItem(question, IDOK));
  }
  PrintPlace("tip", FindTip());
  PrintPlace("notice", FindNotice());
}

int Run(int seconds, const std::vector<std::string>& facts) {
  const ULONGLONG end = ::GetTickCount64() + static_cast<ULONGLONG>(seconds) * 1000;
  while (!AreShown(facts)) {
    if (::GetTickCount64() > end) {
      return kExitNotShown;
    }
    ::Sleep(kPollMs);
  }
  PrintPlaces();
  return kExitShown;
}

}  // namespace
}  // namespace postmarker

int main(int count, char** arguments) {
  const int seconds = count > 2 ? std::atoi(arguments[1]) : 0;
  if (seconds <= 0) {
    (void)std::fputs(postmarker::kUsage, stderr);
    return postmarker::kExitUsage;
  }
  return postmarker::Run(seconds, {arguments + 2, arguments + count});
}
