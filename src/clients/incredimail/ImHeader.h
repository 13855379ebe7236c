// What the client's stores tell of one message.
#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace postmarker {

// One message. Texts are UTF-16. The older store has no ContainerID, and of the numbers only those
// of the message's size and place; the others stay 0.
struct ImHeader {
  std::wstring HeaderID;     // a GUID in braces
  std::wstring ContainerID;  // of its folder
  std::wstring FileName;     // base name of the folder's files
  std::wstring StorePath;    // the folder of those files, with a separator at its end
  std::wstring FromSender;
  std::wstring ToSender;
  std::wstring Subject;
  std::wstring Account;
  int32_t ReceivedDate = 0;
  int32_t SentDate = 0;
  int32_t Unread = 0;
  int32_t Flagged = 0;
  int32_t OnlineImages = 0;
  int32_t HighlightColor = 0;
  int32_t Priority = 0;
  uint32_t MsgSize = 0;       // bytes of the message with its attachments
  uint32_t LightMsgSize = 0;  // bytes that stand in the folder's file
  uint32_t MsgPos = 0;        // where they begin
  int32_t Deleted = 0;
};

// By HeaderID, in ordinal order.
using ImHeaderMap = std::map<std::wstring, ImHeader>;

}  // namespace postmarker
