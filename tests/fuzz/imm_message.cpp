// AssembleMessage against the plain assembler. The input begins with twelve bytes: the three
// numbers of the place. Attachments have the names "a" to "d".
#include <map>

#include "FuzzTarget.h"
#include "clients/incredimail/ImAttachmentName.h"
#include "clients/incredimail/ImMessageFile.h"
#include "support/ImPlainReaders.h"

namespace postmarker::fuzz {
namespace {

class FixedAttachments : public ImAttachments {
 public:
  static const std::string* Find(std::string_view name) {
    static const std::map<std::string, std::string, std::less<>> contents = {
        {"a", "A"},
        {"b", std::string(3000, 'b')},
        {"c", "----------[%ImFilePath%]----------a\r\n"},
        {"d", "\n\r"}};
    const auto found = contents.find(name);
    return found == contents.end() ? nullptr : &found->second;
  }
  std::optional<std::string_view> Open(std::string_view name) override {
    IsAttachmentName(name);
    const std::string* const content = Find(name);
    return content == nullptr ? std::nullopt : std::optional<std::string_view>(*content);
  }
};

uint32_t NumberAt(const uint8_t* data) {
  return data[0] | data[1] << 8 | data[2] << 16 | static_cast<uint32_t>(data[3]) << 24;
}

}  // namespace
}  // namespace postmarker::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace postmarker;
  constexpr size_t kPlaceSize = 12;
  if (size < kPlaceSize) {
    return 0;
  }
  const ImMessagePlace place = {fuzz::NumberAt(data), fuzz::NumberAt(data + 4),
                                fuzz::NumberAt(data + 8)};
  const std::string_view file = fuzz::Bytes(data + kPlaceSize, size - kPlaceSize);
  fuzz::FixedAttachments attachments;
  const ImMessage message = AssembleMessage(file, place, &attachments);
  fuzz::Require(message.buffer != nullptr && message.buffer[message.length] == '\0');
  test::PlainAssembler plain(
      file, place.msgSize, place.lightMsgSize, place.msgPos,
      [](const std::string& name) { return fuzz::FixedAttachments::Find(name); });
  fuzz::Require(message.Bytes() == plain.Assemble());
  return 0;
}
