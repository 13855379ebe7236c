// Texts of labels that are made to cost time: parts that are repeated up to a size.
#pragma once

#include <string>
#include <string_view>

namespace postmarker::test {

struct LabelShape {
  const char* name;
  std::wstring_view part;
};

inline constexpr LabelShape kLabelShapes[] = {
    {"words", L"some words of a text, "},
    {"justified words", L"<JUSTIFY>some words of a text, "},
    {"styles", L"<B>bold</B> and <I>slanted</I> "},
    {"one word", L"x"},
    {"one word of many runs", L"<B>x</B>y"},
    {"blanks", L" "},
    {"lines", L"x<BR>"},
    {"rules", L"<HR>"},
    {"links", L"<A HREF=http://a>x</A> "},
    {"one link of many runs", L"<A HREF=x>y<B>z</B> "},
    {"brackets", L"<"},
    {"ampersands", L"&"},
    {"entities", L"&amp;lt;"},
    {"tags without end", L"<A HREF="},
    {"fonts without end", L"<FONT COLOR=\""},
    {"nested fonts", L"<FONT SIZE=\"1\" FACE=\"a\">x"},
    {"closed in the wrong order", L"<FONT FACE=\"a\"><CODE>x</FONT></CODE>"},
    {"attributes", L"<FONT A A A A COLOR=\"Red\" SIZE=x>"},
};

inline std::wstring LabelText(const LabelShape& shape, size_t length) {
  std::wstring text;
  text.reserve(length + shape.part.size());
  while (text.size() < length) {
    text += shape.part;
  }
  return text;
}

}  // namespace postmarker::test
