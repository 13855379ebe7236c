#include "clients/ClientEnvironments_win.h"

#include <windows.h>

#include <gtest/gtest.h>

#include "support/ImInstallation_win.h"
#include "support/LiveMailInstallation_win.h"
#include "support/OutlookInstallation_win.h"
#include "support/RegistrySandbox_win.h"
#include "support/StoreInstallation_win.h"
#include "support/Text.h"
#include "support/ThunderbirdInstallation_win.h"

namespace postmarker::test {
namespace {

class NoStandIn : public ClientEnvironment {
 private:
  RegistrySandbox m_registry{Redirect::kUserAndMachine};
};

class IncrediMailEnvironment : public ClientEnvironment {
 public:
  IncrediMailEnvironment() {
    m_client.RegisterProgram();
    m_client.RegisterData();
    m_client.AddIdentity(L"{a}", L"Ann");
  }

  void Fill() override {
    const std::wstring book = m_client.IdentityFolder(L"{a}").AddressFile("AddrBook.db3");
    std::filesystem::remove(m_client.IdentityFolder(L"{a}").StoreFile("Containers.db"));
    std::filesystem::remove(book);
    ImDatabase database(m_client.AddStore(
        L"{a}", {{ImGuid(1), L"", 0, L""}, {ImGuid(2), ImGuid(1), 2, L"Sent Items"}}));
    database.AddHeadersTable();
    database.AddHeaderRows({{ImGuid(11), ImGuid(2), L"carl@x"}});
    ImDatabase(book).AddContacts({L"friend@x"});
  }
  void Damage() override {
    const ImIdentityFolder folder = m_client.IdentityFolder(L"{a}");
    WriteFile(folder.StoreFile("Containers.db"), std::string(5000, 'x'));
    WriteFile(folder.AddressFile("AddrBook.db3"), std::string(5000, 'x'));
  }
  [[nodiscard]] bool HasStandIn() const override { return true; }

 private:
  ImInstallation m_client;
};

// Its store is read where the module is not there, which is the case but for the steps.
class LiveMailEnvironment : public ClientEnvironment {
 public:
  LiveMailEnvironment() { Empty(); }

  void Fill() override {
    m_client.StopModule();
    m_client.WriteStore(
        {.folders = {{1, 0, u"Ann"}, {4, 1, u"Sent Items", 0, 3}},
         .messages = {{11, 4, 2, u"Ann <ann@x>", u"carl@x"}, {12, 4, 3, u"ann@y", u"ben@x"}}});
  }
  void Empty() override { m_client.WriteStore({}); }
  void Damage() override { WriteFile(m_client.DatabasePath(), std::string(50'000, 'x')); }

  [[nodiscard]] std::vector<std::string> Steps() const override { return {"1", "3", "4", "5"}; }
  // The module dies within what it answers, after the number of texts where that has one.
  void GoAwayAt(const std::string& step) override {
    const int command = std::stoi(step);
    m_client.StartModule(
        {{"folders", {{{"name", "\\\\Module"}, {"firstId", "1"}, {"secondId", "1"}, {"flag", 1}}}},
         {"contacts", {"ben@x"}},
         {"sent", {"carl@x", "dora@x"}},
         {"fault", {{"do", "die"}, {"command", command}, {"message", command == 5 ? 0 : 1}}}});
  }
  [[nodiscard]] bool HasStandIn() const override { return true; }

 private:
  LiveMailInstallation m_client;
};

class ThunderbirdEnvironment : public ClientEnvironment {
 public:
  ThunderbirdEnvironment() { m_client.Register(); }

  void Fill() override { Serve("{" + std::string(kFilled) + "}"); }
  void Empty() override { Serve("{}"); }
  // It answers with what is no reply of the extension's.
  void Damage() override {
    Serve(R"({"commands": {"GiveAllFolders": {"dieAfter": 0}, "AddNewFolder": {"dieAfter": 0},
                           "SentItemsEntries": {"dieAfter": 0}, "GiveContacts": {"dieAfter": 0}}})");
  }

  [[nodiscard]] std::vector<std::string> Steps() const override {
    return {"GiveAllFolders",   "AddNewFolder", "SetMoveMails",
            "SentItemsEntries", "GiveContacts", "GiveAddressesFromSentItems"};
  }
  void GoAwayAt(const std::string& step) override {
    Serve("{" + std::string(kFilled) + R"(, "commands": {")" + step + R"(": {"dieAfter": 1}}})");
  }
  [[nodiscard]] bool HasStandIn() const override { return true; }

 private:
  static constexpr char kFilled[] =
      R"("folders": [{"name": "Local Folders", "id": "1", "store": "local"}],
         "contacts": ["ben@x"], "sent": ["carl@x", "dora@x"])";

