#include "progress/SupportLinks.h"

#include <gtest/gtest.h>

#include "controls/LabelMarkup.h"
#include "support/Text.h"

namespace postmarker {
namespace {

TEST(SupportLinks, MarkupIsALinkWithAnUnderlinedText) {
  EXPECT_EQ(LinkMarkup(L"https://a.example/x.aspx?a=1&b=2", L"a.example/x"),
            L"<a href=https://a.example/x.aspx?a=1&b=2> <u> a.example/x </u> </a>");
}

TEST(SupportLinks, LabelOpensExactlyTheTarget) {
  for (const std::wstring target :
       {L"https://a.example/", L"https://a.example/?a=1&b=2", L"https://a.example/?a=1&copy;=2",
        L"https://a.example/?a=&gt;&lt;a%20href=https://b.example/&gt;",
        L"https://a.example/?a=&amp;lt;b"}) {
    const LabelMarkup markup = ParseLabel(LinkMarkup(target, L"a.example"));
    ASSERT_EQ(markup.links.size(), 1U) << NarrowUtf8(target);
    EXPECT_EQ(markup.links[0].target, target) << NarrowUtf8(target);
    EXPECT_EQ(markup.links[0].name, L"a.example") << NarrowUtf8(target);
  }
}

}  // namespace
}  // namespace postmarker
