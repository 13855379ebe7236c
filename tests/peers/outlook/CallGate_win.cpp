#include "CallGate_win.h"

namespace postmarker::peer {
namespace {

constexpr long kJournaledCalls = 5000;

}  // namespace

CallGate& CallGate::Instance() {
  static CallGate gate;
  return gate;
}

std::optional<HRESULT> CallGate::Enter(const std::string& name) {
  DWORD hangMs = 0;
  const std::optional<HRESULT> result = Decide(name, &hangMs);
  if (hangMs != 0) {
    ++m_hanging;
    if (hangSignal != nullptr) {
      ::SetEvent(hangSignal);
    }
    ::WaitForSingleObject(hangEnd.Get(), hangMs);
    --m_hanging;
  }
  return result;
}

std::optional<HRESULT> CallGate::Decide(const std::string& name, DWORD* hangMs) {
  const std::lock_guard lock(m_lock);
  ++m_calls;
  ++m_callsOf[name];
  if (m_calls <= kJournaledCalls) {
    m_journal += name + "\n";
  }
  if (m_fault.call != 0 &&
      (m_calls == m_fault.call || (m_fault.andLater && m_calls > m_fault.call))) {
    *hangMs = m_fault.hangMs;
    if (m_fault.hangMs == 0 || FAILED(m_fault.result)) {
      return m_fault.result;
    }
  }
  for (const NamedFault& fault : mailbox.faults) {
    if (fault.at == name && m_callsOf[name] > fault.after) {
      *hangMs = fault.hangMs;
      if (fault.result < 0) {
        return fault.result;
      }
    }
  }
  return {};
}

void CallGate::Reset() {
  const std::lock_guard lock(m_lock);
  m_fault = {};
  m_calls = 0;
  m_callsOf.clear();
  m_journal.clear();
  ::ResetEvent(hangEnd.Get());
}

void CallGate::SetFault(const PeerFault& fault) {
  const std::lock_guard lock(m_lock);
  m_fault = fault;
}

long CallGate::Calls() {
  const std::lock_guard lock(m_lock);
  return m_calls;
}

long CallGate::CallsOf(const std::string& name) {
  const std::lock_guard lock(m_lock);
  const auto found = m_callsOf.find(name);
  return found == m_callsOf.end() ? 0 : found->second;
}

std::string CallGate::Journal() {
  const std::lock_guard lock(m_lock);
  return m_journal;
}

}  // namespace postmarker::peer
