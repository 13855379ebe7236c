#include "analysis/message/Decoders.h"

#include <cstring>
#include <optional>

#include "analysis/message/Base64Blocks.h"
#include "support/Bytes.h"

namespace postmarker {
namespace {

constexpr size_t kColumns = 75;       // after which DecodeQuotedPrintable breaks a line
constexpr size_t kEncodedGroup = 57;  // input bytes of a line of 76 columns

int HexDigit(char c) {
  return c >= '0' && c <= '9' ? c - '0' : c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

char UpperByte(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c;
}

// A bounded output that ends with a NUL.
class Output {
 public:
  // The first `count` bytes are there already.
  Output(char* out, size_t capacity, size_t count = 0)
      : m_out(out), m_capacity(capacity), m_count(count) {}
  [[nodiscard]] size_t Room() const { return m_capacity - m_count; }
  [[nodiscard]] bool Full() const { return m_count >= m_capacity; }
  void Put(char c) {
    if (!Full()) {
      m_out[m_count++] = c;
    }
  }
  void PutLineBreak() {
    if (Room() >= 2) {
      Put('\r');
      Put('\n');
    }
  }
  size_t Finish() {
    m_out[m_count] = '\0';
    return m_count;
  }

 private:
  char* m_out;
  size_t m_capacity;
  size_t m_count;
};

struct EncodedWord {
  char encoding;
  std::string_view text;
  size_t end;  // after its closing "?="
};

// The encoded word at `start`, where an "=?" stands, if it is a whole one.
std::optional<EncodedWord> ReadEncodedWord(std::string_view in, size_t start) {
  int marks = 0;
  EncodedWord word = {};
  size_t textStart = 0;
  for (size_t i = start + 2; i < in.size(); ++i) {
    if (in[i] == ' ' || in[i] == '\t') {
      return std::nullopt;
    }
    if (in[i] != '?') {
      continue;
    }
    if (i + 1 >= in.size()) {
      return std::nullopt;
    }
    ++marks;
    if (marks == 1) {
      word.encoding = LowerByte(in[i + 1]);
    } else if (marks == 2) {
      textStart = i + 1;
    } else {
      word.end = i + 2;
      if (in[i + 1] != '=' || i <= textStart) {
        return std::nullopt;
      }
      word.text = in.substr(textStart, i - textStart);
      return word;
    }
  }
  return std::nullopt;
}

size_t DecodeWord(const EncodedWord& word, char* out) {
  switch (word.encoding) {
    case 'b':
      return DecodeBase64(word.text, out, word.text.size(), false);
    case 'q':
      return DecodeQuotedPrintable(word.text, out, word.text.size(), false);
    default:
      return 0;
  }
}

}  // namespace

bool HexPairToByte(char high, char low, uint8_t* out) {
  const int upper = HexDigit(high);
  const int lower = HexDigit(low);
  if (upper < 0 || lower < 0) {
    return false;
  }
  *out = static_cast<uint8_t>(upper << 4 | lower);
  return true;
}

size_t DecodeQuotedPrintable(std::string_view in, char* out, size_t capacity, bool wrap) {
  Output output(out, capacity);
  size_t column = 0;
  for (size_t i = 0; i < in.size() && in[i] != '\0' && !output.Full(); ++i) {
    char c = in[i];
    if (c == '\r' || c == '\n') {
      output.Put(c);
      column = 0;
      continue;
    }
    if (c == '=' && i + 2 < in.size()) {
      const char high = in[i + 1];
      const char low = in[i + 2];
      uint8_t byte = 0;
      if (high == '\r' && low == '\n') {
        i += 2;
        continue;
      }
      if (HexPairToByte(UpperByte(high), UpperByte(low), &byte)) {
        c = static_cast<char>(byte);
        i += 2;
      }
    }
    output.Put(c);
    if (wrap && ++column == kColumns) {
      output.PutLineBreak();
      column = 0;
    }
  }
  return output.Finish();
}

size_t DecodeBase64(std::string_view in, char* out, size_t capacity, bool keepLineBreaks) {
  Output output(out, capacity);
  uint32_t held = 0;
  int bits = 0;
  for (const char c : in) {
    if (c == '=') {
      break;
    }
    const int value = Base64Bits(c);
    if (value < 0) {
      if (keepLineBreaks && (c == '\r' || c == '\n')) {
        output.Put(c);
      }
      continue;
    }
    held = held << 6 | static_cast<uint32_t>(value);
    bits += 6;
    if (bits >= 8) {
      bits -= 8;
      const auto byte = static_cast<char>(held >> bits);
      if (byte != '\0') {
        output.Put(byte);
      }
    }
  }
  return output.Finish();
}

size_t EncodeBase64(std::string_view in, char* out, size_t capacity, bool wrap) {
  // Without line breaks nearly all of it goes in blocks.
  const size_t groups = wrap ? 0 : EncodeBase64Groups(in, capacity / 4, out);
  Output output(out, capacity, groups * 4);
  for (size_t i = groups * 3; i < in.size() && !output.Full(); i += 3) {
    if (wrap && i % kEncodedGroup == 0) {
      output.PutLineBreak();
    }
    const size_t left = in.size() - i;
    uint32_t group = 0;
    for (size_t k = 0; k < 3; ++k) {
      group = group << 8 | (k < left ? static_cast<unsigned char>(in[i + k]) : 0U);
    }
    for (unsigned k = 0; k < 4; ++k) {
      output.Put(k <= left ? kBase64Alphabet[group >> (18 - 6 * k) & 0x3F] : '=');
    }
  }
  if (wrap) {
    output.PutLineBreak();
    output.PutLineBreak();
  }
  return output.Finish();
}

size_t DecodeEncodedWords(std::string_view in, char* out, size_t* outLength) {
  *outLength = 0;
  if (in.data() == nullptr || out == nullptr) {
    return 0;
  }
  size_t consumed = 0;
  size_t written = 0;
  for (size_t i = 0; i < in.size();) {
    out[written] = in[i];
    size_t decoded = 0;
    if (in[i] == '=' && i + 6 < in.size() && in[i + 1] == '?') {
      const std::optional<EncodedWord> word = ReadEncodedWord(in, i);
      decoded = word ? DecodeWord(*word, out + written) : 0;
      if (decoded > 0) {
        written += decoded;
        consumed += word->end - i;
        i = word->end;
        continue;
      }
      out[written] = in[i];  // what a failed attempt left there is overwritten
    }
    ++written;
    ++i;
  }
  *outLength = written;
  return consumed;
}

}  // namespace postmarker
