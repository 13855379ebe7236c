#include "Installer.h"

#include <gmock/gmock.h>

#include <map>
#include <set>

namespace postmarker::install {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// All files and folders that there are.
struct Disk {
  std::map<std::string, std::string> files;
  std::set<std::string> folders;

  friend bool operator==(const Disk&, const Disk&) = default;
};

// A disk, and what goes wrong with it.
struct World {
  Disk disk;
  int failingWrite = 0;      // the number of the write that fails, from 1 on; 0 for none
  int lastFailingWrite = 0;  // if more than one fails
  std::string unreadable;    // a file's name
  int writes = 0;
};

class FakePlace : public Place {
 public:
  FakePlace(World* world, std::string name) : m_world(world), m_name(std::move(name)) {}

  [[nodiscard]] std::string Name() const override { return m_name; }
  bool Read(Content* content) const override {
    const auto found = m_world->disk.files.find(m_name);
    *content = found == m_world->disk.files.end() ? std::nullopt : Content(found->second);
    return m_world->unreadable != m_name;
  }
  bool Write(const Content& content) override {
    ++m_world->writes;
    for (const std::string& parent : MissingParents()) {
      m_world->disk.folders.insert(parent);
    }
    const int first = m_world->failingWrite;
    const int last = std::max(first, m_world->lastFailingWrite);
    if (first > 0 && m_world->writes >= first && m_world->writes <= last) {
      return false;
    }
    if (content) {
      m_world->disk.files[m_name] = *content;
    } else {
      m_world->disk.files.erase(m_name);
    }
    return true;
  }
  [[nodiscard]] std::vector<std::string> MissingParents() const override {
    std::vector<std::string> missing;
    for (size_t end = m_name.find('/'); end != std::string::npos; end = m_name.find('/', end + 1)) {
      if (!m_world->disk.folders.contains(m_name.substr(0, end))) {
        missing.push_back(m_name.substr(0, end));
      }
    }
    return missing;
  }
  void RemoveParent(const std::string& parent) override {
    const auto isInside = [&](const std::string& name) { return name.starts_with(parent + "/"); };
    for (const auto& [name, bytes] : m_world->disk.files) {
      if (isInside(name)) {
        return;
      }
    }
    for (const std::string& name : m_world->disk.folders) {
      if (isInside(name)) {
        return;
      }
    }
    m_world->disk.folders.erase(parent);
  }

 private:
  World* m_world;
  std::string m_name;
};

// Three places: a new file in new folders, one with a line more, one that is replaced.
class InstallerTest : public testing::Test {
 protected:
  InstallerTest() {
    world.disk.files = {{"list", "old line\n"}, {"value", "foreign"}, {"other", "untouched"}};
    world.disk.folders = {"profile"};
  }

  static Fillings MakeFillings(World* world, const std::string& target, bool* canFill) {
    Fillings fillings;
    fillings.push_back({std::make_unique<FakePlace>(world, target + "/extensions/package"),
                        [](const Content& /*before*/) { return "package"; }, ""});
    fillings.push_back({std::make_unique<FakePlace>(world, "list"),
                        [](const Content& before) {
                          const std::string text = before.value_or("");
                          return text.ends_with("our line\n") ? text : text + "our line\n";
                        },
                        ""});
    fillings.push_back(
        {std::make_unique<FakePlace>(world, "value"),
         [canFill](const Content& /*before*/) { return *canFill ? Content("ours") : std::nullopt; },
         "can't be ours."});
    return fillings;
  }

  Installer MakeInstaller() {
    return {&record,
            [this](const std::string& target) { return MakeFillings(&world, target, &canFill); },
            [this](const std::string& sentence) { said.push_back(sentence); }};
  }
  bool Install(const std::string& target = "profile") { return MakeInstaller().Install(target); }
  bool Remove(const std::optional<std::string>& target = std::nullopt) {
    return MakeInstaller().Remove(target);
  }

