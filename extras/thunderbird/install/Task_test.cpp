#include "Task.h"

#include <gtest/gtest.h>

namespace postmarker::install {
namespace {

TEST(Task, ServesThunderbirdWhoseFirstArgumentIsAPath) {
  for (const char* path : {"C:\\x\\postmarker_thunderbird.json", "/home/x/manifest.json"}) {
    EXPECT_EQ(ParseTask({path, "{id}"}).kind, TaskKind::kServe);
    EXPECT_EQ(ParseTask({path, "{id}", "--parent-window=1"}).kind, TaskKind::kServe);
    EXPECT_EQ(ParseTask({path}).kind, TaskKind::kServe);
  }
}

TEST(Task, InstallsAndRemovesWithAProfileAndWithout) {
  EXPECT_EQ(ParseTask({"--install"}).kind, TaskKind::kInstall);
  EXPECT_EQ(ParseTask({"--install"}).profile, std::nullopt);
  EXPECT_EQ(ParseTask({"--install", "p q"}).profile, "p q");
  EXPECT_EQ(ParseTask({"--remove"}).kind, TaskKind::kRemove);
  EXPECT_EQ(ParseTask({"--remove"}).profile, std::nullopt);
  EXPECT_EQ(ParseTask({"--remove", "p"}).profile, "p");
}

TEST(Task, IsUnknownForEverythingElse) {
  const std::vector<std::vector<std::string>> wrong = {{},
                                                       {""},
                                                       {"--help"},
                                                       {"-install"},
                                                       {"--Remove"},
                                                       {"--install", ""},
                                                       {"--remove", "--install"},
                                                       {"--install", "a", "b"}};
  for (const auto& arguments : wrong) {
    EXPECT_EQ(ParseTask(arguments).kind, TaskKind::kUnknown) << arguments.size();
  }
}

}  // namespace
}  // namespace postmarker::install
