#include "clients/WhitelistPrefill_win.h"

#include <algorithm>
#include <vector>

#include "clients/ClientTable.h"
#include "clients/CrashGuard_win.h"
#include "settings/AddressLists.h"
#include "support/ModuleReference_win.h"
#include "support/Registry_win.h"
#include "support/SuiteKeys.h"

namespace postmarker {
namespace {

constexpr wchar_t kWhitelistPrefilled[] = L"WhitelistPrefilled";

std::vector<const ClientRow*> RowsByTurn() {
  std::vector<const ClientRow*> rows;
  for (const ClientRow& row : AllClients()) {
    if (row.harvestTurn != 0) {
      rows.push_back(&row);
    }
  }
  std::stable_sort(rows.begin(), rows.end(), [](const ClientRow* a, const ClientRow* b) {
    return a->harvestTurn < b->harvestTurn;
  });
  return rows;
}

void CollectIntoWhitelist(const MailClientAdapter& adapter) {
  AddressSet addresses;
  (void)adapter.HarvestAddresses({}, &addresses);
  AddAddressesToWhitelist(addresses);
}

// Runs a step of one client's harvest so that neither a crash nor want of memory ends the others'.
template <class Step>
void RunStep(Step step) {
  (void)RunGuarded([&step]() noexcept {
    try {
      step();
    } catch (...) {
      // Out of memory, at worst: what follows may need less.
      ::SetLastError(ERROR_OUTOFMEMORY);
    }
  });
}

void HarvestClient(const ClientRow& row) {
  if (!row.isInstalled || !row.isInstalled(ThisMachine())) {
    return;
  }
  CollectIntoWhitelist(*row.adapter);
}

DWORD WINAPI HarvestThread(void* argument) noexcept {
  HarvestAllClients();
  const auto module = static_cast<HMODULE>(argument);
  if (module != nullptr) {
    ::FreeLibraryAndExitThread(module, 0);
  }
  return 0;
}

}  // namespace

void HarvestAllClients() {
  RunStep([] {
    for (const ClientRow* row : RowsByTurn()) {
      RunStep([row] { HarvestClient(*row); });
    }
  });
}

KernelHandle LaunchWhitelistPrefill() {
  RegistryKey::Create(HKEY_CURRENT_USER, kSpamfilterKey, KEY_WRITE | SuiteKeyView())
      .WriteDword(kWhitelistPrefilled, 1);
  LibraryHandle module = ReferToThisModule();
  KernelHandle thread(
      ::CreateThread(nullptr, 0, &HarvestThread, module.Get(), CREATE_SUSPENDED, nullptr));
  if (thread) {
    // The thread gives the reference back.
    (void)module.Release();
    ::ResumeThread(thread.Get());
  }
  return thread;
}

}  // namespace postmarker
