#include "clients/incredimail/ImMessageFile.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>

#include "analysis/message/Decoders.h"
#include "clients/incredimail/ImAttachmentName.h"
#include "clients/incredimail/ImPaths.h"
#include "support/Text.h"

namespace postmarker {
namespace {

constexpr std::string_view kMarker = "----------[%ImFilePath%]----------";
constexpr std::string_view kEncodingHeader = "Content-Transfer-Encoding:";
constexpr std::string_view kBase64 = "base64";
constexpr int64_t kSpareRoom = 4096;
constexpr uint32_t kMaxAddedReturns = 4096;
constexpr size_t kNone = std::string_view::npos;

// A claimed size beyond this is not believed: the buffer then grows with what really comes.
constexpr uint64_t kBelievedCapacity = uint64_t{64} * 1024 * 1024;

bool StartsWithNoCase(std::string_view text, std::string_view start) {
  return text.size() >= start.size() && EqualNoCase(text.substr(0, start.size()), start);
}

size_t FindNoCase(std::string_view text, std::string_view wanted) {
  const auto found =
      std::search(text.begin(), text.end(), wanted.begin(), wanted.end(), [](char a, char b) {
        return EqualNoCase({&a, 1}, {&b, 1});
      });
  return found == text.end() ? kNone : static_cast<size_t>(found - text.begin());
}

// Does the header of the part before a marker say base64. Only the text after the nearest
// pair of hyphens counts, which is the part's boundary.
bool IsBase64Part(std::string_view before) {
  const size_t hyphens = before.rfind("--");
  const std::string_view part = before.substr(hyphens == kNone ? 0 : hyphens);
  const size_t header = FindNoCase(part, kEncodingHeader);
  if (header == kNone || header + kEncodingHeader.size() >= part.size()) {
    return false;
  }
  std::string_view value = part.substr(header + kEncodingHeader.size());
  value.remove_prefix(std::min(value.find_first_not_of(' '), value.size()));
  return value.size() > kBase64.size() && StartsWithNoCase(value, kBase64);
}

// The next place of a byte at or after a position that only moves on.
class ForwardFinder {
 public:
  ForwardFinder(std::string_view text, char byte) : m_text(text), m_byte(byte) {}

  // The text's size if there is none.
  size_t From(size_t position) {
    if (m_next < position || !m_isValid) {
      m_next = std::min(m_text.find(m_byte, position), m_text.size());
      m_isValid = true;
    }
    return m_next;
  }

 private:
  std::string_view m_text;
  char m_byte;
  size_t m_next = 0;
  bool m_isValid = false;
};

// Takes a message up to its capacity. It counts on beyond that.
class MessageBuffer {
 public:
  MessageBuffer(uint64_t capacity, uint64_t expected) : m_capacity(capacity) {
    Allocate(capacity <= kBelievedCapacity ? capacity : std::min(capacity, expected));
  }

  // The byte written last; 0 at the beginning.
  [[nodiscard]] char Last() const { return m_last; }

  void Append(std::string_view bytes) {
    if (bytes.empty()) {
      return;
    }
    const size_t fitting = MakeRoom(bytes.size());
    std::memcpy(m_bytes.get() + m_written, bytes.data(), fitting);
    Advance(bytes.size(), bytes.back());
  }

  void AppendZeros(uint64_t count) {
    const size_t fitting = MakeRoom(count);
    std::memset(m_bytes.get() + m_written, 0, fitting);
    Advance(count, '\0');
  }

  void AppendBase64(std::string_view content, uint64_t encodedLength) {
    const size_t fitting = MakeRoom(encodedLength);
    EncodeBase64(content, m_bytes.get() + m_written, fitting, false);
    Advance(encodedLength, '=');
  }

  ImMessage Take(int64_t length) {
    ImMessage message;
    message.length =
        static_cast<uint32_t>(std::clamp<int64_t>(length, 0, static_cast<int64_t>(m_capacity)));
    m_bytes[message.length] = '\0';
    message.buffer = std::move(m_bytes);
    return message;
  }

 private:
  void Allocate(uint64_t room) {
    if (room >= std::numeric_limits<size_t>::max()) {
      throw std::bad_alloc();
    }
    auto bytes = std::make_unique_for_overwrite<char[]>(static_cast<size_t>(room) + 1);
    if (m_bytes) {
      std::memcpy(bytes.get(), m_bytes.get(), m_written);
    }
    m_bytes = std::move(bytes);
    m_room = room;
  }

  // How many of so many further bytes may be written.
  size_t MakeRoom(uint64_t count) {
    const uint64_t wanted = std::min(m_capacity, m_position + count);
    if (wanted > m_room) {
      Allocate(std::min(m_capacity, std::max(wanted, 2 * m_room)));
    }
    return static_cast<size_t>(wanted - m_written);
  }

  void Advance(uint64_t count, char last) {
    m_position += count;
    m_written = static_cast<size_t>(std::min(m_capacity, m_position));
    m_last = last;
  }

  uint64_t m_capacity;
  uint64_t m_room = 0;
  uint64_t m_position = 0;
  size_t m_written = 0;
  char m_last = '\0';
  std::unique_ptr<char[]> m_bytes;
};

int64_t CapacityOf(const ImMessagePlace& place) {
  // One below the most that the length can tell of.
  return std::min<int64_t>(place.msgSize + kSpareRoom, std::numeric_limits<uint32_t>::max() - 1);
}

int64_t LimitOf(std::string_view file, const ImMessagePlace& place) {
  const int64_t left = static_cast<int64_t>(file.size()) - place.msgPos;
  return std::clamp<int64_t>(left, 0, place.lightMsgSize);
}

// The positions are counted as the client counts them: a marker does not count as read, so the
// source is ahead by a marker's length for each.
class MessageAssembler {
 public:
  MessageAssembler(std::string_view file, const ImMessagePlace& place, ImAttachments* attachments)
      : m_source(file.substr(std::min<size_t>(place.msgPos, file.size()))),
        m_capacity(CapacityOf(place)),
        m_limit(LimitOf(file, place)),
        m_length(m_limit),
        m_attachments(attachments),
        m_lineFeeds(m_source, '\n'),
        m_hyphens(m_source, '-'),
        m_out(static_cast<uint64_t>(m_capacity), static_cast<uint64_t>(m_limit + kSpareRoom)) {}

