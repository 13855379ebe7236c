// The text of a folder: any text gives a record, and a record that went through a text is the same.
#include "FuzzTarget.h"
#include "ipc/FolderText.h"
#include "support/Text.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace postmarker;
  const std::wstring text = WidenUtf8(fuzz::Bytes(data, size));
  const MailFolderRef folder = DecodeFolderText(text);
  fuzz::Require(folder.name.size() + folder.firstId.size() + folder.secondId.size() <= text.size());
  const std::wstring again = EncodeFolderText(folder);
  fuzz::Require(DecodeFolderText(again) == folder);

  const MailFolderRef whole = {text, Narrow(text), Narrow(text), size % 2 != 0 ? 1U : 0U};
  fuzz::Require(DecodeFolderText(EncodeFolderText(whole)) == whole);
  return 0;
}
