#include "clients/incredimail/ImHeaderFile.h"

#include <utility>

#include "clients/incredimail/ImFieldReader.h"
#include "support/MappedFile.h"

namespace postmarker {
namespace {

constexpr uint64_t kFirstRecord = 12;
constexpr uint64_t kKindSize = 10;  // with what follows it unread
constexpr uint64_t kIdSize = 16;
constexpr uint64_t kBehindTexts = 12;
constexpr uint64_t kNoAccountSize = 4;
constexpr uint64_t kBehindAccount = 6;
constexpr uint64_t kSizeSize = 4;
constexpr uint64_t kPositionToNext = 20;

enum Kind : int8_t { kUsable = 1, kPassedOver = 2 };

bool IsLetter(uint8_t byte) {
  return (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');
}

class HeaderFileReader {
 public:
  explicit HeaderFileReader(std::string_view bytes) : m_fields(bytes, kFirstRecord) {}

  // Reads one record; false at the end.
  bool ReadRecord(ImHeader* header) {
    if (m_fields.IsAtEnd()) {
      return false;
    }
    TakeKind(m_fields.SignedByteAt(m_fields.Cursor()));
    m_fields.Advance(kKindSize);
    return !m_fields.IsAtEnd() && ReadTexts(header) && ReadPlace(header);
  }

  // Does the record read last count.
  [[nodiscard]] bool IsUsable() const { return !m_passesOver; }

 private:
  void TakeKind(int8_t kind) {
    if (kind == kUsable) {
      m_passesOver = false;
    } else if (kind == kPassedOver) {
      m_passesOver = true;
    }
  }

  std::wstring ReadText() {
    if (m_passesOver) {
      m_fields.SkipText();
      return {};
    }
    return m_fields.ReadText();
  }

  bool ReadTexts(ImHeader* header) {
    if (m_passesOver) {
      m_fields.Advance(kIdSize);
    } else {
      header->HeaderID = m_fields.ReadGuid();
    }
    header->ToSender = ReadText();
    header->FromSender = ReadText();
    header->Subject = ReadText();
    m_fields.Advance(kBehindTexts);
    if (m_fields.Cursor() + kNoAccountSize >= m_fields.Size()) {
      return false;
    }
    if (IsLetter(m_fields.ByteAt(m_fields.Cursor() + kNoAccountSize))) {
      header->Account = ReadText();
    } else {
      m_fields.Advance(kNoAccountSize);
    }
    m_fields.Advance(kBehindAccount);
    return true;
  }

  bool ReadPlace(ImHeader* header) {
    header->MsgSize = m_fields.DwordAt(m_fields.Cursor());
    header->LightMsgSize = header->MsgSize;
    m_fields.Advance(kSizeSize);
    header->MsgPos = m_fields.DwordAt(m_fields.Cursor());
    if (m_fields.IsAtEnd()) {
      return false;
    }
    m_fields.Advance(kPositionToNext);
    return true;
  }

  ImFieldReader m_fields;
  bool m_passesOver = false;
};

}  // namespace

void ParseHeaderFile(std::string_view bytes, const std::wstring& storeDirectory,
                     const std::wstring& fileName, PacedStop* stop, ImHeaderMap* headers) {
  HeaderFileReader reader(bytes);
  ImHeader header;
  while (reader.ReadRecord(&header)) {
    if (reader.IsUsable()) {
      header.StorePath = storeDirectory;
      header.FileName = fileName;
      std::wstring id = header.HeaderID;
      headers->insert_or_assign(std::move(id), std::move(header));
    }
    header = {};
    if (stop->LookAfterStep()) {
      return;
    }
  }
}

ResultCode ReadHeaderFile(const std::wstring& path, const std::wstring& storeDirectory,
                          const std::wstring& fileName, PacedStop* stop, ImHeaderMap* headers) {
  const MappedFile file(path, 1);
  if (Succeeded(file.Status())) {
    ParseHeaderFile(file.Bytes(), storeDirectory, fileName, stop, headers);
  }
  return file.Status();
}

}  // namespace postmarker
