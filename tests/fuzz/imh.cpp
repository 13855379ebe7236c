// ParseHeaderFile: records of any bytes, and of all their prefixes the same records in front.
#include "FuzzTarget.h"
#include "clients/incredimail/ImHeaderFile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace postmarker;
  const std::string_view bytes = fuzz::Bytes(data, size);
  PacedStop never;
  ImHeaderMap headers;
  ParseHeaderFile(bytes, L"directory", L"name", &never, &headers);
  // The smallest record has 80 bytes.
  fuzz::Require(headers.size() <= size / 60 + 1);
  for (const auto& [id, header] : headers) {
    fuzz::Require(id.size() == 38 && id == header.HeaderID);
    fuzz::Require(header.LightMsgSize == header.MsgSize && header.ContainerID.empty());
    fuzz::Require(header.StorePath == L"directory" && header.FileName == L"name");
    fuzz::Require(header.Subject.find(L'\0') == std::wstring::npos);
  }
  // What is read first does not depend on what comes later: fewer bytes, no other ids.
  ImHeaderMap fewer;
  ParseHeaderFile(bytes.substr(0, size / 2), L"directory", L"name", &never, &fewer);
  for (const auto& [id, header] : fewer) {
    fuzz::Require(headers.contains(id));
  }
  return 0;
}
