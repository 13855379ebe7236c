#include "ipc/WebAddress.h"

#include <gtest/gtest.h>

#include <string>

#include "support/Text.h"

namespace postmarker {
namespace {

TEST(WebAddress, AcceptsHttpAndHttpsWhateverTheirCase) {
  for (const wchar_t* address :
       {L"http://a", L"https://example.com/support", L"HTTP://EXAMPLE.COM", L"hTTpS://x/?a=1&b=2#c",
        L"http://b.example/?x=\xE9", L"https://example.com/\x6F22\x5B57"}) {
    EXPECT_TRUE(IsWebAddress(address)) << NarrowUtf8(address);
  }
}

TEST(WebAddress, RefusesOtherSchemesAndNone) {
  for (const wchar_t* text :
       {L"", L"example.com", L"ftp://example.com/", L"file:///C:/x.exe", L"javascript:alert(1)",
        L"APP:close", L"C:\\Windows\\calc.exe", L"\\\\server\\share", L" http://example.com",
        L"\"http://example.com\"", L"httpx://example.com", L"http:/example.com", L"xhttp://a"}) {
    EXPECT_FALSE(IsWebAddress(text)) << NarrowUtf8(text);
  }
}

TEST(WebAddress, RefusesASchemeAlone) {
  EXPECT_FALSE(IsWebAddress(L"http://"));
  EXPECT_FALSE(IsWebAddress(L"https://"));
  EXPECT_FALSE(IsWebAddress(L"http:"));
}

TEST(WebAddress, RefusesEveryControlCharacterWhereverItIs) {
  for (wchar_t unit = 0; unit < 0xA0; ++unit) {
    if (unit >= 0x20 && unit < 0x7F) {
      continue;
    }
    const std::wstring control(1, unit);
    EXPECT_FALSE(IsWebAddress(L"http://a" + control + L"b")) << static_cast<int>(unit);
    EXPECT_FALSE(IsWebAddress(L"http://a" + control)) << static_cast<int>(unit);
    EXPECT_FALSE(IsWebAddress(L"http://" + control + L"a")) << static_cast<int>(unit);
  }
  EXPECT_TRUE(IsWebAddress(L"http://a\xA0"));
}

TEST(WebAddress, RefusesWhatWouldEndMarkupOrAnArgument) {
  for (const wchar_t* text : {L"http://a> <b>", L"http://a<b", L"http://a\"b", L"http://a b"}) {
    EXPECT_FALSE(IsWebAddress(text)) << NarrowUtf8(text);
  }
}

}  // namespace
}  // namespace postmarker
