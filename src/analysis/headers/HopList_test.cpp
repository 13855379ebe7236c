#include "analysis/headers/HopList.h"

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
  EXPECT_TRUE(HopList().IsEmpty());
  EXPECT_EQ(HopList().CountHops(), 0U);
  EXPECT_TRUE(HopList(Lines({"nonsense", ""})).IsEmpty());
}

TEST(HopList, LeavesOutLinesThatNameNoHost) {
  const HopList hops(Lines({"by A", "nonsense", "from b by c", "from"}));
  ASSERT_EQ(hops.CountHops(), 2U);
  EXPECT_EQ(hops.ReadHop(0).second.name, "a");
  EXPECT_EQ(hops.ReadHop(1).first.name, "b");
  EXPECT_EQ(hops.begin()->first.name, "");
}

TEST(HopList, EndsAtTheFirstNumberWithoutALine) {
  HeaderMap headers = Lines({"by a", "by b", "by c"});
  headers.Erase("received-1-comment");
  EXPECT_EQ(HopList(headers).CountHops(), 1U);
}

TEST(HopList, DoesNotSeeLaterChanges) {
  HeaderMap headers = Lines({"by a"});
  const HopList hops(headers);
  headers.Set("received-comment", "by b");
  headers.Set("received-1-comment", "by c");
  ASSERT_EQ(hops.CountHops(), 1U);
  EXPECT_EQ(hops.ReadHop(0).second.name, "a");
}

}  // namespace
}  // namespace postmarker
