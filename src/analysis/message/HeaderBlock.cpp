#include "analysis/message/HeaderBlock.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <map>
#include <string>

#include "analysis/message/Decoders.h"
#include "support/Bytes.h"

namespace postmarker {
namespace {

constexpr uint32_t kFewRepeats = 16;

constexpr std::array<bool, 256> MakePlainBytes() {
  std::array<bool, 256> table = {};
  table.fill(true);
  for (const char c : std::string_view("\r\n ()\":")) {
    table[static_cast<unsigned char>(c)] = false;
  }
  return table;
}

constexpr std::array<bool, 256> kPlainBytes = MakePlainBytes();

// Puts headers into the map and finds a free key for each.
class HeaderStore {
 public:
  explicit HeaderStore(HeaderMap* headers)
      : m_headers(headers), m_keepAll(headers != nullptr && headers->IsEmpty()) {}

  void Commit(std::string_view name, std::string_view value) {
    if (m_headers == nullptr || (!m_keepAll && !m_headers->Contains(name))) {
      return;
    }
    const std::string key = FreeKey(name);
    if (name != "received") {
      m_headers->Set(key, value);
      return;
    }
    SetComment(key + "-comment", value);
    m_headers->Set(key, WithoutComments(value));
  }

 private:
  // The first of "name", "name-1", "name-2" ... without a value. A message may repeat a header a
  // million times: beyond the first few, numbers that were found taken are not asked for again.
  std::string FreeKey(std::string_view name) {
    std::string key(name);
    uint32_t number = 0;
    while (!m_headers->Get(key).empty()) {
      ++number;
      if (number == 1 && !m_nextNumber.empty()) {
        const auto next = m_nextNumber.find(name);
        number = next == m_nextNumber.end() ? number : next->second;
      }
      key.resize(name.size());
      key.append("-").append(std::to_string(number));
    }
    if (number >= kFewRepeats) {
      m_nextNumber.insert_or_assign(std::string(name), number);
    }
    return key;
  }

  // A header of that very name may have been there: then its numbers are looked at afresh.
  void SetComment(const std::string& key, std::string_view value) {
    if (!m_nextNumber.empty()) {
      m_nextNumber.erase(key);
    }
    m_headers->Set(key, value);
  }

  static std::string WithoutComments(std::string_view value) {
    std::string kept;
    kept.reserve(value.size());
    int depth = 0;
    for (const char c : value) {
      if (c == '(') {
        ++depth;
      } else if (c == ')') {
        --depth;
      } else if (depth == 0) {
        kept.push_back(c);
      }
    }
    return kept;
  }

  HeaderMap* m_headers;
  bool m_keepAll;
  std::map<std::string, uint32_t, std::less<>> m_nextNumber;  // of names that came often
};

// A text of bounded length.
class LineText {
 public:
  void Put(char c) {
    if (m_length < kMaxHeaderTextBytes) {
      m_bytes[m_length++] = c;
    }
  }
  void Clear() { m_length = 0; }
  void Put(std::string_view text) {
    const size_t fitting = std::min(text.size(), kMaxHeaderTextBytes - m_length);
    std::memcpy(m_bytes.data() + m_length, text.data(), fitting);
    m_length += fitting;
  }
  [[nodiscard]] std::string_view View() const { return {m_bytes.data(), m_length}; }

 private:
  std::array<char, kMaxHeaderTextBytes> m_bytes;
  size_t m_length = 0;
};

class BlockReader {
 public:
  explicit BlockReader(HeaderMap* headers) : m_store(headers) {}

  size_t Read(std::string_view bytes) {
    for (size_t i = 0; i < bytes.size(); ++i) {
      const char c = bytes[i];
      if (IsPlain(c) && !m_atLineStart && m_commentDepth < 1) {
        i = TakePlain(bytes, i);
        continue;
      }
      if (m_atLineStart && c != ' ' && c != '\t') {
        Commit();
      }
      if (c == '\r') {
        m_lastWasCr = true;
      } else if (c == '\n') {
        if (m_atLineStart && m_lastWasCr) {
          return i + 1;
        }
        // Deliberate: a bare LF does not end a line. What follows it belongs to the same
        // header.
        m_atLineStart = m_lastWasCr;
        m_lastWasCr = false;
      } else {
        m_lastWasCr = false;
        m_atLineStart = false;
        Take(c);
      }
      m_previous = c;
    }
    return bytes.size();
  }

 private:
  // Bytes that mean nothing but themselves, wherever they stand within a line.
  static bool IsPlain(char c) { return kPlainBytes[static_cast<unsigned char>(c)]; }

  // Takes a run of plain bytes, with single blanks between them, and gives the place of its last
  // one.
  size_t TakePlain(std::string_view bytes, size_t start) {
    size_t end = start + 1;
    while (end < bytes.size() &&
           (IsPlain(bytes[end]) || (bytes[end] == ' ' && bytes[end - 1] != ' '))) {
      ++end;
    }
    (m_inValue ? m_value : m_name).Put(bytes.substr(start, end - start));
    m_lastWasCr = false;
    m_previous = bytes[end - 1];
    return end - 1;
  }

  void Take(char c) {
    if (!m_inQuotes && !m_verbatim) {
      if (c == '(') {
        ++m_commentDepth;
        return;
      }
      if (c == ')') {
        --m_commentDepth;
        return;
      }
    }
    if (m_commentDepth >= 1) {
      return;
    }
    if (c == '"') {
      m_inQuotes = !m_inQuotes;
    } else if (c == ' ' && m_previous == ' ' && !m_inQuotes) {
      return;
    }
    if (m_inValue) {
      m_value.Put(c);
    } else if (c == ':') {
      m_inValue = true;
      m_verbatim = IsVerbatim(m_name.View());
    } else {
      m_name.Put(c);
    }
  }

  static bool IsVerbatim(std::string_view name) {
    return EqualNoCase(name, "subject") || EqualNoCase(name, "thread-index") ||
           EqualNoCase(name, "received");
  }

  void Commit() {
    const std::string name = LowerText(TrimByte(m_name.View(), ' '));
    const std::string_view value = TrimByte(m_value.View(), ' ');
    std::array<char, kMaxHeaderTextBytes + 1> decoded;
    size_t length = 0;
    if (value.find("=?") != std::string_view::npos &&
        DecodeEncodedWords(value, decoded.data(), &length) > 0) {
      decoded[length] = '\0';
      m_store.Commit(name, decoded.data());
    } else {
      m_store.Commit(name, value);
    }
    m_name.Clear();
    m_value.Clear();
    m_inValue = false;
    m_verbatim = false;
    m_inQuotes = false;
    m_commentDepth = 0;
  }

  HeaderStore m_store;
  LineText m_name;
  LineText m_value;
  bool m_inValue = false;
  bool m_verbatim = false;
  bool m_inQuotes = false;
  bool m_lastWasCr = false;
  bool m_atLineStart = false;
  int m_commentDepth = 0;
  char m_previous = '\0';
};

}  // namespace

size_t ReadHeaderBlock(std::string_view bytes, HeaderMap* headers) {
  return BlockReader(headers).Read(bytes);
}

}  // namespace postmarker
