// The files of IncrediMail's older stores, made in tests from a description: bytes out, to be
// written or to be harmed. What readers do not look at is filled with a byte that would be seen.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "support/TempFolder.h"

namespace postmarker::test {

inline constexpr char kUnread = '\xA5';

// Puts fields one after the other.
class ImBytes {
 public:
  ImBytes& Byte(int value) {
    m_bytes.push_back(static_cast<char>(value));
    return *this;
  }
  ImBytes& Unread(size_t count) {
    m_bytes.append(count, kUnread);
    return *this;
  }
  ImBytes& Raw(std::string_view bytes) {
    m_bytes.append(bytes);
    return *this;
  }
  ImBytes& Dword(uint32_t value) {
    for (int shift = 0; shift < 32; shift += 8) {
      Byte(static_cast<int>(value >> shift & 0xFF));
    }
    return *this;
  }
  // UTF-16 units.
  ImBytes& Units(std::wstring_view text) {
    for (const wchar_t unit : text) {
      Byte(static_cast<int>(unit & 0xFF));
      Byte(static_cast<int>(unit >> 8 & 0xFF));
    }
    return *this;
  }
  // Behind its length.
  ImBytes& Text(std::wstring_view text) {
    return Dword(static_cast<uint32_t>(text.size())).Units(text);
  }
  // The bytes of ImGuid(number).
  ImBytes& Guid(uint32_t number) {
    Raw(std::string_view("\0\0\0\0\0\0\0\x40\x80\0\0\0", 12));
    for (int shift = 24; shift >= 0; shift -= 8) {
      Byte(static_cast<int>(number >> shift & 0xFF));
    }
    return *this;
  }
  // Any id, from its text in braces.
  ImBytes& Guid(std::wstring_view text) {
    static constexpr size_t kDigits[] = {7,  5,  3,  1,  12, 10, 17, 15,
                                         20, 22, 25, 27, 29, 31, 33, 35};
    for (const size_t place : kDigits) {
      Byte(std::stoi(std::wstring(text.substr(place, 2)), nullptr, 16));
    }
    return *this;
  }

  [[nodiscard]] const std::string& Bytes() const { return m_bytes; }

 private:
  std::string m_bytes;
};

// A folder of Folders.imm with the folders in it.
struct ImEntry {
  std::wstring id;
  std::wstring label;
  std::wstring fileName;
  std::vector<ImEntry> children = {};
};

// One entry without its children's.
inline ImBytes& PutImEntry(ImBytes* out, std::wstring_view id, std::wstring_view label,
                           std::wstring_view fileName, int children) {
  return out->Guid(id).Text(label).Text(fileName).Unread(8).Byte(children).Unread(11);
}

inline ImBytes ImFolderFileHead() {
  return ImBytes().Unread(58);
}

// The client ends the file ahead of the last entry's last four bytes.
inline std::string ImFolderFileOf(const ImBytes& entries) {
  const std::string& bytes = entries.Bytes();
  return bytes.size() > 58 ? bytes.substr(0, bytes.size() - 4) : bytes;
}

inline void PutImTree(ImBytes* out, const ImEntry& entry) {
  PutImEntry(out, entry.id, entry.label, entry.fileName, static_cast<int>(entry.children.size()));
  for (const ImEntry& child : entry.children) {
    PutImTree(out, child);
  }
}

// The whole file.
inline std::string MakeImFolderFile(const std::vector<ImEntry>& entries) {
  ImBytes out = ImFolderFileHead();
  for (const ImEntry& entry : entries) {
    PutImTree(&out, entry);
  }
  return ImFolderFileOf(out);
}

// A record of an .imh file.
struct ImRecord {
  uint32_t id = 1;  // of ImGuid
  std::wstring to;
  std::wstring from;
  std::wstring subject;
  std::optional<std::wstring> account = {};
  uint32_t size = 0;
  uint32_t position = 0;
  int kind = 1;
};

inline void PutImRecord(ImBytes* out, const ImRecord& record) {
  out->Byte(record.kind).Unread(9).Guid(record.id);
  out->Text(record.to).Text(record.from).Text(record.subject).Unread(12);
  if (record.account) {
    out->Text(*record.account);
  } else {
    out->Unread(4);
  }
  out->Unread(6).Dword(record.size).Dword(record.position).Unread(16);
}

inline std::string MakeImHeaderFile(const std::vector<ImRecord>& records) {
  ImBytes out;
  out.Unread(12);
  for (const ImRecord& record : records) {
    PutImRecord(&out, record);
  }
  return out.Bytes();
}

// Can the client's readers read the number back: they stop at the first zero byte.
inline bool IsReadableImNumber(size_t number) {
  for (; number > 0xFF; number >>= 8) {
    if ((number & 0xFF) == 0) {
      return false;
    }
  }
  return true;
}

inline constexpr char kImMarker[] = "----------[%ImFilePath%]----------";

// An .imm file with the records of its messages.
class ImMessages {
 public:
  // Appends a message, and notes its size and place in the record. Blanks go between and after
  // messages where a number could not be read back otherwise.
  void Add(ImRecord record, std::string message) {
    while (!IsReadableImNumber(m_bytes.size())) {
      m_bytes.push_back(' ');
    }
    while (!IsReadableImNumber(message.size())) {
      message.push_back(' ');
    }
    record.position = static_cast<uint32_t>(m_bytes.size());
    record.size = static_cast<uint32_t>(message.size());
    m_bytes += message;
    m_records.push_back(std::move(record));
  }

