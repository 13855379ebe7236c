#include "Bridge.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace postmarker::bridge {
namespace {

using Json = nlohmann::json;
using Texts = std::vector<std::wstring>;

constexpr char kId[] = "0123456789abcdef0123456789abcdef";

class BridgeTest : public testing::Test {
 protected:
  BridgeTest()
      : bridge({[this](const std::string& message) { posted.push_back(Json::parse(message)); },
                [this](const std::string& line) { lines.push_back(line); },
                [this] { return spamFolder; }},
               3) {}

  // Sends a text that the bridge is ready for.
  void Send(size_t connection, const std::wstring& text) {
    ASSERT_TRUE(bridge.WantsText(connection));
    bridge.TakeText(connection, text);
  }

  // Takes all texts that there are for a client.
  Texts Take(size_t connection) {
    Texts texts;
    while (const std::wstring* text = bridge.NextText(connection)) {
      texts.push_back(*text);
      bridge.DropText(connection);
    }
    return texts;
  }

  void Answer(uint64_t id, const Json& items, bool done = true) {
    bridge.TakeMessage(Json{{"id", id}, {"items", items}, {"done", done}}.dump());
  }

  std::vector<Json> posted;
  std::vector<std::string> lines;
  std::string spamFolder;
  Bridge bridge;
};

TEST_F(BridgeTest, TellsTheFolders) {
  Send(0, L"GiveAllFolders");
  ASSERT_EQ(posted, std::vector<Json>({{{"id", 1}, {"command", "GiveAllFolders"}}}));
  EXPECT_FALSE(bridge.WantsText(0)) << "a client has one request at a time";
  Answer(1, {{{"path", {"A"}}, {"id", "i"}, {"store", "s"}, {"first", false}}});
  EXPECT_EQ(Take(0), (Texts{L"\\\\A######i######s######false", L"#####GiveAllFolders"}));
  EXPECT_TRUE(bridge.WantsText(0));
  EXPECT_EQ(posted.size(), 1U);
}

TEST_F(BridgeTest, AsksForTheNextBatchWhenTheLastOneIsTaken) {
  Send(0, L"GiveContacts");
  Answer(1, {"a@example.com", "b@example.com"}, false);
  bridge.DropText(0);
  EXPECT_EQ(posted.size(), 1U);
  bridge.DropText(0);
  ASSERT_EQ(posted.size(), 2U);
  EXPECT_EQ(posted[1], (Json{{"id", 1}, {"command", "Next"}}));
  EXPECT_FALSE(bridge.WantsText(0));
  Answer(1, {"c@example.com"});
  EXPECT_EQ(Take(0), (Texts{L"c@example.com", L"#####GiveContacts"}));
}

TEST_F(BridgeTest, AsksForTheNextBatchAfterAnEmptyOne) {
  Send(0, L"GiveContacts");
  Answer(1, Json::array(), false);
  ASSERT_EQ(posted.size(), 2U);
  EXPECT_EQ(posted[1]["command"], "Next");
}

TEST_F(BridgeTest, TellsTheNumberOfSentMessages) {
  Send(0, L"SentItemsEntries");
  Answer(1, {2000});
  EXPECT_EQ(Take(0), (Texts{L"2000", L"#####SentItemsEntries"}));
}

TEST_F(BridgeTest, TellsTheRecipientsOfEachSentMessage) {
  Send(0, L"GiveAddressesFromSentItems");
  Answer(1, {{{"to", {"X <a@x>", "b@x"}}, {"cc", {"d@x"}}, {"bcc", {"c@x"}}},
             {{"to", Json::array()}, {"cc", Json::array()}, {"bcc", Json::array()}}});
  EXPECT_EQ(Take(0), (Texts{L"IncreaseProgressBar", L"a@x, b@x", L"d@x", L"c@x",
                            L"IncreaseProgressBar", L"#####GiveAddressesFromSentItems"}));
}

TEST_F(BridgeTest, LeavesOutItemsOfAnotherCommand) {
  Send(0, L"GiveContacts");
  const Json none = Json::array();
  Answer(1, {{{"path", {"A"}}, {"id", "i"}, {"store", "s"}},
             {{"to", {"a@x"}}, {"cc", none}, {"bcc", none}},
             7,
             "b@x"});
  EXPECT_EQ(Take(0), (Texts{L"b@x", L"#####GiveContacts"}));
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_NE(lines[0].find("3 entries"), std::string::npos) << lines[0];
}

TEST_F(BridgeTest, CountsRecipientsThatItLeavesOut) {
  Send(0, L"GiveAddressesFromSentItems");
  Answer(1, {{{"to", {"nobody", "a@x"}}, {"cc", {"nobody"}}, {"bcc", Json::array()}}});
  EXPECT_EQ(Take(0), (Texts{L"IncreaseProgressBar", L"a@x", L"#####GiveAddressesFromSentItems"}));
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_NE(lines[0].find("2 entries"), std::string::npos) << lines[0];
}

TEST_F(BridgeTest, MakesAFolder) {
  Send(0, L"AddNewFolder");
  EXPECT_TRUE(posted.empty());
  EXPECT_EQ(Take(0), Texts{L"OK"});
  Send(0, L"\\\\A\\B######s");
  ASSERT_EQ(posted.size(), 1U);
  EXPECT_EQ(posted[0],
            (Json{{"id", 1}, {"command", "AddNewFolder"}, {"path", {"A", "B"}}, {"store", "s"}}));
  Answer(1, {{{"path", {"A", "B"}}, {"id", "i"}, {"store", "s"}}});
  EXPECT_EQ(Take(0), (Texts{L"\\\\A\\B######i######s", L"#####AddNewFolder"}));
}

TEST_F(BridgeTest, MakesNoFolderThatItCouldNotTell) {
  Send(0, L"AddNewFolder");
  EXPECT_EQ(Take(0), Texts{L"OK"});
  Send(0, L"\\\\A\\B#C######s");
  EXPECT_TRUE(posted.empty());
  EXPECT_EQ(Take(0), Texts{L"#####AddNewFolder"});
  EXPECT_TRUE(bridge.WantsText(0));
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_EQ(lines[0].find("B#C"), std::string::npos) << "a log must not name a folder";
}

TEST_F(BridgeTest, TurnsMovingOnWithTheFolderOfTheSettings) {
  spamFolder = kId;
  Send(0, L"SetMoveMails");
  EXPECT_EQ(Take(0), Texts{L"OK"});
  Send(0, L"true");
  ASSERT_EQ(posted.size(), 1U);
  EXPECT_EQ(posted[0],
            (Json{{"id", 1}, {"command", "SetMoveMails"}, {"move", true}, {"folder", kId}}));
  Answer(1, Json::array());
  EXPECT_EQ(Take(0), Texts{L"#####SetMoveMails"});
}

TEST_F(BridgeTest, TurnsMovingOffWithoutAFolder) {
  spamFolder = "0";
  Send(0, L"SetMoveMails");
  Take(0);
  Send(0, L"false");
  ASSERT_EQ(posted.size(), 1U);
  EXPECT_EQ(posted[0]["move"], false);
  EXPECT_EQ(posted[0]["folder"], "");
}

TEST_F(BridgeTest, TurnsMovingOnForNothingButTrue) {
  for (const wchar_t* text : {L"True", L"1", L"on"}) {
    Send(0, L"SetMoveMails");
    Take(0);
    Send(0, text);
    EXPECT_EQ(posted.back()["move"], false) << posted.back();
    Answer(posted.back()["id"], Json::array());
    Take(0);
  }
}

TEST_F(BridgeTest, ReadsAnArgumentOnceItHasToldTheClientToGoOn) {
  Send(0, L"AddNewFolder");
  EXPECT_FALSE(bridge.WantsText(0));
  EXPECT_EQ(Take(0), Texts{L"OK"});
  EXPECT_TRUE(bridge.WantsText(0));
}

TEST_F(BridgeTest, RepliesNothingToHidingAndEnding) {
  for (const wchar_t* command : {L"HideThunderbirdWindow", L"ExitThunderbird"}) {
    Send(0, command);
    ASSERT_FALSE(bridge.WantsText(0));
    Answer(posted.back()["id"], Json::array());
    EXPECT_EQ(Take(0), Texts());
    EXPECT_TRUE(bridge.WantsText(0));
  }
  EXPECT_EQ(posted[1]["command"], "ExitThunderbird");
}

TEST_F(BridgeTest, EndsAReplyAfterAnErrorAndWritesItDown) {
  Send(0, L"GiveContacts");
  Answer(1, {"a@example.com"}, false);
  Take(0);
  bridge.TakeMessage(R"({"id": 1, "error": "no address books"})");
  EXPECT_EQ(Take(0), Texts{L"#####GiveContacts"});
  EXPECT_EQ(lines, std::vector<std::string>{"GiveContacts failed: no address books"});
  EXPECT_EQ(posted.size(), 2U);
}

TEST_F(BridgeTest, LeavesOutWhatThePipeCantExpressAndCountsIt) {
  Send(0, L"GiveAllFolders");
  Answer(1, {{{"path", {"A", "b#c"}}, {"id", "i"}, {"store", "s"}},
             {{"path", {"A"}}, {"id", "i"}, {"store", "s"}},
             7,
             "text",
             nullptr});
  EXPECT_EQ(Take(0), (Texts{L"\\\\A######i######s######true", L"#####GiveAllFolders"}));
  ASSERT_EQ(lines.size(), 1U);
  EXPECT_NE(lines[0].find("4 entries"), std::string::npos) << lines[0];
  EXPECT_EQ(lines[0].find("b#c"), std::string::npos) << lines[0];
}

TEST_F(BridgeTest, TellsEachClientItsOwnReply) {
  Send(0, L"GiveContacts");
  Send(1, L"SentItemsEntries");
  Send(2, L"GiveContacts");
  Answer(3, {"c@example.com"});
  Answer(2, {5});
  Answer(1, {"a@example.com"});
  EXPECT_EQ(Take(0), (Texts{L"a@example.com", L"#####GiveContacts"}));
  EXPECT_EQ(Take(1), (Texts{L"5", L"#####SentItemsEntries"}));
  EXPECT_EQ(Take(2), (Texts{L"c@example.com", L"#####GiveContacts"}));
}

TEST_F(BridgeTest, StopsTheRequestOfAClientThatHasLeft) {
  Send(0, L"GiveContacts");
  Answer(1, {"a@example.com"}, false);
  bridge.Reset(0);
  ASSERT_EQ(posted.size(), 2U);
  EXPECT_EQ(posted[1], (Json{{"id", 1}, {"command", "Stop"}}));
  EXPECT_EQ(bridge.NextText(0), nullptr);
  // The next client on this connection gets nothing of it.
  Send(0, L"GiveContacts");
  Answer(1, {"late@example.com"});
  EXPECT_EQ(Take(0), Texts());
  Answer(2, {"b@example.com"});
  EXPECT_EQ(Take(0), (Texts{L"b@example.com", L"#####GiveContacts"}));
}

TEST_F(BridgeTest, StopsNothingThatIsDone) {
  Send(0, L"GiveContacts");
  Answer(1, {"a@example.com"});
  bridge.Reset(0);
  bridge.Reset(1);
  EXPECT_EQ(posted.size(), 1U);
}

TEST_F(BridgeTest, IgnoresAnswersThatNobodyWaitsFor) {
  Answer(1, {"a@example.com"});
  Send(0, L"GiveContacts");
  Answer(1, {"a@example.com"}, false);
  Answer(1, {"unasked@example.com"});
  Answer(0, {"nobody@example.com"});
  Answer(99, {"nobody@example.com"});
  EXPECT_EQ(Take(0), Texts{L"a@example.com"});
}

TEST_F(BridgeTest, IgnoresWhatIsNoAnswerAndNoCommand) {
  Send(0, L"Format C:");
  Send(0, L"giveallfolders");
  Send(0, L"#####GiveContacts");
  bridge.TakeMessage("nonsense");
  ASSERT_EQ(lines.size(), 4U);
  EXPECT_EQ(lines[0].find("Format"), std::string::npos) << "a log must not repeat texts";
  EXPECT_TRUE(posted.empty());
  EXPECT_EQ(bridge.NextText(0), nullptr);
  Send(0, L"GiveContacts");
  EXPECT_EQ(posted.size(), 1U);
}

}  // namespace
}  // namespace postmarker::bridge
