#include "clients/incredimail/ImSentMail.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <new>
#include <optional>

#include "analysis/features/KsMailTokenizer.h"
#include "analysis/headers/AddressList.h"
#include "clients/incredimail/ImHeaderFile.h"
#include "clients/incredimail/ImMessageFile.h"
#include "clients/incredimail/ImPaths.h"
#include "clients/incredimail/ImSqlCursor.h"
#include "clients/incredimail/ImTemporaryFile.h"
#include "support/Ascii.h"
#include "support/MappedFile.h"
#include "support/Text.h"

namespace postmarker {
namespace {

// Sent mail lies in the root's child with the place 2.
constexpr wchar_t kReadRecipients[] =
    L"SELECT toSender FROM headers WHERE containerid LIKE (SELECT containerid FROM containers "
    L"WHERE indexinparent=2 AND parentContainerId=(SELECT containerid FROM COntainers WHERE "
    L"parentContainerId='') );";

constexpr std::string_view kCopies = "cc";

// Keeping a list costs as much as splitting it. From so many on, one in eight must have come again:
// the larger a store the more do, so the beginning shows fewer than the whole.
constexpr size_t kListsToJudge = 4096;

// What is rebuilt of one message. A header block is never so long.
constexpr uint32_t kLongestHead = 4 * 1024 * 1024;

// Takes one list of recipients, UTF-16.
using ListSink = std::function<void(const std::wstring& list)>;

class NoAttachments : public ImAttachments {
 public:
  std::optional<std::string_view> Open(std::string_view /*name*/) override { return std::nullopt; }
};

// What may still be rebuilt in one harvest.
class RebuildBudget {
 public:
  // Counts bytes out of a file of this size. False once there are too many.
  bool Spend(uint64_t bytes, uint64_t fileSize) {
    constexpr uint64_t kTimesTheFile = 4;
    constexpr uint64_t kSpare = uint64_t{16} * 1024 * 1024;
    m_spent += bytes;
    return m_spent <= kTimesTheFile * fileSize + kSpare;
  }

 private:
  uint64_t m_spent = 0;
};

// The beginning of the message, as far as its file has it.
ImMessagePlace HeadOf(const ImHeader& header, uint32_t fileSize) {
  const uint32_t left = fileSize - std::min(header.MsgPos, fileSize);
  return {std::min(header.MsgSize, kLongestHead),
          std::min({header.LightMsgSize, kLongestHead, left}), header.MsgPos};
}

ResultCode Rebuild(const MappedFile& file, const ImMessagePlace& place, ImMessage* message) {
  if (Failed(file.Status())) {
    return kFail;
  }
  try {
    NoAttachments attachments;
    *message = AssembleMessage(file.Bytes(), place, &attachments);
  } catch (const std::bad_alloc&) {
    return kFail;
  }
  return kOk;
}

// The tokenizer is made anew for each message.
void AddCopies(std::string_view mail, const ListSink& add) {
  const auto tokenizer = std::make_unique<KsMailTokenizer>();
  tokenizer->Parse(mail.data(), static_cast<uint32_t>(mail.size()), nullptr, nullptr);
  for (const auto& [name, value] : tokenizer->GetHeaders().Sorted()) {
    if (name == kCopies) {
      add(Widen(value));
    }
  }
}

ResultCode GatherFromMessage(const ImHeader& header, RebuildBudget* budget, const ListSink& add) {
  add(header.ToSender);
  ImMessage message;
  ResultCode result = kFail;
  {
    const MappedFile file(header.StorePath + header.FileName + L".imm", 1);
    const ImMessagePlace place = HeadOf(header, file.Size());
    if (Succeeded(file.Status()) && !budget->Spend(place.lightMsgSize, file.Size())) {
      return kOk;
    }
    result = Rebuild(file, place, &message);
  }
  ImTemporaryFile temporary;
  if (Succeeded(result) && temporary.Write(message.Bytes())) {
    AddCopies(temporary.Bytes(), add);
  }
  return result;
}

ResultCode GatherOlder(const std::wstring& identityDirectory, PacedStop* stop,
                       const ListSink& add) {
  ImHeaderMap headers;
  ResultCode result =
      ReadHeaderFile(SentHeadersPath(identityDirectory), MessageStoreFolder(identityDirectory),
                     kSentItems, stop, &headers);
  RebuildBudget budget;
  for (auto next = headers.begin(); next != headers.end() && !stop->IsStopped();) {
    result = GatherFromMessage(next->second, &budget, add);
    if (++next != headers.end()) {
      (void)stop->Look();
    }
  }
  return result;
}

}  // namespace

void ImAddressCollector::AddAddresses(std::string_view recipients) {
  ForEachAddress(recipients, [this](std::string_view address) { m_addresses.Add(address); });
}

void ImAddressCollector::Add(std::wstring_view recipients) {
  AddAddresses(Narrow(recipients));
}

void ImAddressCollector::AddInLowerCase(std::wstring_view recipients) {
  if (IsAscii(recipients)) {
    AddAsciiInLowerCase(NarrowAscii(recipients));
    return;
  }
  if (IsNewList(NarrowUtf8(recipients))) {
    Add(ToLower(recipients));
  }
}

// The splitting makes ASCII letters small by itself.
void ImAddressCollector::AddAsciiInLowerCase(std::string_view recipients) {
  if (IsNewList(recipients)) {
    AddAddresses(recipients);
  }
}

bool ImAddressCollector::IsNewList(std::string_view recipients) {
  if (m_listsSeen >= kListsToJudge && (m_listsSeen - m_lists.Size()) * 8 < m_listsSeen) {
    return true;
  }
  ++m_listsSeen;
  return m_lists.Add(recipients);
}

void ImAddressCollector::AddTo(AddressSet* addresses) const {
  for (const std::string_view address : m_addresses.Sorted()) {
    addresses->emplace_hint(addresses->end(), Widen(address));
  }
}

void CollectSentOf(const std::wstring& identityDirectory, PacedStop* stop,
                   ImAddressCollector* collector) {
  const std::wstring database = ContainersDatabasePath(identityDirectory);
  if (!CanOpenForReading(database)) {
    (void)GatherOlder(identityDirectory, stop,
                      [collector](const std::wstring& list) { collector->Add(list); });
    return;
  }
  ImSqlCursor row(database, kReadRecipients, [stop] { return stop->Look(); });
  for (; row.HasRow() && !stop->IsStopped(); row.Next()) {
    if (const std::optional<std::string_view> list = row.AsciiText(0)) {
      collector->AddAsciiInLowerCase(*list);
    } else {
      collector->AddInLowerCase(row.Text(0));
    }
    (void)stop->LookAfterStep();
  }
}

ResultCode GatherOlderSentAddresses(const std::wstring& identityDirectory, PacedStop* stop,
                                    AddressSet* addresses) {
  return GatherOlder(identityDirectory, stop,
                     [addresses](const std::wstring& list) { addresses->insert(list); });
}

}  // namespace postmarker
