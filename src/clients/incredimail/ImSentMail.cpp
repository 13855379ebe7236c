#include "clients/incredimail/ImSentMail.h"

#include <memory>
#include <optional>

#include "analysis/AddressList.h"
#include "analysis/KsMailTokenizer.h"
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

// Adds the copies that the message in a file names. The tokenizer is made anew for each message.
void AddCopies(const std::wstring& path, AddressSet* addresses) {
  const auto tokenizer = std::make_unique<KsMailTokenizer>();
  tokenizer->Parse(path.c_str(), nullptr, nullptr);
  for (const auto& [name, value] : tokenizer->GetHeaders().Sorted()) {
    if (name == kCopies) {
      addresses->insert(Widen(value));
    }
  }
}

ResultCode GatherFromMessage(const ImHeader& header, AddressSet* addresses) {
  addresses->insert(header.ToSender);
  ImMessage message;
  const ResultCode result = AssembleMessage(header, &message);
  const std::wstring path = MakeTemporaryFile();
  if (Succeeded(result) && !path.empty() && WriteTemporaryFile(path, message.Bytes())) {
    AddCopies(path, addresses);
    DeleteTemporaryFile(path);
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

void CollectSentOf(const std::wstring& identityDirectory, ImAddressCollector* collector) {
  const std::wstring database = ContainersDatabasePath(identityDirectory);
  if (CanOpenForReading(database)) {
    for (ImSqlCursor row(database, kReadRecipients); row.HasRow(); row.Next()) {
      if (const std::optional<std::string_view> list = row.AsciiText(0)) {
        collector->AddAsciiInLowerCase(*list);
      } else {
        collector->AddInLowerCase(row.Text(0));
      }
    }
    return;
  }
  AddressSet recipients;
  GatherOlderSentAddresses(identityDirectory, &recipients);
  for (const std::wstring& list : recipients) {
    collector->Add(list);
  }
}

ResultCode GatherOlderSentAddresses(const std::wstring& identityDirectory, AddressSet* addresses) {
  ImHeaderMap headers;
  ResultCode result = ReadHeaderFile(&headers, SentHeadersPath(identityDirectory),
                                     MessageStoreFolder(identityDirectory), kSentItems);
  for (const auto& [id, header] : headers) {
    result = GatherFromMessage(header, addresses);
  }
  return result;
}

}  // namespace postmarker
