// The readers of IncrediMail's files once more, step by step and without regard to time: what the
// fast ones are compared with.
#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace postmarker::test {

// The content of an attachment, or null.
using PlainAttachments = std::function<const std::string*(const std::string& name)>;

// A message is rebuilt byte by byte into a buffer without bounds.
class PlainAssembler {
 public:
  PlainAssembler(std::string_view file, uint32_t msgSize, uint32_t lightMsgSize, uint32_t msgPos,
                 PlainAttachments attachments)
      : m_file(file),
        m_begin(msgPos),
        m_source(msgPos),
        m_capacity(int64_t{msgSize} + 4096),
        m_limit(std::clamp<int64_t>(static_cast<int64_t>(file.size()) - msgPos, 0, lightMsgSize)),
        m_length(m_limit),
        m_attachments(std::move(attachments)) {}

  std::string Assemble() {
    int64_t added = 0;
    while (m_i < m_limit) {
      const char c = At(m_source);
      Put(c);
      if (m_i != 0 && added < 4096 && c == '\n' && !(m_to > 0 && m_out[m_to - 1] == '\r')) {
        Put('\r');
        ++m_to;
        Put('\n');
        ++m_length;
        ++added;
      } else if (c == '-' && m_i + 34 < m_limit && Matches(m_source, kMarker)) {
        TakeOut();
      }
      ++m_i;
      ++m_source;
      ++m_to;
    }
    m_out.resize(static_cast<size_t>(std::clamp<int64_t>(m_length, 0, m_capacity)));
    return m_out;
  }

 private:
  static constexpr char kMarker[] = "----------[%ImFilePath%]----------";

  static char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

  [[nodiscard]] char At(int64_t place) const {
    return place < static_cast<int64_t>(m_file.size()) ? m_file[static_cast<size_t>(place)] : '\0';
  }
  [[nodiscard]] bool Matches(int64_t place, std::string_view text) const {
    for (size_t k = 0; k < text.size(); ++k) {
      if (Lower(At(place + static_cast<int64_t>(k))) != Lower(text[k])) {
        return false;
      }
    }
    return true;
  }
  void Put(char c) {
    m_out.resize(std::max(m_out.size(), m_to + 1));
    m_out[m_to] = c;
  }

  [[nodiscard]] bool IsEncoded() const {
    int64_t from = m_source - 1;
    while (from > m_begin && !(At(from) == '-' && At(from - 1) == '-')) {
      --from;
    }
    for (from = std::max(from - 1, m_begin); from + 26 < m_source; ++from) {
      if (Matches(from, "Content-Transfer-Encoding:")) {
        from += 26;
        while (At(from) == ' ') {
          ++from;
        }
        return from + 7 <= m_source && Matches(from, "base64");
      }
    }
    return false;
  }

  static std::string Encode(const std::string& bytes) {
    static constexpr char kDigits[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    uint32_t bits = 0;
    int count = 0;
    for (const char c : bytes) {
      bits = bits << 8 | static_cast<unsigned char>(c);
      for (count += 8; count >= 6; count -= 6) {
        text.push_back(kDigits[bits >> (count - 6) & 63]);
      }
    }
    if (count > 0) {
      text.push_back(kDigits[bits << (6 - count) & 63]);
    }
    text.resize((text.size() + 3) / 4 * 4, '=');
    return text;
  }

  void TakeOut() {
    const bool isEncoded = IsEncoded();
    m_length -= 34;
    m_source += 34;
    std::string name;
    while (m_i < m_limit && At(m_source) != '\r' && At(m_source) != '\n') {
      name.push_back(At(m_source));
      ++m_source;
      ++m_i;
      --m_length;
    }
    const std::string* const content = m_attachments(name.substr(0, name.find('\0')));
    if (content != nullptr && m_length + static_cast<int64_t>(content->size()) < m_capacity) {
      const std::string text = isEncoded ? Encode(*content) : *content;
      const auto size = static_cast<int64_t>(text.size());
      if (!isEncoded || (size <= m_capacity - m_limit - 1 && m_length + size < m_capacity)) {
        for (const char c : text) {
          Put(c);
          ++m_to;
        }
        m_length += size;
      }
    }
    --m_to;  // may pass the beginning; the caller moves on
  }

  std::string_view m_file;
  int64_t m_begin;
  int64_t m_source;
  int64_t m_capacity;
  int64_t m_limit;
  int64_t m_length;
  PlainAttachments m_attachments;
  std::string m_out;
  size_t m_to = 0;
  int64_t m_i = 0;
};

// An entry of Folders.imm: parent, index, label, file name.
struct PlainFolder {
  std::string parent;
  uint32_t index = 0;
  std::string label;
  std::string fileName;

