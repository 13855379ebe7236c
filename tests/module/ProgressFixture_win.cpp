#include "module/ProgressFixture_win.h"

#include <commctrl.h>

#include <mutex>
#include <set>

#include "support/HangGuard_win.h"
#include "support/Stage_win.h"
#include "support/WizardSession_win.h"

namespace postmarker::test {
namespace {

// Which windows belong to a job already: jobs can be made on several threads at once.
class WindowClaims {
 public:
  HWND ClaimNewWindow() {
    HWND found = nullptr;
    ::EnumWindows(&WindowClaims::Look, reinterpret_cast<LPARAM>(&found));
    if (found != nullptr) {
      s_claimed.insert(found);
    }
    return found;
  }
  void Forget(HWND window) {
    const std::lock_guard lock(m_lock);
    s_claimed.erase(window);
  }
  std::mutex& Lock() { return m_lock; }

 private:
  static BOOL CALLBACK Look(HWND window, LPARAM found) {
    DWORD process = 0;
    ::GetWindowThreadProcessId(window, &process);
    if (process == ::GetCurrentProcessId() && ::GetDlgItem(window, kStop) != nullptr &&
        ::IsWindowVisible(window) && s_claimed.count(window) == 0) {
      *reinterpret_cast<HWND*>(found) = window;
      return FALSE;
    }
    return TRUE;
  }

  static inline std::set<HWND> s_claimed;
  std::mutex m_lock;
};

WindowClaims g_claims;

// Some calls wait without limit; the longest test takes a quarter of this on a busy machine.
[[maybe_unused]] const bool g_isGuarded = HangGuard::Install(500);

constexpr auto Require = [](auto condition, const char* otherwise) {
  WizardSession::Require(condition, otherwise);
};

}  // namespace

Job::Job(const PostmarkerProgressFunctions& functions) : m_functions(functions) {
  const std::lock_guard lock(g_claims.Lock());
  m_handle = m_functions.create(0, "A job", 0);
  Require([this] { return (m_window = g_claims.ClaimNewWindow()) != nullptr; },
          "the window was not shown");
}

Job::~Job() {
  if (!m_destroyer.joinable()) {
    m_functions.destroy(m_handle, 1);
  } else {
    while (!m_isDestroyed) {
      ::PostMessageW(m_window, 0x403, 0, 1);
      ::Sleep(20);
    }
    m_destroyer.join();
  }
  g_claims.Forget(m_window);
}

void Job::StartDestroy(bool closeNow) {
  m_destroyer = std::thread([this, closeNow] {
    m_functions.destroy(m_handle, closeNow ? 1 : 0);
    m_isDestroyed = true;
  });
}

void Job::WaitForDestroy() {
  Require([this] { return IsDestroyed(); }, "DestroyProgressbar did not return");
}

LRESULT Job::Position() const {
  return ::SendMessageW(Control(kBar), PBM_GETPOS, 0, 0);
}

void Job::WaitForPosition(LRESULT position) const {
  Require([&] { return Position() == position; }, "the bar did not reach the position");
}

void Job::Click(int id) const {
  ::PostMessageW(Control(id), BM_CLICK, 0, 0);
}

void Job::WaitForFace(bool finished) const {
  Require([&] { return IsShown(kHelp) == finished && IsShown(kBar) != finished; },
          "the face did not come");
  // The window may be in the midst of changing it.
  ::SendMessageW(m_window, WM_NULL, 0, 0);
}

HWND Job::Question() const {
  const HWND popup = ::GetLastActivePopup(m_window);
  const bool isQuestion = popup != m_window && ::GetWindow(popup, GW_OWNER) == m_window;
  return isQuestion && ::IsWindowVisible(popup) ? popup : nullptr;
}

HWND Job::WaitForQuestion() const {
  HWND question = nullptr;
  Require([&] { return (question = Question()) != nullptr; }, "the question did not come");
  return question;
}

void Job::Answer(HWND question, int button) {
  ::PostMessageW(::GetDlgItem(question, button), BM_CLICK, 0, 0);
  Require([&] { return !::IsWindow(question); }, "the question was not closed");
}

void Job::Settle() const {
  static std::atomic<int> s_total = 1000;
  const int total = ++s_total;
  Set("", total);
  Require([&] { return ::SendMessageW(Control(kBar), PBM_GETRANGE, FALSE, 0) == total; },
          "the window did not receive a range");
}

ProgressFixture::ProgressFixture()
    : m_library(::LoadLibraryW((StageFolder() + L"\\Spamfilter\\Postmarker.dll").c_str())) {
  EXPECT_NE(PostmarkerLoadProgress(m_library.Get(), &m_progress), 0);
}

}  // namespace postmarker::test
