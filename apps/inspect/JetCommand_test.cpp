#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Tool.h"
#include "support/EseFile.h"
#include "support/TempFolder.h"

namespace postmarker::inspect {
namespace {

using test::EseBytes;

class JetCommand : public testing::Test {
 protected:
  JetCommand() {
    test::EseTable table = {.name = "UserDataTable",
                            .columns = {{"Id", 1, test::kEseLongLong, 8},
                                        {"Kind", 2},
                                        {"Table", 128, test::kEseText, 255, 1252},
                                        {"Other", 129, test::kEseText, 255, 1252}},
                            .indexes = {{"0", {1}, true}, {"Both", {2, 1}}}};
    for (const int64_t id : {1, 2}) {
      table.rows.push_back({{{1, {EseBytes(id)}},
                             {2, {EseBytes(static_cast<int32_t>(-id))}},
                             {128, {test::EseUtf16(u"Gr\u00FC\u00DFe")}},
                             {129, {test::EseUtf16(u"no")}}},
                            test::EseKey(id)});
    }
    test::EseTable same = table;
    same.name = "Plain";
    same.rows.pop_back();
    test::WriteFile(m_folder.PathOf("store.edb"), test::MakeEseFile({table, same}));
  }

  // The document, or the exit code where it is not 0.
  [[nodiscard]] std::string Run(std::vector<std::string> arguments) const {
    if (!arguments.empty() && arguments.front() == "FILE") {
      arguments.front() = NarrowUtf8(m_folder.PathOf("store.edb"));
    }
    arguments.insert(arguments.begin(), "jet");
    std::string document;
    const int code = RunTool(
        arguments, [&](std::string_view text) { document.append(text); }, [](std::string_view) {});
    return code == 0 ? document : std::to_string(code);
  }

  test::TempFolder m_folder;
};

constexpr char kFirst[] =
    R"({"Id":{"i64":1},"Kind":{"i32":-1},"Other":{"text":"n"},"Table":{"text":"Gr\u00fc\u00dfe"}})";
constexpr char kSecond[] =
    R"({"Id":{"i64":2},"Kind":{"i32":-2},"Other":{"text":"n"},"Table":{"text":"Gr\u00fc\u00dfe"}})";

std::string Rows(const std::string& rows) {
  return R"({"result":0,"rows":[)" + rows + "]}\n";
}

TEST_F(JetCommand, ListsTablesColumnsAndIndexes) {
  EXPECT_EQ(Run({"FILE", "tables"}), "{\"result\":0,\"tables\":[\"Plain\",\"UserDataTable\"]}\n");
  EXPECT_EQ(Run({"FILE", "columns", "Plain"}),
            R"({"result":0,"columns":{"Id":{"id":1,"type":15,"codePage":0},)"
            R"("Kind":{"id":2,"type":4,"codePage":0},)"
            R"("Other":{"id":129,"type":10,"codePage":1252},)"
            R"("Table":{"id":128,"type":10,"codePage":1252}}})"
            "\n");
  EXPECT_EQ(Run({"FILE", "indexes", "Plain"}),
            "{\"result\":0,\"indexes\":{\"0\":[\"Id\"],\"Both\":[\"Kind\",\"Id\"]}}\n");
}

TEST_F(JetCommand, QueriesRows) {
  const std::string first = kFirst;
  EXPECT_EQ(Run({"FILE", "query", "UserDataTable"}), Rows(first + "," + kSecond));
  EXPECT_EQ(Run({"FILE", "query", "UserDataTable", "--filter", "Id=i64:2"}), Rows(kSecond));
  EXPECT_EQ(Run({"FILE", "query", "--filter", "Kind=i32:-1", "UserDataTable"}), Rows(first));
  EXPECT_EQ(Run({"FILE", "query", "UserDataTable", "--require", "Other=text:n", "--require",
                 "Kind=i32:-2"}),
            Rows(kSecond));
  EXPECT_EQ(Run({"FILE", "query", "UserDataTable", "--filter", "Id=i32:2"}), Rows(""));
  EXPECT_EQ(Run({"FILE", "query", "UserDataTable", "--require", "Other=text:"}), Rows(""));
}

TEST_F(JetCommand, ReadsOnlyThatColumnAsUtf16) {
  std::string expected = kFirst;
  expected.replace(expected.find("Gr"), std::string_view(R"(Gr\u00fc\u00dfe)").size(), "G");
  EXPECT_EQ(Run({"FILE", "query", "Plain"}), Rows(expected));
}

TEST_F(JetCommand, FailuresLeaveTheMemberEmpty) {
  EXPECT_EQ(Run({"gone", "tables"}), "{\"result\":-2147467259,\"tables\":[]}\n");
  EXPECT_EQ(Run({"gone", "query", "T"}), "{\"result\":-2147467259,\"rows\":[]}\n");
  EXPECT_EQ(Run({"FILE", "columns", "T"}), "{\"result\":-2147467259,\"columns\":{}}\n");
  EXPECT_EQ(Run({"FILE", "indexes", "T"}), "{\"result\":-2147467259,\"indexes\":{}}\n");
  EXPECT_EQ(Run({"FILE", "query", "Plain", "--filter", "No=i32:1"}),
            "{\"result\":-2147467259,\"rows\":[]}\n");
}

TEST_F(JetCommand, RefusesWrongUsage) {
  const std::vector<std::vector<std::string>> wrong = {
      {"FILE"},
      {"FILE", "nonsense"},
      {"FILE", "tables", "T"},
      {"FILE", "columns"},
      {"FILE", "query"},
      {"FILE", "columns", "T", "--filter", "A=i32:1"},
      {"FILE", "query", "T", "--filter"},
      {"FILE", "query", "T", "--filter", "A"},
      {"FILE", "query", "T", "--filter", "A=1"},
      {"FILE", "query", "T", "--filter", "A=i32:x"},
      {"FILE", "query", "T", "--filter", "A=i32:2147483648"},
      {"FILE", "query", "T", "--require", "A=i16:1"},
  };
  for (const std::vector<std::string>& arguments : wrong) {
    EXPECT_EQ(Run(arguments), "2") << testing::PrintToString(arguments);
  }
}

}  // namespace
}  // namespace postmarker::inspect
