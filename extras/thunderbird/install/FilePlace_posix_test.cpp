// What only this system shows of a place in the file system.
#include <sys/resource.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <csignal>

#include "FilePlace.h"
#include "support/TempFolder.h"

namespace postmarker::install {
namespace {

namespace fs = std::filesystem;

TEST(FilePlace, KeepsItsOldBytesOnAFullDisk) {
  const test::TempFolder folder;
  FilePlace place(folder.Path() / "a");
  ASSERT_TRUE(place.Write("old"));
  // Files of this process end at this many bytes, as if the disk had no more.
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit old = {};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &old), 0);
  const rlimit full = {1000, old.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &full), 0);
  const bool isWritten = place.Write(std::string(100'000, 'x'));
  ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &old), 0);
  EXPECT_FALSE(isWritten);
  Content content;
  EXPECT_TRUE(place.Read(&content));
  EXPECT_EQ(content, "old");
  EXPECT_FALSE(fs::exists(folder.Path() / "a.new"));
}

TEST(FilePlace, LeavesWhoMayReadTheFile) {
  const test::TempFolder folder;
  FilePlace place(folder.Path() / "a");
  ASSERT_TRUE(place.Write("old"));
  fs::permissions(folder.Path() / "a", fs::perms::owner_read | fs::perms::owner_write);
  ASSERT_TRUE(place.Write("new"));
  EXPECT_EQ(fs::status(folder.Path() / "a").permissions(),
            fs::perms::owner_read | fs::perms::owner_write);
}

TEST(FilePlace, RefusesALink) {
  const test::TempFolder folder;
  fs::create_symlink("nowhere", folder.Path() / "a");
  Content content;
  EXPECT_FALSE(FilePlace(folder.Path() / "a").Read(&content));
}

TEST(FilePlace, CantBeWrittenIntoAFolderThatMayOnlyBeRead) {
  const test::TempFolder folder;
  FilePlace place(folder.Path() / "a");
  ASSERT_TRUE(place.Write("old"));
  fs::permissions(folder.Path(), fs::perms(0555));
  // The superuser may write everywhere, so somebody else tries it.
  const bool isSuperuser = ::geteuid() == 0;
  ASSERT_TRUE(!isSuperuser || ::seteuid(65534) == 0);
  const bool isWritten = place.Write("new");
  const bool isDeleted = place.Write(std::nullopt);
  ASSERT_TRUE(!isSuperuser || ::seteuid(0) == 0);
  fs::permissions(folder.Path(), fs::perms::owner_all);
  EXPECT_FALSE(isWritten);
  EXPECT_FALSE(isDeleted);
  Content content;
  EXPECT_TRUE(place.Read(&content));
  EXPECT_EQ(content, "old");
}

}  // namespace
}  // namespace postmarker::install
