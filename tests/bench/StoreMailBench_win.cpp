// The folders of a large store and the recipients of a large sent folder, each beside the bare
// calls into the same store that nobody can do without: what is more is what the adapter costs.
#include <windows.h>

#include <benchmark/benchmark.h>

#include <stdexcept>
#include <vector>

#include "clients/storeapi/StoreAdapter_win.h"
#include "clients/storeapi/StoreMail.h"
#include "clients/storeapi/StoreSession_win.h"
#include "support/StoreInstallation_win.h"

namespace postmarker {
namespace {

using nlohmann::json;
using storeapi::FolderPropsQuery;
using storeapi::MessageWalk;
using storeapi::StoreSession;

// As mail programs write them: about a kilobyte of headers, and a body.
std::string Message(int number) {
  std::string message;
  for (int hop = 0; hop < 3; ++hop) {
    message += "Received: from relay" + std::to_string(hop) +
               ".example (relay [192.0.2.1])\r\n\tby mx.example with ESMTP id A" +
               std::to_string(number) + "; Mon, 1 Oct 2007 10:00:00 +0000\r\n";
  }
  return message + "Message-ID: <" + std::to_string(number) +
         "@x.example>\r\nFrom: \"A. Person\" <me@x.example>\r\nTo: \"Friend, One\" <friend" +
         std::to_string(number % 400) + "@x.example>, other" + std::to_string(number % 70) +
         "@y.example\r\nCc: third@z.example\r\nSubject: About something\r\nMIME-Version: 1.0\r\n"
         "Content-Type: text/plain; charset=iso-8859-1\r\nX-Mailer: a mail program\r\n\r\n" +
         std::string(6'000, 'b');
}

// A root with branches of fifty folders each.
json Folders(int count) {
  json root = {{"id", 0}, {"name", "Local Folders"}, {"children", json::array()}};
  for (int id = 1; id < count;) {
    json branch = {{"id", id}, {"name", "Branch " + std::to_string(id)}};
    ++id;
    for (int i = 0; i < 49 && id < count; ++i, ++id) {
      branch["children"].push_back({{"id", id}, {"name", "Folder number " + std::to_string(id)}});
    }
    root["children"].push_back(branch);
  }
  return root;
}

const test::StoreInstallation& Installation() {
  static const test::StoreInstallation installation;
  return installation;
}

// The first opening in a process loads libraries, which belongs to no benchmark.
void OpenOnce() {
  Installation().Peer().SetState({{"root", {{"name", "R"}}}});
  (void)StoreSession();
}

void SetSent(int64_t count) {
  std::vector<std::string> messages;
  for (int i = 0; i < 1'000; ++i) {
    messages.push_back(Message(i));
  }
  Installation().Peer().SetState(
      {{"root",
        {{"name", "R"},
         {"children",
          {{{"id", 6}, {"type", 2}, {"messages", messages}, {"repeat", count / 1'000}}}}}}});
}

size_t BareFolders(storeapi::IStoreNamespace* store, storeapi::FolderId parent) {
  FolderPropsQuery query;
  storeapi::EnumHandle handle = nullptr;
  size_t count = 1;
  HRESULT result = query.AskEitherForm([&](storeapi::StoreFolderProps* props) {
    return store->GetFirstSubFolder(parent, props, &handle);
  });
  while (result == S_OK) {
    count += BareFolders(store, query.Props().dwFolderId);
    result = query.AskAgain(
        [&](storeapi::StoreFolderProps* props) { return store->GetNextSubFolder(handle, props); });
  }
  store->GetSubFolderClose(handle);
  return count;
}

void BareWalk(benchmark::State& state) {
  Installation().Peer().SetState({{"root", Folders(static_cast<int>(state.range(0)))}});
  for (auto _ : state) {
    const StoreSession session;
    if (BareFolders(session.Store(), 0) != static_cast<size_t>(state.range(0))) {
      state.SkipWithError("the store has other folders");
    }
  }
}

void ListFolders(benchmark::State& state) {
  Installation().Peer().SetState({{"root", Folders(static_cast<int>(state.range(0)))}});
  for (auto _ : state) {
    MailFolderList folders;
    std::wstring text;
    storeapi::ListStoreFolders({}, false, &folders, &text);
    if (folders.size() != static_cast<size_t>(state.range(0))) {
      state.SkipWithError("the list is another one");
    }
  }
}

// Opens each message and reads it once, as the collector must.
void BareReads(benchmark::State& state) {
  SetSent(state.range(0));
  std::vector<char> buffer(storeapi::kMessageBytesRead);
  for (auto _ : state) {
    const StoreSession session;
    ComPtr<storeapi::IStoreFolder> folder;
    session.Store()->OpenSpecialFolder(2, 0, folder.Put());
    for (MessageWalk messages(folder.Get()); messages.HasMessage(); messages.Next()) {
      ComPtr<IStream> stream;
      ULONG read = 0;
      folder->OpenMessage(messages.Id(), IID_IStream, stream.PutVoid());
      stream->Read(buffer.data(), storeapi::kMessageBytesRead, &read);
      benchmark::DoNotOptimize(buffer.data());
    }
  }
}

void CollectSent(benchmark::State& state) {
  SetSent(state.range(0));
  for (auto _ : state) {
    AddressSet addresses;
    (void)storeapi::CollectStoreSentAddresses({}, nullptr, false, &addresses);
    if (addresses.size() != 471) {
      state.SkipWithError("other addresses were found");
    }
  }
  const auto& peer = Installation().Peer();
  const auto reads = static_cast<double>(peer->countCalls("Stream.Read"));
  state.counters["reads per message"] =
      reads / static_cast<double>(state.range(0) * static_cast<int64_t>(state.iterations()));
  state.counters["largest read"] = peer->largestRead();
}

BENCHMARK(BareWalk)->Arg(500)->Arg(5'000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(ListFolders)->Arg(500)->Arg(5'000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BareReads)->Arg(5'000)->Arg(50'000)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(CollectSent)->Arg(5'000)->Arg(50'000)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace postmarker

int main(int argc, char** argv) {
  postmarker::OpenOnce();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
