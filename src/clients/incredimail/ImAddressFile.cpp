#include "clients/incredimail/ImAddressFile.h"

#include "clients/incredimail/ImPaths.h"
#include "clients/incredimail/ImSqlCursor.h"
#include "support/MappedFile.h"
#include "support/Text.h"

namespace postmarker {
namespace {

constexpr wchar_t kReadContacts[] = L"SELECT Email, DisplayName FROM Contacts;";

constexpr size_t kFirstSlot = 470;
constexpr size_t kSlotSize = 4916;
constexpr size_t kMaxEntryBytes = 1023;

// Takes bytes up to two zeros in a row, wherever the slot ends.
std::string ReadEntry(std::string_view bytes) {
  std::string entry;
  int zeros = 0;
  for (const char byte : bytes) {
    if (byte != 0) {
      entry.push_back(byte);
      zeros = 0;
    } else if (++zeros == 2) {
      break;
    }
    if (entry.size() == kMaxEntryBytes) {
      break;
    }
  }
  return entry;
}

}  // namespace

std::vector<std::string> ParseAddressFile(std::string_view bytes, PacedStop* stop) {
  std::vector<std::string> entries;
  for (size_t slot = kFirstSlot; slot < bytes.size(); slot += kSlotSize) {
    std::string entry = ReadEntry(bytes.substr(slot));
    if (!entry.empty()) {
      entries.push_back(std::move(entry));
    }
    if (stop->LookAfterStep()) {
      break;
    }
  }
  return entries;
}

void CollectContactsOf(const std::wstring& identityDirectory, PacedStop* stop,
                       AddressSet* addresses) {
  const std::wstring database = AddressDatabasePath(identityDirectory);
  if (CanOpenForReading(database)) {
    ImSqlCursor row(database, kReadContacts, [stop] { return stop->Look(); });
    for (; row.HasRow() && !stop->IsStopped(); row.Next()) {
      addresses->insert(ToLower(row.Text(0)));
      (void)stop->LookAfterStep();
    }
    return;
  }
  const MappedFile file(AddressFilePath(identityDirectory), 1);
  for (const std::string& entry : ParseAddressFile(file.Bytes(), stop)) {
    addresses->insert(Widen(entry));
  }
}

}  // namespace postmarker
