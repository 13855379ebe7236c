#include <gtest/gtest.h>

#include "Tool.h"

namespace postmarker::inspect {
namespace {

struct Outcome {
  int code;
  std::string documents;
};

Outcome FolderText(std::vector<std::string> arguments) {
  Outcome outcome;
  arguments.insert(arguments.begin(), "folder-text");
  outcome.code = RunTool(
      arguments, [&](std::string_view text) { outcome.documents.append(text); },
      [](std::string_view) {});
  return outcome;
}

TEST(FolderTextCommand, EncodesFlagIdsAndName) {
  EXPECT_EQ(FolderText({"encode", "1", "12", "store", "\\\\Post\\a#-#b"}).documents,
            "{\"text\":\"#-#T#-#12#-#store#-#\\\\\\\\Post\\\\a##-##b#-#\"}\n");
  EXPECT_EQ(FolderText({"encode", "0", "", "", ""}).documents, "{\"text\":\"#-#F#-##-##-##-#\"}\n");
}

TEST(FolderTextCommand, DecodesATextOfAnyKind) {
  EXPECT_EQ(FolderText({"decode", "#-#t#-#12#-#store#-#\\\\Post\\a##-##b#-#"}).documents,
            "{\"flag\":1,\"firstId\":\"12\",\"secondId\":\"store\",\"name\":\"\\\\\\\\Post\\\\a#-#"
            "b\"}\n");
  EXPECT_EQ(FolderText({"decode", ""}).documents,
            "{\"flag\":0,\"firstId\":\"\",\"secondId\":\"\",\"name\":\"\"}\n");
}

TEST(FolderTextCommand, NameIsWideAndIdsAreBytes) {
  EXPECT_EQ(FolderText({"encode", "1", "Gr\u00fc\u00dfe", "\u65e5", "\u65e5\U0001f600"}).documents,
            "{\"text\":\"#-#T#-#Gr\\u00fc\\u00dfe#-#?#-#\\u65e5\\ud83d\\ude00#-#\"}\n");
  EXPECT_EQ(
      FolderText({"decode", "#-#T#-#Gr\u00fc\u00dfe#-#\u65e5#-#\u65e5#-#"}).documents,
      "{\"flag\":1,\"firstId\":\"Gr\\u00fc\\u00dfe\",\"secondId\":\"?\",\"name\":\"\\u65e5\"}\n");
}

TEST(FolderTextCommand, WrongUsageIsRefused) {
  const std::vector<std::vector<std::string>> kWrong = {
      {},
      {"encode"},
      {"decode"},
      {"nonsense", "x"},
      {"decode", "x", "y"},
      {"encode", "1", "a", "b"},
      {"encode", "2", "a", "b", "c"},
      {"encode", "T", "a", "b", "c"},
      {"encode", "1", "a", "b", "c", "d"},
  };
  for (const std::vector<std::string>& arguments : kWrong) {
    EXPECT_EQ(FolderText(arguments).code, 2) << testing::PrintToString(arguments);
    EXPECT_EQ(FolderText(arguments).documents, "");
  }
}

}  // namespace
}  // namespace postmarker::inspect
