// Writes one JSON document: ASCII only, without white space outside texts.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace postmarker::inspect {

// Puts commas where they belong. The caller opens and closes objects and arrays in pairs, and
// writes a key in front of each value in an object.
class JsonWriter {
 public:
  JsonWriter& BeginObject() { return Open('{'); }
  JsonWriter& EndObject() { return Close('}'); }
  JsonWriter& BeginArray() { return Open('['); }
  JsonWriter& EndArray() { return Close(']'); }

  // The key of the next value; bytes as for Narrow.
  JsonWriter& Key(std::string_view key);

  // Bytes: byte b becomes the character U+00bb.
  JsonWriter& Narrow(std::string_view bytes);

  // UTF-16 units.
  JsonWriter& Wide(std::wstring_view units);

  JsonWriter& Number(int64_t value);
  JsonWriter& Bool(bool value);

  // What was written. The writer is empty afterwards.
  std::string Take();

 private:
  JsonWriter& Open(char bracket);
  JsonWriter& Close(char bracket);
  void Separate();
  void PutUnit(uint32_t unit);
  void PutBytes(std::string_view bytes);

  std::string m_text;
  bool m_needsComma = false;
};

}  // namespace postmarker::inspect
