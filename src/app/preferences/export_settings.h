// What the export preferences mean together. Read afresh at every call.

#pragma once

#include <string>

#include "platform/preference_store.h"

namespace varnok {

// A vCard backup is to be one file per contact in a zip archive.
bool multipleVCFChosen(const PreferenceStore& preferences);

// The extension of the next backup file: "zip", or the chosen format as stored.
std::string backupFileType(const PreferenceStore& preferences);

// The next backup is a single vCard file.
bool singleVCFChosen(const PreferenceStore& preferences);

}  // namespace varnok
