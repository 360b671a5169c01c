// Everybody in the address book, sorted and put into sections by the letter that
// the sorting name begins with.
//
// The sorting name is the last name, or the first name when people sort by that;
// when it is missing or blank the other one; empty when both are. There is no
// section for what is no letter: every first character makes one, and those
// without a name share the section with the empty title.

#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "contacts/contact_store.h"
#include "platform/text_collation.h"

namespace varnok {

struct RecordList {
  std::unique_ptr<ContactStore> addressBook;                          // Null without access; the list is then empty.
  std::vector<RecordID> people;                                       // Sorted.
  std::vector<std::string> indexes;                                   // The titles, in their order.
  std::map<std::string, std::vector<RecordID>, std::less<>> records;  // By title, each sorted.
};

// Opens a handle of its own.
RecordList loadRecordList(ContactStoreProvider& contacts, const TextCollation& collation);

}  // namespace varnok
