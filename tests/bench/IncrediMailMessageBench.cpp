// Rebuilding a message of 20 MB with ten attachments, against copying the same bytes out of mapped
// files into a buffer.
#include <benchmark/benchmark.h>

#include <cstring>
#include <random>

#include "Contest.h"
#include "clients/incredimail/ImMessageFile.h"
#include "support/ImOlderStore.h"

namespace postmarker {
namespace {

using bench::Median;
using bench::SecondsOf;

constexpr int kAttachments = 10;
constexpr size_t kMessageSize = 20'000'000;

// A message on disk, whole as well as in the client's form.
class MessageStore {
 public:
  explicit MessageStore(bool isEncoded) : m_identity(m_folder.Path() / "{1}") {
    std::string message = "From: a@example.com\r\nSubject: Pictures\r\n\r\n";
    while (message.size() < 4000) {
      message += "A line of the text in front of the pictures, as people write them.\r\n";
    }
    // Three bytes become four.
    const size_t size = kMessageSize / kAttachments * (isEncoded ? 3 : 4) / 4;
    std::mt19937 random(4);
    for (int i = 0; i < kAttachments; ++i) {
      const std::string name = "picture" + std::to_string(i) + ".jpg";
      std::string content(size, '\0');
      for (char& byte : content) {
        byte = static_cast<char>(random());
      }
      test::WriteFile(m_identity.Attachment(name), content);
      message += "--boundary\r\nContent-Type: image/jpeg\r\nContent-Transfer-Encoding: ";
      message += isEncoded ? "base64" : "binary";
      message += "\r\n\r\n" + std::string(test::kImMarker) + name + "\r\n";
    }
    message += "--boundary--\r\n\r\n";
    test::WriteFile(m_identity.StoreFile("Out.imm"), message);
    header.StorePath = m_identity.StorePath();
    header.FileName = L"Out";
    header.MsgSize = kMessageSize + 10'000;
    header.LightMsgSize = static_cast<uint32_t>(message.size());
    ImMessage whole;
    AssembleMessage(header, &whole);
    test::WriteFile(WholePath(), whole.Bytes());
  }

  [[nodiscard]] std::wstring WholePath() const { return m_folder.PathOf("whole.eml"); }

  ImHeader header;

 private:
  test::TempFolder m_folder;
  test::ImIdentityFolder m_identity;
};

uint32_t Assemble(const MessageStore& store) {
  ImMessage message;
  AssembleMessage(store.header, &message);
  benchmark::DoNotOptimize(message.buffer.get());
  return message.length;
}

uint32_t Copy(const MessageStore& store) {
  const MappedFile file(store.WholePath(), 1);
  const auto buffer = std::make_unique_for_overwrite<char[]>(file.Size() + 1);
  std::memcpy(buffer.get(), file.Data(), file.Size());
  buffer[file.Size()] = '\0';
  benchmark::DoNotOptimize(buffer.get());
  return file.Size();
}

void AssembleAgainstCopy(benchmark::State& state) {
  bench::KeepFreedMemory();
  const MessageStore store(state.range(0) != 0);
  if (Assemble(store) < kMessageSize || Assemble(store) != Copy(store)) {
    state.SkipWithError("the message is not whole");
    return;
  }
  std::vector<double> assemble;
  std::vector<double> copy;
  for ([[maybe_unused]] const auto round : state) {
    copy.push_back(SecondsOf([&] { return Copy(store); }));
    assemble.push_back(SecondsOf([&] { return Assemble(store); }));
  }
  state.counters["assemble_ms"] = Median(assemble) * 1e3;
  state.counters["copy_ms"] = Median(copy) * 1e3;
  state.counters["share_of_copys_speed"] = Median(copy) / Median(assemble);
}
BENCHMARK(AssembleAgainstCopy)
    ->ArgName("base64")
    ->Arg(0)
    ->Arg(1)
    ->Unit(benchmark::kMillisecond)
    ->MinTime(2);

}  // namespace
}  // namespace postmarker
