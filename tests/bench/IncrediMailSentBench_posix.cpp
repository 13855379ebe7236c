// Collecting the recipients of sent mail: 200,000 headers of a database against the same statement
// run bare through SQLite, and an older store, whose messages go through temporary files.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <random>

#include "Contest.h"
#include "clients/incredimail/ImHeaderFile.h"
#include "clients/incredimail/ImMessageFile.h"
#include "clients/incredimail/ImPaths.h"
#include "clients/incredimail/ImSentMail.h"
#include "clients/incredimail/ImTemporaryFile.h"
#include "support/ImDatabase.h"
#include "support/ImOlderStore.h"

namespace postmarker {
namespace {

using bench::Median;
using bench::SecondsOf;
using test::ImGuid;

constexpr uint32_t kHeaders = 200'000;

std::wstring Recipient(uint32_t person) {
  const std::wstring number = std::to_wstring(person);
  return person % 3 == 0 ? L"person." + number + L"@example.com"
                         : L"\"Person, " + number + L"\" <Person." + number + L"@Example.com>";
}

// A store whose sent mail went to so many people: to some of them often, to most of them rarely.
class SentStore {
 public:
  explicit SentStore(uint32_t people) : m_identity(m_folder.Path() / "{1}") {
    const std::wstring path = ContainersDatabasePath(Directory());
    test::MakeContainersDatabase(path, {{ImGuid(1), L"", 0, L""},
                                        {ImGuid(2), ImGuid(1), 0, L"Inbox"},
                                        {ImGuid(3), ImGuid(1), 2, L"Sent Items"}});
    test::ImDatabase database(path);
    database.AddHeadersTable();
    std::mt19937 random(3);
    std::vector<test::ImHeaderRow> rows;
    for (uint32_t i = 0; i < kHeaders; ++i) {
      const auto range = static_cast<uint32_t>(random() % people + 1);
      // 7919 and their count have no common factor: each once, in no order.
      const auto each = static_cast<uint32_t>(uint64_t{i} * 7919 % kHeaders);
      const uint32_t person = people == kHeaders ? each : static_cast<uint32_t>(random() % range);
      rows.push_back({ImGuid(1000 + i), ImGuid(3), Recipient(person), L"me@example.com",
                      L"Subject of message " + std::to_wstring(i), L"me@example.com", 5000, 5000,
                      static_cast<int>(i * 5000)});
    }
    database.AddHeaderRows(rows);
  }

  [[nodiscard]] std::wstring Directory() const { return m_identity.Directory(); }

