#include <gtest/gtest.h>

#include "Tool.h"

namespace postmarker::inspect {
namespace {

int RunCaught(const std::vector<std::string>& arguments, std::string* documents) {
  documents->clear();
  const Print print = [&](std::string_view piece) { documents->append(piece); };
  const Print ignore = [](std::string_view) {};
  return RunTool(arguments, print, ignore);
}

std::string State(const std::string& columns, const std::string& text) {
  std::string documents;
  EXPECT_EQ(RunCaught({"column-state", columns, text}, &documents), 0);
  return documents;
}

TEST(ColumnStateCommand, ShowsWhatTheGridWouldTake) {
  EXPECT_EQ(State("2", "N,0;0,100;1,80"),
            "{\"accepted\":true,\"order\":0,\"sortColumn\":0,\"columns\":[{\"order\":0,"
            "\"width\":100},{\"order\":1,\"width\":80}]}\n");
  EXPECT_EQ(State("1", "A,0;0,100"),
            "{\"accepted\":true,\"order\":1,\"sortColumn\":0,\"columns\":[{\"order\":0,"
            "\"width\":100}]}\n");
  EXPECT_EQ(State("1", "D,0;0,5"),
            "{\"accepted\":true,\"order\":2,\"sortColumn\":0,\"columns\":[{\"order\":0,"
            "\"width\":5}]}\n");
}

TEST(ColumnStateCommand, SaysOnlyThatATextIsRefused) {
  for (const auto& [columns, text] : {std::pair{"2", "A,9"},
                                      {"2", "N,0;0,100000;1,80"},
                                      {"0", "N,0;"},
                                      {"2", ""},
                                      {"1", "ä"},
                                      {"4294967295", "N,0;0,100"}}) {
    EXPECT_EQ(State(columns, text), "{\"accepted\":false}\n") << text;
  }
}

TEST(ColumnStateCommand, ColumnsMustBeANumber) {
  std::string documents;
  for (const char* const columns : {"x", "-1", "", "2x", "4294967296"}) {
    EXPECT_EQ(RunCaught({"column-state", columns, "N,0;0,100"}, &documents), 2) << columns;
    EXPECT_EQ(documents, "");
  }
  EXPECT_EQ(RunCaught({"column-state", "2"}, &documents), 2);
}

}  // namespace
}  // namespace postmarker::inspect
