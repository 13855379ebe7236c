// How the spam filter is set up for one mail client.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "settings/SettingsStore.h"
#include "support/Results.h"

namespace postmarker {

// The plain values of a FilterSettings, with their defaults. Numbers that are switches are 0 or 1.
struct FilterSettingsRecord {
  // The name of the client's key; empty for a record of the options that hold for all clients.
  std::wstring clientName;

  // Nonzero: values differ from the registry's, or are missing there.
  uint8_t dirty = 0;

  uint32_t addBlocked = 0;
  uint32_t addBlockedDomains = 0;
  uint32_t addUnblocked = 1;
  uint32_t addUnblockedDomains = 0;
  uint32_t moveEmails = 0;

  // The path of the spam folder, with a backslash at its end unless it is empty.
  std::wstring spamFolderName;

  // Where the filter's toolbar stands in the client; 5000 if it was never moved.
  uint32_t toolbarLeft = 5000;
  uint32_t toolbarTop = 5000;
  uint32_t toolbarRowIndex = 5000;

  uint32_t showWizard = 1;

  // For all clients.
  uint32_t addRecipients = 1;
  uint32_t addCcs = 1;
  uint32_t signEmail = 0;
  uint32_t enableLogs = 0;

  // The id of the spam folder, "0" for the client's default folder, and that of its store.
  std::string spamFolderId;
  uint32_t messageStoreIdLength = 0;
  std::array<uint8_t, 4096> messageStoreId = {};
};

// The persistent settings of one mail client: a local object that loads when it is constructed. Who
// changes values calls Save when they are complete; the destructor saves if that was left out, or
// if a value was missing. Use it from one thread; it has no lock. The store must outlive it.
// Nothing is reported: what can't be read keeps its default, what can't be written is lost.
class FilterSettings {
 public:
  // Loads the settings of the client with this key name. An empty name reads those of the client
  // that the filter is set up for, and writes only the options that hold for all clients.
  explicit FilterSettings(std::wstring clientName, SettingsStore& store = UserSettings());
  FilterSettings(const FilterSettings&) = delete;
  FilterSettings& operator=(const FilterSettings&) = delete;
  ~FilterSettings();

  // Reads all values under the key `name`; clientName stays. Returns 0, or -1 when the global key,
  // the client's key or the client's name is missing; what was read until then stays.
  ResultCode Load(const std::wstring& name);

  // Writes the record under its own name if a value was changed or was missing since the last Save,
  // and clears IsDirty, so that the destructor does not write again: a store that refused now
  // refuses then. Returns 0, also if there was nothing to write, or -1 as Save of a name does. May
  // throw std::bad_alloc; the destructor then tries again.
  ResultCode Save();

  // Writes all values but EnableLogs, which belongs to the filter engine, under the key `name`,
  // creating keys as needed. Returns 0, or -1 in the three cases of Load; what was written until
  // then stays. Whether single values could be written is not looked at.
  ResultCode Save(const std::wstring& name) const;

  [[nodiscard]] const std::wstring& GetClientName() const { return m_record.clientName; }
  [[nodiscard]] bool IsDirty() const { return m_record.dirty != 0; }

  [[nodiscard]] uint32_t GetAddBlocked() const { return m_record.addBlocked; }
  [[nodiscard]] uint32_t GetAddBlockedDomains() const { return m_record.addBlockedDomains; }
  [[nodiscard]] uint32_t GetAddUnblocked() const { return m_record.addUnblocked; }
  [[nodiscard]] uint32_t GetAddUnblockedDomains() const { return m_record.addUnblockedDomains; }
  [[nodiscard]] uint32_t GetMoveEmails() const { return m_record.moveEmails; }
  [[nodiscard]] const std::wstring& GetSpamFolderName() const { return m_record.spamFolderName; }
  [[nodiscard]] uint32_t GetToolbarLeft() const { return m_record.toolbarLeft; }
  [[nodiscard]] uint32_t GetToolbarTop() const { return m_record.toolbarTop; }
  [[nodiscard]] uint32_t GetToolbarRowIndex() const { return m_record.toolbarRowIndex; }
  [[nodiscard]] uint32_t GetShowWizard() const { return m_record.showWizard; }
  [[nodiscard]] uint32_t GetAddRecipients() const { return m_record.addRecipients; }
  [[nodiscard]] uint32_t GetAddCcs() const { return m_record.addCcs; }
  [[nodiscard]] uint32_t GetSignEmail() const { return m_record.signEmail; }
  [[nodiscard]] uint32_t GetEnableLogs() const { return m_record.enableLogs; }
  [[nodiscard]] const std::string& GetSpamFolderId() const { return m_record.spamFolderId; }

  // Copies the store's id into `buffer`, at most *size bytes of it, and sets *size to the number of
  // bytes copied. No terminator is added.
  void GetMessageStoreId(void* buffer, uint32_t* size) const;

  // Each sets the value and marks the record dirty, also when the value was the same before.
  void SetMoveEmails(uint32_t value);
  void SetAddBlocked(uint32_t value);
  void SetAddUnblocked(uint32_t value);
  void SetShowWizard(uint32_t value);
  void SetSpamFolderName(const std::wstring& path);
  void SetSpamFolderId(const std::string& id);

  // Takes `length` bytes; what goes beyond the 4096 that there is room for is cut off.
  void SetMessageStoreId(const void* bytes, uint32_t length);

 private:
  void LoadClient(const SettingsKey& key);
  void LoadFolderName(const SettingsKey& key);
  void LoadStoreId(const SettingsKey& key);
  void LoadFolderId(const SettingsKey& key);
  void SaveClient(SettingsKey& key) const;
  void UseDefaultFolder();
  void MarkDirty() { m_record.dirty = 1; }

  SettingsStore& m_store;
  FilterSettingsRecord m_record;
};

}  // namespace postmarker
