// Where the links of the finished window lead.
#include <windows.h>

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "ipc/ChannelWaits_win.h"
#include "progress/CDlgTrain_win.h"
#include "progress/DialogRun_win.h"
#include "resource.h"
#include "support/PeerProcess_win.h"
#include "support/TempFolder.h"
#include "wizard/WizardFixture_win.h"

namespace postmarker::test {
namespace {

using nlohmann::json;

constexpr wchar_t kFirst[] =
    L"<a href=https://www.kestrelon.example/support/spamfilter.aspx> <u> "
    L"www.kestrelon.example/support/spamfilter </u> </a>";
constexpr wchar_t kSecond[] =
    L"<a href=https://www.kestrelon.example/support> <u> www.kestrelon.example/support </u> </a>";

class ProgressLinksTest : public WizardFixture {
 protected:
  // A resident process that answers so. It ends with the object.
  [[nodiscard]] PeerProcess StartResident(json state) const {
    state["rendezvous"] = NarrowUtf8(m_rendezvous);
    const std::wstring file = m_folder.PathOf("state.json");
    WriteFile(file, state.dump());
    return StartPeer(PeerPath(L"resident\\resident.exe"), {file});
  }

  TempFolder m_folder;
  const std::wstring m_rendezvous = FreshObjectName();
  // Limits so long that a window that waited for them would be noticed.
  const AccountToolsRoute m_route = {m_rendezvous.c_str(), 100'000, 100'000, 100'000};
};

TEST_F(ProgressLinksTest, WindowIsUpWithItsOwnAddressesWhileNobodyAnswers) {
  const ElapsedTime elapsed;
  {
    const DialogRun run(DialogRun::Of<CDlgTrain>(m_route));
    EXPECT_EQ(TextOf(run.Control(IDC_SUPPORT_LINK)), kFirst);
    EXPECT_EQ(TextOf(run.Control(IDC_SECOND_LINK)), kSecond);
  }
  EXPECT_FALSE(elapsed.IsMoreThan(50'000)) << "neither its beginning nor its end waits";
}

TEST_F(ProgressLinksTest, LinksLeadWhereTheResidentProcessSays) {
  const PeerProcess resident = StartResident(
      {{"links",
        {{"https://www.kestrelon.example/support/spamfilter.aspx", "http://b.example/?a=1&b=2"},
         {"https://www.kestrelon.example/support", "https://c.example/?a=&gt;"}}}});
  const DialogRun run(DialogRun::Of<CDlgTrain>(m_route));
  EXPECT_TRUE(WaitUntil([&] {
    return TextOf(run.Control(IDC_SECOND_LINK)) ==
           L"<a href=https://c.example/?a=&amp;gt;> <u> www.kestrelon.example/support </u> </a>";
  })) << NarrowUtf8(TextOf(run.Control(IDC_SECOND_LINK)));
  EXPECT_EQ(TextOf(run.Control(IDC_SUPPORT_LINK)),
            L"<a href=http://b.example/?a=1&b=2> <u> www.kestrelon.example/support/spamfilter </u> "
            L"</a>");
}

TEST_F(ProgressLinksTest, AnswerThatIsNoWebAddressLeavesTheLink) {
  const PeerProcess resident = StartResident(
      {{"links",
        {{"https://www.kestrelon.example/support/spamfilter.aspx", "file:///C:/x.exe"},
         {"https://www.kestrelon.example/support", "https://c.example/"}}}});
  const DialogRun run(DialogRun::Of<CDlgTrain>(m_route));
  // The second answer comes after the first.
  EXPECT_TRUE(WaitUntil([&] {
    return TextOf(run.Control(IDC_SECOND_LINK)).find(L"c.example") != std::wstring::npos;
  }));
  EXPECT_EQ(TextOf(run.Control(IDC_SUPPORT_LINK)), kFirst);
}

}  // namespace
}  // namespace postmarker::test
