#include "clients/incredimail/ImHeaderTable.h"

#include "clients/incredimail/ImPaths.h"
#include "clients/incredimail/ImSqlCursor.h"

namespace postmarker {
namespace {

constexpr wchar_t kReadHeader[] =
    L"SELECT h.HeaderID, h.ContainerID, c.FileName, h.FromSender, h.ToSender, h.Subject, "
    L"h.Account, h.ReceivedDate, h.SentDate, h.Unread, h.Flagged, h.OnlineImages, "
    L"h.HighlightColor, h.Priority, h.MsgSize, h.LightMsgSize, h.MsgPos, h.Deleted FROM Headers h "
    L"INNER JOIN Containers c ON h.ContainerID = c.ContainerID WHERE h.HeaderID='";

constexpr wchar_t kReadIds[] = L"SELECT HeaderID FROM Headers WHERE ContainerID='";

constexpr wchar_t kEnd[] = L"';";

// The statement's columns.
constexpr std::wstring ImHeader::*kTexts[] = {
    &ImHeader::HeaderID, &ImHeader::ContainerID, &ImHeader::FileName, &ImHeader::FromSender,
    &ImHeader::ToSender, &ImHeader::Subject,     &ImHeader::Account};
constexpr int32_t ImHeader::*kNumbers[] = {
    &ImHeader::ReceivedDate, &ImHeader::SentDate,       &ImHeader::Unread,  &ImHeader::Flagged,
    &ImHeader::OnlineImages, &ImHeader::HighlightColor, &ImHeader::Priority};
constexpr uint32_t ImHeader::*kPlaces[] = {&ImHeader::MsgSize, &ImHeader::LightMsgSize,
                                           &ImHeader::MsgPos};

}  // namespace

ResultCode ReadHeaderRow(ImHeader* header, const std::wstring& id,
                         const std::wstring& identityDirectory) {
  ImSqlCursor row(ContainersDatabasePath(identityDirectory), kReadHeader + id + kEnd);
  if (!row.HasRow()) {
    return kFail;
  }
  int column = 0;
  for (const auto text : kTexts) {
    header->*text = row.Text(column++);
  }
  for (const auto number : kNumbers) {
    header->*number = row.Integer(column++);
  }
  for (const auto place : kPlaces) {
    header->*place = static_cast<uint32_t>(row.Integer(column++));
  }
  header->Deleted = row.Integer(column);
  header->StorePath = MessageStoreFolder(identityDirectory);
  return kOk;
}

ResultCode ListContainerMessages(const std::wstring& containerId, std::set<std::wstring>* ids,
                                 const std::wstring& database) {
  ImSqlCursor row(database, kReadIds + containerId + kEnd);
  if (!row.HasRow() && !row.IsDone()) {
    return kFail;
  }
  for (; row.HasRow(); row.Next()) {
    ids->emplace(row.Text(0));
  }
  return kOk;
}

}  // namespace postmarker
