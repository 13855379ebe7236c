#include "Mailbox.h"

#include <filesystem>
#include <fstream>

#include "support/Text.h"

namespace postmarker::peer {
namespace {

using Json = nlohmann::json;

std::wstring Text(const Json& object, const char* member) {
  return WidenUtf8(object.value(member, std::string()));
}

Item ReadItem(const Json& json) {
  Item item;
  item.kind = json.value("class", 43);
  for (const Json& address : json.value("to", Json::array())) {
    item.to.push_back(WidenUtf8(address.get<std::string>()));
  }
  item.email = Text(json, "email");
  item.tableResult = json.value("table", 0);
  item.hasNamedProperty = json.value("named", true);
  item.hasModelProperty = json.value("model", true);
  return item;
}

std::unique_ptr<Folder> ReadFolder(const Json& json, const Store* store, Folder* parent) {
  auto folder = std::make_unique<Folder>();
  folder->id = json.value("id", "");
  folder->name = Text(json, "name");
  folder->type = json.value("type", 0);
  folder->store = store;
  folder->parent = parent;
  for (const Json& child : json.value("folders", Json::array())) {
    folder->folders.push_back(ReadFolder(child, store, folder.get()));
  }
  for (const Json& item : json.value("items", Json::array())) {
    folder->items.push_back(ReadItem(item));
  }
  return folder;
}

Folder* FindBelow(Folder* folder, const std::string& id) {
  if (folder->id == id) {
    return folder;
  }
  for (const auto& child : folder->folders) {
    if (Folder* const found = FindBelow(child.get(), id)) {
      return found;
    }
  }
  return nullptr;
}

}  // namespace

Mailbox Mailbox::Read(const std::wstring& file) {
  std::ifstream stream{std::filesystem::path(file)};
  const Json json = Json::parse(stream);
  Mailbox mailbox;
  mailbox.version = Text(json, "version");
  mailbox.isFreeThreaded = json.value("freeThreaded", true);
  for (const Json& entry : json.value("stores", Json::array())) {
    auto store = std::make_unique<Store>();
    store->id = entry.value("id", "");
    store->isDefault = entry.value("default", false);
    store->sent = entry.value("sent", "");
    const Json defaults = entry.value("defaults", Json::object());
    for (const auto& [number, id] : defaults.items()) {
      store->defaults[std::stoi(number)] = id.get<std::string>();
    }
    store->root = ReadFolder(entry.value("root", Json::object()), store.get(), nullptr);
    mailbox.stores.push_back(std::move(store));
  }
  for (const Json& fault : json.value("faults", Json::array())) {
    mailbox.faults.push_back({fault.value("at", ""), fault.value("result", 0),
                              fault.value("hangMs", 0U), fault.value("after", 0L)});
  }
  return mailbox;
}

Folder* Mailbox::FindFolder(const std::string& id) const {
  for (const auto& store : stores) {
    if (Folder* const found = FindBelow(store->root.get(), id)) {
      return found;
    }
  }
  return nullptr;
}

const Store* Mailbox::FindStore(const std::string& id) const {
  for (const auto& store : stores) {
    if (store->id == id) {
      return store.get();
    }
  }
  return nullptr;
}

Folder* Mailbox::FindDefault(int number) const {
  for (const auto& store : stores) {
    const auto found = store->defaults.find(number);
    if (store->isDefault && found != store->defaults.end()) {
      return FindFolder(found->second);
    }
  }
  return nullptr;
}

}  // namespace postmarker::peer
