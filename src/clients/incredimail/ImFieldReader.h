// The fields of the client's own files: little-endian numbers, texts with a length in front, ids.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace postmarker {

// Walks over the bytes of a file. The cursor may be moved beyond the end; there every byte is 0.
// The bytes must outlive the reader. From one thread at a time.
class ImFieldReader {
 public:
  ImFieldReader(std::string_view bytes, uint64_t cursor) : m_bytes(bytes), m_cursor(cursor) {}

  [[nodiscard]] uint64_t Size() const { return m_bytes.size(); }
  [[nodiscard]] uint64_t Cursor() const { return m_cursor; }
  [[nodiscard]] bool IsAtEnd() const { return m_cursor >= Size(); }
  void MoveTo(uint64_t offset) { m_cursor = offset; }
  void MoveToEnd() { m_cursor = Size(); }
  void Advance(uint64_t count) { m_cursor += count; }

  // Are so many bytes left.
  [[nodiscard]] bool Has(uint64_t count) const { return m_cursor + count <= Size(); }

  // An id of 16 bytes as text, in braces and capitals. Empty, with the cursor at the end, if they
  // are not all there.
  std::wstring ReadGuid();

  // A text after its length in UTF-16 units. Empty, with the cursor at the end, if it is not all
  // there.
  // Deliberate: the text's non-zero bytes are taken one by one and widened. That is right for Latin
  // texts, and turns others into the same odd names that the client itself shows for such files.
  std::wstring ReadText();

  // Passes over a text; its length is believed, wherever that leads.
  void SkipText();

  // Reads four bytes as a length.
  // Deliberate: it is the last one that is not 0, signed. A name of 128 units or more leads back.
  int32_t ReadShortLength();

  [[nodiscard]] uint8_t ByteAt(uint64_t offset) const {
    return offset < Size() ? static_cast<uint8_t>(m_bytes[static_cast<size_t>(offset)]) : 0;
  }
  [[nodiscard]] int8_t SignedByteAt(uint64_t offset) const {
    return static_cast<int8_t>(ByteAt(offset));
  }

  // A number of up to four bytes.
  // Deliberate: the first zero byte within the file ends it, so 0x00010200 is 0. That is how the
  // sizes and positions of messages are stored: none of them has such a byte in its middle.
  [[nodiscard]] uint32_t DwordAt(uint64_t offset) const;

 private:
  uint32_t ReadCount();

  std::string_view m_bytes;
  uint64_t m_cursor;
};

}  // namespace postmarker
