#include "Commands.h"

#include <algorithm>
#include <array>
#include <limits>

namespace postmarker::inspect {
namespace {

constexpr size_t kAny = std::numeric_limits<size_t>::max();

constexpr auto kCommands = std::to_array<Command>({
    {"headers", "FILE...", 1, kAny, true, {}, RunHeaders},
    {"message", "FILE...", 1, kAny, true, {}, RunMessage},
    {"hooks", "FILE", 1, 1, true, {}, RunHooks},
    {"words", "FILE", 1, 1, true, {}, RunWords},
    {"html", "FILE", 1, 1, true, {}, RunHtml},
    {"addresses", "FILE", 1, 1, true, {}, RunAddresses},
    {"domain", "FILE", 1, 1, true, {}, RunDomain},
    {"received", "FILE", 1, 1, true, {}, RunReceived},
    {"decode", "words|quoted-printable|base64 FILE", 2, 2, false, {}, RunDecode},
    {"folder-text",
     "encode FLAG FIRSTID SECONDID NAME|decode TEXT",
     2,
     5,
     false,
     {},
     RunFolderText},
    {"column-state", "COLUMNS TEXT", 2, 2, false, {}, RunColumnState},
    {"pipe-folder", "TEXT", 1, 1, false, {}, RunPipeFolder},
    {"imm-folders", "FILE [ROOTLABEL]", 1, 2, false, {}, RunImmFolders},
    {"imh", "FILE STOREDIR NAME", 3, 3, false, {}, RunImh},
    {"imm-message", "STOREDIR NAME MSGSIZE LIGHTMSGSIZE MSGPOS", 5, 5, false, {}, RunImmMessage},
    {"imb", "FILE", 1, 1, false, {}, RunImb},
    {"incredimail", "IDENTITYDIR ROOTLABEL", 2, 2, false, {}, RunIncrediMail},
});

}  // namespace

std::optional<std::string> Arguments::Value(std::string_view option) const {
  const auto found = std::find_if(options.begin(), options.end(),
                                  [&](const auto& entry) { return entry.first == option; });
  return found == options.end() ? std::nullopt : std::optional(found->second);
}

std::span<const Command> AllCommands() {
  return kCommands;
}

}  // namespace postmarker::inspect
