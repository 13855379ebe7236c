// What the stand-in's Outlook holds, from a JSON file:
//
// {"version": "12.0.4518.1014",
//  "stores": [{"id": "A1", "default": true, "root": {...a folder...}, "sent": "B3",
//              "defaults": {"3": "B2", "5": "B3", "6": "B4", "10": "B5"}}],
//  "freeThreaded": true,   may other apartments call the objects directly; otherwise by proxies
//  "faults": [{"at": "NameSpace.Logon", "result": -2147467259, "hangMs": 0, "after": 0}]}
//
// A fault is one of each call of that name but for so many first ones; it hangs for that time at
// most, and then fails, or works if there is no result.
//
// A folder: {"id": "B1", "name": "Inbox", "type": 0, "folders": [...], "items": [...]}. An item:
// {"class": 43, "to": ["ann@x.example", ...]} or {"class": 40, "email": "ben@x.example"}. Mail with
// "table": -2147221233 has no table of recipients, which that code says; a contact with "named":
// false tells its address by Email1Address alone, and one with "model": false by the named property
// alone. Ids are hexadecimal, with upper-case letters. Texts are UTF-8. Everything may be left out.
#pragma once

#include <map>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace postmarker::peer {

struct Item {
  int kind = 43;
  std::vector<std::wstring> to;
  std::wstring email;
  int tableResult = 0;
  bool hasNamedProperty = true;
  bool hasModelProperty = true;
};

struct Store;

struct Folder {
  std::string id;
  std::wstring name;
  int type = 0;
  const Store* store = nullptr;
  Folder* parent = nullptr;
  std::vector<std::unique_ptr<Folder>> folders;
  std::vector<Item> items;
};

struct Store {
  std::string id;
  bool isDefault = false;
  std::string sent;
  std::map<int, std::string> defaults;
  std::unique_ptr<Folder> root;
};

struct NamedFault {
  std::string at;
  int result = 0;
  unsigned hangMs = 0;
  long after = 0;
};

struct Mailbox {
  std::wstring version;
  bool isFreeThreaded = true;
  std::vector<std::unique_ptr<Store>> stores;
  std::vector<NamedFault> faults;

  // Throws if the file can't be read or is no such JSON.
  static Mailbox Read(const std::wstring& file);

  // By id; null if there is none.
  [[nodiscard]] Folder* FindFolder(const std::string& id) const;
  [[nodiscard]] const Store* FindStore(const std::string& id) const;
  // A default folder of the default store, by its number.
  [[nodiscard]] Folder* FindDefault(int number) const;
};

}  // namespace postmarker::peer
