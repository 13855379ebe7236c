#include <gtest/gtest.h>

#include "Tool.h"

namespace postmarker::inspect {
namespace {

std::string PipeFolder(const std::string& text) {
  std::string documents;
  const Print print = [&](std::string_view piece) { documents.append(piece); };
  const Print complain = [](std::string_view) {};
  EXPECT_EQ(RunTool({"pipe-folder", text}, print, complain), 0);
  return documents;
}

TEST(PipeFolderCommand, ShowsTheFourFields) {
  EXPECT_EQ(PipeFolder("Inbox######a######b######FALSE"),
            "{\"name\":\"Inbox\",\"firstId\":\"a\",\"secondId\":\"b\",\"flag\":0}\n");
  EXPECT_EQ(PipeFolder("Inbox######a######b"),
            "{\"name\":\"Inbox\",\"firstId\":\"a\",\"secondId\":\"b\",\"flag\":1}\n");
  EXPECT_EQ(PipeFolder("Inbox############b######false"),
            "{\"name\":\"Inbox\",\"firstId\":\"b\",\"secondId\":\"false\",\"flag\":1}\n");
  EXPECT_EQ(PipeFolder(""), "{\"name\":\"\",\"firstId\":\"\",\"secondId\":\"\",\"flag\":1}\n");
}

TEST(PipeFolderCommand, NameIsWideAndIdsAreBytes) {
  EXPECT_EQ(PipeFolder("A\\Grüße 日######Grüße######日######x"),
            "{\"name\":\"A\\\\Gr\\u00fc\\u00dfe \\u65e5\",\"firstId\":\"Gr\\u00fc\\u00dfe\","
            "\"secondId\":\"?\",\"flag\":1}\n");
}

TEST(PipeFolderCommand, TakesOneText) {
  const Print ignore = [](std::string_view) {};
  EXPECT_EQ(RunTool({"pipe-folder"}, ignore, ignore), 2);
  EXPECT_EQ(RunTool({"pipe-folder", "a", "b"}, ignore, ignore), 2);
}

}  // namespace
}  // namespace postmarker::inspect
