#include "settings/FilterSettings.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <span>
#include <utility>

#include "settings/GlobalSettings.h"

namespace postmarker {
namespace {

constexpr ResultCode kNotThere = -1;
constexpr uint32_t kFolderNameRoom = 520;
constexpr uint32_t kFolderIdRoom = 260;
constexpr uint32_t kStoreIdRoom = 4095;
constexpr char kDefaultFolderId[] = "0";

enum class IfMissing { kMarkDirty, kIgnore };
enum class Access { kReadWrite, kReadOnly };

struct NumberRow {
  const wchar_t* name;
  uint32_t FilterSettingsRecord::*field;
  IfMissing ifMissing = IfMissing::kMarkDirty;
  Access access = Access::kReadWrite;
};
using Record = FilterSettingsRecord;

// The numbers in the order in which they are read and written. Texts and ids, which have rules of
// their own, come between the last two groups and after them.
constexpr NumberRow kGlobalRows[] = {
    {L"AddRecipients", &Record::addRecipients},
    {L"AddCCS", &Record::addCcs},
    {L"SignEmail", &Record::signEmail},
    {L"EnableLogs", &Record::enableLogs, IfMissing::kIgnore, Access::kReadOnly},
};
constexpr NumberRow kFilterRows[] = {
    // Deliberate: the capital L is in the name that the filter engine reads.
    {L"AddBLocked", &Record::addBlocked},
    {L"AddBlockedDomains", &Record::addBlockedDomains},
    {L"AddUnblocked", &Record::addUnblocked},
    {L"AddUnblockedDomains", &Record::addUnblockedDomains},
    {L"MoveEmails", &Record::moveEmails},
};
constexpr NumberRow kWindowRows[] = {
    {L"ToolbarLeft", &Record::toolbarLeft, IfMissing::kIgnore},
    {L"ToolbarTop", &Record::toolbarTop, IfMissing::kIgnore},
    {L"ToolbarRowIndex", &Record::toolbarRowIndex, IfMissing::kIgnore},
    {L"ShowWizard", &Record::showWizard},
};
// Deliberate: the blank is in the name that the filter engine reads.
constexpr wchar_t kFolderNameValue[] = L"MO SFolder";
constexpr wchar_t kStoreIdValue[] = L"MessageStoreId";
constexpr wchar_t kFolderIdValue[] = L"SpamFolderId";

// A value of fewer than 4 bytes gives the low bytes of the number.
std::optional<uint32_t> ReadNumber(const SettingsKey& key, const wchar_t* name) {
  const auto bytes = key.Read(name, sizeof(uint32_t));
  if (!bytes) {
    return std::nullopt;
  }
  uint32_t number = 0;
  for (size_t i = 0; i < bytes->size(); ++i) {
    number |= static_cast<uint32_t>((*bytes)[i]) << (8 * i);
  }
  return number;
}

void LoadNumbers(const SettingsKey& key, std::span<const NumberRow> rows, Record* record) {
  for (const NumberRow& row : rows) {
    if (const auto number = ReadNumber(key, row.name)) {
      record->*row.field = *number;
    } else if (row.ifMissing == IfMissing::kMarkDirty) {
      record->dirty = 1;
    }
  }
}

void SaveNumbers(SettingsKey* key, std::span<const NumberRow> rows, const Record& record) {
  for (const NumberRow& row : rows) {
    if (row.access == Access::kReadOnly) {
      continue;
    }
    const uint32_t number = record.*row.field;
    const uint8_t bytes[] = {static_cast<uint8_t>(number), static_cast<uint8_t>(number >> 8),
                             static_cast<uint8_t>(number >> 16),
                             static_cast<uint8_t>(number >> 24)};
    key->Write(row.name, ValueType::kDword, bytes);
  }
}

std::wstring WithFinalBackslash(std::wstring path) {
  if (!path.empty() && path.back() != L'\\') {
    path.push_back(L'\\');
  }
  return path;
}

std::wstring ClientPath(const std::wstring& name) {
  return L"\\" + name;
}

}  // namespace

FilterSettings::FilterSettings(std::wstring clientName, SettingsStore& store) : m_store(store) {
  m_record.clientName = std::move(clientName);
  Load(m_record.clientName);
}

FilterSettings::~FilterSettings() {
  try {
    (void)Save();
  } catch (const std::exception&) {
    // Out of memory while saving: as with a registry that refuses, the values are lost without a
    // word.
    m_record.dirty = 0;
  }
}

ResultCode FilterSettings::Load(const std::wstring& name) {
  const std::wstring client = name.empty() ? GetActionPlugin(m_store) : name;
  const auto global = m_store.Open({});
  if (!global) {
    UseDefaultFolder();
    MarkDirty();
    return kNotThere;
  }
  LoadNumbers(*global, kGlobalRows, &m_record);
  if (client.empty()) {
    return kNotThere;
  }
  const auto key = m_store.Open(ClientPath(client));
  if (!key) {
    UseDefaultFolder();
    MarkDirty();
    return kNotThere;
  }
  LoadClient(*key);
  return kOk;
}

void FilterSettings::LoadClient(const SettingsKey& key) {
  LoadNumbers(key, kFilterRows, &m_record);
  LoadFolderName(key);
  LoadNumbers(key, kWindowRows, &m_record);
  LoadStoreId(key);
  LoadFolderId(key);
}

void FilterSettings::LoadFolderName(const SettingsKey& key) {
  if (const auto bytes = key.Read(kFolderNameValue, kFolderNameRoom)) {
    m_record.spamFolderName = WithFinalBackslash(DecodeTextValue(*bytes));
  }
}

void FilterSettings::LoadStoreId(const SettingsKey& key) {
  const auto bytes = key.Read(kStoreIdValue, kStoreIdRoom);
  if (!bytes) {
    MarkDirty();
    return;
  }
  m_record.messageStoreId.fill(0);
  m_record.messageStoreIdLength = 0;
  // Nothing but zero bytes is what a client without a store id leaves: no id, and nothing to
  // repair.
  if (std::any_of(bytes->begin(), bytes->end(), [](uint8_t byte) { return byte != 0; })) {
    std::copy(bytes->begin(), bytes->end(), m_record.messageStoreId.begin());
    m_record.messageStoreIdLength = static_cast<uint32_t>(bytes->size());
  }
}

void FilterSettings::LoadFolderId(const SettingsKey& key) {
  if (const auto bytes = key.Read(kFolderIdValue, kFolderIdRoom)) {
    m_record.spamFolderId.assign(bytes->begin(), std::find(bytes->begin(), bytes->end(), 0));
  }
  if (m_record.spamFolderId.empty()) {
    UseDefaultFolder();
    MarkDirty();
  }
}

// A client that was never set up has its default folder as spam folder.
void FilterSettings::UseDefaultFolder() {
  if (m_record.spamFolderId.empty()) {
    m_record.spamFolderId = kDefaultFolderId;
  }
}

ResultCode FilterSettings::Save() {
  if (!IsDirty()) {
    return kOk;
  }
  const ResultCode result = Save(m_record.clientName);
  m_record.dirty = 0;
  return result;
}

ResultCode FilterSettings::Save(const std::wstring& name) const {
  const auto global = m_store.Create({});
  if (!global) {
    return kNotThere;
  }
  SaveNumbers(global.get(), kGlobalRows, m_record);
  if (name.empty()) {
    return kNotThere;
  }
  const auto key = m_store.Create(ClientPath(name));
  if (!key) {
    return kNotThere;
  }
  SaveClient(*key);
  return kOk;
}

void FilterSettings::SaveClient(SettingsKey& key) const {
  SaveNumbers(&key, kFilterRows, m_record);
  key.Write(kFolderNameValue, ValueType::kText,
            EncodeTextValue(WithFinalBackslash(m_record.spamFolderName)));
  SaveNumbers(&key, kWindowRows, m_record);

  std::array<uint8_t, kStoreIdRoom> storeId = {};
  uint32_t length = kStoreIdRoom;
  GetMessageStoreId(storeId.data(), &length);
  key.Write(kStoreIdValue, ValueType::kBinary, std::span(storeId).first(length));

  const auto* const id = reinterpret_cast<const uint8_t*>(m_record.spamFolderId.c_str());
  key.Write(kFolderIdValue, ValueType::kBinary, {id, m_record.spamFolderId.size() + 1});
}

void FilterSettings::GetMessageStoreId(void* buffer, uint32_t* size) const {
  *size = std::min(*size, m_record.messageStoreIdLength);
  if (*size > 0) {
    std::memcpy(buffer, m_record.messageStoreId.data(), *size);
  }
}

void FilterSettings::SetMoveEmails(uint32_t value) {
  m_record.moveEmails = value;
  MarkDirty();
}

void FilterSettings::SetAddBlocked(uint32_t value) {
  m_record.addBlocked = value;
  MarkDirty();
}

void FilterSettings::SetAddUnblocked(uint32_t value) {
  m_record.addUnblocked = value;
  MarkDirty();
}

void FilterSettings::SetShowWizard(uint32_t value) {
  m_record.showWizard = value;
  MarkDirty();
}

void FilterSettings::SetSpamFolderName(const std::wstring& path) {
  m_record.spamFolderName = path;
  MarkDirty();
}

void FilterSettings::SetSpamFolderId(const std::string& id) {
  m_record.spamFolderId = id;
  MarkDirty();
}

void FilterSettings::SetMessageStoreId(const void* bytes, uint32_t length) {
  m_record.messageStoreId.fill(0);
  m_record.messageStoreIdLength =
      std::min(length, static_cast<uint32_t>(m_record.messageStoreId.size()));
  if (m_record.messageStoreIdLength > 0) {
    std::memcpy(m_record.messageStoreId.data(), bytes, m_record.messageStoreIdLength);
  }
  MarkDirty();
}

}  // namespace postmarker
