// Messages that are made to cost time, memory or stack, of any size.
#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace postmarker::test {

// A way to make a message of about `size` bytes.
struct HostileShape {
  const char* name;
  std::function<std::string(size_t size)> make;
};

// `piece` again and again up to a size, and a number that grows in the place of each "%d" in it.
inline std::string Repeated(std::string_view piece, size_t size) {
  std::string text;
  text.reserve(size + piece.size() + 32);
  for (size_t number = 0; text.size() < size; ++number) {
    size_t start = 0;
    for (size_t mark = piece.find("%d"); mark != std::string_view::npos;
         mark = piece.find("%d", start)) {
      text.append(piece.substr(start, mark - start)).append(std::to_string(number));
      start = mark + 2;
    }
    text.append(piece.substr(start));
  }
  return text;
}

inline HostileShape RepeatedShape(const char* name, std::string head, std::string piece) {
  return {name, [head = std::move(head), piece = std::move(piece)](size_t size) {
            return head + Repeated(piece, size);
          }};
}

// Different words of `length` letters, in an order that repeats late.
inline std::string ManyWords(size_t length, size_t size) {
  std::string text;
  uint32_t number = 1;
  while (text.size() < size) {
    uint32_t rest = number * 2654435761U;
    for (size_t i = 0; i < length; ++i, rest = rest >> 5 | rest << 27) {
      text.push_back(static_cast<char>('a' + (rest & 31) % 26));
    }
    text.push_back(' ');
    ++number;
  }
  return text;
}

// Headers of that name, each as long as a header may be, with different words of `length` letters.
inline std::string HeadersOfWords(std::string_view name, size_t length, std::string_view end,
                                  size_t size) {
  const std::string words = ManyWords(length, size);
  std::string text;
  for (size_t at = 0; at < words.size(); at += 1000) {
    text.append(name).append(words, at, 1000).append(end).append("\r\n");
  }
  return text + "\r\n";
}

inline HostileShape WordHeadersShape(const char* name, const std::string& header, size_t length,
                                     const std::string& end) {
  return {name, [=](size_t size) { return HeadersOfWords(header, length, end, size); }};
}

// Different addresses, as many as have room in `size` bytes.
inline std::string ManyAddresses(size_t size) {
  std::string text;
  for (int c = 0x80; c < 0x100 && text.size() + 2 <= size; ++c) {
    text.append({static_cast<char>(c), ','});
  }
  for (int c = '0'; c <= 'z' && text.size() + 2 <= size; ++c) {
    if ((c <= '9' || c >= 'a')) {
      text.append({static_cast<char>(c), ','});
    }
  }
  for (int number = 10; text.size() + 4 <= size; ++number) {
    text.append(std::to_string(number)).push_back(',');
  }
  return text;
}

// Senders of a long name, whose words are counted for each of many addresses, under the header's
// name. All are as long as what is read of a header may be.
inline std::string SendersOfManyAddresses(const std::string& header, size_t displayLength,
                                          size_t size) {
  constexpr size_t kMaxFieldBytes = 1020;
  const std::string addresses = "<" + ManyAddresses(kMaxFieldBytes - displayLength) + ">\r\n";
  std::string words = ManyWords(2, size);
  for (size_t i = 2; i < words.size(); i += 6) {
    words[i] = '.';
  }
  std::string text;
  for (size_t at = 0; text.size() < size; at += displayLength / 6 * 6) {
    text.append(header).append(":").append(words, at, displayLength).append(addresses);
  }
  return text;
}

// Six text parts that are full to their limit.
inline std::string FullTextParts(const std::function<std::string(size_t)>& make, size_t size) {
  std::string message = "Content-Type: multipart/mixed; boundary=--b\r\n\r\n";
  for (int part = 0; part < 6; ++part) {
    message.append("----b\r\nContent-Type: text/").append(part < 3 ? "plain" : "html");
    message.append("\r\n\r\n").append(make(size / 6)).append("\r\n");
  }
  return message + "----b--\r\n";
}

