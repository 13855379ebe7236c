// Collecting the recipients of sent mail and the contacts from the stand-in for Outlook, with the
// calls that cross its interface for each item. Ends with 1 if they are more than is needed.
#include <windows.h>

#include <benchmark/benchmark.h>

#include <cstdio>

#include "clients/outlook/OutlookAddresses_win.h"
#include "support/OutlookFixture_win.h"

namespace postmarker::test {
namespace {

// To fetch the item and to query its kind. Its table takes six more: the item's MAPI object, its
// interface, the table, its columns, and two reads of rows, as the second finds none.
constexpr double kCallsPerMail = 2 + 6;
// To fetch the item and to query its kind, its MAPI object, its two interfaces, and its property.
constexpr double kCallsPerContact = 2 + 4;

// What opens folders and stores, of which there are few.
constexpr long kCallsBesides = 50;

bool g_isTooDear = false;

void Report(benchmark::State& state, const OutlookInstallation& outlook, double limit) {
  const auto items = static_cast<double>(state.range(0));
  const auto calls = static_cast<double>(outlook.Peer().Calls());
  state.SetComplexityN(state.range(0));
  state.counters["calls/item"] = calls / items;
  state.counters["items/s"] =
      benchmark::Counter(items, benchmark::Counter::kIsIterationInvariantRate);
  if (calls > limit * items + kCallsBesides) {
    std::printf("FAILED: %.0f items cost %.0f calls\n", items, calls);
    g_isTooDear = true;
  }
}

void SentMail(benchmark::State& state) {
  const ComApartment apartment;
  OutlookInstallation outlook;
  outlook.SetMailbox(LargeOutlookMailbox(static_cast<int>(state.range(0)), 0));
  for (auto _ : state) {
    outlook.Peer().ResetCalls();
    AddressSet addresses;
    const ComPtr<IDispatch> application = outlook.MakeApplication();
    (void)CollectOutlookSentAddresses(application.Get(), nullptr, UseHook::kNo, {}, &addresses);
    if (addresses.size() < static_cast<size_t>(state.range(0))) {
      state.SkipWithError("addresses are missing");
    }
  }
  Report(state, outlook, kCallsPerMail);
}
BENCHMARK(SentMail)
    ->RangeMultiplier(2)
    ->Range(2'500, 20'000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity();

void Contacts(benchmark::State& state) {
  const ComApartment apartment;
  OutlookInstallation outlook;
  outlook.SetMailbox(LargeOutlookMailbox(0, static_cast<int>(state.range(0))));
  for (auto _ : state) {
    outlook.Peer().ResetCalls();
    AddressSet addresses;
    const ComPtr<IDispatch> application = outlook.MakeApplication();
    (void)CollectOutlookContacts(application.Get(), UseHook::kNo, {}, &addresses);
    if (addresses.size() != static_cast<size_t>(state.range(0))) {
      state.SkipWithError("addresses are missing");
    }
  }
  Report(state, outlook, kCallsPerContact);
}
BENCHMARK(Contacts)
    ->RangeMultiplier(2)
    ->Range(2'500, 20'000)
    ->Unit(benchmark::kMillisecond)
    ->Complexity();

}  // namespace
}  // namespace postmarker::test

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return postmarker::test::g_isTooDear ? 1 : 0;
}
