#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Tool.h"
#include "support/TempFolder.h"
#include "support/WabBuilder.h"

namespace postmarker::inspect {
namespace {

// The document, or the exit code where it is not 0.
std::string Print(const std::vector<std::string>& arguments) {
  std::string document;
  const int code = RunTool(
      arguments, [&](std::string_view text) { document.append(text); }, [](std::string_view) {});
  return code == 0 ? document : std::to_string(code);
}

TEST(WabCommand, PrintsTheSetOfAddressesInItsOrder) {
  const test::TempFolder folder;
  const std::wstring path = folder.PathOf("person.wab");
  test::WriteFile(path, test::MakeWabFile({L"b@x", L"", L"\xFC@x", L"A@x", L"b@x"}));
  EXPECT_EQ(Print({"wab", NarrowUtf8(path)}), "[\"\",\"A@x\",\"b@x\",\"\\u00fc@x\"]\n");
}

TEST(WabCommand, PrintsAnEmptyListForWhatCanNotBeRead) {
  EXPECT_EQ(Print({"wab", "gone"}), "[]\n");
}

TEST(WabCommand, WantsOneFile) {
  EXPECT_EQ(Print({"wab"}), "2");
  EXPECT_EQ(Print({"wab", "a", "b"}), "2");
}

}  // namespace
}  // namespace postmarker::inspect
