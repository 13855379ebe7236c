// Links the module by its import library and asks for the two answers that need no window: a null
// request and an owner that is no window. Exits with 0 if both are as promised.
#include <postmarker/Postmarker.h>

#include <cstdio>

int main() {
  const int32_t forNull = ShowWizard(nullptr);
  postmarker::WizardRequest request;
  request.clientName = L"IncrediMail";
  request.parentWindow = reinterpret_cast<HWND__*>(uintptr_t{0x7ffffffe});
  const int32_t forGoneOwner = ShowWizard(&request);
  std::printf("ShowWizard(null) = %d, with an owner that is gone = %d\n", forNull, forGoneOwner);
  return forNull == postmarker::kWizardCancelled && forGoneOwner == postmarker::kWizardCancelled
             ? 0
             : 1;
}
