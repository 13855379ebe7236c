// wab: the address book of Outlook Express.
#include "Commands.h"
#include "Input.h"
#include "clients/storeapi/WabFile.h"

namespace postmarker::inspect {

bool RunWab(const Arguments& arguments, JsonWriter* json) {
  const Input input(arguments.texts.front());
  AddressSet addresses;
  storeapi::AddWabAddresses(input.Bytes(), &addresses);
  if (json != nullptr) {
    json->BeginArray();
    for (const std::wstring& address : addresses) {
      json->Wide(address);
    }
    json->EndArray();
  }
  return true;
}

}  // namespace postmarker::inspect
