// Outlook Express and Windows Mail as installed on a machine of a test's own.
#pragma once

#include <windows.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "support/RegistrySandbox_win.h"
#include "support/Registry_win.h"
#include "support/StoreIdFiles.h"
#include "support/StorePeer_win.h"
#include "support/TempFolder.h"
#include "support/WabBuilder.h"

namespace postmarker::test {

// An identity whose store has a root folder in the file system; the store's own object is the
// stand-in's.
class StoreInstallation {
 public:
  static constexpr wchar_t kIdentityKey[] =
      L"Identities\\{ME}\\software\\microsoft\\outlook express\\5.0";
  static constexpr wchar_t kWindowsMailKey[] = L"software\\microsoft\\windows mail";
  static constexpr wchar_t kCompactCount[] = L"Compact Check Count";

  StoreInstallation() {
    SetText(L"Identities", L"Last User ID", L"{ME}");
    SetText(kIdentityKey, L"Store Root", m_folder.Path().wstring());
    std::filesystem::create_directories(m_folder.Path() / "Backup" / "New");
  }

  // A store of a person: the usual folders, one below the inbox, and sent messages.
  static nlohmann::json UsualStore() {
    using nlohmann::json;
    const auto folder = [](int id, const char* name, int type) {
      return json{{"id", id}, {"name", name}, {"type", type}};
    };
    json inbox = folder(4, "Inbox", 0);
    inbox["children"] = {folder(9, "Spam", -1)};
    json sent = folder(6, "Sent Items", 2);
    sent["messages"] = {"To: Ann <Ann@x.example>\r\nSubject: 1\r\n\r\nHello.\r\n",
                        "From: me@x.example\r\nTo: ben@x.example\r\n"
                        "Cc: \"C, D\" <cd@x.example>\r\n\r\n"};
    json root = folder(0, "Local Folders", -1);
    root["children"] = {inbox, folder(5, "Outbox", 1), sent, folder(7, "Deleted Items", 3),
                        folder(8, "Drafts", 4)};
    return {{"root", root}, {"contacts", {"Friend@x.example"}}};
  }

  static void SetText(const std::wstring& key, const std::wstring& name, const std::wstring& text) {
    RegistryKey::Create(HKEY_CURRENT_USER, key, KEY_ALL_ACCESS).WriteString(name.c_str(), text);
  }
  static void DeleteKey(const std::wstring& key) {
    ::RegDeleteTreeW(HKEY_CURRENT_USER, key.c_str());
  }
  static std::optional<uint32_t> ReadNumber(const std::wstring& key, const wchar_t* name) {
    return RegistryKey::Open(HKEY_CURRENT_USER, key, KEY_READ).ReadDword(name);
  }

  // The files of the store that hold its id.
  [[nodiscard]] std::wstring DbxPath() const { return m_folder.PathOf("Folders.dbx"); }
  [[nodiscard]] std::wstring DatabasePath() const {
    return m_folder.PathOf("WindowsMail.MsMessageStore");
  }
  [[nodiscard]] std::wstring BackupPath() const {
    return m_folder.PathOf("Backup/New/WindowsMail.MsMessageStore");
  }
  static std::string DatabaseWith(const std::string& id) {
    return "head" + std::string(kStoreIdMark) + id + "tail";
  }

  // The person's address book with these entries, or with these bytes.
  void WriteAddressBook(const std::vector<std::wstring>& entries) const {
    WriteAddressBookBytes(MakeWabFile(entries));
  }
  void WriteAddressBookBytes(const std::string& bytes) const {
    const std::wstring path = m_folder.PathOf("person.wab");
    WriteFile(path, bytes);
    SetText(L"Software\\Microsoft\\WAB\\WAB4\\Wab File Name", L"", path);
  }

  [[nodiscard]] const StorePeer& Peer() const { return m_peer; }

 private:
  StorePeer m_peer;
  RegistrySandbox m_registry{Redirect::kUserAndMachine};
  TempFolder m_folder;
};

}  // namespace postmarker::test