  ImMessage Assemble() {
    while (m_read < m_limit) {
      if (m_position >= m_source.size()) {
        // Behind the file's end come zeros.
        m_out.AppendZeros(static_cast<uint64_t>(m_limit - m_read));
        break;
      }
      const char c = m_source[m_position];
      if (c == '\n' && m_addedReturns < kMaxAddedReturns) {
        CopyLineFeed();
      } else if (c == '-' && IsAtMarker()) {
        TakeAttachment();
      } else {
        CopyRun();
      }
    }
    return m_out.Take(m_length);
  }

 private:
  // Copies a byte and what follows up to the next hyphen or line feed to look at.
  void CopyRun() {
    size_t end = m_hyphens.From(m_position + 1);
    if (m_addedReturns < kMaxAddedReturns) {
      const size_t lineFeed = m_lineFeeds.From(m_position + 1);
      // Most line feeds have their carriage return.
      end = std::min(end, m_source[lineFeed - 1] == '\r' ? lineFeed + 1 : lineFeed);
      end = std::min(end, m_source.size());
    }
    Copy(std::min(end - m_position, static_cast<size_t>(m_limit - m_read)));
  }

  void Copy(size_t count) {
    m_out.Append(m_source.substr(m_position, count));
    m_position += count;
    m_read += static_cast<int64_t>(count);
  }

  void CopyLineFeed() {
    const bool isBare = m_read != 0 && m_out.Last() != '\r';
    if (isBare) {
      m_out.Append("\r");
      ++m_length;
      ++m_addedReturns;
    }
    Copy(1);
  }

  [[nodiscard]] bool IsAtMarker() const {
    constexpr auto kSize = static_cast<int64_t>(kMarker.size());
    return m_read + kSize < m_limit && StartsWithNoCase(m_source.substr(m_position), kMarker);
  }

  void TakeAttachment() {
    const bool isEncoded = IsBase64Part(m_source.substr(0, m_position));
    m_length -= static_cast<int64_t>(kMarker.size());
    m_position += kMarker.size();
    const std::string_view name = TakeName();
    if (const std::optional<std::string_view> content = m_attachments->Open(name)) {
      Insert(*content, isEncoded);
    }
    // The line end's first byte goes with the name.
    ++m_position;
    ++m_read;
  }

  // The rest of the line, as far as it is one.
  std::string_view TakeName() {
    const auto most = static_cast<size_t>(m_limit - m_read);
    const std::string_view rest =
        m_source.substr(std::min(m_position, m_source.size())).substr(0, most);
    const size_t length = std::min(rest.find_first_of("\r\n"), most);
    m_position += length;
    m_read += static_cast<int64_t>(length);
    m_length -= static_cast<int64_t>(length);
    const std::string_view name = rest.substr(0, length);
    return name.substr(0, name.find('\0'));
  }

  void Insert(std::string_view content, bool isEncoded) {
    auto size = static_cast<int64_t>(content.size());
    if (m_length + size >= m_capacity) {
      return;
    }
    if (isEncoded) {
      size = (size + 2) / 3 * 4;
      if (size > m_capacity - m_limit - 1 || m_length + size >= m_capacity) {
        return;
      }
      m_out.AppendBase64(content, static_cast<uint64_t>(size));
    } else {
      m_out.Append(content);
    }
    m_length += size;
  }

  std::string_view m_source;  // from the message on
  int64_t m_capacity;
  int64_t m_limit;
  int64_t m_length;  // that the message will have
  ImAttachments* m_attachments;
  ForwardFinder m_lineFeeds;
  ForwardFinder m_hyphens;
  MessageBuffer m_out;
  size_t m_position = 0;  // in the source
  int64_t m_read = 0;     // bytes of the message that count as read
  uint32_t m_addedReturns = 0;
};

}  // namespace

ImMessage AssembleMessage(std::string_view file, const ImMessagePlace& place,
                          ImAttachments* attachments) {
  return MessageAssembler(file, place, attachments).Assemble();
}

ImAttachmentFolder::ImAttachmentFolder(const std::wstring& storePath)
    : m_folder(AttachmentsFolder(storePath)) {}

std::optional<std::string_view> ImAttachmentFolder::Open(std::string_view name) {
  m_file.reset();
  if (!IsAttachmentName(name)) {
    return std::nullopt;
  }
  m_file.emplace(m_folder + Widen(name), uint8_t{1});
  return Succeeded(m_file->Status()) ? std::optional(m_file->Bytes()) : std::nullopt;
}

ResultCode AssembleMessage(const ImHeader& header, ImMessage* message) {
  *message = {};
  const MappedFile file(header.StorePath + header.FileName + L".imm", 1);
  if (Failed(file.Status())) {
    return kFail;
  }
  try {
    ImAttachmentFolder attachments(header.StorePath);
    *message = AssembleMessage(file.Bytes(), {header.MsgSize, header.LightMsgSize, header.MsgPos},
                               &attachments);
  } catch (const std::bad_alloc&) {
    return kFail;
  }
  return kOk;
}

}  // namespace postmarker
