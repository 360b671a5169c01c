// Finds the persons whose key equals that of an earlier one.
//
// One pass over the address book in its order. The keys of persons met so far are
// compared in memory; when they would need too much of it, only their hashes are
// kept, and the first person of a group is read once more at the end.
//
// Memory. At most 240 bytes a person, and the keys of the groups.

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "cleanup/duplicate_key.h"

namespace varnok {

// Groups are in the order in which their first duplicates were met, everything
// else is in the store's order.
struct DuplicateRecords {
  // Everybody whose key equals that of an earlier person.
  std::vector<RecordID> duplicateRecords;

  // One element a group.
  std::vector<DuplicateKey> duplicateRecordsAsDictionary;
  std::vector<std::string> duplicateRecordsCounter;  // The group's duplicates as decimal text: "1" for a pair.
  std::vector<RecordID> keptRecords;                 // The first person with that key.

  // The group of each of duplicateRecords.
  std::vector<std::uint32_t> groups;
};

using KeyHash = std::uint64_t (*)(std::string_view bytes);
std::uint64_t hashOf(std::string_view bytes);

// Nobody for a null handle, and when the book could not be read to its end. The
// result does not depend on `hash`; a bad one costs time.
DuplicateRecords findDuplicates(ContactStore* addressBook, const Clock& clock, KeyHash hash = &hashOf);

}  // namespace varnok
