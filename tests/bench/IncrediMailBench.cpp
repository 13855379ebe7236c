// Listing the folders of a store of 5,000, against the same statement run bare through SQLite: once
// with every column fetched and dropped, once with the rows kept, which is what whoever lists them
// needs.
#include <benchmark/benchmark.h>

#include "Contest.h"
#include "clients/incredimail/ImFolderTree.h"
#include "clients/incredimail/ImStore.h"
#include "support/ImDatabase.h"
#include "support/TempFolder.h"

namespace postmarker {
namespace {

using bench::KeepFreedMemory;
using bench::Median;
using bench::SecondsOf;
using test::ImGuid;
using test::ImRow;

constexpr uint32_t kFolders = 5000;

// A store as a person might have it: three levels, names of some words, ids in no order.
class Store {
 public:
  Store() {
    std::vector<ImRow> rows = {{Id(0), L"", 0, L""}};
    for (uint32_t i = 1; i < kFolders; ++i) {
      const uint32_t parent = i < 20 ? 0 : i < 400 ? i % 19 + 1 : i % 380 + 20;
      rows.push_back({Id(i), Id(parent), static_cast<int>(i),
                      L"Folder number " + std::to_wstring(i), L"Folder" + std::to_wstring(i),
                      static_cast<int>(i % 100)});
    }
    test::MakeContainersDatabase(Path(), rows);
  }

  [[nodiscard]] std::wstring Path() const { return m_folder.PathOf("Containers.db"); }

 private:
  // Differs from the first digit on, as the client's random ids do.
  static std::wstring Id(uint32_t number) {
    const std::wstring id = ImGuid(number);
    const std::wstring scattered = ImGuid(number * 2654435761U);
    return L"{" + scattered.substr(scattered.size() - 9, 8) + id.substr(9);
  }

  test::TempFolder m_folder;
};

const Store& TheStore() {
  static const Store store;
  return store;
}

MailFolderList List(const std::wstring& database) {
  ImContainerMap containers = ReadContainerRows(database);
  FillPaths(&containers, L"\\\\A Person");
  MailFolderList folders;
  AppendFolders(containers, L"{00000000-0000-4000-8000-000000000000}", &folders);
  return folders;
}

struct BareRow {
  std::u16string id, parent, label, fileName;
  int index = 0;
  int messages = 0;
};

std::u16string_view BareText(sqlite3_stmt* statement, int column) {
  const void* const text = ::sqlite3_column_text16(statement, column);
  const int bytes = ::sqlite3_column_bytes16(statement, column);
  return {static_cast<const char16_t*>(text), static_cast<size_t>(bytes) / sizeof(char16_t)};
}

// The statement alone: every column of every row is fetched and given to `use`.
template <class Use>
size_t RunBare(const std::wstring& database, Use use) {
  const std::u16string path(database.begin(), database.end());
  sqlite3* connection = nullptr;
  sqlite3_stmt* statement = nullptr;
  ::sqlite3_open16(path.c_str(), &connection);
  ::sqlite3_prepare16_v2(connection,
                         u"SELECT ContainerID,ParentContainerID, IndexInParent, Label, FileName, "
                         u"MsgsCount FROM Containers;",
                         -1, &statement, nullptr);
  size_t rows = 0;
  for (; ::sqlite3_step(statement) == SQLITE_ROW; ++rows) {
    use(BareText(statement, 0), BareText(statement, 1), ::sqlite3_column_int(statement, 2),
        BareText(statement, 3), BareText(statement, 4), ::sqlite3_column_int(statement, 5));
  }
  ::sqlite3_finalize(statement);
  ::sqlite3_close(connection);
  return rows;
}

size_t FetchRows(const std::wstring& database) {
  return RunBare(database, [](auto... columns) { (benchmark::DoNotOptimize(columns), ...); });
}

std::vector<BareRow> KeepRows(const std::wstring& database) {
  std::vector<BareRow> rows;
  RunBare(database, [&rows](auto id, auto parent, int index, auto label, auto file, int messages) {
    rows.push_back({std::u16string(id), std::u16string(parent), std::u16string(label),
                    std::u16string(file), index, messages});
  });
  return rows;
}

// Takes turns, so that whatever else the machine does falls on all three alike.
void ListFoldersAgainstBareStatement(benchmark::State& state) {
  KeepFreedMemory();
  const std::wstring database = TheStore().Path();
  if (List(database).size() != kFolders || KeepRows(database).size() != kFolders ||
      FetchRows(database) != kFolders) {
    state.SkipWithError("the folders of the store are not all listed");
    return;
  }
  std::vector<double> list;
  std::vector<double> keep;
  std::vector<double> fetch;
  for ([[maybe_unused]] const auto round : state) {
    fetch.push_back(SecondsOf([&] { return FetchRows(database); }));
    keep.push_back(SecondsOf([&] { return KeepRows(database); }));
    list.push_back(SecondsOf([&] { return List(database); }));
  }
  state.counters["list_ms"] = Median(list) * 1e3;
  state.counters["bare_kept_ms"] = Median(keep) * 1e3;
  state.counters["bare_fetched_ms"] = Median(fetch) * 1e3;
  state.counters["ratio_to_kept"] = Median(list) / Median(keep);
  state.counters["ratio_to_fetched"] = Median(list) / Median(fetch);
}
BENCHMARK(ListFoldersAgainstBareStatement)->Unit(benchmark::kMillisecond)->MinTime(2);

}  // namespace
}  // namespace postmarker
