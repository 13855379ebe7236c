// What the stand-in's store holds, and what it counts.
#pragma once

#include <windows.h>

#include <atomic>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "clients/storeapi/StoreInterfaces_win.h"
#include "support/ComPtr_win.h"

namespace postmarker::peer {

struct PeerFolder {
  uint32_t id = 0;
  std::string name;
  int32_t type = -1;
  std::vector<uint32_t> children;
  std::vector<std::string> messages;
  uint32_t repeat = 1;

  [[nodiscard]] uint32_t CountMessages() const {
    return static_cast<uint32_t>(messages.size()) * repeat;
  }
  // Of a number from 1; null for another.
  [[nodiscard]] const std::string* Message(uint32_t number) const {
    return number == 0 || number > CountMessages() ? nullptr
                                                   : &messages[(number - 1) % messages.size()];
  }
};

class StoreState {
 public:
  void Set(const nlohmann::json& state);

  // Counts a call of a method. The code with which it is to fail, or 0.
  HRESULT Enter(const char* method);
  void FailCall(const std::string& method, int number, HRESULT result);
  [[nodiscard]] int CountCalls(const std::string& method) const;

  // Null for an unknown id.
  PeerFolder* Find(uint32_t id);
  PeerFolder* FindSpecial(int32_t type);
  // The new folder's id.
  uint32_t AddFolder(PeerFolder* parent, const std::string& name);

  // Does the store take records of this size.
  [[nodiscard]] bool Takes(const storeapi::StoreFolderProps& props) const {
    return props.cbSize == m_form;
  }

  // Fills the record in the form that it has. kWrongStructSize for one that the store does not
  // take.
  HRESULT Fill(const PeerFolder& folder, storeapi::StoreFolderProps* props) const;

  void Note(const std::string& line) { m_journal += line + "\n"; }

  std::optional<uint32_t> root;
  bool isEndless = false;
  uint32_t shortReads = 0;
  std::optional<std::vector<nlohmann::json>> contacts;

  std::atomic<int> live = 0;
  uint32_t largestRead = 0;
  ComPtr<storeapi::IMimeMessage> lastMimeMessage;

  [[nodiscard]] const std::string& Journal() const { return m_journal; }

 private:
  uint32_t AddTree(const nlohmann::json& tree);

  std::map<uint32_t, PeerFolder> m_folders;
  uint32_t m_form = 280;
  std::map<std::string, int> m_calls;
  int m_allCalls = 0;
  std::string m_failingMethod;
  int m_failingNumber = 0;
  HRESULT m_failure = 0;
  std::string m_journal;
};

StoreState& State();

// Something that is handed out and has to come back.
class Counted {
 public:
  Counted() { ++State().live; }
  Counted(const Counted&) = delete;
  Counted& operator=(const Counted&) = delete;
  virtual ~Counted() { --State().live; }
};

// Objects behind interfaces are released and never deleted through them.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

// An object behind one interface and IUnknown.
template <class Interface, const IID& iid>
class PeerObject : public Interface, public Counted {
 public:
  HRESULT __stdcall QueryInterface(REFIID wanted, void** object) override {
    if (wanted != IID_IUnknown && wanted != iid) {
      *object = nullptr;
      return E_NOINTERFACE;
    }
    AddRef();
    *object = static_cast<Interface*>(this);
    return S_OK;
  }
  ULONG __stdcall AddRef() override { return ++m_references; }
  ULONG __stdcall Release() override {
    const ULONG left = --m_references;
    if (left == 0) {
      delete this;
    }
    return left;
  }

 private:
  std::atomic<ULONG> m_references = 1;
};

#pragma GCC diagnostic pop

// Returns from a method that is to fail in this call.
#define POSTMARKER_PEER_ENTER(method)                            \
  if (const HRESULT fault = State().Enter(method); fault != 0) { \
    return fault;                                                \
  }

// Make objects with one reference.
storeapi::IStoreNamespace* MakeStoreNamespace();
storeapi::IStoreFolder* MakeStoreFolder(uint32_t id);
storeapi::IContactManager* MakeContactManager();

}  // namespace postmarker::peer
