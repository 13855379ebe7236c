#include "analysis/HopList.h"

#include <gtest/gtest.h>

namespace postmarker {
namespace {

HeaderMap Lines(std::initializer_list<std::string_view> values) {
  HeaderMap headers;
  int number = 0;
  for (const std::string_view value : values) {
    headers.Set(
        number == 0 ? "received-comment" : "received-" + std::to_string(number) + "-comment",
        value);
    ++number;
  }
  return headers;
}

TEST(HopList, IsEmptyWithoutLines) {
  EXPECT_TRUE(HopList().empty());
  EXPECT_EQ(HopList().size(), 0U);
  EXPECT_TRUE(HopList(Lines({"nonsense", ""})).empty());
}

TEST(HopList, LeavesOutLinesThatNameNoHost) {
  const HopList hops(Lines({"by A", "nonsense", "from b by c", "from"}));
  ASSERT_EQ(hops.size(), 2U);
  EXPECT_EQ(hops[0].second.name, "a");
  EXPECT_EQ(hops[1].first.name, "b");
  EXPECT_EQ(hops.begin()->first.name, "");
}

TEST(HopList, EndsAtTheFirstNumberWithoutALine) {
  HeaderMap headers = Lines({"by a", "by b", "by c"});
  headers.Erase("received-1-comment");
  EXPECT_EQ(HopList(headers).size(), 1U);
}

TEST(HopList, DoesNotSeeLaterChanges) {
  HeaderMap headers = Lines({"by a"});
  const HopList hops(headers);
  headers.Set("received-comment", "by b");
  headers.Set("received-1-comment", "by c");
  ASSERT_EQ(hops.size(), 1U);
  EXPECT_EQ(hops[0].second.name, "a");
}

}  // namespace
}  // namespace postmarker
