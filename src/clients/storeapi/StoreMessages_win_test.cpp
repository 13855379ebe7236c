// Single messages of the store, as streams and as the platform's MIME messages.
#include "clients/storeapi/StoreMessages_win.h"

#include <gmock/gmock.h>

#include <cstdlib>

#include "clients/storeapi/StoreMail.h"
#include "clients/storeapi/StoreSession_win.h"
#include "support/StoreInstallation_win.h"

namespace postmarker::storeapi {
namespace {

using nlohmann::json;
using test::StoreInstallation;

constexpr FolderId kInbox = 4;
constexpr FolderId kSpam = 9;

constexpr char kMarked[] =
    "Message-ID: <1@x>\r\nFrom: a@x\r\nTo: b@x\r\nSubject: [KSSpam] Win\r\n\r\nbody\r\n";

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

// Gives memory and counts what comes back. It lives on the stack of a test.
class CountingAllocator final : public IMimeAllocator {
 public:
  int live = 0;
  bool isEmpty = false;

  HRESULT __stdcall QueryInterface(REFIID /*iid*/, void** object) override {
    *object = nullptr;
    return E_NOINTERFACE;
  }
  ULONG __stdcall AddRef() override { return 1; }
  ULONG __stdcall Release() override { return 1; }
  void* __stdcall Alloc(SIZE_T size) override {
    live += isEmpty ? 0 : 1;
    return isEmpty ? nullptr : std::malloc(size);
  }
  void __stdcall Free(void* memory) override {
    --live;
    std::free(memory);
  }
  void* __stdcall Realloc(void* /*memory*/, SIZE_T /*size*/) override { return nullptr; }
  SIZE_T __stdcall GetSize(void* /*memory*/) override { return 0; }
  int __stdcall DidAlloc(void* /*memory*/) override { return -1; }
  void __stdcall HeapMinimize() override {}
};

#pragma GCC diagnostic pop

class StoreMessages : public testing::Test {
 protected:
  StoreMessages() {
    Peer().SetState(
        {{"root",
          {{"name", "R"},
           {"children",
            {{{"id", kInbox}, {"name", "Inbox"}, {"messages", {kMarked, "To: b@x\r\n"}}},
             {{"id", 5}, {"name", "Other"}},
             {{"id", kSpam}, {"name", "Spam"}}}}}}});
    m_session.emplace();
    EXPECT_EQ(m_session->Result(), S_OK);
    m_inbox = Open(kInbox);
  }
  ~StoreMessages() override {
    m_inbox.Reset();
    m_session.reset();
    EXPECT_EQ(Peer()->countLive(), 0) << "objects were left";
  }

  [[nodiscard]] const test::StorePeer& Peer() const { return m_client.Peer(); }
  [[nodiscard]] IStoreNamespace* Store() const { return m_session->Store(); }
  [[nodiscard]] ComPtr<IStoreFolder> Open(FolderId id) const {
    ComPtr<IStoreFolder> folder;
    EXPECT_EQ(Store()->OpenFolder(id, 0, folder.Put()), S_OK);
    return folder;
  }

  // The subject of the MIME message that was opened last. Nobody else may hold it any more.
  [[nodiscard]] std::string SubjectNow() const {
    uint32_t references = 7;
    std::string subject = Peer()->closeMimeMessage(&references);
    EXPECT_EQ(references, 0U) << "the message was not released";
    return subject;
  }