inline std::vector<HostileShape> HeaderShapes() {
  const std::string none;
  return {
      RepeatedShape("repeated headers", none, "a:b\r\n"),
      RepeatedShape("headers without a name", none, ":b\r\n"),
      RepeatedShape("different headers", none, "a%d:b\r\n"),
      RepeatedShape("headers that come twice", none, "a%d:b\r\na%d:c\r\n"),
      RepeatedShape("empty headers", none, "a:\r\n"),
      RepeatedShape("received lines", none, "received:from a by b\r\n"),
      RepeatedShape("received lines of comments", none, "received:(a)\r\n"),
      RepeatedShape("senders", none, "From: user%d@host%d.example.com\r\n"),
      RepeatedShape("short senders", none, "from:a\r\n"),
      RepeatedShape("bare received lines", none, "received:\r\n"),
      RepeatedShape("received lines of a host", none, "received:by b\r\n"),
      RepeatedShape("senders of a letter", none, "from:a<b\r\n"),
      RepeatedShape("sender addresses", none, "From:%d@b%d.de\r\n"),
      RepeatedShape("sender names", none, "From: a b c d e f g h i j k l m n o p q r s <x>\r\n"),
      WordHeadersShape("sender names of letters", "from:", 1, "<x>"),
      WordHeadersShape("sender names of pairs of letters", "from:", 2, "<x>"),
      WordHeadersShape("sender names of three letters", "reply-to:", 3, "<x>"),
      WordHeadersShape("short subjects", "subject:", 2, ""),
      RepeatedShape("subjects of capitals", none,
                    "Subject:" + Repeated("QAZWSXEDCRFVTGBYHNUJMIKOLP", 1000) + "\r\n"),
      RepeatedShape("subjects of a letter", none, "subject:a\r\n"),
      RepeatedShape("parameters", none, "Content-Type:" + Repeated("a=b;", 1000) + "\r\n"),
      RepeatedShape("encoded words", "a: ", "=?"),
      RepeatedShape("one long header", "a: ", "(\"b"),
      RepeatedShape("line ends", none, "\r\n")};
}

// Senders whose words are counted again for each address. A byte of them has up to 400 bytes of
// features.
inline HostileShape LongSenderShape() {
  return {"senders of a long header", [](size_t size) {
            return SendersOfManyAddresses("from" + std::string(1017, 'x'), 780, size);
          }};
}

inline std::vector<HostileShape> SenderShapes() {
  return {{"senders of many addresses",
           [](size_t size) { return SendersOfManyAddresses("from", 510, size); }},
          LongSenderShape()};
}

inline std::vector<HostileShape> EntityShapes() {
  const std::string multipart = "Content-Type: multipart/mixed; boundary=b\r\n\r\n";
  const std::string almost = "Content-Type: multipart/mixed; boundary=" + std::string(200, 'a') +
                             "b\r\n\r\n-" + std::string(200, 'a') + "b\r\n\r\n\r\n";
  return {
      RepeatedShape("nested messages", "", "Content-Type:message/rfc822\r\n\r\n"),
      RepeatedShape("nested multiparts", "", "Content-Type:multipart/x;boundary=b\r\n\r\n--b\r\n"),
      RepeatedShape("nested multiparts of many boundaries", "",
                    "Content-Type:multipart/x;boundary=b%d\r\n\r\n--b%d\r\n"),
      RepeatedShape("parts", multipart + "-b", "\r\n\r\n\r\n-b"),
      RepeatedShape("parts of different types", multipart, "-b\r\nContent-Type: a/%d\r\n\r\nx\r\n"),
      RepeatedShape("image parts", multipart, "-b\r\nContent-Type:image\r\n\r\nx\r\n"),
      RepeatedShape("boundaries that almost match", almost,
                    "-" + std::string(199, 'a') + "x" + std::string(200, 'a') + "\r\n"),
      RepeatedShape("dashes", multipart, "-\r\n")};
}

