#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Tool.h"
#include "support/ImDatabase.h"
#include "support/ImOlderStore.h"

namespace postmarker::inspect {
namespace {

using test::ImGuid;
using test::ImIdentityFolder;
using test::ImMessages;

class IncrediMailCommands : public testing::Test {
 protected:
  // The document, or the exit code where it is not 0.
  static std::string Run(const std::vector<std::string>& arguments) {
    std::string document;
    const int code = RunTool(
        arguments, [&](std::string_view text) { document.append(text); }, [](std::string_view) {});
    return code == 0 ? document : std::to_string(code);
  }

  static std::string Utf8(const std::wstring& path) { return NarrowUtf8(path); }
  static std::string Id(uint32_t number) { return NarrowUtf8(ImGuid(number)); }

  void WriteFolders() const {
    m_identity.WriteFolders({{ImGuid(1), L"In", L"Inbox", {{ImGuid(2), L"J\u00FCrgen", L"x"}}}});
  }

  test::TempFolder m_folder;
  ImIdentityFolder m_identity{m_folder.Path() / "{1}"};
};

TEST_F(IncrediMailCommands, ImmFolders) {
  WriteFolders();
  const std::string file = Utf8(m_identity.StoreFile("Folders.imm"));
  const std::string first =
      R"({"parent":"ROOT","index":0,"label":"In","fileName":"Inbox","messages":0})";
  const std::string second = R"({"parent":")" + Id(1) +
                             R"(","index":0,"label":"J\u00fcrgen","fileName":"J\u00fcrgen",)"
                             R"("messages":0})";
  const std::string root = R"({"parent":"","index":0,"label":"","fileName":"","messages":0})";
  const auto document = [&](const std::string& id, bool rootIsFirst) {
    std::string top = first;
    top.replace(top.find("ROOT"), 4, id);
    const std::string folders = "\"" + Id(1) + "\":" + top + ",\"" + Id(2) + "\":" + second;
    const std::string rootEntry = "\"" + id + "\":" + root;
    return R"({"result":0,"containers":{)" +
           (rootIsFirst ? rootEntry + "," + folders : folders + "," + rootEntry) + "}}\n";
  };
  EXPECT_EQ(Run({"imm-folders", file}), document("{00000000-0000-0000-0000-000000000000}", true));
  EXPECT_EQ(Run({"imm-folders", file, "\\\\\xC3\x84"}), document("\\\\\\\\\\u00c4", true));
  EXPECT_EQ(Run({"imm-folders", file, "~"}), document("~", false));
}

TEST_F(IncrediMailCommands, Imh) {
  ImMessages messages;
  messages.Add({1, L"to@x", L"from@x", L"S\u00FC", L"acc"}, "12345");
  m_identity.WriteMessages("Sent Items", messages);
  EXPECT_EQ(Run({"imh", Utf8(m_identity.StoreFile("Sent Items.imh")), "dir", "Sent Items"}),
            R"({"result":0,"headers":{")" + Id(1) +
                R"(":{"toSender":"to@x","fromSender":"from@x","subject":"S\u00fc","account":"acc",)"
                R"("msgSize":5,"lightMsgSize":5,"msgPos":0}}})"
                "\n");
}

TEST_F(IncrediMailCommands, ImmMessage) {
  test::WriteFile(m_identity.Attachment("a.bin"), "CONTENT");
  test::WriteFile(m_identity.StoreFile("In.imm"),
                  "x\xE9\n" + std::string(test::kImMarker) + "a.bin\r\n" + std::string(40, 'y'));
  const std::string expected = R"({"result":0,"length":54,"bytes":"x\u00e9\r\nCONTENT\r\n)" +
                               std::string(40, 'y') + R"(\u0000"})" + "\n";
  std::string document = expected;
  for (const auto& [from, to] : {std::pair("\\r", "\\u000d"), std::pair("\\n", "\\u000a")}) {
    for (size_t at = 0; (at = document.find(from)) != std::string::npos;) {
      document.replace(at, 2, to);
    }
  }
  std::string directory = Utf8(m_identity.StorePath());
  EXPECT_EQ(Run({"imm-message", directory, "In", "100", "84", "0"}), document);
  directory.pop_back();
  EXPECT_EQ(Run({"imm-message", directory, "In", "100", "84", "0"}), document);
}

TEST_F(IncrediMailCommands, Imb) {
  const std::string file = Utf8(m_identity.AddressFile("AddressBook.imb"));
  test::WriteFile(m_identity.AddressFile("AddressBook.imb"),
                  test::MakeImAddressFile({L"b@x", L"A@x", L"", L"\u0392"}));
  EXPECT_EQ(Run({"imb", file}), "[\"b@x\",\"A@x\",\"\\u0092\\u0003\"]\n");
}

TEST_F(IncrediMailCommands, IncrediMailOfBothForms) {
  const std::string directory = Utf8(m_identity.Directory());
  WriteFolders();
  EXPECT_EQ(
      Run({"incredimail", directory, "\\\\Ann"}),
      R"([{"name":"\\\\Ann","firstId":"\\\\Ann","flag":1},{"name":"\\\\Ann\\In","firstId":")" +
          Id(1) + R"(","flag":1},{"name":"\\\\Ann\\In\\J\u00fcrgen","firstId":")" + Id(2) +
          "\",\"flag\":1}]\n");
  test::MakeContainersDatabase(m_identity.StoreFile("Containers.db"),
                               {{ImGuid(7), L"", 0, L""}, {ImGuid(8), ImGuid(7), 0, L"\u0416"}});
  EXPECT_EQ(Run({"incredimail", directory, "R"}),
            R"([{"name":"R","firstId":")" + Id(7) +
                R"(","flag":1},{"name":"R\\\u0416","firstId":")" + Id(8) + "\",\"flag\":1}]\n");
}

TEST_F(IncrediMailCommands, FilesThatCanNotBeRead) {
  EXPECT_EQ(Run({"imm-folders", "gone"}), "{\"result\":-2147467259,\"containers\":{}}\n");
  EXPECT_EQ(Run({"imh", "gone", "d", "n"}), "{\"result\":-2147467259,\"headers\":{}}\n");
  EXPECT_EQ(Run({"imm-message", "gone", "n", "1", "1", "0"}),
            "{\"result\":-2147467259,\"length\":0,\"bytes\":\"\"}\n");
  EXPECT_EQ(Run({"imb", "gone"}), "[]\n");
  EXPECT_EQ(Run({"incredimail", "gone", "R"}), "[]\n");
}

TEST_F(IncrediMailCommands, WrongUsage) {
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{"imm-folders"},
        {"imm-folders", "a", "b", "c"},
        {"imh", "a", "b"},
        {"imm-message", "a", "b", "1", "1"},
        {"imm-message", "a", "b", "x", "1", "1"},
        {"imm-message", "a", "b", "1", "4294967296", "1"},
        {"imm-message", "a", "b", "1", "1", ""},
        {"imb"},
        {"incredimail", "a"}}) {
    EXPECT_EQ(Run(arguments), "2");
  }
}

}  // namespace
}  // namespace postmarker::inspect
