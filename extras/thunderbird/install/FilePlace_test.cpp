#include "FilePlace.h"

#include <gmock/gmock.h>

#include "support/TempFolder.h"
#include "support/Text.h"

namespace postmarker::install {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class FilePlaceTest : public testing::Test {
 protected:
  [[nodiscard]] std::filesystem::path Path(std::string_view name) const {
    return folder.Path() / name;
  }
  [[nodiscard]] std::string Utf8(const std::filesystem::path& name) const {
    return NarrowUtf8(ToWide(folder.Path() / name));
  }
  [[nodiscard]] size_t CountFiles() const {
    const std::filesystem::directory_iterator files(folder.Path());
    return std::distance(begin(files), end(files));
  }

  test::TempFolder folder;
  Content content;
};

TEST_F(FilePlaceTest, WritesReadsAndDeletes) {
  FilePlace place(Path("a.txt"));
  EXPECT_TRUE(place.Read(&content));
  EXPECT_EQ(content, std::nullopt);
  const std::string bytes("a\r\n\0\x1A\xFF", 6);
  for (const std::string& text : {bytes, std::string(), std::string(100'000, 'x')}) {
    EXPECT_TRUE(place.Write(text));
    EXPECT_TRUE(place.Read(&content));
    EXPECT_EQ(content, text);
    EXPECT_EQ(CountFiles(), 1U) << "no draft is left";
  }
  EXPECT_TRUE(place.Write(std::nullopt));
  EXPECT_EQ(CountFiles(), 0U);
  EXPECT_TRUE(place.Write(std::nullopt)) << "it is gone already";
}

TEST_F(FilePlaceTest, IsNamedByItsPathInAnyScript) {
  FilePlace place(folder.Path() / std::filesystem::path(u"\u00FC\u6848"));
  EXPECT_EQ(place.Name(), Utf8(u"\u00FC\u6848"));
  EXPECT_TRUE(place.Write("x"));
  EXPECT_TRUE(FilePlace(ToPath(ToWide(folder.Path()) + L"/\u00FC\u6848")).Read(&content));
  EXPECT_EQ(content, "x");
}

TEST_F(FilePlaceTest, MakesItsFoldersAndRemovesThemWhenTheyAreEmpty) {
  FilePlace place(Path("a") / "b" / "c.txt");
  const std::vector<std::string> missing = place.MissingParents();
  EXPECT_THAT(missing, ElementsAre(Utf8("a"), Utf8(std::filesystem::path("a") / "b")));
  EXPECT_TRUE(place.Write("x"));
  EXPECT_THAT(place.MissingParents(), IsEmpty());
  place.RemoveParent(missing[1]);
  EXPECT_TRUE(place.Read(&content));
  EXPECT_EQ(content, "x") << "a folder with something in it stays";
  EXPECT_TRUE(place.Write(std::nullopt));
  place.RemoveParent(missing[0]);
  EXPECT_TRUE(std::filesystem::exists(Path("a") / "b"));
  place.RemoveParent(missing[1]);
  place.RemoveParent(missing[0]);
  EXPECT_EQ(CountFiles(), 0U);
}

TEST_F(FilePlaceTest, RemovesNoParentThatIsAFile) {
  test::WriteFile(folder.PathOf("a"), "");
  FilePlace(Path("a") / "b").RemoveParent(Utf8("a"));
  EXPECT_EQ(CountFiles(), 1U);
}

TEST_F(FilePlaceTest, RefusesAFolderInItsPlaceAndLeavesNoDraft) {
  std::filesystem::create_directories(Path("a.txt") / "inner");
  FilePlace place(Path("a.txt"));
  EXPECT_FALSE(place.Read(&content));
  EXPECT_FALSE(place.Write("x"));
  EXPECT_FALSE(place.Write(std::nullopt));
  EXPECT_EQ(CountFiles(), 1U);
}

TEST_F(FilePlaceTest, RefusesAFileInPlaceOfItsFolder) {
  test::WriteFile(folder.PathOf("a"), "file");
  FilePlace place(Path("a") / "b.txt");
  EXPECT_FALSE(place.Write("x"));
  EXPECT_EQ(test::ReadFile(folder.PathOf("a")), "file");
}

TEST_F(FilePlaceTest, RefusesAFileThatIsTooLargeToBeKept) {
  test::WriteFile(folder.PathOf("a"), "");
  std::filesystem::resize_file(Path("a"), kMaxContentBytes + 1);
  EXPECT_FALSE(FilePlace(Path("a")).Read(&content));
}

}  // namespace
}  // namespace postmarker::install
