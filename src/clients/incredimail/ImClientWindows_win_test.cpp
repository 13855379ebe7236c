#include "clients/incredimail/ImClientWindows_win.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/Handles_win.h"
#include "support/ImInstallation_win.h"
#include "support/ObjectCount_win.h"
#include "support/TempFolder.h"
#include "support/Text.h"

namespace postmarker::incredimail {
namespace {

using test::TempFolder;

// A stand-in for the client, running with its windows shown, until the end of the scope.
class RunningClient {
 public:
  RunningClient(const std::wstring& program, const std::wstring& windowClass, int depth) {
    const std::wstring event =
        L"Local\\PostmarkerIncMail" + std::to_wstring(::GetCurrentProcessId());
    const KernelHandle ready(::CreateEventW(nullptr, TRUE, FALSE, event.c_str()));
    std::wstring command =
        L"\"" + program + L"\" " + event + L" \"" + windowClass + L"\" " + std::to_wstring(depth);
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION info = {};
    if (!::CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                          &startup, &info)) {
      return;
    }
    m_process.Reset(info.hProcess);
    const KernelHandle thread(info.hThread);
    const HANDLE either[] = {ready.Get(), info.hProcess};
    if (::WaitForMultipleObjects(2, either, FALSE, 20'000) == WAIT_OBJECT_0) {
      m_window = ::FindWindowExW(nullptr, nullptr, windowClass.c_str(), nullptr);
    }
  }
  RunningClient(const RunningClient&) = delete;
  RunningClient& operator=(const RunningClient&) = delete;
  ~RunningClient() {
    if (m_process) {
      ::TerminateProcess(m_process.Get(), 0);
      ::WaitForSingleObject(m_process.Get(), 20'000);
    }
  }

  [[nodiscard]] HWND Window() const { return m_window; }

 private:
  KernelHandle m_process;
  HWND m_window = nullptr;
};

class ImClientWindowsTest : public testing::Test {
 protected:
  // Starts a copy of the stand-in under this name and asks about its window.
  bool IsClient(const std::string& programName, const std::wstring& windowClass, int depth) {
    const std::filesystem::path program = m_folder.Path() / programName;
    std::filesystem::copy(test::TestProgramFolder() / "incmail.exe", program);
    const RunningClient client(program.wstring(), windowClass + m_suffix, depth);
    EXPECT_NE(client.Window(), nullptr);
    return IsClientWindow(client.Window(), &m_directory);
  }

  // Class names are shared with other tests that run at the same time.
  std::wstring m_suffix = L":" + std::to_wstring(::GetCurrentProcessId());
  TempFolder m_folder;
  std::wstring m_directory = L"(as before)";
};

TEST_F(ImClientWindowsTest, WindowWithTheTreeInsideIsTheClients) {
  EXPECT_TRUE(IsClient("IncMail.exe", L"Afx:400000", 3));
  EXPECT_EQ(m_directory, ToLower(m_folder.Path().wstring()) + L"\\");
}

TEST_F(ImClientWindowsTest, ClassAndProgramMayBeWrittenInAnyCase) {
  EXPECT_TRUE(IsClient("INCMAIL.EXE", L"AFX:400000", 3));
}

TEST_F(ImClientWindowsTest, EachWindowOnTheWayToTheTreeIsNeeded) {
  EXPECT_FALSE(IsClient("IncMail.exe", L"Afx:400000", 2));
  EXPECT_EQ(m_directory, L"(as before)");
}

TEST_F(ImClientWindowsTest, WindowOfAnotherProgramIsNotTheClients) {
  EXPECT_FALSE(IsClient("OtherMail.exe", L"Afx:400000", 3));
}

TEST_F(ImClientWindowsTest, WindowOfAnotherClassIsNotTheClients) {
  EXPECT_FALSE(IsClient("IncMail.exe", L"Afx400000", 3));
}

TEST_F(ImClientWindowsTest, WindowThatIsGoneIsNotTheClients) {
  EXPECT_FALSE(IsClientWindow(nullptr, &m_directory));
  EXPECT_FALSE(IsClientWindow(reinterpret_cast<HWND>(0x7FFE), &m_directory));
}

TEST_F(ImClientWindowsTest, WalkEndsAndKeepsNoHandle) {
  const std::filesystem::path program = m_folder.Path() / "incmail.exe";
  std::filesystem::copy(test::TestProgramFolder() / "incmail.exe", program);
  const RunningClient client(program.wstring(), L"Afx:400000" + m_suffix, 3);
  LocateClientFolderTree();
  const int64_t before = test::CountKernelHandles();
  LocateClientFolderTree();
  EXPECT_EQ(test::CountKernelHandles(), before);
  EXPECT_TRUE(::IsWindow(client.Window()));
}

}  // namespace
}  // namespace postmarker::incredimail
