#include "ipc/ObjectSecurity_win.h"

#include <gtest/gtest.h>
#include <sddl.h>

#include <thread>

#include "ipc/ChannelWaits_win.h"
#include "ipc/Mutexes_win.h"
#include "ipc/ProcessUser_win.h"
#include "support/PeerProcess_win.h"

namespace postmarker {
namespace {

using test::FreshObjectName;

struct ListEntry {
  BYTE type;
  BYTE flags;
  DWORD mask;
  std::wstring sid;
};

// The only entry of a list; a type of 255 if the list is missing or has another length.
ListEntry OnlyEntry(ACL* list) {
  void* found = nullptr;
  if (list == nullptr || list->AceCount != 1 || !::GetAce(list, 0, &found)) {
    return {255, 0, 0, {}};
  }
  const auto* const entry = static_cast<const ACCESS_ALLOWED_ACE*>(found);
  wchar_t* sid = nullptr;
  ::ConvertSidToStringSidW(const_cast<DWORD*>(&entry->SidStart), &sid);
  const LocalMemory owner(sid);
  return {entry->Header.AceType, entry->Header.AceFlags, entry->Mask, sid};
}

ListEntry Granted(ObjectSecurity* security) {
  BOOL present = FALSE;
  BOOL defaulted = FALSE;
  ACL* list = nullptr;
  ::GetSecurityDescriptorDacl(security->Attributes()->lpSecurityDescriptor, &present, &list,
                              &defaulted);
  return OnlyEntry(list);
}

ListEntry Label(ObjectSecurity* security) {
  BOOL present = FALSE;
  BOOL defaulted = FALSE;
  ACL* list = nullptr;
  ::GetSecurityDescriptorSacl(security->Attributes()->lpSecurityDescriptor, &present, &list,
                              &defaulted);
  return OnlyEntry(list);
}

TEST(ObjectSecurity, GrantsOneMaskToEveryoneAndIsNotInherited) {
  for (const DWORD mask : {0x6U, 0x100002U, 0x100001U}) {
    ObjectSecurity security = ObjectSecurity::ForEveryone(mask, false);
    ASSERT_TRUE(security);
    EXPECT_EQ(security.Attributes()->nLength, sizeof(SECURITY_ATTRIBUTES));
    EXPECT_FALSE(security.Attributes()->bInheritHandle);
    const ListEntry entry = Granted(&security);
    EXPECT_EQ(entry.type, ACCESS_ALLOWED_ACE_TYPE);
    EXPECT_EQ(entry.flags, 0);
    EXPECT_EQ(entry.mask, mask);
    EXPECT_EQ(entry.sid, L"S-1-1-0");
    EXPECT_EQ(Label(&security).type, 255);
  }
}

TEST(ObjectSecurity, GrantsEverythingToThisUserAlone) {
  ObjectSecurity security = ObjectSecurity::ForThisUser();
  ASSERT_TRUE(security);
  EXPECT_FALSE(security.Attributes()->bInheritHandle);
  wchar_t* sid = nullptr;
  ProcessUser user = ProcessUser::Of(::GetCurrentProcess());
  ASSERT_TRUE(user);
  ASSERT_TRUE(::ConvertSidToStringSidW(user.Sid(), &sid));
  const LocalMemory owner(sid);
  const ListEntry entry = Granted(&security);
  EXPECT_EQ(entry.type, ACCESS_ALLOWED_ACE_TYPE);
  EXPECT_EQ(entry.mask, GENERIC_ALL);
  EXPECT_EQ(entry.sid, sid);
}

TEST(ObjectSecurity, LowIntegrityAddsTheMandatoryLabel) {
  ObjectSecurity security = ObjectSecurity::ForEveryone(0x6, true);
  ASSERT_TRUE(security);
  EXPECT_EQ(Granted(&security).mask, 0x6U);
  const ListEntry label = Label(&security);
  EXPECT_EQ(label.type, SYSTEM_MANDATORY_LABEL_ACE_TYPE);
  EXPECT_EQ(label.mask, static_cast<DWORD>(SYSTEM_MANDATORY_LABEL_NO_WRITE_UP));
  EXPECT_EQ(label.sid, L"S-1-16-4096");
}

TEST(ObjectSecurity, OpenGrantsEverythingToEveryone) {
  ObjectSecurity security = ObjectSecurity::Open();
  ASSERT_TRUE(security);
  const ListEntry entry = Granted(&security);
  EXPECT_EQ(entry.type, ACCESS_ALLOWED_ACE_TYPE);
  EXPECT_EQ(entry.mask, static_cast<DWORD>(GENERIC_ALL));
  EXPECT_EQ(entry.sid, L"S-1-1-0");
}

TEST(Mutexes, OpenMutexTellsTheLastErrorOfItsCreation) {
  const std::wstring name = FreshObjectName();
  DWORD error = 99;
  const KernelHandle first = CreateOpenMutex(false, name.c_str(), &error);
  EXPECT_TRUE(first);
  EXPECT_EQ(error, 0U);
  const KernelHandle second = CreateOpenMutex(false, name.c_str(), &error);
  EXPECT_TRUE(second);
  EXPECT_EQ(error, static_cast<DWORD>(ERROR_ALREADY_EXISTS));
}

TEST(Mutexes, OpenMutexWithTheNameOfAnotherKindOfObjectIsNone) {
  const std::wstring name = FreshObjectName();
  const KernelHandle event(::CreateEventW(nullptr, TRUE, FALSE, name.c_str()));
  DWORD error = 0;
  EXPECT_FALSE(CreateOpenMutex(false, name.c_str(), &error));
  EXPECT_EQ(error, static_cast<DWORD>(ERROR_INVALID_HANDLE));
}

TEST(Mutexes, OpenMutexBelongsToItsMakerOnDemand) {
  const auto isFreeForOthers = [](const KernelHandle& mutex) {
    bool taken = false;
    std::thread([&] { taken = IsSignalled(mutex.Get()); }).join();
    return taken;
  };
  DWORD error = 0;
  const KernelHandle owned = CreateOpenMutex(true, nullptr, &error);
  EXPECT_FALSE(isFreeForOthers(owned));
  ::ReleaseMutex(owned.Get());
  const KernelHandle free = CreateOpenMutex(false, nullptr, &error);
  EXPECT_TRUE(isFreeForOthers(free));
}

TEST(Mutexes, ExclusiveMutexIsGivenOnlyWhereNoneWas) {
  const std::wstring name = FreshObjectName();
  KernelHandle first = CreateExclusiveMutex(name.c_str());
  EXPECT_TRUE(first);
  EXPECT_FALSE(CreateExclusiveMutex(name.c_str()));
  EXPECT_TRUE(MutexExists(name.c_str())) << "the refused one has not taken it away";
  first.Reset();
  EXPECT_TRUE(CreateExclusiveMutex(name.c_str()));
}

TEST(Mutexes, MutexExistsWhileSomebodyHoldsAHandle) {
  const std::wstring name = FreshObjectName();
  EXPECT_FALSE(MutexExists(name.c_str()));
  KernelHandle mutex = CreateExclusiveMutex(name.c_str());
  EXPECT_TRUE(MutexExists(name.c_str()));
  mutex.Reset();
  EXPECT_FALSE(MutexExists(name.c_str()));
}

}  // namespace
}  // namespace postmarker
