// What the whole stand-in shares: its mailbox, the count of its calls with their faults, and the
// count of what it has handed out. For any thread.
#pragma once

#include <windows.h>

#include <atomic>
#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "Mailbox.h"
#include "PeerControl.h"
#include "support/Handles_win.h"

namespace postmarker::peer {

class CallGate {
 public:
  static CallGate& Instance();

  // Counts a call, and hangs if it is to. A value is what the call has to return at once, with
  // nothing in its out parameters.
  std::optional<HRESULT> Enter(const std::string& name);

  void Reset();
  void SetFault(const PeerFault& fault);
  [[nodiscard]] long Calls();
  [[nodiscard]] long CallsOf(const std::string& name);
  [[nodiscard]] std::string Journal();
  [[nodiscard]] bool IsHanging() const { return m_hanging != 0; }

  Mailbox mailbox;
  HANDLE hangSignal = nullptr;  // not owned; set when a call begins to hang
  // Set when calls that hang are to go on, and none is to hang any more.
  KernelHandle hangEnd{::CreateEventW(nullptr, TRUE, FALSE, nullptr)};
  std::atomic<long> live = 0;
  std::atomic<long> falseReleases = 0;

 private:
  // What the call with this number and name comes to.
  std::optional<HRESULT> Decide(const std::string& name, DWORD* hangMs);

  std::mutex m_lock;
  PeerFault m_fault;
  long m_calls = 0;
  std::map<std::string, long> m_callsOf;
  std::string m_journal;
  std::atomic<int> m_hanging = 0;
};

// Counts an object among the live ones.
class LiveObject {
 public:
  LiveObject() { ++CallGate::Instance().live; }
  LiveObject(const LiveObject&) = delete;
  LiveObject& operator=(const LiveObject&) = delete;

 protected:
  ~LiveObject() { --CallGate::Instance().live; }
};

}  // namespace postmarker::peer
