#include "cleanup/record_removal.h"

#include "contacts/address_book.h"

namespace varnok {

Status removeRecords(ContactStore* addressBook, const std::vector<RecordID>& ids) {
  if (addressBook != nullptr) {
    const PersonArray people(*addressBook, ids);
    for (std::size_t i = 0; i < people.size(); ++i) {
      ABAddressBookRemoveRecord(addressBook, people[i]).ignore("one person's failure does not stop the others");
    }
  }
  return ABAddressBookSave(addressBook);
}

Status RecordRemoval::run() {
  Status status = removeRecords(addressBook_.get(), ids_);
  addressBook_.reset();
  return status;
}

}  // namespace varnok
