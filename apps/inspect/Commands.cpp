#include "Commands.h"

#include <algorithm>
#include <array>
#include <limits>

namespace postmarker::inspect {
namespace {

constexpr size_t kAny = std::numeric_limits<size_t>::max();

constexpr auto kJetOptions = std::to_array<Option>({{"--filter", true}, {"--require", true}});
constexpr auto kStoreIdOptions = std::to_array<Option>({{"--dbx", false}});

constexpr auto kCommands = std::to_array<Command>({
    {"headers", "FILE...", 1, kAny, true, false, {}, RunHeaders},
    {"message", "FILE...", 1, kAny, true, false, {}, RunMessage},
    {"hooks", "FILE", 1, 1, true, false, {}, RunHooks},
    {"words", "FILE", 1, 1, true, false, {}, RunWords},
    {"html", "FILE", 1, 1, true, false, {}, RunHtml},
    {"addresses", "FILE", 1, 1, true, false, {}, RunAddresses},
    {"domain", "FILE", 1, 1, true, false, {}, RunDomain},
    {"received", "FILE", 1, 1, true, false, {}, RunReceived},
    {"decode", "words|quoted-printable|base64 FILE", 2, 2, false, false, {}, RunDecode},
    {"folder-text",
     "encode FLAG FIRSTID SECONDID NAME|decode TEXT",
     2,
     5,
     false,
     true,
     {},
     RunFolderText},
    {"column-state", "COLUMNS TEXT", 2, 2, false, true, {}, RunColumnState},
    {"pipe-folder", "TEXT", 1, 1, false, true, {}, RunPipeFolder},
    {"imm-folders", "FILE [ROOTLABEL]", 1, 2, false, true, {}, RunImmFolders},
    {"imh", "FILE STOREDIR NAME", 3, 3, false, false, {}, RunImh},
    {"imm-message",
     "STOREDIR NAME MSGSIZE LIGHTMSGSIZE MSGPOS",
     5,
     5,
     false,
     false,
     {},
     RunImmMessage},
    {"imb", "FILE", 1, 1, false, false, {}, RunImb},
    {"wab", "FILE", 1, 1, false, false, {}, RunWab},
    {"incredimail", "IDENTITYDIR ROOTLABEL", 2, 2, false, true, {}, RunIncrediMail},
    {"jet",
     "FILE tables|columns TABLE|indexes TABLE|query TABLE [--filter COLUMN=VALUE] "
     "[--require COLUMN=VALUE]",
     2, 3, false, false, kJetOptions, RunJet},
    {"live-folders", "FILE", 1, 1, false, false, {}, RunLiveFolders},
    {"store-id", "FILE [--dbx]", 1, 1, false, false, kStoreIdOptions, RunStoreId},
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