  friend bool operator==(const PlainFolder&, const PlainFolder&) = default;
};

// Reads Folders.imm with recursion. Ids are the 16 bytes, and texts stay narrow. Stops for good,
// with `isTooLong` set, after so many entries.
class PlainFolderReader {
 public:
  PlainFolderReader(std::string_view file, int mostEntries)
      : m_file(file), m_size(static_cast<int64_t>(file.size())), m_left(mostEntries) {}

  std::map<std::string, PlainFolder> folders;  // without the root, which is the parent ""
  bool isTooLong = false;

  void Read() {
    m_cursor = 58;
    for (uint32_t index = 0; m_cursor < m_size && TakeEntry(); ++index) {
      const std::string id = Guid();
      const std::string label = Text();
      const std::string name = Text();
      if (id.empty() || label.empty() || name.empty()) {
        return;
      }
      m_cursor += 8;
      if (m_cursor >= m_size) {
        return;
      }
      const int64_t c = m_cursor;
      if (c + 12 >= m_size && c + 8 != m_size) {
        return;
      }
      m_cursor = c + 12;
      folders[id] = {"", index, label, name};
      for (int child = 0; child < Signed(c); ++child) {
        if (!ReadChild(id, static_cast<uint32_t>(child))) {
          break;
        }
      }
    }
  }

 private:
  bool TakeEntry() {
    isTooLong = isTooLong || m_left-- <= 0;
    return !isTooLong;
  }
  [[nodiscard]] uint8_t At(int64_t place) const {
    return place < m_size ? static_cast<uint8_t>(m_file[static_cast<size_t>(place)]) : 0;
  }
  [[nodiscard]] int Signed(int64_t place) const { return static_cast<int8_t>(At(place)); }

  std::string Guid() {
    if (m_cursor + 16 > m_size) {
      m_cursor = m_size;
      return {};
    }
    m_cursor += 16;
    return std::string(m_file.substr(static_cast<size_t>(m_cursor - 16), 16));
  }

  std::string Text() {
    if (m_cursor + 4 > m_size) {
      m_cursor = m_size;
      return {};
    }
    const int64_t count = At(m_cursor) + At(m_cursor + 1) * 256LL + At(m_cursor + 2) * 65536LL +
                          At(m_cursor + 3) * 16777216LL;
    m_cursor += 4;
    if (m_cursor + 2 * count > m_size) {
      m_cursor = m_size;
      return {};
    }
    std::string text;
    for (int64_t end = m_cursor + 2 * count; m_cursor < end; ++m_cursor) {
      if (At(m_cursor) != 0) {
        text.push_back(static_cast<char>(At(m_cursor)));
      }
    }
    return text;
  }

  bool ReadChild(const std::string& parent, uint32_t index) {
    if (m_cursor >= m_size || !TakeEntry()) {
      return false;
    }
    const std::string id = Guid();
    const std::string label = Text();
    if (id.empty() || label.empty()) {
      return false;
    }
    if (m_cursor + 4 > m_size) {
      m_cursor = m_size;
      return false;
    }
    int length = 0;
    for (int i = 0; i < 4; ++i) {
      length = At(m_cursor + i) != 0 ? Signed(m_cursor + i) : length;
    }
    m_cursor += 4;
    const int64_t p = m_cursor + 8 + 2LL * length;
    if (p < 0 || p >= m_size) {
      m_cursor = m_size;
      return false;
    }
    m_cursor = p;
    if (p + 12 >= m_size && p + 8 != m_size) {
      return false;
    }
    m_cursor = p + 12;
    folders[id] = {parent, index, label, label};
    for (int child = 0; child < Signed(p); ++child) {
      if (!ReadChild(id, static_cast<uint32_t>(child))) {
        return false;
      }
    }
    return true;
  }

  std::string_view m_file;
  int64_t m_size;
  int64_t m_left;
  int64_t m_cursor = 0;
};

}  // namespace postmarker::test
