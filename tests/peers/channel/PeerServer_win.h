// What the processes of the suite that serve a channel have in common, when they are played by a
// peer: one rendezvous, a thread for each client, and a fault on demand.
#pragma once

#include <cstdint>
#include <functional>
#include <nlohmann/json.hpp>
#include <string>

#include "RawChannel_win.h"

namespace postmarker::peer {

// A fault is told in JSON, and happens once in each conversation that it fits:
//   {"do": "hang", "step": "claimed"}             during the handshake, see ServerStep; what the
//                                                 state says when the process starts
//   {"do": "hang", "command": 1, "message": 0}    in place of the message with this number, counted
//                                                 from 0 within the command's answers; what the
//                                                 state says when the conversation begins
// At both, "do" may be
//   "hang"   nothing more happens in this conversation
//   "die"    the process ends
// In place of a message also
//   "say"        a number is sent: "value"
//   "text"       a text is sent: "value"
//   "odd"        a text of an odd length
//   "beyond"     a text whose length goes beyond the region
//   "huge"       a text whose length has all bits set
//   "type"       a message of type 3
//   "late"       the true message, after "milliseconds"
//   "slow"       the same for this message and each one after it
//   "flicker"    the true message, whose length changes while it is being read
struct Fault {
  std::string action;
  int step = -1;
  uint32_t command = 0;
  uint32_t message = 0;
  nlohmann::json value;
  uint32_t milliseconds = 0;

  static Fault Read(const nlohmann::json& state);
};

// One client's conversation, with a fault in it.
class PeerConversation {
 public:
  PeerConversation(RawEnd end, Fault fault) : m_end(std::move(end)), m_fault(std::move(fault)) {}

  // Takes the number of the next command.
  std::optional<uint32_t> NextCommand();
  std::optional<std::wstring> ReceiveText() { return m_end.ReceiveText(kPatience); }
  std::optional<uint32_t> ReceiveNumber() { return m_end.ReceiveNumber(kPatience); }

  // Sends an answer, or does the fault in its place. False if the client does not take it.
  bool SendText(const std::wstring& text);
  bool SendNumber(uint32_t value);

 private:
  static constexpr uint32_t kPatience = 30'000;

  bool IsFaulty();
  bool SendFault(const std::function<bool()>& send);
  bool SendFlickering(const std::function<bool()>& send);

  RawEnd m_end;
  Fault m_fault;
  uint32_t m_command = 0;
  uint32_t m_message = 0;
};

// The arguments of a peer program: an event to set when it is ready, and a file with its state in
// JSON, which may be rewritten while the program runs.
class PeerArguments {
 public:
  // Nothing if they, or the file, can't be read.
  static std::optional<PeerArguments> Read();

  void SetReady() const;
  [[nodiscard]] const std::wstring& StateFile() const { return m_stateFile; }

  // The file as it is now; what was read before where it can't be read.
  [[nodiscard]] nlohmann::json State() const;

 private:
  PeerArguments(std::wstring readyEvent, std::wstring stateFile, nlohmann::json state)
      : m_readyEvent(std::move(readyEvent)),
        m_stateFile(std::move(stateFile)),
        m_state(std::move(state)) {}

  std::wstring m_readyEvent;
  std::wstring m_stateFile;
  nlohmann::json m_state;
};

// Serves one client after another until the process is ended, each with the state of its time.
[[noreturn]] void ServeForever(
    const std::wstring& rendezvous, const PeerArguments& arguments,
    const std::function<void(PeerConversation&, const nlohmann::json& state)>& converse);

std::wstring WideText(const nlohmann::json& value);

}  // namespace postmarker::peer
