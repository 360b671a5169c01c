// What the export preferences mean together. Read afresh at every call.

#pragma once

#include <optional>
#include <string>

#include "platform/preference_store.h"

namespace varnok {

// A vCard backup is to be one file per contact in a zip archive.
bool multipleVCFChosen(const PreferenceStore& preferences);

// The extension of the next backup file: "zip", or the chosen format as stored.
std::string backupFileType(const PreferenceStore& preferences);

// The next backup is a single vCard file.
bool singleVCFChosen(const PreferenceStore& preferences);

// When the last single-file vCard backup was made; nothing when there was none.
// A stored time before the year 1 or after 9999 reads as the nearest within.
std::optional<Instant> timeOfLastBackup(const PreferenceStore& preferences);

}  // namespace varnok
