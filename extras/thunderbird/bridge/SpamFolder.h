// Where the settings keep the folder into which spam is moved.
#pragma once

#include <string>

#include "settings/SettingsStore.h"

namespace postmarker::bridge {

// The id of the spam folder in the settings of Thunderbird, as the wizard wrote it; empty without
// one. Reads only.
std::string ReadSpamFolderId(const SettingsStore& store);

}  // namespace postmarker::bridge
