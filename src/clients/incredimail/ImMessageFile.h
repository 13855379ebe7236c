// Messages as the client keeps them: one after the other in a folder's file *.imm, and their
// attachments as files of their own, which a line in the message names.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "clients/incredimail/ImHeader.h"
#include "support/MappedFile.h"
#include "support/Results.h"

namespace postmarker {

// A whole message: `length` bytes and a NUL after them.
struct ImMessage {
  std::unique_ptr<char[]> buffer;  // null if there is no message
  uint32_t length = 0;

  [[nodiscard]] std::string_view Bytes() const { return {buffer.get(), length}; }
};

// Where a message stands in its file, see ImHeader.
struct ImMessagePlace {
  uint32_t msgSize = 0;
  uint32_t lightMsgSize = 0;
  uint32_t msgPos = 0;
};

// Where the content of attachments comes from.
class ImAttachments {
 public:
  ImAttachments() = default;
  ImAttachments(const ImAttachments&) = delete;
  ImAttachments& operator=(const ImAttachments&) = delete;
  virtual ~ImAttachments() = default;

  // The content of the attachment with this name, the bytes of its line up to the first NUL.
  // Nothing if there is none. The content lives until the next call.
  virtual std::optional<std::string_view> Open(std::string_view name) = 0;
};

// Rebuilds a message from the bytes of its folder's file. Attachments are put in the place of the
// lines that name them, in base64 where the header before the line says so, and bare line
// feeds become CR LF. What would make the message more than 4,096 bytes longer than `msgSize` is
// left out: added carriage returns, attachments, and the end of a message that is longer itself.
// May throw std::bad_alloc.
// Deliberate: a message with lines of attachments has one byte more for each of them, which is the
// byte after the message or 0. Messages are followed by a line end, and who reads mail passes over
// such a byte.
ImMessage AssembleMessage(std::string_view file, const ImMessagePlace& place,
                          ImAttachments* attachments);

// The attachments in a store's folder. A name must be one of a file directly in that folder: one
// that leads elsewhere, or to a device, names nothing. From one thread at a time.
class ImAttachmentFolder : public ImAttachments {
 public:
  // `storePath` ends in a separator.
  explicit ImAttachmentFolder(const std::wstring& storePath);

  std::optional<std::string_view> Open(std::string_view name) override;

 private:
  std::wstring m_folder;
  std::optional<MappedFile> m_file;
};

// Rebuilds the message of a header. Fails if its folder's file can't be read or if memory does not
// suffice; *message is empty then.
ResultCode AssembleMessage(const ImHeader& header, ImMessage* message);

}  // namespace postmarker