  void Serve(const std::string& mailbox) {
    m_client.SetMailbox(mailbox);
    if (!m_client.IsRunning()) {
      m_client.ClearJournal();
      m_client.Start();
    }
  }

  ThunderbirdInstallation m_client;
};

// Both clients of the store's interfaces. The store is an object that can fail at any call.
class StoreEnvironment : public ClientEnvironment {
 public:
  void Fill() override {
    m_client.Peer().SetState(StoreInstallation::UsualStore());
    m_client.WriteAddressBook({L"book@x"});
  }
  void Empty() override {
    m_client.Peer().SetState({{"root", {{"name", "R"}}}, {"contacts", nlohmann::json::array()}});
    m_client.WriteAddressBook({});
  }
  // Records of a size that nobody knows, messages without headers, contacts without addresses.
  void Damage() override {
    nlohmann::json store = StoreInstallation::UsualStore();
    store["form"] = 300;
    store["root"]["children"][2]["messages"] = {std::string(5000, 'x')};
    store["contacts"] = {5, 5};
    m_client.Peer().SetState(store);
    m_client.WriteAddressBookBytes(std::string(5000, 'x'));
  }

  [[nodiscard]] std::vector<std::string> Steps() const override {
    return {"Store.Create",
            "Namespace.Initialize",
            "Namespace.GetFolderProps",
            "Namespace.GetFirstSubFolder",
            "Namespace.GetNextSubFolder",
            "Namespace.CreateFolder",
            "Namespace.OpenSpecialFolder",
            "Folder.GetFirstMessage",
            "Folder.OpenMessage",
            "Stream.Read",
            "Folder.GetNextMessage",
            "Contacts.Create",
            "Collection.Next"};
  }
  void GoAwayAt(const std::string& step) override {
    Fill();
    m_client.Peer()->failCall(step.c_str(), 1, RPC_E_DISCONNECTED);
  }
  [[nodiscard]] bool HasStandIn() const override { return true; }

 private:
  StoreInstallation m_client;
};

class OutlookEnvironment : public ClientEnvironment {
 public:
  ~OutlookEnvironment() override {
    EXPECT_EQ(m_client.Peer().Live(), 0) << "Outlook's objects were not released";
  }

  void Fill() override { m_client.SetMailbox(OutlookMailbox()); }
  void Empty() override { m_client.SetMailbox(nlohmann::json::object()); }
  void Damage() override {
    Fill();
    m_client.Peer().SetFault({.call = 1, .andLater = true, .result = E_FAIL});
  }

  // The numbers of the calls from which on it is gone.
  [[nodiscard]] std::vector<std::string> Steps() const override {
    return {"1", "10", "60", "130", "200", "300", "400"};
  }
  void GoAwayAt(const std::string& step) override {
    Fill();
    m_client.Peer().SetFault(
        {.call = std::stoi(step), .andLater = true, .result = RPC_E_DISCONNECTED});
  }
  [[nodiscard]] std::shared_ptr<IUnknown> MakeApplication() const override {
    return {m_client.MakeApplication().Detach(),
            [](IUnknown* object) { const ComPtr<IUnknown> last(object); }};
  }
  [[nodiscard]] bool HasStandIn() const override { return true; }

 private:
  OutlookInstallation m_client{OutlookClassServer::kInProcess};
};

template <class Environment>
std::unique_ptr<ClientEnvironment> Make() {
  return std::make_unique<Environment>();
}

constexpr struct {
  std::wstring_view displayName;
  std::unique_ptr<ClientEnvironment> (*make)();
} kEnvironments[] = {
    {L"IncrediMail", &Make<IncrediMailEnvironment>},
    {L"Microsoft Outlook", &Make<OutlookEnvironment>},
    {L"Mozilla Thunderbird", &Make<ThunderbirdEnvironment>},
    {L"Outlook Express", &Make<StoreEnvironment>},
    {L"Windows Mail", &Make<StoreEnvironment>},
    {L"Windows Live Mail", &Make<LiveMailEnvironment>},
};

}  // namespace

std::unique_ptr<ClientEnvironment> MakeClientEnvironment(std::wstring_view displayName) {
  for (const auto& environment : kEnvironments) {
    if (EqualNoCase(environment.displayName, displayName)) {
      return environment.make();
    }
  }
  return Make<NoStandIn>();
}

}  // namespace postmarker::test
