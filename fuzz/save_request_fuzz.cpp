// A save request as a stranger sends it, on an address book of two people.
// Whatever comes, it is answered, and only the person it names is changed.

#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "contacts/testing/in_memory_contact_store.h"
#include "support/person_builder.h"
#include "support/person_text.h"
#include "web/access/address_book_editor.h"

namespace {

void check(bool holds) {
  if (!holds) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace varnok;
  InMemoryContactStoreProvider contacts;
  putPeople(contacts,
            {person().firstName("Ada").phone(std::nullopt, "1").phone("own", "2"), person().firstName("Bob")});
  AddressBookEditor editor(contacts);
  const auto outcome = editor.edit(std::string_view(reinterpret_cast<const char*>(data), size));
  check(outcome.status.ok() && (outcome.recordID == 0 || outcome.recordID == 3));
  Status status;
  const auto store = contacts.open(status);
  check(store->personCount() == (outcome.recordID == 3 ? 3 : 2));
  const bool adaChanged = describe(*store->personWithRecordID(1)) != "FirstName: Ada\nPhone: [null] 1 | [own] 2\n";
  const bool bobChanged = describe(*store->personWithRecordID(2)) != "FirstName: Bob\n";
  check(adaChanged + bobChanged + (outcome.recordID == 3) <= 1);
  return 0;
}
