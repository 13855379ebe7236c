#include "controls/LinkOpener.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/RecordingLinkShell.h"

namespace postmarker {
namespace {

using test::RecordingLinkShell;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr wchar_t kBrowserKey[] = L"http\\shell\\open\\command";
constexpr wchar_t kAddress[] = L"http://example.com/a?b=c&d";

class OpenTargetTest : public testing::Test {
 protected:
  bool Open(std::wstring_view target = kAddress) { return OpenTarget(target, &m_shell); }

  RecordingLinkShell m_shell;
};

TEST_F(OpenTargetTest, RunsTheBrowserWithTheTargetAsItsArgument) {
  m_shell.classes[kBrowserKey] = L"C:\\browser.exe -new";
  EXPECT_TRUE(Open());
  EXPECT_THAT(m_shell.actions,
              ElementsAre(L"start C:\\browser.exe -new http://example.com/a?b=c&d"));
}

TEST_F(OpenTargetTest, PutsTheTargetInThePlaceOfTheBrowsersArgument) {
  m_shell.classes[kBrowserKey] = L"\"C:\\Program Files\\b.exe\" -url \"%1\" -last";
  EXPECT_TRUE(Open());
  m_shell.classes[kBrowserKey] = L"b.exe -- %1";
  EXPECT_TRUE(Open());
  EXPECT_THAT(
      m_shell.actions,
      ElementsAre(L"start \"C:\\Program Files\\b.exe\" -url http://example.com/a?b=c&d -last",
                  L"start b.exe -- http://example.com/a?b=c&d"));
}

TEST_F(OpenTargetTest, RunsTheVerbWhenTheBrowserDoesNotStart) {
  m_shell.classes[kBrowserKey] = L"b.exe";
  m_shell.startResults = {false};
  EXPECT_TRUE(Open());
  EXPECT_THAT(m_shell.actions, ElementsAre(L"start b.exe http://example.com/a?b=c&d",
                                           L"open http://example.com/a?b=c&d"));
}

TEST_F(OpenTargetTest, RunsTheVerbAtOnceWithoutABrowser) {
  EXPECT_TRUE(Open());
  m_shell.classes[kBrowserKey] = L"";
  EXPECT_TRUE(Open());
  EXPECT_THAT(m_shell.actions,
              ElementsAre(L"open http://example.com/a?b=c&d", L"open http://example.com/a?b=c&d"));
}

TEST_F(OpenTargetTest, StartsTheProgramForPagesWhenTheVerbFails) {
  m_shell.verbResult = false;
  m_shell.classes[L".htm"] = L"page";
  std::vector<std::wstring> lines;
  for (const wchar_t* command : {L"\"v.exe\" -x \"%1\" -y", L"v.exe %1", L"v.exe"}) {
    m_shell.classes[L"page\\shell\\open\\command"] = command;
    m_shell.actions.clear();
    EXPECT_TRUE(Open(L"http://a"));
    ASSERT_EQ(m_shell.actions.size(), 2U);
    EXPECT_EQ(m_shell.actions[0], L"open http://a");
    lines.push_back(m_shell.actions[1]);
  }
  EXPECT_THAT(lines, ElementsAre(L"start \"v.exe\" -x  http://a", L"start v.exe  http://a",
                                 L"start v.exe http://a"));
}

TEST_F(OpenTargetTest, ReportsWhatNothingOpens) {
  m_shell.verbResult = false;
  EXPECT_FALSE(Open());
  m_shell.classes[L".htm"] = L"";
  EXPECT_FALSE(Open());
  m_shell.classes[L".htm"] = L"page";
  EXPECT_FALSE(Open());
  m_shell.classes[L"page\\shell\\open\\command"] = L"";
  EXPECT_FALSE(Open());
  m_shell.classes[L"page\\shell\\open\\command"] = L"v.exe";
  m_shell.startResults = {false};
  m_shell.actions.clear();
  EXPECT_FALSE(Open());
  EXPECT_THAT(m_shell.actions, ElementsAre(L"open http://example.com/a?b=c&d",
                                           L"start v.exe http://example.com/a?b=c&d"));
}

TEST_F(OpenTargetTest, OpensNothingForAnEmptyTarget) {
  m_shell.classes[kBrowserKey] = L"b.exe";
  for (const wchar_t* target : {L"", L"\"\"", L"  ", L"\" \""}) {
    EXPECT_FALSE(Open(target));
  }
  EXPECT_THAT(m_shell.actions, IsEmpty());
}

TEST_F(OpenTargetTest, DropsTheQuotesOfATarget) {
  EXPECT_TRUE(Open(L"\"http://a\""));
  EXPECT_TRUE(Open(L" \"http://a\" "));
  EXPECT_THAT(m_shell.actions, ElementsAre(L"open http://a", L"open http://a"));
}

TEST_F(OpenTargetTest, PassesATargetWithBlanksAsOneArgument) {
  m_shell.classes[kBrowserKey] = L"b.exe \"%1\"";
  EXPECT_TRUE(Open(L"http://a\" --option \"x"));
  EXPECT_TRUE(Open(L"C:\\some folder\\"));
  m_shell.classes[kBrowserKey] = L"b.exe";
  EXPECT_TRUE(Open(L"C:\\a b.htm"));
  EXPECT_THAT(m_shell.actions,
              ElementsAre(L"start b.exe \"http://a --option x\"",
                          L"start b.exe \"C:\\some folder\\\\\"", L"start b.exe \"C:\\a b.htm\""));
}

TEST_F(OpenTargetTest, LeavesATargetInsideOfTheBrowsersOwnQuotes) {
  m_shell.classes[kBrowserKey] = L"b.exe \"-url=%1\" -x";
  EXPECT_TRUE(Open(L"C:\\some folder\\"));
  EXPECT_TRUE(Open(L"C:\\folder\\"));
  m_shell.startResults = {false};
  m_shell.verbResult = false;
  m_shell.classes[L".htm"] = L"page";
  m_shell.classes[L"page\\shell\\open\\command"] = L"v.exe \"-u=%1\"";
  EXPECT_TRUE(Open(L"a b"));
  EXPECT_THAT(m_shell.actions,
              ElementsAre(L"start b.exe \"-url=C:\\some folder\\\\\" -x",
                          L"start b.exe \"-url=C:\\folder\\\\\" -x", L"start b.exe \"-url=a b\" -x",
                          L"open a b", L"start v.exe \"-u= a b"));
}

TEST(AppCommandName, IsWhatFollowsTheSchemeIgnoringCaseAndQuotes) {
  EXPECT_EQ(AppCommandName(L"APP:close"), L"close");
  EXPECT_EQ(AppCommandName(L"app:Close"), L"Close");
  EXPECT_EQ(AppCommandName(L"\"App:close\""), L"close");
  EXPECT_EQ(AppCommandName(L"APP:\"close\" "), L"close");
  EXPECT_EQ(AppCommandName(L"APP:"), L"");
}

TEST(AppCommandName, IsNoneForOtherTargets) {
  for (const wchar_t* target : {L"", L"\"", L"APP", L"\"APP", L" APP:close", L"http://APP:close"}) {
    EXPECT_EQ(AppCommandName(target), std::nullopt);
  }
}

}  // namespace
}  // namespace postmarker