// One tag that fills most of what is read of a part, and then links that fall back to it if it is a
// base.
inline HostileShape OneTagShape(const char* name, const std::string& head, const std::string& open,
                                const std::string& piece) {
  return {name, [=](size_t size) {
            const size_t room = std::min<size_t>(size, 131072) * 7 / 8;
            const std::string tag = open + Repeated(piece, room) + "\">";
            return head + tag + Repeated("<a href=x>b.de", size - std::min(size, tag.size()));
          }};
}

inline std::vector<HostileShape> TextShapes() {
  const std::string plain = "A: b\r\n\r\n";
  const std::string html = "Content-Type: text/html\r\n\r\n";
  const std::string encoded = "Content-Transfer-Encoding: ";
  return {RepeatedShape("openers", html, "<"),
          RepeatedShape("link openers", html, "<a"),
          OneTagShape("equals signs", html, "<a ", "="),
          RepeatedShape("encoded word openers", html, "=?"),
          RepeatedShape("backgrounds", html, "<b background=>"),
          RepeatedShape("links", html, "<a href=\"http://h%d.com/\">x.com"),
          OneTagShape("redirections", html, "<a href=\"", "http://"),
          OneTagShape("redirections to hosts", html, "<a href=\"", "http://a%d.de/"),
          OneTagShape("a base of many hosts", html, "<base href=\"", "http://a%d.de/"),
          OneTagShape("links of one tag", html, "<a ", "x=a%d "),
          RepeatedShape("mail links", html, "<a href=\"mailto:a%d@b%d.de\">"),
          RepeatedShape("alternative texts", html, "<img alt=\"a%d b%d.de\">"),
          {"links to a long base",
           [html](size_t size) {
             const size_t room = std::min<size_t>(size, 131072) / 2;
             return html + "<base href=\"http://" + std::string(room, 'b') + "\">" +
                    Repeated("<a href=x>", room);
           }},
          OneTagShape("attributes", html, "<font ", "a=%d "),
          OneTagShape("attributes without values", html, "<td ", "a "),
          RepeatedShape("visible hosts", html + "<a href=\"http://b.de\">", "a%d.de "),
          RepeatedShape("dots", plain, "a."),
          RepeatedShape("letters", plain, "a "),
          RepeatedShape("addresses", plain, "a@b%d.com "),
          RepeatedShape("one word", plain, "x"),
          RepeatedShape("base64", encoded + "base64\r\n\r\n", "QUJD"),
          RepeatedShape("escapes", encoded + "quoted-printable\r\n\r\n", "=3D"),
          RepeatedShape("addresses of different hosts", plain, "%d@b%d.de "),
          {"pairs of letters", [plain](size_t size) { return plain + ManyWords(2, size); }},
          {"different words", [plain](size_t size) { return plain + ManyWords(5, size); }},
          {"full parts of words",
           [](size_t size) {
             return FullTextParts([](size_t part) { return ManyWords(6, part); }, size);
           }},
          {"full parts of pairs of letters",
           [](size_t size) {
             return FullTextParts(
                 [](size_t part) { return "<img alt=\"" + ManyWords(2, part) + "\">"; }, size);
           }},
          {"full parts of addresses", [](size_t size) {
             return FullTextParts(
                 [](size_t part) { return "<img alt=\"" + Repeated("%d@b%d.de ", part) + "\">"; },
                 size);
           }}};
}

// All of them.
inline std::vector<HostileShape> HostileShapes() {
  std::vector<HostileShape> shapes = HeaderShapes();
  for (const auto& more : {EntityShapes(), TextShapes()}) {
    shapes.insert(shapes.end(), more.begin(), more.end());
  }
  return shapes;
}

}  // namespace postmarker::test
