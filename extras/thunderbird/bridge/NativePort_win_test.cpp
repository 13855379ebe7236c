#include "NativePort_win.h"

#include <gmock/gmock.h>

#include "NativeFrames.h"
#include "support/NamedPipeFixture_win.h"

namespace postmarker::bridge {
namespace {

constexpr DWORD kLongMs = 60'000;

// A condition that a busy machine may take its time for.
bool Soon(const std::function<bool()>& condition) {
  return test::WaitUntil(condition, test::milliseconds(30'000));
}

struct Stream {
  Stream() { EXPECT_TRUE(::CreatePipe(readEnd.Put(), writeEnd.Put(), nullptr, 65536)); }

  void Put(const std::string& bytes) const {
    DWORD written = 0;
    EXPECT_TRUE(::WriteFile(writeEnd.Get(), bytes.data(), static_cast<DWORD>(bytes.size()),
                            &written, nullptr));
  }
  [[nodiscard]] DWORD Waiting() const {
    DWORD available = 0;
    ::PeekNamedPipe(readEnd.Get(), nullptr, 0, nullptr, &available, nullptr);
    return available;
  }

  KernelHandle readEnd;
  KernelHandle writeEnd;
};

class NativePortTest : public testing::Test {
 protected:
  // The port's thread must be done with the stream before another one gets its handle.
  ~NativePortTest() override {
    m_in.writeEnd.Reset();
    EXPECT_TRUE(Soon([this] {
      m_port.Next();
      return m_port.HasEnded();
    }));
  }

  // The next message, once it is there.
  std::string Take() {
    std::optional<std::string> message;
    EXPECT_TRUE(Soon([&] { return (message = m_port.Next()).has_value(); }));
    return message.value_or("(none)");
  }
  // How long Wait takes.
  ULONGLONG MillisecondsOfWait(DWORD limit) const {
    const ULONGLONG start = ::GetTickCount64();
    m_port.Wait(limit);
    return ::GetTickCount64() - start;
  }

  Stream m_in;
  Stream m_out;
  NativePort m_port{m_in.readEnd.Get(), m_out.writeEnd.Get()};
};

TEST_F(NativePortTest, GivesTheMessagesInTheirOrder) {
  m_in.Put(MakeFrame("first") + MakeFrame("second").substr(0, 5));
  EXPECT_EQ(Take(), "first");
  EXPECT_EQ(m_port.Next(), std::nullopt);
  m_in.Put(MakeFrame("second").substr(5));
  EXPECT_EQ(Take(), "second");
  EXPECT_EQ(m_port.Next(), std::nullopt);
  EXPECT_FALSE(m_port.HasEnded());
}

TEST_F(NativePortTest, LetsTheStreamWaitWhileNobodyTakesMessages) {
  std::string frames;
  for (int i = 0; i < 40; ++i) {
    frames += MakeFrame(std::to_string(i));
  }
  m_in.Put(frames);
  ASSERT_TRUE(Soon([&] { return m_in.Waiting() == 0; }));
  m_in.Put(MakeFrame("last"));
  // Not all that it has read is kept, so it reads no more.
  ::Sleep(300);
  EXPECT_NE(m_in.Waiting(), 0U);
  for (int i = 0; i < 40; ++i) {
    ASSERT_EQ(Take(), std::to_string(i));
  }
  EXPECT_EQ(Take(), "last");
}

TEST_F(NativePortTest, WaitsUntilThereIsSomethingToTake) {
  EXPECT_GE(MillisecondsOfWait(100), 80U);
  m_in.Put(MakeFrame("a") + MakeFrame("b"));
  EXPECT_LT(MillisecondsOfWait(kLongMs), kLongMs / 2);
  EXPECT_EQ(Take(), "a");
  EXPECT_LT(MillisecondsOfWait(kLongMs), kLongMs / 2);
  EXPECT_EQ(Take(), "b");
  EXPECT_GE(MillisecondsOfWait(100), 80U);
}

TEST_F(NativePortTest, HasEndedOnceTheStreamIsClosedAndAllIsTaken) {
  m_in.Put(MakeFrame("a"));
  m_in.writeEnd.Reset();
  ASSERT_TRUE(Soon([&] { return m_in.Waiting() == 0; }));
  ::Sleep(50);
  EXPECT_FALSE(m_port.HasEnded());
  EXPECT_EQ(Take(), "a");
  EXPECT_TRUE(Soon([&] { return m_port.HasEnded(); }));
  EXPECT_LT(MillisecondsOfWait(kLongMs), kLongMs / 2) << "the end is something to see";
  EXPECT_LT(MillisecondsOfWait(kLongMs), kLongMs / 2) << "and stays so";
}

TEST_F(NativePortTest, HasEndedAfterAFrameThatCantBe) {
  m_in.Put(std::string(4, '\0'));
  EXPECT_LT(MillisecondsOfWait(kLongMs), kLongMs / 2);
  EXPECT_TRUE(m_port.HasEnded());
}

TEST_F(NativePortTest, WritesFramesUntilNobodyReads) {
  EXPECT_TRUE(m_port.Write("hello"));
  std::string bytes(9, '\0');
  DWORD read = 0;
  EXPECT_TRUE(::ReadFile(m_out.readEnd.Get(), bytes.data(), 9, &read, nullptr));
  EXPECT_EQ(bytes, MakeFrame("hello"));
  EXPECT_FALSE(m_port.Write("")) << "Thunderbird takes no such frame";
  m_out.readEnd.Reset();
  EXPECT_FALSE(m_port.Write("hello"));
}

TEST(NativePort, ReadsNoMoreOnceItIsGone) {
  const Stream stream;
  {
    const NativePort port(stream.readEnd.Get(), nullptr);
    std::string frames;
    for (int i = 0; i < 40; ++i) {
      frames += MakeFrame("x");
    }
    stream.Put(frames);
    ASSERT_TRUE(Soon([&] { return stream.Waiting() == 0; }));
  }
  stream.Put(MakeFrame("y"));
  ::Sleep(300);
  EXPECT_NE(stream.Waiting(), 0U);
}

TEST(NativePort, HasEndedAtTheEndOfAFile) {
  const FileHandle file(::CreateFileW(L"NUL", GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
  const NativePort port(file.Get(), nullptr);
  EXPECT_TRUE(Soon([&] { return port.HasEnded(); }));
}

}  // namespace
}  // namespace postmarker::bridge
