// The three texts beside the settings that hold for all clients: the client that the filter is set
// up for, the one that the wizard last finished, and the day of the last edit. None of them needs a
// client or a FilterSettings.
#pragma once

#include <chrono>
#include <string>
#include <string_view>

#include "settings/SettingsStore.h"

namespace postmarker {

// The display name of the client that the filter is set up for. Empty if there is none, it can't be
// read, or it is longer than 127 characters. Any thread.
std::wstring GetActionPlugin(const SettingsStore& store = UserSettings());

// False if the store refuses. A name of more than 127 characters is stored and can't be read again.
bool SetActionPlugin(const std::wstring& clientName, SettingsStore& store = UserSettings());

// The display name of the client that the wizard last finished, read and written as the one above.
std::wstring GetLastConfigured(const SettingsStore& store = UserSettings());
bool SetLastConfigured(const std::wstring& clientName, SettingsStore& store = UserSettings());

// Midnight, local time, of the day on which the settings were last edited: 1 January 1980 if none
// is stored.
std::chrono::local_days GetLastEditGlobal(const SettingsStore& store = UserSettings());

// Stores the day, as the text that FormatEditDate gives. False if the store refuses.
bool SetLastEditGlobal(std::chrono::local_days day, SettingsStore& store = UserSettings());

// The day that a text of year, month and day stands for, with "-" between them. Without two of
// these the answer is 1 January 1980. Each number is read as far as it goes, 0 if there is none,
// and brought into 2000 to 2100, 1 to 12 and 1 to 31; a day that its month lacks runs on into the
// next month.
std::chrono::local_days ParseEditDate(std::wstring_view text);

// Year, month and day without padding, with "-" between them.
std::wstring FormatEditDate(std::chrono::local_days day);

}  // namespace postmarker
