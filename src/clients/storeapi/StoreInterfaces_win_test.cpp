// The places of the functions in the tables of the interfaces, against the published ones.
#include "clients/storeapi/StoreInterfaces_win.h"

#include <gtest/gtest.h>

#include <cstring>

namespace postmarker::storeapi {
namespace {

// A pointer to a virtual member function is the place of the function in the table, in bytes and
// one more.
template <class Function>
size_t SlotOf(Function function) {
  uintptr_t place = 0;
  std::memcpy(&place, &function, sizeof(place));
  return (place - 1) / sizeof(void*);
}

TEST(StoreInterfaces, StoreNamespaceHasThePublishedOrder) {
  EXPECT_EQ(SlotOf(&IStoreNamespace::Initialize), 3U);
  EXPECT_EQ(SlotOf(&IStoreNamespace::GetDirectory), 4U);
  EXPECT_EQ(SlotOf(&IStoreNamespace::OpenSpecialFolder), 5U);
  EXPECT_EQ(SlotOf(&IStoreNamespace::OpenFolder), 6U);
  EXPECT_EQ(SlotOf(&IStoreNamespace::CreateFolder), 7U);
  EXPECT_EQ(SlotOf(&IStoreNamespace::RenameFolder), 8U);
  EXPECT_EQ(SlotOf(&IStoreNamespace::MoveFolder), 9U);
  EXPECT_EQ(SlotOf(&IStoreNamespace::DeleteFolder), 10U);
  EXPECT_EQ(SlotOf(&IStoreNamespace::GetFolderProps), 11U);
  EXPECT_EQ(SlotOf(&IStoreNamespace::CopyMoveMessages), 12U);
  EXPECT_EQ(SlotOf(&IStoreNamespace::RegisterNotification), 13U);
  EXPECT_EQ(SlotOf(&IStoreNamespace::UnregisterNotification), 14U);
  EXPECT_EQ(SlotOf(&IStoreNamespace::CompactAll), 15U);
  EXPECT_EQ(SlotOf(&IStoreNamespace::GetFirstSubFolder), 16U);
  EXPECT_EQ(SlotOf(&IStoreNamespace::GetNextSubFolder), 17U);
  EXPECT_EQ(SlotOf(&IStoreNamespace::GetSubFolderClose), 18U);
}

TEST(StoreInterfaces, StoreFolderHasThePublishedOrder) {
  EXPECT_EQ(SlotOf(&IStoreFolder::GetFolderProps), 3U);
  EXPECT_EQ(SlotOf(&IStoreFolder::GetMessageProps), 4U);
  EXPECT_EQ(SlotOf(&IStoreFolder::FreeMessageProps), 5U);
  EXPECT_EQ(SlotOf(&IStoreFolder::DeleteMessages), 6U);
  EXPECT_EQ(SlotOf(&IStoreFolder::SetLanguage), 7U);
  EXPECT_EQ(SlotOf(&IStoreFolder::MarkMessagesAsRead), 8U);
  EXPECT_EQ(SlotOf(&IStoreFolder::SetFlags), 9U);
  EXPECT_EQ(SlotOf(&IStoreFolder::OpenMessage), 10U);
  EXPECT_EQ(SlotOf(&IStoreFolder::SaveMessage), 11U);
  EXPECT_EQ(SlotOf(&IStoreFolder::BatchLock), 12U);
  EXPECT_EQ(SlotOf(&IStoreFolder::BatchFlush), 13U);
  EXPECT_EQ(SlotOf(&IStoreFolder::BatchUnlock), 14U);
  EXPECT_EQ(SlotOf(&IStoreFolder::CreateStream), 15U);
  EXPECT_EQ(SlotOf(&IStoreFolder::CommitStream), 16U);
  EXPECT_EQ(SlotOf(&IStoreFolder::RegisterNotification), 17U);
  EXPECT_EQ(SlotOf(&IStoreFolder::UnregisterNotification), 18U);
  EXPECT_EQ(SlotOf(&IStoreFolder::Compact), 19U);
  EXPECT_EQ(SlotOf(&IStoreFolder::GetFirstMessage), 20U);
  EXPECT_EQ(SlotOf(&IStoreFolder::GetNextMessage), 21U);
  EXPECT_EQ(SlotOf(&IStoreFolder::GetMessageClose), 22U);
}

TEST(StoreInterfaces, MimeInterfacesHaveThePublishedOrder) {
  EXPECT_EQ(SlotOf(&IMimeMessage::Load), 5U);
  EXPECT_EQ(SlotOf(&IMimeMessage::Commit), 14U);
  EXPECT_EQ(SlotOf(&IMimeMessage::BindToObject), 16U);
  EXPECT_EQ(SlotOf(&IMimeBody::GetProp), 11U);
  EXPECT_EQ(SlotOf(&IMimeBody::SetProp), 12U);
  EXPECT_EQ(SlotOf(&IMimeAllocator::Alloc), 3U);
  EXPECT_EQ(SlotOf(&IMimeAllocator::Free), 5U);
}

TEST(StoreInterfaces, ContactInterfacesHaveThePublishedOrder) {
  EXPECT_EQ(SlotOf(&IContactManager::Initialize), 3U);
  EXPECT_EQ(SlotOf(&IContactManager::GetContactCollection), 8U);
  EXPECT_EQ(SlotOf(&IContactCollection::Reset), 3U);
  EXPECT_EQ(SlotOf(&IContactCollection::Next), 4U);
  EXPECT_EQ(SlotOf(&IContactCollection::GetCurrent), 5U);
  EXPECT_EQ(SlotOf(&IContactProperties::GetString), 3U);
}

TEST(StoreInterfaces, RecordsOfMessagesHaveThePlatformsSizeForTheWidth) {
  constexpr size_t kIdAt = 8;
  EXPECT_EQ(offsetof(MessageProps, dwMessageId), kIdAt);
  EXPECT_EQ(offsetof(MessageProps, ftReceived), 28U);
  EXPECT_EQ(offsetof(MessageProps, pszSubject), sizeof(void*) == 4 ? 44U : 48U);
  EXPECT_EQ(sizeof(MessageProps), sizeof(void*) == 4 ? 68U : 96U);
  EXPECT_EQ(MessageProps().cbSize, sizeof(MessageProps));
}

}  // namespace
}  // namespace postmarker::storeapi
