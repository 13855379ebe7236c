#include "Record.h"

#include <gtest/gtest.h>

namespace postmarker::install {
namespace {

Record SomeRecord() {
  std::string allBytes;
  for (int i = 0; i < 256; ++i) {
    allBytes.push_back(static_cast<char>(i));
  }
  return {"Z:\\profile \xC3\xBC",
          {"outer", "outer\\inner"},
          {{"a", {std::nullopt, allBytes, {"p", "q"}}}, {"b", {"", "x", {}}}, {"c", {}}}};
}

TEST(Record, ComesBackFromItsText) {
  EXPECT_EQ(ParseRecord(RecordText(SomeRecord())), SomeRecord());
  EXPECT_EQ(ParseRecord(RecordText({})), Record());
}

TEST(Record, KeepsNothingApartFromAnEmptyContent) {
  const std::optional<Record> record = ParseRecord(RecordText(SomeRecord()));
  ASSERT_TRUE(record);
  EXPECT_EQ(record->entries.at("b").before, Content(""));
  EXPECT_EQ(record->entries.at("a").before, std::nullopt);
}

TEST(Record, IsWholeOrNone) {
  const char* const wrong[] = {
      "",
      "{",
      "[]",
      "null",
      "{}",
      R"({"target": "t", "made": []})",
      R"({"target": 1, "made": [], "places": {}})",
      R"({"target": "t", "made": 1, "places": {}})",
      R"({"target": "t", "made": [1], "places": {}})",
      R"({"target": "t", "made": [], "places": []})",
      R"({"made": [], "places": {}})",
      R"({"target": "t", "made": [], "places": {"a": 1}})",
      R"({"target": "t", "made": [], "places": {"a": {"before": null, "after": "00"}}})",
      R"({"target": "t", "made": [], "places": {"a": {"before": null, "made": []}}})",
      R"({"target": "t", "made": [], "places": {"a": {"after": null, "made": []}}})",
      R"({"target": "t", "made": [], "places": {"a": {"before": "0", "after": null, "made": []}}})",
      R"({"target": "t", "made": [], "places": {"a": {"before": "0G", "after": null, "made": []}}})",
      R"({"target": "t", "made": [], "places": {"a": {"before": "G0", "after": null, "made": []}}})",
      R"({"target": "t", "made": [], "places": {"a": {"before": 7, "after": null, "made": []}}})",
      R"({"target": "t", "made": [], "places": {"a": {"before": null, "after": 7, "made": []}}})",
      R"({"target": "t", "made": [], "places": {"a": {"before": null, "after": null, "made": "x"}}})",
  };
  for (const char* text : wrong) {
    EXPECT_EQ(ParseRecord(text), std::nullopt) << text;
  }
  const std::string whole = RecordText(SomeRecord());
  EXPECT_EQ(ParseRecord(whole.substr(0, whole.size() - 2)), std::nullopt) << "cut";
}

TEST(Record, CanBeWrittenWithANameThatIsNoUtf8) {
  EXPECT_TRUE(ParseRecord(RecordText({"\xFF", {}, {}})));
}

}  // namespace
}  // namespace postmarker::install