  World world;
  FakePlace record{&world, "data/record"};
  bool canFill = true;
  std::vector<std::string> said;
};

TEST_F(InstallerTest, FillsThePlacesAndSaysWhatItReplaced) {
  EXPECT_TRUE(Install());
  EXPECT_EQ(world.disk.files["profile/extensions/package"], "package");
  EXPECT_EQ(world.disk.files["list"], "old line\nour line\n");
  EXPECT_EQ(world.disk.files["value"], "ours");
  EXPECT_THAT(said, ElementsAre("list held something else, which --remove puts back.",
                                "value held something else, which --remove puts back."));
}

TEST_F(InstallerTest, LeavesEverythingAsItWas) {
  const Disk before = world.disk;
  ASSERT_TRUE(Install());
  EXPECT_TRUE(MakeInstaller().IsInstalled());
  said.clear();
  EXPECT_TRUE(Remove());
  EXPECT_EQ(world.disk, before);
  EXPECT_FALSE(MakeInstaller().IsInstalled());
  EXPECT_THAT(said, IsEmpty());
}

TEST_F(InstallerTest, LeavesEverythingAsItWasWhenNothingWasThere) {
  world.disk = {};
  ASSERT_TRUE(Install());
  EXPECT_THAT(said, IsEmpty());
  EXPECT_TRUE(Remove("profile"));
  EXPECT_EQ(world.disk, Disk());
}

TEST_F(InstallerTest, ChangesNothingTheSecondTime) {
  const Disk before = world.disk;
  ASSERT_TRUE(Install());
  const Disk installed = world.disk;
  said.clear();
  EXPECT_TRUE(Install());
  EXPECT_EQ(world.disk, installed);
  EXPECT_THAT(said, IsEmpty());
  EXPECT_TRUE(Remove());
  EXPECT_EQ(world.disk, before);
}

TEST_F(InstallerTest, RemovesNothingTwiceAndNothingWithoutAnInstallation) {
  const Disk before = world.disk;
  EXPECT_TRUE(Remove());
  EXPECT_THAT(said, ElementsAre("Nothing is installed."));
  ASSERT_TRUE(Install());
  EXPECT_TRUE(Remove());
  EXPECT_TRUE(Remove());
  EXPECT_EQ(world.disk, before);
}

TEST_F(InstallerTest, ReplacesAnOlderPackageAndStillKnowsWhatWasThereFirst) {
  const Disk before = world.disk;
  ASSERT_TRUE(Install());
  auto installer = Installer(
      &record,
      [this](const std::string& target) {
        Fillings fillings = MakeFillings(&world, target, &canFill);
        fillings[0].fill = [](const Content&) { return "newer package"; };
        return fillings;
      },
      [](const std::string&) {});
  EXPECT_TRUE(installer.Install("profile"));
  EXPECT_EQ(world.disk.files["profile/extensions/package"], "newer package");
  EXPECT_TRUE(Remove());
  EXPECT_EQ(world.disk, before);
}

TEST_F(InstallerTest, PutsBackWhatCameBetweenTwoInstallations) {
  ASSERT_TRUE(Install());
  world.disk.files["value"] = "foreign again";
  said.clear();
  EXPECT_TRUE(Install());
  EXPECT_EQ(world.disk.files["value"], "ours");
  EXPECT_THAT(said, ElementsAre("value held something else, which --remove puts back."));
  EXPECT_TRUE(Remove());
  EXPECT_EQ(world.disk.files["value"], "foreign again");
  EXPECT_EQ(world.disk.files["list"], "old line\n");
}

TEST_F(InstallerTest, LeavesWhatHasChangedSinceAndSaysSo) {
  ASSERT_TRUE(Install());
  world.disk.files["value"] = "somebody else's";
  world.disk.files.erase("profile/extensions/package");
  said.clear();
  EXPECT_TRUE(Remove());
  EXPECT_EQ(world.disk.files["value"], "somebody else's");
  EXPECT_EQ(world.disk.files["list"], "old line\n");
  EXPECT_THAT(said, ElementsAre("value has changed since and stays as it is."));
  EXPECT_FALSE(world.disk.folders.contains("profile/extensions"));
}

TEST_F(InstallerTest, LeavesFoldersInWhichSomethingElseIs) {
  ASSERT_TRUE(Install());
  world.disk.files["profile/extensions/another"] = "x";
  EXPECT_TRUE(Remove());
  EXPECT_TRUE(world.disk.folders.contains("profile/extensions"));
  EXPECT_FALSE(world.disk.folders.contains("data"));
}

TEST_F(InstallerTest, LeavesFoldersThatWereThereBefore) {
  world.disk.folders.insert({"profile/extensions", "data"});
  const Disk before = world.disk;
  ASSERT_TRUE(Install());
  EXPECT_TRUE(Remove());
  EXPECT_EQ(world.disk, before);
}

TEST_F(InstallerTest, RefusesAnotherTarget) {
  ASSERT_TRUE(Install());
  const Disk installed = world.disk;
  said.clear();
  EXPECT_FALSE(Install("profile2"));
  EXPECT_FALSE(Remove("profile2"));
  EXPECT_EQ(world.disk, installed);
  EXPECT_THAT(said, ElementsAre("It is installed in profile. Use --remove first.",
                                "It is installed in profile, not in profile2."));
}

TEST_F(InstallerTest, ChangesNothingWhenAnyWriteOfAnInstallationFails) {
  const Disk before = world.disk;
  for (int failing = 1; failing <= 4; ++failing) {
    world.writes = 0;
    world.failingWrite = failing;
    said.clear();
    EXPECT_FALSE(Install()) << failing;
    EXPECT_EQ(world.disk, before) << failing;
    ASSERT_EQ(said.size(), 1U) << failing;
    EXPECT_THAT(said[0], HasSubstr("can't be changed. Everything is as it was before.")) << failing;
  }
  world.writes = 0;
  world.failingWrite = 5;
  EXPECT_TRUE(Install()) << "there is no fifth write";
}

TEST_F(InstallerTest, ChangesNothingWhenAnyWriteOfARemovalFails) {
  const Disk before = world.disk;
  ASSERT_TRUE(Install());
  const Disk installed = world.disk;
  for (int failing = 1; failing <= 4; ++failing) {
    world.writes = 0;
    world.failingWrite = failing;
    said.clear();
    EXPECT_FALSE(Remove()) << failing;
    EXPECT_EQ(world.disk, installed) << failing;
    ASSERT_EQ(said.size(), 1U) << failing;
    EXPECT_THAT(said[0], HasSubstr("can't be changed. Everything is as it was before.")) << failing;
  }
  world.failingWrite = 0;
  EXPECT_TRUE(Remove());
  EXPECT_EQ(world.disk, before);
}

TEST_F(InstallerTest, KeepsTheRecordWhenNothingCanBeUndone) {
  const Disk before = world.disk;
  world.failingWrite = 3;
  world.lastFailingWrite = 4;
  EXPECT_FALSE(Install());
  EXPECT_THAT(said, ElementsAre(HasSubstr("could not be undone")));
  EXPECT_NE(world.disk, before);
  world.failingWrite = 0;
  world.lastFailingWrite = 0;
  EXPECT_TRUE(Remove());
  EXPECT_EQ(world.disk, before);
}

TEST_F(InstallerTest, UndoesAnInstallationThatWasInterrupted) {
  const Disk before = world.disk;
  ASSERT_TRUE(Install());
  const Disk installed = world.disk;
  // The record comes first, then the places in their order.
  world.disk.files["list"] = before.files.at("list");
  world.disk.files["value"] = before.files.at("value");
  const Disk interrupted = world.disk;
  EXPECT_TRUE(Install());
  EXPECT_EQ(world.disk, installed);
  world.disk = interrupted;
  said.clear();
  EXPECT_TRUE(Remove());
  EXPECT_EQ(world.disk, before);
  EXPECT_THAT(said, IsEmpty());
}

TEST_F(InstallerTest, ChangesNothingWhenAPlaceCantBeReadOrFilled) {
  const Disk before = world.disk;
  world.unreadable = "list";
  EXPECT_FALSE(Install());
  canFill = false;
  world.unreadable.clear();
  EXPECT_FALSE(Install());
  EXPECT_EQ(world.disk, before);
  EXPECT_EQ(world.writes, 0);
  EXPECT_THAT(said, ElementsAre("list can't be read. Nothing is changed.",
                                "value can't be ours. Nothing is changed."));
}

TEST_F(InstallerTest, RemovesNothingWhenAPlaceCantBeRead) {
  ASSERT_TRUE(Install());
  const Disk installed = world.disk;
  said.clear();
  world.unreadable = "value";
  EXPECT_FALSE(Remove());
  EXPECT_EQ(world.disk, installed);
  EXPECT_THAT(said, ElementsAre("value can't be read. Nothing is changed."));
}

TEST_F(InstallerTest, ChangesNothingWhenTheRecordIsDamaged) {
  world.disk.files["data/record"] = "{";
  const Disk before = world.disk;
  EXPECT_FALSE(Install());
  EXPECT_FALSE(Remove());
  EXPECT_TRUE(MakeInstaller().IsInstalled());
  EXPECT_EQ(said[0], "data/record is damaged: it tells what was there before. Nothing is changed.");
  world.unreadable = "data/record";
  EXPECT_FALSE(Install());
  EXPECT_FALSE(Remove());
  EXPECT_TRUE(MakeInstaller().IsInstalled());
  EXPECT_EQ(said[3], "data/record can't be read. Nothing is changed.");
  EXPECT_EQ(world.disk, before);
  EXPECT_EQ(world.writes, 0);
}

}  // namespace
}  // namespace postmarker::install
