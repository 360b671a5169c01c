// The tables of the embedded address book. docs/formats/contacts-db.md tells
// them to whoever opens the file with another tool.

#pragma once

#include <memory>
#include <string>

#include "platform/linux/sqlite/database.h"

namespace varnok {

// Opens the address book at `path`, and makes an empty one where there is no
// file. Null with a Status when it cannot: corrupt for a file that is damaged
// or is something else, newerVersion for one of a newer version of this
// program; both are left exactly as they are.
std::unique_ptr<Database> openContactDatabase(const std::string& path, Status& status);

// Whether an open file still is an address book of this version.
bool isContactDatabase(Database& database, const std::string& path);

}  // namespace varnok
