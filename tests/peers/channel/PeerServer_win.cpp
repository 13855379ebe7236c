#include "PeerServer_win.h"

#include <shellapi.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <thread>

#include "support/DetachedThread_win.h"
#include "support/Text.h"

namespace postmarker::peer {
namespace {

constexpr const char* kSteps[] = {"privateMade", "rendezvousMade", "listening", "claimed",
                                  "dropped",     "answered",       "connected"};

[[noreturn]] void Hang() {
  for (;;) {
    ::Sleep(INFINITE);
  }
}

[[noreturn]] void Die() {
  ::TerminateProcess(::GetCurrentProcess(), 3);
  Hang();
}

}  // namespace

Fault Fault::Read(const nlohmann::json& state) {
  Fault fault;
  const auto found = state.find("fault");
  if (found == state.end()) {
    return fault;
  }
  fault.action = found->at("do").get<std::string>();
  const std::string step = found->value("step", "");
  for (size_t i = 0; i < std::size(kSteps); ++i) {
    if (step == kSteps[i]) {
      fault.step = static_cast<int>(i);
    }
  }
  fault.command = found->value("command", 0U);
  fault.message = found->value("message", 0U);
  fault.value = found->value("value", nlohmann::json());
  fault.milliseconds = found->value("milliseconds", 0U);
  return fault;
}

std::optional<uint32_t> PeerConversation::NextCommand() {
  const std::optional<uint32_t> command = m_end.ReceiveNumber(kPatience);
  m_command = command.value_or(0);
  m_message = 0;
  return command;
}

bool PeerConversation::IsFaulty() {
  const uint32_t message = m_message++;
  const bool isReached =
      m_fault.action == "slow" ? message >= m_fault.message : message == m_fault.message;
  return !m_fault.action.empty() && m_fault.step < 0 && m_fault.command == m_command && isReached;
}

bool PeerConversation::SendFlickering(const std::function<bool()>& send) {
  std::atomic<bool> over = false;
  auto* const length = reinterpret_cast<volatile uint32_t*>(m_end.Region());
  std::thread flicker([&] {
    while (!over) {
      for (const uint32_t wrong : {0xFFFF'FFFEU, 3U, 0U, 0x7FFF'FFFEU, 4'000U}) {
        *length = wrong;
      }
    }
  });
  const bool sent = send();
  over = true;
  flicker.join();
  return sent;
}

bool PeerConversation::SendFault(const std::function<bool()>& send) {
  const std::string& action = m_fault.action;
  if (action == "hang") {
    Hang();
  }
  if (action == "die") {
    Die();
  }
  if (action == "say") {
    return m_end.SendNumber(m_fault.value.get<uint32_t>(), kPatience);
  }
  if (action == "text") {
    return m_end.SendText(WideText(m_fault.value), kPatience);
  }
  if (action == "late" || action == "slow") {
    ::Sleep(m_fault.milliseconds);
    return send();
  }
  if (action == "flicker") {
    return SendFlickering(send);
  }
  const uint32_t length = action == "odd" ? 3U : action == "beyond" ? 4'090U : 0xFFFF'FFFFU;
  m_end.Announce(action == "type" ? 4 : length, action == "type" ? 3 : 1, L"abc", 6);
  return m_end.WaitTaken(kPatience);
}

bool PeerConversation::SendText(const std::wstring& text) {
  const auto send = [&] { return m_end.SendText(text, kPatience); };
  return IsFaulty() ? SendFault(send) : send();
}

bool PeerConversation::SendNumber(uint32_t value) {
  const auto send = [&] { return m_end.SendNumber(value, kPatience); };
  return IsFaulty() ? SendFault(send) : send();
}

void ServeForever(
    const std::wstring& rendezvous, const PeerArguments& arguments,
    const std::function<void(PeerConversation&, const nlohmann::json& state)>& converse) {
  const Fault fault = Fault::Read(arguments.State());
  RawServerOptions options;
  options.name = rendezvous;
  options.onStep = [&](ServerStep step) {
    const bool stops = static_cast<int>(step) == fault.step;
    if (step == ServerStep::kListening || stops) {
      arguments.SetReady();
    }
    if (stops) {
      fault.action == "die" ? Die() : Hang();
    }
  };
  for (;;) {
    if (std::optional<RawEnd> end = RawListen(options)) {
      test::RunDetached([&, taken = std::make_shared<RawEnd>(std::move(*end))] {
        const nlohmann::json state = arguments.State();
        PeerConversation conversation(std::move(*taken), Fault::Read(state));
        converse(conversation, state);
      });
    }
  }
}

std::optional<PeerArguments> PeerArguments::Read() {
  int count = 0;
  wchar_t** const arguments = ::CommandLineToArgvW(::GetCommandLineW(), &count);
  if (arguments == nullptr || count != 3) {
    return std::nullopt;
  }
  PeerArguments read(arguments[1], arguments[2], nlohmann::json::value_t::discarded);
  read.m_state = read.State();
  return read.m_state.is_discarded() ? std::nullopt : std::optional(std::move(read));
}

nlohmann::json PeerArguments::State() const {
  std::ifstream file{std::filesystem::path(m_stateFile)};
  nlohmann::json state = nlohmann::json::parse(file, nullptr, false);
  return state.is_discarded() ? m_state : state;
}

void PeerArguments::SetReady() const {
  const KernelHandle event(::OpenEventW(EVENT_MODIFY_STATE, FALSE, m_readyEvent.c_str()));
  ::SetEvent(event.Get());
}

std::wstring WideText(const nlohmann::json& value) {
  return value.is_string() ? WidenUtf8(value.get<std::string>()) : std::wstring();
}

}  // namespace postmarker::peer
