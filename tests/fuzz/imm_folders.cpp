// ParseFolderFile against the plain reader with recursion, and FindContainerName.
#include "FuzzTarget.h"
#include "clients/incredimail/ImFieldReader.h"
#include "clients/incredimail/ImFolderFile.h"
#include "clients/incredimail/ImFolderTree.h"
#include "support/ImPlainReaders.h"
#include "support/Text.h"

namespace postmarker::fuzz {
namespace {

constexpr int kMaxPlainEntries = 2000;
constexpr wchar_t kRoot[] = L"root";

std::wstring IdOf(const std::string& id) {
  return id.empty() ? std::wstring(kRoot) : ImFieldReader(id, 0).ReadGuid();
}

void RequireSame(const test::PlainFolderReader& plain, const ImContainerMap& map) {
  Require(map.Size() == plain.folders.size() + 1);
  for (const auto& [id, folder] : plain.folders) {
    const ImContainer* const found = map.Find(IdOf(id));
    Require(found != nullptr && found->ParentContainerID == IdOf(folder.parent));
    Require(found->IndexInParent == folder.index && found->Label == Widen(folder.label));
    Require(found->FileName == Widen(folder.fileName));
  }
}

}  // namespace
}  // namespace postmarker::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace postmarker;
  const std::string_view bytes = fuzz::Bytes(data, size);
  ImContainerMap map = ParseFolderFile(bytes, fuzz::kRoot);
  test::PlainFolderReader plain(bytes, fuzz::kMaxPlainEntries);
  plain.Read();
  if (plain.isTooLong) {
    return 0;
  }
  fuzz::RequireSame(plain, map);
  FillPaths(&map, fuzz::kRoot);
  MailFolderList folders;
  AppendFolders(map, L"identity", &folders);
  fuzz::Require(!folders.empty() && folders.size() <= map.Size());
  if (!plain.folders.empty()) {
    FindContainerName(bytes, fuzz::IdOf(plain.folders.rbegin()->first));
  }
  FindContainerName(bytes, L"{gone}");
  return 0;
}
