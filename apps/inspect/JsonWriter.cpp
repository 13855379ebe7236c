#include "JsonWriter.h"

#include <algorithm>

namespace postmarker::inspect {
namespace {

constexpr size_t kPiece = 32768;  // bytes that are printed at a time, about

}  // namespace

void JsonWriter::Separate() {
  if (m_needsComma) {
    m_text.push_back(',');
  }
  m_needsComma = true;
  PrintIfFull();
}

void JsonWriter::PrintIfFull() {
  if (m_text.size() >= kPiece) {
    m_print(m_text);
    m_text.clear();
  }
}

JsonWriter& JsonWriter::Open(char bracket) {
  Separate();
  m_text.push_back(bracket);
  m_needsComma = false;
  return *this;
}

JsonWriter& JsonWriter::Close(char bracket) {
  m_text.push_back(bracket);
  m_needsComma = true;
  return *this;
}

void JsonWriter::PutUnit(uint32_t unit) {
  if (unit == '"' || unit == '\\') {
    m_text.push_back('\\');
    m_text.push_back(static_cast<char>(unit));
  } else if (unit >= 0x20 && unit < 0x7F) {
    m_text.push_back(static_cast<char>(unit));
  } else {
    constexpr char kDigits[] = "0123456789abcdef";
    m_text.append("\\u");
    for (int shift = 12; shift >= 0; shift -= 4) {
      m_text.push_back(kDigits[unit >> shift & 0xF]);
    }
  }
}

void JsonWriter::PutBytes(std::string_view bytes) {
  m_text.push_back('"');
  for (; !bytes.empty(); bytes.remove_prefix(std::min(bytes.size(), kPiece))) {
    for (const char c : bytes.substr(0, kPiece)) {
      PutUnit(static_cast<unsigned char>(c));
    }
    PrintIfFull();
  }
  m_text.push_back('"');
}

JsonWriter& JsonWriter::Key(std::string_view key) {
  Separate();
  PutBytes(key);
  m_text.push_back(':');
  m_needsComma = false;
  return *this;
}

JsonWriter& JsonWriter::WideKey(std::wstring_view key) {
  Wide(key);
  m_text.push_back(':');
  m_needsComma = false;
  return *this;
}

JsonWriter& JsonWriter::Narrow(std::string_view bytes) {
  Separate();
  PutBytes(bytes);
  return *this;
}

JsonWriter& JsonWriter::Wide(std::wstring_view units) {
  Separate();
  m_text.push_back('"');
  for (const wchar_t unit : units) {
    PutUnit(static_cast<uint16_t>(unit));
  }
  m_text.push_back('"');
  return *this;
}

JsonWriter& JsonWriter::Number(int64_t value) {
  Separate();
  m_text.append(std::to_string(value));
  return *this;
}

JsonWriter& JsonWriter::Bool(bool value) {
  Separate();
  m_text.append(value ? "true" : "false");
  return *this;
}

void JsonWriter::EndDocument() {
  m_needsComma = false;
  m_text.push_back('\n');
  m_print(m_text);
  m_text.clear();
}

}  // namespace postmarker::inspect
