#include "ThunderbirdSetup_posix.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <map>
#include <nlohmann/json.hpp>

#include "support/TempFolder.h"

namespace postmarker::install {
namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::HasSubstr;
using testing::IsEmpty;

// A home, a folder with the programs, and in place of Wine a script that writes down its arguments.
class ThunderbirdSetupTest : public testing::Test {
 protected:
  ThunderbirdSetupTest() {
    for (const char* name : {"home", "bin", "wine"}) {
      fs::create_directory(folder.Path() / name);
    }
    test::WriteFile(folder.PathOf("bin/postmarker_thunderbird.json"),
                    R"({"name": "postmarker_thunderbird", "path": "x.exe", "type": "stdio"})");
    MakeWine(0);
    ::setenv("PATH", (folder.Path() / "wine").string().c_str(), 1);
  }
  ~ThunderbirdSetupTest() override { ::setenv("PATH", oldPath.c_str(), 1); }

  void MakeWine(int exitCode) {
    const std::string calls = (folder.Path() / "calls").string();
    test::WriteFile(folder.PathOf("wine/wine"), "#!/bin/sh\nprintf '%s\\n' \"$@\" >>'" + calls +
                                                    "'\nexit " + std::to_string(exitCode) + "\n");
    fs::permissions(folder.Path() / "wine" / "wine", fs::perms::owner_all);
  }

  int Run(TaskKind kind, const std::optional<std::string>& profile = std::nullopt) {
    return RunSetup({kind, profile}, folder.Path() / "home", Program(),
                    [this](const std::string& sentence) { said.push_back(sentence); });
  }

  [[nodiscard]] fs::path Program() const {
    return folder.Path() / "bin" / "postmarker-thunderbird";
  }
  [[nodiscard]] std::string Calls() const { return test::ReadFile(folder.PathOf("calls")); }

  // The bytes of each file below the home, and an empty text for each folder.
  [[nodiscard]] std::map<std::string, std::string> Home() const {
    std::map<std::string, std::string> all;
    for (const auto& entry : fs::recursive_directory_iterator(folder.Path() / "home")) {
      all[entry.path().string()] =
          entry.is_directory() ? "" : test::ReadFile(test::TempFolder::Wide(entry.path()));
    }
    return all;
  }

  const std::string oldPath = std::getenv("PATH");
  test::TempFolder folder;
  const std::string manifest = "home/.mozilla/native-messaging-hosts/postmarker_thunderbird.json";
  std::vector<std::string> said;
};

TEST_F(ThunderbirdSetupTest, NamesTheProgramByItsWholePathAndLetsTheWindowsProgramDoTheRest) {
  EXPECT_EQ(Run(TaskKind::kInstall, "/home/a profile/x"), kDone);
  const auto written = nlohmann::json::parse(test::ReadFile(folder.PathOf(manifest)));
  EXPECT_EQ(written["path"], Program().string());
  EXPECT_EQ(written["type"], "stdio");
  EXPECT_EQ(Calls(), Program().string() + ".exe\n--install\nZ:\\home\\a profile\\x\n");
  EXPECT_THAT(said, IsEmpty());
}

TEST_F(ThunderbirdSetupTest, LeavesTheHomeAsItWas) {
  EXPECT_EQ(Run(TaskKind::kInstall), kDone);
  EXPECT_EQ(Run(TaskKind::kInstall), kDone);
  EXPECT_EQ(Run(TaskKind::kRemove), kDone);
  EXPECT_THAT(Home(), IsEmpty());
  EXPECT_EQ(Calls(), Program().string() + ".exe\n--install\n" + Program().string() +
                         ".exe\n--install\n" + Program().string() + ".exe\n--remove\n");
}

TEST_F(ThunderbirdSetupTest, PutsBackAnotherManifest) {
  fs::create_directories((folder.Path() / manifest).parent_path());
  test::WriteFile(folder.PathOf(manifest), "another");
  const auto before = Home();
  EXPECT_EQ(Run(TaskKind::kInstall), kDone);
  EXPECT_THAT(said, Contains(HasSubstr("held something else")));
  EXPECT_EQ(Run(TaskKind::kRemove), kDone);
  EXPECT_EQ(Home(), before);
}

TEST_F(ThunderbirdSetupTest, LeavesTheHomeAsItWasWhenTheWindowsProgramFails) {
  MakeWine(1);
  EXPECT_EQ(Run(TaskKind::kInstall), kFailed);
  EXPECT_THAT(said, Contains(HasSubstr("The Windows program can't do its part")));
  EXPECT_THAT(Home(), IsEmpty());
  MakeWine(0);
  EXPECT_EQ(Run(TaskKind::kInstall), kDone);
  const auto installed = Home();
  MakeWine(1);
  EXPECT_EQ(Run(TaskKind::kInstall), kFailed);
  EXPECT_EQ(Run(TaskKind::kRemove), kFailed);
  EXPECT_EQ(Home(), installed);
}

TEST_F(ThunderbirdSetupTest, LeavesTheHomeAsItWasWithoutWine) {
  fs::remove(folder.Path() / "wine" / "wine");
  EXPECT_EQ(Run(TaskKind::kInstall), kFailed);
  EXPECT_THAT(Home(), IsEmpty());
}

TEST_F(ThunderbirdSetupTest, ChangesNothingWithoutAManifestBesideTheProgram) {
  test::WriteFile(folder.PathOf("bin/postmarker_thunderbird.json"), "[]");
  EXPECT_EQ(Run(TaskKind::kInstall), kFailed);
  fs::remove(folder.Path() / "bin" / "postmarker_thunderbird.json");
  EXPECT_EQ(Run(TaskKind::kInstall), kFailed);
  EXPECT_THAT(Home(), IsEmpty());
  EXPECT_EQ(Calls(), "");
}

}  // namespace
}  // namespace postmarker::install
