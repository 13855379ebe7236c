#include <windows.h>

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "support/NamedPipeFixture_win.h"

namespace postmarker {
namespace {

using test::FreshPipeName;
using test::kBufferChars;
using test::WaitUntil;

class NamedPipeTest : public test::NamedPipeFixture {};

TEST_F(NamedPipeTest, MessagesCrossInBothDirections) {
  Connect();
  EXPECT_FALSE(m_client.HasMessage());
  EXPECT_FALSE(m_server.HasMessage());
  EXPECT_TRUE(m_client.Write(L"Grüße, 日本"));
  EXPECT_TRUE(WaitUntil([this] { return m_server.HasMessage(); }));
  std::wstring text;
  EXPECT_TRUE(m_server.Read(&text));
  EXPECT_EQ(text, L"Grüße, 日本");
  EXPECT_TRUE(m_server.Write(L"one"));
  EXPECT_TRUE(m_server.Write(L"two"));
  EXPECT_EQ(Received(), L"one");
  EXPECT_EQ(Received(), L"two");
  EXPECT_FALSE(m_client.HasMessage());
}

TEST_F(NamedPipeTest, ReadWithoutAMessageFailsAndEmptiesTheText) {
  Connect();
  std::wstring text = L"(as before)";
  EXPECT_FALSE(m_client.Read(&text));
  EXPECT_EQ(text, L"");
  text = L"(as before)";
  EXPECT_FALSE(m_server.Read(&text));
  EXPECT_EQ(text, L"");
}

TEST_F(NamedPipeTest, MessageOf1024CharactersIsReceivedAsItsFirst1023) {
  Connect(4 * kBufferChars, 4 * kBufferChars);
  const std::wstring longest(1023, L'a');
  EXPECT_TRUE(m_server.Write(longest));
  EXPECT_TRUE(m_server.Write(longest + L'b'));
  EXPECT_TRUE(m_server.Write(longest + std::wstring(2000, L'b')));
  EXPECT_EQ(Received(), longest);
  EXPECT_EQ(Received(), longest);
  EXPECT_EQ(Received(), longest);
}

TEST_F(NamedPipeTest, ServerCutsLongMessagesAsTheClientDoes) {
  Connect();
  EXPECT_TRUE(m_client.Write(std::wstring(1024, L'a')));
  std::wstring text;
  EXPECT_TRUE(WaitUntil([this] { return m_server.HasMessage(); }));
  EXPECT_TRUE(m_server.Read(&text));
  EXPECT_EQ(text, std::wstring(1023, L'a'));
}

TEST_F(NamedPipeTest, MessageOfNoCharactersIsRefusedWithoutTraffic) {
  Connect();
  EXPECT_FALSE(m_client.Write(L""));
  EXPECT_FALSE(m_client.Write(std::wstring(1, L'\0') + L"behind"));
  EXPECT_FALSE(m_server.Write(L""));
  EXPECT_FALSE(m_server.HasMessage());
  EXPECT_FALSE(m_client.HasMessage());
}

TEST_F(NamedPipeTest, TextEndsAtItsFirstNul) {
  Connect();
  EXPECT_TRUE(m_server.Write(std::wstring(L"seen") + L'\0' + L"unseen"));
  EXPECT_EQ(Received(), L"seen");
}

TEST_F(NamedPipeTest, TextOfTheBuffersSizeIsRefused) {
  Connect(16);
  EXPECT_FALSE(m_client.Write(std::wstring(16, L'a')));
  EXPECT_FALSE(m_client.Write(std::wstring(1000, L'a')));
  EXPECT_FALSE(m_server.HasMessage());
  EXPECT_TRUE(m_client.Write(std::wstring(15, L'a')));
  EXPECT_TRUE(WaitUntil([this] { return m_server.HasMessage(); }));
}

TEST_F(NamedPipeTest, MessageLargerThanTheBufferFailsAndItsRestIsTheNextMessage) {
  Connect(16);
  EXPECT_TRUE(m_server.Write(std::wstring(20, L'a')));
  EXPECT_TRUE(WaitUntil([this] { return m_client.HasMessage(); }));
  std::wstring text = L"(as before)";
  EXPECT_FALSE(m_client.Read(&text));
  EXPECT_EQ(text, L"");
  EXPECT_EQ(Received(), L"aaaa");
}

TEST_F(NamedPipeTest, ShortMessageAfterALongOneHasNoTailOfIt) {
  Connect();
  EXPECT_TRUE(m_server.Write(std::wstring(1000, L'a')));
  EXPECT_TRUE(m_server.Write(L"b"));
  EXPECT_EQ(Received(), std::wstring(1000, L'a'));
  EXPECT_EQ(Received(), L"b");
}

TEST_F(NamedPipeTest, AfterTheServerClosedReadFailsBehindTheLastMessage) {
  Connect();
  EXPECT_TRUE(m_server.Write(L"last"));
  m_server.Close();
  EXPECT_EQ(Received(), L"last");
  EXPECT_TRUE(m_client.HasMessage());
  std::wstring text = L"(as before)";
  EXPECT_FALSE(m_client.Read(&text));
  EXPECT_EQ(text, L"");
  EXPECT_FALSE(m_client.Write(L"anybody?"));
}

TEST_F(NamedPipeTest, AfterTheClientClosedTheServerIsNotConnectedAndReadFails) {
  Connect();
  EXPECT_TRUE(m_server.IsConnected());
  m_client.Close();
  EXPECT_TRUE(WaitUntil([this] { return !m_server.IsConnected(); }));
  EXPECT_TRUE(m_server.HasMessage());
  std::wstring text = L"(as before)";
  EXPECT_FALSE(m_server.Read(&text));
  EXPECT_EQ(text, L"");
}

TEST_F(NamedPipeTest, StopMakesHasMessageTrueAndReadFail) {
  Connect();
  EXPECT_TRUE(m_server.Write(L"waiting"));
  m_client.RequestStop();
  EXPECT_TRUE(m_client.StopRequested());
  EXPECT_TRUE(m_client.HasMessage());
  std::wstring text = L"(as before)";
  EXPECT_FALSE(m_client.Read(&text));
  EXPECT_EQ(text, L"");
  EXPECT_FALSE(m_client.Write(L"text"));
  EXPECT_FALSE(m_client.Flush());
  EXPECT_FALSE(m_client.Transact(L"text", &text));
}

TEST_F(NamedPipeTest, ClientThatWasNeverInitialisedFailsEverywhereAndHangsNowhere) {
  std::wstring text = L"(as before)";
  EXPECT_FALSE(m_client.Open());
  EXPECT_FALSE(m_client.TryConnect(2, 4'000));
  EXPECT_TRUE(m_client.TryConnect(0, 4'000));
  EXPECT_FALSE(m_client.ConnectBlocking());
  EXPECT_FALSE(m_client.StopRequested());
  EXPECT_TRUE(m_client.HasMessage());
  EXPECT_FALSE(m_client.Read(&text));
  EXPECT_EQ(text, L"");
  EXPECT_FALSE(m_client.Write(L"text"));
  EXPECT_FALSE(m_client.Transact(L"text", &text));
  EXPECT_FALSE(m_client.Flush());
  m_client.RequestStop();
  EXPECT_FALSE(m_server.IsConnected());
  EXPECT_TRUE(m_server.HasMessage());
  EXPECT_FALSE(m_server.Create());
  EXPECT_FALSE(m_server.Transact(L"text", &text));
}

TEST_F(NamedPipeTest, FullPipeThatTakesNothingIsAFailedSend) {
  Connect(kBufferChars, 64);
  int taken = 0;
  while (taken < 100'000 && m_client.Write(L"message " + std::to_wstring(taken))) {
    ++taken;
  }
  ASSERT_LT(taken, 100'000) << "the pipe never filled";
  // Every message that counted as sent arrives, and the pipe takes messages again.
  std::wstring text;
  for (int i = 0; i < taken; ++i) {
    ASSERT_TRUE(m_server.Read(&text)) << i;
    ASSERT_EQ(text, L"message " + std::to_wstring(i));
  }
  EXPECT_FALSE(m_server.HasMessage());
  EXPECT_TRUE(m_client.Write(L"again"));
}

TEST_F(NamedPipeTest, TransactWaitsForTheAnswer) {
  Connect();
  std::thread server([this] {
    std::wstring text;
    EXPECT_TRUE(WaitUntil([&] { return m_server.HasMessage(); }));
    EXPECT_TRUE(m_server.Read(&text));
    EXPECT_TRUE(m_server.Write(L"answer to " + text));
  });
  std::wstring answer;
  EXPECT_TRUE(m_client.Transact(L"question", &answer));
  EXPECT_EQ(answer, L"answer to question");
  server.join();
}

TEST_F(NamedPipeTest, TransactOfTheServerWaitsForTheAnswer) {
  Connect();
  std::thread client([this] {
    EXPECT_EQ(Received(), L"question");
    EXPECT_TRUE(m_client.Write(L"answer"));
  });
  std::wstring answer;
  EXPECT_TRUE(m_server.Transact(L"question", &answer));
  EXPECT_EQ(answer, L"answer");
  client.join();
}

TEST_F(NamedPipeTest, TransactEndsWhenStoppedFromAnotherThread) {
  Connect();
  std::wstring answer = L"(as before)";
  std::thread stopper([this] {
    ::Sleep(30);
    m_client.RequestStop();
  });
  EXPECT_FALSE(m_client.Transact(L"question", &answer));
  EXPECT_EQ(answer, L"");
  stopper.join();
}

TEST_F(NamedPipeTest, TransactEndsWhenTheServerGoes) {
  Connect();
  std::wstring answer = L"(as before)";
  std::thread leaver([this] {
    ::Sleep(30);
    m_server.Close();
  });
  EXPECT_FALSE(m_client.Transact(L"question", &answer));
  EXPECT_EQ(answer, L"");
  leaver.join();
}

TEST_F(NamedPipeTest, ServerServesOneClientAfterTheOther) {
  Connect();
  for (int i = 0; i < 20; ++i) {
    EXPECT_TRUE(m_client.Write(L"hello"));
    EXPECT_TRUE(WaitUntil([this] { return m_server.HasMessage(); }));
    std::wstring text;
    EXPECT_TRUE(m_server.Read(&text));
    m_client.Close();
    EXPECT_TRUE(WaitUntil([this] { return m_client.Open() || m_server.Accept(); }));
    EXPECT_TRUE(WaitUntil([this] { return m_server.Accept(); }));
  }
}

TEST_F(NamedPipeTest, SeveralServersWithOneNameServeSeveralClients) {
  Connect();
  NamedPipeServer secondServer;
  NamedPipeClient secondClient;
  ASSERT_TRUE(secondServer.Init(m_name.c_str(), kBufferChars));
  ASSERT_TRUE(secondClient.Init(m_name.c_str(), kBufferChars, 0));
  ASSERT_TRUE(secondClient.Open());
  EXPECT_TRUE(WaitUntil([&] { return secondServer.Accept(); }));
  EXPECT_TRUE(secondServer.Write(L"second"));
  EXPECT_FALSE(m_client.HasMessage());
  EXPECT_TRUE(WaitUntil([&] { return secondClient.HasMessage(); }));
}

TEST_F(NamedPipeTest, CreateOnAServerThatHasItsEndFailsAndClosesIt) {
  Connect();
  EXPECT_FALSE(m_server.Create());
  EXPECT_FALSE(m_server.IsConnected());
  EXPECT_TRUE(WaitUntil([this] { return m_client.HasMessage(); }));
  EXPECT_TRUE(m_server.Create());
}

TEST_F(NamedPipeTest, FlushReturnsOnceTheServerHasReadEverything) {
  Connect();
  EXPECT_TRUE(m_client.Write(L"text"));
  std::thread server([this] {
    std::wstring text;
    EXPECT_TRUE(WaitUntil([&] { return m_server.HasMessage(); }));
    EXPECT_TRUE(m_server.Read(&text));
  });
  EXPECT_TRUE(m_client.Flush());
  server.join();
}

// A server that sends what no text is.
class HostileServerTest : public NamedPipeTest {
 protected:
  void SetUp() override {
    m_raw.Reset(::CreateNamedPipeW(m_name.c_str(), PIPE_ACCESS_DUPLEX,
                                   PIPE_TYPE_MESSAGE | PIPE_READMODE_MESSAGE | PIPE_WAIT, 1, 65536,
                                   65536, 0, nullptr));
    ASSERT_TRUE(m_raw);
    ASSERT_TRUE(m_client.Init(m_name.c_str(), 64, 0));
    ASSERT_TRUE(m_client.Open());
  }

  void Send(const void* bytes, size_t size) {
    DWORD written = 0;
    ASSERT_TRUE(::WriteFile(m_raw.Get(), bytes, static_cast<DWORD>(size), &written, nullptr));
    ASSERT_EQ(written, size);
  }

  FileHandle m_raw;
};

TEST_F(HostileServerTest, TextWithoutATerminatorEndsWithTheMessage) {
  Send(L"abcdef", 6);
  Send(L"xy", 4);
  EXPECT_EQ(Received(), L"abc");
  EXPECT_EQ(Received(), L"xy");
}

TEST_F(HostileServerTest, OddNumberOfBytesGivesTheWholeUnitsAndTheHalfOne) {
  Send(L"ab", 3);
  EXPECT_EQ(Received(), L"ab");
  Send("\x41", 1);
  EXPECT_EQ(Received(), L"A");
}

TEST_F(HostileServerTest, MessageThatFillsTheBufferWithoutATerminatorIsTakenWhole) {
  const std::wstring full(64, L'z');
  Send(full.data(), full.size() * sizeof(wchar_t));
  EXPECT_EQ(Received(), full);
}

TEST_F(HostileServerTest, OnlyATerminatorIsAnEmptyText) {
  Send(L"", 2);
  EXPECT_EQ(Received(), L"");
  Send(L"\0abc", 8);
  EXPECT_EQ(Received(), L"");
}

TEST_F(HostileServerTest, MessageOfNoBytesIsSilence) {
  Send(L"", 0);
  EXPECT_FALSE(m_client.HasMessage());
}

TEST_F(HostileServerTest, DisconnectingServerIsABrokenPipe) {
  Send(L"lost", 10);
  ::DisconnectNamedPipe(m_raw.Get());
  EXPECT_TRUE(m_client.HasMessage());
  std::wstring text = L"(as before)";
  EXPECT_FALSE(m_client.Read(&text));
  EXPECT_EQ(text, L"");
  EXPECT_FALSE(m_client.Write(L"text"));
}

TEST_F(HostileServerTest, ByteStreamInsteadOfMessagesCannotBeOpened) {
  const std::wstring name = FreshPipeName();
  const FileHandle byteStream(::CreateNamedPipeW(
      name.c_str(), PIPE_ACCESS_DUPLEX, PIPE_TYPE_BYTE | PIPE_WAIT, 1, 65536, 65536, 0, nullptr));
  ASSERT_TRUE(byteStream);
  ASSERT_TRUE(m_client.Init(name.c_str(), 64, 0));
  EXPECT_FALSE(m_client.Open());
}

}  // namespace
}  // namespace postmarker
