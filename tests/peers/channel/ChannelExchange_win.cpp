// Long conversations over the product's channel, and many clients at one rendezvous.
// Usage: channel_exchange READY serve RENDEZVOUS     one conversation as the server; ends with 0 if
//                                                    no message was lost or changed
//        channel_exchange messages COUNT             a conversation with a process of its own
//        channel_exchange clients COUNT              so many processes claim one rendezvous at once
// The latter two print what they found.
#include <windows.h>

#include <cstdio>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "support/ChannelExchange_win.h"
#include "support/ChannelPair_win.h"

namespace postmarker::test {
namespace {

std::wstring OwnPath() {
  wchar_t path[MAX_PATH] = {};
  ::GetModuleFileNameW(nullptr, path, MAX_PATH);
  return path;
}

int Serve(const wchar_t* ready, const wchar_t* rendezvous) {
  {
    const KernelHandle event(::OpenEventW(EVENT_MODIFY_STATE, FALSE, ready));
    ::SetEvent(event.Get());
  }
  ChannelEnd end;
  return ChannelListenRetry(rendezvous, &end, PatientListening()) && AnswerExchange(*end) ? 0 : 1;
}

// A client that is given a number over its channel and sends it back.
int Claim(const wchar_t* rendezvous) {
  ChannelEnd end;
  uint32_t number = 0;
  return ChannelConnectRetry(rendezvous, &end, {nullptr, 10 * kPatience, kPatience}) &&
                 end->ReceiveNumber(&number, 10 * kPatience) && end->SendNumber(number, kPatience)
             ? 0
             : 1;
}

int Messages(uint32_t count) {
  const std::wstring name = FreshObjectName();
  const PeerProcess server = StartPeer(OwnPath(), {L"serve", name});
  ChannelEnd client;
  if (!ChannelConnectRetry(name.c_str(), &client, PatientConnecting())) {
    std::printf("no connection\n");
    return 1;
  }
  const uint64_t start = ::GetTickCount64();
  const uint32_t passed = ExchangeMessages(*client, Side::kClient, count);
  const auto milliseconds = static_cast<double>(::GetTickCount64() - start);
  const bool serverAgrees = server.WaitForExit() == 0;
  std::printf("%u of %u messages passed unchanged in %.1f s, %.3f ms each; the server %s\n", passed,
              count, milliseconds / 1'000, milliseconds / count,
              serverAgrees ? "agrees" : "DISAGREES");
  return passed == count && serverAgrees ? 0 : 1;
}

int Clients(uint32_t count) {
  const std::wstring name = FreshObjectName();
  std::vector<PeerProcess> clients;
  for (uint32_t i = 0; i < count; ++i) {
    clients.emplace_back(OwnPath(), std::vector<std::wstring>{L"-", L"claim", name});
  }
  const uint64_t start = ::GetTickCount64();
  std::vector<ChannelEnd> ends(count);
  for (ChannelEnd& end : ends) {
    ChannelListenRetry(name.c_str(), &end, PatientListening());
  }
  const auto milliseconds = static_cast<double>(::GetTickCount64() - start);
  uint32_t own = 0;
  for (uint32_t i = 0; i < count; ++i) {
    uint32_t number = count;
    own += ends[i] && ends[i]->SendNumber(i, kPatience) &&
                   ends[i]->ReceiveNumber(&number, kPatience) && number == i
               ? 1
               : 0;
  }
  uint32_t satisfied = 0;
  for (const PeerProcess& client : clients) {
    satisfied += client.WaitForExit() == 0 ? 1 : 0;
  }
  std::printf("%u of %u clients got a channel of their own in %.1f s, %u say so\n", own, count,
              milliseconds / 1'000, satisfied);
  return own == count && satisfied == count ? 0 : 1;
}

int Run(int count, wchar_t** arguments) {
  const std::wstring first = count > 1 ? arguments[1] : L"";
  const std::wstring second = count > 2 ? arguments[2] : L"";
  const auto number = static_cast<uint32_t>(std::wcstoul(second.c_str(), nullptr, 10));
  if (count == 4 && second == L"serve") {
    return Serve(arguments[1], arguments[3]);
  }
  if (count == 4 && second == L"claim") {
    return Claim(arguments[3]);
  }
  if (count == 3 && first == L"messages" && number > 0) {
    return Messages(number);
  }
  if (count == 3 && first == L"clients" && number > 0) {
    return Clients(number);
  }
  std::printf("usage: channel_exchange messages|clients COUNT\n");
  return 2;
}

}  // namespace
}  // namespace postmarker::test

int wmain(int argc, wchar_t** argv) {
  return postmarker::test::Run(argc, argv);
}