 private:
  test::TempFolder m_folder;
  test::ImIdentityFolder m_identity;
};

AddressSet Collect(const std::wstring& directory) {
  ImAddressCollector collector;
  PacedStop never;
  CollectSentOf(directory, &never, &collector);
  AddressSet addresses;
  collector.AddTo(&addresses);
  return addresses;
}

template <class Use>
size_t RunBare(const std::wstring& directory, Use use) {
  const std::wstring database = ContainersDatabasePath(directory);
  sqlite3* connection = nullptr;
  sqlite3_stmt* statement = nullptr;
  ::sqlite3_open16(std::u16string(database.begin(), database.end()).c_str(), &connection);
  ::sqlite3_prepare16_v2(
      connection,
      u"SELECT toSender FROM headers WHERE containerid LIKE (SELECT containerid FROM containers "
      u"WHERE indexinparent=2 AND parentContainerId=(SELECT containerid FROM COntainers WHERE "
      u"parentContainerId='') );",
      -1, &statement, nullptr);
  size_t rows = 0;
  for (; ::sqlite3_step(statement) == SQLITE_ROW; ++rows) {
    const void* const text = ::sqlite3_column_text16(statement, 0);
    const int bytes = ::sqlite3_column_bytes16(statement, 0);
    use(std::u16string_view(static_cast<const char16_t*>(text), static_cast<size_t>(bytes) / 2));
  }
  ::sqlite3_finalize(statement);
  ::sqlite3_close(connection);
  return rows;
}

size_t FetchRows(const std::wstring& directory) {
  return RunBare(directory, [](std::u16string_view text) { benchmark::DoNotOptimize(text); });
}

std::vector<std::u16string> KeepRows(const std::wstring& directory) {
  std::vector<std::u16string> rows;
  RunBare(directory, [&rows](std::u16string_view text) { rows.emplace_back(text); });
  return rows;
}

// Takes turns, so that whatever else the machine does falls on all alike.
void CollectSentAgainstBareStatement(benchmark::State& state) {
  bench::KeepFreedMemory();
  const auto people = static_cast<uint32_t>(state.range(0));
  const SentStore store(people);
  const std::wstring directory = store.Directory();
  const size_t addresses = Collect(directory).size();
  if (addresses > people || addresses < people / 2 || FetchRows(directory) != kHeaders) {
    state.SkipWithError("the recipients are not all collected");
    return;
  }
  std::vector<double> collect;
  std::vector<double> keep;
  std::vector<double> fetch;
  for ([[maybe_unused]] const auto round : state) {
    fetch.push_back(SecondsOf([&] { return FetchRows(directory); }));
    keep.push_back(SecondsOf([&] { return KeepRows(directory); }));
    collect.push_back(SecondsOf([&] { return Collect(directory); }));
  }
  state.counters["addresses"] = static_cast<double>(addresses);
  state.counters["collect_ms"] = Median(collect) * 1e3;
  state.counters["bare_kept_ms"] = Median(keep) * 1e3;
  state.counters["bare_fetched_ms"] = Median(fetch) * 1e3;
  state.counters["ratio_to_kept"] = Median(collect) / Median(keep);
  state.counters["ratio_to_fetched"] = Median(collect) / Median(fetch);
}
BENCHMARK(CollectSentAgainstBareStatement)
    ->Arg(2000)
    ->Arg(20'000)
    ->Arg(kHeaders)
    ->Unit(benchmark::kMillisecond)
    ->MinTime(2);

constexpr size_t kOlderMessages = 2000;

// Messages of about 5 KB, each with copies.
void MakeOlderStore(const test::ImIdentityFolder& identity) {
  test::ImMessages messages;
  for (uint32_t i = 0; i < kOlderMessages; ++i) {
    const std::string number = std::to_string(i);
    std::string message = "From: me@example.com\r\nTo: to";
    message.append(number).append("@example.com\r\nCc: copy").append(number);
    message += "@example.com\r\nSubject: Message\r\n\r\n";
    while (message.size() < 5000) {
      message += "This is a line of a mail that somebody wrote to somebody else once.\r\n";
    }
    messages.Add({i, L"to" + std::to_wstring(i) + L"@example.com", L"me@example.com", L"Message"},
                 std::move(message));
  }
  identity.WriteMessages("Sent Items", messages);
}

// Each message is rebuilt, written to a temporary file, read from it once and deleted.
size_t RunBareFiles(const std::wstring& directory) {
  ImHeaderMap headers;
  PacedStop never;
  ReadHeaderFile(SentHeadersPath(directory), MessageStoreFolder(directory), kSentItems, &never,
                 &headers);
  size_t bytes = 0;
  for (const auto& [id, header] : headers) {
    ImMessage message;
    AssembleMessage(header, &message);
    ImTemporaryFile temporary;
    temporary.Write(message.Bytes());
    bytes += temporary.Bytes().size();
  }
  return bytes;
}

void GatherOlderAgainstBareFiles(benchmark::State& state) {
  const test::TempFolder folder;
  const std::string temporary = (folder.Path() / "temporary").string();
  std::filesystem::create_directories(temporary);
  ::setenv("TMPDIR", temporary.c_str(), 1);
  const test::ImIdentityFolder identity(folder.Path() / "{1}");
  MakeOlderStore(identity);
  PacedStop never;
  AddressSet addresses;
  GatherOlderSentAddresses(identity.Directory(), &never, &addresses);
  if (addresses.size() != 2 * kOlderMessages || RunBareFiles(identity.Directory()) == 0) {
    state.SkipWithError("not every message was read");
  }
  std::vector<double> gather;
  std::vector<double> bare;
  for ([[maybe_unused]] const auto round : state) {
    bare.push_back(SecondsOf([&] { return RunBareFiles(identity.Directory()); }));
    gather.push_back(SecondsOf([&] {
      AddressSet gathered;
      GatherOlderSentAddresses(identity.Directory(), &never, &gathered);
      return gathered;
    }));
  }
  ::unsetenv("TMPDIR");
  state.counters["gather_ms"] = Median(gather) * 1e3;
  state.counters["bare_files_ms"] = Median(bare) * 1e3;
  state.counters["ratio"] = Median(gather) / Median(bare);
}
BENCHMARK(GatherOlderAgainstBareFiles)->Unit(benchmark::kMillisecond)->MinTime(2);

}  // namespace
}  // namespace postmarker
