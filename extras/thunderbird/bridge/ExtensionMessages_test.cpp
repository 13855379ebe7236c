#include "ExtensionMessages.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace postmarker::bridge {
namespace {

using Json = nlohmann::json;

TEST(ExtensionMessages, ReadsEachKindOfItem) {
  const std::optional<Answer> answer = ParseAnswer(R"({"id": 7, "done": false, "items": [
    {"path": ["A", "B"], "id": "i", "store": "s", "first": false},
    {"path": ["A"], "id": "i", "store": "s"},
    {"to": ["x", "y"], "cc": [], "bcc": ["z"]},
    "a@example.com", 2000, -1]})");
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->id, 7U);
  EXPECT_FALSE(answer->done);
  EXPECT_FALSE(answer->error);
  EXPECT_EQ(answer->unusable, 0U);
  const std::vector<Item> expected = {
      FolderItem{{"A", "B"}, "i", "s", false},
      FolderItem{{"A"}, "i", "s", true},
      SentItem{{"x", "y"}, {}, {"z"}},
      std::string("a@example.com"),
      int64_t{2000},
      int64_t{-1},
  };
  EXPECT_EQ(answer->items, expected);
}

TEST(ExtensionMessages, ReadsAnError) {
  const std::optional<Answer> answer =
      ParseAnswer(R"({"id": 7, "error": "no", "items": ["x"], "done": false})");
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->error, "no");
  EXPECT_TRUE(answer->done);
  EXPECT_TRUE(answer->items.empty());
}

TEST(ExtensionMessages, CountsItemsOfNoKnownForm) {
  const std::optional<Answer> answer = ParseAnswer(R"({"id": 1, "done": true, "items": [
    null, true, 1.5, [], ["a"], {}, {"path": "A", "id": "i", "store": "s"},
    {"path": ["A", 5], "id": "i", "store": "s"}, {"path": ["A"], "id": 1, "store": "s"},
    {"path": ["A"], "id": "i"}, {"to": ["a"], "cc": []}, {"to": ["a"], "cc": [], "bcc": [["z"]]},
    {"to": ["a"], "cc": "b", "bcc": []},
    "good"]})");
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->items, std::vector<Item>{std::string("good")});
  EXPECT_EQ(answer->unusable, 13U);
}

TEST(ExtensionMessages, RefusesWhatIsNoAnswer) {
  for (const char* message : {
           "",
           "{",
           "null",
           "7",
           "[]",
           "{}",
           R"({"id": 1})",
           R"({"id": 1, "done": true})",
           R"({"id": 1, "items": []})",
           R"({"id": 1, "items": [], "done": 1})",
           R"({"id": 1, "items": {}, "done": true})",
           R"({"id": -1, "items": [], "done": true})",
           R"({"id": "1", "items": [], "done": true})",
           R"({"id": 1.5, "items": [], "done": true})",
           R"({"id": 1, "items": [], "done": true} x)",
           "{\"id\": 1, \"items\": [\"\xFF\"], \"done\": true}",
           R"({"id": 1, "items": ["\ud800"], "done": true})",
       }) {
    EXPECT_FALSE(ParseAnswer(message)) << message;
  }
  EXPECT_TRUE(ParseAnswer(R"({"id": 1, "items": [], "done": true})"));
}

TEST(ExtensionMessages, DropsWhatIsNestedDeeply) {
  const std::string deep = std::string(100000, '[') + std::string(100000, ']');
  const std::optional<Answer> answer =
      ParseAnswer(R"({"id": 1, "done": true, "items": ["a", )" + deep + "]}");
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->items.size(), 1U);
}

TEST(ExtensionMessages, ReadsANumberThatIsTooLargeAsNoCount) {
  const std::optional<Answer> answer =
      ParseAnswer(R"({"id": 1, "done": true, "items": [18446744073709551615]})");
  ASSERT_TRUE(answer);
  ASSERT_EQ(answer->items.size(), 1U);
  EXPECT_LT(std::get<int64_t>(answer->items[0]), 0);
}

TEST(ExtensionMessages, ReplacesWhatIsNoUtf8) {
  EXPECT_EQ(Json::parse(NewFolderRequestText(4, {"A", "B\xFF"}, "s"))["path"][1], "B\xEF\xBF\xBD");
}

TEST(ExtensionMessages, WritesRequests) {
  EXPECT_EQ(Json::parse(RequestText(3, "Next")), (Json{{"id", 3}, {"command", "Next"}}));
  EXPECT_EQ(
      Json::parse(NewFolderRequestText(4, {"A", "B\"\xC3\xBC"}, "s")),
      (Json{
          {"id", 4}, {"command", "AddNewFolder"}, {"path", {"A", "B\"\xC3\xBC"}}, {"store", "s"}}));
  EXPECT_EQ(Json::parse(MoveRequestText(5, true, "f")),
            (Json{{"id", 5}, {"command", "SetMoveMails"}, {"move", true}, {"folder", "f"}}));
}

}  // namespace
}  // namespace postmarker::bridge
