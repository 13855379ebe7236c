#include "Tool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "support/TempFolder.h"

namespace postmarker::inspect {
namespace {

using Json = nlohmann::ordered_json;

struct Outcome {
  int code;
  std::string documents;
  std::string complaints;
};

Outcome RunCaught(const std::vector<std::string>& arguments) {
  Outcome outcome;
  outcome.code = RunTool(
      arguments, [&](std::string_view text) { outcome.documents.append(text); },
      [&](std::string_view text) { outcome.complaints.append(text); });
  return outcome;
}

std::string GoldenPath(const std::string& file) {
  return std::string(POSTMARKER_INSPECT_DIR) + "/golden/" + file;
}

std::string GoldenText(const std::string& file) {
  return test::ReadFile(test::TempFolder::Wide(std::filesystem::path(GoldenPath(file))));
}

struct Golden {
  std::string name;
  std::vector<std::string> command;
  std::string input;
  std::string expected;
};

// Every message of the folder with every command that reads one: a change that no test of a part
// notices tends to show in the whole.
std::vector<Golden> GoldenMessages() {
  std::vector<Golden> goldens;
  for (const char* message : {"mixed", "bare-lf", "headers", "hops", "nested", "page", "words"}) {
    for (const char* command : {"headers", "message", "hooks"}) {
      std::string name = std::string(message) + "_" + command;
      std::replace(name.begin(), name.end(), '-', '_');
      goldens.push_back({name,
                         {command},
                         std::string(message) + ".eml",
                         std::string(message) + "." + command + ".json"});
    }
  }
  return goldens;
}

class GoldenTest : public testing::TestWithParam<Golden> {};

TEST_P(GoldenTest, DocumentIsAsKept) {
  std::vector<std::string> arguments = GetParam().command;
  arguments.push_back(GoldenPath(GetParam().input));
  const Outcome outcome = RunCaught(arguments);
  EXPECT_EQ(outcome.code, 0);
  EXPECT_EQ(outcome.complaints, "");
  const Json document = Json::parse(outcome.documents, nullptr, false);
  const Json expected = Json::parse(GoldenText(GetParam().expected), nullptr, false);
  ASSERT_FALSE(expected.is_discarded());
  EXPECT_EQ(document.dump(1), expected.dump(1));
}

TEST_P(GoldenTest, DocumentIsOneLineOfAscii) {
  std::vector<std::string> arguments = GetParam().command;
  arguments.push_back(GoldenPath(GetParam().input));
  const std::string document = RunCaught(arguments).documents;
  ASSERT_TRUE(document.ends_with("\n"));
  bool inText = false;
  for (size_t i = 0; i + 1 < document.size(); ++i) {
    const char c = document[i];
    EXPECT_TRUE(c >= 0x20 && c < 0x7F) << i;
    EXPECT_TRUE(inText || c != ' ') << i;
    inText = inText != (c == '"' && (i == 0 || document[i - 1] != '\\'));
  }
}

INSTANTIATE_TEST_SUITE_P(Messages, GoldenTest, testing::ValuesIn(GoldenMessages()),
                         [](const auto& tested) { return tested.param.name; });

INSTANTIATE_TEST_SUITE_P(
    Commands, GoldenTest,
    testing::Values(Golden{"Words", {"words"}, "text.txt", "text.words.json"},
                    Golden{"Html", {"html"}, "page.html", "page.html.json"},
                    Golden{"Addresses", {"addresses"}, "list.txt", "list.addresses.json"},
                    Golden{"Domain", {"domain"}, "hosts.txt", "hosts.domain.json"},
                    Golden{"Received", {"received"}, "received.txt", "received.received.json"},
                    Golden{"DecodeWords", {"decode", "words"}, "encoded.txt", "encoded.words.json"},
                    Golden{"DecodeQuotedPrintable",
                           {"decode", "quoted-printable"},
                           "encoded.txt",
                           "encoded.quoted-printable.json"},
                    Golden{
                        "DecodeBase64", {"decode", "base64"}, "base64.txt", "base64.base64.json"}),
    [](const auto& tested) { return tested.param.name; });

TEST(Tool, SeveralFilesGiveADocumentEach) {
  const std::string file = GoldenPath("mixed.eml");
  const std::string one = RunCaught({"headers", file}).documents;
  const Outcome outcome = RunCaught({"headers", file, "no such file", file});
  EXPECT_EQ(outcome.code, 0);
  EXPECT_EQ(outcome.documents, one + "{\"result\":-2147467259,\"headers\":{},\"hops\":[]}\n" + one);
}

TEST(Tool, OptionsMayStandAnywhere) {
  const std::string file = GoldenPath("mixed.eml");
  const std::string one = RunCaught({"headers", file}).documents;
  EXPECT_EQ(RunCaught({"--repeat", "3", "headers", file}).documents, one);
  EXPECT_EQ(RunCaught({"headers", file, "--repeat", "1"}).documents, one);
  EXPECT_EQ(RunCaught({"headers", "--quiet", file}).documents, "");
  EXPECT_EQ(RunCaught({"headers", "--quiet", file}).code, 0);
}

TEST(Tool, AFileThatCannotBeReadIsEmpty) {
  EXPECT_EQ(RunCaught({"domain", "no such file"}).documents, "[]\n");
  EXPECT_EQ(RunCaught({"hooks", "no such file"}).documents, "[]\n");
  EXPECT_EQ(RunCaught({"decode", "base64", "no such file"}).documents,
            "{\"bytes\":\"\",\"consumed\":0}\n");
  EXPECT_EQ(RunCaught({"message", "no such file"}).code, 0);
}

TEST(Tool, TextsMayBeginAsOptionsDo) {
  const std::string plain = RunCaught({"pipe-folder", "x"}).documents;
  const Outcome dashes = RunCaught({"pipe-folder", "--x"});
  EXPECT_EQ(dashes.code, 0);
  EXPECT_NE(dashes.documents, "");
  EXPECT_EQ(RunCaught({"pipe-folder", "x", "--repeat", "2"}).documents, plain);
  EXPECT_EQ(RunCaught({"pipe-folder", "--quiet", "--x"}).documents, "");
  EXPECT_EQ(RunCaught({"--x", "pipe-folder"}).code, 2);
}

TEST(Tool, WrongUsageSaysTheUsage) {
  const std::vector<std::vector<std::string>> kWrong = {
      {},
      {"nonsense"},
      {"headers"},
      {"words", "a", "b"},
      {"decode", "base64"},
      {"decode", "nonsense", "a"},
      {"headers", "a", "--repeat"},
      {"headers", "a", "--repeat", "0"},
      {"headers", "a", "--repeat", "x"},
      {"headers", "a", "--nonsense"},
  };
  for (const std::vector<std::string>& arguments : kWrong) {
    const Outcome outcome = RunCaught(arguments);
    EXPECT_EQ(outcome.code, 2) << testing::PrintToString(arguments);
    EXPECT_EQ(outcome.documents, "");
    EXPECT_TRUE(outcome.complaints.starts_with("usage: postmarker-inspect ")) << outcome.complaints;
  }
}

}  // namespace
}  // namespace postmarker::inspect
