// A Windows Live Mail store whose only folder of sent mail holds up to 50,000 messages: the query
// of the folder and the collecting of addresses, beside esedbexport over the same file, which
// writes out the tables of messages and streams that the query reads.
#include <benchmark/benchmark.h>

#include <cstring>
#include <filesystem>
#include <string>

#include "Contest.h"
#include "PeerProcesses_posix.h"
#include "clients/livemail/LiveStore.h"
#include "support/LiveMailStore.h"
#include "support/TempFolder.h"
#include "support/Text.h"

namespace postmarker {
namespace {

using bench::Median;
using bench::SecondsOf;

constexpr uint32_t kSentFolder = 3;

std::u16string Utf16(const std::string& text) {
  return {text.begin(), text.end()};
}

constexpr size_t kPageSize = 8192;

// The peer refuses branches that are linked to their neighbors; ours does not look at these links.
std::string WithoutLinksOfBranches(std::string file) {
  for (uint32_t number = 1; test::EsePagePlace(number, kPageSize) < file.size(); ++number) {
    uint32_t flags = 0;
    std::memcpy(&flags, file.data() + test::EsePagePlace(number, kPageSize) + test::kEseFlags,
                sizeof(flags));
    if (flags != 0 && (flags & test::kEseLeaf) == 0) {
      test::HarmEsePage(&file, number, kPageSize, [](std::string* page) {
        constexpr size_t kLinks = 16;
        test::PutEse(page, kLinks, uint64_t{0});
      });
    }
  }
  return file;
}

// Each message has another sender, so that as many addresses are collected.
class LiveStoreFile {
 public:
  explicit LiveStoreFile(int32_t messages) {
    test::LiveMailContent content = {
        .folders = {{1, 0, u"Storage folders"}, {kSentFolder, 1, u"Sent Items", 3, 3}}};
    for (int32_t i = 1; i <= messages; ++i) {
      const std::string number = std::to_string(i);
      content.messages.push_back(
          {i, kSentFolder, i + 1, Utf16("\"Me " + number + "\" <me" + number + "@example.org>"),
           Utf16("\"To " + number + "\" <to" + number + "@example.com>"), 0});
      content.streams.push_back({i, Utf16("Sent Items\\00" + number + ".eml")});
    }
    test::WriteFile(Path(), WithoutLinksOfBranches(test::MakeLiveMailStore(content)));
  }

  [[nodiscard]] std::wstring Path() const { return m_folder.PathOf("Mail.MSMessageStore"); }

 private:
  test::TempFolder m_folder;
};

// The messages of the folder that have a file.
size_t QueryFolder(const LiveStoreFile& file) {
  livemail::LiveStore store(file.Path());
  livemail::WlmFolder folder;
  folder.Id = kSentFolder;
  PacedStop never;
  livemail::WlmMessages messages;
  store.ListFolderMessages(folder, livemail::MessageFiles::kFind, &never, &messages);
  size_t found = 0;
  for (const auto& [id, message] : messages[kSentFolder]) {
    found += message.Path.empty() ? 0 : 1;
  }
  return found;
}

AddressSet Collect(const LiveStoreFile& file) {
  PacedStop never;
  AddressSet addresses;
  livemail::CollectStoreAddresses(file.Path(), &never, &addresses);
  return addresses;
}

// User time of esedbexport over the two tables; negative if it is not installed.
double ExportTables(const LiveStoreFile& file) {
  double seconds = 0;
  for (const char* const table : {"Messages", "Streams"}) {
    const test::TempFolder output;
    const double taken =
        bench::RunProgram({"esedbexport", "-T", table, "-t", (output.Path() / "out").string(),
                           NarrowUtf8(file.Path())},
                          "/dev/null");
    if (taken < 0) {
      return taken;
    }
    seconds += taken;
  }
  return seconds;
}

void QueryFolderAgainstExport(benchmark::State& state) {
  const auto count = static_cast<int32_t>(state.range(0));
  const LiveStoreFile file(count);
  if (QueryFolder(file) != static_cast<size_t>(count) ||
      Collect(file).size() != static_cast<size_t>(count)) {
    state.SkipWithError("not every message was read");
    return;
  }
  std::vector<double> query;
  std::vector<double> collect;
  std::vector<double> exported;
  for ([[maybe_unused]] const auto round : state) {
    query.push_back(SecondsOf([&] { return QueryFolder(file); }));
    collect.push_back(SecondsOf([&] { return Collect(file); }));
    exported.push_back(ExportTables(file));
  }
  state.counters["query_ms"] = Median(query) * 1e3;
  state.counters["collect_ms"] = Median(collect) * 1e3;
  state.counters["query_us_per_message"] = Median(query) * 1e6 / count;
  state.counters["esedbexport_ms"] = Median(exported) * 1e3;
}
BENCHMARK(QueryFolderAgainstExport)
    ->Arg(12'500)
    ->Arg(25'000)
    ->Arg(50'000)
    ->Unit(benchmark::kMillisecond)
    ->Iterations(5);

}  // namespace
}  // namespace postmarker
