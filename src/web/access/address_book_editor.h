// What the browser's form changes in the address book.
//
//   request := {"id":NUMBER,"records":[ITEM]}         id -1000 asks for a new person
//   ITEM    := {"name":PROPERTY,"value":T}             a text of the person
//            | {"name":PROPERTY,"value":T,"type":INDEX,"identifier":LABEL}
//                                                      an entry; index -1 adds one
//
// Numbers may be texts. docs/formats/web-protocol.md has the whole protocol.

#pragma once

#include <mutex>
#include <string_view>

#include "contacts/address_book.h"

namespace varnok {

// Threads. Any. Edits go one after another: each reads a person's list and writes
// it back changed, and must not lose what another has written in between.
class AddressBookEditor {
 public:
  explicit AddressBookEditor(ContactStoreProvider& contacts) : contacts_(contacts) {}

  // Of a person that a request asks for.
  static constexpr RecordID kNewPerson = -1000;

  struct Outcome {
    // Of the new person, kInvalidRecordID when it could not be stored; 0 when
    // none was asked for.
    RecordID recordID = 0;
    Status status;  // Of the address book; a failed edit has changed nothing.
  };

  // Applies a save request and saves once. What of it cannot be read, or does not
  // fit its property, is passed over.
  Outcome edit(std::string_view request);

  // Deletes the person whose identifier `id` begins with; true when there was one.
  bool remove(std::string_view id);

 private:
  ContactStoreProvider& contacts_;
  std::mutex mutex_;
};

}  // namespace varnok
