// Writes JSON documents: ASCII only, without white space outside texts.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace postmarker::inspect {

// Takes a piece of what the tool says.
using Print = std::function<void(std::string_view text)>;

// Puts commas where they belong. The caller opens and closes objects and arrays in pairs, and
// writes a key before each value in an object. Documents go out in pieces while they are
// written: one may be much larger than what it tells of.
class JsonWriter {
 public:
  // REQUIRES: `print` outlives the writer.
  explicit JsonWriter(const Print& print) : m_print(print) {}

  JsonWriter& BeginObject() { return Open('{'); }
  JsonWriter& EndObject() { return Close('}'); }
  JsonWriter& BeginArray() { return Open('['); }
  JsonWriter& EndArray() { return Close(']'); }

  // The key of the next value; bytes as for Narrow.
  JsonWriter& Key(std::string_view key);
  // The same, UTF-16 units.
  JsonWriter& WideKey(std::wstring_view key);

  // Bytes: byte b becomes the character U+00bb.
  JsonWriter& Narrow(std::string_view bytes);

  // UTF-16 units.
  JsonWriter& Wide(std::wstring_view units);

  JsonWriter& Number(int64_t value);
  JsonWriter& Bool(bool value);

  // Ends the document with a line end and prints what is left of it. Another one may follow.
  void EndDocument();

 private:
  JsonWriter& Open(char bracket);
  JsonWriter& Close(char bracket);
  void Separate();
  void PrintIfFull();
  void PutUnit(uint32_t unit);
  void PutBytes(std::string_view bytes);

  const Print& m_print;
  std::string m_text;  // not printed so far
  bool m_needsComma = false;
};

}  // namespace postmarker::inspect
