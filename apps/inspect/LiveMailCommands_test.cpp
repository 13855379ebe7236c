#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Tool.h"
#include "support/LiveMailStore.h"
#include "support/StoreIdFiles.h"
#include "support/TempFolder.h"

namespace postmarker::inspect {
namespace {

class LiveMailCommands : public testing::Test {
 protected:
  [[nodiscard]] std::string Path() const { return NarrowUtf8(m_folder.PathOf("store")); }
  void Write(const std::string& bytes) const { test::WriteFile(m_folder.PathOf("store"), bytes); }

  // The document, or the exit code where it is not 0.
  static std::string Run(const std::vector<std::string>& arguments) {
    std::string document;
    const int code = RunTool(
        arguments, [&](std::string_view text) { document.append(text); }, [](std::string_view) {});
    return code == 0 ? document : std::to_string(code);
  }

  test::TempFolder m_folder;
};

constexpr char kNoId[] = "{\"result\":-2147467259,\"id\":\"\"}\n";

TEST_F(LiveMailCommands, ListsFoldersInDisplayOrder) {
  Write(test::MakeLiveMailStore(
      {.folders = {{1, 0, u"Ann"}, {2, 1, u"Gr\u00FC\u00DFe"}, {3, 1, u"Inbox"}}}));
  EXPECT_EQ(Run({"live-folders", Path()}),
            R"([{"name":"\\\\Ann","firstId":"1","secondId":"1","flag":1},)"
            R"({"name":"\\\\Ann\\Inbox","firstId":"3","secondId":"1","flag":1},)"
            R"({"name":"\\\\Ann\\Gr\u00fc\u00dfe","firstId":"2","secondId":"1","flag":1}])"
            "\n");
}

TEST_F(LiveMailCommands, FileThatIsNoStoreHasNoFolders) {
  EXPECT_EQ(Run({"live-folders", Path()}), "[]\n");
  Write("no store");
  EXPECT_EQ(Run({"live-folders", Path()}), "[]\n");
}

TEST_F(LiveMailCommands, SearchesTheIdOfAStore) {
  const std::string id("\x00\x11\x22\x33\x44\x55\x66\xFF", 8);
  Write("head" + std::string(test::kStoreIdMark) + id + "end");
  EXPECT_EQ(Run({"store-id", Path()}), "{\"result\":0,\"id\":\"00112233445566ff\"}\n");
  EXPECT_EQ(Run({"store-id", "--dbx", Path()}), kNoId);
  Write(test::MakeDbxFile(id));
  EXPECT_EQ(Run({"store-id", Path(), "--dbx"}), "{\"result\":0,\"id\":\"00112233445566ff\"}\n");
  EXPECT_EQ(Run({"store-id", Path()}), kNoId);
}

TEST_F(LiveMailCommands, FileThatIsMissingHasNoId) {
  EXPECT_EQ(Run({"store-id", Path()}), kNoId);
  EXPECT_EQ(Run({"store-id", "--dbx", Path()}), kNoId);
}

TEST_F(LiveMailCommands, RefusesWrongUsage) {
  const std::vector<std::vector<std::string>> wrong = {
      {"live-folders"}, {"live-folders", "a", "b"}, {"live-folders", "--dbx", "a"},
      {"store-id"},     {"store-id", "a", "b"},     {"store-id", "--other", "a"}};
  for (const std::vector<std::string>& arguments : wrong) {
    EXPECT_EQ(Run(arguments), "2") << testing::PrintToString(arguments);
  }
}

}  // namespace
}  // namespace postmarker::inspect