  StoreInstallation m_client;
  std::optional<StoreSession> m_session;
  ComPtr<IStoreFolder> m_inbox;
};

TEST_F(StoreMessages, AreComparedByTheirHeaders) {
  HeaderMap headers;
  ASSERT_TRUE(ReadHeaders(kMarked, &headers));
  EXPECT_TRUE(IsSameMessage(m_inbox.Get(), 1, headers));
  headers.Set("message-id", "<2@x>");
  EXPECT_FALSE(IsSameMessage(m_inbox.Get(), 1, headers));
}

TEST_F(StoreMessages, MessageThatCanNotBeReadIsTheSameAsNone) {
  EXPECT_FALSE(IsSameMessage(m_inbox.Get(), 2, {}));
  EXPECT_FALSE(IsSameMessage(m_inbox.Get(), 3, {}));
  Peer()->failCall("Stream.Read", 2, E_FAIL);
  EXPECT_FALSE(IsSameMessage(m_inbox.Get(), 1, {}));
}

TEST_F(StoreMessages, EveryMarkIsTakenOutOfTheSubject) {
  EXPECT_EQ(RemoveSubjectMark(nullptr, m_inbox.Get(), 1, "[KSSpam] Win [KSSpam]now"), S_OK);
  EXPECT_EQ(SubjectNow(), " Win now");
}

TEST_F(StoreMessages, SubjectWithoutTheMarkIsLeftAsItIs) {
  EXPECT_EQ(RemoveSubjectMark(nullptr, m_inbox.Get(), 1, "Win"), 1);
  EXPECT_STREQ(Peer()->journal(), "");
  EXPECT_EQ(SubjectNow(), "[KSSpam] Win");
}

TEST_F(StoreMessages, AllocatorThatIsGivenGetsItsMemoryBack) {
  CountingAllocator allocator;
  EXPECT_EQ(RemoveSubjectMark(&allocator, m_inbox.Get(), 1, "[KSSpam]a"), S_OK);
  EXPECT_EQ(allocator.live, 0);
  EXPECT_EQ(SubjectNow(), "a");
  EXPECT_STREQ(Peer()->journal(), "commit 2\n");
  allocator.isEmpty = true;
  EXPECT_EQ(RemoveSubjectMark(&allocator, m_inbox.Get(), 1, "[KSSpam]b"), E_OUTOFMEMORY);
  EXPECT_EQ(SubjectNow(), "[KSSpam] Win");
}

TEST_F(StoreMessages, FailureOfAMimeMessageIsItsCode) {
  for (const char* const method : {"Mime.BindToObject", "Mime.Commit"}) {
    Peer()->failCall(method, Peer()->countCalls(method) + 1, E_ACCESSDENIED);
    EXPECT_EQ(RemoveSubjectMark(nullptr, m_inbox.Get(), 1, "[KSSpam]"), E_ACCESSDENIED) << method;
  }
  (void)SubjectNow();
  EXPECT_STREQ(Peer()->journal(), "");
}

TEST_F(StoreMessages, MessageThatCanNotBeOpenedGivesItsCode) {
  Peer()->failCall("Folder.OpenMessage", 1, E_ACCESSDENIED);
  EXPECT_EQ(RemoveSubjectMark(nullptr, m_inbox.Get(), 1, "[KSSpam]"), E_ACCESSDENIED);
}

TEST_F(StoreMessages, AreMovedFolderByFolder) {
  const ComPtr<IStoreFolder> spam = Open(kSpam);
  EXPECT_EQ(MoveStoreMessages(Store(), {{kInbox, {2, 1}}, {5, {3}}}, spam.Get()), S_OK);
  EXPECT_STREQ(Peer()->journal(),
               "copymove 1 0 Inbox -> Spam: 2 1\ncopymove 1 0 Other -> Spam: 3\n");
}

TEST_F(StoreMessages, FolderThatFailsDoesNotKeepTheOthersFromIt) {
  const ComPtr<IStoreFolder> spam = Open(kSpam);
  EXPECT_EQ(MoveStoreMessages(Store(), {{3, {1}}, {kInbox, {1}}}, spam.Get()),
            static_cast<HRESULT>(0x800CCF65));
  EXPECT_STREQ(Peer()->journal(), "copymove 1 0 Inbox -> Spam: 1\n");
}

TEST_F(StoreMessages, AreMarkedFolderByFolder) {
  EXPECT_EQ(MarkStoreMessagesRead(Store(), {{kInbox, {1, 2}}, {5, {}}}, true), S_OK);
  EXPECT_EQ(MarkStoreMessagesRead(Store(), {{kInbox, {2}}}, false), S_OK);
  EXPECT_STREQ(Peer()->journal(), "read Inbox: 1 2\nread Other:\nunread Inbox: 2\n");
}

}  // namespace
}  // namespace postmarker::storeapi