  [[nodiscard]] const std::string& Bytes() const { return m_bytes; }
  [[nodiscard]] const std::vector<ImRecord>& Records() const { return m_records; }

 private:
  std::string m_bytes;
  std::vector<ImRecord> m_records;
};

// An address book of the older client: one slot for each entry.
inline std::string MakeImAddressFile(const std::vector<std::wstring>& entries) {
  constexpr size_t kFirst = 470;
  constexpr size_t kSlot = 4916;
  std::string bytes(kFirst, kUnread);
  for (size_t i = 0; i < entries.size(); ++i) {
    bytes.resize(kFirst + i * kSlot, kUnread);
    bytes += ImBytes().Units(entries[i]).Units(std::wstring_view(L"\0", 1)).Bytes();
  }
  return bytes;
}

// The folders of one identity on disk, in the platform's form of paths.
class ImIdentityFolder {
 public:
  explicit ImIdentityFolder(std::filesystem::path path) : m_path(std::move(path)) {
    std::filesystem::create_directories(m_path / "Message Store" / "Attachments");
    std::filesystem::create_directories(m_path / "AddressBook");
  }

  // As the readers take it.
  [[nodiscard]] std::wstring Directory() const { return TempFolder::Wide(m_path); }

  [[nodiscard]] std::wstring StoreFile(const std::string& name) const {
    return TempFolder::Wide(m_path / "Message Store" / name);
  }
  [[nodiscard]] std::wstring Attachment(const std::string& name) const {
    return TempFolder::Wide(m_path / "Message Store" / "Attachments" / name);
  }
  [[nodiscard]] std::wstring AddressFile(const std::string& name) const {
    return TempFolder::Wide(m_path / "AddressBook" / name);
  }

  // "Message Store" with a separator at its end.
  [[nodiscard]] std::wstring StorePath() const {
    return TempFolder::Wide(m_path / "Message Store" / "");
  }

  void WriteFolders(const std::vector<ImEntry>& entries) const {
    WriteFile(StoreFile("Folders.imm"), MakeImFolderFile(entries));
  }
  void WriteMessages(const std::string& name, const ImMessages& messages) const {
    WriteFile(StoreFile(name + ".imh"), MakeImHeaderFile(messages.Records()));
    WriteFile(StoreFile(name + ".imm"), messages.Bytes());
  }

 private:
  std::filesystem::path m_path;
};

}  // namespace postmarker::test
