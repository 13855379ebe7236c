#include "PipeService_win.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "ExtensionMessages.h"
#include "support/NamedPipeFixture_win.h"

namespace postmarker::bridge {
namespace {

using Json = nlohmann::json;

class PipeServiceTest : public testing::Test {
 protected:
  PipeServiceTest()
      : m_bridge({[this](const std::string& message) { m_posted.push_back(Json::parse(message)); },
                  [](const std::string& /*line*/) {}, [] { return std::string(); }},
                 kPipeInstances) {}

  // Lets the service work until the condition is true.
  bool StepUntil(const std::function<bool()>& condition) {
    return test::WaitUntil(
        [&] {
          m_service.Step(&m_bridge);
          return condition();
        },
        test::milliseconds(30'000));
  }
  bool Connect(NamedPipeClient* client) {
    return client->Init(m_name.c_str(), 65536, 0) &&
           StepUntil([&] { return client->TryConnect(1, 0); });
  }
  std::wstring Receive(NamedPipeClient* client) {
    std::wstring text;
    EXPECT_TRUE(StepUntil([&] { return client->HasMessage(); }));
    EXPECT_TRUE(client->Read(&text));
    return text;
  }
  void Answer(const Json& items, bool done) {
    m_bridge.TakeMessage(
        Json{{"id", m_posted.back()["id"]}, {"items", items}, {"done", done}}.dump());
  }

  const std::wstring m_name = test::FreshPipeName();
  std::vector<Json> m_posted;
  Bridge m_bridge;
  PipeService m_service{m_name};
};

TEST_F(PipeServiceTest, TellsWhetherAnythingHappened) {
  EXPECT_FALSE(m_service.HasClients());
  EXPECT_FALSE(m_service.Step(&m_bridge));
  NamedPipeClient client;
  ASSERT_TRUE(Connect(&client));
  ASSERT_TRUE(StepUntil([&] { return m_service.HasClients(); }));
  EXPECT_FALSE(m_service.Step(&m_bridge)) << "nothing was said";
  ASSERT_TRUE(client.Write(L"SentItemsEntries"));
  ASSERT_TRUE(test::WaitUntil([&] { return m_service.Step(&m_bridge); }));
  ASSERT_EQ(m_posted.size(), 1U);
  EXPECT_FALSE(m_service.Step(&m_bridge)) << "there is no answer yet";
  Answer({7}, true);
  EXPECT_TRUE(m_service.Step(&m_bridge));
  EXPECT_EQ(Receive(&client), L"7");
  EXPECT_EQ(Receive(&client), L"#####SentItemsEntries");
  client.Close();
  EXPECT_TRUE(StepUntil([&] { return !m_service.HasClients(); }));
}

TEST_F(PipeServiceTest, LosesNothingOfAReplyThatIsLargerThanThePipe) {
  constexpr int kAddresses = 400;
  NamedPipeClient client;
  ASSERT_TRUE(Connect(&client));
  ASSERT_TRUE(client.Write(L"GiveContacts"));
  ASSERT_TRUE(StepUntil([&] { return !m_posted.empty(); }));
  Json items = Json::array();
  for (int i = 0; i < kAddresses; ++i) {
    items.push_back(std::string(900, 'x') + std::to_string(i));
  }
  Answer(items, true);
  for (int i = 0; i < 10; ++i) {
    m_service.Step(&m_bridge);
  }
  EXPECT_NE(m_bridge.NextText(0), nullptr) << "the pipe has taken everything";
  for (int i = 0; i < kAddresses; ++i) {
    ASSERT_EQ(Receive(&client), std::wstring(900, L'x') + std::to_wstring(i));
  }
  EXPECT_EQ(Receive(&client), L"#####GiveContacts");
}

TEST_F(PipeServiceTest, SendsAWholeBatchInOneStep) {
  NamedPipeClient client;
  ASSERT_TRUE(Connect(&client));
  ASSERT_TRUE(client.Write(L"GiveContacts"));
  ASSERT_TRUE(StepUntil([&] { return !m_posted.empty(); }));
  Json items = Json::array();
  for (int i = 0; i < 200; ++i) {
    items.push_back(std::string(200, 'x'));
  }
  Answer(items, false);
  m_service.Step(&m_bridge);
  ASSERT_EQ(m_posted.size(), 2U);
  EXPECT_EQ(m_posted[1]["command"], "Next");
}

TEST_F(PipeServiceTest, ReadsTheNextCommandOnceTheReplyIsTaken) {
  NamedPipeClient client;
  ASSERT_TRUE(Connect(&client));
  ASSERT_TRUE(client.Write(L"SentItemsEntries"));
  ASSERT_TRUE(client.Write(L"GiveContacts"));
  ASSERT_TRUE(StepUntil([&] { return !m_posted.empty(); }));
  for (int i = 0; i < 10; ++i) {
    m_service.Step(&m_bridge);
  }
  EXPECT_EQ(m_posted.size(), 1U);
  Answer({7}, true);
  ASSERT_TRUE(StepUntil([&] { return m_posted.size() == 2; }));
  EXPECT_EQ(m_posted[1]["command"], "GiveContacts");
}

TEST_F(PipeServiceTest, ForgetsAClientThatLeavesAndServesTheNextOne) {
  for (int round = 0; round < 3 * static_cast<int>(kPipeInstances); ++round) {
    NamedPipeClient client;
    ASSERT_TRUE(Connect(&client)) << round;
    ASSERT_TRUE(client.Write(L"AddNewFolder"));
    EXPECT_EQ(Receive(&client), L"OK") << round;
    client.Close();
    ASSERT_TRUE(StepUntil([&] { return !m_service.HasClients(); })) << round;
  }
}

TEST_F(PipeServiceTest, ServesAsManyClientsAsItHasInstances) {
  std::array<NamedPipeClient, kPipeInstances> clients;
  for (NamedPipeClient& client : clients) {
    ASSERT_TRUE(Connect(&client));
  }
  for (NamedPipeClient& client : clients) {
    ASSERT_TRUE(client.Write(L"SetMoveMails"));
    EXPECT_EQ(Receive(&client), L"OK");
  }
  NamedPipeClient oneMore;
  ASSERT_TRUE(oneMore.Init(m_name.c_str(), 65536, 0));
  m_service.Step(&m_bridge);
  EXPECT_FALSE(oneMore.Open());
}

TEST_F(PipeServiceTest, TriesAgainWhileSomebodyElseHasTheName) {
  FileHandle other(::CreateNamedPipeW(m_name.c_str(), PIPE_ACCESS_DUPLEX,
                                      PIPE_TYPE_MESSAGE | PIPE_NOWAIT, 1, 4096, 4096, 0, nullptr));
  ASSERT_TRUE(other);
  EXPECT_FALSE(m_service.Step(&m_bridge));
  EXPECT_FALSE(m_service.HasClients());
  other.Reset();
  NamedPipeClient client;
  ASSERT_TRUE(Connect(&client));
  ASSERT_TRUE(client.Write(L"SetMoveMails"));
  EXPECT_EQ(Receive(&client), L"OK");
}

}  // namespace
}  // namespace postmarker::bridge
