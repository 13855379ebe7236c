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

// More lists than most people have written. A long one is rare, and splitting it takes longer than
// finding it would.
constexpr size_t kRecentLists = 16384;
constexpr size_t kMaxRecentListBytes = 512;

// Addresses of this size are sorted before there are more, so that a store that repeats itself
// takes no memory. Few stores have as many.
constexpr size_t kBytesToSort = size_t{16} * 1024 * 1024;
constexpr size_t kViewBytes = sizeof(std::string_view);

// What is rebuilt of one message. A header block is never so long.
constexpr uint32_t kMaxHeadBytes = 4 * 1024 * 1024;

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
  return {std::min(header.MsgSize, kMaxHeadBytes),
          std::min({header.LightMsgSize, kMaxHeadBytes, left}), header.MsgPos};
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

// Each message gets a new tokenizer.
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

std::string_view CopyTo(std::pmr::memory_resource* memory, std::string_view text) {
  if (text.empty()) {
    return {};
  }
  char* const copy = static_cast<char*>(memory->allocate(text.size(), alignof(char)));
  std::copy(text.begin(), text.end(), copy);
  return {copy, text.size()};
}

}  // namespace

ImAddressCollector::ImAddressCollector()
    : m_recentLists(kRecentLists),
      m_texts(std::make_unique<std::pmr::monotonic_buffer_resource>()),
      m_bytesToSort(kBytesToSort) {}

void ImAddressCollector::Add(std::wstring_view recipients) {
  AddList(Narrow(recipients));
}

void ImAddressCollector::AddInLowerCase(std::wstring_view recipients) {
  AddList(Narrow(ToLower(recipients)));
}

// The splitting makes ASCII letters small by itself.
void ImAddressCollector::AddAsciiInLowerCase(std::string_view recipients) {
  AddList(recipients);
}

void ImAddressCollector::AddList(std::string_view recipients) {
  if (IsRecent(recipients)) {
    return;
  }
  ForEachAddress(recipients, [this](std::string_view address) {
    m_addresses.push_back(CopyTo(m_texts.get(), address));
    m_bytes += kViewBytes + address.size();
  });
  if (m_bytes >= m_bytesToSort) {
    DropRepeats();
  }
}

// No texts make this slow: lists that share a place are split, which costs the same each time. So
// the hash needs no secret.
bool ImAddressCollector::IsRecent(std::string_view recipients) {
  if (recipients.size() > kMaxRecentListBytes) {
    return false;
  }
  const size_t hash = std::hash<std::string_view>()(recipients);
  std::string& recent = m_recentLists[hash % kRecentLists];
  if (recent == recipients) {
    return true;
  }
  recent = recipients;
  return false;
}

// Sorts the addresses and moves the texts of those that stay to memory of their own. The sort that
// merges is the faster one here, as it reads the texts in the order in which they lie.
void ImAddressCollector::DropRepeats() {
  std::stable_sort(m_addresses.begin(), m_addresses.end());
  m_addresses.erase(std::unique(m_addresses.begin(), m_addresses.end()), m_addresses.end());
  auto texts = std::make_unique<std::pmr::monotonic_buffer_resource>();
  m_bytes = 0;
  for (std::string_view& address : m_addresses) {
    address = CopyTo(texts.get(), address);
    m_bytes += kViewBytes + address.size();
  }
  m_texts = std::move(texts);
  m_bytesToSort = std::max(kBytesToSort, 2 * m_bytes);
}

void ImAddressCollector::AddTo(AddressSet* addresses) {
  DropRepeats();
  for (const std::string_view address : m_addresses) {
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
